#include "host/wire/MessageReader.h"

#include "host/wire/DatagramCheck.h"

#include <net-snmp/library/large_fd_set.h>
#include <sys/socket.h>

namespace VLK::host {

void BMessageReader::Take(const unsigned char* message, size_t length)
{
    m_message = message;
    m_length = length;
    ++m_counters.inPkts;
}

bool BMessageReader::Receive(const BUdpSocket& socket)
{
    if (!HasMore()) {
        m_datagrams.Receive(socket.Descriptor());
        m_next = 0;
    }
    if (!HasMore())
        return false;
    m_ends = m_datagrams.Ends(m_next);
    Take(m_datagrams.Data(m_next), m_datagrams.Length(m_next));
    ++m_next;
    return true;
}

bool BMessageReader::Peek(int descriptor)
{
    const ssize_t length =
        recv(descriptor, m_peeked.data(), m_peeked.size(), MSG_PEEK | MSG_DONTWAIT);
    if (length < 0)
        return false;
    Take(m_peeked.data(), static_cast<size_t>(length));
    return true;
}

bool BMessageReader::IsV3() const { return MessageVersion(m_message, m_length) == SNMP_VERSION_3; }

modules::SSnmpCounters::CCounter* BMessageReader::Fault(bool takesV3) const
{
    std::optional<int> version = MessageVersion(m_message, m_length);
    if (!version)
        return &m_counters.inASNParseErrs;
    if (*version != SNMP_VERSION_1 && *version != SNMP_VERSION_2c &&
        !(takesV3 && *version == SNMP_VERSION_3))
        return &m_counters.inBadVersions;
    return IsSound(m_message, m_length) ? nullptr : &m_counters.inASNParseErrs;
}

// `read` has the wire library read the message, and gives its status.
template <class TRead>
void BMessageReader::HaveRead(TRead read)
{
    // A message of SNMPv3 may fail for its security, which others count.
    const unsigned before = snmp_get_statistic(STAT_SNMPINASNPARSEERRS);
    const bool isRead = read() == 0;
    if (!isRead && (!IsV3() || snmp_get_statistic(STAT_SNMPINASNPARSEERRS) != before))
        ++m_counters.inASNParseErrs;
}

void BMessageReader::HandOver(const BUdpSocket& socket, session_list* session, bool takesV3)
{
    if (modules::SSnmpCounters::CCounter* fault = Fault(takesV3)) {
        ++*fault;
        return;
    }
    HaveRead([&] {
        return BUdpSocket::HandOver(session, socket.Descriptor(), m_message, m_length, m_ends);
    });
}

void BMessageReader::PassOn(int descriptor, session_list* session, bool takesV3)
{
    if (modules::SSnmpCounters::CCounter* fault = Fault(takesV3)) {
        ++*fault;
        recv(descriptor, m_peeked.data(), m_peeked.size(), MSG_DONTWAIT);
        return;
    }
    netsnmp_large_fd_set ready;
    netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
    netsnmp_large_fd_setfd(descriptor, &ready);
    HaveRead([&] { return snmp_sess_read2(session, &ready); });
    netsnmp_large_fd_set_cleanup(&ready);
}

} // namespace VLK::host
