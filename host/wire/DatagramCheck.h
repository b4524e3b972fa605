// What the wire library would alter without a word.
#pragma once

#include <cstddef>
#include <optional>

namespace VLK::host {

// The version a message says it has; nothing when it is no whole sequence that
// begins with a number.
std::optional<int> MessageVersion(const unsigned char* message, size_t length);

// Whether the numbers of a message keep their value when they are decoded: the
// wire library cuts integers to 32 bits and wraps arcs of OIDs at 64. Says
// nothing about a message that is malformed otherwise, and nothing about what is
// encrypted or wrapped in octets: the security parameters of SNMPv3, and its scoped
// PDU with privacy. Whoever encrypts wider numbers is an authenticated user, and gets
// answers for the numbers that are left.
bool KeepsItsNumbers(const unsigned char* message, size_t length);

} // namespace VLK::host
