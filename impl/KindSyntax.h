// Which syntaxes suit the handlers of a kind.
#pragma once

#include <vkmibh/rqmap.h>

namespace VLK {

inline bool KindHasSyntax(unsigned kind, int syntax)
{
    switch (kind) {
    case eKindInteger:
    case eKindRowStatus:
    case eKindEntryStatus:
    case eKindEnumerated:
        return syntax == eAsnInteger;
    case eKindOctetString:
        return syntax == eAsnOctetString || syntax == eAsnOpaque;
    case eKindObjectId:
        return syntax == eAsnObjectId;
    case eKindUnsigned:
        return syntax == eAsnCounter32 || syntax == eAsnGauge32 || syntax == eAsnTimeTicks;
    case eKindDisplayString:
        return syntax == eAsnOctetString;
    case eKindIpAddress:
        return syntax == eAsnIpAddress;
    case eKindCounter64:
        return syntax == eAsnCounter64;
    default:
        return false;
    }
}

} // namespace VLK
