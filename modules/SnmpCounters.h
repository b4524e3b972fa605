// What a protocol engine counts.
#pragma once

#include <atomic>

namespace VLK::modules {

// Each wraps at 2^32 and is named after its object in RFC 3418, RFC 3412 (snmpMPDStats)
// or RFC 3414 (usmStats).
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

    CCounter unknownContexts{0}; // RFC 3413, SNMP-TARGET-MIB

    CCounter unknownSecurityModels{0};
    CCounter invalidMsgs{0};
    CCounter unknownPDUHandlers{0};

    CCounter unsupportedSecLevels{0};
    CCounter notInTimeWindows{0};
    CCounter unknownUserNames{0};
    CCounter unknownEngineIDs{0};
    CCounter wrongDigests{0};
    CCounter decryptionErrors{0};
};

} // namespace VLK::modules
