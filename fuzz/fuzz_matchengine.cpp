// Any pattern set, any byte stream, and a removal in the middle of it: the
// engine must neither crash nor keep more partial matches than the tree has
// nodes (a state's depth tells when it began, so two never share a node).

#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNode.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchManager.h"
#include "Common/MIDI/MIDIRunningStatusFixer.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace
{
class cNullListener : public cMIDIMatchTriggerListener
{
public:
    void MIDIMatchTriggered(int, const std::vector<unsigned char>& bytes) override
    {
        if (bytes.empty())
        {
            __builtin_trap();
        }
    }
};

size_t CountNodes(const cMIDIMatchBranchNode* node)
{
    size_t count = 1;
    for (const cMIDIMatchBranchNode* child : node->GetChildBranchNodes())
    {
        count += CountNodes(child);
    }
    return count;
}

// Input layout: pattern count, then per pattern a length and that many
// nibble bytes (bit 4 set: wildcard, else the low nibble), then the stream.
class cReader
{
public:
    cReader(const uint8_t* data, size_t size) : data(data), size(size) {}
    bool AtEnd() const { return position >= size; }
    uint8_t Next() { return AtEnd() ? 0 : data[position++]; }
    std::vector<unsigned char> Rest() const
    {
        return AtEnd() ? std::vector<unsigned char>() : std::vector<unsigned char>(data + position, data + size);
    }

private:
    const uint8_t* data;
    size_t size;
    size_t position = 0;
};

void Feed(cMIDIMatchManager& manager, const std::vector<unsigned char>& bytes, size_t nodes)
{
    for (unsigned char byte : bytes)
    {
        manager.ProcessByte(byte);
        if (manager.GetProcessStates().Size() > nodes)
        {
            __builtin_trap();
        }
    }
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    cReader reader(data, size);
    cNullListener listener;
    cMIDIMatchManager manager(&listener);
    const int patternCount = reader.Next() % 16;
    for (int identifier = 0; identifier < patternCount; ++identifier)
    {
        sMIDIMatchByteListIdentifier pattern;
        pattern.identifier = identifier;
        const int length = 2 * (reader.Next() % 12 + 1);
        for (int index = 0; index < length; ++index)
        {
            const uint8_t element = reader.Next();
            pattern.nibbles.push_back(element & 0x10 ? sMIDIMatchNibble{0, 1}
                                                     : sMIDIMatchNibble{static_cast<uint8_t>(element & 0x0F), 0});
        }
        manager.AddMIDIMatchNibbleListIdentifierToTree(pattern);
    }

    std::vector<unsigned char> stream;
    cMIDIRunningStatusFixer fixer;
    fixer.FixRunningStatus(reader.Rest(), stream);
    const size_t half = stream.size() / 2;
    Feed(manager, std::vector<unsigned char>(stream.begin(), stream.begin() + half), CountNodes(manager.GetRootBranchNode()));
    manager.RemoveMIDIMatchIdentifierFromTree(patternCount ? static_cast<int>(stream.size()) % patternCount : 0);
    Feed(manager, std::vector<unsigned char>(stream.begin() + half, stream.end()), CountNodes(manager.GetRootBranchNode()));
    return 0;
}
