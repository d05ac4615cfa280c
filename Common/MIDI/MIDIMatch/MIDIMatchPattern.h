#ifndef MIDIMATCHPATTERN_H
#define MIDIMATCHPATTERN_H

#include <cstdint>
#include <vector>

// One element of a match pattern. A wildcard keeps value 0: the tree's merge
// rule for new patterns depends on it.
struct sMIDIMatchNibble
{
    uint8_t value = 0;
    uint8_t matchAny = 0;
};

// One complete pattern: two nibbles per MIDI byte, high nibble first.
struct sMIDIMatchByteListIdentifier
{
    int32_t identifier = 0;
    std::vector<sMIDIMatchNibble> nibbles;
};

// Told by the match engine, synchronously, whenever a pattern completes.
class cMIDIMatchTriggerListener
{
public:
    virtual ~cMIDIMatchTriggerListener() = default;
    virtual void MIDIMatchTriggered(int identifier, const std::vector<unsigned char>& bytes) = 0;
};

#endif
