// The timer's thread and its instance, and others meeting them.
#include "tests/support/BreaksLockRules.h"
#include "tests/support/Threads.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>
#include <vkmibh/timer.h>

namespace VLK {
namespace {

class Subscriber : public ITimeSubscriber {
public:
    void OnTimeout(BTimeInterval& interval) override
    {
        ++calls;
        if (body)
            body(interval);
    }
    std::function<void(BTimeInterval&)> body;
    std::atomic<int> calls{0};
};

int TryElsewhere(TMutex& mutex)
{
    int result = -1;
    std::thread([&] {
        result = mutex.Wait(0);
        if (result == eWaitDone)
            mutex.Done();
    }).join();
    return result;
}

TEST(TimerThread, TicksOnceASecondUnderTheLock)
{
    const auto start = std::chrono::steady_clock::now();
    BTimer timer;
    Subscriber subscriber;
    std::atomic<int> locked{-1};
    std::thread::id caller;
    subscriber.body = [&](BTimeInterval&) {
        caller = std::this_thread::get_id();
        locked = TryElsewhere(timer.Mutex());
    };
    timer.Subscribe(&subscriber, 1000, 1);
    ASSERT_TRUE(Eventually([&] { return locked != -1; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
    TMutexLock lock(timer.Mutex());
    EXPECT_EQ(locked, eWaitTimeout);
    EXPECT_NE(caller, std::this_thread::get_id());
    EXPECT_EQ(subscriber.calls, 1);
}

// CONTRACT: the nominal period, never the time measured.
TEST(TimerThread, ALateTickStandsForOneSecond)
{
    BTimer timer;
    Subscriber everyTick, everyThird;
    std::vector<int> ticks;
    everyTick.body = [&](BTimeInterval&) {
        if (everyTick.calls == 1) // so the next tick is late by two
            std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    };
    everyThird.body = [&](BTimeInterval&) { ticks.push_back(everyTick.calls); };
    {
        TMutexLock lock(timer.Mutex()); // both see the same ticks
        timer.Subscribe(&everyTick, 1000, -1);
        timer.Subscribe(&everyThird, 3000, 1);
    }
    ASSERT_TRUE(Eventually([&] { return everyThird.calls == 1; }));
    TMutexLock lock(timer.Mutex());
    EXPECT_EQ(ticks, std::vector<int>{3});
}

TEST(TimerThread, DestructionWaitsForACallbackThatTakesLong)
{
    BTimer* const timer = BTimer::GetInstance();
    Subscriber subscriber;
    std::atomic<bool> called{false};
    std::atomic<bool> ended{false};
    std::atomic<BTimer*> seen{nullptr};
    subscriber.body = [&](BTimeInterval&) {
        called = true;
        // Longer than the timer's thread is asked to stop.
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        seen = BTimer::GetInstance();
        ended = true;
    };
    timer->Subscribe(&subscriber, 0, 1);
    ASSERT_TRUE(Eventually([&] { return called.load(); }));
    BTimer::DestroyInstance();
    EXPECT_TRUE(ended);
    EXPECT_EQ(seen, timer);
    EXPECT_EQ(BTimer::s_pInstance, nullptr);
}

TEST(TimerThread, UnsubscribeFromAnotherThreadWaitsForTheCallback)
{
    BTimer timer;
    Subscriber subscriber;
    TEvent called, go;
    std::atomic<bool> callbackEnded{false};
    subscriber.body = [&](BTimeInterval&) {
        called.Set();
        go.Wait(kWaitForever);
        callbackEnded = true;
    };
    timer.Subscribe(&subscriber, 0, -1);
    std::thread ticker([&] { timer.Timeout(1000); });
    called.Wait(kWaitForever);
    std::atomic<bool> unsubscribed{false};
    std::atomic<bool> early{false};
    std::thread other([&] {
        timer.Unsubscribe(&subscriber);
        early = !callbackEnded;
        unsubscribed = true;
    });
    GiveOthersTime();
    EXPECT_FALSE(unsubscribed);
    go.Set();
    other.join();
    ticker.join();
    EXPECT_FALSE(early);
    const int calls = subscriber.calls;
    timer.Timeout(1000);
    EXPECT_EQ(subscriber.calls, calls); // none comes after it
}

TEST(TimerThread, SubscribersComeAndGoWhileItTicks)
{
    BTimer timer;
    std::atomic<bool> stop{false};
    std::thread ticker([&] {
        while (!stop)
            timer.Timeout(1000);
    });
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                auto subscriber = std::make_unique<Subscriber>();
                subscriber->body = [&](BTimeInterval& interval) {
                    if (interval.id % 7 == 0)
                        timer.Unsubscribe(interval.id);
                };
                const int id = timer.Subscribe(subscriber.get(), 0, -1);
                timer.Subscribe(subscriber.get(), 1000, 2);
                if (t == 0)
                    timer.Unsubscribe(id);
                timer.Unsubscribe(subscriber.get()); // it goes away now
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    stop = true;
    ticker.join();
    Subscriber last;
    timer.Subscribe(&last, 0, 1);
    timer.Timeout(1000);
    EXPECT_EQ(last.calls, 1);
}

TEST(TimerInstance, IsOneForAllThreads)
{
    BTimer::DestroyInstance();
    std::atomic<BTimer*> seen[4] = {};
    std::vector<std::thread> threads;
    for (auto& slot : seen)
        threads.emplace_back([&slot] { slot = BTimer::GetInstance(); });
    for (std::thread& thread : threads)
        thread.join();
    for (auto& slot : seen)
        EXPECT_EQ(slot, BTimer::s_pInstance);
    EXPECT_NE(BTimer::s_pInstance, nullptr);
    BTimer::DestroyInstance();
}

TEST(TimerInstance, DestroyInstanceWithoutOneDoesNothing)
{
    BTimer::DestroyInstance();
    BTimer::DestroyInstance();
    EXPECT_EQ(BTimer::s_pInstance, nullptr);
}

TEST(TimerInstance, DestroyForgetsTheInstance)
{
    BSingleton* const timer = BTimer::GetInstance();
    timer->Destroy();
    EXPECT_EQ(BTimer::s_pInstance, nullptr);
    EXPECT_NE(BTimer::GetInstance(), nullptr);
    BTimer::DestroyInstance();
}

TEST(TimerInstance, DestroyOfAnotherTimerLeavesItAlone)
{
    BTimer* const instance = BTimer::GetInstance();
    (new BTimer)->Destroy();
    EXPECT_EQ(BTimer::s_pInstance, instance);
    BTimer::DestroyInstance();
}

TEST(TimerInstance, GoesWithItsSubscriptions)
{
    Subscriber subscriber;
    for (int i = 0; i < 10; ++i)
        BTimer::GetInstance()->Subscribe(&subscriber, 1000, -1);
    BTimer::DestroyInstance();
    EXPECT_EQ(subscriber.calls, 0);
}

TEST(TimerInstance, GoesBeforeSingletonsMadeLater)
{
    struct Later : BSingleton {
        explicit Later(bool& gone) : timerGone(gone) {}
        void Destroy() override
        {
            timerGone = BTimer::s_pInstance == nullptr;
            delete this;
        }
        bool& timerGone;
    };
    bool timerGone = false;
    BTimer::GetInstance();
    new Later(timerGone);
    BSingletons::DestroyAll();
    EXPECT_TRUE(timerGone);
}

} // namespace
} // namespace VLK
