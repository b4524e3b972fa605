#include "host/Dispatcher.h"

#include "host/Options.h"
#include "host/RequestTransaction.h"

#include <functional>
#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;

namespace {

class FakeHandler : public IMIBHandler {
public:
    std::function<int(BVarBindList&, int&)> answer;
    int calls = 0;
    int pduType = 0;
    int protocolId = -2;
    BTransactionParameters parameters;
    BString securityName;
    BString context;
    BIpAddress remote;
    BIpAddress local;
    unsigned remotePort = 0;
    unsigned localPort = 0;
    bool hasRemote = false;

    bool RegisterSubtreeHandler(BMibSubtreeHandler*) override { return false; }
    bool RegisterGroup(BMibImplGroup*) override { return false; }
    int UnregisterSubtreeHandler(BMibSubtreeHandler*) override { return 0; }
    bool UnregisterGroup(BMibImplGroup*) override { return false; }
    ITransactions* GetITransactions() override { return nullptr; }

    int Query(int type, int transactionId, const BSecurityParams& security,
              const BString& contextName, BVarBindList& list, int& errorIndex) override
    {
        ++calls;
        securityName = security.securityName;
        context = contextName;
        pduType = type;
        unsigned id = static_cast<unsigned>(transactionId);
        BTransactions* transactions = BTransactions::GetInstance();
        protocolId = transactions->GetProtocolId(id);
        transactions->GetParameters(id, parameters);
        hasRemote = transactions->GetRemoteIpAddress(id, remote);
        transactions->GetLocalIpAddress(id, local);
        transactions->GetRemoteUdpPort(id, remotePort);
        transactions->GetLocalUdpPort(id, localPort);
        errorIndex = 0;
        return answer ? answer(list, errorIndex) : 0;
    }
};

class Failures : public IAuthenticationFailures {
public:
    int told = 0;
    void OnAuthenticationFailure() override { ++told; }
};

// `public` reads, `private` reads and writes, `bridge` is a context of its own.
SConfiguration WithCommunities()
{
    SOptions options;
    options.communities = {{"public", false}, {"private", true}};
    SConfiguration configuration = Configure(options);
    AddCommunity(configuration, {"near", "near", "", BNetwork::ThisMachine()},
                 {kViewEverything, "", ""});
    AddCommunity(configuration, {"blind", "blind", "", BNetwork::Anywhere()}, {"", "", ""});
    configuration.communities.push_back({"bridge", "private", "ports", BNetwork::Anywhere()});
    return configuration;
}

class Dispatcher : public testing::Test {
protected:
    FakeHandler handler;
    BAccess access{WithCommunities(), nullptr};
    modules::SSnmpCounters counters;
    Failures failures;
    BDispatcher dispatcher{handler, access, counters, &failures};
    SResponse response;

    static SRequest Request(EProtocol protocol, int pduType, const char* community = "private")
    {
        SRequest request;
        request.protocol = protocol;
        request.pduType = pduType;
        request.requestId = 77;
        request.community = community;
        request.remote.Parse("udp:127.0.0.1:4000");
        request.local.Parse("udp:127.0.0.2:1161");
        request.maxMessage = 65507;
        request.bindings.Append(BObjectIdentifier(BString("1.3.6.1.2.1.1.4.0")));
        request.bindings.Append(BObjectIdentifier(BString("1.3.6.1.2.1.1.5.0")));
        return request;
    }

    void Fail(int status, int index)
    {
        handler.answer = [=](BVarBindList&, int& errorIndex) {
            errorIndex = index;
            return status;
        };
    }

    bool Handle(SRequest request) { return dispatcher.Handle(request, response); }
};

} // namespace

TEST_F(Dispatcher, UnknownCommunitiesGetNoAnswer)
{
    EXPECT_FALSE(Handle(Request(eSnmpV2c, ePduGet, "other")));
    EXPECT_FALSE(Handle(Request(eSnmpV1, ePduSet, "")));
    EXPECT_EQ(handler.calls, 0);
}

TEST_F(Dispatcher, UnknownCommunitiesAndForeignSourcesFailTheirAuthentication)
{
    Handle(Request(eSnmpV2c, ePduGet, "other"));
    EXPECT_EQ(failures.told, 1);
    EXPECT_EQ(counters.inBadCommunityNames, 1u);
    SRequest foreign = Request(eSnmpV1, ePduGet, "near");
    foreign.remote.Parse("udp:10.0.0.1:4000");
    EXPECT_FALSE(dispatcher.Handle(foreign, response));
    EXPECT_EQ(failures.told, 2);
    EXPECT_EQ(counters.inBadCommunityNames, 2u);
    Handle(Request(eSnmpV2c, ePduSet, "public"));
    Handle(Request(eSnmpV2c, ePduGet, "private"));
    EXPECT_EQ(failures.told, 2) << "who may not write is known all the same";
}

TEST_F(Dispatcher, WhoHasNoViewForAnOperationMisusesTheCommunity)
{
    Fail(eSnmpAuthorizationError, 1);
    Handle(Request(eSnmpV2c, ePduSet, "private"));
    EXPECT_EQ(counters.inBadCommunityUses, 0u) << "an object outside a write view";
    Handle(Request(eSnmpV2c, ePduSet, "public"));
    EXPECT_EQ(counters.inBadCommunityUses, 1u);
    Handle(Request(eSnmpV1, ePduGet, "blind"));
    EXPECT_EQ(counters.inBadCommunityUses, 2u);
    handler.answer = [](BVarBindList& list, int&) {
        list[1].Value().SetV2Exception(eEndOfMibView);
        return 0;
    };
    Handle(Request(eSnmpV2c, ePduGetNext, "public"));
    EXPECT_EQ(counters.inBadCommunityUses, 2u) << "a walk that has come to its end";
    Handle(Request(eSnmpV2c, ePduGetNext, "blind"));
    EXPECT_EQ(counters.inBadCommunityUses, 3u);
    handler.answer = nullptr;
    Handle(Request(eSnmpV2c, ePduSet, "public"));
    EXPECT_EQ(counters.inBadCommunityUses, 3u) << "what was granted is no misuse";
}

TEST_F(Dispatcher, ACommunityStandsForItsSecurityNameAndContext)
{
    for (int type : {ePduGet, ePduGetNext, ePduGetBulk, ePduSet}) {
        SRequest request = Request(eSnmpV2c, type, "bridge");
        request.maxRepetitions = 1;
        ASSERT_TRUE(dispatcher.Handle(request, response));
        EXPECT_STREQ(handler.securityName.c_str(), "private") << type;
        EXPECT_STREQ(handler.context.c_str(), "ports") << type;
        EXPECT_STREQ(handler.parameters.securityName.c_str(), "private") << type;
        EXPECT_STREQ(handler.parameters.contextName.c_str(), "ports") << type;
        request.community = "private";
        ASSERT_TRUE(dispatcher.Handle(request, response));
        EXPECT_STREQ(handler.context.c_str(), "") << type;
        EXPECT_STREQ(handler.parameters.contextName.c_str(), "") << type;
    }
}

TEST_F(Dispatcher, WhatIsNoRequestGetsNoAnswer)
{
    for (int type : {0xa2, 0xa4, 0xa6, 0xa7, 0xa8, 0})
        EXPECT_FALSE(Handle(Request(eSnmpV2c, type))) << type;
    EXPECT_FALSE(Handle(Request(eSnmpV1, ePduGetBulk))) << "SNMPv1 has no get-bulk";
    EXPECT_EQ(handler.calls, 0);
}

TEST_F(Dispatcher, TheTransactionTellsTheRequest)
{
    ASSERT_TRUE(Handle(Request(eSnmpV1, ePduGetNext, "public")));
    EXPECT_EQ(handler.pduType, ePduGetNext);
    EXPECT_EQ(handler.protocolId, 0);
    EXPECT_EQ(handler.parameters.protocolId, 0);
    EXPECT_EQ(handler.parameters.pduType, ePduGetNext);
    EXPECT_EQ(handler.parameters.request, 77);
    EXPECT_EQ(handler.parameters.securityModel, 1);
    EXPECT_STREQ(handler.parameters.securityName.c_str(), "public");
    EXPECT_EQ(handler.parameters.securityLevel, 1);
    EXPECT_TRUE(handler.hasRemote);
    EXPECT_STREQ(handler.remote.ToString().c_str(), "127.0.0.1");
    EXPECT_STREQ(handler.local.ToString().c_str(), "127.0.0.2");
    EXPECT_EQ(handler.remotePort, 4000u);
    EXPECT_EQ(handler.localPort, 1161u);

    SRequest second = Request(eSnmpV2c, ePduGet);
    second.remote.Parse("udp6:[::1]:4001");
    ASSERT_TRUE(dispatcher.Handle(second, response));
    EXPECT_EQ(handler.protocolId, 1);
    EXPECT_EQ(handler.parameters.securityModel, 2);
    EXPECT_FALSE(handler.hasRemote) << "an IPv6 address is no IpAddress";
    EXPECT_EQ(handler.remotePort, 4001u);
}

TEST_F(Dispatcher, AUserIsWhoTheMessageSays)
{
    SRequest request = Request(eSnmpV3, ePduGet, "");
    request.security.securityModel = eModelUsm;
    request.security.securityName = BString("alice");
    request.security.securityLevel = eAuthPriv;
    ASSERT_TRUE(Handle(request));
    EXPECT_FALSE(response.isContextUnknown);
    EXPECT_EQ(handler.protocolId, 3);
    EXPECT_EQ(handler.parameters.securityModel, 3);
    EXPECT_STREQ(handler.parameters.securityName.c_str(), "alice");
    EXPECT_EQ(handler.parameters.securityLevel, eAuthPriv);
    Fail(eSnmpAuthorizationError, 1);
    ASSERT_TRUE(Handle(request));
    EXPECT_EQ(response.status, eSnmpAuthorizationError);
    EXPECT_EQ(counters.inBadCommunityUses, 0u);
}

TEST_F(Dispatcher, AnUnknownContextIsToldAndNothingIsAsked)
{
    SRequest request = Request(eSnmpV3, ePduGet, "");
    request.security.securityModel = eModelUsm;
    request.security.securityName = BString("alice");
    request.context = BString("ports");
    ASSERT_TRUE(Handle(request));
    EXPECT_TRUE(response.isContextUnknown);
    EXPECT_EQ(handler.calls, 0);
}

// Who has no name is the operator at the console.
TEST_F(Dispatcher, AUserWithoutANameGetsNoAnswer)
{
    SRequest request = Request(eSnmpV3, ePduSet, "private");
    request.security.securityModel = eModelUsm;
    EXPECT_FALSE(Handle(request));
    EXPECT_EQ(handler.calls, 0);
}

TEST_F(Dispatcher, TheThreadKnowsItsRequestWhileItServesIt)
{
    std::string remote;
    handler.answer = [&](BVarBindList&, int&) {
        const SRequest* request = BRequestTransaction::OfThisThread();
        remote = request ? request->remote.ToString() : "none";
        return 0;
    };
    EXPECT_EQ(BRequestTransaction::OfThisThread(), nullptr);
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduGet)));
    EXPECT_EQ(remote, "udp:127.0.0.1:4000");
    EXPECT_EQ(BRequestTransaction::OfThisThread(), nullptr);
}

TEST_F(Dispatcher, TheTransactionEndsWithTheRequest)
{
    BTransaction probe(5);
    BTransactions* transactions = BTransactions::GetInstance();
    Handle(Request(eSnmpV2c, ePduGet));
    unsigned next = transactions->StartTransaction(&probe);
    transactions->EndTransaction(next);
    EXPECT_EQ(transactions->GetProtocolId(next - 1), -1);
}

TEST_F(Dispatcher, AnsweredBindingsAreThoseOfTheHandler)
{
    handler.answer = [](BVarBindList& list, int&) {
        list[0].Value().SetInt(4);
        list[1].Value().SetV2Exception(eNoSuchObject);
        return 0;
    };
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduGet)));
    EXPECT_EQ(response.status, 0);
    EXPECT_FALSE(response.echo);
    ASSERT_EQ(response.bindings.size(), 2u);
    EXPECT_EQ(response.bindings[0].Value().Int(), 4);
    EXPECT_EQ(response.bindings[1].Value().Syntax(), eNoSuchObject);
}

TEST_F(Dispatcher, AnErrorEchoesTheRequestWithItsIndex)
{
    Fail(eSnmpGenErr, 2);
    for (int type : {ePduGet, ePduGetNext, ePduSet}) {
        ASSERT_TRUE(Handle(Request(eSnmpV2c, type)));
        EXPECT_EQ(response.status, eSnmpGenErr);
        EXPECT_EQ(response.index, 2);
        EXPECT_TRUE(response.echo);
        EXPECT_TRUE(response.bindings.empty());
    }
}

TEST_F(Dispatcher, AnIndexOutsideTheListIsNotSent)
{
    for (int index : {-1, 3}) {
        Fail(eSnmpGenErr, index);
        ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduGet)));
        EXPECT_EQ(response.index, 0);
    }
}

TEST_F(Dispatcher, StatusesTakeTheFormOfTheVersion)
{
    Fail(eSnmpAuthorizationError, 1);
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduSet)));
    EXPECT_EQ(response.status, eSnmpNoAccess);
    ASSERT_TRUE(Handle(Request(eSnmpV1, ePduSet)));
    EXPECT_EQ(response.status, eSnmpNoSuchName);
    Fail(eSnmpWrongType, 1);
    ASSERT_TRUE(Handle(Request(eSnmpV1, ePduSet)));
    EXPECT_EQ(response.status, eSnmpBadValue);
    EXPECT_EQ(response.index, 1);
}

TEST_F(Dispatcher, ASuccessfulSetEchoesTheRequest)
{
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduSet)));
    EXPECT_EQ(response.status, 0);
    EXPECT_TRUE(response.echo);
}

TEST_F(Dispatcher, AnUnfitValueIsReportedToThoseWhoMayWrite)
{
    SRequest request = Request(eSnmpV2c, ePduSet);
    request.unfitIndex = 2;
    request.unfitStatus = eSnmpWrongType;
    ASSERT_TRUE(dispatcher.Handle(request, response));
    EXPECT_EQ(response.status, eSnmpWrongType);
    EXPECT_EQ(response.index, 2);
    request.community = "public";
    ASSERT_TRUE(dispatcher.Handle(request, response));
    EXPECT_EQ(response.status, eSnmpNoAccess);
    EXPECT_EQ(response.index, 1);
    EXPECT_EQ(handler.calls, 0);
}

TEST_F(Dispatcher, TooLargeAnAnswerIsTooBigInTheFormOfTheVersion)
{
    handler.answer = [](BVarBindList& list, int&) {
        list[0].Value().SetOctets(BOctetString(600, nullptr));
        return 0;
    };
    SRequest request = Request(eSnmpV2c, ePduGet);
    request.maxMessage = 484;
    ASSERT_TRUE(dispatcher.Handle(request, response));
    EXPECT_EQ(response.status, eSnmpTooBig);
    EXPECT_EQ(response.index, 0);
    EXPECT_FALSE(response.echo);
    EXPECT_TRUE(response.bindings.empty());
    request.protocol = eSnmpV1;
    ASSERT_TRUE(dispatcher.Handle(request, response));
    EXPECT_EQ(response.status, eSnmpTooBig);
    EXPECT_EQ(response.index, 0);
    EXPECT_TRUE(response.echo);
}

TEST_F(Dispatcher, GetBulkIsCutWhereGetIsTooBig)
{
    handler.answer = [](BVarBindList& list, int&) {
        for (int i = 0; i < static_cast<int>(list.Count()); ++i)
            list[i].Value().SetOctets(BOctetString(300, nullptr));
        return 0;
    };
    SRequest request = Request(eSnmpV2c, ePduGetBulk, "public");
    request.maxMessage = 484;
    request.maxRepetitions = 5;
    ASSERT_TRUE(dispatcher.Handle(request, response));
    EXPECT_EQ(handler.pduType, ePduGetBulk);
    EXPECT_EQ(response.status, 0);
    EXPECT_EQ(response.bindings.size(), 1u);
}

TEST_F(Dispatcher, AnAnswerInsteadCarriesItsStatus)
{
    SRequest request = Request(eSnmpV1, ePduGet);
    dispatcher.AnswerInstead(eSnmpGenErr, request, response);
    EXPECT_EQ(response.status, eSnmpGenErr);
    EXPECT_TRUE(response.echo);
    request.protocol = eSnmpV2c;
    dispatcher.AnswerInstead(eSnmpTooBig, request, response);
    EXPECT_EQ(response.status, eSnmpTooBig);
    EXPECT_FALSE(response.echo);
}
