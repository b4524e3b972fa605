// Object identifier.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

// The protocol engine's plain object identifier; BObjectIdentifier copies it.
struct SASNObjectId {
    unsigned count;
    unsigned* arcs;
};

// A list of unsigned arcs: names an object, a table row or a place in the
// tree. Compare() is the order in which GETNEXT visits the agent: arcs are
// unsigned, a proper prefix sorts before what extends it.
//
//   BObjectIdentifier row;
//   row.Set(7u);                    // ifIndex 7 ...
//   row.Append("eth0", 4, false);   // ... then a length-prefixed name
//
//   int pos = 1;
//   if (row.IsCreatedFromAsciiStr(pos, false))
//       ...                         // arcs 2 to pos - 1 are the name
//
// Ownership: owns its arcs, copies deeply. Only Attach and Detach hand an
//            array (made by new[]) over without copying. A value may be
//            appended to itself or set to a part of itself.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = refused and unchanged. A call that replaces the
//            contents and finds no memory leaves length 0. String indexes are
//            appended arc by arc, and an arc without memory is left out. A text
//            form without memory is empty.
// Contract:  field order is ABI, the first two as in SASNObjectId; storage
//            grows by s_growBy arcs and is kept when the value gets shorter.
//            No rule about the first two arcs is enforced.
class VKMIBH_API BObjectIdentifier {
public:
    static constexpr unsigned s_growBy = 16;

    constexpr BObjectIdentifier() noexcept : m_length(0), m_arcs(nullptr), m_capacity(0) {}
    // One arc; not a capacity.
    explicit BObjectIdentifier(unsigned arc);
    BObjectIdentifier(unsigned count, const unsigned* arcs);
    explicit BObjectIdentifier(const SASNObjectId& other);
    // Empty when the text is no dotted decimal.
    explicit BObjectIdentifier(const BString& dotted);
    BObjectIdentifier(const BObjectIdentifier& other);
    BObjectIdentifier(BObjectIdentifier&& other) noexcept
        : m_length(other.m_length), m_arcs(other.m_arcs), m_capacity(other.m_capacity)
    {
        other.Forget();
    }
    ~BObjectIdentifier() { delete[] m_arcs; }
    BObjectIdentifier& operator=(const BObjectIdentifier& other);
    BObjectIdentifier& operator=(BObjectIdentifier&& other) noexcept;

    // Makes room for `needed` arcs; with `discard` the length becomes 0 first.
    bool ReallocArray(unsigned needed, bool discard);
    bool Set(unsigned count, const unsigned* arcs);
    bool Set(unsigned arc);
    bool Set(const BObjectIdentifier& other);
    // Arcs [from, to) of the other; ~0u as `to` is its end.
    bool Set(const BObjectIdentifier& other, unsigned from, unsigned to);
    // A string index (RFC 2578 section 7.7): the count unless implied, then one
    // arc, 0 to 255, per byte. A count below 1 adds nothing after the prefix.
    bool Set(const unsigned char* bytes, int count, bool implied);
    bool Set(const char* chars, int count, bool implied);
    bool Append(unsigned arc);
    // An object identifier index: the other's length unless implied, its arcs.
    bool Append(const BObjectIdentifier& other, bool implied);
    void Append(const unsigned char* bytes, int count, bool implied);
    void Append(const char* chars, int count, bool implied);
    void Reverse();
    // Takes over an array made by new[]; capacity 0 stands for the length. What
    // was held before is not released: attach to empty values.
    void Attach(unsigned length, unsigned* storage, unsigned capacity);
    // Hands the array over (release it with delete[]) and leaves this empty.
    unsigned* Detach(unsigned& length);
    // Empties the value; the storage stays for the next one.
    void Clear() { m_length = 0; }
    // Shortens to the first `length` arcs; no effect when there are fewer.
    void Truncate(unsigned length);

    // -1, 0 or 1.
    int Compare(const BObjectIdentifier& other) const;
    // Whether this is a prefix of the other, or equal to it.
    bool IsStartingSubOidOf(const BObjectIdentifier& other) const;
    // Family membership (RFC 3415 section 4, vacmViewTreeFamilyMask): mask bit i,
    // the most significant first, is 0 where any arc will do; bits beyond the
    // mask are 1.
    bool IsUnderSubtree(const BObjectIdentifier& subtree, const unsigned char* mask,
                        unsigned maskLength) const;
    bool IsUnderSubtree(const BObjectIdentifier& subtree) const;
    // Whether an index component of that kind starts at arc `pos`; `pos` is then
    // moved past it, and stays as it is otherwise. Text is arcs 32 to 127.
    bool IsCreatedFromOctetStr(int& pos, bool implied) const;
    bool IsCreatedFromAsciiStr(int& pos, bool implied) const;
    bool IsCreatedFromIpAddr(int& pos) const;
    // Accepts blanks around the text, one leading and one trailing dot, and
    // components of 1 to 10 digits, taken modulo 2^32. Leaves an empty value
    // without storage on failure.
    bool AssignFromDottedDecimalStr(const BString& text);
    BString ToString() const;
    void ToString(BString& out) const;

    unsigned Length() const { return m_arcs ? m_length : 0; }
    unsigned Capacity() const { return m_capacity; }
    const unsigned* Arcs() const { return m_arcs; }
    // Unchecked.
    unsigned operator[](unsigned i) const { return m_arcs[i]; }
    unsigned& operator[](unsigned i) { return m_arcs[i]; }

private:
    friend struct SLayoutCheck;
    friend class BObjectSyntax;

    void Forget() noexcept
    {
        m_length = 0;
        m_arcs = nullptr;
        m_capacity = 0;
    }

    unsigned m_length;
    unsigned* m_arcs;
    unsigned m_capacity;
};

inline BObjectIdentifier& BObjectIdentifier::operator=(BObjectIdentifier&& other) noexcept
{
    if (&other != this) {
        delete[] m_arcs;
        m_length = other.m_length;
        m_arcs = other.m_arcs;
        m_capacity = other.m_capacity;
        other.Forget();
    }
    return *this;
}

inline bool operator==(const BObjectIdentifier& a, const BObjectIdentifier& b)
{
    return a.Compare(b) == 0;
}
inline bool operator!=(const BObjectIdentifier& a, const BObjectIdentifier& b)
{
    return a.Compare(b) != 0;
}
inline bool operator<(const BObjectIdentifier& a, const BObjectIdentifier& b)
{
    return a.Compare(b) < 0;
}

} // namespace VLK
