#ifndef RULEFILECHECK_H
#define RULEFILECHECK_H

#include <QString>

// Loads one rule file the way the program does, over in-memory ports, and
// prints what the load reported and what it kept: the trace lines appear as
// the load writes them, followed by the rules it rejected and one summary line.
class cRuleFileCheck
{
public:
    // True when the file loaded with nothing rejected.
    static bool Check(const QString& path);
};

#endif
