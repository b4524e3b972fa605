#include "host/Dispatcher.h"

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

    int Query(int type, int transactionId, const BSecurityParams&, const BString&,
              BVarBindList& list, int& errorIndex) override
    {
        ++calls;
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

class FakeSaves : public ISetSaves {
public:
    bool works = true;
    bool held = false;
    int saves = 0;

    void Hold() override { held = true; }
    bool SaveHeld() override
    {
        held = false;
        ++saves;
        return works;
    }
};

class Dispatcher : public testing::Test {
protected:
    FakeHandler handler;
    BCommunityAccess access{{{"public", false}, {"private", true}}};
    FakeSaves saves;
    BDispatcher dispatcher{handler, access, saves};
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

TEST_F(Dispatcher, ASetThatWasNotKeptIsNotAcknowledged)
{
    saves.works = false;
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduSet)));
    EXPECT_EQ(response.status, eSnmpUndoFailed);
    EXPECT_EQ(response.index, 0);
    ASSERT_TRUE(Handle(Request(eSnmpV1, ePduSet)));
    EXPECT_EQ(response.status, eSnmpGenErr);
    Fail(eSnmpWrongType, 2);
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduSet)));
    EXPECT_EQ(response.status, eSnmpWrongType) << "the first reason counts";
    handler.answer = nullptr;
    saves.works = true;
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduSet)));
    EXPECT_EQ(response.status, 0) << "a later one went well";
}

TEST_F(Dispatcher, ASetIsSavedOnceAfterAllItsBindings)
{
    handler.answer = [this](BVarBindList&, int&) {
        EXPECT_TRUE(saves.held);
        EXPECT_EQ(saves.saves, 0);
        return 0;
    };
    ASSERT_TRUE(Handle(Request(eSnmpV2c, ePduSet)));
    EXPECT_EQ(saves.saves, 1);
    EXPECT_FALSE(saves.held);
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
