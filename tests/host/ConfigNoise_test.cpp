// Configurations of random octets, and spoiled ones: told what is wrong with them, in
// lines that move no cursor, or accepted.
#include "host/HostError.h"
#include "host/Options.h"
#include "host/config/ConfigFile.h"

#include "tests/support/Seed.h"
#include "tests/support/TempDir.h"

#include <algorithm>
#include <random>
#include <sstream>
#include <vector>

using namespace VLK;
using namespace VLK::host;

namespace {

class ConfigNoise : public testing::Test {
protected:
    unsigned Below(size_t bound) { return static_cast<unsigned>(m_random() % bound); }
    std::string Octets(size_t count)
    {
        std::string octets;
        while (octets.size() < count)
            octets += static_cast<char>(Below(256));
        return octets;
    }
    // Of TOML's own characters, which goes deeper than octets do, and some that deceive a reader.
    std::string Characters(size_t count)
    {
        // NOLINTNEXTLINE(misc-misleading-bidirectional)
        static const std::string all = "[]{}=\"'\\#.,-+:_ \n\t01eEinftrux\x1b\xc2\x9b\xe2\x80\xae";
        std::string text;
        while (text.size() < count)
            text += all[Below(all.size())];
        return text;
    }
    std::string Spoiled(std::string text)
    {
        for (unsigned count = 1 + Below(4); count > 0 && !text.empty(); --count) {
            const size_t at = Below(text.size());
            switch (Below(7)) {
            case 0:
                text[at] = static_cast<char>(Below(256));
                break;
            case 1:
                text.insert(at, Characters(1 + Below(6)));
                break;
            case 2:
                text.erase(at, 1 + Below(20));
                break;
            case 3:
                text.resize(at);
                break;
            case 4: // a line more than once
                text.insert(text.rfind('\n', at) + 1,
                            text.substr(text.rfind('\n', at) + 1, Below(80)));
                break;
            case 5:
                Replace(text, at);
                break;
            default:
                text.insert(at, Octets(1 + Below(6)));
            }
        }
        return text;
    }

    // Whether it was accepted.
    bool Read(const std::string& text)
    {
        try {
            ReadConfigText(text, "noise", true);
            return true;
        } catch (const BConfigError& error) {
            EXPECT_FALSE(error.Lines().empty());
            for (const std::string& line : error.Lines())
                ExpectPrintable(line);
            EXPECT_EQ(error.Status(), eExitUsage);
            return false;
        }
    }
    static void ExpectPrintable(const std::string& line)
    {
        EXPECT_GT(line.size(), 5u);
        EXPECT_TRUE(std::none_of(line.begin(), line.end(), [](char c) {
            return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
        })) << testing::PrintToString(line);
        // U+0080 to U+009F
        for (size_t at = 0; (at = line.find('\xc2', at)) != line.npos; ++at) {
            const auto next = static_cast<unsigned char>(at + 1 < line.size() ? line[at + 1] : 0);
            EXPECT_TRUE(next < 0x80 || next >= 0xa0) << line;
        }
    }

    unsigned m_seed = VLK::Test::Seed();
    testing::ScopedTrace m_trace{__FILE__, __LINE__, "seed " + std::to_string(m_seed)};
    std::mt19937 m_random{m_seed};

private:
    // The value of a line by another.
    void Replace(std::string& text, size_t at)
    {
        static const std::vector<std::string> values{"-1",
                                                     "99999999999999999999",
                                                     "1e400",
                                                     "nan",
                                                     "true",
                                                     "\"\"",
                                                     "[]",
                                                     "{}",
                                                     "[[1]]",
                                                     "\"\\u0000\\u001b\"",
                                                     "\"everything\"",
                                                     "2026-01-01",
                                                     "\"1.3.6.1\"",
                                                     "'\x7f'"};
        const size_t from = text.find("= ", at);
        if (from != text.npos)
            text.replace(from + 2, text.find('\n', from) - from - 2, values[Below(values.size())]);
    }
};

std::string Example() { return ReadFile(std::string(VKMIBH_DOCS) + "/vkagentd.toml"); }

constexpr const char* kWhole = R"(agentAddress = ["udp:127.0.0.1:0", "udp6:[::1]:0"]
store = "/tmp/none"
contexts = ["bridge"]
snmpEnableAuthenTraps = true
workers = 3
timeToLive = 0
alarmCommunity = "c"
[[view]]
name = "v"
include = ["1.3.6.1.2.1.1", { subtree = "1.3.6.1.2.1.2.2.1.0.1", mask = "ff:a0" }]
exclude = ["1.3.6.1.2.1.1.4"]
[[community]]
name = "c"
read = "v"
write = ""
sources = ["192.0.2.0/24", "::1"]
[[community]]
name = "d"
securityName = "noc"
context = "bridge"
[[user]]
name = "u"
auth = "SHA-256"
authPassphrase = "12345678"
priv = "AES"
privPassphrase = "12345678"
read = "everything"
[[group]]
name = "g"
members = ["noc", { securityName = "alice", securityModel = "USM" }]
[[access]]
group = "g"
context = "br"
contextMatch = "prefix"
securityModel = "any"
securityLevel = "authPriv"
read = "v"
[[trapSink]]
address = "udp:127.0.0.1:162"
community = "c"
version = "2c"
inform = true
timeout = 0.5
retries = 1
)";

} // namespace

TEST_F(ConfigNoise, RandomOctetsAreToldOrAccepted)
{
    for (int i = 0; i < 5000; ++i) {
        Read(Octets(Below(400)));
        Read(Characters(Below(200)));
        ASSERT_FALSE(HasFailure()) << "round " << i;
    }
}

TEST_F(ConfigNoise, SpoiledConfigurationsAreToldOrAccepted)
{
    const std::vector<std::string> whole{Example(), kWhole};
    ASSERT_TRUE(Read(whole[0]));
    ASSERT_TRUE(Read(whole[1]));
    int accepted = 0;
    for (int i = 0; i < 5000; ++i) {
        const std::string text = Spoiled(whole[Below(2)]);
        accepted += Read(text);
        ASSERT_FALSE(HasFailure()) << testing::PrintToString(text);
    }
    EXPECT_GT(accepted, 100);
    EXPECT_LT(accepted, 4900);
}

TEST_F(ConfigNoise, DeepNestingEndsInALine)
{
    for (const char* open : {"[", "{a=", "[{a="}) {
        std::string text = "x = ";
        for (int i = 0; i < 50000; ++i)
            text += open;
        EXPECT_FALSE(Read(text));
    }
    std::string key = "x";
    for (int i = 0; i < 100000; ++i)
        key += ".x";
    EXPECT_FALSE(Read(key + " = 1"));
    EXPECT_FALSE(Read("[" + key + "]"));
}

TEST_F(ConfigNoise, CommandLinesAreToldOrFollowed)
{
    static const std::vector<std::string> words{"--listen",
                                                "--store",
                                                "--community",
                                                "--config",
                                                "--workers",
                                                "--check-config",
                                                "--reset-store",
                                                "--console",
                                                "--no-console",
                                                "udp:127.0.0.1:0",
                                                "public:ro",
                                                "a:rw",
                                                "--",
                                                "-",
                                                "",
                                                "=",
                                                "--listen=",
                                                "--workers=-1",
                                                "--workers=99999999999999999999",
                                                "--community=%s%n:rw",
                                                "\x1b[2J",
                                                "--\n"};
    int followed = 0;
    for (int i = 0; i < 20000; ++i) {
        std::vector<std::string> line{"vkagentd"};
        for (unsigned count = Below(6); count > 0; --count)
            line.push_back(Below(4) ? words[Below(words.size())] : Octets(Below(12)));
        std::vector<const char*> argv;
        for (const std::string& word : line)
            argv.push_back(word.c_str());
        argv.push_back(nullptr);
        SOptions options;
        std::ostringstream out;
        try {
            ParseOptions(static_cast<int>(line.size()), argv.data(), options, out);
            ++followed;
        } catch (const BHostError& error) {
            EXPECT_EQ(error.Status(), eExitUsage);
            ExpectPrintable(error.what());
        }
        ASSERT_FALSE(HasFailure()) << testing::PrintToString(line);
    }
    EXPECT_GT(followed, 100);
}
