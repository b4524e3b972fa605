// Two hundred thousand bad messages to the real agent.
#include "BadTraffic.h"
#include "tests/support/Seed.h"

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr int kMessages = 40000;
#else
constexpr int kMessages = 200000;
#endif
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr long kMemoryMore = 1024L * 1024; // what was freed is held back
#else
// KiB. The allocator keeps what its threads had in pieces of a megabyte or more.
constexpr long kMemoryMore = 32L * 1024;
#endif
constexpr int kDescriptorsMore = 4; // those of a request that is at work just then

} // namespace

TEST_F(BadTraffic, TwoHundredThousandBadMessagesLeaveTheAgentAsItWas)
{
    BadMessages messages(VLK::Test::Seed(), WholeOnes());
    Send(messages, kMessages / 5);
    const SFootprint warm = SFootprint::Of(m_agent->Pid(), m_store);
    Send(messages, kMessages - kMessages / 5);
    ASSERT_FALSE(HasFailure());
    const SFootprint last = SFootprint::Of(m_agent->Pid(), m_store);
    PrintOutcome(kMessages);
    std::printf("%ld KiB before, %ld KiB behind\n", warm.memory, last.memory);
    EXPECT_LE(last.memory, warm.memory + kMemoryMore);
    EXPECT_LE(last.descriptors, warm.descriptors + kDescriptorsMore);
    EXPECT_GT(m_withData, 0) << "nothing was whole";
    EXPECT_EQ(m_agent->Kill(SIGTERM), 0);
}
