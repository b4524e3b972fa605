// Between Net-SNMP's structures and our values. Only the engine includes this.
#pragma once

#include "host/Request.h"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

namespace VLK::host {

// Copies addresses, community, counts and bindings; false when the PDU is no
// request that may be answered, or memory ran out. `request.local` holds the
// listening address before.
bool ReadRequest(const netsnmp_pdu& pdu, SRequest& request);

// The PDU that answers `request`; null when it cannot be made.
netsnmp_pdu* MakeResponse(netsnmp_pdu& request, const SResponse& response);

} // namespace VLK::host
