#ifndef RULESTRINGTRAPS_H
#define RULESTRINGTRAPS_H

#include <QString>
#include <QStringList>

// The places in a rule's two MIDI strings that the rule file guide warns of:
// they load, but do other than they seem to. Each is described with what to
// write instead.
class cRuleStringTraps
{
public:
    static QStringList Find(const QString& incoming, const QString& outgoing);
};

#endif
