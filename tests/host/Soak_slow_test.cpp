// The agent under all kinds of traffic at once, for VKMIBH_SOAK_SECONDS (20 of them
// where nothing is said): what it takes of the machine stays the same.
#include "SoakTraffic.h"
#include "tests/support/Seed.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr long kMemoryMore = 1024L * 1024; // what was freed is held back
#else
// KiB. The allocator keeps what its threads had in pieces of a megabyte or more.
constexpr long kMemoryMore = 16L * 1024;
#endif
constexpr int kDescriptorsMore = 4; // those of a request that is at work just then
// What one large request takes for a moment.
constexpr long kMemoryAtOnce = 16L * 1024;
constexpr long kMostThreads = 2 + 8 + 6; // of the engine with its workers, and others
constexpr size_t kLooks = 20;

long Seconds()
{
    const char* seconds = std::getenv("VKMIBH_SOAK_SECONDS");
    return seconds ? std::max(10l, std::stol(seconds)) : 20;
}

void Print(long seconds, const SoakTraffic& traffic, const SFootprint& now)
{
    std::printf("after %ld s: %ld asked, %ld KiB, %ld threads, %ld descriptors, %ld octets in the "
                "store, %d notifications\n",
                seconds, traffic.Asked(), now.memory, now.threads, now.descriptors, now.store,
                traffic.Receiver().Taken());
    std::fflush(stdout);
}

} // namespace

TEST(Soak, LeavesTheAgentAsItWas)
{
    using CClock = std::chrono::steady_clock;
    TempDir directory;
    SoakTraffic traffic(VLK::Test::Seed(), directory.Path());
    ASSERT_TRUE(traffic.IsReady()) << traffic.Log();
    traffic.FillLog();
    const auto begin = CClock::now();
    const auto pause = std::chrono::milliseconds(1000 * Seconds()) / kLooks;
    std::vector<SFootprint> footprints;
    while (footprints.size() < kLooks && !testing::Test::HasFailure()) {
        const auto end = begin + static_cast<int>(footprints.size() + 1) * pause;
        while (CClock::now() < end && !testing::Test::HasFailure())
            traffic.Step();
        footprints.push_back(traffic.Footprint());
        const auto passed = std::chrono::duration_cast<std::chrono::seconds>(CClock::now() - begin);
        Print(static_cast<long>(passed.count()), traffic, footprints.back());
    }
    ASSERT_FALSE(testing::Test::HasFailure()) << traffic.Log();
    const SFootprint& warm = footprints[kLooks / 2];
    const SFootprint& last = footprints.back();
    auto isLess = [](const SFootprint& a, const SFootprint& b) { return a.memory < b.memory; };
    const auto half = footprints.begin() + kLooks / 2;
    const long before = std::max_element(footprints.begin(), half, isLess)->memory;
    EXPECT_LE(std::min_element(half + kLooks / 4, footprints.end(), isLess)->memory,
              before + kMemoryMore);
    EXPECT_LE(std::max_element(half, footprints.end(), isLess)->memory,
              before + kMemoryMore + kMemoryAtOnce);
    for (const SFootprint& footprint : footprints)
        EXPECT_LE(footprint.threads, kMostThreads);
    EXPECT_LE(last.descriptors, warm.descriptors + kDescriptorsMore);
    EXPECT_LE(last.store, warm.store + 65536); // the rows that are there just now
    EXPECT_GT(traffic.Receiver().Answered(), 0);
    EXPECT_EQ(traffic.End(), 0) << traffic.Log();
}
