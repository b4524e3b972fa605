// The console of an agent that a shell stops, continues and keeps in the
// background.
#include "ConsoleTerminal.h"

#include <sys/stat.h>

namespace {

// The agent as a job of an interactive shell.
class ConsoleJob : public ConsoleTerminal {
protected:
    std::string CommandText() const
    {
        std::string text;
        for (const std::string& word : Command())
            text += "'" + word + "' ";
        return text;
    }
    static Arguments Shell()
    {
        return {"env", "PS1=shell$ ", "bash", "--norc", "--noprofile", "-i"};
    }
    // Leaves the terminal's settings to its jobs.
    static Arguments PlainShell() { return {"env", "PS1=shell$ ", "dash", "-i"}; }

    std::string StartByShell(TerminalSession& session, const std::string& beside = "") const
    {
        session.Until("shell$ ");
        session.Type(CommandText() + beside + "\r");
        session.Until("\n");
        return Start(session);
    }
    // The shell tells what its job does when it is asked.
    static bool JobIs(TerminalSession& session, const std::string& state)
    {
        return VLK::Eventually([&] {
            session.Type("jobs\r");
            return session.Until("shell$ ").find(state) != std::string::npos;
        });
    }
};

// Reads nothing of what is typed, for as long as it lives.
class ForegroundJob {
public:
    ForegroundJob(TerminalSession& session, const std::string& fifo)
    {
        EXPECT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        m_fifo = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
        session.Type("cat " + fifo + "\r");
        EXPECT_EQ(write(m_fifo, "it runs\n", 8), 8);
        session.Until("it runs\r\n");
    }
    ~ForegroundJob() { close(m_fifo); }
    ForegroundJob(const ForegroundJob&) = delete;
    ForegroundJob& operator=(const ForegroundJob&) = delete;

private:
    int m_fifo = -1;
};

} // namespace

TEST_F(ConsoleJob, InTheBackgroundItServesWithoutAConsoleUntilItComesBack)
{
    TerminalSession session(Shell());
    std::string address = StartByShell(session);
    session.Type("help g");
    EXPECT_TRUE(session.Shows("help g")) << "the key to stop it throws away what was not read";
    session.Type({Ctrl('Z')});
    EXPECT_TRUE(session.Shows("Stopped"));
    session.Until("shell$ ");
    session.Type("bg\r");
    session.Until("shell$ ");
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    session.Type("echo still $((40 + 2))\r");
    EXPECT_TRUE(session.Shows("still 42\r\n")) << "what is typed is the shell's";
    session.Type("fg\r");
    EXPECT_TRUE(session.Shows(kPrompt + "help g"));
    session.Type("et\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    session.Type("q\r");
    EXPECT_TRUE(session.Shows("shell$ "));
    session.Type("echo status $?\r");
    EXPECT_TRUE(session.Shows("status 0\r\n"));
}

TEST_F(ConsoleJob, ASignalEndsItInTheBackgroundToo)
{
    TerminalSession session(Shell());
    StartByShell(session);
    session.Type({Ctrl('Z')});
    session.Until("shell$ ");
    session.Type("bg\r");
    session.Until("shell$ ");
    session.Type("kill %1; wait %1; echo status $?\r");
    EXPECT_TRUE(session.Shows("status 0\r\n"));
}

TEST_F(ConsoleJob, StartedInTheBackgroundItHasNoConsole)
{
    TerminalSession session(Shell());
    session.Until("shell$ ");
    session.Type(CommandText() + "&\r");
    session.Until("\n");
    std::string address = ReadyOn(session);
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    session.Type("echo still $((40 + 2))\r");
    EXPECT_TRUE(session.Shows("still 42\r\n"));
    session.Type("kill %1; wait %1; echo status $?\r");
    EXPECT_TRUE(session.Shows("status 0\r\n"));
}

TEST_F(ConsoleJob, StartedInTheBackgroundWithOneItStopsUntilItIsInTheForeground)
{
    TerminalSession session(Shell());
    session.Until("shell$ ");
    session.Type(CommandText() + "--console &\r");
    session.Until("shell$ ");
    EXPECT_TRUE(JobIs(session, "Stopped"));
    session.Type("bg\r");
    session.Until("shell$ ");
    EXPECT_TRUE(JobIs(session, "Stopped")) << "as any job that reads the terminal";
    session.Type("fg\r");
    Start(session);
    session.Type("q\r");
    session.Until("shell$ ");
    session.Type("echo status $?\r");
    EXPECT_TRUE(session.Shows("status 0\r\n"));
}

TEST_F(ConsoleJob, StoppedItLeavesTheTerminalAsItFoundIt)
{
    TerminalSession session(PlainShell());
    session.Until("shell$ ");
    session.Type("stty -echoe -onlcr\r");
    session.Until("shell$ ");
    session.RememberSettings();
    session.Type(CommandText() + "\r");
    session.Until(kPrompt);
    EXPECT_FALSE(session.IsAsAtFirst());
    session.Type({Ctrl('Z')});
    session.Until("shell$ ");
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleJob, SettingsThatChangedWhileItWasStoppedAreThoseItLeaves)
{
    TerminalSession session(PlainShell());
    StartByShell(session);
    session.Type({Ctrl('Z')});
    session.Until("shell$ ");
    session.Type("stty -ixon erase ^H\r");
    session.Until("shell$ ");
    session.RememberSettings();
    session.Type("fg\r");
    session.Until(kPrompt);
    session.Type("help gx");
    session.Type({Ctrl('H')});
    session.Type("et\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    EXPECT_FALSE(session.IsAsAtFirst()) << "set for editing again";
    session.Type("q\r");
    session.Until("shell$ ");
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleJob, SettingsForEditingAreNotTakenForTheShells)
{
    TerminalSession session(PlainShell());
    session.Until("shell$ ");
    session.RememberSettings();
    session.Type(CommandText() + "\r");
    session.Until("\n");
    Start(session);
    session.KillForeground(SIGSTOP); // leaves no time to put them back
    session.Until("shell$ ");
    EXPECT_FALSE(session.IsAsAtFirst());
    session.Type("fg\r");
    session.Until(kPrompt);
    session.Type("help get\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    session.Type("q\r");
    session.Until("shell$ ");
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleJob, SettingsThatAShellMadeMeanwhileAreLeftAlone)
{
    TerminalSession session(PlainShell());
    StartByShell(session);
    session.KillForeground(SIGSTOP);
    session.Until("shell$ ");
    session.Type("stty sane -ixon\r");
    session.Until("shell$ ");
    session.RememberSettings();
    session.Type("fg\r");
    session.Until(kPrompt);
    session.Type("q\r");
    session.Until("shell$ ");
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleJob, PlainLinesInTheBackgroundStopNothingEither)
{
    TerminalSession session(Shell());
    session.Until("shell$ ");
    session.Type(CommandText() + "| cat\r");
    session.Until("\n");
    std::string address = ReadyOn(session);
    session.Type("help set\r");
    EXPECT_TRUE(session.Shows("set: Set\r\n"));
    session.Pause(); // it waits for the next line
    session.Type({Ctrl('Z')});
    session.Until("shell$ ");
    session.Type("bg\r");
    session.Until("shell$ ");
    {
        ForegroundJob other(session, directory.File("fifo"));
        session.Type("\r");
        session.Pause();
        EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    }
    session.Until("shell$ ");
    session.Type("fg\r");
    session.Until("| cat\r\n");
    session.Type("help get\rq\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n"));
    session.Until("shell$ ");
    session.Type("echo status ${PIPESTATUS[0]}\r");
    EXPECT_TRUE(session.Shows("status 0\r\n"));
}

TEST_F(ConsoleJob, OutsideTheTerminalsSessionItHasNoConsole)
{
    TerminalSession session(Shell());
    session.Until("shell$ ");
    std::string number = directory.File("number");
    session.Type("setsid sh -c 'echo $$ >" + number + "; exec \"$@\"' sh " + CommandText() + "&\r");
    std::string address = ReadyOn(session);
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    session.Type("\recho still $((40 + 2))\r");
    EXPECT_EQ(session.Until("still 42\r\n").find("Type ?"), std::string::npos);
    EXPECT_EQ(kill(std::stoi(ReadFile(number)), SIGKILL), 0);
}
