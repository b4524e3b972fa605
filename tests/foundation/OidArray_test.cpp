// Array of object identifiers.
#include "tests/support/Oids.h"

#include <gtest/gtest.h>
#include <utility>
#include <vkmibh/containers.h>

using namespace VLK;
using namespace VLK::Test;

namespace {

BOidArray Make(std::initializer_list<const char*> items)
{
    BOidArray array;
    for (const char* item : items)
        array.PushBack(MakeOid(item));
    return array;
}

std::string Items(const BOidArray& array)
{
    std::string items;
    for (unsigned i = 0; i < array.Count(); ++i)
        items += TextOf(array[static_cast<int>(i)]) + ";";
    return items;
}

} // namespace

TEST(OidArray, CapacityGrowsByTwo)
{
    EXPECT_EQ(BOidArray::s_oidSize, 12u);
    EXPECT_EQ(BOidArray::s_growBy, 2u);
    BOidArray array;
    for (unsigned i = 1; i <= 7; ++i) {
        EXPECT_TRUE(array.PushBack(BObjectIdentifier(i)));
        EXPECT_EQ(array.Count(), i);
        EXPECT_EQ(array.Capacity(), (i + 1) / 2 * 2) << i;
    }
    EXPECT_EQ(Items(array), "1;2;3;4;5;6;7;");
}

TEST(OidArray, FindsTheFirstEqualIdentifier)
{
    const BOidArray array = Make({"1.3", "1.4", ".", "1.4"});
    EXPECT_EQ(array.Find(MakeOid("1.4")), 1);
    EXPECT_EQ(array.Find(BObjectIdentifier()), 2);
    EXPECT_EQ(array.Find(MakeOid("1")), -1);
    EXPECT_EQ(array.Find(MakeOid("1.4.0")), -1);
    EXPECT_EQ(BOidArray().Find(BObjectIdentifier()), -1);
}

TEST(OidArray, GrowingMovesItemsWithoutCopyingThem)
{
    BOidArray array = Make({"1", "2"});
    const unsigned* arcs = array[0].Arcs();
    EXPECT_TRUE(array.PushBack(MakeOid("3")));
    EXPECT_EQ(array[0].Arcs(), arcs);
}

TEST(OidArray, RemovalKeepsTheOrderAndFreesTheSlotForUse)
{
    BOidArray array = Make({"1", "2", "3", "4"});
    EXPECT_FALSE(array.Remove(MakeOid("9")));
    EXPECT_TRUE(array.Remove(MakeOid("2")));
    EXPECT_EQ(Items(array), "1;3;4;");
    array.RemoveElementAt(-1);
    array.RemoveElementAt(3);
    array.RemoveElementAt(2);
    EXPECT_EQ(Items(array), "1;3;");
    EXPECT_TRUE(array.PushBack(MakeOid("5")));
    EXPECT_TRUE(array.PushBack(MakeOid("6.6")));
    EXPECT_EQ(Items(array), "1;3;5;6.6;");
    EXPECT_EQ(array.Capacity(), 4u);
    EXPECT_TRUE(array.Remove(array[0]));
    EXPECT_EQ(Items(array), "3;5;6.6;");
}

TEST(OidArray, AppendsItsOwnItemsAlsoWhileGrowing)
{
    BOidArray array = Make({"1.1", "2.2"});
    for (int i = 0; i < 6; ++i)
        EXPECT_TRUE(array.PushBack(array[i]));
    EXPECT_EQ(Items(array), "1.1;2.2;1.1;2.2;1.1;2.2;1.1;2.2;");
}

TEST(OidArray, CopiesAreDeepAndHaveNoneToSpare)
{
    BOidArray source = Make({"1", "2", "3"});
    const BOidArray copy(source);
    BOidArray assigned = Make({"9"});
    assigned = source;
    source.RemoveElementAt(0);
    EXPECT_EQ(Items(copy), "1;2;3;");
    EXPECT_EQ(Items(assigned), "1;2;3;");
    EXPECT_EQ(copy.Capacity(), 3u);
    BOidArray& self = assigned;
    assigned = self;
    EXPECT_EQ(Items(assigned), "1;2;3;");
    const BOidArray none;
    assigned = none;
    EXPECT_EQ(assigned.Count(), 0u);
    EXPECT_EQ(assigned.Capacity(), 0u);
}

TEST(OidArray, MoveLeavesTheSourceEmpty)
{
    BOidArray source = Make({"1", "2"});
    BOidArray moved(std::move(source));
    EXPECT_EQ(Items(moved), "1;2;");
    EXPECT_EQ(source.Count(), 0u);
    BOidArray assigned = Make({"9"});
    assigned = std::move(moved);
    EXPECT_EQ(Items(assigned), "1;2;");
    EXPECT_EQ(moved.Capacity(), 0u);
    BOidArray& self = assigned;
    assigned = std::move(self);
    EXPECT_EQ(Items(assigned), "1;2;");
}

TEST(OidArray, ClearReleasesTheStorage)
{
    BOidArray array = Make({"1"});
    array.Clear();
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(array.Capacity(), 0u);
}
