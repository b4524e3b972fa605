// GETNEXT against a naive sorted list: every agent of three small regions, of
// which no three lie inside one another; and every state of every instance of
// smaller ones.
#include "tests/support/RegionTrees.h"

#include <gtest/gtest.h>

#include <utility>

namespace VLK {
namespace Test {
namespace {

// The names are in order: an SNMPv1 request then ends at the first without a successor.
std::string CompareAll(const std::vector<Arcs>& regions, const std::vector<Arcs>& names)
{
    RegionAgent agent(regions);
    const EPattern patterns[] = {ePatternNone, ePatternFirst, ePatternLast, ePatternAll};
    for (unsigned code = 0; code < 64; ++code) {
        for (size_t i = 0; i < 3; ++i)
            FillRegion(agent, i, patterns[(code >> (2 * i)) & 3], names);
        agent.Settle();
        for (const bool isV1 : {false, true}) {
            std::string difference = agent.CompareNext(names, isV1);
            if (!difference.empty())
                return difference;
        }
    }
    return std::string();
}

TEST(GetNextOracleSlow, EveryAgentOfThreeRegions)
{
    std::vector<Arcs> names = NamesUnderBase(2);
    std::sort(names.begin(), names.end());
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

// What an instance may be. Those of a region with regions inside are visible or
// not there (see GetNextOracle_test.cpp).
enum EState { eStateAbsent, eStatePlain, eStateRefused, eStateCounter64, eStates };

bool HasRegionInside(const Arcs& region, const std::vector<Arcs>& regions)
{
    for (const Arcs& other : regions)
        if (other != region && IsPrefix(region, other))
            return true;
    return false;
}

// Gives the instances the states that `code` says, the first in its lowest bits.
// False: not in these regions.
bool SetStates(RegionAgent& agent, const std::vector<Arcs>& regions, const std::vector<Arcs>& names,
               unsigned code)
{
    agent.access.refused.clear();
    agent.access.asked.clear();
    for (auto& module : agent.Modules())
        module->instances.clear();
    for (size_t i = 0; i < names.size(); ++i, code /= eStates) {
        const unsigned state = code % eStates;
        if (state == eStateAbsent)
            continue;
        ListHandler* const owner = agent.OwnerOf(names[i]);
        if (!owner || (state != eStatePlain && HasRegionInside(ArcsOf(owner->Oid()), regions)))
            return false;
        if (state == eStateCounter64)
            owner->AddCounter64(TextOf(names[i]).c_str());
        else
            owner->Add(names[i], static_cast<int>(i));
        if (state == eStateRefused)
            agent.access.refused.insert(TextOf(names[i]));
    }
    agent.Settle();
    return true;
}

TEST(GetNextOracleSlow, EveryHoleRefusalAndCounter64OfSmallAgents)
{
    const std::vector<Arcs> names = NamesUnderBase(1);
    std::vector<Arcs> requests = names;
    requests.push_back({1, 3, 98});
    requests.push_back({1, 3, 99, 1, 4294967295u});
    requests.push_back({1, 3, 100});
    long agents = 0;
    for (unsigned set = 1; set < 1u << names.size(); ++set) {
        std::vector<Arcs> regions;
        for (size_t i = 0; i < names.size(); ++i)
            if (set >> i & 1)
                regions.push_back(names[i]);
        RegionAgent agent(regions);
        for (unsigned code = 0; code < 1u << (2 * names.size()); ++code) {
            if (!SetStates(agent, regions, names, code))
                continue;
            ++agents;
            for (const Arcs& name : requests)
                for (const bool isV1 : {false, true})
                    ASSERT_EQ("", agent.Compare(name, isV1));
        }
    }
    // Of n of four inner regions: any states inside, with and without the outer one.
    long wanted = 0;
    for (const auto& [inner, ways] : {std::pair{0, 1}, {1, 4}, {2, 6}, {3, 4}, {4, 1}}) {
        const long inside = 1L << (2 * inner);
        const long around = inner == 0 ? 1L << 10 : inside * (1L << (5 - inner));
        wanted += ways * (around + (inner == 0 ? 0 : inside));
    }
    EXPECT_EQ(wanted, agents);
}

} // namespace
} // namespace Test
} // namespace VLK
