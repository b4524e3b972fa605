// The console commands get, getnext and set: requests like any other, from
// words and to text.
#include <vkmibh/handler.h>

#include "foundation/HostCall.h"
#include "foundation/TextWriter.h"
#include "handler/CmdArguments.h"

namespace VLK {

namespace {

enum ECommand { eCmdGet = 0, eCmdGetNext = 1, eCmdSet = 2 };

constexpr int kNoPduType = -1;

int PduTypeOf(int command)
{
    switch (command) {
    case eCmdGet:
        return ePduGet;
    case eCmdGetNext:
        return ePduGetNext;
    case eCmdSet:
        return ePduSet;
    default:
        return kNoPduType;
    }
}

// Open for as long as it lives.
class OpenTransaction {
public:
    explicit OpenTransaction(BTransaction& transaction)
        : m_registry(BTransactions::GetInstance()),
          m_id(m_registry ? m_registry->StartTransaction(&transaction) : 0)
    {
    }
    ~OpenTransaction()
    {
        if (m_registry)
            m_registry->EndTransaction(m_id);
    }
    OpenTransaction(const OpenTransaction&) = delete;
    OpenTransaction& operator=(const OpenTransaction&) = delete;

    // 0, or an id that is not known, when it could not be registered: the
    // request runs all the same, and nobody learns of its origin.
    int Id() const { return static_cast<int>(m_id); }

private:
    BTransactions* const m_registry;
    const unsigned m_id;
};

// Runs the list through the handler's own Query().
int RunRequest(BMibHandler& handler, int pduType, BMibHandler::BCLITransaction& transaction,
               const BSecurityParams& security, const BString& contextName, BVarBindList& list,
               int& errorIndex)
{
    if (!transaction.Describes(security, contextName))
        return eSnmpResourceUnavailable;
    transaction.SetPduType(pduType);
    const OpenTransaction open(transaction);
    return HostCall(
        [&] { return handler.Query(pduType, open.Id(), security, contextName, list, errorIndex); },
        int(eSnmpGenErr));
}

// One text is one Write(); one without memory is left out.
void WriteTo(ICmdStream& out, const BString& text)
{
    if (!text.empty())
        HostCall([&] { return out.Write(text); }, 0);
}

// Whether nothing is all there is to print of a value.
bool PrintsNothing(const BObjectSyntax& value)
{
    switch (value.Syntax()) {
    case eAsnOctetString:
    case eAsnOpaque:
        return value.Octets().Length() == 0;
    case eAsnObjectId:
        return value.ObjectId().Length() == 0;
    case eAsnInteger:
    case eAsnNull:
    case eAsnIpAddress:
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks:
    case eAsnCounter64:
    case eNoSuchObject:
    case eNoSuchInstance:
    case eEndOfMibView:
        return false;
    default:
        return true;
    }
}

// A text without memory is empty, and "sysContact.0 = " would be a lie.
void WriteBinding(ICmdStream& out, const BVarBind& binding)
{
    const BString name = binding.Name().ToString();
    const BString value = binding.Value().ValToStr();
    if (name.empty() && binding.Name().Length() != 0)
        return;
    if (value.empty() && !PrintsNothing(binding.Value()))
        return;
    BString line;
    {
        CTextWriter writer(line);
        writer.Put(name);
        writer.Put(" = ");
        writer.Put(value);
        writer.Put('\n');
    }
    WriteTo(out, line);
}

void WriteStatus(ICmdStream& out, int status, int errorIndex)
{
    BString line;
    {
        // CONTRACT: no line end, so that the next prompt stands behind it.
        CTextWriter writer(line);
        writer.Put("snmpErr: ");
        writer.Put(LabelErrorStatus(status));
        writer.Put(" at index ");
        writer.PutNumber(errorIndex);
    }
    WriteTo(out, line);
}

void PutQuoted(CTextWriter& message, const char* what, const BString* argument)
{
    message.Put(what);
    message.Put(" '");
    if (argument)
        message.Put(*argument);
    message.Put('\'');
}

void PutUsage(CTextWriter& message, const char* what, const BString& cmd, const char* usage)
{
    message.Put(what);
    message.Put("\nUsage ");
    message.Put(cmd);
    message.Put(' ');
    message.Put(usage);
}

} // namespace

const SCmdMapEntry BMibHandler::s_cliEntries[] = {
    {eCmdGet, "get", "Get", "<oid> [<oid> ...] [-aIpAddress]"},
    {eCmdGetNext, "getnext", "Get Next", "<oid> [<oid> ...] [-aIpAddress]"},
    {eCmdSet, "set", "Set", "<oid> <tag> <value> [<oid> <tag> <value> ...] [-aIpAddress]"},
    {-1, nullptr, nullptr, nullptr}};

// CONTRACT: the quote characters belong to the name; console messages show it so.
const char BMibHandler::s_cmdHandlerName[] = "\"BMibHandler\"";

int BMibHandler::CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                            const BSecurityParams& secParams, const BString& contextName)
{
    // CONTRACT: a word that is no command is reported and then runs as `get`,
    // the command with id 0; the console gives only words that it has found.
    const int command = HostCall([&] { return CmdId(cmd, out); }, int(eCmdGet));
    const int pduType = PduTypeOf(command);
    if (command < 0 || pduType == kNoPduType)
        return 0;
    BIpAddress localAddress;
    BVarBindList list;
    int position = 0;
    ECmdError error = LocalAddressOf(args, localAddress);
    if (error == eCmdNoError)
        error = pduType == ePduSet ? TriplesToList(args, list, position)
                                   : NamesToList(args, list, position);
    int errorIndex = 0;
    if (error == eCmdNoMemory) {
        CmdFormatResult(out, eSnmpResourceUnavailable, errorIndex, list);
        return 0;
    }
    if (error != eCmdNoError) {
        CmdFormatErr(out, error, cmd, args, position);
        return 0;
    }
    BCLITransaction transaction(secParams, contextName, localAddress);
    const int status =
        RunRequest(*this, pduType, transaction, secParams, contextName, list, errorIndex);
    CmdFormatResult(out, status, errorIndex, list);
    return 0;
}

void BMibHandler::CmdFormatResult(ICmdStream& out, int status, int errorIndex,
                                  const BVarBindList& list)
{
    if (status != eSnmpNoError) {
        WriteStatus(out, status, errorIndex);
        return;
    }
    for (int i = 0; i < static_cast<int>(list.Count()); ++i)
        WriteBinding(out, list[i]);
}

void BMibHandler::CmdFormatErr(ICmdStream& out, int code, const BString& cmd,
                               const BStringArray& args, int index)
{
    BString message;
    {
        CTextWriter writer(message);
        writer.Put(cmd);
        writer.Put(": ");
        switch (code) {
        case eCmdInvalidTag:
            PutQuoted(writer, "invalid tag", PlainArgumentAt(args, index));
            break;
        case eCmdInvalidIpAddress:
            PutQuoted(writer, "invalid ip address", PlainArgumentAt(args, index));
            break;
        case eCmdInvalidOid:
            PutQuoted(writer, "invalid oid", PlainArgumentAt(args, index));
            break;
        case eCmdInvalidArguments:
            PutUsage(writer, "invalid argument(s)", cmd, CmdGetArgsDescr(cmd));
            break;
        case eCmdArgumentsRequired:
            PutUsage(writer, "argument(s) required.", cmd, CmdGetArgsDescr(cmd));
            break;
        default:
            writer.Put("?unknown err?");
            break;
        }
    }
    WriteTo(out, message);
}

const char* BMibHandler::CmdGetHndlrName() const { return s_cmdHandlerName; }

const SCmdMapEntry* BMibHandler::CmdGetMap() const { return s_cliEntries; }

} // namespace VLK
