// The singletons of the library: first used by many threads at once, and
// destroyed while the timer calls back.
#include "tests/support/Workers.h"

#include <algorithm>
#include <mutex>
#include <vkmibh/timer.h>
#include <vkmibh/transactions.h>
#include <vkmibh/traps.h>

namespace VLK {
namespace Test {
namespace {

constexpr unsigned kThreads = 6;

// Uses the other singletons in its callback, and takes its time.
class BusySubscriber : public ITimeSubscriber {
public:
    void OnTimeout(BTimeInterval&) override
    {
        ++(closed ? late : called);
        BTransaction transaction(1);
        BTransactions& registry = *BTransactions::GetInstance();
        const unsigned id = registry.StartTransaction(&transaction);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        wrong += registry.GetProtocolId(id) == 1 ? 0 : 1;
        registry.EndTransaction(id);
        wrong += BTrapOIDs::GetInstance()->SnmpTraps().Length() == 9 ? 0 : 1;
    }
    std::atomic<bool> closed{false};
    std::atomic<long> called{0}, late{0}, wrong{0};
};

// What one thread found in a round.
struct SFound {
    BTimer* timer = nullptr;
    BTransactions* transactions = nullptr;
    BTransactionIdGenerator* generator = nullptr;
    BTrapOIDs* trapOids = nullptr;
    unsigned id = 0;
    bool operator==(const SFound& other) const
    {
        return timer == other.timer && transactions == other.transactions &&
               generator == other.generator && trapOids == other.trapOids;
    }
};

class SingletonRacesSlow : public ::testing::Test {
protected:
    SingletonRacesSlow() { BSingletons::DestroyAll(); }

    // All threads use all singletons for the first time, in an order of their own.
    void FirstUse(BusySubscriber& subscriber)
    {
        std::vector<SFound> found(kThreads);
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < kThreads; ++i)
            threads.emplace_back([&, i] { Use(i, subscriber, found[i]); });
        for (std::thread& thread : threads)
            thread.join();
        std::vector<unsigned> ids;
        for (const SFound& one : found) {
            EXPECT_TRUE(one == found[0]);
            ids.push_back(one.id);
        }
        std::sort(ids.begin(), ids.end());
        EXPECT_TRUE(std::unique(ids.begin(), ids.end()) == ids.end()) << "an id given twice";
    }
    static void Use(unsigned order, BusySubscriber& subscriber, SFound& found)
    {
        for (unsigned step = 0; step < 3; ++step) {
            switch ((order + step) % 3) {
            case 0:
                found.timer = BTimer::GetInstance();
                EXPECT_NE(0, found.timer->Subscribe(&subscriber, 0, -1));
                break;
            case 1:
                found.transactions = BTransactions::GetInstance();
                found.id = StartAndEnd(*found.transactions);
                found.generator = BTransactionIdGenerator::GetInstance();
                break;
            default:
                found.trapOids = BTrapOIDs::GetInstance();
            }
        }
    }
    static unsigned StartAndEnd(BTransactions& registry)
    {
        BTransaction transaction(7);
        const unsigned id = registry.StartTransaction(&transaction);
        EXPECT_EQ(7, registry.GetProtocolId(id));
        registry.EndTransaction(id);
        return id;
    }

    // The end of the process, but for the process.
    void Shutdown(BusySubscriber& subscriber)
    {
        BSingletons::DestroyAll();
        subscriber.closed = true;
        EXPECT_EQ(nullptr, BTimer::s_pInstance);
        EXPECT_EQ(nullptr, BTransactions::s_pInstance);
        EXPECT_EQ(nullptr, BTransactionIdGenerator::s_pInstance);
        EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
    }

    // Ends while the timer's thread starts, waits, or calls back.
    void Round(std::chrono::milliseconds life)
    {
        BusySubscriber subscriber;
        const auto start = std::chrono::steady_clock::now();
        FirstUse(subscriber);
        std::this_thread::sleep_until(start + life);
        Shutdown(subscriber);
        EXPECT_EQ(0, subscriber.late);
        EXPECT_EQ(0, subscriber.wrong);
        called += subscriber.called;
    }

    long called = 0;
};

TEST_F(SingletonRacesSlow, FirstUsedByManyThreadsAndGoneWhileTheTimerCalls)
{
    const auto end = std::chrono::steady_clock::now() + RaceTime();
    long rounds = 0;
    do {
        // The first tick comes a second after the start; its calls take 12 ms.
        Round(std::chrono::milliseconds(rounds % 20 ? 0 : 996 + rounds / 20 % 24));
        ++rounds;
    } while (std::chrono::steady_clock::now() < end && !HasFailure());
    while (called == 0 && !HasFailure())
        Round(std::chrono::milliseconds(1100));
    std::printf("rounds: %ld, calls: %ld\n", rounds, called);
}

} // namespace
} // namespace Test
} // namespace VLK
