// Array of strings.
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>
#include <vkmibh/containers.h>

using namespace VLK;

namespace {

BStringArray Make(std::initializer_list<const char*> items)
{
    BStringArray array;
    for (const char* item : items)
        array.PushBack(BString(item));
    return array;
}

std::string Items(const BStringArray& array)
{
    std::string items;
    for (unsigned i = 0; i < array.Count(); ++i)
        items += std::string(array[static_cast<int>(i)].c_str()) + ";";
    return items;
}

} // namespace

TEST(StringArray, CapacityGrowsByTwo)
{
    EXPECT_EQ(BStringArray::s_strSize, 12u);
    EXPECT_EQ(BStringArray::s_growBy, 2u);
    EXPECT_TRUE(std::has_virtual_destructor<BStringArray>::value);
    BStringArray array;
    for (unsigned i = 1; i <= 7; ++i) {
        EXPECT_TRUE(array.PushBack(BString(std::to_string(i).c_str())));
        EXPECT_EQ(array.Count(), i);
        EXPECT_EQ(array.Capacity(), (i + 1) / 2 * 2) << i;
    }
    EXPECT_EQ(Items(array), "1;2;3;4;5;6;7;");
}

TEST(StringArray, FindsTheFirstEqualString)
{
    const BStringArray array = Make({"a", "b", "", "b"});
    EXPECT_EQ(array.Find(BString("b")), 1);
    EXPECT_EQ(array.Find(BString()), 2);
    EXPECT_EQ(array.Find(BString("B")), -1);
    EXPECT_EQ(array.Find(BString("bb")), -1);
    EXPECT_EQ(BStringArray().Find(BString()), -1);
}

TEST(StringArray, GrowingMovesStringsWithoutCopyingThem)
{
    BStringArray array = Make({"first string, long enough", "second"});
    const char* text = array[0].data();
    EXPECT_TRUE(array.PushBack(BString("third")));
    EXPECT_EQ(array[0].data(), text);
}

TEST(StringArray, RemovalKeepsTheOrderAndFreesTheSlotForUse)
{
    BStringArray array = Make({"a", "b", "c", "d"});
    EXPECT_FALSE(array.Remove(BString("x")));
    EXPECT_TRUE(array.Remove(BString("b")));
    EXPECT_EQ(Items(array), "a;c;d;");
    array.RemoveElementAt(-1);
    array.RemoveElementAt(3);
    array.RemoveElementAt(2);
    EXPECT_EQ(Items(array), "a;c;");
    EXPECT_TRUE(array.PushBack(BString("e")));
    EXPECT_TRUE(array.PushBack(BString()));
    EXPECT_EQ(Items(array), "a;c;e;;");
    EXPECT_EQ(array.Capacity(), 4u);
    EXPECT_TRUE(array.Remove(array[0]));
    EXPECT_EQ(Items(array), "c;e;;");
}

TEST(StringArray, AppendsItsOwnItemsAlsoWhileGrowing)
{
    BStringArray array = Make({"a", "b"});
    for (int i = 0; i < 6; ++i)
        EXPECT_TRUE(array.PushBack(array[i]));
    EXPECT_EQ(Items(array), "a;b;a;b;a;b;a;b;");
}

TEST(StringArray, CopiesAreDeepAndHaveNoneToSpare)
{
    BStringArray source = Make({"a", "b", "c"});
    const BStringArray copy(source);
    BStringArray assigned = Make({"x"});
    assigned = source;
    source.RemoveElementAt(0);
    EXPECT_EQ(Items(copy), "a;b;c;");
    EXPECT_EQ(Items(assigned), "a;b;c;");
    EXPECT_EQ(copy.Capacity(), 3u);
    BStringArray& self = assigned;
    assigned = self;
    EXPECT_EQ(Items(assigned), "a;b;c;");
    const BStringArray none;
    assigned = none;
    EXPECT_EQ(assigned.Count(), 0u);
    EXPECT_EQ(assigned.Capacity(), 0u);
}

TEST(StringArray, MoveLeavesTheSourceEmpty)
{
    BStringArray source = Make({"a", "b"});
    BStringArray moved(std::move(source));
    EXPECT_EQ(Items(moved), "a;b;");
    EXPECT_EQ(source.Count(), 0u);
    BStringArray assigned = Make({"x"});
    assigned = std::move(moved);
    EXPECT_EQ(Items(assigned), "a;b;");
    EXPECT_EQ(moved.Capacity(), 0u);
    BStringArray& self = assigned;
    assigned = std::move(self);
    EXPECT_EQ(Items(assigned), "a;b;");
}

TEST(StringArray, ClearReleasesTheStorage)
{
    BStringArray array = Make({"a"});
    array.Clear();
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(array.Capacity(), 0u);
}
