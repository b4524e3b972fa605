// Short ways to make values and to look at them in a test.
#pragma once

#include "tests/support/Oids.h"

#include <ostream>
#include <string>
#include <vector>
#include <vkmibh/values.h>

namespace VLK {

// How a failed assertion prints them.
inline void PrintTo(const BString& text, std::ostream* out)
{
    *out << '"' << std::string(text.c_str(), text.length()) << '"';
}
inline void PrintTo(const BOctetString& octets, std::ostream* out)
{
    *out << '[' << octets.ToString().c_str() << ']';
}
inline void PrintTo(const BCounter64& counter, std::ostream* out)
{
    *out << counter.ToString().c_str();
}

} // namespace VLK

namespace VLKTest {

using VLK::Test::Arcs;
using VLK::Test::ArcsOf;

inline VLK::BObjectIdentifier Oid(const Arcs& arcs) { return VLK::Test::MakeOid(arcs); }
inline VLK::BObjectIdentifier Oid(const char* dotted) { return VLK::Test::MakeOid(dotted); }

inline std::string Text(const VLK::BString& text)
{
    return std::string(text.c_str(), text.length());
}

inline std::string Text(const VLK::BObjectIdentifier& oid) { return Text(oid.ToString()); }

inline VLK::BOctetString Octets(const std::string& bytes)
{
    return VLK::BOctetString(static_cast<unsigned>(bytes.size()),
                             reinterpret_cast<const unsigned char*>(bytes.data()));
}

inline std::string BytesOf(const VLK::BOctetString& octets)
{
    const char* bytes = reinterpret_cast<const char*>(octets.Data());
    return bytes ? std::string(bytes, octets.Length()) : std::string();
}

} // namespace VLKTest
