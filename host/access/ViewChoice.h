// Which row of a view decides about an object.
#pragma once

#include "host/config/Configuration.h"

#include <optional>

namespace VLK::host {

struct SViewChoice {
    bool hasRows = false; // without any there is no such view
    // Of those that match, the one that decides; nothing when none matches, and the
    // object is outside the view.
    std::optional<SFamily> row;
};

// Chooses as BFilterTable::Filter() does, to show it: takes memory and time.
//
// Threads: any. Throws std::bad_alloc.
SViewChoice ChooseRow(BFilterTable& views, const std::string& view, const BObjectIdentifier& name);

} // namespace VLK::host
