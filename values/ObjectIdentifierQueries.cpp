// Object identifier: order, subtree membership and index decoding.
#include <vkmibh/values.h>

#include <climits>
#include <cstdint>
#include <cstring>

namespace VLK {

namespace {

// The first position below `count` at which the arcs differ, else `count`.
inline unsigned FirstDifference(const unsigned* a, const unsigned* b, unsigned count)
{
    unsigned i = 0;
    for (; count - i >= 2; i += 2) {
        std::uint64_t pairA;
        std::uint64_t pairB;
        std::memcpy(&pairA, a + i, sizeof pairA);
        std::memcpy(&pairB, b + i, sizeof pairB);
        if (pairA != pairB)
            return a[i] != b[i] ? i : i + 1;
    }
    return i < count && a[i] == b[i] ? i + 1 : i;
}

// Whether mask bit `i` (most significant bit first) asks for equality.
inline bool MustMatch(const unsigned char* mask, unsigned maskLength, unsigned i)
{
    return i / 8 >= maskLength || (mask[i / 8] & (0x80u >> (i % 8))) != 0;
}

} // namespace

int BObjectIdentifier::Compare(const BObjectIdentifier& other) const
{
    const unsigned length = Length();
    const unsigned otherLength = other.Length();
    const unsigned common = length < otherLength ? length : otherLength;
    const unsigned i = FirstDifference(m_arcs, other.m_arcs, common);
    if (i < common)
        return m_arcs[i] > other.m_arcs[i] ? 1 : -1;
    return length == otherLength ? 0 : (length > otherLength ? 1 : -1);
}

bool BObjectIdentifier::IsStartingSubOidOf(const BObjectIdentifier& other) const
{
    const unsigned length = Length();
    return length <= other.Length() && FirstDifference(m_arcs, other.m_arcs, length) == length;
}

bool BObjectIdentifier::IsUnderSubtree(const BObjectIdentifier& subtree) const
{
    return subtree.IsStartingSubOidOf(*this);
}

bool BObjectIdentifier::IsUnderSubtree(const BObjectIdentifier& subtree, const unsigned char* mask,
                                       unsigned maskLength) const
{
    if (!mask || maskLength == 0)
        return IsUnderSubtree(subtree);
    const unsigned length = subtree.Length();
    if (length > Length())
        return false;
    for (unsigned i = 0; i < length; ++i) {
        if (m_arcs[i] != subtree.m_arcs[i] && MustMatch(mask, maskLength, i))
            return false;
    }
    return true;
}

namespace {

// Where the content of a string index lies: arcs [first, end).
struct SIndexContent {
    unsigned first;
    unsigned end;
};

bool LocateStringIndex(const BObjectIdentifier& oid, int pos, bool implied, SIndexContent& content)
{
    const unsigned length = oid.Length();
    // Positions are ints: what lies beyond their range cannot be reported.
    if (pos < 0 || static_cast<unsigned>(pos) >= length || length > INT_MAX)
        return false;
    content.first = static_cast<unsigned>(pos);
    content.end = length;
    if (implied)
        return true;
    const unsigned count = oid[content.first++];
    if (count > length - content.first)
        return false;
    content.end = content.first + count;
    return true;
}

bool AllWithin(const BObjectIdentifier& oid, SIndexContent content, unsigned low, unsigned high)
{
    for (unsigned i = content.first; i < content.end; ++i) {
        if (oid[i] < low || oid[i] > high)
            return false;
    }
    return true;
}

} // namespace

bool BObjectIdentifier::IsCreatedFromOctetStr(int& pos, bool implied) const
{
    SIndexContent content;
    if (!LocateStringIndex(*this, pos, implied, content) || !AllWithin(*this, content, 0, 255))
        return false;
    pos = static_cast<int>(content.end);
    return true;
}

bool BObjectIdentifier::IsCreatedFromAsciiStr(int& pos, bool implied) const
{
    SIndexContent content;
    // CONTRACT: 127 (delete) passes as text; indexes with it exist.
    if (!LocateStringIndex(*this, pos, implied, content) || !AllWithin(*this, content, 32, 127))
        return false;
    pos = static_cast<int>(content.end);
    return true;
}

bool BObjectIdentifier::IsCreatedFromIpAddr(int& pos) const
{
    const unsigned length = Length();
    if (pos < 0 || length > INT_MAX || length < 4 || static_cast<unsigned>(pos) > length - 4)
        return false;
    const unsigned first = static_cast<unsigned>(pos);
    if (!AllWithin(*this, SIndexContent{first, first + 4}, 0, 255))
        return false;
    pos += 4;
    return true;
}

} // namespace VLK
