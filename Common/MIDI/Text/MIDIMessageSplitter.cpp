#include "Common/MIDI/Text/MIDIMessageSplitter.h"

#include <algorithm>

namespace
{
const unsigned char SYSEX_START = 0xF0;
const unsigned char SYSEX_END = 0xF7;

bool IsStatus(unsigned char byte)
{
    return byte & 0x80;
}

bool IsRealTime(unsigned char byte)
{
    return byte >= 0xF8;
}
}

int cMIDIMessageSplitter::MessageLength(unsigned char status)
{
    if (status < 0xF0)
    {
        unsigned char type = status & 0xF0;
        return (type == 0xC0 || type == 0xD0) ? 2 : 3;
    }
    switch (status)
    {
    case SYSEX_START:
        return 0;
    case 0xF1:
    case 0xF3:
        return 2;
    case 0xF2:
        return 3;
    default:
        return 1;
    }
}

QList<QByteArray> cMIDIMessageSplitter::Feed(const QByteArray& bytes)
{
    QList<QByteArray> messages;
    const char* next = bytes.constData();
    const char* const end = next + bytes.size();
    while (next != end)
    {
        next = AppendSystemExclusiveData(next, end);
        if (next != end)
        {
            Feed(static_cast<unsigned char>(*next++), messages);
        }
    }
    return messages;
}

void cMIDIMessageSplitter::Feed(unsigned char byte, QList<QByteArray>& messages)
{
    const char c = static_cast<char>(byte);
    if (IsRealTime(byte))
    {
        messages.append(QByteArray(1, c));
        return;
    }
    if (dropping)
    {
        if (!IsStatus(byte))
        {
            return;
        }
        dropping = false;
        // The end of the message that was cut.
        if (byte == SYSEX_END)
        {
            return;
        }
    }
    if (pending.size() == MAXIMUM_MESSAGE_SIZE && !IsStatus(byte))
    {
        messages.append(pending);
        pending.clear();
        dropping = true;
        return;
    }
    if (IsStatus(byte) && byte == SYSEX_END && !pending.isEmpty() && expectedLength == 0)
    {
        pending.append(c);
        messages.append(pending);
        pending.clear();
    }
    else if (IsStatus(byte))
    {
        StartMessage(byte, messages);
    }
    else if (!pending.isEmpty())
    {
        pending.append(c);
    }
    else if (runningStatus != 0)
    {
        pending.append(c);
        expectedLength = MessageLength(runningStatus) - 1;
    }
    else
    {
        messages.append(QByteArray(1, c));
    }
    if (!pending.isEmpty() && expectedLength != 0 && pending.size() == expectedLength)
    {
        messages.append(pending);
        pending.clear();
    }
}

QByteArray cMIDIMessageSplitter::Flush()
{
    QByteArray unfinished = pending;
    pending.clear();
    runningStatus = 0;
    dropping = false;
    return unfinished;
}

// A bulk dump is long: its data is appended a run at a time, not byte by byte.
const char* cMIDIMessageSplitter::AppendSystemExclusiveData(const char* next, const char* end)
{
    if (dropping || pending.isEmpty() || expectedLength != 0)
    {
        return next;
    }
    const char* runEnd = std::find_if(next, end, [](char c) { return IsStatus(static_cast<unsigned char>(c)); });
    runEnd = next + std::min<std::ptrdiff_t>(runEnd - next, MAXIMUM_MESSAGE_SIZE - pending.size());
    pending.append(next, static_cast<int>(runEnd - next));
    return runEnd;
}

void cMIDIMessageSplitter::StartMessage(unsigned char status, QList<QByteArray>& messages)
{
    // A status byte cuts short whatever was unfinished; show it as it came.
    if (!pending.isEmpty())
    {
        messages.append(pending);
        pending.clear();
    }
    runningStatus = status < 0xF0 ? status : 0;
    pending.append(static_cast<char>(status));
    expectedLength = MessageLength(status);
}
