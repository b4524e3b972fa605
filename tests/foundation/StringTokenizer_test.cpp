#include "tests/support/FailingAlloc.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <vkmibh/base.h>

namespace VLK {
namespace {

using Tokens = std::vector<std::string>;

Tokens Split(const char* text, const char* delimiters, bool returnDelimiters)
{
    BStringTokenizer tokenizer(text, delimiters, returnDelimiters);
    Tokens tokens;
    while (tokenizer.HasMoreTokens()) {
        const BString token = tokenizer.NextToken();
        tokens.emplace_back(token.c_str(), token.length());
    }
    return tokens;
}

TEST(StringTokenizer, SkipsDelimiters)
{
    EXPECT_EQ(Split("a b c", " ", false), (Tokens{"a", "b", "c"}));
    EXPECT_EQ(Split("  a,, b ,c,", " ,", false), (Tokens{"a", "b", "c"}));
    EXPECT_EQ(Split("abc", " ", false), (Tokens{"abc"}));
}

TEST(StringTokenizer, OnlyDelimitersAreNoTokens)
{
    EXPECT_EQ(Split("", " ", false), Tokens{});
    EXPECT_EQ(Split("    ", " ", false), Tokens{});
    BStringTokenizer tokenizer("a  ", " ", false);
    tokenizer.NextToken();
    EXPECT_FALSE(tokenizer.HasMoreTokens());
}

TEST(StringTokenizer, ReturnsEachDelimiterWhenAsked)
{
    EXPECT_EQ(Split("a=b==", "=", true), (Tokens{"a", "=", "b", "=", "="}));
    EXPECT_EQ(Split(".1.3", ".", true), (Tokens{".", "1", ".", "3"}));
    EXPECT_EQ(Split("", ".", true), Tokens{});
}

TEST(StringTokenizer, NothingLeftGivesAnEmptyString)
{
    BStringTokenizer tokenizer("a", " ", false);
    EXPECT_EQ(tokenizer.NextToken(), BString("a"));
    EXPECT_TRUE(tokenizer.NextToken().empty());
    EXPECT_TRUE(tokenizer.NextToken().empty());
    EXPECT_FALSE(tokenizer.HasMoreTokens());
    BStringTokenizer withDelimiters("a", " ", true);
    withDelimiters.NextToken();
    EXPECT_TRUE(withDelimiters.NextToken().empty());
}

TEST(StringTokenizer, OffsetIsWhereTheLastTokenEnded)
{
    BStringTokenizer tokenizer("  ab  cd ", " ", false);
    EXPECT_EQ(tokenizer.Offset(), 0u);
    tokenizer.HasMoreTokens();
    EXPECT_EQ(tokenizer.Offset(), 0u);
    tokenizer.NextToken();
    EXPECT_EQ(tokenizer.Offset(), 4u);
    tokenizer.NextToken();
    EXPECT_EQ(tokenizer.Offset(), 8u);
    tokenizer.NextToken();
    EXPECT_EQ(tokenizer.Offset(), 9u);
}

TEST(StringTokenizer, WithoutDelimitersTheTextIsOneToken)
{
    EXPECT_EQ(Split("a b", "", false), (Tokens{"a b"}));
    EXPECT_EQ(Split("a b", nullptr, false), (Tokens{"a b"}));
    EXPECT_EQ(Split(nullptr, " ", false), Tokens{});
}

TEST(StringTokenizer, KeepsItsOwnCopyOfTheText)
{
    std::string text = "a b";
    BStringTokenizer tokenizer(text.c_str(), " ", false);
    text = "xxx";
    EXPECT_EQ(tokenizer.NextToken(), BString("a"));
}

TEST(StringTokenizer, WithoutMemoryThereAreNoTokens)
{
    for (int n = 0; n < 2; ++n) {
        FailingAlloc fail(n);
        BStringTokenizer tokenizer("a b", " ", false);
        EXPECT_TRUE(fail.Failed());
        EXPECT_FALSE(tokenizer.HasMoreTokens());
        EXPECT_TRUE(tokenizer.NextToken().empty());
    }
}

} // namespace
} // namespace VLK
