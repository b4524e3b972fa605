// The requests behind the console commands: who asks, what a module learns of
// it, the phases of a SET, and that every transaction ends.
#include "tests/support/CallbackHandler.h"
#include "tests/support/CommandConsole.h"
#include "tests/support/FakeAccess.h"
#include <vkmibh/testing/recorder.h>

#include <gtest/gtest.h>

#include <memory>
#include <pthread.h>
#include <thread>

namespace VLK {
namespace Test {
namespace {

using Texts = CommandConsole::Texts;

// What a module can learn of its request by the transaction's id.
struct SSeen {
    unsigned id = 0;
    int protocolId = -2;
    bool hasParameters = false;
    BTransactionParameters parameters;
    std::string localAddress = "none";
    bool hasRemoteAddress = true;
    bool hasPorts = true;
};

SSeen Look(BMibHandler& handler, unsigned id)
{
    SSeen seen;
    seen.id = id;
    BTransactions& registry = *BTransactions::GetInstance();
    seen.protocolId = registry.GetProtocolId(id);
    seen.hasParameters = handler.GetITransactions()->GetParameters(id, seen.parameters);
    BIpAddress address;
    if (registry.GetLocalIpAddress(id, address))
        seen.localAddress = address.ToString().c_str();
    seen.hasRemoteAddress = registry.GetRemoteIpAddress(id, address);
    unsigned port = 0;
    seen.hasPorts = registry.GetLocalUdpPort(id, port) || registry.GetRemoteUdpPort(id, port);
    return seen;
}

bool IsOpen(unsigned id) { return BTransactions::GetInstance()->GetProtocolId(id) != -1; }

class HandlerCommandRequests : public testing::Test {
protected:
    HandlerCommandRequests() : handler(&access), module("1.3.9"), console(handler)
    {
        module.onGet = [this](unsigned id, BVarBindList&, int&, int) { return See(id); };
        module.onGetNext = [this](unsigned id, BVarBind& binding) {
            binding.Name().Set(MakeOid("1.3.9.9"));
            return See(id);
        };
        module.onSet = [this](unsigned id, const BVarBindList&, ESnmpSetOpCode op, int&) {
            return op == eSetTest ? See(id) : int(eSnmpNoError);
        };
        handler.RegisterSubtreeHandler(&module);
    }
    ~HandlerCommandRequests() override { handler.UnregisterSubtreeHandler(&module); }

    int See(unsigned id)
    {
        seen = Look(handler, id);
        ++requests;
        return eSnmpNoError;
    }
    SSeen After(const char* line)
    {
        seen = SSeen();
        console.Type(line);
        return seen;
    }

    FakeAccess access;
    BMibHandler handler;
    CallbackHandler module;
    CommandConsole console;
    SSeen seen;
    int requests = 0;
};

TEST_F(HandlerCommandRequests, AModuleLearnsWhoAsks)
{
    console.security.securityModel = 3;
    console.security.securityName = StringOf(std::string("op\0erator", 9));
    console.security.securityLevel = 2;
    console.context = BString("a context");
    const std::pair<const char*, int> lines[] = {
        {"get 1.3.9.1", 160}, {"getnext 1.3.9.1", 161}, {"set 1.3.9.1 2 5", 163}};
    for (const auto& line : lines) {
        const SSeen told = After(line.first);
        ASSERT_TRUE(told.hasParameters) << line.first;
        EXPECT_EQ(6, told.protocolId);
        EXPECT_EQ(6, told.parameters.protocolId);
        EXPECT_EQ(line.second, told.parameters.pduType);
        EXPECT_EQ(0, told.parameters.request);
        EXPECT_EQ(3, told.parameters.securityModel);
        EXPECT_EQ(console.security.securityName, told.parameters.securityName);
        EXPECT_EQ(2, told.parameters.securityLevel);
        EXPECT_EQ(console.context, told.parameters.contextName);
    }
}

TEST_F(HandlerCommandRequests, TheSwitchGivesTheLocalAddress)
{
    EXPECT_EQ("10.1.2.3", After("get 1.3.9.1 -a10.1.2.3").localAddress);
    EXPECT_EQ("10.1.2.3", After("getnext -a10.1.2.3 1.3.9.1").localAddress);
    EXPECT_EQ("10.1.2.3", After("set 1.3.9.1 2 -a10.1.2.3 5").localAddress);
    EXPECT_EQ("0.0.0.1", After("get 1.3.9.1 -a0.0.0.1").localAddress);
    EXPECT_EQ("1.0.0.0", After("get 1.3.9.1 -a1...").localAddress);
}

TEST_F(HandlerCommandRequests, OnlyTheLocalAddressIsKnown)
{
    const SSeen told = After("get 1.3.9.1 -a10.1.2.3");
    EXPECT_FALSE(told.hasRemoteAddress);
    EXPECT_FALSE(told.hasPorts);
}

TEST_F(HandlerCommandRequests, WithoutAGoodAddressNoneIsKnown)
{
    for (const char* line :
         {"get 1.3.9.1", "get 1.3.9.1 -a", "get 1.3.9.1 -a0.0.0.0", "get 1.3.9.1 -a1.2.3",
          "get 1.3.9.1 -ax", "get 1.3.9.1 -a256.0.0.1", "get 1.3.9.1 -a1.2.3.4.5"}) {
        const int before = requests;
        EXPECT_EQ("none", After(line).localAddress) << line;
        EXPECT_EQ(before + 1, requests) << "it is not reported: " << line;
    }
}

TEST_F(HandlerCommandRequests, TheFirstAddressSwitchCounts)
{
    EXPECT_EQ("1.1.1.1", After("get -a1.1.1.1 1.3.9.1 -a2.2.2.2").localAddress);
    EXPECT_EQ("none", After("get -abad 1.3.9.1 -a2.2.2.2").localAddress);
    EXPECT_EQ("none", After("get -a 1.3.9.1 -a2.2.2.2").localAddress);
}

TEST_F(HandlerCommandRequests, SwitchLettersAreCaseSensitiveAndOthersIgnored)
{
    EXPECT_EQ("none", After("get -A1.1.1.1 1.3.9.1").localAddress);
    EXPECT_EQ("2.2.2.2", After("get -A1.1.1.1 -b3.3.3.3 -- -1 1.3.9.1 -a2.2.2.2").localAddress);
}

TEST_F(HandlerCommandRequests, TheTransactionIsUnknownAfterwards)
{
    for (const char* line : {"get 1.3.9.1", "getnext 1.3.9.1", "set 1.3.9.1 2 5"}) {
        const SSeen told = After(line);
        EXPECT_NE(0u, told.id);
        EXPECT_FALSE(IsOpen(told.id)) << line;
        BTransactionParameters parameters;
        EXPECT_FALSE(handler.GetITransactions()->GetParameters(told.id, parameters));
    }
}

TEST_F(HandlerCommandRequests, EachCommandIsATransactionOfItsOwn)
{
    const unsigned first = After("get 1.3.9.1").id;
    EXPECT_EQ(first + 1, After("get 1.3.9.1").id);
    After("get bad");
    EXPECT_EQ(first + 2, After("set 1.3.9.1 2 5").id) << "a bad argument starts none";
}

TEST_F(HandlerCommandRequests, AModuleThatThrowsIsAGeneralErrorAndTheTransactionEnds)
{
    const auto throwing = [this](unsigned id) -> int {
        See(id);
        throw std::runtime_error("module");
    };
    module.onGet = [=](unsigned id, BVarBindList&, int&, int) { return throwing(id); };
    module.onGetNext = [=](unsigned id, BVarBind&) { return throwing(id); };
    module.onSet = [=](unsigned id, const BVarBindList&, ESnmpSetOpCode op, int&) {
        return op == eSetTest ? throwing(id) : int(eSnmpNoError);
    };
    for (const char* line : {"get 1.3.9.1", "getnext 1.3.9.1", "set 1.3.9.1 2 5"}) {
        EXPECT_EQ(Texts{"snmpErr: generalError at index 1"}, console.Type(line));
        EXPECT_NE(0u, seen.id);
        EXPECT_FALSE(IsOpen(seen.id)) << line;
    }
}

// A host's own handler may override the entry of all requests.
class ThrowingQuery : public BMibHandler {
public:
    using BMibHandler::BMibHandler;
    int Query(int, int transactionId, const BSecurityParams&, const BString&, BVarBindList&,
              int& errorIndex) override
    {
        errorIndex = 3;
        id = static_cast<unsigned>(transactionId);
        wasOpen = IsOpen(id);
        throw std::runtime_error("query");
    }
    unsigned id = 0;
    bool wasOpen = false;
};

TEST_F(HandlerCommandRequests, AQueryThatThrowsIsAGeneralErrorAndTheTransactionEnds)
{
    ThrowingQuery other(nullptr);
    CommandConsole at(other);
    EXPECT_EQ(Texts{"snmpErr: generalError at index 3"}, at.Type("get 1.3.9.1"));
    EXPECT_TRUE(other.wasOpen);
    EXPECT_FALSE(IsOpen(other.id));
}

TEST_F(HandlerCommandRequests, ACancelledThreadEndsItsTransaction)
{
    module.onGet = [this](unsigned id, BVarBindList&, int&, int) {
        See(id);
        pthread_exit(nullptr);
        return int(eSnmpNoError);
    };
    std::thread([this] { console.Type("get 1.3.9.1"); }).join();
    EXPECT_EQ(6, seen.protocolId);
    EXPECT_FALSE(IsOpen(seen.id));
}

class ThrowingStream : public ICmdStream {
public:
    int GetLine(BString&) override { return 0; }
    int Write(const BString&) override { throw std::runtime_error("stream"); }
};

TEST_F(HandlerCommandRequests, AStreamThatThrowsIsNotHeardOf)
{
    BCmdHandler& asConsole = handler;
    ThrowingStream out;
    for (const char* command : {"get", "set", "unknown"}) {
        for (const char* name : {"1.3.9.1", "bad"}) {
            EXPECT_EQ(0, asConsole.CmdExecute(out, BString(command), ArgsOf({name}),
                                              console.security, console.context));
        }
    }
    EXPECT_EQ(2, requests) << "get, and what was not found";
    EXPECT_FALSE(IsOpen(seen.id));
}

TEST_F(HandlerCommandRequests, ARequestThatFindsTheRegistryFullRunsAllTheSame)
{
    std::vector<std::unique_ptr<BTransaction>> open;
    std::vector<unsigned> ids;
    for (int i = 0; i < 1024; ++i) {
        open.push_back(std::make_unique<BTransaction>(1));
        ids.push_back(BTransactions::GetInstance()->StartTransaction(open.back().get()));
    }
    EXPECT_EQ(Texts{"1.3.9.1 = Null\n"}, console.Type("get 1.3.9.1 -a1.2.3.4"));
    EXPECT_NE(0u, seen.id);
    EXPECT_EQ(-1, seen.protocolId);
    EXPECT_FALSE(seen.hasParameters);
    EXPECT_EQ("none", seen.localAddress);
    EXPECT_EQ(Texts{"1.9 = Null/noSuchObject\n"}, console.Type("get 1.9")) << "still not SNMPv1";
    for (const unsigned id : ids) {
        EXPECT_TRUE(IsOpen(id)) << "others stay open";
        BTransactions::GetInstance()->EndTransaction(id);
    }
}

TEST_F(HandlerCommandRequests, AccessIsAskedForWithTheConsolesIdentity)
{
    console.security.securityModel = 7;
    console.security.securityName = BString("somebody");
    console.security.securityLevel = 9;
    console.context = BString("elsewhere");
    const std::pair<const char*, int> lines[] = {{"get 1.3.9.1 1.3.9.2", eAccessRead},
                                                 {"getnext 1.3.9.1", eAccessRead},
                                                 {"set 1.3.9.1 2 5", eAccessWrite}};
    for (const auto& line : lines) {
        access.kinds.clear();
        access.lastSecurity = BSecurityParams();
        access.lastContext = BString();
        console.Type(line.first);
        EXPECT_EQ(std::set<int>{line.second}, access.kinds) << line.first;
        EXPECT_EQ(7, access.lastSecurity.securityModel);
        EXPECT_EQ(BString("somebody"), access.lastSecurity.securityName);
        EXPECT_EQ(9, access.lastSecurity.securityLevel);
        EXPECT_EQ(BString("elsewhere"), access.lastContext);
    }
    EXPECT_EQ((std::vector<std::string>{"1.3.9.1", "1.3.9.2", "1.3.9.9", "1.3.9.1"}), access.asked);
}

TEST_F(HandlerCommandRequests, ARefusalIsPrintedOrSteppedOver)
{
    access.refused = {"1.3.9.2", "1.3.9.9"};
    EXPECT_EQ(Texts{"snmpErr: authorizationError at index 2"}, console.Type("get 1.3.9.1 1.3.9.2"));
    EXPECT_EQ(Texts{"snmpErr: authorizationError at index 1"}, console.Type("set 1.3.9.2 2 5"));
    EXPECT_EQ(0, requests);
    EXPECT_EQ(Texts{"1.3.9.1 = Null/endOfMibView\n"}, console.Type("getnext 1.3.9.1"));
    access.throwing = {"1.3.9.3"};
    EXPECT_EQ(Texts{"snmpErr: generalError at index 1"}, console.Type("get 1.3.9.3"));
    EXPECT_FALSE(IsOpen(seen.id));
}

class HandlerCommandPhases : public testing::Test {
protected:
    HandlerCommandPhases()
        : handler(nullptr), a('A', "1.3.5", log), b('B', "1.3.7", log), console(handler)
    {
        handler.RegisterSubtreeHandler(&a);
        handler.RegisterSubtreeHandler(&b);
    }
    ~HandlerCommandPhases() override
    {
        handler.UnregisterSubtreeHandler(&a);
        handler.UnregisterSubtreeHandler(&b);
        EXPECT_EQ(0, a.slotErrors + b.slotErrors);
    }

    BMibHandler handler;
    SetLog log;
    RecorderHandler a;
    RecorderHandler b;
    CommandConsole console;
};

TEST_F(HandlerCommandPhases, ASetIsTestedCommittedAndCleaned)
{
    EXPECT_EQ((Texts{"1.3.5.1 = 1\n", "1.3.5.2 = 2\n", "1.3.7.1 = 3\n"}),
              console.Type("set 1.3.5.1 2 1 1.3.5.2 2 2 1.3.7.1 2 3"));
    EXPECT_EQ((SetLog{"A test 0+2", "B test 2+1", "A commit 0+2", "B commit 2+1", "A cleanup 0+2",
                      "B cleanup 2+1"}),
              log);
}

TEST_F(HandlerCommandPhases, AFailedTestCommitsNothing)
{
    b.failAt = {{eSetTest, 1}};
    b.failWith = eSnmpWrongValue;
    EXPECT_EQ(Texts{"snmpErr: wrongValue at index 2"}, console.Type("set 1.3.5.1 2 1 1.3.7.1 2 3"));
    EXPECT_EQ((SetLog{"A test 0+1", "B test 1+1", "A cleanup 0+1", "B cleanup 1+1"}), log);
}

TEST_F(HandlerCommandPhases, AFailedCommitIsUndone)
{
    b.failAt = {{eSetCommit, 1}};
    EXPECT_EQ(Texts{"snmpErr: commitFail at index 2"}, console.Type("set 1.3.5.1 2 1 1.3.7.1 2 3"));
    EXPECT_EQ((SetLog{"A test 0+1", "B test 1+1", "A commit 0+1", "B commit 1+1", "A undo 0+1",
                      "B undo 1+1", "A cleanup 0+1", "B cleanup 1+1"}),
              log);
    a.failAt = {{eSetUndo, 0}};
    a.failWith = eSnmpUndoFailed;
    EXPECT_EQ(Texts{"snmpErr: undoFail at index 0"}, console.Type("set 1.3.5.1 2 1 1.3.7.1 2 3"));
}

TEST_F(HandlerCommandPhases, BadArgumentsReachNoPhase)
{
    console.Type("set 1.3.5.1 2 1 1.3.7.1 99 3");
    console.Type("set 1.3.5.1 2 1 1.3.7.1");
    console.Type("set 1.3.5.1 64 x");
    EXPECT_TRUE(log.empty());
}

TEST(CLITransaction, TellsWhatItWasGiven)
{
    BSecurityParams security;
    security.securityModel = 2;
    security.securityName = BString("name");
    security.securityLevel = 3;
    BMibHandler::BCLITransaction transaction(security, BString("ctx"), BIpAddress(1, 2, 3, 4));
    EXPECT_EQ(6, transaction.ProtocolId());
    EXPECT_TRUE(transaction.Describes(security, BString("ctx")));
    EXPECT_FALSE(transaction.Describes(security, BString("ctx2")));
    BTransactionParameters params;
    params.request = 99;
    ASSERT_TRUE(transaction.GetParams(params));
    EXPECT_EQ(-1, params.pduType) << "before the request runs";
    EXPECT_EQ(6, params.protocolId);
    EXPECT_EQ(0, params.request);
    EXPECT_EQ(2, params.securityModel);
    EXPECT_EQ(BString("name"), params.securityName);
    EXPECT_EQ(3, params.securityLevel);
    EXPECT_EQ(BString("ctx"), params.contextName);
    transaction.SetPduType(163);
    ASSERT_TRUE(transaction.GetParams(params));
    EXPECT_EQ(163, params.pduType);
    security.securityName = BString("another");
    EXPECT_FALSE(transaction.Describes(security, BString("ctx")));
}

TEST(CLITransaction, AllZeroIsNoAddress)
{
    const BSecurityParams security;
    BIpAddress address(9, 9, 9, 9);
    BMibHandler::BCLITransaction none(security, BString(), BIpAddress());
    EXPECT_FALSE(none.GetLocalIpAddress(address));
    EXPECT_EQ(9, address[0]);
    for (unsigned i = 0; i < 4; ++i) {
        BIpAddress one;
        one[i] = 1;
        BMibHandler::BCLITransaction some(security, BString(), one);
        EXPECT_TRUE(some.GetLocalIpAddress(address));
        EXPECT_STREQ(one.ToString().c_str(), address.ToString().c_str());
        EXPECT_FALSE(some.GetRemoteIpAddress(address));
    }
}

} // namespace
} // namespace Test
} // namespace VLK
