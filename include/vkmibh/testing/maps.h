// What the compiler cannot see in a module's maps.
#pragma once

#include <cstddef>
#include <string>
#include <vkmibh/implbase.h>

namespace VLK {
namespace Test {

// What is wrong with an implementation's maps and what to do about it, a line for
// each, or an empty text: columns out of order or twice, names missing or twice,
// kinds that do not suit their syntax, access without a handler and a handler
// without access; constraints for columns that are not there, of conventions that
// nobody knows, enumerations without items, ranges upside down. Of a group also two
// implementations in one place, of which the second is not served.
//
//   EXPECT_EQ(CheckMaps(module), "");
//
// A map handed over as an array is also held to its last row, which ends it. Only
// an array tells that: an implementation's map without an end is read beyond it.
//
// Conventions of the host's own are those of the group (GetTCConstraintMap()); an
// implementation alone knows them once it is registered.
std::string CheckMaps(const BMibImpl& impl);
std::string CheckMaps(BMibImplGroup& group);

std::string CheckMap(const SRqHndlrMapEntry* map, std::size_t rows);
std::string CheckConstraints(const SConstraintMapEntry* constraints, std::size_t rows);

template <std::size_t N>
std::string CheckMap(const SRqHndlrMapEntry (&map)[N])
{
    return CheckMap(map, N);
}
template <std::size_t N>
std::string CheckConstraints(const SConstraintMapEntry (&constraints)[N])
{
    return CheckConstraints(constraints, N);
}

} // namespace Test
} // namespace VLK
