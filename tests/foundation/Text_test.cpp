#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vkmibh/base.h>

namespace VLK {
namespace {

TEST(CharType, KnowsAsciiLettersOnly)
{
    for (int i = CHAR_MIN; i <= CHAR_MAX; ++i) {
        const char c = char(i);
        const bool lower = i >= 'a' && i <= 'z';
        const bool upper = i >= 'A' && i <= 'Z';
        EXPECT_EQ(BCharType::IsLower(c), lower) << i;
        EXPECT_EQ(BCharType::IsUpper(c), upper) << i;
        EXPECT_EQ(BCharType::ToLower(c), upper ? char(i + 32) : c) << i;
    }
}

TEST(Text, StrlenAndStrcmp)
{
    EXPECT_EQ(VKStrlen("abc"), 3u);
    EXPECT_EQ(VKStrlen(""), 0u);
    EXPECT_EQ(VKStrlen(nullptr), 0u);
    EXPECT_EQ(VKStrcmp("abc", "abc"), 0);
    EXPECT_LT(VKStrcmp("abc", "abd"), 0);
    EXPECT_GT(VKStrcmp("abc", "ab"), 0);
    EXPECT_LT(VKStrcmp("z", "\xe9"), 0);
    EXPECT_EQ(VKStrcmp(nullptr, ""), 0);
    EXPECT_LT(VKStrcmp(nullptr, "a"), 0);
    EXPECT_GT(VKStrcmp("a", nullptr), 0);
    EXPECT_EQ(VKStrcmp(nullptr, nullptr), 0);
}

TEST(Text, IntToStrIsDecimal)
{
    EXPECT_STREQ(VKIntToStr(0, 0), "0");
    EXPECT_STREQ(VKIntToStr(42, 0), "42");
    EXPECT_STREQ(VKIntToStr(-7, 0), "-7");
    EXPECT_STREQ(VKIntToStr(INT_MAX, 0), "2147483647");
    EXPECT_STREQ(VKIntToStr(INT_MIN, 0), "-2147483648");
}

TEST(Text, IntToStrOfAnotherThreadDoesNotOverwrite)
{
    const char* const mine = VKIntToStr(1234, 0);
    const char* other = nullptr;
    std::thread([&] { other = VKIntToStr(5678, 0); }).join();
    EXPECT_NE(mine, other);
    EXPECT_STREQ(mine, "1234");
}

TEST(Text, StrToInt32TakesASignAndDigits)
{
    EXPECT_EQ(VKStrToInt32("0"), 0);
    EXPECT_EQ(VKStrToInt32("123"), 123);
    EXPECT_EQ(VKStrToInt32("+123"), 123);
    EXPECT_EQ(VKStrToInt32("-123"), -123);
    EXPECT_EQ(VKStrToInt32("2147483647"), INT_MAX);
    EXPECT_EQ(VKStrToInt32("-2147483648"), INT_MIN);
}

TEST(Text, StrToInt32StopsAtTheFirstOtherCharacter)
{
    EXPECT_EQ(VKStrToInt32("12ab"), 12);
    EXPECT_EQ(VKStrToInt32("12 34"), 12);
    EXPECT_EQ(VKStrToInt32("0x10"), 0);
}

TEST(Text, StrToInt32WithoutDigitsIsZero)
{
    for (const char* text : {"", "-", "+", "abc", "--5", "+-5", " 5"})
        EXPECT_EQ(VKStrToInt32(text), 0) << text;
    EXPECT_EQ(VKStrToInt32(nullptr), 0);
}

TEST(Text, StrToInt32IsModulo32Bits)
{
    EXPECT_EQ(VKStrToInt32("4294967295"), -1);
    EXPECT_EQ(VKStrToInt32("4294967296"), 0);
    EXPECT_EQ(VKStrToInt32("4294967301"), 5);
    EXPECT_EQ(VKStrToInt32("-4294967301"), -5);
    EXPECT_EQ(VKStrToInt32("2147483648"), INT_MIN);
}

TEST(Text, HexDigit2IntOfEveryCharacter)
{
    const std::string digits = "0123456789abcdef";
    const std::string capitals = "0123456789ABCDEF";
    for (int c = -300; c <= 300; ++c) {
        unsigned expected = ~0u;
        for (unsigned i = 0; i < 16; ++i) {
            if (c == digits[i] || c == capitals[i])
                expected = i;
        }
        EXPECT_EQ(VKHexDigit2Int(c), expected) << c;
    }
}

TEST(Text, HexStringIsPairsJoinedBySeparators)
{
    EXPECT_TRUE(VKIsHexString("0a", 2, ':'));
    EXPECT_TRUE(VKIsHexString("0a:1B", 5, ':'));
    EXPECT_TRUE(VKIsHexString("0a:1B:ff", 8, ':'));
    EXPECT_TRUE(VKIsHexString("0a:1Bxyz", 5, ':'));
    EXPECT_TRUE(VKIsHexString("0a-1B", 5, '-'));
}

TEST(Text, EmptyTextIsAHexString)
{
    EXPECT_TRUE(VKIsHexString("", 0, ':'));
    EXPECT_TRUE(VKIsHexString(nullptr, 0, ':'));
}

TEST(Text, OtherTextsAreNoHexStrings)
{
    const std::string texts[] = {"0",      "0a:",   "0a:1", ":0a",      "0a::1b",
                                 "0a1b",   "0a-1b", "0g",   "g0",       "0a:1g",
                                 "0a:b:0", "0a ",   "a:bc", "\xff\xff", "0a:1b:"};
    for (const std::string& text : texts)
        EXPECT_FALSE(VKIsHexString(text.c_str(), int(text.size()), ':')) << text;
    EXPECT_FALSE(VKIsHexString(nullptr, 2, ':'));
    EXPECT_FALSE(VKIsHexString("0a", -1, ':'));
}

} // namespace
} // namespace VLK
