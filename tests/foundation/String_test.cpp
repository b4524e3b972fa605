#include "tests/support/FailingAlloc.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>
#include <vkmibh/base.h>

namespace VLK {
namespace {

std::string Text(const BString& s) { return std::string(s.c_str(), s.length()); }

TEST(String, StartsWithoutStorage)
{
    const BString s;
    EXPECT_EQ(s.data(), nullptr);
    EXPECT_EQ(s.length(), 0u);
    EXPECT_EQ(s.capacity(), 0u);
    EXPECT_TRUE(s.empty());
}

TEST(String, NullStrStandsInForMissingStorage)
{
    const BString s;
    EXPECT_EQ(s.c_str(), BString::_Nullstr());
    EXPECT_EQ(BString::_Nullstr(), BString::_Nullstr());
    EXPECT_STREQ(BString::_Nullstr(), "");
}

TEST(String, NposHasAllBitsSet) { EXPECT_EQ(BString::npos, ~0u); }

TEST(String, AllZeroBytesAreAnEmptyString)
{
    alignas(BString) unsigned char raw[sizeof(BString)] = {};
    BString& s = reinterpret_cast<BString&>(raw);
    EXPECT_TRUE(s.empty());
    s.Append("abc", 3);
    EXPECT_EQ(Text(s), "abc");
    s.~BString();
}

TEST(String, MovesByteWise)
{
    BString s("a text longer than any small buffer would be");
    alignas(BString) unsigned char raw[sizeof(BString)];
    std::memcpy(raw, static_cast<void*>(&s), sizeof raw);
    std::memset(static_cast<void*>(&s), 0, sizeof raw);
    BString& moved = reinterpret_cast<BString&>(raw);
    moved.Append('!');
    EXPECT_EQ(Text(moved), "a text longer than any small buffer would be!");
    EXPECT_TRUE(s.empty());
    moved.~BString();
}

TEST(String, InitDoesNotReadWhatWasThere)
{
    alignas(BString) unsigned char raw[sizeof(BString)];
    std::memset(raw, 0xff, sizeof raw);
    BString& s = reinterpret_cast<BString&>(raw);
    s.Init("abcdef", 3);
    EXPECT_EQ(Text(s), "abc");
    s.~BString();
    std::memset(raw, 0xff, sizeof raw);
    s.Init(nullptr, 0);
    EXPECT_TRUE(s.empty());
    s.~BString();
}

TEST(String, AssignReplacesTheContents)
{
    BString s("something");
    EXPECT_EQ(&s.Assign("other things", 5), &s);
    EXPECT_EQ(Text(s), "other");
    s.Assign("", 0);
    EXPECT_TRUE(s.empty());
    EXPECT_STREQ(s.c_str(), "");
}

TEST(String, NullTextHasNoCharacters)
{
    BString s("abc");
    s.Append(nullptr, 5);
    EXPECT_EQ(Text(s), "abc");
    s.Assign(nullptr, 5);
    EXPECT_TRUE(s.empty());
    EXPECT_TRUE(BString(static_cast<const char*>(nullptr)).empty());
    EXPECT_TRUE(BString(nullptr, 7).empty());
}

TEST(String, KeepsBytesOfEveryValue)
{
    const char bytes[] = {'a', '\0', '\xff', '\n'};
    BString s(bytes, 4);
    s.Append('\0');
    EXPECT_EQ(Text(s), std::string("a\0\xff\n\0", 5));
}

TEST(String, ANulFollowsTheLastCharacter)
{
    BString s;
    s.reserve(3);
    EXPECT_EQ(s.data()[0], '\0');
    for (int i = 0; i < 200; ++i) {
        s.Append(char('a' + i % 26));
        ASSERT_EQ(s.data()[s.length()], '\0');
    }
    s.Assign(s.data() + 10, 20);
    EXPECT_EQ(s.data()[20], '\0');
    s.clear();
    EXPECT_EQ(s.data()[0], '\0');
}

TEST(String, AppendsItself)
{
    BString s("abc");
    for (int i = 0; i < 6; ++i)
        s.Append(s);
    std::string expected;
    for (int i = 0; i < 64; ++i)
        expected += "abc";
    EXPECT_EQ(Text(s), expected);
    s.Append(s.data() + 190, 2);
    EXPECT_EQ(Text(s), expected + "bc");
}

TEST(String, AssignsPartOfItself)
{
    BString s("0123456789");
    s.Assign(s.data() + 3, 4);
    EXPECT_EQ(Text(s), "3456");
    s.Assign(s);
    EXPECT_EQ(Text(s), "3456");
    s.Assign(s.data(), 2);
    EXPECT_EQ(Text(s), "34");
}

TEST(String, CopiesDeeply)
{
    BString a("abc");
    BString b(a);
    BString c;
    c = a;
    a.Append('d');
    EXPECT_EQ(Text(b), "abc");
    EXPECT_EQ(Text(c), "abc");
    c = *&c;
    EXPECT_EQ(Text(c), "abc");
}

TEST(String, MoveTakesTheStorage)
{
    static_assert(std::is_nothrow_move_constructible<BString>::value, "");
    static_assert(std::is_nothrow_move_assignable<BString>::value, "");
    BString a("abc");
    const char* const storage = a.data();
    BString b(std::move(a));
    EXPECT_EQ(b.data(), storage);
    EXPECT_TRUE(a.empty());
    BString c("old");
    c = std::move(b);
    EXPECT_EQ(c.data(), storage);
    EXPECT_EQ(Text(c), "abc");
    BString& same = c;
    c = std::move(same);
    EXPECT_EQ(Text(c), "abc");
}

TEST(String, ReserveMakesRoomAndKeepsTheContents)
{
    BString s("abc");
    EXPECT_TRUE(s.reserve(100));
    EXPECT_GE(s.capacity(), 100u);
    EXPECT_EQ(Text(s), "abc");
    const char* const storage = s.data();
    for (int i = 0; i < 97; ++i)
        s.Append('x');
    EXPECT_EQ(s.data(), storage);
    EXPECT_TRUE(s.reserve(5));
    EXPECT_EQ(s.length(), 100u);
}

TEST(String, ClearKeepsTheStorage)
{
    BString s("abc");
    const char* const storage = s.data();
    s.clear();
    EXPECT_TRUE(s.empty());
    EXPECT_EQ(s.data(), storage);
}

TEST(String, ComparesAPart)
{
    const BString s("getnext");
    EXPECT_EQ(s.compare(0, 3, "get", 3), 0);
    EXPECT_NE(s.compare(0, 7, "get", 3), 0);
    EXPECT_EQ(s.compare(3, 4, "next", 4), 0);
    EXPECT_EQ(s.compare(3, BString::npos, "next", 4), 0);
    EXPECT_NE(s.compare(0, 3, "GET", 3), 0);
    EXPECT_EQ(s.compare(0, 0, "", 0), 0);
}

TEST(String, CompareClampsToWhatIsThere)
{
    const BString s("get");
    EXPECT_EQ(s.compare(0, 100, "get", 3), 0);
    EXPECT_LT(s.compare(0, 100, "getnext", 7), 0);
    EXPECT_EQ(s.compare(3, 5, "", 0), 0);
    EXPECT_EQ(s.compare(99, 5, "", 0), 0);
    EXPECT_LT(s.compare(99, 5, "a", 1), 0);
    EXPECT_EQ(BString().compare(0, 5, nullptr, 0), 0);
    EXPECT_LT(BString().compare(0, 5, "a", 1), 0);
}

TEST(String, OrderIsByUnsignedBytesThenShorterFirst)
{
    EXPECT_LT(BString("a"), BString("b"));
    EXPECT_LT(BString("ab"), BString("abc"));
    EXPECT_LT(BString("z"), BString("\xe9"));
    EXPECT_LT(BString(), BString("a"));
    EXPECT_FALSE(BString("b") < BString("a"));
    EXPECT_TRUE(BString("abc") == BString("abc"));
    EXPECT_TRUE(BString("abc") != BString("abd"));
    EXPECT_TRUE(BString() == BString(""));
    EXPECT_LT(BString("a", 1), BString("a\0", 2));
}

TEST(String, StrlenCountsUpToTheNul)
{
    EXPECT_EQ(BString::Strlen("abc"), 3u);
    EXPECT_EQ(BString::Strlen(""), 0u);
    EXPECT_EQ(BString::Strlen(nullptr), 0u);
}

TEST(String, WithoutMemoryItStaysAsItWas)
{
    BString s("abc");
    const std::string big(1000, 'x');
    {
        FailingAlloc fail(0);
        s.Append(big.c_str(), 1000);
        EXPECT_EQ(Text(s), "abc");
        s.Assign(big.c_str(), 1000);
        EXPECT_EQ(Text(s), "abc");
        EXPECT_FALSE(s.reserve(1000));
        EXPECT_EQ(Text(s), "abc");
        s = BString(big.c_str());
        EXPECT_TRUE(fail.Failed());
    }
    EXPECT_TRUE(s.empty());
    EXPECT_EQ(s.data(), nullptr);
}

TEST(String, RefusesLengthsThatOverflow)
{
    BString s("abc");
    EXPECT_FALSE(s.reserve(BString::npos));
    EXPECT_EQ(Text(s), "abc");
    s.Append("x", BString::npos - 2); // refused before a character is read
    EXPECT_EQ(Text(s), "abc");
}

TEST(String, AppendingOneByOneAllocatesSeldom)
{
    BString s;
    unsigned moves = 0;
    const char* storage = nullptr;
    for (int i = 0; i < 100000; ++i) {
        s.Append('x');
        moves += s.data() != storage;
        storage = s.data();
    }
    EXPECT_EQ(s.length(), 100000u);
    EXPECT_LT(moves, 20u);
}

} // namespace
} // namespace VLK
