// The rows of a view filter table and their indexes.
#include "tests/support/FailingAlloc.h"
#include "tests/support/ViewRows.h"

#include <gtest/gtest.h>
#include <memory>

namespace VLK {
namespace Test {
namespace {

using Shows = std::vector<std::string>;

// Every row in index order.
Shows RowsOf(BFilterTable& table)
{
    Shows rows;
    for (unsigned i = 0; i < table.Count(); ++i)
        rows.push_back(Shown(table.RowAt(static_cast<int>(i))));
    return rows;
}

// The active rows of a view as a walk from the end finds them.
Shows WalkOf(BFilterTable& table, const char* view)
{
    Shows rows;
    auto* row = table.GetLastRowWithViewName(view);
    for (; row && rows.size() < 100; row = table.GetPrevRowWithSameViewName(row))
        rows.push_back(Shown(row));
    return rows;
}

TEST(FilterTableEntry, DefaultsAreIncludedNonVolatileAndNotInService)
{
    const BFilterTable::Entry row;
    EXPECT_TRUE(row.viewName.empty());
    EXPECT_EQ(0u, row.subtree.Length());
    EXPECT_EQ(0u, row.mask.Length());
    EXPECT_EQ(1, row.type);
    EXPECT_EQ(3, row.storageType);
    EXPECT_EQ(2, row.rowStatus);
}

TEST(FilterTable, StartsEmpty)
{
    BFilterTable table(nullptr);
    EXPECT_EQ(0u, table.Count());
    EXPECT_EQ(nullptr, table.RowAt(0));
    EXPECT_EQ(nullptr, table.GetRow("v", MakeOid("1.3"), false));
    EXPECT_EQ(nullptr, table.GetLastRowWithViewName("v"));
    EXPECT_EQ(nullptr, table.Remove(MakeOid("1.3")));
    BObjectIdentifier next = MakeOid("7");
    EXPECT_FALSE(table.NextIndex(BObjectIdentifier(), next));
    EXPECT_EQ(MakeOid("7"), next);
}

TEST(FilterTable, RowsOnlyLookedAtAreTheOnesThatAreLent)
{
    BFilterTable table(nullptr);
    for (const char* subtree : {"1.3.1", "1.3.2", "1.3.3"})
        ASSERT_TRUE(Insert(table, {"v", subtree}));
    EXPECT_EQ(nullptr, table.PeekAt(-1));
    EXPECT_EQ(nullptr, table.PeekAt(3));
    EXPECT_EQ(nullptr, table.Peek(MakeOid("1.3")));
    BObjectIdentifier index;
    for (int position = 0; position < 3; ++position) {
        ASSERT_TRUE(table.NextIndex(index, index));
        EXPECT_EQ(table.RowAt(position), table.PeekAt(position));
        EXPECT_EQ(table.GetRow(index), table.Peek(index));
        EXPECT_NE(nullptr, table.Peek(index));
    }
}

TEST(FilterTable, ThereIsNoRowToChangeUnderAnotherIndex)
{
    BFilterTable table(nullptr);
    ASSERT_TRUE(Insert(table, {"v", "1.3.1"}));
    EXPECT_FALSE(table.Change(MakeOid("1.3"), [](BFilterTable::Entry&) { FAIL(); }));
    EXPECT_EQ(1u, table.Count());
}

TEST(FilterTable, InsertCopiesEveryColumn)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(table.Insert("all", MakeOid("1.3.6"), MaskOf({0xBF, 0x80}), eFilterExcluded,
                             eStorageVolatile, eRowNotReady, false));
    const BFilterTable::Entry* const row = table.GetRow("all", MakeOid("1.3.6"), false);
    ASSERT_NE(nullptr, row);
    EXPECT_EQ(BString("all"), row->viewName);
    EXPECT_EQ(MakeOid("1.3.6"), row->subtree);
    EXPECT_EQ(MaskOf({0xBF, 0x80}), row->mask);
    EXPECT_EQ(eFilterExcluded, row->type);
    EXPECT_EQ(eStorageVolatile, row->storageType);
    EXPECT_EQ(eRowNotReady, row->rowStatus);
}

TEST(FilterTable, IndexIsTheNameItsLengthFirstThenTheSubtree)
{
    struct {
        const char* view;
        const char* subtree;
        bool implied;
        const char* index;
    } const rows[] = {
        {"ab", "1.3.6", false, "2.97.98.3.1.3.6"},
        {"ab", "1.3.6", true, "2.97.98.1.3.6"},
        {"", "1.3", false, "0.2.1.3"},
        {"", "1.3", true, "0.1.3"},
        {"ab", "", false, "2.97.98.0"},
        {"ab", "", true, "2.97.98"},
        {"\xFF", "4294967295", true, "1.255.4294967295"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.index);
        BObjectIdentifier index;
        EXPECT_TRUE(BFilterTable::MakeIndex(row.view, MakeOid(row.subtree), row.implied, index));
        EXPECT_EQ(MakeOid(row.index), index);

        BFilterTable table(nullptr);
        EXPECT_TRUE(Insert(table, {row.view, row.subtree}, row.implied));
        EXPECT_NE(nullptr, table.GetRow(MakeOid(row.index)));
        EXPECT_NE(nullptr, table.GetRow(row.view, MakeOid(row.subtree), row.implied));
        EXPECT_EQ(nullptr, table.GetRow(row.view, MakeOid(row.subtree), !row.implied));
    }
}

TEST(FilterTable, ANulBelongsToTheName)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(Insert(table, {std::string("a\0b", 3), "1.3"}));
    EXPECT_NE(nullptr, table.GetRow(MakeOid("3.97.0.98.2.1.3")));
    EXPECT_EQ(nullptr, table.GetRow("a", MakeOid("1.3"), false));
    EXPECT_EQ(nullptr, table.GetLastRowWithViewName("a"));
    EXPECT_NE(nullptr, table.GetLastRowWithViewName(BString("a\0b", 3)));
}

TEST(FilterTable, RowsStandInIndexOrder)
{
    BFilterTable table(nullptr);
    for (const char* subtree : {"1.3.7", "1.3", "1.3.6.1", "1.3.6"})
        EXPECT_TRUE(Insert(table, {"b", subtree}));
    EXPECT_TRUE(Insert(table, {"aa", "1"})); // a longer name sorts last
    EXPECT_TRUE(Insert(table, {"a", "9.9"}));
    EXPECT_EQ((Shows{"a 9.9", "b 1.3", "b 1.3.6", "b 1.3.7", "b 1.3.6.1", "aa 1"}), RowsOf(table));
    EXPECT_EQ(nullptr, table.RowAt(-1));
    EXPECT_EQ(nullptr, table.RowAt(6));
}

TEST(FilterTable, AnIndexThatIsTakenIsRefusedAndTheRowStays)
{
    const long before = FailingAlloc::Live();
    {
        BFilterTable table(nullptr);
        EXPECT_TRUE(Insert(table, {"v", "1.3", eFilterExcluded}));
        EXPECT_FALSE(Insert(table, {"v", "1.3", eFilterIncluded}));
        EXPECT_EQ(1u, table.Count());
        EXPECT_EQ(eFilterExcluded, table.RowAt(0)->type);
    }
    EXPECT_EQ(before, FailingAlloc::Live()) << "the refused row is destroyed";
}

TEST(FilterTable, ARowThatIsRefusedUnderARawIndexStaysTheCallers)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(table.Insert(MakeOid("1.2"), NewRow({"v", "1.3"})));
    const std::unique_ptr<BFilterTable::Entry> other(NewRow({"w", "1.4"}));
    EXPECT_FALSE(table.Insert(MakeOid("1.2"), other.get()));
    EXPECT_EQ("w 1.4", Shown(other.get()));
    EXPECT_EQ("v 1.3", Shown(table.GetRow(MakeOid("1.2"))));
}

TEST(FilterTable, ANullRowIsRefused)
{
    BFilterTable table(nullptr);
    EXPECT_FALSE(table.Insert(MakeOid("1.2"), nullptr));
    EXPECT_EQ(0u, table.Count());
}

TEST(FilterTable, RowsMayBeInsertedFromTheColumnsOfRows)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(Insert(table, {"v", "1.3", eFilterIncluded, {0x80}}));
    const BFilterTable::Entry* const row = table.RowAt(0);
    EXPECT_TRUE(table.Insert(row->viewName, row->subtree, row->mask, eFilterExcluded, eStorageOther,
                             eRowActive, true));
    EXPECT_EQ((Shows{"v 1.3", "v 1.3"}), RowsOf(table));
    EXPECT_EQ(row, table.GetRow(row->viewName, row->subtree, false));
    EXPECT_TRUE(table.Filter(row->viewName, row->subtree));
}

TEST(FilterTable, RemoveHandsTheRowBack)
{
    const long before = FailingAlloc::Live();
    {
        BFilterTable table(nullptr);
        EXPECT_TRUE(Insert(table, {"v", "1.3"}));
        EXPECT_TRUE(Insert(table, {"v", "1.4"}));
        EXPECT_EQ(nullptr, table.Remove(MakeOid("1.118.2.1.5")));
        const std::unique_ptr<BFilterTable::Entry> row(table.Remove(MakeOid("1.118.2.1.3")));
        EXPECT_EQ("v 1.3", Shown(row.get()));
        EXPECT_EQ(Shows{"v 1.4"}, RowsOf(table));
        EXPECT_TRUE(table.Insert(MakeOid("9"), table.Remove(MakeOid("1.118.2.1.4"))));
        EXPECT_EQ("v 1.4", Shown(table.GetRow(MakeOid("9"))));
    }
    EXPECT_EQ(before, FailingAlloc::Live());
}

TEST(FilterTable, ClearAndTheDestructorDeleteTheRows)
{
    const long before = FailingAlloc::Live();
    {
        BFilterTable table(nullptr);
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(table.Insert(MakeOid(Arcs{1, unsigned(i)}), NewRow({"v", "1.3.6.1"})));
        table.Clear();
        EXPECT_EQ(0u, table.Count());
        EXPECT_EQ(before, FailingAlloc::Live());
        table.Clear();
        EXPECT_TRUE(Insert(table, {"v", "1.3"}));
    }
    EXPECT_EQ(before, FailingAlloc::Live());
}

TEST(FilterTable, NextIndexWalksTheIndexes)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(Insert(table, {"a", "1"}, true));
    EXPECT_TRUE(Insert(table, {"b", "2"}, true));
    BObjectIdentifier index;
    EXPECT_TRUE(table.NextIndex(index, index));
    EXPECT_EQ(MakeOid("1.97.1"), index);
    EXPECT_TRUE(table.NextIndex(MakeOid("1.97.1.5"), index));
    EXPECT_EQ(MakeOid("1.98.2"), index);
    EXPECT_FALSE(table.NextIndex(index, index));
    EXPECT_EQ(MakeOid("1.98.2"), index);
}

TEST(FilterTableWalk, GivesTheActiveRowsOfOneViewFromTheLastBackwards)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(Insert(table, {"a", "1.1"}));
    EXPECT_TRUE(Insert(table, {"b", "1.1"}));
    EXPECT_TRUE(Insert(table, {"b", "1.2", eFilterIncluded, {}, eRowNotInService}));
    EXPECT_TRUE(Insert(table, {"b", "1.3", eFilterExcluded, {}, eRowActive, eStorageOther}));
    EXPECT_TRUE(Insert(table, {"b", "1.4", eFilterIncluded, {}, eRowNotReady}));
    EXPECT_TRUE(Insert(table, {"b", "1.5"}));
    EXPECT_TRUE(Insert(table, {"c", "1.1"}));
    EXPECT_EQ((Shows{"b 1.5", "b 1.3", "b 1.1"}), WalkOf(table, "b"));
    EXPECT_EQ(Shows{"a 1.1"}, WalkOf(table, "a"));
    EXPECT_EQ(Shows(), WalkOf(table, ""));
    EXPECT_EQ(Shows(), WalkOf(table, "bb"));
}

TEST(FilterTableWalk, GoesByTheNamesOfTheRowsNotOfTheirIndexes)
{
    BFilterTable table(nullptr);
    EXPECT_TRUE(Insert(table, {"b", "1.1"}));
    EXPECT_TRUE(table.Insert(MakeOid("0"), NewRow({"b", "1.2"})));
    EXPECT_TRUE(table.Insert(MakeOid("1.98.2.1.0"), NewRow({"x", "1.3"})));
    EXPECT_TRUE(table.Insert(MakeOid("4294967295"), NewRow({"b", "1.4"})));
    EXPECT_EQ((Shows{"b 1.4", "b 1.1", "b 1.2"}), WalkOf(table, "b"));
    EXPECT_EQ(Shows{"x 1.3"}, WalkOf(table, "x"));
}

TEST(FilterTableWalk, GoesOnFromAnyRowOfTheTable)
{
    BFilterTable table(nullptr);
    for (const char* subtree : {"1.1", "1.2", "1.3", "1.4"})
        EXPECT_TRUE(Insert(table, {"v", subtree}));
    BFilterTable::Entry* const third = table.RowAt(2);
    third->rowStatus = eRowNotInService;
    EXPECT_EQ("v 1.2", Shown(table.GetPrevRowWithSameViewName(third)));
    EXPECT_EQ("v 1.2", Shown(table.GetPrevRowWithSameViewName(table.RowAt(3))));
    EXPECT_EQ("v 1.1", Shown(table.GetPrevRowWithSameViewName(table.RowAt(1))));
    EXPECT_EQ(nullptr, table.GetPrevRowWithSameViewName(table.RowAt(0)));
}

TEST(FilterTableWalk, EndsBeforeARowThatIsNotInTheTable)
{
    BFilterTable table(nullptr);
    EXPECT_EQ(nullptr, table.GetPrevRowWithSameViewName(nullptr));
    EXPECT_TRUE(Insert(table, {"v", "1.1"}));
    EXPECT_TRUE(Insert(table, {"v", "1.2"}));
    EXPECT_EQ(nullptr, table.GetPrevRowWithSameViewName(nullptr));
    const std::unique_ptr<BFilterTable::Entry> stranger(NewRow({"v", "1.3"}));
    EXPECT_EQ(nullptr, table.GetPrevRowWithSameViewName(stranger.get()));
    // One that is gone is not read.
    const BFilterTable::Entry* const last = table.GetLastRowWithViewName("v");
    delete table.Remove(MakeOid("1.118.2.1.2"));
    EXPECT_EQ(nullptr, table.GetPrevRowWithSameViewName(last));
}

TEST(FilterTableWalk, SurvivesRowsThatComeAndGoBetweenItsSteps)
{
    BFilterTable table(nullptr);
    for (const char* subtree : {"1.2", "1.4", "1.6", "1.8"})
        EXPECT_TRUE(Insert(table, {"v", subtree}));
    BFilterTable::Entry* row = table.GetLastRowWithViewName("v");
    EXPECT_TRUE(Insert(table, {"v", "1.1"})); // all move up
    row = table.GetPrevRowWithSameViewName(row);
    EXPECT_EQ("v 1.6", Shown(row));
    EXPECT_TRUE(Insert(table, {"v", "1.5"}));
    row = table.GetPrevRowWithSameViewName(row);
    EXPECT_EQ("v 1.5", Shown(row));
    delete table.Remove(MakeOid("1.118.2.1.2")); // all move down
    row = table.GetPrevRowWithSameViewName(row);
    EXPECT_EQ("v 1.4", Shown(row));
    row = table.GetPrevRowWithSameViewName(row);
    EXPECT_EQ("v 1.1", Shown(row));
    table.Clear();
    EXPECT_EQ(nullptr, table.GetPrevRowWithSameViewName(row));
}

TEST(FilterTableWalk, TwoWalksDoNotDisturbEachOther)
{
    BFilterTable table(nullptr);
    for (const char* subtree : {"1.1", "1.2", "1.3"}) {
        EXPECT_TRUE(Insert(table, {"a", subtree}));
        EXPECT_TRUE(Insert(table, {"b", subtree}));
    }
    const BFilterTable::Entry* a = table.GetLastRowWithViewName("a");
    const BFilterTable::Entry* b = table.GetLastRowWithViewName("b");
    for (const char* arc : {"3", "2", "1"}) {
        EXPECT_EQ(std::string("a 1.") + arc, Shown(a));
        EXPECT_EQ(std::string("b 1.") + arc, Shown(b));
        a = table.GetPrevRowWithSameViewName(a);
        b = table.GetPrevRowWithSameViewName(b);
    }
    EXPECT_EQ(nullptr, a);
    EXPECT_EQ(nullptr, b);
}

// Indexes and what IsIndexValid() and SplitIndex() make of them; null: not valid.
struct IndexCase {
    const char* index;
    const char* implied;
    const char* notImplied;
};

class FilterTableIndex : public ::testing::TestWithParam<IndexCase> {
protected:
    static void Expect(const char* expected, bool implied)
    {
        SCOPED_TRACE(implied ? "implied" : "not implied");
        const BObjectIdentifier index = MakeOid(GetParam().index);
        EXPECT_EQ(expected != nullptr, BFilterTable::IsIndexValid(index, implied));
        BFilterTable::Entry row;
        row.viewName = "before";
        row.subtree = MakeOid("7.7");
        EXPECT_EQ(expected != nullptr,
                  BFilterTable::SplitIndex(index, row.viewName, row.subtree, implied));
        EXPECT_EQ(expected ? expected : "before 7.7", Shown(&row));
    }
};

TEST_P(FilterTableIndex, IsValidOrNot)
{
    Expect(GetParam().implied, true);
    Expect(GetParam().notImplied, false);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FilterTableIndex,
    ::testing::Values(
        IndexCase{"", nullptr, nullptr}, IndexCase{"0", nullptr, nullptr},
        IndexCase{"1.97", nullptr, nullptr},
        // Three arcs are enough with an implied subtree, four without.
        IndexCase{"0.1", nullptr, nullptr}, IndexCase{"0.1.3", " 1.3", nullptr},
        IndexCase{"0.1.7", " 1.7", nullptr}, IndexCase{"0.2.1.3", " 2.1.3", " 1.3"},
        IndexCase{"1.97.1", "a 1", nullptr}, IndexCase{"1.97.1.3", "a 1.3", "a 3"},
        // The name must end before the last arc, or two before it.
        IndexCase{"2.97.98", nullptr, nullptr}, IndexCase{"2.97.98.0", "ab 0", nullptr},
        IndexCase{"2.97.98.1", "ab 1", nullptr}, IndexCase{"2.97.98.1.7", "ab 1.7", "ab 7"},
        IndexCase{"3.97.98.99", nullptr, nullptr},
        // The subtree's length must be exact.
        IndexCase{"2.97.98.2.1", "ab 2.1", nullptr},
        IndexCase{"2.97.98.2.1.3", "ab 2.1.3", "ab 1.3"},
        IndexCase{"2.97.98.1.1.3", "ab 1.1.3", nullptr},
        IndexCase{"2.97.98.3.1.3", "ab 3.1.3", nullptr},
        IndexCase{"2.97.98.4294967295.1", "ab 4294967295.1", nullptr},
        // The name's length must fit.
        IndexCase{"4.97.98.1.3", nullptr, nullptr}, IndexCase{"5.97.98.1.3", nullptr, nullptr},
        IndexCase{"4294967295.97.1.3", nullptr, nullptr},
        // Characters 32 to 127.
        IndexCase{"1.31.1.3", nullptr, nullptr}, IndexCase{"1.32.1.3", "  1.3", "  3"},
        IndexCase{"1.127.1.3", "\x7F 1.3", "\x7F 3"}, IndexCase{"1.128.1.3", nullptr, nullptr},
        IndexCase{"1.0.1.3", nullptr, nullptr}, IndexCase{"1.353.1.3", nullptr, nullptr}));

TEST(FilterTableSplit, UndoesMakeIndex)
{
    for (const bool implied : {false, true}) {
        BObjectIdentifier index = MakeOid("1.3.6.1.4.1");
        ASSERT_TRUE(BFilterTable::MakeIndex("a view", index, implied, index));
        BString name;
        ASSERT_TRUE(BFilterTable::SplitIndex(index, name, index, implied));
        EXPECT_EQ(BString("a view"), name);
        EXPECT_EQ(MakeOid("1.3.6.1.4.1"), index);
    }
}

} // namespace
} // namespace Test
} // namespace VLK
