// How large an answer becomes when it is encoded (X.690, definite lengths).
#pragma once

#include "host/Request.h"

namespace VLK::host {

// Bytes of one binding: its sequence, name and value.
unsigned long BindingSize(const BVarBind& binding);

// Counts an answer's bytes against the largest message that may be sent.
class BMessageBudget {
public:
    // The frame around the bindings is counted at its largest: below 64 KiB
    // every length takes at most three bytes, and above 255 no less.
    explicit BMessageBudget(const SRequest& request);
    BMessageBudget(unsigned maxMessage, unsigned long communityLength, int requestId);
    // Takes the binding's bytes; false, and nothing taken, when they do not fit.
    bool Take(const BVarBind& binding);
    // Whether all of them would fit together. Takes nothing.
    bool Fits(const BVarBindList& bindings) const;

private:
    unsigned long m_max;
    unsigned long m_used;
};

} // namespace VLK::host
