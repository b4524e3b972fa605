// GETNEXT against a naive sorted list: every agent of three small regions, of
// which no three lie inside one another.
#include "tests/support/RegionTrees.h"

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

std::string CompareAll(const std::vector<Arcs>& regions, const std::vector<Arcs>& names)
{
    RegionAgent agent(regions);
    const EPattern patterns[] = {ePatternNone, ePatternFirst, ePatternLast, ePatternAll};
    for (unsigned code = 0; code < 64; ++code) {
        for (size_t i = 0; i < 3; ++i)
            FillRegion(agent, i, patterns[(code >> (2 * i)) & 3], names);
        agent.Settle();
        for (const Arcs& name : names) {
            const std::string difference = agent.Compare(name, false);
            if (!difference.empty())
                return difference;
        }
    }
    return std::string();
}

TEST(GetNextOracleSlow, EveryAgentOfThreeRegions)
{
    const std::vector<Arcs> names = NamesUnderBase(2);
    int agents = 0;
    for (size_t a = 0; a < names.size(); ++a)
        for (size_t b = a + 1; b < names.size(); ++b)
            for (size_t c = b + 1; c < names.size(); ++c) {
                const std::vector<Arcs> regions = {names[a], names[b], names[c]};
                if (NestingOf(regions) > 2)
                    continue;
                ++agents;
                ASSERT_EQ("", CompareAll(regions, names));
            }
    EXPECT_EQ(1330 - 16, agents);
}

} // namespace
} // namespace Test
} // namespace VLK
