// What managers change while the agent is killed, many times over.
#include "ViewKills.h"

TEST(UnderKillsSlow, AHundredKillsLoseNothingAcknowledgedAndLeaveNothingHalfDone)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    constexpr int kKills = 30; // these agents start slowly
#else
    constexpr int kKills = 100;
#endif
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    ViewKills kills(seed);
    kills.Run(kKills);
    EXPECT_GT(kills.Acknowledged(), kKills);
    EXPECT_GT(kills.CutOff(), 0) << "no kill came between a SET and its answer";
    EXPECT_GT(kills.Forgotten(), 0) << "no row was there that a restart must not keep";
}
