// Requests whose allocations fail one after the other: they end with a status,
// leak nothing and leave no lock behind.
#include "tests/support/AllocationSweep.h"
#include "tests/support/CallbackHandler.h"
#include "tests/support/Oids.h"
#include <vkmibh/testing/requests.h>

#include <vkmibh/system.h>

#include <gtest/gtest.h>

#include <optional>

namespace VLK {
namespace Test {
namespace {

// Serves every name under 1.3.5 without taking memory; a GETNEXT answers what
// stands in `next`.
class Frugal : public BMibSubtreeHandler {
public:
    explicit Frugal(const char* oid) : BMibSubtreeHandler(BString("frugal"), MakeOid(oid)) {}
    using BMibSubtreeHandler::GetNext;
    int Get(unsigned, BVarBindList& list, int& index, int count) override
    {
        for (int i = index; i < index + count; ++i)
            list[i].Value().SetInt(i);
        return status;
    }
    int GetNext(unsigned, BVarBind& binding) override
    {
        if (binding.Name().Compare(next) >= 0)
            return eSnmpNoSuchName;
        binding.Value().SetInt(1);
        return binding.Name().Set(next) ? eSnmpNoError : eSnmpGenErr;
    }
    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int) override
    {
        ++sets;
        return eSnmpNoError;
    }

    int status = eSnmpNoError;
    int sets = 0;
    BObjectIdentifier next;
};

BVarBindList LongList(int count, bool withValues)
{
    BVarBindList list;
    BObjectSyntax value;
    if (withValues)
        value.SetOctets(BString("a value that needs memory"));
    for (int i = 0; i < count; ++i)
        list.Append(MakeOid(Arcs{1, 3, 5, unsigned(i), 1, 2, 3, 4, 5, 6}), value);
    return list;
}

class OutOfMemory : public ::testing::Test {
protected:
    OutOfMemory() : handler(nullptr), module("1.3.5")
    {
        handler.RegisterSubtreeHandler(&module);
        BTransactions::GetInstance(); // stays for the rest of the process
    }
    int Query(int pduType, BVarBindList& list)
    {
        errorIndex = 0;
        return handler.Query(pduType, 0, security, context, list, errorIndex);
    }
    void ExpectNoLockHeld()
    {
        Frugal other("1.3.7");
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&other));
        EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&other));
    }

    BMibHandler handler;
    Frugal module;
    BSecurityParams security;
    BString context;
    int errorIndex = 0;
};

TEST_F(OutOfMemory, AGetThatCannotKeepItsListIsAGeneralError)
{
    for (bool withValues : {false, true}) {
        const BVarBindList sent = LongList(20, withValues);
        const unsigned allocations = VLKTest::SweepAllocations(
            [&] { return BVarBindList(sent); },
            [&](BVarBindList& list) { return Query(ePduGet, list); },
            [&](BVarBindList& list, int status) {
                EXPECT_TRUE(status == eSnmpNoError || status == eSnmpGenErr) << status;
                ASSERT_EQ(20u, list.Count());
                EXPECT_EQ(sent[7].Name(), list[7].Name());
                EXPECT_EQ(status ? sent[7].Value().Syntax() : unsigned(eAsnInteger),
                          list[7].Value().Syntax());
            });
        EXPECT_GT(allocations, 0u);
        ExpectNoLockHeld();
    }
}

// Nobody could keep its modules from going while they answer.
TEST_F(OutOfMemory, AnAgentThatFoundNoMemoryForItsLockRefusesAll)
{
    int refusing = 0;
    bool isRefused = true;
    for (int allowed = 0; isRefused; ++allowed) {
        BMibTree tree;
        std::optional<BMibHandler> agent;
        {
            const FailingAlloc fail(allowed, FailingAlloc::eNextOnly);
            agent.emplace(&tree, nullptr);
            isRefused = fail.Failed();
        }
        Frugal asked("1.3.5");
        if (agent->RegisterSubtreeHandler(&asked)) {
            EXPECT_EQ(1, agent->UnregisterSubtreeHandler(&asked));
            continue;
        }
        ++refusing;
        for (const int pduType : {ePduGet, ePduGetNext, ePduGetBulk, ePduSet}) {
            BVarBindList list = LongList(2, true);
            EXPECT_EQ(eSnmpGenErr, agent->Query(pduType, 0, security, context, list, errorIndex));
            EXPECT_EQ(unsigned(eAsnOctetString), list[1].Value().Syntax());
        }
        EXPECT_EQ(0, asked.sets);
    }
    EXPECT_EQ(1, refusing);
}

TEST_F(OutOfMemory, AFailedGetGivesItsListBackWhole)
{
    module.status = eSnmpGenErr;
    for (bool withValues : {false, true}) {
        const BVarBindList sent = LongList(20, withValues);
        VLKTest::SweepAllocations([&] { return BVarBindList(sent); },
                                  [&](BVarBindList& list) { return Query(ePduGet, list); },
                                  [&](BVarBindList& list, int status) {
                                      EXPECT_EQ(5, status);
                                      ASSERT_EQ(20u, list.Count());
                                      for (int i = 0; i < 20; ++i) {
                                          EXPECT_EQ(sent[i].Name(), list[i].Name());
                                          EXPECT_STREQ(sent[i].Value().ValToStr().c_str(),
                                                       list[i].Value().ValToStr().c_str());
                                      }
                                  });
    }
}

TEST_F(OutOfMemory, AShortGetNeedsNoMemory)
{
    BVarBindList list = LongList(3, false);
    FailingAlloc fail(0);
    EXPECT_EQ(0, Query(ePduGet, list));
    EXPECT_FALSE(fail.Failed());
}

TEST_F(OutOfMemory, AGetNextAnswersRightOrNotAtAll)
{
    Frugal inner("1.3.5.1");
    handler.RegisterSubtreeHandler(&inner);
    module.next = MakeOid("1.3.5.3.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0");
    // The third one ends the search of its region.
    for (const char* innerNext :
         {"1.3.5", "1.3.5.1.7.1.1.1.1.1.1.1.1.1.1.1.1.1.1.1.1.1", "1.3.5.2"})
        for (const char* from : {"1.3.5", "1.3.5.1", "1.3.5.2", "1.3.5.9", "1.2"}) {
            inner.next = MakeOid(innerNext);
            BVarBindList sent;
            sent.Append(MakeOid(from));
            BVarBindList right = sent;
            ASSERT_EQ(0, Query(ePduGetNext, right));
            VLKTest::SweepAllocations(
                [&] { return BVarBindList(sent); },
                [&](BVarBindList& list) { return Query(ePduGetNext, list); },
                [&](BVarBindList& list, int status) {
                    EXPECT_TRUE(status == eSnmpNoError || status == eSnmpGenErr) << status;
                    const BVarBind& expected = status ? sent[0] : right[0];
                    EXPECT_EQ(expected.Name(), list[0].Name()) << from;
                    EXPECT_EQ(expected.Value().Syntax(), list[0].Value().Syntax()) << from;
                });
        }
    ExpectNoLockHeld();
    handler.UnregisterSubtreeHandler(&inner);
}

TEST_F(OutOfMemory, AGetNextPastModulesThatGoBackOrEndGoesForwardOrNowhere)
{
    // Its answers have a storage of their own, and no room for the name that was asked for.
    const char* answer = nullptr;
    const auto answers = [&](unsigned, BVarBind& binding) {
        BObjectIdentifier own;
        for (const unsigned arc : ArcsOf(MakeOid(answer)))
            if (!own.Append(arc))
                return int(eSnmpGenErr);
        binding.Name() = std::move(own);
        binding.Value().SetInt(1);
        return int(eSnmpNoError);
    };
    const auto appends = [](unsigned, BVarBind& binding) {
        binding.Value().SetInt(2);
        return binding.Name().Append(0u) ? int(eSnmpNoError) : int(eSnmpGenErr);
    };
    const auto goesBack = [](unsigned, BVarBind& binding) {
        binding.Value().SetInt(3);
        binding.Name()[1] = 0;
        return int(eSnmpNoError);
    };
    CallbackHandler inner("1.3.5.1");
    CallbackHandler after("1.3.5.4");
    inner.onGetNext = answers;
    handler.RegisterSubtreeHandler(&inner);
    handler.RegisterSubtreeHandler(&after);
    BVarBindList sent;
    sent.Append(MakeOid("1.3.5.1.7.1.1.1.1.1.1.1.1.1.1.1.1.1.1.1.1.1"));
    for (const bool afterAppends : {true, false})
        for (const char* given : {"1.2", "1.3.5.2"}) {
            answer = given;
            after.onGetNext = afterAppends ? decltype(after.onGetNext)(appends) : goesBack;
            VLKTest::SweepAllocations(
                [&] { return BVarBindList(sent); },
                [&](BVarBindList& list) { return Query(ePduGetNext, list); },
                [&](BVarBindList& list, int status) {
                    EXPECT_TRUE(status == eSnmpNoError || status == eSnmpGenErr);
                    const int order = list[0].Name().Compare(sent[0].Name());
                    const bool ended = list[0].Value().Syntax() == eEndOfMibView;
                    EXPECT_EQ(status == eSnmpNoError && !ended, order > 0) << given << afterAppends;
                    EXPECT_GE(order, 0);
                });
        }
    ExpectNoLockHeld();
    handler.UnregisterSubtreeHandler(&inner);
    handler.UnregisterSubtreeHandler(&after);
}

TEST_F(OutOfMemory, ASetWithoutItsSlotsRunsNoPhase)
{
    BVarBindList list = LongList(40, false);
    {
        FailingAlloc fail(0);
        EXPECT_EQ(13, Query(ePduSet, list));
        EXPECT_TRUE(fail.Failed());
    }
    EXPECT_EQ(0, errorIndex);
    EXPECT_EQ(0, module.sets);
    ExpectNoLockHeld();
    EXPECT_EQ(0, Query(ePduSet, list));
    EXPECT_EQ(3, module.sets);
}

TEST_F(OutOfMemory, APhaseOfTheSystemGroupHappensOrDoesNot)
{
    BMib2System system;
    CSystem group(system);
    void* slot = nullptr;
    const BString longer(std::string(200, 'x').c_str());
    for (int granted : {0, 1}) {
        FailingAlloc fail(granted);
        EXPECT_EQ(13, group.OnSet_SysContact(eSetTest, 1, longer, &slot)) << granted;
        EXPECT_EQ(nullptr, slot);
    }
    ASSERT_EQ(0, group.OnSet_SysContact(eSetTest, 1, longer, &slot));
    {
        FailingAlloc fail(0);
        EXPECT_EQ(14, group.OnSet_SysContact(eSetCommit, 1, longer, &slot));
    }
    EXPECT_STREQ("Mr. Qwin", system.Contact().c_str());
    EXPECT_EQ(0, group.OnSet_SysContact(eSetCommit, 1, longer, &slot));
    FailingAlloc fail(0);
    EXPECT_EQ(0, group.OnSet_SysContact(eSetUndo, 1, longer, &slot)) << "the storage is there";
    EXPECT_EQ(0, group.OnSet_SysContact(eSetCleanup, 1, longer, &slot));
    EXPECT_EQ(nullptr, slot);
}

TEST_F(OutOfMemory, TheSystemGroupAnswersRightOrNotAtAll)
{
    handler.Init(nullptr, nullptr);
    for (const char* name :
         {"1.3.6.1.2.1.1.1.0", "1.3.6.1.2.1.1.2.0", "1.3.6.1.2.1.1.4.0", "1.3.6.1.2.1.1.5.0",
          "1.3.6.1.2.1.1.6.0", "1.3.6.1.2.1.1.9.2.3", "1.3.6.1.2.1.1.9.3.3"}) {
        BVarBindList sent;
        sent.Append(MakeOid(name));
        BVarBindList right = sent;
        ASSERT_EQ(0, Query(ePduGet, right));
        VLKTest::SweepAllocations([&] { return BVarBindList(sent); },
                                  [&](BVarBindList& list) { return Query(ePduGet, list); },
                                  [&](BVarBindList& list, int status) {
                                      EXPECT_TRUE(status == eSnmpNoError || status == eSnmpGenErr)
                                          << status;
                                      const BVarBind& expected = status ? sent[0] : right[0];
                                      EXPECT_STREQ(expected.Value().ValToStr().c_str(),
                                                   list[0].Value().ValToStr().c_str())
                                          << name;
                                  });
    }
}

TEST_F(OutOfMemory, TheTextKeptForUndoIsTheWholeOne)
{
    BMib2System system;
    CSystem group(system);
    VLKTest::SweepAllocations(
        [] { return static_cast<void*>(nullptr); },
        [&](void*& slot) { return group.OnSet_SysContact(eSetTest, 1, BString(), &slot); },
        [&](void*& slot, int status) {
            if (status == eSnmpNoError) {
                EXPECT_STREQ("Mr. Qwin", static_cast<BString*>(slot)->c_str());
            } else {
                EXPECT_EQ(13, status);
                EXPECT_EQ(nullptr, slot);
            }
            group.OnSet_SysContact(eSetCleanup, 1, BString(), &slot);
        });
}

TEST_F(OutOfMemory, SysORRowsAreAddedWholeOrNotAtAll)
{
    const BObjectIdentifier id = MakeOid("1.3.6.1.4.1.32473.9.9.9.9.9.9.9.9.9.9.9.9");
    const BString descr("a description");
    VLKTest::SweepAllocations(
        [] { return std::make_unique<BMib2System>(); },
        [&](std::unique_ptr<BMib2System>& system) { return system->InsertORRow(id, descr); },
        [&](std::unique_ptr<BMib2System>& system, bool done) {
            EXPECT_EQ(done ? 1 : 0, system->GetNumORRows());
            if (done) {
                EXPECT_EQ(id, system->GetFirstORRow()->id);
            }
        });
}

TEST_F(OutOfMemory, AHandlerMadeWithLittleMemoryStillAnswers)
{
    alignas(BMibHandler) unsigned char place[sizeof(BMibHandler)];
    BVarBindList asked;
    asked.Append(MakeOid("1.3.6.1.2.1.1.5.0"));
    bool failed = true;
    for (int granted = 0; failed; ++granted) {
        const long before = FailingAlloc::Live();
        BMibHandler* made = nullptr;
        {
            FailingAlloc fail(granted);
            made = new (place) BMibHandler(nullptr);
            EXPECT_EQ(1, made->Init(nullptr, nullptr));
            failed = fail.Failed();
        }
        for (int pdu : {ePduGet, ePduGetNext, ePduSet}) {
            BVarBindList list = asked;
            int index = 0;
            made->Query(pdu, 0, security, context, list, index);
            EXPECT_EQ(1u, list.Count());
        }
        made->~BMibHandler();
        EXPECT_EQ(before, FailingAlloc::Live()) << granted;
    }
}

} // namespace
} // namespace Test
} // namespace VLK
