// The views that an agent starts with.
#pragma once

#include "host/Store.h"
#include "host/config/Configuration.h"

#include <memory>
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

// Whether managers have changed views; without a store they have not.
bool AreManaged(BStore* store);
// Whether the table's rows are those of the views, beside those of the built-in ones.
bool AreThere(BFilterTable& table, const std::vector<SView>& views);
// Has other views take the place of those that were configured before. Throws
// std::bad_alloc; the table may then lack some.
void ReplaceViews(BFilterTable& table, const std::vector<SView>& configured);
// The rows of a table, in one that is not saved. Throws std::bad_alloc.
std::unique_ptr<BFilterTable> CopyOf(BFilterTable& table);

} // namespace VLK::host
