// The commands that the console knows itself, but for the one to quit.
#include <vkmibh/cli.h>

#include "console/CliText.h"

namespace VLK {

namespace {

// Fill a name in the list of commands up to the column of the arguments; the
// last one stands also behind a longer name.
constexpr char kBlanks[] = "               ";
constexpr unsigned kMaxBlanksLeftOut = sizeof kBlanks - 2;

struct SWord {
    int value;
    const char* word;
};

constexpr SWord kModels[] = {{1, "SNMPv1"}, {2, "SNMPv2c"}, {3, "USM"}};
// The words that are printed come first.
constexpr SWord kLevels[] = {
    {1, "noAuthNoPriv"}, {2, "authNoPriv"}, {3, "authPriv"}, {1, "1"}, {2, "2"}, {3, "3"}};

template <unsigned n>
const SWord* FindWord(const SWord (&words)[n], const BString& word)
{
    for (const SWord& row : words) {
        if (IsText(word, row.word))
            return &row;
    }
    return nullptr;
}

template <unsigned n>
const SWord* FindValue(const SWord (&words)[n], int value)
{
    for (const SWord& row : words) {
        if (row.value == value)
            return &row;
    }
    return nullptr;
}

// One row of the list; arguments may be null.
void WriteRow(ICmdStream& out, const BString& name, const char* arguments)
{
    if (!arguments) {
        WriteText(out, " ", name, "\n");
        return;
    }
    const unsigned leftOut = name.length() < kMaxBlanksLeftOut ? name.length() : kMaxBlanksLeftOut;
    WriteText(out, " ", name, kBlanks + leftOut, arguments, "\n");
}

void WriteVacm(ICmdStream& out, const BSecurityParams& security, const BString& contextName)
{
    const SWord* const model = FindValue(kModels, security.securityModel);
    const SWord* const level = FindValue(kLevels, security.securityLevel);
    BString modelText(model ? model->word : nullptr);
    if (!model) {
        CTextWriter writer(modelText);
        writer.Put("unknown (");
        writer.PutNumber(security.securityModel);
        writer.Put(')');
    }
    WriteText(out, "*** CLI\n VACM Params: \n   SecurityName: ", security.securityName,
              "\n   SecurityModel: ", modelText,
              "\n   SecurityLevel: ", level ? level->word : "unsupported(0)",
              "\n   ContextName: ", contextName, "\n");
}

} // namespace

void BCLI::ShowCmdList(const BStringArray& args)
{
    static constexpr char s_helpArguments[] = "<cmd>";
    static constexpr char s_vacmArguments[] = "[secName [secModel [secLevel [contextName]]]]";
    WriteText(*m_stream, " Command        Argument(s)\n");
    WriteText(*m_stream, " -------------  "
                         "-------------------------------------------------------------\n");
    const BString* const filter = args.Count() > 0 ? &args[0] : nullptr;
    if (!filter) {
        WriteRow(*m_stream, m_quitName, nullptr);
        WriteRow(*m_stream, m_listName, nullptr);
        WriteRow(*m_stream, m_helpName, s_helpArguments);
        WriteRow(*m_stream, m_vacmName, s_vacmArguments);
    } else if (*filter == m_quitName) {
        WriteRow(*m_stream, m_quitName, nullptr);
    } else if (*filter == m_listName) {
        WriteRow(*m_stream, m_listName, nullptr);
    } else if (BeginsWith(m_helpName, *filter)) {
        WriteRow(*m_stream, m_helpName, s_helpArguments);
    } else if (BeginsWith(m_vacmName, *filter)) {
        WriteRow(*m_stream, m_vacmName, s_vacmArguments);
    }
    const int count = static_cast<int>(m_commands.Count());
    for (int i = 0; i < count; ++i) {
        const BString& name = m_commands.KeyAt(i);
        if (filter && !BeginsWith(name, *filter))
            continue;
        ICmdHandler* const handler = m_commands.HandlerAt(i);
        WriteRow(*m_stream, name, HandlersText([&] { return handler->CmdGetArgsDescr(name); }));
    }
    WriteText(*m_stream, "\n");
}

void BCLI::ShowCmdHelp(const BStringArray& args)
{
    if (args.Count() != 1) {
        const char* const mistake =
            args.Count() == 0 ? "argument required.\n" : "too many arguments.\n";
        WriteText(*m_stream, "help: ", mistake, "Usage: help cmd\n");
        return;
    }
    const BString& name = args[0];
    const char* text = nullptr;
    if (name == m_quitName)
        text = "Terminate application";
    else if (name == m_listName)
        text = "Print list of commands";
    else if (name == m_helpName)
        text = "Print help";
    else if (name == m_vacmName)
        text = "Print OR modify CLI VACM parameters";
    if (text) {
        WriteText(*m_stream, name, ": ", text, "\n");
        return;
    }
    const int index = m_commands.Find(name);
    if (index == Commands::s_none) {
        WriteText(*m_stream, "help: command '", name, "' not found.\n");
    } else if (index == Commands::s_ambiguous) {
        // CONTRACT: this line begins with the typed word, unlike the one above.
        WriteText(*m_stream, name, ": help: command '", name, "' is ambiguous.\n");
    } else {
        ICmdHandler* const handler = m_commands.HandlerAt(index);
        text = HandlersText([&] { return handler->CmdGetDescr(m_commands.KeyAt(index)); });
        // CONTRACT: "decription" is the text that consoles have always shown.
        WriteText(*m_stream, name, ": ", text ? text : "no decription available!", "\n");
    }
}

void BCLI::CliVacm(const BStringArray& args)
{
    const unsigned count = args.Count();
    if (count >= 1)
        m_security.securityName.Assign(args[0]);
    if (count >= 2) {
        const SWord* const model = FindWord(kModels, args[1]);
        if (!model) {
            WriteText(*m_stream, "Unknown security model: ", args[1], "\n");
            return;
        }
        m_security.securityModel = model->value;
    }
    if (count >= 3) {
        const SWord* const level = FindWord(kLevels, args[2]);
        if (!level) {
            WriteText(*m_stream, "Unknown security level: ", args[2], "\n");
            return;
        }
        // CONTRACT: the level goes into the model, and the level stays as it
        // is; operators see it in what is printed.
        m_security.securityModel = level->value;
    }
    if (count >= 4)
        m_contextName.Assign(args[3]);
    WriteVacm(*m_stream, m_security, m_contextName);
}

} // namespace VLK
