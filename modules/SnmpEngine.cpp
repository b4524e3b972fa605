#include "modules/SnmpEngine.h"

#include <algorithm>
#include <climits>

namespace VLK::modules {

using Counters = SSnmpCounters;

VKMIBH_CONSTINIT SRqHndlrMapEntry CSnmpEngine::s_map[] = {
    ScalarRow<eKindOctetString, &CSnmpEngine::OnGet_Id>(1, "snmpEngineID", eAsnOctetString,
                                                        eRqReadOnly),
    ScalarRow<eKindInteger, &CSnmpEngine::OnGet_Boots>(2, "snmpEngineBoots", eAsnInteger,
                                                       eRqReadOnly),
    ScalarRow<eKindInteger, &CSnmpEngine::OnGet_Time>(3, "snmpEngineTime", eAsnInteger,
                                                      eRqReadOnly),
    ScalarRow<eKindInteger, &CSnmpEngine::OnGet_MaxMessage>(4, "snmpEngineMaxMessageSize",
                                                            eAsnInteger, eRqReadOnly),
    kRqEnd};

CSnmpEngine::CSnmpEngine(const SSnmpEngine& engine)
    : BMibScalarGroupImpl(BString("SNMP-FRAMEWORK-MIB.snmpEngine"),
                          BObjectIdentifier(BString("1.3.6.1.6.3.10.2.1"))),
      m_engine(engine)
{
}

int CSnmpEngine::OnGet_Id(unsigned, BOctetString& value)
{
    const auto* octets = reinterpret_cast<const unsigned char*>(m_engine.id.data());
    const auto length = static_cast<unsigned>(m_engine.id.size());
    value = BOctetString(length, octets);
    return value.Length() == length ? eSnmpNoError : eSnmpGenErr;
}

int CSnmpEngine::OnGet_Boots(unsigned, int& value)
{
    value = m_engine.boots;
    return eSnmpNoError;
}

int CSnmpEngine::OnGet_Time(unsigned, int& value)
{
    const auto run = std::chrono::steady_clock::now() - m_start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(run).count();
    value = static_cast<int>(std::min<decltype(seconds)>(seconds, INT_MAX));
    return eSnmpNoError;
}

int CSnmpEngine::OnGet_MaxMessage(unsigned, int& value)
{
    value = m_engine.maxMessage;
    return eSnmpNoError;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CMpdStats::s_map[] = {
    ScalarRow<eKindUnsigned, &CMpdStats::OnGet<&Counters::unknownSecurityModels>>(
        1, "snmpUnknownSecurityModels", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CMpdStats::OnGet<&Counters::invalidMsgs>>(2, "snmpInvalidMsgs",
                                                                        eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CMpdStats::OnGet<&Counters::unknownPDUHandlers>>(
        3, "snmpUnknownPDUHandlers", eAsnCounter32, eRqReadOnly),
    kRqEnd};

CMpdStats::CMpdStats(const SSnmpCounters& counters)
    : CCounterGroup("SNMP-MPD-MIB.snmpMPDStats", "1.3.6.1.6.3.11.2.1", counters)
{
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CUsmStats::s_map[] = {
    ScalarRow<eKindUnsigned, &CUsmStats::OnGet<&Counters::unsupportedSecLevels>>(
        1, "usmStatsUnsupportedSecLevels", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CUsmStats::OnGet<&Counters::notInTimeWindows>>(
        2, "usmStatsNotInTimeWindows", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CUsmStats::OnGet<&Counters::unknownUserNames>>(
        3, "usmStatsUnknownUserNames", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CUsmStats::OnGet<&Counters::unknownEngineIDs>>(
        4, "usmStatsUnknownEngineIDs", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CUsmStats::OnGet<&Counters::wrongDigests>>(
        5, "usmStatsWrongDigests", eAsnCounter32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CUsmStats::OnGet<&Counters::decryptionErrors>>(
        6, "usmStatsDecryptionErrors", eAsnCounter32, eRqReadOnly),
    kRqEnd};

CUsmStats::CUsmStats(const SSnmpCounters& counters)
    : CCounterGroup("SNMP-USER-BASED-SM-MIB.usmStats", "1.3.6.1.6.3.15.1.1", counters)
{
}

CSnmpEngineModule::CSnmpEngineModule(const SSnmpEngine& engine, const SSnmpCounters& counters)
    : BMibImplGroup(BString("SNMP-FRAMEWORK-MIB.snmpEngine")), m_engine(engine),
      m_dispatcher(counters), m_users(counters)
{
}

BMibImpl* CSnmpEngineModule::GetImplAt(int index)
{
    BMibImpl* const all[] = {&m_engine, &m_dispatcher, &m_users};
    return index >= 0 && index < GetNumImpls() ? all[index] : nullptr;
}

} // namespace VLK::modules
