#include "host/RequestStats.h"

#include <vkmibh/handler.h>

namespace VLK::host {

namespace {

// eKinds for others, which the agent does not answer.
ERequestKind KindOf(int pduType)
{
    switch (pduType) {
    case ePduGet:
        return eKindGet;
    case ePduGetNext:
        return eKindGetNext;
    case ePduGetBulk:
        return eKindGetBulk;
    case ePduSet:
        return eKindSet;
    default:
        return eKinds;
    }
}

size_t VersionOf(EProtocol protocol)
{
    return protocol == eSnmpV1 ? 0 : protocol == eSnmpV2c ? 1 : 2;
}

} // namespace

void BRequestStats::CountRequest(int pduType, EProtocol protocol)
{
    const ERequestKind kind = KindOf(pduType);
    if (kind != eKinds)
        Count(m_requests[kind][VersionOf(protocol)]);
}

} // namespace VLK::host
