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
const std::vector<SMistake> kTopMistakes = {
    {"a = 1\na = 2\n",
     {"f:2:5: Error while parsing key-value pair: cannot redefine existing integer 'a'"}},
    {"\nstore = \n", {"f:2:9: Error while parsing key-value pair: expected value, saw '\\n'"}},
    {"agentaddress = \"udp:127.0.0.1:161\"\n",
     {"f:1:1: the file has no key 'agentaddress'; it has agentAddress, store, contexts, view, "
      "group, community, access, trapSink"}},
    {"[views]\n",
     {"f:1:2: the file has no key 'views'; it has agentAddress, store, contexts, view, group, "
      "community, access, trapSink"}},
    {"agentAddress = 161\n", {"f:1:16: agentAddress must be a text or a list of texts"}},
    {"agentAddress = [161]\n", {"f:1:17: agentAddress must be a text or a list of texts"}},
    {"agentAddress = [\"udp:127.0.0.1:161\",\n \"udp:161\", \"\"]\n",
     {"f:2:2: 'udp:161' is neither udp:IP:PORT nor udp6:[IP]:PORT",
      "f:2:13: '' is neither udp:IP:PORT nor udp6:[IP]:PORT"}},
    {"agentAddress = [\"udp6:[::1]:161\",\n \"udp6:[0::1]:161\"]\n",
     {"f:2:2: 'udp6:[0::1]:161' is in line 1 already"}},
    {"store = 1\n", {"f:1:9: store must be a text"}},
    {"store = \"\"\n", {"f:1:9: '' does not begin with '/'"}},
    {"store = \"store.db\"\n", {"f:1:9: 'store.db' does not begin with '/'"}},
    {"contexts = [\"\", \"a\",\n\"a\"]\n",
     {"f:1:13: context '' is empty", "f:2:1: context 'a' is defined in line 1 already"}},
    {"contexts = [\"" + kLong + "\"]\n",
     {"f:1:13: context '" + kLong + "' has more than 32 characters"}},
    {"contexts = true\n", {"f:1:12: contexts must be a text or a list of texts"}},
};

const std::vector<SMistake> kViewMistakes = {
    {"[view]\nname = \"v\"\n", {"f:1:1: view is written as [[view]]"}},
    {"view = [1]\n", {"f:1:8: view is written as [[view]]"}},
    {"[[view]]\n",
     {"f:1:1: this view has no name", "f:1:1: this view has no include: it shows nothing"}},
    {"[[view]]\nname = \"\"\ninclude = [\"1.3\"]\n", {"f:2:8: name '' is empty"}},
    {"[[view]]\nname = 5\ninclude = [\"1.3\"]\n", {"f:2:8: name must be a text"}},
    {"[[view]]\nname = \"" + kLong + "\"\ninclude = [\"1.3\"]\n",
     {"f:2:8: name '" + kLong + "' has more than 32 characters"}},
    {"[[view]]\nname = \"caf\u00e9\"\ninclude = [\"1.3\"]\n",
     {"f:2:8: name 'caf\u00e9' has characters that are not printable ASCII"}},
    {kView + "[[view]]\nname = \"v\"\ninclude = [\"1.3\"]\n",
     {"f:5:8: view 'v' is defined in line 2 already"}},
    {"[[view]]\nname = \"everything\"\ninclude = [\"1.3\"]\n",
     {"f:2:8: view 'everything' is built in"}},
    {"[[view]]\nname = \"systemonly\"\ninclude = [\"1.3\"]\n",
     {"f:2:8: view 'systemonly' is built in"}},
    {kView + "includes = []\n",
     {"f:4:1: view has no key 'includes'; it has name, include, exclude"}},
    {"[[view]]\nname = \"v\"\ninclude = \"1.3\"\n", {"f:3:11: include must be a list"}},
    {"[[view]]\nname = \"v\"\ninclude = [1.3]\n",
     {"f:3:12: include must be a list of texts and tables"}},
    {"[[view]]\nname = \"v\"\ninclude = [\"\", \"1..3\", \"1.3.\", \"system\", \"1.-3\", \"1 "
     ".3\"]\n",
     {"f:3:12: ''" + kNoOid, "f:3:16: '1..3'" + kNoOid, "f:3:24: '1.3.'" + kNoOid,
      "f:3:32: 'system'" + kNoOid, "f:3:42: '1.-3'" + kNoOid, "f:3:50: '1 .3'" + kNoOid}},
    {"[[view]]\nname = \"v\"\ninclude = [\"1.3.4294967295\", \"1.3.4294967296\", \"..1\", \".\"]\n",
     {"f:3:30: '1.3.4294967296'" + kNoOid, "f:3:48: '..1'" + kNoOid, "f:3:55: '.'" + kNoOid}},
    {"[[view]]\nname = \"v\"\ninclude = [\"3.6.1\"]\n",
     {"f:3:12: '3.6.1' is no object identifier: the first number is 0, 1 or 2"}},
    {kView + "exclude = [\"1.4\", \".1.3\"]\n", {"f:4:19: '.1.3' is twice in this view"}},
    {"[[view]]\nname = \"v\"\ninclude = [{ mask = \"ff\" }]\n",
     {"f:3:12: this include has no subtree"}},
    {"[[view]]\nname = \"v\"\ninclude = [{ subtree = 1, mask = 2, type = 3 }]\n",
     {"f:3:24: subtree must be a text", "f:3:34: mask must be a text",
      "f:3:37: include has no key 'type'; it has subtree, mask"}},
    {"[[view]]\nname = \"v\"\ninclude = [\"1.1\"]\nexclude = [{ subtree = \"1.3\", mask = \"\" },\n"
     "{ subtree = \"1.4\", mask = \"f\" }, { subtree = \"1.5\", mask = \"fg\" },\n"
     "{ subtree = \"1.6\", mask = \"ff:\" }, { subtree = \"1.7\", mask = \"ff-ff\" },\n"
     "{ subtree = \"1.8\", mask = \"00112233445566778899aabbccddeeff00\" },\n"
     "{ subtree = \"1.9\", mask = \"00112233445566778899aabbccddeeff\" }]\n",
     {"f:4:38: ''" + kNoMask, "f:5:27: 'f'" + kNoMask, "f:5:60: 'fg'" + kNoMask,
      "f:6:27: 'ff:'" + kNoMask, "f:6:62: 'ff-ff'" + kNoMask,
      "f:7:27: '00112233445566778899aabbccddeeff00'" + kNoMask}},
};

const std::vector<SMistake> kCommunityMistakes = {
    {"[[community]]\nread = \"everything\"\n", {"f:1:1: this community has no name"}},
    {"[[community]]\nname = \"\"\nread = \"everything\"\n",
     {"f:2:8: '' is no community: it is empty"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\nreed = \"x\"\n",
     {"f:4:1: community has no key 'reed'; it has name, securityName, context, sources, read, "
      "write, notify"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\n[[community]]\nname = \"c\"\n"
     "read = \"everything\"\n",
     {"f:5:8: community 'c' is defined in line 2 already"}},
    {"[[community]]\nname = \"c\"\nread = \"r\"\nwrite = \"w\"\nnotify = \"n\"\n",
     {"f:3:8: 'r' is no view", "f:4:9: 'w' is no view", "f:5:10: 'n' is no view"}},
    {"[[community]]\nname = \"c\"\nread = true\n", {"f:3:8: read must be a text"}},
    {"[[community]]\nname = \"c\"\n",
     {"f:1:1: this community has no rights: give it read or write, or make 'c' a member of a "
      "group"}},
    {"[[community]]\nname = \"c\"\nsecurityName = \"s\"\n",
     {"f:1:1: this community has no rights: give it read or write, or make 's' a member of a "
      "group"}},
    {"[[community]]\nname = \"c\"\nsecurityName = \"\"\nread = \"everything\"\n",
     {"f:1:1: this community has views and a securityName: its rights are its own, or those of a "
      "group",
      "f:3:16: securityName '' is empty"}},
    {kGroup + "[[community]]\nname = \"c\"\nsecurityName = \"noc\"\nread = \"everything\"\n",
     {"f:4:1: this community has views and a securityName: its rights are its own, or those of a "
      "group"}},
    {kGroup + "[[community]]\nname = \"noc\"\nread = \"everything\"\n",
     {"f:4:1: 'noc' is with SNMPv1 in the group 'g' already",
      "f:4:1: 'noc' is with SNMPv2c in the group 'g' already"}},
    {"[[group]]\nname = \"g\"\nmembers = [{ securityName = \"alice\", securityModel = \"USM\" }]\n"
     "[[community]]\nname = \"alice\"\n",
     {"f:4:1: this community has no rights: give it read or write, or make 'alice' a member of a "
      "group"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\ncontext = \"x\"\n",
     {"f:4:11: 'x' is no context"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\nsources = [\"10.0.0.0/33\",\n"
     "\"10.0.0.1/8\", \"here\", 5]\n",
     {"f:4:12: '10.0.0.0/33' has no prefix of 0 to 32 bits",
      "f:5:1: '10.0.0.1/8' goes beyond its prefix: the network is 10.0.0.0/8",
      "f:5:15: 'here' is no network: write it like 192.0.2.0/24 or 2001:db8::/32",
      "f:5:23: sources must be a text or a list of texts"}},
};

const std::vector<SMistake> kGroupMistakes = {
    {"[[group]]\nmembers = []\n", {"f:1:1: this group has no name"}},
    {kGroup + "[[group]]\nname = \"g\"\n", {"f:5:8: group 'g' is defined in line 2 already"}},
    {"[[group]]\nname = \"console\"\n[[group]]\nname = \"console\"\n",
     {"f:4:8: group 'console' is defined in line 2 already"}},
    {kGroup + "model = 1\n", {"f:4:1: group has no key 'model'; it has name, members"}},
    {"[[group]]\nname = \"g\"\nmembers = \"noc\"\n", {"f:3:11: members must be a list"}},
    {"[[group]]\nname = \"g\"\nmembers = [1, \"\"]\n",
     {"f:3:12: members must be a list of texts and tables", "f:3:15: '' is empty"}},
    {"[[group]]\nname = \"g\"\nmembers = [{}]\n",
     {"f:3:12: this member has no securityName", "f:3:12: this member has no securityModel"}},
    {"[[group]]\nname = \"g\"\nmembers = [{ securityName = \"\", securityModel = \"any\" }]\n",
     {"f:3:29: securityName '' is empty",
      "f:3:49: securityModel: 'any' is none of SNMPv1, SNMPv2c, USM"}},
    {kGroup + "[[group]]\nname = \"h\"\nmembers = [\"noc\"]\n",
     {"f:6:12: 'noc' is with SNMPv1 in the group 'g' already",
      "f:6:12: 'noc' is with SNMPv2c in the group 'g' already"}},
    {kGroup + "[[group]]\nname = \"h\"\n"
              "members = [{ securityName = \"noc\", securityModel = \"SNMPv2c\" }]\n",
     {"f:6:29: 'noc' is with SNMPv2c in the group 'g' already"}},
};

const std::vector<SMistake> kAccessMistakes = {
    {"[[access]]\n", {"f:1:1: this access has no group"}},
    {"[[access]]\ngroup = \"g\"\n", {"f:2:9: 'g' is no group"}},
    {"[[community]]\nname = \"c\"\nread = \"everything\"\n[[access]]\ngroup = \"c\"\n",
     {"f:5:9: 'c' is no group"}},
    {kGroup + "[[access]]\ngroup = \"g\"\nview = \"everything\"\n",
     {"f:6:1: access has no key 'view'; it has group, contextMatch, context, securityModel, "
      "securityLevel, read, write, notify"}},
    {kGroup + "[[access]]\ngroup = \"g\"\ncontextMatch = \"begin\"\nsecurityModel = \"v1\"\n"
              "securityLevel = \"none\"\n",
     {"f:6:16: contextMatch: 'begin' is none of exact, prefix",
      "f:7:17: securityModel: 'v1' is none of any, SNMPv1, SNMPv2c, USM",
      "f:8:17: securityLevel: 'none' is none of noAuthNoPriv, authNoPriv, authPriv"}},
    {kGroup + "[[access]]\ngroup = \"g\"\ncontextMatch = 1\nsecurityModel = 1\n"
              "securityLevel = 1\ncontext = 1\n",
     {"f:6:16: contextMatch must be a text", "f:7:17: securityModel must be a text",
      "f:8:17: securityLevel must be a text", "f:9:11: context must be a text"}},
    {"contexts = [\"ab\"]\n" + kGroup +
         "[[access]]\ngroup = \"g\"\ncontext = \"a\"\n"
         "[[access]]\ngroup = \"g\"\ncontext = \"b\"\ncontextMatch = \"prefix\"\n",
     {"f:7:11: 'a' is no context", "f:10:11: 'b' begins no context"}},
    {kGroup + "[[access]]\ngroup = \"g\"\nread = \"r\"\nwrite = \"w\"\nnotify = \"n\"\n",
     {"f:6:8: 'r' is no view", "f:7:9: 'w' is no view", "f:8:10: 'n' is no view"}},
    {kGroup + "[[access]]\ngroup = \"g\"\n[[access]]\ngroup = \"g\"\ncontextMatch = \"prefix\"\n",
     {"f:6:1: the group 'g' has an access of this context, securityModel and securityLevel "
      "already"}},
};

const std::string kTraps = "[[community]]\nname = \"c\"\nnotify = \"everything\"\n";

const std::vector<SMistake> kTrapSinkMistakes = {
    {kTraps + "[[trapSink]]\n",
     {"f:4:1: this trapSink has no address", "f:4:1: this trapSink has no community"}},
    {kTraps + "[[trapSink]]\naddress = \"192.0.2.1\"\ncommunity = \"d\"\nport = 162\n",
     {"f:5:11: '192.0.2.1' is neither udp:IP:PORT nor udp6:[IP]:PORT",
      "f:6:13: 'd' is no community",
      "f:7:1: trapSink has no key 'port'; it has address, community, version, inform, timeout, "
      "retries"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:0\"\ncommunity = \"c\"\n",
     {"f:5:11: 'udp:192.0.2.1:0' has no port"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\nversion = \"3\"\n"
              "inform = \"yes\"\ntimeout = \"1s\"\nretries = 1.5\n",
     {"f:7:11: version: '3' is none of 1, 2c", "f:8:10: inform must be true or false",
      "f:9:11: timeout must be a number from 0.01 to 3600",
      "f:10:11: retries must be an integer from 0 to 255"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\n"
              "timeout = 0\nretries = -1\n",
     {"f:7:11: timeout must be a number from 0.01 to 3600",
      "f:8:11: retries must be an integer from 0 to 255"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\n"
              "timeout = 3600.1\nretries = 256\n",
     {"f:7:11: timeout must be a number from 0.01 to 3600",
      "f:8:11: retries must be an integer from 0 to 255"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\ntimeout = nan\n",
     {"f:7:11: timeout must be a number from 0.01 to 3600"}},
    {kTraps + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\ncommunity = \"c\"\nversion = \"1\"\n"
              "inform = true\n",
     {"f:4:1: this trapSink asks for informs, which version 1 has not"}},
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
    EXPECT_EQ(Problems("[[trapSink]]\naddress = \"x\"\ncommunity = \"c\"\n"
                       "[[community]]\nname = \"c\"\nread = \"r\"\n"
                       "[[view]]\nname = \"v\"\ninclude = [\"x\"]\n"
                       "[more]\n"),
              (CLines{"f:2:11: 'x' is neither udp:IP:PORT nor udp6:[IP]:PORT",
                      "f:6:8: 'r' is no view", "f:9:12: 'x'" + kNoOid,
                      "f:10:2: the file has no key 'more'; it has agentAddress, store, contexts, "
                      "view, group, community, access, trapSink"}));
}

TEST(ConfigMistakes, ObjectIdentifiersHaveUpTo128Arcs)
{
    std::string most = "1";
    for (int i = 1; i < 128; ++i)
        most += ".4294967295";
    auto problems = [](const std::string& subtree) {
        return Problems("[[view]]\nname = \"v\"\ninclude = [\"" + subtree + "\"]\n").size();
    };
    EXPECT_EQ(problems(most), 0u);
    EXPECT_EQ(problems(most + ".1"), 1u);
}
