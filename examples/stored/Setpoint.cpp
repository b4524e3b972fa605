#include "examples/stored/Setpoint.h"

#include <new>

namespace VLK::examples {

namespace {

constexpr const char* kSection = "example.setpoint";
constexpr const char* kValue = "setpointValue";

} // namespace

VKMIBH_CONSTINIT SRqHndlrMapEntry CSetpoint::s_map[] = {
    ScalarRow<eKindInteger, &CSetpoint::OnGet_Value, &CSetpoint::OnSet_Value>(
        1, kValue, eAsnInteger, eRqReadWrite),
    kRqEnd};

const SConstraintMapEntry CSetpoint::s_constraints[] = {{eConstraintRange, 1, nullptr, 5, 30},
                                                        kConstraintEnd};

// A store that has no value, or one that is not of today's range, changes nothing.
CSetpoint::CSetpoint(INonVolatile* store)
    : BMibScalarGroupImpl("EXAMPLE-MIB.setpoint", BObjectIdentifier("1.3.6.1.4.1.32473.2.8")),
      m_store(store)
{
    int kept = 0;
    if (m_store && m_store->GetInt(kSection, kValue, kept, 0) == 0 && kept >= 5 && kept <= 30)
        m_value = kept;
}

int CSetpoint::OnGet_Value(unsigned, int& value)
{
    value = m_value;
    return eSnmpNoError;
}

int CSetpoint::OnSet_Value(ESnmpSetOpCode op, unsigned, int value, void** slot)
{
    switch (op) {
    case eSetTest:
        *slot = new (std::nothrow) int(m_value);
        return *slot ? eSnmpNoError : eSnmpResourceUnavailable;
    case eSetCommit:
        Change(value);
        return eSnmpNoError;
    case eSetUndo:
        Change(*static_cast<int*>(*slot));
        return eSnmpNoError;
    case eSetCleanup:
        delete static_cast<int*>(*slot);
        return eSnmpNoError;
    }
    return eSnmpGenErr;
}

// In commit and in undo: the store asks for the values when the whole SET is done,
// before it is answered.
void CSetpoint::Change(int value)
{
    m_value = value;
    if (m_store)
        m_store->RequestUpdate(this);
}

// Called by the store. OpenSection() drops what the section had.
int CSetpoint::Update()
{
    m_store->OpenSection(kSection);
    return m_store->SetInt(kSection, kValue, m_value, nullptr, 0, 0);
}

} // namespace VLK::examples
