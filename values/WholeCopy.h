// Copies of binding lists for which there was memory.
#pragma once

#include <vkmibh/values.h>

namespace VLK {

// A copy made without enough memory has too few bindings, or empty names and
// values; false for such a one.
inline bool CopyWhole(BVarBindList& to, const BVarBindList& from)
{
    if (!to.Assign(from))
        return false;
    for (int i = 0; i < static_cast<int>(from.Count()); ++i) {
        const BObjectSyntax& value = from[i].Value();
        const BObjectSyntax& copied = to[i].Value();
        if (to[i].Name().Length() != from[i].Name().Length() ||
            copied.Octets().Length() != value.Octets().Length() ||
            copied.ObjectId().Length() != value.ObjectId().Length())
            return false;
    }
    return true;
}

} // namespace VLK
