// What one configuration grants: who asks, and what he may.
#pragma once

#include "host/access/Communities.h"
#include "host/access/Vacm.h"
#include "host/config/Configuration.h"

#include <string>
#include <vector>

namespace VLK::host {

// A user of SNMPv3 without his secrets.
struct SKnownUser {
    std::string name;
    ESecurityLevel strongest = eNoAuthNoPriv;
};

// None when SNMPv3 is not spoken.
std::vector<SKnownUser> UsersOf(const SConfiguration& configuration);

// Ownership: shared by the access control and the requests that began under it. The
//            views outlive it.
// Threads:   any; unchanging but for the views.
struct SRights {
    SRights(const SConfiguration& configuration, BFilterTable& views)
        : communities(configuration.communities), users(UsersOf(configuration)),
          vacm(configuration.groups, configuration.contexts, views), alarms(configuration.alarms)
    {
    }

    const BCommunities communities;
    const std::vector<SKnownUser> users;
    BVacm vacm;
    // In whose name alarms read their variables.
    const SAlarmReader alarms;
};

} // namespace VLK::host
