#include "host/TurnLock.h"

#include "tests/support/Threads.h"

#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

using namespace VLK;
using namespace VLK::host;

// A manager that sets all the time would keep the reading of the configuration waiting.
TEST(TurnLock, WhoTakesItAgainAtOnceIsBehindWhoWaits)
{
    for (int round = 0; round < 100; ++round) {
        BTurnLock lock;
        bool hadItsTurn = false; // under the lock
        lock.lock();
        EXPECT_FALSE(lock.IsWaitedFor());
        std::thread waiting([&] {
            const std::lock_guard<BTurnLock> turn(lock);
            hadItsTurn = true;
        });
        ASSERT_TRUE(Eventually([&] { return lock.IsWaitedFor(); }));
        lock.unlock();
        lock.lock();
        EXPECT_TRUE(hadItsTurn) << round;
        lock.unlock();
        waiting.join();
    }
}

TEST(TurnLock, OneAtATimeHasIt)
{
    BTurnLock lock;
    int sum = 0; // under the lock
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int round = 0; round < 1000; ++round) {
                const std::lock_guard<BTurnLock> turn(lock);
                ++sum;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, 4000);
}
