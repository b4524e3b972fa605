// The map to pointers for many keys.
#include "foundation/HashMap.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/Oids.h"

#include <algorithm>
#include <climits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

using namespace VLK;
using namespace VLK::Test;

namespace {

int g_data[4];

template <class Key>
int* DataOf(const HashMap<Key>& map, const Key& key)
{
    void** const place = map.Find(key);
    return place ? static_cast<int*>(*place) : nullptr;
}

} // namespace

TEST(HashMap, EmptyMapHasNothing)
{
    HashMap<int> map;
    EXPECT_EQ(nullptr, map.Find(0));
    EXPECT_EQ(nullptr, map.Remove(0));
    EXPECT_EQ(0u, map.Count());
    map.ForEachData([](void*) { FAIL(); });
    map.Clear();
}

TEST(HashMap, GivesTheKeyAsItIsKept)
{
    HashMap<BObjectIdentifier> map;
    const BObjectIdentifier key = MakeOid("1.3.6");
    const BObjectIdentifier* const kept = map.Insert(key, &g_data[0]);
    ASSERT_NE(nullptr, kept);
    EXPECT_EQ(key, *kept);
    EXPECT_NE(key.Arcs(), kept->Arcs()) << "a copy";
    EXPECT_EQ(&g_data[0], DataOf(map, key));
}

TEST(HashMap, RefusesAKeyThatIsPresent)
{
    HashMap<int> map;
    EXPECT_NE(nullptr, map.Insert(7, &g_data[0]));
    EXPECT_EQ(nullptr, map.Insert(7, &g_data[1]));
    EXPECT_EQ(&g_data[0], DataOf(map, 7));
    EXPECT_EQ(1u, map.Count());
}

TEST(HashMap, DataMayBeReplacedInItsPlaceAndBeNull)
{
    HashMap<int> map;
    map.Insert(7, nullptr);
    void** const place = map.Find(7);
    ASSERT_NE(nullptr, place);
    EXPECT_EQ(nullptr, *place);
    *place = &g_data[1];
    EXPECT_EQ(&g_data[1], map.Remove(7));
    EXPECT_EQ(nullptr, map.Find(7));
}

TEST(HashMap, IdentifiersAreComparedWhole)
{
    HashMap<BObjectIdentifier> map;
    const char* const keys[] = {"", "0", "0.0", "1", "1.0", "0.1", "1.1", "4294967295"};
    std::map<std::string, int> data;
    for (const char* key : keys)
        EXPECT_NE(nullptr, map.Insert(MakeOid(key), &data[key])) << key;
    EXPECT_EQ(8u, map.Count());
    for (const char* key : keys)
        EXPECT_EQ(&data[key], DataOf(map, MakeOid(key))) << key;
    EXPECT_EQ(nullptr, map.Find(MakeOid("0.0.0")));
    for (const char* key : keys)
        EXPECT_EQ(&data[key], map.Remove(MakeOid(key))) << key;
    EXPECT_EQ(0u, map.Count());
}

TEST(HashMap, KeysStayWhereTheyAreWhileItGrowsAndShrinks)
{
    HashMap<int> map;
    std::map<int, const int*> places;
    for (int key = 0; key < 1000; ++key)
        places[key] = map.Insert(key, &g_data[0]);
    for (int key = 0; key < 1000; key += 2)
        map.Remove(key);
    for (int key = 1; key < 1000; key += 2) {
        EXPECT_EQ(key, *places[key]);
        EXPECT_EQ(nullptr, map.Insert(key, nullptr)) << "it is still there";
    }
}

TEST(HashMap, KeysThatShareABucketAreToldApart)
{
    HashMap<int> map;
    std::map<int, int> data;
    for (unsigned i = 0; i < 2000; ++i) // equal in the bits that choose the bucket
        EXPECT_NE(nullptr, map.Insert(int(i << 20), &data[int(i << 20)]));
    for (auto& item : data)
        EXPECT_EQ(&item.second, DataOf(map, item.first));
    for (auto& item : data)
        EXPECT_EQ(&item.second, map.Remove(item.first));
    EXPECT_EQ(0u, map.Count());
}

TEST(HashMap, VisitsEveryDataOnce)
{
    HashMap<int> map;
    std::vector<int> data(500);
    for (int key = 0; key < 500; ++key)
        map.Insert(key * 31, &data[key]);
    map.ForEachData([](void* item) { ++*static_cast<int*>(item); });
    EXPECT_EQ(std::vector<int>(500, 1), data);
}

TEST(HashMap, ClearedMapMayBeFilledAgain)
{
    HashMap<int> map;
    for (int round = 0; round < 3; ++round) {
        for (int key = 0; key < 200; ++key)
            EXPECT_NE(nullptr, map.Insert(key, &g_data[0]));
        map.Clear();
        EXPECT_EQ(0u, map.Count());
        EXPECT_EQ(nullptr, map.Find(0));
    }
}

namespace {

// Side by side with std::map, over `range` keys: thousands at a time, so that it
// grows, and near empty again.
template <class Key, class Make>
void CompareWithModel(Make make, unsigned range, unsigned seed)
{
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::vector<char> data(range);
    HashMap<Key> map;
    std::map<Key, void*> model;
    for (unsigned round = 0; round < 20 * range; ++round) {
        const unsigned n = random() % range;
        const Key key = make(n);
        const auto known = model.find(key);
        const bool isGrowing = round / (4 * range) % 2 == 0;
        if (random() % 4 == (isGrowing ? 0 : 1) || (!isGrowing && random() % 2)) {
            ASSERT_EQ(known == model.end() ? nullptr : known->second, map.Remove(key));
            model.erase(key);
        } else {
            ASSERT_EQ(known == model.end(), map.Insert(key, &data[n]) != nullptr);
            model.emplace(key, &data[n]);
        }
        ASSERT_EQ(model.size(), map.Count());
        const Key asked = make(random() % range);
        const auto wanted = model.find(asked);
        void** const found = map.Find(asked);
        ASSERT_EQ(wanted != model.end(), found != nullptr);
        ASSERT_TRUE(!found || *found == wanted->second);
    }
    std::set<void*> left;
    map.ForEachData([&](void* item) { EXPECT_TRUE(left.insert(item).second); });
    std::set<void*> expected;
    for (const auto& item : model)
        expected.insert(item.second);
    EXPECT_EQ(expected, left);
}

} // namespace

TEST(HashMap, RandomOperationsGiveTheAnswersOfASortedMap)
{
    for (const unsigned seed : {1u, 2u, 3u}) {
        CompareWithModel<int>([](unsigned n) { return int(n * 2654435761u); }, 3000, seed);
        CompareWithModel<int>([](unsigned n) { return INT_MAX - 1500 + int(n); }, 1500, seed);
        CompareWithModel<BObjectIdentifier>(
            [](unsigned n) {
                return n % 5 ? MakeOid(Arcs{n % 3, n, ~n}) : MakeOid(Arcs{n});
            },
            3000, seed);
    }
}

// The most keys that share one of as many buckets as there are keys.
template <class Key, class Make>
unsigned LongestChain(Make make)
{
    constexpr unsigned kKeys = 4096;
    std::vector<unsigned> chains(kKeys);
    unsigned longest = 0;
    for (unsigned n = 0; n < kKeys; ++n) {
        const Key key = make(n);
        longest = std::max(longest, ++chains[HashOf(key) % kKeys]);
    }
    return longest;
}

TEST(HashMap, UsualKeysSpreadOverTheBuckets)
{
    EXPECT_EQ(1u, LongestChain<int>([](unsigned n) { return int(n); })) << "handles in a row";
    EXPECT_EQ(1u, LongestChain<int>([](unsigned n) { return int(INT_MAX - 2000 + n); }));
    // Chance alone makes chains of about seven.
    EXPECT_LE(LongestChain<BObjectIdentifier>([](unsigned n) { return MakeOid(Arcs{n}); }), 10u);
    EXPECT_LE(LongestChain<BObjectIdentifier>([](unsigned n) {
                  return MakeOid(Arcs{1, n / 64, n % 64});
              }),
              10u);
    EXPECT_LE(LongestChain<BObjectIdentifier>([](unsigned n) {
                  return MakeOid(Arcs{10, 0, n / 256, n % 256, 161});
              }),
              10u)
        << "addresses";
}

TEST(HashMap, ArcsThatDifferInTheirUpperBitsOnlySpreadOverTheBuckets)
{
    for (unsigned shift = 0; shift <= 20; ++shift) {
        EXPECT_LE(
            LongestChain<BObjectIdentifier>([=](unsigned n) { return MakeOid(Arcs{n << shift}); }),
            10u)
            << shift;
    }
}

namespace {

// A map that holds the keys below `count`.
std::unique_ptr<HashMap<BObjectIdentifier>> MapOf(unsigned count)
{
    auto map = std::make_unique<HashMap<BObjectIdentifier>>();
    for (unsigned n = 0; n < count; ++n)
        EXPECT_NE(nullptr, map->Insert(MakeOid(Arcs{n}), &g_data[0]));
    return map;
}

} // namespace

TEST(HashMap, InsertionWithoutMemoryChangesNothing)
{
    const BObjectIdentifier key = MakeOid("77.7");
    for (const unsigned count : {0u, 1u, 63u, 64u, 65u, 128u}) {
        SCOPED_TRACE(count);
        VLKTest::SweepAllocations([count] { return MapOf(count); },
                                  [&](auto& map) { return map->Insert(key, &g_data[1]); },
                                  [&](auto& map, const BObjectIdentifier* kept) {
                                      EXPECT_EQ(count + (kept ? 1 : 0), map->Count());
                                      EXPECT_EQ(kept ? &g_data[1] : nullptr, DataOf(*map, key));
                                      for (unsigned n = 0; n < count; ++n)
                                          EXPECT_EQ(&g_data[0], DataOf(*map, MakeOid(Arcs{n})));
                                      if (!kept) {
                                          EXPECT_NE(nullptr, map->Insert(key, &g_data[1]))
                                              << "later there is memory";
                                      }
                                  });
    }
}

TEST(HashMap, WithoutMemoryForMoreBucketsItGoesOn)
{
    auto map = MapOf(64);
    for (unsigned n = 64; n < 200; ++n) {
        const BObjectIdentifier key = MakeOid(Arcs{n});
        FailingAlloc fail(0, FailingAlloc::eNextOnly);
        ASSERT_NE(nullptr, map->Insert(key, &g_data[2])) << n;
        ASSERT_TRUE(fail.Failed()) << "it asks for more each time";
    }
    for (unsigned n = 0; n < 200; ++n)
        EXPECT_EQ(n < 64 ? &g_data[0] : &g_data[2], DataOf(*map, MakeOid(Arcs{n})));
}
