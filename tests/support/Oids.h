// Object identifiers in tests, written as text.
#pragma once

#include <vkmibh/values.h>

#include <ostream>
#include <string>
#include <vector>

namespace VLK {

// How a failed expectation shows an identifier.
inline void PrintTo(const BObjectIdentifier& oid, std::ostream* out)
{
    *out << (oid.Length() ? oid.ToString().c_str() : "(empty)");
}

namespace Test {

using Arcs = std::vector<unsigned>;

inline BObjectIdentifier MakeOid(const char* dotted) { return BObjectIdentifier(BString(dotted)); }

inline BObjectIdentifier MakeOid(const Arcs& arcs)
{
    return BObjectIdentifier(static_cast<unsigned>(arcs.size()), arcs.data());
}

inline Arcs ArcsOf(const BObjectIdentifier& oid)
{
    return oid.Length() ? Arcs(oid.Arcs(), oid.Arcs() + oid.Length()) : Arcs();
}

inline std::string TextOf(const BObjectIdentifier& oid) { return oid.ToString().c_str(); }

inline std::string TextOf(const Arcs& arcs) { return TextOf(MakeOid(arcs)); }

} // namespace Test
} // namespace VLK
