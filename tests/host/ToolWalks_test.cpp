// The whole of what the agent serves, walked and asked with the real tools.
#include "ToolAgent.h"

#include <algorithm>
#include <set>

namespace {

using CArcs = std::vector<unsigned long>;

const std::string kUsmStats = ".1.3.6.1.6.3.15.1.1.";

CArcs ArcsOf(const std::string& name)
{
    CArcs arcs;
    std::istringstream stream(name.substr(1));
    for (std::string arc; std::getline(stream, arc, '.');)
        arcs.push_back(std::stoul(arc));
    return arcs;
}

// A walk that the tool has not complained about.
struct SWalk {
    SWalk() = default;
    explicit SWalk(const Outcome& outcome) : status(outcome.status)
    {
        for (const std::string& line : Lines(outcome.output)) {
            const size_t end = line.find(" = ");
            // Texts of more than a line go on without a name.
            if (line.compare(0, 3, ".1.") != 0 || end == line.npos)
                continue;
            if (line.find(" = No more variables left") != line.npos) {
                hasEnd = true;
                continue;
            }
            names.push_back(line.substr(0, end));
            const bool isV2 = line.compare(end + 3, 10, "Counter64:") == 0;
            if (!isV2)
                ofV1.push_back(names.back());
        }
    }

    int status = -1;
    bool hasEnd = false;
    Arguments names;
    Arguments ofV1; // those that SNMPv1 has
};

class ToolWalks : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        ASSERT_TRUE(agent.IsComplete());
    }
    SWalk Walk(const std::string& tool = "snmpwalk", const Arguments& options = {}) const
    {
        return SWalk(agent.Ask(tool, {".1"}, options));
    }
    // The names that a walk of any kind finds, once they are the same before and after.
    template <class Other>
    void ExpectSame(Other other, Arguments SWalk::*names = &SWalk::names) const
    {
        SWalk reference, walk;
        ASSERT_TRUE(VLK::Eventually([&] {
            reference = Walk();
            walk = other();
            return Walk().names == reference.names;
        }));
        EXPECT_EQ(walk.status, 0);
        EXPECT_EQ(walk.names, reference.*names);
        EXPECT_GT(walk.names.size(), 100u);
    }

    ToolAgent agent;
};

} // namespace

TEST_F(ToolWalks, RiseWithoutARepetitionAndEnd)
{
    const SWalk walk = Walk();
    EXPECT_EQ(walk.status, 0);
    EXPECT_TRUE(walk.hasEnd);
    ASSERT_GT(walk.names.size(), 100u);
    for (size_t i = 1; i < walk.names.size(); ++i)
        EXPECT_LT(ArcsOf(walk.names[i - 1]), ArcsOf(walk.names[i]));
}

TEST_F(ToolWalks, BulksFindWhatStepsFind)
{
    for (const char* repetitions : {"-Cr1", "-Cr2", "-Cr7", "-Cr10", "-Cr100", "-Cr2000"}) {
        SCOPED_TRACE(repetitions);
        ExpectSame([&] { return Walk("snmpbulkwalk", {repetitions}); });
    }
}

TEST_F(ToolWalks, TheFirstVersionFindsAllButCounter64)
{
    ExpectSame([&] { return SWalk(agent.AskV1("snmpwalk", {".1"})); }, &SWalk::ofV1);
    EXPECT_NE(Walk().names, Walk().ofV1);
}

TEST_F(ToolWalks, TheThirdVersionFindsTheSame)
{
    ExpectSame([&] { return SWalk(agent.AskV3("snmpwalk", ToolAgent::Manager(), {".1"})); });
    ExpectSame([&] { return SWalk(agent.AskV3("snmpbulkwalk", ToolAgent::Manager(), {".1"})); });
}

TEST_F(ToolWalks, ValuesAreThoseOfGet)
{
    for (const char* steady : {".1.3.6.1.2.1.1.9", ".1.3.6.1.6.3.16", ".1.3.6.1.6.3.10.2.1.1"}) {
        const Outcome walk = agent.Ask("snmpwalk", {steady});
        const Arguments names = SWalk(walk).names;
        ASSERT_FALSE(names.empty()) << steady;
        const std::string values = agent.Ask("snmpget", names).output;
        // Behind the last one the end of the view may be told.
        EXPECT_EQ(walk.output.substr(0, values.size()), values);
        EXPECT_EQ(agent.Ask("snmpbulkwalk", {steady}).output, walk.output);
    }
}

TEST_F(ToolWalks, AHundredObjectsAreReadAtOnce)
{
    Arguments names;
    for (const std::string& name : Walk().names) {
        if (names.size() < 100)
            names.push_back(name);
    }
    ASSERT_EQ(names.size(), 100u);
    std::reverse(names.begin(), names.end());
    EXPECT_EQ(SWalk(agent.Ask("snmpget", names)).names, names);
    EXPECT_EQ(SWalk(agent.AskV3("snmpget", ToolAgent::Manager(), names)).names, names);
}

TEST_F(ToolWalks, SeveralObjectsAreSetAtOnce)
{
    const std::string enable = ".1.3.6.1.2.1.11.30.0";
    const Arguments what{oid::kSysContact,  "s", "contact", oid::kSysName, "s", "name",
                         oid::kSysLocation, "s", "place",   enable,        "i", "1"};
    const Outcome set = agent.Set(what);
    EXPECT_EQ(set.status, 0) << set.output;
    const Arguments names{oid::kSysContact, oid::kSysName, oid::kSysLocation, enable};
    EXPECT_EQ(agent.Ask("snmpget", names).output, set.output);
    EXPECT_EQ(SWalk(set).names, names);
    EXPECT_EQ(agent.Value(oid::kSysLocation), "\"place\"");
}

TEST_F(ToolWalks, AStatusIsTold)
{
    const Outcome status =
        agent.Tools().Run({"snmpstatus", "-v2c", "-c", "public", agent.Address()});
    EXPECT_EQ(status.status, 0);
    EXPECT_NE(status.output.find("=>[Velkoran agent] Up: "), std::string::npos) << status.output;
}

TEST_F(ToolWalks, TableOfUsersIsNotThere)
{
    const Outcome create =
        agent.AskV3("snmpusm", ToolAgent::Manager(), {"create", "new", "manager"});
    EXPECT_NE(create.output.find("Reason: noCreation"), std::string::npos) << create.output;
    const Outcome get = agent.Ask("snmpget", {".1.3.6.1.6.3.15.1.2.1.0"});
    EXPECT_NE(get.output.find("No Such Object"), std::string::npos) << get.output;
}

TEST_F(ToolWalks, NotificationsToTheAgentAreNobodys)
{
    const Arguments rest{"", ".1.3.6.1.6.3.1.1.5.1"};
    const Outcome inform = agent.Ask("snmpinform", rest, {"-r", "0", "-t", "0.3"});
    EXPECT_EQ(inform.status, 1);
    EXPECT_NE(inform.output.find("Timeout"), std::string::npos) << inform.output;
    EXPECT_EQ(agent.Ask("snmptrap", rest).status, 0);
    EXPECT_EQ(agent.Value(oid::kSysDescr), "\"Velkoran agent\"");
    EXPECT_EQ(agent.End(), 0);
}

// The tools learn the engine ID by a first message that has none.
TEST_F(ToolWalks, FailuresOfTheThirdVersionAreCounted)
{
    const std::string engineIds = kUsmStats + "4.0";
    const unsigned long before = agent.Number(engineIds);
    EXPECT_EQ(agent.AskV3("snmpget", ToolAgent::Manager(), {oid::kSysDescr}).status, 0);
    EXPECT_GT(agent.Number(engineIds), before);

    const std::string digests = kUsmStats + "5.0";
    EXPECT_EQ(agent.Number(digests), 0u);
    const Arguments liar = ToolAgent::Manager("not the word to sign with");
    EXPECT_NE(agent.AskV3("snmpget", liar, {oid::kSysDescr}).status, 0);
    EXPECT_GT(agent.Number(digests), 0u);

    const std::string users = kUsmStats + "3.0";
    const unsigned long strangers = agent.Number(users);
    const Arguments nobody{"-v3", "-l", "noAuthNoPriv", "-u", "nobody"};
    EXPECT_NE(agent.AskV3("snmpget", nobody, {oid::kSysDescr}).status, 0);
    EXPECT_GT(agent.Number(users), strangers);
    EXPECT_EQ(agent.Number(kUsmStats + "1.0"), 0u);
}

TEST_F(ToolWalks, TheEngineIsTheOneThatAnswers)
{
    const std::string engine = ".1.3.6.1.6.3.10.2.1.";
    std::string id = agent.Ask("snmpget", {engine + "1.0"}, {"-Oqv"}).output;
    id.erase(std::remove_if(id.begin(), id.end(), [](char c) { return !isxdigit(c); }), id.end());
    Arguments who = ToolAgent::Manager();
    // Who says it need not learn it.
    const std::string learned = kUsmStats + "4.0";
    const unsigned long before = agent.Number(learned);
    who.insert(who.end(), {"-e", "0x" + id, "-Z",
                           agent.Value(engine + "2.0") + "," + agent.Value(engine + "3.0")});
    const Outcome get = agent.AskV3("snmpget", who, {oid::kSysDescr});
    EXPECT_EQ(get.status, 0) << get.output;
    EXPECT_EQ(agent.Number(learned), before);
    EXPECT_EQ(agent.Value(engine + "2.0"), "1");
}
