#include "host/Dispatcher.h"

#include "host/ErrorStatus.h"
#include "host/GetBulk.h"
#include "host/RequestTransaction.h"

namespace VLK::host {

namespace {

void AnswerError(const SRequest& request, SResponse& response)
{
    bool isSet = request.pduType == ePduSet;
    response.status = request.protocol == eSnmpV1 ? StatusForV1(response.status)
                                                  : StatusForV2(response.status, isSet);
    if (response.index < 0 || response.index > static_cast<int>(request.bindings.Count()))
        response.index = 0;
    response.echo = true;
    response.bindings.clear();
}

// SNMPv2 sends no bindings (RFC 3416 section 4.2.1), SNMPv1 the request's.
void AnswerTooBig(const SRequest& request, SResponse& response)
{
    response.index = 0;
    response.echo = request.protocol == eSnmpV1;
    response.bindings.clear();
}

BMessageBudget BudgetOf(const SRequest& request)
{
    return {request.maxMessage, request.community.size(), request.requestId};
}

void Finish(const SRequest& request, SResponse& response)
{
    if (response.status == eSnmpTooBig)
        AnswerTooBig(request, response);
    else if (response.status != eSnmpNoError)
        AnswerError(request, response);
}

} // namespace

BDispatcher::BDispatcher(IMIBHandler& handler, const BCommunityAccess& access, ISetSaves& saves)
    : m_handler(handler), m_access(access), m_saves(saves)
{
}

bool BDispatcher::Handle(SRequest& request, SResponse& response)
{
    if (!m_access.Admits(request.community, request.remote))
        return false;
    response = SResponse();
    switch (request.pduType) {
    case ePduGet:
    case ePduGetNext:
        AnswerList(request, response);
        break;
    case ePduGetBulk:
        if (request.protocol == eSnmpV1)
            return false;
        AnswerBulk(request, response);
        break;
    case ePduSet:
        AnswerSet(request, response);
        break;
    default:
        return false;
    }
    Finish(request, response);
    return true;
}

void BDispatcher::AnswerInstead(int status, const SRequest& request, SResponse& response)
{
    response = SResponse();
    response.status = status;
    Finish(request, response);
}

void BDispatcher::AnswerList(SRequest& request, SResponse& response)
{
    BSecurityParams security = SecurityOf(request);
    BRequestTransaction transaction(request, security);
    BVarBindList list = request.bindings;
    response.status = m_handler.Query(request.pduType, static_cast<int>(transaction.Id()), security,
                                      BString(), list, response.index);
    if (response.status != eSnmpNoError)
        return;
    BMessageBudget budget = BudgetOf(request);
    response.bindings.reserve(list.Count());
    for (unsigned i = 0; i < list.Count(); ++i) {
        if (!budget.Take(list[static_cast<int>(i)])) {
            response.status = eSnmpTooBig;
            return;
        }
        response.bindings.push_back(std::move(list[static_cast<int>(i)]));
    }
}

void BDispatcher::AnswerBulk(const SRequest& request, SResponse& response)
{
    BSecurityParams security = SecurityOf(request);
    BRequestTransaction transaction(request, security);
    auto step = [&](BVarBindList& list, int& errorIndex) {
        return m_handler.Query(ePduGetBulk, static_cast<int>(transaction.Id()), security, BString(),
                               list, errorIndex);
    };
    BMessageBudget budget = BudgetOf(request);
    response.status =
        AnswerGetBulk(step, request.bindings, request.nonRepeaters, request.maxRepetitions, budget,
                      response.bindings, response.index);
}

void BDispatcher::AnswerSet(SRequest& request, SResponse& response)
{
    if (request.unfitStatus != eSnmpNoError) {
        bool allowed = m_access.MayWrite(request.community);
        response.status = allowed ? request.unfitStatus : eSnmpNoAccess;
        response.index = allowed ? request.unfitIndex : 1;
        return;
    }
    BSecurityParams security = SecurityOf(request);
    BRequestTransaction transaction(request, security);
    m_saves.Hold();
    response.status = m_handler.Query(ePduSet, static_cast<int>(transaction.Id()), security,
                                      BString(), request.bindings, response.index);
    // Also after a failure: what was undone may have to be saved.
    if (!m_saves.SaveHeld() && response.status == eSnmpNoError) {
        response.status = eSnmpUndoFailed;
        response.index = 0;
    }
    response.echo = true;
}

} // namespace VLK::host
