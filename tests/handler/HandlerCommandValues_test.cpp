// How the console command set reads the values of each type, what the module
// is given, and how they are printed.
#include "tests/support/CallbackHandler.h"
#include "tests/support/CommandConsole.h"
#include "tests/support/ValueText.h"

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

using Texts = CommandConsole::Texts;

class HandlerCommandValues : public testing::Test {
protected:
    HandlerCommandValues() : handler(nullptr), module("1.3.9"), console(handler)
    {
        module.onSet = [this](unsigned, const BVarBindList& list, ESnmpSetOpCode op, int&) {
            if (op == eSetCommit)
                given = list;
            return int(eSnmpNoError);
        };
        handler.RegisterSubtreeHandler(&module);
    }
    ~HandlerCommandValues() override { handler.UnregisterSubtreeHandler(&module); }

    // Sets one value and gives what is printed of it.
    std::string Set(const std::string& tag, const std::string& text)
    {
        given.Clear();
        const Texts texts = console.Run("set", {"1.3.9.1", tag, text});
        const std::string start = "1.3.9.1 = ";
        if (texts.size() != 1 || texts[0].compare(0, start.size(), start) != 0 ||
            texts[0].back() != '\n' || given.Count() != 1)
            return "(not set)";
        return texts[0].substr(start.size(), texts[0].size() - start.size() - 1);
    }
    const BObjectSyntax& Given() const { return given[0].Value(); }

    BMibHandler handler;
    CallbackHandler module;
    CommandConsole console;
    BVarBindList given;
};

struct SNumber {
    const char* text;
    int number;
};

// Read as VKStrToInt32 does.
const SNumber kNumbers[] = {{"0", 0},
                            {"1", 1},
                            {"00012", 12},
                            {"+7", 7},
                            {"2147483647", 2147483647},
                            {"2147483648", -2147483647 - 1},
                            {"4294967291", -5},
                            {"4294967295", -1},
                            {"4294967296", 0},
                            {"99999999999", 1215752191},
                            {"18446744073709551615", -1},
                            {"18446744073709551616", 0},
                            {"7x", 7},
                            {"1.5", 1},
                            {"1e3", 1},
                            {"0x10", 0},
                            {"x", 0},
                            {"+", 0},
                            {"-", 0},
                            {"++1", 0},
                            {" 1", 0},
                            {"", 0}};

TEST_F(HandlerCommandValues, NumbersWrapAndStopAtTheFirstOtherCharacter)
{
    for (const SNumber& row : kNumbers) {
        EXPECT_EQ(std::to_string(row.number), Set("2", row.text)) << row.text;
        EXPECT_EQ(eAsnInteger, Given().Syntax());
        EXPECT_EQ(row.number, Given().Int()) << row.text;
    }
}

TEST_F(HandlerCommandValues, UnsignedNumbersAreReadLikeSignedOnes)
{
    const std::pair<const char*, EAsnSyntax> tags[] = {
        {"65", eAsnCounter32}, {"66", eAsnGauge32}, {"67", eAsnTimeTicks}};
    for (const auto& tag : tags) {
        for (const SNumber& row : kNumbers) {
            const unsigned number = static_cast<unsigned>(row.number);
            EXPECT_EQ(std::to_string(number), Set(tag.first, row.text)) << row.text;
            EXPECT_EQ(tag.second, Given().Syntax());
            EXPECT_EQ(number, Given().Unsigned()) << row.text;
        }
    }
}

TEST_F(HandlerCommandValues, ACounter64HasThirtyTwoBits)
{
    for (const SNumber& row : kNumbers) {
        const unsigned number = static_cast<unsigned>(row.number);
        EXPECT_EQ(std::to_string(number), Set("70", row.text)) << row.text;
        EXPECT_EQ(eAsnCounter64, Given().Syntax());
        EXPECT_EQ(0u, Given().Ctr64().high) << row.text;
        EXPECT_EQ(number, Given().Ctr64().low) << row.text;
    }
}

struct SOctets {
    std::string text;
    std::string octets;
    std::string shown;
};

TEST_F(HandlerCommandValues, PairsOfHexadecimalDigitsAreOctetsAndAllElseIsText)
{
    const std::string longText(1000, 'x');
    std::string longPairs = "7a";
    for (int i = 1; i < 1000; ++i)
        longPairs += ":7A";
    const SOctets rows[] = {
        {"41:42", "AB", "AB"},
        {"0a:FF", "\x0a\xff", "0a:ff"},
        {"41", "A", "A"},
        {"10", "\x10", "10"},
        {"ff", "\xff", "ff"},
        {"00:41", std::string("\0A", 2), std::string("\0A", 2)},
        {"2d:35", "-5", "-5"},
        {"31:30", "10", "10"},
        {"68:65:6c:6c:6f", "hello", "hello"},
        {longPairs, std::string(1000, 'z'), std::string(1000, 'z')},
        {"", "", ""},
        // Texts.
        {"deadbeef", "deadbeef", "deadbeef"},
        {"4142", "4142", "4142"},
        {"a", "a", "a"},
        {"1", "1", "1"},
        {"41:4", "41:4", "41:4"},
        {"41:42:", "41:42:", "41:42:"},
        {":41", ":41", ":41"},
        {"41::42", "41::42", "41::42"},
        {"41-42", "41-42", "41-42"},
        {"41 42", "41 42", "41 42"},
        {"4g", "4g", "4g"},
        {"0x41", "0x41", "0x41"},
        {"two words", "two words", "two words"},
        {"\x80", "\x80", "80"},
        {std::string("41\0", 3), std::string("41\0", 3), std::string("41\0", 3)},
        {longText, longText, longText}};
    for (const SOctets& row : rows) {
        EXPECT_EQ(row.shown, Set("4", row.text)) << row.text;
        EXPECT_EQ(eAsnOctetString, Given().Syntax());
        EXPECT_EQ(row.octets, VLKTest::BytesOf(Given().Octets())) << row.text;
    }
}

TEST_F(HandlerCommandValues, AnOpaqueIsItsTextAsItIs)
{
    const SOctets rows[] = {
        {"41:42", "41:42", "41:42"},
        {"41", "41", "41"},
        {"text", "text", "text"},
        {"", "", ""},
        {"\xff", "\xff", "ff"},
        {std::string("a\0b", 3), std::string("a\0b", 3), std::string("a\0b", 3)},
        {std::string(1000, 'x'), std::string(1000, 'x'), std::string(1000, 'x')}};
    for (const SOctets& row : rows) {
        EXPECT_EQ(row.shown, Set("68", row.text)) << row.text;
        EXPECT_EQ(eAsnOpaque, Given().Syntax());
        EXPECT_EQ(row.octets, VLKTest::BytesOf(Given().Octets())) << row.text;
    }
}

struct SText {
    const char* text;
    const char* shown;
};

TEST_F(HandlerCommandValues, AnAddressIsFourPartsAndAnEmptyPartIsZero)
{
    const SText rows[] = {
        {"10.1.2.3", "10.1.2.3"}, {"0.0.0.0", "0.0.0.0"}, {"255.255.255.255", "255.255.255.255"},
        {"1..2.3", "1.0.2.3"},    {"...", "0.0.0.0"},     {"010.001.000.007", "10.1.0.7"}};
    for (const SText& row : rows) {
        EXPECT_EQ(row.shown, Set("64", row.text)) << row.text;
        EXPECT_EQ(eAsnIpAddress, Given().Syntax());
        EXPECT_STREQ(row.shown, Given().IpAddress().ToString().c_str());
    }
    for (const char* bad : {"", "x", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.4 ", "+1.2.3.4",
                            "1.2.3.-4", "0000000001.2.3.4"}) {
        EXPECT_EQ(Texts{std::string("set: invalid ip address '") + bad + "'"},
                  console.Run("set", {"1.3.9.1", "64", bad}));
    }
}

TEST_F(HandlerCommandValues, AnIdentifierIsPrintedWithSignedArcs)
{
    const SText rows[] = {{"1.3.6.1", "1.3.6.1"},
                          {".1.3", "1.3"},
                          {"1.3.", "1.3"},
                          {" 1.3\t", "1.3"},
                          {"0", "0"},
                          {"1.2147483647", "1.2147483647"},
                          {"1.2147483648", "1.-2147483648"},
                          {"1.4294967295", "1.-1"},
                          {"1.4294967296", "1.0"},
                          {"1.9999999999", "1.1410065407"},
                          {".", ""}};
    for (const SText& row : rows) {
        EXPECT_EQ(row.shown, Set("6", row.text)) << row.text;
        EXPECT_EQ(eAsnObjectId, Given().Syntax());
        EXPECT_EQ(MakeOid(row.text), Given().ObjectId());
    }
    for (const char* bad : {"", " ", "x", "1..3", "..1", "1.12345678901", "1.x", "1. 3", "1,3"}) {
        EXPECT_EQ(Texts{std::string("set: invalid oid '") + bad + "'"},
                  console.Run("set", {"1.3.9.1", "6", bad}));
    }
}

TEST_F(HandlerCommandValues, ATagIsANumberAndWrapsLikeOne)
{
    EXPECT_EQ("AB", Set("4", "41:42"));
    EXPECT_EQ("AB", Set("4294967300", "41:42"));
    EXPECT_EQ("AB", Set("+4", "41:42"));
    EXPECT_EQ("AB", Set("4x", "41:42"));
    EXPECT_EQ("AB", Set("04", "41:42"));
    EXPECT_EQ("1.3.9.1", Set("6.5", "1.3.9.1"));
}

TEST_F(HandlerCommandValues, BindingsKeepTheirOrderAndTypes)
{
    console.Type("set 1.3.9.3 2 1 1.3.9.1 4 a -q 1.3.9.2 6 1.3 1.3.9.4 64 1.2.3.4 1.3.9.5 65 5 "
                 "1.3.9.6 66 6 1.3.9.7 67 7 1.3.9.8 68 o 1.3.9.9 70 9");
    const std::pair<const char*, int> expected[] = {
        {"1.3.9.3", 2},  {"1.3.9.1", 4},  {"1.3.9.2", 6},  {"1.3.9.4", 64}, {"1.3.9.5", 65},
        {"1.3.9.6", 66}, {"1.3.9.7", 67}, {"1.3.9.8", 68}, {"1.3.9.9", 70}};
    ASSERT_EQ(9u, given.Count());
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(MakeOid(expected[i].first), given[i].Name());
        EXPECT_EQ(expected[i].second, given[i].Value().Syntax());
    }
}

TEST_F(HandlerCommandValues, AValueOfAnUnknownTypeIsPrintedAsNothing)
{
    module.onGet = [](unsigned, BVarBindList& list, int& index, int) {
        list[index].Value() = BObjectSyntax(static_cast<EAsnSyntax>(0x47));
        return int(eSnmpNoError);
    };
    EXPECT_EQ((Texts{"1.3.9.1 = \n"}), console.Type("get 1.3.9.1"));
}

TEST_F(HandlerCommandValues, GetAsksWithNull)
{
    int asked = 0;
    module.onGet = [&](unsigned, BVarBindList& list, int& index, int count) {
        for (int i = index; i < index + count; ++i)
            asked += list[i].Value().Syntax() == eAsnNull;
        return int(eSnmpNoError);
    };
    EXPECT_EQ((Texts{"1.3.9.1 = Null\n", "1.3.9.2 = Null\n"}), console.Type("get 1.3.9.1 1.3.9.2"));
    EXPECT_EQ(2, asked);
    module.onGetNext = [&](unsigned, BVarBind& binding) {
        asked += binding.Value().Syntax() == eAsnNull;
        return int(eSnmpNoSuchName);
    };
    console.Type("getnext 1.3.9.1");
    EXPECT_EQ(3, asked);
}

} // namespace
} // namespace Test
} // namespace VLK
