// Notifications in the hands of agents.
#include "tests/support/Oids.h"

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>
#include <vkmibh/traps.h>

namespace VLK {
namespace Test {
namespace {

// Both forms of a trap: "v2", then "enterprise generic specific".
std::string FormsOf(const BTrap& trap)
{
    BObjectIdentifier trapOid = MakeOid("7.7");
    BObjectIdentifier enterprise = MakeOid("8.8");
    auto generic = static_cast<ESNMPv1TrapType>(77);
    int specific = 777;
    const bool hasV2 = trap.GetV2TrapOid(trapOid);
    const bool hasV1 = trap.GetV1TrapParams(enterprise, generic, specific);
    return (hasV2 ? "" : "no ") + TextOf(trapOid) + ", " + (hasV1 ? "" : "no ") +
           TextOf(enterprise) + " " + std::to_string(generic) + " " + std::to_string(specific);
}

BVarBindList Bindings(const char* name, const char* value)
{
    BObjectSyntax oid;
    oid.SetObjectId(MakeOid(value));
    BVarBindList list;
    list.Append(MakeOid(name), oid);
    return list;
}

TEST(TrapV1, GivesWhatItWasMadeFromAndItsNotification)
{
    const BTrapV1 trap(MakeOid("1.3.6.1.4.1.99999"), eTrapEnterpriseSpecific, 17,
                       Bindings("1.2", "3.4"));
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.99999"), trap.Enterprise());
    EXPECT_EQ(eTrapEnterpriseSpecific, trap.GenericType());
    EXPECT_EQ(17, trap.SpecificType());
    ASSERT_EQ(1u, trap.Bindings().Count());
    EXPECT_EQ(MakeOid("3.4"), trap.Bindings()[0].Value().ObjectId());
    EXPECT_EQ("1.3.6.1.4.1.99999.0.17, 1.3.6.1.4.1.99999 6 17", FormsOf(trap));
}

TEST(TrapV1, KeepsEnterpriseAndSpecificNumberOfAStandardTrap)
{
    EXPECT_EQ("1.3.6.1.6.3.1.1.5.4, 1.3.6.1.4.1.1 3 99",
              FormsOf(BTrapV1(MakeOid("1.3.6.1.4.1.1"), eTrapLinkUp, 99)));
}

TEST(TrapV1, HasNoNotificationWhereTheMappingFails)
{
    EXPECT_EQ("no 7.7, 1 6 17", FormsOf(BTrapV1(MakeOid("1"), eTrapEnterpriseSpecific, 17)));
    EXPECT_EQ("no 7.7, 1.3 7 0",
              FormsOf(BTrapV1(MakeOid("1.3"), static_cast<ESNMPv1TrapType>(7), 0)));
}

TEST(TrapV2, GivesItsIdentifierAndTheParametersOfSnmpV1)
{
    const BTrapV2 trap(MakeOid("1.3.6.1.4.1.99999.0.17"));
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.99999.0.17"), trap.TrapOid());
    EXPECT_EQ(0u, trap.Bindings().Count());
    EXPECT_EQ("1.3.6.1.4.1.99999.0.17, 1.3.6.1.4.1.99999 6 17", FormsOf(trap));
}

TEST(TrapV2, TakesTheEnterpriseFromItsOwnBindings)
{
    const BObjectIdentifier linkDown = MakeOid("1.3.6.1.6.3.1.1.5.3");
    EXPECT_EQ("1.3.6.1.6.3.1.1.5.3, 1.3.6.1.6.3.1.1.5 2 0", FormsOf(BTrapV2(linkDown)));
    EXPECT_EQ("1.3.6.1.6.3.1.1.5.3, 1.3.6.1.4.1.99999 2 0",
              FormsOf(BTrapV2(linkDown, Bindings("1.3.6.1.6.3.1.1.4.3.0", "1.3.6.1.4.1.99999"))));
}

TEST(TrapV2, OneArcHasNoFormOfSnmpV1ButTellsTheGenericNumber)
{
    EXPECT_EQ("1, no 8.8 6 777", FormsOf(BTrapV2(MakeOid("1"))));
}

TEST(Trap, OwnsCopies)
{
    BObjectIdentifier oid = MakeOid("1.3.6.0.5");
    BVarBindList list = Bindings("1.2", "3.4");
    const BTrapV2 trap(oid, list);
    oid.Set(9u);
    list.Clear();
    EXPECT_TRUE(trap.IsWhole());
    EXPECT_EQ(MakeOid("1.3.6.0.5"), trap.TrapOid());
    EXPECT_EQ(1u, trap.Bindings().Count());
}

TEST(Trap, EveryKindOfValueIsCopiedWhole)
{
    BVarBindList list;
    BObjectSyntax value;
    const auto add = [&] { list.Append(MakeOid("1.2"), value); };
    add();
    value.SetOctets(BString("text"));
    add();
    value.SetOctets(BString());
    add();
    value.SetObjectId(BObjectIdentifier());
    add();
    value.SetIpAddress(BIpAddress(1, 2, 3, 4));
    add();
    value.SetCtr64(SCTR64{1, 2});
    add();
    value.SetV2Exception(eEndOfMibView);
    add();
    // A binding of all zero bytes is valid, too.
    alignas(BVarBind) unsigned char zeros[sizeof(BVarBind)] = {};
    list.Append(*reinterpret_cast<const BVarBind*>(zeros));
    EXPECT_TRUE(BTrapV2(MakeOid("1.3"), list).IsWhole());
}

TEST(Trap, MayBeAskedByManyThreadsFromTheFirstUseOn)
{
    const BTrapV1 v1(MakeOid("1.3.6.1.4.1.99999"), eTrapEnterpriseSpecific, 17);
    const BTrapV2 v2(MakeOid("1.3.6.1.6.3.1.1.5.1"));
    for (int round = 0; round < 20; ++round) {
        BTrapOIDs::DestroyInstance();
        std::atomic<int> ready{0};
        std::atomic<int> right{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                ++ready;
                while (ready < 4)
                    std::this_thread::yield();
                right += FormsOf(v1) == "1.3.6.1.4.1.99999.0.17, 1.3.6.1.4.1.99999 6 17" &&
                         FormsOf(v2) == "1.3.6.1.6.3.1.1.5.1, 1.3.6.1.6.3.1.1.5 0 0";
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(4, right);
    }
}

} // namespace
} // namespace Test
} // namespace VLK
