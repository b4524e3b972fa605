#include "host/Dispatcher.h"

#include "host/ErrorStatus.h"
#include "host/GetBulk.h"
#include "host/RequestTransaction.h"

#include <algorithm>

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

// Whether it may be for want of a view that the answer is none.
bool MayBeRefused(const SResponse& response)
{
    return response.status != eSnmpNoError ||
           std::any_of(
               response.bindings.begin(), response.bindings.end(),
               [](const BVarBind& binding) { return binding.Value().Syntax() == eEndOfMibView; });
}

// A manager with SNMPv3 may take less than it has sent.
bool FitsEcho(const SRequest& request)
{
    return request.protocol != eSnmpV3 || BMessageBudget(request).Fits(request.bindings);
}

void Finish(const SRequest& request, bool fitsEcho, SResponse& response)
{
    if (response.status != eSnmpNoError && response.status != eSnmpTooBig) {
        AnswerError(request, response);
        if (!fitsEcho)
            response.status = eSnmpTooBig;
    }
    if (response.status == eSnmpTooBig)
        AnswerTooBig(request, response);
}

} // namespace

BDispatcher::BDispatcher(IMIBHandler& handler, BAccess& access, modules::SSnmpCounters& counters,
                         IAuthenticationFailures* failures)
    : m_handler(handler), m_access(access), m_counters(counters), m_failures(failures)
{
}

// The name of an unknown community is not logged: it may be a secret, mistyped.
const SRequester* BDispatcher::AdmitCommunity(const SRequest& request, const SRights& rights)
{
    BCommunities::EAdmission admission;
    const SRequester* requester =
        rights.communities.Admit(request.community, request.remote, admission);
    if (!requester) {
        ++m_counters.inBadCommunityNames;
        if (m_failures)
            m_failures->OnAuthenticationFailure();
        m_access.Unanswered().Write([&] {
            std::string from = "no answer to " + request.remote.ToString() + ": ";
            return admission == BCommunities::eUnknownCommunity
                       ? from + "its community is unknown"
                       : from + "the community '" + request.community + "' is not answered there";
        });
    }
    return requester;
}

// Nobody with SNMPv3 is the operator at the console, whose security name is empty.
std::optional<BDispatcher::SAsker> BDispatcher::Admit(const SRequest& request,
                                                      const SRights& rights)
{
    if (request.protocol == eSnmpV3) {
        if (request.security.securityName.empty())
            return std::nullopt;
        return SAsker{request.security, request.context};
    }
    const SRequester* requester = AdmitCommunity(request, rights);
    if (!requester)
        return std::nullopt;
    return SAsker{requester->Security(request.protocol), requester->context};
}

bool BDispatcher::IsContextUnknown(const SRequest& request, const SAsker& asker)
{
    return request.protocol == eSnmpV3 &&
           BRightsOfRequest(m_access)
                   ->vacm.FindView(asker.security, eViewRead, asker.context)
                   .answer == eVacmNoSuchContext;
}

bool BDispatcher::Handle(SRequest& request, SResponse& response)
{
    BRightsOfRequest rights(m_access); // all of it decides by them
    std::optional<SAsker> asker = Admit(request, *rights);
    if (!asker) {
        m_stats.CountUnanswered();
        return false;
    }
    m_stats.CountRequest(request.pduType, request.protocol);
    response = SResponse();
    if (IsContextUnknown(request, *asker)) {
        response.isContextUnknown = true;
        return true;
    }
    rights.Expect(asker->security, request.pduType == ePduSet ? eViewWrite : eViewRead,
                  asker->context);
    const bool fitsEcho = FitsEcho(request); // before its bindings take values
    if (!Answer(request, *asker, response))
        return false;
    CountBadUse(request, *asker, response);
    Finish(request, fitsEcho, response);
    m_stats.CountStatus(response.status);
    return true;
}

bool BDispatcher::Answer(SRequest& request, const SAsker& asker, SResponse& response)
{
    switch (request.pduType) {
    case ePduGet:
    case ePduGetNext:
        AnswerList(request, asker, response);
        break;
    case ePduGetBulk:
        if (request.protocol == eSnmpV1)
            return false;
        AnswerBulk(request, asker, response);
        break;
    case ePduSet:
        AnswerSet(request, asker, response);
        break;
    default:
        return false;
    }
    return true;
}

// An operation for which the community has no view at all.
void BDispatcher::CountBadUse(const SRequest& request, const SAsker& asker,
                              const SResponse& response)
{
    EViewType type = request.pduType == ePduSet ? eViewWrite : eViewRead;
    if (request.protocol != eSnmpV3 && MayBeRefused(response) &&
        BRightsOfRequest(m_access)->vacm.FindView(asker.security, type, asker.context).answer !=
            eVacmAllowed)
        ++m_counters.inBadCommunityUses;
}

void BDispatcher::AnswerInstead(int status, const SRequest& request, SResponse& response)
{
    response = SResponse();
    response.status = status;
    Finish(request, true, response);
    m_stats.CountStatus(response.status);
}

// The answers take the places of the request's bindings.
void BDispatcher::AnswerList(SRequest& request, const SAsker& asker, SResponse& response)
{
    BRequestTransaction transaction(request, asker.security, asker.context);
    BVarBindList& list = request.bindings;
    response.status = m_handler.Query(request.pduType, static_cast<int>(transaction.Id()),
                                      asker.security, asker.context, list, response.index);
    if (response.status != eSnmpNoError)
        return;
    if (!BMessageBudget(request).Fits(list)) {
        response.status = eSnmpTooBig;
        return;
    }
    response.bindings.reserve(list.Count());
    for (unsigned i = 0; i < list.Count(); ++i)
        response.bindings.push_back(std::move(list[static_cast<int>(i)]));
}

void BDispatcher::AnswerBulk(const SRequest& request, const SAsker& asker, SResponse& response)
{
    BRequestTransaction transaction(request, asker.security, asker.context);
    auto step = [&](BVarBindList& list, int& errorIndex) {
        return m_handler.Query(ePduGetBulk, static_cast<int>(transaction.Id()), asker.security,
                               asker.context, list, errorIndex);
    };
    BMessageBudget budget(request);
    response.status =
        AnswerGetBulk(step, request.bindings, request.nonRepeaters, request.maxRepetitions, budget,
                      response.bindings, response.index);
}

void BDispatcher::AnswerSet(SRequest& request, const SAsker& asker, SResponse& response)
{
    if (request.unfitStatus != eSnmpNoError)
        return AnswerUnfit(request, asker, response);
    // RFC 3416 section 4.2.5: before anything is set.
    if (!FitsEcho(request)) {
        response.status = eSnmpTooBig;
        return;
    }
    BRequestTransaction transaction(request, asker.security, asker.context);
    response.status = m_handler.Query(ePduSet, static_cast<int>(transaction.Id()), asker.security,
                                      asker.context, request.bindings, response.index);
    response.echo = true;
}

// Who may not write learns that, and not what is wrong with the values.
void BDispatcher::AnswerUnfit(const SRequest& request, const SAsker& asker, SResponse& response)
{
    const BRightsOfRequest rights(m_access);
    response.status = request.unfitStatus;
    response.index = request.unfitIndex;
    for (int i = 0; i < static_cast<int>(request.bindings.Count()); ++i) {
        SVacmDecision decision = rights->vacm.Decide(asker.security, eViewWrite, asker.context,
                                                     request.bindings[i].Name());
        if (decision.answer != eVacmAllowed) {
            response.status = eSnmpNoAccess;
            response.index = i + 1;
            return;
        }
    }
}

} // namespace VLK::host
