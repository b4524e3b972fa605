// The console on a terminal, as an operator uses it.
#include "ConsoleTerminal.h"

#include <sys/stat.h>

namespace {

const std::string kGreeting =
    "Type ? to list the commands, help COMMAND to explain one, q to end the agent.\r\n"
    "Try get 1.3.6.1.2.1.1.1.0 (sysDescr), set 1.3.6.1.2.1.1.4.0 4 me (sysContact).\r\n";
const std::string kDescr = "1.3.6.1.2.1.1.1.0 = Velkoran agent\r\n";
const std::string kLeft = "\033[D";
const std::string kUp = "\033[A";
const std::string kDelete = "\033[3~";
const std::string kBackspace = "\177";
const std::string kClearRow = "\r\033[K";

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
    for (int number :
         {SIGTERM, SIGINT, SIGHUP, SIGABRT, SIGQUIT, SIGBUS, SIGUSR1, SIGALRM, SIGXCPU, SIGRTMAX}) {
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

TEST_F(ConsoleTerminal, TheQuitKeyKillsTheAgentAndLeavesTheTerminalAsItWas)
{
    TerminalSession session(Command());
    Start(session);
    session.Type({Ctrl('\\')});
    EXPECT_EQ(session.Wait(), 128 + SIGQUIT);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, AnIgnoredSignalStaysIgnored)
{
    TerminalSession session(ByShell("trap '' QUIT USR1; exec \"$@\""));
    Start(session);
    for (int number : {SIGQUIT, SIGUSR1}) {
        kill(session.Pid(), number);
        session.Pause();
        EXPECT_FALSE(session.IsAsAtFirst());
        session.Type("help get\r");
        EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
    }
}

TEST_F(ConsoleTerminal, AHangUpEndsTheAgentAndRunsNoHalfLine)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("help set\r");
    session.Until(kNewPrompt);
    session.Type("set 1.3.6.1.2.1.1.4.0 4 half");
    session.Until("half");
    session.HangUp();
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_NE(ReadFile(history).find("set"), std::string::npos);
    TerminalSession next(Command());
    Start(next);
    next.Type("get 1.3.6.1.2.1.1.4.0\r");
    EXPECT_TRUE(next.Shows("= Mr. Qwin\r\n"));
}

TEST_F(ConsoleTerminal, AStoppedOutputHoldsUpNeitherTheWireNorTheEnd)
{
    TerminalSession session(Command());
    std::string address = Start(session);
    const Arguments set{oid::kSysContact, "s", "x"};
    session.StopOutput();
    session.Type("help get\r");
    EXPECT_NE(Ask(address, "snmpset", "public", set).output.find("noAccess"), std::string::npos)
        << "refused, and that is logged";
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    session.ResumeOutput();
    EXPECT_TRUE(session.Shows("get: Get\r\n"));
    Ask(address, "snmpset", "public", set);
    EXPECT_TRUE(session.Shows(" (1 before it were not logged)\r\n"));
    session.StopOutput();
    EXPECT_EQ(session.Kill(SIGTERM), 0);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, AnOutputThatNobodyReadsHoldsUpNeitherTheWireNorTheEnd)
{
    TerminalSession session(Command());
    std::string address = Start(session);
    std::string line = "getnext";
    for (int i = 0; i < 1500; ++i)
        line += " 1"; // more answers than a terminal keeps
    session.Type(line + "\r");
    EXPECT_TRUE(VLK::Eventually([&] { return session.Pending() >= 4000; }));
    EXPECT_EQ(Ask(address, "snmpget", "public", {oid::kSysDescr}).status, 0);
    kill(session.Pid(), SIGTERM);
    EXPECT_EQ(session.WaitWithoutReading(), 0);
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, PastedLinesRunOneAfterTheOther)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("help get\nhelp set\r\nget 1.3.6.1.2.1.1.1.0\nq\nhelp getnext\n");
    EXPECT_TRUE(session.Shows("get: Get\r\n"));
    EXPECT_TRUE(session.Shows("set: Set\r\n"));
    EXPECT_TRUE(session.Shows(kDescr));
    EXPECT_EQ(session.Wait(), 0);
}

TEST_F(ConsoleTerminal, WhatIsTypedAheadOfTheEndIsForWhoReadsNext)
{
    TerminalSession session(ByShell("\"$@\"; read answer; echo \"[$answer]\""));
    Start(session);
    session.Type("q\rnext\r");
    EXPECT_TRUE(session.Shows("[next]\r\n"));
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

TEST_F(ConsoleTerminal, ALogLineThatGoesElsewhereLeavesTheLineAlone)
{
    std::string log = directory.File("log");
    TerminalSession session(ByShell("exec \"$@\" 2>" + log));
    session.Until(kNewPrompt);
    std::string ready = ReadFile(log);
    std::string address = ready.substr(ready.find("udp:"));
    address.pop_back();
    session.Type("help g");
    session.Until("help g");
    EXPECT_NE(Ask(address, "snmpset", "public", {oid::kSysContact, "s", "x"}).status, 0);
    EXPECT_TRUE(VLK::Eventually([&] { return ReadFile(log).find("refused") != ready.npos; }));
    EXPECT_EQ(session.Pause(), "");
    session.Type("et\r");
    EXPECT_EQ(session.Until(kPrompt), "et\r\nget: Get\r\n" + kPrompt);
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

TEST_F(ConsoleTerminal, BytesThatAreNoCharacterTakeNoOtherWithThem)
{
    TerminalSession session(Command());
    Start(session);
    session.Type("help \xff\xc5g\xe2\x82" + std::string("et\r"));
    EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
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
    TerminalSession session(ByShell("exec \"$@\" >" + answers));
    ReadyOn(session);
    session.Type("help get\rq\r");
    EXPECT_EQ(session.Wait(), 0);
    EXPECT_EQ(ReadFile(answers), "get: Get\n");
    EXPECT_TRUE(session.IsAsAtFirst());
}

TEST_F(ConsoleTerminal, AHangUpEndsAnAgentWithoutEditingToo)
{
    TerminalSession session(ByShell("exec \"$@\" >/dev/null"));
    ReadyOn(session);
    session.HangUp();
    EXPECT_EQ(session.Wait(), 0);
}

TEST_F(ConsoleTerminal, ATerminalThatCanDoNothingStillHasItsConsole)
{
    for (const char* terminal : {"dumb", "unheard-of", ""}) {
        SCOPED_TRACE(terminal);
        TerminalSession session(Command({}, terminal));
        Start(session);
        session.Type("help get\r");
        EXPECT_TRUE(session.Shows("get: Get\r\n" + kPrompt));
        session.Type({Ctrl('D')});
        EXPECT_EQ(session.Wait(), 0);
    }
}

TEST_F(ConsoleTerminal, AnyTerminalOnStandardInputHasAConsole)
{
    int master = -1;
    int slave = -1;
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    const std::string lines = "help get\nq\n";
    EXPECT_EQ(write(master, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
    Process agent(Command(), {slave, directory.File("log")}); // not of the terminal's session
    EXPECT_EQ(agent.Line(), "get: Get");
    EXPECT_EQ(agent.Rest(), "");
    close(master);
    close(slave);
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
