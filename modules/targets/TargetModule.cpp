#include "modules/targets/TargetModule.h"

namespace VLK::modules {

VKMIBH_CONSTINIT SRqHndlrMapEntry CTargetSpinLock::s_map[] = {
    ScalarRow<eKindInteger, &CTargetSpinLock::OnGet, &CTargetSpinLock::OnSet>(
        0, "snmpTargetSpinLock", eAsnInteger, eRqReadWrite),
    kRqEnd};

VKMIBH_CONSTINIT SRqHndlrMapEntry CContextCounters::s_map[] = {
    ScalarRow<eKindUnsigned, &CContextCounters::OnGet_Unavailable>(4, "snmpUnavailableContexts",
                                                                   eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CContextCounters::OnGet_Unknown>(5, "snmpUnknownContexts",
                                                               eAsnCounter32, eRqReadOnly),
    kRqEnd};

CContextCounters::CContextCounters(const SSnmpCounters& counters)
    : BMibRowImpl(BString("SNMP-TARGET-MIB.contexts"),
                  BObjectIdentifier(BString("1.3.6.1.6.3.12.1")), 4, 5,
                  BObjectIdentifier(BString("0"))),
      m_counters(counters)
{
}

int CContextCounters::OnGet_Unavailable(unsigned, unsigned& value)
{
    value = 0;
    return eSnmpNoError;
}

int CContextCounters::OnGet_Unknown(unsigned, unsigned& value)
{
    value = m_counters.unknownContexts;
    return eSnmpNoError;
}

CTargetModule::CTargetModule(INonVolatile* store, const SSnmpCounters& counters)
    : BMibImplGroup(BString("SNMP-TARGET-MIB")), m_rows(store), m_addresses(m_rows.addresses),
      m_params(m_rows.params), m_contexts(counters), m_notifies(m_rows.notifies)
{
}

// In the order of their identifiers.
BMibImpl* CTargetModule::GetImplAt(int index)
{
    BMibImpl* const all[] = {&m_spinLock, &m_addresses, &m_params, &m_contexts, &m_notifies};
    return index >= 0 && index < GetNumImpls() ? all[index] : nullptr;
}

} // namespace VLK::modules
