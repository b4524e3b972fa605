// View filter tables whose allocations fail one after the other.
#include "tests/support/AllocationSweep.h"
#include "tests/support/FakeStore.h"
#include "tests/support/ViewRows.h"

#include <memory>

namespace VLK {
namespace Test {
namespace {

using VLKTest::SweepAllocations;

constexpr char kSection[] = "views";

std::unique_ptr<BFilterTable> MakeTable(INonVolatile* store = nullptr)
{
    auto table = std::make_unique<BFilterTable>(store, kSection);
    EXPECT_TRUE(Insert(*table, {"v", "1.3", eFilterIncluded, {0x80}}));
    EXPECT_TRUE(Insert(*table, {"v", "1.5"}));
    return table;
}

TEST(FilterTableMemory, InsertAddsAWholeRowOrNone)
{
    const BString name("a name that needs memory of its own");
    const BObjectIdentifier subtree = MakeOid("1.4");
    const Octets octets{1, 2, 3, 4, 5};
    const BOctetString mask = MaskOf(octets);
    const unsigned allocations =
        SweepAllocations([] { return MakeTable(); },
                         [&](auto& table) {
                             return table->Insert(name, subtree, mask, eFilterExcluded,
                                                  eStorageVolatile, eRowActive, false);
                         },
                         [&](auto& table, bool done) {
                             const BFilterTable::Entry* const row =
                                 table->GetRow(name, subtree, false);
                             EXPECT_EQ(done ? 3u : 2u, table->Count());
                             EXPECT_EQ(done, row != nullptr);
                             if (row) {
                                 EXPECT_EQ(name, row->viewName);
                                 EXPECT_EQ(subtree, row->subtree);
                                 EXPECT_EQ(mask, row->mask);
                             }
                             EXPECT_TRUE(table->Filter("v", MakeOid("1.3.6")));
                         });
    EXPECT_GE(allocations, 5u) << "index, row and its three columns";
}

TEST(FilterTableMemory, ARowUnderARawIndexIsTakenOrStaysTheCallers)
{
    const BObjectIdentifier index = MakeOid("9");
    SweepAllocations(
        [] {
            return std::make_pair(MakeTable(), NewRow({"v", "1.4"}));
        },
        [&](auto& made) { return made.first->Insert(index, made.second); },
        [&](auto& made, bool done) {
            EXPECT_EQ(done ? made.second : nullptr, made.first->GetRow(index));
            if (!done)
                delete made.second;
        });
}

TEST(FilterTableMemory, FilterTakesNone)
{
    BFilterTable table(nullptr);
    ASSERT_TRUE(table.Insert(MakeOid("1"), NewRow({"v", "1.3.5"})));
    ASSERT_TRUE(table.Insert(MakeOid("2"), NewRow({"v", "1.3.4", eFilterExcluded, {0xC0}})));
    const BString view("v");
    const BObjectIdentifier oid = MakeOid("1.3.5.1");
    const FailingAlloc fail(0);
    EXPECT_TRUE(table.Filter(view, oid)); // writes to the first row
    EXPECT_NE(nullptr, table.GetLastRowWithViewName(view));
    EXPECT_FALSE(fail.Failed());
}

// What finds the rows quickly takes memory, the answers do not need it.
TEST(FilterTableMemory, ManyRowsAreFoundWithAndWithout)
{
    const BString view("v");
    std::vector<BObjectIdentifier> asked;
    for (unsigned arc = 1; arc <= 40; ++arc)
        asked.push_back(MakeOid(Arcs{1, 3, arc}));
    const unsigned allocations = SweepAllocations(
        [] {
            auto table = MakeTable();
            for (unsigned arc = 1; arc <= 40; ++arc)
                EXPECT_TRUE(table->Insert("v", MakeOid(Arcs{1, 3, arc}), BOctetString(),
                                          arc % 2 ? eFilterIncluded : eFilterExcluded,
                                          eStorageVolatile, eRowActive, false));
            EXPECT_NE(nullptr, table->RowAt(5)); // and may be changed behind the table's back
            return table;
        },
        [&](auto& table) {
            unsigned wrong = 0;
            for (unsigned look = 0; look < asked.size(); ++look)
                wrong += table->Filter(view, asked[look]) != (look % 2 == 0);
            return wrong;
        },
        [](auto& table, unsigned wrong) {
            EXPECT_EQ(0u, wrong);
            EXPECT_TRUE(table->HasRows("v"));
            EXPECT_FALSE(table->HasRows("w"));
        });
    EXPECT_GE(allocations, 3u) << "nothing was taken: the rows were walked";
}

TEST(FilterTableMemory, IndexesAreMadeWholeOrLeftAsTheyWere)
{
    const BString name("a name of more than sixteen characters");
    for (const unsigned arcs : {0u, 6u, 20u}) { // the name's storage has no room for the last
        for (const bool implied : {false, true}) {
            const BObjectIdentifier subtree = MakeOid(Arcs(arcs, 1));
            BObjectIdentifier index;
            ASSERT_TRUE(BFilterTable::MakeIndex(name, subtree, implied, index));
            SweepAllocations([] { return MakeOid("7"); },
                             [&](BObjectIdentifier& made) {
                                 return BFilterTable::MakeIndex(name, subtree, implied, made);
                             },
                             [&](BObjectIdentifier& made, bool done) {
                                 EXPECT_EQ(done ? index : MakeOid("7"), made);
                             });
        }
    }
}

TEST(FilterTableMemory, IndexesAreSplitWholeOrLeftAsTheyWere)
{
    const BString name("a name of more than sixteen characters");
    const BObjectIdentifier subtree = MakeOid(Arcs(20, 1));
    BObjectIdentifier index;
    ASSERT_TRUE(BFilterTable::MakeIndex(name, subtree, false, index));
    SweepAllocations([] { return std::make_pair(BString("before"), MakeOid("7")); },
                     [&](auto& parts) {
                         return BFilterTable::SplitIndex(index, parts.first, parts.second, false);
                     },
                     [&](auto& parts, bool done) {
                         EXPECT_EQ(done ? name : BString("before"), parts.first);
                         EXPECT_EQ(done ? subtree : MakeOid("7"), parts.second);
                     });
}

TEST(FilterTableMemory, NextIndexIsToldWholeOrNotAtAll)
{
    const BObjectIdentifier before = MakeOid("9");
    const BObjectIdentifier next = MakeOid(Arcs(20, 9));
    SweepAllocations(
        [&] {
            auto made = std::make_pair(MakeTable(), before);
            EXPECT_TRUE(made.first->Insert(next, NewRow({"w", "1.4"})));
            return made;
        },
        [&](auto& made) { return made.first->NextIndex(before, made.second); },
        [&](auto& made, bool done) { EXPECT_EQ(done ? next : before, made.second); });
}

// Refuses memory to the table, not to itself.
class UnlimitedStore : public FakeStore {
public:
    int GetStringAt(const char*, int position, BString& value, int) override
    {
        return Take(value, position == 0 ? m_first : m_second);
    }
    int GetOidAt(const char*, int, BObjectIdentifier& value, int) override
    {
        const FailingAlloc none(-1);
        return value.Set(m_subtree) ? 0 : 1;
    }
    int GetOctetsAt(const char*, int, BOctetString&, int) override { return 0; }
    int GetIntAt(const char*, int, int& value, int) override
    {
        value = 1;
        return 0;
    }
    int GetRecordCount(const char*) override { return 2; }

private:
    static int Take(BString& value, const BString& text)
    {
        const FailingAlloc none(-1);
        value = text;
        return 0;
    }
    const BString m_first{"v"};
    const BString m_second{"w"};
    const BObjectIdentifier m_subtree = MakeOid("1.3");
};

TEST(FilterTableMemory, LoadingTellsOfARowThatWasLost)
{
    UnlimitedStore store;
    SweepAllocations([&] { return MakeTable(&store); },
                     [](auto& table) { return table->InitFromNV(false); },
                     [](auto& table, bool done) {
                         EXPECT_EQ(done, table->Count() == 2);
                         for (int i = 0; i < static_cast<int>(table->Count()); ++i)
                             EXPECT_EQ(MakeOid("1.3"), table->RowAt(i)->subtree);
                     });
}

TEST(FilterTableMemory, ARowThatWasLostDoesNotKeepTheOthersOut)
{
    UnlimitedStore store;
    int lost = 0;
    for (int granted = 0;; ++granted) {
        SCOPED_TRACE(granted);
        const auto table = MakeTable(&store);
        bool failed = false;
        bool isLoaded = false;
        {
            const FailingAlloc fail(granted, FailingAlloc::eNextOnly);
            isLoaded = table->InitFromNV(false);
            failed = fail.Failed();
        }
        EXPECT_EQ(isLoaded ? 2u : 1u, table->Count());
        lost += !isLoaded;
        if (!failed)
            break;
    }
    EXPECT_GE(lost, 6) << "index, row and its columns, of both";
}

// Notes only the numbers of what it is given.
class CountingStore : public FakeStore {
public:
    int SetString(const char*, const char* key, const BString&, int, int) override
    {
        last = std::stoi(key);
        return 0;
    }
    int SetOid(const char*, const char*, const BObjectIdentifier&, int, int) override { return 0; }
    int SetOctets(const char*, const char*, const BOctetString&, int, int) override { return 0; }
    int SetInt(const char*, const char*, int, const char*, int, int) override { return 0; }
    void OpenSection(const char*) override {}
    int last = 0;
};

TEST(FilterTableMemory, SavingTakesNone)
{
    CountingStore store;
    const auto table = MakeTable(&store);
    const FailingAlloc fail(0);
    EXPECT_TRUE(table->SaveToNV());
    EXPECT_EQ(2, store.last);
    EXPECT_FALSE(fail.Failed());
}

} // namespace
} // namespace Test
} // namespace VLK
