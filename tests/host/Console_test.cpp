// The console on pipes, as a script uses it.
#include "host/PlainLines.h"

#include "PipedAgent.h"

#include <sys/resource.h>

namespace {

const std::string kGetDescr = "get 1.3.6.1.2.1.1.1.0\n";
const std::string kDescr = "1.3.6.1.2.1.1.1.0 = Velkoran agent\n";
const std::string kGetContact = "get 1.3.6.1.2.1.1.4.0\n";

std::string Contact(const std::string& value) { return "1.3.6.1.2.1.1.4.0 = " + value + "\n"; }

std::string SetContact(const std::string& value)
{
    return "set 1.3.6.1.2.1.1.4.0 4 " + value + "\n";
}

class Console : public testing::Test {
protected:
    // What an agent answers to these commands from its start to its end.
    std::string Answers(const std::string& commands)
    {
        PipedAgent agent(store);
        std::string answers = agent.Answers(commands);
        EXPECT_EQ(agent.Wait(), 0) << agent.LogText();
        return answers;
    }

    TempDir directory;
    std::string store = directory.File("store.db");
};

} // namespace

TEST_F(Console, AScriptGetsTheLibrarysTextsByteForByteAndNoPrompt)
{
    EXPECT_EQ(Answers("get 1.3.6.1.2.1.1.1.0\n"
                      "help get\n"
                      "? g\n"
                      "clivacm bob SNMPv2c authPriv ctx\n"
                      "set 1.3.6.1.2.1.1.4.0 4 me\n"
                      "q\n"),
              "1.3.6.1.2.1.1.1.0 = Velkoran agent\n"
              "get: Get\n"
              " Command        Argument(s)\n"
              " -------------  -------------------------------------------------------------\n"
              " get            <oid> [<oid> ...] [-aIpAddress]\n"
              " getnext        <oid> [<oid> ...] [-aIpAddress]\n"
              "\n"
              "*** CLI\n"
              " VACM Params: \n"
              "   SecurityName: bob\n"
              "   SecurityModel: USM\n"
              "   SecurityLevel: noAuthNoPriv\n"
              "   ContextName: ctx\n"
              "snmpErr: authorizationError at index 1");
    EXPECT_EQ(Answers(kGetContact), Contact("Mr. Qwin"));
}

TEST_F(Console, AllCommandsAreListed)
{
    EXPECT_EQ(Answers("?\n"),
              " Command        Argument(s)\n"
              " -------------  -------------------------------------------------------------\n"
              " q\n"
              " ?\n"
              " help           <cmd>\n"
              " clivacm        [secName [secModel [secLevel [contextName]]]]\n"
              " agents         -l | -s | -r\n"
              " agparams       [<agentName>]\n"
              " explain        <oid> [<community> [v1 | v2c] | <user> [v3 [<level> "
              "[<context>]]]]\n"
              " get            <oid> [<oid> ...] [-aIpAddress]\n"
              " getnext        <oid> [<oid> ...] [-aIpAddress]\n"
              " lastset\n"
              " owners         [<oid>]\n"
              " set            <oid> <tag> <value> [<oid> <tag> <value> ...] [-aIpAddress]\n"
              " stats\n"
              "\n");
}

TEST_F(Console, TheEndOfTheInputEndsTheAgent)
{
    EXPECT_EQ(Answers(""), "");
    EXPECT_EQ(Answers(kGetDescr), kDescr);
}

TEST_F(Console, TheLastLineNeedsNoNewline)
{
    EXPECT_EQ(Answers("help get"), "get: Get\n");
    EXPECT_EQ(Answers("help get\nq"), "get: Get\n");
}

TEST_F(Console, AWriterMayRestInTheMiddleOfALine)
{
    PipedAgent agent(store);
    agent.Type("help get\nhelp ");
    EXPECT_EQ(agent.Line(), "get: Get");
    agent.Type("se");
    EXPECT_TRUE(VLK::Eventually([&] { return agent.Unread() == 0; }));
    agent.Type("t\n");
    EXPECT_EQ(agent.Line(), "set: Set");
}

TEST_F(Console, QuitLeavesWhatFollowsUnrun)
{
    EXPECT_EQ(Answers("help get\nq\n" + SetContact("late")), "get: Get\n");
    EXPECT_EQ(Answers(kGetContact), Contact("Mr. Qwin"));
}

TEST_F(Console, BlankLinesCarriageReturnsAndUnknownCommandsHarmNothing)
{
    EXPECT_EQ(Answers("\n \t\nget 1.3.6.1.2.1.1.1.0\r\nnothing\nge\nhelp get\n"),
              kDescr + "nothing: no such command.\nge: ambiguous command.\nget: Get\n");
}

TEST_F(Console, ALineMayBeLong)
{
    std::string line = "get";
    std::string answer;
    while (line.size() + 18 <= VLK::host::BPlainLines::s_longestLine) {
        line += " 1.3.6.1.2.1.1.1.0";
        answer += kDescr;
    }
    line.resize(VLK::host::BPlainLines::s_longestLine, ' ');
    EXPECT_EQ(Answers(line + "\nhelp get\n"), answer + "get: Get\n");
}

TEST_F(Console, ATooLongLineIsToldAndNoPartOfItRuns)
{
    size_t limit = VLK::host::BPlainLines::s_longestLine;
    for (size_t length : {limit + 1, limit * 2, size_t{3000000}}) {
        std::string line = "help get " + std::string(length - 18, 'x') + " help get";
        ASSERT_EQ(line.size(), length);
        EXPECT_EQ(Answers(line + "\nhelp set\n"), "line too long.\nset: Set\n");
        EXPECT_EQ(Answers("help set\n" + line), "set: Set\nline too long.\n");
    }
}

TEST_F(Console, BytesThatAreNoTextHarmNothing)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    std::string answers = Answers(bytes + std::string("help get\0set", 12) + "\nhelp set\n");
    EXPECT_NE(answers.find("set: Set\n"), answers.npos) << answers;
}

TEST_F(Console, AnAnswerComesBeforeTheNextLineIsTyped)
{
    PipedAgent agent(store);
    for (const char* value : {"one", "two"}) {
        agent.Type(SetContact(value));
        EXPECT_EQ(agent.Line() + "\n", Contact(value));
        EXPECT_EQ(agent.Ask("snmpget", "public", {oid::kSysContact}).output,
                  oid::kSysContact + " = STRING: \"" + value + "\"\n");
    }
}

TEST_F(Console, WhatTheWireSetsTheConsoleReads)
{
    PipedAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    EXPECT_EQ(agent.Ask("snmpset", "private", {oid::kSysContact, "s", "wire"}).status, 0);
    agent.Type(kGetContact);
    EXPECT_EQ(agent.Line() + "\n", Contact("wire"));
}

TEST_F(Console, ASetSurvivesKill9AfterItsAnswer)
{
    for (const char* value : {"first", "second"}) {
        PipedAgent agent(store);
        agent.Type(SetContact(value));
        ASSERT_EQ(agent.Line() + "\n", Contact(value));
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
        EXPECT_EQ(Answers(kGetContact), Contact(value));
    }
}

TEST_F(Console, ASetThatIsNotKeptIsNotAcknowledged)
{
    EXPECT_EQ(Answers("q\n"), "");
    PipedAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    // The log is a file, too: it has no room either.
    const rlimit limit{100, 100};
    ASSERT_EQ(prlimit(agent.Pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
    EXPECT_EQ(agent.Answers(SetContact("x") + "help get\n"),
              "snmpErr: commitFail at index 1get: Get\n");
    EXPECT_EQ(agent.Wait(), 0);
    EXPECT_EQ(Answers(kGetContact), Contact("Mr. Qwin"));
}

TEST_F(Console, ClivacmTriesTheRightsOfAnother)
{
    EXPECT_EQ(Answers(SetContact("operator")), Contact("operator")) << "unnamed: may do all";
    struct Row {
        const char* name;
        std::string read;
        std::string written;
    };
    const std::string refused = "snmpErr: authorizationError at index 1";
    const Row rows[] = {
        {"public", Contact("operator"), refused},
        {"nobody", refused, refused},
        {"private", Contact("operator"), Contact("me")},
    };
    for (const Row& row : rows) {
        for (const std::string model : {"", " SNMPv1", " SNMPv2c", " USM"}) {
            Answers(SetContact("operator"));
            std::string answers = Answers(std::string("clivacm ") + row.name + model + "\n" +
                                          kGetContact + SetContact("me"));
            size_t report = answers.find("   ContextName: \n");
            ASSERT_NE(report, answers.npos) << answers;
            // A community is a security name of SNMPv1 and SNMPv2c.
            bool isCommunitys = model == " SNMPv1" || model == " SNMPv2c";
            EXPECT_EQ(answers.substr(report + 17),
                      isCommunitys ? row.read + row.written : refused + refused)
                << row.name << model;
        }
    }
}

TEST_F(Console, WithoutItStandardInputIsNeverRead)
{
    for (const Arguments& options : {Arguments{"--no-console"}, Arguments{}}) {
        PipedAgent agent(store, options);
        ASSERT_TRUE(agent.IsReady()) << agent.LogText();
        agent.Type("q\n");
        EXPECT_EQ(agent.Ask("snmpget", "public", {oid::kSysDescr}).status, 0);
        EXPECT_EQ(agent.Unread(), 2);
        EXPECT_EQ(agent.Kill(SIGTERM), 0);
        EXPECT_EQ(agent.Rest(), "");
    }
}

TEST_F(Console, ASignalEndsItWhileItWaits)
{
    for (int number : {SIGTERM, SIGINT}) {
        PipedAgent agent(store);
        agent.Type("help get\nhelp");
        EXPECT_EQ(agent.Line(), "get: Get");
        EXPECT_EQ(agent.Kill(number), 0);
        EXPECT_EQ(agent.Rest(), "") << "half a line is not run";
    }
}

TEST_F(Console, ASignalDoesNotWaitForLinesThatWereReadAhead)
{
    constexpr int kLines = 1500;
    std::string commands;
    for (int i = 1; i <= kLines; ++i)
        commands += SetContact("number" + std::to_string(i));
    PipedAgent agent(store);
    agent.Type(commands);
    EXPECT_EQ(agent.Line() + "\n", Contact("number1"));
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
    std::string contact = Answers(kGetContact);
    EXPECT_NE(contact.find("number"), contact.npos) << contact;
    EXPECT_NE(contact, Contact("number" + std::to_string(kLines)));
}

TEST_F(Console, AnOutputThatNobodyReadsHoldsUpNeitherTheWireNorTheEnd)
{
    PipedAgent agent(store);
    ASSERT_TRUE(agent.IsReady()) << agent.LogText();
    std::string commands;
    for (int i = 0; i < 1000; ++i)
        commands += "?\n"; // a thousand times more than the pipe takes
    agent.Type(commands);
    EXPECT_TRUE(VLK::Eventually([&] { return agent.Unread() == 0; }));
    EXPECT_EQ(agent.Ask("snmpget", "public", {oid::kSysDescr}).status, 0);
    EXPECT_EQ(agent.Ask("snmpset", "private", {oid::kSysContact, "s", "x"}).status, 0);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}

TEST_F(Console, AClosedOutputEndsNothing)
{
    const std::string line = "printf 'help get\\nset 1.3.6.1.2.1.1.4.0 4 me\\n' | "
                             "\"$0\" \"$@\" --console >&- 2>&-; echo status $?";
    Outcome outcome =
        RunToEnd({"sh", "-c", line, VKAGENTD, "--store", store, "--listen", "udp:127.0.0.1:0"});
    EXPECT_EQ(outcome.output, "status 0\n");
    EXPECT_EQ(Answers(kGetContact), Contact("me"));
}

TEST_F(Console, AClosedInputIsItsEnd)
{
    for (const char* option : {"--console", "--no-console"}) {
        SCOPED_TRACE(option);
        Process agent({"sh", "-c", "exec \"$0\" \"$@\" <&-", VKAGENTD, option, "--store", store,
                       "--listen", "udp:127.0.0.1:0"});
        EXPECT_NE(agent.Line().find("ready on"), std::string::npos);
        if (option == std::string("--console"))
            EXPECT_EQ(agent.Wait(), 0);
        else
            EXPECT_EQ(agent.Kill(SIGTERM), 0);
    }
}

TEST_F(Console, AnInputThatCannotBeReadIsToldAndItsEnd)
{
    Outcome outcome = RunToEnd({"sh", "-c", "exec \"$0\" \"$@\" </", VKAGENTD, "--console",
                                "--store", store, "--listen", "udp:127.0.0.1:0"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.output.find("vkagentd: standard input cannot be read: Is a directory\n"),
              std::string::npos)
        << outcome.output;
}

TEST_F(Console, SetsOfWireAndConsoleAtOnceAreAllAnsweredAndKept)
{
    constexpr int kRounds = 40;
    {
        PipedAgent agent(store);
        ASSERT_TRUE(agent.IsReady()) << agent.LogText();
        std::string commands;
        for (int i = 1; i <= kRounds; ++i)
            commands += SetContact("console" + std::to_string(i));
        agent.Type(commands);
        for (int i = 1; i <= kRounds / 4; ++i) {
            Arguments set{oid::kSysName,     "s", "wire" + std::to_string(i),
                          oid::kSysLocation, "s", "at" + std::to_string(i)};
            EXPECT_EQ(agent.Ask("snmpset", "private", set).status, 0);
        }
        for (int i = 1; i <= kRounds; ++i)
            EXPECT_EQ(agent.Line() + "\n", Contact("console" + std::to_string(i)));
        EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
    }
    EXPECT_EQ(Answers("get 1.3.6.1.2.1.1.4.0 1.3.6.1.2.1.1.5.0 1.3.6.1.2.1.1.6.0\n"),
              Contact("console40") + "1.3.6.1.2.1.1.5.0 = wire10\n1.3.6.1.2.1.1.6.0 = at10\n");
}
