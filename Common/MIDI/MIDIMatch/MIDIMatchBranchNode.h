#ifndef MIDIMATCHBRANCHNODE_H
#define MIDIMATCHBRANCHNODE_H

#include "Common/MIDI/MIDIMatch/MIDIMatchPattern.h"

#include <array>
#include <cstddef>
#include <vector>

class cMIDIMatchBranchNodeEndpoint;

// One nibble position of the prefix tree that holds every pattern of one
// input. Children are kept with every wildcard child ahead of every literal
// child, so that live matching can stop at the first literal that accepts
// without ever losing a wildcard branch.
class cMIDIMatchBranchNode
{
public:
    cMIDIMatchBranchNode(sMIDIMatchNibble nibble, unsigned int depth);
    // Deletes the whole subtree and this node's own endpoints.
    virtual ~cMIDIMatchBranchNode();

    cMIDIMatchBranchNode(const cMIDIMatchBranchNode&) = delete;
    cMIDIMatchBranchNode& operator=(const cMIDIMatchBranchNode&) = delete;

    unsigned int GetDepth() const;
    sMIDIMatchNibble GetMIDIMatchByte() const;
    cMIDIMatchBranchNode* GetParentBranchNode() const;
    bool HasChildBranchNodes() const;
    bool HasBranchNodeEndpoints() const;
    const std::vector<cMIDIMatchBranchNode*>& GetChildBranchNodes() const;
    // Every endpoint that hangs on a strict descendant of this node.
    const std::vector<cMIDIMatchBranchNodeEndpoint*>& GetAllChildrensBranchNodeEndpoints() const;
    // Whether the endpoint hangs on a strict descendant of this node. Only the
    // address is compared: the endpoint may already be deleted.
    bool HasChildBranchNodeEndpoint(const cMIDIMatchBranchNodeEndpoint* endpoint) const;

    // Takes ownership. A wildcard child goes to the front, a literal child to the back.
    void AddChildBranchNode(cMIDIMatchBranchNode* child);
    // Deletes the child if it is one of this node's children.
    void RemoveChildBranchNode(cMIDIMatchBranchNode* child);
    // Takes ownership and records the endpoint in every ancestor.
    void AddBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint);
    void AddChildBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint);
    // Unlinks the endpoint from every ancestor, then deletes it if it is this node's own.
    void RemoveBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint);
    void RemoveChildBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint);
    // For tearing a whole tree down: the ancestors' lists are left as they are.
    void RemoveAllChildBranchNodes();
    void RemoveAllBranchNodeEndpoints();

    // The deepest existing node that already spells a prefix of nibbles, used
    // when a pattern is inserted. Deliberately looser than live matching: a
    // literal 0 shares an existing wildcard's path, and a wildcard shares an
    // existing literal 0's path when no wildcard child is there.
    cMIDIMatchBranchNode* GetFurthestBranchNodeForNibbleList(const std::vector<sMIDIMatchNibble>& nibbles);

    // Live matching: replaces nextNodes with the accepting children that have
    // children of their own (wildcards first, at most one literal last), and
    // appends to endpointsReached the endpoints that the nibble completes.
    void GetNextBranchNodes(unsigned char nibble, std::vector<cMIDIMatchBranchNode*>& nextNodes,
                            std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached) const;
    // Whether this node accepts the nibble; if so its own endpoints are appended.
    bool TestNibbleMatches(unsigned char nibble, std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached) const;

private:
    // Keeps the look-up below in step with children.
    void IndexChildren();

    sMIDIMatchNibble nibble;
    unsigned int depth;
    cMIDIMatchBranchNode* parent = nullptr;
    std::vector<cMIDIMatchBranchNode*> children;
    std::vector<cMIDIMatchBranchNodeEndpoint*> endpoints;
    std::vector<cMIDIMatchBranchNodeEndpoint*> childEndpoints;
    // The byte path's view of children: the wildcards stand at the front, and
    // the first literal child of each nibble value is found without a scan
    // (a channel node has sixteen literal children).
    size_t wildcardChildCount = 0;
    std::array<cMIDIMatchBranchNode*, 16> firstLiteralChild{};
};

#endif
