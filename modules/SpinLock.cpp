#include "modules/SpinLock.h"

#include <climits>
#include <random>

namespace VLK::modules {

const SConstraintMapEntry CSpinLock::s_constraints[] = {
    {eConstraintConvention, 0, cszTestAndIncr, 0, 0}, kConstraintEnd};

CSpinLock::CSpinLock(const char* name, const char* oid, int value)
    : BMibScalarImpl(BString(name), BObjectIdentifier(BString(oid))), m_value(value)
{
}

int CSpinLock::AnyValue() { return static_cast<int>(std::random_device()() & INT_MAX); }

int CSpinLock::OnGet(unsigned, int& value)
{
    value = m_value;
    return eSnmpNoError;
}

int CSpinLock::OnSet(ESnmpSetOpCode op, unsigned, int value, void** slot)
{
    // Commit looks again: another SET may have come between, if they are not
    // serialised, or another binding of this one.
    if (op == eSetTest)
        return value == m_value ? eSnmpNoError : eSnmpInconsistentValue;
    if (op == eSetCommit) {
        if (value != m_value || !slot)
            return eSnmpCommitFailed;
        *slot = this; // it counted
        m_value = value == INT_MAX ? 0 : value + 1;
    } else if (op == eSetUndo && slot && *slot) {
        m_value = value;
    }
    return eSnmpNoError;
}

} // namespace VLK::modules
