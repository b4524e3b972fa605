// Notifications that managers send where they want, with the installed tools.
#include "PipedAgent.h"
#include "TrapDaemon.h"

#include <memory>

namespace {

const std::string kRaise = ".1.3.6.1.4.1.32473.5.1.0";
const std::string kEngineId = ".1.3.6.1.6.3.10.2.1.1.0";
const std::string kAddr = ".1.3.6.1.6.3.12.1.2.1.";
const std::string kParams = ".1.3.6.1.6.3.12.1.3.1.";
const std::string kNotify = ".1.3.6.1.6.3.13.1.1.1.";
const std::string kOwn = "118.107.97.103.101.110.116.100.46.116.114.97.112.83.105.110.107.46.";

// `boss` reads and writes all; `traps` stands for the security name "listener".
const std::string kConfiguration =
    "agentAddress = \"udp:127.0.0.1:0\"\n"
    "[[community]]\nname = \"boss\"\nread = \"everything\"\nwrite = \"everything\"\n"
    "[[community]]\nname = \"traps\"\nsecurityName = \"listener\"\nsources = []\n"
    "[[group]]\nname = \"listeners\"\nmembers = [\"listener\"]\n"
    "[[access]]\ngroup = \"listeners\"\nnotify = \"everything\"\n"
    "[[user]]\nname = \"noc\"\nauth = \"SHA-256\"\nauthPassphrase = \"a word to sign with\"\n"
    "priv = \"AES\"\nprivPassphrase = \"a word to hide with\"\nnotify = \"everything\"\n";

// What the daemon has to know of the user; with the agent's engine ID for traps, and its
// own for informs.
std::string UserOf(const std::string& engineId)
{
    const std::string keys = "noc SHA-256 \"a word to sign with\" AES \"a word to hide with\"\n";
    return "createUser -e " + engineId + " " + keys + "createUser " + keys + "authUser log noc\n";
}

class ManagedTargets : public testing::Test {
protected:
    void SetUp() override { Start(); }

    void Start(const std::string& more = "")
    {
        file = std::make_unique<ConfigFile>(kConfiguration + more);
        ASSERT_EQ(chmod(file->Name().c_str(), 0600), 0);
        agent = std::make_unique<RunningServer>(
            Arguments{TRAPPING_AGENT, "--store", store, "--config", file->Name()});
        ASSERT_TRUE(agent->IsReady()) << agent->FirstLine();
    }
    bool Set(const Arguments& bindings)
    {
        return agent->Ask("snmpset", "2c", "boss", bindings).status == 0;
    }
    std::string Get(const std::string& name)
    {
        const std::string value = agent->Ask("snmpget", "2c", "boss", {name}, {"-Oqv"}).output;
        return value.substr(0, value.find('\n'));
    }
    void Raise() { EXPECT_TRUE(Set({kRaise, "i", "2"})); }

    // A whole way to a daemon in one SET: rows of one letter each.
    Arguments Address(const std::string& row, const TrapDaemon& daemon, const std::string& params,
                      const std::string& tags = "t")
    {
        char octets[16];
        std::snprintf(octets, sizeof octets, "7f000001%04x", daemon.Port());
        return {kAddr + "2." + row, "o", ".1.3.6.1.6.1.1",
                kAddr + "3." + row, "x", octets,
                kAddr + "6." + row, "s", tags,
                kAddr + "7." + row, "s", params,
                kAddr + "9." + row, "i", "4"};
    }
    static Arguments Params(const std::string& row, int model, int security,
                            const std::string& name, int level)
    {
        return {kParams + "2." + row, "i", std::to_string(model),
                kParams + "3." + row, "i", std::to_string(security),
                kParams + "4." + row, "s", name,
                kParams + "5." + row, "i", std::to_string(level),
                kParams + "7." + row, "i", "4"};
    }
    static Arguments Notify(const std::string& row, int kind, const std::string& tag = "t")
    {
        return {kNotify + "2." + row, "s", tag, kNotify + "3." + row, "i", std::to_string(kind),
                kNotify + "5." + row, "i", "4"};
    }
    static Arguments Joined(std::initializer_list<Arguments> parts)
    {
        Arguments all;
        for (const Arguments& part : parts)
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }
    static bool Is(const std::string& line, const std::string& kind)
    {
        return line.find("|" + kind + ",") != line.npos;
    }
    static bool HasTrap(const std::string& line)
    {
        return line.find(".1.3.6.1.4.1.32473.5.0.18") != line.npos;
    }

    TempDir directory;
    std::string store = directory.File("store.db");
    std::unique_ptr<ConfigFile> file;
    std::unique_ptr<RunningServer> agent;
};

} // namespace

TEST_F(ManagedTargets, AWholeWayThatIsSetIsGoneAtOnceAndNoMoreOnceItIsDestroyed)
{
    TrapDaemon daemon;
    ASSERT_TRUE(daemon.IsReady());
    ASSERT_TRUE(Set(Joined(
        {Params("112", 1, 2, "listener", 1), Address("97", daemon, "p"), Notify("110", 1)})));
    Raise();
    const std::string trap = daemon.Next();
    EXPECT_TRUE(HasTrap(trap)) << trap;
    EXPECT_NE(trap.find("TRAP2, SNMP v2c, community traps|"), trap.npos) << trap;
    ASSERT_TRUE(Set({kNotify + "3.110", "i", "2"})) << "informs from now on";
    Raise();
    EXPECT_TRUE(Is(daemon.Next(), "INFORM"));
    ASSERT_TRUE(Set({kNotify + "5.110", "i", "2"})) << "not in service";
    Raise();
    ASSERT_TRUE(Set({kNotify + "5.110", "i", "1", kNotify + "3.110", "i", "1"}));
    Raise();
    EXPECT_TRUE(Is(daemon.Next(), "TRAP2")) << "what was raised between them is not sent";
    ASSERT_TRUE(Set({kAddr + "9.97", "i", "6"}));
    Raise();
    EXPECT_EQ(daemon.Rest(), Arguments());
}

TEST_F(ManagedTargets, ATagSelectsAllThatHaveIt)
{
    TrapDaemon first;
    TrapDaemon second;
    TrapDaemon third;
    ASSERT_TRUE(first.IsReady() && second.IsReady() && third.IsReady());
    ASSERT_TRUE(Set(Joined({Params("112", 0, 1, "listener", 1), Address("97", first, "p", "x t"),
                            Address("98", second, "p", "t"), Address("99", third, "p", "tt"),
                            Notify("110", 1)})));
    Raise();
    for (TrapDaemon* daemon : {&first, &second}) {
        const std::string trap = daemon->Next();
        EXPECT_NE(trap.find("TRAP, SNMP v1, community traps|"), trap.npos) << trap;
    }
    ASSERT_TRUE(Set({kAddr + "6.97", "s", "x"}));
    Raise();
    EXPECT_NE(second.Next(), "");
    EXPECT_EQ(first.Rest(), Arguments());
    EXPECT_EQ(third.Rest(), Arguments());
}

TEST_F(ManagedTargets, NotificationsOfSnmpV3AreSentAsTheUser)
{
    std::string digits; // over two lines
    for (char c : agent->Ask("snmpget", "2c", "boss", {kEngineId}, {"-Oqvx"}).output)
        digits += std::isxdigit(static_cast<unsigned char>(c)) ? std::string(1, c) : "";
    TrapDaemon daemon(UserOf("0x" + digits));
    ASSERT_TRUE(daemon.IsReady());
    ASSERT_TRUE(
        Set(Joined({Params("112", 3, 3, "noc", 3), Address("97", daemon, "p"), Notify("110", 1)})));
    Raise();
    std::string line = daemon.Next();
    EXPECT_TRUE(HasTrap(line)) << line;
    EXPECT_NE(line.find("TRAP2, SNMP v3, user noc"), line.npos) << line;
    ASSERT_TRUE(Set({kNotify + "3.110", "i", "2"}));
    for (int i = 0; i < 3; ++i) {
        Raise();
        line = daemon.Next();
        EXPECT_TRUE(HasTrap(line)) << line;
        EXPECT_NE(line.find("INFORM, SNMP v3, user noc"), line.npos) << line;
    }
    EXPECT_EQ(daemon.Rest(), Arguments()) << "each was acknowledged";
}

TEST_F(ManagedTargets, WhatIsSetIsThereAfterAKill)
{
    TrapDaemon daemon;
    ASSERT_TRUE(daemon.IsReady());
    ASSERT_TRUE(Set(Joined(
        {Params("112", 1, 2, "listener", 1), Address("97", daemon, "p"), Notify("110", 1)})));
    agent->Kill(SIGKILL);
    Start();
    const std::string coldStart = daemon.Next();
    EXPECT_NE(coldStart.find(".1.3.6.1.6.3.1.1.5.1"), coldStart.npos) << coldStart;
    ASSERT_TRUE(Set({kAddr + "8.97", "i", "2"})) << "volatile";
    agent->Kill(SIGKILL);
    Start();
    EXPECT_NE(Get(kAddr + "9.97"), "1");
    EXPECT_EQ(Get(kNotify + "5.110"), "1");
    Raise();
    EXPECT_EQ(daemon.Rest(), Arguments());
}

TEST_F(ManagedTargets, SinksOfTheConfigurationAreRowsThatStay)
{
    TrapDaemon daemon;
    ASSERT_TRUE(daemon.IsReady());
    agent->Kill(SIGTERM);
    Start("[[trapSink]]\naddress = \"" + daemon.Address() +
          "\"\ncommunity = \"traps\"\ntimeout = 2.5\nretries = 7\n");
    EXPECT_NE(daemon.Next(), "");
    EXPECT_EQ(Get(kAddr + "4." + kOwn + "49"), "250");
    EXPECT_EQ(Get(kAddr + "5." + kOwn + "49"), "7");
    EXPECT_EQ(Get(kAddr + "8." + kOwn + "49"), "5");
    EXPECT_EQ(Get(kParams + "4." + kOwn + "49"), "\"listener\"");
    EXPECT_FALSE(Set({kAddr + "9." + kOwn + "49", "i", "6"}));
    EXPECT_FALSE(Set({kNotify + "3." + kOwn + "49", "i", "2"}));
    EXPECT_FALSE(Set({kNotify + "5." + kOwn + "50", "i", "4"})) << "names of the agent's own";
    Raise();
    EXPECT_TRUE(HasTrap(daemon.Next()));
}

TEST_F(ManagedTargets, WhoCannotBeSentToIsToldOnce)
{
    TrapDaemon daemon;
    ASSERT_TRUE(daemon.IsReady());
    ASSERT_TRUE(Set(
        Joined({Params("112", 1, 2, "nobody", 1), Address("97", daemon, "p"), Notify("110", 1)})));
    ASSERT_TRUE(Set({kAddr + "5.97", "i", "9"}));
    Raise();
    EXPECT_EQ(agent->Kill(SIGTERM), 0);
    EXPECT_EQ(agent->Rest(), "trapping_agent: no notification goes to " + daemon.Address() +
                                 ": no community has the security name 'nobody'\n");
    EXPECT_EQ(daemon.Rest(), Arguments());
}
