// What a configuration lets real clients see and change.
#include "RunningAgent.h"

#include <algorithm>
#include <thread>

namespace {

const char kConfiguration[] = R"(
agentAddress = "udp:127.0.0.1:0"
contexts = ["ports"]

[[view]]
name = "lan"
include = [
  "1.3.6.1.2.1.1",
  { subtree = "1.3.6.1.2.1.1.9.1.0.3", mask = "ff:bf" },  # row 3 of sysORTable
]
exclude = ["1.3.6.1.2.1.1.4", "1.3.6.1.2.1.1.9", "1.3.6.1.2.1.1.5.0"]

[[view]]
name = "names"
include = ["1.3.6.1.2.1.1.4", "1.3.6.1.2.1.1.5"]
exclude = ["1.3.6.1.2.1.1.5.0"]

[[community]]
name = "all"
read = "everything"

[[community]]
name = "lan"
read = "lan"
write = "names"

[[community]]
name = "few"
securityName = "few"
context = "ports"

[[group]]
name = "fews"
members = ["few"]

[[access]]
group = "fews"
contextMatch = "prefix"
securityModel = "SNMPv2c"
read = "names"
write = "names"

[[access]]
group = "fews"
context = "ports"
securityModel = "SNMPv1"
read = "systemonly"

[[community]]
name = "far"
read = "everything"
sources = ["10.0.0.0/8", "2001:db8::/32"]
)";

std::vector<unsigned> ArcsOf(const std::string& dotted)
{
    std::vector<unsigned> arcs;
    std::istringstream stream(dotted.substr(dotted[0] == '.' ? 1 : 0));
    for (std::string arc; std::getline(stream, arc, '.');)
        arcs.push_back(static_cast<unsigned>(std::stoul(arc)));
    return arcs;
}

// A rule of a view; arc 0 may be any where `wild` says so.
struct SRule {
    const char* subtree;
    bool included;
    int wild = -1;
};

// The longest rule that covers the name decides.
bool Shows(const std::vector<SRule>& rules, const std::string& name)
{
    std::vector<unsigned> arcs = ArcsOf(name);
    size_t longest = 0;
    bool isShown = false;
    for (const SRule& rule : rules) {
        std::vector<unsigned> subtree = ArcsOf(rule.subtree);
        bool covers = subtree.size() <= arcs.size();
        for (size_t i = 0; covers && i < subtree.size(); ++i)
            covers = subtree[i] == arcs[i] || static_cast<int>(i) == rule.wild;
        if (covers && subtree.size() > longest) {
            longest = subtree.size();
            isShown = rule.included;
        }
    }
    return isShown;
}

const std::vector<SRule> kLan{{"1.3.6.1.2.1.1", true},
                              {"1.3.6.1.2.1.1.9.1.0.3", true, 9},
                              {"1.3.6.1.2.1.1.4", false},
                              {"1.3.6.1.2.1.1.9", false},
                              {"1.3.6.1.2.1.1.5.0", false}};
const std::vector<SRule> kNames{
    {"1.3.6.1.2.1.1.4", true}, {"1.3.6.1.2.1.1.5", true}, {"1.3.6.1.2.1.1.5.0", false}};
const std::vector<SRule> kSystem{{"1.3.6.1.2.1.1", true}};

class Access : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    // What the host's own figures are told in comes and goes.
    static bool Stays(const std::string& name)
    {
        for (const char* root : {".1.3.6.1.2.1.2.", ".1.3.6.1.2.1.25.", ".1.3.6.1.2.1.31."}) {
            if (name.rfind(root, 0) == 0)
                return false;
        }
        return true;
    }
    // The names of all that stays below `root` for a community.
    Arguments Walk(const std::string& version, const std::string& community,
                   const std::string& tool = "snmpwalk", const std::string& root = "1.3") const
    {
        Arguments names;
        for (const std::string& line : Lines(agent.Ask(tool, version, community, {root}).output)) {
            size_t end = line.find(" = ");
            // Values are told, and what ends a walk.
            if (line[0] == '.' && end != line.npos && line.find(" = No ") == line.npos &&
                Stays(line))
                names.push_back(line.substr(0, end));
        }
        return names;
    }
    static Arguments Shown(const std::vector<SRule>& rules, const Arguments& all)
    {
        Arguments shown;
        std::copy_if(all.begin(), all.end(), std::back_inserter(shown),
                     [&](const std::string& name) { return Shows(rules, name); });
        return shown;
    }
    Outcome Set(const std::string& version, const std::string& community, const Arguments& what)
    {
        return agent.Ask("snmpset", version, community, what);
    }
    std::string ValueOf(const std::string& name) const
    {
        return agent.Ask("snmpget", "2c", "all", {name}).output;
    }

    TempDir directory;
    ConfigFile file{kConfiguration};
    ConfiguredAgent agent{directory.File("store.db"), file};
};

} // namespace

TEST_F(Access, AWalkShowsExactlyTheInstancesOfTheView)
{
    Arguments all = Walk("2c", "all");
    const auto system =
        static_cast<size_t>(std::count_if(all.begin(), all.end(), [](const std::string& name) {
            return name.compare(0, oid::kSystem.size() + 1, oid::kSystem + ".") == 0;
        }));
    ASSERT_GE(system, 8u + 3 * 5);
    ASSERT_GT(all.size(), system);
    struct SCase {
        const char* community;
        const char* version;
        const std::vector<SRule>& rules;
        size_t count;
    };
    for (const SCase& test : {SCase{"lan", "1", kLan, 6 + 3}, SCase{"lan", "2c", kLan, 6 + 3},
                              SCase{"few", "1", kSystem, system}, SCase{"few", "2c", kNames, 1}}) {
        Arguments expected = Shown(test.rules, all);
        EXPECT_EQ(expected.size(), test.count) << "the rule leaves something out";
        EXPECT_EQ(Walk(test.version, test.community), expected)
            << test.community << " v" << test.version;
    }
    EXPECT_EQ(Walk("2c", "lan", "snmpbulkwalk"), Shown(kLan, all));
    EXPECT_EQ(Walk("2c", "few", "snmpbulkwalk"), Shown(kNames, all));
}

TEST_F(Access, WalksFromTheMiddleAreCutAlike)
{
    for (const std::string root :
         {"1.3.6.1.2.1.1.9", "1.3.6.1.2.1.1.9.1.3", "1.3.6.1.2.1.1.3", "1.3.6.1.2.1.1.5"}) {
        Arguments all = Walk("2c", "all", "snmpwalk", root);
        ASSERT_FALSE(all.empty());
        for (const std::string version : {"1", "2c"})
            EXPECT_EQ(Walk(version, "lan", "snmpwalk", root), Shown(kLan, all)) << root;
    }
}

TEST_F(Access, GetNextStepsOverWhatIsHiddenWithoutATrace)
{
    // sysContact and sysName are hidden; so is sysORTable but for row 3.
    for (const std::string version : {"1", "2c"}) {
        Outcome next = agent.Ask("snmpgetnext", version, "lan",
                                 {".1.3.6.1.2.1.1.3.0", ".1.3.6.1.2.1.1.9.1.3.1"});
        EXPECT_EQ(next.status, 0);
        Arguments lines = Lines(next.output);
        ASSERT_EQ(lines.size(), 2u) << next.output;
        EXPECT_EQ(lines[0].find(".1.3.6.1.2.1.1.6.0 = "), 0u);
        EXPECT_EQ(lines[1].find(".1.3.6.1.2.1.1.9.1.3.3 = "), 0u);
    }
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    EXPECT_EQ(agent.Rest(), "") << "nothing is refused";
}

TEST_F(Access, AGetOutsideTheViewIsRefusedWholeInTheFormOfTheVersion)
{
    for (const std::string version : {"1", "2c"}) {
        Outcome get =
            agent.Ask("snmpget", version, "lan", {oid::kSysDescr, oid::kSysContact}, {"-Cf"});
        EXPECT_EQ(get.status, 2);
        EXPECT_NE(get.output.find(version == "1" ? "(noSuchName)" : "authorizationError"),
                  std::string::npos)
            << get.output;
        EXPECT_NE(get.output.find("Failed object: " + oid::kSysContact), std::string::npos);
        // As hidden as what does not exist.
        Outcome none = agent.Ask("snmpget", version, "lan", {".1.3.6.1.2.1.1.4.7"}, {"-Cf"});
        EXPECT_NE(none.output.find(version == "1" ? "(noSuchName)" : "authorizationError"),
                  std::string::npos);
    }
}

TEST_F(Access, ASetIsDecidedByTheWriteViewAlone)
{
    for (const std::string version : {"1", "2c"}) {
        const std::string text = "set by v" + version;
        EXPECT_EQ(Set(version, "lan", {oid::kSysContact, "s", text}).status, 0)
            << "writable, though not readable";
        EXPECT_EQ(ValueOf(oid::kSysContact), oid::kSysContact + " = STRING: \"" + text + "\"\n");
        std::string location = ValueOf(oid::kSysLocation);
        for (const std::string& object : {oid::kSysLocation, oid::kSysName}) {
            Outcome set =
                Set(version, "lan", {oid::kSysContact, "s", "half a SET", object, "s", "x"});
            EXPECT_EQ(set.status, 2);
            EXPECT_NE(set.output.find(version == "1" ? "(noSuchName)" : "noAccess"),
                      std::string::npos)
                << set.output;
            EXPECT_NE(set.output.find("Failed object: " + object), std::string::npos);
        }
        EXPECT_EQ(ValueOf(oid::kSysContact), oid::kSysContact + " = STRING: \"" + text + "\"\n");
        EXPECT_EQ(ValueOf(oid::kSysLocation), location);
    }
}

TEST_F(Access, WithoutAWriteViewNothingIsSetWhateverItsType)
{
    for (const std::string version : {"1", "2c"}) {
        for (const Arguments& what :
             {Arguments{oid::kSysContact, "s", "x"}, Arguments{oid::kSysContact, "i", "1"},
              Arguments{".1.3.6.1.4.1.1.0", "i", "1"}}) {
            Outcome set = Set(version, "all", what);
            EXPECT_NE(set.output.find(version == "1" ? "(noSuchName)" : "noAccess"),
                      std::string::npos)
                << set.output;
        }
    }
    EXPECT_EQ(Set("2c", "few", {oid::kSysContact, "s", "few"}).status, 0);
    EXPECT_EQ(Set("1", "few", {oid::kSysContact, "s", "x"}).status, 2)
        << "its entry for SNMPv1 has no write view";
}

TEST_F(Access, ACommunityIsAnsweredToItsSourcesOnly)
{
    Outcome get = agent.Ask("snmpget", "2c", "far", {oid::kSysDescr}, {"-r", "0", "-t", "0.3"});
    EXPECT_EQ(get.status, 1);
    EXPECT_NE(get.output.find("No Response"), std::string::npos) << get.output;
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    std::string log = agent.Rest();
    EXPECT_EQ(log.find("vkagentd: no answer to udp:127.0.0.1:"), 0u) << log;
    EXPECT_NE(log.find(": the community 'far' is not answered there\n"), log.npos) << log;
    EXPECT_EQ(Lines(log).size(), 1u);
}

TEST_F(Access, ARefusalIsLoggedWithWhoWhatAndWhy)
{
    const Arguments once{"-r", "0", "-t", "60"}; // a line for each
    agent.Ask("snmpget", "2c", "lan", {oid::kSysContact}, once);
    agent.Ask("snmpset", "1", "few", {oid::kSysContact, "s", "x"}, once);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    Arguments log = Lines(agent.Rest());
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].find("vkagentd: refused get of 1.3.6.1.2.1.1.4.0 to 'lan' with SNMPv2c from "
                          "udp:127.0.0.1:"),
              0u)
        << log[0];
    EXPECT_NE(log[0].find(": it is not in the view 'lan'"), std::string::npos) << log[0];
    EXPECT_EQ(log[1].find("vkagentd: refused set of 1.3.6.1.2.1.1.4.0 to 'few' with SNMPv1 from "
                          "udp:127.0.0.1:"),
              0u)
        << log[1];
    EXPECT_NE(log[1].find(" in context 'ports': its group 'fews' has no write view"),
              std::string::npos)
        << log[1];
}

TEST_F(Access, AFloodOfStrangersLeavesAFewLinesWithoutTheirCommunity)
{
    Outcome get =
        agent.Ask("snmpget", "2c", "my-secret", {oid::kSysDescr}, {"-r", "40", "-t", "0.02"});
    EXPECT_EQ(get.status, 1);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    std::string log = agent.Rest();
    EXPECT_EQ(log.find("my-secret"), log.npos);
    size_t lines = Lines(log).size();
    EXPECT_GE(lines, 10u);
    EXPECT_LE(lines, 13u) << log; // one more each ten seconds of a slow machine
    EXPECT_NE(log.find(": its community is unknown\n"), log.npos) << log;
}

TEST_F(Access, ClientsSideBySideSeeEachTheirOwnView)
{
    const Arguments all = Walk("2c", "all");
    std::vector<std::thread> threads;
    auto run = [&](const char* version, const char* community, const Arguments& expected) {
        threads.emplace_back([=] {
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(Walk(version, community), expected) << community << " v" << version;
        });
    };
    run("2c", "all", all);
    run("1", "lan", Shown(kLan, all));
    run("2c", "lan", Shown(kLan, all));
    run("1", "few", Shown(kSystem, all));
    run("2c", "few", Shown(kNames, all));
    for (std::thread& thread : threads)
        thread.join();
}
