// Octet string: storage, assignment, comparison and text.
#include "tests/support/ValueText.h"

#include <climits>
#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

using namespace VLK;
using namespace VLKTest;

namespace {

std::string Letters(unsigned count)
{
    std::string text;
    for (unsigned i = 0; i < count; ++i)
        text += static_cast<char>('a' + i % 26);
    return text;
}

const unsigned char* Raw(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

} // namespace

TEST(OctetString, Constructors)
{
    unsigned char bytes[] = {1, 0, 255};
    const std::string expected("\x01\x00\xff", 3);
    EXPECT_EQ(BOctetString().Length(), 0u);
    EXPECT_EQ(BOctetString().Data(), nullptr);
    EXPECT_EQ(BytesOf(BOctetString(3u, bytes)), expected);
    EXPECT_EQ(BytesOf(BOctetString(bytes, bytes + 3)), expected);
    EXPECT_EQ(BytesOf(BOctetString(SASNOctetStr{bytes, 3})), expected);
    EXPECT_EQ(BytesOf(BOctetString(SASNOctetStr{nullptr, 3})), "");
    EXPECT_EQ(BytesOf(BOctetString(BString("abc"))), "abc");
    EXPECT_EQ(BytesOf(BOctetString("abcdef", 2)), "ab");
    EXPECT_EQ(BytesOf(BOctetString("abcdef", 0)), "abcdef");
    const BOctetString original(3u, bytes);
    BOctetString copy(original);
    copy[0] = 7;
    EXPECT_EQ(BytesOf(original), expected);
}

TEST(OctetString, MoveHandsTheStorageOverAndLeavesTheSourceEmpty)
{
    static_assert(std::is_nothrow_move_constructible<BOctetString>::value, "noexcept");
    static_assert(std::is_nothrow_move_assignable<BOctetString>::value, "noexcept");
    BOctetString a = Octets("abc");
    const unsigned char* storage = a.Data();
    BOctetString b(std::move(a));
    EXPECT_EQ(b.Data(), storage);
    EXPECT_EQ(a.Data(), nullptr);
    EXPECT_EQ(a.Length(), 0u);
    EXPECT_EQ(a.Capacity(), 0u);
    BOctetString c = Octets("x");
    c = std::move(b);
    EXPECT_EQ(c.Data(), storage);
    BOctetString& self = c;
    c = std::move(self);
    EXPECT_EQ(BytesOf(c), "abc");
}

TEST(OctetString, CapacityDoublesFromFour)
{
    EXPECT_EQ(BOctetString::s_growBy, 2u);
    const struct {
        unsigned length, capacity;
    } rows[] = {{0, 0}, {1, 4}, {4, 4}, {5, 8}, {8, 8}, {9, 16}, {17, 32}, {1000, 1024}};
    for (const auto& row : rows) {
        BOctetString octets;
        EXPECT_TRUE(octets.Assign(row.length, Raw(Letters(row.length))));
        EXPECT_EQ(octets.Capacity(), row.capacity) << row.length;
    }
    BOctetString single;
    for (unsigned i = 1; i <= 9; ++i) {
        EXPECT_TRUE(single.Append('x'));
        EXPECT_EQ(single.Capacity(), i <= 4 ? 4u : i <= 8 ? 8u : 16u) << i;
    }
}

TEST(OctetString, RefusesACapacityBeyond32Bits)
{
    BOctetString octets = Octets("ab");
    EXPECT_FALSE(octets.ReallocArray(0x80000001u, false));
    EXPECT_EQ(BytesOf(octets), "ab");
    EXPECT_EQ(octets.Capacity(), 4u);
    EXPECT_FALSE(octets.ReallocArray(UINT_MAX, true));
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_EQ(octets.Capacity(), 4u);
}

TEST(OctetString, ReallocArrayKeepsOrDiscardsTheContents)
{
    BOctetString octets = Octets("abc");
    EXPECT_TRUE(octets.ReallocArray(9, false));
    EXPECT_EQ(BytesOf(octets), "abc");
    EXPECT_EQ(octets.Capacity(), 16u);
    EXPECT_TRUE(octets.ReallocArray(0, true));
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_EQ(octets.Capacity(), 16u);
}

TEST(OctetString, AssignReplacesTheContents)
{
    BOctetString octets = Octets("old contents");
    EXPECT_TRUE(octets.Assign(Octets("new")));
    EXPECT_EQ(BytesOf(octets), "new");
    EXPECT_EQ(octets.Capacity(), 16u);
    EXPECT_TRUE(octets.Assign(static_cast<unsigned char>(200)));
    EXPECT_EQ(BytesOf(octets), "\xc8");
    EXPECT_TRUE(octets.Assign("text", 0));
    EXPECT_EQ(BytesOf(octets), "text");
    EXPECT_TRUE(octets.Assign("text", 2));
    EXPECT_EQ(BytesOf(octets), "te");
    EXPECT_TRUE(octets.Assign(BString("str")));
    EXPECT_EQ(BytesOf(octets), "str");
    EXPECT_TRUE(octets.Assign(BString()));
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_TRUE(octets.Assign(static_cast<const char*>(nullptr), 0));
    EXPECT_EQ(octets.Length(), 0u);
}

TEST(OctetString, AssignOfARange)
{
    const std::string text = "abcdef";
    BOctetString octets;
    EXPECT_TRUE(octets.Assign(Raw(text) + 1, Raw(text) + 4));
    EXPECT_EQ(BytesOf(octets), "bcd");
    EXPECT_TRUE(octets.Assign(Raw(text) + 4, Raw(text) + 1));
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_TRUE(octets.Assign(Raw(text), Raw(text)));
    EXPECT_EQ(octets.Length(), 0u);
    const unsigned char* none = nullptr;
    EXPECT_TRUE(octets.Assign(none, none));
    EXPECT_EQ(octets.Length(), 0u);
}

TEST(OctetString, AssignWithoutBytesGivesZeros)
{
    BOctetString octets = Octets("abcdef");
    EXPECT_TRUE(octets.Assign(5u, static_cast<const unsigned char*>(nullptr)));
    EXPECT_EQ(BytesOf(octets), std::string(5, '\0'));
    EXPECT_TRUE(octets.Assign(0u, static_cast<const unsigned char*>(nullptr)));
    EXPECT_EQ(octets.Length(), 0u);
}

TEST(OctetString, AssignsItselfAndPartsOfItself)
{
    BOctetString octets = Octets("abcdef");
    EXPECT_TRUE(octets.Assign(octets));
    BOctetString& self = octets;
    octets = self;
    EXPECT_EQ(BytesOf(octets), "abcdef");
    EXPECT_TRUE(octets.Assign(3u, octets.Data() + 2));
    EXPECT_EQ(BytesOf(octets), "cde");
}

TEST(OctetString, SingleAppendGrowsOnlyWhenFull)
{
    BOctetString octets = Octets("abc");
    EXPECT_TRUE(octets.Append('d'));
    EXPECT_EQ(octets.Capacity(), 4u);
    EXPECT_TRUE(octets.Append('e'));
    EXPECT_EQ(octets.Capacity(), 8u);
    EXPECT_EQ(BytesOf(octets), "abcde");
}

TEST(OctetString, MultiByteAppendGrowsOneByteEarly)
{
    BOctetString bytes = Octets("ab");
    EXPECT_TRUE(bytes.Append(1u, Raw("c")));
    EXPECT_EQ(bytes.Capacity(), 4u);
    EXPECT_TRUE(bytes.Append(1u, Raw("d")));
    EXPECT_EQ(bytes.Capacity(), 8u);
    EXPECT_EQ(BytesOf(bytes), "abcd");
    BOctetString other = Octets("ab");
    EXPECT_TRUE(other.Append(Octets("cd")));
    EXPECT_EQ(other.Capacity(), 8u);
    BOctetString full = Octets("abcd");
    EXPECT_TRUE(full.Append(BOctetString()));
    EXPECT_EQ(full.Capacity(), 8u);
    EXPECT_EQ(BytesOf(full), "abcd");
    BOctetString empty;
    EXPECT_TRUE(empty.Append(0u, nullptr));
    EXPECT_EQ(empty.Capacity(), 4u);
    EXPECT_EQ(empty.Length(), 0u);
}

TEST(OctetString, APieceOf256BytesIsRefusedAndChangesNothing)
{
    const std::string longest = Letters(255);
    const std::string tooLong = Letters(256);
    BOctetString octets = Octets("x");
    EXPECT_TRUE(octets.Append(255u, Raw(longest)));
    EXPECT_EQ(BytesOf(octets), "x" + longest);
    const unsigned capacity = octets.Capacity();
    EXPECT_FALSE(octets.Append(256u, Raw(tooLong)));
    EXPECT_FALSE(octets.Append(Octets(tooLong)));
    EXPECT_FALSE(octets.Append(UINT_MAX, Raw(tooLong)));
    EXPECT_EQ(BytesOf(octets), "x" + longest);
    EXPECT_EQ(octets.Capacity(), capacity);
    EXPECT_FALSE(octets.Append(octets));
    EXPECT_EQ(octets.Length(), 256u);
    EXPECT_FALSE(octets.Append(3u, nullptr));
    EXPECT_EQ(octets.Length(), 256u);
}

TEST(OctetString, AppendsItselfAndPartsOfItselfAlsoWhileGrowing)
{
    for (unsigned length = 0; length <= 70; ++length) {
        const std::string text = Letters(length);
        BOctetString octets = Octets(text);
        EXPECT_TRUE(octets.Append(octets));
        EXPECT_EQ(BytesOf(octets), text + text);
        for (unsigned from = 0; from < length; from += 7) {
            BOctetString part = Octets(text);
            EXPECT_TRUE(part.Append(length - from, part.Data() + from));
            EXPECT_EQ(BytesOf(part), text + text.substr(from));
        }
        if (length > 0) {
            BOctetString one = Octets(text);
            EXPECT_TRUE(one.Append(one[0]));
            EXPECT_EQ(BytesOf(one), text + text[0]);
        }
    }
}

TEST(OctetString, AppendsWhatReserveFilledAlsoWhileGrowing)
{
    BOctetString octets;
    EXPECT_TRUE(octets.Reserve(4, 'z'));
    EXPECT_TRUE(octets.Append(4u, octets.Data()));
    EXPECT_EQ(BytesOf(octets), "zzzz");
    EXPECT_EQ(octets.Capacity(), 8u);
}

TEST(OctetString, ReserveMakesAnExactFilledCapacity)
{
    BOctetString octets = Octets("abcdef");
    EXPECT_TRUE(octets.Reserve(5, '*'));
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_EQ(octets.Capacity(), 5u);
    for (unsigned i = 0; i < 5; ++i)
        EXPECT_EQ(octets[i], '*');
    const unsigned char* storage = octets.Data();
    EXPECT_TRUE(octets.Reserve(5, 'x'));
    EXPECT_EQ(octets.Data(), storage);
    EXPECT_EQ(octets[4], 'x');
    EXPECT_TRUE(octets.Reserve(0, 'x'));
    EXPECT_EQ(octets.Data(), nullptr);
    EXPECT_EQ(octets.Capacity(), 0u);
}

TEST(OctetString, ClearReleasesTheStorage)
{
    BOctetString octets = Octets("abc");
    octets.Clear();
    EXPECT_EQ(octets.Data(), nullptr);
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_EQ(octets.Capacity(), 0u);
}

TEST(OctetString, EqualWhenLengthAndBytesAre)
{
    EXPECT_TRUE(BOctetString() == BOctetString());
    EXPECT_TRUE(BOctetString() == BString());
    EXPECT_TRUE(Octets("abc") == Octets("abc"));
    EXPECT_TRUE(Octets("abc") == BString("abc"));
    EXPECT_FALSE(Octets("abc") == Octets("abd"));
    EXPECT_FALSE(Octets("abc") == Octets("ab"));
    EXPECT_FALSE(Octets("abc") == BString("abd"));
    EXPECT_FALSE(Octets("abc") == BString("abcd"));
    EXPECT_TRUE(Octets("abc") != Octets("abd"));
    EXPECT_FALSE(Octets(std::string("a\0b", 3)) == Octets(std::string("a\0c", 3)));
}

TEST(OctetStringText, DisplayableBytesTable)
{
    EXPECT_TRUE(BOctetString().IsDispStr());
    EXPECT_TRUE(Octets("Hello\r\n").IsDispStr());
    for (unsigned c = 0; c < 256; ++c) {
        const bool displayable = (c >= 32 && c <= 127) || (c >= 7 && c <= 13) || c == 0;
        EXPECT_EQ(Octets(std::string(1, static_cast<char>(c))).IsDispStr(), displayable) << c;
        EXPECT_EQ(Octets("a" + std::string(1, static_cast<char>(c))).IsDispStr(), displayable) << c;
    }
}

TEST(OctetStringText, NulAnywhereIsDisplayable)
{
    EXPECT_TRUE(Octets(std::string("a\0", 2)).IsDispStr());
    EXPECT_TRUE(Octets(std::string("\0a", 2)).IsDispStr());
    EXPECT_EQ(Text(Octets(std::string("a\0b", 3)).ToDispStr()), std::string("a\0b", 3));
}

TEST(OctetStringText, Byte127IsDisplayable) { EXPECT_TRUE(Octets("\x7f").IsDispStr()); }

TEST(OctetStringText, AShortenedValueStillShowsItsTextWithinItsCapacity)
{
    BOctetString octets;
    EXPECT_EQ(Text(octets.ToDispStr()), "");
    octets.Assign("ab", 2);
    octets.ReallocArray(0, true);
    EXPECT_EQ(Text(octets.ToDispStr()), "ab");
    octets.Reserve(3, 'z');
    EXPECT_EQ(Text(octets.ToDispStr()), "zzz");
    BOctetString fresh;
    fresh.ReallocArray(9, true);
    EXPECT_EQ(Text(fresh.ToDispStr()), "");
}

TEST(OctetStringText, HexadecimalFormTable)
{
    EXPECT_EQ(Text(Octets("\x0a\xff" + std::string(1, '\0')).ToString()), "0a:ff:00");
    EXPECT_EQ(Text(Octets(std::string("\0\x10", 2)).ToString()), "00:10");
    EXPECT_EQ(Text(Octets("\xab").ToString()), "ab");
    EXPECT_EQ(Text(BOctetString().ToString()), "");
    BString out("old");
    Octets("\x01").ToString(out);
    EXPECT_EQ(Text(out), "01");
}

TEST(OctetStringText, LongOnesPrintAndParseBack)
{
    for (const unsigned length : {63u, 64u, 65u, 127u, 128u, 129u, 500u}) {
        std::string bytes;
        std::string expected;
        for (unsigned i = 0; i < length; ++i) {
            char pair[4];
            std::snprintf(pair, sizeof pair, "%02x", (i * 37) % 256);
            bytes += static_cast<char>((i * 37) % 256);
            expected += (i ? ":" : "") + std::string(pair);
        }
        EXPECT_EQ(Text(Octets(bytes).ToString()), expected);
        BOctetString back;
        EXPECT_TRUE(back.AssignFromHexString(expected.c_str()));
        EXPECT_EQ(BytesOf(back), bytes);
    }
}

TEST(OctetStringText, AssignFromHexString)
{
    BOctetString octets = Octets("old");
    EXPECT_TRUE(octets.AssignFromHexString("0a:1B"));
    EXPECT_EQ(BytesOf(octets), "\x0a\x1b");
    EXPECT_TRUE(octets.AssignFromHexString("Ff"));
    EXPECT_EQ(BytesOf(octets), "\xff");
    EXPECT_TRUE(octets.AssignFromHexString(""));
    EXPECT_EQ(octets.Length(), 0u);
    EXPECT_TRUE(octets.AssignFromHexString("00:00"));
    EXPECT_EQ(BytesOf(octets), std::string(2, '\0'));
}

TEST(OctetStringText, RefusedHexTextChangesNothing)
{
    for (const char* text : {"0", "0a1b", "0a:", ":0a", "0a::1b", "0g", "0a:1", "0a-1b", " 0a",
                             "0a ", "0a:1b:", "xx"}) {
        BOctetString octets = Octets("old");
        EXPECT_FALSE(octets.AssignFromHexString(text)) << text;
        EXPECT_EQ(BytesOf(octets), "old") << text;
    }
}

TEST(OctetStringText, HexTextReservesTheTextsLength)
{
    BOctetString octets;
    EXPECT_TRUE(octets.AssignFromHexString("01:02:03"));
    EXPECT_EQ(octets.Length(), 3u);
    EXPECT_EQ(octets.Capacity(), 8u);
}
