// Notifications whose allocations fail one after the other.
#include "tests/support/AllocationSweep.h"
#include "tests/support/Oids.h"

#include <memory>
#include <new>
#include <string>
#include <vkmibh/traps.h>

namespace VLK {
namespace Test {
namespace {

using VLKTest::SweepAllocations;

struct Results {
    BObjectIdentifier oid = MakeOid("7.7");
    ESNMPv1TrapType generic = static_cast<ESNMPv1TrapType>(77);
    int specific = 777;
};

TEST(TrapMemory, TheInstanceIsMadeWholeOrNotAtAll)
{
    BTrapOIDs::GetInstance(); // what the registry of singletons keeps stays
    BTrapOIDs::DestroyInstance();
    const unsigned allocations = SweepAllocations(
        [] {
            BTrapOIDs::DestroyInstance();
            return 0;
        },
        [](int) { return BTrapOIDs::GetInstance() != nullptr; },
        [](int, bool done) {
            EXPECT_EQ(done, BTrapOIDs::s_pInstance != nullptr);
            Results results;
            if (done) {
                EXPECT_TRUE(BTrapOIDs::s_pInstance.load()->V1ToV2(
                    MakeOid("1.3"), eTrapEgpNeighborLoss, 0, results.oid));
            }
            BTrapOIDs::DestroyInstance();
        });
    EXPECT_GE(allocations, 12u) << "the object and its eleven identifiers";
}

// Whether an object maps; it maps all or nothing.
bool Maps(const BTrapOIDs& oids)
{
    const BVarBindList none;
    Results results;
    const bool maps = oids.V1ToV2(MakeOid("1.3"), eTrapEnterpriseSpecific, 5, results.oid);
    for (int generic = 0; generic < 6; ++generic) {
        const auto type = static_cast<ESNMPv1TrapType>(generic);
        EXPECT_EQ(maps, oids.V1ToV2(MakeOid("1.3"), type, 5, results.oid)) << generic;
    }
    for (const char* trapOid : {"1.3.6.1.6.3.1.1.5.1", "1.3.0.5"})
        EXPECT_EQ(maps, oids.V2ToV1(MakeOid(trapOid), none, results.oid, results.generic,
                                    results.specific))
            << trapOid;
    EXPECT_FALSE(
        oids.V2ToV1(BObjectIdentifier(), none, results.oid, results.generic, results.specific));
    return maps;
}

TEST(TrapMemory, AnObjectThatIsNotWholeMapsNothing)
{
    alignas(BTrapOIDs) static unsigned char s_storage[sizeof(BTrapOIDs)];
    unsigned mapping = 0;
    unsigned refused = 0;
    for (int granted = 0;; ++granted) {
        BTrapOIDs* oids = nullptr;
        bool failed = false;
        {
            const FailingAlloc fail(granted, FailingAlloc::eNextOnly);
            oids = new (s_storage) BTrapOIDs;
            failed = fail.Failed();
        }
        const bool maps = Maps(*oids);
        oids->~BTrapOIDs();
        if (!failed) {
            EXPECT_TRUE(maps);
            break;
        }
        ++(maps ? mapping : refused);
    }
    EXPECT_EQ(1u, mapping) << "it is only not registered as a singleton";
    EXPECT_GE(refused, 11u);
}

class TrapMapping : public ::testing::Test {
protected:
    const BTrapOIDs& oids = *BTrapOIDs::GetInstance();
    BVarBindList bindings;

    // Sweeps V2ToV1() of a notification with room for none of its results.
    void SweepToV1(const char* trapOid, const std::string& enterprise, int generic, int specific)
    {
        const BObjectIdentifier oid = MakeOid(trapOid);
        SweepAllocations([] { return Results(); },
                         [&](Results& results) {
                             return oids.V2ToV1(oid, bindings, results.oid, results.generic,
                                                results.specific);
                         },
                         [&](Results& results, bool done) {
                             EXPECT_EQ(generic, results.generic);
                             EXPECT_EQ(done ? enterprise : "7.7", TextOf(results.oid));
                             EXPECT_EQ(done ? specific : 777, results.specific);
                         });
    }
};

TEST_F(TrapMapping, LeavesItsResultsAsTheyWereButForTheGenericNumber)
{
    SweepToV1("1.3.6.1.6.3.1.1.5.4", "1.3.6.1.6.3.1.1.5", 3, 0);
    SweepToV1("1.3.6.1.4.1.99999.0.17", "1.3.6.1.4.1.99999", 6, 17);
    const std::string enterprise = TextOf(Arcs(20, 1)); // more than the result has room for
    SweepToV1((enterprise + ".0.17").c_str(), enterprise, 6, 17);
    BObjectSyntax value;
    value.SetObjectId(MakeOid(Arcs(20, 1)));
    bindings.Append(oids.SnmpTrapEnterprise(), value);
    SweepToV1("1.3.6.1.6.3.1.1.5.4", enterprise, 3, 0);
}

TEST_F(TrapMapping, LeavesTheNotificationAsItWas)
{
    // Room is taken for the enterprise, for the zero after it, for the last arc.
    for (const unsigned arcs : {20u, 16u, 15u}) {
        const BObjectIdentifier enterprise = MakeOid(Arcs(arcs, 1));
        const std::string expected[] = {"1.3.6.1.6.3.1.1.5.4", TextOf(enterprise) + ".0.5"};
        for (const ESNMPv1TrapType generic : {eTrapLinkUp, eTrapEnterpriseSpecific}) {
            const std::string& whole = expected[generic == eTrapEnterpriseSpecific];
            SweepAllocations([] { return MakeOid("7.7"); },
                             [&](BObjectIdentifier& trapOid) {
                                 return oids.V1ToV2(enterprise, generic, 5, trapOid);
                             },
                             [&](BObjectIdentifier& trapOid, bool done) {
                                 EXPECT_EQ(done ? whole : "7.7", TextOf(trapOid));
                             });
        }
    }
}

TEST(TrapMemory, ATrapThatIsNotWholeHasNeitherForm)
{
    BTrapOIDs::GetInstance();
    const BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.99999.0.17");
    BVarBindList bindings;
    BObjectSyntax value;
    for (int i = 0; i < 3; ++i) {
        value.SetObjectId(oid);
        bindings.Append(oid, value);
        value.SetOctets(BString("a text that needs memory"));
        bindings.Append(oid, value);
    }
    unsigned incomplete = 0;
    const auto check = [&](auto make) {
        for (int granted = 0;; ++granted) {
            bool failed = false;
            const auto makeTrap = [&] {
                const FailingAlloc fail(granted, FailingAlloc::eNextOnly);
                auto trap = make();
                failed = fail.Failed();
                return trap;
            };
            const auto trap = makeTrap();
            Results results;
            EXPECT_EQ(!failed, trap->IsWhole()) << granted;
            EXPECT_EQ(!failed, trap->GetV2TrapOid(results.oid));
            EXPECT_EQ(!failed,
                      trap->GetV1TrapParams(results.oid, results.generic, results.specific));
            EXPECT_EQ(failed, results.oid == MakeOid("7.7"));
            EXPECT_EQ(failed, results.specific == 777);
            if (!failed)
                return;
            ++incomplete;
        }
    };
    alignas(BTrapV1) static unsigned char s_v1[sizeof(BTrapV1)];
    alignas(BTrapV2) static unsigned char s_v2[sizeof(BTrapV2)];
    struct Destroy {
        void operator()(BTrap* trap) const { trap->~BTrap(); }
    };
    using Placed = std::unique_ptr<BTrap, Destroy>;
    check([&] { return Placed(new (s_v1) BTrapV1(oid, eTrapEnterpriseSpecific, 5, bindings)); });
    check([&] { return Placed(new (s_v2) BTrapV2(oid, bindings)); });
    EXPECT_GE(incomplete, 2 * (1 + 1 + 12u)) << "identifier, list, and each name and value";
}

TEST(TrapMemory, WithoutAnInstanceATrapHasOnlyTheFormItWasMadeFrom)
{
    const BTrapV1 v1(MakeOid("1.3.6.1.4.1.1"), eTrapLinkUp, 5);
    const BTrapV2 v2(MakeOid("1.3.6.1.6.3.1.1.5.4"));
    BTrapOIDs::DestroyInstance();
    Results results;
    {
        const FailingAlloc fail(0);
        EXPECT_FALSE(v1.GetV2TrapOid(results.oid));
        EXPECT_FALSE(v2.GetV1TrapParams(results.oid, results.generic, results.specific));
        EXPECT_TRUE(fail.Failed());
    }
    EXPECT_EQ(nullptr, BTrapOIDs::s_pInstance);
    EXPECT_EQ("7.7", TextOf(results.oid));
    EXPECT_EQ(77, results.generic);
    EXPECT_EQ(777, results.specific);
}

TEST(TrapMemory, TheFormThatATrapHasIsToldWholeOrNotAtAll)
{
    const BObjectIdentifier oid = MakeOid(Arcs(20, 1)); // more than the results have room for
    const BTrapV1 v1(oid, eTrapColdStart, 5);
    SweepAllocations([] { return Results(); },
                     [&](Results& results) {
                         return v1.GetV1TrapParams(results.oid, results.generic, results.specific);
                     },
                     [&](Results& results, bool done) {
                         EXPECT_EQ(done ? v1.Enterprise() : MakeOid("7.7"), results.oid);
                         EXPECT_EQ(done ? 0 : 77, results.generic);
                         EXPECT_EQ(done ? 5 : 777, results.specific);
                     });
    const BTrapV2 v2(oid);
    SweepAllocations([] { return Results(); },
                     [&](Results& results) { return v2.GetV2TrapOid(results.oid); },
                     [&](Results& results, bool done) {
                         EXPECT_EQ(done ? v2.TrapOid() : MakeOid("7.7"), results.oid);
                     });
}

} // namespace
} // namespace Test
} // namespace VLK
