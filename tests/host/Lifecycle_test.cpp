#include "RunningAgent.h"
#include "UdpClient.h"

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

class Lifecycle : public testing::Test {
protected:
    TempDir directory;
    std::string store = directory.File("store.db");
};

size_t CountOf(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

} // namespace

TEST_F(Lifecycle, EveryAddressIsReadyOnceAnswersAndSigtermEndsWithZero)
{
    Process agent(
        {VKAGENTD, "--store", store, "--listen", "udp:127.0.0.1:0", "--listen", "udp:127.0.0.2:0"});
    Arguments addresses;
    for (const char* host : {"udp:127.0.0.1:", "udp:127.0.0.2:"}) {
        std::string line = agent.Line();
        const std::string prefix = "vkagentd: ready on ";
        ASSERT_EQ(line.find(prefix + host), 0u) << line;
        addresses.push_back(line.substr(prefix.size()));
    }
    for (const std::string& address : addresses) {
        Outcome get = SnmpTools().Ask(address, "snmpget", "2c", "public", {oid::kSysDescr});
        EXPECT_EQ(get.status, 0) << get.output;
    }
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(agent.Rest(), "");
}

TEST_F(Lifecycle, WithoutCommunitiesPublicReadsAndNothingWrites)
{
    Process agent({VKAGENTD, "--store", store, "--listen", "udp:127.0.0.1:0"});
    std::string line = agent.Line();
    ASSERT_NE(line.find("udp:"), line.npos) << line;
    std::string address = line.substr(line.find("udp:"));
    SnmpTools tools;
    EXPECT_EQ(tools.Ask(address, "snmpget", "1", "public", {oid::kSysDescr}).status, 0);
    Arguments set{oid::kSysContact, "s", "x"};
    EXPECT_EQ(tools.Ask(address, "snmpset", "2c", "public", set).status, 2);
    Outcome other = tools.Ask(address, "snmpset", "2c", "private", set, {"-r", "0", "-t", "0.3"});
    EXPECT_EQ(other.status, 1) << other.output;
}

TEST_F(Lifecycle, SigintEndsWithZeroToo)
{
    RunningAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    EXPECT_EQ(agent.Kill(SIGINT), 0);
    EXPECT_EQ(agent.Rest(), "");
    struct stat status = {};
    EXPECT_NE(stat((store + "-wal").c_str(), &status), 0) << "a clean end leaves no log";
}

TEST_F(Lifecycle, APortInUseIsOneLineAndStatusTwo)
{
    RunningAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    Outcome second =
        RunToEnd({VKAGENTD, "--store", directory.File("second.db"), "--listen", agent.Address()});
    EXPECT_EQ(second.status, 2);
    EXPECT_EQ(second.output,
              "vkagentd: cannot listen on " + agent.Address() + ": Address already in use\n");
}

TEST_F(Lifecycle, ABadOptionIsOneLineAndStatusTwo)
{
    for (const Arguments& line :
         {Arguments{VKAGENTD, "--nonsense"}, Arguments{VKAGENTD, "--community", "public:no"},
          Arguments{VKAGENTD, "--listen", "here"}}) {
        Outcome outcome = RunToEnd(line);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(CountOf(outcome.output, "\n"), 1u) << outcome.output;
        EXPECT_EQ(outcome.output.compare(0, 10, "vkagentd: "), 0);
    }
}

TEST_F(Lifecycle, HelpAndVersionEndWithZero)
{
    EXPECT_EQ(RunToEnd({VKAGENTD, "--help"}).status, 0);
    Outcome version = RunToEnd({VKAGENTD, "--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(CountOf(version.output, "\n"), 1u);
}

TEST_F(Lifecycle, ADamagedStoreIsOneLineAndLeftAsItWas)
{
    WriteFile(store, std::string(9000, 'z'));
    Outcome outcome = RunToEnd({VKAGENTD, "--store", store, "--listen", "udp:127.0.0.1:0"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "vkagentd: store " + store + " is not a database\n");
    EXPECT_EQ(ReadFile(store), std::string(9000, 'z'));
}

TEST_F(Lifecycle, TheDefaultStoreIsUnderTheStateDirectory)
{
    Process agent(
        {"env", "XDG_STATE_HOME=" + directory.Path(), VKAGENTD, "--listen", "udp:127.0.0.1:0"});
    EXPECT_NE(agent.Line().find("ready on"), std::string::npos);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    struct stat status = {};
    ASSERT_EQ(stat(directory.File("vkagentd").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
    EXPECT_EQ(stat(directory.File("vkagentd/store.db").c_str(), &status), 0);
}

TEST_F(Lifecycle, TheAgentLeavesNoOtherFiles)
{
    std::string home = directory.File("home");
    ASSERT_TRUE(std::filesystem::create_directory(home));
    Process agent({"env", "HOME=" + home, "SNMP_PERSISTENT_DIR=" + home + "/persistent", VKAGENTD,
                   "--store", store, "--listen", "udp:127.0.0.1:0"});
    EXPECT_NE(agent.Line().find("ready on"), std::string::npos);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_TRUE(std::filesystem::is_empty(home));
}

TEST_F(Lifecycle, ServesIPv6WhereTheMachineHasItAndSaysSoWhereNot)
{
    RunningAgent agent(store, "udp6:[::1]:0");
    if (!HasLoopbackV6()) {
        EXPECT_NE(agent.FirstLine().find("cannot listen on udp6:[::1]:0"), std::string::npos);
        EXPECT_EQ(agent.Wait(), 2);
        return;
    }
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    Outcome get = agent.Ask("snmpget", "2c", "public", {oid::kSysDescr});
    EXPECT_EQ(get.status, 0);
    EXPECT_EQ(get.output, oid::kSysDescr + " = STRING: \"Velkoran agent\"\n");
}

TEST_F(Lifecycle, AWriteSurvivesKill9)
{
    for (const char* version : {"1", "2c"}) {
        std::string text = std::string("somebody by ") + version;
        {
            RunningAgent agent(store);
            ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
            for (const std::string& name : {oid::kSysContact, oid::kSysName, oid::kSysLocation})
                EXPECT_EQ(agent.Ask("snmpset", version, "private", {name, "s", text}).status, 0);
            EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
        }
        RunningAgent agent(store);
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        for (const std::string& name : {oid::kSysContact, oid::kSysName, oid::kSysLocation}) {
            EXPECT_EQ(agent.Ask("snmpget", version, "public", {name}).output,
                      name + " = STRING: \"" + text + "\"\n");
        }
        EXPECT_EQ(agent.Kill(SIGTERM), 0);
    }
}

TEST_F(Lifecycle, AStoreThatCannotBeWrittenIsToldOnceAndReadsGoOn)
{
    EXPECT_EQ(RunningAgent(store).Kill(SIGTERM), 0);
    RunningAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    const rlimit limit{100, 100};
    ASSERT_EQ(prlimit(agent.Pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
    for (int i = 0; i < 2; ++i) {
        Outcome set = agent.Ask("snmpset", "2c", "private", {oid::kSysContact, "s", "x"});
        EXPECT_NE(set.status, 0);
        EXPECT_NE(set.output.find("commitFailed"), std::string::npos) << set.output;
    }
    EXPECT_EQ(agent.Ask("snmpget", "2c", "public", {oid::kSysDescr}).status, 0);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(CountOf(agent.Rest(), "the store cannot be written"), 1u);

    RunningAgent again(store);
    ASSERT_TRUE(again.IsReady()) << again.FirstLine();
    EXPECT_EQ(again.Ask("snmpget", "2c", "public", {oid::kSysContact}).output,
              oid::kSysContact + " = STRING: \"Mr. Qwin\"\n");
}
