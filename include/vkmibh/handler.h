// The request entry and the registration of what serves the MIB.
#pragma once

#include <vkmibh/console.h>
#include <vkmibh/impl.h>
#include <vkmibh/transactions.h>
#include <vkmibh/tree.h>

namespace VLK {

class BMib2System;
class BTime;
class CSysORTableV2;
class CSystemV2;
class INonVolatile;
struct SNextRequest;

enum EPduType { ePduGet = 160, ePduGetNext = 161, ePduSet = 163, ePduGetBulk = 165 };
enum EAccessKind { eAccessRead = 1, eAccessWrite = 2 };

// The console's label of an SNMP error status.
VKMIBH_API const char* LabelErrorStatus(int status);

class VKMIBH_API IAccessControl {
public:
    virtual ~IAccessControl();
    virtual int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                            const BString& context, const BVarBind& binding) = 0;
};

VKMIBH_API extern std::atomic<bool> g_bSerializeSet;

class VKMIBH_API IMIBHandler {
public:
    virtual ~IMIBHandler();
    virtual bool RegisterSubtreeHandler(BMibSubtreeHandler* handler) = 0;
    virtual bool RegisterGroup(BMibImplGroup* group) = 0;
    virtual int UnregisterSubtreeHandler(BMibSubtreeHandler* handler) = 0;
    virtual bool UnregisterGroup(BMibImplGroup* group) = 0;
    virtual int Query(int pduType, int transactionId, const BSecurityParams& security,
                      const BString& context, BVarBindList& list, int& errorIndex) = 0;
    virtual ITransactions* GetITransactions() = 0;
};

class VKMIBH_API BMibHandler : public IMIBHandler, public BCmdHandler {
public:
    static const SCmdMapEntry s_cliEntries[];
    static const char s_cmdHandlerName[];

    explicit BMibHandler(IAccessControl* accessControl);
    BMibHandler(BMibTree* tree, IAccessControl* accessControl);
    ~BMibHandler() override;
    bool RegisterSubtreeHandler(BMibSubtreeHandler* handler) override;
    bool RegisterGroup(BMibImplGroup* group) override;
    int UnregisterSubtreeHandler(BMibSubtreeHandler* handler) override;
    bool UnregisterGroup(BMibImplGroup* group) override;
    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override;
    ITransactions* GetITransactions() override;
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& secParams, const BString& contextName) override;
    const char* CmdGetHndlrName() const override;
    const SCmdMapEntry* CmdGetMap() const override;

    int Init(BTime* time, INonVolatile* store);
    void RegisterSystemGroup();
    BMib2System* SystemGroup() { return m_system; }

    int QueryGet(unsigned int transactionId, const BSecurityParams& security,
                 const BString& context, BVarBindList& list, int& errorIndex, bool isV1);
    int QueryGetNext(unsigned int transactionId, const BSecurityParams& security,
                     const BString& context, BVarBindList& list, int& errorIndex, bool isV1);
    int QuerySet(unsigned int transactionId, const BSecurityParams& security,
                 const BString& context, const BVarBindList& list, int& errorIndex);

    class Transactions : public ITransactions {
    public:
        Transactions();
        ~Transactions() override;
        bool GetParameters(unsigned int id, BTransactionParameters& params) override;

    private:
        BMapInt2Ptr m_map;
        TMutex m_lock;
    };

protected:
    int ResolveGetNext(unsigned int transactionId, bool isV1, const BSecurityParams& security,
                       const BString& context, BVarBind& binding);
    int ResolveGetNextStartingFromRegion(unsigned int transactionId, bool isV1,
                                         const BSecurityParams& security, const BString& context,
                                         BMibNode*& node, BVarBind& binding, bool upward);
    static BMibNode* FindNextSubtreeHandlerNode(BMibNode* node, bool upward);
    static bool IsEndOfMib(const BVarBind& binding, const BObjectIdentifier& regionOid);

private:
    friend struct SLayoutCheck;
    void vInitSysORTable();
    int ResolveAround(const SNextRequest& request, BMibNode* start, BVarBind& binding);

    bool m_ownsTree;
    IAccessControl* m_accessControl;
    BMibTree* m_tree;
    TSWMRSynch m_registrationLock;
    TMutex m_setLock;
    BMib2System* m_system;
    CSystemV2* m_systemImpl;
    CSysORTableV2* m_sysORImpl;
    Transactions m_transactions;
};

} // namespace VLK
