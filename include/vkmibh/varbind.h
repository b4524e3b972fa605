// Variable binding and binding list.
#pragma once

#include <vkmibh/syntax.h>

namespace VLK {

// One variable: its name and its value.
//
// Ownership: owns both, copies deeply, moves without copying.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    none are reported. A part copied without memory reads as empty.
// Contract:  field order is ABI. A new binding's value is NULL; a binding of
//            all zero bytes is valid and empty, its tag is 0.
class VKMIBH_API BVarBind {
public:
    BVarBind() = default;
    explicit BVarBind(const BObjectIdentifier& name);
    BVarBind(const BObjectIdentifier& name, const BObjectSyntax& value);
    BVarBind(const BVarBind& other) = default;
    BVarBind(BVarBind&& other) noexcept = default;
    ~BVarBind() = default;
    BVarBind& operator=(const BVarBind& other);
    BVarBind& operator=(BVarBind&& other) noexcept = default;
    // Replaces the name only.
    void Set(const BObjectIdentifier& name);
    void Set(const BObjectIdentifier& name, const BObjectSyntax& value);
    void Assign(const BVarBind& other);

    const BObjectIdentifier& Name() const { return m_name; }
    BObjectIdentifier& Name() { return m_name; }
    const BObjectSyntax& Value() const { return m_value; }
    BObjectSyntax& Value() { return m_value; }

private:
    friend struct SLayoutCheck;
    BObjectIdentifier m_name;
    BObjectSyntax m_value;
};

// The bindings of a request, in order; it is answered in place.
//
//   BVarBindList request;
//   request.Append(BObjectIdentifier(BString("1.3.6.1.2.1.1.3.0")));
//   ...                                  // run it through the handler
//   request.First().Value().ValToStr();
//
// Ownership: owns its bindings, copies deeply. A binding of the list, or its
//            name or value, may be appended to it; appending the whole list to
//            itself is not supported.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = no room for the binding, or bad index, and unchanged;
//            Assign without room leaves an empty list. A binding that found
//            room but no memory for its name or value is there without it.
// Contract:  field order is ABI. Capacity grows by s_growBy, a copy has none to
//            spare. Growing and Remove move bindings without copying what they
//            own, so references into the list do not survive either.
class VKMIBH_API BVarBindList {
public:
    static constexpr unsigned s_growBy = 4;

    BVarBindList() noexcept : m_bindings(nullptr), m_count(0), m_capacity(0) {}
    BVarBindList(const BVarBindList& other);
    BVarBindList(BVarBindList&& other) noexcept
        : m_bindings(other.m_bindings), m_count(other.m_count), m_capacity(other.m_capacity)
    {
        other.Forget();
    }
    ~BVarBindList() { Clear(); }
    BVarBindList& operator=(const BVarBindList& other);
    BVarBindList& operator=(BVarBindList&& other) noexcept;
    bool Append(const BVarBind& binding);
    // With a NULL value.
    bool Append(const BObjectIdentifier& name);
    bool Append(const BObjectIdentifier& name, const BObjectSyntax& value);
    // Stops at the first binding without memory; those before it stay.
    bool Append(const BVarBindList& other);
    // Makes room for `capacity` bindings in all: growing by some at a time moves a
    // long list many times. Never less room than before.
    bool Reserve(unsigned capacity);
    bool Assign(const BVarBindList& other);
    bool Remove(int index);
    void Clear();

    // Unchecked, First and Last too.
    const BVarBind& operator[](int index) const { return m_bindings[index]; }
    BVarBind& operator[](int index) { return m_bindings[index]; }
    const BVarBind& First() const { return m_bindings[0]; }
    BVarBind& First() { return m_bindings[0]; }
    const BVarBind& Last() const { return m_bindings[m_count - 1]; }
    BVarBind& Last() { return m_bindings[m_count - 1]; }
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }

private:
    friend struct SLayoutCheck;

    template <class Fill>
    bool AppendFilled(Fill fill);
    void Forget() noexcept
    {
        m_bindings = nullptr;
        m_count = 0;
        m_capacity = 0;
    }

    BVarBind* m_bindings;
    unsigned m_count;
    unsigned m_capacity;
};

inline BVarBindList& BVarBindList::operator=(BVarBindList&& other) noexcept
{
    if (&other != this) {
        Clear();
        m_bindings = other.m_bindings;
        m_count = other.m_count;
        m_capacity = other.m_capacity;
        other.Forget();
    }
    return *this;
}

} // namespace VLK
