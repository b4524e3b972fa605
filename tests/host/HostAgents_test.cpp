#include "host/agents/HostAgents.h"

#include "host/Options.h"

#include "FakeEngine.h"

#include "tests/support/AllocationSweep.h"
#include "tests/support/Oids.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

constexpr const char* kColdStart = "1.3.6.1.6.3.1.1.5.1";
constexpr const char* kAuthenticationFailure = "1.3.6.1.6.3.1.1.5.5";
constexpr const char* kEnterprise = "1.3.6.1.4.1.32473.5";

BTransportAddress AddressOf(const char* text)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text)) << text;
    return address;
}

// Sinks 0 and 1 are sent everything, in versions 2c and 1; sink 2, for informs, what
// concerns the system group and coldStart; sink 3 has a community without rights.
SConfiguration Configured()
{
    SOptions options;
    options.listen = {AddressOf("udp:127.0.0.2:0"), AddressOf("udp:127.0.0.1:1161")};
    options.communities = {{"all", false}};
    SConfiguration configuration = Configure(options);
    SView few{"few", {}};
    few.families.push_back({MakeOid("1.3.6.1.2.1.1"), BOctetString(), eFilterIncluded});
    few.families.push_back({MakeOid(kColdStart), BOctetString(), eFilterIncluded});
    configuration.views.push_back(few);
    AddCommunity(configuration, {"few", "few", "", {}}, {"", "", "few"});
    for (const char* community : {"all", "all", "few", "none"}) {
        STrapSink sink;
        sink.address = AddressOf("udp:192.0.2.1:162");
        sink.community = community;
        sink.protocol = configuration.trapSinks.size() == 1 ? eSnmpV1 : eSnmpV2c;
        sink.isInform = community == std::string("few");
        sink.security = SecurityOf({community, community, "", {}}, sink.protocol);
        configuration.trapSinks.push_back(sink);
    }
    configuration.trapSinks[2].address = AddressOf("udp:192.0.2.2:1162");
    return configuration;
}

BVarBindList OneBinding(const char* name, const BObjectSyntax& value = BObjectSyntax())
{
    BVarBindList list;
    list.Append(MakeOid(name), value);
    return list;
}

class HostAgents : public testing::Test {
protected:
    HostAgents() { agents.Open(engine, configuration); }

    // Receivers of what was sent since it was last asked for.
    std::vector<unsigned> Receivers()
    {
        std::vector<unsigned> receivers;
        for (const FakeEngine::SSent& sent : engine.sent)
            receivers.push_back(sent.receiver);
        engine.sent.clear();
        return receivers;
    }
    std::string Parameters(const char* name)
    {
        return agents.Registry()->GetAgent(BString(name))->GetParams().c_str();
    }

    using Numbers = std::vector<unsigned>;
    SConfiguration configuration = Configured();
    BTime time;
    BAccess access{configuration, nullptr};
    BTrapGate gate;
    modules::CTargetRows rows{nullptr};
    BHostAgents agents{time, access, gate, rows};
    FakeEngine engine;
};

} // namespace

TEST_F(HostAgents, AreNamedAfterTheirAddresses)
{
    for (const char* name :
         {"udp:127.0.0.1:1161", "udp:127.0.0.2:4711", "trap:udp:192.0.2.1:162",
          "trap:udp:192.0.2.1:162#2", "trap:udp:192.0.2.1:162#3", "trap:udp:192.0.2.2:1162"})
        EXPECT_NE(agents.Registry()->GetAgent(BString(name)), nullptr) << name;
    EXPECT_EQ(agents.Registry()->GetNumAgents(), 6);
    ASSERT_EQ(agents.Addresses().size(), 2u);
    EXPECT_EQ(agents.Addresses()[0].ToString(), "udp:127.0.0.2:4711") << "in the order configured";
}

TEST_F(HostAgents, TheirStartIsAColdStartForEverySinkWhoseViewShowsIt)
{
    agents.Start();
    ASSERT_EQ(engine.sent.size(), 3u);
    const SNotification& coldStart = engine.sent[0].notification;
    EXPECT_EQ(coldStart.trapOid, MakeOid(kColdStart));
    EXPECT_EQ(coldStart.bindings.Count(), 0u);
    const SNotification& v1 = engine.sent[1].notification;
    EXPECT_EQ(engine.sent[1].receiver, 1u);
    EXPECT_EQ(v1.enterprise, MakeOid("1.3.6.1.6.3.1.1.5"));
    EXPECT_EQ(v1.generic, eTrapColdStart);
    EXPECT_EQ(v1.specific, 0);
    EXPECT_EQ(Receivers(), (Numbers{0, 1, 2}));
}

TEST_F(HostAgents, TheyAnswerAndSendFromTheirStartToTheirStop)
{
    auto areSuspended = [&](bool expected) {
        for (const STraffic* traffic : engine.traffics)
            EXPECT_EQ(traffic->isSuspended, expected);
        for (const auto& delivery : engine.deliveries)
            EXPECT_EQ(delivery->isSuspended, expected);
    };
    EXPECT_EQ(agents.Registry()->Stop(), 0);
    areSuspended(true);
    agents.Start();
    areSuspended(false);
    EXPECT_EQ(agents.Registry()->Stop(), 0);
    areSuspended(true);
    EXPECT_EQ(agents.Registry()->Start(), 0);
    areSuspended(false);
}

TEST_F(HostAgents, TrapsTellTheUpTimeOfTheSystemGroup)
{
    agents.Start();
    BMib2System record;
    CSystem system(record);
    unsigned now = 0;
    system.OnGet_SysUpTime(0, now);
    ASSERT_GT(now, 0u);
    EXPECT_LE(now - engine.sent[0].notification.upTime, 1000u);
}

TEST_F(HostAgents, TrapsBeforeTheStartAndAfterTheStopGoNowhere)
{
    BTrapV2 trap(MakeOid(kColdStart));
    gate.SendTrap(trap, nullptr);
    EXPECT_EQ(Receivers(), Numbers());
    agents.Start();
    Receivers();
    agents.Stop();
    gate.SendTrap(trap, nullptr);
    EXPECT_EQ(Receivers(), Numbers());
}

TEST_F(HostAgents, ATrapCanGoToOneSinkByItsName)
{
    agents.Start();
    Receivers();
    BTrapV2 trap(MakeOid(kColdStart));
    gate.SendTrap(trap, "trap:udp:192.0.2.1:162#2");
    EXPECT_EQ(Receivers(), Numbers{1});
    gate.SendTrap(trap, "udp:127.0.0.1:1161");
    gate.SendTrap(trap, "nobody");
    EXPECT_EQ(Receivers(), Numbers());
}

TEST_F(HostAgents, ANotificationIsShownWholeOrNotSent)
{
    agents.Start();
    Receivers();
    gate.SendTrap(BTrapV2(MakeOid(kColdStart), OneBinding("1.3.6.1.2.1.1.5.0")), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{0, 1, 2}));
    gate.SendTrap(BTrapV2(MakeOid(kColdStart), OneBinding("1.3.6.1.2.1.2.1.0")), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{0, 1})) << "an object outside the view";
    gate.SendTrap(BTrapV2(MakeOid(kAuthenticationFailure)), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{0, 1})) << "a notification outside the view";
    EXPECT_NE(Parameters("trap:udp:192.0.2.2:1162").find("outside the notify view: 2\n"),
              std::string::npos);
}

TEST(HostAgentsInContexts, ASinkIsShownWhatItsCommunityMaySeeInItsContext)
{
    SConfiguration configuration = Configured();
    configuration.contexts = {"c"};
    SAccess inContext;
    inContext.context = "c";
    inContext.views[eViewNotify] = kViewEverything;
    configuration.groups.push_back({"g", {{eModelV2c, "noc"}}, {inContext}});
    configuration.trapSinks.resize(2);
    for (STrapSink& sink : configuration.trapSinks) {
        sink.protocol = eSnmpV2c;
        sink.security = SecurityOf({"secret", "noc", "", {}}, eSnmpV2c);
    }
    configuration.trapSinks[1].context = BString("c");
    BTime time;
    BAccess access(configuration, nullptr);
    BTrapGate gate;
    modules::CTargetRows rows(nullptr);
    BHostAgents agents(time, access, gate, rows);
    FakeEngine engine;
    agents.Open(engine, configuration);
    agents.Start();
    ASSERT_EQ(engine.sent.size(), 1u);
    EXPECT_EQ(engine.sent[0].receiver, 1u);
}

TEST_F(HostAgents, AViewThatManagersChangeCountsAtOnce)
{
    agents.Start();
    Receivers();
    access.Views().Insert(BString("few"), MakeOid(kAuthenticationFailure), BOctetString(),
                          eFilterIncluded, eStorageVolatile, eRowActive, false);
    gate.SendTrap(BTrapV2(MakeOid(kAuthenticationFailure)), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{0, 1, 2}));
}

TEST_F(HostAgents, BothFormsReachBothVersions)
{
    agents.Start();
    engine.sent.clear();
    gate.SendTrap(BTrapV1(MakeOid(kEnterprise), eTrapEnterpriseSpecific, 17), nullptr);
    gate.SendTrap(BTrapV2(MakeOid("1.3.6.1.4.1.32473.5.0.18")), nullptr);
    ASSERT_EQ(engine.sent.size(), 4u);
    EXPECT_EQ(engine.sent[0].notification.trapOid, MakeOid("1.3.6.1.4.1.32473.5.0.17"));
    EXPECT_EQ(engine.sent[1].notification.specific, 17);
    EXPECT_EQ(engine.sent[2].notification.trapOid, MakeOid("1.3.6.1.4.1.32473.5.0.18"));
    EXPECT_EQ(engine.sent[3].notification.specific, 18);
    for (int i : {1, 3}) {
        EXPECT_EQ(engine.sent[i].notification.enterprise, MakeOid(kEnterprise));
        EXPECT_EQ(engine.sent[i].notification.generic, eTrapEnterpriseSpecific);
    }
}

TEST_F(HostAgents, TheFirstVersionHasNoCounter64)
{
    agents.Start();
    Receivers();
    BObjectSyntax value;
    value.SetCtr64(SCTR64{1, 2});
    gate.SendTrap(BTrapV2(MakeOid(kColdStart), OneBinding("1.3.6.1.2.1.31.1.1.1.6.1", value)),
                  nullptr);
    EXPECT_EQ(Receivers(), Numbers{0});
    EXPECT_EQ(engine.deliveries[1]->failed, 1u);
    EXPECT_EQ(engine.deliveries[0]->failed, 0u);
}

TEST_F(HostAgents, WhatHasNoFormOfANotificationHasFailed)
{
    agents.Start();
    Receivers();
    gate.SendTrap(BTrapV1(MakeOid("1"), eTrapEnterpriseSpecific, 1), nullptr);
    EXPECT_EQ(Receivers(), Numbers());
    for (const auto& delivery : engine.deliveries)
        EXPECT_EQ(delivery->failed, 1u);
}

TEST_F(HostAgents, AnIdentifierThatNoMessageHoldsIsNotSent)
{
    agents.Start();
    Receivers();
    BVarBindList noEnterprise = OneBinding("1.3.6.1.6.3.1.1.4.3.0", BObjectSyntax());
    gate.SendTrap(BTrapV2(MakeOid(kColdStart), noEnterprise), nullptr);
    EXPECT_EQ(Receivers(), Numbers{0}) << "SNMPv1 would name nobody's enterprise";
    gate.SendTrap(BTrapV2(MakeOid("1.17")), nullptr);
    EXPECT_EQ(Receivers(), Numbers{0}) << "the enterprise would be 1";
    gate.SendTrap(BTrapV2(MakeOid("1")), nullptr);
    EXPECT_EQ(Receivers(), Numbers());
    EXPECT_EQ(engine.deliveries[0]->failed, 1u);
    EXPECT_EQ(engine.deliveries[1]->failed, 3u);
}

namespace {

// One whose copies have failed for want of memory.
class PartialTrap : public BTrap {
public:
    PartialTrap() : BTrap(BVarBindList()) { NoteCopy(BObjectIdentifier(), MakeOid(kColdStart)); }
    bool GetV2TrapOid(BObjectIdentifier& trapOid) const override
    {
        trapOid = MakeOid(kColdStart);
        return true;
    }
    bool GetV1TrapParams(BObjectIdentifier& enterprise, ESNMPv1TrapType& generic,
                         int& specific) const override
    {
        enterprise = MakeOid(kEnterprise);
        generic = eTrapColdStart;
        specific = 0;
        return true;
    }
};

} // namespace

TEST_F(HostAgents, ASinkTellsWhetherItPassesTheTrapOn)
{
    agents.Start();
    Receivers();
    BAgent& all = *agents.Registry()->GetAgent(BString("trap:udp:192.0.2.1:162"));
    BAgent& none = *agents.Registry()->GetAgent(BString("trap:udp:192.0.2.1:162#3"));
    EXPECT_EQ(all.SendTrap(BTrapV2(MakeOid(kColdStart)), 0), BSinkAgent::eDone);
    EXPECT_EQ(none.SendTrap(BTrapV2(MakeOid(kColdStart)), 0), BSinkAgent::eNotShown);
    EXPECT_EQ(all.SendTrap(PartialTrap(), 0), BSinkAgent::eNotWhole);
    EXPECT_EQ(Receivers(), Numbers{0});
    EXPECT_EQ(engine.deliveries[0]->failed, 1u);
    EXPECT_EQ(engine.deliveries[3]->failed, 0u);
    EXPECT_NE(Parameters("trap:udp:192.0.2.1:162#3").find("outside the notify view: 2\n"),
              std::string::npos)
        << "with coldStart";
}

TEST_F(HostAgents, WithoutMemoryANotificationIsSentWholeOrHasFailed)
{
    agents.Start();
    Receivers();
    BObjectSyntax value;
    value.SetOctets(BString("a name that is longer than any text that needs no memory"));
    BVarBindList bindings = OneBinding("1.3.6.1.2.1.1.5.0", value);
    BObjectSyntax kind;
    kind.SetObjectId(MakeOid(kEnterprise));
    bindings.Append(MakeOid("1.3.6.1.2.1.1.2.0"), kind);
    const BTrapV2 trap(MakeOid(kColdStart), bindings);
    BAgent& sink = *agents.Registry()->GetAgent(BString("trap:udp:192.0.2.1:162"));
    engine.sent.reserve(engine.sent.capacity() + 4);
    unsigned failed = 0;
    unsigned allocations = VLKTest::SweepAllocations(
        [] { return 0; }, [&](int) { return sink.SendTrap(trap, 0); },
        [&](int, int result) {
            failed += result == BSinkAgent::eNotWhole;
            EXPECT_NE(result, BSinkAgent::eNotShown) << "its objects are shown";
            EXPECT_EQ(engine.deliveries[0]->failed, failed);
            ASSERT_EQ(engine.sent.size(), result == BSinkAgent::eDone ? 1u : 0u);
            for (const FakeEngine::SSent& sent : engine.sent) {
                EXPECT_EQ(sent.notification.trapOid, MakeOid(kColdStart));
                ASSERT_EQ(sent.notification.bindings.Count(), 2u);
                EXPECT_EQ(sent.notification.bindings[0].Name(), bindings[0].Name());
                EXPECT_TRUE(sent.notification.bindings[0].Value().Octets() == value.Octets());
                EXPECT_EQ(sent.notification.bindings[1].Name(), bindings[1].Name());
                EXPECT_EQ(sent.notification.bindings[1].Value().ObjectId(), MakeOid(kEnterprise));
            }
            engine.sent.clear();
        });
    EXPECT_GT(allocations, 0u);
    EXPECT_GT(failed, 0u);
}

TEST_F(HostAgents, AnEngineWithoutMemoryIsNoExceptionForWhoRaisesATrap)
{
    agents.Start();
    Receivers();
    engine.isOutOfMemory = true;
    EXPECT_NO_THROW(gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr));
    EXPECT_EQ(engine.deliveries[0]->failed, 1u);
    BAgent& sink = *agents.Registry()->GetAgent(BString("trap:udp:192.0.2.1:162"));
    EXPECT_EQ(sink.SendTrap(BTrapV2(MakeOid(kColdStart)), 0), BSinkAgent::eNotWhole);
    EXPECT_EQ(engine.deliveries[1]->failed, 1u);
}

TEST_F(HostAgents, SinksThatStayKeepTheirAgentsAndCounters)
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

TEST_F(HostAgents, TwoSinksThatAreAlikeAreTwo)
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

TEST_F(HostAgents, ASinkThatCannotBeSentToIsLeftOutAndTriedTheNextTime)
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

TEST_F(HostAgents, WithoutMemoryTheSinksStayAsTheyWere)
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

TEST_F(HostAgents, RowsThatManagersSetAreReceiversOnceTheSetIsOver)
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

TEST_F(HostAgents, WithoutMemoryTheTablesAreFollowedTheNextTime)
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

TEST_F(HostAgents, TablesMayChangeWhileTrapsAreRaised)
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
TEST_F(HostAgents, SinksMayChangeWhileTrapsAreRaised)
{
    agents.Start();
    std::atomic<bool> isOver{false};
    std::thread raising([&] {
        while (!isOver)
            gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr);
    });
    std::thread reading([&] {
        while (!isOver)
            agents.Registry()->AgentAt(agents.Registry()->GetNumAgents() - 1)->GetParams();
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

TEST_F(HostAgents, ASuspendedSinkIsGivenNothing)
{
    agents.Start();
    Receivers();
    const BString name("trap:udp:192.0.2.1:162");
    EXPECT_EQ(agents.Registry()->Suspend(name), 0);
    gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{1, 2}));
    EXPECT_TRUE(engine.deliveries[0]->isSuspended);
    EXPECT_EQ(agents.Registry()->Resume(name), 0);
    gate.SendTrap(BTrapV2(MakeOid(kColdStart)), nullptr);
    EXPECT_EQ(Receivers(), (Numbers{0, 1, 2}));
}

TEST_F(HostAgents, AListeningAddressIsSuspendedInItsTraffic)
{
    agents.Start();
    const BString name("udp:127.0.0.1:1161");
    EXPECT_EQ(agents.Registry()->Suspend(name), 0);
    EXPECT_TRUE(engine.traffics[1]->isSuspended);
    EXPECT_FALSE(engine.traffics[0]->isSuspended);
    EXPECT_EQ(agents.Registry()->Resume(name), 0);
    EXPECT_FALSE(engine.traffics[1]->isSuspended);
}

TEST_F(HostAgents, ParametersOfAListeningAddress)
{
    engine.traffics[1]->received = 3;
    engine.traffics[1]->answered = 2;
    engine.traffics[1]->dropped = 4294967295u;
    engine.traffics[1]->overload = 5;
    EXPECT_EQ(Parameters("udp:127.0.0.1:1161"), "address: udp:127.0.0.1:1161\n"
                                                "state: running\n"
                                                "received: 3\n"
                                                "answered: 2\n"
                                                "dropped while suspended: 4294967295\n"
                                                "dropped for want of a thread: 5");
}

TEST_F(HostAgents, ParametersOfASinkDoNotShowItsCommunity)
{
    SDelivery& delivery = *engine.deliveries[2];
    delivery.sent = 1;
    delivery.failed = 2;
    delivery.acknowledged = 3;
    delivery.retried = 4;
    delivery.givenUp = 5;
    delivery.overflowed = 6;
    delivery.isSuspended = true;
    EXPECT_EQ(Parameters("trap:udp:192.0.2.2:1162"), "address: udp:192.0.2.2:1162\n"
                                                     "version: 2c, informs\n"
                                                     "community: (not shown)\n"
                                                     "state: suspended\n"
                                                     "sent: 1\n"
                                                     "failed: 2\n"
                                                     "outside the notify view: 0\n"
                                                     "dropped for want of room: 6\n"
                                                     "acknowledged: 3\n"
                                                     "retried: 4\n"
                                                     "given up: 5");
    EXPECT_EQ(Parameters("trap:udp:192.0.2.1:162#2"), "address: udp:192.0.2.1:162\n"
                                                      "version: 1\n"
                                                      "community: (not shown)\n"
                                                      "state: running\n"
                                                      "sent: 0\n"
                                                      "failed: 0\n"
                                                      "outside the notify view: 0\n"
                                                      "dropped for want of room: 0");
}
