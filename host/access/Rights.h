// What one configuration grants: who asks, and what he may.
#pragma once

#include "host/access/Communities.h"
#include "host/access/Vacm.h"
#include "host/config/Configuration.h"

namespace VLK::host {

// Ownership: shared by the access control and the requests that began under it. The
//            views outlive it.
// Threads:   any; unchanging but for the views.
struct SRights {
    SRights(const SConfiguration& configuration, BFilterTable& views)
        : communities(configuration.communities),
          vacm(configuration.groups, configuration.contexts, views), alarms(configuration.alarms)
    {
    }

    const BCommunities communities;
    BVacm vacm;
    // In whose name alarms read their variables.
    const SAlarmReader alarms;
};

} // namespace VLK::host
