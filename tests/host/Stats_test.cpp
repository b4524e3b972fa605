// What the agent has been asked, and which modules keep requests waiting.
#include "VerbsTest.h"

#include "tests/support/CallbackHandler.h"
#include "tests/support/Threads.h"
#include <vkmibh/testing/recorder.h>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::CallbackHandler;

namespace {

const char kConfiguration[] = R"(
[[community]]
name = "all"
read = "everything"
write = "everything"
)";

class Stats : public VerbsTest {
protected:
    Stats() : VerbsTest(kConfiguration) { handler.RegisterSubtreeHandler(&module); }

    void Ask(SRequest request)
    {
        SResponse response;
        dispatcher.Handle(request, response);
    }
    void GetAtTheConsole(const char* name)
    {
        VLK::Test::ScriptedStream out;
        handler.CmdExecute(out, BString("get"), VLK::Test::ArgsOf({name}), console, context);
    }
    static int TakeTwoMilliseconds()
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(2);
        while (std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
        return 0;
    }
    SSlowness SlownessOf(const char* region)
    {
        return regions.Holding(VLK::Test::MakeOid(region))->slowness;
    }
    CallbackHandler module{"1.3.6.1.4.1.32473.1"};
};

} // namespace

TEST_F(Stats, OfNothing)
{
    load.workers = 8;
    load.mostWaitingSets = 64;
    EXPECT_EQ(Type("stats"), R"(requests           SNMPv1      SNMPv2c       SNMPv3
  get                   0            0            0
  getnext               0            0            0
  getbulk               0            0            0
  set                   0            0            0
unanswered   0 of an unknown community, or one not answered there
errors       none
sets         none at work, 0 of 64 waiting for it
threads      0 of 8 held by slow requests
dropped      0 requests for want of a thread
notified     no receivers
slow         no module has taken more than a millisecond for a request
)");
    EXPECT_EQ(Type("stats all"), "stats: invalid argument(s)\nUsage stats\n");
}

TEST_F(Stats, OfRequestsByKindVersionAndStatus)
{
    const char* const name = "1.3.6.1.4.1.32473.1.1.0";
    Ask(WireRequest("all", ePduGet, name, eSnmpV1));
    Ask(WireRequest("all", ePduGet, name));
    Ask(WireRequest("all", ePduGet, name));
    Ask(WireRequest("all", ePduGetNext, name));
    Ask(WireRequest("all", ePduGetBulk, name));
    Ask(WireRequest("all", ePduSet, name));
    Ask(WireRequest("eve", ePduGet, name));
    module.onSet = [](unsigned, const BVarBindList&, ESnmpSetOpCode op, int&) {
        return op == eSetTest ? eSnmpWrongValue : eSnmpNoError;
    };
    Ask(WireRequest("all", ePduSet, name));
    Ask(WireRequest("all", ePduSet, name, eSnmpV1));
    EXPECT_EQ(Line("stats", "  get"), "1            2            0");
    EXPECT_EQ(Line("stats", "  getnext"), "0            1            0");
    EXPECT_EQ(Line("stats", "  getbulk"), "0            1            0");
    EXPECT_EQ(Line("stats", "  set"), "1            2            0");
    EXPECT_EQ(Line("stats", "unanswered"), "1 of an unknown community, or one not answered there");
    EXPECT_EQ(Line("stats", "errors"), "badValue 1, wrongValue 1");
}

TEST_F(Stats, OfRequestsWithSnmpV3)
{
    SRequest request = WireRequest("", ePduGet, "1.3.6.1.4.1.32473.1.1.0", eSnmpV3);
    request.security.securityModel = eModelUsm;
    request.security.securityName = BString("bob");
    request.security.securityLevel = eNoAuthNoPriv;
    Ask(std::move(request));
    EXPECT_EQ(Line("stats", "  get"), "0            0            1");
    EXPECT_EQ(Line("stats", "errors"), "authorizationError 1");
}

TEST_F(Stats, OfTheEngineAndItsAgents)
{
    load = {8, 3, true, 5, 64};
    totals.overload = 7;
    totals.receivers = 2;
    totals.sent = 10;
    totals.acknowledged = 4;
    EXPECT_EQ(Line("stats", "sets"), "one at work, 5 of 64 waiting for it");
    EXPECT_EQ(Line("stats", "threads"), "3 of 8 held by slow requests");
    EXPECT_EQ(Line("stats", "dropped"), "7 requests for want of a thread");
    EXPECT_EQ(Line("stats", "notified"),
              "2 receivers, 10 sent, 0 failed, 0 outside the notify view, 0 dropped for want of "
              "room, 4 acknowledged, 0 retried, 0 given up");
}

TEST_F(Stats, OfASlowModule)
{
    module.onGet = [](unsigned, BVarBindList&, int&, int) { return TakeTwoMilliseconds(); };
    CallbackHandler other{"1.3.6.1.4.1.32473.2"};
    handler.RegisterSubtreeHandler(&other);
    GetAtTheConsole("1.3.6.1.4.1.32473.1.1.0");
    GetAtTheConsole("1.3.6.1.4.1.32473.1.2.0");
    const SSlowness slowness = SlownessOf("1.3.6.1.4.1.32473.1");
    EXPECT_EQ(slowness.requests, 2u);
    EXPECT_GE(slowness.worst, std::chrono::milliseconds(2));
    EXPECT_GE(slowness.total, slowness.worst + std::chrono::milliseconds(2));
    EXPECT_LE(slowness.worstAt, std::chrono::system_clock::now());
    const std::string text = Type("stats");
    EXPECT_NE(text.find("slow         modules that took more than a millisecond for a request\n"
                        "  requests     total ms     worst ms  worst at             region\n"
                        "         2"),
              text.npos)
        << text;
    EXPECT_NE(text.find("  1.3.6.1.4.1.32473.1 of callback\n"), text.npos) << text;
}

TEST_F(Stats, OfSavesThatAreSlow)
{
    handler.Init(nullptr, nullptr);
    saves.onSave = [] { TakeTwoMilliseconds(); };
    BVarBindList list;
    list.Append(VLK::Test::MakeOid("1.3.6.1.2.1.1.4.0"));
    list[0].Value().SetOctets(BOctetString(BString("me")));
    int index = 0;
    EXPECT_EQ(handler.Query(ePduSet, 0, console, BString(), list, index), eSnmpNoError);
    const std::string text = Type("stats");
    EXPECT_NE(text.find("  none: saving what SETs have changed\n"), text.npos) << text;
}

// The thread has lost its role: that is all that a clock is read for.
TEST_F(Stats, OfARequestThatItsRelayFoundLate)
{
    auto slow = std::make_shared<BSlowness>();
    auto afterwards = std::make_shared<BSlowness>();
    BRelay relay(1, std::chrono::milliseconds(1));
    bool isLate = false;
    std::atomic<bool> isOver{false};
    relay.Run([&] {
        if (isLate || relay.Late()) { // the other thread: waits for the late one
            EXPECT_TRUE(Eventually([&] { return isOver.load(); }));
            return;
        }
        const int64_t ticket = relay.Begin();
        {
            const BRequestClock clock(&relay, ticket);
            EXPECT_TRUE(BRequestClock::IsOnThisThread());
            EXPECT_TRUE(Eventually([&] { return relay.IsLate(ticket); }));
            BRequestClock::OnReturn(slow);
            BRequestClock::OnReturn(afterwards);
        }
        EXPECT_FALSE(relay.End(ticket));
        isOver = true;
    });
    EXPECT_EQ(slow->Now().requests, 1u);
    EXPECT_GE(slow->Now().worst, std::chrono::milliseconds(1));
}

TEST_F(Stats, OfARequestInTimeAreNone)
{
    auto slowness = std::make_shared<BSlowness>();
    BRelay relay(1, std::chrono::hours(1));
    const int64_t ticket = relay.Begin();
    {
        const BRequestClock clock(&relay, ticket);
        TakeTwoMilliseconds(); // the relay has not minded
        BRequestClock::OnReturn(slowness);
    }
    EXPECT_TRUE(relay.End(ticket));
    EXPECT_EQ(slowness->Now().requests, 0u);
    BRequestClock::OnReturn(slowness); // no request
    EXPECT_EQ(slowness->Now().requests, 0u);
}

// Once for a request, whatever the number of calls; the slowest of many.
TEST_F(Stats, OfManyModulesInOneRequest)
{
    std::vector<std::shared_ptr<BSlowness>> modules;
    {
        const BRequestClock clock;
        for (int i = 0; i < 10; ++i) {
            modules.push_back(std::make_shared<BSlowness>());
            if (i == 0 || i == 9)
                TakeTwoMilliseconds();
            BRequestClock::OnReturn(modules.back());
        }
        TakeTwoMilliseconds();
        BRequestClock::OnReturn(modules.front());
    }
    EXPECT_EQ(modules.front()->Now().requests, 1u);
    EXPECT_GE(modules.front()->Now().worst, std::chrono::milliseconds(4));
    EXPECT_EQ(modules.back()->Now().requests, 1u);
}
