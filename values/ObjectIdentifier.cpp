// Object identifier: storage, assignment and building.
#include <vkmibh/values.h>

#include <climits>
#include <cstring>
#include <utility>

#include "foundation/Bytewise.h"

namespace VLK {

BObjectIdentifier::BObjectIdentifier(unsigned arc) : BObjectIdentifier() { Set(arc); }

BObjectIdentifier::BObjectIdentifier(unsigned count, const unsigned* arcs) : BObjectIdentifier()
{
    Set(count, arcs);
}

BObjectIdentifier::BObjectIdentifier(const SASNObjectId& other) : BObjectIdentifier()
{
    Set(other.count, other.arcs);
}

BObjectIdentifier::BObjectIdentifier(const BString& dotted) : BObjectIdentifier()
{
    AssignFromDottedDecimalStr(dotted);
}

BObjectIdentifier::BObjectIdentifier(const BObjectIdentifier& other) : BObjectIdentifier()
{
    Set(other);
}

// cppcheck-suppress operatorEqVarError ; Set() assigns them
BObjectIdentifier& BObjectIdentifier::operator=(const BObjectIdentifier& other)
{
    if (this != &other)
        Set(other);
    return *this;
}

bool BObjectIdentifier::ReallocArray(unsigned needed, bool discard)
{
    if (discard)
        m_length = 0;
    if (needed == 0 || needed <= m_capacity)
        return true;
    std::uint64_t capacity = m_capacity == 0 ? s_growBy : m_capacity;
    if (capacity < needed)
        capacity += (needed - capacity + s_growBy - 1) / s_growBy * s_growBy;
    unsigned* arcs = NewItems<unsigned>(capacity);
    if (!arcs)
        return false;
    m_length = Length();
    MoveItems(arcs, m_arcs, m_length);
    delete[] m_arcs;
    m_arcs = arcs;
    m_capacity = static_cast<unsigned>(capacity);
    return true;
}

bool BObjectIdentifier::Set(unsigned count, const unsigned* arcs)
{
    if (!arcs)
        count = 0;
    if (!ReallocArray(count, true))
        return false;
    MoveItems(m_arcs, arcs, count);
    m_length = count;
    return true;
}

bool BObjectIdentifier::Set(unsigned arc) { return Set(1, &arc); }

bool BObjectIdentifier::Set(const BObjectIdentifier& other)
{
    return &other == this || Set(other.Length(), other.m_arcs);
}

bool BObjectIdentifier::Set(const BObjectIdentifier& other, unsigned from, unsigned to)
{
    const unsigned length = other.Length();
    if (to == ~0u)
        to = length;
    if (to < from || to > length)
        return false;
    if (from == to) {
        // CONTRACT: storage is neither taken nor given back for an empty range.
        m_length = 0;
        return true;
    }
    return Set(to - from, other.m_arcs + from);
}

bool BObjectIdentifier::Append(unsigned arc)
{
    const unsigned length = Length();
    if (length == UINT_MAX || !ReallocArray(length + 1, false))
        return false;
    m_arcs[length] = arc;
    m_length = length + 1;
    return true;
}

bool BObjectIdentifier::Append(const BObjectIdentifier& other, bool implied)
{
    const unsigned count = other.Length();
    unsigned length = Length();
    const std::uint64_t needed = std::uint64_t(length) + count + (implied ? 0 : 1);
    if (needed > UINT_MAX || !ReallocArray(static_cast<unsigned>(needed), false))
        return false;
    if (needed == length)
        return true;
    if (!implied)
        m_arcs[length++] = count;
    // Read only now: when the value is appended to itself, growing moved it.
    MoveItems(m_arcs + length, other.m_arcs, count);
    m_length = length + count;
    return true;
}

namespace {

// Appends the arcs of a string index one by one. CONTRACT: a failed append
// does not stop the ones after it. Returns the last result, or `result` when
// there is nothing to append.
bool AppendStringIndex(BObjectIdentifier& oid, const unsigned char* bytes, int count, bool implied,
                       bool result)
{
    if (!bytes)
        count = 0;
    // CONTRACT: the prefix is the count as given, a negative one included.
    if (!implied)
        result = oid.Append(static_cast<unsigned>(count));
    for (int i = 0; i < count; ++i)
        result = oid.Append(static_cast<unsigned>(bytes[i]));
    return result;
}

unsigned StringIndexArcs(int count, bool implied)
{
    const std::int64_t arcs = std::int64_t(count) + (implied ? 0 : 1);
    return arcs > 0 ? static_cast<unsigned>(arcs) : 0;
}

} // namespace

bool BObjectIdentifier::Set(const unsigned char* bytes, int count, bool implied)
{
    if (!ReallocArray(StringIndexArcs(bytes ? count : 0, implied), true))
        return false;
    return AppendStringIndex(*this, bytes, count, implied, true);
}

bool BObjectIdentifier::Set(const char* chars, int count, bool implied)
{
    return Set(reinterpret_cast<const unsigned char*>(chars), count, implied);
}

void BObjectIdentifier::Append(const unsigned char* bytes, int count, bool implied)
{
    // Grows once where it can; the single appends try again where it cannot.
    const std::uint64_t needed =
        std::uint64_t(Length()) + StringIndexArcs(bytes ? count : 0, implied);
    if (needed <= UINT_MAX)
        ReallocArray(static_cast<unsigned>(needed), false);
    AppendStringIndex(*this, bytes, count, implied, true);
}

void BObjectIdentifier::Append(const char* chars, int count, bool implied)
{
    Append(reinterpret_cast<const unsigned char*>(chars), count, implied);
}

void BObjectIdentifier::Reverse()
{
    const unsigned length = Length();
    for (unsigned i = 0; i < length / 2; ++i)
        std::swap(m_arcs[i], m_arcs[length - 1 - i]);
}

void BObjectIdentifier::Attach(unsigned length, unsigned* storage, unsigned capacity)
{
    m_length = length;
    m_arcs = storage;
    m_capacity = capacity != 0 ? capacity : length;
    if (!storage)
        m_length = m_capacity = 0;
}

unsigned* BObjectIdentifier::Detach(unsigned& length)
{
    unsigned* arcs = m_arcs;
    length = Length();
    m_length = 0;
    m_arcs = nullptr;
    m_capacity = 0;
    return arcs;
}

void BObjectIdentifier::Truncate(unsigned length)
{
    if (length < m_length)
        m_length = length;
}

} // namespace VLK
