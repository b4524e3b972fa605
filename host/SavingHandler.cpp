#include "host/SavingHandler.h"

namespace VLK::host {

BSavingHandler::BSavingHandler(IAccessControl* accessControl, ISetSaves& saves, BMibTree* tree)
    : BMibHandler(tree, accessControl), m_saves(saves)
{
}

int BSavingHandler::Query(int pduType, int transactionId, const BSecurityParams& security,
                          const BString& context, BVarBindList& list, int& errorIndex)
{
    if (pduType != ePduSet)
        return BMibHandler::Query(pduType, transactionId, security, context, list, errorIndex);
    try {
        std::lock_guard<std::mutex> lock(m_setAndSave);
        m_saves.Hold();
        int status =
            BMibHandler::Query(pduType, transactionId, security, context, list, errorIndex);
        // Also after a failure: what was undone may have to be saved.
        if (m_saves.SaveHeld() || status != eSnmpNoError)
            return status;
        errorIndex = 0;
        return eSnmpUndoFailed;
    } catch (const std::exception& error) {
        m_lost.Write([&] { return std::string("a SET could not be kept: ") + error.what(); });
        errorIndex = 0;
        return eSnmpGenErr;
    }
}

void BSavingHandler::BetweenSets(const std::function<void()>& work)
{
    std::lock_guard<std::mutex> lock(m_setAndSave);
    work();
}

} // namespace VLK::host
