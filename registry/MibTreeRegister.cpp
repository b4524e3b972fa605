// Hanging handlers into the tree and taking them out.
#include <vkmibh/tree.h>

#include <new>

namespace VLK {

int BMibTree::Register(BMibSubtreeHandler* handler)
{
    if (!handler)
        return 0;
    const BObjectIdentifier& oid = handler->Oid();
    const unsigned position = handler->RangePosition();
    if (position == 0)
        return RegisterAt(oid, handler);

    const unsigned last = handler->RangeUpperBound();
    if (position > oid.Length() || last < oid[position - 1])
        return 0;
    BObjectIdentifier instance(oid);
    if (instance.Length() != oid.Length())
        return 0;
    for (unsigned value = oid[position - 1];; ++value) {
        instance[position - 1] = value;
        if (!RegisterAt(instance, handler))
            return 0;
        if (value == last)
            return 1;
    }
}

int BMibTree::RegisterAt(const BObjectIdentifier& oid, BMibSubtreeHandler* handler)
{
    const unsigned length = oid.Length();
    if (length == 0)
        return 0;
    BMibNode* parent = length == 1 ? &m_top : InsertMissingNodes(oid, length - 1);
    if (!parent)
        return 0;
    const unsigned id = oid[length - 1];
    if (BMibNode* node = parent->ChildWithId(id))
        return node->AddSubtreeHandler(handler);
    BMibNode* node = new (std::nothrow) BMibNode(handler->Name(), id, handler);
    // There was memory for all of it.
    const bool isWhole = node && node->HasSubtreeHandler() && node->Name() == handler->Name();
    if (isWhole && parent->AddChildNode(node))
        return 1;
    delete node;
    return 0;
}

// CONTRACT: only the node at the handler's own identifier is cleared; the other instances of a
// range keep the handler until the tree ends.
int BMibTree::Unregister(BMibSubtreeHandler* handler)
{
    if (!handler)
        return 0;
    BMibNode* node = FindNode(handler->Oid());
    return node ? node->RemoveSubtreeHandler(handler) : 0;
}

int BMibTree::Unregister(BObjectIdentifier& oid)
{
    BMibNode* node = FindNode(oid);
    if (!node)
        return 0;
    node->ClearSubtreeHandlers();
    return 1;
}

} // namespace VLK
