// Octet string: storage, assignment and comparison.
#include <vkmibh/values.h>

#include <climits>
#include <cstring>
#include <functional>

#include "foundation/Bytewise.h"

namespace VLK {

namespace {

constexpr unsigned kLongestPiece = 255;

} // namespace

BOctetString::BOctetString(const BOctetString& other) : BOctetString() { Assign(other); }

BOctetString::BOctetString(const SASNOctetStr& other) : BOctetString()
{
    Assign(other.data ? other.length : 0, other.data);
}

BOctetString::BOctetString(unsigned length, const unsigned char* bytes) : BOctetString()
{
    Assign(length, bytes);
}

BOctetString::BOctetString(const unsigned char* begin, const unsigned char* end) : BOctetString()
{
    Assign(begin, end);
}

BOctetString::BOctetString(const BString& text) : BOctetString() { Assign(text); }

BOctetString::BOctetString(const char* text, unsigned length) : BOctetString()
{
    Assign(text, length);
}

// cppcheck-suppress operatorEqVarError ; Assign() assigns them
BOctetString& BOctetString::operator=(const BOctetString& other)
{
    if (this != &other)
        Assign(other);
    return *this;
}

bool BOctetString::ReallocArray(unsigned needed, bool discard)
{
    if (discard)
        m_length = 0;
    if (needed == 0 || needed <= m_capacity)
        return true;
    std::uint64_t capacity = m_capacity == 0 ? 4 : m_capacity;
    while (capacity < needed)
        capacity *= s_growBy;
    unsigned char* data = NewItems<unsigned char>(capacity);
    if (!data)
        return false;
    m_length = Length();
    MoveItems(data, m_data, m_length);
    // ToDispStr may look at storage that was never written.
    ZeroItems(data + m_length, static_cast<std::size_t>(capacity) - m_length);
    delete[] m_data;
    m_data = data;
    m_capacity = static_cast<unsigned>(capacity);
    return true;
}

bool BOctetString::Assign(unsigned length, const unsigned char* bytes)
{
    if (!ReallocArray(length, true))
        return false;
    if (bytes)
        MoveItems(m_data, bytes, length);
    else
        ZeroItems(m_data, length);
    m_length = length;
    return true;
}

bool BOctetString::Assign(const BOctetString& other)
{
    return &other == this || Assign(other.Length(), other.m_data);
}

bool BOctetString::Assign(const unsigned char* begin, const unsigned char* end)
{
    if (!begin || std::less<const unsigned char*>()(end, begin))
        end = begin;
    const std::uint64_t length = static_cast<std::uint64_t>(end - begin);
    return length <= UINT_MAX && Assign(static_cast<unsigned>(length), begin);
}

bool BOctetString::Assign(unsigned char byte) { return Assign(1u, &byte); }

bool BOctetString::Assign(const char* text, unsigned length)
{
    if (length == 0 && text)
        length = VKStrlen(text);
    return Assign(length, reinterpret_cast<const unsigned char*>(text));
}

bool BOctetString::Assign(const BString& text)
{
    return Assign(text.length(), reinterpret_cast<const unsigned char*>(text.data()));
}

bool BOctetString::Append(unsigned char byte)
{
    const unsigned length = Length();
    if (length >= m_capacity && (length == UINT_MAX || !ReallocArray(length + 1, false)))
        return false;
    m_data[length] = byte;
    m_length = length + 1;
    return true;
}

bool BOctetString::Append(const BOctetString& other)
{
    return Append(other.Length(), other.m_data);
}

bool BOctetString::Append(unsigned count, const unsigned char* bytes)
{
    // CONTRACT: a piece is counted in 8 bits, so 255 bytes is the longest one;
    // callers append longer texts in pieces.
    if (count > kLongestPiece || (count != 0 && !bytes))
        return false;
    const unsigned length = Length();
    const std::uint64_t newLength = std::uint64_t(length) + count;
    unsigned char piece[kLongestPiece];
    // CONTRACT: grown one byte early; the capacities that follow are relied on.
    if (newLength >= m_capacity) {
        // The piece may lie in this string's storage, which goes when it grows.
        MoveItems(piece, bytes, count);
        bytes = piece;
        if (newLength >= UINT_MAX || !ReallocArray(static_cast<unsigned>(newLength) + 1, false))
            return false;
    }
    MoveItems(m_data + length, bytes, count);
    m_length = static_cast<unsigned>(newLength);
    return true;
}

bool BOctetString::Reserve(unsigned length, unsigned char fill)
{
    if (length == 0) {
        Clear();
        return true;
    }
    if (length != m_capacity || !m_data) {
        unsigned char* data = NewItems<unsigned char>(length);
        if (!data)
            return false;
        delete[] m_data;
        m_data = data;
        m_capacity = length;
    }
    m_length = 0;
    std::memset(m_data, fill, length);
    return true;
}

void BOctetString::Clear()
{
    delete[] m_data;
    m_data = nullptr;
    m_length = 0;
    m_capacity = 0;
}

bool BOctetString::operator==(const BOctetString& other) const
{
    const unsigned length = Length();
    return length == other.Length() &&
           (length == 0 || std::memcmp(m_data, other.m_data, length) == 0);
}

bool BOctetString::operator==(const BString& text) const
{
    const unsigned length = Length();
    return length == text.length() &&
           (length == 0 || std::memcmp(m_data, text.data(), length) == 0);
}

} // namespace VLK
