// Error statuses as each protocol version may carry them.
#pragma once

namespace VLK::host {

// The SNMPv1 form of a status (RFC 3584 section 4.4).
int StatusForV1(int status);

// The SNMPv2 form of what the MIB handler reported: statuses that only SNMPv1
// sends become their SNMPv2 counterparts (RFC 3416 sections 3 and 4.2.5).
int StatusForV2(int status, bool isSet);

} // namespace VLK::host
