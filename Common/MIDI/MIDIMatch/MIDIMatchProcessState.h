#ifndef MIDIMATCHPROCESSSTATE_H
#define MIDIMATCHPROCESSSTATE_H

#include <cstddef>
#include <utility>
#include <vector>

class cMIDIMatchBranchNode;
class cMIDIMatchBranchNodeEndpoint;
class cMIDIMatchProcessStateList;

// Scratch lists of one manager, handed to every state it advances and reused
// for every nibble, so that the byte path does not allocate once warm.
struct sMIDIMatchWorkspace
{
    std::vector<cMIDIMatchBranchNode*> nextNodes;
    std::vector<cMIDIMatchBranchNodeEndpoint*> stateEndpointsReached;
    std::vector<unsigned char> triggerBytes;
};

// One partial match in flight: where in the tree it has got to, what it has
// consumed since it began, and which patterns it may no longer fire because
// another partial match already fired them over the same stretch of input.
class cMIDIMatchProcessState
{
public:
    cMIDIMatchProcessState() = default;

    // (Re)starts this state at node with its first nibble; keeps the buffers.
    void Begin(cMIDIMatchBranchNode* node, unsigned char firstNibble);
    // (Re)makes this state a fork of source, going on at node; keeps the buffers.
    void Fork(const cMIDIMatchProcessState& source, cMIDIMatchBranchNode* node);

    // Consumes one nibble: fires every endpoint it completes (synchronously,
    // unless barred) and appends them to endpointsReached, moves on to the
    // first accepting branch, and appends a fork to newStates for each other
    // accepting branch. With no accepting branch the state dies (null node).
    void ProcessNibble(unsigned char nibble, cMIDIMatchProcessStateList& newStates,
                       std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached,
                       sMIDIMatchWorkspace& workspace);

    bool IsIllegalEndpoint(const cMIDIMatchBranchNodeEndpoint* endpoint) const;
    // Bars every endpoint just reached that this state could still complete.
    void UpdateIllegalEndpoints(const std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached);
    // Forgets barred endpoints that are no longer reachable from here.
    void RemoveImpossibleEndpoints();
    // Forgets an endpoint that is about to be deleted, by its address alone.
    void ForgetIllegalEndpoint(const cMIDIMatchBranchNodeEndpoint* endpoint);

    cMIDIMatchBranchNode* GetCurrentMatchBranchNode() const { return currentNode; }

private:
    cMIDIMatchBranchNode* currentNode = nullptr;
    std::vector<unsigned char> capturedNibbles;
    std::vector<cMIDIMatchBranchNodeEndpoint*> illegalEndpoints;
};

// An ordered list of states. Slots past the end keep their buffers, so that
// states dying and being born on every byte cost no allocation once warm.
class cMIDIMatchProcessStateList
{
public:
    size_t Size() const { return size; }
    cMIDIMatchProcessState& operator[](size_t index) { return states[index]; }
    const cMIDIMatchProcessState& operator[](size_t index) const { return states[index]; }

    void AppendBegin(cMIDIMatchBranchNode* node, unsigned char firstNibble);
    void AppendFork(const cMIDIMatchProcessState& source, cMIDIMatchBranchNode* node);
    // Moves every state of other to the end of this list, in order; other ends empty.
    void AppendAll(cMIDIMatchProcessStateList& other);

    // Removes every state for which remove(state) holds, keeping the order of the rest.
    template <typename Predicate>
    void RemoveIf(Predicate remove)
    {
        size_t kept = 0;
        for (size_t index = 0; index < size; ++index)
        {
            if (!remove(states[index]))
            {
                if (kept != index)
                {
                    std::swap(states[kept], states[index]);
                }
                ++kept;
            }
        }
        size = kept;
    }

    void Clear() { size = 0; }

private:
    cMIDIMatchProcessState& AppendSlot();

    std::vector<cMIDIMatchProcessState> states;
    size_t size = 0;
};

#endif
