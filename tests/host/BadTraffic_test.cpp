// Whatever a datagram holds: the agent goes on, and tells nobody what he may not know.
#include "BadTraffic.h"

#include "host/wire/DatagramCheck.h"
#include "tests/support/Seed.h"

using VLK::Test::Seed;

TEST_F(BadTraffic, AFewThousandBadMessagesChangeNothing)
{
    BadMessages messages(Seed(), WholeOnes());
    Send(messages, 4000);
    PrintOutcome(4000);
    EXPECT_GT(m_withData, 0) << "nothing was whole";
    EXPECT_GT(m_reports, 0);
    EXPECT_EQ(m_agent->Kill(SIGTERM), 0);
}
