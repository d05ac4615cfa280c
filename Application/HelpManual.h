#ifndef HELPMANUAL_H
#define HELPMANUAL_H

#include <QString>
#include <QUrl>

// The user manual, a PDF in the resources beside the program's own
// directory, both in the build tree and once installed.
class cHelpManual
{
public:
    // Executable directory, "..", "Resources", "HelpManual.pdf", each joined
    // by the platform's separator.
    static QString GetPath();
    // The same, the way a user would write it.
    static QString GetFile();
    // What the program is for and where its manual is, in one line.
    static QString GetAboutLine();
    // Hands url to the desktop's handler. When none takes it, one error
    // trace names the manual by its proper file URL, and false is returned;
    // Qt's own warning, which repeats url as given, is held back.
    static bool Open(const QUrl& url);
};

#endif
