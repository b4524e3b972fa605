// Rows of view filter tables in tests.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/filter.h>

#include <algorithm>
#include <string>
#include <vector>

namespace VLK {
namespace Test {

using Octets = std::vector<unsigned char>;

// One family, as a test writes it down.
struct Family {
    std::string view;
    const char* subtree;
    EFilterType type = eFilterIncluded;
    Octets mask = {};
    ERowStatus rowStatus = eRowActive;
    EStorageType storageType = eStorageNonVolatile;
};

inline BString TextString(const std::string& text)
{
    return BString(text.data(), static_cast<unsigned>(text.size()));
}

inline BOctetString MaskOf(const Octets& mask)
{
    return BOctetString(static_cast<unsigned>(mask.size()), mask.data());
}

inline bool Insert(BFilterTable& table, const Family& family, bool implied = false)
{
    return table.Insert(TextString(family.view), MakeOid(family.subtree), MaskOf(family.mask),
                        family.type, family.storageType, family.rowStatus, implied);
}

// The index of a row: the name and the subtree, the length of each first.
inline std::string FamilyIndex(const std::string& view, const std::string& subtree)
{
    std::string index = std::to_string(view.size());
    for (unsigned char c : view)
        index += "." + std::to_string(c);
    return index + "." + std::to_string(std::count(subtree.begin(), subtree.end(), '.') + 1) + "." +
           subtree;
}

// A row for an index of the test's own choice.
inline BFilterTable::Entry* NewRow(const Family& family)
{
    auto* const row = new BFilterTable::Entry;
    row->viewName = TextString(family.view);
    row->subtree = MakeOid(family.subtree);
    row->mask = MaskOf(family.mask);
    row->type = family.type;
    row->storageType = family.storageType;
    row->rowStatus = family.rowStatus;
    return row;
}

// "view subtree", or "none".
inline std::string Shown(const BFilterTable::Entry* row)
{
    return row ? std::string(row->viewName.c_str(), row->viewName.length()) + " " +
                     TextOf(row->subtree)
               : "none";
}

} // namespace Test
} // namespace VLK
