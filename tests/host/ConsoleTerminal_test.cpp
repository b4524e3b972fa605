// The console on a terminal, as an operator uses it.
#include "RunningAgent.h"
#include "TerminalSession.h"

#include "tests/support/SnmpTools.h"

#include <sys/stat.h>

namespace {

const std::string kPrompt = "vk> ";
// The editor draws the prompt again as it likes; this one follows an answer.
const std::string kNewPrompt = "\r\n" + kPrompt;
const std::string kGreeting =
    "Type ? to list the commands, help COMMAND to explain one, q to end the agent.\r\n"
    "Try get 1.3.6.1.2.1.1.1.0 (sysDescr), set 1.3.6.1.2.1.1.4.0 4 me (sysContact).\r\n";
const std::string kDescr = "1.3.6.1.2.1.1.1.0 = Velkoran agent\r\n";
const std::string kLeft = "\033[D";
const std::string kUp = "\033[A";
const std::string kDelete = "\033[3~";
const std::string kBackspace = "\177";
const std::string kClearRow = "\r\033[K";

constexpr char Ctrl(char letter) { return static_cast<char>(letter & 0x1f); }

class ConsoleTerminal : public testing::Test {
protected:
    // The environment of an operator who said nothing about languages.
    Arguments Command(const Arguments& options = {}, const std::string& terminal = "xterm") const
    {
        Arguments line{"env",
                       "-u",
                       "LANG",
                       "-u",
                       "LC_ALL",
                       "-u",
                       "LC_CTYPE",
                       "TERM=" + terminal,
                       "XDG_STATE_HOME=" + directory.Path()};
        const Arguments agent{VKAGENTD,    "--store",         store,
                              "--listen",  "udp:127.0.0.1:0", "--community",
                              "public:ro", "--community",     "private:rw"};
        line.insert(line.end(), agent.begin(), agent.end());
        line.insert(line.end(), options.begin(), options.end());
        return line;
    }

    // Reads the line that says where, and up to the prompt.
    std::string Start(TerminalSession& session) const
    {
        std::string address = ReadyOn(session);
        session.Until(kNewPrompt);
        return address;
    }
    static std::string ReadyOn(TerminalSession& session)
    {
        EXPECT_TRUE(session.Shows("vkagentd: ready on "));
        std::string line = session.Until("\r\n");
        return line.substr(0, line.size() - 2);
    }

    Outcome Ask(const std::string& address, const std::string& tool, const std::string& community,
                const Arguments& rest) const
    {
        return tools.Ask(address, tool, "2c", community, rest);
    }

    TempDir directory;
    std::string store = directory.File("store.db");
    std::string history = directory.File("vkagentd/history");
    SnmpTools tools;
};

} // namespace

TEST_F(ConsoleTerminal, GreetsInTwoLinesPromptsAnswersAndQuits)
{
    TerminalSession session(Command());
    std::string address = ReadyOn(session);
    EXPECT_EQ(session.Until(kPrompt), kGreeting + kPrompt);
    session.Type("get 1.3.6.1.2.1.1.1.0\r");
    EXPECT_EQ(session.Until(kPrompt), "get 1.3.6.1.2.1.1.1.0\r\n" + kDescr + kPrompt);
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    session.Type("q\r");
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, ThePromptBeginsALineAlsoAfterATextThatEndsNone)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("get\r");
    EXPECT_EQ(session.Until(kPrompt), "get\r\nget: argument(s) required.\r\n"
                                      "Usage get <oid> [<oid> ...] [-aIpAddress]\r\n" +
                                          kPrompt);
}

TEST_F(ConsoleTerminal, KeysEditTheLine)
{
    TerminalSession session(Command());
    Start(session);
    const std::string rest = " 1.3.6.1.2.1.1.1.0";
    const std::string lines[] = {
        "gt" + kLeft + "e" + Ctrl('E') + rest,
        "gxet" + kLeft + kLeft + kBackspace + Ctrl('E') + rest,
        "gxet" + kLeft + kLeft + kLeft + kDelete + Ctrl('E') + rest,
        "et" + rest + Ctrl('A') + "g",
        "nonsense" + std::string(1, Ctrl('U')) + "get" + rest,
        "get" + rest + "xyz" + kBackspace + kBackspace + kBackspace,
        "get" + rest + "\033OH" + kDelete + "g",
    };
    for (const std::string& line : lines) {
        SCOPED_TRACE(line);
        session.Type(line + "\r");
        EXPECT_TRUE(session.Shows("\r\n" + kDescr + kPrompt));
    }
}

TEST_F(ConsoleTerminal, TheUpArrowRepeatsLinesAlsoThoseOfTheLastAgent)
{
    {
        TerminalSession session(Command());
        Start(session);
        session.Type("help set\r");
        session.Until(kNewPrompt);
        session.Type("help get\r");
        session.Until(kNewPrompt);
        session.Type(kUp + kUp + "\r");
        EXPECT_TRUE(session.Shows("set: Set\r\n" + kPrompt));
        session.Type("q\r");
        EXPECT_EQ(session.Wait(), 0);
    }
    struct stat status = {};
    ASSERT_EQ(stat(history.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    TerminalSession session(Command());
    Start(session);
    session.Type(kUp + kUp + kUp + "\r"); // q, help set, help get
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
}

TEST_F(ConsoleTerminal, ASignalKeepsTheHistoryToo)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("help set\r");
    session.Until(kNewPrompt);
    EXPECT_EQ(session.Kill(SIGTERM), 0);
    EXPECT_NE(ReadFile(history).find("set"), std::string::npos);
}

TEST_F(ConsoleTerminal, AHistoryThatCannotBeKeptIsNoError)
{
    std::filesystem::create_directories(history);
    TerminalSession session(Command());
    Start(session);
    session.Type("help get\r");
    session.Until(kNewPrompt);
    session.Type(kUp + "\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    session.Type("q\r");
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_TRUE(std::filesystem::is_directory(history));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.File("vkagentd")), {}),
              1);
}

TEST_F(ConsoleTerminal, TabCompletesTheOnlyNameAndListsSeveral)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("s\t");
    EXPECT_TRUE(session.Shows("et "));
    session.Type(std::string(1, Ctrl('U')) + "help cl\t\r");
    EXPECT_TRUE(session.Shows("clivacm: Print OR modify CLI VACM parameters\r\n" + kPrompt));
    session.Type("g\t");
    EXPECT_TRUE(session.Shows("et"));
    EXPECT_EQ(session.Pause(), "") << "get or getnext";
    session.Type("\t");
    EXPECT_TRUE(session.Shows("\r\nget  getnext\r\n"));
    EXPECT_TRUE(session.Shows(kPrompt + "get"));
    session.Type("n\t1.3.6.1.2.1.1.1\r");
    EXPECT_TRUE(session.Shows(kDescr + kPrompt));
    session.Type("x\t");
    EXPECT_TRUE(session.Shows("\a")) << "nothing begins so";
}

TEST_F(ConsoleTerminal, TheEndOfInputEndsTheAgentOnAnEmptyLineOnly)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("help get");
    session.Type({Ctrl('D')});
    session.Pause();
    session.Type("\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    session.Type({Ctrl('D')});
    EXPECT_EQ(session.Until("\r\n"), "^D\r\n");
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, EverySignalThatEndsTheAgentLeavesTheTerminalAsItWas)
{
    for (int number : {SIGTERM, SIGINT, SIGHUP, SIGABRT, SIGQUIT, SIGBUS}) {
        SCOPED_TRACE(number);
        TerminalSession session(Command());
        Start(session);
        session.Type("half a li");
        session.Pause();
        EXPECT_FALSE(session.IsAsAtFirst());
        bool clean = number == SIGTERM || number == SIGINT || number == SIGHUP;
        int status = session.Kill(number);
        // A sanitizer ends the program in its own way.
        EXPECT_TRUE(clean ? status == 0 : status > 0) << status;
        EXPECT_TRUE(session.IsAsAtFirst());
    }
}

TEST_F(ConsoleTerminal, TheInterruptKeyEndsTheAgent)
{
    TerminalSession session(Command());
    Start(session);
    session.Type({Ctrl('C')});
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, AnAgentThatCannotStartLeavesTheTerminalAsItWas)
{
    RunningAgent first(directory.File("first.db"));
    ASSERT_TRUE(first.IsReady()) << first.FirstLine();
    TerminalSession session({VKAGENTD, "--store", store, "--listen", first.Address()});
    EXPECT_TRUE(session.Shows("Address already in use\r\n"));
    EXPECT_EQ(session.Wait(), 2);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, ALogLineGoesAboveTheLineThatIsEdited)
{
    TerminalSession session(Command());
    std::string address = Start(session);
    const rlimit limit{100, 100};
    ASSERT_EQ(prlimit(session.Pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
    session.Type("help g");
    EXPECT_TRUE(session.Shows("help g"));
    EXPECT_NE(Ask(address, "snmpset", "private", {oid::kSysContact, "s", "x"}).status, 0);
    EXPECT_TRUE(session.Shows(kClearRow + "vkagentd: the store cannot be written: "));
    EXPECT_TRUE(session.Shows("\r\n"));
    EXPECT_TRUE(session.Shows(kPrompt + "help g"));
    session.Type("et\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n"));
}

TEST_F(ConsoleTerminal, WhatIsTypedMayBeOfAnyLanguage)
{
    const std::string typed = "clivacm gda\u0144\u0142sk" + kLeft + kLeft + kBackspace + "\r";
    TerminalSession session(Command());
    Start(session);
    for (const std::string& keys : {typed, kUp + "\r"}) {
        session.Type(keys);
        EXPECT_TRUE(session.Shows("SecurityName: gda\u0144sk\r\n"));
        EXPECT_TRUE(session.Shows(kNewPrompt));
    }
}

TEST_F(ConsoleTerminal, AValueDoesNotMoveTheCursor)
{
    TerminalSession session(Command());
    std::string address = Start(session);
    EXPECT_EQ(Ask(address, "snmpset", "private", {oid::kSysContact, "x", "61 08 62"}).status, 0);
    session.Type("get 1.3.6.1.2.1.1.4.0\r");
    EXPECT_TRUE(session.Shows(" = a?b\r\n" + kPrompt));
}

TEST_F(ConsoleTerminal, WithoutItTheTerminalIsNeverReadNorSet)
{
    TerminalSession session(Command({"--no-console"}));
    std::string address = ReadyOn(session);
    session.Type("q\r");
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    EXPECT_EQ(session.Unread(), 2);
    EXPECT_EQ(session.Pause(), "q\r\n") << "only the terminal's own echo";
    EXPECT_TRUE(session.IsAsAtFirst());
    EXPECT_EQ(session.Kill(SIGTERM), 0);
}

TEST_F(ConsoleTerminal, WithoutATerminalForTheAnswersThereIsNeitherPromptNorEditing)
{
    std::string answers = directory.File("answers");
    Arguments line{"sh", "-c", "exec \"$0\" \"$@\" >" + answers};
    for (const std::string& word : Command())
        line.push_back(word);
    TerminalSession session(line);
    ReadyOn(session);
    session.Type("help get\rq\r");
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_EQ(ReadFile(answers), "get: Get\n");
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, ATerminalThatCanDoNothingStillHasItsConsole)
{
    TerminalSession session(Command({}, "dumb"));
    Start(session);
    session.Type("help get\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    session.Type({Ctrl('D')});
    EXPECT_EQ(session.Wait(), 0);
}

TEST_F(ConsoleTerminal, ANarrowedTerminalShowsTheLineAgain)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("help get");
    session.Pause();
    session.Resize(40);
    EXPECT_TRUE(session.Shows(kPrompt + "help get"));
    session.Type("\r");
    EXPECT_TRUE(session.Shows("get: Get\r\n"));
}

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
};

} // namespace

TEST_F(ConsoleJob, InTheBackgroundItServesWithoutAConsoleUntilItComesBack)
{
    TerminalSession session(Shell());
    session.Until("shell$ ");
    session.Type(CommandText() + "\r");
    session.Until("\n");
    std::string address = Start(session);
    session.Type("help g");
    session.Pause();
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
    session.Until("shell$ ");
    session.Type(CommandText() + "\r");
    session.Until("\n");
    Start(session);
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
