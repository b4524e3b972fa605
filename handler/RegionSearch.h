// The successor search through the regions of the tree.
#pragma once

#include <vkmibh/handler.h>

namespace VLK {

// What stays the same through the search for one binding.
struct SNextRequest {
    unsigned transactionId;
    bool isV1;
    const BSecurityParams& security;
    const BString& context;
    IAccessControl* accessControl;
};

// Looks for the first instance after the binding's name that the requester may
// see, in the region of `node` and, when that holds none, in the regions after
// it (or around it: upward). `node` ends at the region that answered, null
// when none did; the binding then is endOfMibView and its name of no meaning.
// `from` equals the binding's name at entry and outlives the call.
int SearchRegions(const SNextRequest& request, BMibNode*& node, BVarBind& binding, bool upward,
                  const BObjectIdentifier& from);

// The node with a subtree handler that follows in pre-order or, upward, that
// encloses `node`; never `node` itself.
BMibNode* NextHandlerNode(const BMibNode* node, bool upward);

// Whether an answer says that the region at regionOid is exhausted.
bool AnswerEndsRegion(const BVarBind& binding, const BObjectIdentifier& regionOid);

} // namespace VLK
