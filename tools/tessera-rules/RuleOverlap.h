#ifndef RULEOVERLAP_H
#define RULEOVERLAP_H

#include <QList>
#include <QString>

#include <functional>

class cMIDITranslatorConfiguration;

// Rules that listen on one port share one match tree, and the way the tree
// shares places can make a rule fire for messages its incoming string does not
// describe, or not fire for ones it does (the rule file guide has the
// example). Found by playing each rule's own message, every open nibble set
// to 3, into a fresh tree of all the rules of its port, built in file order as
// loading builds it. Two rules that take the same messages to the same ports
// are found too.
class cRuleOverlap
{
public:
    struct sFinding
    {
        // The rule the finding is about, by identifier.
        int identifier = 0;
        QString text;
    };

    // nameOfRule gives the place of a rule in the file, for naming the other
    // rule a finding is about.
    static QList<sFinding> Find(const cMIDITranslatorConfiguration& configuration,
                                const std::function<QString(int)>& nameOfRule);
};

#endif
