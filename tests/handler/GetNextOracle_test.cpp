// GETNEXT against a naive sorted list: every agent of one or two small regions,
// and larger ones at random. The search knowingly differs from the list where
// three regions lie inside one another, and where an outer region ends after an
// instance stepped over; ResolveGetNext_test.cpp and
// RegionSearch_test.cpp hold both.
#include "tests/support/RandomPlan.h"
#include "tests/support/Seed.h"

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

// Compares every request on every pattern of instances; counts them.
long ComparePatterns(RegionAgent& agent, const std::vector<Arcs>& names)
{
    const EPattern patterns[] = {ePatternNone, ePatternFirst, ePatternLast, ePatternAll};
    const size_t count = agent.Modules().size();
    long compared = 0;
    for (unsigned code = 0; code < (1u << (2 * count)); ++code) {
        for (size_t i = 0; i < count; ++i)
            FillRegion(agent, i, patterns[(code >> (2 * i)) & 3], names);
        agent.Settle();
        for (const Arcs& name : names) {
            const std::string difference = agent.Compare(name, false);
            if (!difference.empty()) {
                ADD_FAILURE() << difference;
                return compared;
            }
            ++compared;
        }
    }
    return compared;
}

TEST(GetNextOracle, EveryAgentOfOneOrTwoRegions)
{
    const std::vector<Arcs> regions = NamesUnderBase(2);
    const std::vector<Arcs> names = NamesUnderBase(2);
    long compared = 0;
    for (size_t a = 0; a < regions.size(); ++a) {
        RegionAgent alone({regions[a]});
        compared += ComparePatterns(alone, names);
        for (size_t b = a + 1; b < regions.size() && !HasFailure(); ++b) {
            RegionAgent agent({regions[a], regions[b]});
            compared += ComparePatterns(agent, names);
        }
    }
    EXPECT_EQ(21 * 4 * 21 + 210 * 16 * 21, compared);
}

TEST(GetNextOracle, LongNamesOverNestedRegions)
{
    const std::vector<Arcs> names = NamesUnderBase(4);
    const Arcs& base = TreeBase();
    Arcs nested = base;
    nested.insert(nested.end(), {1, 4294967295u});
    Arcs neighbour = base;
    neighbour.insert(neighbour.end(), {2});
    RegionAgent agent({base, nested, neighbour});
    ComparePatterns(agent, names);
}

TEST(GetNextOracle, RandomAgentsWithHolesRefusalsAndCounter64)
{
    std::mt19937 random(Seed());
    for (int round = 0; round < 3000; ++round) {
        RandomPlan plan(random, 2);
        RegionAgent agent(plan.regions);
        plan.Fill(agent);
        for (int request = 0; request < 20; ++request) {
            const Arcs name = plan.Name(plan.Below(6));
            for (bool isV1 : {false, true}) {
                const std::string difference = agent.Compare(name, isV1);
                ASSERT_EQ("", difference) << "round " << round;
            }
        }
    }
}

} // namespace
} // namespace Test
} // namespace VLK
