#include "tests/support/FailingAlloc.h"
#include "tests/support/VtableSlot.h"
#include "timer/TimerThread.h"

#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace VLK {
namespace {

class Subscriber : public ITimeSubscriber {
public:
    void OnTimeout(BTimeInterval& interval) override
    {
        ++calls;
        last = interval;
        if (body)
            body(interval);
    }
    std::function<void(BTimeInterval&)> body;
    int calls = 0;
    BTimeInterval last = {};
};

// A timer whose own thread is kept out by its lock: the tests tick it.
class Timer : public testing::Test {
protected:
    Timer() : m_held(std::make_unique<TMutexLock>(timer.Mutex())) {}
    void Tick(int ticks = 1)
    {
        while (ticks-- > 0)
            timer.Timeout(1000);
    }
    BTimer timer;
    Subscriber a;
    Subscriber b;
    Subscriber c;

private:
    std::unique_ptr<TMutexLock> m_held;
};

TEST_F(Timer, OnceAfterThreeTicks)
{
    const int id = timer.Subscribe(&a, 3000, 1);
    EXPECT_NE(id, 0);
    Tick(2);
    EXPECT_EQ(a.calls, 0);
    Tick();
    EXPECT_EQ(a.calls, 1);
    EXPECT_FALSE(timer.Unsubscribe(id));
    Tick(5);
    EXPECT_EQ(a.calls, 1);
}

TEST_F(Timer, TwiceAfterOneAndAHalfSecondsFiresAtTicksTwoAndFour)
{
    const int id = timer.Subscribe(&a, 1500, 2);
    const int expected[] = {0, 1, 1, 2, 2, 2};
    for (int calls : expected) {
        Tick();
        EXPECT_EQ(a.calls, calls);
    }
    EXPECT_FALSE(timer.Unsubscribe(id));
}

TEST_F(Timer, NegativeIntervalFiresAtEveryTickForEver)
{
    const int id = timer.Subscribe(&a, -5, -1);
    Tick(1000);
    EXPECT_EQ(a.calls, 1000);
    EXPECT_EQ(a.last.interval, 0);
    EXPECT_EQ(a.last.count, ~0u);
    EXPECT_TRUE(timer.Unsubscribe(id));
}

TEST_F(Timer, IntervalOfZeroFiresAtEveryTick)
{
    timer.Subscribe(&a, 0, 3);
    Tick(5);
    EXPECT_EQ(a.calls, 3);
}

TEST_F(Timer, CountOfZeroWrapsAndNeverEnds)
{
    timer.Subscribe(&a, 0, 0);
    Tick();
    EXPECT_EQ(a.last.count, ~0u);
    Tick(9);
    EXPECT_EQ(a.calls, 10);
    EXPECT_EQ(a.last.count, ~0u);
}

TEST_F(Timer, SubscriberSeesItsRecord)
{
    const int id = timer.Subscribe(&a, 1500, 3);
    Tick(2);
    EXPECT_EQ(a.last.id, id);
    EXPECT_EQ(a.last.interval, 1500);
    EXPECT_EQ(a.last.count, 2u);
    EXPECT_EQ(a.last.subscriber, &a);
    EXPECT_EQ(a.last.remaining, -500);
}

TEST_F(Timer, OvershootIsNotCarriedOver)
{
    timer.Subscribe(&a, 1000, -1);
    timer.Timeout(10000);
    EXPECT_EQ(a.calls, 1);
    timer.Timeout(999);
    EXPECT_EQ(a.calls, 1);
    timer.Timeout(1);
    EXPECT_EQ(a.calls, 2);
}

TEST_F(Timer, LargestTickDoesNotOverflow)
{
    timer.Subscribe(&a, 0, -1);
    timer.Timeout(~0u);
    timer.Timeout(~0u);
    EXPECT_EQ(a.calls, 2);
    EXPECT_EQ(a.last.remaining, INT_MIN);
}

TEST_F(Timer, CallsInTheOrderOfSubscription)
{
    std::string order;
    a.body = [&](BTimeInterval&) { order += 'a'; };
    b.body = [&](BTimeInterval&) { order += 'b'; };
    timer.Subscribe(&b, 0, -1);
    timer.Subscribe(&a, 0, -1);
    timer.Subscribe(&b, 0, -1);
    Tick(2);
    EXPECT_EQ(order, "babbab");
}

TEST_F(Timer, IdsRiseAcrossTimersAndAreNeverZero)
{
    BTimer other;
    const int first = timer.Subscribe(&a, 1000, 1);
    EXPECT_EQ(other.Subscribe(&a, 1000, 1), first + 1);
    EXPECT_EQ(timer.Subscribe(&a, 1000, 1), first + 2);
    BTimer::Subscription::s_idCounter = INT_MAX;
    EXPECT_EQ(timer.Subscribe(&a, 1000, 1), INT_MAX);
    EXPECT_EQ(timer.Subscribe(&a, 1000, 1), INT_MIN);
    BTimer::Subscription::s_idCounter = -1;
    EXPECT_EQ(timer.Subscribe(&a, 1000, 1), -1);
    EXPECT_EQ(timer.Subscribe(&a, 1000, 1), 1);
    EXPECT_EQ(timer.Subscribe(&a, 1000, 1), 2);
    BTimer::Subscription::s_idCounter = first + 3;
}

TEST_F(Timer, UnsubscribeByIdEndsThatOneOnly)
{
    const int id = timer.Subscribe(&a, 0, -1);
    timer.Subscribe(&a, 0, -1);
    EXPECT_TRUE(timer.Unsubscribe(id));
    EXPECT_FALSE(timer.Unsubscribe(id));
    EXPECT_FALSE(timer.Unsubscribe(0));
    Tick();
    EXPECT_EQ(a.calls, 1);
}

TEST_F(Timer, UnsubscribeBySubscriberEndsAllOfItsOwn)
{
    timer.Subscribe(&a, 0, -1);
    timer.Subscribe(&b, 0, -1);
    timer.Subscribe(&a, 0, -1);
    timer.Unsubscribe(&a);
    timer.Unsubscribe(&c);
    Tick();
    EXPECT_EQ(a.calls, 0);
    EXPECT_EQ(b.calls, 1);
}

TEST_F(Timer, WithoutASubscriberItIsRefused)
{
    EXPECT_EQ(timer.Subscribe(nullptr, 1000, 1), 0);
    timer.Subscribe(&a, 0, -1);
    timer.Unsubscribe(nullptr);
    Tick();
    EXPECT_EQ(a.calls, 1);
}

TEST_F(Timer, CallbackMayUnsubscribeItselfById)
{
    bool again = true;
    a.body = [&](BTimeInterval& interval) {
        EXPECT_TRUE(timer.Unsubscribe(interval.id));
        again = timer.Unsubscribe(interval.id); // unknown at once
    };
    const int id = timer.Subscribe(&a, 0, -1);
    timer.Subscribe(&b, 0, -1);
    Tick(2);
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 2);
    EXPECT_FALSE(again);
    EXPECT_EQ(a.last.id, id);
}

TEST_F(Timer, CallbackMayUnsubscribeItsSubscriber)
{
    a.body = [&](BTimeInterval&) { timer.Unsubscribe(&a); };
    timer.Subscribe(&a, 0, -1);
    timer.Subscribe(&b, 0, -1);
    timer.Subscribe(&a, 0, -1);
    Tick(2);
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 2);
}

TEST_F(Timer, CallbackMayUnsubscribeTheNextAndThePrevious)
{
    const int previous = timer.Subscribe(&a, 0, -1);
    int next = 0;
    b.body = [&](BTimeInterval&) {
        timer.Unsubscribe(previous);
        EXPECT_TRUE(timer.Unsubscribe(next));
        EXPECT_FALSE(timer.Unsubscribe(next));
    };
    timer.Subscribe(&b, 0, 1);
    next = timer.Subscribe(&c, 0, -1);
    Tick(3);
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 1);
    EXPECT_EQ(c.calls, 0);
}

TEST_F(Timer, UnsubscribeOfTheLastCallbackFindsIt)
{
    bool found = false;
    a.body = [&](BTimeInterval& interval) { found = timer.Unsubscribe(interval.id); };
    timer.Subscribe(&a, 0, 1); // its count has run out, yet it is still there
    Tick();
    EXPECT_TRUE(found);
    Tick();
    EXPECT_EQ(a.calls, 1);
}

TEST_F(Timer, SubscribedDuringATickIsNotVisitedInIt)
{
    a.body = [&](BTimeInterval&) { timer.Subscribe(&b, 0, -1); };
    timer.Subscribe(&a, 0, 1);
    Tick();
    EXPECT_EQ(b.calls, 0);
    Tick();
    EXPECT_EQ(b.calls, 1);
}

TEST_F(Timer, SubscribedAndUnsubscribedDuringATickIsGone)
{
    a.body = [&](BTimeInterval&) {
        const int id = timer.Subscribe(&b, 0, -1);
        timer.Unsubscribe(&a);
        EXPECT_TRUE(timer.Unsubscribe(id));
        timer.Unsubscribe(nullptr);
    };
    timer.Subscribe(&a, 0, -1);
    Tick(3);
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 0);
}

TEST_F(Timer, CallbackMaySetItsCountToZero)
{
    a.body = [](BTimeInterval& interval) { interval.count = 0; };
    const int id = timer.Subscribe(&a, 0, -1);
    Tick(2);
    EXPECT_EQ(a.calls, 1);
    EXPECT_FALSE(timer.Unsubscribe(id));
}

TEST_F(Timer, CallbackMayChangeItsInterval)
{
    a.body = [](BTimeInterval& interval) { interval.interval = 2000; };
    timer.Subscribe(&a, 1000, -1);
    Tick(5);
    EXPECT_EQ(a.calls, 3); // ticks 1, 3, 5
}

TEST_F(Timer, TickWithinACallbackLeavesTheCalledRecordAlone)
{
    a.body = [&](BTimeInterval&) { Tick(); };
    timer.Subscribe(&a, 0, 1);
    timer.Subscribe(&b, 2000, 1);
    Tick();
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 1); // one tick within the other
    Tick();
    EXPECT_EQ(a.calls, 1);
}

TEST_F(Timer, TickWithinACallbackMayEndEverything)
{
    b.body = [&](BTimeInterval&) {
        timer.Unsubscribe(&a);
        timer.Unsubscribe(&b);
        timer.Unsubscribe(&c);
    };
    a.body = [&](BTimeInterval&) { Tick(); };
    timer.Subscribe(&a, 0, -1);
    timer.Subscribe(&b, 0, -1);
    timer.Subscribe(&c, 0, -1);
    Tick(3);
    EXPECT_EQ(a.calls, 1);
    EXPECT_EQ(b.calls, 1);
    EXPECT_EQ(c.calls, 0);
}

TEST_F(Timer, ExceptionOfACallbackDoesNotStopTheTick)
{
    a.body = [](BTimeInterval&) { throw std::runtime_error("lost"); };
    timer.Subscribe(&a, 0, 2);
    timer.Subscribe(&b, 0, -1);
    Tick(3);
    EXPECT_EQ(a.calls, 2);
    EXPECT_EQ(b.calls, 3);
}

TEST_F(Timer, ManySubscriptionsEndThemselvesInOneTick)
{
    a.body = [&](BTimeInterval& interval) { timer.Unsubscribe(interval.id); };
    for (int i = 0; i < 100000; ++i)
        ASSERT_NE(timer.Subscribe(&a, 0, -1), 0);
    Tick(2);
    EXPECT_EQ(a.calls, 100000);
}

TEST_F(Timer, SubscribeWithoutMemoryIsZero)
{
    for (int n = 0; n < 2; ++n) {
        FailingAlloc fail(n);
        EXPECT_EQ(timer.Subscribe(&a, 0, -1), 0);
        EXPECT_TRUE(fail.Failed());
    }
    Tick();
    EXPECT_EQ(a.calls, 0);
}

TEST(TimerObject, ThreadThatCouldNotStartIsStartedLater)
{
    for (int n = 1; n <= 2; ++n) { // the thread, then what the thread allocates
        std::unique_ptr<BTimer> timer;
        Subscriber subscriber;
        {
            FailingAlloc fail(n + 1);
            timer = std::make_unique<BTimer>();
            EXPECT_TRUE(fail.Failed());
            EXPECT_EQ(timer->Subscribe(&subscriber, 1000, 1), 0);
        }
        EXPECT_NE(timer->Subscribe(&subscriber, 1000, 1), 0);
    }
}

TEST(TimerObject, IsNotCopied)
{
    static_assert(!std::is_copy_constructible<BTimer>::value, "");
    static_assert(!std::is_copy_assignable<BTimer>::value, "");
}

TEST(TimerObject, VirtualsKeepTheirSlots)
{
    EXPECT_EQ(VtableSlot(&ITimeSubscriber::OnTimeout), 2);
    EXPECT_EQ(VtableSlot(&BTimer::Destroy), 2);
    EXPECT_EQ(VtableSlot(&BTimer::TimerThread::Start), 2);
    EXPECT_EQ(VtableSlot(&BTimer::TimerThread::Run), 7);
    EXPECT_EQ(VtableSlot(&BTimer::TimerThread::OnThreadEnd), 8);
}

TEST(TimerDeathTest, FirstIdOfAProcessIsOne)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            Subscriber subscriber;
            BTimer timer;
            std::_Exit(timer.Subscribe(&subscriber, 1000, 1));
        },
        testing::ExitedWithCode(1), "");
}

} // namespace
} // namespace VLK
