// Whether an identifier lies in a view (RFC 3415 section 4).
#include "tests/support/ViewRows.h"

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

class FilterTableMatch : public ::testing::Test {
protected:
    // "in" or "out", and how many families decided.
    std::string Ask(const char* oid, const char* view = "v")
    {
        unsigned matches = 77;
        const bool isIn = table.Filter(view, MakeOid(oid), &matches);
        return (isIn ? "in " : "out ") + std::to_string(matches);
    }
    void Add(const Family& family, bool implied = false)
    {
        ASSERT_TRUE(Insert(table, family, implied));
    }
    void AddRaw(const char* index, const Family& family)
    {
        ASSERT_TRUE(table.Insert(MakeOid(index), NewRow(family)));
    }

    BFilterTable table{nullptr};
};

TEST_F(FilterTableMatch, NothingLiesInAViewThatDoesNotExist)
{
    EXPECT_EQ("out 0", Ask("1.3"));
    Add({"v", "1.3"});
    EXPECT_EQ("out 0", Ask("1.3.6", "w"));
    EXPECT_EQ("out 0", Ask("1.3.6", ""));
    EXPECT_EQ("out 0", Ask("1.3.6", "vv"));
    EXPECT_EQ("out 0", Ask("1.3.6", "V"));
}

TEST_F(FilterTableMatch, WhatNoFamilyCoversIsNotInView)
{
    Add({"v", "1.3.6.1"});
    for (const char* oid : {"1.3.6", "1.3.6.2", "1.4", "2", ""})
        EXPECT_EQ("out 0", Ask(oid)) << oid;
}

TEST_F(FilterTableMatch, OneFamilyDecidesByItsType)
{
    Add({"v", "1.3.6", eFilterIncluded});
    Add({"v", "1.4", eFilterExcluded});
    EXPECT_EQ("in 1", Ask("1.3.6"));
    EXPECT_EQ("in 1", Ask("1.3.6.1.2.1"));
    EXPECT_EQ("out 1", Ask("1.4.0"));
}

TEST_F(FilterTableMatch, OnlyTypeOneIsIncluded)
{
    for (const int type : {0, 2, 3, -1, 2147483647}) {
        table.Clear();
        Add({"v", "1.3", static_cast<EFilterType>(type)});
        EXPECT_EQ("out 1", Ask("1.3.6")) << type;
    }
}

TEST_F(FilterTableMatch, TheEmptySubtreeCoversEverything)
{
    Add({"v", ""});
    EXPECT_EQ("in 1", Ask("1.3.6"));
    EXPECT_EQ("in 1", Ask("4294967295"));
    EXPECT_EQ("in 1", Ask(""));
}

TEST_F(FilterTableMatch, MostArcsWin)
{
    Add({"v", "1.3.6.1", eFilterIncluded});
    Add({"v", "1.3.6.1.2.1.1", eFilterExcluded});
    EXPECT_EQ("out 1", Ask("1.3.6.1.2.1.1.5.0"));
    EXPECT_EQ("in 1", Ask("1.3.6.1.2.1.2.1.0"));
    Add({"v", "1.3.6.1.2.1.1.5", eFilterIncluded});
    EXPECT_EQ("in 1", Ask("1.3.6.1.2.1.1.5.0"));
    EXPECT_EQ("out 1", Ask("1.3.6.1.2.1.1.6.0"));
}

TEST_F(FilterTableMatch, MostArcsWinHoweverTheIndexesSort)
{
    // With implied subtrees the longer one does not sort last.
    Add({"v", "1.3.0.5", eFilterExcluded}, true);
    Add({"v", "1.3.1", eFilterIncluded, {0xC0}}, true); // the last arc is any
    EXPECT_EQ("out 1", Ask("1.3.0.5"));
    EXPECT_EQ("in 1", Ask("1.3.0.6"));
}

TEST_F(FilterTableMatch, OfEquallyLongFamiliesTheOneThatSortsLastWins)
{
    // One row of a table, but not its third column, and one column of all rows.
    Add({"v", "1.3.1.0.7", eFilterIncluded, {0xEF}});
    Add({"v", "1.3.1.3.0", eFilterExcluded, {0xF7}});
    EXPECT_EQ("in 1", Ask("1.3.1.1.7"));
    EXPECT_EQ("out 2", Ask("1.3.1.3.7"));
    EXPECT_EQ("out 1", Ask("1.3.1.3.8"));
    EXPECT_EQ("out 0", Ask("1.3.1.1.8"));
    EXPECT_EQ("v 1.3.1.0.7", Shown(table.RowAt(0))) << "what sorts last is met first";
    EXPECT_EQ("v 1.3.1.3.0", Shown(table.RowAt(1)));
}

TEST_F(FilterTableMatch, AMaskBitOfZeroIsAnyArc)
{
    Add({"v", "1.3.6.1.2", eFilterIncluded, {0xBF}});
    EXPECT_EQ("in 1", Ask("1.4.6.1.2.7"));
    EXPECT_EQ("in 1", Ask("1.4294967295.6.1.2"));
    EXPECT_EQ("out 0", Ask("1.4.6.1.3.7"));
    EXPECT_EQ("out 0", Ask("1.4.6.1")) << "an arc that is any must be there";
}

TEST_F(FilterTableMatch, BitsBeyondAShortMaskAreOnes)
{
    Add({"v", "1.2.3.4.5.6.7.8.9.10", eFilterIncluded, {0x00}});
    EXPECT_EQ("in 1", Ask("9.9.9.9.9.9.9.9.9.10.11"));
    EXPECT_EQ("out 0", Ask("1.2.3.4.5.6.7.8.8.10"));
    EXPECT_EQ("out 0", Ask("1.2.3.4.5.6.7.8.9.11"));
    table.Clear();
    Add({"v", "1.2.3", eFilterIncluded, {}});
    EXPECT_EQ("in 1", Ask("1.2.3.4"));
    EXPECT_EQ("out 0", Ask("1.2.4.4"));
    table.Clear();
    Add({"v", "1.2.3", eFilterIncluded, {0xFF, 0xFF, 0xFF}}); // longer than needed
    EXPECT_EQ("in 1", Ask("1.2.3.4"));
}

TEST_F(FilterTableMatch, RowsThatAreNotActiveDoNotCount)
{
    Add({"v", "1.3", eFilterIncluded});
    for (const int status : {0, 2, 3, 4, 5, 6}) {
        Add({"v", "1.3.6", eFilterExcluded, {}, static_cast<ERowStatus>(status)});
        EXPECT_EQ("in 1", Ask("1.3.6.1")) << status;
        delete table.Remove(MakeOid("1.118.3.1.3.6"));
    }
    Add({"v", "1.3.6", eFilterExcluded});
    EXPECT_EQ("out 1", Ask("1.3.6.1"));
    table.GetRow("v", MakeOid("1.3.6"), false)->rowStatus = eRowNotInService;
    EXPECT_EQ("in 1", Ask("1.3.6.1"));
}

TEST_F(FilterTableMatch, FamiliesOfOtherViewsDoNotCount)
{
    Add({"v", "1.3", eFilterIncluded});
    Add({"u", "1.3.6", eFilterExcluded});
    Add({"w", "1.3.6", eFilterExcluded});
    Add({"vv", "1.3.6", eFilterExcluded});
    EXPECT_EQ("in 1", Ask("1.3.6.1"));
    EXPECT_EQ("out 1", Ask("1.3.6.1", "vv"));
}

TEST_F(FilterTableMatch, TheRowsNameCountsNotThatOfItsIndex)
{
    AddRaw("1.118.2.1.3", {"w", "1.3"}); // stands under "v"
    EXPECT_EQ("out 0", Ask("1.3.6", "v"));
    EXPECT_EQ("in 1", Ask("1.3.6", "w"));
    AddRaw("", {"v", "1.3"});
    EXPECT_EQ("in 1", Ask("1.3.6", "v"));
}

TEST_F(FilterTableMatch, TheCountMayBeLeftOut)
{
    Add({"v", "1.3"});
    EXPECT_TRUE(table.Filter("v", MakeOid("1.3")));
    EXPECT_FALSE(table.Filter("w", MakeOid("1.3")));
    EXPECT_TRUE(table.Filter("v", MakeOid("1.3"), nullptr));
}

TEST_F(FilterTableMatch, TheCountIsThatOfTheLongestFamilies)
{
    Add({"v", "1.3"});
    Add({"v", "1.3.6"});
    for (unsigned arc = 0; arc < 5; ++arc)
        ASSERT_TRUE(table.Insert("v", MakeOid(Arcs{1, 3, 6, arc}), MaskOf({0xE0}), eFilterIncluded,
                                 eStorageOther, eRowActive, false));
    EXPECT_EQ("in 5", Ask("1.3.6.9"));
    EXPECT_EQ("in 1", Ask("1.3.6"));
}

// 1.<arc> with the last arc any, which all cover 1.0.7; and 1.0.7 before them.
class FilterTableLimit : public FilterTableMatch {
protected:
    void AddWide(unsigned count)
    {
        for (unsigned arc = 1; arc <= count; ++arc)
            ASSERT_TRUE(table.Insert("v", MakeOid(Arcs{1, arc}), MaskOf({0x80}), eFilterExcluded,
                                     eStorageOther, eRowActive, true));
    }
};

TEST_F(FilterTableLimit, NoMoreThan32MatchesAreLookedAt)
{
    Add({"v", "1.0.7", eFilterIncluded}, true);
    AddWide(31);
    EXPECT_EQ("in 1", Ask("1.0.7"));
    table.Clear();
    Add({"v", "1.0.7", eFilterIncluded}, true);
    AddWide(32);
    EXPECT_EQ("out 32", Ask("1.0.7"));
    table.Clear();
    AddWide(1000);
    EXPECT_EQ("out 32", Ask("1.0.7"));
}

// After some look-ups the rows are no longer walked.
TEST_F(FilterTableLimit, TheSame32AreLookedAtHoweverOftenATableIsAsked)
{
    Add({"v", "1.0.7", eFilterIncluded}, true);
    AddWide(31);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ("in 1", Ask("1.0.7")) << i;
    table.Clear();
    Add({"v", "1.0.7", eFilterIncluded}, true);
    AddWide(1000);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ("out 32", Ask("1.0.7")) << i;
}

TEST_F(FilterTableLimit, FamiliesThatDoNotMatchAreNoneOfThe32)
{
    Add({"v", "1.0.7", eFilterIncluded}, true);
    AddWide(31);
    for (unsigned arc = 0; arc < 100; ++arc) {
        ASSERT_TRUE(table.Insert("v", MakeOid(Arcs{2, arc}), BOctetString(), eFilterExcluded,
                                 eStorageOther, eRowActive, true));
        ASSERT_TRUE(table.Insert("v", MakeOid(Arcs{1, arc, 0}), MaskOf({0x80}), eFilterExcluded,
                                 eStorageOther, eRowNotReady, true));
    }
    EXPECT_EQ("in 1", Ask("1.0.7"));
}

// Rows in an order that their own columns would not give: the one whose subtree
// sorts last is not met first.
class FilterTableFirstRow : public FilterTableMatch {
protected:
    FilterTableFirstRow()
    {
        AddRaw("1", {"v", "1.3.5", eFilterIncluded});
        AddRaw("2", {"v", "1.3.4", eFilterExcluded, {0xC0}}); // the last arc is any
    }
};

TEST_F(FilterTableFirstRow, CONTRACT_ALookUpWritesTheGreatestSubtreeIntoTheFirstRow)
{
    EXPECT_EQ("in 2", Ask("1.3.5.1"));
    EXPECT_EQ("v 1.3.5", Shown(table.GetRow(MakeOid("1"))));
    EXPECT_EQ("v 1.3.5", Shown(table.GetRow(MakeOid("2")))) << "written by the look-up";
    EXPECT_EQ(MaskOf({0xC0}), table.GetRow(MakeOid("2"))->mask) << "the mask is not";
    EXPECT_EQ(eFilterExcluded, table.GetRow(MakeOid("2"))->type);
}

TEST_F(FilterTableFirstRow, CONTRACT_TheNextLookUpMayAnswerOtherwise)
{
    EXPECT_EQ("in 2", Ask("1.3.5.1"));
    // Now both are equal, and none sorts after the first.
    EXPECT_EQ("out 2", Ask("1.3.5.1"));
    EXPECT_EQ("out 2", Ask("1.3.5.1"));
}

TEST_F(FilterTableFirstRow, CONTRACT_TheRunningGreatestDecidesAmongThree)
{
    AddRaw("0", {"v", "1.3.6", eFilterIncluded, {0xC0}});
    AddRaw("0.1", {"v", "1.3.3", eFilterIncluded, {0xC0}});
    EXPECT_EQ("in 4", Ask("1.3.5.1"));
    EXPECT_EQ("v 1.3.6", Shown(table.GetRow(MakeOid("2"))));
    for (const char* index : {"0", "0.1", "1"})
        EXPECT_NE(table.GetRow(MakeOid("2"))->type, table.GetRow(MakeOid(index))->type) << index;
    EXPECT_EQ("v 1.3.6", Shown(table.GetRow(MakeOid("0"))));
    EXPECT_EQ("v 1.3.3", Shown(table.GetRow(MakeOid("0.1"))));
    EXPECT_EQ("v 1.3.5", Shown(table.GetRow(MakeOid("1"))));
}

TEST_F(FilterTableFirstRow, ShorterMatchesAndOtherRowsAreNotWritten)
{
    AddRaw("3", {"v", "1.3"});
    AddRaw("4", {"v", "1.9.9", eFilterIncluded});
    EXPECT_EQ("in 2", Ask("1.3.5.1"));
    EXPECT_EQ("v 1.3", Shown(table.GetRow(MakeOid("3"))));
    EXPECT_EQ("v 1.9.9", Shown(table.GetRow(MakeOid("4"))));
}

TEST_F(FilterTableFirstRow, OneMatchWritesNothing)
{
    EXPECT_EQ("out 1", Ask("1.3.7"));
    EXPECT_EQ("v 1.3.4", Shown(table.GetRow(MakeOid("2"))));
    EXPECT_EQ("v 1.3.5", Shown(table.GetRow(MakeOid("1"))));
}

TEST_F(FilterTableFirstRow, TheIdentifierAskedMayBeTheSubtreeThatIsWritten)
{
    const BObjectIdentifier& asked = table.GetRow(MakeOid("2"))->subtree;
    table.GetRow(MakeOid("1"))->mask = MaskOf({0xC0});
    unsigned matches = 0;
    EXPECT_TRUE(table.Filter("v", asked, &matches));
    EXPECT_EQ(2u, matches);
    EXPECT_EQ(MakeOid("1.3.5"), asked);
}

} // namespace
} // namespace Test
} // namespace VLK
