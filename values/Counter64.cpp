// 64-bit counter in two words.
#include <vkmibh/values.h>

#include <charconv>

namespace VLK {

namespace {

inline std::uint64_t Join(const SCTR64& value)
{
    return std::uint64_t(value.high) << 32 | value.low;
}

inline SCTR64 Split(std::uint64_t value)
{
    return SCTR64{static_cast<unsigned>(value >> 32), static_cast<unsigned>(value)};
}

} // namespace

BCounter64& BCounter64::operator=(unsigned value)
{
    Set(value);
    return *this;
}

void BCounter64::Set(unsigned value) { Set(0, value); }

void BCounter64::Set(unsigned high, unsigned low) { m_value = SCTR64{high, low}; }

unsigned char BCounter64::operator[](int i) const
{
    return static_cast<unsigned char>(Join(m_value) >> ((i & 7) * 8));
}

unsigned char& BCounter64::operator[](int i)
{
    i &= 7;
    unsigned char* word = reinterpret_cast<unsigned char*>(i < 4 ? &m_value.low : &m_value.high);
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return word[3 - i % 4];
#else
    return word[i % 4];
#endif
}

BCounter64& BCounter64::operator<<=(int n)
{
    if (n > 0)
        m_value = n >= 64 ? SCTR64{0, 0} : Split(Join(m_value) << n);
    return *this;
}

BCounter64& BCounter64::operator>>=(int n)
{
    if (n > 0)
        m_value = n >= 64 ? SCTR64{0, 0} : Split(Join(m_value) >> n);
    return *this;
}

BCounter64 BCounter64::operator<<(int n) const { return BCounter64(*this) <<= n; }

BCounter64 BCounter64::operator>>(int n) const { return BCounter64(*this) >>= n; }

BCounter64& BCounter64::operator&=(const BCounter64& other)
{
    m_value.high &= other.m_value.high;
    m_value.low &= other.m_value.low;
    return *this;
}

BCounter64& BCounter64::operator|=(const BCounter64& other)
{
    m_value.high |= other.m_value.high;
    m_value.low |= other.m_value.low;
    return *this;
}

BCounter64& BCounter64::operator^=(const BCounter64& other)
{
    m_value.high ^= other.m_value.high;
    m_value.low ^= other.m_value.low;
    return *this;
}

BCounter64 BCounter64::operator&(const BCounter64& other) const
{
    return BCounter64(*this) &= other;
}

BCounter64 BCounter64::operator|(const BCounter64& other) const
{
    return BCounter64(*this) |= other;
}

BCounter64 BCounter64::operator^(const BCounter64& other) const
{
    return BCounter64(*this) ^= other;
}

BCounter64 BCounter64::operator~() const { return BCounter64(~m_value.high, ~m_value.low); }

// CONTRACT: a + b changes a; callers use it as "add and tell the new value".
BCounter64 BCounter64::operator+(const BCounter64& other)
{
    m_value = Split(Join(m_value) + Join(other.m_value));
    return *this;
}

// CONTRACT: a - b changes a, as a + b does.
BCounter64 BCounter64::operator-(const BCounter64& other)
{
    m_value = Split(Join(m_value) - Join(other.m_value));
    return *this;
}

BCounter64 BCounter64::operator++()
{
    m_value = Split(Join(m_value) + 1);
    return *this;
}

BCounter64 BCounter64::operator--()
{
    m_value = Split(Join(m_value) - 1);
    return *this;
}

// CONTRACT: the result is the value before the change ("fetch and add").
BCounter64 BCounter64::operator+=(unsigned value)
{
    const BCounter64 before(*this);
    m_value = Split(Join(m_value) + value);
    return before;
}

// CONTRACT: the result is the value before the change, as of +=.
BCounter64 BCounter64::operator-=(unsigned value)
{
    const BCounter64 before(*this);
    m_value = Split(Join(m_value) - value);
    return before;
}

bool BCounter64::operator==(const BCounter64& other) const
{
    return m_value.high == other.m_value.high && m_value.low == other.m_value.low;
}

BCounter64& BCounter64::Mul10()
{
    m_value = Split(Join(m_value) * 10);
    return *this;
}

void BCounter64::Div10(BCounter64& quotient, unsigned& remainder) const
{
    const std::uint64_t value = Join(m_value);
    quotient.m_value = Split(value / 10);
    remainder = static_cast<unsigned>(value % 10);
}

// CONTRACT: nothing is refused. Values wrap modulo 2^64; a character that is no
// digit counts as its code minus 48, wrapped to 32 bits, in its place.
bool BCounter64::AssignFromDecString(const char* text)
{
    std::uint64_t value = 0;
    for (; text && *text; ++text)
        value = value * 10 + (static_cast<unsigned char>(*text) - unsigned('0'));
    m_value = Split(value);
    return true;
}

// CONTRACT: pair k lands 24 * k bits up (0 and 1 in the low word, later ones in
// the high word 32 less, modulo 64), so some pairs leave gaps and some vanish.
// The decimal form is the one for exact values.
bool BCounter64::AssignFromHexString(const char* text)
{
    Set(0);
    const unsigned length = text ? VKStrlen(text) : 0;
    if (!VKIsHexString(text, static_cast<int>(length), ':'))
        return false;
    unsigned shift = 0;
    for (unsigned i = 0; i + 1 < length; i += 3, shift += 24) {
        const unsigned high = VKHexDigit2Int(static_cast<unsigned char>(text[i]));
        const unsigned low = VKHexDigit2Int(static_cast<unsigned char>(text[i + 1]));
        const unsigned byte = high * 16 + low;
        if (i < 6)
            m_value.low |= byte << shift;
        else if ((shift - 32) % 64 < 32)
            m_value.high |= byte << ((shift - 32) % 64);
    }
    return true;
}

BString BCounter64::ToString() const
{
    char text[20];
    const auto result = std::to_chars(text, text + sizeof text, Join(m_value));
    return BString(text, static_cast<unsigned>(result.ptr - text));
}

} // namespace VLK
