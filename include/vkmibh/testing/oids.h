// Object identifiers in tests, written as text.
#pragma once

#include <vkmibh/values.h>

#include <ostream>
#include <string>

namespace VLK {

// How a failed expectation of GoogleTest shows an identifier.
inline void PrintTo(const BObjectIdentifier& oid, std::ostream* out)
{
    *out << (oid.Length() ? oid.ToString().c_str() : "(empty)");
}

namespace Test {

inline BObjectIdentifier MakeOid(const char* dotted) { return BObjectIdentifier(BString(dotted)); }

inline std::string TextOf(const BObjectIdentifier& oid) { return oid.ToString().c_str(); }

} // namespace Test
} // namespace VLK
