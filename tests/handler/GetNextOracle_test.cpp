// GETNEXT against a naive sorted list: every agent of one or two small regions,
// and larger ones at random. The search knowingly differs from the list where
// three regions lie inside one another, and where an outer region ends after an
// instance stepped over; ResolveGetNext_test.cpp and
// RegionSearch_test.cpp hold both.
#include "tests/support/RegionTrees.h"

#include <gtest/gtest.h>

#include <random>

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

class RandomPlan {
public:
    RandomPlan(std::mt19937& random, unsigned nesting) : m_random(random)
    {
        do {
            regions.clear();
            for (unsigned count = 1 + Below(7); count > 0; --count) {
                const Arcs region = Name(1 + Below(3));
                if (std::find(regions.begin(), regions.end(), region) == regions.end())
                    regions.push_back(region);
            }
        } while (NestingOf(regions) > nesting);
    }

    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }
    Arcs Name(unsigned length, Arcs name = TreeBase())
    {
        while (length--)
            name.push_back(kTreeArcs[Below(4)]);
        return name;
    }
    // Instances here and there; in regions without regions inside, some of them
    // are refused and some Counter64.
    void Fill(RegionAgent& agent)
    {
        for (unsigned count = Below(25); count > 0; --count) {
            const Arcs name = Name(Below(3), regions[Below(unsigned(regions.size()))]);
            ListHandler& owner = *agent.OwnerOf(name);
            owner.Add(name, static_cast<int>(count));
            if (!IsInnermost(ArcsOf(owner.Oid())))
                continue;
            if (Below(5) == 0)
                owner.AddCounter64(TextOf(name).c_str());
            if (Below(4) == 0)
                agent.access.refused.insert(TextOf(name));
        }
        agent.Settle();
    }

    std::vector<Arcs> regions;

private:
    bool IsInnermost(const Arcs& region) const
    {
        for (const Arcs& other : regions)
            if (other != region && IsPrefix(region, other))
                return false;
        return true;
    }

    std::mt19937& m_random;
};

TEST(GetNextOracle, RandomAgentsWithHolesRefusalsAndCounter64)
{
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int round = 0; round < 3000; ++round) {
        RandomPlan plan(random, 2);
        RegionAgent agent(plan.regions);
        plan.Fill(agent);
        for (int request = 0; request < 20; ++request) {
            const Arcs name = plan.Name(plan.Below(6));
            for (bool isV1 : {false, true}) {
                const std::string difference = agent.Compare(name, isV1);
                ASSERT_EQ("", difference) << "seed " << seed << ", round " << round;
            }
        }
    }
}

} // namespace
} // namespace Test
} // namespace VLK
