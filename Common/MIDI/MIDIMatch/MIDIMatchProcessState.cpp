#include "Common/MIDI/MIDIMatch/MIDIMatchProcessState.h"

#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNode.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNodeEndpoint.h"

#include <algorithm>

void cMIDIMatchProcessState::Begin(cMIDIMatchBranchNode* node, unsigned char firstNibble)
{
    currentNode = node;
    capturedNibbles.assign(1, firstNibble);
    illegalEndpoints.clear();
}

void cMIDIMatchProcessState::Fork(const cMIDIMatchProcessState& source, cMIDIMatchBranchNode* node)
{
    currentNode = node;
    capturedNibbles.assign(source.capturedNibbles.begin(), source.capturedNibbles.end());
    illegalEndpoints.assign(source.illegalEndpoints.begin(), source.illegalEndpoints.end());
}

void cMIDIMatchProcessState::ProcessNibble(unsigned char nibble, cMIDIMatchProcessStateList& newStates,
                                           std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached,
                                           sMIDIMatchWorkspace& workspace)
{
    if (!currentNode)
    {
        return;
    }
    capturedNibbles.push_back(nibble);

    std::vector<cMIDIMatchBranchNode*>& nextNodes = workspace.nextNodes;
    std::vector<cMIDIMatchBranchNodeEndpoint*>& reached = workspace.stateEndpointsReached;
    reached.clear();
    currentNode->GetNextBranchNodes(nibble, nextNodes, reached);

    for (cMIDIMatchBranchNodeEndpoint* endpoint : reached)
    {
        if (IsIllegalEndpoint(endpoint))
        {
            continue;
        }
        endpoint->TriggerAction(capturedNibbles, workspace.triggerBytes);
        endpointsReached.push_back(endpoint);
    }

    if (nextNodes.empty())
    {
        currentNode = nullptr;
        return;
    }
    currentNode = nextNodes.front();
    for (size_t index = 1; index < nextNodes.size(); ++index)
    {
        newStates.AppendFork(*this, nextNodes[index]);
    }
}

bool cMIDIMatchProcessState::IsIllegalEndpoint(const cMIDIMatchBranchNodeEndpoint* endpoint) const
{
    return std::find(illegalEndpoints.begin(), illegalEndpoints.end(), endpoint) != illegalEndpoints.end();
}

void cMIDIMatchProcessState::UpdateIllegalEndpoints(const std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached)
{
    if (!illegalEndpoints.empty())
    {
        RemoveImpossibleEndpoints();
    }
    for (cMIDIMatchBranchNodeEndpoint* endpoint : endpointsReached)
    {
        if (currentNode->HasChildBranchNodeEndpoint(endpoint))
        {
            illegalEndpoints.push_back(endpoint);
        }
    }
}

void cMIDIMatchProcessState::RemoveImpossibleEndpoints()
{
    const cMIDIMatchBranchNode* node = currentNode;
    illegalEndpoints.erase(std::remove_if(illegalEndpoints.begin(), illegalEndpoints.end(),
                                          [node](const cMIDIMatchBranchNodeEndpoint* endpoint) {
                                              return !node || !node->HasChildBranchNodeEndpoint(endpoint);
                                          }),
                           illegalEndpoints.end());
}

void cMIDIMatchProcessState::ForgetIllegalEndpoint(const cMIDIMatchBranchNodeEndpoint* endpoint)
{
    illegalEndpoints.erase(std::remove(illegalEndpoints.begin(), illegalEndpoints.end(), endpoint),
                           illegalEndpoints.end());
}

void cMIDIMatchProcessStateList::AppendBegin(cMIDIMatchBranchNode* node, unsigned char firstNibble)
{
    AppendSlot().Begin(node, firstNibble);
}

void cMIDIMatchProcessStateList::AppendFork(const cMIDIMatchProcessState& source, cMIDIMatchBranchNode* node)
{
    AppendSlot().Fork(source, node);
}

void cMIDIMatchProcessStateList::AppendAll(cMIDIMatchProcessStateList& other)
{
    // Swapping rather than copying hands the buffers over both ways: the
    // spare slots of this list go to the other one, to be reused there.
    for (size_t index = 0; index < other.size; ++index)
    {
        std::swap(AppendSlot(), other.states[index]);
    }
    other.size = 0;
}

cMIDIMatchProcessState& cMIDIMatchProcessStateList::AppendSlot()
{
    if (size == states.size())
    {
        states.emplace_back();
    }
    return states[size++];
}
