// The kernel's messages about links (rtnetlink, RTM_NEWLINK and RTM_DELLINK).
#pragma once

#include "modules/interfaces/Interface.h"

struct nlmsghdr;

namespace VLK::modules {

// What the kernel tells of a link in RTM_NEWLINK, its speed excepted, which is not
// in there. None for what tells of no link's state: a bridge's or a protocol's own
// view of it, events of wireless drivers, messages that are cut short.
std::optional<SInterface> InterfaceIn(const nlmsghdr& message);

// The index of the link that is gone with an RTM_DELLINK. None for one that only
// leaves its bridge.
std::optional<unsigned> GoneIn(const nlmsghdr& message);

} // namespace VLK::modules
