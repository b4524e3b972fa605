// Object identifiers in tests, written as text or as arcs.
#pragma once

#include <vector>
#include <vkmibh/testing/oids.h>

namespace VLK {
namespace Test {

using Arcs = std::vector<unsigned>;

inline BObjectIdentifier MakeOid(const Arcs& arcs)
{
    return BObjectIdentifier(static_cast<unsigned>(arcs.size()), arcs.data());
}

inline Arcs ArcsOf(const BObjectIdentifier& oid)
{
    return oid.Length() ? Arcs(oid.Arcs(), oid.Arcs() + oid.Length()) : Arcs();
}

inline std::string TextOf(const Arcs& arcs) { return TextOf(MakeOid(arcs)); }

} // namespace Test
} // namespace VLK
