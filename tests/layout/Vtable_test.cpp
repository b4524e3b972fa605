// Every virtual function stands in the slot that hosts compiled against.
//
// A pointer to a virtual member function holds, in the C++ ABI of gcc and
// clang on Linux, one plus the offset of its slot; slots 0 and 1 are the two
// destructors. Only types are used, so nothing of the library is linked.
#include <vkmibh/vkmibh.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>

using namespace VLK;

namespace {

template <class TMember>
std::size_t SlotOf(TMember member)
{
    std::intptr_t words[2];
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words, &member, sizeof(words));
#if defined(__arm__) || defined(__aarch64__)
    EXPECT_NE(words[1] & 1, 0) << "not virtual";
    return static_cast<std::size_t>(words[0]) / sizeof(void*);
#else
    EXPECT_NE(words[0] & 1, 0) << "not virtual";
    return static_cast<std::size_t>(words[0] - 1) / sizeof(void*);
#endif
}

// The slot of a function that has one form only.
#define SLOT(type, name) SlotOf(&type::name)
// The slot of one form of several.
#define SLOT_OF(type, name, result, ...)                                                           \
    SlotOf(static_cast<result (type::*)(__VA_ARGS__)>(&type::name))
#define SLOT_OF_CONST(type, name, result, ...)                                                     \
    SlotOf(static_cast<result (type::*)(__VA_ARGS__) const>(&type::name))

// A class with one more, to count the slots before it.
template <class T>
struct SEnded : T {
    using T::T;
    virtual void LastSlot() {}
};
template <class T>
std::size_t SlotsIn()
{
    return SLOT(SEnded<T>, LastSlot);
}

} // namespace

TEST(Vtable, Singleton)
{
    EXPECT_EQ(SLOT(BSingleton, Destroy), 2u);
    EXPECT_EQ(SlotsIn<BSingleton>(), 3u);
    EXPECT_EQ(SLOT(BTimer, Destroy), 2u);
    EXPECT_EQ(SlotsIn<BTimer>(), 3u);
    EXPECT_EQ(SLOT(BTransactions, Destroy), 2u);
    EXPECT_EQ(SlotsIn<BTransactions>(), 3u);
    EXPECT_EQ(SLOT(BTransactionIdGenerator, Destroy), 2u);
    EXPECT_EQ(SlotsIn<BTransactionIdGenerator>(), 3u);
    EXPECT_EQ(SLOT(BTrapOIDs, Destroy), 2u);
    EXPECT_EQ(SlotsIn<BTrapOIDs>(), 3u);
}

TEST(Vtable, Thread)
{
    EXPECT_EQ(SLOT(TThread, Start), 2u);
    EXPECT_EQ(SLOT(TThread, Terminate), 3u);
    EXPECT_EQ(SLOT(TThread, Stop), 4u);
    EXPECT_EQ(SLOT(TThread, Join), 5u);
    EXPECT_EQ(SLOT(TThread, ResetMembers), 6u);
    EXPECT_EQ(SLOT(TThread, Run), 7u);
    EXPECT_EQ(SLOT(TThread, OnThreadEnd), 8u);
    EXPECT_EQ(SlotsIn<TThread>(), 9u);
}

TEST(Vtable, StringArrayAndNodeHaveOnlyDestructors)
{
    EXPECT_EQ(SlotsIn<BStringArray>(), 2u);
    EXPECT_EQ(SlotsIn<BMibNode>(), 2u);
}

TEST(Vtable, TimeSubscriber)
{
    EXPECT_EQ(SLOT(ITimeSubscriber, OnTimeout), 2u);
    EXPECT_EQ(SlotsIn<ITimeSubscriber>(), 3u);
}

TEST(Vtable, Tree)
{
    EXPECT_EQ(SLOT(BMibTree, Register), 2u);
    EXPECT_EQ(SLOT_OF(BMibTree, Unregister, int, BMibSubtreeHandler*), 3u);
    EXPECT_EQ(SLOT_OF(BMibTree, Unregister, int, BObjectIdentifier&), 4u);
    EXPECT_EQ(SlotsIn<BMibTree>(), 5u);
}

TEST(Vtable, MibInfo)
{
    using T = IMIBInfo;
    EXPECT_EQ(SLOT(T, Name2Oid), 2u);
    EXPECT_EQ(SLOT_OF_CONST(T, GetObjParams, int, const BString&, BMibObject&), 3u);
    EXPECT_EQ(SLOT_OF_CONST(T, GetObjParams, int, const BObjectIdentifier&, BMibObject&), 4u);
    EXPECT_EQ(SLOT_OF_CONST(T, GetLeafList, int, BOidArray&), 5u);
    EXPECT_EQ(SLOT_OF_CONST(T, GetLeafList, int, BStringArray&), 6u);
    EXPECT_EQ(SLOT(T, GetEnumValue), 7u);
    EXPECT_EQ(SLOT(T, GetEnumLabel), 8u);
    EXPECT_EQ(SLOT_OF_CONST(T, IsLeaf, bool, const BString&), 9u);
    EXPECT_EQ(SLOT_OF_CONST(T, IsLeaf, bool, const BObjectIdentifier&), 10u);
    EXPECT_EQ(SLOT_OF_CONST(T, IsTable, bool, const BString&), 11u);
    EXPECT_EQ(SLOT_OF_CONST(T, IsTable, bool, const BObjectIdentifier&), 12u);
    EXPECT_EQ(SLOT(T, NextInstanceInColumn), 13u);
    EXPECT_EQ(SlotsIn<T>(), 14u);
    EXPECT_EQ(SlotsIn<BMibInfo>(), 14u);
}

TEST(Vtable, SubtreeHandler)
{
    using T = BMibSubtreeHandler;
    EXPECT_EQ(SLOT(T, OnTimeout), 2u);
    EXPECT_EQ(SLOT(T, Get), 3u);
    EXPECT_EQ(SLOT_OF(T, GetNext, int, unsigned, BVarBindList&, int&, int), 4u);
    EXPECT_EQ(SLOT_OF(T, GetNext, int, unsigned, BVarBind&), 5u);
    EXPECT_EQ(SLOT(T, Set), 6u);
    EXPECT_EQ(SLOT(T, HandlesInstance), 7u);
    EXPECT_EQ(SLOT(T, GetIMibInfo), 8u);
    EXPECT_EQ(SLOT(T, ToString), 9u);
    EXPECT_EQ(SlotsIn<T>(), 10u);
}

TEST(Vtable, Implementation)
{
    using T = BMibImpl;
    EXPECT_EQ(SLOT(T, OnTimeout), 2u);
    EXPECT_EQ(SLOT_OF(T, Get, int, unsigned, BVarBindList&, int&, int), 3u);
    EXPECT_EQ(SLOT_OF(T, GetNext, int, unsigned, BVarBindList&, int&, int), 4u);
    EXPECT_EQ(SLOT_OF(T, GetNext, int, unsigned, BVarBind&), 5u);
    EXPECT_EQ(
        SLOT_OF(T, Set, int, unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int), 6u);
    EXPECT_EQ(SLOT(T, HandlesInstance), 7u);
    EXPECT_EQ(SLOT(T, GetIMibInfo), 8u);
    EXPECT_EQ(SLOT(T, ToString), 9u);
    EXPECT_EQ(SLOT_OF(T, Get, int, unsigned, BVarBind&), 10u);
    EXPECT_EQ(SLOT_OF(T, Set, int, unsigned, ESnmpSetOpCode, void**, const BVarBind&), 11u);
    EXPECT_EQ(SLOT(T, NextInstance), 12u);
    EXPECT_EQ(SLOT(T, Initialize), 13u);
    EXPECT_EQ(SLOT(T, Cleanup), 14u);
    EXPECT_EQ(SLOT(T, GetRqHndlrMap), 15u);
    EXPECT_EQ(SLOT(T, GetConstraintMap), 16u);
    EXPECT_EQ(SlotsIn<T>(), 17u);
    EXPECT_EQ(SlotsIn<BMibScalarImpl>(), 17u);
    EXPECT_EQ(SlotsIn<BMibScalarGroupImpl>(), 17u);
    EXPECT_EQ(SlotsIn<BMibRowImpl>(), 17u);
    EXPECT_EQ(SlotsIn<CSystem>(), 17u);
    EXPECT_EQ(SlotsIn<CSystemV2>(), 17u);
    EXPECT_EQ(SLOT(BMibTableImpl, NextIndex), 17u);
    EXPECT_EQ(SlotsIn<BMibTableImpl>(), 18u);
    EXPECT_EQ(SlotsIn<CSysORTableV2>(), 18u);
    EXPECT_EQ(SLOT(BMibTableImplEx, OnTimeout), 2u);
    EXPECT_EQ(SLOT(BMibTableImplEx, RowActivationTimeout), 18u);
    EXPECT_EQ(SlotsIn<BMibTableImplEx>(), 19u);
    EXPECT_EQ(SLOT(BMibTableImplEx2, PreIxAllocOrDealloc), 19u);
    EXPECT_EQ(SlotsIn<BMibTableImplEx2>(), 20u);
}

TEST(Vtable, ImplementationGroup)
{
    using T = BMibImplGroup;
    EXPECT_EQ(SLOT(T, Init), 2u);
    EXPECT_EQ(SLOT(T, Cleanup), 3u);
    EXPECT_EQ(SLOT(T, GetNumImpls), 4u);
    EXPECT_EQ(SLOT(T, GetImplAt), 5u);
    EXPECT_EQ(SLOT(T, GetTCConstraintMap), 6u);
    EXPECT_EQ(SLOT(T, InitDefVals), 7u);
    EXPECT_EQ(SlotsIn<T>(), 8u);
}

TEST(Vtable, Transactions)
{
    EXPECT_EQ(SLOT(BTransaction, GetParams), 2u);
    EXPECT_EQ(SLOT(BTransaction, GetLocalIpAddress), 3u);
    EXPECT_EQ(SLOT(BTransaction, GetRemoteIpAddress), 4u);
    EXPECT_EQ(SLOT(BTransaction, GetLocalUdpPort), 5u);
    EXPECT_EQ(SLOT(BTransaction, GetRemoteUdpPort), 6u);
    EXPECT_EQ(SlotsIn<BTransaction>(), 7u);
    using TConsole = BMibHandler::BCLITransaction;
    EXPECT_EQ(SLOT(TConsole, GetParams), 2u);
    EXPECT_EQ(SLOT(TConsole, GetLocalIpAddress), 3u);
    EXPECT_EQ(SlotsIn<TConsole>(), 7u);
    EXPECT_EQ(SLOT(ITransactions, GetParameters), 2u);
    EXPECT_EQ(SlotsIn<ITransactions>(), 3u);
}

TEST(Vtable, Console)
{
    EXPECT_EQ(SLOT(ICmdStream, GetLine), 2u);
    EXPECT_EQ(SLOT(ICmdStream, Write), 3u);
    EXPECT_EQ(SlotsIn<ICmdStream>(), 4u);
    EXPECT_EQ(SLOT(BCmdStream, GetLine), 2u);
    EXPECT_EQ(SLOT(BCmdStream, Write), 3u);
    EXPECT_EQ(SlotsIn<BCmdStream>(), 4u);

    using T = ICmdHandler;
    EXPECT_EQ(SLOT(T, CmdHndlrName), 2u);
    EXPECT_EQ(SLOT(T, CmdCount), 3u);
    EXPECT_EQ(SLOT(T, CmdNameAt), 4u);
    EXPECT_EQ(SLOT(T, CmdId), 5u);
    EXPECT_EQ(SLOT(T, CmdGetDescr), 6u);
    EXPECT_EQ(SLOT(T, CmdGetArgsDescr), 7u);
    EXPECT_EQ(SLOT(T, CmdExecute), 8u);
    EXPECT_EQ(SlotsIn<T>(), 9u);
    EXPECT_EQ(SLOT(BCmdHandler, CmdExecute), 8u);
    EXPECT_EQ(SLOT(BCmdHandler, CmdGetHndlrName), 9u);
    EXPECT_EQ(SLOT(BCmdHandler, CmdGetMap), 10u);
    EXPECT_EQ(SlotsIn<BCmdHandler>(), 11u);
}

TEST(Vtable, MibHandler)
{
    using T = IMIBHandler;
    EXPECT_EQ(SLOT(T, RegisterSubtreeHandler), 2u);
    EXPECT_EQ(SLOT(T, RegisterGroup), 3u);
    EXPECT_EQ(SLOT(T, UnregisterSubtreeHandler), 4u);
    EXPECT_EQ(SLOT(T, UnregisterGroup), 5u);
    EXPECT_EQ(SLOT(T, Query), 6u);
    EXPECT_EQ(SLOT(T, GetITransactions), 7u);
    EXPECT_EQ(SlotsIn<T>(), 8u);
    // The primary table goes on with the command handler's operations.
    EXPECT_EQ(SLOT(BMibHandler, Query), 6u);
    EXPECT_EQ(SLOT(BMibHandler, CmdExecute), 8u);
    EXPECT_EQ(SLOT(BMibHandler, CmdGetHndlrName), 9u);
    EXPECT_EQ(SLOT(BMibHandler, CmdGetMap), 10u);
    EXPECT_EQ(SlotsIn<BMibHandler>(), 11u);
    EXPECT_EQ(SLOT(IAccessControl, CheckAccess), 2u);
}

TEST(Vtable, Store)
{
    EXPECT_EQ(SLOT(INVCallback, Update), 2u);
    EXPECT_EQ(SlotsIn<INVCallback>(), 3u);
    using T = INonVolatile;
    EXPECT_EQ(SLOT(T, GetStringAt), 2u);
    EXPECT_EQ(SLOT(T, GetString), 3u);
    EXPECT_EQ(SLOT(T, SetString), 4u);
    EXPECT_EQ(SLOT(T, GetOctetsAt), 5u);
    EXPECT_EQ(SLOT(T, SetOctets), 6u);
    EXPECT_EQ(SLOT(T, GetOidAt), 7u);
    EXPECT_EQ(SLOT(T, SetOid), 8u);
    EXPECT_EQ(SLOT(T, GetIntAt), 9u);
    EXPECT_EQ(SLOT(T, GetInt), 10u);
    EXPECT_EQ(SLOT(T, SetInt), 11u);
    EXPECT_EQ(SLOT(T, OpenSection), 12u);
    EXPECT_EQ(SLOT(T, GetRecordCount), 13u);
    EXPECT_EQ(SLOT(T, RequestUpdate), 14u);
    EXPECT_EQ(SlotsIn<T>(), 15u);
}

TEST(Vtable, Traps)
{
    EXPECT_EQ(SLOT(BTrap, GetV2TrapOid), 2u);
    EXPECT_EQ(SLOT(BTrap, GetV1TrapParams), 3u);
    EXPECT_EQ(SLOT(BTrapV1, GetV2TrapOid), 2u);
    EXPECT_EQ(SLOT(BTrapV1, GetV1TrapParams), 3u);
    EXPECT_EQ(SlotsIn<BTrapV1>(), 4u);
    EXPECT_EQ(SLOT(BTrapV2, GetV2TrapOid), 2u);
    EXPECT_EQ(SLOT(BTrapV2, GetV1TrapParams), 3u);
    EXPECT_EQ(SlotsIn<BTrapV2>(), 4u);
}

TEST(Vtable, Agents)
{
    using T = BAgent;
    EXPECT_EQ(SLOT(T, SendTrap), 2u);
    EXPECT_EQ(SLOT(T, Init), 3u);
    EXPECT_EQ(SLOT(T, Suspend), 4u);
    EXPECT_EQ(SLOT(T, Resume), 5u);
    EXPECT_EQ(SLOT(T, Start), 6u);
    EXPECT_EQ(SLOT(T, Stop), 7u);
    EXPECT_EQ(SLOT(T, GetParams), 8u);
    EXPECT_EQ(SlotsIn<T>(), 9u);

    EXPECT_EQ(SLOT(ITrapSender, SendTrap), 2u);
    EXPECT_EQ(SlotsIn<ITrapSender>(), 3u);
    // The primary table goes on with the command handler's operations.
    EXPECT_EQ(SLOT(BAgents, SendTrap), 2u);
    EXPECT_EQ(SLOT(BAgents, CmdExecute), 3u);
    EXPECT_EQ(SLOT(BAgents, CmdGetHndlrName), 4u);
    EXPECT_EQ(SLOT(BAgents, CmdGetMap), 5u);
    EXPECT_EQ(SlotsIn<BAgents>(), 6u);
}
