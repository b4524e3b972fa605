// Short ways to make values and to look at them in a test.
#pragma once

#include <initializer_list>
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
inline void PrintTo(const BObjectIdentifier& oid, std::ostream* out)
{
    *out << '<' << oid.ToString().c_str() << '>';
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

using Arcs = std::vector<unsigned>;

inline VLK::BObjectIdentifier Oid(const Arcs& arcs)
{
    return VLK::BObjectIdentifier(static_cast<unsigned>(arcs.size()), arcs.data());
}

inline VLK::BObjectIdentifier Oid(const char* dotted)
{
    return VLK::BObjectIdentifier(VLK::BString(dotted));
}

inline Arcs ArcsOf(const VLK::BObjectIdentifier& oid)
{
    return oid.Length() == 0 ? Arcs() : Arcs(oid.Arcs(), oid.Arcs() + oid.Length());
}

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
