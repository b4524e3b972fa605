// The configuration file: every kind of mistake, and all of them at once.
#include "host/config/ConfigFile.h"

#include <gtest/gtest.h>

using namespace VLK::host;

namespace {

using CLines = std::vector<std::string>;

CLines Problems(const std::string& text)
{
    try {
        ReadConfigText(text, "f");
        return {};
    } catch (const BConfigError& error) {
        EXPECT_EQ(error.Status(), eExitUsage);
        return error.Lines();
    }
}

struct SMistake {
    std::string text;
    CLines problems;
};

const std::string kView = "[[view]]\nname = \"v\"\ninclude = [\"1.3\"]\n"; // lines 1 to 3
const std::string kGroup = "[[group]]\nname = \"g\"\nmembers = [\"noc\"]\n";

const std::string kNoOid = " is no object identifier: write it in numbers, like 1.3.6.1.2.1.1";
const std::string kNoMask = " is no mask: write 1 to 16 octets in hexadecimal, like ff:a0";
const std::string kLong = "123456789012345678901234567890123";

// At the top of a file.
const std::string kKeys =
    " is no key of the file, which has agentAddress, store, contexts, log, logLevel, "
    "snmpEnableAuthenTraps, workers, timeToLive, v3, view, group, community, user, access, "
    "alarmCommunity, trapSink";

const std::vector<SMistake> kTopMistakes = {
    {"a = 1\na = 2\n",
     {"f:2: Error while parsing key-value pair: cannot redefine existing integer 'a' (column 5)"}},
    {"\nstore = \n",
     {"f:2: Error while parsing key-value pair: expected value, saw '\\n' (column 9)"}},
    {"agentaddress = \"udp:127.0.0.1:161\"\n", {"f:1: 'agentaddress'" + kKeys}},
    {"[views]\n", {"f:1: 'views'" + kKeys}},
    {"agentAddress = 161\n", {"f:1: agentAddress '161' is neither a text nor a list of texts"}},
    {"agentAddress = [161]\n", {"f:1: agentAddress '161' is no text"}},
    {"agentAddress = []\n", {"f:1: agentAddress '[]' holds no address"}},
    {"agentAddress = [\"udp:127.0.0.1:161\",\n \"udp:161\", \"\"]\n",
     {"f:2: agentAddress 'udp:161' is neither udp:IP:PORT nor udp6:[IP]:PORT",
      "f:2: agentAddress '' is neither udp:IP:PORT nor udp6:[IP]:PORT"}},
    {"agentAddress = [\"udp6:[::1]:161\",\n \"udp6:[0::1]:161\"]\n",
     {"f:2: agentAddress 'udp6:[0::1]:161' is in line 1 already"}},
    {"agentAddress = \"udp6:[::ffff:192.0.2.1]:161\"\n",
     {"f:1: agentAddress 'udp6:[::ffff:192.0.2.1]:161' is IPv4: write it like "
      "udp:192.0.2.1:161"}},
    {"store = 1\n", {"f:1: store '1' is no text"}},
    {"store = \"\"\n", {"f:1: store '' does not begin with '/'"}},
    {"store = \"store.db\"\n", {"f:1: store 'store.db' does not begin with '/'"}},
    {"store = \"/a\\u0000b\"\n", {"f:1: store '/a\\u0000b' is no file name"}},
    {"contexts = [\"\", \"a\",\n\"a\"]\n",
     {"f:1: contexts '' is empty", "f:2: contexts 'a' is a context of line 1 already"}},
    {"contexts = [\"" + kLong + "\"]\n",
     {"f:1: contexts '" + kLong + "' has more than 32 characters"}},
    {"contexts = true\n", {"f:1: contexts 'true' is neither a text nor a list of texts"}},
    {"snmpEnableAuthenTraps = 1\n", {"f:1: snmpEnableAuthenTraps '1' is neither true nor false"}},
    {"snmpEnableAuthenTraps = \"enabled\"\n",
     {"f:1: snmpEnableAuthenTraps 'enabled' is neither true nor false"}},
    {"alarmCommunity = \"noc\"\n", {"f:1: alarmCommunity 'noc' is no community"}},
    {"alarmCommunity = true\n", {"f:1: alarmCommunity 'true' is no text"}},
    {"workers = 0\ntimeToLive = -1\n",
     {"f:1: workers '0' is no integer from 1 to 1024",
      "f:2: timeToLive '-1' is no integer from 0 to 3600000"}},
    {"workers = 1025\ntimeToLive = 3600001\n",
     {"f:1: workers '1025' is no integer from 1 to 1024",
      "f:2: timeToLive '3600001' is no integer from 0 to 3600000"}},
    {"workers = \"4\"\ntimeToLive = 1.5\n",
     {"f:1: workers '4' is no integer from 1 to 1024",
      "f:2: timeToLive '1.5' is no integer from 0 to 3600000"}},
};

const std::vector<SMistake> kViewMistakes = {
    {"[view]\nname = \"v\"\n", {"f:1: view '{...}' is no table [[view]]"}},
    {"view = [1]\n", {"f:1: view '[...]' is no table [[view]]"}},
    {"[[view]]\n",
     {"f:1: [[view]] has no 'name'", "f:1: [[view]] has no 'include': it shows nothing"}},
    {"[[view]]\nname = \"v\"\ninclude = []\nexclude = [\"1.3\"]\n",
     {"f:3: include '[]' shows nothing that could be excluded"}},
    {"[[view]]\nname = \"\"\ninclude = [\"1.3\"]\n", {"f:2: name '' is empty"}},
    {"[[view]]\nname = 5\ninclude = [\"1.3\"]\n", {"f:2: name '5' is no text"}},
    {"[[view]]\nname = \"" + kLong + "\"\ninclude = [\"1.3\"]\n",
     {"f:2: name '" + kLong + "' has more than 32 characters"}},
    {"[[view]]\nname = \"caf\u00e9\"\ninclude = [\"1.3\"]\n",
     {"f:2: name 'caf\u00e9' has characters that are not printable ASCII"}},
    {kView + "[[view]]\nname = \"v\"\ninclude = [\"1.3\"]\n",
     {"f:5: name 'v' is a view of line 2 already"}},
    {"[[view]]\nname = \"everything\"\ninclude = [\"1.3\"]\n",
     {"f:2: name 'everything' is a view that is built in"}},
    {"[[view]]\nname = \"systemonly\"\ninclude = [\"1.3\"]\n",
     {"f:2: name 'systemonly' is a view that is built in"}},
    {kView + "includes = []\n",
     {"f:4: 'includes' is no key of [[view]], which has name, include, exclude"}},
    {"[[view]]\nname = \"v\"\ninclude = \"1.3\"\n", {"f:3: include '1.3' is no list"}},
    {"[[view]]\nname = \"v\"\ninclude = [1.3]\n",
     {"f:3: include '1.3' is neither a text nor a table"}},
    {"[[view]]\nname = \"v\"\ninclude = [\"\", \"1..3\", \"1.3.\", \"system\", \"1.-3\", \"1 "
     ".3\"]\n",
     {"f:3: include ''" + kNoOid, "f:3: include '1..3'" + kNoOid, "f:3: include '1.3.'" + kNoOid,
      "f:3: include 'system'" + kNoOid, "f:3: include '1.-3'" + kNoOid,
      "f:3: include '1 .3'" + kNoOid}},
    {"[[view]]\nname = \"v\"\ninclude = [\"1.3.4294967295\", \"1.3.4294967296\", \"..1\", \".\"]\n",
     {"f:3: include '1.3.4294967296'" + kNoOid, "f:3: include '..1'" + kNoOid,
      "f:3: include '.'" + kNoOid}},
    {"[[view]]\nname = \"v\"\ninclude = [\"3.6.1\"]\n",
     {"f:3: include '3.6.1' is no object identifier: the first number is 0, 1 or 2"}},
    {"[[view]]\nname = \"v\"\ninclude = [\"1.39\", \"2.40\", \"0.40\",\n \"1.40.1\"]\n",
     {"f:3: include '0.40' is no object identifier: after 0 or 1 the second number is 39 at most",
      "f:4: include '1.40.1' is no object identifier: after 0 or 1 the second number is 39 at "
      "most"}},
    {kView + "exclude = [\"1.4\", \".1.3\"]\n", {"f:4: exclude '.1.3' is twice in this view"}},
    {"[[view]]\nname = \"v\"\ninclude = [{ mask = \"ff\" }]\n", {"f:3: include has no 'subtree'"}},
    {"[[view]]\nname = \"v\"\ninclude = [{ subtree = 1, mask = 2, type = 3 }]\n",
     {"f:3: subtree '1' is no text", "f:3: mask '2' is no text",
      "f:3: 'type' is no key of include, which has subtree, mask"}},
    {"[[view]]\nname = \"v\"\ninclude = [\"1.1\"]\nexclude = [{ subtree = \"1.3\", mask = \"\" },\n"
     "{ subtree = \"1.4\", mask = \"f\" }, { subtree = \"1.5\", mask = \"fg\" },\n"
     "{ subtree = \"1.6\", mask = \"ff:\" }, { subtree = \"1.7\", mask = \"ff-ff\" },\n"
     "{ subtree = \"1.8\", mask = \"00112233445566778899aabbccddeeff00\" },\n"
     "{ subtree = \"1.9\", mask = \"00112233445566778899aabbccddeeff\" }]\n",
     {"f:4: mask ''" + kNoMask, "f:5: mask 'f'" + kNoMask, "f:5: mask 'fg'" + kNoMask,
      "f:6: mask 'ff:'" + kNoMask, "f:6: mask 'ff-ff'" + kNoMask,
      "f:7: mask '00112233445566778899aabbccddeeff00'" + kNoMask}},
};

const std::string kNoRights = " has no rights: make it a member of a group with SNMPv1 or "
                              "SNMPv2c, or give the community read, write or notify";
const std::string kTwoRights = " stands beside read, write or notify: the rights of the community "
                               "are its own, or those of a group";

const std::vector<SMistake> kCommunityMistakes = {
    {"[[community]]\nread = \"everything\"\n", {"f:1: [[community]] has no 'name'"}},
    {"[[community]]\nname = \"\"\nread = \"everything\"\n", {"f:2: name '' is empty"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\nreed = \"x\"\n",
     {"f:4: 'reed' is no key of [[community]], which has name, securityName, context, sources, "
      "read, write, notify"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\n[[community]]\nname = \"c\"\n"
     "read = \"everything\"\n",
     {"f:5: name 'c' is a community of line 2 already"}},
    {"[[community]]\nname = \"c\"\nread = \"r\"\nwrite = \"w\"\nnotify = \"n\"\n",
     {"f:3: read 'r' is no view", "f:4: write 'w' is no view", "f:5: notify 'n' is no view"}},
    {"[[community]]\nname = \"c\"\nread = true\n", {"f:3: read 'true' is no text"}},
    {"[[community]]\nname = \"c\"\n", {"f:2: name 'c'" + kNoRights}},
    {"[[community]]\nname = \"c\"\nsecurityName = \"s\"\n", {"f:3: securityName 's'" + kNoRights}},
    {"[[community]]\nname = \"c\"\nsecurityName = \"\"\nread = \"everything\"\n",
     {"f:3: securityName '' is empty", "f:3: securityName ''" + kTwoRights}},
    {kGroup + "[[community]]\nname = \"c\"\nsecurityName = \"noc\"\nread = \"everything\"\n",
     {"f:6: securityName 'noc'" + kTwoRights}},
    {kGroup + "[[community]]\nname = \"noc\"\nread = \"everything\"\n",
     {"f:5: name 'noc' is with SNMPv1 in the group 'g' already",
      "f:5: name 'noc' is with SNMPv2c in the group 'g' already"}},
    {"[[group]]\nname = \"g\"\nmembers = [{ securityName = \"alice\", securityModel = \"USM\" }]\n"
     "[[community]]\nname = \"alice\"\n",
     {"f:5: name 'alice'" + kNoRights}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\ncontext = \"x\"\n",
     {"f:4: context 'x' is no context"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\nsources = [\"10.0.0.0/33\",\n"
     "\"10.0.0.1/8\", \"here\", 5]\n",
     {"f:4: sources '10.0.0.0/33' has no prefix of 0 to 32 bits",
      "f:5: sources '10.0.0.1/8' goes beyond its prefix: the network is 10.0.0.0/8",
      "f:5: sources 'here' is no network: write it like 192.0.2.0/24 or 2001:db8::/32",
      "f:5: sources '5' is no text"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\nsources = [\"2001:db8::/129\",\n"
     "\"2001:db8::1/64\", \"fe80::1%lo\", \"10.0.0/8\", \"1.2.3.4/32/32\", \"1.2.3.4/\"]\n",
     {"f:4: sources '2001:db8::/129' has no prefix of 0 to 128 bits",
      "f:5: sources '2001:db8::1/64' goes beyond its prefix: the network is 2001:db8::/64",
      "f:5: sources 'fe80::1%lo' is no network: write it like 192.0.2.0/24 or 2001:db8::/32",
      "f:5: sources '10.0.0/8' is no network: write it like 192.0.2.0/24 or 2001:db8::/32",
      "f:5: sources '1.2.3.4/32/32' has no prefix of 0 to 32 bits",
      "f:5: sources '1.2.3.4/' has no prefix of 0 to 32 bits"}},
};

const std::vector<SMistake> kGroupMistakes = {
    {"[[group]]\nmembers = []\n", {"f:1: [[group]] has no 'name'"}},
    {kGroup + "[[group]]\nname = \"g\"\n", {"f:5: name 'g' is a group of line 2 already"}},
    {"[[group]]\nname = \"console\"\n[[group]]\nname = \"console\"\n",
     {"f:4: name 'console' is a group of line 2 already"}},
    {kGroup + "model = 1\n", {"f:4: 'model' is no key of [[group]], which has name, members"}},
    {"[[group]]\nname = \"g\"\nmembers = \"noc\"\n", {"f:3: members 'noc' is no list"}},
    {"[[group]]\nname = \"g\"\nmembers = [1, \"\"]\n",
     {"f:3: members '1' is neither a text nor a table", "f:3: members '' is empty"}},
    {"[[group]]\nname = \"g\"\nmembers = [{}]\n",
     {"f:3: member has no 'securityName'", "f:3: member has no 'securityModel'"}},
    {"[[group]]\nname = \"g\"\nmembers = [{ securityName = \"\", securityModel = \"any\" }]\n",
     {"f:3: securityName '' is empty", "f:3: securityModel 'any' is none of SNMPv1, SNMPv2c, USM"}},
    {kGroup + "[[group]]\nname = \"h\"\nmembers = [\"noc\"]\n",
     {"f:6: members 'noc' is with SNMPv1 in the group 'g' already",
      "f:6: members 'noc' is with SNMPv2c in the group 'g' already"}},
    {kGroup + "[[group]]\nname = \"h\"\n"
              "members = [{ securityName = \"noc\", securityModel = \"SNMPv2c\" }]\n",
     {"f:6: securityName 'noc' is with SNMPv2c in the group 'g' already"}},
};

const std::vector<SMistake> kAccessMistakes = {
    {"[[access]]\n", {"f:1: [[access]] has no 'group'"}},
    {"[[access]]\ngroup = \"g\"\n", {"f:2: group 'g' is no group"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\n[[access]]\ngroup = \"c\"\n",
     {"f:5: group 'c' is no group"}},
    {kGroup + "[[access]]\ngroup = \"g\"\nview = \"everything\"\n",
     {"f:6: 'view' is no key of [[access]], which has group, contextMatch, context, "
      "securityModel, securityLevel, read, write, notify"}},
    {kGroup + "[[access]]\ngroup = \"g\"\ncontextMatch = \"begin\"\nsecurityModel = \"v1\"\n"
              "securityLevel = \"none\"\n",
     {"f:6: contextMatch 'begin' is none of exact, prefix",
      "f:7: securityModel 'v1' is none of any, SNMPv1, SNMPv2c, USM",
      "f:8: securityLevel 'none' is none of noAuthNoPriv, authNoPriv, authPriv"}},
    {kGroup + "[[access]]\ngroup = \"g\"\ncontextMatch = 1\nsecurityModel = 1\n"
              "securityLevel = 1\ncontext = 1\n",
     {"f:6: contextMatch '1' is no text", "f:7: securityModel '1' is no text",
      "f:8: securityLevel '1' is no text", "f:9: context '1' is no text"}},
    {"contexts = [\"ab\"]\n" + kGroup +
         "[[access]]\ngroup = \"g\"\ncontext = \"a\"\n"
         "[[access]]\ngroup = \"g\"\ncontext = \"b\"\ncontextMatch = \"prefix\"\n",
     {"f:7: context 'a' is no context", "f:10: context 'b' begins no context"}},
    {kGroup + "[[access]]\ngroup = \"g\"\nread = \"r\"\nwrite = \"w\"\nnotify = \"n\"\n",
     {"f:6: read 'r' is no view", "f:7: write 'w' is no view", "f:8: notify 'n' is no view"}},
    {kGroup + "[[access]]\ngroup = \"g\"\n[[access]]\ngroup = \"g\"\ncontextMatch = \"prefix\"\n",
     {"f:7: group 'g' has an access entry of this context, securityModel and securityLevel "
      "already"}},
};

const std::string kTraps = "[[community]]\nname = \"c\"\nnotify = \"everything\"\n";

const std::vector<SMistake> kTrapSinkMistakes = {
    {kTraps + "[[trapSink]]\n",
     {"f:4: [[trapSink]] has no 'address'", "f:4: [[trapSink]] has no 'community'"}},
    {kTraps + "[[trapSink]]\naddress = \"192.0.2.1\"\ncommunity = \"d\"\nport = 162\n",
     {"f:5: address '192.0.2.1' is neither udp:IP:PORT nor udp6:[IP]:PORT",
      "f:6: community 'd' is no community",
      "f:7: 'port' is no key of [[trapSink]], which has address, community, version, inform, "
      "timeout, retries, user, level"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:0\"\ncommunity = \"c\"\n",
     {"f:5: address 'udp:192.0.2.1:0' has no port"}},
    {kTraps + "[[trapSink]]\naddress = \"x\"\ncommunity = \"c\"\n"
              "[[trapSink]]\naddress = \"y\"\ncommunity = \"c\"\n",
     {"f:5: address 'x' is neither udp:IP:PORT nor udp6:[IP]:PORT",
      "f:8: address 'y' is neither udp:IP:PORT nor udp6:[IP]:PORT"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\nversion = \"4\"\n"
              "inform = \"yes\"\ntimeout = \"1s\"\nretries = 1.5\n",
     {"f:7: version '4' is none of 1, 2c, 3", "f:8: inform 'yes' is neither true nor false",
      "f:9: timeout '1s' is no number from 0.01 to 3600",
      "f:10: retries '1.5' is no integer from 0 to 255"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\n"
              "timeout = 0\nretries = -1\n",
     {"f:7: timeout '0' is no number from 0.01 to 3600",
      "f:8: retries '-1' is no integer from 0 to 255"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\n"
              "timeout = 3600.1\nretries = 256\n",
     {"f:7: timeout '3600.1' is no number from 0.01 to 3600",
      "f:8: retries '256' is no integer from 0 to 255"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\ntimeout = nan\n",
     {"f:7: timeout 'nan' is no number from 0.01 to 3600"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\nversion = \"1\"\n"
              "inform = true\n",
     {"f:8: inform 'true' is not for version '1', which has no informs"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\n"
              "user = \"noc\"\nlevel = \"authPriv\"\n",
     {"f:7: user 'noc' is for version '3' only", "f:8: level 'authPriv' is for version '3' only"}},
};

void ExpectAll(const std::vector<SMistake>& mistakes)
{
    for (const SMistake& mistake : mistakes)
        EXPECT_EQ(Problems(mistake.text), mistake.problems) << mistake.text;
}

} // namespace

TEST(ConfigMistakes, ThoseAtTheTopAreToldWithTheirPlace) { ExpectAll(kTopMistakes); }
TEST(ConfigMistakes, ThoseInViewsAreToldWithTheirPlace) { ExpectAll(kViewMistakes); }
TEST(ConfigMistakes, ThoseInCommunitiesAreToldWithTheirPlace) { ExpectAll(kCommunityMistakes); }
TEST(ConfigMistakes, ThoseInGroupsAreToldWithTheirPlace) { ExpectAll(kGroupMistakes); }
TEST(ConfigMistakes, ThoseInAccessEntriesAreToldWithTheirPlace) { ExpectAll(kAccessMistakes); }
TEST(ConfigMistakes, ThoseInTrapSinksAreToldWithTheirPlace) { ExpectAll(kTrapSinkMistakes); }

TEST(ConfigMistakes, AllMistakesAreToldInTheOrderOfTheFile)
{
    EXPECT_EQ(
        Problems("[[trapSink]]\naddress = \"x\"\ncommunity = \"c\"\n"
                 "[[community]]\nname = \"c\"\nread = \"r\"\n"
                 "[[view]]\nname = \"v\"\ninclude = [\"x\"]\n"
                 "[more]\n"),
        (CLines{"f:2: address 'x' is neither udp:IP:PORT nor udp6:[IP]:PORT",
                "f:6: read 'r' is no view", "f:9: include 'x'" + kNoOid, "f:10: 'more'" + kKeys}));
}

TEST(ConfigMistakes, ObjectIdentifiersHaveUpTo128Arcs)
{
    std::string most = "2";
    for (int i = 1; i < 128; ++i)
        most += ".4294967295";
    auto problems = [](const std::string& subtree) {
        return Problems("[[view]]\nname = \"v\"\ninclude = [\"" + subtree + "\"]\n").size();
    };
    EXPECT_EQ(problems(most.substr(0, most.size() - size_t{15} * 11)), 0u);
    EXPECT_EQ(problems(most), 1u) << "which is no number too many, but too many for an index";
    EXPECT_EQ(problems(most + ".1"), 1u);
}

TEST(ConfigMistakes, ARowOfTheViewTableHasANameThatAMessageCanHold)
{
    auto problems = [](size_t nameLength, size_t arcs) {
        std::string subtree = "1";
        for (size_t i = 1; i < arcs; ++i)
            subtree += ".1";
        return Problems("[[view]]\nname = \"" + std::string(nameLength, 'v') +
                        "\"\ninclude = [\"1\",\n\"" + subtree + "\"]\n");
    };
    EXPECT_EQ(problems(32, 82), CLines());
    EXPECT_EQ(problems(32, 83), CLines{"f:2: name '" + std::string(32, 'v') +
                                       "' is too long for a subtree of 83 numbers: both are in "
                                       "the index of its row"});
    EXPECT_EQ(problems(1, 113), CLines());
    EXPECT_EQ(problems(1, 114).size(), 1u);
}

TEST(ConfigMistakes, ACommunityHasUpTo255Octets)
{
    auto problems = [](const std::string& name) {
        return Problems("[[community]]\nname = \"" + name + "\"\nread = \"everything\"\n");
    };
    EXPECT_EQ(problems(std::string(255, 'c')), CLines());
    EXPECT_EQ(problems(std::string(256, 'c')),
              CLines{"f:2: name '" + std::string(80, 'c') + "...' has more than 255 octets"});
}

TEST(ConfigMistakes, ATrapSinkThatIsThereAlreadyIsAMistake)
{
    auto problems = [](const std::string& first, const std::string& second) {
        const std::string sink =
            "[[trapSink]]\naddress = \"udp6:[2001:db8::1]:162\"\ncommunity = \"c\"\n";
        return Problems(kTraps + "[[community]]\nname = \"d\"\nnotify = \"everything\"\n" + sink +
                        first + sink + second);
    };
    const CLines twice{"f:11: address 'udp6:[2001:db8::1]:162' is a trapSink of this community, "
                       "version and inform already"};
    EXPECT_EQ(problems("timeout = 1\n", "timeout = 2\n"), CLines{"f:12" + twice[0].substr(4)});
    EXPECT_EQ(problems("", ""), twice);
    EXPECT_EQ(problems("", "version = \"1\"\n"), CLines());
    EXPECT_EQ(Problems(kTraps +
                       "[[community]]\nname = \"d\"\nnotify = \"everything\"\n"
                       "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\n"
                       "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"d\"\n"),
              CLines());
    EXPECT_EQ(problems("", "inform = true\n"), CLines());
    EXPECT_EQ(
        problems("", "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"d\"\n").size(),
        1u);
}

TEST(ConfigMistakes, EachIsOneLineThatMovesNoCursor)
{
    auto problem = [](const std::string& view) {
        CLines lines = Problems("[[community]]\nname = \"c\"\nread = \"" + view + "\"\n");
        return lines.size() == 1 ? lines[0] : "";
    };
    EXPECT_EQ(problem("x\\ny\\tz"), "f:3: read 'x\\u000Ay\\u0009z' is no view");
    EXPECT_EQ(problem("\\u0000\\u001b[2J\\u007f"),
              "f:3: read '\\u0000\\u001B[2J\\u007F' is no view");
    EXPECT_EQ(problem("\\u0080\\u009f\u00a0\u00e9"),
              "f:3: read '\\u0080\\u009F\u00a0\u00e9' is no view");
    EXPECT_EQ(problem(std::string(80, 'x')), "f:3: read '" + std::string(80, 'x') + "' is no view");
    EXPECT_EQ(problem(std::string(79, 'x') + "\u20ac\u20ac"),
              "f:3: read '" + std::string(79, 'x') + "\u20ac...' is no view");
    EXPECT_EQ(Problems("\"a\\nb\" = 1\n"), CLines{"f:1: 'a\\u000Ab'" + kKeys});
    CLines twice = Problems("\"a\u009b\" = 1\n\"a\u009b\" = 2\n");
    ASSERT_EQ(twice.size(), 1u);
    EXPECT_EQ(twice[0].find("\u009b"), std::string::npos) << twice[0];
    EXPECT_NE(twice[0].find("a\\u009B"), std::string::npos) << twice[0];
}
