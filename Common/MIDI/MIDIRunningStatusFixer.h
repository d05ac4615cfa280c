#ifndef MIDIRUNNINGSTATUSFIXER_H
#define MIDIRUNNINGSTATUSFIXER_H

#include <cstdint>
#include <vector>

// MIDI senders may leave out a repeated channel status byte (running status).
// The match tree only recognises messages that carry their status byte, so
// every chunk read from an input passes through here first and gets the
// omitted status bytes back. The state carries over from one chunk to the
// next, so a message split across two reads comes out whole.
class cMIDIRunningStatusFixer
{
public:
    cMIDIRunningStatusFixer();

    // Empties out, then appends the bytes of in with running status expanded.
    void FixRunningStatus(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

    // 0xF8-0xFF: may fall anywhere, even inside a message, and changes nothing.
    static bool IsSystemRealTime(unsigned char b);

private:
    void ProcessStatusByte(unsigned char b);

    uint8_t runningStatus;
    int32_t expectedDataBytes;
    uint32_t dataByteCount;
    bool inSysex;
};

#endif
