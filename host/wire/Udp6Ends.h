// Answers over IPv6 leave from the address that was asked.
#pragma once

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

namespace VLK::host {

// The wire library's IPv6 transport lets the system choose the source of an
// answer, which on "udp6:[::]" is often another one of ours, so the client
// takes the answer for a stranger's. Gives the transport its own receive and
// send, which keep both ends in the transport data, as the IPv4 one does.
// False, with errno, when the system cannot tell the address.
bool KeepBothEnds(netsnmp_transport& transport);

} // namespace VLK::host
