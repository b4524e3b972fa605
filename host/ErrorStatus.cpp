#include "host/ErrorStatus.h"

#include <vkmibh/subtree.h>

namespace VLK::host {

int StatusForV1(int status)
{
    switch (status) {
    case eSnmpNoError:
    case eSnmpTooBig:
    case eSnmpNoSuchName:
    case eSnmpBadValue:
    case eSnmpReadOnly:
        return status;
    case eSnmpWrongValue:
    case eSnmpWrongEncoding:
    case eSnmpWrongType:
    case eSnmpWrongLength:
    case eSnmpInconsistentValue:
        return eSnmpBadValue;
    case eSnmpNoAccess:
    case eSnmpNotWritable:
    case eSnmpNoCreation:
    case eSnmpInconsistentName:
    case eSnmpAuthorizationError:
        return eSnmpNoSuchName;
    default:
        return eSnmpGenErr;
    }
}

int StatusForV2(int status, bool isSet)
{
    if (status < eSnmpNoError || status > eSnmpInconsistentName)
        return eSnmpGenErr;
    switch (status) {
    case eSnmpNoSuchName:
        return isSet ? eSnmpNoCreation : eSnmpGenErr;
    case eSnmpBadValue:
        return isSet ? eSnmpWrongValue : eSnmpGenErr;
    case eSnmpReadOnly:
        return isSet ? eSnmpNotWritable : eSnmpGenErr;
    case eSnmpAuthorizationError:
        // The write view does not hold the variable: RFC 3416 section 4.2.5 (1).
        return isSet ? eSnmpNoAccess : status;
    default:
        return status;
    }
}

} // namespace VLK::host
