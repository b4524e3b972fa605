// Why a request is answered as it is, as the console tells it.
#include "VerbsTest.h"

#include "host/access/ViewChoice.h"

#include "tests/support/ListHandler.h"

#include <random>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::ListHandler;
using VLK::Test::MakeOid;

namespace {

const char kConfiguration[] = R"(
contexts = ["ports"]

[[view]]
name = "mine"
include = ["1.3.6.1.4.1.32473", { subtree = "1.3.6.1.4.1.32473.1.3.0", mask = "ff:80" }]
exclude = ["1.3.6.1.4.1.32473.1.2"]

[[community]]
name = "look"
read = "mine"

[[community]]
name = "far"
securityName = "noc"
sources = ["192.0.2.0/24", "2001:db8::/32"]
context = "ports"

[[community]]
name = "nowhere"
sources = []
read = "mine"

[[group]]
name = "ops"
members = ["noc"]

[[access]]
group = "ops"
securityModel = "SNMPv2c"
context = "ports"
write = "mine"
)";

class Explain : public VerbsTest {
protected:
    Explain() : VerbsTest(WithUsers())
    {
        module.Add("1.3.6.1.4.1.32473.1.1.0", 1);
        module.Add("1.3.6.1.4.1.32473.1.2.0", 1);
        module.AddCounter64("1.3.6.1.4.1.32473.1.3.0");
        handler.RegisterSubtreeHandler(&module);
    }
    static SConfiguration WithUsers()
    {
        SConfiguration configuration = ReadConfigText(kConfiguration, "f");
        SUser user;
        user.name = "look";
        AddUser(configuration, user, {"everything", "", ""});
        user.name = "bob";
        user.auth = "SHA-256";
        AddUser(configuration, user, {"mine", "", "mine"});
        return configuration;
    }

    ListHandler module{"1.3.6.1.4.1.32473.1"};
};

} // namespace

TEST_F(Explain, WhoServesAnObjectAndWhatACommunityMayDoWithIt)
{
    EXPECT_EQ(Type("explain 1.3.6.1.4.1.32473.1.1.0 look"), R"(object       1.3.6.1.4.1.32473.1.1.0
region       1.3.6.1.4.1.32473.1 of list
instance     there is one, an INTEGER
for          community 'look'
sources      from 127.0.0.0/8, ::1/128
security     name 'look', SNMPv2c, noAuthNoPriv, context ''
group        'look'
entry        contexts that begin with '', model any, at least noAuthNoPriv
read         view 'mine', row 1.3.6.1.4.1.32473 included
write        the access entry has no write view
notify       view 'mine', row 1.3.6.1.4.1.32473 included
verdict      read allowed, write refused, notify allowed
)");
}

TEST_F(Explain, TheRowThatExcludes)
{
    const std::string command = "explain 1.3.6.1.4.1.32473.1.2.0 look";
    EXPECT_EQ(Line(command, "instance"), "not asked for, as it may not be read");
    EXPECT_EQ(Line(command, "read"), "view 'mine', row 1.3.6.1.4.1.32473.1.2 excluded");
    EXPECT_EQ(Line(command, "verdict"), "read refused, write refused, notify refused");
}

TEST_F(Explain, TheRowWithAMask)
{
    EXPECT_EQ(Line("explain 1.3.6.1.4.1.32473.1.3.0 look v1", "instance"),
              "there is one, a Counter64, which SNMPv1 cannot hold");
    EXPECT_EQ(Line("explain 1.3.6.1.4.1.32473.1.3.0 look", "instance"),
              "there is one, a Counter64");
    EXPECT_EQ(Line("explain 1.3.6.1.4.1.32473.1.3.0 look", "read"),
              "view 'mine', row 1.3.6.1.4.1.32473.1.3.0 mask ff:80 included");
}

TEST_F(Explain, WhatIsTypedMovesNoCursorWhenItIsRepeated)
{
    EXPECT_EQ(Type("explain 1.3\x1b[2J"), "explain: invalid oid '1.3\\u001B[2J'\n");
}

TEST_F(Explain, AnInstanceOfEveryType)
{
    BObjectSyntax value;
    module.onGet = [&](BVarBind& binding) {
        binding.Value() = value;
        return 0;
    };
    const auto instance = [&] { return Line("explain 1.3.6.1.4.1.32473.1.1.0", "instance"); };
    EXPECT_EQ(instance(), "there is one, of no type that is known");
    value.SetOctets(BString("x"));
    EXPECT_EQ(instance(), "there is one, an OCTET STRING");
    value.SetObjectId(MakeOid("1.3"));
    EXPECT_EQ(instance(), "there is one, an OBJECT IDENTIFIER");
    value.SetIpAddress(BIpAddress());
    EXPECT_EQ(instance(), "there is one, an IpAddress");
    value.SetCounter(1);
    EXPECT_EQ(instance(), "there is one, a Counter32");
    value.SetGauge(1);
    EXPECT_EQ(instance(), "there is one, a Gauge32");
    value.SetTimeTicks(1);
    EXPECT_EQ(instance(), "there is one, a TimeTicks");
    value.SetOpaque(BOctetString(BString("x")));
    EXPECT_EQ(instance(), "there is one, an Opaque");
}

TEST_F(Explain, AnObjectInNoRowOfTheView)
{
    const std::string command = "explain 1.3.6.1.2.1.1.1.0 look";
    EXPECT_EQ(Line(command, "region"), "none: no module has registered there");
    EXPECT_EQ(Line(command, "instance"), "(no instance)");
    EXPECT_EQ(Line(command, "read"), "view 'mine', no row of it matches");
    EXPECT_EQ(Line(command, "verdict"),
              "read refused, write refused, notify refused; but nobody serves it");
}

TEST_F(Explain, ARegionWithoutTheInstance)
{
    const std::string command = "explain 1.3.6.1.4.1.32473.1.9.0";
    EXPECT_EQ(Line(command, "region"), "1.3.6.1.4.1.32473.1 of list");
    EXPECT_EQ(Line(command, "instance"), "none: the module has the object, but no such instance");
    module.onGet = [](BVarBind& binding) {
        binding.Value().SetV2Exception(eNoSuchObject);
        return 0;
    };
    EXPECT_EQ(Line(command, "instance"), "none: the module has no such object");
    module.onGet = [](BVarBind&) { return int(eSnmpResourceUnavailable); };
    EXPECT_EQ(Line(command, "instance"), "not known: the module answers resourcesUnavailable");
}

TEST_F(Explain, AViewWithoutRows)
{
    access.Views().Clear();
    EXPECT_EQ(Line("explain 1.3.6.1.4.1.32473.1.1.0 look", "read"),
              "view 'mine', which has no rows");
}

TEST_F(Explain, ACommunityWithASecurityNameContextAndSources)
{
    EXPECT_EQ(Type("explain 1.3.6.1.4.1.32473.1.1.0 far"), R"(object       1.3.6.1.4.1.32473.1.1.0
region       1.3.6.1.4.1.32473.1 of list
instance     not asked for, as it may not be read
for          community 'far'
sources      from 192.0.2.0/24, 2001:db8::/32
security     name 'noc', SNMPv2c, noAuthNoPriv, context 'ports'
group        'ops'
entry        context 'ports', model SNMPv2c, at least noAuthNoPriv
read         the access entry has no read view
write        view 'mine', row 1.3.6.1.4.1.32473 included
notify       the access entry has no notify view
verdict      read refused, write allowed, notify refused
)");
    EXPECT_EQ(Line("explain 1.3 nowhere", "sources"), "from nowhere");
}

TEST_F(Explain, AGroupWithoutAnEntryThatFits)
{
    const std::string command = "explain 1.3.6.1.4.1.32473.1.1.0 far v1";
    EXPECT_EQ(Line(command, "group"), "'ops'");
    EXPECT_EQ(Line(command, "entry"), "none that fits");
    EXPECT_EQ(Line(command, "write"), "no access entry of the group fits");
}

TEST_F(Explain, AUserAtHisStrongestLevelOrAtTheOneThatIsAsked)
{
    const std::string command = "explain 1.3.6.1.4.1.32473.1.1.0 bob";
    EXPECT_EQ(Line(command, "for"), "user 'bob'");
    EXPECT_EQ(Line(command, "sources"), "(no sources)");
    EXPECT_EQ(Line(command, "security"), "name 'bob', USM, authNoPriv, context ''");
    EXPECT_EQ(Line(command, "entry"),
              "contexts that begin with '', model USM, at least authNoPriv");
    EXPECT_EQ(Line(command, "verdict"), "read allowed, write refused, notify allowed");
    EXPECT_EQ(Line(command + " v3 noAuthNoPriv ports", "security"),
              "name 'bob', USM, noAuthNoPriv, context 'ports'");
    EXPECT_EQ(Line(command + " v3 noAuthNoPriv", "entry"), "none that fits");
    EXPECT_EQ(Type(command + " v3 authPriv"),
              "explain: the user 'bob' has no level above authNoPriv\n");
}

TEST_F(Explain, ANameOfBothIsTheCommunityUnlessTheVersionTells)
{
    EXPECT_EQ(Line("explain 1.3 look", "for"), "community 'look'");
    EXPECT_EQ(Line("explain 1.3 look v3", "for"), "user 'look'");
}

TEST_F(Explain, AContextThatThereIsNot)
{
    const std::string command = "explain 1.3.6.1.4.1.32473.1.1.0 bob v3 authNoPriv moon";
    EXPECT_EQ(Line(command, "read"), "there is no context 'moon'");
    EXPECT_EQ(Line(command, "group"), "(no group)");
    EXPECT_EQ(Line(command, "verdict"), "read refused, write refused, notify refused");
}

TEST_F(Explain, TheOperatorOrWhoeverTheConsoleStandsFor)
{
    const std::string command = "explain 1.3.6.1.4.1.32473.1.1.0";
    EXPECT_EQ(Line(command, "for"), "the console");
    EXPECT_EQ(Line(command, "group"), "'console'");
    EXPECT_EQ(Line(command, "verdict"), "read allowed, write allowed, notify allowed");
    console.securityModel = eModelV1;
    console.securityName = BString("stranger");
    EXPECT_EQ(Line(command, "security"), "name 'stranger', SNMPv1, noAuthNoPriv, context ''");
    EXPECT_EQ(Line(command, "group"), "none");
    EXPECT_EQ(Line(command, "read"), "it is in no group");
}

TEST_F(Explain, MistakesOfTheOperator)
{
    const std::string usage =
        "Usage explain <oid> [<community> [v1 | v2c] | <user> [v3 [<level> [<context>]]]]\n";
    EXPECT_EQ(Type("explain"), "explain: argument(s) required.\n" + usage);
    EXPECT_EQ(Type("explain 1.3 look v1 more"), "explain: invalid argument(s)\n" + usage);
    EXPECT_EQ(Type("explain 1.3 bob v3 authNoPriv ports more"),
              "explain: invalid argument(s)\n" + usage);
    EXPECT_EQ(Type("explain sysDescr"), "explain: invalid oid 'sysDescr'\n");
    EXPECT_EQ(Type("explain 1.3 look 2c"), "explain: invalid version '2c': v1, v2c or v3\n");
    EXPECT_EQ(Type("explain 1.3 bob v3 high"),
              "explain: invalid level 'high': noAuthNoPriv, authNoPriv or authPriv\n");
    EXPECT_EQ(Type("explain 1.3 eve"), "explain: there is no community or user 'eve'\n");
    EXPECT_EQ(Type("explain 1.3 bob v1"), "explain: there is no community 'bob'\n");
    EXPECT_EQ(Type("explain 1.3 far v3"), "explain: there is no user 'far'\n");
    EXPECT_EQ(Type("explode 1.3"), "explode: unknown command.\n");
}

// The row that is shown is the one by which requests are decided.
TEST_F(Explain, ShowsTheRowThatDecides)
{
    constexpr unsigned kSeed = 20;
    std::mt19937 random(kSeed);
    const auto some = [&](unsigned below) { return static_cast<unsigned>(random() % below); };
    const auto someOid = [&] {
        BObjectIdentifier oid(BString("1.3"));
        for (unsigned i = some(4); i > 0; --i)
            oid.Append(some(3));
        return oid;
    };
    unsigned included = 0;
    for (int round = 0; round < 200; ++round) {
        BFilterTable views(nullptr);
        for (unsigned row = some(40); row > 0; --row) {
            const unsigned char mask = static_cast<unsigned char>(random());
            views.Insert(BString("v"), someOid(), BOctetString(some(2), &mask),
                         some(2) ? eFilterIncluded : eFilterExcluded, eStorageVolatile,
                         some(5) ? eRowActive : eRowNotInService, false);
        }
        for (int asked = 0; asked < 50; ++asked) {
            const BObjectIdentifier name = someOid();
            // Shown before it is asked for, and after that.
            const SViewChoice choice = ChooseRow(views, "v", name);
            const bool isShown = choice.row && choice.row->type == eFilterIncluded;
            ASSERT_EQ(isShown, views.Filter(BString("v"), name)) << "seed " << kSeed;
            const SViewChoice again = ChooseRow(views, "v", name);
            ASSERT_EQ(again.row && again.row->type == eFilterIncluded, isShown);
            included += isShown ? 1 : 0;
        }
    }
    EXPECT_GT(included, 1000u);
}
