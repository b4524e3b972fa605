#include "host/access/ReportingHandler.h"

#include "host/RequestTransaction.h"

namespace VLK::host {

namespace {

std::string TextOf(const BString& text) { return std::string(text.c_str(), text.length()); }

std::string Quoted(const BString& text) { return "'" + TextOf(text) + "'"; }

EViewType ViewOf(int pduType) { return pduType == ePduSet ? eViewWrite : eViewRead; }

bool IsStep(int pduType) { return pduType == ePduGetNext || pduType == ePduGetBulk; }

const char* NameOf(int pduType)
{
    switch (pduType) {
    case ePduGet:
        return "get";
    case ePduGetNext:
        return "getnext";
    case ePduGetBulk:
        return "getbulk";
    default:
        return "set";
    }
}

// The first binding behind which nothing was found, or null.
const BVarBind* FirstAtEnd(int status, int errorIndex, const BVarBindList& list)
{
    int count = static_cast<int>(list.Count());
    if (status == eSnmpNoSuchName) // SNMPv1's end
        return errorIndex >= 1 && errorIndex <= count ? &list[errorIndex - 1] : nullptr;
    for (int i = 0; status == eSnmpNoError && i < count; ++i) {
        if (list[i].Value().Syntax() == eEndOfMibView)
            return &list[i];
    }
    return nullptr;
}

std::string Requester(const BSecurityParams& security, const BString& context)
{
    const SRequest* request = BRequestTransaction::OfThisThread();
    std::string who = Quoted(security.securityName) + " with " +
                      NameOfModel(security.securityModel) +
                      (request ? " from " + request->remote.ToString() : " at the console");
    return context.empty() ? who : who + " in context " + Quoted(context);
}

std::string Reason(const SVacmDecision& decision, EViewType type)
{
    static const char* const kTypes[] = {"read", "write", "notify"};
    const std::string group = decision.group ? "its group '" + *decision.group + "'" : "";
    switch (decision.answer) {
    case eVacmNoSuchContext:
        return "there is no such context";
    case eVacmNoGroupName:
        return "it is in no group";
    case eVacmNoAccessEntry:
        return group + " has no access entry for it";
    case eVacmNoSuchView:
        if (decision.view->empty())
            return group + " has no " + kTypes[type] + " view";
        return "there is no view " + Quoted(*decision.view);
    default:
        return "it is not in the view " + Quoted(*decision.view);
    }
}

} // namespace

BReportingHandler::BReportingHandler(BAccess& access, ISetSaves& saves, BMibTree* tree)
    : BSavingHandler(&access, saves, tree), m_access(access)
{
}

int BReportingHandler::Query(int pduType, int transactionId, const BSecurityParams& security,
                             const BString& context, BVarBindList& list, int& errorIndex)
{
    const BRightsOfRequest rights(m_access);
    int status = BSavingHandler::Query(pduType, transactionId, security, context, list, errorIndex);
    EViewType type = ViewOf(pduType);
    if (status == eSnmpAuthorizationError && errorIndex >= 1 &&
        errorIndex <= static_cast<int>(list.Count())) {
        const BObjectIdentifier& name = list[errorIndex - 1].Name();
        Report(pduType, security, context, name,
               rights->vacm.Decide(security, type, context, name));
    } else if (IsStep(pduType)) {
        if (const BVarBind* end = FirstAtEnd(status, errorIndex, list))
            Report(pduType, security, context, end->Name(),
                   rights->vacm.FindView(security, type, context));
    }
    return status;
}

void BReportingHandler::Report(int pduType, const BSecurityParams& security, const BString& context,
                               const BObjectIdentifier& name, const SVacmDecision& decision)
{
    // The views may have changed since.
    if (decision.answer == eVacmAllowed)
        return;
    try {
        m_access.Refused().Write([&] {
            return std::string("refused ") + NameOf(pduType) + " of " + name.ToString().c_str() +
                   " to " + Requester(security, context) + ": " + Reason(decision, ViewOf(pduType));
        });
    } catch (const std::bad_alloc&) {
        return;
    }
}

} // namespace VLK::host
