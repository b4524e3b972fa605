// The console's thread: what ends it, and what does not.
#include "host/Console.h"
#include "host/HostError.h"

#include "tests/support/Threads.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>

using namespace VLK;
using namespace VLK::host;

namespace {

// Gives its lines one by one, then waits until it may go on.
class Script : public ICmdStream {
public:
    std::vector<std::string> lines;
    std::string after = kQuitWord;
    bool throws = false;
    std::atomic<bool> goesOn{true};
    std::string written;

    int GetLine(BString& line) override
    {
        if (m_next < lines.size()) {
            line = BString(lines[m_next++].c_str());
            return 0;
        }
        if (throws)
            throw std::runtime_error("the terminal is gone");
        EXPECT_TRUE(Eventually([this] { return goesOn.load(); }));
        line = BString(after.c_str());
        return 0;
    }
    int Write(const BString& text) override
    {
        written += text.c_str();
        return 0;
    }

private:
    size_t m_next = 0;
};

class ThrowingCommands : public BCmdHandler {
public:
    int CmdExecute(ICmdStream& out, const BString&, const BStringArray& args,
                   const BSecurityParams& security, const BString& context) override
    {
        model = security.securityModel;
        name = security.securityName.c_str();
        contextName = context.c_str();
        if (args.Count() > 0)
            throw std::runtime_error("broken");
        out.Write(BString("done\n"));
        return 1;
    }
    const char* CmdGetHndlrName() const override { return "\"Throwing\""; }
    const SCmdMapEntry* CmdGetMap() const override
    {
        static const SCmdMapEntry map[] = {{0, "run", "Run", nullptr},
                                           {-1, nullptr, nullptr, nullptr}};
        return map;
    }

    int model = 0;
    std::string name = "?";
    std::string contextName = "?";
};

bool HasEnded(const BStopSignals& stop)
{
    pollfd wait{stop.Descriptor(), POLLIN, 0};
    return poll(&wait, 1, 0) == 1;
}

class ConsoleEngine : public testing::Test {
protected:
    ConsoleEngine() { pthread_sigmask(SIG_SETMASK, nullptr, &m_signals); }
    // BStopSignals leaves them blocked, until the end of its process.
    ~ConsoleEngine() override { pthread_sigmask(SIG_SETMASK, &m_signals, nullptr); }

    Script& script = *new Script;
    std::unique_ptr<ICmdStream> stream{&script};
    ThrowingCommands commands;
    BStopSignals stop;

private:
    sigset_t m_signals;
};

} // namespace

TEST_F(ConsoleEngine, QuittingEndsTheAgent)
{
    BConsole console({&commands}, std::move(stream), stop);
    EXPECT_TRUE(Eventually([this] { return HasEnded(stop); }));
    EXPECT_NO_THROW(console.End());
}

TEST_F(ConsoleEngine, ACommandThatThrowsIsToldAndTheNextIsRun)
{
    script.lines = {"run x", "run"};
    BConsole console({&commands}, std::move(stream), stop);
    console.End();
    EXPECT_GT(script.written.size(), std::string("done\n").size());
    EXPECT_EQ(script.written.substr(script.written.size() - 5), "done\n") << script.written;
}

TEST_F(ConsoleEngine, AStreamThatThrowsEndsTheAgentWithItsReason)
{
    script.throws = true;
    BConsole console({&commands}, std::move(stream), stop);
    EXPECT_TRUE(Eventually([this] { return HasEnded(stop); }));
    try {
        console.End();
        ADD_FAILURE() << "the agent would end as if all was well";
    } catch (const BHostError& error) {
        EXPECT_STREQ(error.what(), "the console failed: the terminal is gone");
        EXPECT_NE(error.Status(), eExitDone);
    }
}

TEST_F(ConsoleEngine, ItsDestructionEndsTheAgentToo)
{
    script.goesOn = false;
    std::thread other([this] {
        EXPECT_TRUE(Eventually([this] { return HasEnded(stop); }));
        script.goesOn = true;
    });
    {
        BConsole console({&commands}, std::move(stream), stop);
        EXPECT_FALSE(HasEnded(stop));
    }
    other.join();
}

TEST_F(ConsoleEngine, CommandsRunUnnamedWithTheModelThatNoRequestOfTheWireHas)
{
    script.lines = {"run"};
    BConsole console({&commands}, std::move(stream), stop);
    console.End();
    EXPECT_EQ(commands.model, 3);
    EXPECT_EQ(commands.name, "");
    EXPECT_EQ(commands.contextName, "");
}

TEST_F(ConsoleEngine, TheNamesToTypeAreTheConsolesAndTheHandlers)
{
    EXPECT_EQ(CommandNames({&commands, &commands}),
              (std::vector<std::string>{"q", "?", "help", "clivacm", "run", "run"}));
}
