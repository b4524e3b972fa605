// Receivers that come and go while the agent runs.
#include "HostAgentsTest.h"

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

using HostSinks = VLK::Test::HostAgents;

TEST_F(HostSinks, SinksThatStayKeepTheirAgentsAndCounters)
{
    agents.Start();
    Receivers();
    engine.deliveries[2]->acknowledged = 7;
    BAgent* const kept = agents.Registry()->GetAgent(BString("trap:udp:192.0.2.2:1162"));
    agents.SetSinks(configuration.trapSinks);
    EXPECT_EQ(engine.receivers.size(), 4u);
    EXPECT_TRUE(engine.removed.empty());

    std::vector<STrapSink> sinks{configuration.trapSinks[2], configuration.trapSinks[0],
                                 configuration.trapSinks[0]};
    sinks[2].address = AddressOf("udp:192.0.2.3:162");
    agents.SetSinks(sinks);
    EXPECT_EQ(engine.removed, (Numbers{1, 3}));
    EXPECT_EQ(engine.receivers.size(), 5u);
    EXPECT_EQ(agents.Registry()->GetNumAgents(), 5);
    EXPECT_EQ(agents.Registry()->GetAgent(BString("trap:udp:192.0.2.2:1162")), kept);
    EXPECT_NE(Parameters("trap:udp:192.0.2.2:1162").find("acknowledged: 7\n"), std::string::npos);
    gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{0, 2, 4}));
    agents.SetSinks({});
    EXPECT_EQ(engine.removed, (Numbers{1, 3, 2, 0, 4}));
    gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr);
    EXPECT_EQ(Receivers(), Numbers());
}

TEST_F(HostSinks, TotalsAreThoseOfTheSinksThatThereAre)
{
    agents.Start();
    gate.SendTrap(BTrapV2(MakeOid(kAuthenticationFailure)), nullptr); // two are not shown it
    unsigned count = 0;
    for (const auto& delivery : engine.deliveries) {
        ++count;
        delivery->sent = count;
        delivery->failed = 10 * count;
        delivery->overflowed = 100 * count;
        delivery->acknowledged = 1000 * count;
        delivery->retried = 10000 * count;
        delivery->givenUp = 100000 * count;
    }
    engine.traffics[0]->overload = 3;
    engine.traffics[1]->overload = 4;
    SAgentTotals totals = agents.Totals();
    EXPECT_EQ(totals.overload, 7u);
    EXPECT_EQ(totals.receivers, 4u);
    EXPECT_EQ(totals.sent, 10u);
    EXPECT_EQ(totals.failed, 100u);
    EXPECT_EQ(totals.notShown, 3u) << "one of them was not shown coldStart either";
    EXPECT_EQ(totals.overflowed, 1000u);
    EXPECT_EQ(totals.acknowledged, 10000u);
    EXPECT_EQ(totals.retried, 100000u);
    EXPECT_EQ(totals.givenUp, 1000000u);
    agents.SetSinks({configuration.trapSinks[2]});
    totals = agents.Totals();
    EXPECT_EQ(totals.receivers, 1u);
    EXPECT_EQ(totals.sent, 3u);
    EXPECT_EQ(totals.notShown, 1u);
}

TEST_F(HostSinks, ASinkOfSnmpV3TellsItsUserAndLevel)
{
    STrapSink sink = configuration.trapSinks[0];
    sink.protocol = eSnmpV3;
    sink.user = "noc";
    sink.level = eAuthPriv;
    sink.security.securityModel = eModelUsm;
    sink.security.securityName = BString("noc");
    sink.security.securityLevel = eAuthPriv;
    SUser user;
    user.name = "noc";
    user.auth = "SHA-256";
    user.priv = "AES";
    agents.SetUsers({user});
    agents.SetSinks({sink});
    ASSERT_EQ(engine.receivers.back().user, "noc");
    const std::string parameters = Parameters("trap:udp:192.0.2.1:162");
    EXPECT_NE(parameters.find("version: 3\n"), std::string::npos) << parameters;
    EXPECT_NE(parameters.find("user: noc\n"), std::string::npos) << parameters;
    EXPECT_NE(parameters.find("level: authPriv\n"), std::string::npos) << parameters;
    EXPECT_EQ(parameters.find("community"), std::string::npos) << parameters;
}

TEST_F(HostSinks, TwoSinksThatAreAlikeAreTwo)
{
    std::vector<STrapSink> sinks(2, configuration.trapSinks[0]);
    agents.SetSinks(sinks);
    EXPECT_EQ(engine.receivers.size(), 5u);
    EXPECT_EQ(engine.removed, (Numbers{1, 2, 3}));
    agents.SetSinks(sinks);
    EXPECT_EQ(engine.receivers.size(), 5u);
    sinks.pop_back();
    agents.SetSinks(sinks);
    EXPECT_EQ(engine.removed, (Numbers{1, 2, 3, 4}));
}

TEST_F(HostSinks, ASinkThatCannotBeSentToIsLeftOutAndTriedTheNextTime)
{
    std::vector<STrapSink> sinks = configuration.trapSinks;
    sinks[1].address = AddressOf("udp:192.0.2.9:162");
    engine.refused = "udp:192.0.2.9:162";
    agents.SetSinks(sinks);
    EXPECT_EQ(agents.Registry()->GetNumAgents(), 5);
    EXPECT_EQ(engine.removed, Numbers{1});
    engine.refused.clear();
    agents.SetSinks(sinks);
    EXPECT_NE(agents.Registry()->GetAgent(BString("trap:udp:192.0.2.9:162")), nullptr);
}

TEST_F(HostSinks, AnAgentDoesNotStartWithASinkThatCannotBeSentTo)
{
    modules::CTargetRows others{nullptr};
    BHostAgents starting(time, access, gate, others);
    FakeEngine refusing;
    refusing.refused = "udp:192.0.2.2:1162";
    try {
        starting.Open(refusing, configuration);
        ADD_FAILURE() << "it starts";
    } catch (const BHostError& error) {
        EXPECT_STREQ(error.what(), "cannot send to udp:192.0.2.2:1162");
    }
}

TEST_F(HostSinks, WithoutMemoryTheSinksStayAsTheyWere)
{
    std::vector<STrapSink> sinks{configuration.trapSinks[0], configuration.trapSinks[2]};
    sinks[1].retries = 9;
    engine.receivers.reserve(1000);
    engine.deliveries.reserve(1000);
    engine.removed.reserve(1000);
    int allocations = 0;
    for (bool isDone = false; !isDone; ++allocations) {
        const size_t added = engine.receivers.size();
        const size_t removed = engine.removed.size();
        {
            FailingAlloc failing(allocations);
            try {
                agents.SetSinks(sinks);
                isDone = true;
            } catch (const std::bad_alloc&) {
            }
        }
        const size_t left = engine.removed.size() - removed;
        EXPECT_EQ(left, isDone ? 3u : engine.receivers.size() - added) << allocations;
        EXPECT_EQ(agents.Registry()->GetNumAgents(), isDone ? 4 : 6);
    }
    EXPECT_GT(allocations, 5);
}

namespace {

// A way to a receiver of the community `all`.
void SetTables(modules::CTargetRows& rows, bool isActive)
{
    rows.addresses.Change("a", [&](modules::SAddressRow& row) {
        row.isActive = isActive;
        row.domain = modules::eDomainUdp;
        row.address = std::string("\xc0\0\2\7\0\xa2", 6);
        row.timeout = 0;
        row.tags = "t";
        row.params = "p";
    });
    rows.params.Change("p", [&](modules::SParamsRow& row) {
        row.isActive = true;
        row.mpModel = modules::eMpV2c;
        row.securityModel = eModelV2c;
        row.securityName = "all";
    });
    rows.notifies.Change("n", [&](modules::SNotifyRow& row) {
        row.isActive = true;
        row.tag = "t";
        row.kind = modules::eNotifyInform;
    });
}

} // namespace

TEST_F(HostSinks, RowsThatManagersSetAreReceiversOnceTheSetIsOver)
{
    SetTables(rows, true);
    EXPECT_EQ(engine.receivers.size(), 4u);
    agents.FollowTables();
    ASSERT_EQ(engine.receivers.size(), 5u);
    const SReceiver& made = engine.receivers[4];
    EXPECT_EQ(made.address.ToString(), "udp:192.0.2.7:162");
    EXPECT_EQ(made.community, "all");
    EXPECT_TRUE(made.isInform);
    EXPECT_EQ(made.timeout, std::chrono::milliseconds(10)) << "an answer takes some time";
    EXPECT_NE(agents.Registry()->GetAgent(BString("trap:udp:192.0.2.7:162")), nullptr);
    agents.SetSinks({});
    EXPECT_EQ(engine.removed, (Numbers{0, 1, 2, 3}));
    SetTables(rows, false);
    agents.FollowTables();
    EXPECT_EQ(engine.removed, (Numbers{0, 1, 2, 3, 4}));
}

// Each SET tries again, and a manager may send many.
TEST_F(HostSinks, RowsThatCannotBeSentToLeaveAFewLines)
{
    engine.refused = "udp:192.0.2.7:162";
    testing::internal::CaptureStderr();
    for (int i = 0; i < 100; ++i) {
        SetTables(rows, true);
        agents.FollowTables();
    }
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string line = "test_host: cannot send to udp:192.0.2.7:162\n";
    EXPECT_EQ(log.find(line), 0u) << log;
    EXPECT_LT(log.size(), 20 * line.size()) << log;
}

TEST_F(HostSinks, WithoutMemoryTheTablesAreFollowedTheNextTime)
{
    SetTables(rows, true);
    engine.receivers.reserve(1000);
    engine.deliveries.reserve(1000);
    engine.removed.reserve(1000);
    int allocations = 0;
    for (bool isDone = false; !isDone; ++allocations) {
        FailingAlloc failing(allocations);
        try {
            agents.FollowTables();
            isDone = !failing.Failed();
        } catch (const std::bad_alloc&) {
        }
    }
    EXPECT_GT(allocations, 10);
    EXPECT_NE(agents.Registry()->GetAgent(BString("trap:udp:192.0.2.7:162")), nullptr);
    EXPECT_EQ(engine.receivers.size(), 5u + engine.removed.size());
}

TEST_F(HostSinks, TablesMayChangeWhileTrapsAreRaised)
{
    agents.Start();
    std::atomic<bool> isOver{false};
    std::thread raising([&] {
        while (!isOver)
            gate.SendTrap(BTrapV2(MakeOid("1.3.6.1.2.1.1.5")), nullptr);
    });
    std::thread configuring([&] {
        std::vector<STrapSink> sinks(1, configuration.trapSinks[0]);
        while (!isOver)
            agents.SetSinks(sinks);
    });
    for (int i = 0; i < 50; ++i) {
        SetTables(rows, i % 2 == 0);
        agents.FollowTables();
    }
    isOver = true;
    raising.join();
    configuring.join();
}

// A sink that goes while traps are raised, and comes again.
TEST_F(HostSinks, SinksMayChangeWhileTrapsAreRaised)
{
    agents.Start();
    std::atomic<bool> isOver{false};
    std::thread raising([&] {
        while (!isOver)
            gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr);
    });
    std::thread reading([&] {
        while (!isOver) {
            const auto registry = agents.Registry();
            registry->AgentAt(registry->GetNumAgents() - 1)->GetParams();
        }
    });
    for (int i = 0; i < 50; ++i) {
        std::vector<STrapSink> sinks = configuration.trapSinks;
        sinks.resize(static_cast<size_t>(i % 3) + 1);
        agents.SetSinks(sinks);
    }
    isOver = true;
    raising.join();
    reading.join();
    EXPECT_EQ(agents.Registry()->GetNumAgents(), 4);
}
