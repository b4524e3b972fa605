// What the console promises when memory runs out: no half command runs, no half
// message is written, and with memory it goes on as before.
#include "tests/support/AllocationSweep.h"
#include "tests/support/StandardStreams.h"

#include <cstring>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vkmibh/console.h>
#include <vkmibh/transactions.h>

namespace VLK {
namespace {

using Test::InputPipe;
using VLKTest::SweepAllocations;

std::string TextOf(const BString& text) { return std::string(text.c_str(), text.length()); }

// Takes no memory.
class FixedStream : public ICmdStream {
public:
    int GetLine(BString& line) override
    {
        line.Assign("q", 1);
        return 0;
    }
    int Write(const BString& text) override
    {
        ++writes;
        EXPECT_LE(m_length + text.length(), sizeof m_text);
        std::memcpy(m_text + m_length, text.c_str(), text.length());
        m_length += text.length();
        return 0;
    }
    std::string Written() const { return std::string(m_text, m_length); }
    int writes = 0;

private:
    char m_text[4096];
    std::size_t m_length = 0;
};

// Remembers how it was called, without memory of its own.
class FixedHandler : public BCmdHandler {
public:
    int CmdExecute(ICmdStream&, const BString& cmd, const BStringArray& args,
                   const BSecurityParams&, const BString&) override
    {
        ++executed;
        EXPECT_STREQ(cmd.c_str(), "getnext");
        EXPECT_EQ(args.Count(), 3u);
        if (args.Count() == 3) {
            EXPECT_STREQ(args[0].c_str(), "n=one");
            EXPECT_STREQ(args[1].c_str(), "n=two words");
            EXPECT_STREQ(args[2].c_str(), "n=1.3.6.1.2.1.1.1.0.1.3.6.1.4.1");
        }
        return 0;
    }
    const SCmdMapEntry* CmdGetMap() const override
    {
        static const SCmdMapEntry s_rows[] = {{0, "get", "Get values", "<oid>"},
                                              {1, "getnext", nullptr, nullptr},
                                              {-1, nullptr, nullptr, nullptr}};
        return s_rows;
    }
    int executed = 0;
};

constexpr char kLine[] = "getn one n='two words' 1.3.6.1.2.1.1.1.0.1.3.6.1.4.1";

TEST(ConsoleOutOfMemory, LineIsParsedWholeOrNotAtAll)
{
    const BString line(kLine);
    const unsigned allocations = SweepAllocations(
        [] {
            auto parser = std::make_unique<BCmdLineParser>();
            EXPECT_TRUE(parser->Parse("old a b"));
            return parser;
        },
        [&](std::unique_ptr<BCmdLineParser>& parser) { return parser->Parse(line); },
        [](const std::unique_ptr<BCmdLineParser>& parser, bool parsed) {
            EXPECT_EQ(TextOf(parser->command), parsed ? "getn" : "");
            EXPECT_EQ(parser->args.Count(), parsed ? 3u : 0u);
        });
    EXPECT_GT(allocations, 10u);
}

TEST(ConsoleOutOfMemory, SwitchIsSplitOrBothPartsStay)
{
    const BString text("-a10.0.0.1");
    struct SParts {
        char sw = '?';
        BString value{"old"};
    };
    const unsigned allocations = SweepAllocations(
        [] { return SParts(); },
        [&](SParts& parts) { return BCmdLineParser::SplitSwitch(text, parts.sw, parts.value); },
        [](const SParts& parts, bool split) {
            EXPECT_EQ(parts.sw, split ? 'a' : '?');
            EXPECT_EQ(TextOf(parts.value), split ? "10.0.0.1" : "old");
        });
    EXPECT_EQ(allocations, 1u);
}

struct SConsole {
    // The text of the stream is room, written before it is read.
    // cppcheck-suppress uninitMemberVar
    SConsole() : console(&handler, &stream) {}
    // cppcheck-suppress uninitMemberVar
    explicit SConsole(ICmdHandler* first) : console(first, &stream) {}
    FixedStream stream;
    FixedHandler handler;
    BCLI console;
};

// Sweeps one line on a console; `check` is given what was written.
template <class Check>
unsigned SweepLine(const char* line, Check check)
{
    const BString text(line);
    return SweepAllocations([] { return std::make_unique<SConsole>(); },
                            [&](std::unique_ptr<SConsole>& of) { return of->console.Exec(text); },
                            [&](std::unique_ptr<SConsole>& of, bool) {
                                const std::string written = of->stream.Written();
                                check(written);
                                EXPECT_EQ(of->stream.writes == 0, written.empty())
                                    << "nothing is not written";
                                EXPECT_FALSE(of->console.Exec("q")) << "with memory it goes on";
                            });
}

TEST(ConsoleOutOfMemory, CommandRunsWithAllItsArgumentsOrNotAtAll)
{
    const BString text(kLine);
    int runs = 0;
    const unsigned allocations =
        SweepAllocations([] { return std::make_unique<SConsole>(); },
                         [&](std::unique_ptr<SConsole>& of) { return of->console.Exec(text); },
                         [&](std::unique_ptr<SConsole>& of, bool goesOn) {
                             EXPECT_TRUE(goesOn);
                             EXPECT_EQ(of->stream.writes, 0);
                             runs += of->handler.executed;
                         });
    EXPECT_GT(allocations, 10u);
    EXPECT_EQ(runs, 2) << "only where nothing was refused";
}

TEST(ConsoleOutOfMemory, MessageIsWrittenWholeOrNotAtAll)
{
    const struct {
        const char* line;
        const char* message;
    } cases[] = {
        {"nothing", "nothing: no such command.\n"},
        {"ge", "ge: ambiguous command.\n"},
        {"help", "help: argument required.\nUsage: help cmd\n"},
        {"help q", "q: Terminate application\n"},
        {"help ge", "ge: help: command 'ge' is ambiguous.\n"},
        {"help nothing", "help: command 'nothing' not found.\n"},
        {"help get", "get: Get values\n"},
        {"help getn", "getn: no decription available!\n"},
        {"clivacm a x", "Unknown security model: x\n"},
        {"clivacm a USM x", "Unknown security level: x\n"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.line);
        int whole = 0;
        const unsigned allocations = SweepLine(row.line, [&](const std::string& written) {
            EXPECT_TRUE(written.empty() || written == row.message) << written;
            whole += !written.empty();
        });
        EXPECT_GT(allocations, 3u);
        EXPECT_GE(whole, 2);
    }
}

TEST(ConsoleOutOfMemory, ListHasWholeLinesOnly)
{
    std::string all;
    {
        SConsole of;
        of.console.Exec("?");
        all = of.stream.Written();
    }
    SweepLine("?", [&](const std::string& written) {
        for (std::size_t start = 0, end; start < written.size(); start = end) {
            end = written.find('\n', start);
            ASSERT_NE(end, written.npos) << written;
            ++end;
            EXPECT_NE(("\n" + all).find("\n" + written.substr(start, end - start)),
                      std::string::npos)
                << written;
        }
    });
}

TEST(ConsoleOutOfMemory, IdentityPrintedIsTheOneInForce)
{
    SweepLine("clivacm someone-with-a-name SNMPv1 authPriv a-context", [](const std::string& text) {
        const std::string start = "*** CLI\n VACM Params: \n   SecurityName: ";
        EXPECT_TRUE(text.empty() || text.compare(0, start.size(), start) == 0) << text;
    });
}

TEST(ConsoleOutOfMemory, ConsoleIsMadeAndRegistersWhatItCan)
{
    FixedStream stream;
    FixedHandler handler;
    const BString line(kLine);
    const unsigned allocations =
        SweepAllocations([] { return std::unique_ptr<char[]>(new char[sizeof(BCLI)]); },
                         [&](std::unique_ptr<char[]>& place) {
                             BCLI* console = new (place.get()) BCLI(&handler, &stream);
                             const int count = console->Register(&handler);
                             EXPECT_EQ(count, 2);
                             return console;
                         },
                         [&](std::unique_ptr<char[]>&, BCLI* console) {
                             console->Exec(line);
                             console->Start("> ", "q");
                             console->~BCLI();
                         });
    EXPECT_GT(allocations, 6u);
    EXPECT_GT(handler.executed, 2);
}

TEST(ConsoleOutOfMemory, NoNameIsRegisteredInPart)
{
    FixedHandler handler;
    const unsigned allocations = SweepAllocations(
        [] { return std::make_unique<SConsole>(nullptr); },
        [&](std::unique_ptr<SConsole>& of) { return of->console.Register(&handler); },
        [](std::unique_ptr<SConsole>& of, int count) {
            EXPECT_EQ(count, 2);
            of->console.Exec("?");
            const std::string list = of->stream.Written();
            const std::string vacm = "contextName]]]]\n";
            const std::string rows = list.substr(list.find(vacm) + vacm.size());
            EXPECT_THAT(rows, testing::AnyOf("\n", " get            <oid>\n\n", " getnext\n\n",
                                             " get            <oid>\n getnext\n\n"));
        });
    EXPECT_GT(allocations, 2u);
}

TEST(ConsoleOutOfMemory, PromptIsWrittenWholeOrEmpty)
{
    // Ends the loop, which else could not even read its quit word.
    class Ending : public FixedStream {
    public:
        int GetLine(BString&) override { throw 1; }
    };
    const std::string prompt = "a prompt of some length> ";
    const unsigned allocations = SweepAllocations(
        [] { return std::make_unique<Ending>(); },
        [&](std::unique_ptr<Ending>& stream) {
            BCLI console(stream.get());
            EXPECT_THROW(console.Start(prompt.c_str(), "a quit word of some length"), int);
            return true;
        },
        [&](std::unique_ptr<Ending>& stream, bool) {
            EXPECT_TRUE(stream->Written().empty() || stream->Written() == prompt);
        });
    EXPECT_GT(allocations, 5u);
}

TEST(ConsoleOutOfMemory, LineIsReadWholeOrNotAtAll)
{
    const std::string text = "a line that needs more than the usual thirty-two characters";
    InputPipe input;
    const unsigned allocations = SweepAllocations(
        [&] {
            input.Write(text + "\n");
            return BString("the line before");
        },
        [](BString& line) { return BCmdStream().GetLine(line); },
        [&](BString& line, int result) {
            EXPECT_EQ(result, 0);
            EXPECT_TRUE(line.empty() || TextOf(line) == text) << TextOf(line);
        });
    EXPECT_GE(allocations, 1u);
}

TEST(ConsoleOutOfMemory, BlanksAreAllThereOrNone)
{
    SweepAllocations(
        [] { return BString(); },
        [](BString& blanks) {
            blanks = BCLI::Space(40);
            return true;
        },
        [](BString& blanks, bool) { EXPECT_TRUE(blanks.empty() || blanks.length() == 40); });
}

} // namespace
} // namespace VLK
