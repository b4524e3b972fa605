// What the options and the file make together, and who may do what then.
#include "host/HostError.h"
#include "host/Options.h"
#include "host/access/Access.h"

#include "tests/support/Oids.h"
#include "tests/support/TempDir.h"

using namespace VLK;
using namespace VLK::host;
using VLK::Test::MakeOid;

namespace {

constexpr const char* kSystem = "1.3.6.1.2.1.1.4.0";
constexpr const char* kOther = "1.3.6.1.2.1.2.1.0";
constexpr const char* kHere = "udp:127.0.0.1:5";
constexpr const char* kThere = "udp:10.0.0.1:5";

// An access control for options.
class Rights {
public:
    explicit Rights(const SOptions& options) : m_access(Configure(options), nullptr) {}

    bool IsAnswered(const std::string& community, const char* source)
    {
        BTransportAddress address;
        EXPECT_TRUE(address.Parse(source));
        BCommunities::EAdmission admission;
        return BRightsOfRequest(m_access)->communities.Admit(community, address, admission) !=
               nullptr;
    }
    // "r", "w" and "n" for what may be done with the object.
    std::string Of(int model, const char* name, const char* object, const char* context = "")
    {
        BSecurityParams security;
        security.securityModel = model;
        security.securityName = BString(name);
        security.securityLevel = eNoAuthNoPriv;
        std::string rights;
        for (EViewType type : {eViewRead, eViewWrite, eViewNotify}) {
            SVacmDecision decision = BRightsOfRequest(m_access)->vacm.Decide(
                security, type, BString(context), MakeOid(object));
            if (decision.answer == eVacmAllowed)
                rights += "rwn"[type];
        }
        return rights;
    }

private:
    BAccess m_access;
};

SOptions With(const std::vector<SCommunityOption>& communities)
{
    SOptions options;
    options.communities = communities;
    return options;
}

std::string ErrorOf(const SOptions& options)
{
    try {
        Configure(options);
        return "none";
    } catch (const BHostError& error) {
        EXPECT_EQ(error.Status(), eExitUsage);
        return error.what();
    }
}

class ConfiguredByFile : public testing::Test {
protected:
    SOptions File(const std::string& text)
    {
        WriteFile(name, text);
        SOptions options;
        options.config = name;
        return options;
    }

    TempDir directory;
    std::string name = directory.File("agent.toml");
};

} // namespace

TEST(Configure, WithoutAnythingPublicReadsTheSystemGroupOnThisMachineOnly)
{
    Rights rights{SOptions()};
    EXPECT_TRUE(rights.IsAnswered("public", kHere));
    EXPECT_TRUE(rights.IsAnswered("public", "udp6:[::1]:5"));
    EXPECT_FALSE(rights.IsAnswered("public", kThere));
    EXPECT_FALSE(rights.IsAnswered("private", kHere));
    for (int model : {eModelV1, eModelV2c}) {
        EXPECT_EQ(rights.Of(model, "public", kSystem), "rn");
        EXPECT_EQ(rights.Of(model, "public", "1.3.6.1.2.1.1.9.1.2.1"), "rn") << "sysORTable";
        EXPECT_EQ(rights.Of(model, "public", kOther), "");
        EXPECT_EQ(rights.Of(model, "private", kSystem), "");
    }
    EXPECT_EQ(rights.Of(eModelUsm, "public", kSystem), "");
}

TEST(Configure, WithoutAnythingTheAgentListensOnLoopback)
{
    SConfiguration configuration = Configure(SOptions());
    ASSERT_EQ(configuration.listen.size(), 1u);
    EXPECT_EQ(configuration.listen[0].ToString(), "udp:127.0.0.1:1161");
    EXPECT_EQ(configuration.store, "");
    EXPECT_TRUE(configuration.trapSinks.empty());
}

TEST(Configure, CommunitiesOfTheCommandLineReplaceTheDefaultAndAnswerFromAnywhere)
{
    Rights rights(With({{"look", false}, {"touch", true}}));
    EXPECT_TRUE(rights.IsAnswered("look", kThere));
    EXPECT_TRUE(rights.IsAnswered("touch", "udp6:[2001:db8::1]:5"));
    EXPECT_FALSE(rights.IsAnswered("public", kHere));
    for (const char* object : {kSystem, kOther, "0.0", "1", "2.5.4294967295"}) {
        EXPECT_EQ(rights.Of(eModelV1, "look", object), "rn") << object;
        EXPECT_EQ(rights.Of(eModelV2c, "touch", object), "rwn") << object;
    }
    EXPECT_EQ(rights.Of(eModelV2c, "public", kSystem), "");
}

TEST(Configure, TheConsolesOperatorReadsAndWritesEverything)
{
    for (const SOptions& options : {SOptions(), With({{"touch", true}})}) {
        Rights rights(options);
        EXPECT_EQ(rights.Of(eModelUsm, "", kSystem), "rwn");
        EXPECT_EQ(rights.Of(eModelUsm, "", kOther), "rwn");
    }
}

TEST(Configure, TheConsoleWithANameHasTheRightsOfThatNameAndModel)
{
    Rights rights(With({{"look", false}, {"touch", true}}));
    for (int model : {eModelV1, eModelV2c}) {
        EXPECT_EQ(rights.Of(model, "look", kSystem), "rn");
        EXPECT_EQ(rights.Of(model, "touch", kSystem), "rwn");
        EXPECT_EQ(rights.Of(model, "bob", kSystem), "");
    }
    EXPECT_EQ(rights.Of(eModelUsm, "touch", kSystem), "") << "it is configured for SNMPv1 and v2c";
}

TEST(Configure, ARequestFromTheWireNeverHasTheConsolesIdentity)
{
    for (const SOptions& options : {SOptions(), With({{"look", false}})}) {
        Rights rights(options);
        EXPECT_FALSE(rights.IsAnswered("", kHere));
        EXPECT_FALSE(rights.IsAnswered("console", kHere));
        EXPECT_EQ(rights.Of(eModelV1, "", kSystem), "");
        EXPECT_EQ(rights.Of(eModelV2c, "", kSystem), "");
    }
}

TEST(Configure, ACommunityCalledLikeTheConsolesGroupIsNotInIt)
{
    Rights rights(With({{"console", false}}));
    EXPECT_EQ(rights.Of(eModelV2c, "console", kSystem), "rn");
    EXPECT_EQ(rights.Of(eModelUsm, "", kSystem), "rwn");
}

TEST_F(ConfiguredByFile, WithoutACommunityPublicReadsTheSystemGroupOnThisMachineOnly)
{
    Rights rights(File("agentAddress = \"udp:127.0.0.1:0\"\n"));
    EXPECT_TRUE(rights.IsAnswered("public", kHere));
    EXPECT_FALSE(rights.IsAnswered("public", kThere));
    EXPECT_EQ(rights.Of(eModelV2c, "public", kSystem), "rn");
    EXPECT_EQ(rights.Of(eModelV2c, "public", kOther), "");
    EXPECT_EQ(rights.Of(eModelUsm, "", kOther), "rwn");
}

TEST_F(ConfiguredByFile, ACommunityAlsoNoneReplacesTheDefaultOne)
{
    for (const char* communities :
         {"community = []\n", "[[community]]\nname = \"look\"\nread = \"systemonly\"\n"}) {
        Rights rights(File(communities));
        EXPECT_FALSE(rights.IsAnswered("public", kHere)) << communities;
        EXPECT_EQ(rights.Of(eModelV2c, "public", kSystem), "") << communities;
    }
    SOptions options = File("agentAddress = \"udp:127.0.0.1:0\"\n");
    options.communities = {{"look", false}};
    EXPECT_FALSE(Rights(options).IsAnswered("public", kHere));
}

TEST_F(ConfiguredByFile, TheDefaultCommunityHasNoRightsOfAGroup)
{
    Rights rights(File("[[group]]\nname = \"g\"\nmembers = [\"public\"]\n"
                       "[[access]]\ngroup = \"g\"\nread = \"everything\"\n"));
    EXPECT_FALSE(rights.IsAnswered("public", kHere));
}

TEST_F(ConfiguredByFile, AddressesAndStoreOfTheCommandLineGoBeforeThoseOfTheFile)
{
    SOptions options = File("agentAddress = [\"udp:127.0.0.1:1\", \"udp:127.0.0.1:2\"]\n"
                            "store = \"/from/the/file\"\n");
    SConfiguration configuration = Configure(options);
    ASSERT_EQ(configuration.listen.size(), 2u);
    EXPECT_EQ(configuration.listen[1].ToString(), "udp:127.0.0.1:2");
    EXPECT_EQ(configuration.store, "/from/the/file");
    options.store = "here";
    options.listen.resize(1);
    options.listen[0].Parse("udp:127.0.0.1:3");
    configuration = Configure(options);
    ASSERT_EQ(configuration.listen.size(), 1u);
    EXPECT_EQ(configuration.listen[0].ToString(), "udp:127.0.0.1:3");
    EXPECT_EQ(configuration.store, "here");
}

TEST_F(ConfiguredByFile, CommunitiesOfTheCommandLineAreAdded)
{
    SOptions options = File("[[community]]\nname = \"look\"\nread = \"systemonly\"\n");
    options.communities = {{"touch", true}};
    Rights rights(options);
    EXPECT_TRUE(rights.IsAnswered("look", kHere));
    EXPECT_FALSE(rights.IsAnswered("look", kThere));
    EXPECT_TRUE(rights.IsAnswered("touch", kThere));
    EXPECT_EQ(rights.Of(eModelV1, "look", kOther), "");
    EXPECT_EQ(rights.Of(eModelV1, "touch", kOther), "rwn");
}

TEST_F(ConfiguredByFile, ACommunityIsInOneOfBothOnly)
{
    SOptions options = File("[[community]]\nname = \"look\"\nread = \"systemonly\"\n"
                            "[[group]]\nname = \"g\"\nmembers = [\"noc\"]\n");
    options.communities = {{"look", false}};
    EXPECT_EQ(ErrorOf(options), "--community: 'look' is a community of " + name + " too");
    options.communities = {{"noc", false}};
    EXPECT_EQ(ErrorOf(options),
              "--community: 'noc' is the securityName of a member of a group in " + name);
}

TEST_F(ConfiguredByFile, TheOperatorsRightsMayBeConfigured)
{
    const std::string ports = "contexts = [\"ports\"]\n";
    EXPECT_EQ(Rights(File(ports)).Of(eModelUsm, "", kOther, "ports"), "rwn");
    Rights rights(File(ports + "[[access]]\ngroup = \"console\"\nread = \"systemonly\"\n"));
    EXPECT_EQ(rights.Of(eModelUsm, "", kSystem), "r");
    EXPECT_EQ(rights.Of(eModelUsm, "", kOther), "");
    EXPECT_EQ(rights.Of(eModelUsm, "", kSystem, "ports"), "") << "nothing is left of the built-in";
}

TEST_F(ConfiguredByFile, OthersMayBeMadeMembersOfTheConsolesGroup)
{
    Rights rights(File("[[group]]\nname = \"console\"\n"
                       "members = [{ securityName = \"alice\", securityModel = \"USM\" }]\n"));
    EXPECT_EQ(rights.Of(eModelUsm, "alice", kOther), "rwn");
    EXPECT_EQ(rights.Of(eModelUsm, "", kOther), "rwn");
    EXPECT_EQ(rights.Of(eModelV2c, "alice", kOther), "");
}

TEST_F(ConfiguredByFile, AMissingFileIsOneLine)
{
    SOptions options;
    options.config = name;
    EXPECT_EQ(ErrorOf(options), name + ": No such file or directory");
    options.config = directory.Path();
    EXPECT_EQ(ErrorOf(options), directory.Path() + ": Is a directory");
    options.config = "/dev/zero";
    EXPECT_EQ(ErrorOf(options), "/dev/zero: has more than 1048576 bytes");
}
