// A view filter table's rows in the host's store.
#include "tests/support/FailingAlloc.h"
#include "tests/support/FakeStore.h"
#include "tests/support/TraceRecorder.h"
#include "tests/support/ViewRows.h"

#include <cstdarg>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace VLK {

void VKDbgModuleTraceClass(int traceClass, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    Test::TraceRecorder::Note(traceClass, format, arguments);
    va_end(arguments);
}

namespace Test {
namespace {

using Calls = std::vector<std::string>;
using Records = FakeStore::Records;

constexpr char kSection[] = "views";

// What stands in a record whose fields can all be read.
FakeStore::Record GoodRecord(const std::string& key = "1", const std::string& view = "v",
                             const std::string& subtree = "1.3")
{
    return {key,
            {{1, "text:" + view},
             {2, "oid:" + subtree},
             {3, "octets:\xBF"},
             {4, "number:2"},
             {5, "number:3"},
             {6, "number:1"}}};
}

// Whether the table's lock is free.
bool AnotherThreadGetsIn(BFilterTable& table)
{
    int result = eWaitTimeout;
    std::thread([&]() VKMIBH_TSA(no_thread_safety_analysis) {
        result = table.Mutex().Wait(0);
        if (result == eWaitDone)
            table.Mutex().Done();
    }).join();
    return result == eWaitDone;
}

class FilterTableStore : public ::testing::Test {
protected:
    FakeStore store;
    BFilterTable table{&store, kSection};

    std::vector<std::string> Rows()
    {
        std::vector<std::string> rows;
        for (unsigned i = 0; i < table.Count(); ++i)
            rows.push_back(Shown(table.RowAt(static_cast<int>(i))));
        return rows;
    }
};

TEST_F(FilterTableStore, SavesSixFieldsOfEachRow)
{
    store.records[kSection] = {GoodRecord("old")};
    ASSERT_TRUE(Insert(table, {"all", "1.3.6.1", eFilterIncluded, {0xBF, 0x00}}));
    ASSERT_TRUE(Insert(table, {std::string("b\0c", 3), "", eFilterExcluded}));
    EXPECT_TRUE(table.SaveToNV());
    EXPECT_EQ((Records{{"1",
                        {{1, "text:all"},
                         {2, "oid:1.3.6.1"},
                         {3, std::string("octets:\xBF\0", 9)},
                         {4, "number:1 included"},
                         {5, "number:3 nonVolatile"},
                         {6, "number:1 active"}}},
                       {"2",
                        {{1, std::string("text:b\0c", 8)},
                         {2, "oid:"},
                         {3, "octets:"},
                         {4, "number:2 excluded"},
                         {5, "number:3 nonVolatile"},
                         {6, "number:1 active"}}}}),
              store.records[kSection]);
    EXPECT_EQ(0, store.flagsUsed);
    EXPECT_EQ(1u, store.records.size());
    EXPECT_TRUE(store.strings.empty() && store.numbers.empty());
}

TEST_F(FilterTableStore, OpensTheSectionOnceAndWritesTheFieldsInOrder)
{
    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    ASSERT_TRUE(Insert(table, {"v", "1.4"}));
    EXPECT_TRUE(table.SaveToNV());
    EXPECT_EQ((Calls{"OpenSection views", "SetString views 1 1", "SetOid views 1 2",
                     "SetOctets views 1 3", "SetInt with a label views 1 4",
                     "SetInt with a label views 1 5", "SetInt with a label views 1 6",
                     "SetString views 2 1", "SetOid views 2 2", "SetOctets views 2 3",
                     "SetInt with a label views 2 4", "SetInt with a label views 2 5",
                     "SetInt with a label views 2 6"}),
              store.calls);
}

TEST_F(FilterTableStore, SavesTheNonVolatileActiveRowsNumberedFromOneInIndexOrder)
{
    for (const int storage : {1, 2, 3, 4, 5}) {
        for (const int status : {1, 2, 3}) {
            const std::string view = "v" + std::to_string(storage) + std::to_string(status);
            ASSERT_TRUE(Insert(table, {view,
                                       "1.3",
                                       eFilterIncluded,
                                       {},
                                       static_cast<ERowStatus>(status),
                                       static_cast<EStorageType>(storage)}));
        }
    }
    for (unsigned i = 12; i > 0; --i)
        ASSERT_TRUE(table.Insert("w", MakeOid(Arcs{i}), BOctetString(), eFilterIncluded,
                                 eStorageNonVolatile, eRowActive, false));
    EXPECT_TRUE(table.SaveToNV());
    const Records& records = store.records[kSection];
    ASSERT_EQ(13u, records.size());
    for (unsigned i = 0; i < 12; ++i) {
        EXPECT_EQ(std::to_string(i + 1), records[i].key);
        EXPECT_EQ("text:w", records[i].fields.at(1));
        EXPECT_EQ("oid:" + std::to_string(i + 1), records[i].fields.at(2));
    }
    EXPECT_EQ("13", records[12].key);
    EXPECT_EQ("text:v31", records[12].fields.at(1)) << "the longer name sorts last";
}

TEST_F(FilterTableStore, AnEmptyTableEmptiesTheSection)
{
    store.records[kSection] = {GoodRecord()};
    EXPECT_TRUE(table.SaveToNV());
    EXPECT_EQ(Calls{"OpenSection views"}, store.calls);
    EXPECT_TRUE(store.records[kSection].empty());
}

TEST_F(FilterTableStore, ATypeWithoutALabelIsSavedAsUnknown)
{
    ASSERT_TRUE(Insert(table, {"v", "1.3", static_cast<EFilterType>(-7)}));
    EXPECT_TRUE(table.SaveToNV());
    EXPECT_EQ("number:-7 unknown", store.records[kSection][0].fields[4]);
}

TEST_F(FilterTableStore, WhatTheStoreAnswersToAWriteDoesNotCount)
{
    store.writeResult = 5;
    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    EXPECT_TRUE(table.SaveToNV());
    EXPECT_EQ(7u, store.calls.size());
}

TEST_F(FilterTableStore, WithoutStoreOrSectionNothingIsSavedOrLoaded)
{
    BFilterTable noStore(nullptr, kSection);
    BFilterTable noSection(&store, nullptr);
    BFilterTable storeOnly(&store);
    BFilterTable neither(nullptr);
    for (BFilterTable* other : {&noStore, &noSection, &storeOnly, &neither}) {
        ASSERT_TRUE(Insert(*other, {"v", "1.3"}));
        EXPECT_FALSE(other->SaveToNV());
        EXPECT_FALSE(other->InitFromNV(false));
        EXPECT_EQ(1u, other->Count()) << "the rows stay";
    }
    EXPECT_EQ(Calls(), store.calls);
}

TEST_F(FilterTableStore, TracesTheSection)
{
    const TraceRecorder trace(0x10004);
    table.SaveToNV();
    table.InitFromNV(true);
    BFilterTable other(nullptr, "other");
    other.InitFromNV(false);
    other.SaveToNV();
    BFilterTable none(nullptr);
    none.SaveToNV();
    EXPECT_EQ((Calls{"SaveToNV [views]", "InitFromNV [views]", "InitFromNV [other]",
                     "SaveToNV [other]", "SaveToNV []"}),
              trace.texts);
}

TEST_F(FilterTableStore, LoadsRecordsByPositionAndFieldsByNumber)
{
    store.records[kSection] = {GoodRecord("1"), GoodRecord("7", "w", "1.4")};
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ((Calls{"GetRecordCount views", "GetStringAt views 0 1", "GetOidAt views 0 2",
                     "GetOctetsAt views 0 3", "GetIntAt views 0 4", "GetIntAt views 0 5",
                     "GetIntAt views 0 6", "GetStringAt views 1 1", "GetOidAt views 1 2",
                     "GetOctetsAt views 1 3", "GetIntAt views 1 4", "GetIntAt views 1 5",
                     "GetIntAt views 1 6"}),
              store.calls);
    EXPECT_EQ((std::vector<std::string>{"v 1.3", "w 1.4"}), Rows());
    const BFilterTable::Entry& row = *table.RowAt(0);
    EXPECT_EQ(MaskOf({0xBF}), row.mask);
    EXPECT_EQ(eFilterExcluded, row.type);
    EXPECT_EQ(eStorageNonVolatile, row.storageType);
    EXPECT_EQ(eRowActive, row.rowStatus);
}

TEST_F(FilterTableStore, LoadingReplacesAndDeletesAllRows)
{
    const long before = FailingAlloc::Live();
    ASSERT_TRUE(Insert(table, {"old", "1.3"}));
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(0u, table.Count());
    store.calls = Calls();
    store.records.clear();
    EXPECT_EQ(before, FailingAlloc::Live());
}

TEST_F(FilterTableStore, IndexesAreMadeAsTheFlagSays)
{
    store.records[kSection] = {GoodRecord()};
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_NE(nullptr, table.GetRow(MakeOid("1.118.2.1.3")));
    EXPECT_TRUE(table.InitFromNV(true));
    EXPECT_NE(nullptr, table.GetRow(MakeOid("1.118.1.3")));
    EXPECT_EQ(1u, table.Count());
}

TEST_F(FilterTableStore, OnlyActiveRecordsAreLoaded)
{
    for (const int status : {0, 1, 2, 3, 4, 5, 6, -1}) {
        FakeStore::Record record = GoodRecord("1", "v" + std::to_string(status));
        record.fields[6] = "number:" + std::to_string(status);
        store.records[kSection].push_back(record);
    }
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(std::vector<std::string>{"v1 1.3"}, Rows());
}

TEST_F(FilterTableStore, TypesAndStorageTypesAreLoadedAsTheyAre)
{
    FakeStore::Record record = GoodRecord();
    record.fields[4] = "number:1";
    record.fields[5] = "number:5";
    store.records[kSection] = {record};
    record = GoodRecord("2", "w");
    record.fields[4] = "number:-2147483648";
    record.fields[5] = "number:99";
    store.records[kSection].push_back(record);
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(eFilterIncluded, table.RowAt(0)->type);
    EXPECT_EQ(eStorageReadOnly, table.RowAt(0)->storageType);
    EXPECT_EQ(-2147483647 - 1, table.RowAt(1)->type);
    EXPECT_EQ(99, table.RowAt(1)->storageType);
    EXPECT_FALSE(table.Filter("w", MakeOid("1.3.6")));
}

TEST_F(FilterTableStore, ARecordThatCannotBeReadIsSkipped)
{
    for (int field = 1; field <= 6; ++field) {
        SCOPED_TRACE(field);
        for (const char* bad : {"", "other:1"}) {
            FakeStore::Record record = GoodRecord("2", "bad");
            record.fields[field] = bad;
            if (!*bad)
                record.fields.erase(field);
            store.records[kSection] = {GoodRecord("1", "a"), record, GoodRecord("3", "c")};
            EXPECT_TRUE(table.InitFromNV(false));
            EXPECT_EQ((std::vector<std::string>{"a 1.3", "c 1.3"}), Rows());
        }
    }
}

// Gives what a field holds, and yet says that it cannot.
class FailingStore : public FakeStore {
public:
    int GetStringAt(const char* section, int position, BString& value, int field) override
    {
        return FakeStore::GetStringAt(section, position, value, field) | ResultOf(position, field);
    }
    int GetOidAt(const char* section, int position, BObjectIdentifier& value, int field) override
    {
        return FakeStore::GetOidAt(section, position, value, field) | ResultOf(position, field);
    }
    int GetOctetsAt(const char* section, int position, BOctetString& value, int field) override
    {
        return FakeStore::GetOctetsAt(section, position, value, field) | ResultOf(position, field);
    }
    int GetIntAt(const char* section, int position, int& value, int field) override
    {
        return FakeStore::GetIntAt(section, position, value, field) | ResultOf(position, field);
    }
    int failingField = 0; // of record 1
    int result = 0;

private:
    int ResultOf(int position, int field) const
    {
        return position == 1 && field == failingField ? result : 0;
    }
};

TEST(FilterTableStoreResults, AnythingButZeroIsAFieldThatCannotBeRead)
{
    FailingStore failing;
    BFilterTable table(&failing, kSection);
    failing.records[kSection] = {GoodRecord("1", "a"), GoodRecord("2", "b"), GoodRecord("3", "c")};
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(3u, table.Count());
    for (failing.failingField = 1; failing.failingField <= 6; ++failing.failingField) {
        for (const int result : {1, -1}) {
            SCOPED_TRACE(failing.failingField * result);
            failing.result = result;
            EXPECT_TRUE(table.InitFromNV(false));
            EXPECT_EQ(2u, table.Count());
            EXPECT_EQ(nullptr, table.GetLastRowWithViewName("b"));
        }
    }
}

TEST_F(FilterTableStore, NothingOfASkippedRecordGoesIntoTheNext)
{
    FakeStore::Record record = GoodRecord("1", "bad", "1.9.9");
    record.fields.erase(6);
    FakeStore::Record empty = GoodRecord("2", "", "");
    empty.fields[3] = "octets:";
    store.records[kSection] = {record, empty};
    EXPECT_TRUE(table.InitFromNV(true));
    ASSERT_EQ(1u, table.Count());
    EXPECT_EQ(" ", Shown(table.RowAt(0)));
    EXPECT_EQ(0u, table.RowAt(0)->mask.Length());
}

TEST_F(FilterTableStore, TheFirstRecordOfAnIndexStays)
{
    FakeStore::Record second = GoodRecord("2");
    second.fields[4] = "number:1";
    store.records[kSection] = {GoodRecord("1"), second};
    EXPECT_TRUE(table.InitFromNV(false));
    ASSERT_EQ(1u, table.Count());
    EXPECT_EQ(eFilterExcluded, table.RowAt(0)->type);
}

TEST_F(FilterTableStore, ACountOfNoRecordsOrTooManyIsBorne)
{
    store.records[kSection] = {GoodRecord()};
    store.recordsPromised = 1000;
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(1u, table.Count());
    EXPECT_EQ("GetStringAt views 1000 1", store.calls.back());

    store.recordsPromised = -1;
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(0u, table.Count());

    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    for (const int promised : {-2, -2147483647 - 1}) {
        store.recordsPromised = promised;
        EXPECT_FALSE(table.InitFromNV(false)) << promised;
        EXPECT_EQ(0u, table.Count());
    }
}

TEST_F(FilterTableStore, WhatIsSavedLoads)
{
    for (const bool implied : {false, true}) {
        for (unsigned i = 0; i < 200; ++i) {
            const Octets mask(i % 4, static_cast<unsigned char>(i));
            ASSERT_TRUE(table.Insert(TextString(std::string(i % 7, char(i))),
                                     MakeOid(Arcs{1, i * 21474836u, i}), MaskOf(mask),
                                     i % 2 ? eFilterIncluded : eFilterExcluded, eStorageNonVolatile,
                                     eRowActive, implied));
        }
        EXPECT_TRUE(table.SaveToNV());
        BFilterTable other(&store, kSection);
        EXPECT_TRUE(other.InitFromNV(implied));
        ASSERT_EQ(200u, other.Count());
        BObjectIdentifier index;
        for (int i = 0; i < 200; ++i) {
            const BFilterTable::Entry& row = *table.RowAt(i);
            ASSERT_TRUE(table.NextIndex(index, index));
            const BFilterTable::Entry* const loaded = other.GetRow(index);
            ASSERT_NE(nullptr, loaded);
            EXPECT_EQ(row.viewName, loaded->viewName);
            EXPECT_EQ(row.subtree, loaded->subtree);
            EXPECT_EQ(row.mask, loaded->mask);
            EXPECT_EQ(row.type, loaded->type);
        }
        table.Clear();
    }
}

TEST_F(FilterTableStore, AStoreThatThrowsCannotBeRead)
{
    store.records[kSection] = {GoodRecord("1", "a"), GoodRecord("2", "b"), GoodRecord("3", "c")};
    for (const char* call : {"GetStringAt views 1 1", "GetOidAt views 1 2", "GetOctetsAt views 1 3",
                             "GetIntAt views 1 4", "GetIntAt views 1 5", "GetIntAt views 1 6"}) {
        SCOPED_TRACE(call);
        store.throwOn = call;
        EXPECT_TRUE(table.InitFromNV(false));
        EXPECT_EQ((std::vector<std::string>{"a 1.3", "c 1.3"}), Rows());
        EXPECT_TRUE(AnotherThreadGetsIn(table));
    }
    store.throwOn = "GetRecordCount views";
    EXPECT_FALSE(table.InitFromNV(false));
    EXPECT_EQ(0u, table.Count());
    EXPECT_TRUE(AnotherThreadGetsIn(table));
}

TEST_F(FilterTableStore, AStoreThatThrowsAtARowGetsTheOthers)
{
    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    ASSERT_TRUE(Insert(table, {"v", "1.4"}));
    for (const char* call : {"SetString views 1 1", "SetOid views 1 2", "SetOctets views 1 3",
                             "SetInt with a label views 1 4", "SetInt with a label views 1 6"}) {
        SCOPED_TRACE(call);
        store.throwOn = call;
        EXPECT_FALSE(table.SaveToNV());
        const FakeStore::Record& last = store.records[kSection].back();
        EXPECT_EQ("2", last.key);
        EXPECT_EQ(6u, last.fields.size());
        EXPECT_TRUE(AnotherThreadGetsIn(table));
    }
}

TEST_F(FilterTableStore, NothingIsWrittenBesideRecordsThatWereNotDropped)
{
    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    store.records[kSection] = {GoodRecord("1", "old")};
    store.throwOn = "OpenSection views";
    EXPECT_FALSE(table.SaveToNV());
    EXPECT_EQ(Records{GoodRecord("1", "old")}, store.records[kSection]);
    EXPECT_TRUE(AnotherThreadGetsIn(table));
}

// Asks something of the table whenever it is told to open its section, and when
// it is asked how many records it has.
class AskingStore : public FakeStore {
public:
    void OpenSection(const char* section) override
    {
        FakeStore::OpenSection(section);
        ask();
    }
    int GetRecordCount(const char* section) override
    {
        ask();
        return FakeStore::GetRecordCount(section);
    }
    std::function<void()> ask;
};

TEST(FilterTableStoreLock, IsHeldWhileTheStoreIsCalledAndLetsItsThreadInAgain)
{
    AskingStore asking;
    BFilterTable table(&asking, kSection);
    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    unsigned own = 77;
    bool others = true;
    asking.ask = [&] {
        own = table.Count();
        others = AnotherThreadGetsIn(table);
    };
    EXPECT_TRUE(table.SaveToNV());
    EXPECT_EQ(1u, own);
    EXPECT_FALSE(others);
    others = true;
    EXPECT_TRUE(table.InitFromNV(false));
    EXPECT_EQ(0u, own) << "the rows are deleted before";
    EXPECT_FALSE(others);
    EXPECT_EQ(1u, table.Count());
}

} // namespace
} // namespace Test
} // namespace VLK
