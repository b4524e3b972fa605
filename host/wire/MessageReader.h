// Messages from the sockets of the agent.
#pragma once

#include "host/wire/PlainMessage.h"
#include "host/wire/UdpSocket.h"
#include "modules/SnmpCounters.h"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <vector>

namespace VLK::host {

// Counts the messages that come, and hands those to the wire library that it can
// read as they are.
//
// Threads: that of the wire library.
class BMessageReader {
public:
    explicit BMessageReader(modules::SSnmpCounters& counters) : m_counters(counters) {}

    // Takes the next message of a listening address; false when there is none. Then it is
    // a plain request, is handed over, or is lost. While HasMore() the next one is of the
    // same address, and has been taken from the system already.
    bool Receive(const BUdpSocket& socket);
    bool HasMore() const { return m_next < m_datagrams.Count(); }
    bool ReadPlain(SRequest& request, std::vector<unsigned char>& bindings) const
    {
        return ReadPlainRequest(m_message, m_length, request, bindings);
    }
    const netsnmp_indexed_addr_pair& Ends() const { return m_ends; }
    void HandOver(const BUdpSocket& socket, session_list* session, bool takesV3);

    // Looks at the message that waits on a socket of the wire library's; false when there
    // is none. Then it is to be passed on.
    bool Peek(int descriptor);
    void PassOn(int descriptor, session_list* session, bool takesV3);

private:
    void Take(const unsigned char* message, size_t length);
    template <class TRead>
    void HaveRead(TRead read);
    // The counter of what is wrong with the message, as far as the wire library
    // would not say it; null when nothing is.
    modules::SSnmpCounters::CCounter* Fault(bool takesV3) const;
    bool IsV3() const;

    modules::SSnmpCounters& m_counters;
    BDatagrams m_datagrams;
    unsigned m_next = 0; // of those
    std::vector<unsigned char> m_peeked = std::vector<unsigned char>(65536);
    const unsigned char* m_message = nullptr; // the one that is looked at
    size_t m_length = 0;
    netsnmp_indexed_addr_pair m_ends = {};
};

} // namespace VLK::host
