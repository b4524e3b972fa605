#include <climits>
#include <gtest/gtest.h>
#include <thread>
#include <vector>
#include <vkmibh/base.h>

namespace VLK {
namespace {

TEST(Atomic, CountsAndAssigns)
{
    atomic_t counter;
    EXPECT_EQ(ui32AtomicRead(&counter), 0u);
    AtomicInc(&counter);
    EXPECT_EQ(ui32AtomicRead(&counter), 1u);
    AtomicAssign(&counter, -1);
    EXPECT_EQ(ui32AtomicRead(&counter), 4294967295u);
    AtomicInc(&counter);
    EXPECT_EQ(ui32AtomicRead(&counter), 0u);
    AtomicAssign(&counter, INT_MAX);
    AtomicInc(&counter);
    EXPECT_EQ(ui32AtomicRead(&counter), 2147483648u);
}

TEST(Atomic, NoIncrementIsLost)
{
    atomic_t counter;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 10000; ++n)
                AtomicInc(&counter);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(ui32AtomicRead(&counter), 40000u);
}

TEST(Atomic, Is32BitsWide) { EXPECT_EQ(sizeof(atomic_t), 4u); }

} // namespace
} // namespace VLK
