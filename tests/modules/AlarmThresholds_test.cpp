#include "modules/rmon/Thresholds.h"

#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace VLK;
using namespace VLK::modules;

namespace {

SSample Signed(int value) { return {eAsnInteger, static_cast<unsigned>(value)}; }
SSample Counter(unsigned value) { return {eAsnCounter32, value}; }
SSample Gauge(unsigned value) { return {eAsnGauge32, value}; }
SSample Ticks(unsigned value) { return {eAsnTimeTicks, value}; }

std::vector<unsigned> CrossingsOf(const SThresholds& thresholds, const std::vector<int>& values)
{
    CCrossings crossings;
    std::vector<unsigned> all;
    for (int value : values)
        all.push_back(crossings.Feed(thresholds, value));
    return all;
}

// The definitions of RFC 2819 read out, each time over the whole past: whether the
// value at `at` crosses a threshold that `reaches` tells of, and, since such an event
// was raised last, one value was on the other threshold and off this one.
template <class Reaches, class ReachesOther>
std::vector<bool> Raised(const std::vector<int>& values, bool atStart, Reaches reaches,
                         ReachesOther reachesOther)
{
    std::vector<bool> raised;
    for (std::size_t at = 0; at < values.size(); ++at) {
        bool is = reaches(values[at]) && (at == 0 ? atStart : !reaches(values[at - 1]));
        for (std::size_t last = at; is && last-- > 0;) {
            if (!raised[last])
                continue;
            is = false;
            for (std::size_t between = last + 1; between < at; ++between)
                is = is || (!reaches(values[between]) && reachesOther(values[between]));
            break;
        }
        raised.push_back(is);
    }
    return raised;
}

std::vector<unsigned> OracleOf(const SThresholds& thresholds, const std::vector<int>& values)
{
    const auto isHigh = [&](int value) { return value >= thresholds.rising; };
    const auto isLow = [&](int value) { return value <= thresholds.falling; };
    const auto rising = Raised(values, thresholds.startup != eStartFalling, isHigh, isLow);
    const auto falling = Raised(values, thresholds.startup != eStartRising, isLow, isHigh);
    std::vector<unsigned> all;
    for (std::size_t i = 0; i < values.size(); ++i)
        all.push_back((rising[i] ? 1u : 0u) | (falling[i] ? 2u : 0u));
    return all;
}

} // namespace

TEST(AlarmThresholds, IntegersOfFourTypesAreSampled)
{
    BObjectSyntax value;
    value.SetInt(-5);
    ASSERT_TRUE(SampleOf(value));
    EXPECT_EQ(AbsoluteValue(*SampleOf(value)), -5);
    value.SetCounter(7);
    ASSERT_TRUE(SampleOf(value));
    EXPECT_EQ(SampleOf(value)->syntax, eAsnCounter32);
    EXPECT_EQ(SampleOf(value)->value, 7u);
    value.SetGauge(8);
    ASSERT_TRUE(SampleOf(value));
    value.SetTimeTicks(9);
    ASSERT_TRUE(SampleOf(value));

    value.SetCtr64(BCounter64(1, 2));
    EXPECT_FALSE(SampleOf(value));
    value.SetOctets(BString("5"));
    EXPECT_FALSE(SampleOf(value));
    value.SetIpAddress(BIpAddress(1, 2, 3, 4));
    EXPECT_FALSE(SampleOf(value));
    value.SetNull();
    EXPECT_FALSE(SampleOf(value));
    value.SetV2Exception(eNoSuchInstance);
    EXPECT_FALSE(SampleOf(value));
}

TEST(AlarmThresholds, ValuesBeyondInteger32StopAtItsEnd)
{
    EXPECT_EQ(AbsoluteValue(Signed(INT_MIN)), INT_MIN);
    EXPECT_EQ(AbsoluteValue(Signed(INT_MAX)), INT_MAX);
    for (const SSample& sample : {Counter(4294967295u), Gauge(2147483648u), Ticks(3000000000u)})
        EXPECT_EQ(AbsoluteValue(sample), INT_MAX);
    EXPECT_EQ(AbsoluteValue(Gauge(2147483647u)), INT_MAX);
    EXPECT_EQ(AbsoluteValue(Gauge(2147483646u)), INT_MAX - 1);
}

TEST(AlarmThresholds, DifferencesOfCountersAreModulo2To32)
{
    EXPECT_EQ(DeltaValue(Counter(10), Counter(25)), 15);
    EXPECT_EQ(DeltaValue(Counter(4294967290u), Counter(5)), 11);
    EXPECT_EQ(DeltaValue(Ticks(4294967295u), Ticks(0)), 1);
    EXPECT_EQ(DeltaValue(Counter(2147483640u), Counter(2147483660u)), 20);
    // One that starts anew has not made a great leap.
    EXPECT_EQ(DeltaValue(Counter(1000), Counter(0)), -1000);
}

TEST(AlarmThresholds, OtherDifferencesStopAtTheEndsOfInteger32)
{
    EXPECT_EQ(DeltaValue(Signed(5), Signed(-7)), -12);
    EXPECT_EQ(DeltaValue(Signed(INT_MIN), Signed(INT_MAX)), INT_MAX);
    EXPECT_EQ(DeltaValue(Signed(INT_MAX), Signed(INT_MIN)), INT_MIN);
    EXPECT_EQ(DeltaValue(Gauge(100), Gauge(40)), -60);
    EXPECT_EQ(DeltaValue(Gauge(0), Gauge(4294967295u)), INT_MAX);
    EXPECT_EQ(DeltaValue(Gauge(4294967295u), Gauge(0)), INT_MIN);
    EXPECT_FALSE(DeltaValue(Gauge(1), Counter(2)));
}

TEST(AlarmThresholds, TheFirstSampleObeysTheStartupAlarm)
{
    const struct {
        EStartupAlarm startup;
        int value;
        unsigned crossed;
    } cases[] = {{eStartRising, 10, eCrossRising},
                 {eStartRising, 9, eCrossNone},
                 {eStartRising, 1, eCrossNone},
                 {eStartFalling, 10, eCrossNone},
                 {eStartFalling, 2, eCrossFalling},
                 {eStartFalling, 3, eCrossNone},
                 {eStartRisingOrFalling, 11, eCrossRising},
                 {eStartRisingOrFalling, 5, eCrossNone},
                 {eStartRisingOrFalling, 2, eCrossFalling}};
    for (const auto& one : cases) {
        EXPECT_EQ(CrossingsOf({one.startup, 10, 2}, {one.value})[0], one.crossed)
            << one.startup << ", " << one.value;
    }
}

TEST(AlarmThresholds, ASecondAlarmNeedsTheOtherThresholdInBetween)
{
    using Crossed = std::vector<unsigned>;
    const SThresholds both{eStartRisingOrFalling, 10, 2};
    EXPECT_EQ(CrossingsOf(both, {5, 10, 9, 12, 3, 10}), (Crossed{0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(CrossingsOf(both, {5, 10, 2, 10}), (Crossed{0, 1, 2, 1}));
    EXPECT_EQ(CrossingsOf(both, {5, 2, 5, 1, 9, 2}), (Crossed{0, 2, 0, 0, 0, 0}));
    EXPECT_EQ(CrossingsOf(both, {5, 12, 12, 12, -7, -7}), (Crossed{0, 1, 0, 0, 2, 0}));
    // What the start did not raise need not be armed again.
    EXPECT_EQ(CrossingsOf({eStartFalling, 10, 2}, {12, 9, 11, 9, 11}), (Crossed{0, 0, 1, 0, 0}));
}

TEST(AlarmThresholds, CrossingsAreThoseOfTheDefinitions)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    const auto number = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int round = 0; round < 20000; ++round) {
        SThresholds thresholds;
        thresholds.startup = static_cast<EStartupAlarm>(number(1, 3));
        thresholds.rising = number(-3, 3);
        thresholds.falling = number(-3, 3); // above the other one, too
        std::vector<int> values(static_cast<std::size_t>(number(1, 12)));
        for (int& value : values)
            value = number(-5, 5);
        ASSERT_EQ(CrossingsOf(thresholds, values), OracleOf(thresholds, values))
            << "seed " << seed << ": " << testing::PrintToString(values) << ", startup "
            << thresholds.startup << ", rising " << thresholds.rising << ", falling "
            << thresholds.falling;
    }
}
