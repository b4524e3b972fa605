// Map from object identifier to pointer.
#include "tests/support/MapOracle.h"
#include "tests/support/Oids.h"

#include <type_traits>
#include <vkmibh/containers.h>

using namespace VLK;
using namespace VLK::Test;

namespace {

int g_data[10];

} // namespace

TEST(MapOid2Ptr, NextIsTheGetNextSuccessor)
{
    BMapOid2Ptr map;
    EXPECT_TRUE(map.Insert(MakeOid("1.3.6.1.10"), &g_data[1]));
    EXPECT_TRUE(map.Insert(MakeOid("1.3.6.1.2"), &g_data[0]));
    EXPECT_EQ(map.Next(MakeOid("1.3.6.1.2.5")), 1);
    EXPECT_EQ(map.Next(MakeOid("1.3.6.1.2")), 1);
    EXPECT_EQ(map.Next(MakeOid("1.3.6.1")), 0);
    EXPECT_EQ(map.Next(BObjectIdentifier()), 0);
    EXPECT_EQ(map.Next(MakeOid("1.3.6.1.10")), -1);
    EXPECT_EQ(map.Next(MakeOid("2")), -1);
    EXPECT_EQ(map.GetData(MakeOid("1.3.6.1.10")), &g_data[1]);
    EXPECT_EQ(map.GetData(MakeOid("1.3.6.1.3")), nullptr);
    EXPECT_EQ(BMapOid2Ptr().Next(BObjectIdentifier()), -1);
    EXPECT_EQ(BMapOid2Ptr().GetData(BObjectIdentifier()), nullptr);
}

TEST(MapOid2Ptr, NextGivesTheKeyAlso)
{
    BMapOid2Ptr map;
    map.Insert(MakeOid("1.2"), &g_data[0]);
    map.Insert(MakeOid("1.4"), &g_data[1]);
    BObjectIdentifier key = MakeOid("1");
    EXPECT_EQ(map.Next(key, key), 0);
    EXPECT_EQ(key, MakeOid("1.2"));
    EXPECT_EQ(map.Next(key, key), 1);
    EXPECT_EQ(key, MakeOid("1.4"));
    EXPECT_EQ(map.Next(key, key), -1);
    EXPECT_EQ(key, MakeOid("1.4"));
}

TEST(MapOid2Ptr, RefusesAKeyThatIsPresent)
{
    BMapOid2Ptr map;
    EXPECT_TRUE(map.Insert(MakeOid("1.2"), &g_data[0]));
    EXPECT_FALSE(map.Insert(MakeOid("1.2"), &g_data[1]));
    EXPECT_EQ(map.GetData(MakeOid("1.2")), &g_data[0]);
    EXPECT_TRUE(map.Insert(BObjectIdentifier(), &g_data[2]));
    EXPECT_FALSE(map.Insert(BObjectIdentifier(), &g_data[2]));
    EXPECT_EQ(map.KeyAt(0).Length(), 0u);
}

TEST(MapOid2Ptr, CapacityGrowsByTwoAndKeysAreCopied)
{
    EXPECT_EQ(BMapOid2Ptr::s_itemSize, 16u);
    EXPECT_EQ(BMapOid2Ptr::s_growBy, 2u);
    BMapOid2Ptr map;
    BObjectIdentifier key;
    for (unsigned i = 1; i <= 7; ++i) {
        key.Set(i);
        EXPECT_TRUE(map.Insert(key, nullptr));
        EXPECT_EQ(map.Capacity(), (i + 1) / 2 * 2) << i;
    }
    key.Set(99u);
    EXPECT_EQ(map.KeyAt(6), BObjectIdentifier(7u));
}

TEST(MapOid2Ptr, GrowingMovesKeysWithoutCopyingThem)
{
    BMapOid2Ptr map;
    map.Insert(MakeOid("5"), nullptr);
    map.Insert(MakeOid("9"), nullptr);
    const unsigned* arcs = map.KeyAt(0).Arcs();
    EXPECT_TRUE(map.Insert(MakeOid("1"), nullptr));
    EXPECT_EQ(map.KeyAt(1).Arcs(), arcs);
}

TEST(MapOid2Ptr, RemoveByKeyAndByPosition)
{
    BMapOid2Ptr map;
    for (unsigned i = 0; i < 5; ++i)
        map.Insert(BObjectIdentifier(i), &g_data[i]);
    EXPECT_EQ(map.Remove(BObjectIdentifier(9u)), nullptr);
    EXPECT_EQ(map.Remove(map.KeyAt(1)), &g_data[1]);
    map.RemoveAt(3);
    map.RemoveAt(0);
    map.RemoveAt(-1);
    map.RemoveAt(2);
    ASSERT_EQ(map.Count(), 2u);
    EXPECT_EQ(map.KeyAt(0), BObjectIdentifier(2u));
    EXPECT_EQ(map.KeyAt(1), BObjectIdentifier(3u));
    EXPECT_TRUE(map.Insert(BObjectIdentifier(1u), &g_data[7]));
    EXPECT_EQ(map.DataAt(0), &g_data[7]);
    map.Clear();
    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(map.Capacity(), 0u);
}

TEST(MapOid2Ptr, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible<BMapOid2Ptr>::value);
    EXPECT_FALSE(std::is_copy_assignable<BMapOid2Ptr>::value);
}

TEST(MapOid2Ptr, AnswersEqualThoseOfAPlainScan)
{
    const auto make = [](unsigned n) {
        static const unsigned s_arcs[] = {0, 1, 4294967295u};
        BObjectIdentifier oid;
        for (; n > 0; n /= 3)
            oid.Append(s_arcs[n % 3]);
        return oid;
    };
    VLKTest::CompareWithScan<BMapOid2Ptr, BObjectIdentifier>(make, 40, 1000,
                                                             std::random_device()());
}
