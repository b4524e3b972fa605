// Array of unsigned numbers.
#include <climits>
#include <gtest/gtest.h>
#include <utility>
#include <vkmibh/containers.h>

using namespace VLK;

namespace {

BUintArray Make(std::initializer_list<int> items)
{
    BUintArray array;
    for (const int item : items)
        array.PushBack(item);
    return array;
}

std::vector<unsigned> Items(const BUintArray& array)
{
    std::vector<unsigned> items;
    for (unsigned i = 0; i < array.Count(); ++i)
        items.push_back(array[static_cast<int>(i)]);
    return items;
}

using Numbers = std::vector<unsigned>;

} // namespace

TEST(UintArray, CapacityDoublesFromEight)
{
    EXPECT_EQ(BUintArray::s_intSize, 4u);
    BUintArray array;
    for (unsigned i = 1; i <= 33; ++i) {
        EXPECT_TRUE(array.PushBack(static_cast<int>(i)));
        EXPECT_EQ(array.Capacity(), i <= 8 ? 8u : i <= 16 ? 16u : i <= 32 ? 32u : 64u) << i;
    }
    for (unsigned i = 0; i < 33; ++i)
        EXPECT_EQ(array[static_cast<int>(i)], i + 1);
}

TEST(UintArray, FindsTheFirstEqualNumber)
{
    const BUintArray array = Make({5, -1, 5, INT_MIN});
    EXPECT_EQ(array.Find(5), 0);
    EXPECT_EQ(array.Find(-1), 1);
    EXPECT_EQ(array[1], UINT_MAX);
    EXPECT_EQ(array.Find(INT_MIN), 3);
    EXPECT_EQ(array.Find(6), -1);
    EXPECT_EQ(BUintArray().Find(0), -1);
}

TEST(UintArray, RemovalKeepsTheOrder)
{
    BUintArray array = Make({1, 2, 3, 2, 4});
    EXPECT_FALSE(array.Remove(9));
    EXPECT_TRUE(array.Remove(2));
    EXPECT_EQ(Items(array), (Numbers{1, 3, 2, 4}));
    array.RemoveElementAt(3);
    array.RemoveElementAt(0);
    array.RemoveElementAt(-1);
    array.RemoveElementAt(2);
    EXPECT_EQ(Items(array), (Numbers{3, 2}));
    EXPECT_EQ(array.Capacity(), 8u);
}

TEST(UintArray, CopiesAreDeepAndHaveNoneToSpare)
{
    BUintArray source = Make({1, 2, 3});
    const BUintArray copy(source);
    BUintArray assigned = Make({9});
    assigned = source;
    source.RemoveElementAt(0);
    EXPECT_EQ(Items(copy), (Numbers{1, 2, 3}));
    EXPECT_EQ(Items(assigned), (Numbers{1, 2, 3}));
    EXPECT_EQ(copy.Capacity(), 3u);
    EXPECT_TRUE(assigned.PushBack(4));
    EXPECT_EQ(assigned.Capacity(), 6u);
    BUintArray& self = assigned;
    assigned = self;
    EXPECT_EQ(Items(assigned), (Numbers{1, 2, 3, 4}));
    assigned = BUintArray();
    EXPECT_EQ(assigned.Capacity(), 0u);
    const BUintArray none;
    assigned = none;
    EXPECT_EQ(BUintArray(none).Count(), 0u);
}

TEST(UintArray, MoveLeavesTheSourceEmpty)
{
    BUintArray source = Make({1, 2});
    BUintArray moved(std::move(source));
    EXPECT_EQ(Items(moved), (Numbers{1, 2}));
    EXPECT_EQ(source.Count(), 0u);
    EXPECT_EQ(source.Capacity(), 0u);
    BUintArray assigned = Make({9});
    assigned = std::move(moved);
    EXPECT_EQ(Items(assigned), (Numbers{1, 2}));
    EXPECT_EQ(moved.Count(), 0u);
    BUintArray& self = assigned;
    assigned = std::move(self);
    EXPECT_EQ(Items(assigned), (Numbers{1, 2}));
}

TEST(UintArray, ClearReleasesTheStorage)
{
    BUintArray array = Make({1});
    array.Clear();
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(array.Capacity(), 0u);
}
