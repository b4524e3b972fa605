// Messages from the sockets of the wire library.
#pragma once

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

    // Looks at the message that waits on the socket; false when there is none.
    // Then it is to be discarded or passed on.
    bool Peek(int descriptor);
    void Discard(int descriptor);
    void PassOn(int descriptor, session_list* session, bool takesV3 = false);

private:
    // The counter of what is wrong with the message, as far as the wire library
    // would not say it; null when nothing is.
    modules::SSnmpCounters::CCounter* Fault(bool takesV3) const;
    bool IsV3() const;

    modules::SSnmpCounters& m_counters;
    std::vector<unsigned char> m_message = std::vector<unsigned char>(65536);
    size_t m_length = 0;
};

} // namespace VLK::host
