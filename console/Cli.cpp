// The console: what is registered, and what runs it.
#include <vkmibh/cli.h>
#include <vkmibh/cmdline.h>

#include "console/CliText.h"
#include "foundation/HostCall.h"

namespace VLK {

namespace {

constexpr int kUsm = 3;
constexpr int kNoAuthNoPriv = 1;

} // namespace

int BCLI::Commands::Find(const BString& name) const
{
    // A name in full sorts before all that begin with it, and these follow one
    // another.
    const int exact = BMapStr2Ptr::Find(name);
    if (exact >= 0)
        return exact;
    const int first = Next(name);
    if (first < 0 || !BeginsWith(KeyAt(first), name))
        return s_none;
    const bool isLast = first + 1 == static_cast<int>(Count());
    return isLast || !BeginsWith(KeyAt(first + 1), name) ? first : s_ambiguous;
}

BCLI::BCLI(ICmdStream* stream) : BCLI(nullptr, stream) {}

BCLI::BCLI(ICmdHandler* handler, ICmdStream* stream)
    : m_handler(handler), m_quitName("q"), m_listName("?"), m_helpName("help"),
      m_vacmName("clivacm"), m_stream(stream ? stream : &m_defaultStream)
{
    m_security.securityModel = kUsm;
    m_security.securityLevel = kNoAuthNoPriv;
    Register(m_handler);
}

BCLI::~BCLI() = default;

int BCLI::Register(ICmdHandler* handler)
{
    if (!handler)
        return 0;
    const int count = HostCall([&] { return handler->CmdCount(); }, 0);
    for (int i = 0; i < count; ++i) {
        const char* const text = HandlersText([&] { return handler->CmdNameAt(i); });
        const BString name(text);
        if (text && name.length() == BString::Strlen(text))
            RegisterName(name, handler);
    }
    return count;
}

void BCLI::RegisterName(const BString& name, ICmdHandler* handler)
{
    const int index = m_commands.Find(name);
    if (index < 0) {
        m_commands.Insert(name, handler);
        return;
    }
    ICmdHandler* const owner = m_commands.HandlerAt(index);
    const char* const ownersName = HandlersText([&] { return owner->CmdHndlrName(); });
    // CONTRACT: "Comamnd" is the text that hosts and scripts know.
    WriteText(*m_stream, "Comamnd '", name, "' is already registered by '", ownersName, "'\n");
}

void BCLI::Start(const char* prompt, const char* quitName)
{
    if (quitName)
        m_quitName.Assign(quitName, BString::Strlen(quitName));
    const BString promptText(prompt);
    BString line;
    do {
        m_stream->Write(promptText);
        m_stream->GetLine(line);
    } while (Exec(line));
}

bool BCLI::Exec(const BString& line)
{
    BCmdLineParser parser;
    if (!parser.Parse(line))
        return true;
    const BString& command = parser.command;
    if (command == m_quitName)
        return false;
    if (command == m_listName)
        ShowCmdList(parser.args);
    else if (command == m_helpName)
        ShowCmdHelp(parser.args);
    else if (command == m_vacmName)
        CliVacm(parser.args);
    else
        RunCommand(command, parser.args);
    return true;
}

void BCLI::RunCommand(const BString& command, const BStringArray& args)
{
    const int index = m_commands.Find(command);
    if (index == Commands::s_none) {
        WriteText(*m_stream, command, ": no such command.\n");
        return;
    }
    if (index == Commands::s_ambiguous) {
        WriteText(*m_stream, command, ": ambiguous command.\n");
        return;
    }
    ICmdHandler* const handler = m_commands.HandlerAt(index);
    const BString& name = m_commands.KeyAt(index);
    const bool ended = HostCall(
        [&] {
            handler->CmdExecute(*m_stream, name, args, m_security, m_contextName);
            return true;
        },
        false);
    if (!ended)
        WriteText(*m_stream, name, ": command failed.\n");
}

BString BCLI::Space(int n)
{
    const unsigned count = n > 1 ? static_cast<unsigned>(n) : 1;
    BString blanks;
    if (blanks.reserve(count)) {
        while (blanks.length() < count)
            blanks.Append(' ');
    }
    return blanks;
}

} // namespace VLK
