#include "modules/hostresources/HrSystem.h"

#include "modules/hostresources/HostDevices.h"

#include <climits>
#include <cstdlib>

namespace VLK::modules {

namespace {

constexpr size_t kParametersMost = 128;

template <class V>
int Give(const std::optional<unsigned>& known, V& value)
{
    if (!known)
        return eSnmpNoSuchName;
    value = static_cast<V>(*known);
    return eSnmpNoError;
}

unsigned char Byte(int value) { return static_cast<unsigned char>(value); }

} // namespace

VKMIBH_CONSTINIT SRqHndlrMapEntry CHrSystem::s_map[] = {
    ScalarRow<eKindUnsigned, &CHrSystem::OnGet_Uptime>(1, "hrSystemUptime", eAsnTimeTicks,
                                                       eRqReadOnly),
    ScalarRow<eKindOctetString, &CHrSystem::OnGet_Date>(2, "hrSystemDate", eAsnOctetString,
                                                        eRqReadOnly),
    ScalarRow<eKindInteger, &CHrSystem::OnGet_InitialLoadDevice>(3, "hrSystemInitialLoadDevice",
                                                                 eAsnInteger, eRqReadOnly),
    ScalarRow<eKindOctetString, &CHrSystem::OnGet_InitialLoadParameters>(
        4, "hrSystemInitialLoadParameters", eAsnOctetString, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CHrSystem::OnGet_NumUsers>(5, "hrSystemNumUsers", eAsnGauge32,
                                                         eRqReadOnly),
    ScalarRow<eKindUnsigned, &CHrSystem::OnGet_Processes>(6, "hrSystemProcesses", eAsnGauge32,
                                                          eRqReadOnly),
    ScalarRow<eKindInteger, &CHrSystem::OnGet_MaxProcesses>(7, "hrSystemMaxProcesses", eAsnInteger,
                                                            eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CHrSystem::s_constraints[] = {
    {eConstraintConvention, 2, cszDateAndTime, 0, 0},
    {eConstraintRange, 3, nullptr, 1, INT_MAX},
    {eConstraintRange, 4, nullptr, 0, kParametersMost},
    {eConstraintRange, 7, nullptr, 0, INT_MAX},
    kConstraintEnd};

CHrSystem::CHrSystem(IHostSource& source, unsigned timeToLive)
    : BMibScalarGroupImpl(BString("HOST-RESOURCES-MIB.hrSystem"),
                          BObjectIdentifier(BString("1.3.6.1.2.1.25.1"))),
      m_source(source),
      m_processes(source, timeToLive, [&source] { return source.ReadProcesses(); })
{
}

// TimeTicks wraps modulo 2^32 (RFC 2578 section 7.1.8).
int CHrSystem::OnGet_Uptime(unsigned, unsigned& value)
{
    const std::optional<uint64_t> uptime = m_source.ReadUptime();
    value = static_cast<unsigned>(uptime.value_or(0));
    return uptime ? eSnmpNoError : eSnmpNoSuchName;
}

// DateAndTime (RFC 2579), with the zone.
int CHrSystem::OnGet_Date(unsigned, BOctetString& value)
{
    const SHostDate date = m_source.ReadDate();
    const int zone = std::abs(date.zoneMinutes);
    const unsigned char bytes[] = {
        Byte(date.year >> 8), Byte(date.year),       Byte(date.month),
        Byte(date.day),       Byte(date.hour),       Byte(date.minute),
        Byte(date.second),    Byte(date.deciSecond), Byte(date.zoneMinutes < 0 ? '-' : '+'),
        Byte(zone / 60),      Byte(zone % 60)};
    return value.Assign(sizeof bytes, bytes) ? eSnmpNoError : eSnmpGenErr;
}

int CHrSystem::OnGet_InitialLoadDevice(unsigned, int& value)
{
    value = CHostDevices::kLoadDeviceIndex;
    return m_source.ReadLoadDevice().empty() ? eSnmpNoSuchName : eSnmpNoError;
}

int CHrSystem::OnGet_InitialLoadParameters(unsigned, BOctetString& value)
{
    const std::optional<std::string> parameters = m_source.ReadLoadParameters();
    if (!parameters)
        return eSnmpNoSuchName;
    const auto length = static_cast<unsigned>(std::min(parameters->size(), kParametersMost));
    const auto* bytes = reinterpret_cast<const unsigned char*>(parameters->data());
    return value.Assign(length, bytes) ? eSnmpNoError : eSnmpGenErr;
}

int CHrSystem::OnGet_NumUsers(unsigned id, unsigned& value)
{
    return Give(m_processes.At(id)->users, value);
}

int CHrSystem::OnGet_Processes(unsigned id, unsigned& value)
{
    return Give(m_processes.At(id)->loaded, value);
}

int CHrSystem::OnGet_MaxProcesses(unsigned id, int& value)
{
    return Give(m_processes.At(id)->most, value);
}

} // namespace VLK::modules
