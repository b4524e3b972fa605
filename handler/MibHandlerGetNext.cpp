// GETNEXT: the smallest successor among the region that the tree proposes, the
// region around it and the next one.
#include <vkmibh/handler.h>

#include "handler/RegionSearch.h"

#include <utility>

namespace VLK {

namespace {

// A region's answer to a request, with the node it came from.
struct SCandidate {
    BVarBind binding;
    BMibNode* node = nullptr;
    int status = eSnmpNoError;
};

// Makes a candidate of the request; false when there is no memory.
bool Start(SCandidate& candidate, const BVarBind& request, BMibNode* node)
{
    candidate.node = node;
    candidate.binding.Value() = request.Value();
    return candidate.binding.Name().Set(request.Name());
}

bool SortsBefore(const BVarBind& a, const BVarBind& b) { return a.Name().Compare(b.Name()) < 0; }

void SetAnswer(BVarBind& binding, SCandidate& answer) { binding = std::move(answer.binding); }

// The region around the start may hold an instance between the request and the
// candidate found so far. False when there is no memory to look.
bool ConsiderEnclosingRegion(const SNextRequest& request, BMibNode* start, const BVarBind& asked,
                             SCandidate& best, SCandidate& other)
{
    BMibNode* const enclosing = NextHandlerNode(start, true);
    if (!enclosing)
        return true;
    if (!Start(other, asked, enclosing))
        return false;
    other.status = SearchRegions(request, other.node, other.binding, true, asked.Name());
    if (other.status == eSnmpNoError) {
        if (other.node && SortsBefore(other.binding, best.binding)) {
            // CONTRACT: the status stays that of the candidate replaced, and
            // the search for the next region goes on from the start.
            std::swap(best.binding, other.binding);
            best.node = start;
        }
    } else if (other.binding.Name() != asked.Name() && SortsBefore(other.binding, best.binding)) {
        std::swap(best.binding, other.binding);
        best.status = other.status;
    }
    return true;
}

// Whether the next region's candidate, not the best one so far, is the answer
// when both were found.
bool NextRegionWins(const SCandidate& best, const SCandidate& next)
{
    const int order = best.binding.Name().Compare(next.binding.Name());
    if (order != 0)
        return order > 0;
    // CONTRACT: of two regions that claim one instance the deeper wins, and
    // the later of two equally deep ones.
    return next.node->SubtreeHandler()->Oid().Length() >=
           best.node->SubtreeHandler()->Oid().Length();
}

// Compares the best candidate with the next region's and puts the answer into
// the binding; a status other than 0 leaves the binding as it was.
int Choose(BVarBind& binding, SCandidate& best, SCandidate* next)
{
    if (!next) {
        if (best.status == eSnmpNoError)
            SetAnswer(binding, best);
        return best.status;
    }
    if (best.status == eSnmpNoError && next->status == eSnmpNoError) {
        SetAnswer(binding, NextRegionWins(best, *next) ? *next : best);
        return eSnmpNoError;
    }
    SCandidate& first = SortsBefore(best.binding, next->binding) ? best : *next;
    if (first.status == eSnmpNoError)
        SetAnswer(binding, first);
    return first.status;
}

} // namespace

int BMibHandler::QueryGetNext(unsigned int transactionId, const BSecurityParams& security,
                              const BString& context, BVarBindList& list, int& errorIndex,
                              bool isV1)
{
    VKDbgModuleTraceClass(eTraceMibHandler, "QueryGetNext");
    for (int i = 0; i < static_cast<int>(list.Count()); ++i) {
        BVarBind& binding = list[i];
        int status = eSnmpGenErr;
        {
            const TReadLock reader(m_registrationLock);
            if (reader.Granted())
                status = ResolveGetNext(transactionId, isV1, security, context, binding);
        }
        if (status == eSnmpNoError && isV1 && binding.Value().IsException())
            status = eSnmpNoSuchName;
        if (status != eSnmpNoError) {
            errorIndex = i + 1;
            return status;
        }
    }
    return eSnmpNoError;
}

int BMibHandler::ResolveGetNext(unsigned int transactionId, bool isV1,
                                const BSecurityParams& security, const BString& context,
                                BVarBind& binding)
{
    BMibNode* const start = m_tree ? m_tree->FindNextSubtreeHandlerNode(binding.Name()) : nullptr;
    if (!start) {
        if (isV1)
            return eSnmpNoSuchName;
        binding.Value().SetV2Exception(eEndOfMibView);
        return eSnmpNoError;
    }
    const SNextRequest request = {transactionId, isV1, security, context, m_accessControl};
    SCandidate best;
    if (!Start(best, binding, start))
        return eSnmpGenErr;
    best.status = SearchRegions(request, best.node, best.binding, false, binding.Name());
    if (best.status == eSnmpNoError && !best.node)
        return ResolveAround(request, start, binding);
    if (best.status != eSnmpNoError && best.binding.Name() == binding.Name())
        return best.status;

    SCandidate other;
    if (!ConsiderEnclosingRegion(request, start, binding, best, other))
        return eSnmpGenErr;
    SCandidate* next = nullptr;
    BMibNode* const following = NextHandlerNode(best.node, false);
    if (following && best.binding.Name().Compare(following->SubtreeHandler()->Oid()) >= 0) {
        if (!Start(other, binding, following))
            return eSnmpGenErr;
        other.status = SearchRegions(request, other.node, other.binding, false, binding.Name());
        // A search that found no region is no candidate.
        if (other.status != eSnmpNoError || other.node)
            next = &other;
    }
    // A candidate is an instance, so that nothing is left to say of the end of
    // the view here; QueryGetNext() does for SNMPv1.
    return Choose(binding, best, next);
}

// No region from the start onward holds a successor: what remains are the
// regions around the start.
int BMibHandler::ResolveAround(const SNextRequest& request, BMibNode* start, BVarBind& binding)
{
    SCandidate around;
    if (!Start(around, binding, NextHandlerNode(start, true)))
        return eSnmpGenErr;
    around.status = SearchRegions(request, around.node, around.binding, true, binding.Name());
    if (around.status != eSnmpNoError)
        return around.status;
    // At the end of the view the binding keeps the name that was asked for
    // (RFC 3416 section 4.2.2), not that of an instance stepped over.
    if (around.node)
        SetAnswer(binding, around);
    else
        binding.Value().SetV2Exception(eEndOfMibView);
    return eSnmpNoError;
}

int BMibHandler::ResolveGetNextStartingFromRegion(unsigned int transactionId, bool isV1,
                                                  const BSecurityParams& security,
                                                  const BString& context, BMibNode*& node,
                                                  BVarBind& binding, bool upward)
{
    const SNextRequest request = {transactionId, isV1, security, context, m_accessControl};
    const BObjectIdentifier from(binding.Name());
    return SearchRegions(request, node, binding, upward, from);
}

BMibNode* BMibHandler::FindNextSubtreeHandlerNode(BMibNode* node, bool upward)
{
    return NextHandlerNode(node, upward);
}

bool BMibHandler::IsEndOfMib(const BVarBind& binding, const BObjectIdentifier& regionOid)
{
    return AnswerEndsRegion(binding, regionOid);
}

} // namespace VLK
