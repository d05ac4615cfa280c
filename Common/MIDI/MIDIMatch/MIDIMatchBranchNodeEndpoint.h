#ifndef MIDIMATCHBRANCHNODEENDPOINT_H
#define MIDIMATCHBRANCHNODEENDPOINT_H

#include "Common/MIDI/MIDIMatch/MIDIMatchPattern.h"

#include <string>
#include <vector>

// Marks that a complete pattern ends at a node of the match tree, and knows
// whom to tell, under which identifier, when a partial match gets there.
// Owned by the node that holds it.
class cMIDIMatchBranchNodeEndpoint
{
public:
    // The listener is not owned and may be null: a trigger then does nothing.
    cMIDIMatchBranchNodeEndpoint(cMIDIMatchTriggerListener* listener, int identifier,
                                 std::vector<sMIDIMatchNibble> nibbles);

    // Packs the captured nibbles in pairs into the bytes that matched and
    // tells the listener. packedBytes is the caller's buffer, reused from one
    // trigger to the next so that firing does not allocate.
    void TriggerAction(const std::vector<unsigned char>& capturedNibbles,
                       std::vector<unsigned char>& packedBytes) const;

    // The pattern as text for diagnostics: a hex digit per literal nibble, "*" per wildcard.
    std::string GetStringToMatch() const;

private:
    cMIDIMatchTriggerListener* listener;
    int identifier;
    std::vector<sMIDIMatchNibble> nibbles;
};

#endif
