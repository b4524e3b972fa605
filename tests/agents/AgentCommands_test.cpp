// The console commands of the registry of agents, byte by byte.
#include "tests/agents/RecordingAgent.h"
#include "tests/support/ScriptedStream.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>
#include <vkmibh/cli.h>
#include <vkmibh/timer.h>

namespace VLK {
namespace Test {
namespace {

using Texts = std::vector<std::string>;
using Calls = RecordingAgent::Calls;

const char kUsage[] = "\nUsage:\n"
                      " agents -l                  list registered agents\n"
                      " agents -s[<agentName>]     suspend agent(s) \n"
                      " agents -r[<agentName>]     resume agent(s) \n";

class AgentCommands : public ::testing::Test {
protected:
    void RegisterThree()
    {
        ASSERT_EQ(0, agents.Register("udp6", &c));
        ASSERT_EQ(0, agents.Register("tcp", &a));
        ASSERT_EQ(0, agents.Register("udp", &b));
        a.params = "port 10161";
        b.params = "port 161\ncommunity public";
    }
    // What a command writes, one text per Write().
    Texts Run(const char* command, const Texts& words)
    {
        BStringArray args;
        for (const std::string& word : words)
            args.PushBack(BString(word.data(), static_cast<unsigned>(word.size())));
        ScriptedStream out;
        EXPECT_EQ(0, agents.CmdExecute(out, command, args, BSecurityParams(), BString()));
        return out.texts;
    }
    Calls Taken()
    {
        Calls taken;
        taken.swap(calls);
        return taken;
    }

    Calls calls;
    RecordingAgent a{"a", calls};
    RecordingAgent b{"b", calls};
    RecordingAgent c{"c", calls};
    BTime time;
    BAgents agents{time};
};

TEST_F(AgentCommands, AreTheTwoOfTheTable)
{
    EXPECT_STREQ("\"BAgents\"", BAgents::s_cmdHandlerName);
    EXPECT_STREQ("\"BAgents\"", agents.CmdHndlrName());
    EXPECT_EQ(BAgents::s_cliEntries, agents.CmdGetMap());
    ASSERT_EQ(2, agents.CmdCount());
    const SCmdMapEntry* const rows = BAgents::s_cliEntries;
    EXPECT_EQ(0, rows[0].id);
    EXPECT_STREQ("agents", rows[0].name);
    EXPECT_EQ(nullptr, rows[0].description);
    EXPECT_STREQ("-l | -s | -r", rows[0].argsDescription);
    EXPECT_EQ(1, rows[1].id);
    EXPECT_STREQ("agparams", rows[1].name);
    EXPECT_STREQ("Display agent params", rows[1].description);
    EXPECT_STREQ("[<agentName>]", rows[1].argsDescription);
    EXPECT_EQ(-1, rows[2].id);
    EXPECT_EQ(nullptr, rows[2].name);
    EXPECT_EQ(nullptr, rows[2].description);
    EXPECT_EQ(nullptr, rows[2].argsDescription);
}

TEST_F(AgentCommands, AreReachedThroughTheHandlersBase)
{
    ICmdHandler& handler = agents;
    EXPECT_STREQ("\"BAgents\"", handler.CmdHndlrName());
    EXPECT_EQ(2, handler.CmdCount());
    ScriptedStream out;
    EXPECT_EQ(0, handler.CmdExecute(out, "agents", BStringArray(), BSecurityParams(), BString()));
    EXPECT_EQ(Texts{"There are no registered agents\n\n"}, out.texts);
}

TEST_F(AgentCommands, AgentsListsThemInOneText)
{
    EXPECT_EQ(Texts{"There are no registered agents\n\n"}, Run("agents", {}));
    EXPECT_EQ(Texts{"There are no registered agents\n\n"}, Run("agents", {"-l"}));
    RegisterThree();
    const Texts list{"Registered agents:\n 1. tcp\n 2. udp\n 3. udp6\n\n"};
    EXPECT_EQ(list, Run("agents", {}));
    EXPECT_EQ(list, Run("agents", {"-l"}));
    EXPECT_EQ(list, Run("agents", {"-ludp"})) << "the value is not looked at";
    EXPECT_EQ(list, Run("agents", {"-l", "-s"})) << "nor is what follows";
    EXPECT_EQ(Calls(), Taken());
}

TEST_F(AgentCommands, TheListCountsInDecimal)
{
    std::vector<std::unique_ptr<RecordingAgent>> many;
    std::string expected = "Registered agents:\n";
    for (int i = 1; i <= 120; ++i) {
        const std::string name = "agent" + std::to_string(1000 + i);
        many.push_back(std::make_unique<RecordingAgent>(name, calls));
        ASSERT_EQ(0, agents.Register(name.c_str(), many.back().get()));
        expected += " " + std::to_string(i) + ". " + name + "\n";
    }
    EXPECT_EQ(Texts{expected + "\n"}, Run("agents", {}));
}

TEST_F(AgentCommands, AgentsSuspendsAllOrOne)
{
    RegisterThree();
    EXPECT_EQ(Texts{"Agent(s) suspended.\n"}, Run("agents", {"-s"}));
    EXPECT_EQ((Calls{"suspend a", "suspend b", "suspend c"}), Taken());
    EXPECT_EQ(Texts{"Agent(s) suspended.\n"}, Run("agents", {"-sudp"}));
    EXPECT_EQ(Calls{"suspend b"}, Taken());
    EXPECT_EQ(Texts{"Agent(s) suspended.\n"}, Run("agents", {"-s", "udp"})) << "that is all";
    EXPECT_EQ((Calls{"suspend a", "suspend b", "suspend c"}), Taken());
}

TEST_F(AgentCommands, AgentsResumesAllOrOne)
{
    RegisterThree();
    EXPECT_EQ(Texts{"Agent(s) resumed.\n"}, Run("agents", {"-r"}));
    EXPECT_EQ((Calls{"resume a", "resume b", "resume c"}), Taken());
    EXPECT_EQ(Texts{"Agent(s) resumed.\n"}, Run("agents", {"-rudp"}));
    EXPECT_EQ(Calls{"resume b"}, Taken());
}

TEST_F(AgentCommands, AFailureIsTold)
{
    RegisterThree();
    b.status = 4;
    EXPECT_EQ(Texts{"Failed to suspend agent(s).\n"}, Run("agents", {"-s"}));
    EXPECT_EQ((Calls{"suspend a", "suspend b"}), Taken()) << "the third is not suspended";
    EXPECT_EQ(Texts{"Failed to resume agent(s).\n"}, Run("agents", {"-r"}));
    EXPECT_EQ((Calls{"resume a", "resume b"}), Taken());
    EXPECT_EQ(Texts{"Failed to suspend agent(s).\n"}, Run("agents", {"-sudp"}));
    EXPECT_EQ(Texts{"Failed to resume agent(s).\n"}, Run("agents", {"-rnosuch"}));
    EXPECT_EQ(Texts{"Failed to suspend agent(s).\n"}, Run("agents", {"-snosuch"}));
    EXPECT_EQ(Calls{"suspend b"}, Taken());
    b.throws = true;
    EXPECT_EQ(Texts{"Failed to suspend agent(s).\n"}, Run("agents", {"-s"}));
}

TEST_F(AgentCommands, SuspendingNoneSucceeds)
{
    EXPECT_EQ(Texts{"Agent(s) suspended.\n"}, Run("agents", {"-s"}));
    EXPECT_EQ(Texts{"Agent(s) resumed.\n"}, Run("agents", {"-r"}));
}

TEST_F(AgentCommands, OtherArgumentsAreUnknown)
{
    RegisterThree();
    const std::string withNul("-\0", 2);
    for (const std::string argument :
         {"-x", "-S", "-L", "-R", "-xudp", "--", "-1", "l", "s", "udp", "-", "", " -s", "list"}) {
        EXPECT_EQ((Texts{"Unknown argument '" + argument + "'\n", kUsage}),
                  Run("agents", {argument}))
            << argument;
    }
    EXPECT_EQ((Texts{"Unknown argument '" + withNul + "'\n", kUsage}), Run("agents", {withNul}));
    EXPECT_EQ(Calls(), Taken());
}

TEST_F(AgentCommands, AgparamsShowsAllOrOne)
{
    EXPECT_EQ(Texts(), Run("agparams", {}));
    RegisterThree();
    EXPECT_EQ(
        (Texts{"*** tcp\nport 10161\n", "*** udp\nport 161\ncommunity public\n", "*** udp6\n\n"}),
        Run("agparams", {}));
    EXPECT_EQ((Calls{"params a", "params b", "params c"}), Taken());
    EXPECT_EQ(Texts{"*** tcp\nport 10161\n"}, Run("agparams", {"tcp"}));
    EXPECT_EQ(Texts{"*** tcp\nport 10161\n"}, Run("agparams", {"tcp", "udp"}));
    EXPECT_EQ(3u, Run("agparams", {""}).size()) << "an empty name is none";
}

TEST_F(AgentCommands, AgparamsTellsOfAnUnknownAgent)
{
    EXPECT_EQ(Texts{"Unknown agent 'nosuch'\n"}, Run("agparams", {"nosuch"}));
    RegisterThree();
    for (const std::string name : {"nosuch", "ud", "UDP", "-l", "udp "})
        EXPECT_EQ(Texts{"Unknown agent '" + name + "'\n"}, Run("agparams", {name}));
    EXPECT_EQ(Calls(), Taken());
}

TEST_F(AgentCommands, AnAgentThatThrowsHasNoParameters)
{
    RegisterThree();
    a.throws = true;
    EXPECT_EQ((Texts{"*** tcp\n\n", "*** udp\nport 161\ncommunity public\n", "*** udp6\n\n"}),
              Run("agparams", {}));
}

TEST_F(AgentCommands, ANulDoesNotEndNamesOrParameters)
{
    a.params = std::string("p\0q", 3);
    const std::string name("n\0m", 3);
    ASSERT_EQ(0, agents.Register(BString(name.data(), 3), &a));
    EXPECT_EQ(Texts{"Registered agents:\n 1. " + name + "\n\n"}, Run("agents", {}));
    EXPECT_EQ(Texts{"*** " + name + "\n" + a.params + "\n"}, Run("agparams", {name}));
    EXPECT_EQ(Texts{"Unknown agent 'n'\n"}, Run("agparams", {"n"}));
    EXPECT_EQ(Texts{"Unknown agent '" + name + name + "'\n"}, Run("agparams", {name + name}));
}

TEST_F(AgentCommands, LongNamesAndParametersAreWrittenWhole)
{
    const std::string name(3000, 'n');
    a.params = std::string(70000, 'p');
    ASSERT_EQ(0, agents.Register(name.c_str(), &a));
    EXPECT_EQ(Texts{"Registered agents:\n 1. " + name + "\n\n"}, Run("agents", {}));
    EXPECT_EQ(Texts{"*** " + name + "\n" + a.params + "\n"}, Run("agparams", {name}));
    EXPECT_EQ(Texts{"Unknown agent '" + name + "x'\n"}, Run("agparams", {name + "x"}));
}

TEST_F(AgentCommands, CONTRACT_AnUnknownCommandIsToldAndRunAsAgents)
{
    EXPECT_EQ((Texts{"agent: unknown command.\n", "There are no registered agents\n\n"}),
              Run("agent", {}));
    EXPECT_EQ((Texts{"AGENTS: unknown command.\n", "Agent(s) suspended.\n"}),
              Run("AGENTS", {"-s"}));
}

// Has a command more than its base knows.
class MoreCommands : public BAgents {
public:
    using BAgents::BAgents;
    const SCmdMapEntry* CmdGetMap() const override
    {
        static const SCmdMapEntry s_map[] = {{7, "more", nullptr, nullptr},
                                             {-1, nullptr, nullptr, nullptr}};
        return s_map;
    }
};

TEST(AgentCommandsOfDerivedClasses, WriteTheUsageWhereTheBaseKnowsNone)
{
    BTime time;
    MoreCommands agents(time);
    ScriptedStream out;
    BStringArray args;
    args.PushBack("-l");
    EXPECT_EQ(0, agents.CmdExecute(out, "more", args, BSecurityParams(), BString()));
    EXPECT_EQ(Texts{kUsage}, out.texts);
}

class BrokenStream : public ICmdStream {
public:
    int GetLine(BString&) override { return 1; }
    int Write(const BString&) override { throw std::runtime_error("stream"); }
};

TEST_F(AgentCommands, AStreamThatThrowsEndsTheCommand)
{
    RegisterThree();
    BrokenStream out;
    BStringArray args;
    for (const char* command : {"agents", "agparams", "nosuch"})
        EXPECT_NE(0, agents.CmdExecute(out, command, args, BSecurityParams(), BString()))
            << command;
    EXPECT_EQ(Calls{"params a"}, Taken()) << "the others are not asked";
    args.PushBack("-s");
    EXPECT_NE(0, agents.CmdExecute(out, "agents", args, BSecurityParams(), BString()));
    EXPECT_EQ((Calls{"suspend a", "suspend b", "suspend c"}), Taken());
}

// Everything together, as the operator sees it.
TEST_F(AgentCommands, ASessionAtTheConsole)
{
    RegisterThree();
    struct {
        const char* line;
        std::string output;
    } const session[] = {
        {"agents", "Registered agents:\n 1. tcp\n 2. udp\n 3. udp6\n\n"},
        {"agents -l", "Registered agents:\n 1. tcp\n 2. udp\n 3. udp6\n\n"},
        {"age -s", "Agent(s) suspended.\n"},
        {"agents  -stcp ", "Agent(s) suspended.\n"},
        {"agents '-snosuch'", "Failed to suspend agent(s).\n"},
        {"agents -r", "Agent(s) resumed.\n"},
        {"agents \"-rudp\"", "Agent(s) resumed.\n"},
        {"agents -rnosuch", "Failed to resume agent(s).\n"},
        {"agents -x", std::string("Unknown argument '-x'\n") + kUsage},
        {"agents udp", std::string("Unknown argument 'udp'\n") + kUsage},
        {"agents -", std::string("Unknown argument '-'\n") + kUsage},
        {"agents \"a b\"", std::string("Unknown argument 'a b'\n") + kUsage},
        {"agents ''", "Registered agents:\n 1. tcp\n 2. udp\n 3. udp6\n\n"},
        {"agp tcp", "*** tcp\nport 10161\n"},
        {"agparams", "*** tcp\nport 10161\n*** udp\nport 161\ncommunity public\n*** udp6\n\n"},
        {"agparams nosuch", "Unknown agent 'nosuch'\n"},
        {"ag", "ag: ambiguous command.\n"},
        {"agentsx", "agentsx: no such command.\n"},
        {"help agents", "agents: no decription available!\n"},
        {"help agparams", "agparams: Display agent params\n"},
        {"? ag", " Command        Argument(s)\n"
                 " -------------  "
                 "-------------------------------------------------------------\n"
                 " agents         -l | -s | -r\n"
                 " agparams       [<agentName>]\n"
                 "\n"},
    };
    Texts lines;
    std::string expected;
    for (const auto& step : session) {
        lines.push_back(step.line);
        expected += "> " + step.output;
    }
    ScriptedStream stream(lines);
    BCLI console(&agents, &stream);
    console.Start("> ", "q");
    EXPECT_EQ(expected + "> ", stream.Taken());
    EXPECT_EQ((Calls{"suspend a", "suspend b", "suspend c", "suspend a", "resume a", "resume b",
                     "resume c", "resume b", "params a", "params a", "params b", "params c"}),
              Taken());
}

TEST_F(AgentCommands, ANameThatIsTakenNamesTheRegistry)
{
    ScriptedStream stream;
    BCLI console(&agents, &stream);
    BAgents others(time);
    EXPECT_EQ(2, console.Register(&others));
    EXPECT_EQ((Texts{"Comamnd 'agents' is already registered by '\"BAgents\"'\n",
                     "Comamnd 'agparams' is already registered by '\"BAgents\"'\n"}),
              stream.texts);
}

} // namespace
} // namespace Test
} // namespace VLK
