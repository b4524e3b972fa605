// What the access control allocates, and what it does without memory.
#include "tests/support/FailingAlloc.h"

#include "host/Dispatcher.h"
#include "host/Options.h"
#include "host/access/ReportingHandler.h"

#include "tests/support/Oids.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::MakeOid;

namespace {

constexpr const char* kObject = "1.3.6.1.2.1.1.7.0"; // sysServices, a number

class NoSaves : public ISetSaves {
public:
    void Hold() override {}
    bool SaveHeld() override { return true; }
};

SConfiguration WithPublic()
{
    SOptions options;
    options.communities = {{"public", false}};
    return Configure(options);
}

class AccessCost : public testing::Test {
protected:
    AccessCost()
    {
        handler.Init(nullptr, nullptr);
        request.pduType = ePduGet;
        request.community = "public";
        request.remote.Parse("udp:127.0.0.1:4000");
        request.maxMessage = 65507;
        request.bindings.Append(MakeOid(kObject));
    }

    NoSaves saves;
    BAccess access{WithPublic(), nullptr};
    BReportingHandler handler{access, saves};
    modules::SSnmpCounters counters;
    BDispatcher dispatcher{handler, access, counters};
    SRequest request;
    SResponse response;
};

} // namespace

TEST_F(AccessCost, ADecisionAllocatesNothingWhateverItIs)
{
    const BObjectIdentifier name = MakeOid(kObject);
    const std::string stranger = "nobody";
    BSecurityParams unknown;
    BString noContext("nowhere");
    BCommunities::EAdmission admission;
    FailingAlloc fail(0);
    const SRequester* requester =
        BRightsOfRequest(access)->communities.Admit(request.community, request.remote, admission);
    ASSERT_TRUE(requester);
    const BSecurityParams& security = requester->v2c;
    EXPECT_EQ(
        BRightsOfRequest(access)->vacm.Decide(security, eViewRead, requester->context, name).answer,
        eVacmAllowed);
    EXPECT_EQ(BRightsOfRequest(access)
                  ->vacm.Decide(security, eViewWrite, requester->context, name)
                  .answer,
              eVacmNoSuchView);
    EXPECT_EQ(
        BRightsOfRequest(access)->vacm.Decide(unknown, eViewRead, requester->context, name).answer,
        eVacmNoGroupName);
    EXPECT_EQ(BRightsOfRequest(access)->vacm.Decide(security, eViewRead, noContext, name).answer,
              eVacmNoSuchContext);
    EXPECT_FALSE(BRightsOfRequest(access)->communities.Admit(stranger, request.remote, admission));
    EXPECT_FALSE(fail.Failed());
}

TEST_F(AccessCost, AGetOfOneScalarAllocatesTheListOfItsAnswerOnly)
{
    ASSERT_TRUE(dispatcher.Handle(request, response));
    request.bindings[0] = std::move(response.bindings[0]);
    request.bindings[0].Value().SetNull();
    bool isOneEnough = false;
    {
        FailingAlloc fail(1);
        isOneEnough = dispatcher.Handle(request, response) && !fail.Failed();
    }
    EXPECT_TRUE(isOneEnough);
    ASSERT_EQ(response.bindings.size(), 1u);
    EXPECT_EQ(response.bindings[0].Value().Syntax(), eAsnInteger);
}

TEST_F(AccessCost, WhatIsNotLoggedCostsNoMemory)
{
    request.community = "stranger";
    testing::internal::CaptureStderr();
    for (unsigned i = 0; i < BLimitedLog::kBurst; ++i)
        EXPECT_FALSE(dispatcher.Handle(request, response));
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    FailingAlloc fail(0);
    EXPECT_FALSE(dispatcher.Handle(request, response));
    EXPECT_FALSE(fail.Failed());
}

TEST_F(AccessCost, ARefusalForWhoseLineThereIsNoMemoryIsRefusedAllTheSame)
{
    BSecurityParams stranger;
    BVarBindList list;
    list.Append(MakeOid(kObject));
    int errorIndex = 0;
    FailingAlloc fail(0);
    EXPECT_EQ(handler.Query(ePduGet, 0, stranger, BString(), list, errorIndex),
              eSnmpAuthorizationError);
    EXPECT_TRUE(fail.Failed()) << "the line needs memory";
}
