// The mapping of notifications between their two forms (RFC 3584 section 3).
#include "tests/support/Oids.h"

#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>
#include <vkmibh/traps.h>

namespace VLK {
namespace Test {
namespace {

constexpr char kSnmpTraps[] = "1.3.6.1.6.3.1.1.5";
constexpr char kSnmpTrapEnterprise[] = "1.3.6.1.6.3.1.1.4.3.0";

// A trap in the form of SNMPv1, as text: "enterprise generic specific".
struct V1 {
    BObjectIdentifier enterprise = MakeOid("7.7");
    ESNMPv1TrapType generic = static_cast<ESNMPv1TrapType>(77);
    int specific = 777;

    std::string Text() const
    {
        return TextOf(enterprise) + " " + std::to_string(generic) + " " + std::to_string(specific);
    }
};

BObjectSyntax OidValue(const char* dotted)
{
    BObjectSyntax value;
    value.SetObjectId(MakeOid(dotted));
    return value;
}

class TrapOids : public ::testing::Test {
protected:
    // The notification's identifier, or "failed" when nothing changed.
    std::string ToV2(const char* enterprise, int generic, int specific) const
    {
        BObjectIdentifier trapOid = MakeOid("7.7");
        if (oids.V1ToV2(MakeOid(enterprise), static_cast<ESNMPv1TrapType>(generic), specific,
                        trapOid))
            return TextOf(trapOid);
        EXPECT_EQ(MakeOid("7.7"), trapOid);
        return "failed";
    }
    std::string ToV1(const char* trapOid) const
    {
        V1 trap;
        EXPECT_TRUE(
            oids.V2ToV1(MakeOid(trapOid), bindings, trap.enterprise, trap.generic, trap.specific));
        return trap.Text();
    }

    const BTrapOIDs oids;
    BVarBindList bindings;
};

TEST(TrapTypes, HaveTheNumbersOfSnmpV1)
{
    EXPECT_EQ(0, eTrapColdStart);
    EXPECT_EQ(1, eTrapWarmStart);
    EXPECT_EQ(2, eTrapLinkDown);
    EXPECT_EQ(3, eTrapLinkUp);
    EXPECT_EQ(4, eTrapAuthenticationFailure);
    EXPECT_EQ(5, eTrapEgpNeighborLoss);
    EXPECT_EQ(6, eTrapEnterpriseSpecific);
}

TEST_F(TrapOids, HoldsTheIdentifiersOfNotifications)
{
    EXPECT_EQ("1.3.6.1.2.1.1.3.0", TextOf(oids.SysUpTime()));
    EXPECT_EQ("1.3.6.1.2.1.11", TextOf(oids.SnmpGroup()));
    EXPECT_EQ("1.3.6.1.6.3.1.1.4.1.0", TextOf(oids.SnmpTrapOid()));
    EXPECT_EQ("1.3.6.1.6.3.1.1.4.3.0", TextOf(oids.SnmpTrapEnterprise()));
    EXPECT_EQ("1.3.6.1.6.3.1.1.5", TextOf(oids.SnmpTraps()));
}

TEST_F(TrapOids, StandardTrapsAreTheSixNotificationsWhateverTheRest)
{
    for (int generic = 0; generic < 6; ++generic) {
        const std::string expected = kSnmpTraps + ("." + std::to_string(generic + 1));
        EXPECT_EQ(expected, ToV2("1.3.6.1.4.1.99999", generic, 17));
        EXPECT_EQ(expected, ToV2("", generic, 0));
        EXPECT_EQ(expected, ToV2("1", generic, -1));
    }
}

TEST_F(TrapOids, EnterpriseTrapsAreEnterpriseZeroSpecific)
{
    EXPECT_EQ("1.3.6.1.4.1.99999.0.17", ToV2("1.3.6.1.4.1.99999", 6, 17));
    EXPECT_EQ("1.3.0.0", ToV2("1.3", 6, 0));
    EXPECT_EQ("1.0.0.5", ToV2("1.0", 6, 5));
    EXPECT_EQ("1.3.0.2147483647", ToV2("1.3", 6, 2147483647));
    EXPECT_EQ("1.3.0.4294967295", ToV2("1.3", 6, -1));
}

TEST_F(TrapOids, AnEnterpriseOfLessThanTwoArcsMakesNoNotification)
{
    EXPECT_EQ("failed", ToV2("1", 6, 17));
    EXPECT_EQ("failed", ToV2("", 6, 17));
}

TEST_F(TrapOids, OtherGenericNumbersMakeNoNotification)
{
    for (const int generic : {7, 8, 100, -1, -2, 2147483647, -2147483647 - 1})
        EXPECT_EQ("failed", ToV2("1.3.6.1.4.1.99999", generic, 17)) << generic;
}

TEST_F(TrapOids, TheSixNotificationsAreStandardTraps)
{
    for (int generic = 0; generic < 6; ++generic) {
        const std::string trapOid = kSnmpTraps + ("." + std::to_string(generic + 1));
        EXPECT_EQ(kSnmpTraps + (" " + std::to_string(generic) + " 0"), ToV1(trapOid.c_str()));
    }
}

TEST_F(TrapOids, OnlyAnExactMatchIsAStandardTrap)
{
    EXPECT_EQ("1.3.6.1.6.3.1.1.5 6 7", ToV1("1.3.6.1.6.3.1.1.5.7"));
    EXPECT_EQ("1.3.6.1.6.3.1.1 6 0", ToV1("1.3.6.1.6.3.1.1.0.0"));
    EXPECT_EQ("1.3.6.1.6.3.1.1.5.3 6 1", ToV1("1.3.6.1.6.3.1.1.5.3.1"));
    EXPECT_EQ("1.3.6.1.6.3.1.1 6 5", ToV1(kSnmpTraps));
    EXPECT_EQ("1.3.6.1.6.3.1.1.5.3 6 4", ToV1("1.3.6.1.6.3.1.1.5.3.0.4"));
}

TEST_F(TrapOids, TheEnterpriseOfAStandardTrapIsThatOfItsBinding)
{
    bindings.Append(MakeOid("1.3.6.1.2.1.2.2.1.1.3"), OidValue("1.9"));
    EXPECT_EQ("1.3.6.1.6.3.1.1.5 2 0", ToV1("1.3.6.1.6.3.1.1.5.3"));
    bindings.Append(MakeOid(kSnmpTrapEnterprise), OidValue("1.3.6.1.4.1.99999"));
    EXPECT_EQ("1.3.6.1.4.1.99999 2 0", ToV1("1.3.6.1.6.3.1.1.5.3"));
    bindings.Append(MakeOid(kSnmpTrapEnterprise), OidValue("1.3.6.1.4.1.2"));
    EXPECT_EQ("1.3.6.1.4.1.99999 5 0", ToV1("1.3.6.1.6.3.1.1.5.6")) << "the first one counts";
}

TEST_F(TrapOids, OnlyTheExactNameIsTheEnterprises)
{
    for (const char* name : {"1.3.6.1.6.3.1.1.4.3", "1.3.6.1.6.3.1.1.4.3.0.0",
                             "1.3.6.1.6.3.1.1.4.3.1", "1.3.6.1.6.3.1.1.4.1.0", ""})
        bindings.Append(MakeOid(name), OidValue("1.9"));
    EXPECT_EQ("1.3.6.1.6.3.1.1.5 0 0", ToV1("1.3.6.1.6.3.1.1.5.1"));
}

TEST_F(TrapOids, OtherTrapsTakeNoEnterpriseFromABinding)
{
    bindings.Append(MakeOid(kSnmpTrapEnterprise), OidValue("1.9"));
    EXPECT_EQ("1.3.6.1.4.1.99999 6 17", ToV1("1.3.6.1.4.1.99999.0.17"));
}

TEST_F(TrapOids, CONTRACT_AnEnterpriseBindingThatIsNoObjectIdentifierReadsAsEmpty)
{
    std::vector<BObjectSyntax> values(11);
    values[0].SetNull();
    values[1].SetInt(-1);
    values[2].SetOctets(BString("four letters and more"));
    values[3].SetIpAddress(BIpAddress(255, 255, 255, 255));
    values[4].SetCounter(4294967295u);
    values[5].SetGauge(4294967295u);
    values[6].SetTimeTicks(4294967295u);
    values[7].SetOpaque(BOctetString(BString("opaque")));
    values[8].SetCtr64(SCTR64{4294967295u, 4294967295u});
    values[9].SetV2Exception(eNoSuchObject);
    values[10].SetObjectId(BObjectIdentifier());
    for (const BObjectSyntax& value : values) {
        SCOPED_TRACE(int(value.Syntax()));
        bindings.Clear();
        bindings.Append(MakeOid(kSnmpTrapEnterprise), value);
        bindings.Append(MakeOid(kSnmpTrapEnterprise), OidValue("1.9"));
        EXPECT_EQ(" 2 0", ToV1("1.3.6.1.6.3.1.1.5.3"));
    }
}

TEST_F(TrapOids, AnotherNotificationsLastArcIsItsSpecificNumber)
{
    EXPECT_EQ("1.3.6.1.4.1.99999 6 17", ToV1("1.3.6.1.4.1.99999.0.17"));
    EXPECT_EQ("1.3.6.1.4.1.99999 6 5", ToV1("1.3.6.1.4.1.99999.5"));
    EXPECT_EQ("1.3.6.1.4.1.99999.0 6 5", ToV1("1.3.6.1.4.1.99999.0.0.5"));
    EXPECT_EQ("1.3 6 0", ToV1("1.3.0.0"));
    EXPECT_EQ("1 6 3", ToV1("1.3"));
    EXPECT_EQ(" 6 3", ToV1("0.3"));
    EXPECT_EQ("1.3 6 -1", ToV1("1.3.4294967295"));
    EXPECT_EQ("1.3 6 -2147483648", ToV1("1.3.0.2147483648"));
}

TEST_F(TrapOids, LessThanTwoArcsAreNoTrapButTellTheGenericNumber)
{
    for (const char* trapOid : {"", "0", "1", "4294967295"}) {
        V1 trap;
        EXPECT_FALSE(
            oids.V2ToV1(MakeOid(trapOid), bindings, trap.enterprise, trap.generic, trap.specific));
        EXPECT_EQ("7.7 6 777", trap.Text()) << trapOid;
    }
}

TEST_F(TrapOids, AResultMayBeAnArgument)
{
    BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.99999");
    EXPECT_TRUE(oids.V1ToV2(oid, eTrapEnterpriseSpecific, 17, oid));
    EXPECT_EQ("1.3.6.1.4.1.99999.0.17", TextOf(oid));
    V1 trap;
    EXPECT_TRUE(oids.V2ToV1(oid, bindings, oid, trap.generic, trap.specific));
    EXPECT_EQ("1.3.6.1.4.1.99999", TextOf(oid));
    EXPECT_EQ(17, trap.specific);

    bindings.Append(MakeOid(kSnmpTrapEnterprise), OidValue("1.9"));
    BObjectIdentifier& name = bindings[0].Name();
    EXPECT_TRUE(
        oids.V2ToV1(MakeOid("1.3.6.1.6.3.1.1.5.1"), bindings, name, trap.generic, trap.specific));
    EXPECT_EQ("1.9", TextOf(name));
    EXPECT_TRUE(oids.V2ToV1(oids.SnmpTraps(), bindings, name, trap.generic, trap.specific));
    EXPECT_EQ("1.3.6.1.6.3.1.1", TextOf(name));
}

TEST_F(TrapOids, StandardTrapsComeBackFromARoundTrip)
{
    for (int generic = 0; generic < 6; ++generic) {
        BObjectIdentifier trapOid;
        const auto type = static_cast<ESNMPv1TrapType>(generic);
        EXPECT_TRUE(oids.V1ToV2(MakeOid("1.3.6.1.4.1.1"), type, 99, trapOid));
        V1 trap;
        EXPECT_TRUE(oids.V2ToV1(trapOid, bindings, trap.enterprise, trap.generic, trap.specific));
        EXPECT_EQ(kSnmpTraps + (" " + std::to_string(generic) + " 0"), trap.Text());
    }
}

TEST_F(TrapOids, EnterpriseTrapsComeBackFromARoundTrip)
{
    const unsigned seed = std::random_device{}();
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    const unsigned often[] = {0, 1, 6, 5, 4294967295u};
    for (int round = 0; round < 2000; ++round) {
        Arcs arcs(2 + random() % 20);
        for (unsigned& arc : arcs)
            arc = random() % 2 ? often[random() % 5] : static_cast<unsigned>(random());
        const int specific = static_cast<int>(random() % 2 ? often[random() % 5] : random());
        BObjectIdentifier trapOid;
        ASSERT_TRUE(oids.V1ToV2(MakeOid(arcs), eTrapEnterpriseSpecific, specific, trapOid));
        ASSERT_EQ(arcs.size() + 2, trapOid.Length());
        V1 trap;
        ASSERT_TRUE(oids.V2ToV1(trapOid, bindings, trap.enterprise, trap.generic, trap.specific));
        ASSERT_EQ(TextOf(arcs) + " 6 " + std::to_string(specific), trap.Text()) << "seed " << seed;
    }
}

TEST_F(TrapOids, AnEnterpriseThatEndsInZeroComesBackWhole)
{
    // enterprise.0.0.specific loses only one of the two zeros.
    EXPECT_EQ("1.3.6.0.0.5", ToV2("1.3.6.0", 6, 5));
    EXPECT_EQ("1.3.6.0 6 5", ToV1("1.3.6.0.0.5"));
    // The same trap without the inserted zero loses it.
    EXPECT_EQ("1.3.6 6 5", ToV1("1.3.6.0.5"));
}

class TrapOidsInstance : public ::testing::Test {
protected:
    TrapOidsInstance() { BTrapOIDs::DestroyInstance(); }
    ~TrapOidsInstance() override { BTrapOIDs::DestroyInstance(); }
};

TEST_F(TrapOidsInstance, IsMadeAtFirstUse)
{
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
    BTrapOIDs* const instance = BTrapOIDs::GetInstance();
    ASSERT_NE(nullptr, instance);
    EXPECT_EQ(instance, BTrapOIDs::s_pInstance);
    EXPECT_EQ(instance, BTrapOIDs::GetInstance());
}

TEST_F(TrapOidsInstance, IsOneForThreadsThatAskFirst)
{
    constexpr int kThreads = 4;
    for (int round = 0; round < 200; ++round) {
        BTrapOIDs::DestroyInstance();
        BTrapOIDs* seen[kThreads] = {};
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (BTrapOIDs*& instance : seen) {
            threads.emplace_back([&] {
                ++ready;
                while (ready < kThreads)
                    std::this_thread::yield();
                instance = BTrapOIDs::GetInstance();
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        for (const BTrapOIDs* instance : seen)
            ASSERT_EQ(BTrapOIDs::s_pInstance, instance);
    }
}

TEST_F(TrapOidsInstance, IsGoneAfterDestroyAndMadeAgain)
{
    BTrapOIDs::GetInstance()->Destroy();
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
    EXPECT_NE(nullptr, BTrapOIDs::GetInstance());
    BTrapOIDs::DestroyInstance();
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
    BTrapOIDs::DestroyInstance();
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
}

TEST_F(TrapOidsInstance, IsDestroyedWithAllSingletons)
{
    BTrapOIDs::GetInstance();
    BSingletons::DestroyAll();
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
    EXPECT_NE(nullptr, BTrapOIDs::GetInstance()) << "made again";
}

TEST_F(TrapOidsInstance, ForgetsItselfWhenItIsDeleted)
{
    delete BTrapOIDs::GetInstance();
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
}

TEST_F(TrapOidsInstance, AnObjectOfItsOwnIsNotTheInstanceAndIsNotDeleted)
{
    BTrapOIDs* const instance = BTrapOIDs::GetInstance();
    {
        BTrapOIDs own;
        EXPECT_EQ(instance, BTrapOIDs::s_pInstance);
        own.Destroy(); // destroys the instance
        EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
        BSingletons::DestroyAll();
        EXPECT_EQ("1.3.6.1.2.1.11", TextOf(own.SnmpGroup()));
        BTrapOIDs::GetInstance();
    }
    EXPECT_NE(nullptr, BTrapOIDs::s_pInstance);
}

} // namespace
} // namespace Test
} // namespace VLK
