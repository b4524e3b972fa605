// Map from int to pointer.
#include "tests/support/MapOracle.h"

#include <climits>
#include <type_traits>
#include <vkmibh/containers.h>

using namespace VLK;

namespace {

int g_data[10];

} // namespace

TEST(MapInt2Ptr, KeepsKeysAscendingAndUnique)
{
    BMapInt2Ptr map;
    EXPECT_TRUE(map.Insert(5, &g_data[5]));
    EXPECT_TRUE(map.Insert(1, &g_data[1]));
    EXPECT_TRUE(map.Insert(3, &g_data[3]));
    EXPECT_FALSE(map.Insert(3, &g_data[0]));
    ASSERT_EQ(map.Count(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(map.KeyAt(i), 2 * i + 1);
        EXPECT_EQ(map.DataAt(i), &g_data[2 * i + 1]);
    }
    EXPECT_EQ(map.Next(3), 2);
    EXPECT_EQ(map.Next(5), -1);
    EXPECT_EQ(map.Next(7), -1);
    EXPECT_EQ(map.Next(0), 0);
    EXPECT_EQ(map.Next(2), 1);
    EXPECT_EQ(map.Find(4), -1);
    EXPECT_EQ(map.Find(0), -1);
    EXPECT_EQ(map.Find(6), -1);
    EXPECT_EQ(map.Find(3), 1);
}

TEST(MapInt2Ptr, AnEmptyMapFindsNothing)
{
    const BMapInt2Ptr map;
    EXPECT_EQ(map.Find(0), -1);
    EXPECT_EQ(map.Next(INT_MIN), -1);
    EXPECT_EQ(map.Capacity(), 0u);
}

TEST(MapInt2Ptr, NegativeKeysSortFirst)
{
    BMapInt2Ptr map;
    for (const int key : {0, INT_MAX, -1, INT_MIN, 1})
        EXPECT_TRUE(map.Insert(key, nullptr));
    const int expected[] = {INT_MIN, -1, 0, 1, INT_MAX};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(map.KeyAt(i), expected[i]);
    EXPECT_EQ(map.Next(INT_MIN), 1);
    EXPECT_EQ(map.Next(INT_MAX), -1);
}

TEST(MapInt2Ptr, CapacityGrowsByTwo)
{
    EXPECT_EQ(BMapInt2Ptr::s_itemSize, 8u);
    EXPECT_EQ(BMapInt2Ptr::s_growBy, 2u);
    BMapInt2Ptr map;
    for (int i = 1; i <= 7; ++i) {
        EXPECT_TRUE(map.Insert(-i, nullptr));
        EXPECT_EQ(map.Capacity(), static_cast<unsigned>(i + 1) / 2 * 2) << i;
    }
}

TEST(MapInt2Ptr, RemoveReturnsTheDataAndClosesTheGap)
{
    BMapInt2Ptr map;
    for (int i = 0; i < 4; ++i)
        map.Insert(i, &g_data[i]);
    EXPECT_EQ(map.Remove(9), nullptr);
    EXPECT_EQ(map.Remove(1), &g_data[1]);
    EXPECT_EQ(map.Remove(1), nullptr);
    ASSERT_EQ(map.Count(), 3u);
    EXPECT_EQ(map.KeyAt(1), 2);
    EXPECT_EQ(map.DataAt(2), &g_data[3]);
    EXPECT_EQ(map.Remove(3), &g_data[3]);
    EXPECT_EQ(map.Remove(0), &g_data[0]);
    EXPECT_EQ(map.Remove(2), &g_data[2]);
    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(map.Capacity(), 4u);
}

TEST(MapInt2Ptr, ClearReleasesTheItems)
{
    BMapInt2Ptr map;
    map.Insert(1, &g_data[1]);
    map.Clear();
    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(map.Capacity(), 0u);
    EXPECT_EQ(map.Find(1), -1);
    EXPECT_TRUE(map.Insert(1, &g_data[2]));
}

TEST(MapInt2Ptr, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible<BMapInt2Ptr>::value);
    EXPECT_FALSE(std::is_copy_assignable<BMapInt2Ptr>::value);
}

TEST(MapInt2Ptr, AnswersEqualThoseOfAPlainScan)
{
    const auto make = [](unsigned n) { return static_cast<int>(n * 7 % 41) - 20; };
    VLKTest::CompareWithScan<BMapInt2Ptr, int>(make, 41, 2000, std::random_device()());
}
