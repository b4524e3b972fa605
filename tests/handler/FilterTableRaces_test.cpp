// View filter tables asked by many threads while others change them. Under
// ThreadSanitizer this finds what a plain run may not.
#include "tests/support/FakeStore.h"
#include "tests/support/Threads.h"
#include "tests/support/ViewRows.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

namespace VLK {
namespace Test {
namespace {

constexpr char kSection[] = "views";
constexpr int kRounds = 400;
constexpr unsigned kAskingThreads = 8;

// Rows that stay, in an order that has look-ups write to them: 1.3.<n> in view
// "v", the later the smaller, each for any n.
void AddLasting(BFilterTable& table)
{
    for (unsigned i = 0; i < 8; ++i) {
        auto* const row = NewRow({"v", "", eFilterIncluded, {0xC0}});
        row->subtree = MakeOid(Arcs{1, 3, 8 - i});
        ASSERT_TRUE(table.Insert(MakeOid(Arcs{i}), row));
    }
    ASSERT_TRUE(Insert(table, {"v", "1.3.6.1", eFilterExcluded}));
}

class FilterTableRaces : public ::testing::Test {
protected:
    FilterTableRaces() { AddLasting(table); }

    void AskUntilStopped()
    {
        const BObjectIdentifier included = MakeOid("1.3.9.9");
        const BObjectIdentifier excluded = MakeOid("1.3.6.1.2");
        do {
            unsigned matches = 0;
            EXPECT_TRUE(table.Filter("v", included, &matches));
            EXPECT_EQ(8u, matches);
            EXPECT_FALSE(table.Filter("v", excluded, &matches));
            EXPECT_EQ(1u, matches);
            table.Filter("w", included);
            ++asked;
        } while (!stop);
    }

    // Rows of view "w" that come and go, the last ones by their caller's hand.
    void ChangeRows(unsigned arc)
    {
        const BObjectIdentifier subtree = MakeOid(Arcs{1, 3, arc});
        BObjectIdentifier index;
        ASSERT_TRUE(BFilterTable::MakeIndex("w", subtree, false, index));
        for (int i = 0; i < kRounds; ++i) {
            ASSERT_TRUE(table.Insert("w", subtree, BOctetString(), eFilterIncluded,
                                     eStorageVolatile, eRowActive, false));
            ASSERT_NE(nullptr, table.GetRow("w", subtree, false));
            delete table.Remove(index);
        }
    }

    void WalkUntilStopped()
    {
        while (!stop) {
            TMutexLock lock(table.Mutex());
            const BFilterTable::Entry* row = table.GetLastRowWithViewName("w");
            for (; row; row = table.GetPrevRowWithSameViewName(row))
                ASSERT_EQ(BString("w"), row->viewName);
            BObjectIdentifier index;
            unsigned count = 0;
            while (table.NextIndex(index, index))
                ++count;
            ASSERT_EQ(table.Count(), count);
        }
    }

    // One more than those that ask: everything else beside them.
    template <class Work>
    void Run(Work work)
    {
        std::vector<std::thread> others;
        for (unsigned i = 0; i < kAskingThreads; ++i)
            others.emplace_back([this] { AskUntilStopped(); });
        others.emplace_back([this] { WalkUntilStopped(); });
        work();
        stop = true;
        for (std::thread& other : others)
            other.join();
        EXPECT_GT(asked, 0);
    }

    FakeStore store;
    BFilterTable table{&store, kSection};
    std::atomic<bool> stop{false};
    std::atomic<int> asked{0};
};

TEST_F(FilterTableRaces, EightThreadsAskWhileRowsComeAndGo)
{
    Run([this] {
        std::thread one([this] { ChangeRows(1); });
        std::thread two([this] { ChangeRows(4294967295u); });
        one.join();
        two.join();
    });
    EXPECT_EQ(9u, table.Count());
}

TEST_F(FilterTableRaces, EightThreadsAskWhileRowsAreSaved)
{
    ASSERT_TRUE(Insert(table, {"w", "1.4"}));
    Run([this] {
        std::thread changes([this] { ChangeRows(5); });
        for (int i = 0; i < 50; ++i)
            ASSERT_TRUE(table.SaveToNV());
        changes.join();
    });
    EXPECT_EQ(10u, store.records[kSection].size());
}

TEST(FilterTableLock, EveryOperationWaitsForIt)
{
    FakeStore store;
    BFilterTable table(&store, kSection);
    const BObjectIdentifier index = MakeOid("1.118.2.1.3");
    ASSERT_TRUE(Insert(table, {"v", "1.3"}));
    const BFilterTable::Entry* const row = table.RowAt(0);
    BObjectIdentifier next;
    struct {
        const char* name;
        std::function<void()> run;
    } const operations[] = {
        {"Insert",
         [&] {
             Insert(table, {"w", "1.3"});
         }},
        {"Insert under an index",
         [&] {
             table.Insert(MakeOid("9"), NewRow({"w", "1.4"}));
         }},
        {"Remove", [&] { delete table.Remove(index); }},
        {"Clear", [&] { table.Clear(); }},
        {"InitFromNV", [&] { table.InitFromNV(false); }},
        {"SaveToNV", [&] { table.SaveToNV(); }},
        {"Filter", [&] { table.Filter("v", MakeOid("1.3.6")); }},
        {"GetRow", [&] { table.GetRow("v", MakeOid("1.3"), false); }},
        {"GetRow by index", [&] { table.GetRow(index); }},
        {"GetLastRowWithViewName", [&] { table.GetLastRowWithViewName("v"); }},
        {"GetPrevRowWithSameViewName", [&] { table.GetPrevRowWithSameViewName(row); }},
        {"Count", [&] { table.Count(); }},
        {"RowAt", [&] { table.RowAt(0); }},
        {"NextIndex", [&] { table.NextIndex(index, next); }},
    };
    constexpr unsigned kOperations = sizeof operations / sizeof operations[0];
    std::atomic<unsigned> begun{0};
    std::atomic<bool> isDone[kOperations] = {};
    std::vector<std::thread> threads;
    {
        TMutexLock lock(table.Mutex());
        for (unsigned i = 0; i < kOperations; ++i) {
            threads.emplace_back([&, i] {
                ++begun;
                operations[i].run();
                isDone[i] = true;
            });
        }
        EXPECT_TRUE(Eventually([&] { return begun == kOperations; }));
        GiveOthersTime();
        for (unsigned i = 0; i < kOperations; ++i)
            EXPECT_FALSE(isDone[i]) << operations[i].name;
        EXPECT_EQ(1u, table.Count());
    }
    for (std::thread& thread : threads)
        thread.join();
    for (unsigned i = 0; i < kOperations; ++i)
        EXPECT_TRUE(isDone[i]) << operations[i].name;
}

// Has a lock of its own, and calls back with it held.
class LockedStore : public FakeStore {
public:
    using Lock = std::lock_guard<std::recursive_mutex>;

    int SetString(const char* section, const char* key, const BString& value, int field,
                  int flag) override
    {
        const Lock lock(m_mutex);
        return FakeStore::SetString(section, key, value, field, flag);
    }
    void OpenSection(const char* section) override
    {
        const Lock lock(m_mutex);
        FakeStore::OpenSection(section);
    }
    void RequestUpdate(INVCallback* callback) override
    {
        const Lock lock(m_mutex);
        callback->Update();
    }

private:
    std::recursive_mutex m_mutex;
};

class Saver : public INVCallback {
public:
    explicit Saver(BFilterTable& table) : m_table(table) {}
    int Update() override { return m_table.SaveToNV() ? 0 : 1; }

private:
    BFilterTable& m_table;
};

TEST(FilterTableRacesOfWholeTables, AStoreWithALockSavesFromItsOwnUpdate)
{
    LockedStore store;
    BFilterTable table(&store, kSection);
    AddLasting(table);
    Saver saver(table);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            const BObjectIdentifier index = MakeOid(Arcs{1, 3, i});
            for (int round = 0; round < 50; ++round) {
                ASSERT_TRUE(table.Insert(index, NewRow({"w", "1.4"})));
                store.RequestUpdate(&saver);
                EXPECT_TRUE(table.Filter("w", MakeOid("1.4.1")));
                delete table.Remove(index);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    store.RequestUpdate(&saver);
    EXPECT_EQ(9u, store.records[kSection].size());
}

TEST(FilterTableRacesOfWholeTables, RowsAreDeletedUnderWalksAndLookUps)
{
    FakeStore store;
    BFilterTable table(&store, kSection);
    for (unsigned i = 0; i < 20; ++i)
        ASSERT_TRUE(table.Insert("v", MakeOid(Arcs{1, 3, i}), BOctetString(), eFilterIncluded,
                                 eStorageNonVolatile, eRowActive, false));
    ASSERT_TRUE(table.SaveToNV());
    std::atomic<bool> stop{false};
    std::vector<std::thread> asking;
    for (unsigned i = 0; i < kAskingThreads; ++i) {
        asking.emplace_back([&] {
            while (!stop) {
                // Either none of the rows is there, or the one that matches is.
                unsigned matches = 0;
                const bool isIn = table.Filter("v", MakeOid("1.3.7.1"), &matches);
                EXPECT_EQ(isIn ? 1u : 0u, matches);
            }
        });
    }
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(table.InitFromNV(false));
        ASSERT_EQ(20u, table.Count());
        table.Clear();
    }
    stop = true;
    for (std::thread& thread : asking)
        thread.join();
}

} // namespace
} // namespace Test
} // namespace VLK
