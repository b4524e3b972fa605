#include "handler/RegionSearch.h"

#include "foundation/HostCall.h"
#include "handler/AccessCheck.h"

namespace VLK {

namespace {

bool HoldsNothingFurther(int status, const BObjectSyntax& value)
{
    return status == eSnmpNoSuchName || value.Syntax() == eNoSuchObject ||
           value.Syntax() == eNoSuchInstance;
}

// Whether an instance is stepped over instead of being the answer.
bool IsSteppedOver(const SNextRequest& request, const BVarBind& binding, int& status)
{
    if (request.isV1 && binding.Value().Syntax() == eAsnCounter64)
        return true;
    switch (CheckAccessTo(request.accessControl, request.security, eAccessRead, request.context,
                          binding)) {
    case eAccessAllowed:
        return false;
    case eAccessRefused:
        return true;
    default:
        status = eSnmpGenErr;
        return false;
    }
}

} // namespace

BMibNode* NextHandlerNode(const BMibNode* node, bool upward)
{
    if (!node)
        return nullptr;
    BMibNode* next = upward ? node->Parent() : node->Next();
    while (next && !next->SubtreeHandler())
        next = upward ? next->Parent() : next->Next();
    return next;
}

bool AnswerEndsRegion(const BVarBind& binding, const BObjectIdentifier& regionOid)
{
    if (binding.Value().Syntax() == eEndOfMibView)
        return true;
    // CONTRACT: only the last arc, and only at equal length, tells that an
    // answer lies behind the region; a module may answer beyond its region with
    // longer names, and they count.
    const BObjectIdentifier& name = binding.Name();
    const unsigned length = regionOid.Length();
    return length && name.Length() == length && name[length - 1] > regionOid[length - 1];
}

int SearchRegions(const SNextRequest& request, BMibNode*& node, BVarBind& binding, bool upward,
                  const BObjectIdentifier& from)
{
    BObjectIdentifier moved;
    const BObjectIdentifier* asked = &from; // what the region was asked for
    while (node) {
        BMibSubtreeHandler* handler = node->SubtreeHandler();
        int status = HostCall([&] { return handler->GetNext(request.transactionId, binding); },
                              int(eSnmpGenErr));
        if (status != eSnmpNoError && status != eSnmpNoSuchName)
            return status;
        if (HoldsNothingFurther(status, binding.Value()))
            binding.Value().SetV2Exception(eEndOfMibView);
        bool exhausted = AnswerEndsRegion(binding, handler->Oid());
        const int order = binding.Name().Compare(*asked);
        // A module that does not get ahead is left, or it would be asked for ever.
        if (order < 0 || (order == 0 && !exhausted)) {
            exhausted = true;
            if (!binding.Name().Set(*asked))
                return eSnmpGenErr;
        }
        if (!exhausted) {
            status = eSnmpNoError;
            if (!IsSteppedOver(request, binding, status))
                return status;
        } else {
            node = NextHandlerNode(node, upward);
        }
        binding.Value().SetNull();
        if (order > 0) {
            if (!moved.Set(binding.Name()))
                return eSnmpGenErr;
            asked = &moved;
        }
    }
    binding.Value().SetV2Exception(eEndOfMibView);
    return eSnmpNoError;
}

} // namespace VLK
