#ifndef MIDIMESSAGESPLITTER_H
#define MIDIMESSAGESPLITTER_H

#include <QByteArray>
#include <QList>

// Cuts a raw MIDI byte stream, which may arrive in arbitrary pieces, into
// whole messages as they were sent: running status is followed but not
// expanded, real-time bytes come out on their own wherever they fall, and
// bytes that cannot belong to any message come out one by one. A message is
// kept whole up to MAXIMUM_MESSAGE_SIZE bytes (only System Exclusive grows
// that long); one that goes on past that comes out cut there, and the rest of
// it, up to its end, is dropped, so a stream that never ends its System
// Exclusive costs bounded memory.
class cMIDIMessageSplitter
{
public:
    static const int MAXIMUM_MESSAGE_SIZE = 256 * 1024;

    // The messages completed by these bytes; an unfinished one is kept.
    QList<QByteArray> Feed(const QByteArray& bytes);
    // The same for one byte: appends what it completes (at most two
    // messages, when a status byte cuts one short) to messages.
    void Feed(unsigned char byte, QList<QByteArray>& messages);
    // The unfinished message, if any, as it stands; the next stream starts afresh.
    QByteArray Flush();

    // The whole length of a message starting with this status byte; 0 for
    // SysEx, which ends at F7.
    static int MessageLength(unsigned char status);

private:
    void StartMessage(unsigned char status, QList<QByteArray>& messages);
    // Takes the data bytes at the start of [next, end) that continue a System
    // Exclusive message, as far as the bound allows; returns where it stopped.
    const char* AppendSystemExclusiveData(const char* next, const char* end);

    QByteArray pending;
    // The rest of a message cut at the bound is being dropped.
    bool dropping = false;
    // How many bytes complete the pending message; 0 for SysEx, which ends at F7.
    int expectedLength = 0;
    unsigned char runningStatus = 0;
};

#endif
