#include "host/wire/MessageReader.h"

#include "host/wire/DatagramCheck.h"

#include <net-snmp/library/large_fd_set.h>
#include <sys/socket.h>

namespace VLK::host {

bool BMessageReader::Peek(int descriptor)
{
    ssize_t length = recv(descriptor, m_message.data(), m_message.size(), MSG_PEEK | MSG_DONTWAIT);
    if (length < 0)
        return false;
    m_length = static_cast<size_t>(length);
    ++m_counters.inPkts;
    return true;
}

void BMessageReader::Discard(int descriptor)
{
    recv(descriptor, m_message.data(), m_message.size(), MSG_DONTWAIT);
}

bool BMessageReader::IsV3() const
{
    return MessageVersion(m_message.data(), m_length) == SNMP_VERSION_3;
}

modules::SSnmpCounters::CCounter* BMessageReader::Fault(bool takesV3) const
{
    std::optional<int> version = MessageVersion(m_message.data(), m_length);
    if (!version)
        return &m_counters.inASNParseErrs;
    if (*version != SNMP_VERSION_1 && *version != SNMP_VERSION_2c &&
        !(takesV3 && *version == SNMP_VERSION_3))
        return &m_counters.inBadVersions;
    return IsSound(m_message.data(), m_length) ? nullptr : &m_counters.inASNParseErrs;
}

void BMessageReader::PassOn(int descriptor, session_list* session, bool takesV3)
{
    if (modules::SSnmpCounters::CCounter* fault = Fault(takesV3)) {
        ++*fault;
        return Discard(descriptor);
    }
    netsnmp_large_fd_set ready;
    netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
    netsnmp_large_fd_setfd(descriptor, &ready);
    // A message of SNMPv3 may fail for its security, which others count.
    unsigned before = snmp_get_statistic(STAT_SNMPINASNPARSEERRS);
    bool isRead = snmp_sess_read2(session, &ready) == 0;
    if (!isRead && (!IsV3() || snmp_get_statistic(STAT_SNMPINASNPARSEERRS) != before))
        ++m_counters.inASNParseErrs;
    netsnmp_large_fd_set_cleanup(&ready);
}

} // namespace VLK::host
