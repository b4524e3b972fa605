// The MIB handler whose SETs are kept.
#pragma once

#include "host/LimitedLog.h"
#include "host/SetSaves.h"
#include "host/TurnLock.h"

#include <atomic>
#include <functional>
#include <vkmibh/handler.h>

namespace VLK::host {

// Saves what a SET changed before the SET is answered, whoever asked: the wire
// and the console meet in Query().
//
// The save is the last step of the commit phase: the list gets one binding more, of a
// name that no message can hold, whose handler saves. So a SET that cannot be kept is
// undone by those who did it, and answered commitFailed at its last binding.
//
// Threads: as BMibHandler. A SET waits until the one before it is saved,
//          whatever g_bSerializeSet says, so that a save holds no half of
//          another; this lock is taken before all others.
// Errors:  what the saves throw is a general error of the request.
class BSavingHandler : public BMibHandler {
public:
    // On a tree of its own, or on that of the caller, which outlives it.
    BSavingHandler(IAccessControl* accessControl, ISetSaves& saves, BMibTree* tree = nullptr);
    ~BSavingHandler() override;

    // Whether that is the region of the handler that saves, which is no module's.
    static bool IsSave(const BObjectIdentifier& region);

    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override;

    // Does what must not happen while a SET is at work: after that one, whichever follow.
    void BetweenSets(const std::function<void()>& work);

private:
    // Asks the access control about all bindings but the one that saves.
    class CAccess : public IAccessControl {
    public:
        explicit CAccess(IAccessControl* accessControl) : m_accessControl(accessControl) {}
        int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                        const BString& context, const BVarBind& binding) override;

        std::atomic<const BVarBind*> own{nullptr};

    private:
        IAccessControl* m_accessControl;
    };

    class CKeeper : public BMibSubtreeHandler {
    public:
        explicit CKeeper(ISetSaves& saves);
        int Get(unsigned id, BVarBindList& list, int& index, int count) override;
        using BMibSubtreeHandler::GetNext;
        int GetNext(unsigned id, BVarBind& binding) override;
        int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
                int count) override;

    private:
        ISetSaves& m_saves;
    };

    int QuerySet(int transactionId, const BSecurityParams& security, const BString& context,
                 BVarBindList& list, int& errorIndex);
    bool BeginSet(BVarBindList& list);

    CAccess m_access;
    CKeeper m_keeper;
    ISetSaves& m_saves;
    BTurnLock m_setAndSave;
    BLimitedLog m_lost{eLogError};
    bool m_isRegistered = false; // under the lock: the keeper
};

} // namespace VLK::host
