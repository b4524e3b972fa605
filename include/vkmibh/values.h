// SNMP values: object identifier, octet string, IP address, 64-bit counter,
// tagged value, variable binding and binding list.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

// ASN.1 tags of SNMPv2-SMI (RFC 2578 section 7, RFC 3416 section 3).
enum EAsnSyntax {
    eAsnInteger = 2,
    eAsnOctetString = 4,
    eAsnNull = 5,
    eAsnObjectId = 6,
    eAsnIpAddress = 64,
    eAsnCounter32 = 65,
    eAsnGauge32 = 66,
    eAsnTimeTicks = 67,
    eAsnOpaque = 68,
    eAsnCounter64 = 70
};

// Exceptions of RFC 3416 section 3, held in the tag of a value.
enum ESnmpException { eNoSuchObject = 128, eNoSuchInstance = 129, eEndOfMibView = 130 };

// The protocol engine's plain structures; our values copy from them.
struct SASNObjectId {
    unsigned count;
    unsigned* arcs;
};
struct SASNOctetStr {
    unsigned char* data;
    unsigned length;
};
struct SCTR64 {
    unsigned high;
    unsigned low;
};

class VKMIBH_API BObjectIdentifier {
public:
    static constexpr unsigned s_growBy = 16;

    BObjectIdentifier() noexcept : m_length(0), m_arcs(nullptr), m_capacity(0) {}
    explicit BObjectIdentifier(unsigned arc);
    BObjectIdentifier(unsigned count, const unsigned* arcs);
    explicit BObjectIdentifier(const SASNObjectId& other);
    explicit BObjectIdentifier(const BString& dotted);
    BObjectIdentifier(const BObjectIdentifier& other);
    BObjectIdentifier(BObjectIdentifier&& other) noexcept;
    ~BObjectIdentifier();
    BObjectIdentifier& operator=(const BObjectIdentifier& other);
    BObjectIdentifier& operator=(BObjectIdentifier&& other) noexcept;

    bool ReallocArray(unsigned needed, bool discard);
    bool Set(unsigned count, const unsigned* arcs);
    bool Set(unsigned arc);
    bool Set(const BObjectIdentifier& other);
    bool Set(const BObjectIdentifier& other, unsigned from, unsigned to);
    bool Set(const unsigned char* bytes, int count, bool implied);
    bool Set(const char* chars, int count, bool implied);
    bool Append(unsigned arc);
    bool Append(const BObjectIdentifier& other, bool implied);
    void Append(const unsigned char* bytes, int count, bool implied);
    void Append(const char* chars, int count, bool implied);
    void Reverse();
    void Attach(unsigned length, unsigned* storage, unsigned capacity);
    unsigned* Detach(unsigned& length);
    // Empties the value; the storage stays for the next one.
    void Clear() { m_length = 0; }
    // Shortens to the first `length` arcs; no effect when there are fewer.
    void Truncate(unsigned length);

    int Compare(const BObjectIdentifier& other) const;
    bool IsStartingSubOidOf(const BObjectIdentifier& other) const;
    bool IsUnderSubtree(const BObjectIdentifier& subtree, const unsigned char* mask,
                        unsigned maskLength) const;
    bool IsUnderSubtree(const BObjectIdentifier& subtree) const;
    bool IsCreatedFromOctetStr(int& pos, bool implied) const;
    bool IsCreatedFromAsciiStr(int& pos, bool implied) const;
    bool IsCreatedFromIpAddr(int& pos) const;
    bool AssignFromDottedDecimalStr(const BString& text);
    BString ToString() const;
    void ToString(BString& out) const;

    unsigned Length() const { return m_arcs ? m_length : 0; }
    unsigned Capacity() const { return m_capacity; }
    const unsigned* Arcs() const { return m_arcs; }
    unsigned operator[](unsigned i) const { return m_arcs[i]; }
    unsigned& operator[](unsigned i) { return m_arcs[i]; }

private:
    friend struct SLayoutCheck;
    friend class BObjectSyntax;
    unsigned m_length;
    unsigned* m_arcs;
    unsigned m_capacity;
};

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

class VKMIBH_API BOctetString {
public:
    static constexpr unsigned s_growBy = 2;

    BOctetString() noexcept : m_data(nullptr), m_length(0), m_capacity(0) {}
    BOctetString(const BOctetString& other);
    BOctetString(BOctetString&& other) noexcept;
    explicit BOctetString(const SASNOctetStr& other);
    BOctetString(unsigned length, const unsigned char* bytes);
    BOctetString(const unsigned char* begin, const unsigned char* end);
    explicit BOctetString(const BString& text);
    BOctetString(const char* text, unsigned length);
    ~BOctetString();
    BOctetString& operator=(const BOctetString& other);
    BOctetString& operator=(BOctetString&& other) noexcept;

    bool Assign(unsigned length, const unsigned char* bytes);
    bool Assign(const BOctetString& other);
    bool Assign(const unsigned char* begin, const unsigned char* end);
    bool Assign(unsigned char byte);
    bool Assign(const char* text, unsigned length);
    bool Assign(const BString& text);
    bool Append(unsigned char byte);
    bool Append(const BOctetString& other);
    bool Append(unsigned length, const unsigned char* bytes);
    bool Reserve(unsigned length, unsigned char fill);
    bool ReallocArray(unsigned needed, bool discard);
    void Clear();

    unsigned char operator[](unsigned i) const { return m_data[i]; }
    unsigned char& operator[](unsigned i) { return m_data[i]; }
    bool operator==(const BOctetString& other) const;
    bool operator==(const BString& text) const;
    bool AssignFromHexString(const char* text);
    bool IsDispStr() const;
    BString ToDispStr() const;
    BString ToString() const;
    void ToString(BString& out) const;

    unsigned Length() const { return m_data ? m_length : 0; }
    unsigned Capacity() const { return m_capacity; }
    const unsigned char* Data() const { return m_data; }

private:
    friend struct SLayoutCheck;
    friend class BObjectSyntax;
    unsigned char* m_data;
    unsigned m_length;
    unsigned m_capacity;
};

inline bool operator!=(const BOctetString& a, const BOctetString& b) { return !(a == b); }

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
    unsigned High() const { return m_value.high; }
    unsigned Low() const { return m_value.low; }
    const SCTR64& Value() const { return m_value; }

    unsigned char operator[](int i) const;
    unsigned char& operator[](int i);
    BCounter64& operator<<=(int n);
    BCounter64& operator>>=(int n);
    BCounter64 operator<<(int n) const;
    BCounter64 operator>>(int n) const;
    BCounter64& operator&=(const BCounter64& other);
    BCounter64& operator|=(const BCounter64& other);
    BCounter64& operator^=(const BCounter64& other);
    BCounter64 operator&(const BCounter64& other) const;
    BCounter64 operator|(const BCounter64& other) const;
    BCounter64 operator^(const BCounter64& other) const;
    BCounter64 operator~() const;
    BCounter64 operator+(const BCounter64& other);
    BCounter64 operator-(const BCounter64& other);
    BCounter64 operator++();
    BCounter64 operator--();
    BCounter64 operator+=(unsigned value);
    BCounter64 operator-=(unsigned value);
    bool operator==(const BCounter64& other) const;
    bool operator!=(const BCounter64& other) const { return !(*this == other); }
    BCounter64& Mul10();
    void Div10(BCounter64& quotient, unsigned& remainder) const;
    bool AssignFromDecString(const char* text);
    bool AssignFromHexString(const char* text);
    BString ToString() const;

private:
    friend struct SLayoutCheck;
    SCTR64 m_value;
};

class VKMIBH_API BObjectSyntax {
public:
    explicit BObjectSyntax(EAsnSyntax syntax = eAsnNull);
    BObjectSyntax(const BObjectSyntax& other);
    BObjectSyntax(BObjectSyntax&& other) noexcept;
    ~BObjectSyntax();
    BObjectSyntax& operator=(const BObjectSyntax& other);
    BObjectSyntax& operator=(BObjectSyntax&& other) noexcept;
    void Assign(const BObjectSyntax& other);
    void FreeResources();

    void SetInt(int value);
    void SetCounter(unsigned value);
    void SetGauge(unsigned value);
    void SetTimeTicks(unsigned value);
    void SetCtr64(const SCTR64& value);
    void SetCtr64(const BCounter64& value) { SetCtr64(value.Value()); }
    void SetNull();
    void SetV2Exception(ESnmpException exception);
    void SetOctets(const BOctetString& value);
    void SetOctets(const BString& value);
    void SetBits(const BOctetString& value);
    void SetOpaque(const BOctetString& value);
    void SetObjectId(const BObjectIdentifier& value);
    void SetIpAddress(const BIpAddress& value);
    BString ValToStr() const;

    // An EAsnSyntax or ESnmpException value.
    unsigned char Syntax() const { return m_syntax; }
    bool IsException() const { return (m_syntax & 0x80) != 0; }
    // Each of these answers for its own tags and is 0 or empty for all others.
    int Int() const;
    unsigned Unsigned() const;
    SCTR64 Ctr64() const;
    BIpAddress IpAddress() const;
    const BOctetString& Octets() const;
    const BObjectIdentifier& ObjectId() const;

private:
    friend struct SLayoutCheck;
    union UValue {
        UValue() noexcept {}
        ~UValue() {}
        int integer;
        unsigned number;
        unsigned char address[4];
        SCTR64 counter;
        BOctetString octets;
        BObjectIdentifier objectId;
    };
    unsigned char m_syntax;
    UValue m_value;
};

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

class VKMIBH_API BVarBindList {
public:
    static constexpr unsigned s_growBy = 4;

    BVarBindList() noexcept : m_bindings(nullptr), m_count(0), m_capacity(0) {}
    BVarBindList(const BVarBindList& other);
    BVarBindList(BVarBindList&& other) noexcept;
    ~BVarBindList();
    BVarBindList& operator=(const BVarBindList& other);
    BVarBindList& operator=(BVarBindList&& other) noexcept;
    bool Append(const BVarBind& binding);
    bool Append(const BObjectIdentifier& name);
    bool Append(const BObjectIdentifier& name, const BObjectSyntax& value);
    bool Append(const BVarBindList& other);
    bool Assign(const BVarBindList& other);
    bool Remove(int index);
    void Clear();
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
    BVarBind* m_bindings;
    unsigned m_count;
    unsigned m_capacity;
};

} // namespace VLK
