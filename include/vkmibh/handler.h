// The request entry and the registration of what serves the MIB.
#pragma once

#include <vkmibh/cmdhandler.h>
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

// The request kinds Query() knows (RFC 3416 section 3).
enum EPduType { ePduGet = 160, ePduGetNext = 161, ePduSet = 163, ePduGetBulk = 165 };
enum EAccessKind { eAccessRead = 1, eAccessWrite = 2 };

// The console's label of an SNMP error status.
VKMIBH_API const char* LabelErrorStatus(int status);

// The host's access control. Refused bindings of GET and SET end the request
// with authorizationError; GETNEXT steps over them without a trace.
//
// Ownership: the host's; outlives the handler it is given to.
// Threads:   called on the threads of requests, several at once; for GETNEXT and
//            SET with the handler's locks held, so it must not register anything.
// Errors:    0 allows, anything else refuses. What it throws is a general error.
// Contract:  slot order is ABI.
class VKMIBH_API IAccessControl {
public:
    virtual ~IAccessControl();
    // accessKind is an EAccessKind. For GETNEXT the binding is the candidate,
    // with its value.
    virtual int CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                            const BString& context, const BVarBind& binding) = 0;
};

// Whether one SET runs at a time, in all handlers of the process.
// BMibHandler::Init() sets it; true until then.
VKMIBH_API extern std::atomic<bool> g_bSerializeSet;

// What hosts and modules see of a handler: registration and requests.
//
// Ownership, Threads, Errors: as BMibHandler.
// Contract:  slot order is ABI.
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

// The agent's MIB: what is registered here answers the requests given to
// Query(), the one entry for protocol engines, consoles and tests.
//
//   BMibHandler handler(&accessControl);
//   handler.Init(&time, &store);         // the system group answers from here on
//   handler.RegisterGroup(&myModule);
//   myModule.Init();
//
//   BTransaction transaction(protocolId); // 0 = SNMPv1
//   const unsigned id = BTransactions::GetInstance()->StartTransaction(&transaction);
//   int errorIndex = 0;
//   const int status =
//       handler.Query(ePduGet, int(id), security, context, list, errorIndex);
//   BTransactions::GetInstance()->EndTransaction(id);
//
// Answers are put into the list. GET and SET call a module once per run of
// neighbouring bindings that it serves. For SNMPv1 exceptions become
// noSuchName, and Counter64 is refused by GET and stepped over by GETNEXT. A
// GETBULK is one GETNEXT step per binding; repetitions are the engine's. A GET
// that fails with a general error leaves the list as it came; after any other
// failure it is partly filled. SET goes through test, commit, undo (when a
// commit failed) and cleanup (always). A binding that ends as endOfMibView keeps
// the name that was asked for.
//
// Ownership: owns its system group, and the tree unless it was given one; the
//            modules, the access control, the time and the store are the host's
//            and must outlive it. A store must not call the system group's
//            callback after that.
// Threads:   requests may run side by side. Registration waits until the running
//            calls into modules have returned; from inside one it is refused,
//            and in a timer's callback it must not be tried: it may wait there
//            for a request that waits for the timer.
//            SETs run one at a time while g_bSerializeSet is true; a SET must
//            then not be started from inside a GET or GETNEXT.
//            Construction, Init() and RegisterSystemGroup() take no lock and
//            come before the first request.
// Errors:    requests return an SNMP error status, and on failure the position
//            of the binding at fault, counted from 1, or 0 for none; the others
//            1/0. What a module, the access control or the store throws is a
//            general error (5) of the request; cleanup still runs.
// Contract:  slot order and field order are ABI.
class VKMIBH_API BMibHandler : public IMIBHandler, public BCmdHandler {
public:
    static const SCmdMapEntry s_cliEntries[];
    static const char s_cmdHandlerName[];

    // What GetITransactions() returns: the view of the BTransactions singleton
    // that modules are given.
    class Transactions : public ITransactions {
    public:
        Transactions();
        ~Transactions() override;
        bool GetParameters(unsigned int id, BTransactionParameters& params) override;

    private:
        // CONTRACT: created with the accessor and not used otherwise.
        BMapInt2Ptr m_map;
        TMutex m_lock;
    };

    // What a console command tells of its request: protocol id 6, to which no
    // rule of SNMPv1 applies, the console's security parameters and context, and
    // as local address that of the switch -a.
    //
    // Ownership: copies what it is given.
    // Threads:   complete before it is registered, and not changed after that.
    // Errors:    false = without memory for the texts, or no address given.
    // Contract:  field order is ABI, after the protocol id.
    class BCLITransaction : public BTransaction {
    public:
        // 0.0.0.0 stands for no address.
        BCLITransaction(const BSecurityParams& security, const BString& contextName,
                        const BIpAddress& localAddress);
        // -1 until then.
        void SetPduType(int pduType) { m_pduType = pduType; }
        // False when its copies of the texts found no memory.
        bool Describes(const BSecurityParams& security, const BString& contextName) const;

        // Virtual operations, in slot order.
        ~BCLITransaction() override;
        bool GetParams(BTransactionParameters& params) override;
        bool GetLocalIpAddress(BIpAddress& address) override;

    private:
        friend struct SLayoutCheck;
        int m_pduType;
        int m_securityModel;
        BString m_securityName;
        int m_securityLevel;
        BString m_contextName;
        int m_request;
        BIpAddress m_localAddress;
    };

    // Null: everything is allowed.
    explicit BMibHandler(IAccessControl* accessControl);
    // Works on the caller's tree; null: makes its own.
    BMibHandler(BMibTree* tree, IAccessControl* accessControl);

    // Loads the system group from the store, registers it, and reads from the
    // store whether SETs are serialised; always 1. Either may be null. A second
    // call only reads the setting.
    int Init(BTime* time, INonVolatile* store);
    // Makes, initialises and registers the system group's implementations, once.
    void RegisterSystemGroup();

    // The parts of Query(), which tells isV1 from the transaction. The error
    // index is written on failure only.
    int QueryGet(unsigned int transactionId, const BSecurityParams& security,
                 const BString& context, BVarBindList& list, int& errorIndex, bool isV1);
    int QueryGetNext(unsigned int transactionId, const BSecurityParams& security,
                     const BString& context, BVarBindList& list, int& errorIndex, bool isV1);
    int QuerySet(unsigned int transactionId, const BSecurityParams& security,
                 const BString& context, const BVarBindList& list, int& errorIndex);

    // What a command prints of its request: for status 0 one line per binding,
    // else the status and the index in one text without a line end.
    void CmdFormatResult(ICmdStream& out, int status, int errorIndex, const BVarBindList& list);
    // What is wrong with a command's arguments, in one text without a line end.
    // The index counts the arguments that are no switches.
    void CmdFormatErr(ICmdStream& out, int code, const BString& cmd, const BStringArray& args,
                      int index);

    BMib2System* SystemGroup() { return m_system; }

    // Virtual operations, in slot order.
    ~BMibHandler() override;
    bool RegisterSubtreeHandler(BMibSubtreeHandler* handler) override;
    // Registers the implementations in order and gives them the group's
    // conventions. One whose place is taken is skipped; a null one ends the call
    // with 0, and those before it stay.
    bool RegisterGroup(BMibImplGroup* group) override;
    // Cancels the handler's timers too, also when it is refused. After it no
    // request is inside the handler.
    int UnregisterSubtreeHandler(BMibSubtreeHandler* handler) override;
    // 1 only when every implementation was there.
    bool UnregisterGroup(BMibImplGroup* group) override;
    int Query(int pduType, int transactionId, const BSecurityParams& security,
              const BString& context, BVarBindList& list, int& errorIndex) override;
    ITransactions* GetITransactions() override;
    // get, getnext and set; always 0. The command's own answers and complaints are
    // texts on the stream; what the stream throws, or has no memory, is lost.
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& secParams, const BString& contextName) override;
    const char* CmdGetHndlrName() const override;
    const SCmdMapEntry* CmdGetMap() const override;

protected:
    // The steps of a GETNEXT. The caller holds the registration lock.
    //
    // The smallest successor among the region that the tree proposes, the
    // regions around it and the next one in pre-order.
    // CONTRACT: of three regions inside one another an instance of the innermost
    // is passed over while the middle one answers a search from the outermost;
    // and a region is asked from where the search stands, which is behind an
    // instance stepped over in the region before it. Modules nest two deep.
    int ResolveGetNext(unsigned int transactionId, bool isV1, const BSecurityParams& security,
                       const BString& context, BVarBind& binding);
    // The first visible instance in the region of `node` and in those after it
    // (around it: upward). `node` ends at the region that answered, or null.
    int ResolveGetNextStartingFromRegion(unsigned int transactionId, bool isV1,
                                         const BSecurityParams& security, const BString& context,
                                         BMibNode*& node, BVarBind& binding, bool upward);
    static BMibNode* FindNextSubtreeHandlerNode(BMibNode* node, bool upward);
    static bool IsEndOfMib(const BVarBind& binding, const BObjectIdentifier& regionOid);

private:
    friend struct SLayoutCheck;
    VKMIBH_LOCAL void vInitSysORTable();
    VKMIBH_LOCAL int ResolveAround(const SNextRequest& request, BMibNode* start, BVarBind& binding);

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
