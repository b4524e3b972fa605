#include "host/LimitedLog.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace VLK::host;

namespace {

class LimitedLog : public testing::Test {
protected:
    void Write(int count = 1)
    {
        for (int i = 0; i < count; ++i)
            log.Write([this] {
                ++made;
                return std::string("line");
            });
    }

    BLimitedLog::CClock::time_point now{std::chrono::hours(1)};
    std::vector<std::string> lines;
    int made = 0;
    BLimitedLog log{eLogInfo, [this](ELogLevel, const std::string& line) { lines.push_back(line); },
                    [this] { return now; }};
};

constexpr int kBurst = BLimitedLog::kBurst;

} // namespace

TEST_F(LimitedLog, AFewLinesAreWrittenAtOnceAndNoMore)
{
    Write(kBurst);
    EXPECT_EQ(lines, std::vector<std::string>(kBurst, "line"));
    Write(1000);
    EXPECT_EQ(lines.size(), size_t{kBurst});
    EXPECT_EQ(made, kBurst) << "no text is made for what is left out";
}

TEST_F(LimitedLog, ThenOnePerIntervalAndItTellsHowManyWereLeftOut)
{
    Write(kBurst + 7);
    now += BLimitedLog::kInterval - std::chrono::nanoseconds(1);
    Write();
    EXPECT_EQ(lines.size(), size_t{kBurst});
    now += std::chrono::nanoseconds(1);
    Write(2);
    ASSERT_EQ(lines.size(), size_t{kBurst + 1});
    EXPECT_EQ(lines.back(), "line (8 before it were not logged)");
    now += BLimitedLog::kInterval;
    Write();
    EXPECT_EQ(lines.back(), "line (1 before it were not logged)");
}

TEST_F(LimitedLog, QuietTimesGiveTheBurstBackAndNotMore)
{
    Write(kBurst + 1);
    now += 1000 * BLimitedLog::kInterval;
    Write(kBurst + 1);
    EXPECT_EQ(lines.size(), size_t{2} * kBurst);
    EXPECT_EQ(lines[kBurst], "line (1 before it were not logged)");
    EXPECT_EQ(lines[kBurst + 1], "line");
}

TEST_F(LimitedLog, HalfAnIntervalIsNotLost)
{
    Write(kBurst);
    now += BLimitedLog::kInterval * 3 / 2;
    Write();
    now += BLimitedLog::kInterval / 2;
    Write();
    EXPECT_EQ(lines.size(), size_t{kBurst + 2});
}

TEST_F(LimitedLog, ThreadsTogetherWriteNoMoreThanOne)
{
    std::atomic<int> written{0};
    BLimitedLog shared(
        eLogInfo, [&](ELogLevel, const std::string&) { ++written; }, [this] { return now; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int line = 0; line < 1000; ++line)
                shared.Write([] { return std::string("line"); });
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(written, kBurst);
}
