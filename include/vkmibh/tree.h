// The registration tree.
#pragma once

#include <vkmibh/subtree.h>

namespace VLK {

class BMibChildIndex;

// One arc of the registration tree: an id under a parent, its children in
// ascending order of their ids, and the handler that serves what lies below.
//
//   BMibNode* node = new BMibNode("ifEntry", 1, handler);
//   if (!parent->AddChildNode(node))
//       delete node; // the id is taken
//
// Ownership: owns its children and destroys them with itself; owns no handler.
//            A child that RemoveChildWithId() gave back, or AddChildNode()
//            refused, belongs to the caller; one that hangs under a parent is
//            removed there before it is deleted or hung elsewhere.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = refused and unchanged; pointer or null.
// Contract:  field order is ABI; siblings are linked by strictly rising ids.
class VKMIBH_API BMibNode {
public:
    BMibNode() noexcept;
    BMibNode(const char* name, unsigned id, BMibSubtreeHandler* handler);
    BMibNode(const BString& name, unsigned id, BMibSubtreeHandler* handler);
    virtual ~BMibNode();
    BMibNode(const BMibNode&) = delete;
    BMibNode& operator=(const BMibNode&) = delete;

    // Unlinks the child and returns it; its parent and sibling links stay as they were.
    BMibNode* RemoveChildWithId(unsigned id);
    int AddChildNode(BMibNode* child);
    // Refused while the node carries a handler, whichever it is.
    int AddSubtreeHandler(BMibSubtreeHandler* handler);
    int RemoveSubtreeHandler(BMibSubtreeHandler* handler);
    void ClearSubtreeHandlers() { m_handlers.Clear(); }

    BMibNode* ChildWithId(unsigned id) const;
    BMibNode* RightSiblingOfChildWithId(unsigned id) const;
    // Builds the node's identifier in `oid`, which the caller passes empty.
    void GetOid(BObjectIdentifier& oid) const;
    // The next node in the order of identifiers: first child, sibling, or an ancestor's sibling.
    BMibNode* Next() const;
    static BMibNode* Next(const BMibNode* node);

    unsigned Id() const { return m_id; }
    BMibNode* Parent() const { return m_parent; }
    BMibNode* FirstChild() const { return m_firstChild; }
    BMibNode* NextSibling() const { return m_nextSibling; }
    const BString& Name() const { return m_name; }
    bool HasSubtreeHandler() const { return m_handlers.First() != nullptr; }
    // The node's handler, null when it carries none.
    BMibSubtreeHandler* SubtreeHandler() const
    {
        return m_handlers.First() ? static_cast<BMibSubtreeHandler*>(m_handlers.First()->data)
                                  : nullptr;
    }

private:
    friend struct SLayoutCheck;
    friend class BMibTree;
    // The node whose list this one is in, null once it was removed.
    BMibNode* Holder() const { return m_isRemoved ? nullptr : m_parent; }
    VKMIBH_LOCAL BMibNode* ChildAtOrAfter(unsigned id) const;
    VKMIBH_LOCAL BMibNode* ChildBefore(unsigned id) const;
    VKMIBH_LOCAL BMibNode* NextAfterSubtree() const;
    VKMIBH_LOCAL void IndexChild(BMibNode* child);
    VKMIBH_LOCAL bool IsPlaceOf(const BMibSubtreeHandler& handler) const;
    VKMIBH_LOCAL void MarkStrangers();

    unsigned m_id;
    BMibNode* m_parent;
    BMibNode* m_firstChild;
    BMibNode* m_nextSibling;
    BLinkList m_handlers;
    BString m_name;
    // Finds a child among many; null while the children are few.
    BMibChildIndex* m_childIndex;
    unsigned m_childCount;
    // Of a top node: whether a node below it carries a handler that Register() would not have
    // hung there, or once did.
    bool m_hasStrangers;
    bool m_isRemoved;
};

// Maps identifiers to the handlers of the regions they lie in. The tree starts
// with the nodes of 1.3.6.1 that every agent has and only ever grows.
//
//   BMibTree tree;
//   tree.Register(&handler);
//   BMibNode* node = tree.FindSubtreeHandlerNode(oid);
//   if (node)
//       node->SubtreeHandler()->Get(...);
//
// A handler with a range is registered once for every value of one arc of its
// identifier, from that arc's own value to the bound, which may be the last
// arc or one before it. Where an instance is refused, those before it stay.
// Unregister() takes a handler only from the node at its own identifier: the
// other instances of a range keep it until the tree ends, or until each is
// unregistered by its identifier, so such a handler must outlive the tree's use.
//
// Ownership: owns the nodes, not the handlers.
// Threads:   no lock inside; whoever registers must keep look-ups out
//            meanwhile (BMibHandler does). Look-ups may run side by side.
// Errors:    1/0, pointer or null.
// Contract:  field order is ABI; nodes are never removed, and those made only
//            to reach a deeper one are named "". Nodes may be rearranged by
//            hand: from the first one whose handler is not where Register()
//            would hang it, a search for a successor examines every node in
//            its way, so it takes longer among many siblings.
class VKMIBH_API BMibTree {
public:
    BMibTree();
    BMibTree(const BMibTree&) = delete;
    BMibTree& operator=(const BMibTree&) = delete;

    // Makes the well-known nodes; the constructor has done it.
    int Initialize();
    int Insert(BMibNode* node, BMibNode* parent);
    // Makes what is missing of the path of the first `count` arcs and returns its last node.
    BMibNode* InsertMissingNodes(const BObjectIdentifier& oid, unsigned count);

    BMibNode* GetRoot(unsigned firstArc) const;
    BMibNode* GetFirstRoot() const;
    // The node of the longest existing prefix, with the number of its arcs (0 and null when not
    // even the first exists). For an empty identifier `matched` is not written.
    BMibNode* FindLastMatchNode(const BObjectIdentifier& oid, unsigned& matched) const;
    BMibNode* FindNode(const BObjectIdentifier& oid) const;
    // The deepest node on the path of `oid` that carries a handler.
    BMibNode* FindSubtreeHandlerNode(const BObjectIdentifier& oid) const;
    // The handler to ask for a successor of `oid`: the nearest one whose region holds it, else
    // the first one after it.
    BMibNode* FindNextSubtreeHandlerNode(const BObjectIdentifier& oid) const;

    // Virtual operations, in slot order.
    virtual ~BMibTree();
    virtual int Register(BMibSubtreeHandler* handler);
    virtual int Unregister(BMibSubtreeHandler* handler);
    // Clears the node at exactly `oid`; 1 when there is one, whatever it carried.
    virtual int Unregister(BObjectIdentifier& oid);

private:
    friend struct SLayoutCheck;
    VKMIBH_LOCAL int RegisterAt(const BObjectIdentifier& oid, BMibSubtreeHandler* handler);
    VKMIBH_LOCAL BMibNode* NextOf(const BMibNode& match, const BObjectIdentifier& oid,
                                  unsigned matched) const;

    BMibNode m_top;
};

} // namespace VLK
