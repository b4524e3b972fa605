// The views of a running agent, as managers edit them with the installed tools, and
// what others see at once.
#include "ViewKills.h"

#include "tests/support/ViewRows.h"

#include <memory>

namespace {

const std::string kSysObjectId = ".1.3.6.1.2.1.1.2.0";
const std::string kSysOr = ".1.3.6.1.2.1.1.9";
const std::string kLock = ".1.3.6.1.6.3.16.1.5.1.0";
const std::string kTable = ".1.3.6.1.6.3.16.1.5.2";

const std::string kAddress = "agentAddress = \"udp:127.0.0.1:0\"\n";
// `boss` sees everything and writes the views, `guest` reads what is shown.
const std::string kPeople =
    "[[view]]\nname = \"edited\"\ninclude = [\"1.3.6.1.6.3.16.1.5\"]\n"
    "[[community]]\nname = \"boss\"\nread = \"everything\"\nwrite = \"edited\"\n"
    "[[community]]\nname = \"guest\"\nread = \"shown\"\n";

std::string Object(const std::string& name, const std::string& syntax, const std::string& place)
{
    return name + " OBJECT-TYPE SYNTAX " + syntax + " MAX-ACCESS " +
           (name == "view" || name == "subtree" ? "not-accessible" : "read-create") +
           " STATUS current " + (syntax == "Family" ? "INDEX { view, subtree } " : "") + "::= { " +
           place + " }\n";
}

// What snmptable has to know of the table.
std::string Mib()
{
    return "VIEWS DEFINITIONS ::= BEGIN\n" +
           Object("families", "SEQUENCE OF Family", "iso 3 6 1 6 3 16 1 5 2") +
           Object("family", "Family", "families 1") +
           "Family ::= SEQUENCE { view OCTET STRING, subtree OBJECT IDENTIFIER,\n"
           "mask OCTET STRING, type INTEGER, storage INTEGER, status INTEGER }\n" +
           Object("view", "OCTET STRING (SIZE(1..32))", "family 1") +
           Object("subtree", "OBJECT IDENTIFIER", "family 2") +
           Object("mask", "OCTET STRING (SIZE(0..16))", "family 3") +
           Object("type", "INTEGER { included(1), excluded(2) }", "family 4") +
           Object("storage", "INTEGER { volatile(2), nonVolatile(3), readOnly(5) }", "family 5") +
           Object("status", "INTEGER { active(1), notInService(2) }", "family 6") + "END\n";
}

enum EType { eIncluded = 1, eExcluded = 2 };
enum EStorage { eOther = 1, eVolatile, eNonVolatile, ePermanent, eReadOnly };
enum EStatus { eActive = 1, eNotInService, eNotReady, eCreateAndGo, eCreateAndWait, eDestroy };

// A row, and its columns as snmpset takes them.
class Row {
public:
    Row(const std::string& view, const std::string& subtree)
        : m_index(VLK::Test::FamilyIndex(view, subtree))
    {
    }
    std::string Instance(int column) const
    {
        return kTable + ".1." + std::to_string(column) + "." + m_index;
    }
    Arguments Mask(const std::string& octets) const { return {Instance(3), "x", octets}; }
    Arguments Type(int value) const { return Number(4, value); }
    Arguments Storage(int value) const { return Number(5, value); }
    Arguments Status(int value) const { return Number(6, value); }

private:
    Arguments Number(int column, int value) const
    {
        return {Instance(column), "i", std::to_string(value)};
    }
    std::string m_index;
};

// What a tool tells of a refusal, its status and the object, or "".
std::string RefusalOf(const Outcome& outcome)
{
    const std::string& text = outcome.output;
    auto behind = [&](const std::string& label) {
        size_t at = text.find(label);
        at = at == text.npos ? at : text.find_first_not_of('(', at + label.size());
        return at == text.npos ? "" : text.substr(at, text.find_first_of(" )\n", at) - at);
    };
    if (outcome.status == 0)
        return "";
    const std::string status = behind("Reason: ");
    return status.empty() ? text : status + " " + behind("Failed object: ");
}

bool IsUnder(const std::string& name, const Arguments& subtrees)
{
    return std::any_of(subtrees.begin(), subtrees.end(), [&](const std::string& subtree) {
        return (name + ".").compare(0, subtree.size() + 1, subtree + ".") == 0;
    });
}

class ManagedViews : public testing::Test {
protected:
    void SetUp() override
    {
        WriteFile(directory.File("VIEWS.txt"), Mib());
        Start();
    }

    // Nothing shown: the file only defines the view.
    void Start(const std::string& shown = "1.3.6.1.2.1.1.1", const Arguments& more = {})
    {
        const std::string include = shown.empty() ? "" : "\"" + shown + "\"";
        file = std::make_unique<ConfigFile>(
            kAddress + kPeople + "[[view]]\nname = \"shown\"\ninclude = [" + include + "]\n");
        agent = std::make_unique<ConfiguredAgent>(store, *file, more);
        ASSERT_TRUE(agent->IsReady()) << agent->FirstLine();
    }
    void Restart(const std::string& shown = "1.3.6.1.2.1.1.1", const Arguments& more = {})
    {
        EXPECT_EQ(agent->Kill(SIGTERM), 0);
        Start(shown, more);
    }

    // The manager's SET of all the bindings at once: "" or the refusal.
    std::string Set(const std::vector<Arguments>& bindings, const std::string& version = "2c",
                    const std::string& community = "boss")
    {
        Arguments all;
        for (const Arguments& binding : bindings)
            all.insert(all.end(), binding.begin(), binding.end());
        return RefusalOf(agent->Ask("snmpset", version, community, all));
    }
    std::string Get(const std::string& name, const std::string& community = "boss")
    {
        const Outcome get = agent->Ask("snmpget", "2c", community, {name}, {"-Oqv"});
        return get.status == 0 ? get.output.substr(0, get.output.find('\n')) : RefusalOf(get);
    }

    // The instances that a walk finds, over everything unless a root is given.
    Arguments Walk(const std::string& community, const std::string& version,
                   const std::string& root = ".1")
    {
        Arguments names;
        for (const std::string& line :
             Lines(agent->Ask("snmpwalk", version, community, {root}, {"-Oq"}).output)) {
            if (line.find(" No more variables") == line.npos && line != "End of MIB")
                names.push_back(line.substr(0, line.find(' ')));
        }
        return names;
    }
    // What the guest sees must be exactly that.
    void ExpectShown(const Arguments& names)
    {
        for (const char* version : {"1", "2c"})
            EXPECT_EQ(Walk("guest", version), names) << version;
    }
    // Of all instances of the system group, in their order.
    Arguments Under(const Arguments& included, const Arguments& excluded = {})
    {
        Arguments names;
        for (const std::string& name : Walk("boss", "2c", oid::kSystem)) {
            if (IsUnder(name, included) && !IsUnder(name, excluded))
                names.push_back(name);
        }
        return names;
    }

    // Its rows as they are printed: "view".subtree,mask,type,storage,status
    Arguments Table(const std::string& version = "2c")
    {
        const Outcome table =
            agent->Tools().Run({"snmptable", "-v" + version, "-c", "boss", "-M", directory.Path(),
                                "-m", "VIEWS", "-Ci", "-CH", "-Cf", ",", agent->Address(), kTable});
        Arguments rows = Lines(table.output);
        rows.erase(std::remove(rows.begin(), rows.end(), "End of MIB"), rows.end());
        return rows;
    }
    // Those of a view, without its name.
    Arguments RowsOf(const std::string& view, const std::string& version = "2c")
    {
        const std::string prefix = "\"" + view + "\".";
        Arguments rows;
        for (const std::string& row : Table(version)) {
            if (row.compare(0, prefix.size(), prefix) == 0)
                rows.push_back(row.substr(prefix.size()));
        }
        return rows;
    }

    const Row sysDescr{"shown", "1.3.6.1.2.1.1.1"};
    const Row sysContact{"shown", "1.3.6.1.2.1.1.4"};
    const Row sysName{"shown", "1.3.6.1.2.1.1.5"};

    TempDir directory;
    std::string store = directory.File("store.db");
    std::unique_ptr<ConfigFile> file;
    std::unique_ptr<ConfiguredAgent> agent;
};

// What the tool for views makes and takes, with one version.
class ManagedViewsByTool : public ManagedViews, public testing::WithParamInterface<const char*> {
protected:
    Outcome Vacm(const Arguments& command, const std::string& community = "boss")
    {
        return agent->Ask("snmpvacm", GetParam(), community, command);
    }
};

INSTANTIATE_TEST_SUITE_P(Versions, ManagedViewsByTool, testing::Values("1", "2c"),
                         [](const auto& version) { return std::string("V") + version.param; });

} // namespace

TEST_P(ManagedViewsByTool, CreatesAndDeletesWhatOthersSeeAtOnce)
{
    ExpectShown({oid::kSysDescr});
    EXPECT_EQ(Vacm({"createView", "shown", ".1.3.6.1.2.1.1.5"}).output,
              "View successfully created.\n");
    ExpectShown({oid::kSysDescr, oid::kSysName});
    EXPECT_EQ(Vacm({"createView", "shown", ".1.3.6.1.2.1.1"}).status, 0);
    EXPECT_EQ(Vacm({"createView", "-Ce", "shown", kSysOr}).status, 0);
    ExpectShown(Under({oid::kSystem}, {kSysOr}));
    EXPECT_EQ(Vacm({"deleteView", "shown", kSysOr}).output, "View successfully deleted.\n");
    ExpectShown(Under({oid::kSystem}));
    EXPECT_EQ(RowsOf("shown", GetParam()),
              (Arguments{"7.1.3.6.1.2.1.1,\"FF FF FF FF \",included,nonVolatile,active",
                         "8.1.3.6.1.2.1.1.1,\"\",included,nonVolatile,active",
                         "8.1.3.6.1.2.1.1.5,\"FF FF FF FF \",included,nonVolatile,active"}));
    for (const char* subtree : {".1.3.6.1.2.1.1", ".1.3.6.1.2.1.1.5", ".1.3.6.1.2.1.1.1"})
        EXPECT_EQ(Vacm({"deleteView", "shown", subtree}).status, 0);
    ExpectShown({});
    EXPECT_EQ(Get(oid::kSysDescr, "guest"), "authorizationError " + oid::kSysDescr);
}

TEST_P(ManagedViewsByTool, FillsAViewThatTheConfigurationOnlyDefines)
{
    Restart("");
    ExpectShown({});
    EXPECT_EQ(RowsOf("shown", GetParam()), Arguments());
    EXPECT_EQ(Get(oid::kSysDescr, "guest"), "authorizationError " + oid::kSysDescr);
    EXPECT_EQ(Vacm({"createView", "shown", ".1.3.6.1.2.1.1.1"}).status, 0);
    ExpectShown({oid::kSysDescr});
    Restart("");
    ExpectShown({oid::kSysDescr});
}

TEST_P(ManagedViewsByTool, AMaskLeavesNumbersOpen)
{
    // Any column of the table, the second row.
    EXPECT_EQ(Vacm({"createView", "shown", ".1.3.6.1.2.1.1.9.1.0.2", "ff:a0"}).status, 0);
    Arguments second{oid::kSysDescr};
    for (const std::string& instance : Under({kSysOr})) {
        if (instance.substr(instance.rfind('.')) == ".2")
            second.push_back(instance);
    }
    EXPECT_EQ(second.size(), 4u);
    ExpectShown(second);
    EXPECT_EQ(RowsOf("shown", GetParam()).back(),
              "11.1.3.6.1.2.1.1.9.1.0.2,\"FF A0 \",included,nonVolatile,active");
}

TEST_P(ManagedViewsByTool, IsToldWhatCannotBe)
{
    const bool isV1 = std::string(GetParam()) == "1";
    const Arguments before = Table();
    Outcome twice = Vacm({"createView", "shown", ".1.3.6.1.2.1.1.1"});
    EXPECT_EQ(twice.status, 2);
    EXPECT_EQ(RefusalOf(twice).find(isV1 ? "badValue " : "inconsistentValue "), 0u) << twice.output;
    for (const Arguments& command : {Arguments{"createView", "shown", ".1.3.6.1.2.1.1.5"},
                                     Arguments{"deleteView", "shown", ".1.3.6.1.2.1.1.1"}}) {
        Outcome others = Vacm(command, "guest");
        EXPECT_EQ(others.status, 2);
        EXPECT_EQ(RefusalOf(others).find(isV1 ? "noSuchName " : "noAccess "), 0u) << others.output;
    }
    EXPECT_EQ(Vacm({"deleteView", "shown", ".1.3.6.1.2.1.1.5"}).status, 0) << "there is none";
    EXPECT_EQ(Table(), before);
    ExpectShown({oid::kSysDescr});
}

TEST_P(ManagedViewsByTool, BuiltInViewsStayAsTheyAre)
{
    const bool isV1 = std::string(GetParam()) == "1";
    const Arguments before = Table();
    EXPECT_EQ(RefusalOf(Vacm({"deleteView", "everything", ".1"}))
                  .find(isV1 ? "badValue " : "inconsistentValue "),
              0u);
    // Nobody, not even the manager, would see or set views any more.
    for (const char* view : {"everything", "systemonly"})
        EXPECT_EQ(RefusalOf(Vacm({"createView", "-Ce", view, ".1.3.6.1"}))
                      .find(isV1 ? "noSuchName " : "noCreation "),
                  0u);
    EXPECT_EQ(Table(), before);
}

TEST_F(ManagedViews, AnActiveRowIsChangedInEveryColumn)
{
    EXPECT_EQ(Set({sysContact.Status(eCreateAndGo)}), "");
    ExpectShown({oid::kSysDescr, oid::kSysContact});
    EXPECT_EQ(Set({sysContact.Type(eExcluded)}), "");
    ExpectShown({oid::kSysDescr});
    // Now it fits any of the group, and goes before the one that sorts before it.
    EXPECT_EQ(Set({sysContact.Mask("fe")}), "");
    ExpectShown({});
    EXPECT_EQ(Set({sysContact.Type(eIncluded), sysDescr.Type(eExcluded)}), "");
    ExpectShown(Under({oid::kSystem}));
    EXPECT_EQ(Set({sysContact.Mask(""), sysContact.Storage(eVolatile)}), "");
    ExpectShown({oid::kSysContact});
    EXPECT_EQ(RowsOf("shown"), (Arguments{"8.1.3.6.1.2.1.1.1,\"\",excluded,nonVolatile,active",
                                          "8.1.3.6.1.2.1.1.4,\"\",included,volatile,active"}));
}

TEST_F(ManagedViews, ASuspendedRowCountsForNothingUntilItIsActiveAgain)
{
    EXPECT_EQ(Set({sysName.Status(eCreateAndWait)}), "");
    EXPECT_EQ(Get(sysName.Instance(6)), "2") << "nothing is missing: it only waits";
    ExpectShown({oid::kSysDescr});
    EXPECT_EQ(Set({sysName.Status(eActive)}), "");
    ExpectShown({oid::kSysDescr, oid::kSysName});
    EXPECT_EQ(Set({sysDescr.Status(eNotInService)}, "1"), "");
    ExpectShown({oid::kSysName});
    EXPECT_EQ(Set({sysName.Status(eNotInService)}, "1"), "");
    ExpectShown({});
    EXPECT_EQ(Get(oid::kSysDescr, "guest"), "authorizationError " + oid::kSysDescr);
    EXPECT_EQ(Set({sysDescr.Status(eActive), sysName.Status(eDestroy)}), "");
    ExpectShown({oid::kSysDescr});
    EXPECT_EQ(Get(oid::kSysDescr, "guest"), "\"Velkoran agent\"");
}

TEST_F(ManagedViews, TheBindingsOfASetComeInAnyOrder)
{
    std::vector<size_t> order{0, 1, 2, 3};
    const Row* comes = &sysContact;
    const Row* goes = &sysName;
    do {
        const Arguments all[] = {comes->Status(eCreateAndGo), comes->Mask("ff"),
                                 goes->Status(eDestroy), comes->Type(eIncluded)};
        std::vector<Arguments> bindings;
        for (size_t i : order)
            bindings.push_back(all[i]);
        ASSERT_EQ(Set(bindings), "") << testing::PrintToString(order);
        ASSERT_EQ(Walk("guest", "2c"),
                  (Arguments{oid::kSysDescr, comes == &sysName ? oid::kSysName : oid::kSysContact}))
            << testing::PrintToString(order);
        std::swap(comes, goes);
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(RowsOf("shown").back(), "8.1.3.6.1.2.1.1.5,\"FF \",included,nonVolatile,active");
}

TEST_F(ManagedViews, WhatIsRefusedHasItsStatusAndChangesNothing)
{
    const Row all{"everything", "1"};
    const Row long33{std::string(33, 'v'), "1.3"};
    const struct {
        std::vector<Arguments> bindings;
        size_t at;
        const char* status;
        const char* statusV1;
    } refusals[] = {
        {{{oid::kSysContact, "s", "x"}}, 0, "noAccess", "noSuchName"},
        {{sysName.Status(eCreateAndGo), {oid::kSysContact, "s", "x"}}, 1, "noAccess", "noSuchName"},
        {{{sysDescr.Instance(3), "i", "1"}}, 0, "wrongType", "badValue"},
        {{{sysDescr.Instance(4), "s", "1"}}, 0, "wrongType", "badValue"},
        {{{sysDescr.Instance(6), "u", "6"}}, 0, "wrongType", "badValue"},
        {{sysDescr.Mask(std::string(34, 'f'))}, 0, "wrongLength", "badValue"},
        {{sysDescr.Type(3)}, 0, "wrongValue", "badValue"},
        {{sysDescr.Storage(6)}, 0, "wrongValue", "badValue"},
        {{sysDescr.Status(eNotReady)}, 0, "wrongValue", "badValue"},
        {{sysDescr.Status(7)}, 0, "wrongValue", "badValue"},
        {{sysName.Mask("ff")}, 0, "inconsistentName", "noSuchName"},
        {{sysDescr.Mask("ff"), sysName.Type(eIncluded)}, 1, "inconsistentName", "noSuchName"},
        {{sysDescr.Status(eCreateAndGo)}, 0, "inconsistentValue", "badValue"},
        {{sysName.Status(eActive)}, 0, "inconsistentValue", "badValue"},
        {{sysName.Status(eNotInService), sysName.Type(eExcluded)},
         0,
         "inconsistentValue",
         "badValue"},
        {{sysName.Status(eCreateAndGo), sysName.Storage(ePermanent)},
         1,
         "inconsistentValue",
         "badValue"},
        {{sysDescr.Storage(eReadOnly)}, 0, "inconsistentValue", "badValue"},
        {{sysDescr.Status(eDestroy), sysDescr.Status(eDestroy)},
         1,
         "inconsistentValue",
         "badValue"},
        {{sysDescr.Type(eExcluded), all.Status(eDestroy)}, 1, "inconsistentValue", "badValue"},
        {{all.Status(eNotInService)}, 0, "inconsistentValue", "badValue"},
        {{all.Type(eExcluded)}, 0, "notWritable", "noSuchName"},
        {{all.Mask("")}, 0, "notWritable", "noSuchName"},
        {{all.Storage(eNonVolatile)}, 0, "notWritable", "noSuchName"},
        {{{sysDescr.Instance(2), "o", ".1.3"}}, 0, "notWritable", "noSuchName"},
        {{{sysDescr.Instance(1), "s", "shown"}}, 0, "notWritable", "noSuchName"},
        {{long33.Status(eCreateAndWait)}, 0, "noCreation", "noSuchName"},
    };
    const Arguments before = Table();
    for (const auto& refusal : refusals) {
        const std::string object = " " + refusal.bindings[refusal.at][0];
        EXPECT_EQ(Set(refusal.bindings), refusal.status + object);
        EXPECT_EQ(Set(refusal.bindings, "1"), refusal.statusV1 + object);
    }
    EXPECT_EQ(Set({sysDescr.Status(eDestroy)}, "2c", "guest"), "noAccess " + sysDescr.Instance(6));
    EXPECT_EQ(Table(), before);
    ExpectShown({oid::kSysDescr});
    Restart("1.3.6.1.2.1.1.2");
    ExpectShown({kSysObjectId});
    EXPECT_EQ(agent->Earlier(), "") << "nothing came into the store";
}

TEST_F(ManagedViews, ARestartKeepsTheRowsThatAreActiveAndNonVolatile)
{
    EXPECT_EQ(
        Set({sysContact.Status(eCreateAndGo), sysContact.Mask("ff80"), sysContact.Type(eExcluded)}),
        "");
    EXPECT_EQ(Set({sysName.Status(eCreateAndGo), sysName.Storage(eVolatile)}), "");
    const Row system{"shown", "1.3.6.1.2.1.1"};
    EXPECT_EQ(Set({system.Status(eCreateAndGo), system.Storage(eVolatile)}), "");
    EXPECT_EQ(Set({system.Storage(eNonVolatile)}), "");
    const Row other{"other", "1"};
    EXPECT_EQ(Set({other.Status(eCreateAndWait)}), "");
    const Arguments before = Table();
    ExpectShown(Under({oid::kSystem}, {oid::kSysContact}));

    Restart();
    Arguments kept;
    for (const std::string& row : before) {
        if (row.find(",volatile,") == row.npos && row.find(",notInService") == row.npos)
            kept.push_back(row);
    }
    EXPECT_EQ(kept.size(), before.size() - 2);
    EXPECT_EQ(Table(), kept);
    ExpectShown(Under({oid::kSystem}, {oid::kSysContact}));
    // Suspended: it shows nothing before the restart and is gone after it.
    EXPECT_EQ(Set({sysContact.Status(eNotInService)}), "");
    ExpectShown(Under({oid::kSystem}));
    Restart();
    ExpectShown(Under({oid::kSystem}));
    EXPECT_EQ(Get(sysContact.Instance(6)), "No Such Instance currently exists at this OID");
}

TEST_F(ManagedViews, TheStoreCountsBeforeTheFileUntilItIsReset)
{
    EXPECT_EQ(Set({sysName.Status(eCreateAndGo)}), "");
    const Arguments managed = Table();
    const std::string told = "vkagentd: views are as managers have set them, not as in ";
    Restart("1.3.6.1.2.1.1.2");
    EXPECT_EQ(Table(), managed);
    EXPECT_EQ(agent->Earlier().find(told), 0u) << agent->Earlier();
    ExpectShown({oid::kSysDescr, oid::kSysName});
    // The row that the file asks for, made by the manager: now they agree.
    EXPECT_EQ(Set({Row("shown", "1.3.6.1.2.1.1.2").Status(eCreateAndGo), sysName.Status(eDestroy),
                   sysDescr.Status(eDestroy)}),
              "");
    Restart("1.3.6.1.2.1.1.2");
    EXPECT_EQ(agent->Earlier(), "");
    ExpectShown({kSysObjectId});
    Restart("1.3.6.1.2.1.1.6", {"--reset-store"});
    EXPECT_EQ(RowsOf("shown"), Arguments{"8.1.3.6.1.2.1.1.6,\"\",included,nonVolatile,active"});
    ExpectShown({oid::kSysLocation});
    Restart("1.3.6.1.2.1.1.4");
    ExpectShown({oid::kSysContact});
    EXPECT_EQ(agent->Earlier(), "");
}

TEST_F(ManagedViews, AManagerCanLockHimselfOutAndTheResetLetsHimIn)
{
    const Row own{"edited", "1.3.6.1.6.3.16.1.5"};
    EXPECT_EQ(Set({own.Status(eNotInService)}), "");
    const std::string refusal = "noAccess " + own.Instance(6);
    EXPECT_EQ(Set({own.Status(eActive)}), refusal);
    Restart();
    EXPECT_EQ(Set({own.Status(eCreateAndGo)}), refusal);
    Restart("1.3.6.1.2.1.1.1", {"--reset-store"});
    EXPECT_EQ(Set({own.Status(eActive)}), "");
}

TEST_F(ManagedViews, TheSpinLockKeepsTwoManagersApart)
{
    auto lockBinding = [](int value) { return Arguments{kLock, "i", std::to_string(value)}; };
    const int both = std::stoi(Get(kLock)); // read by the one and the other
    EXPECT_EQ(Set({lockBinding(both), sysName.Status(eCreateAndGo)}), "");
    EXPECT_EQ(Set({lockBinding(both), sysName.Status(eDestroy)}), "inconsistentValue " + kLock);
    EXPECT_EQ(Set({sysName.Status(eDestroy), lockBinding(both)}, "1"), "badValue " + kLock);
    ExpectShown({oid::kSysDescr, oid::kSysName});
    const int next = std::stoi(Get(kLock));
    EXPECT_EQ(next, both == 2147483647 ? 0 : both + 1);
    EXPECT_EQ(Set({{kLock, "i", "-1"}}), "wrongValue " + kLock);
    EXPECT_EQ(Set({lockBinding(next)}, "2c", "guest"), "noAccess " + kLock);
    EXPECT_EQ(Set({sysName.Status(eDestroy), lockBinding(next)}, "1"), "");
    ExpectShown({oid::kSysDescr});

    const int last = std::stoi(Get(kLock));
    Restart();
    const int restarted = std::stoi(Get(kLock));
    EXPECT_NE(restarted, last) << "it was read before the restart";
    EXPECT_NE(restarted, both) << "nor does it always start with the same";
}

TEST(ViewsUnderKills, NothingAcknowledgedIsLostAndNothingIsHalfDone)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    ViewKills kills(seed);
    kills.Run(10);
    EXPECT_GT(kills.Acknowledged(), 0);
}
