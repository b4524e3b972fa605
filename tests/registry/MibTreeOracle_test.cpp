// The tree against a naive model: a sorted list of all paths and the handlers they carry.
#include <vkmibh/tree.h>

#include "tests/support/PlainHandler.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace VLK;

namespace {

using Path = std::vector<unsigned>;

constexpr unsigned kLast = 4294967295u;

BObjectIdentifier OidFrom(const Path& path)
{
    return BObjectIdentifier(static_cast<unsigned>(path.size()), path.data());
}

Path PathFrom(const BObjectIdentifier& oid)
{
    return oid.Length() ? Path(oid.Arcs(), oid.Arcs() + oid.Length()) : Path();
}

Path PathOf(const BMibNode* node)
{
    BObjectIdentifier oid;
    if (node)
        node->GetOid(oid);
    return PathFrom(oid);
}

bool IsPrefix(const Path& prefix, const Path& path)
{
    return prefix.size() <= path.size() && std::equal(prefix.begin(), prefix.end(), path.begin());
}

// All nodes by their paths, with the handler's identifier where there is one. The order of the
// paths is that of a walk from node to node.
class Model {
public:
    Model()
    {
        for (const Path& path :
             {Path{1, 3, 6, 1, 1}, Path{1, 3, 6, 1, 2}, Path{1, 3, 6, 1, 3}, Path{1, 3, 6, 1, 4, 1},
              Path{1, 3, 6, 1, 5}, Path{1, 3, 6, 1, 6, 1}, Path{1, 3, 6, 1, 6, 2},
              Path{1, 3, 6, 1, 6, 3}})
            AddPath(path);
    }

    bool Hang(const Path& path, const BMibSubtreeHandler* handler)
    {
        AddPath(path);
        if (m_nodes[path])
            return false;
        m_nodes[path] = handler;
        return true;
    }

    bool Register(const BMibSubtreeHandler* handler)
    {
        Path path = PathFrom(handler->Oid());
        const unsigned position = handler->RangePosition();
        if (position == 0)
            return Hang(path, handler);
        if (position > path.size() || handler->RangeUpperBound() < path[position - 1])
            return false;
        for (uint64_t v = path[position - 1]; v <= handler->RangeUpperBound(); ++v) {
            path[position - 1] = static_cast<unsigned>(v);
            if (!Hang(path, handler))
                return false;
        }
        return true;
    }

    bool Unregister(const BMibSubtreeHandler* handler)
    {
        const auto node = m_nodes.find(PathFrom(handler->Oid()));
        if (node == m_nodes.end() || node->second != handler)
            return false;
        node->second = nullptr;
        return true;
    }

    Path FindHandler(Path oid) const
    {
        for (; !oid.empty(); oid.pop_back()) {
            const auto node = m_nodes.find(oid);
            if (node != m_nodes.end() && node->second)
                return oid;
        }
        return {};
    }

    Path FindNext(const Path& oid) const
    {
        if (oid.empty())
            return {};
        auto at = m_nodes.end();
        if (m_nodes.count({oid[0]})) {
            Path match = oid;
            while (!m_nodes.count(match))
                match.pop_back();
            Path holder = FindHandler(match);
            if (!holder.empty())
                return holder;
            at = m_nodes.find(match);
        } else {
            for (at = m_nodes.begin(); at != m_nodes.end(); ++at) {
                if (at->first.size() == 1 && at->first[0] >= oid[0])
                    break;
            }
            if (at == m_nodes.end())
                return {};
        }
        while (++at != m_nodes.end()) {
            if (!at->second)
                continue;
            const Path region = PathFrom(at->second->Oid());
            if (IsPrefix(region, oid) || oid <= region)
                return at->first;
        }
        return {};
    }

    const std::map<Path, const BMibSubtreeHandler*>& Nodes() const { return m_nodes; }

private:
    void AddPath(Path path)
    {
        for (; !path.empty(); path.pop_back())
            m_nodes.emplace(path, nullptr);
    }

    std::map<Path, const BMibSubtreeHandler*> m_nodes;
};

std::string Text(const Path& path) { return OidFrom(path).ToString().c_str(); }

void ExpectSameAnswers(const BMibTree& tree, const Model& model, const Path& oid)
{
    const BObjectIdentifier asked = OidFrom(oid);
    ASSERT_EQ(model.FindHandler(oid), PathOf(tree.FindSubtreeHandlerNode(asked))) << Text(oid);
    ASSERT_EQ(model.FindNext(oid), PathOf(tree.FindNextSubtreeHandlerNode(asked))) << Text(oid);
}

void ExpectSameNodes(const BMibTree& tree, const Model& model)
{
    const BMibNode* node = tree.GetFirstRoot();
    for (const auto& expected : model.Nodes()) {
        ASSERT_EQ(expected.first, PathOf(node));
        ASSERT_EQ(expected.second, node->SubtreeHandler()) << Text(expected.first);
        node = node->Next();
    }
    ASSERT_EQ(nullptr, node);
}

// All paths of one to `depth` arcs.
std::vector<Path> AllPaths(const Path& arcs, unsigned depth)
{
    std::vector<Path> paths{{}};
    std::size_t from = 0;
    for (unsigned level = 0; level < depth; ++level) {
        const std::size_t to = paths.size();
        for (; from < to; ++from) {
            for (unsigned arc : arcs) {
                Path longer = paths[from];
                longer.push_back(arc);
                paths.push_back(longer);
            }
        }
    }
    paths.erase(paths.begin());
    return paths;
}

} // namespace

TEST(MibTreeOracle, AllPairsOfHandlersInSmallTrees)
{
    const std::vector<Path> places = AllPaths({0, 1, 2, kLast}, 2);
    const std::vector<Path> queries = AllPaths({0, 1, 2, 3, kLast}, 3);
    for (std::size_t a = 0; a < places.size(); ++a) {
        for (std::size_t b = a; b < places.size(); ++b) {
            CPlainHandler first(OidFrom(places[a])), second(OidFrom(places[b]));
            BMibTree tree;
            Model model;
            ASSERT_EQ(model.Register(&first), tree.Register(&first) == 1);
            ASSERT_EQ(model.Register(&second), tree.Register(&second) == 1);
            ExpectSameNodes(tree, model);
            for (const Path& query : queries)
                ExpectSameAnswers(tree, model, query);
            if (HasFatalFailure())
                FAIL() << Text(places[a]) << " and " << Text(places[b]);
        }
    }
}

TEST(MibTreeOracle, AllRangesInSmallTrees)
{
    const std::vector<Path> queries = AllPaths({0, 1, 2, 3, 4}, 3);
    for (const Path& place : AllPaths({0, 1, 2}, 3)) {
        for (unsigned position = 0; position <= place.size() + 1; ++position) {
            for (unsigned bound = 0; bound <= 3; ++bound) {
                CPlainHandler range(OidFrom(place), position, bound);
                CPlainHandler inside(OidFrom({1, 1})), outside(OidFrom({1, 3, 1}));
                BMibTree tree;
                Model model;
                for (CPlainHandler* handler : {&inside, &range, &outside})
                    ASSERT_EQ(model.Register(handler), tree.Register(handler) == 1);
                for (const Path& query : queries)
                    ExpectSameAnswers(tree, model, query);
                // What stays of a range once its own place is free.
                ASSERT_EQ(model.Unregister(&range), tree.Unregister(&range) == 1);
                ExpectSameNodes(tree, model);
                for (const Path& query : queries)
                    ExpectSameAnswers(tree, model, query);
                if (HasFatalFailure())
                    FAIL() << Text(place) << " " << position << " to " << bound;
            }
        }
    }
}

TEST(MibTreeOracle, RandomTreesWithHandlersHungByHand)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const unsigned span = seed % 2 ? 4 : 40;
        const auto path = [&] {
            Path made(1 + random() % 4);
            for (unsigned& arc : made)
                arc = random() % 16 == 0 ? kLast - random() % 3 : random() % span;
            if (random() % 4)
                made[0] = 1;
            return made;
        };
        std::vector<std::unique_ptr<CPlainHandler>> handlers;
        BMibTree tree;
        Model model;
        for (int step = 0; step < 150; ++step) {
            const Path place = path();
            const unsigned position = random() % 3 ? 0 : 1 + random() % 5;
            unsigned bound = random() % span;
            if (position > 0 && position <= place.size())
                bound = place[position - 1] + std::min(bound % 6, kLast - place[position - 1]);
            handlers.push_back(std::make_unique<CPlainHandler>(OidFrom(place), position, bound));
            CPlainHandler* handler = handlers.back().get();
            const unsigned what = random() % 8;
            if (what == 0) {
                CPlainHandler* any = handlers[random() % handlers.size()].get();
                ASSERT_EQ(model.Unregister(any), tree.Unregister(any) == 1);
            } else if (what == 1 && seed % 3 == 0) {
                // A handler where its identifier does not lead.
                const Path stranger = path();
                const BObjectIdentifier oid = OidFrom(stranger);
                BMibNode* node = tree.InsertMissingNodes(oid, oid.Length());
                ASSERT_EQ(model.Hang(stranger, handler), node->AddSubtreeHandler(handler) != 0);
            } else {
                ASSERT_EQ(model.Register(handler), tree.Register(handler) == 1);
            }
        }
        ExpectSameNodes(tree, model);
        for (int query = 0; query < 1500; ++query)
            ExpectSameAnswers(tree, model, path());
        for (const auto& node : model.Nodes())
            ExpectSameAnswers(tree, model, node.first);
    }
}

TEST(MibTreeOracle, SubtreesMovedWithTheirChildrenKeepTheAnswers)
{
    CPlainHandler one("1.9.1.1"), five("1.9.1.5");
    BMibTree tree;
    ASSERT_EQ(1, tree.Register(&one));
    ASSERT_EQ(1, tree.Register(&five));
    // 1.9.1 becomes 1.8.1: the handlers' own identifiers are after their places.
    BMibNode* iso = tree.GetRoot(1);
    ASSERT_EQ(1, iso->AddChildNode(new BMibNode("", 8, nullptr)));
    ASSERT_EQ(1, iso->ChildWithId(8)->AddChildNode(iso->ChildWithId(9)->RemoveChildWithId(1)));
    EXPECT_EQ((Path{1, 8, 1, 1}), PathOf(tree.FindNextSubtreeHandlerNode(OidOf("1.8.1.3"))));
    Model model;
    ASSERT_TRUE(model.Hang({1, 8, 1, 1}, &one));
    ASSERT_TRUE(model.Hang({1, 8, 1, 5}, &five));
    ASSERT_TRUE(model.Hang({1, 9}, nullptr));
    ExpectSameNodes(tree, model);
    for (const Path& query : AllPaths({0, 1, 3, 5, 6, 8, 9}, 4))
        ExpectSameAnswers(tree, model, query);
}
