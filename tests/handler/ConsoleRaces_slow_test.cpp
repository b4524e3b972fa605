// Operators at consoles of one agent against its managers and its traps.
#include "tests/support/ScriptedStream.h"
#include "tests/support/Workers.h"
#include <vkmibh/testing/requests.h>

#include <vkmibh/agents.h>
#include <vkmibh/cli.h>
#include <vkmibh/timer.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

constexpr char kContact[] = "1.3.6.1.2.1.1.4.0";
constexpr char kName[] = "1.3.6.1.2.1.1.5.0";

class CountingAgent : public BAgent {
public:
    int SendTrap(const BTrap& trap, int) override
    {
        BObjectIdentifier oid;
        sent += running && trap.GetV2TrapOid(oid) ? 1 : 0;
        return 0;
    }
    int Init(int) override { return 0; }
    int Suspend(int) override { return Run(false); }
    int Resume(int) override { return Run(true); }
    int Start(int) override { return Run(true); }
    int Stop(int) override { return Run(false); }
    BString GetParams() override { return BString("all of them"); }

    std::atomic<long> sent{0};

private:
    int Run(bool run)
    {
        running = run;
        return 0;
    }
    std::atomic<bool> running{false};
};

class ConsoleRacesSlow : public ::testing::Test {
protected:
    ConsoleRacesSlow() : handler(nullptr), agents(time)
    {
        handler.Init(nullptr, nullptr);
        EXPECT_EQ(0, agents.Register("udp", &first));
        EXPECT_EQ(0, agents.Register("trap", &second));
        EXPECT_EQ(0, agents.Init());
        EXPECT_EQ(0, agents.Start());
        Client client(handler);
        SetBoth(client, "nobody");
    }

    // One console, the operator of which has a name of his own.
    struct SConsole {
        explicit SConsole(BMibHandler& served) : cli(&served, &stream) {}
        std::string Type(const std::string& line)
        {
            EXPECT_TRUE(cli.Exec(StringOf(line)));
            return stream.Taken();
        }
        ScriptedStream stream;
        BCLI cli;
    };

    // Contact and name are only ever set to the same text, by one SET; a GET of
    // both finds them so.
    void SetBoth(Client& client, const std::string& text)
    {
        BVarBindList list;
        BObjectSyntax value;
        value.SetOctets(StringOf(text));
        list.Append(MakeOid(kContact), value);
        list.Append(MakeOid(kName), value);
        ASSERT_EQ(0, client.Query(ePduSet, list));
    }
    void Manage(Client& client, const std::string& who, long step)
    {
        SetBoth(client, who + std::string(step % 40, 'x'));
        ASSERT_EQ(0, client.Get({kContact, kName}));
        EXPECT_EQ(client.TextAt(0), client.TextAt(1));
    }
    void Walk(Client& client)
    {
        BVarBindList list;
        list.Append(MakeOid("1.3"));
        unsigned count = 0;
        while (client.Query(ePduGetNext, list) == 0 && !list[0].Value().IsException())
            ++count;
        EXPECT_EQ(8u + 30u, count) << "the system group and ten rows";
    }
    void Operate(SConsole& console, const std::string& who, long step)
    {
        const std::string text = who + std::to_string(step % 1000);
        EXPECT_EQ(std::string(kContact) + " = " + text + "\n" + kName + " = " + text + "\n",
                  console.Type("set " + (kContact + (" 4 " + text)) + " " + kName + " 4 " + text));
        CheckPair(console.Type(std::string("get ") + kContact + " " + kName));
        EXPECT_EQ("1.3.6.1.2.1.1.7.0 = 7\n", console.Type("getnext 1.3.6.1.2.1.1.6.0"));
        EXPECT_EQ("get: invalid oid 'bad'", console.Type("get bad"));
        console.Type("clivacm " + text);
        EXPECT_NE("", console.Type("?"));
    }
    // "name = text", twice.
    static void CheckPair(const std::string& told)
    {
        const size_t line = told.find('\n');
        ASSERT_NE(std::string::npos, line) << told;
        const std::string contact = told.substr(0, line);
        const std::string name = told.substr(line + 1, told.size() - line - 2);
        EXPECT_EQ(contact.substr(contact.find('=')), name.substr(name.find('=')));
    }
    void OperateAgents(SConsole& console)
    {
        for (const char* line : {"agents", "agents -s", "agents -r", "agparams", "agparams udp"})
            EXPECT_NE("", console.Type(line)) << line;
    }
    void SendTrap()
    {
        BVarBindList bindings;
        bindings.Append(MakeOid("1.3.6.1.2.1.2.2.1.1.1"));
        agents.SendTrap(BTrapV1(MakeOid("1.3.6.1.4.1.1"), eTrapLinkDown, 0, bindings), nullptr);
        agents.SendTrap(BTrapV2(MakeOid("1.3.6.1.6.3.1.1.5.1")), "trap");
    }

    BTime time;
    BMibHandler handler;
    BAgents agents;
    CountingAgent first, second;
};

TEST_F(ConsoleRacesSlow, OperatorsAgainstManagersAndTraps)
{
    SConsole consoles[] = {SConsole(handler), SConsole(handler), SConsole(handler)};
    EXPECT_EQ(2, consoles[2].cli.Register(&agents));
    Client one(handler), old(handler, kV1), walker(handler);
    Workers workers(RaceTime(), [&] { return first.sent > 0 && second.sent > 0; });
    workers.Add("manager", [&, n = 0L]() mutable { Manage(one, "one", n++); });
    workers.Add("manager in SNMPv1", [&, n = 0L]() mutable { Manage(old, "old", n++); });
    workers.Add("walk", [&] { Walk(walker); });
    workers.Add("operator 1", [&, n = 0L]() mutable { Operate(consoles[0], "mary-", n++); });
    workers.Add("operator 2", [&, n = 0L]() mutable { Operate(consoles[1], "paul-", n++); });
    workers.Add("operator of agents", [&] { OperateAgents(consoles[2]); });
    workers.Add("traps", [&] { SendTrap(); });
    workers.Join();
    std::printf("traps: %ld\n", first.sent + second.sent);
}

} // namespace
} // namespace Test
} // namespace VLK
