// Users of SNMPv3 in the configuration file.
#include "host/config/ConfigFile.h"

#include "tests/support/TempDir.h"

#include <algorithm>
#include <sys/stat.h>

using namespace VLK;
using namespace VLK::host;

namespace {

using CLines = std::vector<std::string>;

CLines Problems(const std::string& text, bool isPrivate = true)
{
    try {
        ReadConfigText(text, "f", isPrivate);
        return {};
    } catch (const BConfigError& error) {
        EXPECT_EQ(error.Status(), eExitUsage);
        return error.Lines();
    }
}

const std::string kUser = "[[user]]\nname = \"u\"\nread = \"everything\"\n"; // lines 1 to 3
const std::string kAuth = "auth = \"SHA-256\"\nauthPassphrase = \"12345678\"\n";
const std::string kPriv = "priv = \"AES\"\nprivPassphrase = \"87654321\"\n";

const SGroup& GroupOf(const SConfiguration& made, const std::string& name)
{
    auto found = std::find_if(made.groups.begin(), made.groups.end(),
                              [&](const SGroup& group) { return group.name == name; });
    EXPECT_NE(found, made.groups.end());
    return *found;
}

} // namespace

TEST(ConfigUsers, TheShortFormIsAGroupOfTheUsersStrongestLevel)
{
    const std::pair<std::string, ESecurityLevel> users[] = {
        {kUser, eNoAuthNoPriv}, {kUser + kAuth, eAuthNoPriv}, {kUser + kAuth + kPriv, eAuthPriv}};
    for (const auto& [text, level] : users) {
        SConfiguration made = ReadConfigText(text, "f", true);
        ASSERT_EQ(made.users.size(), 1u);
        EXPECT_EQ(made.users[0].StrongestLevel(), level);
        const SGroup& group = GroupOf(made, "u");
        ASSERT_EQ(group.members.size(), 1u);
        EXPECT_EQ(group.members[0].model, eModelUsm);
        EXPECT_EQ(group.members[0].securityName, "u");
        ASSERT_EQ(group.access.size(), 1u);
        EXPECT_EQ(group.access[0].level, level);
        EXPECT_EQ(group.access[0].model, eModelUsm);
        EXPECT_TRUE(group.access[0].isPrefix);
        EXPECT_EQ(group.access[0].views[eViewRead], "everything");
        EXPECT_EQ(group.access[0].views[eViewWrite], "");
    }
}

TEST(ConfigUsers, WhatIsSaidIsKept)
{
    SConfiguration made = ReadConfigText("v3 = false\n" + kUser + kAuth + kPriv, "f", true);
    EXPECT_FALSE(made.v3);
    EXPECT_TRUE(ReadConfigText("", "f").v3);
    EXPECT_EQ(made.users[0].auth, "SHA-256");
    EXPECT_EQ(made.users[0].authPassphrase, "12345678");
    EXPECT_EQ(made.users[0].priv, "AES");
    EXPECT_EQ(made.users[0].privPassphrase, "87654321");
}

TEST(ConfigUsers, AMemberOfAGroupHasItsRights)
{
    SConfiguration made = ReadConfigText("[[user]]\nname = \"u\"\n" + kAuth +
                                             "[[group]]\nname = \"g\"\nmembers = [{ securityName = "
                                             "\"u\", securityModel = \"USM\" }]\n",
                                         "f", true);
    ASSERT_EQ(made.users.size(), 1u);
    EXPECT_EQ(made.groups.size(), 2u) << "the console's and g";
}

TEST(ConfigUsers, MistakesAreTold)
{
    const std::pair<std::string, CLines> mistakes[] = {
        {"[[user]]\nread = \"everything\"\n", {"f:1: [[user]] has no 'name'"}},
        {kUser + kUser, {"f:5: name 'u' is a user of line 2 already"}},
        {"[[user]]\nname = \"u\"\n",
         {"f:2: name 'u' has no rights: make it a member of a group with USM, or give the user "
          "read, write or notify"}},
        {"[[user]]\nname = \"u\"\n[[group]]\nname = \"g\"\nmembers = [\"u\"]\n",
         {"f:2: name 'u' has no rights: make it a member of a group with USM, or give the user "
          "read, write or notify"}},
        {kUser + "[[group]]\nname = \"g\"\n"
                 "members = [{ securityName = \"u\", securityModel = \"USM\" }]\n",
         {"f:2: name 'u' is with USM in the group 'g' already"}},
        {kUser + "auth = \"MD5\"\nauthPassphrase = \"12345678\"\n",
         {"f:4: auth 'MD5' is none of SHA, SHA-224, SHA-256, SHA-384, SHA-512"}},
        {kUser + kAuth + "priv = \"DES\"\nprivPassphrase = \"12345678\"\n",
         {"f:6: priv 'DES' is none of AES, AES-192, AES-256"}},
        {kUser + "auth = \"SHA\"\n",
         {"f:1: [[user]] has no 'authPassphrase' and no 'authPassphraseFile'"}},
        {kUser + "authPassphrase = \"12345678\"\n",
         {"f:1: authPassphrase is for nothing without auth"}},
        {kUser + kPriv, {"f:4: priv 'AES' is not without auth"}},
        {kUser + "v3 = true\n",
         {"f:4: 'v3' is no key of [[user]], which has name, auth, authPassphrase, "
          "authPassphraseFile, priv, privPassphrase, privPassphraseFile, read, write, notify"}},
        {"v3 = 1\n", {"f:1: v3 '1' is neither true nor false"}},
        {kUser + "auth = \"SHA\"\nauthPassphraseFile = \"here\"\n",
         {"f:5: authPassphraseFile 'here' does not begin with '/'"}},
        {kUser + "auth = \"SHA\"\nauthPassphraseFile = \"/nowhere/at/all\"\n",
         {"f:5: authPassphraseFile '/nowhere/at/all' cannot be read: No such file or directory"}},
        {kUser + "auth = \"SHA\"\nauthPassphraseFile = \"/dev/null\"\n",
         {"f:5: authPassphraseFile '/dev/null' may be read or written by others: chmod 600 it"}},
        {kUser + kAuth + "authPassphraseFile = \"/f\"\n",
         {"f:6: authPassphraseFile '/f' stands beside authPassphrase"}},
    };
    for (const auto& [text, problems] : mistakes)
        EXPECT_EQ(Problems(text), problems) << text;
}

namespace {

std::string SinkOfUser(const std::string& more)
{
    return kUser + kAuth + "[[trapSink]]\naddress = \"udp:192.0.2.1:162\"\nversion = \"3\"\n" +
           more;
}

} // namespace

TEST(ConfigUsers, ASinkOfVersion3IsSentToAsAUser)
{
    SConfiguration made = ReadConfigText(SinkOfUser("user = \"u\"\ninform = true\n"), "f", true);
    ASSERT_EQ(made.trapSinks.size(), 1u);
    const STrapSink& sink = made.trapSinks[0];
    EXPECT_EQ(sink.protocol, eSnmpV3);
    EXPECT_EQ(sink.user, "u");
    EXPECT_EQ(sink.level, eAuthNoPriv) << "the strongest that he has";
    EXPECT_TRUE(sink.isInform);
    EXPECT_EQ(sink.security.securityModel, eModelUsm);
    EXPECT_EQ(sink.security.securityName, BString("u"));
    EXPECT_EQ(sink.security.securityLevel, eAuthNoPriv);
    made = ReadConfigText(SinkOfUser("user = \"u\"\nlevel = \"noAuthNoPriv\"\n"), "f", true);
    EXPECT_EQ(made.trapSinks[0].level, eNoAuthNoPriv);
}

TEST(ConfigUsers, MistakesInASinkOfVersion3AreTold)
{
    const std::pair<std::string, CLines> mistakes[] = {
        {SinkOfUser(""), {"f:6: [[trapSink]] has no 'user'"}},
        {SinkOfUser("user = \"w\"\n"), {"f:9: user 'w' is no user"}},
        {SinkOfUser("user = \"u\"\nlevel = \"authPriv\"\n"),
         {"f:10: level 'authPriv' is more than the user has: authNoPriv"}},
        {SinkOfUser("user = \"u\"\ncommunity = \"c\"\n"),
         {"f:10: community 'c' is not for version '3', which has users"}},
        {"v3 = false\n" + SinkOfUser("user = \"u\"\n"),
         {"f:9: version '3' is not with v3 = false"}},
    };
    for (const auto& [text, problems] : mistakes) {
        try {
            ReadConfigText(text, "f", true);
            ADD_FAILURE() << text;
        } catch (const BConfigError& error) {
            EXPECT_EQ(error.Lines(), problems) << text;
        }
    }
}

TEST(ConfigUsers, NoMessageShowsAPassphrase)
{
    const std::pair<std::string, std::string> mistakes[] = {
        {"\"secret7\"", "f:5: authPassphrase has fewer than 8 characters"},
        {"\"" + std::string(256, 's') + "\"", "f:5: authPassphrase has more than 255 octets"},
        {"\"secret 4711\\n\"", "f:5: authPassphrase has control characters"},
        {"12345678", "f:5: authPassphrase is no text"},
        {"[\"12345678\"]", "f:5: authPassphrase is no text"},
        {"98765432109876543210", "f:5: Error while parsing decimal integer: '...' is not "
                                 "representable in 64 bits (column 38)"},
        {"0xffffffffffffffffff", "f:5: Error while parsing hexadecimal integer: '...' is not "
                                 "representable in 64 bits (column 38)"},
        {"1e98765432", "f:5: Error while parsing floating-point: '...' could not be interpreted "
                       "as a value (column 28)"},
    };
    for (const auto& [value, problem] : mistakes)
        EXPECT_EQ(Problems(kUser + "auth = \"SHA\"\nauthPassphrase = " + value + "\n"),
                  CLines{problem});
    EXPECT_EQ(
        Problems(kUser + "auth = \"SHA\"\nauthPassphrase = \"" + std::string(255, 's') + "\"\n"),
        CLines{});
}

TEST(ConfigUsers, PassphrasesAreRefusedInAFileThatOthersMayRead)
{
    const std::string why = " stands in a file that others may read or write: chmod 600 it";
    EXPECT_EQ(Problems(kUser + kAuth + kPriv, false),
              (CLines{"f:5: authPassphrase" + why, "f:7: privPassphrase" + why}));
    TempDir directory;
    const std::string file = directory.File("agent.toml");
    WriteFile(file, kUser + kAuth);
    const std::pair<mode_t, bool> modes[] = {{0600, true},  {0400, true},  {0700, true},
                                             {0640, false}, {0604, false}, {0620, false},
                                             {0602, false}, {0711, true}};
    for (auto [mode, isRead] : modes) {
        ASSERT_EQ(chmod(file.c_str(), mode), 0);
        if (isRead)
            EXPECT_EQ(ReadConfigFile(file).users.size(), 1u) << std::oct << mode;
        else
            EXPECT_THROW(ReadConfigFile(file), BConfigError) << std::oct << mode;
    }
}

TEST(ConfigUsers, APassphraseFileIsItsOwnersAndItsFirstLineCounts)
{
    TempDir directory;
    const std::string secret = directory.File("secret");
    const std::string text = kUser + "auth = \"SHA\"\nauthPassphraseFile = \"" + secret + "\"\n";
    for (const char* content : {"a long secret\n", "a long secret", "a long secret\nmore\n"}) {
        WriteFile(secret, content);
        ASSERT_EQ(chmod(secret.c_str(), 0600), 0);
        // The configuration itself keeps no secret.
        EXPECT_EQ(ReadConfigText(text, "f", false).users[0].authPassphrase, "a long secret");
    }
    WriteFile(secret, "short\n");
    EXPECT_EQ(Problems(text),
              CLines{"f:5: authPassphraseFile '" + secret + "' has fewer than 8 characters"});
    WriteFile(secret, "a long secret\n");
    ASSERT_EQ(chmod(secret.c_str(), 0640), 0);
    EXPECT_EQ(Problems(text), CLines{"f:5: authPassphraseFile '" + secret +
                                     "' may be read or written by others: chmod 600 it"});
}
