// Questions to the host's access control. Without one everything is allowed.
#pragma once

#include <vkmibh/handler.h>

#include "foundation/HostCall.h"

namespace VLK {

enum EAccessAnswer { eAccessAllowed, eAccessRefused, eAccessFailed };

inline EAccessAnswer CheckAccessTo(IAccessControl* accessControl, const BSecurityParams& security,
                                   EAccessKind kind, const BString& context,
                                   const BVarBind& binding)
{
    if (!accessControl)
        return eAccessAllowed;
    return HostCall(
        [&] {
            const int refused = accessControl->CheckAccess(
                security, static_cast<unsigned char>(kind), context, binding);
            return refused ? eAccessRefused : eAccessAllowed;
        },
        eAccessFailed);
}

// Checks every binding in order; the first one refused ends the request.
inline int CheckAccessToAll(IAccessControl* accessControl, const BSecurityParams& security,
                            EAccessKind kind, const BString& context, const BVarBindList& list,
                            int& errorIndex)
{
    if (!accessControl)
        return eSnmpNoError;
    for (int i = 0; i < static_cast<int>(list.Count()); ++i) {
        const EAccessAnswer answer = CheckAccessTo(accessControl, security, kind, context, list[i]);
        if (answer == eAccessAllowed)
            continue;
        errorIndex = i + 1;
        return answer == eAccessRefused ? eSnmpAuthorizationError : eSnmpGenErr;
    }
    return eSnmpNoError;
}

} // namespace VLK
