// Trees rearranged by hand, node by node, against the plain walk along their links.
#include <vkmibh/tree.h>

#include "tests/support/PlainHandler.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

using namespace VLK;

namespace {

BMibNode* PlainChild(const BMibNode& node, unsigned id)
{
    BMibNode* child = node.FirstChild();
    while (child && child->Id() != id)
        child = child->NextSibling();
    return child;
}

BMibNode* PlainMatch(const BMibNode& top, const BObjectIdentifier& oid)
{
    BMibNode* match = nullptr;
    const BMibNode* node = &top;
    for (unsigned i = 0; i < oid.Length() && (node = PlainChild(*node, oid[i])); ++i)
        match = const_cast<BMibNode*>(node);
    return match;
}

BMibNode* PlainNext(const BMibNode* node)
{
    if (node->FirstChild())
        return node->FirstChild();
    for (; node; node = node->Parent()) {
        if (node->NextSibling())
            return node->NextSibling();
    }
    return nullptr;
}

// The search for a successor that examines every node in its way.
BMibNode* PlainNextHandlerNode(const BMibNode& top, const BObjectIdentifier& oid)
{
    BMibNode* node = PlainMatch(top, oid);
    if (node) {
        for (BMibNode* up = node; up; up = up->Parent()) {
            if (up->HasSubtreeHandler())
                return up;
        }
    } else {
        node = top.FirstChild();
        while (node && oid[0] > node->Id())
            node = node->NextSibling();
        if (!node)
            return nullptr;
    }
    while ((node = PlainNext(node))) {
        if (!node->HasSubtreeHandler())
            continue;
        const BObjectIdentifier& region = node->SubtreeHandler()->Oid();
        if (oid.IsUnderSubtree(region) || oid.Compare(region) <= 0)
            return node;
    }
    return nullptr;
}

// One tree under random treatment: registrations, handlers put where their identifiers do not
// lead, subtrees cut off, changed while they hang nowhere, and hung somewhere else.
class CHandledTree {
public:
    CHandledTree(unsigned seed, unsigned span) : m_random(seed), m_span(span)
    {
        m_top = m_tree.GetFirstRoot()->Parent();
    }

    void Step()
    {
        switch (Draw(9)) {
        case 0:
            m_tree.Unregister(m_handlers.empty() ? nullptr : AnyHandler());
            break;
        case 1:
            AnyNode(*m_top)->AddSubtreeHandler(NewHandler());
            break;
        case 2:
            CutOff();
            break;
        case 3:
            HangBack();
            break;
        case 4:
            ChangeCutOff();
            break;
        case 5:
            AddNew(*AnyNode(*m_top));
            break;
        case 6: {
            BMibNode* node = AnyNode(*m_top);
            node->RemoveSubtreeHandler(node->SubtreeHandler());
            break;
        }
        default:
            m_tree.Register(NewHandler());
        }
    }

    void ExpectAnswersOfThePlainWalk()
    {
        const BObjectIdentifier oid = AnyOid();
        unsigned matched = 0;
        ASSERT_EQ(PlainMatch(*m_top, oid), m_tree.FindLastMatchNode(oid, matched))
            << oid.ToString().c_str();
        ASSERT_EQ(PlainNextHandlerNode(*m_top, oid), m_tree.FindNextSubtreeHandlerNode(oid))
            << oid.ToString().c_str();
    }

private:
    unsigned Draw(unsigned below) { return m_random() % below; }

    BObjectIdentifier AnyOid()
    {
        BObjectIdentifier oid;
        for (unsigned left = 1 + Draw(4); left > 0; --left)
            oid.Append(Draw(12) ? Draw(m_span) : 4294967295u - Draw(2));
        return oid;
    }

    CPlainHandler* NewHandler()
    {
        const BObjectIdentifier oid = AnyOid();
        const unsigned position = Draw(3) ? 0 : 1 + Draw(oid.Length());
        unsigned bound = position ? oid[position - 1] : 0;
        bound = bound > 4294967290u ? 4294967295u : bound + Draw(4);
        m_handlers.push_back(std::make_unique<CPlainHandler>(oid, position, bound));
        return m_handlers.back().get();
    }

    CPlainHandler* AnyHandler() { return m_handlers[Draw(m_handlers.size())].get(); }

    // A node some steps down from `from`, or that one itself.
    BMibNode* AnyNode(BMibNode& from)
    {
        BMibNode* node = &from;
        for (unsigned depth = Draw(5); depth > 0 && node->FirstChild(); --depth) {
            node = node->FirstChild();
            for (unsigned along = Draw(m_span); along > 0 && node->NextSibling(); --along)
                node = node->NextSibling();
        }
        return node;
    }

    void AddNew(BMibNode& parent)
    {
        CPlainHandler* handler = Draw(2) ? NewHandler() : nullptr;
        auto node = std::make_unique<BMibNode>("", Draw(m_span), handler);
        if (parent.AddChildNode(node.get()))
            static_cast<void>(node.release()); // the parent's now
    }

    void CutOff()
    {
        BMibNode* node = AnyNode(*m_top);
        BMibNode* parent = node->Parent();
        // One root stays, by which the top is found.
        if (!parent || (parent == m_top && !m_top->FirstChild()->NextSibling()))
            return;
        ASSERT_EQ(node, parent->RemoveChildWithId(node->Id()));
        m_cutOff.emplace_back(node);
    }

    void HangBack()
    {
        if (m_cutOff.empty())
            return;
        std::swap(m_cutOff[Draw(m_cutOff.size())], m_cutOff.back());
        if (AnyNode(*m_top)->AddChildNode(m_cutOff.back().get()))
            static_cast<void>(m_cutOff.back().release());
        m_cutOff.pop_back();
    }

    void ChangeCutOff()
    {
        if (m_cutOff.empty())
            return;
        BMibNode* node = AnyNodeBelow(*m_cutOff[Draw(m_cutOff.size())]);
        if (Draw(2))
            node->AddSubtreeHandler(NewHandler());
        else
            AddNew(*node);
    }

    BMibNode* AnyNodeBelow(BMibNode& cutOff)
    {
        return cutOff.FirstChild() ? AnyNode(*cutOff.FirstChild()) : &cutOff;
    }

    std::mt19937 m_random;
    unsigned m_span;
    std::vector<std::unique_ptr<CPlainHandler>> m_handlers;
    BMibTree m_tree;
    BMibNode* m_top;
    std::vector<std::unique_ptr<BMibNode>> m_cutOff;
};

} // namespace

TEST(MibTreeByHand, SuccessorsAreThoseOfThePlainWalkWhateverIsMoved)
{
    for (unsigned seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        CHandledTree tree(seed, seed % 3 == 0 ? 24 : seed % 3 == 1 ? 5 : 3);
        for (int step = 0; step < 200; ++step) {
            tree.Step();
            for (int query = 0; query < 4; ++query)
                tree.ExpectAnswersOfThePlainWalk();
            if (testing::Test::HasFatalFailure())
                return;
        }
    }
}
