// A node with many children answers as the list of its children does.
#include <vkmibh/tree.h>

#include "registry/MibChildIndex.h"
#include "tests/support/FailingAlloc.h"
#include "tests/support/PlainHandler.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <vector>

using namespace VLK;

namespace {

constexpr unsigned kLast = 4294967295u;

BMibNode* InList(const BMibNode& node, unsigned id)
{
    for (BMibNode* child = node.FirstChild(); child; child = child->NextSibling()) {
        if (child->Id() == id)
            return child;
    }
    return nullptr;
}

std::vector<unsigned> ChildIds(const BMibNode& node)
{
    std::vector<unsigned> ids;
    for (const BMibNode* child = node.FirstChild(); child; child = child->NextSibling())
        ids.push_back(child->Id());
    return ids;
}

bool TryAdd(BMibNode& node, unsigned id)
{
    BMibNode* child = new BMibNode("", id, nullptr);
    if (node.AddChildNode(child))
        return true;
    delete child;
    return false;
}

// Every answer of the node about `id` against a walk along the list.
void ExpectAnswersOfTheList(const BMibNode& node, unsigned id)
{
    BMibNode* child = InList(node, id);
    ASSERT_EQ(child, node.ChildWithId(id)) << id;
    ASSERT_EQ(child ? child->NextSibling() : nullptr, node.RightSiblingOfChildWithId(id)) << id;
}

void ExpectChildren(const BMibNode& node, const std::set<unsigned>& model)
{
    ASSERT_EQ(std::vector<unsigned>(model.begin(), model.end()), ChildIds(node));
    for (unsigned id : model) {
        ASSERT_NE(nullptr, node.ChildWithId(id)) << id;
        ASSERT_EQ(id, node.ChildWithId(id)->Id());
    }
}

std::vector<unsigned> Ids(unsigned count, unsigned step)
{
    std::vector<unsigned> ids(count);
    for (unsigned i = 0; i < count; ++i)
        ids[i] = i * step;
    return ids;
}

} // namespace

TEST(MibChildIndex, AnswersAsTheListOverRandomInsertAndRemove)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned span = seed % 3 == 0 ? 40 : seed % 3 == 1 ? 900 : kLast;
        std::uniform_int_distribution<unsigned> any(0, span);
        BMibNode node;
        std::set<unsigned> model;
        for (int step = 0; step < 3000; ++step) {
            const unsigned id = any(random);
            // Growing first, shrinking then, down to nothing.
            if (random() % 4 < (step < 1800 ? 3u : 1u)) {
                ASSERT_EQ(model.insert(id).second, TryAdd(node, id));
            } else {
                auto near = model.lower_bound(id);
                const unsigned gone = near == model.end() ? id : *near;
                std::unique_ptr<BMibNode> removed(node.RemoveChildWithId(gone));
                ASSERT_EQ(model.erase(gone) == 1, removed != nullptr);
            }
            if (step % 16 == 0) {
                ExpectAnswersOfTheList(node, id);
                ExpectAnswersOfTheList(node, model.empty() ? id : *model.rbegin());
            }
        }
        ExpectChildren(node, model);
        for (unsigned id : std::set<unsigned>(model))
            delete node.RemoveChildWithId(id);
        EXPECT_EQ(nullptr, node.FirstChild());
        EXPECT_EQ(nullptr, node.ChildWithId(0));
        EXPECT_TRUE(TryAdd(node, 5));
        EXPECT_NE(nullptr, node.ChildWithId(5));
    }
}

TEST(MibChildIndex, AnyOrderOfInsertionGivesTheSameChildren)
{
    std::vector<unsigned> ids = Ids(3000, 7);
    ids.push_back(kLast);
    const std::set<unsigned> model(ids.begin(), ids.end());
    std::vector<std::vector<unsigned>> orders{ids, {ids.rbegin(), ids.rend()}, ids};
    std::shuffle(orders[2].begin(), orders[2].end(), std::mt19937(5));
    for (const std::vector<unsigned>& order : orders) {
        BMibNode node;
        for (unsigned id : order)
            ASSERT_TRUE(TryAdd(node, id));
        ExpectChildren(node, model);
        for (unsigned id : {1u, 6u, 8u, 20994u, 4294967294u})
            EXPECT_EQ(nullptr, node.ChildWithId(id));
        EXPECT_FALSE(TryAdd(node, 7));
        EXPECT_FALSE(TryAdd(node, kLast));
    }
}

TEST(MibChildIndex, SuccessorsAmongManyChildrenAreThoseOfTheList)
{
    CPlainHandler handler("1.2");
    BMibTree tree;
    std::vector<std::unique_ptr<CPlainHandler>> handlers;
    for (unsigned id = 0; id < 700; ++id) {
        BObjectIdentifier oid = OidOf("1.3.6.1.4.1");
        oid.Append(10 + 10 * id);
        handlers.push_back(std::make_unique<CPlainHandler>(oid));
        ASSERT_EQ(1, tree.Register(handlers.back().get()));
    }
    for (unsigned arc = 0; arc < 7020; ++arc) {
        BObjectIdentifier oid = OidOf("1.3.6.1.4.1");
        oid.Append(arc);
        const unsigned next = arc <= 10 ? 0 : (arc + 9) / 10 - 1;
        const BMibNode* node = tree.FindNextSubtreeHandlerNode(oid);
        if (next < handlers.size()) {
            ASSERT_NE(nullptr, node) << arc;
            ASSERT_EQ(handlers[next].get(), node->SubtreeHandler()) << arc;
        } else {
            ASSERT_EQ(nullptr, node) << arc;
        }
    }
}

TEST(MibChildIndex, NodeThatLostAllItsChildrenTakesOthers)
{
    BMibNode node;
    for (unsigned id : Ids(200, 2))
        ASSERT_TRUE(TryAdd(node, id));
    for (unsigned id : Ids(200, 2))
        delete node.RemoveChildWithId(id);
    EXPECT_EQ(nullptr, node.FirstChild());
    EXPECT_EQ(nullptr, node.ChildWithId(0));
    EXPECT_EQ(nullptr, node.RemoveChildWithId(0));
    EXPECT_EQ(nullptr, node.RightSiblingOfChildWithId(0));
    for (unsigned id : {5u, 3u, 4u})
        ASSERT_TRUE(TryAdd(node, id));
    ExpectChildren(node, {3, 4, 5});
}

TEST(MibChildIndex, EmptyIndexHasNoChildren)
{
    BMibChildIndex index;
    for (unsigned id : {0u, 1u, kLast}) {
        EXPECT_EQ(nullptr, index.Find(id));
        EXPECT_EQ(nullptr, index.Before(id));
        EXPECT_EQ(nullptr, index.AtOrAfter(id));
        index.Remove(id);
    }
}

TEST(MibChildIndex, RemovingWhatIsNotThereChangesNothing)
{
    BMibChildIndex index;
    std::vector<std::unique_ptr<BMibNode>> nodes;
    for (unsigned id : Ids(500, 2)) {
        nodes.push_back(std::make_unique<BMibNode>("", id, nullptr));
        ASSERT_TRUE(index.Insert(id, nodes.back().get()));
    }
    for (unsigned id = 1; id < 1002; id += 2)
        index.Remove(id);
    index.Remove(kLast);
    for (const auto& node : nodes) {
        ASSERT_EQ(node.get(), index.Find(node->Id()));
        ASSERT_EQ(node.get(), index.AtOrAfter(node->Id()));
        ASSERT_EQ(node.get(), index.Before(node->Id() + 1));
    }
}

TEST(MibChildIndex, WithoutMemoryTheListAnswersAlone)
{
    const std::vector<unsigned> ids = Ids(1200, 3);
    const std::set<unsigned> model(ids.begin(), ids.end());
    for (int left = 0; left < 40; ++left) {
        SCOPED_TRACE(left);
        std::vector<BMibNode*> children;
        for (unsigned id : ids)
            children.push_back(new BMibNode("", id, nullptr));
        std::shuffle(children.begin(), children.end(), std::mt19937(11));
        BMibNode node;
        int added = 0;
        {
            FailingAlloc fail(left);
            for (BMibNode* child : children)
                added += node.AddChildNode(child);
        }
        ASSERT_EQ(static_cast<int>(ids.size()), added);
        ExpectChildren(node, model);
        for (unsigned id = 0; id < 3700; id += 37)
            ExpectAnswersOfTheList(node, id);
    }
}

TEST(MibChildIndex, RegistrationWithoutMemoryLeavesAWholeTree)
{
    for (int left = 0;; ++left) {
        ASSERT_LT(left, 1000);
        CPlainHandler handler("1.3.6.1.4.1.7.8.9");
        BMibTree tree;
        const int registered = [&] {
            FailingAlloc fail(left);
            return tree.Register(&handler);
        }();
        const BMibNode* node = tree.FindSubtreeHandlerNode(handler.Oid());
        ASSERT_EQ(registered == 1, node != nullptr) << left;
        if (registered == 1)
            break;
        ASSERT_EQ(1, tree.Register(&handler)) << left;
    }
}

TEST(MibChildIndex, TreeWithoutMemoryForItsNodesIsEmptyOrWhole)
{
    for (int left = 0;; ++left) {
        ASSERT_LT(left, 1000);
        BMibTree* tree = nullptr;
        bool failed = false;
        {
            FailingAlloc fail(left);
            tree = new (std::nothrow) BMibTree;
            failed = fail.Failed();
        }
        if (tree && !failed) {
            EXPECT_NE(nullptr, tree->FindNode(OidOf("1.3.6.1.6.3")));
            delete tree;
            break;
        }
        if (tree) {
            EXPECT_TRUE(!tree->GetFirstRoot() || tree->FindNode(OidOf("1.3.6.1.6.3")));
        }
        delete tree;
    }
}
