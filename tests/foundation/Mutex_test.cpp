#include "tests/support/BreaksLockRules.h"
#include "tests/support/Threads.h"

#include <gtest/gtest.h>
#include <vkmibh/base.h>

namespace VLK {
namespace {

int WaitElsewhere(TMutex& mutex, unsigned timeout)
{
    int result = -1;
    std::thread([&] {
        result = mutex.Wait(timeout);
        if (result == eWaitDone)
            mutex.Done();
    }).join();
    return result;
}

TEST(Mutex, OwnerMayTakeARecursiveOneAgain)
{
    TMutex mutex(true);
    EXPECT_EQ(mutex.Wait(kWaitForever), eWaitDone);
    EXPECT_EQ(mutex.Wait(kWaitForever), eWaitDone);
    EXPECT_EQ(mutex.Wait(0), eWaitDone);
    mutex.Done();
    mutex.Done();
    EXPECT_EQ(WaitElsewhere(mutex, 0), eWaitTimeout);
    mutex.Done();
    EXPECT_EQ(WaitElsewhere(mutex, 0), eWaitDone);
}

TEST(Mutex, SecondWaitOnAPlainOneIsRefused)
{
    TMutex mutex(false);
    EXPECT_EQ(mutex.Wait(kWaitForever), eWaitDone);
    EXPECT_EQ(mutex.Wait(kWaitForever), eWaitRefused);
    EXPECT_EQ(WaitElsewhere(mutex, 0), eWaitTimeout);
    mutex.Done();
    EXPECT_EQ(WaitElsewhere(mutex, 0), eWaitDone);
}

TEST(Mutex, BoundedWaitEnds)
{
    TMutex mutex(true);
    TMutexLock lock(mutex);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitElsewhere(mutex, 15), eWaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(15));
}

TEST(Mutex, BoundedWaitIsGrantedWhenItIsFree)
{
    TMutex mutex(true);
    EXPECT_EQ(WaitElsewhere(mutex, 10000), eWaitDone);
}

TEST(Mutex, ExcludesOtherThreads)
{
    TMutex mutex(true);
    long counter = 0;
    auto count = [&] {
        for (int i = 0; i < 5000; ++i) {
            TMutexLock lock(mutex);
            ++counter;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(counter, 10000);
}

TEST(Mutex, WaitResultsHaveTheirValues)
{
    EXPECT_EQ(eWaitDone, 0);
    EXPECT_EQ(eWaitTimeout, 258);
    EXPECT_EQ(kWaitForever, ~0u);
}

} // namespace
} // namespace VLK
