// What the agent says of itself in sysORTable.
#pragma once

#include "modules/SysORTable.h"

namespace VLK::host {

// A row for each MIB module that it serves, by the module's statement of compliance.
std::vector<modules::SResource> Resources(bool speaksV3);

} // namespace VLK::host
