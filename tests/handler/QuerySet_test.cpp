// SET: access, locks, memory, and what a throwing host leaves behind.
#include "tests/support/FakeAccess.h"
#include "tests/support/ListHandler.h"
#include <vkmibh/testing/recorder.h>
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <future>
#include <mutex>
#include <thread>

namespace VLK {
namespace Test {
namespace {

using std::chrono::milliseconds;

class QuerySet : public ::testing::Test {
protected:
    QuerySet() : handler(&access), a('A', "1.3.5", log), b('B', "1.3.7", log)
    {
        g_bSerializeSet = true;
        handler.RegisterSubtreeHandler(&a);
        handler.RegisterSubtreeHandler(&b);
    }
    ~QuerySet() override { g_bSerializeSet = true; }

    int Set(std::initializer_list<const char*> names)
    {
        BVarBindList list;
        for (const char* name : names)
            list.Append(MakeOid(name));
        errorIndex = kUntouched;
        return handler.QuerySet(1, BSecurityParams(), BString(), list, errorIndex);
    }
    // A lock left behind would make this wait for ever.
    bool EveryLockIsFree()
    {
        auto free = std::async(std::launch::async, [this] {
            ListHandler other("1.3.9");
            const bool registered = handler.RegisterSubtreeHandler(&other);
            handler.UnregisterSubtreeHandler(&other);
            int index = 0;
            const BVarBindList empty;
            return registered &&
                   handler.QuerySet(1, BSecurityParams(), BString(), empty, index) == 0;
        });
        if (free.wait_for(std::chrono::seconds(20)) != std::future_status::ready)
            std::abort();
        return free.get();
    }

    FakeAccess access;
    SetLog log;
    BMibHandler handler;
    RecorderHandler a;
    RecorderHandler b;
    int errorIndex = 0;
};

TEST_F(QuerySet, EveryBindingIsCheckedBeforeAnyPhase)
{
    access.refused = {"1.3.7.1"};
    EXPECT_EQ(16, Set({"1.3.5.1", "1.3.7.1", "1.3.5.2"}));
    EXPECT_EQ(2, errorIndex);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ((std::vector<std::string>{"1.3.5.1", "1.3.7.1"}), access.asked);
    EXPECT_EQ(std::set<int>{eAccessWrite}, access.kinds);
    EXPECT_TRUE(EveryLockIsFree());
}

TEST_F(QuerySet, SuccessLeavesTheErrorIndexAlone)
{
    EXPECT_EQ(0, Set({"1.3.5.1", "1.3.7.1"}));
    EXPECT_EQ(kUntouched, errorIndex);
    EXPECT_TRUE(EveryLockIsFree());
}

TEST_F(QuerySet, WhatOnlyClaimsToBeATableHasNoRowsToForget)
{
    struct Claimer : RecorderHandler {
        Claimer(unsigned kind, SetLog& log) : RecorderHandler('C', "1.3.9", log)
        {
            SetImplKind(kind);
        }
    };
    a.failAt = {{eSetCleanup, 0}};
    for (const unsigned kind : {unsigned(eImplTableEx), unsigned(eImplTableEx2)}) {
        Claimer claimer(kind, log);
        handler.RegisterSubtreeHandler(&claimer);
        EXPECT_EQ(eSnmpCommitFailed, Set({"1.3.5.1", "1.3.9.1"}));
        EXPECT_EQ(1, errorIndex);
        handler.UnregisterSubtreeHandler(&claimer);
    }
}

TEST_F(QuerySet, LocksAreFreeAfterEveryOutcome)
{
    for (ESnmpSetOpCode phase : {eSetTest, eSetCommit, eSetUndo, eSetCleanup})
        for (bool throws : {false, true}) {
            a.failAt = {{phase, 0}, {phase == eSetUndo ? eSetCommit : phase, 0}};
            a.throwInstead = throws;
            EXPECT_EQ(throws ? 5 : 14, Set({"1.3.5.1", "1.3.7.1"}));
            EXPECT_TRUE(EveryLockIsFree());
        }
    EXPECT_EQ(2, Set({"1.9"}));
    EXPECT_TRUE(EveryLockIsFree());
}

TEST_F(QuerySet, TheLockTakenIsTheLockReleased)
{
    for (bool serialized : {true, false}) {
        g_bSerializeSet = serialized;
        a.onSet = [serialized](ESnmpSetOpCode) { g_bSerializeSet = !serialized; };
        EXPECT_EQ(0, Set({"1.3.5.1"}));
        a.onSet = nullptr;
        g_bSerializeSet = true;
        EXPECT_TRUE(EveryLockIsFree());
    }
}

TEST_F(QuerySet, AThrowingAccessControlIsAGeneralErrorInEveryRequest)
{
    access.throwing = {"1.3.7.1"};
    EXPECT_EQ(5, Set({"1.3.5.1", "1.3.7.1"}));
    EXPECT_EQ(2, errorIndex);
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(EveryLockIsFree());

    Client client(handler);
    EXPECT_EQ(5, client.Get({"1.3.5.1", "1.3.7.1"}));
    EXPECT_EQ(2, client.errorIndex);
    ListHandler list("1.3.8");
    list.Add("1.3.8.1", 1);
    handler.RegisterSubtreeHandler(&list);
    access.throwing = {"1.3.8.1"};
    EXPECT_EQ(5, client.GetNext({"1.3.8"}));
    EXPECT_EQ(1, client.errorIndex);
    EXPECT_EQ("1.3.8", client.NameAt(0));
    EXPECT_TRUE(EveryLockIsFree());
    handler.UnregisterSubtreeHandler(&list);
}

TEST_F(QuerySet, AThrowingModuleIsAGeneralErrorOfGetAndGetNext)
{
    ListHandler list("1.3.8");
    list.onGet = [](BVarBind& binding) -> int {
        binding.Value().SetInt(1);
        if (TextOf(binding.Name()) == "1.3.8.2")
            throw std::runtime_error("get");
        return 0;
    };
    list.onGetNext = [](BVarBind&) -> int { throw 7; };
    handler.RegisterSubtreeHandler(&list);
    Client client(handler);
    EXPECT_EQ(5, client.Get({"1.3.8.1", "1.3.8.2", "1.3.8.3"}));
    EXPECT_EQ(2, client.errorIndex);
    EXPECT_EQ(eAsnNull, client.SyntaxAt(0)) << "a general error gives the list back";
    EXPECT_EQ(5, client.GetNext({"1.3.8.1"}));
    EXPECT_EQ(1, client.errorIndex);
    EXPECT_EQ("1.3.8.1", client.NameAt(0));
    list.throwWhenAsked = true;
    EXPECT_EQ(5, client.Get({"1.3.5.1"})) << "the recorder answers no GET";
    list.onGet = nullptr;
    EXPECT_EQ(5, client.Get({"1.3.8.1", "1.3.9.1"}));
    EXPECT_EQ(2, client.errorIndex);
    EXPECT_TRUE(EveryLockIsFree());
    handler.UnregisterSubtreeHandler(&list);
}

TEST_F(QuerySet, ACancelledThreadLeavesNoLockAndCleansUp)
{
    a.onSet = [](ESnmpSetOpCode op) {
        if (op == eSetCommit)
            pthread_exit(nullptr);
    };
    std::thread([this] { Set({"1.3.5.1", "1.3.7.1"}); }).join();
    EXPECT_EQ(
        (SetLog{"A test 0+1", "B test 1+1", "A commit 0+1", "A cleanup 0+1", "B cleanup 1+1"}),
        log);
    a.onSet = nullptr;
    EXPECT_TRUE(EveryLockIsFree());
}

// Two SETs meet inside their test phase, or do not.
class Meeting {
public:
    // Stays until the other SET is here too, but no longer than this.
    void Wait(milliseconds time)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_met = m_met || ++m_inside == 2;
        m_changed.notify_all();
        m_changed.wait_for(lock, time, [this] { return m_met; });
        --m_inside;
    }
    bool Met() const { return m_met; }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_inside = 0;
    bool m_met = false;
};

TEST_F(QuerySet, SerialisedSetsRunOneAfterTheOther)
{
    int inside = 0;
    int most = 0;
    auto watch = [&](ESnmpSetOpCode op) {
        inside += op == eSetTest ? 1 : op == eSetCleanup ? -1 : 0;
        most = std::max(most, inside);
        std::this_thread::yield();
    };
    a.onSet = watch;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([this] {
            for (int i = 0; i < 50; ++i) {
                BVarBindList list;
                list.Append(MakeOid("1.3.5.1"));
                int index = 0;
                handler.QuerySet(1, BSecurityParams(), BString(), list, index);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1, most);
    EXPECT_EQ(0, inside);
    EXPECT_EQ(600u, log.size());
}

class UnserializedSets : public ::testing::Test {
protected:
    // Sends two SETs at once to two modules whose test phases wait for each other.
    bool TwoSetsMeet(milliseconds time)
    {
        BMibHandler handler(nullptr);
        SetLog logs[2];
        RecorderHandler a('A', "1.3.5", logs[0]);
        RecorderHandler b('B', "1.3.7", logs[1]);
        Meeting meeting;
        a.onSet = b.onSet = [&](ESnmpSetOpCode op) {
            if (op == eSetTest)
                meeting.Wait(time);
        };
        handler.RegisterSubtreeHandler(&a);
        handler.RegisterSubtreeHandler(&b);
        auto set = [&handler](const char* name) {
            BVarBindList list;
            list.Append(MakeOid(name));
            int index = 0;
            handler.QuerySet(1, BSecurityParams(), BString(), list, index);
        };
        std::thread first(set, "1.3.5.1");
        std::thread second(set, "1.3.7.1");
        first.join();
        second.join();
        return meeting.Met();
    }
    ~UnserializedSets() override { g_bSerializeSet = true; }
};

TEST_F(UnserializedSets, MayRunAtTheSameTime)
{
    g_bSerializeSet = false;
    EXPECT_TRUE(TwoSetsMeet(milliseconds(20000)));
}

TEST_F(UnserializedSets, SerialisedOnesNeverMeet)
{
    g_bSerializeSet = true;
    EXPECT_FALSE(TwoSetsMeet(milliseconds(50)));
}

TEST_F(QuerySet, GetsGoOnBesideASet)
{
    ListHandler list("1.3.8");
    list.Add("1.3.8.1", 1);
    handler.RegisterSubtreeHandler(&list);
    int status = -1;
    a.onSet = [&](ESnmpSetOpCode op) {
        if (op != eSetCommit)
            return;
        std::thread([&] {
            Client client(handler);
            status = client.Get({"1.3.8.1"});
        }).join();
    };
    EXPECT_EQ(0, Set({"1.3.5.1"}));
    EXPECT_EQ(0, status);
    handler.UnregisterSubtreeHandler(&list);
}

} // namespace
} // namespace Test
} // namespace VLK
