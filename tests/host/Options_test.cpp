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

TEST(Options, NothingIsChosenWithoutThem)
{
    Parsed parsed = Parse({});
    EXPECT_FALSE(parsed.status.has_value());
    EXPECT_TRUE(parsed.options.listen.empty());
    EXPECT_TRUE(parsed.options.communities.empty());
    EXPECT_EQ(parsed.options.store, "");
    EXPECT_EQ(parsed.options.config, "");
    EXPECT_FALSE(parsed.options.checkConfig);
    EXPECT_FALSE(parsed.options.resetStore);
    EXPECT_FALSE(parsed.options.console.has_value()) << "decided by standard input";
}

TEST(Options, TheConsoleIsSwitchedOnAndOff)
{
    EXPECT_EQ(Parse({"--console"}).options.console, true);
    EXPECT_EQ(Parse({"--no-console"}).options.console, false);
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

TEST(Options, TheConfigurationFileIsNamedAndMayJustBeChecked)
{
    Parsed parsed = Parse({"--config", "a.toml", "--check-config"});
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(parsed.options.config, "a.toml");
    EXPECT_TRUE(parsed.options.checkConfig);
    EXPECT_TRUE(Parse({"--reset-store"}).options.resetStore);
}

TEST(Options, TheLogIsChosenByName)
{
    EXPECT_FALSE(Parse({}).options.log.has_value());
    EXPECT_FALSE(Parse({}).options.logLevel.has_value());
    EXPECT_EQ(Parse({"--log", "syslog"}).options.log, eLogSyslog);
    EXPECT_EQ(Parse({"--log", "stderr"}).options.log, eLogStderr);
    EXPECT_EQ(Parse({"--log-level", "error"}).options.logLevel, eLogError);
    EXPECT_EQ(Parse({"--log-level", "warning"}).options.logLevel, eLogWarning);
    EXPECT_EQ(Parse({"--log-level", "notice"}).options.logLevel, eLogNotice);
    EXPECT_EQ(Parse({"--log-level", "info"}).options.logLevel, eLogInfo);
    EXPECT_EQ(Parse({"--log-level", "debug"}).error,
              "--log-level: 'debug' is none of error, warning, notice, info");
    EXPECT_EQ(Parse({"--log", "Syslog"}).error, "--log: 'Syslog' is none of stderr, syslog");
}

TEST(Options, TheForegroundIsTakenAndChangesNothing)
{
    for (const char* option : {"-f", "--foreground"}) {
        EXPECT_EQ(Parse({option}).error, "") << option;
        EXPECT_FALSE(Parse({option}).status.has_value()) << option;
    }
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
        {"--console", "--no-console"},
        {"--config", ""},
        {"--config"},
        {"--check-config"},
        {"--check-config", "--config", "a.toml", "--reset-store"},
        {"--console", "maybe"},
        {"--log"},
        {"--log-level", ""},
    };
    for (const auto& line : lines) {
        Parsed parsed = Parse(line);
        EXPECT_EQ(parsed.errorStatus, 2) << line[0];
        EXPECT_NE(parsed.error, "") << line[0];
        EXPECT_EQ(parsed.error.find('\n'), std::string::npos) << parsed.error;
    }
}

TEST(Options, ACommunityHasUpTo255Octets)
{
    EXPECT_EQ(Parse({"--community", (std::string(255, 'c') + ":ro").c_str()}).error, "");
    const std::string longer(256, 'c');
    EXPECT_EQ(Parse({"--community", (longer + ":ro").c_str()}).error,
              "--community: '" + longer + "' has more than 255 octets");
}

TEST(Options, HelpAndVersionAnswerAndEndWithStatusZero)
{
    Parsed help = Parse({"--help"});
    ASSERT_TRUE(help.status.has_value());
    EXPECT_EQ(*help.status, 0);
    for (const char* option : {"--config", "--check-config", "--listen", "--community", "--store",
                               "--reset-store", "--console", "--no-console", "--help", "--version"})
        EXPECT_NE(help.out.find(option), std::string::npos) << option;
    Parsed version = Parse({"--version"});
    ASSERT_TRUE(version.status.has_value());
    EXPECT_EQ(*version.status, 0);
    EXPECT_EQ(version.out.compare(0, 9, "vkagentd "), 0);
}
