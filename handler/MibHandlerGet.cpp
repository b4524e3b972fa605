// GET: one call per run of bindings.
#include <vkmibh/handler.h>

#include "foundation/HostCall.h"
#include "handler/AccessCheck.h"
#include "handler/BindingRun.h"
#include "handler/ListSnapshot.h"

namespace VLK {

namespace {

// Fetches the run that starts at `first` and gives its length; on failure
// `index` is the position of the failing binding.
int GetRun(const BMibTree& tree, TSWMRSynch& registrationLock, unsigned transactionId,
           BVarBindList& list, int first, int& index, int& length)
{
    index = first;
    length = 1;
    const TReadLock reader(registrationLock);
    if (!reader.Granted())
        return eSnmpGenErr;
    SBindingRun run;
    if (!FormRun(tree, list, first, run)) {
        index = first + run.length;
        return eSnmpGenErr;
    }
    length = run.length;
    if (!run.handler) {
        list[first].Value().SetV2Exception(eNoSuchObject);
        return eSnmpNoError;
    }
    const int status = HostCall(
        [&] { return run.handler->Get(transactionId, list, index, run.length); }, int(eSnmpGenErr));
    index = ClampToRun(index, first, run.length);
    return status;
}

// SNMPv1 has neither exceptions nor Counter64 (RFC 3584 section 4.2.2.1).
int CheckRunForV1(const BVarBindList& list, int first, int length, int& index)
{
    const int count = static_cast<int>(list.Count());
    for (int i = first; i < first + length && i < count; ++i) {
        const BObjectSyntax& value = list[i].Value();
        if (value.IsException() || value.Syntax() == eAsnCounter64) {
            index = i;
            return eSnmpNoSuchName;
        }
    }
    return eSnmpNoError;
}

} // namespace

int BMibHandler::QueryGet(unsigned int transactionId, const BSecurityParams& security,
                          const BString& context, BVarBindList& list, int& errorIndex, bool isV1)
{
    VKDbgModuleTraceClass(eTraceMibHandler, "QueryGet");
    if (!m_tree)
        return eSnmpGenErr;
    ListSnapshot asReceived(list);
    if (!asReceived.IsValid())
        return eSnmpGenErr;
    int status =
        CheckAccessToAll(m_accessControl, security, eAccessRead, context, list, errorIndex);
    if (status != eSnmpNoError)
        return status;
    int index = 0;
    int length = 0;
    for (int first = 0; status == eSnmpNoError && first < static_cast<int>(list.Count());
         first += length) {
        status = GetRun(*m_tree, m_registrationLock, transactionId, list, first, index, length);
        if (status == eSnmpNoError && isV1)
            status = CheckRunForV1(list, first, length, index);
    }
    if (status == eSnmpNoError)
        return status;
    errorIndex = index + 1;
    // CONTRACT: only a general error gives the list back as it came; after any
    // other failure the bindings already fetched keep their values.
    if (status == eSnmpGenErr)
        asReceived.Restore(list);
    return status;
}

} // namespace VLK
