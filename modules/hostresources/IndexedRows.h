// Rows of a table with one arc as their index, the `index` of the row, sorted by it.
#pragma once

#include <algorithm>
#include <vector>
#include <vkmibh/objectid.h>

namespace VLK::modules {

template <class Row>
void SortByIndex(std::vector<Row>& rows)
{
    std::sort(rows.begin(), rows.end(),
              [](const Row& a, const Row& b) { return a.index < b.index; });
}

// The row with that index, or null.
template <class Row>
const Row* FindRow(const std::vector<Row>& rows, const BObjectIdentifier& index)
{
    if (index.Length() != 1)
        return nullptr;
    const auto row = std::lower_bound(rows.begin(), rows.end(), index[0],
                                      [](const Row& a, unsigned b) { return a.index < b; });
    return row != rows.end() && row->index == index[0] ? &*row : nullptr;
}

// The first row after an index, which need not be one, or null.
template <class Row>
const Row* FindRowAfter(const std::vector<Row>& rows, const BObjectIdentifier& index)
{
    if (index.Length() == 0)
        return rows.empty() ? nullptr : &rows.front();
    const auto row = std::upper_bound(rows.begin(), rows.end(), index[0],
                                      [](unsigned a, const Row& b) { return a < b.index; });
    return row != rows.end() ? &*row : nullptr;
}

} // namespace VLK::modules
