#ifndef RULEFILECHECK_H
#define RULEFILECHECK_H

#include <QString>

// Loads one rule file the way the program does, over in-memory ports, and
// tells its author what the load would not: every element loading leaves out
// and why, and every place where the file does other than it seems to (keys
// and ports that are misspelt, members of the wrong type, the traps of the
// MIDI string language, rules that share their way to each other's harm).
// Each finding is printed once, followed by one summary line. The program's
// own trace lines are kept out of the output.
class cRuleFileCheck
{
public:
    // True when the file loaded with nothing left out and nothing to warn of.
    static bool Check(const QString& path);
};

#endif
