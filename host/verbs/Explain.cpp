// explain: who serves an object, and who may do what with it.
#include "host/access/ViewChoice.h"
#include "host/verbs/VerbTexts.h"

namespace VLK::host {

namespace {

const char* const kKinds[] = {"read", "write", "notify"};

const char* NameOfSyntax(unsigned char syntax)
{
    switch (syntax) {
    case eAsnInteger:
        return "an INTEGER";
    case eAsnOctetString:
        return "an OCTET STRING";
    case eAsnObjectId:
        return "an OBJECT IDENTIFIER";
    case eAsnIpAddress:
        return "an IpAddress";
    case eAsnCounter32:
        return "a Counter32";
    case eAsnGauge32:
        return "a Gauge32";
    case eAsnTimeTicks:
        return "a TimeTicks";
    case eAsnOpaque:
        return "an Opaque";
    case eAsnCounter64:
        return "a Counter64";
    default:
        return "of no type that is known";
    }
}

class BOpenTransaction {
public:
    explicit BOpenTransaction(BTransaction& transaction)
        : m_id(BTransactions::GetInstance()->StartTransaction(&transaction))
    {
    }
    ~BOpenTransaction() { BTransactions::GetInstance()->EndTransaction(m_id); }
    BOpenTransaction(const BOpenTransaction&) = delete;
    BOpenTransaction& operator=(const BOpenTransaction&) = delete;
    int Id() const { return static_cast<int>(m_id); }

private:
    unsigned m_id;
};

std::string InstanceText(const BObjectSyntax& value, bool isV1)
{
    switch (value.Syntax()) {
    case eNoSuchObject:
        return "none: the module has no such object";
    case eNoSuchInstance:
        return "none: the module has the object, but no such instance";
    default:
        break;
    }
    const std::string text = std::string("there is one, ") + NameOfSyntax(value.Syntax());
    return isV1 && value.Syntax() == eAsnCounter64 ? text + ", which SNMPv1 cannot hold" : text;
}

// Asks for it in the name of who is asked about.
std::string Instance(BWatchingHandler& handler, const BObjectIdentifier& name, const SAsked& asked)
{
    BMibHandler::BCLITransaction transaction(asked.security, asked.context, BIpAddress());
    transaction.SetPduType(ePduGet);
    const BOpenTransaction open(transaction);
    BVarBindList list;
    if (!list.Append(name))
        throw std::bad_alloc();
    int errorIndex = 0;
    const int status =
        handler.Query(ePduGet, open.Id(), asked.security, asked.context, list, errorIndex);
    if (status != eSnmpNoError)
        return std::string("not known: the module answers ") + LabelErrorStatus(status);
    return InstanceText(list[0].Value(), asked.isV1);
}

std::string SourcesText(const std::vector<BNetwork>& sources)
{
    std::string text;
    for (const BNetwork& network : sources)
        text += (text.empty() ? "from " : ", ") + network.ToString();
    return text.empty() ? "from nowhere" : text;
}

std::string SecurityText(const SAsked& asked)
{
    const BSecurityParams& security = asked.security;
    return "name " + InQuotes(TextOf(security.securityName)) + ", " +
           NameOfModel(security.securityModel) + ", " +
           LabelSecurityLevel(static_cast<ESecurityLevel>(security.securityLevel)) + ", context " +
           InQuotes(TextOf(asked.context));
}

std::string EntryText(const SAccess& entry)
{
    return (entry.isPrefix ? "contexts that begin with " : "context ") + InQuotes(entry.context) +
           ", model " + NameOfModel(entry.model) + ", at least " + LabelSecurityLevel(entry.level);
}

std::string RowText(const SFamily& row)
{
    std::string text = TextOf(row.subtree.ToString());
    if (row.mask.Length() != 0)
        text += " mask " + TextOf(row.mask.ToString());
    return text + (row.type == eFilterIncluded ? " included" : " excluded");
}

std::string ViewText(const BVacm& vacm, const std::string& view, const BObjectIdentifier& name)
{
    const SViewChoice choice = vacm.ChooseRow(view, name);
    if (choice.row)
        return "view " + InQuotes(view) + ", row " + RowText(*choice.row);
    return "view " + InQuotes(view) +
           (choice.hasRows ? ", no row of it matches" : ", which has no rows");
}

std::string ReasonText(const BVacm& vacm, const SVacmDecision& decision, const SAsked& asked,
                       EViewType type, const BObjectIdentifier& name)
{
    switch (decision.answer) {
    case eVacmNoSuchContext:
        return "there is no context " + InQuotes(TextOf(asked.context));
    case eVacmNoGroupName:
        return "it is in no group";
    case eVacmNoAccessEntry:
        return "no access entry of the group fits";
    default:
        break;
    }
    if (decision.view->empty())
        return std::string("the access entry has no ") + kKinds[type] + " view";
    return ViewText(vacm, TextOf(*decision.view), name);
}

void AddGroup(CLines& lines, const BVacm& vacm, const SVacmDecision& decision, const SAsked& asked)
{
    if (decision.answer == eVacmNoSuchContext)
        return;
    lines.push_back(Row("group", decision.group ? InQuotes(*decision.group) : "none"));
    if (!decision.group)
        return;
    const std::optional<SAccess> entry = vacm.EntryFor(asked.security, asked.context);
    lines.push_back(Row("entry", entry ? EntryText(*entry) : "none that fits"));
}

} // namespace

CLines ExplainLines(const BVerbs::SSources& sources, const BObjectIdentifier& name,
                    const SAsked& asked)
{
    const BRightsOfRequest rights(sources.access);
    const BVacm& vacm = rights->vacm;
    SVacmDecision decisions[3];
    for (EViewType type : {eViewRead, eViewWrite, eViewNotify})
        decisions[type] = vacm.Decide(asked.security, type, asked.context, name);
    const bool isReadable = decisions[eViewRead].answer == eVacmAllowed;

    CLines lines{Row("object", TextOf(name.ToString()))};
    const std::optional<SRegion> region = sources.regions.Holding(name);
    lines.push_back(Row("region", region ? TextOf(region->oid.ToString()) + " of " + region->module
                                         : "none: no module has registered there"));
    const std::string instance = isReadable ? Instance(sources.handler, name, asked)
                                            : "not asked for, as it may not be read";
    if (region)
        lines.push_back(Row("instance", instance));
    lines.push_back(Row("for", asked.who));
    if (asked.sources)
        lines.push_back(Row("sources", SourcesText(*asked.sources)));
    lines.push_back(Row("security", SecurityText(asked)));
    AddGroup(lines, vacm, decisions[eViewRead], asked);
    std::string verdict;
    for (EViewType type : {eViewRead, eViewWrite, eViewNotify}) {
        const bool isAllowed = decisions[type].answer == eVacmAllowed;
        lines.push_back(Row(kKinds[type], ReasonText(vacm, decisions[type], asked, type, name)));
        verdict += std::string(verdict.empty() ? "" : ", ") + kKinds[type] +
                   (isAllowed ? " allowed" : " refused");
    }
    if (!region)
        verdict += "; but nobody serves it";
    lines.push_back(Row("verdict", verdict));
    return lines;
}

} // namespace VLK::host
