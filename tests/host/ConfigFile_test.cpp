// The configuration file: every key.
#include "host/config/ConfigFile.h"

#include "tests/support/Oids.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;

namespace {

using CLines = std::vector<std::string>;

// A file is written line by line here.
std::string Join(const CLines& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

SConfiguration Read(const CLines& lines) { return ReadConfigText(Join(lines), "agent.toml"); }

const SGroup* FindGroup(const SConfiguration& configuration, const std::string& name)
{
    for (const SGroup& group : configuration.groups) {
        if (group.name == name)
            return &group;
    }
    ADD_FAILURE() << "no group " << name;
    return &configuration.groups.front();
}

std::string MembersOf(const SGroup& group)
{
    std::string text;
    for (const SMember& member : group.members)
        text += member.securityName + "/" + std::to_string(member.model) + " ";
    return text;
}

std::string TextOf(const SAccess& access)
{
    return "'" + access.context + "'" + (access.isPrefix ? " prefix " : " exact ") +
           std::to_string(access.model) + " " + std::to_string(access.level) + " " +
           access.views[eViewRead] + "," + access.views[eViewWrite] + "," +
           access.views[eViewNotify];
}

std::string TextOf(const SFamily& family)
{
    std::string mask;
    for (unsigned i = 0; i < family.mask.Length(); ++i)
        mask += " " + std::to_string(family.mask.Data()[i]);
    return (family.type == eFilterIncluded ? "+" : "-") + Test::TextOf(family.subtree) + mask;
}

bool Answers(const SCommunity& community, const char* source)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(source));
    for (const BNetwork& network : community.sources) {
        if (network.Holds(address))
            return true;
    }
    return false;
}

} // namespace

TEST(ConfigFile, AnEmptyFileConfiguresNothing)
{
    SConfiguration configuration = Read({});
    EXPECT_EQ(configuration.file, "agent.toml");
    EXPECT_TRUE(configuration.listen.empty());
    EXPECT_EQ(configuration.store, "");
    EXPECT_TRUE(configuration.contexts.empty());
    EXPECT_TRUE(configuration.views.empty());
    EXPECT_TRUE(configuration.communities.empty());
    EXPECT_TRUE(configuration.trapSinks.empty());
    EXPECT_FALSE(configuration.authenTraps.has_value());
    EXPECT_EQ(configuration.workers, 0u);
    EXPECT_EQ(configuration.timeToLive, 1000u);
    EXPECT_FALSE(configuration.hasCommunities);
    ASSERT_EQ(configuration.groups.size(), 1u);
    EXPECT_EQ(configuration.groups[0].name, "console");
    EXPECT_EQ(MembersOf(configuration.groups[0]), "/3 ");
    EXPECT_TRUE(configuration.groups[0].access.empty());
}

TEST(ConfigFile, AgentAddressIsOneTextOrAList)
{
    SConfiguration one = Read({"agentAddress = \"udp:127.0.0.1:161\""});
    ASSERT_EQ(one.listen.size(), 1u);
    EXPECT_EQ(one.listen[0].ToString(), "udp:127.0.0.1:161");
    SConfiguration three = Read({"agentAddress = [\"udp:127.0.0.1:0\", \"udp6:[::1]:161\",",
                                 "                \"udp:127.0.0.1:0\"]"});
    ASSERT_EQ(three.listen.size(), 3u) << "port 0 is a new one each time";
    EXPECT_EQ(three.listen[1].ToString(), "udp6:[::1]:161");
}

TEST(ConfigFile, MayBeginWithAMarkAndEndItsLinesInBothWays)
{
    SConfiguration configuration =
        ReadConfigText("\xef\xbb\xbf"
                       "store = \"/a\"\r\ncontexts = [\"x\",\r\n \"y\"]\r\n",
                       "f");
    EXPECT_EQ(configuration.store, "/a");
    EXPECT_EQ(configuration.contexts, (CLines{"x", "y"}));
}

TEST(ConfigFile, AuthenticationTrapsAreOnOrOffOrNotMentioned)
{
    EXPECT_EQ(Read({"snmpEnableAuthenTraps = true"}).authenTraps, true);
    EXPECT_EQ(Read({"snmpEnableAuthenTraps = false"}).authenTraps, false);
    EXPECT_EQ(Read({"store = \"/a\""}).authenTraps, std::nullopt);
}

TEST(ConfigFile, WorkersAndTimeToLiveGoToTheirLimits)
{
    SConfiguration least = Read({"workers = 1", "timeToLive = 0"});
    EXPECT_EQ(least.workers, 1u);
    EXPECT_EQ(least.timeToLive, 0u);
    SConfiguration most = Read({"workers = 1024", "timeToLive = 3600000"});
    EXPECT_EQ(most.workers, 1024u);
    EXPECT_EQ(most.timeToLive, 3600000u);
}

TEST(ConfigFile, AlarmsReadAsTheirCommunity)
{
    SConfiguration configuration =
        Read({"contexts = [\"lab\"]", "alarmCommunity = \"noc\"", "[[community]]", "name = \"noc\"",
              "securityName = \"watch\"", "context = \"lab\"", "[[group]]", "name = \"g\"",
              "members = [\"watch\"]"});
    EXPECT_EQ(configuration.alarms.security.securityName, BString("watch"));
    EXPECT_EQ(configuration.alarms.security.securityModel, eModelV2c);
    EXPECT_EQ(configuration.alarms.context, BString("lab"));
    EXPECT_TRUE(Read({}).alarms.security.securityName.empty());
    EXPECT_EQ(Read({}).alarms.security.securityModel, 0);
}

TEST(ConfigFile, StoreAndContextsAreTakenAsTheyStand)
{
    SConfiguration configuration =
        Read({"store = \"/var/lib/a b.db\"", "contexts = [\"a\", \"b\"]"});
    EXPECT_EQ(configuration.store, "/var/lib/a b.db");
    EXPECT_EQ(configuration.contexts, (CLines{"a", "b"}));
}

TEST(ConfigFile, AViewHasSubtreesWithAndWithoutMasks)
{
    SConfiguration configuration =
        Read({"[[view]]", "name = \"one\"", "include = [\"1.3.6.1.2.1\", \".1.3.6.1.4\",",
              "  { subtree = \"1.3.6.1.2.1.2.2.1.0.1\", mask = \"ff:a0\" }]",
              "exclude = [{ subtree = \"1.3.6.1.2.1.1\" }, { subtree = \"2\", mask = \"FFa0\" }]",
              "[[view]]", "name = \"two\"", "include = [\"0\"]"});
    ASSERT_EQ(configuration.views.size(), 2u);
    CLines families;
    for (const SFamily& family : configuration.views[0].families)
        families.push_back(TextOf(family));
    EXPECT_EQ(configuration.views[0].name, "one");
    EXPECT_EQ(families, (CLines{"+1.3.6.1.2.1", "+1.3.6.1.4", "+1.3.6.1.2.1.2.2.1.0.1 255 160",
                                "-1.3.6.1.2.1.1", "-2 255 160"}));
    EXPECT_EQ(configuration.views[1].name, "two");
}

TEST(ConfigFile, ACommunityWithViewsOfItsOwnIsAGroupOfItsOwn)
{
    SConfiguration configuration =
        Read({"[[community]]", "name = \"public\"", "read = \"systemonly\"", "[[community]]",
              "name = \"private\"", "read = \"systemonly\"", "write = \"everything\"",
              "notify = \"everything\"", "sources = [\"10.0.0.0/8\", \"2001:db8::1\"]",
              "[[community]]", "name = \"traps\"", "notify = \"everything\"", "sources = []"});
    ASSERT_EQ(configuration.communities.size(), 3u);
    for (const SCommunity& community : configuration.communities) {
        EXPECT_EQ(community.securityName, community.name);
        EXPECT_EQ(community.context, "");
        const SGroup& group = *FindGroup(configuration, community.name);
        EXPECT_EQ(MembersOf(group), community.name + "/1 " + community.name + "/2 ");
        ASSERT_EQ(group.access.size(), 1u);
    }
    auto access = [&](const char* name) {
        return TextOf(FindGroup(configuration, name)->access[0]);
    };
    EXPECT_EQ(access("public"), "'' prefix 0 1 systemonly,,systemonly");
    EXPECT_EQ(access("private"), "'' prefix 0 1 systemonly,everything,everything");
    EXPECT_EQ(access("traps"), "'' prefix 0 1 ,,everything");
    const std::vector<SCommunity>& communities = configuration.communities;
    EXPECT_TRUE(Answers(communities[0], "udp:127.3.0.1:1"));
    EXPECT_TRUE(Answers(communities[0], "udp6:[::1]:1"));
    EXPECT_FALSE(Answers(communities[0], "udp:10.0.0.1:1"));
    EXPECT_TRUE(Answers(communities[1], "udp:10.0.0.1:1"));
    EXPECT_TRUE(Answers(communities[1], "udp6:[2001:db8::1]:1"));
    EXPECT_FALSE(Answers(communities[1], "udp:127.0.0.1:1"));
    EXPECT_FALSE(Answers(communities[2], "udp:127.0.0.1:1"));
}

TEST(ConfigFile, NoViewIsAnEmptyText)
{
    SConfiguration configuration = Read({"[[community]]", "name = \"public\"",
                                         "read = \"systemonly\"", "notify = \"\"", "write = \"\""});
    EXPECT_EQ(TextOf(FindGroup(configuration, "public")->access[0]), "'' prefix 0 1 systemonly,,");
}

TEST(ConfigFile, SourcesMayBeOneText)
{
    SConfiguration configuration = Read({"[[community]]", "name = \"public\"",
                                         "read = \"systemonly\"", "sources = \"10.0.0.0/8\""});
    EXPECT_TRUE(Answers(configuration.communities[0], "udp:10.0.0.1:1"));
    EXPECT_FALSE(Answers(configuration.communities[0], "udp:127.0.0.1:1"));
}

TEST(ConfigFile, TheFullFormHasGroupsAndAccessEntries)
{
    SConfiguration configuration = Read({
        "contexts = [\"bridge1\", \"bridge2\"]",
        "[[community]]",
        "name = \"secret\"",
        "securityName = \"noc\"",
        "context = \"bridge1\"",
        "[[community]]",
        "name = \"ops\"", // its security name is its own
        "[[group]]",
        "name = \"operators\"",
        "members = [\"noc\", \"ops\", { securityName = \"alice\", securityModel = \"USM\" },",
        "  { securityName = \"old\", securityModel = \"SNMPv1\" },",
        "  { securityName = \"new\", securityModel = \"SNMPv2c\" }]",
        "[[access]]",
        "group = \"operators\"",
        "[[access]]",
        "group = \"operators\"",
        "context = \"bridge\"",
        "contextMatch = \"prefix\"",
        "securityModel = \"USM\"",
        "securityLevel = \"authPriv\"",
        "read = \"everything\"",
        "write = \"lan\"",
        "notify = \"systemonly\"",
        "[[access]]",
        "group = \"operators\"",
        "context = \"bridge2\"",
        "contextMatch = \"exact\"",
        "securityModel = \"SNMPv2c\"",
        "securityLevel = \"noAuthNoPriv\"",
        "[[access]]",
        "group = \"operators\"",
        "securityModel = \"SNMPv1\"",
        "securityLevel = \"authNoPriv\"",
        "[[access]]",
        "group = \"operators\"",
        "securityModel = \"any\"",
        "securityLevel = \"authNoPriv\"",
        "[[view]]",
        "name = \"lan\"", // also after its use
        "include = [\"1.3\"]",
    });
    const SGroup& group = *FindGroup(configuration, "operators");
    EXPECT_EQ(MembersOf(group), "noc/1 noc/2 ops/1 ops/2 alice/3 old/1 new/2 ");
    CLines entries;
    for (const SAccess& access : group.access)
        entries.push_back(TextOf(access));
    EXPECT_EQ(entries, (CLines{"'' exact 0 1 ,,", "'bridge' prefix 3 3 everything,lan,systemonly",
                               "'bridge2' exact 2 1 ,,", "'' exact 1 2 ,,", "'' exact 0 2 ,,"}));
    ASSERT_EQ(configuration.communities.size(), 2u);
    EXPECT_EQ(configuration.communities[0].securityName, "noc");
    EXPECT_EQ(configuration.communities[0].context, "bridge1");
    EXPECT_EQ(configuration.communities[1].securityName, "ops");
    EXPECT_EQ(configuration.groups.size(), 2u) << "these communities have no groups of their own";
}

TEST(ConfigFile, TrapSinksHaveDefaultsAndTheIdentityOfTheirCommunity)
{
    SConfiguration configuration = Read({
        "contexts = [\"c\"]",
        "[[group]]",
        "name = \"g\"",
        "members = [\"noc\"]",
        "[[community]]",
        "name = \"secret\"",
        "securityName = \"noc\"",
        "context = \"c\"",
        "[[trapSink]]",
        "address = \"udp:192.0.2.1:162\"",
        "community = \"secret\"",
        "[[trapSink]]",
        "address = \"udp6:[2001:db8::1]:1162\"",
        "community = \"secret\"",
        "version = \"1\"",
        "inform = false",
        "[[trapSink]]",
        "address = \"udp:192.0.2.3:162\"",
        "community = \"secret\"",
        "version = \"2c\"",
        "inform = true",
        "timeout = 0.25",
        "retries = 0",
        "[[trapSink]]",
        "address = \"udp:192.0.2.4:162\"",
        "community = \"secret\"",
        "inform = true",
        "timeout = 3600",
        "retries = 255",
    });
    ASSERT_EQ(configuration.trapSinks.size(), 4u);
    const STrapSink& plain = configuration.trapSinks[0];
    EXPECT_EQ(plain.address.ToString(), "udp:192.0.2.1:162");
    EXPECT_EQ(plain.protocol, eSnmpV2c);
    EXPECT_EQ(plain.community, "secret");
    EXPECT_FALSE(plain.isInform);
    EXPECT_EQ(plain.timeout.count(), 15000);
    EXPECT_EQ(plain.retries, 3u);
    EXPECT_EQ(plain.security.securityModel, eModelV2c);
    EXPECT_STREQ(plain.security.securityName.c_str(), "noc");
    EXPECT_EQ(plain.security.securityLevel, eNoAuthNoPriv);
    EXPECT_STREQ(plain.context.c_str(), "c");
    EXPECT_EQ(configuration.trapSinks[1].protocol, eSnmpV1);
    EXPECT_EQ(configuration.trapSinks[1].security.securityModel, eModelV1);
    EXPECT_EQ(configuration.trapSinks[1].address.ToString(), "udp6:[2001:db8::1]:1162");
    EXPECT_TRUE(configuration.trapSinks[2].isInform);
    EXPECT_EQ(configuration.trapSinks[2].timeout.count(), 250);
    EXPECT_EQ(configuration.trapSinks[2].retries, 0u);
    EXPECT_EQ(configuration.trapSinks[3].timeout.count(), 3600000);
    EXPECT_EQ(configuration.trapSinks[3].retries, 255u);
}
