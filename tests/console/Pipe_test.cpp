// The console as a script's partner: commands through a pipe, answers into one.
#include "tests/console/TestHandler.h"
#include "tests/support/StandardStreams.h"

#include <gtest/gtest.h>
#include <string>
#include <vkmibh/cli.h>

namespace VLK {
namespace {

using Test::InputPipe;
using Test::TestHandler;

// Runs a console on the input and gives all its output.
std::string Session(BCLI& console, const std::string& input)
{
    InputPipe pipe;
    pipe.WriteAll(input);
    testing::internal::CaptureStdout();
    console.Start("> ", "q");
    return testing::internal::GetCapturedStdout();
}

TEST(ConsolePipe, HundredThousandCommands)
{
    TestHandler handler("\"CPiped\"", {{0, "get", nullptr, nullptr}});
    BCLI console(&handler, nullptr);
    std::string input, expected;
    for (int i = 0; i < 100000; ++i) {
        const std::string number = std::to_string(i);
        input += "ge 'number " + number + "'\n";
        expected += "> [get] 'number " + number + "' by '' 3/1 in ''\n";
    }
    EXPECT_TRUE(Session(console, input + "q\n") == expected + "> ");
    EXPECT_EQ(handler.executed, 100000);
}

TEST(ConsolePipe, LineTooLongIsTwoCommands)
{
    TestHandler handler("\"CPiped\"", {{0, "get", nullptr, nullptr}});
    BCLI console(&handler, nullptr);
    const std::string first = "get " + std::string(1020, 'a');
    EXPECT_EQ(Session(console, first + "get b\nq"),
              "> [get] '" + first.substr(4) + "' by '' 3/1 in ''\n> [get] 'b' by '' 3/1 in ''\n> ");
}

TEST(ConsolePipe, CarriageReturnsBeforeNewlinesDoNoHarm)
{
    TestHandler handler("\"CPiped\"", {{0, "get", nullptr, nullptr}});
    BCLI console(&handler, nullptr);
    EXPECT_EQ(Session(console, "get a\r\n\r\nq\r\n"), "> [get] 'a' by '' 3/1 in ''\n> > ");
}

} // namespace
} // namespace VLK
