#include "Common/MIDI/MIDIRunningStatusFixer.h"

namespace
{
const unsigned char SYSEX_START = 0xF0;
const int32_t NO_MESSAGE = -1;
}

cMIDIRunningStatusFixer::cMIDIRunningStatusFixer()
    : runningStatus(0), expectedDataBytes(NO_MESSAGE), dataByteCount(0), inSysex(false)
{
}

bool cMIDIRunningStatusFixer::IsSystemRealTime(unsigned char b)
{
    return static_cast<unsigned char>(b - 0xF8) < 8;
}

void cMIDIRunningStatusFixer::FixRunningStatus(const std::vector<unsigned char>& in, std::vector<unsigned char>& out)
{
    out.clear();
    // At worst every data byte gets its status byte back.
    out.reserve(in.size() * 2);
    for (unsigned char b : in)
    {
        if (IsSystemRealTime(b))
        {
            out.push_back(b);
        }
        else if (b & 0x80)
        {
            ProcessStatusByte(b);
            out.push_back(b);
        }
        else if (inSysex || runningStatus == 0)
        {
            out.push_back(b);
        }
        else
        {
            // Only the first data byte of a message gets the status byte back, never one inside it.
            if (static_cast<int32_t>(dataByteCount) == expectedDataBytes)
            {
                out.push_back(runningStatus);
                dataByteCount = 0;
            }
            out.push_back(b);
            ++dataByteCount;
        }
    }
}

void cMIDIRunningStatusFixer::ProcessStatusByte(unsigned char b)
{
    inSysex = (b == SYSEX_START);
    dataByteCount = 0;
    if (b >= SYSEX_START)
    {
        // System exclusive and system common messages cancel running status.
        runningStatus = 0;
        expectedDataBytes = NO_MESSAGE;
        return;
    }
    runningStatus = b;
    // Program change (Cx) and channel pressure (Dx) carry one data byte, the rest two.
    expectedDataBytes = ((b | 0x10) & 0xF0) == 0xD0 ? 1 : 2;
}
