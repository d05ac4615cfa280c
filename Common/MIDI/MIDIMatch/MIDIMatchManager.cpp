#include "Common/MIDI/MIDIMatch/MIDIMatchManager.h"

#include "Application/DebugTrace.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNode.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNodeEndpoint.h"

#include <algorithm>

cMIDIMatchManager::cMIDIMatchManager(cMIDIMatchTriggerListener* listener)
    : listener(listener), rootNode(new cMIDIMatchBranchNode(sMIDIMatchNibble{}, 0))
{
}

cMIDIMatchManager::~cMIDIMatchManager()
{
    delete rootNode;
}

void cMIDIMatchManager::AddMIDIMatchNibbleListIdentifierToTree(const sMIDIMatchByteListIdentifier& pattern)
{
    if (EndpointIdentifierExists(pattern.identifier))
    {
        DebugErrTrace(DEBUG_LOCATION, "Identifier %d is alread in use", pattern.identifier);
    }

    cMIDIMatchBranchNode* node = rootNode->GetFurthestBranchNodeForNibbleList(pattern.nibbles);
    for (size_t position = node->GetDepth(); position < pattern.nibbles.size(); ++position)
    {
        cMIDIMatchBranchNode* child =
            new cMIDIMatchBranchNode(pattern.nibbles[position], static_cast<unsigned int>(position + 1));
        node->AddChildBranchNode(child);
        node = child;
    }

    cMIDIMatchBranchNodeEndpoint* endpoint =
        new cMIDIMatchBranchNodeEndpoint(listener, pattern.identifier, pattern.nibbles);
    node->AddBranchNodeEndpoint(endpoint);
    endpointMap[pattern.identifier] = std::make_pair(node, endpoint);
}

void cMIDIMatchManager::RemoveMIDIMatchIdentifierFromTree(int identifier)
{
    auto found = endpointMap.find(identifier);
    if (found == endpointMap.end())
    {
        return;
    }
    cMIDIMatchBranchNode* node = found->second.first;
    cMIDIMatchBranchNodeEndpoint* endpoint = found->second.second;
    endpointMap.erase(found);

    // Reachability of a barred endpoint is worked out from the endpoint
    // itself, so no state may keep the address of one that is deleted.
    for (size_t index = 0; index < processStates.Size(); ++index)
    {
        processStates[index].ForgetIllegalEndpoint(endpoint);
    }
    node->RemoveBranchNodeEndpoint(endpoint);

    std::vector<cMIDIMatchBranchNode*> removedNodes;
    RemoveUnusedNodesFromTree(node, removedNodes);

    // The pruned nodes are gone: a state resting on one must not be touched again.
    processStates.RemoveIf([&removedNodes](const cMIDIMatchProcessState& state) {
        return std::find(removedNodes.begin(), removedNodes.end(), state.GetCurrentMatchBranchNode()) !=
               removedNodes.end();
    });
    for (size_t index = 0; index < processStates.Size(); ++index)
    {
        processStates[index].RemoveImpossibleEndpoints();
    }
}

bool cMIDIMatchManager::EndpointIdentifierExists(int identifier) const
{
    return endpointMap.count(identifier) != 0;
}

void cMIDIMatchManager::ProcessByte(unsigned char byte)
{
    ProcessNibble(static_cast<unsigned char>(byte >> 4), rootNode);
    ProcessNibble(static_cast<unsigned char>(byte & 0x0F), nullptr);
}

const cMIDIMatchBranchNode* cMIDIMatchManager::GetRootBranchNode() const
{
    return rootNode;
}

const cMIDIMatchProcessStateList& cMIDIMatchManager::GetProcessStates() const
{
    return processStates;
}

void cMIDIMatchManager::ProcessNibble(unsigned char nibble, cMIDIMatchBranchNode* startNode)
{
    newStates.Clear();
    endpointsReached.clear();

    if (startNode)
    {
        // Patterns one nibble long are only recorded here, never fired.
        startNode->GetNextBranchNodes(nibble, workspace.nextNodes, endpointsReached);
        for (cMIDIMatchBranchNode* node : workspace.nextNodes)
        {
            newStates.AppendBegin(node, nibble);
        }
    }

    ProcessNibbleForCurrentProcessStates(nibble, newStates, endpointsReached);

    processStates.AppendAll(newStates);
    // With nothing reached nothing new is barred, and a barred endpoint that
    // went out of reach stays out of reach (states only move down), so the
    // clean-up can wait for the next nibble that reaches something.
    if (!endpointsReached.empty())
    {
        for (size_t index = 0; index < processStates.Size(); ++index)
        {
            processStates[index].UpdateIllegalEndpoints(endpointsReached);
        }
    }
}

void cMIDIMatchManager::ProcessNibbleForCurrentProcessStates(unsigned char nibble,
                                                             cMIDIMatchProcessStateList& newStates,
                                                             std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached)
{
    // Only the states in flight before this nibble advance; the ones begun or
    // forked at it are in newStates and wait for the next nibble.
    for (size_t index = 0; index < processStates.Size(); ++index)
    {
        processStates[index].ProcessNibble(nibble, newStates, endpointsReached, workspace);
    }
    processStates.RemoveIf([](const cMIDIMatchProcessState& state) {
        return state.GetCurrentMatchBranchNode() == nullptr;
    });
}

void cMIDIMatchManager::RemoveUnusedNodesFromTree(cMIDIMatchBranchNode* node,
                                                  std::vector<cMIDIMatchBranchNode*>& removedNodes)
{
    while (node != rootNode && !node->HasBranchNodeEndpoints() && !node->HasChildBranchNodes())
    {
        removedNodes.push_back(node);
        cMIDIMatchBranchNode* parent = node->GetParentBranchNode();
        parent->RemoveChildBranchNode(node);
        node = parent;
    }
}
