// SET: locks and access; the phases are SetRequest's.
#include <vkmibh/handler.h>

#include "handler/AccessCheck.h"
#include "handler/SetLocks.h"
#include "handler/SetRequest.h"

namespace VLK {

int BMibHandler::QuerySet(unsigned int transactionId, const BSecurityParams& security,
                          const BString& context, const BVarBindList& list, int& errorIndex)
{
    VKDbgModuleTraceClass(eTraceMibHandler, "QuerySet");
    const SetLocks locks(m_setLock, m_registrationLock, g_bSerializeSet);
    if (!locks.Granted() || !m_tree)
        return eSnmpGenErr;
    const int status =
        CheckAccessToAll(m_accessControl, security, eAccessWrite, context, list, errorIndex);
    if (status != eSnmpNoError)
        return status;
    SetRequest request(*m_tree, transactionId, list);
    if (!request.Prepare())
        return eSnmpResourceUnavailable;
    return request.Run(errorIndex);
}

} // namespace VLK
