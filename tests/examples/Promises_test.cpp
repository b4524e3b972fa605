// Every example does what its first comment promises.
#include "FirstComment.h"
#include "RunningExample.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

const std::string kPromisedAddress = "127.0.0.1:1161";

void Replace(std::string& text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

Arguments WordsOf(const std::string& text)
{
    std::istringstream words(text);
    return Arguments(std::istream_iterator<std::string>(words), {});
}

class Promises : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override
    {
        ASSERT_GE(m_commands.size(), 5u);
        const Arguments start = WordsOf(m_commands[0].text);
        ASSERT_GE(start.size(), 3u);
        EXPECT_EQ(Arguments(start.begin(), start.begin() + 3),
                  (Arguments{"./dev", "example", GetParam()}));
        if (start.size() > 3) {
            EXPECT_EQ(start[3], kPromisedAddress);
            m_arguments.assign(start.begin() + 4, start.end());
        }
    }

    // All commands in one shell, as they are typed.
    std::string Script(const std::string& directory, std::string address) const
    {
        address.erase(0, std::string("udp:").size());
        std::string script = "cd " + directory + "\n";
        for (size_t i = 1; i < m_commands.size(); ++i) {
            std::string command = m_commands[i].text;
            Replace(command, kPromisedAddress, address);
            script += "{ " + command + "\n} 2>&1; echo '#'\n";
        }
        return script;
    }

    const std::vector<Command> m_commands = CommandsOf(GetParam());
    Arguments m_arguments;
};

// Those that are built.
Arguments Examples()
{
    Arguments names;
    std::istringstream list(EXAMPLE_NAMES);
    for (std::string name; std::getline(list, name, ',');)
        names.push_back(name);
    return names;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Examples, Promises, testing::ValuesIn(Examples()),
                         [](const auto& test) { return test.param; });

TEST_P(Promises, EveryCommandAnswersAsTheCommentSays)
{
    RunningExample example(GetParam(), m_arguments);
    RunningServer& server = example.Server();
    const std::string ready = "example_" + GetParam() + ": ready on udp:127.0.0.1:";
    ASSERT_EQ(server.FirstLine().find(ready), 0u) << server.FirstLine();

    const Outcome outcome =
        server.Tools().Run({"sh", "-c", Script(example.Directory(), server.Address())});
    size_t from = 0;
    for (size_t i = 1; i < m_commands.size(); ++i) {
        const size_t end = outcome.output.find("#\n", from);
        ASSERT_NE(end, outcome.output.npos) << outcome.output;
        EXPECT_EQ(outcome.output.substr(from, end - from), m_commands[i].answer)
            << m_commands[i].text;
        from = end + 2;
    }
    EXPECT_EQ(outcome.output.substr(from), "");
    EXPECT_EQ(server.Kill(SIGTERM), 0);
    EXPECT_EQ(server.Rest(), "");
}

TEST_P(Promises, NothingIsLeftBehind)
{
    RunningExample example(GetParam());
    ASSERT_TRUE(example.Server().IsReady()) << example.Server().FirstLine();
    EXPECT_EQ(example.Server().Kill(SIGINT), 0);
    EXPECT_TRUE(std::filesystem::remove(example.Directory() + "/build")) << "it was not empty";
    EXPECT_TRUE(std::filesystem::is_empty(example.Directory()));
}

TEST_P(Promises, ABadAddressIsOneLineAndStatusTwo)
{
    RunningExample example(GetParam(), {}, "here");
    EXPECT_EQ(example.Server().FirstLine().find("usage: "), 0u) << example.Server().FirstLine();
    EXPECT_EQ(example.Server().Wait(), 2);
    EXPECT_EQ(example.Server().Rest(), "");
}

// What is no program is tested by nobody.
TEST(Promises, AreMadeForEveryExample)
{
    Arguments folders;
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLE_SOURCES)) {
        if (entry.is_directory())
            folders.push_back(entry.path().filename());
    }
    std::sort(folders.begin(), folders.end());
    EXPECT_EQ(folders, Examples());
}
