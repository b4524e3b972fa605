// What a protocol engine counts for the snmp group.
#pragma once

#include <atomic>

namespace VLK::modules {

// Each wraps at 2^32 and is named after its object in RFC 3418.
//
// Threads: any may count and read.
struct SSnmpCounters {
    using CCounter = std::atomic<unsigned>;

    CCounter inPkts{0};
    CCounter inBadVersions{0};
    CCounter inBadCommunityNames{0};
    CCounter inBadCommunityUses{0};
    CCounter inASNParseErrs{0};
    CCounter silentDrops{0};
    CCounter proxyDrops{0};
};

} // namespace VLK::modules
