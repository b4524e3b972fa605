// The registration tree.
#pragma once

#include <vkmibh/subtree.h>

namespace VLK {

class BMibChildIndex;

class VKMIBH_API BMibNode {
public:
    BMibNode() noexcept;
    BMibNode(const char* name, unsigned id, BMibSubtreeHandler* handler);
    BMibNode(const BString& name, unsigned id, BMibSubtreeHandler* handler);
    virtual ~BMibNode();
    BMibNode(const BMibNode&) = delete;
    BMibNode& operator=(const BMibNode&) = delete;

    BMibNode* ChildWithId(unsigned id) const;
    BMibNode* RightSiblingOfChildWithId(unsigned id) const;
    BMibNode* RemoveChildWithId(unsigned id);
    int AddChildNode(BMibNode* child);
    int AddSubtreeHandler(BMibSubtreeHandler* handler);
    int RemoveSubtreeHandler(BMibSubtreeHandler* handler);
    void ClearSubtreeHandlers() { m_handlers.Clear(); }
    void GetOid(BObjectIdentifier& oid) const;
    BMibNode* Next() const;

    unsigned Id() const { return m_id; }
    BMibNode* Parent() const { return m_parent; }
    BMibNode* FirstChild() const { return m_firstChild; }
    BMibNode* NextSibling() const { return m_nextSibling; }
    const BString& Name() const { return m_name; }
    // The node's handler, null when it carries none.
    BMibSubtreeHandler* SubtreeHandler() const
    {
        return m_handlers.First() ? static_cast<BMibSubtreeHandler*>(m_handlers.First()->data)
                                  : nullptr;
    }

private:
    friend struct SLayoutCheck;
    unsigned m_id;
    BMibNode* m_parent;
    BMibNode* m_firstChild;
    BMibNode* m_nextSibling;
    BLinkList m_handlers;
    BString m_name;
    // Finds a child among many; null while the children are few.
    BMibChildIndex* m_childIndex;
};

class VKMIBH_API BMibTree {
public:
    BMibTree();
    virtual ~BMibTree();
    BMibTree(const BMibTree&) = delete;
    BMibTree& operator=(const BMibTree&) = delete;
    virtual int Register(BMibSubtreeHandler* handler);
    virtual int Unregister(BMibSubtreeHandler* handler);
    virtual int Unregister(BObjectIdentifier& oid);

    int Initialize();
    BMibNode* GetRoot(unsigned firstArc) const;
    BMibNode* GetFirstRoot() const;
    int Insert(BMibNode* node, BMibNode* parent);
    BMibNode* InsertMissingNodes(const BObjectIdentifier& oid, unsigned count);
    BMibNode* FindLastMatchNode(const BObjectIdentifier& oid, unsigned& matched) const;
    BMibNode* FindNode(const BObjectIdentifier& oid) const;
    BMibNode* FindSubtreeHandlerNode(const BObjectIdentifier& oid) const;
    BMibNode* FindNextSubtreeHandlerNode(const BObjectIdentifier& oid) const;

private:
    friend struct SLayoutCheck;
    BMibNode m_top;
};

} // namespace VLK
