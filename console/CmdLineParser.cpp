#include <vkmibh/cmdline.h>

#include <cstdio>
#include <cstring>
#include <utility>

namespace VLK {

namespace {

constexpr char kCommandDelimiters[] = " \t\n\r";
constexpr char kArgumentDelimiters[] = "'\" \t\n\r";
// CONTRACT: the sets of the text inside quotes are part of the parser and take
// no part in its rules: a quote ends at its own character and nowhere else.
[[maybe_unused]] constexpr char kDoubleQuotedDelimiters[] = "\" \t\n\r";
[[maybe_unused]] constexpr char kSingleQuotedDelimiters[] = "' \t\n\r";

bool IsArgumentDelimiter(char c) { return std::strchr(kArgumentDelimiters, c) != nullptr; }

// These tell whether there was memory for the result.
bool Assign(BString& to, const BString& text) { return to.Assign(text).length() == text.length(); }

bool Append(BString& to, const BString& text)
{
    const unsigned before = to.length();
    return to.Append(text).length() - before == text.length();
}

// Makes arguments out of tokens, one token after the other.
class Arguments {
public:
    explicit Arguments(BStringArray& args) : m_args(args) {}

    // Both are false only without memory.
    bool Take(const BString& token);
    bool End();

private:
    bool OpenQuote(char quote);
    bool TakeWord(const BString& word);
    bool Push(bool prefixed);

    BStringArray& m_args;
    char m_quote = '\0'; // the one that is open
    BString m_current;
    BString m_prefix;
    // CONTRACT: stays set up to the end of the line, so that a prefix goes
    // before all arguments after it.
    bool m_hasPrefix = false;
};

bool Arguments::Take(const BString& token)
{
    const char first = token[0];
    if (m_quote != '\0') {
        if (first != m_quote)
            return Append(m_current, token);
        m_quote = '\0';
        return true;
    }
    if (first == '"' || first == '\'')
        return OpenQuote(first);
    return IsArgumentDelimiter(first) || TakeWord(token);
}

bool Arguments::OpenQuote(char quote)
{
    // CONTRACT: with a prefix the pending text is dropped. It is the prefix
    // itself in name="value"; but a word between prefix and quote goes too.
    const bool pushed = m_current.empty() || m_hasPrefix || Push(false);
    m_current.clear();
    m_quote = quote;
    return pushed;
}

bool Arguments::TakeWord(const BString& word)
{
    // CONTRACT: the new prefix is there before the pending argument is pushed,
    // which therefore gets it.
    if (word[word.length() - 1] == '=') {
        m_hasPrefix = true;
        if (!Assign(m_prefix, word))
            return false;
    }
    if (!m_current.empty() && !Push(m_hasPrefix))
        return false;
    return Assign(m_current, word);
}

bool Arguments::End()
{
    if (m_current.empty() && !m_hasPrefix) {
        VKDbgModuleTraceClass(eTraceCmdParser, "{{ %s }}", m_current.c_str());
        return true;
    }
    return Push(m_hasPrefix);
}

bool Arguments::Push(bool prefixed)
{
    VKDbgModuleTraceClass(eTraceCmdParser, "{{ %s }}", m_current.c_str());
    if (!prefixed)
        return m_args.PushBack(m_current);
    BString joined;
    return Assign(joined, m_prefix) && Append(joined, m_current) && m_args.PushBack(joined);
}

} // namespace

BCmdLineParser::BCmdLineParser() = default;

BCmdLineParser::~BCmdLineParser() = default;

bool BCmdLineParser::Parse(const BString& line)
{
    // The line may be the command or one of the arguments: they stay until it
    // has been read.
    const BString oldCommand(std::move(command));
    const BStringArray oldArgs(std::move(args));
    const BString& text = &line == &command ? oldCommand : line;
    if (text.empty())
        return false;
    BStringTokenizer words(text.c_str(), kCommandDelimiters, false);
    BString first = words.NextToken();
    if (first.empty())
        return false;
    command = std::move(first);
    if (ParseArgs(text.c_str() + words.Offset()))
        return true;
    command.clear();
    args.Clear();
    return false;
}

bool BCmdLineParser::ParseArgs(const char* text)
{
    VKDbgModuleTraceClass(eTraceCmdParser, "ParseArgs: '%s'", text ? text : BString::_Nullstr());
    BStringTokenizer tokens(text, kArgumentDelimiters, true);
    if (!tokens.HasMoreTokens() && VKStrlen(text) != 0)
        return false;
    Arguments arguments(args);
    while (tokens.HasMoreTokens()) {
        const BString token = tokens.NextToken();
        if (token.empty())
            return false;
        VKDbgModuleTraceClass(eTraceCmdParser, "token = '%s'", token.c_str());
        if (!arguments.Take(token))
            return false;
    }
    return arguments.End();
}

void BCmdLineParser::Dump() const
{
    const TTraceGuard guard;
    std::printf("CMD: %s\n", command.c_str());
    std::printf("ARGS:\n");
    for (unsigned i = 0; i < args.Count(); ++i) {
        const int index = static_cast<int>(i);
        std::printf("[%d] %s\n", index + 1, args[index].c_str());
    }
}

bool BCmdLineParser::IsSwitch(const BString& s)
{
    return s.length() >= 2 && s[0] == '-' && BCharType::ToLower(s[1]) != '\0';
}

bool BCmdLineParser::SplitSwitch(const BString& s, char& sw, BString& value)
{
    if (!IsSwitch(s))
        return false;
    const char character = s[1];
    const unsigned length = s.length() - 2;
    if (value.Assign(s.c_str() + 2, length).length() != length)
        return false;
    sw = character;
    return true;
}

} // namespace VLK
