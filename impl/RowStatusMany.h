// The rows of a row-status table that are beyond a handful.
#pragma once

#include <vkmibh/rowstatus.h>

#include "foundation/HashMap.h"

namespace VLK {

// How many rows the table's own maps take. They are sorted arrays, which serve a
// request's handful best; at each insertion they move what comes after, so that
// ten thousand rows would cost ten thousand times what one does.
constexpr unsigned kRowsInMaps = 32;

struct BMibTableImplEx::SManyRows {
    HashMap<BObjectIdentifier> states;   // RowState*
    HashMap<BObjectIdentifier> timeouts; // subscription handles
    HashMap<int> instances;              // of the handles in `timeouts`: its keys
};

} // namespace VLK
