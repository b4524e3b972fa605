// Tagged value: the value as text.
#include <vkmibh/values.h>

#include <cstdio>

#include "foundation/TextWriter.h"

namespace VLK {

namespace {

BString OctetsText(const BOctetString& octets)
{
    if (octets.Length() == 0)
        return BString();
    return octets.IsDispStr() ? octets.ToDispStr() : octets.ToString();
}

// CONTRACT: arcs print with "%d", so those above 2147483647 are negative here,
// other than in BObjectIdentifier::ToString; scripts compare this text.
BString ObjectIdText(const BObjectIdentifier& oid)
{
    BString out;
    {
        CTextWriter text(out);
        for (unsigned i = 0; i < oid.Length(); ++i) {
            if (i > 0)
                text.Put('.');
            text.PutNumber(static_cast<int>(oid[i]));
        }
    }
    return out;
}

} // namespace

BString BObjectSyntax::ValToStr() const
{
    char text[16];
    switch (m_syntax) {
    case eAsnInteger:
        std::snprintf(text, sizeof text, "%d", m_value.integer);
        return BString(text);
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks:
        std::snprintf(text, sizeof text, "%u", m_value.number);
        return BString(text);
    case eAsnNull:
        return BString("Null");
    case eAsnObjectId:
        return ObjectIdText(m_value.objectId);
    case eAsnIpAddress:
        return IpAddress().ToString();
    case eAsnOctetString:
    case eAsnOpaque:
        return OctetsText(m_value.octets);
    case eAsnCounter64:
        return BCounter64(m_value.counter).ToString();
    case eNoSuchObject:
        return BString("Null/noSuchObject");
    case eNoSuchInstance:
        return BString("Null/noSuchInstance");
    case eEndOfMibView:
        return BString("Null/endOfMibView");
    default:
        return BString();
    }
}

} // namespace VLK
