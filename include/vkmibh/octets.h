// Octet string and IP address.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

// The protocol engine's plain octet string; BOctetString copies it.
struct SASNOctetStr {
    unsigned char* data;
    unsigned length;
};

// A growable string of bytes: the value of OCTET STRING, BITS and Opaque
// objects, and of table indexes that are strings.
//
//   BOctetString mac(6, bytes);
//   mac.ToString();                      // "00:1b:21:3c:9d:f8"
//   mac.AssignFromHexString("0a:ff");    // back from such a text
//
// Ownership: owns its bytes, copies deeply. The bytes given to Assign or
//            Append may be bytes of the string itself.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = refused and unchanged. A call that replaces the
//            contents and finds no memory leaves length 0. A text form without
//            memory is empty.
// Contract:  field order is ABI, the first two as in SASNOctetStr; capacity
//            doubles (s_growBy) from 4. A piece appended at once has at most
//            255 bytes: a longer one is refused, so append it in parts or
//            Assign it. Such a piece grows the string one byte early.
class VKMIBH_API BOctetString {
public:
    static constexpr unsigned s_growBy = 2;

    constexpr BOctetString() noexcept : m_data(nullptr), m_length(0), m_capacity(0) {}
    BOctetString(const BOctetString& other);
    BOctetString(BOctetString&& other) noexcept
        : m_data(other.m_data), m_length(other.m_length), m_capacity(other.m_capacity)
    {
        other.Forget();
    }
    explicit BOctetString(const SASNOctetStr& other);
    BOctetString(unsigned length, const unsigned char* bytes);
    BOctetString(const unsigned char* begin, const unsigned char* end);
    explicit BOctetString(const BString& text);
    BOctetString(const char* text, unsigned length);
    ~BOctetString() { delete[] m_data; }
    BOctetString& operator=(const BOctetString& other);
    BOctetString& operator=(BOctetString&& other) noexcept;

    // Null bytes give `length` zeros.
    bool Assign(unsigned length, const unsigned char* bytes);
    bool Assign(const BOctetString& other);
    bool Assign(const unsigned char* begin, const unsigned char* end);
    bool Assign(unsigned char byte);
    // Length 0 stands for the length of the terminated text.
    bool Assign(const char* text, unsigned length);
    bool Assign(const BString& text);
    bool Append(unsigned char byte);
    bool Append(const BOctetString& other);
    bool Append(unsigned count, const unsigned char* bytes);
    // Storage of exactly `length` bytes, all `fill`, and length 0. Length 0
    // releases the storage.
    bool Reserve(unsigned length, unsigned char fill);
    // Makes room for `needed` bytes; with `discard` the length becomes 0 first.
    bool ReallocArray(unsigned needed, bool discard);
    void Clear();

    // Unchecked.
    unsigned char operator[](unsigned i) const { return m_data[i]; }
    unsigned char& operator[](unsigned i) { return m_data[i]; }
    bool operator==(const BOctetString& other) const;
    bool operator==(const BString& text) const;
    // From pairs of hexadecimal digits joined by ':'; unchanged otherwise.
    bool AssignFromHexString(const char* text);
    // Whether all bytes are 32 to 127, 7 to 13 or NUL.
    bool IsDispStr() const;
    // The bytes as they are. With length 0, what storage there is as a
    // terminated text.
    BString ToDispStr() const;
    // Lower-case pairs joined by ':'.
    BString ToString() const;
    void ToString(BString& out) const;

    unsigned Length() const { return m_data ? m_length : 0; }
    unsigned Capacity() const { return m_capacity; }
    const unsigned char* Data() const { return m_data; }

private:
    friend struct SLayoutCheck;
    friend class BObjectSyntax;

    void Forget() noexcept
    {
        m_data = nullptr;
        m_length = 0;
        m_capacity = 0;
    }

    unsigned char* m_data;
    unsigned m_length;
    unsigned m_capacity;
};

inline BOctetString& BOctetString::operator=(BOctetString&& other) noexcept
{
    if (&other != this) {
        delete[] m_data;
        m_data = other.m_data;
        m_length = other.m_length;
        m_capacity = other.m_capacity;
        other.Forget();
    }
    return *this;
}

inline bool operator!=(const BOctetString& a, const BOctetString& b) { return !(a == b); }

// An IPv4 address: four bytes, the first dotted number first.
//
// Ownership: a plain value.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = refused and unchanged.
// Contract:  four bytes and nothing else are ABI. Four parts of digits up to
//            255 in at most 15 characters make an address; an empty part is 0,
//            so 1..2.3 is 1.0.2.3.
class VKMIBH_API BIpAddress {
public:
    BIpAddress() noexcept : m_bytes{0, 0, 0, 0} {}
    BIpAddress(unsigned char a, unsigned char b, unsigned char c, unsigned char d) noexcept
        : m_bytes{a, b, c, d}
    {
    }
    bool AssignFromDottedDecimalStr(const BString& text);
    BString ToString() const;
    unsigned char operator[](unsigned i) const { return m_bytes[i]; }
    unsigned char& operator[](unsigned i) { return m_bytes[i]; }

private:
    friend struct SLayoutCheck;
    unsigned char m_bytes[4];
};

} // namespace VLK
