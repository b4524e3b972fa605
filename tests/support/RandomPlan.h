// Agents of nested and neighbouring regions, made up at random.
#pragma once

#include "tests/support/RegionTrees.h"

#include <random>

namespace VLK {
namespace Test {

// At most `nesting` of its regions lie inside one another.
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
    // Instances here and there, some of them refused and some Counter64. Tame: these
    // only in regions without regions inside.
    void Fill(RegionAgent& agent, bool isTame = true)
    {
        for (unsigned count = Below(25); count > 0; --count) {
            const Arcs name = Name(Below(3), regions[Below(unsigned(regions.size()))]);
            ListHandler& owner = *agent.OwnerOf(name);
            owner.Add(name, static_cast<int>(count));
            if (isTame && !IsInnermost(ArcsOf(owner.Oid())))
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

} // namespace Test
} // namespace VLK
