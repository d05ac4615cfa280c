#ifndef MATCHRECORDER_H
#define MATCHRECORDER_H

#include "Common/MIDI/MIDIMatch/MIDIMatchPattern.h"
#include "TestHelpers.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// Records every trigger as "identifier:HEXBYTES" (e.g. "1:B0077F"), in order.
class cMatchRecorder : public cMIDIMatchTriggerListener
{
public:
    void MIDIMatchTriggered(int identifier, const std::vector<unsigned char>& bytes) override
    {
        QByteArray raw(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
        triggers << QString::number(identifier) + QLatin1Char(':') + QString::fromLatin1(raw.toHex().toUpper());
    }

    QStringList triggers;
};

// A pattern written the way a person reads one: a hex digit per literal
// nibble, "*" per wildcard, blanks ignored ("B0 07 **").
inline sMIDIMatchByteListIdentifier MatchPattern(int identifier, const QString& text)
{
    sMIDIMatchByteListIdentifier pattern;
    pattern.identifier = identifier;
    for (QChar c : text)
    {
        if (c == QLatin1Char('*'))
        {
            pattern.nibbles.push_back(sMIDIMatchNibble{0, 1});
        }
        else if (!c.isSpace())
        {
            pattern.nibbles.push_back(sMIDIMatchNibble{static_cast<uint8_t>(QString(c).toUInt(nullptr, 16)), 0});
        }
    }
    return pattern;
}

#endif
