#ifndef MIDIMATCHMANAGER_H
#define MIDIMATCHMANAGER_H

#include "Common/MIDI/MIDIMatch/MIDIMatchPattern.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchProcessState.h"

#include <map>
#include <utility>
#include <vector>

class cMIDIMatchBranchNode;
class cMIDIMatchBranchNodeEndpoint;

// Owns the match tree of one input and runs it over the live byte stream, any
// number of partial matches in flight at once. Every byte may begin a match:
// the engine knows nothing of MIDI message boundaries, the tree alone decides.
// Each completed pattern calls the listener at once, in the middle of the byte.
class cMIDIMatchManager
{
public:
    // The listener is not owned; it is handed to every endpoint made here.
    explicit cMIDIMatchManager(cMIDIMatchTriggerListener* listener);
    virtual ~cMIDIMatchManager();

    cMIDIMatchManager(const cMIDIMatchManager&) = delete;
    cMIDIMatchManager& operator=(const cMIDIMatchManager&) = delete;

    // A used identifier is reported and the pattern added all the same: the
    // older one then still fires under it but can no longer be removed.
    void AddMIDIMatchNibbleListIdentifierToTree(const sMIDIMatchByteListIdentifier& pattern);
    // Prunes the nodes left without purpose and drops the states on them. Unknown identifiers are ignored.
    void RemoveMIDIMatchIdentifierFromTree(int identifier);
    bool EndpointIdentifierExists(int identifier) const;

    // The only way in for data: the high nibble (where a match may begin), then the low one.
    void ProcessByte(unsigned char byte);

    const cMIDIMatchBranchNode* GetRootBranchNode() const;
    const cMIDIMatchProcessStateList& GetProcessStates() const;

private:
    void ProcessNibble(unsigned char nibble, cMIDIMatchBranchNode* startNode);
    void ProcessNibbleForCurrentProcessStates(unsigned char nibble, cMIDIMatchProcessStateList& newStates,
                                              std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached);
    void RemoveUnusedNodesFromTree(cMIDIMatchBranchNode* node, std::vector<cMIDIMatchBranchNode*>& removedNodes);

    cMIDIMatchTriggerListener* listener;
    cMIDIMatchBranchNode* rootNode;
    cMIDIMatchProcessStateList processStates;
    std::map<int, std::pair<cMIDIMatchBranchNode*, cMIDIMatchBranchNodeEndpoint*>> endpointMap;

    // Per-nibble working lists, kept between nibbles for their capacity.
    cMIDIMatchProcessStateList newStates;
    std::vector<cMIDIMatchBranchNodeEndpoint*> endpointsReached;
    sMIDIMatchWorkspace workspace;
};

#endif
