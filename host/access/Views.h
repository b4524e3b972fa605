// The views that an agent starts with.
#pragma once

#include "host/Store.h"
#include "host/config/Configuration.h"

#include <vkmibh/filter.h>

namespace VLK::host {

// Where the store keeps the views.
constexpr const char* kViewSection = "vacmViewTreeFamilyTable";

// Fills the table of a store, which may be null: with the configured views, or,
// once managers have changed views, with those that the store was given then,
// even if they are none. The built-in views come to both, as rows that are
// readOnly. Whether all the configured views are in force.
//
// Throws BHostError when the store's views cannot be read whole: a lost row might
// be an excluded one.
bool LoadViews(BFilterTable& table, BStore* store, const std::vector<SView>& configured);

} // namespace VLK::host
