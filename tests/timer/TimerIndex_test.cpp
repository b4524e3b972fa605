// Subscriptions found by their id: the same answers as a search of the list, from
// the first to the last, would give.
#include "tests/support/AllocationSweep.h"

#include <vkmibh/timer.h>

#include <algorithm>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <random>
#include <vector>

namespace VLK {
namespace {

using Log = std::vector<long long>;

// The plain list: every operation walks it.
class ListTimer {
public:
    int Subscribe(ITimeSubscriber* subscriber, int interval, int count)
    {
        m_records.emplace_back();
        BTimeInterval& record = m_records.back();
        record = {interval > 0 ? interval : 0, unsigned(count), 0, subscriber, 0};
        record.remaining = record.interval;
        record.id = nextId == 0 ? 1 : nextId;
        nextId = record.id + 1;
        return record.id;
    }
    bool Unsubscribe(int id)
    {
        for (BTimeInterval& record : m_records) {
            if (record.subscriber && record.id == id) {
                record.subscriber = nullptr;
                Sweep();
                return true;
            }
        }
        return false;
    }
    void Unsubscribe(ITimeSubscriber* subscriber)
    {
        for (BTimeInterval& record : m_records) {
            if (record.subscriber == subscriber)
                record.subscriber = nullptr;
        }
        Sweep();
    }
    void Timeout(unsigned elapsed)
    {
        size_t left = m_records.size();
        for (auto record = m_records.begin(); left > 0; ++record, --left)
            Advance(*record, elapsed);
        Sweep();
    }
    void SetNextId(int id) { nextId = id; }

private:
    void Advance(BTimeInterval& record, unsigned elapsed)
    {
        for (const BTimeInterval* called : m_called) {
            if (called == &record)
                return;
        }
        if (!record.subscriber)
            return;
        record.remaining -= int(elapsed);
        if (record.remaining > 0)
            return;
        if (record.count != ~0u)
            --record.count;
        m_called.push_back(&record);
        record.subscriber->OnTimeout(record);
        m_called.pop_back();
        if (record.count == 0)
            record.subscriber = nullptr;
        record.remaining = record.interval;
    }
    // What has ended leaves the list when no tick walks it.
    void Sweep()
    {
        if (m_called.empty())
            m_records.remove_if([](const BTimeInterval& record) { return !record.subscriber; });
    }

    std::list<BTimeInterval> m_records;
    std::vector<const BTimeInterval*> m_called;
    int nextId = 1;
};

// A BTimer whose own thread is kept out by its lock.
class IndexedTimer {
public:
    IndexedTimer() : m_held(m_timer.Mutex()), m_idBefore(BTimer::Subscription::s_idCounter)
    {
        SetNextId(1);
    }
    ~IndexedTimer() { SetNextId(m_idBefore); }
    int Subscribe(ITimeSubscriber* subscriber, int interval, int count)
    {
        return m_timer.Subscribe(subscriber, interval, count);
    }
    bool Unsubscribe(int id) { return m_timer.Unsubscribe(id); }
    void Unsubscribe(ITimeSubscriber* subscriber) { m_timer.Unsubscribe(subscriber); }
    void Timeout(unsigned elapsed) { m_timer.Timeout(elapsed); }
    void SetNextId(int id) { BTimer::Subscription::s_idCounter = id; }

private:
    BTimer m_timer;
    TMutexLock m_held;
    const int m_idBefore;
};

// Does what chance says to a timer, from outside and from its callbacks, and
// notes all answers and calls. With the same seed two timers that behave alike
// make the same notes.
template <class Timer>
class Play {
public:
    explicit Play(unsigned seed) : m_random(seed)
    {
        int number = 0;
        for (Subscriber& subscriber : m_subscribers) {
            subscriber.play = this;
            subscriber.number = number++;
        }
    }

    Log Run(int steps)
    {
        while (steps-- > 0)
            Step();
        // What is left is told by taking it away.
        for (const int id : m_ids)
            Note({7, id, m_timer.Unsubscribe(id)});
        return m_log;
    }

private:
    struct Subscriber : ITimeSubscriber {
        void OnTimeout(BTimeInterval& interval) override { play->Called(number, interval); }
        Play* play = nullptr;
        int number = 0;
    };

    static constexpr int kDeepest = 3;

    int Chance(int below) { return int(m_random() % unsigned(below)); }
    template <size_t N>
    int OneOf(const std::array<int, N>& values)
    {
        return values[size_t(Chance(int(N)))];
    }
    void Note(std::initializer_list<long long> numbers)
    {
        m_log.insert(m_log.end(), numbers.begin(), numbers.end());
    }

    void Step()
    {
        const int what = Chance(100);
        if (what < 40)
            Subscribe();
        else if (what < 75)
            UnsubscribeOne();
        else if (what < 79)
            UnsubscribeAll();
        else if (what < 83)
            StartIdsAgain();
        else if (m_depth < kDeepest)
            Tick();
    }
    void Subscribe()
    {
        Subscriber& subscriber = m_subscribers[size_t(Chance(int(m_subscribers.size())))];
        const int interval = OneOf(std::array<int, 6>{-1, 0, 500, 1000, 1500, 3000});
        const int count = OneOf(std::array<int, 6>{-1, 0, 1, 1, 2, 3});
        const int id = m_timer.Subscribe(&subscriber, interval, count);
        m_ids.push_back(id);
        Note({1, subscriber.number, id});
    }
    void UnsubscribeOne()
    {
        // Most often one of late, which may be there still.
        const int reach = std::min<int>(int(m_ids.size()), Chance(4) ? 30 : 1 << 20);
        const int id = reach > 0 ? m_ids[m_ids.size() - 1 - size_t(Chance(reach))] : Chance(9);
        Note({2, id, m_timer.Unsubscribe(id)});
    }
    void UnsubscribeAll()
    {
        Subscriber& subscriber = m_subscribers[size_t(Chance(int(m_subscribers.size())))];
        m_timer.Unsubscribe(&subscriber);
        Note({3, subscriber.number});
    }
    // As after 2^32 subscriptions.
    void StartIdsAgain() { m_timer.SetNextId(OneOf(std::array<int, 4>{-3, 0, 1, 40})); }
    void Tick()
    {
        Note({4, m_depth});
        m_timer.Timeout(unsigned(OneOf(std::array<int, 5>{1, 999, 1000, 1000, 2500})));
        Note({5, m_depth});
    }
    void Called(int subscriber, BTimeInterval& interval)
    {
        Note({6, subscriber, interval.id, interval.interval, interval.count, interval.remaining});
        ++m_depth;
        switch (Chance(6)) {
        case 0:
            Note({8, m_timer.Unsubscribe(interval.id), m_timer.Unsubscribe(interval.id)});
            break;
        case 1:
            interval.count = unsigned(Chance(3));
            interval.interval = 1000 * Chance(3);
            break;
        case 2:
            Step();
            Step();
            break;
        default:
            break;
        }
        --m_depth;
    }

    std::mt19937 m_random;
    int m_depth = 0;
    Log m_log;
    std::vector<int> m_ids;
    std::array<Subscriber, 5> m_subscribers;
    Timer m_timer;
};

class Subscriber : public ITimeSubscriber {
public:
    void OnTimeout(BTimeInterval& interval) override
    {
        ++calls;
        if (body)
            body(interval);
    }
    std::function<void(BTimeInterval&)> body;
    int calls = 0;
};

TEST(TimerIndex, AnswersAndCallsAreThoseOfThePlainList)
{
    std::vector<unsigned> seeds = {std::random_device{}()};
    for (unsigned seed = 1; seed <= 40; ++seed)
        seeds.push_back(seed);
    for (const unsigned seed : seeds) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        const Log expected = Play<ListTimer>(seed).Run(1000);
        ASSERT_GT(expected.size(), 2000u);
        const Log got = Play<IndexedTimer>(seed).Run(1000);
        const auto difference =
            std::mismatch(expected.begin(), expected.end(), got.begin(), got.end());
        ASSERT_EQ(expected.size(), size_t(difference.first - expected.begin()));
        ASSERT_EQ(expected.size(), got.size());
    }
}

TEST(TimerIndex, OfTwoWithOneIdTheOlderEndsFirst)
{
    IndexedTimer timer;
    Subscriber older, newer, newest;
    timer.Subscribe(&older, 0, -1);
    timer.SetNextId(1);
    timer.Subscribe(&newer, 0, -1);
    timer.SetNextId(1);
    const int id = timer.Subscribe(&newest, 0, -1);
    EXPECT_EQ(id, 1);
    timer.Unsubscribe(&newer);
    EXPECT_TRUE(timer.Unsubscribe(id));
    timer.Timeout(1000);
    EXPECT_EQ(older.calls, 0);
    EXPECT_EQ(newest.calls, 1);
    EXPECT_TRUE(timer.Unsubscribe(id));
    EXPECT_FALSE(timer.Unsubscribe(id));
}

TEST(TimerIndex, ACallbackThatWritesOverItsRecordEndsByItsId)
{
    IndexedTimer timer;
    Subscriber spoiler, other;
    const int id = timer.Subscribe(&spoiler, 0, 2);
    const int otherId = timer.Subscribe(&other, 0, -1);
    spoiler.body = [&](BTimeInterval& interval) { interval.id = otherId; };
    timer.Timeout(1000);
    timer.Timeout(1000);
    EXPECT_FALSE(timer.Unsubscribe(id));
    EXPECT_TRUE(timer.Unsubscribe(otherId));
    EXPECT_EQ(other.calls, 2);
}

TEST(TimerIndex, WithoutMemorySubscribeIsRefusedAndTheOthersStay)
{
    struct Pending {
        BTimer timer;
        std::vector<int> ids;
    };
    struct Row {
        size_t pending;
        unsigned allocations;
    };
    Subscriber before, refused;
    // The record, its place in the list and its place in the index; now and then
    // room in the index, and at first the index.
    for (const auto [pending, allocations] : {Row{0, 5}, {1, 3}, {63, 3}, {64, 4}, {65, 3}}) {
        const auto make = [&, count = pending] {
            auto object = std::make_unique<Pending>();
            while (object->ids.size() < count)
                object->ids.push_back(object->timer.Subscribe(&before, 3600000, -1));
            return object;
        };
        const auto subscribe = [&](std::unique_ptr<Pending>& object) {
            const int next = BTimer::Subscription::s_idCounter;
            const int id = object->timer.Subscribe(&refused, 3600000, -1);
            EXPECT_TRUE(id == 0 || id == next);
            EXPECT_EQ(id != 0, object->timer.Unsubscribe(next));
            return id;
        };
        const auto check = [](std::unique_ptr<Pending>& object, int) {
            for (const int id : object->ids)
                EXPECT_TRUE(object->timer.Unsubscribe(id));
        };
        EXPECT_EQ(VLKTest::SweepAllocations(make, subscribe, check), allocations) << pending;
    }
}

} // namespace
} // namespace VLK
