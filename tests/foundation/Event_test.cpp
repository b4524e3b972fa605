#include "tests/support/Threads.h"

#include <gtest/gtest.h>
#include <vector>
#include <vkmibh/base.h>

namespace VLK {
namespace {

TEST(Event, PollTellsWhetherItIsSignalled)
{
    TEvent event;
    EXPECT_EQ(event.Wait(0), eWaitTimeout);
    event.Set();
    EXPECT_EQ(event.Wait(0), eWaitDone);
}

TEST(Event, StaysSignalledUntilReset)
{
    TEvent event;
    event.Set();
    EXPECT_EQ(event.Wait(0), eWaitDone);
    EXPECT_EQ(event.Wait(kWaitForever), eWaitDone);
    event.Reset();
    EXPECT_EQ(event.Wait(0), eWaitTimeout);
}

TEST(Event, BoundedWaitEnds)
{
    TEvent event;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(event.Wait(15), eWaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(15));
}

TEST(Event, SetWakesEveryWaiter)
{
    TEvent event;
    std::atomic<int> done{0};
    std::vector<std::thread> waiters;
    for (unsigned timeout : {kWaitForever, kWaitForever, 60000u}) {
        waiters.emplace_back([&, timeout] {
            if (event.Wait(timeout) == eWaitDone)
                ++done;
        });
    }
    GiveOthersTime();
    EXPECT_EQ(done, 0);
    event.Set();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(done, 3);
}

TEST(Event, CancelledWaiterLeavesNoLockBehind)
{
    struct Waiter {
        static void* Main(void* event)
        {
            static_cast<TEvent*>(event)->Wait(kWaitForever);
            return nullptr;
        }
    };
    TEvent event;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, &Waiter::Main, &event), 0);
    GiveOthersTime();
    pthread_cancel(thread);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    event.Set(); // would hang on the lock of the thread that is gone
    EXPECT_EQ(event.Wait(0), eWaitDone);
}

} // namespace
} // namespace VLK
