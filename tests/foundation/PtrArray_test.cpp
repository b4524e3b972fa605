// Array of pointers.
#include <gtest/gtest.h>
#include <type_traits>
#include <vkmibh/containers.h>

using namespace VLK;

namespace {

int g_things[20];

} // namespace

TEST(PtrArray, CapacityDoublesFromFour)
{
    EXPECT_EQ(BPtrArray::s_voidPtrSize, 4u);
    BPtrArray array;
    EXPECT_EQ(array.Capacity(), 0u);
    for (unsigned i = 1; i <= 17; ++i) {
        EXPECT_TRUE(array.PushBack(&g_things[i - 1]));
        EXPECT_EQ(array.Count(), i);
        EXPECT_EQ(array.Capacity(), i <= 4 ? 4u : i <= 8 ? 8u : i <= 16 ? 16u : 32u) << i;
    }
    for (int i = 0; i < 17; ++i)
        EXPECT_EQ(array[i], &g_things[i]);
}

TEST(PtrArray, FindsByIdentityTheFirst)
{
    BPtrArray array;
    EXPECT_EQ(array.Find(nullptr), -1);
    for (void* item : {&g_things[0], &g_things[1], &g_things[1]})
        array.PushBack(item);
    EXPECT_EQ(array.Find(&g_things[1]), 1);
    EXPECT_EQ(array.Find(&g_things[2]), -1);
    EXPECT_EQ(array.Find(nullptr), -1);
    array.PushBack(nullptr);
    EXPECT_EQ(array.Find(nullptr), 3);
}

TEST(PtrArray, RemovalKeepsTheOrderAndTheCapacity)
{
    BPtrArray array;
    for (int i = 0; i < 5; ++i)
        array.PushBack(&g_things[i]);
    EXPECT_FALSE(array.Remove(&g_things[9]));
    EXPECT_EQ(array.Count(), 5u);
    EXPECT_TRUE(array.Remove(&g_things[1]));
    array.RemoveElementAt(3);
    array.RemoveElementAt(0);
    ASSERT_EQ(array.Count(), 2u);
    EXPECT_EQ(array[0], &g_things[2]);
    EXPECT_EQ(array[1], &g_things[3]);
    EXPECT_EQ(array.Capacity(), 8u);
}

TEST(PtrArray, ABadIndexChangesNothing)
{
    BPtrArray array;
    array.RemoveElementAt(0);
    array.PushBack(&g_things[0]);
    array.RemoveElementAt(-1);
    array.RemoveElementAt(1);
    EXPECT_EQ(array.Count(), 1u);
}

TEST(PtrArray, ClearReleasesTheStorage)
{
    BPtrArray array;
    array.PushBack(&g_things[0]);
    array.Clear();
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(array.Capacity(), 0u);
    EXPECT_TRUE(array.PushBack(&g_things[1]));
    EXPECT_EQ(array.Capacity(), 4u);
}

TEST(PtrArray, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible<BPtrArray>::value);
    EXPECT_FALSE(std::is_copy_assignable<BPtrArray>::value);
}
