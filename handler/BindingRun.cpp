#include "handler/BindingRun.h"

#include "foundation/HostCall.h"

#include <cstring>

namespace VLK {

namespace {

unsigned DepthOf(const BMibNode* node)
{
    unsigned depth = 0;
    for (const BMibNode* parent = node->Parent(); parent; parent = parent->Parent())
        ++depth;
    return depth;
}

// Finds the handler of one binding after another. Bindings of one request
// mostly lie in one region, so the last leaf is tried before the tree.
class OwnerFinder {
public:
    OwnerFinder(const BMibTree& tree, const BObjectIdentifier& first)
        : m_tree(tree), m_first(first), m_node(tree.FindSubtreeHandlerNode(first)),
          m_leafDepth(m_node && !m_node->FirstChild() ? DepthOf(m_node) : 0)
    {
    }

    BMibSubtreeHandler* First() const { return m_node ? m_node->SubtreeHandler() : nullptr; }

    BMibSubtreeHandler* Find(const BObjectIdentifier& oid) const
    {
        if (m_leafDepth && oid.Length() >= m_leafDepth &&
            !std::memcmp(oid.Arcs(), m_first.Arcs(), m_leafDepth * sizeof(unsigned)))
            return m_node->SubtreeHandler();
        const BMibNode* node = m_tree.FindSubtreeHandlerNode(oid);
        return node ? node->SubtreeHandler() : nullptr;
    }

private:
    const BMibTree& m_tree;
    const BObjectIdentifier& m_first;
    const BMibNode* m_node;
    unsigned m_leafDepth; // arcs on the way to m_node; 0 when it has children
};

} // namespace

bool FormRun(const BMibTree& tree, const BVarBindList& list, int first, SBindingRun& run)
{
    const OwnerFinder owners(tree, list[first].Name());
    run.handler = owners.First();
    run.length = 1;
    if (!run.handler)
        return true;
    const int count = static_cast<int>(list.Count());
    for (int i = first + 1; i < count; ++i) {
        const BObjectIdentifier& name = list[i].Name();
        if (owners.Find(name) != run.handler) {
            const int joins =
                HostCall([&] { return run.handler->HandlesInstance(name) ? 1 : 0; }, -1);
            if (joins < 0)
                return false;
            if (joins == 0)
                break;
        }
        ++run.length;
    }
    return true;
}

} // namespace VLK
