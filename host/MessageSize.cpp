#include "host/MessageSize.h"

#include <vkmibh/labels.h>

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

// What the binding takes at most: found in less time than its size.
unsigned long MostOf(const BVarBind& binding)
{
    const unsigned long header = 6;
    const unsigned long arc = 5;
    const unsigned long number = 9;
    const BObjectSyntax& value = binding.Value();
    unsigned long most = number;
    if (value.Syntax() == eAsnOctetString || value.Syntax() == eAsnOpaque)
        most = value.Octets().Length();
    else if (value.Syntax() == eAsnObjectId)
        most = 1 + arc * value.ObjectId().Length();
    return 3 * header + 1 + arc * binding.Name().Length() + most;
}

const unsigned long kHeader = 4;  // tag and length of a message, PDU or list
const unsigned long kInteger = 6; // of 32 bits, with tag and length

// PDU, list and the integers before it.
unsigned long PduFrame(int requestId)
{
    // One that came as an unsigned number goes back as such, in five bytes.
    unsigned long id = requestId < 0 ? 5 : IntegerContent(requestId);
    // Error status and index are one byte each.
    return 2 * kHeader + Wrapped(id) + 2 * Wrapped(1);
}

unsigned long CommunityFrame(unsigned long communityLength, int requestId)
{
    return kHeader + Wrapped(1) + Wrapped(communityLength) + PduFrame(requestId);
}

// Of RFC 3412 section 6, with the security parameters of RFC 3414 section 2.4. The
// privacy that there is pads nothing.
unsigned long V3Frame(const SRequest& request)
{
    const unsigned long longestDigest = 48; // RFC 7860 section 4
    const unsigned long salt = 8;           // RFC 3826 section 3.1.2.1
    const unsigned long engineId = Wrapped(request.engineIdLength);
    unsigned long global = kHeader + 2 * kInteger + 2 * Wrapped(1);
    unsigned long security =
        2 * kHeader + engineId + 2 * kInteger + Wrapped(request.security.securityName.length()) +
        Wrapped(request.security.securityLevel >= eAuthNoPriv ? longestDigest : 0) +
        Wrapped(request.security.securityLevel >= eAuthPriv ? salt : 0);
    unsigned long scoped = 2 * kHeader + engineId + Wrapped(request.context.length());
    return kHeader + Wrapped(1) + global + security + scoped + PduFrame(request.requestId);
}

} // namespace

unsigned long BindingSize(const BVarBind& binding)
{
    return Wrapped(Wrapped(OidContent(binding.Name())) + Wrapped(ValueContent(binding.Value())));
}

BMessageBudget::BMessageBudget(const SRequest& request)
    : m_max(request.maxMessage),
      m_used(request.protocol == eSnmpV3
                 ? V3Frame(request)
                 : CommunityFrame(request.community.size(), request.requestId))
{
}

BMessageBudget::BMessageBudget(unsigned maxMessage, unsigned long communityLength, int requestId)
    : m_max(maxMessage), m_used(CommunityFrame(communityLength, requestId))
{
}

bool BMessageBudget::Take(const BVarBind& binding)
{
    unsigned long size = BindingSize(binding);
    if (m_used + size > m_max)
        return false;
    m_used += size;
    return true;
}

bool BMessageBudget::Fits(const BVarBindList& bindings) const
{
    const int count = static_cast<int>(bindings.Count());
    unsigned long most = m_used;
    for (int i = 0; i < count; ++i)
        most += MostOf(bindings[i]);
    if (most <= m_max)
        return true;
    BMessageBudget budget = *this;
    for (int i = 0; i < count; ++i) {
        if (!budget.Take(bindings[i]))
            return false;
    }
    return true;
}

} // namespace VLK::host
