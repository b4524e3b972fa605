// Whole sessions, compared byte by byte with those in transcripts/. A line that
// begins with the prompt is what the operator types, the rest is output.
//
// VKMIBH_RECORD_TRANSCRIPTS=1 writes the files anew, and fails: look at the
// difference before you keep it.
#include "tests/console/TestHandler.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>
#include <vkmibh/cli.h>

namespace VLK {
namespace {

using Test::StringOf;
using Test::TestHandler;

constexpr char kPrompt[] = "agent> ";

// Types the lines of a session, and puts down what a terminal would show.
class Session : public ICmdStream {
public:
    explicit Session(const std::string& name)
        : m_path(std::string(VKMIBH_TRANSCRIPTS) + "/" + name + ".txt")
    {
        std::ifstream file(m_path, std::ios::binary);
        m_expected.assign(std::istreambuf_iterator<char>(file), {});
        EXPECT_NE(m_expected, "") << "no " << m_path;
        std::istringstream lines(m_expected);
        const std::string prompt = kPrompt;
        for (std::string line; std::getline(lines, line);) {
            if (line.compare(0, prompt.size(), prompt) == 0)
                m_typed.push_back(line.substr(prompt.size()));
        }
    }

    int GetLine(BString& line) override
    {
        // Beyond the last line the session must have ended.
        if (m_next == m_typed.size())
            throw std::runtime_error("still prompting after:\n" + m_shown);
        m_shown += m_typed[m_next] + "\n";
        line = StringOf(m_typed[m_next++]);
        return 0;
    }
    int Write(const BString& text) override
    {
        m_shown.append(text.c_str(), text.length());
        return 0;
    }

    void Check() const
    {
        if (std::getenv("VKMIBH_RECORD_TRANSCRIPTS")) {
            std::ofstream(m_path, std::ios::binary) << m_shown;
            FAIL() << "recorded " << m_path;
        }
        EXPECT_EQ(m_shown, m_expected);
    }

private:
    const std::string m_path;
    std::string m_expected;
    std::vector<std::string> m_typed;
    std::size_t m_next = 0;
    std::string m_shown;
};

// Tells only whose it is.
class Owner : public TestHandler {
public:
    using TestHandler::TestHandler;
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray&, const BSecurityParams&,
                   const BString&) override
    {
        const char* const name = CmdHndlrName();
        out.Write(StringOf("[" + Text(cmd) + "] of " + (name ? name : "nobody") + "\n"));
        return 0;
    }
};

TEST(CliTranscripts, CommandsOfTheConsole)
{
    Session session("builtins");
    BCLI console(&session);
    console.Start(kPrompt, "q");
    session.Check();
}

TEST(CliTranscripts, CommandsOfHandlersAndTheirBeginnings)
{
    Session session("commands");
    TestHandler mib("\"CMib\"", {{0, "get", "Get values", "<oid> ..."},
                                 {1, "getnext", "Get the values after these", "<oid> ..."},
                                 {2, "set", "Set values", "<oid>=<value> ..."}});
    TestHandler other("\"COther\"", {{0, "quiet", nullptr, nullptr},
                                     {1, "fourteen-chars", nullptr, "<a>"},
                                     {2, "fifteen-letters", nullptr, "<b>"},
                                     {3, "a-name-that-is-longer", nullptr, "<c>"}});
    BCLI console(&mib, &session);
    EXPECT_EQ(console.Register(&other), 4);
    console.Start(kPrompt, "q");
    session.Check();
}

TEST(CliTranscripts, RefusedRegistrations)
{
    Session session("registration");
    Owner first("\"CFirst\"", {{0, "getnext", nullptr, "of the first"},
                               {1, nullptr, "no name", nullptr},
                               {2, "set", nullptr, nullptr}});
    Owner second("\"CSecond\"", {{0, "get", nullptr, nullptr}, {1, "walk", nullptr, nullptr}});
    Owner third("\"CThird\"", {{0, "wal", nullptr, nullptr},
                               {1, "walk", nullptr, nullptr},
                               {2, "getbulk", nullptr, nullptr},
                               {3, "get", nullptr, "of the third"},
                               {4, "get", nullptr, nullptr},
                               {5, "setall", nullptr, nullptr}});
    Owner nameless(nullptr, {{0, "quiet", nullptr, nullptr}});
    Owner last("\"CLast\"", {{0, "qui", nullptr, nullptr}, {1, "help", "Mine", "of the last"}});
    BCLI console(&first, &session);
    EXPECT_EQ(console.Register(&second), 2);
    EXPECT_EQ(console.Register(&third), 6);
    EXPECT_EQ(console.Register(&nameless), 1);
    EXPECT_EQ(console.Register(&last), 2);
    console.Start(kPrompt, "q");
    session.Check();
}

TEST(CliTranscripts, AnotherQuitName)
{
    Session session("quitname");
    TestHandler other("\"COther\"", {{0, "quiet", nullptr, nullptr}});
    BCLI console(&other, &session);
    console.Start(kPrompt, "exit");
    session.Check();
}

TEST(CliTranscripts, AccessIdentityAndTheLevelWordInTheModel)
{
    Session session("clivacm");
    TestHandler show("\"CShow\"", {{0, "show", "Show who asks", nullptr}});
    BCLI console(&show, &session);
    console.Start(kPrompt, "q");
    session.Check();
}

} // namespace
} // namespace VLK
