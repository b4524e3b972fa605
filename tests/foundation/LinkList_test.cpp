#include "tests/support/FailingAlloc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>
#include <vector>
#include <vkmibh/base.h>

namespace VLK {
namespace {

std::vector<int> Walk(const BLinkList& list)
{
    std::vector<int> values;
    for (BLLItem* item = list.First(); item; item = item->next)
        values.push_back(*static_cast<int*>(item->data));
    return values;
}

struct LinkList : testing::Test {
    void Fill(int count)
    {
        for (int i = 0; i < count; ++i)
            EXPECT_NE(list.Insert(&values[i]), 0);
    }
    BLLItem* At(int index)
    {
        BLLItem* item = list.First();
        while (index-- > 0)
            item = item->next;
        return item;
    }
    int values[5] = {0, 1, 2, 3, 4};
    BLinkList list;
};

TEST_F(LinkList, StartsEmpty)
{
    EXPECT_EQ(list.First(), nullptr);
    EXPECT_EQ(list.Last(), nullptr);
}

TEST_F(LinkList, InsertAppendsAtTheTail)
{
    Fill(4);
    EXPECT_EQ(Walk(list), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(list.Last()->data, &values[3]);
}

TEST_F(LinkList, FirstItemIsTheFirstField)
{
    Fill(2);
    BLLItem* first;
    std::memcpy(&first, static_cast<void*>(&list), sizeof(void*));
    EXPECT_EQ(first, list.First());
    static_assert(offsetof(BLLItem, data) == 0, "");
    static_assert(offsetof(BLLItem, link) == sizeof(void*), "");
    static_assert(offsetof(BLLItem, next) == 2 * sizeof(void*), "");
}

TEST_F(LinkList, RemovesAnyItem)
{
    Fill(5);
    list.Remove(At(2));
    EXPECT_EQ(Walk(list), (std::vector<int>{0, 1, 3, 4}));
    list.Remove(At(0));
    EXPECT_EQ(Walk(list), (std::vector<int>{1, 3, 4}));
    list.Remove(At(2));
    EXPECT_EQ(Walk(list), (std::vector<int>{1, 3}));
    list.Insert(&values[0]);
    EXPECT_EQ(Walk(list), (std::vector<int>{1, 3, 0}));
    while (list.First())
        list.Remove(list.Last());
    EXPECT_EQ(list.Last(), nullptr);
    list.Remove(nullptr);
    Fill(1);
    EXPECT_EQ(Walk(list), (std::vector<int>{0}));
}

TEST_F(LinkList, ClearLeavesTheDataAlone)
{
    Fill(5);
    list.Clear();
    EXPECT_EQ(list.First(), nullptr);
    EXPECT_EQ(values[4], 4);
    list.Clear();
    Fill(2);
    EXPECT_EQ(Walk(list), (std::vector<int>{0, 1}));
}

TEST_F(LinkList, InsertWithoutMemoryIsZero)
{
    Fill(2);
    {
        FailingAlloc fail(0);
        EXPECT_EQ(list.Insert(&values[2]), 0);
        EXPECT_TRUE(fail.Failed());
    }
    EXPECT_EQ(Walk(list), (std::vector<int>{0, 1}));
}

TEST_F(LinkList, HoldsNullPointersToo)
{
    EXPECT_NE(list.Insert(nullptr), 0);
    ASSERT_NE(list.First(), nullptr);
    EXPECT_EQ(list.First()->data, nullptr);
}

TEST_F(LinkList, IsNotCopied)
{
    static_assert(!std::is_copy_constructible<BLinkList>::value, "");
    static_assert(!std::is_copy_assignable<BLinkList>::value, "");
}

} // namespace
} // namespace VLK
