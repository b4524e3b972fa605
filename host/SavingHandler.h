// The MIB handler whose SETs are kept.
#pragma once

#include "host/LimitedLog.h"
#include "host/SetSaves.h"

#include <functional>
#include <mutex>
#include <vkmibh/handler.h>

namespace VLK::host {

// Saves what a SET changed before the SET is answered, whoever asked: the wire
// and the console meet in Query().
//
// A SET whose values could not be saved is not acknowledged: it is answered
// undoFailed with index 0, since the values are in force but not kept.
//
// Threads: as BMibHandler. A SET waits until the one before it is saved,
//          whatever g_bSerializeSet says, so that a save holds no half of
//          another; this lock is taken before all others.
// Errors:  what the saves throw is a general error of the request.
class BSavingHandler : public BMibHandler {
public:
    // On a tree of its own, or on that of the caller.
    BSavingHandler(IAccessControl* accessControl, ISetSaves& saves, BMibTree* tree = nullptr);

    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override;

    // Does what must not happen while a SET is at work.
    void BetweenSets(const std::function<void()>& work);

private:
    ISetSaves& m_saves;
    std::mutex m_setAndSave;
    BLimitedLog m_lost{eLogError};
};

} // namespace VLK::host
