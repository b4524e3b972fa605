// How long a GET of sysDescr.0 takes beside a module that sleeps for two seconds.
//
// The figures are printed; what is asked of them here holds on any machine, however
// busy. To measure, build with optimisation and run on a machine that is idle.
#include "Ber.h"
#include "Footprint.h"
#include "RunningAgent.h"
#include "UdpClient.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using CClock = std::chrono::steady_clock;

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr long kMemoryMore = 1024 * 1024; // what was freed is held back
#else
constexpr long kMemoryMore = 1024; // KiB
#endif
constexpr int kRequests = 5000;
constexpr int kTries = 5;

const ber::Oid kSysDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const ber::Oid kSleeper{1, 3, 6, 1, 4, 1, 32473, 6, 4, 0};

ber::Bytes Get(int requestId, const ber::Oid& name)
{
    return ber::Message(1, "public", 0xa0, requestId, 0, 0, ber::Binding(name));
}

// In microseconds.
struct Times {
    double median = 0;
    double worst = 0;
};

class SlowModule : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_agent.IsReady()) << m_agent.FirstLine(); }

    // One request after the other; an answer that does not come is the worst of all.
    // With a sleeper, one of its requests is always at work.
    Times Measure(bool withSleeper)
    {
        const UdpClient client(m_agent.Port());
        const UdpClient slow(m_agent.Port());
        std::vector<double> times;
        for (int i = 0; i < kRequests; ++i) {
            if (withSleeper && (i == 0 || !slow.Receive(0).empty()))
                slow.Send(Get(1000000 + i, kSleeper));
            const auto begin = CClock::now();
            client.Send(Get(i, kSysDescr));
            EXPECT_FALSE(client.Receive(20000).empty());
            times.push_back(
                std::chrono::duration<double, std::micro>(CClock::now() - begin).count());
        }
        std::sort(times.begin(), times.end());
        return {times[times.size() / 2], times.back()};
    }

    TempDir m_directory;
    std::string m_store = m_directory.File("store.db");
    RunningServer m_agent{{SLOW_AGENT, "--store", m_store, "--listen", "udp:127.0.0.1:0",
                           "--community", "public:ro", "--workers", "8"}};
};

} // namespace

TEST_F(SlowModule, DelaysNoFastRequest)
{
    bool isQuick = false;
    for (int i = 0; i < kTries && !isQuick; ++i) {
        Measure(false);
        const Times alone = Measure(false);
        const Times beside = Measure(true);
        std::printf("alone: median %.1f us, worst %.1f us; beside a sleeper: median %.1f us (%.2f "
                    "times), worst %.1f us\n",
                    alone.median, alone.worst, beside.median, beside.median / alone.median,
                    beside.worst);
        isQuick = beside.median < 4 * alone.median && beside.worst < 1.9e6;
    }
    EXPECT_TRUE(isQuick);
}

TEST_F(SlowModule, AFloodForItTakesNoMemory)
{
    const UdpClient flood(m_agent.Port());
    // What comes while all threads sleep is dropped, the answer to this one too.
    auto send = [&](int count) {
        for (int i = 0; i < count; ++i) {
            flood.Send(Get(i, kSleeper));
            if (i % 100 == 99)
                usleep(1000);
        }
    };
    send(5000);
    const SFootprint before = SFootprint::Of(m_agent.Pid(), m_store);
    send(50000);
    const SFootprint after = SFootprint::Of(m_agent.Pid(), m_store);
    std::printf("flood: %ld KiB and %ld threads before, %ld KiB and %ld threads behind\n",
                before.memory, before.threads, after.memory, after.threads);
    EXPECT_LE(after.memory, before.memory + kMemoryMore + 256 * (after.threads - before.threads));
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(m_agent.Kill(SIGTERM), 0);
}
