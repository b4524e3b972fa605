// What the wire library would alter without a word.
#pragma once

#include <cstddef>

namespace VLK::host {

// Whether the numbers of a message keep their value when they are decoded: the
// wire library cuts integers to 32 bits and wraps arcs of OIDs at 64. Says
// nothing about a message that is malformed otherwise.
bool KeepsItsNumbers(const unsigned char* message, size_t length);

} // namespace VLK::host
