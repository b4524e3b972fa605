// The operator suspends and resumes agents, and reads their parameters.
#include "PipedAgent.h"
#include "TrapDaemon.h"

#include <algorithm>

namespace {

const std::string kEnable = ".1.3.6.1.2.1.11.30.0";

std::string Traps(const std::string& sinks)
{
    return "[[community]]\nname = \"traps\"\nsources = []\nnotify = \"everything\"\n" + sinks;
}

std::string Sink(const std::string& address, const std::string& more = "")
{
    return "[[trapSink]]\naddress = \"" + address + "\"\ncommunity = \"traps\"\n" + more;
}

// Answers while its console is driven: `public` reads, `private` writes too.
class AgentCommands : public testing::Test {
protected:
    void Start(const std::string& configuration)
    {
        file.emplace(configuration);
        agent.emplace(directory.File("store.db"), Arguments{"--console", "--config", file->Name()});
        ASSERT_TRUE(agent->IsReady()) << agent->LogText();
    }
    // The answer to a command, of so many lines.
    std::string Do(const std::string& command, int lines = 1)
    {
        agent->Type(command + "\n");
        std::string answer;
        for (int i = 0; i < lines; ++i)
            answer += agent->Line() + "\n";
        return answer;
    }
    // One message each. A busy machine may take its time to answer.
    bool IsAnswered() { return Ask("public", "20"); }
    bool IsIgnored(const std::string& community = "public") { return !Ask(community, "0.5"); }
    // What an agent counts it may count after its client knows.
    void ExpectParameters(const std::string& name, const std::string& expected)
    {
        auto lines = static_cast<int>(std::count(expected.begin(), expected.end(), '\n'));
        std::string text;
        EXPECT_TRUE(VLK::Eventually([&] {
            text = Do("agparams " + name, lines);
            return text == expected;
        })) << text;
    }

    TempDir directory;
    std::optional<ConfigFile> file;
    std::optional<PipedAgent> agent;

private:
    bool Ask(const std::string& community, const std::string& seconds)
    {
        return agent->Ask("snmpget", community, {oid::kSysDescr}, {"-r", "0", "-t", seconds})
                   .status == 0;
    }
};

} // namespace

TEST_F(AgentCommands, ListTheAgentsInTheOrderOfTheirNames)
{
    Start(Traps(Sink("udp:127.0.0.1:9") + Sink("udp:127.0.0.1:9", "version = \"1\"\n")));
    const std::string list = "Registered agents:\n"
                             " 1. trap:udp:127.0.0.1:9\n"
                             " 2. trap:udp:127.0.0.1:9#2\n"
                             " 3. " +
                             agent->Address() + "\n\n";
    EXPECT_EQ(Do("agents -l", 5), list);
    EXPECT_EQ(Do("agents", 5), list);
}

TEST_F(AgentCommands, ASuspendedAddressAnswersNobodyUntilItIsResumed)
{
    Start("");
    const std::string name = agent->Address();
    auto parameters = [&](const std::string& state, int received, int answered, int dropped) {
        return "*** " + name + "\naddress: " + name + "\nstate: " + state +
               "\nreceived: " + std::to_string(received) +
               "\nanswered: " + std::to_string(answered) +
               "\ndropped while suspended: " + std::to_string(dropped) +
               "\ndropped for want of a thread: 0\n";
    };
    EXPECT_TRUE(IsAnswered());
    ExpectParameters(name, parameters("running", 1, 1, 0));
    EXPECT_EQ(Do("agents -s" + name), "Agent(s) suspended.\n");
    EXPECT_TRUE(IsIgnored());
    EXPECT_TRUE(IsIgnored("private"));
    ExpectParameters(name, parameters("suspended", 3, 1, 2));
    EXPECT_EQ(Do("get 1.3.6.1.2.1.1.7.0"), "1.3.6.1.2.1.1.7.0 = 7\n") << "the console goes on";
    EXPECT_EQ(Do("agents -r" + name), "Agent(s) resumed.\n");
    EXPECT_TRUE(IsAnswered());
    ExpectParameters(name, parameters("running", 4, 2, 2));
}

TEST_F(AgentCommands, WithoutANameAllAreSuspendedAndResumed)
{
    Start(Traps(Sink("udp:127.0.0.1:9")));
    EXPECT_EQ(Do("agents -s"), "Agent(s) suspended.\n");
    EXPECT_TRUE(IsIgnored());
    EXPECT_EQ(Do("agents -r"), "Agent(s) resumed.\n");
    EXPECT_TRUE(IsAnswered());
}

TEST_F(AgentCommands, MistakesAreToldAndChangeNothing)
{
    Start("");
    EXPECT_EQ(Do("agents -sudp:1"), "Failed to suspend agent(s).\n");
    EXPECT_EQ(Do("agents -rudp:1"), "Failed to resume agent(s).\n");
    EXPECT_EQ(Do("agparams udp:1"), "Unknown agent 'udp:1'\n");
    EXPECT_EQ(Do("agents -x", 6), "Unknown argument '-x'\n"
                                  "\n"
                                  "Usage:\n"
                                  " agents -l                  list registered agents\n"
                                  " agents -s[<agentName>]     suspend agent(s) \n"
                                  " agents -r[<agentName>]     resume agent(s) \n");
    EXPECT_TRUE(IsAnswered());
}

TEST_F(AgentCommands, ASuspendedSinkIsSentNothing)
{
    TrapDaemon daemon;
    ASSERT_TRUE(daemon.IsReady());
    Start(Traps(Sink(daemon.Address())));
    const std::string name = "trap:" + daemon.Address();
    EXPECT_NE(daemon.Next().find("1.3.6.1.6.3.1.1.5.1"), std::string::npos) << "coldStart";
    ASSERT_EQ(agent->Ask("snmpset", "private", {kEnable, "i", "1"}).status, 0);
    EXPECT_EQ(Do("agents -s" + name), "Agent(s) suspended.\n");
    EXPECT_TRUE(IsIgnored("wrong"));
    EXPECT_TRUE(IsAnswered()) << "so that the one before has been dealt with";
    ExpectParameters(name, "*** " + name + "\naddress: " + daemon.Address() +
                               "\nversion: 2c\n"
                               "community: (not shown)\n"
                               "state: suspended\n"
                               "sent: 1\n"
                               "failed: 0\n"
                               "outside the notify view: 0\n"
                               "dropped for want of room: 0\n");
    EXPECT_EQ(Do("agents -r" + name), "Agent(s) resumed.\n");
    EXPECT_TRUE(IsIgnored("wrong"));
    EXPECT_NE(daemon.Next().find("1.3.6.1.6.3.1.1.5.5"), std::string::npos);
    EXPECT_EQ(daemon.Rest(), Arguments()) << "what was raised meanwhile is not sent later";
}

TEST_F(AgentCommands, ASinkForInformsTellsWhatBecameOfThem)
{
    TrapDaemon daemon;
    ASSERT_TRUE(daemon.IsReady());
    unsigned closed = BoundPort().Port();
    const std::string dead = "udp:127.0.0.1:" + std::to_string(closed);
    Start(Traps(Sink(daemon.Address(), "inform = true\n") +
                Sink(dead, "inform = true\ntimeout = 0.1\nretries = 2\n")));
    auto parameters = [](const std::string& address, const std::string& rest) {
        return "*** trap:" + address + "\naddress: " + address +
               "\nversion: 2c, informs\n"
               "community: (not shown)\n"
               "state: running\n"
               "sent: 1\n"
               "failed: 0\n"
               "outside the notify view: 0\n"
               "dropped for want of room: 0\n" +
               rest;
    };
    auto becomes = [&](const std::string& address, const std::string& rest) {
        ExpectParameters("trap:" + address, parameters(address, rest));
    };
    becomes(daemon.Address(), "acknowledged: 1\nretried: 0\ngiven up: 0\n");
    becomes(dead, "acknowledged: 0\nretried: 2\ngiven up: 1\n");
}
