#include "RunningAgent.h"

namespace {

const char kNoSuchName[] = "(noSuchName)";

class Clients : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    std::string Version() const { return GetParam(); }
    bool IsV1() const { return Version() == "1"; }

    Outcome Get(const Arguments& names) const
    {
        return agent.Ask("snmpget", Version(), "public", names);
    }
    Outcome Set(const Arguments& what, const std::string& community = "private") const
    {
        return agent.Ask("snmpset", Version(), community, what);
    }
    std::string Contact() const { return Get({oid::kSysContact}).output; }

    // The set is refused with this reason for that object, and nothing changed.
    void ExpectRefused(const Arguments& what, const std::string& v1, const std::string& v2,
                       const std::string& community = "private") const
    {
        std::string before = Contact();
        Outcome set = Set(what, community);
        EXPECT_EQ(set.status, 2);
        EXPECT_NE(set.output.find(IsV1() ? v1 : v2), std::string::npos) << set.output;
        EXPECT_NE(set.output.find("Failed object: " + what[0]), std::string::npos) << set.output;
        EXPECT_EQ(Contact(), before);
    }

    TempDir directory;
    RunningAgent agent{directory.File("store.db")};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Versions, Clients, testing::Values("1", "2c"),
                         [](const auto& test) { return std::string("V") + test.param; });

TEST_P(Clients, GetReadsAnObject)
{
    Outcome get = Get({oid::kSysDescr, oid::kSysName});
    EXPECT_EQ(get.status, 0);
    EXPECT_EQ(get.output, oid::kSysDescr + " = STRING: \"Velkoran agent\"\n" + oid::kSysName +
                              " = STRING: \"MIB handler\"\n");
}

TEST_P(Clients, AWrongCommunityGetsNoAnswer)
{
    Outcome get =
        agent.Ask("snmpget", Version(), "secret", {oid::kSysDescr}, {"-r", "0", "-t", "0.3"});
    EXPECT_EQ(get.status, 1);
    EXPECT_NE(get.output.find("No Response"), std::string::npos) << get.output;
    Outcome set = agent.Ask("snmpset", Version(), "secret", {oid::kSysContact, "s", "x"},
                            {"-r", "0", "-t", "0.3"});
    EXPECT_EQ(set.status, 1);
    EXPECT_NE(Contact().find("Mr. Qwin"), std::string::npos);
}

TEST_P(Clients, AMissingInstanceIsSaidInTheFormOfTheVersion)
{
    Outcome get = Get({oid::kSysDescr, ".1.3.6.1.2.1.1.1.1"});
    if (IsV1()) {
        EXPECT_EQ(get.status, 2);
        EXPECT_NE(get.output.find(kNoSuchName), std::string::npos) << get.output;
        EXPECT_NE(get.output.find("Failed object: .1.3.6.1.2.1.1.1.1"), std::string::npos);
    } else {
        EXPECT_EQ(get.status, 0);
        EXPECT_NE(get.output.find(".1.3.6.1.2.1.1.1.1 = No Such Object"), std::string::npos);
    }
}

TEST_P(Clients, GetNextStepsAndEnds)
{
    Outcome next = agent.Ask("snmpgetnext", Version(), "public", {".1.3.6.1.2.1.1.4"});
    EXPECT_EQ(next.output, oid::kSysContact + " = STRING: \"Mr. Qwin\"\n");
    Outcome end = agent.Ask("snmpgetnext", Version(), "public", {".1.9"});
    if (IsV1()) {
        EXPECT_NE(end.output.find(kNoSuchName), std::string::npos) << end.output;
        EXPECT_NE(end.output.find("Failed object: .1.9"), std::string::npos) << end.output;
    } else {
        EXPECT_NE(end.output.find(".1.9 = No more variables left"), std::string::npos);
    }
}

TEST_P(Clients, AWalkListsTheSystemGroupAndItsResourcesAndGoesNoFurther)
{
    Outcome walk = agent.Ask("snmpwalk", Version(), "public", {"1.3.6.1.2.1.1"});
    EXPECT_EQ(walk.status, 0);
    Arguments lines = Lines(walk.output);
    const size_t rows = (lines.size() - 8) / 3;
    ASSERT_EQ(lines.size(), 8u + 3 * rows);
    ASSERT_GE(rows, 5u);
    for (unsigned i = 1; i <= 8; ++i)
        EXPECT_EQ(lines[i - 1].find(oid::kSystem + "." + std::to_string(i) + ".0 = "), 0u);
    for (unsigned column = 2; column <= 4; ++column) {
        for (size_t row = 1; row <= rows; ++row) {
            std::string name = ".9.1." + std::to_string(column) + "." + std::to_string(row) + " = ";
            EXPECT_NE(lines[8 + (column - 2) * rows + row - 1].find(name), std::string::npos)
                << name;
        }
    }
}

TEST_P(Clients, AWalkOfEverythingEndsAtTheEndOfTheMib)
{
    Outcome walk = agent.Ask("snmpwalk", Version(), "public", {"1.3"});
    EXPECT_EQ(walk.status, 0);
    EXPECT_NE(Lines(walk.output).back().find(IsV1() ? "End of MIB" : "No more variables left"),
              std::string::npos);
}

TEST_P(Clients, SetIsAnsweredAndReadBack)
{
    Outcome set = Set({oid::kSysContact, "s", "somebody"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.output, oid::kSysContact + " = STRING: \"somebody\"\n");
    EXPECT_EQ(Contact(), set.output);
}

TEST_P(Clients, AReadOnlyCommunityMayNotSet)
{
    ExpectRefused({oid::kSysContact, "s", "x"}, kNoSuchName, "noAccess", "public");
}

TEST_P(Clients, AWrongTypeIsRefused)
{
    ExpectRefused({oid::kSysContact, "i", "3"}, "(badValue)", "wrongType");
}

TEST_P(Clients, ATooLongTextIsRefusedAndTheLongestIsTaken)
{
    ExpectRefused({oid::kSysContact, "s", std::string(256, 'x')}, "(badValue)", "wrongLength");
    std::string longest(255, 'y');
    EXPECT_EQ(Set({oid::kSysContact, "s", longest}).status, 0);
    EXPECT_NE(Contact().find(longest), std::string::npos);
}

TEST_P(Clients, AReadOnlyObjectIsRefused)
{
    ExpectRefused({oid::kSysDescr, "s", "x"}, kNoSuchName, "notWritable");
}

TEST_P(Clients, SettingAMissingInstanceIsRefused)
{
    ExpectRefused({".1.3.6.1.2.1.1.4.1", "s", "x"}, kNoSuchName, "noCreation");
    ExpectRefused({".1.3.6.1.4.1.32473.9.0", "i", "1"}, kNoSuchName, "noCreation");
}

TEST_P(Clients, OneRefusedBindingLeavesAllUnchanged)
{
    Outcome set = Set({oid::kSysContact, "s", "x", oid::kSysDescr, "s", "x"});
    EXPECT_EQ(set.status, 2);
    EXPECT_NE(set.output.find("Failed object: " + oid::kSysDescr), std::string::npos);
    EXPECT_NE(Contact().find("Mr. Qwin"), std::string::npos);
}

namespace {

class BulkClients : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    TempDir directory;
    RunningAgent agent{directory.File("store.db")};
};

} // namespace

TEST_F(BulkClients, BulkGetInterleavesRepetitions)
{
    Outcome bulk = agent.Ask("snmpbulkget", "2c", "public",
                             {".1.3.6.1.2.1.1.1", ".1.3.6.1.2.1.1.4", ".1.3.6.1.2.1.1.9.1.3"},
                             {"-Cn1", "-Cr2"});
    EXPECT_EQ(bulk.status, 0);
    Arguments lines = Lines(bulk.output);
    ASSERT_EQ(lines.size(), 5u);
    const char* names[] = {".1.1.0 = ", ".1.4.0 = ", ".1.9.1.3.1 = ", ".1.5.0 = ", ".1.9.1.3.2 = "};
    for (size_t i = 0; i < lines.size(); ++i)
        EXPECT_NE(lines[i].find(names[i]), std::string::npos) << lines[i];
}

TEST_F(BulkClients, BulkWalkListsWhatTheWalkLists)
{
    for (const char* root : {"1.3.6.1.2.1.1.1", "1.3.6.1.2.1.1.9.1.3", "1.3.6.1.2.1.1.9", "1.3"}) {
        // sysUpTime moves on; its value is left out by printing names and types only.
        Arguments walk =
            Lines(agent.Ask("snmpwalk", "2c", "public", {root}, {"-Ob", "-OT"}).output);
        Arguments bulk =
            Lines(agent.Ask("snmpbulkwalk", "2c", "public", {root}, {"-Ob", "-OT"}).output);
        ASSERT_FALSE(walk.empty());
        ASSERT_EQ(walk.size(), bulk.size()) << root;
        for (size_t i = 0; i < walk.size(); ++i)
            EXPECT_EQ(walk[i].substr(0, walk[i].find(' ')), bulk[i].substr(0, bulk[i].find(' ')));
    }
}

TEST_F(BulkClients, ThirdVersionMessagesGetNoAnswer)
{
    Outcome get = SnmpTools().Run({"snmpget", "-v3", "-u", "somebody", "-l", "noAuthNoPriv", "-r",
                                   "0", "-t", "0.3", agent.Address(), oid::kSysDescr});
    EXPECT_NE(get.status, 0);
    EXPECT_NE(get.output.find("Timeout"), std::string::npos) << get.output;
}
