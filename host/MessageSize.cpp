#include "host/MessageSize.h"

namespace VLK::host {

namespace {

unsigned long LengthSize(unsigned long length)
{
    if (length < 0x80)
        return 1;
    unsigned long size = 1;
    for (; length; length >>= 8)
        ++size;
    return size;
}

unsigned long Wrapped(unsigned long content) { return 1 + LengthSize(content) + content; }

unsigned long ArcSize(unsigned long arc)
{
    unsigned long size = 1;
    while (arc >>= 7)
        ++size;
    return size;
}

// The first two arcs share one sub-identifier.
unsigned long OidContent(const BObjectIdentifier& oid)
{
    if (oid.Length() < 2)
        return 1;
    unsigned long size = ArcSize(40ul * oid[0] + oid[1]);
    for (unsigned i = 2; i < oid.Length(); ++i)
        size += ArcSize(oid[i]);
    return size;
}

// Two's complement with no superfluous leading byte.
unsigned long UnsignedContent(unsigned long long value)
{
    unsigned long size = 1;
    for (; value > 0x7f; value >>= 8)
        ++size;
    return size;
}

unsigned long IntegerContent(int value)
{
    return UnsignedContent(static_cast<unsigned>(value < 0 ? ~value : value));
}

unsigned long ValueContent(const BObjectSyntax& value)
{
    switch (value.Syntax()) {
    case eAsnInteger:
        return IntegerContent(value.Int());
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks:
        return UnsignedContent(value.Unsigned());
    case eAsnCounter64:
        return UnsignedContent((static_cast<unsigned long long>(value.Ctr64().high) << 32) |
                               value.Ctr64().low);
    case eAsnOctetString:
    case eAsnOpaque:
        return value.Octets().Length();
    case eAsnObjectId:
        return OidContent(value.ObjectId());
    case eAsnIpAddress:
        return 4;
    default:
        return 0;
    }
}

} // namespace

unsigned long BindingSize(const BVarBind& binding)
{
    return Wrapped(Wrapped(OidContent(binding.Name())) + Wrapped(ValueContent(binding.Value())));
}

BMessageBudget::BMessageBudget(unsigned maxMessage, unsigned long communityLength, int requestId)
    : m_max(maxMessage), m_used(0)
{
    const unsigned long header = 4; // tag and length of message, PDU and list
    // One that came as an unsigned number goes back as such, in five bytes.
    unsigned long id = requestId < 0 ? 5 : IntegerContent(requestId);
    // The other three integers are one byte each.
    m_used = 3 * header + Wrapped(id) + 3 * Wrapped(1) + Wrapped(communityLength);
}

bool BMessageBudget::Take(const BVarBind& binding)
{
    unsigned long size = BindingSize(binding);
    if (m_used + size > m_max)
        return false;
    m_used += size;
    return true;
}

} // namespace VLK::host
