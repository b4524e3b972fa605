// The load of processors, sample by sample.
#include "FakeHost.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

class ProcessorLoads : public testing::Test {
protected:
    // Lets time pass, each processor being busy for that many of a second's hundred
    // ticks, and takes a sample then.
    void Pass(int seconds, std::vector<uint64_t> busy = {})
    {
        host.Set([&](SFakeHost& now) {
            now.milliseconds += int64_t{1000} * seconds;
            for (size_t i = 0; i < now.processors.size(); ++i) {
                const uint64_t part = i < busy.size() ? busy[i] : 0;
                now.processors[i].busy += part * static_cast<uint64_t>(seconds);
                now.processors[i].idle += (100 - part) * static_cast<uint64_t>(seconds);
            }
        });
    }
    void Sampled(int seconds, std::vector<uint64_t> busy = {})
    {
        Pass(seconds, std::move(busy));
        loads.TakeSample();
    }
    void SetProcessors(std::vector<SProcessorTime> processors)
    {
        host.Set([&](SFakeHost& now) { now.processors = std::move(processors); });
    }
    std::vector<int> Loads()
    {
        std::vector<int> told;
        for (const std::optional<int>& load :
             loads.Compare(host.ReadProcessorTimes(), host.Milliseconds()))
            told.push_back(load.value_or(-1));
        return told;
    }
    using Ints = std::vector<int>;

    FakeHost host;
    CProcessorLoads loads{host};
};

} // namespace

TEST_F(ProcessorLoads, ThereIsNoneBeforeASecondIsOver)
{
    SetProcessors({{0, 0, 0}});
    EXPECT_EQ(Loads(), Ints{-1}) << "no sample";
    loads.TakeSample();
    EXPECT_EQ(Loads(), Ints{-1});
    host.Set([](SFakeHost& now) {
        now.milliseconds = 999;
        now.processors = {{0, 50, 50}};
    });
    EXPECT_EQ(Loads(), Ints{-1});
    host.Set([](SFakeHost& now) { now.milliseconds = 1000; });
    EXPECT_EQ(Loads(), Ints{50});
}

TEST_F(ProcessorLoads, CountsFromTheFirstSampleWhileThereIsNoMinute)
{
    SetProcessors({{0, 12345, 99999}, {1, 0, 0}});
    loads.TakeSample();
    Sampled(5, {100, 0});
    EXPECT_EQ(Loads(), (Ints{100, 0}));
    Sampled(5, {0, 0});
    EXPECT_EQ(Loads(), (Ints{50, 0}));
    Sampled(30, {0, 100});
    EXPECT_EQ(Loads(), (Ints{13, 75})) << "12.5 of a hundred, rounded";
}

TEST_F(ProcessorLoads, CountsTheLastMinuteOnly)
{
    SetProcessors({{0, 0, 0}});
    loads.TakeSample();
    for (int i = 0; i < 24; ++i)
        Sampled(5, {100});
    EXPECT_EQ(Loads(), Ints{100});
    for (int i = 1; i <= 12; ++i) {
        Sampled(5, {0});
        EXPECT_EQ(Loads(), Ints{(60 - 5 * i) * 100 / 60 + ((60 - 5 * i) * 100 % 60 >= 30)}) << i;
    }
    EXPECT_EQ(Loads(), Ints{0});
    for (int i = 0; i < 100; ++i)
        Sampled(5, {10});
    EXPECT_EQ(Loads(), Ints{10});
}

TEST_F(ProcessorLoads, BetweenSamplesTheMinuteIsLongerByLessThanFiveSeconds)
{
    SetProcessors({{0, 0, 0}});
    loads.TakeSample();
    Sampled(5, {100});
    for (int i = 0; i < 12; ++i)
        Sampled(5, {0});
    EXPECT_EQ(Loads(), Ints{0}) << "60 seconds";
    Pass(4, {100});
    EXPECT_EQ(Loads(), Ints{6}) << "4 of 64 seconds";
}

TEST_F(ProcessorLoads, SamplesThatDoNotComeLeaveNoLoad)
{
    SetProcessors({{0, 0, 0}});
    loads.TakeSample();
    Sampled(5, {100});
    Pass(115, {0});
    EXPECT_EQ(Loads(), Ints{0}) << "two minutes";
    Pass(5, {0});
    EXPECT_EQ(Loads(), Ints{0});
    Pass(1, {0});
    EXPECT_EQ(Loads(), Ints{-1});
    loads.TakeSample();
    Pass(2, {100});
    EXPECT_EQ(Loads(), Ints{100}) << "an old sample is not of the last minute";
}

TEST_F(ProcessorLoads, AProcessorThatWasAwayCountsFromItsReturn)
{
    SetProcessors({{0, 0, 0}, {1, 0, 0}});
    loads.TakeSample();
    Sampled(5, {100, 100});
    SetProcessors({{0, 500, 0}});
    Sampled(5, {0});
    EXPECT_EQ(Loads(), Ints{50});
    SetProcessors({{0, 500, 500}, {1, 500, 0}});
    EXPECT_EQ(Loads(), (Ints{50, -1}));
    loads.TakeSample();
    EXPECT_EQ(Loads(), (Ints{50, -1}));
    Sampled(5, {0, 20});
    EXPECT_EQ(Loads(), (Ints{33, 20}));
}

TEST_F(ProcessorLoads, AProcessorThatComesLaterCountsFromThen)
{
    SetProcessors({{2, 0, 0}});
    loads.TakeSample();
    Sampled(10, {100});
    SetProcessors({{0, 7, 7}, {2, 1000, 0}, {300, 9, 9}});
    Sampled(0);
    Sampled(10, {10, 0, 30});
    EXPECT_EQ(Loads(), (Ints{10, 50, 30}));
}

TEST_F(ProcessorLoads, CountersThatStepBackCountAsStill)
{
    SetProcessors({{0, 1000, 1000}, {1, 1000, 1000}, {2, 1000, 1000}});
    loads.TakeSample();
    host.Set([](SFakeHost& now) {
        now.milliseconds += 5000;
        now.processors = {{0, 1100, 900}, {1, 900, 1100}, {2, 0, 0}};
    });
    EXPECT_EQ(Loads(), (Ints{100, 0, -1}));
}

TEST_F(ProcessorLoads, AFileThatCannotBeReadForAWhileStartsThemAnew)
{
    SetProcessors({{0, 0, 0}});
    loads.TakeSample();
    Sampled(5, {100});
    SetProcessors({});
    Sampled(5);
    EXPECT_EQ(Loads(), Ints());
    SetProcessors({{0, 1000, 0}});
    Sampled(5, {0});
    EXPECT_EQ(Loads(), Ints{-1});
    Sampled(5, {10});
    EXPECT_EQ(Loads(), Ints{10});
}

TEST_F(ProcessorLoads, TheTimerSamplesUntilItIsStopped)
{
    SetProcessors({{0, 0, 0}});
    ASSERT_TRUE(loads.Start());
    EXPECT_TRUE(loads.Start()) << "once is enough";
    const auto tick = [] { BTimer::GetInstance()->Timeout(CProcessorLoads::kInterval); };
    const int first = host.Readings().processors;
    EXPECT_GE(first, 1) << "at once";
    tick();
    const int second = host.Readings().processors;
    EXPECT_GE(second, first + 1);
    EXPECT_LT(second, first + 3) << "one subscription";
    loads.Stop();
    const int last = host.Readings().processors;
    tick();
    EXPECT_EQ(host.Readings().processors, last);
    loads.Stop();
}

TEST_F(ProcessorLoads, AStartForgetsWhatWasBefore)
{
    SetProcessors({{0, 0, 0}});
    ASSERT_TRUE(loads.Start());
    Pass(30, {100});
    EXPECT_EQ(Loads(), Ints{100});
    loads.Stop();
    ASSERT_TRUE(loads.Start());
    EXPECT_EQ(Loads(), Ints{-1});
    Pass(5, {0});
    EXPECT_EQ(Loads(), Ints{0});
    loads.Stop();
}

TEST_F(ProcessorLoads, MayEndWhileItIsSampled)
{
    {
        CProcessorLoads own(host);
        ASSERT_TRUE(own.Start());
    }
    const int last = host.Readings().processors;
    BTimer::GetInstance()->Timeout(CProcessorLoads::kInterval);
    EXPECT_EQ(host.Readings().processors, last);
}
