// The handler's life and its dispatch of requests.
#include "tests/support/FakeAccess.h"
#include "tests/support/FakeStore.h"
#include "tests/support/ListHandler.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

TEST(MibHandler, LabelsEveryErrorStatus)
{
    const char* const labels[] = {"Success",
                                  "tooBig",
                                  "noSuchName",
                                  "badValue",
                                  "readOnly",
                                  "generalError",
                                  "noAccess",
                                  "wrongType",
                                  "wrongLength",
                                  "wrongEncoding",
                                  "wrongValue",
                                  "noCreation",
                                  "inconsistentValue",
                                  "resourcesUnavailable",
                                  "commitFail",
                                  "undoFail",
                                  "authorizationError",
                                  "notWritable",
                                  "inconsistentName"};
    for (int status = 0; status <= 18; ++status)
        EXPECT_STREQ(labels[status], LabelErrorStatus(status));
    EXPECT_STREQ("? unknown error status?", LabelErrorStatus(19));
    EXPECT_STREQ("? unknown error status?", LabelErrorStatus(-1));
}

TEST(MibHandler, PduAndAccessNumbersAreTheProtocolsOwn)
{
    EXPECT_EQ(160, ePduGet);
    EXPECT_EQ(161, ePduGetNext);
    EXPECT_EQ(163, ePduSet);
    EXPECT_EQ(165, ePduGetBulk);
    EXPECT_EQ(1, eAccessRead);
    EXPECT_EQ(2, eAccessWrite);
    EXPECT_EQ(224, eSetTest);
    EXPECT_EQ(163, eSetCommit);
    EXPECT_EQ(225, eSetUndo);
    EXPECT_EQ(226, eSetCleanup);
}

TEST(MibHandler, UnknownPduTypeIsGeneralError)
{
    BMibHandler handler(nullptr);
    Client client(handler);
    BVarBindList list;
    list.Append(MakeOid("1.3.6.1"));
    EXPECT_EQ(5, client.Query(162, list));
    EXPECT_EQ(0, client.errorIndex);
}

TEST(MibHandler, QueryClearsTheErrorIndex)
{
    BMibHandler handler(nullptr);
    Client client(handler);
    BVarBindList list;
    EXPECT_EQ(0, client.Query(ePduGet, list));
    EXPECT_EQ(0, client.errorIndex);
}

TEST(MibHandler, EmptyListsSucceedWithoutTouchingTheErrorIndex)
{
    BMibHandler handler(nullptr);
    const BSecurityParams security;
    const BString context;
    BVarBindList list;
    int errorIndex = kUntouched;
    EXPECT_EQ(0, handler.QueryGet(1, security, context, list, errorIndex, false));
    EXPECT_EQ(0, handler.QueryGetNext(1, security, context, list, errorIndex, true));
    EXPECT_EQ(0, handler.QuerySet(1, security, context, list, errorIndex));
    EXPECT_EQ(kUntouched, errorIndex);
}

TEST(MibHandler, GetBulkIsOneStepPerBinding)
{
    BMibHandler handler(nullptr);
    ListHandler module("1.3.9");
    module.Add("1.3.9.1", 1);
    module.Add("1.3.9.2", 2);
    module.Add("1.3.9.3", 3);
    handler.RegisterSubtreeHandler(&module);
    Client client(handler);
    BVarBindList list;
    list.Append(MakeOid("1.3.9"));
    list.Append(MakeOid("1.3.9.2"));
    ASSERT_EQ(0, client.Query(ePduGetBulk, list));
    ASSERT_EQ(2u, list.Count());
    EXPECT_EQ(MakeOid("1.3.9.1"), list[0].Name());
    EXPECT_EQ(MakeOid("1.3.9.3"), list[1].Name());
    handler.UnregisterSubtreeHandler(&module);
}

TEST(MibHandler, AnUnknownTransactionIsNotV1)
{
    BMibHandler handler(nullptr);
    const BSecurityParams security;
    const BString context;
    BVarBindList list;
    list.Append(MakeOid("1.9"));
    int errorIndex = 0;
    EXPECT_EQ(0, handler.Query(ePduGet, 123456, security, context, list, errorIndex));
    EXPECT_EQ(eNoSuchObject, list[0].Value().Syntax());
    BVarBindList again;
    again.Append(MakeOid("1.9"));
    EXPECT_EQ(0, handler.Query(ePduGet, 0, security, context, again, errorIndex));
}

TEST(MibHandler, ProtocolIdZeroIsV1)
{
    BMibHandler handler(nullptr);
    Client v1(handler, kV1);
    EXPECT_EQ(2, v1.Get({"1.9"}));
    EXPECT_EQ(1, v1.errorIndex);
    Client console(handler, 6);
    EXPECT_EQ(0, console.Get({"1.9"}));
}

TEST(MibHandler, ItsTransactionsAnswerFromTheRegistry)
{
    class Described : public BTransaction {
    public:
        Described() : BTransaction(3) {}
        bool GetParams(BTransactionParameters& params) override
        {
            params.request = 42;
            return true;
        }
    };
    BMibHandler handler(nullptr);
    Described transaction;
    const unsigned id = BTransactions::GetInstance()->StartTransaction(&transaction);
    BTransactionParameters params;
    EXPECT_TRUE(handler.GetITransactions()->GetParameters(id, params));
    EXPECT_EQ(42, params.request);
    BTransactions::GetInstance()->EndTransaction(id);
    EXPECT_FALSE(handler.GetITransactions()->GetParameters(id, params));
}

TEST(MibHandler, InitReadsWhetherSetsAreSerialised)
{
    BMibHandler handler(nullptr);
    FakeStore store;
    store.numbers["MIB Handler/DoNotSerializeSet"] = 3;
    EXPECT_EQ(1, handler.Init(nullptr, &store));
    EXPECT_FALSE(g_bSerializeSet);
    store.numbers["MIB Handler/DoNotSerializeSet"] = 0;
    EXPECT_EQ(1, handler.Init(nullptr, &store));
    EXPECT_TRUE(g_bSerializeSet);
    store.numbers["MIB Handler/DoNotSerializeSet"] = 1;
    handler.Init(nullptr, &store);
    EXPECT_EQ(1, handler.Init(nullptr, nullptr));
    EXPECT_TRUE(g_bSerializeSet) << "without a store SETs are serialised";
    handler.Init(nullptr, &store);
    store.numbers.clear();
    handler.Init(nullptr, &store);
    EXPECT_TRUE(g_bSerializeSet) << "a store without the key leaves SETs serialised";
}

TEST(MibHandler, ASecondInitReadsOnlyTheSetting)
{
    BMibHandler handler(nullptr);
    FakeStore first;
    handler.Init(nullptr, &first);
    FakeStore second;
    second.strings["mib-2.system/sysContact"] = "late";
    handler.Init(nullptr, &second);
    EXPECT_EQ(std::vector<std::string>{"GetInt MIB Handler DoNotSerializeSet 0"}, second.calls);
    EXPECT_EQ(&first, handler.SystemGroup()->Store());
    EXPECT_STREQ("Mr. Qwin", handler.SystemGroup()->Contact().c_str());
}

TEST(MibHandler, AStoreThatThrowsLeavesTheDefaults)
{
    BMibHandler handler(nullptr);
    FakeStore store;
    store.throwOnRead = true;
    EXPECT_EQ(1, handler.Init(nullptr, &store));
    EXPECT_TRUE(g_bSerializeSet);
    EXPECT_STREQ("Mr. Qwin", handler.SystemGroup()->Contact().c_str());
}

TEST(MibHandler, SystemImplementationsLeaveACallersTree)
{
    BMibTree tree;
    {
        BMibHandler handler(&tree, nullptr);
        handler.Init(nullptr, nullptr);
        ASSERT_NE(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.6.1.2.1.1.9.2.1")));
    }
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.6.1.2.1.1.9.2.1")));
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.6.1.2.1.1.1.0")));
}

TEST(MibHandler, WithoutATreeItMakesItsOwn)
{
    BMibHandler handler(nullptr, nullptr);
    handler.Init(nullptr, nullptr);
    Client client(handler);
    EXPECT_EQ(0, client.Get({"1.3.6.1.2.1.1.5.0"}));
    EXPECT_EQ(eAsnOctetString, client.SyntaxAt(0));
}

TEST(MibHandler, TwoHandlersLiveInOneProcess)
{
    BMibHandler one(nullptr);
    BMibHandler two(nullptr);
    one.Init(nullptr, nullptr);
    two.Init(nullptr, nullptr);
    Client first(one);
    Client second(two);
    ASSERT_EQ(0, first.Set("1.3.6.1.2.1.1.4.0", "first"));
    ASSERT_EQ(0, second.Get({"1.3.6.1.2.1.1.4.0"}));
    EXPECT_EQ(std::string("Mr. Qwin"), std::string(two.SystemGroup()->Contact().c_str()));
    EXPECT_STREQ("first", one.SystemGroup()->Contact().c_str());
}

TEST(MibHandler, RegisterSystemGroupRunsOnce)
{
    BMibHandler handler(nullptr);
    handler.RegisterSystemGroup();
    handler.RegisterSystemGroup();
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.6.1.2.1.1.5.0"}));
    EXPECT_EQ(eAsnOctetString, client.SyntaxAt(0));
}

TEST(MibHandler, SystemGroupDoesNotAnswerBeforeInit)
{
    BMibHandler handler(nullptr);
    Client client(handler);
    EXPECT_EQ(0, client.Get({"1.3.6.1.2.1.1.5.0"}));
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(0));
}

} // namespace
} // namespace Test
} // namespace VLK
