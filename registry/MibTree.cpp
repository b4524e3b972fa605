// The registration tree: its well-known nodes, paths and look-ups.
#include <vkmibh/tree.h>

#include <new>

namespace VLK {

namespace {

struct SWellKnownNode {
    const char* name;
    unsigned id;
    int parent; // row of the parent in this table, -1 for the top
};

constexpr SWellKnownNode kWellKnownNodes[] = {
    {"iso", 1, -1},
    {"org", 3, 0},
    {"dod", 6, 1},
    {"internet", 1, 2},
    {"directory", 1, 3},
    {"mgmt", 2, 3},
    {"experimental", 3, 3},
    {"private", 4, 3},
    {"enterprises", 1, 7},
    {"security", 5, 3},
    {"snmpV2", 6, 3},
    {"snmpDomains", 1, 10},
    // CONTRACT: "snmpProxys" is spelt so; callers look nodes up by their names.
    {"snmpProxys", 2, 10},
    {"snmpModules", 3, 10},
};
constexpr int kWellKnownCount = sizeof(kWellKnownNodes) / sizeof(kWellKnownNodes[0]);

} // namespace

BMibTree::BMibTree() : m_top("root", 0, nullptr)
{
    VKDbgModuleTraceClass(eTraceMibTree, "BMibTree()");
    Initialize();
}

BMibTree::~BMibTree() { VKDbgModuleTraceClass(eTraceMibTree, "~~~~BMibTree()"); }

int BMibTree::Initialize()
{
    BMibNode* nodes[kWellKnownCount];
    for (int i = 0; i < kWellKnownCount; ++i) {
        const SWellKnownNode& row = kWellKnownNodes[i];
        nodes[i] = new (std::nothrow) BMibNode(row.name, row.id, nullptr);
        const bool isNamed = nodes[i] && !nodes[i]->Name().empty();
        if (!isNamed || !Insert(nodes[i], row.parent < 0 ? &m_top : nodes[row.parent])) {
            delete nodes[i];
            if (i > 0)
                delete m_top.RemoveChildWithId(kWellKnownNodes[0].id);
            return 0;
        }
    }
    return 1;
}

BMibNode* BMibTree::GetRoot(unsigned firstArc) const { return m_top.ChildWithId(firstArc); }

BMibNode* BMibTree::GetFirstRoot() const { return m_top.FirstChild(); }

int BMibTree::Insert(BMibNode* node, BMibNode* parent)
{
    return parent ? parent->AddChildNode(node) : 0;
}

BMibNode* BMibTree::InsertMissingNodes(const BObjectIdentifier& oid, unsigned count)
{
    if (count == 0 || oid.Length() < count)
        return nullptr;
    BMibNode* node = &m_top;
    for (unsigned i = 0; i < count; ++i) {
        BMibNode* child = node->ChildWithId(oid[i]);
        if (!child) {
            child = new (std::nothrow) BMibNode("", oid[i], nullptr);
            if (!child)
                return nullptr;
            node->AddChildNode(child);
        }
        node = child;
    }
    return node;
}

BMibNode* BMibTree::FindLastMatchNode(const BObjectIdentifier& oid, unsigned& matched) const
{
    const unsigned length = oid.Length();
    if (length == 0)
        return nullptr;
    const BMibNode* parent = &m_top;
    BMibNode* last = nullptr;
    unsigned count = 0;
    while (count < length) {
        BMibNode* child = parent->ChildWithId(oid[count]);
        if (!child)
            break;
        parent = last = child;
        ++count;
    }
    matched = count;
    return last;
}

BMibNode* BMibTree::FindNode(const BObjectIdentifier& oid) const
{
    unsigned matched = 0;
    BMibNode* node = FindLastMatchNode(oid, matched);
    return matched == oid.Length() ? node : nullptr;
}

BMibNode* BMibTree::FindSubtreeHandlerNode(const BObjectIdentifier& oid) const
{
    unsigned matched = 0;
    BMibNode* node = FindLastMatchNode(oid, matched);
    while (node && !node->HasSubtreeHandler())
        node = node->Parent();
    return node;
}

BMibNode* BMibTree::FindNextSubtreeHandlerNode(const BObjectIdentifier& oid) const
{
    if (oid.Length() == 0)
        return nullptr;
    unsigned matched = 0;
    BMibNode* node = nullptr;
    if (BMibNode* match = FindLastMatchNode(oid, matched)) {
        for (BMibNode* up = match; up; up = up->Parent()) {
            if (up->HasSubtreeHandler())
                return up;
        }
        node = NextOf(*match, oid, matched);
    } else {
        // CONTRACT: the root found here is not examined itself, only what follows it; a handler
        // registered at a single arc is no successor of a smaller arc.
        node = BMibNode::Next(m_top.ChildAtOrAfter(oid[0]));
    }
    for (; node; node = node->Next()) {
        if (!node->HasSubtreeHandler())
            continue;
        const BObjectIdentifier& region = node->SubtreeHandler()->Oid();
        if (oid.IsUnderSubtree(region) || oid.Compare(region) <= 0)
            return node;
    }
    return nullptr;
}

// Where the walk for a successor goes on after the last matching node. Children before the
// missing arc cannot answer, so they are passed over, unless handlers were hung by hand where
// their identifiers do not lead.
BMibNode* BMibTree::NextOf(const BMibNode& match, const BObjectIdentifier& oid,
                           unsigned matched) const
{
    if (matched == oid.Length() || m_top.m_hasStrangers)
        return match.Next();
    BMibNode* child = match.ChildAtOrAfter(oid[matched]);
    return child ? child : match.NextAfterSubtree();
}

} // namespace VLK
