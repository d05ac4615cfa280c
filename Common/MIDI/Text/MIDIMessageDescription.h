#ifndef MIDIMESSAGEDESCRIPTION_H
#define MIDIMESSAGEDESCRIPTION_H

#include <QByteArray>
#include <QString>

// What MIDI bytes say, in a few words, for people watching the traffic:
// "CC 7 = 100, ch 3", "Note On 60 vel 127, ch 1", "SysEx 12 bytes". Bytes
// holding several messages (a rule may write an NRPN sequence at once) are
// described message by message, separated by "; ". Numbers are decimal and
// channels count from 1, as a mixer's or a DAW's manual writes them.
class cMIDIMessageDescription
{
public:
    static QString Describe(const QByteArray& bytes);
};

#endif
