#include "examples/scalar/Thermostat.h"

#include <new>

namespace VLK::examples {

VKMIBH_CONSTINIT SRqHndlrMapEntry CThermostat::s_map[] = {
    ScalarRow<eKindInteger, &CThermostat::OnGet_Target, &CThermostat::OnSet_Target>(
        1, "thermostatTarget", eAsnInteger, eRqReadWrite),
    ScalarRow<eKindEnumerated, &CThermostat::OnGet_Mode, &CThermostat::OnSet_Mode>(
        2, "thermostatMode", eAsnInteger, eRqReadWrite),
    kRqEnd};

// Checked before a set handler sees the value.
const SConstraintMapEntry CThermostat::s_constraints[] = {
    {eConstraintRange, 1, nullptr, 5, 30},      {eConstraintEnumeration, 2, nullptr, 0, 0},
    {eConstraintItem, 2, "off", eModeOff, 0},   {eConstraintItem, 2, "heat", eModeHeat, 0},
    {eConstraintItem, 2, "cool", eModeCool, 0}, kConstraintEnd};

namespace {

// One binding of a SET. All bindings are tested before the first is committed;
// when a commit fails, also that of another module, those before it are undone.
// The slot keeps the value from before for that.
template <class V>
int Change(V& place, ESnmpSetOpCode op, V value, void** slot)
{
    switch (op) {
    case eSetTest:
        *slot = new (std::nothrow) V(place);
        return *slot ? eSnmpNoError : eSnmpResourceUnavailable;
    case eSetCommit:
        place = value;
        return eSnmpNoError;
    case eSetUndo:
        place = *static_cast<V*>(*slot);
        return eSnmpNoError;
    case eSetCleanup:
        delete static_cast<V*>(*slot);
        return eSnmpNoError;
    }
    return eSnmpGenErr;
}

} // namespace

CThermostat::CThermostat()
    : BMibScalarGroupImpl("EXAMPLE-MIB.thermostat", BObjectIdentifier("1.3.6.1.4.1.32473.2.1"))
{
}

int CThermostat::OnGet_Target(unsigned, int& value)
{
    value = m_target;
    return eSnmpNoError;
}

int CThermostat::OnSet_Target(ESnmpSetOpCode op, unsigned, int value, void** slot)
{
    return Change(m_target, op, value, slot);
}

int CThermostat::OnGet_Mode(unsigned, EMode& value)
{
    value = m_mode;
    return eSnmpNoError;
}

int CThermostat::OnSet_Mode(ESnmpSetOpCode op, unsigned, EMode value, void** slot)
{
    return Change(m_mode, op, value, slot);
}

} // namespace VLK::examples
