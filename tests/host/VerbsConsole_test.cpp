// explain, owners, stats and lastset at the console of a running agent, and beside
// requests.
#include "VerbsTest.h"

#include "host/Completion.h"
#include "host/Console.h"

#include "PipedAgent.h"

#include "tests/support/ListHandler.h"

using namespace VLK;
using namespace VLK::host;

namespace {

class VerbsConsole : public testing::Test {
protected:
    TempDir directory;
    PipedAgent agent{directory.File("store.db")};
};

class VerbsRaces : public VerbsTest {
protected:
    VerbsRaces()
        : VerbsTest("[[community]]\nname = \"all\"\nread = \"everything\"\nwrite = "
                    "\"everything\"\n")
    {
        handler.Init(nullptr, nullptr);
    }
};

bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != text.npos;
}

} // namespace

TEST_F(VerbsConsole, AreListedAndHelpedWith)
{
    const std::string text =
        agent.Answers("? \nhelp explain\nhelp owners\nhelp stats\nhelp lastset\n");
    EXPECT_TRUE(Holds(text, " explain        <oid> [<community> [v1 | v2c] | <user> [v3 [<level> "
                            "[<context>]]]]\n"))
        << text;
    EXPECT_TRUE(Holds(text, " lastset\n")) << text;
    EXPECT_TRUE(Holds(text, " owners         [<oid>]\n")) << text;
    EXPECT_TRUE(Holds(text, " stats\n")) << text;
    EXPECT_TRUE(Holds(text, "explain: Tell who serves an object, and who may read, write and be "
                            "notified\n"))
        << text;
    EXPECT_TRUE(Holds(text, "owners: List the registered regions and their modules\n")) << text;
    EXPECT_TRUE(Holds(text, "stats: Print counts of requests, and the slow modules\n")) << text;
    EXPECT_TRUE(Holds(text, "lastset: Print the last set, phase by phase\n")) << text;
}

TEST_F(VerbsConsole, TellOfRequestsOfTheWire)
{
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    const Arguments once{"-r", "0", "-t", "60"}; // they are counted
    EXPECT_EQ(agent.Ask("snmpset", "private", {oid::kSysContact, "s", "me"}, once).status, 0);
    EXPECT_NE(agent.Ask("snmpset", "public", {oid::kSysName, "s", "me"}, once).status, 0);
    const std::string text = agent.Answers("stats\nlastset\nexplain 1.3.6.1.2.1.1.5.0 public\n"
                                           "owners 1.3.6.1.2.1.1\n");
    EXPECT_TRUE(Holds(text, "  set                   0            2            0\n")) << text;
    EXPECT_TRUE(Holds(text, "errors       noAccess 1\n")) << text;
    EXPECT_TRUE(Holds(text, "by           a community (not shown) with SNMPv2c from "
                            "udp:127.0.0.1:"))
        << text;
    EXPECT_TRUE(Holds(text, "answer       authorizationError at binding 1, sent as noAccess: the "
                            "group has no write view, or one without rows\n"))
        << text;
    EXPECT_TRUE(Holds(text, "verdict      read allowed, write refused, notify allowed\n")) << text;
    EXPECT_TRUE(Holds(text, " SNMPv2-MIB.system\n")) << text;
    EXPECT_FALSE(Holds(text, "private")) << text;
}

TEST_F(VerbsRaces, AreCompleted)
{
    const std::vector<std::string> names = CommandNames({&handler, &verbs});
    EXPECT_EQ(Complete(names, "expl").insert, "ain ");
    EXPECT_EQ(Complete(names, "ow").insert, "ners ");
    EXPECT_EQ(Complete(names, "sta").insert, "ts ");
    EXPECT_EQ(Complete(names, "help last").insert, "set ");
}

TEST_F(VerbsRaces, TellWhileRequestsAndRegistrationsGoOn)
{
    std::atomic<bool> isOver{false};
    std::atomic<int> rounds[3] = {};
    const auto asks = [&](int pduType) {
        for (; !isOver; ++rounds[pduType == ePduSet]) {
            SRequest request = WireRequest("all", pduType, "1.3.6.1.2.1.1.4.0");
            SResponse response;
            dispatcher.Handle(request, response);
            std::this_thread::yield();
        }
    };
    std::thread gets([&] { asks(ePduGetNext); });
    std::thread sets([&] { asks(ePduSet); });
    std::thread registers([&] {
        for (; !isOver; ++rounds[2]) {
            VLK::Test::ListHandler module("1.3.6.1.4.1.32473.1");
            EXPECT_TRUE(handler.RegisterSubtreeHandler(&module));
            EXPECT_TRUE(handler.UnregisterSubtreeHandler(&module));
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 20 || !(rounds[0] && rounds[1] && rounds[2]); ++i) {
        EXPECT_TRUE(Holds(Type("explain 1.3.6.1.2.1.1.4.0 all"), "verdict      read allowed"));
        EXPECT_TRUE(Holds(Type("explain 1.3.6.1.4.1.32473.1.1"), "verdict      read allowed"));
        EXPECT_TRUE(Holds(Type("owners"), "SNMPv2-MIB.system\n"));
        EXPECT_TRUE(Holds(Type("stats"), "requests "));
        EXPECT_FALSE(Type("lastset").empty());
    }
    isOver = true;
    gets.join();
    sets.join();
    registers.join();
    EXPECT_EQ(Line("lastset", "answer"), "Success");
}
