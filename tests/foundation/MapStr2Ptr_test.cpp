// Map from string to pointer.
#include "tests/support/MapOracle.h"

#include <string>
#include <type_traits>
#include <vkmibh/containers.h>

using namespace VLK;

namespace {

int g_data[10];

} // namespace

TEST(MapStr2Ptr, KeysSortByUnsignedBytesAPrefixFirst)
{
    const char* const sorted[] = {"", "A", "B", "a", "ab", "b", "\x7f", "\x80", "\xff"};
    BMapStr2Ptr map;
    for (const int i : {4, 8, 0, 2, 6, 1, 7, 3, 5})
        EXPECT_TRUE(map.Insert(BString(sorted[i]), &g_data[i]));
    for (int i = 0; i < 9; ++i) {
        EXPECT_STREQ(map.KeyAt(i).c_str(), sorted[i]);
        EXPECT_EQ(map.DataAt(i), &g_data[i]);
        EXPECT_EQ(map.Find(BString(sorted[i])), i);
        EXPECT_EQ(map.Next(BString(sorted[i])), i == 8 ? -1 : i + 1);
    }
    EXPECT_EQ(map.Find(BString("aa")), -1);
    EXPECT_EQ(map.Next(BString("aa")), 4);
    EXPECT_EQ(map.Find(BString("\xff\xff")), -1);
}

TEST(MapStr2Ptr, RefusesAKeyThatIsPresent)
{
    BMapStr2Ptr map;
    EXPECT_TRUE(map.Insert(BString("a"), &g_data[0]));
    EXPECT_FALSE(map.Insert(BString("a"), &g_data[1]));
    EXPECT_EQ(map.DataAt(0), &g_data[0]);
    EXPECT_EQ(map.Count(), 1u);
}

TEST(MapStr2Ptr, CapacityGrowsByTwoAndKeysAreCopied)
{
    EXPECT_EQ(BMapStr2Ptr::s_itemSize, 16u);
    EXPECT_EQ(BMapStr2Ptr::s_growBy, 2u);
    BMapStr2Ptr map;
    BString key;
    for (unsigned i = 1; i <= 7; ++i) {
        key = BString(std::to_string(i).c_str());
        EXPECT_TRUE(map.Insert(key, nullptr));
        EXPECT_EQ(map.Capacity(), (i + 1) / 2 * 2) << i;
    }
    key = BString("changed");
    EXPECT_STREQ(map.KeyAt(6).c_str(), "7");
}

TEST(MapStr2Ptr, GrowingMovesKeysWithoutCopyingThem)
{
    BMapStr2Ptr map;
    map.Insert(BString("m"), nullptr);
    map.Insert(BString("z"), nullptr);
    const char* text = map.KeyAt(0).data();
    EXPECT_TRUE(map.Insert(BString("a"), nullptr));
    EXPECT_EQ(map.KeyAt(1).data(), text);
}

TEST(MapStr2Ptr, RemoveReturnsTheDataAndClosesTheGap)
{
    BMapStr2Ptr map;
    const char* const keys[] = {"a", "b", "c"};
    for (int i = 0; i < 3; ++i)
        map.Insert(BString(keys[i]), &g_data[i]);
    EXPECT_EQ(map.Remove(BString("x")), nullptr);
    EXPECT_EQ(map.Remove(map.KeyAt(1)), &g_data[1]);
    ASSERT_EQ(map.Count(), 2u);
    EXPECT_STREQ(map.KeyAt(1).c_str(), "c");
    EXPECT_EQ(map.Remove(BString("c")), &g_data[2]);
    EXPECT_TRUE(map.Insert(BString("b"), &g_data[5]));
    EXPECT_EQ(map.DataAt(1), &g_data[5]);
    map.Clear();
    EXPECT_EQ(map.Count(), 0u);
    EXPECT_EQ(map.Capacity(), 0u);
    EXPECT_EQ(map.Next(BString()), -1);
}

TEST(MapStr2Ptr, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible<BMapStr2Ptr>::value);
    EXPECT_FALSE(std::is_copy_assignable<BMapStr2Ptr>::value);
}

TEST(MapStr2Ptr, AnswersEqualThoseOfAPlainScan)
{
    const auto make = [](unsigned n) {
        std::string text;
        for (; n > 0; n /= 3)
            text += "a\xff"
                    "b"[n % 3];
        return BString(text.c_str());
    };
    VLKTest::CompareWithScan<BMapStr2Ptr, BString>(make, 40, 1000, std::random_device()());
}
