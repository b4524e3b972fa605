// A module, with those around it who tell the operator what it does.
#pragma once

#include "host/verbs/RequestClock.h"

#include <memory>
#include <vkmibh/subtree.h>

namespace VLK::host {

// Stands in the registration tree in place of a subtree handler, under its name and
// identifier, and passes everything on. What is slow is counted, and the phases of a
// SET are noted for its trace.
//
// Ownership: what it stands for outlives it.
// Threads:   as what it stands for.
// Errors:    as what it stands for; what that throws comes through.
// Contract:  as SSetSlot::owner a module that looks at its slots finds this, not itself.
class BWatchedHandler : public BMibSubtreeHandler {
public:
    explicit BWatchedHandler(BMibSubtreeHandler& watched);

    // Whether it is the handler's in name and place: not without memory for them.
    bool StandsFor(const BMibSubtreeHandler& handler) const;
    BMibSubtreeHandler& Watched() const { return m_watched; }
    SSlowness Slowness() const { return m_slowness->Now(); }

    int Get(unsigned transactionId, BVarBindList& list, int& index, int count) override;
    int GetNext(unsigned transactionId, BVarBindList& list, int& index, int count) override;
    int GetNext(unsigned transactionId, BVarBind& binding) override;
    int Set(unsigned transactionId, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
            int& index, int count) override;
    bool HandlesInstance(const BObjectIdentifier& oid) override;
    IMIBInfo* GetIMibInfo() override;
    BString ToString() override;

private:
    BMibSubtreeHandler& m_watched;
    std::shared_ptr<BSlowness> m_slowness; // never null; a slow request outlives a region
};

} // namespace VLK::host
