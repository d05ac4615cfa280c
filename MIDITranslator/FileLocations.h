#ifndef FILELOCATIONS_H
#define FILELOCATIONS_H

#include <QString>

// Where the read-only files shipped with the program lie: the mixer map and
// the rule files it names, beside the executable's directory.
class cFileLocations
{
public:
    // "<executable directory>/../Resources/Maps/", ending with a separator;
    // the ".." is left unresolved so the same layout holds in the build tree
    // and after install.
    static QString GetConfigurationFileDirectory();
    static QString GetMixerMapFilePath();
};

#endif
