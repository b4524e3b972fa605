#include "examples/subtree/ParameterTree.h"

#include <cstdint>

namespace VLK::examples {

CParameterTree::CParameterTree()
    : BMibSubtreeHandler("EXAMPLE-MIB.parameters", BObjectIdentifier("1.3.6.1.4.1.32473.2.6"))
{
}

void CParameterTree::Add(const char* name, int value)
{
    BObjectIdentifier whole(Oid());
    whole.Append(BObjectIdentifier(name), true);
    m_values[whole] = value;
}

// Requests may come side by side, hence the lock.
int CParameterTree::Get(unsigned, BVarBindList& list, int& index, int count)
{
    TMutexLock lock(Mutex());
    for (int i = index; i < index + count; ++i) {
        const auto found = m_values.find(list[i].Name());
        if (found != m_values.end())
            list[i].Value().SetInt(found->second);
        else
            list[i].Value().SetV2Exception(eNoSuchInstance);
    }
    return eSnmpNoError;
}

int CParameterTree::GetNext(unsigned, BVarBind& binding)
{
    TMutexLock lock(Mutex());
    const auto next = m_values.upper_bound(binding.Name());
    if (next == m_values.end())
        return eSnmpNoSuchName; // nothing further here: the agent looks elsewhere
    binding.Set(next->first);
    binding.Value().SetInt(next->second);
    return eSnmpNoError;
}

// Called once in every phase, with the slots of the same bindings; `index` shall
// point to the one that failed. Undo comes for all bindings, also those that were
// not committed.
int CParameterTree::Set(unsigned, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                        int& index, int count)
{
    TMutexLock lock(Mutex());
    SSetSlot* slot = reinterpret_cast<SSetSlot*>(slots);
    for (const int end = index + count; index < end; ++index, ++slot) {
        const int status = SetOne(list[index], op, *slot);
        if (status != eSnmpNoError)
            return status;
    }
    return eSnmpNoError;
}

int CParameterTree::SetOne(const BVarBind& binding, ESnmpSetOpCode op, SSetSlot& slot)
{
    const auto found = m_values.find(binding.Name());
    switch (op) {
    case eSetTest:
        if (found == m_values.end())
            return eSnmpNoCreation;
        if (binding.Value().Syntax() != eAsnInteger)
            return eSnmpWrongType;
        // For undo. The slot's scratch pointer is ours: a number needs no memory.
        slot.scratch = reinterpret_cast<void*>(static_cast<std::intptr_t>(found->second));
        return eSnmpNoError;
    case eSetCommit:
        found->second = binding.Value().Int();
        return eSnmpNoError;
    case eSetUndo:
        found->second = static_cast<int>(reinterpret_cast<std::intptr_t>(slot.scratch));
        return eSnmpNoError;
    case eSetCleanup:
        return eSnmpNoError;
    }
    return eSnmpGenErr;
}

} // namespace VLK::examples
