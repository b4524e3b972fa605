// The slots of a run of bindings: which phases they take part in, and their marks.
#pragma once

#include <vkmibh/subtree.h>

#include <cstddef>

namespace VLK {

static_assert(offsetof(SSetSlot, scratch) == 0, "slots are handed out by their scratch field");

// The slot of the k-th binding of a run; null when the caller keeps none.
inline SSetSlot* SlotAt(void** slots, int k)
{
    return slots ? reinterpret_cast<SSetSlot*>(slots) + k : nullptr;
}

inline bool IsPhaseFor(ESnmpSetOpCode op, const SSetSlot* slot)
{
    if (slot && op == eSetUndo)
        return slot->committed != 0;
    if (slot && op == eSetCleanup)
        return slot->tested != 0;
    return true;
}

// Notes, once its handler has returned or thrown, that a binding went through a
// phase: what a handler began before it threw must be undone and released too.
class PhaseMark {
public:
    PhaseMark(void** slot, ESnmpSetOpCode op)
        : m_record(reinterpret_cast<SSetSlot*>(slot)), m_op(op)
    {
    }
    ~PhaseMark()
    {
        if (m_record && m_op == eSetTest)
            m_record->tested = 1;
        else if (m_record && m_op == eSetCommit)
            m_record->committed = 1;
    }
    PhaseMark(const PhaseMark&) = delete;
    PhaseMark& operator=(const PhaseMark&) = delete;

private:
    SSetSlot* m_record;
    ESnmpSetOpCode m_op;
};

} // namespace VLK
