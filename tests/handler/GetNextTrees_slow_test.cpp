// GETNEXT on as many random agents as VKMIBH_ORACLE_TREES says: whole walks, and
// requests of several bindings, in SNMPv1 and v2, with holes, refused instances
// and Counter64. Half of the agents are tame, so that the naive list tells what a
// walk finds; in the other half regions lie inside one another at will, and
// anything may be refused: there a walk must go on, end, and find what is there.
#include "tests/support/RandomPlan.h"
#include "tests/support/Seed.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace VLK {
namespace Test {
namespace {

constexpr unsigned kAnyNesting = 7;

long TreesToGrow()
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr long kDefault = 2000;
#else
    constexpr long kDefault = 20000;
#endif
    const char* const text = std::getenv("VKMIBH_ORACLE_TREES");
    const long trees = text ? std::strtol(text, nullptr, 10) : kDefault;
    return trees > 0 ? trees : kDefault;
}

class GetNextTreesSlow : public ::testing::Test {
protected:
    GetNextTreesSlow() : random(Seed()) {}

    // Follows the answers from the base to the end.
    static std::string Walk(RegionAgent& agent, bool isV1, std::vector<Arcs>& found)
    {
        BVarBindList list;
        list.Append(MakeOid(TreeBase()));
        for (Arcs last = TreeBase();;) {
            int errorIndex = 0;
            const int status = agent.GetNext(list, errorIndex, isV1);
            if (isV1 ? status != eSnmpNoError : list[0].Value().IsException())
                return IsEnd(list, status, errorIndex, isV1, last) ? "" : "ends otherwise";
            const Arcs name = ArcsOf(list[0].Name());
            if (status != eSnmpNoError)
                return "status " + std::to_string(status) + " after " + TextOf(last);
            if (!(last < name))
                return TextOf(name) + " follows " + TextOf(last);
            if (!agent.naive.IsVisible(name, isV1))
                return TextOf(name) + " is not to be seen";
            if (list[0].Value().Int() != agent.naive.ValueOf(name).Int())
                return "another value of " + TextOf(name);
            found.push_back(name);
            last = name;
        }
    }
    // The name stays that of the last instance.
    static bool IsEnd(const BVarBindList& list, int status, int errorIndex, bool isV1,
                      const Arcs& last)
    {
        if (ArcsOf(list[0].Name()) != last)
            return false;
        return isV1 ? status == eSnmpNoSuchName && errorIndex == 1
                    : status == eSnmpNoError && list[0].Value().Syntax() == eEndOfMibView;
    }
    static std::string WalkWhole(RegionAgent& agent, bool isV1)
    {
        std::vector<Arcs> wanted, found;
        for (Arcs next = agent.naive.Next(TreeBase(), isV1); !next.empty();
             next = agent.naive.Next(next, isV1))
            wanted.push_back(next);
        std::string difference = Walk(agent, isV1, found);
        if (!difference.empty() || found == wanted)
            return difference;
        return "finds " + std::to_string(found.size()) + " of " + std::to_string(wanted.size());
    }

    std::string CheckTame()
    {
        RandomPlan plan(random, 2);
        RegionAgent agent(plan.regions);
        plan.Fill(agent);
        for (const bool isV1 : {false, true}) {
            std::string difference = WalkWhole(agent, isV1);
            if (!difference.empty())
                return difference + (isV1 ? " (v1)" : "") + agent.Describe();
            for (int request = 0; request < 3 && difference.empty(); ++request) {
                std::vector<Arcs> names;
                for (unsigned count = 1 + plan.Below(6); count > 0; --count)
                    names.push_back(plan.Name(plan.Below(6)));
                bindings += static_cast<long>(names.size());
                difference = agent.CompareNext(names, isV1);
            }
            if (!difference.empty())
                return difference;
        }
        return std::string();
    }
    std::string CheckWild()
    {
        RandomPlan plan(random, kAnyNesting);
        RegionAgent agent(plan.regions);
        plan.Fill(agent, false);
        for (const bool isV1 : {false, true}) {
            std::vector<Arcs> found;
            std::string difference = Walk(agent, isV1, found);
            steps += static_cast<long>(found.size());
            if (!difference.empty())
                return difference + (isV1 ? " (v1)" : "") + agent.Describe();
        }
        return std::string();
    }

    std::mt19937 random;
    long bindings = 0;
    long steps = 0;
};

TEST_F(GetNextTreesSlow, AWalkIsStrictlyIncreasingCompleteAndEnds)
{
    const long trees = TreesToGrow() / 2;
    for (long tree = 0; tree < trees; ++tree)
        ASSERT_EQ("", CheckTame()) << "tree " << tree;
    std::printf("%ld trees, each walked twice, and %ld bindings\n", trees, bindings);
    EXPECT_GT(bindings, trees);
}

TEST_F(GetNextTreesSlow, AWalkOfWildRegionsIsStrictlyIncreasingAndEnds)
{
    const long trees = TreesToGrow() / 2;
    for (long tree = 0; tree < trees; ++tree)
        ASSERT_EQ("", CheckWild()) << "tree " << tree;
    std::printf("%ld trees, %ld instances found\n", trees, steps);
    EXPECT_GT(steps, trees);
}

} // namespace
} // namespace Test
} // namespace VLK
