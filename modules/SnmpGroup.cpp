#include "modules/SnmpGroup.h"

#include <new>
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

int CSnmpGroup::OnSet_EnableAuthenTraps(ESnmpSetOpCode op, unsigned, EAuthenTraps value,
                                        void** slot)
{
    auto* const before = slot ? static_cast<SState*>(*slot) : nullptr;
    if (op == eSetTest) {
        if (!slot || !(*slot = new (std::nothrow) SState{m_authenTraps, m_isManaged}))
            return eSnmpResourceUnavailable;
    } else if (op == eSetCommit) {
        Change({value, true});
    } else if (op == eSetUndo) {
        if (!before)
            return eSnmpUndoFailed;
        Change(*before);
    } else {
        delete before;
    }
    return eSnmpNoError;
}

void CSnmpGroup::Change(const SState& state)
{
    m_authenTraps = state.value;
    m_isManaged = state.isManaged;
    if (m_store)
        m_store->RequestUpdate(this);
}

int CSnmpGroup::Update()
{
    const EAuthenTraps value = m_authenTraps;
    m_store->OpenSection(kSection);
    if (!m_isManaged) // a SET was undone
        return 0;
    return m_store->SetInt(kSection, kEnableAuthenTraps, value, LabelOf(value), 0, 0);
}

} // namespace VLK::modules
