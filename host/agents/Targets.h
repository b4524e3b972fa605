// From the tables of RFC 3413 to the receivers of notifications, and from the
// configuration to those tables.
#pragma once

#include "host/access/Communities.h"
#include "host/config/Configuration.h"
#include "modules/targets/TargetRows.h"

#include <string>
#include <vector>

namespace VLK::host {

// Receivers that managers make, at most: each has a socket.
constexpr size_t kMostManagedReceivers = 256;

// The sinks of the configuration as rows: of each one in each table, readOnly and called
// "vkagentd.trapSink.N", N counting from 1. Throws std::bad_alloc.
modules::STargets RowsOf(const std::vector<STrapSink>& sinks);

// Who is sent notifications, and why others are not.
struct SReceivers {
    std::vector<STrapSink> sinks;
    std::vector<std::string> problems;
};

// RFC 3413 section 3.3: each active row of snmpNotifyTable selects by its tag the active
// rows of snmpTargetAddrTable, which name an active row of snmpTargetParamsTable. Selected
// by two rows, an address is a receiver twice. Throws std::bad_alloc.
SReceivers ReceiversOf(const modules::STargets& targets, const BCommunities& communities,
                       const std::vector<SUser>& users);

} // namespace VLK::host
