// Between Net-SNMP's structures and our values. Only the engine includes this.
#pragma once

#include "host/Notification.h"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

namespace VLK::host {

// Whether the PDU is of a type that we answer.
bool IsRequest(const netsnmp_pdu& pdu);

// Copies addresses, community or user, counts and bindings; false when the PDU is no
// request that may be answered, or memory ran out. `request.local` holds the
// listening address before.
bool ReadRequest(const netsnmp_pdu& pdu, SRequest& request);

// Where a message came from and went to; the port of `request.local` stays.
void TakeEnds(const netsnmp_indexed_addr_pair& ends, SRequest& request);

// The PDU that answers `request`; null when it cannot be made.
netsnmp_pdu* MakeResponse(netsnmp_pdu& request, const SResponse& response);

// The report (RFC 3412 section 7.1) on `request` that tells a counter; null when it
// cannot be made.
netsnmp_pdu* MakeReport(netsnmp_pdu& request, const oid* counter, size_t count, unsigned value);

// The PDU that tells the notification in the receiver's form; null when it cannot be
// made. `agent` is the IPv4 address that SNMPv1 tells, in network order.
netsnmp_pdu* MakeNotification(const SNotification& notification, const SReceiver& receiver,
                              const unsigned char (&agent)[4]);

// The other end that an answer came from. (The wire library keeps only that of
// IPv6.)
bool ReadRemote(const netsnmp_pdu& pdu, BTransportAddress& remote);

} // namespace VLK::host
