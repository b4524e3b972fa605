#include "timer/TimeArithmetic.h"

#include <climits>
#include <cstddef>
#include <ctime>
#include <gtest/gtest.h>

namespace VLK {
namespace {

BTime::SInstant At(int seconds, int milliseconds)
{
    BTime::SInstant instant = {};
    instant.seconds = seconds;
    instant.milliseconds = static_cast<unsigned short>(milliseconds);
    return instant;
}

TEST(Time, SysUptimeIsInHundredths)
{
    EXPECT_EQ(SysUptimeBetween(At(100, 0), At(102, 345)), 234u);
    EXPECT_EQ(SysUptimeBetween(At(100, 500), At(102, 845)), 234u);
    EXPECT_EQ(SysUptimeBetween(At(100, 500), At(100, 500)), 0u);
    EXPECT_EQ(SysUptimeBetween(At(100, 0), At(100, 9)), 0u);
}

TEST(Time, SysUptimeBorrowsWhenTheMillisecondsWrap)
{
    EXPECT_EQ(SysUptimeBetween(At(100, 900), At(101, 100)), 20u);
    EXPECT_EQ(SysUptimeBetween(At(100, 999), At(101, 0)), 0u);
    EXPECT_EQ(SysUptimeBetween(At(100, 1), At(101, 0)), 99u);
}

TEST(Time, SysUptimeTakesUpToAThousandMillisecondsAsTheyAre)
{
    EXPECT_EQ(SysUptimeBetween(At(100, 0), At(100, 1000)), 100u);
    EXPECT_EQ(SysUptimeBetween(At(100, 0), At(101, 1001)), 200u);
}

TEST(Time, SysUptimeIsTheElapsedTimeForEveryPairOfMilliseconds)
{
    for (int start = 0; start < 1000; ++start) {
        for (int now = 0; now < 1000; ++now) {
            const unsigned elapsed = unsigned(3000 + now - start);
            ASSERT_EQ(SysUptimeBetween(At(7, start), At(10, now)), elapsed / 10);
        }
    }
}

TEST(Time, SysUptimeWrapsAtFourBytes)
{
    EXPECT_EQ(SysUptimeBetween(At(0, 0), At(42949672, 950)), 4294967295u);
    EXPECT_EQ(SysUptimeBetween(At(0, 0), At(42949672, 960)), 0u);
    EXPECT_EQ(SysUptimeBetween(At(0, 0), At(42949673, 0)), 4u);
    EXPECT_EQ(SysUptimeBetween(At(101, 0), At(100, 0)), 4294967196u);
}

TEST(Time, SecondsPassTheirLargestValue)
{
    EXPECT_EQ(SysUptimeBetween(At(INT_MAX, 0), At(INT_MIN, 0)), 100u);
    EXPECT_EQ(UptimeBetween(At(INT_MAX, 0), At(INT_MIN + 4, 0)), 5);
}

TEST(Time, UptimeIsTheDifferenceOfTheWholeSeconds)
{
    EXPECT_EQ(UptimeBetween(At(100, 0), At(105, 0)), 5);
    EXPECT_EQ(UptimeBetween(At(100, 999), At(101, 0)), 1);
    EXPECT_EQ(UptimeBetween(At(100, 0), At(100, 999)), 0);
    EXPECT_EQ(UptimeBetween(At(100, 0), At(100, 1000)), 0);
}

TEST(Time, UptimeKeepsTheSecondForMoreThanAThousandMilliseconds)
{
    EXPECT_EQ(UptimeBetween(At(100, 0), At(105, 1001)), 6);
    EXPECT_EQ(UptimeBetween(At(100, 1), At(105, 1001)), 5);
}

TEST(Time, UptimeOfAClockSetBackWrapsAt134217728)
{
    EXPECT_EQ(UptimeBetween(At(101, 0), At(100, 0)), 134217727);
    EXPECT_EQ(UptimeBetween(At(100, 0), At(0, 0)), 134217628);
    EXPECT_EQ(UptimeBetween(At(134217728, 0), At(0, 0)), 0);
    EXPECT_EQ(UptimeBetween(At(134217729, 0), At(0, 0)), -1);
}

TEST(Time, StartsWithTheWallClock)
{
    const int before = int(std::time(nullptr));
    BTime time;
    EXPECT_GE(time.StartTime(), before);
    EXPECT_LE(time.StartTime(), before + 60);
    EXPECT_LE(time.Uptime(), 60);
    EXPECT_LE(time.SysUptime(), 6000u);
    time.RecordStartTime();
    EXPECT_GE(time.StartTime(), before);
}

TEST(Time, RecordHasItsFieldsInOrder)
{
    static_assert(offsetof(BTime::SInstant, seconds) == 0, "");
    static_assert(offsetof(BTime::SInstant, milliseconds) == 4, "");
    static_assert(sizeof(BTime::SInstant::seconds) == 4, "");
    static_assert(sizeof(BTime::SInstant::milliseconds) == 2, "");
    static_assert(offsetof(BTimeInterval, interval) == 0, "");
    static_assert(offsetof(BTimeInterval, count) == 4, "");
    static_assert(offsetof(BTimeInterval, id) == 8, "");
    static_assert(offsetof(BTimeInterval, subscriber) > offsetof(BTimeInterval, id), "");
    static_assert(offsetof(BTimeInterval, remaining) > offsetof(BTimeInterval, subscriber), "");
}

} // namespace
} // namespace VLK
