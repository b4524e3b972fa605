#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vkmibh/base.h>

namespace VLK {

namespace {

constexpr uint64_t kMinCapacity = 15;
constexpr uint64_t kMaxCapacity = BString::npos - 1;

unsigned Given(const char* text, unsigned length) { return text ? length : 0; }

int CompareBytes(const char* a, unsigned aLength, const char* b, unsigned bLength)
{
    const unsigned common = aLength < bLength ? aLength : bLength;
    const int order = common ? std::memcmp(a, b, common) : 0;
    if (order != 0)
        return order;
    return aLength < bLength ? -1 : aLength > bLength;
}

} // namespace

BString::BString(const char* text) { Init(text, Strlen(text)); }

BString::BString(const char* text, unsigned length) { Init(text, length); }

BString::BString(const BString& other) { Init(other.m_data, other.length()); }

BString::BString(BString&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_length(std::exchange(other.m_length, 0)),
      m_capacity(std::exchange(other.m_capacity, 0))
{
}

BString::~BString() { delete[] m_data; }

BString& BString::operator=(const BString& other)
{
    if (this != &other)
        Assign(other);
    return *this;
}

BString& BString::operator=(BString&& other) noexcept
{
    if (this != &other) {
        delete[] m_data;
        m_data = std::exchange(other.m_data, nullptr);
        m_length = std::exchange(other.m_length, 0);
        m_capacity = std::exchange(other.m_capacity, 0);
    }
    return *this;
}

void BString::Init(const char* text, unsigned length)
{
    m_data = nullptr;
    m_length = 0;
    m_capacity = 0;
    Assign(text, length);
}

BString& BString::Assign(const char* text, unsigned length)
{
    length = Given(text, length);
    if (length == 0) {
        clear();
        return *this;
    }
    if (Aliases(text)) {
        // Part of the own storage: it is there already, so nothing grows.
        std::memmove(m_data, text, length);
    } else {
        if (!Grow(length, false))
            return *this;
        std::memcpy(m_data, text, length);
    }
    m_length = length;
    m_data[length] = '\0';
    return *this;
}

BString& BString::Assign(const BString& other) { return Assign(other.m_data, other.length()); }

BString& BString::Append(const char* text, unsigned length)
{
    length = Given(text, length);
    if (length == 0)
        return *this;
    const unsigned before = this->length();
    const bool own = Aliases(text);
    const std::size_t offset = own ? static_cast<std::size_t>(text - m_data) : 0;
    if (!Grow(uint64_t(before) + length, true))
        return *this;
    std::memmove(m_data + before, own ? m_data + offset : text, length);
    m_length = before + length;
    m_data[m_length] = '\0';
    return *this;
}

BString& BString::Append(const BString& other) { return Append(other.m_data, other.length()); }

BString& BString::Append(char c) { return Append(&c, 1); }

bool BString::reserve(unsigned length) { return Grow(length, false); }

void BString::clear()
{
    m_length = 0;
    if (m_data)
        m_data[0] = '\0';
}

int BString::compare(unsigned pos, unsigned count, const char* text, unsigned length) const
{
    const unsigned all = this->length();
    if (pos > all)
        pos = all;
    if (count > all - pos)
        count = all - pos;
    return CompareBytes(c_str() + pos, count, text, Given(text, length));
}

int BString::compare(const BString& other) const
{
    return CompareBytes(m_data, length(), other.m_data, other.length());
}

unsigned BString::Strlen(const char* text) { return VKStrlen(text); }

const char* BString::_Nullstr()
{
    static const char s_nullString[1] = "";
    return s_nullString;
}

// Room for length characters and the NUL, the present ones kept. With spare
// the storage at least doubles, so that appending stays linear.
bool BString::Grow(uint64_t length, bool spare)
{
    if (m_data && length <= m_capacity)
        return true;
    if (length > kMaxCapacity)
        return false;
    uint64_t wanted = length;
    if (spare && wanted < uint64_t(m_capacity) * 2)
        wanted = uint64_t(m_capacity) * 2;
    if (spare && wanted < kMinCapacity)
        wanted = kMinCapacity;
    if (wanted > kMaxCapacity)
        wanted = kMaxCapacity;
    if (wanted >= uint64_t(std::numeric_limits<std::ptrdiff_t>::max()))
        return false;
    char* data = new (std::nothrow) char[std::size_t(wanted) + 1];
    if (!data)
        return false;
    const unsigned kept = this->length();
    if (kept)
        std::memcpy(data, m_data, kept);
    data[kept] = '\0';
    delete[] m_data;
    m_data = data;
    m_length = kept;
    m_capacity = unsigned(wanted);
    return true;
}

bool BString::Aliases(const char* text) const
{
    const auto at = reinterpret_cast<std::uintptr_t>(text);
    const auto start = reinterpret_cast<std::uintptr_t>(m_data);
    return m_data && at >= start && at - start <= m_capacity;
}

} // namespace VLK
