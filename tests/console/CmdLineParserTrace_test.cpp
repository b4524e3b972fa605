// What the parser gives to the trace hook. This program has the hook of its own
// below instead of the library's empty one.

#include <cstdarg>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <vkmibh/cmdline.h>

namespace {

std::vector<std::string>* g_lines = nullptr;

} // namespace

namespace VLK {

void VKDbgModuleTraceClass(int traceClass, const char* format, ...)
{
    if (!g_lines || traceClass != 0x10000)
        return;
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    g_lines->emplace_back(text);
}

namespace {

using testing::ElementsAre;

std::vector<std::string> TraceOf(const char* arguments)
{
    std::vector<std::string> lines;
    BCmdLineParser parser;
    g_lines = &lines;
    EXPECT_TRUE(parser.ParseArgs(arguments));
    g_lines = nullptr;
    return lines;
}

TEST(CmdLineParserTrace, TextTokensAndArgumentsInTurn)
{
    EXPECT_THAT(TraceOf(" a 'b c'"),
                ElementsAre("ParseArgs: ' a 'b c''", "token = ' '", "token = 'a'", "token = ' '",
                            "token = '''", "{{ a }}", "token = 'b'", "token = ' '", "token = 'c'",
                            "token = '''", "{{ b c }}"));
}

TEST(CmdLineParserTrace, LastArgumentIsTracedAlsoWhenItIsEmpty)
{
    EXPECT_THAT(TraceOf(""), ElementsAre("ParseArgs: ''", "{{  }}"));
    EXPECT_THAT(TraceOf("\"\""),
                ElementsAre("ParseArgs: '\"\"'", "token = '\"'", "token = '\"'", "{{  }}"));
}

TEST(CmdLineParserTrace, ArgumentIsTracedWithoutItsPrefix)
{
    EXPECT_THAT(TraceOf("x= y"), ElementsAre("ParseArgs: 'x= y'", "token = 'x='", "token = ' '",
                                             "token = 'y'", "{{ x= }}", "{{ y }}"));
}

TEST(CmdLineParserTrace, DroppedPrefixIsNotTraced)
{
    EXPECT_THAT(TraceOf("n='v'"), ElementsAre("ParseArgs: 'n='v''", "token = 'n='", "token = '''",
                                              "token = 'v'", "token = '''", "{{ v }}"));
}

TEST(CmdLineParserTrace, ParseTracesTheTextRightAfterTheCommand)
{
    std::vector<std::string> lines;
    BCmdLineParser parser;
    g_lines = &lines;
    EXPECT_TRUE(parser.Parse("\t get  x"));
    g_lines = nullptr;
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "ParseArgs: '  x'");
}

} // namespace
} // namespace VLK
