// Octet string: display text and hexadecimal text.
#include <vkmibh/values.h>

#include <cstring>

#include "foundation/TextWriter.h"

namespace VLK {

namespace {

// CONTRACT: 127 and NUL count as text (strings with a terminator are shown).
inline bool IsDisplayable(unsigned char c)
{
    return (c >= 32 && c <= 127) || (c >= 7 && c <= 13) || c == 0;
}

} // namespace

bool BOctetString::AssignFromHexString(const char* text)
{
    const unsigned length = text ? VKStrlen(text) : 0;
    if (!VKIsHexString(text, static_cast<int>(length), ':') || !ReallocArray(length, true))
        return false;
    for (unsigned i = 0; i + 1 < length; i += 3) {
        const unsigned high = VKHexDigit2Int(static_cast<unsigned char>(text[i]));
        const unsigned low = VKHexDigit2Int(static_cast<unsigned char>(text[i + 1]));
        Append(static_cast<unsigned char>(high * 16 + low));
    }
    return true;
}

bool BOctetString::IsDispStr() const
{
    const unsigned length = Length();
    for (unsigned i = 0; i < length; ++i) {
        if (!IsDisplayable(m_data[i]))
            return false;
    }
    return true;
}

BString BOctetString::ToDispStr() const
{
    const char* text = reinterpret_cast<const char*>(m_data);
    if (!text)
        return BString();
    // CONTRACT: with length 0 the storage is read as a terminated text (within
    // its capacity): a value that was only shortened still shows its text.
    const unsigned length =
        m_length != 0 ? m_length : static_cast<unsigned>(strnlen(text, m_capacity));
    return BString(text, length);
}

void BOctetString::ToString(BString& out) const
{
    static constexpr char kDigits[] = "0123456789abcdef";
    CTextWriter text(out);
    for (unsigned i = 0; i < Length(); ++i) {
        if (i > 0)
            text.Put(':');
        text.Put(kDigits[m_data[i] >> 4]);
        text.Put(kDigits[m_data[i] & 15]);
    }
}

BString BOctetString::ToString() const
{
    BString text;
    ToString(text);
    return text;
}

} // namespace VLK
