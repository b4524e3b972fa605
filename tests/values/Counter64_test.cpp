// 64-bit counter: arithmetic, byte access and text.
#include "tests/support/ValueText.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <random>

using namespace VLK;
using namespace VLKTest;

namespace {

BCounter64 Make(std::uint64_t value)
{
    return BCounter64(static_cast<unsigned>(value >> 32), static_cast<unsigned>(value));
}

std::uint64_t Number(const BCounter64& counter)
{
    return std::uint64_t(counter.High()) << 32 | counter.Low();
}

// The values at which words carry and borrow, and some at random.
std::vector<std::uint64_t> Samples()
{
    std::vector<std::uint64_t> samples{0,
                                       1,
                                       9,
                                       10,
                                       11,
                                       99,
                                       0xffffffff,
                                       0x100000000,
                                       0x100000001,
                                       0x7fffffffffffffff,
                                       0x8000000000000000,
                                       UINT64_MAX - 1,
                                       UINT64_MAX};
    std::mt19937_64 random(64);
    for (int i = 0; i < 40; ++i)
        samples.push_back(random() >> (random() % 64));
    return samples;
}

bool FromDecimal(BCounter64& counter, const char* text)
{
    return counter.AssignFromDecString(text);
}

} // namespace

TEST(Counter64, SettingPutsTheHighWordFirst)
{
    BCounter64 counter;
    EXPECT_EQ(Number(counter), 0u);
    counter.Set(7u);
    EXPECT_EQ(Number(counter), 7u);
    counter.Set(2u, 3u);
    EXPECT_EQ(counter.High(), 2u);
    EXPECT_EQ(counter.Low(), 3u);
    EXPECT_EQ(counter.Value().high, 2u);
    EXPECT_EQ(counter.Value().low, 3u);
    counter = 5u;
    EXPECT_EQ(Number(counter), 5u);
    BCounter64 other(1u, 1u);
    counter = other;
    EXPECT_EQ(counter, other);
    BCounter64& self = counter;
    counter = self;
    EXPECT_EQ(counter, other);
    EXPECT_EQ(Number(BCounter64(SCTR64{8, 9})), 0x800000009u);
    EXPECT_NE(BCounter64(1u, 0u), BCounter64(0u, 0u));
    EXPECT_NE(BCounter64(0u, 1u), BCounter64(0u, 0u));
}

TEST(Counter64, BytesCountFromTheLeastSignificant)
{
    const BCounter64 counter(0x07060504u, 0x03020100u);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(counter[i], i);
    BCounter64 built;
    for (int i = 0; i < 8; ++i)
        built[i] = static_cast<unsigned char>(i);
    EXPECT_EQ(built, counter);
}

TEST(Counter64, ShiftsByEveryCount)
{
    for (const std::uint64_t value : Samples()) {
        for (int n = 0; n < 64; ++n) {
            ASSERT_EQ(Number(Make(value) << n), value << n);
            ASSERT_EQ(Number(Make(value) >> n), value >> n);
        }
        for (const int n : {64, 65, 1000}) {
            ASSERT_EQ(Number(Make(value) << n), 0u);
            ASSERT_EQ(Number(Make(value) >> n), 0u);
        }
        ASSERT_EQ(Number(Make(value) << -1), value);
        ASSERT_EQ(Number(Make(value) >> -1), value);
    }
    BCounter64 counter(0u, 5u);
    counter <<= 32;
    EXPECT_EQ(counter, BCounter64(5u, 0u));
    counter >>= 64;
    EXPECT_EQ(Number(counter), 0u);
}

TEST(Counter64, BitwiseOperations)
{
    for (const std::uint64_t a : Samples()) {
        ASSERT_EQ(Number(~Make(a)), ~a);
        for (const std::uint64_t b : Samples()) {
            ASSERT_EQ(Number(Make(a) & Make(b)), a & b);
            ASSERT_EQ(Number(Make(a) | Make(b)), a | b);
            ASSERT_EQ(Number(Make(a) ^ Make(b)), a ^ b);
            BCounter64 changed = Make(a);
            changed &= Make(b);
            ASSERT_EQ(Number(changed), a & b);
            changed |= Make(a);
            ASSERT_EQ(Number(changed), a);
            changed ^= Make(b);
            ASSERT_EQ(Number(changed), a ^ b);
        }
    }
}

TEST(Counter64, PlusAndMinusChangeTheObjectAndReturnItsNewValue)
{
    for (const std::uint64_t a : Samples()) {
        for (const std::uint64_t b : Samples()) {
            BCounter64 sum = Make(a);
            ASSERT_EQ(Number(sum + Make(b)), a + b);
            ASSERT_EQ(Number(sum), a + b);
            BCounter64 difference = Make(a);
            ASSERT_EQ(Number(difference - Make(b)), a - b);
            ASSERT_EQ(Number(difference), a - b);
        }
        BCounter64 twice = Make(a);
        twice + twice;
        ASSERT_EQ(Number(twice), a + a);
    }
}

TEST(Counter64, IncrementAndDecrementReturnTheNewValue)
{
    for (const std::uint64_t value : Samples()) {
        BCounter64 counter = Make(value);
        ASSERT_EQ(Number(++counter), value + 1);
        ASSERT_EQ(Number(counter), value + 1);
        ASSERT_EQ(Number(--counter), value);
        ASSERT_EQ(Number(--counter), value - 1);
    }
}

TEST(Counter64, PlusAssignAndMinusAssignReturnTheOldValue)
{
    BCounter64 five(5u);
    EXPECT_EQ(Number(five += 1), 5u);
    EXPECT_EQ(Number(five), 6u);
    EXPECT_EQ(Number(five -= 2), 6u);
    EXPECT_EQ(Number(five), 4u);
    for (const std::uint64_t value : Samples()) {
        for (const unsigned step : {0u, 1u, 10u, 4294967295u}) {
            BCounter64 counter = Make(value);
            ASSERT_EQ(Number(counter += step), value);
            ASSERT_EQ(Number(counter), value + step);
            ASSERT_EQ(Number(counter -= step), value + step);
            ASSERT_EQ(Number(counter), value);
        }
    }
}

TEST(Counter64, CarriesAndBorrowsBetweenTheWords)
{
    BCounter64 counter(0u, 0xffffffffu);
    ++counter;
    EXPECT_EQ(counter, BCounter64(1u, 0u));
    --counter;
    EXPECT_EQ(counter, BCounter64(0u, 0xffffffffu));
    BCounter64 all(0xffffffffu, 0xffffffffu);
    ++all;
    EXPECT_EQ(Number(all), 0u);
    --all;
    EXPECT_EQ(Number(all), UINT64_MAX);
}

TEST(Counter64, TimesAndDividedByTen)
{
    for (const std::uint64_t value : Samples()) {
        BCounter64 counter = Make(value);
        ASSERT_EQ(&counter.Mul10(), &counter);
        ASSERT_EQ(Number(counter), value * 10);
        BCounter64 quotient;
        unsigned remainder = 99;
        Make(value).Div10(quotient, remainder);
        ASSERT_EQ(Number(quotient), value / 10);
        ASSERT_EQ(remainder, value % 10);
        BCounter64 self = Make(value);
        self.Div10(self, remainder);
        ASSERT_EQ(Number(self), value / 10);
    }
}

TEST(Counter64, DivisionEqualsRestoringLongDivision)
{
    for (const std::uint64_t value : Samples()) {
        std::uint64_t quotient = 0;
        unsigned rest = 0;
        for (int bit = 63; bit >= 0; --bit) {
            rest = rest << 1 | static_cast<unsigned>(value >> bit & 1);
            quotient <<= 1;
            if (rest >= 10) {
                rest -= 10;
                quotient |= 1;
            }
        }
        BCounter64 result;
        unsigned remainder;
        Make(value).Div10(result, remainder);
        ASSERT_EQ(Number(result), quotient);
        ASSERT_EQ(remainder, rest);
    }
}

TEST(Counter64Text, PrintsPlainDecimal)
{
    EXPECT_EQ(Text(BCounter64(1u, 0u).ToString()), "4294967296");
    EXPECT_EQ(Text(BCounter64(~0u, ~0u).ToString()), "18446744073709551615");
    EXPECT_EQ(Text(BCounter64().ToString()), "0");
    for (const std::uint64_t value : Samples()) {
        EXPECT_EQ(Text(Make(value).ToString()), std::to_string(value));
        BCounter64 back;
        EXPECT_TRUE(FromDecimal(back, std::to_string(value).c_str()));
        EXPECT_EQ(Number(back), value);
    }
}

TEST(Counter64Text, DecimalTextWrapsModulo64Bits)
{
    BCounter64 counter(7u);
    EXPECT_TRUE(FromDecimal(counter, "18446744073709551616"));
    EXPECT_EQ(Number(counter), 0u);
    EXPECT_TRUE(FromDecimal(counter, "18446744073709551617"));
    EXPECT_EQ(Number(counter), 1u);
    counter.Set(7u);
    EXPECT_TRUE(FromDecimal(counter, ""));
    EXPECT_EQ(Number(counter), 0u);
    EXPECT_TRUE(FromDecimal(counter, "0012"));
    EXPECT_EQ(Number(counter), 12u);
}

TEST(Counter64Text, NonDigitsCountAsTheirCodeMinus48InTheirPlace)
{
    BCounter64 counter;
    EXPECT_TRUE(FromDecimal(counter, "a"));
    EXPECT_EQ(Number(counter), 97u - 48u);
    EXPECT_TRUE(FromDecimal(counter, "1a2"));
    EXPECT_EQ(Number(counter), 100u + 49u * 10u + 2u);
    // Below '0' the term wraps to 32 bits before it is scaled.
    EXPECT_TRUE(FromDecimal(counter, "-5"));
    EXPECT_EQ(Number(counter), std::uint64_t(static_cast<unsigned>('-' - '0')) * 10 + 5);
    EXPECT_TRUE(FromDecimal(counter, "\xff"));
    EXPECT_EQ(Number(counter), 255u - 48u);
}

TEST(Counter64Text, DecimalTextEqualsTheSumOfScaledTerms)
{
    std::mt19937 random(10);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (unsigned n = random() % 30; n > 0; --n)
            text += static_cast<char>(random() % 4 ? '0' + random() % 10 : 1 + random() % 255);
        BCounter64 expected;
        for (std::size_t i = 0; i < text.size(); ++i) {
            BCounter64 term(static_cast<unsigned>(static_cast<unsigned char>(text[i])) - 48u);
            for (std::size_t scale = text.size() - 1 - i; scale > 0; --scale)
                term.Mul10();
            expected + term;
        }
        BCounter64 counter(3u);
        ASSERT_TRUE(FromDecimal(counter, text.c_str()));
        ASSERT_EQ(counter, expected);
    }
}

TEST(Counter64Text, EachHexPairHasItsKeptPlace)
{
    const struct {
        unsigned high, low;
    } places[] = {{0, 0xa5}, {0, 0xa5000000}, {0xa50000, 0}, {0, 0}, {0xa5, 0},    {0xa5000000, 0},
                  {0, 0},    {0xa500, 0},     {0, 0},        {0, 0}, {0xa50000, 0}};
    std::string before;
    for (const auto& place : places) {
        BCounter64 counter(7u, 7u);
        ASSERT_TRUE(counter.AssignFromHexString((before + "A5").c_str())) << before;
        EXPECT_EQ(counter, BCounter64(place.high, place.low)) << before << "A5";
        before += "00:";
    }
}

TEST(Counter64Text, HexPairsAreOredTogether)
{
    BCounter64 counter;
    EXPECT_TRUE(counter.AssignFromHexString("12:34:56:78:9a:bc:de:f0"));
    EXPECT_EQ(counter.Low(), 0x34000012u);
    EXPECT_EQ(counter.High(), 0xbc000000u | 0x560000u | 0xf000u | 0x9au);
}

TEST(Counter64Text, RefusedHexTextGivesZero)
{
    for (const char* text : {"1", "12:", ":12", "1234", "12:3", "zz", "12-34"}) {
        BCounter64 counter(7u, 7u);
        EXPECT_FALSE(counter.AssignFromHexString(text)) << text;
        EXPECT_EQ(Number(counter), 0u) << text;
    }
    BCounter64 counter(7u, 7u);
    EXPECT_TRUE(counter.AssignFromHexString(""));
    EXPECT_EQ(Number(counter), 0u);
}
