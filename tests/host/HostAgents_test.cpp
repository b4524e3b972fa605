#include "HostAgentsTest.h"

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

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
