#include <cctype>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>
#include <vkmibh/cmdline.h>

namespace VLK {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Words = std::vector<std::string>;

std::string TextOf(const BString& text) { return std::string(text.c_str(), text.length()); }

Words WordsOf(const BStringArray& array)
{
    Words words;
    for (unsigned i = 0; i < array.Count(); ++i)
        words.push_back(TextOf(array[static_cast<int>(i)]));
    return words;
}

Words ArgsOf(const std::string& text)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.ParseArgs(text.c_str()));
    return WordsOf(parser.args);
}

struct SCase {
    const char* text;
    Words args;
};

void ExpectArgs(const std::vector<SCase>& cases)
{
    for (const SCase& row : cases)
        EXPECT_EQ(ArgsOf(row.text), row.args) << row.text;
}

TEST(CmdLineParser, WordsAndQuotedTextsAreArguments)
{
    ExpectArgs({{"", {}},
                {" \t\r\n", {}},
                {"b c", {"b", "c"}},
                {"  b\tc\r\nd  ", {"b", "c", "d"}},
                {"x \"hello world\"", {"x", "hello world"}},
                {"x 'hello world'", {"x", "hello world"}},
                {"\"it's\"", {"it's"}},
                {"'say \"x\"'", {"say \"x\""}},
                {"x=1 y=2", {"x=1", "y=2"}},
                {"c \"a=x y\" d", {"c", "a=x y", "d"}},
                {" 'two words' -c7", {"two words", "-c7"}},
                {"=1 a=b=c", {"=1", "a=b=c"}}});
}

TEST(CmdLineParser, QuoteEndsTheWordBeforeAndBehindIt)
{
    ExpectArgs({{"\"ab\"cd", {"ab", "cd"}},
                {"ab\"cd\"", {"ab", "cd"}},
                {"ab'cd'ef", {"ab", "cd", "ef"}},
                {"'a'\"b\"'c'", {"a", "b", "c"}}});
}

TEST(CmdLineParser, EmptyQuotesAreNoArgument)
{
    ExpectArgs({{"\"\"", {}}, {"''", {}}, {"a \"\" b", {"a", "b"}}, {"\"\"''\"\"", {}}});
}

TEST(CmdLineParser, OpenQuoteEndsWithTheLine)
{
    ExpectArgs({{"\"abc", {"abc"}},
                {"'a b \"c", {"a b \"c"}},
                {"a \"", {"a"}},
                {"\"", {}},
                {"n=\"a b", {"n=a b"}},
                {"n='", {"n="}}});
}

TEST(CmdLineParser, WhiteSpaceInQuotesIsKept)
{
    ExpectArgs(
        {{"\" \t\r\n\"", {" \t\r\n"}}, {"'a\tb\r\nc'", {"a\tb\r\nc"}}, {"n=\"\ta \"", {"n=\ta "}}});
}

TEST(CmdLineParser, WordThatEndsInEqualSignIsJoinedWithItsValue)
{
    ExpectArgs({{"name=\"a b\"", {"name=a b"}},
                {"name='a b'", {"name=a b"}},
                {"x=\"\"", {"x="}},
                {"x=''", {"x="}},
                {"a=b=\"c\"", {"a=b=c"}},
                {"=\"c\"", {"=c"}},
                {"x y=\"z\"", {"y=x", "y=z"}}});
}

TEST(CmdLineParser, PrefixAndValueWithABlankBetweenComeOutTwice)
{
    ExpectArgs({{"x= y", {"x=x=", "x=y"}}, {"x=", {"x=x="}}, {"x= ", {"x=x="}}, {"=", {"=="}}});
}

TEST(CmdLineParser, PrefixGoesBeforeAllArgumentsUpToTheEnd)
{
    ExpectArgs({{"a=\"x\" b c", {"a=x", "a=b", "a=c"}}, {"a='x' b=c d", {"a=x", "a=b=c", "a=d"}}});
}

TEST(CmdLineParser, NewPrefixIsPutBeforeThePendingArgument)
{
    ExpectArgs({{"a=\"x y\" b=\"z\"", {"b=x y", "b=z"}},
                {"a= b= c", {"b=a=", "b=b=", "b=c"}},
                {"x y= z", {"y=x", "y=y=", "y=z"}},
                {"c a=\"x\"", {"a=c", "a=x"}}});
}

TEST(CmdLineParser, WordBetweenPrefixAndQuoteIsDropped)
{
    ExpectArgs({{"a=\"x\" \"y\"", {"a=y"}},
                {"a=\"x\" b \"c\"", {"a=x", "a=c"}},
                {"a='x'b'c'", {"a=x", "a=c"}}});
}

TEST(CmdLineParser, EmptyQuotesAfterAPrefixAreAnArgument)
{
    ExpectArgs({{"a=\"\" \"\"", {"a="}}, {"a=x \"\"", {"a=x"}}, {"a= x \"\"", {"a=a=", "a="}}});
}

TEST(CmdLineParser, ParseArgsAddsToWhatIsThere)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.ParseArgs("a b"));
    EXPECT_TRUE(parser.ParseArgs("c"));
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("a", "b", "c"));
    EXPECT_TRUE(parser.ParseArgs(nullptr));
    EXPECT_EQ(parser.args.Count(), 3u);
}

TEST(CmdLineParser, IsEmptyAtFirst)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.command.empty());
    EXPECT_EQ(parser.args.Count(), 0u);
}

TEST(CmdLineParser, LineOfBlanksHasNoCommand)
{
    for (const char* line : {"", " ", " \t ", "\r\n", "\n"}) {
        BCmdLineParser parser;
        parser.command = "old";
        parser.args.PushBack("old");
        EXPECT_FALSE(parser.Parse(line));
        EXPECT_TRUE(parser.command.empty());
        EXPECT_EQ(parser.args.Count(), 0u);
    }
}

TEST(CmdLineParser, OneWordIsTheCommand)
{
    for (const char* line : {"help", "  help", "help \t", "\r\nhelp\r"}) {
        BCmdLineParser parser;
        EXPECT_TRUE(parser.Parse(line));
        EXPECT_EQ(TextOf(parser.command), "help");
        EXPECT_EQ(parser.args.Count(), 0u);
    }
}

TEST(CmdLineParser, CommandEndsAtWhiteSpaceAndNotAtAQuote)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.Parse("say\"a b\" c"));
    EXPECT_EQ(TextOf(parser.command), "say\"a");
    // The quote that closes is, to the arguments, one that opens.
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("b", " c"));
}

TEST(CmdLineParser, CommandIsNoPrefix)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.Parse("x= y"));
    EXPECT_EQ(TextOf(parser.command), "x=");
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("y"));
}

TEST(CmdLineParser, SecondLineKeepsNothingOfTheFirst)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.Parse("set n= 'open"));
    EXPECT_TRUE(parser.Parse("get a"));
    EXPECT_EQ(TextOf(parser.command), "get");
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("a"));
    EXPECT_TRUE(parser.Parse("list"));
    EXPECT_THAT(WordsOf(parser.args), IsEmpty());
}

TEST(CmdLineParser, LineMayBeATextOfTheParsersOwn)
{
    const std::string inner = "set 'two words' " + std::string(100, 'x');
    BCmdLineParser parser;
    EXPECT_TRUE(parser.Parse(("run a \"" + inner + "\"").c_str()));
    ASSERT_EQ(parser.args.Count(), 2u);
    EXPECT_TRUE(parser.Parse(parser.args[1]));
    EXPECT_EQ(TextOf(parser.command), "set");
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("two words", std::string(100, 'x')));
    parser.command = "get b";
    EXPECT_TRUE(parser.Parse(parser.command));
    EXPECT_EQ(TextOf(parser.command), "get");
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("b"));
}

TEST(CmdLineParser, NulEndsTheLine)
{
    BCmdLineParser parser;
    EXPECT_TRUE(parser.Parse(BString("get a\0b c", 9)));
    EXPECT_THAT(WordsOf(parser.args), ElementsAre("a"));
    EXPECT_TRUE(parser.Parse(BString("ge\0t a", 6)));
    EXPECT_EQ(TextOf(parser.command), "ge");
    EXPECT_EQ(parser.args.Count(), 0u);
    EXPECT_FALSE(parser.Parse(BString("\0get", 4)));
    EXPECT_TRUE(parser.command.empty());
}

TEST(CmdLineParser, SwitchIsADashAndACharacter)
{
    for (const char* text : {"-a", "-A", "-1", "--", "- ", "-abc", "-\xff"})
        EXPECT_TRUE(BCmdLineParser::IsSwitch(text)) << text;
    for (const char* text : {"", "-", "a", "a-", "ab", " -a"})
        EXPECT_FALSE(BCmdLineParser::IsSwitch(text)) << text;
    EXPECT_FALSE(BCmdLineParser::IsSwitch(BString("-\0a", 3)));
}

TEST(CmdLineParser, SwitchIsSplitFromItsValue)
{
    const struct {
        const char* text;
        char sw;
        const char* value;
    } cases[] = {{"-a", 'a', ""},
                 {"-a10.0.0.1", 'a', "10.0.0.1"},
                 {"-Cpublic", 'C', "public"},
                 {"--x", '-', "x"},
                 {"-c=", 'c', "="},
                 {"-a two words", 'a', " two words"},
                 {"-p1", 'p', "1"}};
    for (const auto& row : cases) {
        char sw = '?';
        BString value("old");
        EXPECT_TRUE(BCmdLineParser::SplitSwitch(row.text, sw, value)) << row.text;
        EXPECT_EQ(sw, row.sw);
        EXPECT_EQ(TextOf(value), row.value);
    }
}

TEST(CmdLineParser, NoSwitchLeavesTheOutParameters)
{
    for (const char* text : {"", "-", "a10", "a"}) {
        char sw = '?';
        BString value("old");
        EXPECT_FALSE(BCmdLineParser::SplitSwitch(text, sw, value));
        EXPECT_EQ(sw, '?');
        EXPECT_EQ(TextOf(value), "old");
    }
}

TEST(CmdLineParser, ValueMayReplaceItsOwnSwitch)
{
    BString text("-a10");
    char sw = '?';
    EXPECT_TRUE(BCmdLineParser::SplitSwitch(text, sw, text));
    EXPECT_EQ(sw, 'a');
    EXPECT_EQ(TextOf(text), "10");
}

TEST(CmdLineParser, ValueKeepsBytesBehindANul)
{
    char sw = '?';
    BString value;
    EXPECT_TRUE(BCmdLineParser::SplitSwitch(BString("-ax\0y", 5), sw, value));
    EXPECT_EQ(TextOf(value), std::string("x\0y", 3));
}

TEST(CmdLineParser, DumpCountsArgumentsFromOne)
{
    BCmdLineParser parser;
    testing::internal::CaptureStdout();
    parser.Dump();
    parser.Parse("set x \"two words\"");
    parser.Dump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "CMD: \nARGS:\nCMD: set\nARGS:\n[1] x\n[2] two words\n");
}

// The rules once more, character by character instead of token by token.
class NaiveArguments {
public:
    Words Of(const std::string& text)
    {
        for (const char c : text)
            Take(c);
        EndWord();
        if (m_flag)
            m_args.push_back(m_prefix + m_current);
        else if (!m_current.empty())
            m_args.push_back(m_current);
        return m_args;
    }

private:
    void Take(char c)
    {
        if (m_quote) {
            if (c == m_quote)
                m_quote = '\0';
            else
                m_current += c;
        } else if (c == '"' || c == '\'') {
            EndWord();
            if (!m_current.empty() && !m_flag)
                m_args.push_back(m_current);
            m_current.clear();
            m_quote = c;
        } else if (std::isspace(static_cast<unsigned char>(c)) && c != '\v' && c != '\f') {
            EndWord();
        } else {
            m_word += c;
        }
    }

    void EndWord()
    {
        if (m_word.empty())
            return;
        if (m_word.back() == '=') {
            m_prefix = m_word;
            m_flag = true;
        }
        if (!m_current.empty())
            m_args.push_back((m_flag ? m_prefix : "") + m_current);
        m_current = std::exchange(m_word, "");
    }

    Words m_args;
    std::string m_word, m_current, m_prefix;
    bool m_flag = false;
    char m_quote = '\0';
};

// Few characters, so that the rules meet often.
std::string RandomText(std::mt19937& random, unsigned maxLength)
{
    static const std::string s_often = "ab= \"'\t";
    std::string text(random() % (maxLength + 1), ' ');
    for (char& c : text) {
        const unsigned roll = random() % 64;
        c = roll < 60 ? s_often[roll % s_often.size()] : static_cast<char>(1 + random() % 255);
    }
    return text;
}

TEST(CmdLineParser, RandomTextsGiveWhatTheRulesSay)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = RandomText(random, 24);
        ASSERT_EQ(ArgsOf(text), NaiveArguments().Of(text)) << "seed " << seed << ": " << text;
    }
}

TEST(CmdLineParser, ShortTextsGiveWhatTheRulesSay)
{
    const std::string alphabet = "a= \"'";
    for (unsigned length = 0; length <= 6; ++length) {
        unsigned count = 1;
        for (unsigned i = 0; i < length; ++i)
            count *= 5;
        for (unsigned number = 0; number < count; ++number) {
            std::string text;
            for (unsigned i = 0, rest = number; i < length; ++i, rest /= 5)
                text += alphabet[rest % 5];
            ASSERT_EQ(ArgsOf(text), NaiveArguments().Of(text)) << text;
        }
    }
}

TEST(CmdLineParser, RandomLinesGiveNoMoreThanTheirPartsAndPrefixes)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        const std::string text = RandomText(random, 1024);
        BCmdLineParser parser;
        const bool parsed = parser.Parse(text.c_str());
        const Words args = WordsOf(parser.args);
        ASSERT_EQ(parsed, !parser.command.empty()) << "seed " << seed << ": " << text;
        // A prefix before a word, or before what is in quotes.
        ASSERT_LE(args.size(), text.size()) << "seed " << seed << ": " << text;
        for (const std::string& arg : args)
            ASSERT_LE(arg.size(), 2 * text.size()) << "seed " << seed << ": " << text;
    }
}

} // namespace
} // namespace VLK
