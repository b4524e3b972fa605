// IP address text.
#include <vkmibh/values.h>

#include <cstdio>
#include <cstring>

namespace VLK {

namespace {

constexpr unsigned kMaxTextLength = 15;

// CONTRACT: an empty part is 0: 1..2.3 is 1.0.2.3.
bool ParsePart(const char* begin, const char* end, unsigned char& byte)
{
    unsigned value = 0;
    for (; begin != end; ++begin) {
        if (*begin < '0' || *begin > '9')
            return false;
        value = value * 10 + static_cast<unsigned>(*begin - '0');
        if (value > 255)
            return false;
    }
    byte = static_cast<unsigned char>(value);
    return true;
}

} // namespace

bool BIpAddress::AssignFromDottedDecimalStr(const BString& text)
{
    const unsigned length = text.length();
    if (length > kMaxTextLength)
        return false;
    const char* part = text.c_str();
    const char* end = part + length;
    unsigned char bytes[4];
    for (unsigned i = 0; i < 3; ++i) {
        const char* dot = static_cast<const char*>(std::memchr(part, '.', end - part));
        if (!dot || !ParsePart(part, dot, bytes[i]))
            return false;
        part = dot + 1;
    }
    if (!ParsePart(part, end, bytes[3]))
        return false;
    std::memcpy(m_bytes, bytes, sizeof m_bytes);
    return true;
}

BString BIpAddress::ToString() const
{
    char text[16];
    const int length = std::snprintf(text, sizeof text, "%d.%d.%d.%d", m_bytes[0], m_bytes[1],
                                     m_bytes[2], m_bytes[3]);
    return BString(text, static_cast<unsigned>(length));
}

} // namespace VLK
