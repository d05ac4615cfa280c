#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNode.h"

#include "Common/MIDI/MIDIMatch/MIDIMatchBranchNodeEndpoint.h"

#include <algorithm>

namespace
{
// Removes the first occurrence of item, keeping the order of the rest.
template <typename T>
bool EraseFirst(std::vector<T*>& list, const T* item)
{
    auto found = std::find(list.begin(), list.end(), item);
    if (found == list.end())
    {
        return false;
    }
    list.erase(found);
    return true;
}

bool Accepts(sMIDIMatchNibble element, unsigned char nibble)
{
    return element.matchAny || element.value == nibble;
}
}

cMIDIMatchBranchNode::cMIDIMatchBranchNode(sMIDIMatchNibble nibble, unsigned int depth)
    : nibble(nibble), depth(depth)
{
}

cMIDIMatchBranchNode::~cMIDIMatchBranchNode()
{
    RemoveAllChildBranchNodes();
    RemoveAllBranchNodeEndpoints();
}

unsigned int cMIDIMatchBranchNode::GetDepth() const
{
    return depth;
}

sMIDIMatchNibble cMIDIMatchBranchNode::GetMIDIMatchByte() const
{
    return nibble;
}

cMIDIMatchBranchNode* cMIDIMatchBranchNode::GetParentBranchNode() const
{
    return parent;
}

bool cMIDIMatchBranchNode::HasChildBranchNodes() const
{
    return !children.empty();
}

bool cMIDIMatchBranchNode::HasBranchNodeEndpoints() const
{
    return !endpoints.empty();
}

const std::vector<cMIDIMatchBranchNode*>& cMIDIMatchBranchNode::GetChildBranchNodes() const
{
    return children;
}

const std::vector<cMIDIMatchBranchNodeEndpoint*>& cMIDIMatchBranchNode::GetAllChildrensBranchNodeEndpoints() const
{
    return childEndpoints;
}

bool cMIDIMatchBranchNode::HasChildBranchNodeEndpoint(const cMIDIMatchBranchNodeEndpoint* endpoint) const
{
    return std::find(childEndpoints.begin(), childEndpoints.end(), endpoint) != childEndpoints.end();
}

void cMIDIMatchBranchNode::AddChildBranchNode(cMIDIMatchBranchNode* child)
{
    child->parent = this;
    if (child->nibble.matchAny)
    {
        children.insert(children.begin(), child);
    }
    else
    {
        children.push_back(child);
    }
    IndexChildren();
}

void cMIDIMatchBranchNode::RemoveChildBranchNode(cMIDIMatchBranchNode* child)
{
    if (EraseFirst(children, child))
    {
        delete child;
        IndexChildren();
    }
}

void cMIDIMatchBranchNode::AddBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint)
{
    endpoints.push_back(endpoint);
    if (parent)
    {
        parent->AddChildBranchNodeEndpoint(endpoint);
    }
}

void cMIDIMatchBranchNode::AddChildBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint)
{
    for (cMIDIMatchBranchNode* node = this; node; node = node->parent)
    {
        node->childEndpoints.push_back(endpoint);
    }
}

void cMIDIMatchBranchNode::RemoveBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint)
{
    if (parent)
    {
        parent->RemoveChildBranchNodeEndpoint(endpoint);
    }
    if (EraseFirst(endpoints, endpoint))
    {
        delete endpoint;
    }
}

void cMIDIMatchBranchNode::RemoveChildBranchNodeEndpoint(cMIDIMatchBranchNodeEndpoint* endpoint)
{
    for (cMIDIMatchBranchNode* node = this; node; node = node->parent)
    {
        EraseFirst(node->childEndpoints, endpoint);
    }
}

void cMIDIMatchBranchNode::RemoveAllChildBranchNodes()
{
    while (!children.empty())
    {
        delete children.back();
        children.pop_back();
    }
    IndexChildren();
}

void cMIDIMatchBranchNode::RemoveAllBranchNodeEndpoints()
{
    while (!endpoints.empty())
    {
        delete endpoints.back();
        endpoints.pop_back();
    }
}

void cMIDIMatchBranchNode::IndexChildren()
{
    wildcardChildCount = 0;
    firstLiteralChild.fill(nullptr);
    for (cMIDIMatchBranchNode* child : children)
    {
        if (child->nibble.matchAny)
        {
            ++wildcardChildCount;
        }
        else if (child->nibble.value < firstLiteralChild.size() && !firstLiteralChild[child->nibble.value])
        {
            firstLiteralChild[child->nibble.value] = child;
        }
    }
}

cMIDIMatchBranchNode* cMIDIMatchBranchNode::GetFurthestBranchNodeForNibbleList(const std::vector<sMIDIMatchNibble>& nibbles)
{
    cMIDIMatchBranchNode* current = this;
    while (current->depth < nibbles.size())
    {
        const sMIDIMatchNibble wanted = nibbles[current->depth];
        auto taken = std::find_if(current->children.begin(), current->children.end(),
                                  [wanted](const cMIDIMatchBranchNode* child) {
                                      return (child->nibble.matchAny && wanted.matchAny) ||
                                             child->nibble.value == wanted.value;
                                  });
        if (taken == current->children.end())
        {
            break;
        }
        current = *taken;
    }
    return current;
}

void cMIDIMatchBranchNode::GetNextBranchNodes(unsigned char nibble, std::vector<cMIDIMatchBranchNode*>& nextNodes,
                                              std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached) const
{
    // Every wildcard child accepts, then at most one literal: the first of its value.
    nextNodes.clear();
    cMIDIMatchBranchNode* literal = nibble < firstLiteralChild.size() ? firstLiteralChild[nibble] : nullptr;
    for (size_t index = 0; index <= wildcardChildCount; ++index)
    {
        cMIDIMatchBranchNode* child = index < wildcardChildCount ? children[index] : literal;
        if (child && child->TestNibbleMatches(nibble, endpointsReached) && child->HasChildBranchNodes())
        {
            nextNodes.push_back(child);
        }
    }
}

bool cMIDIMatchBranchNode::TestNibbleMatches(unsigned char nibble, std::vector<cMIDIMatchBranchNodeEndpoint*>& endpointsReached) const
{
    if (!Accepts(this->nibble, nibble))
    {
        return false;
    }
    if (!endpoints.empty())
    {
        endpointsReached.insert(endpointsReached.end(), endpoints.begin(), endpoints.end());
    }
    return true;
}
