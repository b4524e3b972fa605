// The console: the parser of command lines against its rules, and lines run by a
// console with the commands of a MIB handler.
#include "fuzz/Fuzz.h"
#include "tests/support/ListHandler.h"
#include "tests/support/ScriptedStream.h"

#include <vkmibh/cli.h>
#include <vkmibh/cmdline.h>
#include <vkmibh/handler.h>

namespace VLK::Fuzz {
namespace {

using Words = std::vector<std::string>;

const std::string kBlanks = " \t\r\n";

Words WordsOf(const BStringArray& array)
{
    Words words;
    for (unsigned i = 0; i < array.Count(); ++i)
        words.push_back(PlainOf(array[static_cast<int>(i)]));
    return words;
}

// The arguments, by what a person sees: words, and texts in quotes.
class Reading {
public:
    explicit Reading(const std::string& text)
    {
        for (size_t at = 0; at < text.size();) {
            const char c = text[at];
            if (c == '"' || c == '\'')
                at = Quoted(text, at);
            else if (kBlanks.find(c) != std::string::npos)
                ++at;
            else
                at = Word(text, at);
        }
        if (m_hasPrefix)
            words.push_back(m_prefix + m_pending);
        else if (!m_pending.empty())
            words.push_back(m_pending);
    }

    Words words;

private:
    size_t Quoted(const std::string& text, size_t at)
    {
        if (!m_pending.empty() && !m_hasPrefix)
            words.push_back(m_pending);
        const size_t end = std::min(text.find(text[at], at + 1), text.size());
        m_pending = text.substr(at + 1, end - at - 1);
        return end + 1;
    }
    size_t Word(const std::string& text, size_t at)
    {
        const size_t end = std::min(text.find_first_of("'\"" + kBlanks, at), text.size());
        const std::string word = text.substr(at, end - at);
        if (word.back() == '=') {
            m_prefix = word;
            m_hasPrefix = true;
        }
        if (!m_pending.empty())
            words.push_back((m_hasPrefix ? m_prefix : "") + m_pending);
        m_pending = word;
        return end;
    }

    std::string m_pending;
    std::string m_prefix;
    bool m_hasPrefix = false;
};

std::string UpToNul(const std::string& text) { return text.substr(0, text.find('\0')); }

void CheckParser(const std::string& text)
{
    const std::string line = UpToNul(text);
    const size_t begin = std::min(line.find_first_not_of(kBlanks), line.size());
    const size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
    const std::string command = line.substr(begin, end - begin);
    BCmdLineParser parser;
    Require(parser.Parse(TextOf("x y")), "a plain line"); // what is left of it must not show
    Require(parser.Parse(TextOf(text)) == !command.empty(), "whether there is a command");
    Require(PlainOf(parser.command) == command, "the command");
    const Words expected = command.empty() ? Words() : Reading(line.substr(end)).words;
    Require(WordsOf(parser.args) == expected, "the arguments");
    for (unsigned i = 0; i < parser.args.Count(); ++i) {
        const BString& word = parser.args[static_cast<int>(i)];
        const std::string plain = PlainOf(word);
        char name = '?';
        BString value;
        const bool isSwitch = plain.size() >= 2 && plain[0] == '-';
        Require(BCmdLineParser::SplitSwitch(word, name, value) == isSwitch, "a switch");
        Require(!isSwitch || (name == plain[1] && PlainOf(value) == plain.substr(2)), "its value");
    }
}

// Whatever is typed, the console says something or does nothing, and goes on
// until it is told to end.
void CheckConsole(const std::string& text)
{
    Test::ListHandler list("1.3.9");
    list.keepsLog = false;
    list.Add("1.3.9.1.0", 5);
    list.AddCounter64("1.3.9.2.0");
    BMibHandler handler(nullptr);
    Require(handler.RegisterSubtreeHandler(&list), "a region");
    Test::ScriptedStream stream;
    BCLI console(&handler, &stream);
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        BCmdLineParser parser;
        const bool isQuit = parser.Parse(TextOf(line)) && PlainOf(parser.command) == "q";
        if (console.Exec(TextOf(line)) == isQuit)
            Differ("the end of the console by '" + line + "'");
        begin = end + 1;
    }
    Require(console.Exec(TextOf("get 1.3.9.1.0")), "a last command");
    Require(!stream.texts.empty() && stream.texts.back().find("1.3.9.1.0") != std::string::npos,
            "its answer");
    handler.UnregisterSubtreeHandler(&list);
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    VLK::Fuzz::CheckParser(text);
    VLK::Fuzz::CheckConsole(text);
    return 0;
}
