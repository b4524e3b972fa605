// One arc of the registration tree.
#include <vkmibh/tree.h>

#include "registry/MibChildIndex.h"

#include <new>

namespace VLK {

namespace {

// With fewer children a walk along the list is as fast as the index.
constexpr unsigned kIndexFrom = 8;

// Counts at which a missing index is (again) made: 8, 16, 32, ... Where memory runs out the
// list goes on alone, and the attempts stay few.
bool IsIndexCount(unsigned count) { return count >= kIndexFrom && (count & (count - 1)) == 0; }

} // namespace

BMibNode::BMibNode() noexcept
    : m_id(0), m_parent(nullptr), m_firstChild(nullptr), m_nextSibling(nullptr),
      m_childIndex(nullptr), m_childCount(0), m_hasStrangers(false), m_isRemoved(false)
{
}

BMibNode::BMibNode(const char* name, unsigned id, BMibSubtreeHandler* handler)
    : m_id(id), m_parent(nullptr), m_firstChild(nullptr), m_nextSibling(nullptr), m_name(name),
      m_childIndex(nullptr), m_childCount(0), m_hasStrangers(false), m_isRemoved(false)
{
    if (handler)
        m_handlers.Insert(handler);
}

BMibNode::BMibNode(const BString& name, unsigned id, BMibSubtreeHandler* handler)
    : m_id(id), m_parent(nullptr), m_firstChild(nullptr), m_nextSibling(nullptr), m_name(name),
      m_childIndex(nullptr), m_childCount(0), m_hasStrangers(false), m_isRemoved(false)
{
    if (handler)
        m_handlers.Insert(handler);
}

// Leaves first and without recursion: neither many children nor long paths may cost stack.
BMibNode::~BMibNode()
{
    BMibNode* node = this;
    while (m_firstChild) {
        while (node->m_firstChild)
            node = node->m_firstChild;
        BMibNode* parent = node->m_parent;
        delete parent->m_childIndex;
        parent->m_childIndex = nullptr;
        parent->m_firstChild = node->m_nextSibling;
        delete node;
        node = parent;
    }
    delete m_childIndex;
}

BMibNode* BMibNode::ChildWithId(unsigned id) const
{
    BMibNode* child = m_firstChild;
    if (!child)
        return nullptr;
    if (m_childIndex)
        return m_childIndex->Find(id);
    while (child && child->m_id != id)
        child = child->m_nextSibling;
    return child;
}

BMibNode* BMibNode::ChildAtOrAfter(unsigned id) const
{
    if (m_childIndex)
        return m_childIndex->AtOrAfter(id);
    BMibNode* child = m_firstChild;
    while (child && child->m_id < id)
        child = child->m_nextSibling;
    return child;
}

BMibNode* BMibNode::ChildBefore(unsigned id) const
{
    if (m_childIndex)
        return m_childIndex->Before(id);
    BMibNode* before = nullptr;
    for (BMibNode* child = m_firstChild; child && child->m_id < id; child = child->m_nextSibling)
        before = child;
    return before;
}

BMibNode* BMibNode::RightSiblingOfChildWithId(unsigned id) const
{
    const BMibNode* child = ChildWithId(id);
    return child ? child->m_nextSibling : nullptr;
}

BMibNode* BMibNode::RemoveChildWithId(unsigned id)
{
    BMibNode* before = ChildBefore(id);
    BMibNode*& link = before ? before->m_nextSibling : m_firstChild;
    BMibNode* child = link;
    if (!child || child->m_id != id)
        return nullptr;
    link = child->m_nextSibling;
    if (m_childIndex)
        m_childIndex->Remove(id);
    --m_childCount;
    child->m_isRemoved = true;
    // CONTRACT: the child keeps its parent and sibling links, so that a caller can still tell
    // where it hung.
    return child;
}

int BMibNode::AddChildNode(BMibNode* child)
{
    if (!child)
        return 0;
    BMibNode* before = ChildBefore(child->m_id);
    BMibNode*& link = before ? before->m_nextSibling : m_firstChild;
    if (link && link->m_id == child->m_id)
        return 0;
    child->m_nextSibling = link;
    child->m_parent = this;
    child->m_isRemoved = false;
    link = child;
    ++m_childCount;
    IndexChild(child);
    // Of children brought along nobody knows whether their handlers belong here.
    if (child->m_firstChild ||
        (child->SubtreeHandler() && !child->IsPlaceOf(*child->SubtreeHandler())))
        MarkStrangers();
    return 1;
}

// Brings the index up to date with a child just linked in; drops it when memory runs out.
void BMibNode::IndexChild(BMibNode* child)
{
    if (m_childIndex) {
        if (m_childIndex->Insert(child->m_id, child))
            return;
        delete m_childIndex;
        m_childIndex = nullptr;
    }
    if (!IsIndexCount(m_childCount))
        return;
    BMibChildIndex* index = new (std::nothrow) BMibChildIndex;
    if (!index)
        return;
    for (BMibNode* each = m_firstChild; each; each = each->m_nextSibling) {
        if (!index->Insert(each->m_id, each)) {
            delete index;
            return;
        }
    }
    m_childIndex = index;
}

int BMibNode::AddSubtreeHandler(BMibSubtreeHandler* handler)
{
    if (!handler || m_handlers.First())
        return 0;
    const int added = m_handlers.Insert(handler);
    if (!IsPlaceOf(*handler))
        MarkStrangers();
    return added;
}

int BMibNode::RemoveSubtreeHandler(BMibSubtreeHandler* handler)
{
    for (BLLItem* item = m_handlers.First(); item; item = item->next) {
        if (item->data == handler) {
            m_handlers.Remove(item);
            return 1;
        }
    }
    return 0;
}

// CONTRACT: the identifier is not cleared first (only the top node empties it): ids are appended
// and the whole is reversed, so callers pass an empty one.
void BMibNode::GetOid(BObjectIdentifier& oid) const
{
    if (!m_parent) {
        oid.Clear();
        return;
    }
    for (const BMibNode* node = this; node->m_parent; node = node->m_parent)
        oid.Append(node->m_id);
    oid.Reverse();
}

BMibNode* BMibNode::Next() const { return m_firstChild ? m_firstChild : NextAfterSubtree(); }

BMibNode* BMibNode::Next(const BMibNode* node) { return node ? node->Next() : nullptr; }

BMibNode* BMibNode::NextAfterSubtree() const
{
    for (const BMibNode* node = this; node; node = node->m_parent) {
        if (node->m_nextSibling)
            return node->m_nextSibling;
    }
    return nullptr;
}

// Whether registering the handler would hang it on this node: on its own identifier, or with the
// arc of its range raised.
bool BMibNode::IsPlaceOf(const BMibSubtreeHandler& handler) const
{
    const BObjectIdentifier& oid = handler.Oid();
    unsigned arc = oid.Length();
    const BMibNode* node = this;
    for (; arc > 0 && node->Holder(); node = node->Holder(), --arc) {
        const bool raised = arc == handler.RangePosition() && node->m_id > oid[arc - 1];
        if (node->m_id != oid[arc - 1] && !raised)
            return false;
    }
    return arc == 0 && !node->Holder();
}

void BMibNode::MarkStrangers()
{
    BMibNode* top = this;
    while (top->Holder())
        top = top->Holder();
    top->m_hasStrangers = true;
}

} // namespace VLK
