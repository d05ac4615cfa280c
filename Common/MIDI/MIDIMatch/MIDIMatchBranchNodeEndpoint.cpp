#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNodeEndpoint.h"

#include <cstdio>
#include <utility>

cMIDIMatchBranchNodeEndpoint::cMIDIMatchBranchNodeEndpoint(cMIDIMatchTriggerListener* listener, int identifier,
                                                           std::vector<sMIDIMatchNibble> nibbles)
    : listener(listener), identifier(identifier), nibbles(std::move(nibbles))
{
}

void cMIDIMatchBranchNodeEndpoint::TriggerAction(const std::vector<unsigned char>& capturedNibbles,
                                                 std::vector<unsigned char>& packedBytes) const
{
    // Patterns are whole bytes long; an odd last nibble could only come from
    // an odd pattern and is dropped.
    packedBytes.clear();
    for (size_t index = 0; index + 1 < capturedNibbles.size(); index += 2)
    {
        packedBytes.push_back(static_cast<unsigned char>((capturedNibbles[index] << 4) |
                                                         (capturedNibbles[index + 1] & 0x0F)));
    }
    if (listener)
    {
        listener->MIDIMatchTriggered(identifier, packedBytes);
    }
}

std::string cMIDIMatchBranchNodeEndpoint::GetStringToMatch() const
{
    std::string text;
    text.reserve(nibbles.size());
    for (const sMIDIMatchNibble& nibble : nibbles)
    {
        char digit[4];
        std::snprintf(digit, sizeof(digit), "%01X", nibble.value & 0x0F);
        text += nibble.matchAny ? '*' : digit[0];
    }
    return text;
}
