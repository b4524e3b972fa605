#include "examples/row/Fan.h"

#include <new>

namespace VLK::examples {

namespace {

BObjectIdentifier EntryOid() { return BObjectIdentifier("1.3.6.1.4.1.32473.2.5.1"); }

} // namespace

// The handlers have the form of scalar ones: the row knows its index.
VKMIBH_CONSTINIT SRqHndlrMapEntry CFan::s_map[] = {
    ScalarRow<eKindDisplayString, &CFan::OnGet_Name>(eName, "fanName", eAsnOctetString,
                                                     eRqReadOnly),
    ScalarRow<eKindUnsigned, &CFan::OnGet_Speed, &CFan::OnSet_Speed>(eSpeed, "fanSpeed",
                                                                     eAsnGauge32, eRqReadWrite),
    kRqEnd};

const SConstraintMapEntry CFan::s_constraints[] = {
    {eConstraintConvention, eName, cszDisplayString, 0, 0},
    {eConstraintRange, eSpeed, nullptr, 0, 100},
    kConstraintEnd};

// Serves columns eName to eSpeed of the entry, at one index.
CFan::CFan(unsigned index, const char* name)
    : BMibRowImpl("EXAMPLE-MIB.fan", EntryOid(), eName, eSpeed, BObjectIdentifier(index)),
      m_name(name)
{
}

CFanTable::CFanTable() : BMibTableImpl("EXAMPLE-MIB.fanTable", EntryOid()) {}

int CFan::OnGet_Name(unsigned, BString& value)
{
    value = m_name;
    return eSnmpNoError;
}

int CFan::OnGet_Speed(unsigned, unsigned& value)
{
    value = m_speed;
    return eSnmpNoError;
}

// The slot keeps the speed from before, for undo.
int CFan::OnSet_Speed(ESnmpSetOpCode op, unsigned, unsigned value, void** slot)
{
    switch (op) {
    case eSetTest:
        *slot = new (std::nothrow) unsigned(m_speed);
        return *slot ? eSnmpNoError : eSnmpResourceUnavailable;
    case eSetCommit:
        m_speed = value;
        return eSnmpNoError;
    case eSetUndo:
        m_speed = *static_cast<unsigned*>(*slot);
        return eSnmpNoError;
    case eSetCleanup:
        delete static_cast<unsigned*>(*slot);
        return eSnmpNoError;
    }
    return eSnmpGenErr;
}

} // namespace VLK::examples
