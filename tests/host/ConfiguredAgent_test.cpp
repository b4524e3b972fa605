// An agent's start from a configuration file and a store.
#include "PipedAgent.h"

#include "host/config/ConfigFile.h"

using namespace VLK::host;

namespace {

const std::string kAddress = "agentAddress = \"udp:127.0.0.1:0\"\n";
const std::string kCommunity = "[[community]]\nname = \"public\"\nread = \"few\"\n";
const std::string kViews = "[[view]]\nname = \"few\"\ninclude = [\"1.3.6.1.2.1.1.1\"]\n";

Outcome Check(const std::string& file, const Arguments& more = {})
{
    Arguments line{VKAGENTD, "--check-config", "--config", file};
    line.insert(line.end(), more.begin(), more.end());
    return RunToEnd(line);
}

class CheckConfig : public testing::Test {
protected:
    TempDir directory;
};

class SeededViews : public testing::Test {
protected:
    // What `public` sees of the objects 1 and 2 of the system group, and the log.
    struct SSeen {
        bool descr;
        bool objectId;
        std::string log;
    };
    SSeen See(const std::string& configuration, const Arguments& more = {})
    {
        ConfigFile file(configuration);
        ConfiguredAgent agent(store, file, more);
        EXPECT_TRUE(agent.IsReady()) << agent.FirstLine();
        name = file.Name();
        auto isSeen = [&](const char* object) {
            return agent.Ask("snmpget", "2c", "public", {object}).status == 0;
        };
        SSeen seen{isSeen(".1.3.6.1.2.1.1.1.0"), isSeen(".1.3.6.1.2.1.1.2.0"), agent.Earlier()};
        EXPECT_EQ(agent.Kill(SIGTERM), 0);
        return seen;
    }

    // Sets the status of a row of the view `few`: 4 creates it, 6 destroys it.
    void ManagerSets(const std::vector<std::pair<const char*, const char*>>& rows)
    {
        ConfigFile file(kAddress + kViews + kCommunity +
                        "[[community]]\nname = \"boss\"\nwrite = \"everything\"\n");
        ConfiguredAgent agent(store, file);
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        for (const auto& [subtree, status] : rows) {
            std::string row = std::string(".1.3.6.1.6.3.16.1.5.2.1.6.3.102.101.119.8.") + subtree;
            Outcome set = agent.Ask("snmpset", "2c", "boss", {row, "i", status});
            EXPECT_EQ(set.status, 0) << set.output;
        }
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
    }
    void ManagerShowsObjectIdInstead()
    {
        ManagerSets({{"1.3.6.1.2.1.1.2", "4"}, {"1.3.6.1.2.1.1.1", "6"}});
    }

    TempDir directory;
    std::string store = directory.File("store.db");
    std::string name;
};

} // namespace

TEST_F(CheckConfig, AGoodFileEndsWithZeroAndNothingIsStarted)
{
    ConfigFile file(kAddress + "store = \"" + directory.File("store.db") + "\"\n" + kViews +
                    kCommunity);
    Outcome outcome = Check(file.Name());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, file.Name() + ": no problems found\n");
    EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST_F(CheckConfig, EveryProblemIsALineAndTheStatusIsTwo)
{
    ConfigFile file(kAddress + kCommunity + "reads = 1\n");
    Outcome outcome = Check(file.Name());
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output,
              "vkagentd: " + file.Name() + ":4: read 'few' is no view\n" +
                  "vkagentd: " + file.Name() +
                  ":5: 'reads' is no key of [[community]], which has name, securityName, context, "
                  "sources, read, write, notify\n");
    Outcome start =
        RunToEnd({VKAGENTD, "--config", file.Name(), "--store", directory.File("s.db")});
    EXPECT_EQ(start.status, 2);
    EXPECT_EQ(start.output, outcome.output) << "nor does it start";
    EXPECT_FALSE(std::filesystem::exists(directory.File("s.db")));
}

TEST_F(CheckConfig, AMissingFileAndOptionsThatDoNotFitAreToldToo)
{
    Outcome missing = Check(directory.File("none.toml"));
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.output,
              "vkagentd: " + directory.File("none.toml") + ": No such file or directory\n");
    ConfigFile file(kViews + kCommunity);
    Outcome twice = Check(file.Name(), {"--community", "public:rw"});
    EXPECT_EQ(twice.status, 2);
    EXPECT_EQ(twice.output,
              "vkagentd: --community: 'public' is a community of " + file.Name() + " too\n");
}

TEST_F(SeededViews, TheConfigurationCountsUntilAManagerChangesAView)
{
    SSeen seen = See(kAddress + kViews + kCommunity);
    EXPECT_TRUE(seen.descr);
    EXPECT_FALSE(seen.objectId);
    seen =
        See(kAddress + "[[view]]\nname = \"few\"\ninclude = [\"1.3.6.1.2.1.1.2\"]\n" + kCommunity);
    EXPECT_FALSE(seen.descr);
    EXPECT_TRUE(seen.objectId);
    EXPECT_EQ(seen.log, "");
}

TEST_F(SeededViews, ThenTheStoreCountsAndTheLogSaysSo)
{
    ManagerShowsObjectIdInstead();
    SSeen seen = See(kAddress + kViews + kCommunity);
    EXPECT_FALSE(seen.descr);
    EXPECT_TRUE(seen.objectId);
    EXPECT_EQ(seen.log, "vkagentd: views are as managers have set them, not as in " + name +
                            "; --reset-store returns to the file\n");
}

TEST_F(SeededViews, WithoutAFileThereIsNoneToDifferFrom)
{
    ManagerShowsObjectIdInstead();
    RunningAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    EXPECT_EQ(agent.Earlier(), "");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST_F(SeededViews, AViewThatAManagerEmptiedStaysEmpty)
{
    ManagerSets({{"1.3.6.1.2.1.1.1", "6"}});
    for (int start = 0; start < 2; ++start) {
        SSeen seen = See(kAddress + kViews + kCommunity);
        EXPECT_FALSE(seen.descr);
        EXPECT_FALSE(seen.objectId);
        EXPECT_NE(seen.log, "");
    }
}

TEST_F(SeededViews, ResetStoreStartsOverWithTheConfiguration)
{
    ManagerShowsObjectIdInstead();
    SSeen seen = See(kAddress + kViews + kCommunity, {"--reset-store"});
    EXPECT_TRUE(seen.descr);
    EXPECT_FALSE(seen.objectId);
    EXPECT_EQ(seen.log, "");
    seen = See(kAddress + kViews + kCommunity);
    EXPECT_TRUE(seen.descr);
}

TEST(SeededAuthenTraps, CountUntilAManagerSetsThem)
{
    const std::string kEnable = ".1.3.6.1.2.1.11.30.0";
    const std::string communities = "[[community]]\nname = \"boss\"\nread = \"everything\"\n"
                                    "write = \"everything\"\n";
    TempDir directory;
    // What a manager reads after the start, and the log; then one may set it.
    auto start = [&](const std::string& line, const std::string& value, const std::string& log,
                     const char* set = nullptr, const Arguments& more = {}) {
        ConfigFile file(kAddress + line + communities);
        ConfiguredAgent agent(directory.File("store.db"), file, more);
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        EXPECT_EQ(agent.Ask("snmpget", "2c", "boss", {kEnable}, {"-Oqv"}).output, value + "\n");
        EXPECT_EQ(agent.Earlier(), log.empty() ? ""
                                               : "vkagentd: " + log + file.Name() +
                                                     "; --reset-store returns to the file\n");
        if (set) {
            EXPECT_EQ(agent.Ask("snmpset", "2c", "boss", {kEnable, "i", set}).status, 0);
        }
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
    };
    const std::string on = "snmpEnableAuthenTraps = true\n";
    const std::string off = "snmpEnableAuthenTraps = false\n";
    const std::string other = "snmpEnableAuthenTraps is as managers have set it, not as in ";
    start("", "2", "");
    start(on, "1", "");
    start(off, "2", "");
    start(on, "1", "", "2");
    start(on, "2", other);
    start(off, "2", "");
    start("", "2", "", "1");
    start(off, "1", other);
    start("", "1", "");
    start(off, "2", "", nullptr, {"--reset-store"});
    start(on, "1", "");
}

TEST_F(SeededViews, ResetStoreForgetsAllThatManagersSet)
{
    {
        RunningAgent agent(store);
        ASSERT_TRUE(agent.IsReady());
        EXPECT_EQ(agent.Ask("snmpset", "2c", "private", {oid::kSysContact, "s", "x"}).status, 0);
        EXPECT_EQ(agent.Kill(SIGTERM), 0);
    }
    ConfigFile file(kAddress + "[[community]]\nname = \"public\"\nread = \"everything\"\n");
    ConfiguredAgent agent(store, file, {"--reset-store"});
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    EXPECT_EQ(agent.Ask("snmpget", "2c", "public", {oid::kSysContact}).output,
              oid::kSysContact + " = STRING: \"Mr. Qwin\"\n");
}

TEST(ConfiguredConsole, TriesTheRightsOfASecurityNameInAContext)
{
    ConfigFile file("contexts = [\"bridge1\"]\n[[group]]\nname = \"g\"\nmembers = [\"noc\"]\n"
                    "[[access]]\ngroup = \"g\"\ncontext = \"bridge1\"\nread = \"systemonly\"\n");
    TempDir directory;
    PipedAgent agent(directory.File("store.db"), {"--console", "--config", file.Name()});
    std::string answers = agent.Answers("clivacm noc SNMPv2c\nget 1.3.6.1.2.1.1.1.0\n"
                                        "clivacm noc SNMPv2c 2 bridge1\nget 1.3.6.1.2.1.1.1.0\n");
    EXPECT_EQ(agent.Wait(), 0) << agent.LogText();
    EXPECT_NE(answers.find("ContextName: \nsnmpErr: authorizationError at index 1"), answers.npos)
        << answers;
    EXPECT_NE(answers.find("ContextName: bridge1\n1.3.6.1.2.1.1.1.0 = Velkoran agent\n"),
              answers.npos)
        << answers;
    EXPECT_NE(agent.LogText().find("to 'noc' with SNMPv2c at the console: its group 'g' has no "
                                   "access entry for it\n"),
              std::string::npos)
        << agent.LogText();
}

TEST(Documents, TheSampleConfigurationIsThatOfTheReadme)
{
    SConfiguration sample = ReadConfigFile(VKMIBH_DOCS "/vkagentd.toml");
    ASSERT_EQ(sample.listen.size(), 1u);
    EXPECT_EQ(sample.listen[0].ToString(), "udp:127.0.0.1:1161");
    ASSERT_EQ(sample.communities.size(), 2u);
    BTransportAddress here;
    BTransportAddress there;
    ASSERT_TRUE(here.Parse("udp:127.0.0.1:5") && there.Parse("udp:192.0.2.1:5"));
    const char* names[] = {"public", "private"};
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(sample.communities[i].name, names[i]);
        for (const BNetwork& network : sample.communities[i].sources)
            EXPECT_FALSE(network.Holds(there));
        EXPECT_TRUE(sample.communities[i].sources[0].Holds(here));
        ASSERT_EQ(sample.groups[i + 1].access.size(), 1u);
        const SAccess& access = sample.groups[i + 1].access[0];
        EXPECT_EQ(access.views[eViewRead], "everything");
        EXPECT_EQ(access.views[eViewWrite], i == 1 ? "everything" : "");
    }
}

TEST(Documents, EveryExampleOfTheReferenceIsRight)
{
    Arguments lines = Lines(ReadFile(VKMIBH_DOCS "/configuration.md"));
    int examples = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i] != "```toml")
            continue;
        std::string text(i + 1, '\n'); // so that problems have the document's lines
        while (++i < lines.size() && lines[i] != "```")
            text += lines[i] + "\n";
        ++examples;
        try {
            ReadConfigText(text, "configuration.md", true);
        } catch (const BConfigError& error) {
            for (const std::string& line : error.Lines())
                ADD_FAILURE() << line;
        }
    }
    EXPECT_GE(examples, 4);
}
