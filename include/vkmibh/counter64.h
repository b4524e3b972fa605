// 64-bit counter.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

// The plain 64-bit record that the protocol engine reads: high word first.
struct SCTR64 {
    unsigned high;
    unsigned low;
};

// An unsigned counter modulo 2^64, held as two words (RFC 2578 section 7.1.10).
//
//   BCounter64 octets(0, 4294967295u);
//   octets += 1;                         // carries: high 1, low 0
//   octets.ToString();                   // "4294967296"
//
// Ownership: a plain value.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    the text conversions return 1 = done, 0 = refused, the value then
//            being 0. A text form without memory is empty.
// Contract:  one SCTR64 and nothing else is ABI. + and - change the object
//            itself and return its new value; += and -= return the value
//            before the change; both are kept for the callers that count on
//            them. Write code that needs neither: use Set, ++ and ==.
class VKMIBH_API BCounter64 {
public:
    BCounter64() noexcept : m_value{0, 0} {}
    explicit BCounter64(unsigned low) noexcept : m_value{0, low} {}
    BCounter64(unsigned high, unsigned low) noexcept : m_value{high, low} {}
    explicit BCounter64(const SCTR64& value) noexcept : m_value(value) {}
    BCounter64(const BCounter64& other) noexcept = default;
    BCounter64& operator=(const BCounter64& other) noexcept = default;
    BCounter64& operator=(unsigned value);
    void Set(unsigned value);
    void Set(unsigned high, unsigned low);

    // Shifts by 64 and more give 0, by 0 and less change nothing.
    BCounter64& operator<<=(int n);
    BCounter64& operator>>=(int n);
    BCounter64& operator&=(const BCounter64& other);
    BCounter64& operator|=(const BCounter64& other);
    BCounter64& operator^=(const BCounter64& other);
    // These two change the object.
    BCounter64 operator+(const BCounter64& other);
    BCounter64 operator-(const BCounter64& other);
    BCounter64 operator++();
    BCounter64 operator--();
    // These two return the value before the change.
    BCounter64 operator+=(unsigned value);
    BCounter64 operator-=(unsigned value);
    BCounter64& Mul10();
    // Modulo 2^64 and unchecked: always 1.
    bool AssignFromDecString(const char* text);
    // Pairs of hexadecimal digits joined by ':'. Pair k goes 24 * k bits up: 0
    // and 1 into the low word, the later ones 32 less and modulo 64 into the
    // high word, where 32 and more vanish. For exact values use decimal text.
    bool AssignFromHexString(const char* text);

    // Byte i, 0 to 7, counted from the least significant one on every machine.
    unsigned char operator[](int i) const;
    unsigned char& operator[](int i);
    BCounter64 operator<<(int n) const;
    BCounter64 operator>>(int n) const;
    BCounter64 operator&(const BCounter64& other) const;
    BCounter64 operator|(const BCounter64& other) const;
    BCounter64 operator^(const BCounter64& other) const;
    BCounter64 operator~() const;
    bool operator==(const BCounter64& other) const;
    bool operator!=(const BCounter64& other) const { return !(*this == other); }
    // The quotient may be the object itself.
    void Div10(BCounter64& quotient, unsigned& remainder) const;
    // Decimal.
    BString ToString() const;
    unsigned High() const { return m_value.high; }
    unsigned Low() const { return m_value.low; }
    const SCTR64& Value() const { return m_value; }

private:
    friend struct SLayoutCheck;
    SCTR64 m_value;
};

} // namespace VLK
