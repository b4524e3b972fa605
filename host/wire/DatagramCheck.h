// What the wire library would alter without a word.
#pragma once

#include <cstddef>
#include <optional>

namespace VLK::host {

// The version a message says it has; nothing when it is no whole sequence that
// begins with a number.
std::optional<int> MessageVersion(const unsigned char* message, size_t length);

// Whether a message has the elements that the standards say, without an octet too many
// or missing, and its numbers keep their value when they are decoded: the wire library
// skips octets that are left over, takes some elements for others, cuts integers to 32
// bits and wraps arcs of OIDs at 64. Says nothing about the values of bindings
// otherwise, nor about an encrypted PDU: whoever encrypts wider numbers is an
// authenticated user, and gets answers for the numbers that are left.
bool IsSound(const unsigned char* message, size_t length);

} // namespace VLK::host
