#include "host/agents/AuthenticationTraps.h"

#include "tests/support/FakeStore.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

class TrapRecorder : public ITrapSender {
public:
    std::vector<int> generics;
    void SendTrap(const BTrap& trap, const char* agentName) override
    {
        EXPECT_EQ(agentName, nullptr);
        BObjectIdentifier enterprise;
        ESNMPv1TrapType generic;
        int specific;
        EXPECT_TRUE(trap.GetV1TrapParams(enterprise, generic, specific));
        generics.push_back(generic);
    }
};

class AuthenticationTraps : public testing::Test {
protected:
    AuthenticationTraps() { store.numbers["mib-2.snmp/snmpEnableAuthenTraps"] = 1; }

    FakeStore store;
    modules::SSnmpCounters counters;
    TrapRecorder sender;
    BRateLimit::CClock::time_point now{std::chrono::hours(1)};
    BRateLimit limit{[this] { return now; }};
};

} // namespace

TEST_F(AuthenticationTraps, AreSentWhileTheyAreEnabled)
{
    modules::CSnmpModule disabled(counters, nullptr);
    BAuthenticationTraps none(disabled.Group(), sender, limit);
    none.OnAuthenticationFailure();
    EXPECT_TRUE(sender.generics.empty());
    modules::CSnmpModule enabled(counters, &store);
    BAuthenticationTraps all(enabled.Group(), sender, limit);
    all.OnAuthenticationFailure();
    EXPECT_EQ(sender.generics, std::vector<int>{eTrapAuthenticationFailure});
}

TEST_F(AuthenticationTraps, DoNotFloodTheirReceivers)
{
    modules::CSnmpModule enabled(counters, &store);
    BAuthenticationTraps traps(enabled.Group(), sender, limit);
    for (int i = 0; i < 1000; ++i)
        traps.OnAuthenticationFailure();
    EXPECT_EQ(sender.generics.size(), BRateLimit::kBurst);
    now += BRateLimit::kInterval;
    for (int i = 0; i < 1000; ++i)
        traps.OnAuthenticationFailure();
    EXPECT_EQ(sender.generics.size(), BRateLimit::kBurst + 1);
}
