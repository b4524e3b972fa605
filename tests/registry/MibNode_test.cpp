#include <vkmibh/tree.h>

#include "tests/support/PlainHandler.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

using namespace VLK;

namespace {

std::vector<unsigned> ChildIds(const BMibNode& node)
{
    std::vector<unsigned> ids;
    for (const BMibNode* child = node.FirstChild(); child; child = child->NextSibling())
        ids.push_back(child->Id());
    return ids;
}

BMibNode* Add(BMibNode& parent, unsigned id)
{
    BMibNode* child = new BMibNode("", id, nullptr);
    EXPECT_EQ(1, parent.AddChildNode(child));
    return child;
}

class CCountedNode : public BMibNode {
public:
    CCountedNode(unsigned id, int& count) : BMibNode("", id, nullptr), m_count(count) { ++m_count; }
    ~CCountedNode() override { --m_count; }

private:
    int& m_count;
};

} // namespace

TEST(MibNode, DefaultIsEmptyAndUnlinked)
{
    BMibNode node;
    EXPECT_EQ(0u, node.Id());
    EXPECT_TRUE(node.Name().empty());
    EXPECT_EQ(nullptr, node.Parent());
    EXPECT_EQ(nullptr, node.FirstChild());
    EXPECT_EQ(nullptr, node.NextSibling());
    EXPECT_FALSE(node.HasSubtreeHandler());
}

TEST(MibNode, ConstructorsTakeNameIdAndHandler)
{
    CPlainHandler handler("1.7");
    BMibNode byText("a", 7, &handler);
    BMibNode byString(BString("b"), 8, nullptr);
    EXPECT_EQ(BString("a"), byText.Name());
    EXPECT_EQ(7u, byText.Id());
    EXPECT_EQ(&handler, byText.SubtreeHandler());
    EXPECT_EQ(BString("b"), byString.Name());
    EXPECT_EQ(8u, byString.Id());
    EXPECT_FALSE(byString.HasSubtreeHandler());
    EXPECT_EQ(nullptr, byString.SubtreeHandler());
}

TEST(MibNode, ChildrenAreListedInRisingOrder)
{
    BMibNode node;
    Add(node, 5);
    Add(node, 1);
    Add(node, 3);
    EXPECT_EQ((std::vector<unsigned>{1, 3, 5}), ChildIds(node));
    EXPECT_EQ(&node, node.ChildWithId(3)->Parent());
    EXPECT_EQ(nullptr, node.ChildWithId(2));
}

TEST(MibNode, IdsAreUnsigned)
{
    BMibNode node;
    Add(node, 4294967295u);
    Add(node, 2147483648u);
    Add(node, 0);
    EXPECT_EQ((std::vector<unsigned>{0, 2147483648u, 4294967295u}), ChildIds(node));
}

TEST(MibNode, TakenIdIsRefusedAndChangesNothing)
{
    BMibNode node;
    for (unsigned id : {1u, 3u, 5u})
        Add(node, id);
    for (unsigned id : {1u, 3u, 5u}) {
        BMibNode twin("twin", id, nullptr);
        EXPECT_EQ(0, node.AddChildNode(&twin));
        EXPECT_EQ(nullptr, twin.Parent());
    }
    EXPECT_EQ(0, node.AddChildNode(nullptr));
    EXPECT_EQ((std::vector<unsigned>{1, 3, 5}), ChildIds(node));
}

TEST(MibNode, RightSiblingIsTheNextOneOrNull)
{
    BMibNode node;
    Add(node, 1);
    BMibNode* three = Add(node, 3);
    EXPECT_EQ(three, node.RightSiblingOfChildWithId(1));
    EXPECT_EQ(nullptr, node.RightSiblingOfChildWithId(3));
    EXPECT_EQ(nullptr, node.RightSiblingOfChildWithId(2));
}

TEST(MibNode, RemovedChildIsUnlinkedAndKeepsItsLinks)
{
    BMibNode node;
    for (unsigned id : {1u, 3u, 5u})
        Add(node, id);
    BMibNode* five = node.ChildWithId(5);
    std::unique_ptr<BMibNode> three(node.RemoveChildWithId(3));
    ASSERT_TRUE(three);
    EXPECT_EQ((std::vector<unsigned>{1, 5}), ChildIds(node));
    EXPECT_EQ(&node, three->Parent());
    EXPECT_EQ(five, three->NextSibling());

    std::unique_ptr<BMibNode> one(node.RemoveChildWithId(1));
    ASSERT_TRUE(one);
    EXPECT_EQ((std::vector<unsigned>{5}), ChildIds(node));
    EXPECT_EQ(nullptr, node.RemoveChildWithId(1));
}

TEST(MibNode, RemovedChildCanBeHungAgain)
{
    BMibNode node, other;
    for (unsigned id : {1u, 3u})
        Add(node, id);
    BMibNode* one = node.RemoveChildWithId(1);
    EXPECT_EQ(1, other.AddChildNode(one));
    EXPECT_EQ(&other, one->Parent());
    EXPECT_EQ(nullptr, one->NextSibling());
}

TEST(MibNode, RemovedChildDoesNotReachForItsOldTree)
{
    std::unique_ptr<BMibNode> child;
    {
        BMibNode node;
        Add(node, 1);
        child.reset(node.RemoveChildWithId(1));
    }
    CPlainHandler handler("9.9");
    EXPECT_EQ(1, child->AddSubtreeHandler(&handler));
}

TEST(MibNode, HoldsOneHandlerAndRefusesASecond)
{
    CPlainHandler first("1"), second("1");
    BMibNode node("", 1, nullptr);
    EXPECT_EQ(0, node.AddSubtreeHandler(nullptr));
    EXPECT_NE(0, node.AddSubtreeHandler(&first));
    EXPECT_EQ(0, node.AddSubtreeHandler(&second));
    EXPECT_EQ(0, node.AddSubtreeHandler(&first));
    EXPECT_EQ(&first, node.SubtreeHandler());
}

TEST(MibNode, RemovesOnlyTheHandlerItCarries)
{
    CPlainHandler first("1"), second("1");
    BMibNode node("", 1, nullptr);
    EXPECT_EQ(0, node.RemoveSubtreeHandler(&first));
    node.AddSubtreeHandler(&first);
    EXPECT_EQ(0, node.RemoveSubtreeHandler(&second));
    EXPECT_EQ(1, node.RemoveSubtreeHandler(&first));
    EXPECT_FALSE(node.HasSubtreeHandler());
    EXPECT_EQ(0, node.RemoveSubtreeHandler(&first));
}

TEST(MibNode, OidLeadsFromBelowTheTop)
{
    BMibNode top("root", 0, nullptr);
    BMibNode* node = Add(*Add(*Add(top, 1), 3), 6);
    BObjectIdentifier oid;
    node->GetOid(oid);
    EXPECT_EQ(OidOf("1.3.6"), oid);
    top.GetOid(oid);
    EXPECT_EQ(0u, oid.Length());
}

TEST(MibNode, OidIsAppendedAndReversedWithWhatWasThere)
{
    BMibNode top("root", 0, nullptr);
    BMibNode* node = Add(*Add(top, 1), 3);
    BObjectIdentifier oid = OidOf("8.9");
    node->GetOid(oid);
    EXPECT_EQ(OidOf("1.3.9.8"), oid);
}

TEST(MibNode, NextVisitsInPreOrder)
{
    BMibNode top("root", 0, nullptr);
    BMibNode* one = Add(top, 1);
    BMibNode* oneTwo = Add(*one, 2);
    BMibNode* oneTwoSix = Add(*oneTwo, 6);
    BMibNode* oneFour = Add(*one, 4);
    BMibNode* two = Add(top, 2);
    EXPECT_EQ(one, top.Next());
    EXPECT_EQ(oneTwo, one->Next());
    EXPECT_EQ(oneTwoSix, oneTwo->Next());
    EXPECT_EQ(oneFour, oneTwoSix->Next());
    EXPECT_EQ(two, oneFour->Next());
    EXPECT_EQ(nullptr, two->Next());
    EXPECT_EQ(nullptr, BMibNode::Next(nullptr));
    EXPECT_EQ(one, BMibNode::Next(&top));
}

TEST(MibNode, DestroysItsSubtreeThroughVirtualDestructorsButNoHandler)
{
    int nodes = 0;
    CPlainHandler handler("1");
    {
        CCountedNode top(0, nodes);
        for (unsigned id = 0; id < 20; ++id) {
            BMibNode* child = new CCountedNode(id, nodes);
            ASSERT_EQ(1, top.AddChildNode(child));
            for (unsigned grandchild = 0; grandchild < 3; ++grandchild)
                ASSERT_EQ(1, child->AddChildNode(new CCountedNode(grandchild, nodes)));
            child->AddSubtreeHandler(&handler);
        }
        EXPECT_EQ(81, nodes);
    }
    EXPECT_EQ(0, nodes);
    EXPECT_EQ(BString("plain"), handler.Name());
}

TEST(MibNode, DestructionNeedsNoStackForSiblingsOrDepth)
{
    BMibNode wide;
    for (unsigned id = 300000; id > 0; --id)
        ASSERT_EQ(1, wide.AddChildNode(new BMibNode("", id, nullptr)));
    auto deep = std::make_unique<BMibNode>();
    BMibNode* last = deep.get();
    for (unsigned depth = 0; depth < 300000; ++depth) {
        BMibNode* child = new BMibNode("", depth, nullptr);
        ASSERT_EQ(1, last->AddChildNode(child));
        last = child;
    }
    deep.reset();
}
