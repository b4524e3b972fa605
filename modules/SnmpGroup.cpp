#include "modules/SnmpGroup.h"

#include <optional>

namespace VLK::modules {

namespace {

constexpr const char* kSection = "mib-2.snmp";
constexpr const char* kEnableAuthenTraps = "snmpEnableAuthenTraps";

constexpr const char* LabelOf(EAuthenTraps value)
{
    return value == eAuthenTrapsEnabled ? "enabled" : "disabled";
}

// What the store keeps, when that is known.
std::optional<EAuthenTraps> ReadStored(INonVolatile* store)
{
    int stored = 0;
    if (!store || store->GetInt(kSection, kEnableAuthenTraps, stored, 0) != 0 ||
        (stored != eAuthenTrapsEnabled && stored != eAuthenTrapsDisabled))
        return std::nullopt;
    return static_cast<EAuthenTraps>(stored);
}

} // namespace

using Counters = SSnmpCounters;

VKMIBH_CONSTINIT SRqHndlrMapEntry CSnmpGroup::s_map[] = {
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::inPkts>>(1, "snmpInPkts", eAsnCounter32,
                                                                    eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::inBadVersions>>(
        3, "snmpInBadVersions", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::inBadCommunityNames>>(
        4, "snmpInBadCommunityNames", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::inBadCommunityUses>>(
        5, "snmpInBadCommunityUses", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::inASNParseErrs>>(
        6, "snmpInASNParseErrs", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindEnumerated, &CSnmpGroup::OnGet_EnableAuthenTraps,
              &CSnmpGroup::OnSet_EnableAuthenTraps>(30, kEnableAuthenTraps, eAsnInteger,
                                                    eRqReadWrite),
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::silentDrops>>(
        31, "snmpSilentDrops", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSnmpGroup::OnGet<&Counters::proxyDrops>>(32, "snmpProxyDrops",
                                                                        eAsnCounter32, eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CSnmpGroup::s_constraints[] = {
    {eConstraintEnumeration, 30, nullptr, 0, 0},
    {eConstraintItem, 30, "enabled", eAuthenTrapsEnabled, 0},
    {eConstraintItem, 30, "disabled", eAuthenTrapsDisabled, 0},
    kConstraintEnd};

CSnmpGroup::CSnmpGroup(const SSnmpCounters& counters, INonVolatile* store, EAuthenTraps first)
    : BMibScalarGroupImpl(BString("SNMPv2-MIB.snmp"), BObjectIdentifier(BString("1.3.6.1.2.1.11"))),
      m_counters(counters), m_store(store), m_authenTraps(first), m_isManaged(false)
{
    if (const std::optional<EAuthenTraps> stored = ReadStored(store)) {
        m_authenTraps = *stored;
        m_isManaged = true;
    }
}

void CSnmpGroup::SetFirst(EAuthenTraps first)
{
    if (!m_isManaged)
        m_authenTraps = first;
}

int CSnmpGroup::OnGet_EnableAuthenTraps(unsigned, EAuthenTraps& value)
{
    value = m_authenTraps;
    return eSnmpNoError;
}

// The slot takes which of the two values was there before the first commit, so that
// undo is right for several bindings too.
int CSnmpGroup::OnSet_EnableAuthenTraps(ESnmpSetOpCode op, unsigned, EAuthenTraps value,
                                        void** slot)
{
    if (op == eSetTest) {
        if (!slot)
            return eSnmpResourceUnavailable;
        *slot = AreTrapsEnabled() ? this : nullptr;
    } else if (op == eSetCommit) {
        Change(value);
    } else if (op == eSetUndo) {
        Change(*slot ? eAuthenTrapsEnabled : eAuthenTrapsDisabled);
    }
    return eSnmpNoError;
}

void CSnmpGroup::Change(EAuthenTraps value)
{
    m_authenTraps = value;
    m_isManaged = true; // undo too: the store has it
    if (m_store)
        m_store->RequestUpdate(this);
}

int CSnmpGroup::Update()
{
    const EAuthenTraps value = m_authenTraps;
    m_store->OpenSection(kSection);
    return m_store->SetInt(kSection, kEnableAuthenTraps, value, LabelOf(value), 0, 0);
}

} // namespace VLK::modules
