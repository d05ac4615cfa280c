#include "Common/MIDI/Text/MIDIMessageDescription.h"

#include "Common/MIDI/Text/MIDIMessageSplitter.h"

#include <QStringList>

#include <utility>

namespace
{
const unsigned char SYSEX_END = 0xF7;

// Indexed by the high nibble of the status byte less 8.
const char* const CHANNEL_MESSAGE_NAMES[] = {"Note Off",       "Note On",          "Poly Pressure", "CC",
                                             "Program Change", "Channel Pressure", "Pitch Bend"};

// Indexed by the status byte less F0; null where MIDI defines nothing.
const char* const SYSTEM_MESSAGE_NAMES[] = {
    "SysEx", "MTC Quarter Frame", "Song Position", "Song Select", nullptr, nullptr, "Tune Request", "End of SysEx",
    "Clock", nullptr,             "Start",         "Continue",    "Stop",  nullptr, "Active Sensing", "Reset"};

int DataByte(const QByteArray& message, int index)
{
    return static_cast<unsigned char>(message.at(index));
}

// Two 7-bit data bytes, least significant first: pitch bend, song position.
int FourteenBitValue(const QByteArray& message)
{
    return DataByte(message, 1) | (DataByte(message, 2) << 7);
}

QString DescribeChannelMessage(const QByteArray& message)
{
    const unsigned char status = static_cast<unsigned char>(message.at(0));
    const QString name = QLatin1String(CHANNEL_MESSAGE_NAMES[(status >> 4) - 8]);
    const QString channel = QStringLiteral(", ch %1").arg((status & 0x0F) + 1);
    if (message.size() < cMIDIMessageSplitter::MessageLength(status))
    {
        return name + QStringLiteral(" cut short") + channel;
    }
    switch (status & 0xF0)
    {
    case 0x80:
    case 0x90:
        return QStringLiteral("%1 %2 vel %3").arg(name).arg(DataByte(message, 1)).arg(DataByte(message, 2)) + channel;
    case 0xA0:
    case 0xB0:
        return QStringLiteral("%1 %2 = %3").arg(name).arg(DataByte(message, 1)).arg(DataByte(message, 2)) + channel;
    case 0xE0:
        return QStringLiteral("%1 %2").arg(name).arg(FourteenBitValue(message)) + channel;
    default:
        return QStringLiteral("%1 %2").arg(name).arg(DataByte(message, 1)) + channel;
    }
}

QString DescribeSystemMessage(const QByteArray& message)
{
    const unsigned char status = static_cast<unsigned char>(message.at(0));
    const char* name = SYSTEM_MESSAGE_NAMES[status - 0xF0];
    if (!name)
    {
        return QStringLiteral("Undefined %1").arg(QString::number(status, 16).toUpper());
    }
    if (status == 0xF0)
    {
        const QString size = QStringLiteral("SysEx %1 bytes").arg(message.size());
        return static_cast<unsigned char>(message.back()) == SYSEX_END ? size : size + QStringLiteral(", cut short");
    }
    if (message.size() < cMIDIMessageSplitter::MessageLength(status))
    {
        return QLatin1String(name) + QStringLiteral(" cut short");
    }
    switch (status)
    {
    case 0xF1:
        return QStringLiteral("MTC Quarter Frame, piece %1 = %2").arg(DataByte(message, 1) >> 4).arg(DataByte(message, 1) & 0x0F);
    case 0xF2:
        return QStringLiteral("Song Position %1").arg(FourteenBitValue(message));
    case 0xF3:
        return QStringLiteral("Song Select %1").arg(DataByte(message, 1));
    default:
        return QLatin1String(name);
    }
}

// A message under running status arrives without its status byte; the last
// channel status sent gives it back.
QString DescribeMessage(QByteArray message, unsigned char& runningStatus)
{
    const unsigned char first = static_cast<unsigned char>(message.at(0));
    if (first < 0x80)
    {
        if (runningStatus == 0)
        {
            return QStringLiteral("Data byte without status");
        }
        message.prepend(static_cast<char>(runningStatus));
    }
    else if (first < 0xF0)
    {
        runningStatus = first;
    }
    else if (first < 0xF8)
    {
        runningStatus = 0;
    }
    return static_cast<unsigned char>(message.at(0)) >= 0xF0 ? DescribeSystemMessage(message)
                                                             : DescribeChannelMessage(message);
}
}

QString cMIDIMessageDescription::Describe(const QByteArray& bytes)
{
    cMIDIMessageSplitter splitter;
    QList<QByteArray> messages = splitter.Feed(bytes);
    const QByteArray unfinished = splitter.Flush();
    if (!unfinished.isEmpty())
    {
        messages.append(unfinished);
    }
    unsigned char runningStatus = 0;
    QStringList descriptions;
    for (const QByteArray& message : std::as_const(messages))
    {
        descriptions.append(DescribeMessage(message, runningStatus));
    }
    return descriptions.join(QStringLiteral("; "));
}
