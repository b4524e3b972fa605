#include "tests/console/TestHandler.h"
#include "tests/support/ScriptedStream.h"
#include "tests/support/StandardStreams.h"

#include <algorithm>
#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>
#include <vkmibh/cli.h>

namespace VLK {

// The friend of the console, to give it an identity that clivacm does not.
struct SLayoutCheck {
    static BSecurityParams& Security(BCLI& console) { return console.m_security; }
};

namespace {

using Test::ArgsOf;
using Test::InputPipe;
using Test::ScriptedStream;
using Test::StringOf;
using Test::TestHandler;
using testing::ElementsAre;
using testing::HasSubstr;

SCmdMapEntry Row(const char* name, const char* description = nullptr,
                 const char* arguments = nullptr)
{
    return {0, name, description, arguments};
}

class Cli : public testing::Test {
protected:
    // What a line writes.
    std::string Output(const std::string& line)
    {
        EXPECT_TRUE(console.Exec(StringOf(line))) << line;
        return stream.Taken();
    }

    ScriptedStream stream;
    TestHandler mib{"\"CMib\"", {Row("get", "Get values"), Row("getnext"), Row("set")}};
    BCLI console{&mib, &stream};
};

// Prefix matching by the letter: the keys in order, one after the other.
int NaiveFind(const std::set<std::string>& keys, const std::string& name)
{
    int index = 0;
    for (auto key = keys.begin(); key != keys.end(); ++key, ++index) {
        if (key->substr(0, name.size()) != name)
            continue;
        const auto next = std::next(key);
        if (key->size() == name.size() || next == keys.end())
            return index;
        return next->substr(0, name.size()) == name ? -2 : index;
    }
    return -1;
}

TEST(CliCommands, FindByFullNameAndUniqueBeginning)
{
    BCLI::Commands commands;
    EXPECT_EQ(commands.Find("get"), -1);
    EXPECT_EQ(commands.Find(""), -1);
    for (const char* name : {"get", "getnext", "set", "walk"})
        commands.Insert(name, nullptr);
    const struct {
        const char* name;
        int index;
    } cases[] = {{"get", 0}, {"getn", 1},      {"getnext", 1}, {"ge", -2},  {"g", -2},
                 {"s", 2},   {"w", 3},         {"walk", 3},    {"a", -1},   {"h", -1},
                 {"x", -1},  {"getnexts", -1}, {"getm", -1},   {"GET", -1}, {"", -2}};
    for (const auto& row : cases)
        EXPECT_EQ(commands.Find(row.name), row.index) << row.name;
}

TEST(CliCommands, FindAgreesWithAScanOfTheKeys)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    const auto word = [&](unsigned maxLength) {
        std::string text(random() % (maxLength + 1), 'a');
        for (char& c : text)
            c = "ab\xff"[random() % 3];
        return text;
    };
    for (int round = 0; round < 300; ++round) {
        BCLI::Commands commands;
        std::set<std::string> keys; // std::string compares unsigned bytes too
        for (unsigned i = 0, count = random() % 12; i < count; ++i) {
            const std::string key = word(4);
            keys.insert(key);
            commands.Insert(StringOf(key), nullptr);
        }
        for (int i = 0; i < 40; ++i) {
            const std::string name = word(5);
            ASSERT_EQ(commands.Find(StringOf(name)), NaiveFind(keys, name))
                << "seed " << seed << ", " << name << " among " << testing::PrintToString(keys);
        }
    }
}

TEST(CliCommands, InsertAndRemoveGoByExactNames)
{
    BCLI::Commands commands;
    int a, b;
    EXPECT_TRUE(commands.Insert("getnext", &a));
    EXPECT_TRUE(commands.Insert("get", &b));
    EXPECT_FALSE(commands.Insert("get", &a));
    EXPECT_EQ(commands.Remove("getn"), nullptr);
    EXPECT_EQ(commands.Remove("get"), &b);
    EXPECT_EQ(commands.Find("get"), 0) << "getnext";
}

TEST_F(Cli, RegisterCountsRefusedNamesToo)
{
    TestHandler again("\"CAgain\"", {Row("get"), Row(nullptr), Row("walk")});
    EXPECT_EQ(console.Register(&again), 3);
    EXPECT_EQ(stream.Taken(), "Comamnd 'get' is already registered by '\"CMib\"'\n");
    EXPECT_EQ(console.Register(&again), 3);
    EXPECT_EQ(stream.texts.size(), 2u) << "one Write() each";
}

TEST_F(Cli, NullHandlerRegistersNothing)
{
    EXPECT_EQ(console.Register(nullptr), 0);
    BCLI none(nullptr, &stream);
    none.Exec("get");
    EXPECT_EQ(stream.Taken(), "get: no such command.\n");
}

TEST_F(Cli, HandlerWithoutCommandsRegistersNothing)
{
    TestHandler empty("\"CEmpty\"", {});
    EXPECT_EQ(console.Register(&empty), 0);
    EXPECT_EQ(stream.texts.size(), 0u);
}

TEST_F(Cli, BeginningOfSeveralNamesIsAccepted)
{
    TestHandler other("\"COther\"", {Row("ge")});
    EXPECT_EQ(console.Register(&other), 1);
    EXPECT_EQ(stream.Taken(), "");
    EXPECT_EQ(Output("ge"), "[ge] by '' 3/1 in ''\n");
    EXPECT_EQ(other.executed, 1);
}

TEST_F(Cli, OnlyTheQuitCommandGivesFalse)
{
    for (const char* line : {"", "  ", "get", "ge", "nothing", "?", "help", "help a b", "clivacm",
                             "clivacm a b", "qq", "Q", "quit"})
        EXPECT_TRUE(console.Exec(line)) << line;
    for (const char* line : {"q", " q", "q and more", "\tq\r"})
        EXPECT_FALSE(console.Exec(line)) << line;
    stream.texts.clear();
    console.Exec("q");
    EXPECT_EQ(stream.Taken(), "");
}

TEST_F(Cli, ResultOfTheHandlerIsIgnored)
{
    for (const int result : {-1, 0, 1}) {
        mib.result = result;
        EXPECT_TRUE(console.Exec("get"));
    }
    EXPECT_EQ(mib.executed, 3);
}

TEST_F(Cli, NamesOfTheConsoleGoBeforeThoseOfHandlers)
{
    TestHandler shadowed("\"CShadowed\"", {Row("q"), Row("?"), Row("help"), Row("clivacm")});
    EXPECT_EQ(console.Register(&shadowed), 4);
    EXPECT_FALSE(console.Exec("q"));
    EXPECT_EQ(Output("help q"), "q: Terminate application\n");
    Output("?");
    Output("clivacm");
    EXPECT_EQ(shadowed.executed, 0);
    EXPECT_EQ(Output("hel"), "[help] by '' 3/1 in ''\n") << "but short for a handler's";
}

TEST_F(Cli, HandlerGetsTheStreamTheFullNameAndWhoAsks)
{
    class Checking : public TestHandler {
    public:
        using TestHandler::TestHandler;
        int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                       const BSecurityParams& security, const BString& context) override
        {
            usedStream = &out;
            return TestHandler::CmdExecute(out, cmd, args, security, context);
        }
        ICmdStream* usedStream = nullptr;
    } handler("\"CChecking\"", {Row("lengthy")});
    console.Register(&handler);
    Output("clivacm bob SNMPv2c");
    EXPECT_EQ(Output("le 'a b'"), "[lengthy] 'a b' by 'bob' 2/1 in ''\n");
    EXPECT_EQ(handler.usedStream, &stream);
}

TEST_F(Cli, OneMessageOrLineOfAListIsOneWrite)
{
    console.Exec("? g");
    EXPECT_THAT(stream.texts, ElementsAre(" Command        Argument(s)\n",
                                          " -------------  " + std::string(61, '-') + "\n",
                                          " get\n", " getnext\n", "\n"));
    for (const char* line : {"help", "help a b", "help get", "help g", "help x", "help q",
                             "clivacm", "clivacm a b", "clivacm a USM x", "nothing", "ge"}) {
        stream.texts.clear();
        console.Exec(line);
        EXPECT_EQ(stream.texts.size(), 1u) << line;
    }
}

TEST_F(Cli, ArgumentsStandInOneColumnBehindNamesOfUpTo14Characters)
{
    std::vector<std::string> names;
    for (unsigned length = 1; length <= 40; ++length)
        names.push_back(std::string(length, static_cast<char>('A' + length)));
    std::vector<SCmdMapEntry> rows;
    for (const std::string& name : names)
        rows.push_back(Row(name.c_str(), nullptr, "<argument>"));
    TestHandler handler("\"CColumns\"", rows);
    console.Register(&handler);
    for (const std::string& name : names) {
        const std::size_t column = name.size() <= 14 ? 16 : 1 + name.size() + 1;
        std::string line = " " + name;
        line.resize(column, ' ');
        EXPECT_THAT(Output("? " + name), HasSubstr("\n" + line + "<argument>\n"));
    }
}

TEST_F(Cli, ListTakesArgumentsAlsoFromCode)
{
    console.ShowCmdList(ArgsOf({""}));
    EXPECT_EQ(stream.texts.size(), 2u + 1 + 3 + 1) << "an empty filter shows help and all commands";
    stream.texts.clear();
    console.ShowCmdHelp(ArgsOf({"getn"}));
    EXPECT_EQ(stream.Taken(), "getn: no decription available!\n");
    console.CliVacm(ArgsOf({"bob", "SNMPv1"}));
    EXPECT_THAT(stream.Taken(), HasSubstr("SecurityName: bob\n   SecurityModel: SNMPv1\n"));
}

TEST_F(Cli, HelpSpellsDecriptionAndComamndAsItAlwaysDid)
{
    EXPECT_EQ(Output("help set"), "set: no decription available!\n");
    console.Register(&mib);
    EXPECT_EQ(stream.texts[0], "Comamnd 'get' is already registered by '\"CMib\"'\n");
}

TEST_F(Cli, HelpOnAnAmbiguousNameBeginsWithItAndOnAnUnknownOneDoesNot)
{
    EXPECT_EQ(Output("help ge"), "ge: help: command 'ge' is ambiguous.\n");
    EXPECT_EQ(Output("help zz"), "help: command 'zz' not found.\n");
}

TEST_F(Cli, LevelWordGoesIntoTheModelAndLeavesTheLevel)
{
    Output("clivacm bob SNMPv1 authPriv");
    EXPECT_EQ(SLayoutCheck::Security(console).securityModel, 3);
    EXPECT_EQ(SLayoutCheck::Security(console).securityLevel, 1);
}

TEST_F(Cli, IdentityIsUsmWithoutNameOrPrivacyAtFirst)
{
    const BSecurityParams& security = SLayoutCheck::Security(console);
    EXPECT_EQ(security.securityModel, 3);
    EXPECT_EQ(security.securityLevel, 1);
    EXPECT_TRUE(security.securityName.empty());
}

TEST_F(Cli, UnknownModelAndLevelNumbersArePrinted)
{
    BSecurityParams& security = SLayoutCheck::Security(console);
    const struct {
        int number;
        const char* model;
        const char* level;
    } cases[] = {{0, "unknown (0)", "unsupported(0)"},
                 {1, "SNMPv1", "noAuthNoPriv"},
                 {2, "SNMPv2c", "authNoPriv"},
                 {3, "USM", "authPriv"},
                 {4, "unknown (4)", "unsupported(0)"},
                 {-1, "unknown (-1)", "unsupported(0)"},
                 {INT_MIN, "unknown (-2147483648)", "unsupported(0)"}};
    for (const auto& row : cases) {
        security.securityModel = security.securityLevel = row.number;
        EXPECT_EQ(Output("clivacm"), std::string("*** CLI\n VACM Params: \n   SecurityName: \n"
                                                 "   SecurityModel: ") +
                                         row.model + "\n   SecurityLevel: " + row.level +
                                         "\n   ContextName: \n");
    }
}

TEST_F(Cli, SpaceGivesAtLeastOneBlank)
{
    for (const int n : {INT_MIN, -1, 0, 1})
        EXPECT_EQ(BCLI::Space(n), BString(" ")) << n;
    EXPECT_EQ(BCLI::Space(2), BString("  "));
    EXPECT_EQ(BCLI::Space(1000), StringOf(std::string(1000, ' ')));
    const BString first = BCLI::Space(3);
    BCLI::Space(7);
    EXPECT_EQ(first.length(), 3u) << "a text of its own";
}

TEST(CliStart, PromptsBeforeEveryLineUntilTheQuitCommand)
{
    ScriptedStream stream({"", "nothing", "  ", "q", "never read"});
    BCLI console(&stream);
    console.Start("agent> ", "q");
    EXPECT_EQ(stream.LinesRead(), 4u);
    EXPECT_THAT(stream.texts, ElementsAre("agent> ", "agent> ", "nothing: no such command.\n",
                                          "agent> ", "agent> "));
}

TEST(CliStart, QuitNameReplacesTheOneBefore)
{
    ScriptedStream stream({"q", "bye", "q", "quit"});
    BCLI console(&stream);
    console.Start("", "bye");
    EXPECT_EQ(stream.LinesRead(), 2u);
    EXPECT_TRUE(console.Exec("q"));
    EXPECT_FALSE(console.Exec("bye"));
    console.Start("", "quit");
    EXPECT_EQ(stream.LinesRead(), 4u);
    EXPECT_TRUE(console.Exec("bye"));
}

TEST(CliStart, NullPromptIsEmptyAndNullQuitNameChangesNothing)
{
    ScriptedStream stream({"", "q", "bye", "bye"});
    BCLI console(&stream);
    console.Start(nullptr, nullptr);
    EXPECT_THAT(stream.texts, ElementsAre("", ""));
    console.Start("", "bye");
    console.Start("> ", nullptr);
    EXPECT_EQ(stream.LinesRead(), 4u) << "still bye";
}

TEST(CliStart, ReadsIntoOneBuffer)
{
    class OneBuffer : public ScriptedStream {
    public:
        OneBuffer() : ScriptedStream({"one", "two"}) {}
        int GetLine(BString& line) override
        {
            lines.insert(&line);
            return ScriptedStream::GetLine(line);
        }
        std::set<BString*> lines;
    } stream;
    BCLI console(&stream);
    console.Start("", "q");
    EXPECT_EQ(stream.LinesRead(), 3u);
    EXPECT_EQ(stream.lines.size(), 1u);
}

TEST(CliStart, NullStreamIsStandardInputAndOutput)
{
    InputPipe input;
    input.Write("nothing\n\nq\nleft\n");
    BCLI console(nullptr);
    testing::internal::CaptureStdout();
    console.Start("> ", "q");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "> nothing: no such command.\n> > ");
}

TEST(CliStart, EndOfInputKeepsPrompting)
{
    // Two hundred empty lines, as an input that has ended gives them.
    ScriptedStream stream(std::vector<std::string>(200, ""));
    BCLI console(&stream);
    console.Start("> ", "q");
    EXPECT_EQ(stream.texts.size(), 201u);
}

// Throws wherever it can.
class Throwing : public ICmdHandler {
public:
    const char* CmdHndlrName() override { return Text(); }
    int CmdCount() override
    {
        if (throwsCount)
            throw std::runtime_error("count");
        return 2;
    }
    const char* CmdNameAt(int index) override { return index == 0 ? Text() : "rash"; }
    int CmdId(const BString&) override { return 0; }
    const char* CmdGetDescr(const BString&) override { return Text(); }
    const char* CmdGetArgsDescr(const BString&) override { return Text(); }
    int CmdExecute(ICmdStream& out, const BString&, const BStringArray&, const BSecurityParams&,
                   const BString&) override
    {
        out.Write("half a ");
        throw 7;
    }
    bool throwsCount = false;

private:
    static const char* Text() { throw std::runtime_error("text"); }
};

TEST_F(Cli, WhatAHandlerThrowsEndsOnlyItsCommand)
{
    Throwing rash;
    EXPECT_EQ(console.Register(&rash), 2);
    EXPECT_EQ(Output("ras"), "half a rash: command failed.\n");
    EXPECT_EQ(Output("help rash"), "rash: no decription available!\n");
    EXPECT_THAT(Output("? r"), HasSubstr("-\n rash\n\n"));
    console.Register(&rash);
    EXPECT_EQ(stream.Taken(), "Comamnd 'rash' is already registered by ''\n");
    rash.throwsCount = true;
    EXPECT_EQ(console.Register(&rash), 0);
}

TEST(CliStart, WhatAStreamThrowsComesThrough)
{
    class Broken : public ScriptedStream {
    public:
        int GetLine(BString&) override { throw std::runtime_error("gone"); }
    } stream;
    BCLI console(&stream);
    EXPECT_THROW(console.Start("", "q"), std::runtime_error);
    EXPECT_FALSE(console.Exec("q")) << "it goes on working";
}

TEST_F(Cli, CommandMayRunAnother)
{
    class Nested : public TestHandler {
    public:
        Nested(BCLI& console) : TestHandler("\"CNested\"", {Row("twice")}), m_console(console) {}
        int CmdExecute(ICmdStream&, const BString&, const BStringArray& args,
                       const BSecurityParams&, const BString&) override
        {
            m_console.Exec(args[0]);
            m_console.Exec(args[0]);
            return 0;
        }

    private:
        BCLI& m_console;
    } nested(console);
    console.Register(&nested);
    EXPECT_EQ(Output("twice 'get a'"), "[get] 'a' by '' 3/1 in ''\n[get] 'a' by '' 3/1 in ''\n");
}

TEST(CliMany, ThousandHandlersAreAllReached)
{
    ScriptedStream stream;
    BCLI console(&stream);
    constexpr int kHandlers = 1000;
    std::vector<std::string> names;
    for (int i = 0; i < kHandlers; ++i)
        names.push_back("c" + std::to_string(1000 + i * 7919 % kHandlers) + "-command");
    std::vector<std::unique_ptr<TestHandler>> handlers;
    for (const std::string& name : names) {
        handlers.push_back(std::make_unique<TestHandler>(
            "\"CMany\"", std::vector<SCmdMapEntry>{Row(name.c_str())}));
        console.Register(handlers.back().get());
    }
    for (int i = 0; i < kHandlers; ++i) {
        console.Exec(StringOf(names[i]));
        console.Exec(StringOf(names[i].substr(0, 6)));
        EXPECT_EQ(handlers[i]->executed, 2);
        console.Exec(StringOf(names[i].substr(0, 3)));
        EXPECT_EQ(handlers[i]->executed, 2) << "ambiguous";
    }
    stream.texts.clear();
    console.Exec("?");
    EXPECT_EQ(stream.texts.size(), 2u + 4 + kHandlers + 1);
}

// Words that mean something, and bytes that mean nothing.
std::string RandomLine(std::mt19937& random)
{
    static const std::vector<std::string> s_words = {
        "get",      "getn", "ge", "?", "help", "clivacm", "USM", "SNMPv1", "1",
        "authPriv", "x=",   "\"", "'", "%s%n", " ",       "\t",  "\r",     std::string(1, '\0'),
        "=",        "q",    "set"};
    std::string line;
    for (unsigned i = 0, count = random() % 12; i < count; ++i) {
        if (random() % 4 == 0)
            line += static_cast<char>(random() % 256);
        else
            line += s_words[random() % s_words.size()] + (random() % 2 ? " " : "");
    }
    if (random() % 16 == 0)
        line.resize(1024, static_cast<char>(random() % 256));
    return line;
}

TEST_F(Cli, RandomLinesAreAnsweredInProportion)
{
    class Silent : public TestHandler {
    public:
        using TestHandler::TestHandler;
        int CmdExecute(ICmdStream&, const BString&, const BStringArray&, const BSecurityParams&,
                       const BString&) override
        {
            return 0;
        }
    } silent("\"CSilent\"", {Row("silent"), Row("sleep")});
    BCLI quiet(&silent, &stream);
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    std::size_t longest = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string line = RandomLine(random);
        longest = std::max(longest, line.size());
        quiet.Exec(StringOf(line));
        // A message has its word twice at most, clivacm two names of any line so
        // far, each with a prefix; the list is as long as the commands.
        ASSERT_LE(stream.Taken().size(), 1000 + 4 * longest) << "seed " << seed << ": " << line;
    }
}

} // namespace
} // namespace VLK
