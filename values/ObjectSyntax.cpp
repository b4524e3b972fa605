// Tagged value: life cycle, setters and readers.
#include <vkmibh/values.h>

#include <cstring>
#include <new>

#include "foundation/Bytewise.h"
#include "foundation/Immortal.h"

namespace VLK {

namespace {

// Stands in for the value of another tag.
template <class Value>
const Value& EmptyValue()
{
    static Immortal<Value> s_empty;
    return s_empty.Get();
}

inline bool HoldsOctets(unsigned char syntax)
{
    return syntax == eAsnOctetString || syntax == eAsnOpaque;
}

inline bool HoldsUnsigned(unsigned char syntax)
{
    return syntax == eAsnCounter32 || syntax == eAsnGauge32 || syntax == eAsnTimeTicks;
}

// A copy of exactly `count` items; null when there are none or no memory.
template <class Item>
Item* CopyItems(const Item* items, unsigned count)
{
    Item* copy = count != 0 ? NewItems<Item>(count) : nullptr;
    if (copy)
        MoveItems(copy, items, count);
    return copy;
}

} // namespace

BObjectSyntax::BObjectSyntax(EAsnSyntax syntax) : m_syntax(eAsnNull)
{
    VKDbgModuleTraceClass(eTraceObjectSyntax, "constructor 1");
    ZeroItems(&m_value, 1);
    m_syntax = static_cast<unsigned char>(syntax);
}

BObjectSyntax::BObjectSyntax(const BObjectSyntax& other) : m_syntax(eAsnNull)
{
    VKDbgModuleTraceClass(eTraceObjectSyntax, "copy constructor");
    ZeroItems(&m_value, 1);
    Assign(other);
}

BObjectSyntax::BObjectSyntax(BObjectSyntax&& other) noexcept { Take(other); }

BObjectSyntax::~BObjectSyntax()
{
    VKDbgModuleTraceClass(eTraceObjectSyntax, "destructor");
    FreeResources();
}

BObjectSyntax& BObjectSyntax::operator=(const BObjectSyntax& other)
{
    if (this != &other)
        Assign(other);
    return *this;
}

BObjectSyntax& BObjectSyntax::operator=(BObjectSyntax&& other) noexcept
{
    if (&other != this) {
        FreeResources();
        Take(other);
    }
    return *this;
}

void BObjectSyntax::Take(BObjectSyntax& other) noexcept
{
    m_syntax = other.m_syntax;
    MoveItems(&m_value, &other.m_value, 1);
    other.m_syntax = eAsnNull;
    ZeroItems(&other.m_value, 1);
}

void BObjectSyntax::Assign(const BObjectSyntax& other)
{
    VKDbgModuleTraceClass(eTraceObjectSyntax, "Assign");
    if (&other == this)
        return;
    FreeResources();
    m_syntax = other.m_syntax;
    switch (m_syntax) {
    case eAsnInteger:
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks:
        m_value.number = other.m_value.number;
        break;
    case eAsnOctetString:
    case eAsnOpaque:
        CopyOctets(other.m_value.octets.m_data, other.m_value.octets.Length());
        if (m_value.octets.m_data)
            m_value.octets.m_capacity = m_value.octets.m_length;
        break;
    case eAsnObjectId:
        CopyObjectId(other.m_value.objectId);
        if (m_value.objectId.m_arcs)
            m_value.objectId.m_capacity = m_value.objectId.m_length;
        break;
    case eAsnIpAddress:
        std::memcpy(m_value.address, other.m_value.address, sizeof m_value.address);
        break;
    case eAsnCounter64:
        m_value.counter = other.m_value.counter;
        break;
    default: // NULL, the exceptions and unknown tags have no value
        break;
    }
}

void BObjectSyntax::FreeResources()
{
    VKDbgModuleTraceClass(eTraceObjectSyntax, "FreeResources");
    if (HoldsOctets(m_syntax))
        delete[] m_value.octets.m_data;
    else if (m_syntax == eAsnObjectId)
        delete[] m_value.objectId.m_arcs;
    ZeroItems(&m_value, 1);
}

// CONTRACT: the length is stored first, so a failed copy is a length without
// data, and the capacity stays 0: nothing is appended to a value in place.
void BObjectSyntax::CopyOctets(const unsigned char* bytes, unsigned length)
{
    m_value.octets.m_length = length;
    m_value.octets.m_data = CopyItems(bytes, length);
}

void BObjectSyntax::CopyObjectId(const BObjectIdentifier& value)
{
    m_value.objectId.m_length = value.Length();
    m_value.objectId.m_arcs = CopyItems(value.m_arcs, value.Length());
}

void BObjectSyntax::Reset(unsigned char syntax)
{
    FreeResources();
    m_syntax = syntax;
}

void BObjectSyntax::SetInt(int value)
{
    Reset(eAsnInteger);
    m_value.integer = value;
}

void BObjectSyntax::SetCounter(unsigned value)
{
    Reset(eAsnCounter32);
    m_value.number = value;
}

void BObjectSyntax::SetGauge(unsigned value)
{
    Reset(eAsnGauge32);
    m_value.number = value;
}

void BObjectSyntax::SetTimeTicks(unsigned value)
{
    Reset(eAsnTimeTicks);
    m_value.number = value;
}

void BObjectSyntax::SetCtr64(const SCTR64& value)
{
    const SCTR64 copy = value;
    Reset(eAsnCounter64);
    m_value.counter = copy;
}

void BObjectSyntax::SetNull() { Reset(eAsnNull); }

void BObjectSyntax::SetV2Exception(ESnmpException exception)
{
    Reset(static_cast<unsigned char>(exception));
}

void BObjectSyntax::SetOctets(const BOctetString& value)
{
    if (&value == &m_value.octets)
        return SetOctets(BOctetString(value));
    Reset(eAsnOctetString);
    m_value.octets.Assign(value);
}

void BObjectSyntax::SetOctets(const BString& value)
{
    Reset(eAsnOctetString);
    CopyOctets(reinterpret_cast<const unsigned char*>(value.data()), value.length());
}

// CONTRACT: BITS has no tag of its own; on the wire it is an OCTET STRING.
void BObjectSyntax::SetBits(const BOctetString& value)
{
    if (&value == &m_value.octets)
        return SetBits(BOctetString(value));
    Reset(eAsnOctetString);
    CopyOctets(value.m_data, value.Length());
}

void BObjectSyntax::SetOpaque(const BOctetString& value)
{
    if (&value == &m_value.octets)
        return SetOpaque(BOctetString(value));
    Reset(eAsnOpaque);
    CopyOctets(value.m_data, value.Length());
}

void BObjectSyntax::SetObjectId(const BObjectIdentifier& value)
{
    if (&value == &m_value.objectId)
        return SetObjectId(BObjectIdentifier(value));
    Reset(eAsnObjectId);
    CopyObjectId(value);
}

void BObjectSyntax::SetIpAddress(const BIpAddress& value)
{
    Reset(eAsnIpAddress);
    for (unsigned i = 0; i < 4; ++i)
        m_value.address[i] = value[i];
}

int BObjectSyntax::Int() const { return m_syntax == eAsnInteger ? m_value.integer : 0; }

unsigned BObjectSyntax::Unsigned() const { return HoldsUnsigned(m_syntax) ? m_value.number : 0; }

SCTR64 BObjectSyntax::Ctr64() const
{
    return m_syntax == eAsnCounter64 ? m_value.counter : SCTR64{0, 0};
}

BIpAddress BObjectSyntax::IpAddress() const
{
    const unsigned char* a = m_value.address;
    return m_syntax == eAsnIpAddress ? BIpAddress(a[0], a[1], a[2], a[3]) : BIpAddress();
}

const BOctetString& BObjectSyntax::Octets() const
{
    return HoldsOctets(m_syntax) ? m_value.octets : EmptyValue<BOctetString>();
}

const BObjectIdentifier& BObjectSyntax::ObjectId() const
{
    return m_syntax == eAsnObjectId ? m_value.objectId : EmptyValue<BObjectIdentifier>();
}

} // namespace VLK
