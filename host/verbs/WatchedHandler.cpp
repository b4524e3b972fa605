#include "host/verbs/WatchedHandler.h"

#include "host/verbs/SetTrace.h"

#include <vkmibh/rowstatus.h>

namespace VLK::host {

namespace {

// Also when the call throws.
struct SReturn {
    explicit SReturn(const std::shared_ptr<BSlowness>& called) : module(called) {}
    ~SReturn() { BRequestClock::OnReturn(module); }
    SReturn(const SReturn&) = delete;
    SReturn& operator=(const SReturn&) = delete;
    const std::shared_ptr<BSlowness>& module;
};

// A failed cleanup is the last: row-status tables that it does not come to forget their
// rows all the same. The library does it where it knows a table, and here it knows none.
// The slots of all bindings stand side by side; those without an owner were not tested.
void ForgetRowsBehind(const BVarBindList& list, const SSetSlot* slot, int next)
{
    for (int i = next; i < static_cast<int>(list.Count()) && slot->owner; ++i, ++slot) {
        const auto* owner = dynamic_cast<const BWatchedHandler*>(slot->owner);
        auto* table = owner ? dynamic_cast<BMibTableImplEx*>(&owner->Watched()) : nullptr;
        if (table)
            table->ForgetRows(list, i, 1);
    }
}

// One phase of one run; kThrew unless the call returns.
struct SPhase {
    ~SPhase()
    {
        const bool isInRun = index >= first && index < first + count;
        if (BSetTrace* trace = BSetTrace::OfThisThread())
            trace->Note(name, op, first, count, status, isInRun ? index : first);
        if (op == eSetCleanup && status != eSnmpNoError && slots)
            ForgetRowsBehind(list, reinterpret_cast<const SSetSlot*>(slots) + count, first + count);
    }
    const BString& name;
    const BVarBindList& list;
    ESnmpSetOpCode op;
    void** slots;
    const int& index;
    int first;
    int count;
    int status = SSetStep::kThrew;
};

} // namespace

BWatchedHandler::BWatchedHandler(BMibSubtreeHandler& watched)
    : BMibSubtreeHandler(watched.Name(), watched.Oid(), watched.RangePosition(),
                         watched.RangeUpperBound()),
      m_watched(watched), m_slowness(std::make_shared<BSlowness>())
{
}

bool BWatchedHandler::StandsFor(const BMibSubtreeHandler& handler) const
{
    return &m_watched == &handler && Name() == handler.Name() &&
           Oid().Compare(handler.Oid()) == 0 && RangePosition() == handler.RangePosition() &&
           RangeUpperBound() == handler.RangeUpperBound();
}

int BWatchedHandler::Get(unsigned transactionId, BVarBindList& list, int& index, int count)
{
    const SReturn end(m_slowness);
    return m_watched.Get(transactionId, list, index, count);
}

int BWatchedHandler::GetNext(unsigned transactionId, BVarBindList& list, int& index, int count)
{
    const SReturn end(m_slowness);
    return m_watched.GetNext(transactionId, list, index, count);
}

int BWatchedHandler::GetNext(unsigned transactionId, BVarBind& binding)
{
    const SReturn end(m_slowness);
    return m_watched.GetNext(transactionId, binding);
}

int BWatchedHandler::Set(unsigned transactionId, const BVarBindList& list, ESnmpSetOpCode op,
                         void** slots, int& index, int count)
{
    const SReturn end(m_slowness);
    SPhase phase{Name(), list, op, slots, index, index, count};
    return phase.status = m_watched.Set(transactionId, list, op, slots, index, count);
}

bool BWatchedHandler::HandlesInstance(const BObjectIdentifier& oid)
{
    return m_watched.HandlesInstance(oid);
}

IMIBInfo* BWatchedHandler::GetIMibInfo() { return m_watched.GetIMibInfo(); }

BString BWatchedHandler::ToString() { return m_watched.ToString(); }

} // namespace VLK::host
