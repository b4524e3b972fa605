#include "host/Options.h"

#include "host/HostError.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace VLK::host;

namespace {

struct Parsed {
    SOptions options;
    std::optional<int> status;
    std::string out;
    std::string error;
    int errorStatus = 0;
};

Parsed Parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "vkagentd");
    Parsed parsed;
    std::ostringstream out;
    try {
        parsed.status =
            ParseOptions(static_cast<int>(arguments.size()), arguments.data(), parsed.options, out);
    } catch (const BHostError& error) {
        parsed.error = error.what();
        parsed.errorStatus = error.Status();
    }
    parsed.out = out.str();
    return parsed;
}

} // namespace

TEST(Options, DefaultsAreLoopbackAndNoCommunities)
{
    Parsed parsed = Parse({});
    EXPECT_FALSE(parsed.status.has_value());
    ASSERT_EQ(parsed.options.listen.size(), 1u);
    EXPECT_EQ(parsed.options.listen[0].ToString(), "udp:127.0.0.1:1161");
    EXPECT_TRUE(parsed.options.communities.empty());
    EXPECT_EQ(parsed.options.store, "");
}

TEST(Options, ListenAndCommunityRepeatInOrder)
{
    Parsed parsed = Parse({"--listen", "udp:127.0.0.1:1", "--listen=udp6:[::1]:2", "--community",
                           "a:b:rw", "--community", "public:ro", "--store", "x.db"});
    EXPECT_EQ(parsed.error, "");
    ASSERT_EQ(parsed.options.listen.size(), 2u);
    EXPECT_EQ(parsed.options.listen[0].ToString(), "udp:127.0.0.1:1");
    EXPECT_EQ(parsed.options.listen[1].ToString(), "udp6:[::1]:2");
    ASSERT_EQ(parsed.options.communities.size(), 2u);
    EXPECT_EQ(parsed.options.communities[0].name, "a:b");
    EXPECT_TRUE(parsed.options.communities[0].writable);
    EXPECT_EQ(parsed.options.communities[1].name, "public");
    EXPECT_FALSE(parsed.options.communities[1].writable);
    EXPECT_EQ(parsed.options.store, "x.db");
}

TEST(Options, BadLinesAreOneLineAndStatusTwo)
{
    const std::vector<std::vector<const char*>> lines = {
        {"--nonsense"},
        {"stray"},
        {"--listen"},
        {"--listen", "udp:127.0.0.1"},
        {"--listen", "udp:127.0.0.1:1", "udp:127.0.0.1:2"},
        {"--community", "public"},
        {"--community", "public:rx"},
        {"--community", ":ro"},
        {"--community", "public:RO"},
        {"--community", ""},
        {"--community", "p:ro", "--community", "p:rw"},
        {"--store", ""},
        {"--store"},
    };
    for (const auto& line : lines) {
        Parsed parsed = Parse(line);
        EXPECT_EQ(parsed.errorStatus, 2) << line[0];
        EXPECT_NE(parsed.error, "") << line[0];
        EXPECT_EQ(parsed.error.find('\n'), std::string::npos) << parsed.error;
    }
}

TEST(Options, HelpAndVersionAnswerAndEndWithStatusZero)
{
    Parsed help = Parse({"--help"});
    ASSERT_TRUE(help.status.has_value());
    EXPECT_EQ(*help.status, 0);
    for (const char* option : {"--listen", "--community", "--store", "--help", "--version"})
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    Parsed version = Parse({"--version"});
    ASSERT_TRUE(version.status.has_value());
    EXPECT_EQ(*version.status, 0);
    EXPECT_EQ(version.out.compare(0, 9, "vkagentd "), 0);
}
