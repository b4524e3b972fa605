// Object identifier: dotted decimal text.
#include "tests/support/ValueText.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLKTest;

namespace {

bool Parse(BObjectIdentifier& oid, const std::string& text)
{
    return oid.AssignFromDottedDecimalStr(BString(text.data(), static_cast<unsigned>(text.size())));
}

} // namespace

TEST(ObjectIdentifierText, AcceptedTable)
{
    const struct {
        const char* text;
        Arcs arcs;
    } rows[] = {
        {"1.3.6.1", {1, 3, 6, 1}},
        {".1.3.6", {1, 3, 6}},
        {" \t.1.3.6.1 \t", {1, 3, 6, 1}},
        {"1.3.", {1, 3}},
        {".1.", {1}},
        {"  7", {7}},
        {"0", {0}},
        {"01.003", {1, 3}},
        {"0000000001", {1}},
        {"4294967295", {4294967295u}},
        {"1 ", {1}},
        {"1.2\t ", {1, 2}},
        {"9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9.9", Arcs(17, 9)},
    };
    for (const auto& row : rows) {
        BObjectIdentifier oid = Oid({9, 9});
        EXPECT_TRUE(Parse(oid, row.text)) << '"' << row.text << '"';
        EXPECT_EQ(ArcsOf(oid), row.arcs) << '"' << row.text << '"';
    }
}

TEST(ObjectIdentifierText, RefusedTextLeavesAnEmptyValueWithoutStorage)
{
    const std::string rows[] = {
        "",
        " ",
        "\t \t",
        "1..3",
        "..1",
        "1.3a",
        "1. 3",
        "1 .3",
        "1.3. ",
        ". ",
        " . ",
        "-1",
        "+1",
        "1.-3",
        "1.3\n",
        "\n1",
        "a",
        "1,3",
        "12345678901",
        "1.00000000001",
        "1.3..",
        "0x1",
        "1 3",
        ". 1",
        std::string("1\0", 2),
        std::string("\0", 1),
    };
    for (const std::string& text : rows) {
        BObjectIdentifier oid = Oid({9, 9});
        EXPECT_FALSE(Parse(oid, text)) << '"' << text << '"';
        EXPECT_EQ(oid.Length(), 0u) << '"' << text << '"';
        EXPECT_EQ(oid.Arcs(), nullptr) << '"' << text << '"';
        EXPECT_EQ(oid.Capacity(), 0u) << '"' << text << '"';
    }
}

TEST(ObjectIdentifierText, OneLeadingDotIsNoComponent)
{
    BObjectIdentifier oid;
    EXPECT_TRUE(Parse(oid, ".1.3.6"));
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 3, 6}));
    EXPECT_FALSE(Parse(oid, "..1.3.6"));
}

TEST(ObjectIdentifierText, ALoneDotIsTheEmptyOne)
{
    for (const char* text : {".", " .", "\t."}) {
        BObjectIdentifier oid = Oid({9, 9});
        EXPECT_TRUE(Parse(oid, text));
        EXPECT_EQ(oid.Length(), 0u);
        EXPECT_EQ(oid.Arcs(), nullptr);
    }
}

TEST(ObjectIdentifierText, TrailingDotEndsTheTextWell)
{
    BObjectIdentifier oid;
    EXPECT_TRUE(Parse(oid, "1.3."));
    EXPECT_EQ(ArcsOf(oid), (Arcs{1, 3}));
}

TEST(ObjectIdentifierText, TenDigitsWrapModulo32Bits)
{
    BObjectIdentifier oid;
    EXPECT_TRUE(Parse(oid, "4294967296.4294967297.9999999999"));
    EXPECT_EQ(ArcsOf(oid), (Arcs{0, 1, 1410065407u}));
    EXPECT_FALSE(Parse(oid, "12345678901"));
}

TEST(ObjectIdentifierText, ParsingNeverKeepsTheOldStorage)
{
    BObjectIdentifier oid;
    for (unsigned i = 0; i < 40; ++i)
        oid.Append(i);
    EXPECT_TRUE(Parse(oid, "1.3"));
    EXPECT_EQ(oid.Capacity(), 16u);
}

TEST(ObjectIdentifierText, PrintsUnsignedArcsWithoutALeadingDot)
{
    EXPECT_EQ(Text(Oid({1, 3, 6, 1, 4294967295u})), "1.3.6.1.4294967295");
    EXPECT_EQ(Text(BObjectIdentifier()), "");
    EXPECT_EQ(Text(BObjectIdentifier(0u)), "0");
    BString out("old");
    Oid({2, 5}).ToString(out);
    EXPECT_EQ(Text(out), "2.5");
    BObjectIdentifier().ToString(out);
    EXPECT_EQ(Text(out), "");
}

TEST(ObjectIdentifierText, LongOnesPrintAndParseBack)
{
    for (const unsigned length : {20u, 23u, 24u, 25u, 128u, 1000u}) {
        BObjectIdentifier oid;
        std::string expected;
        for (unsigned i = 0; i < length; ++i) {
            const unsigned arc = i % 3 ? 4294967295u - i : i;
            oid.Append(arc);
            expected += (i ? "." : "") + std::to_string(arc);
        }
        EXPECT_EQ(Text(oid), expected);
        BObjectIdentifier back;
        EXPECT_TRUE(Parse(back, expected));
        EXPECT_EQ(back, oid);
    }
}
