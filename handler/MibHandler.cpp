// The handler's life, the dispatch of a request, and the labels of statuses.
#include <vkmibh/handler.h>
#include <vkmibh/system.h>

#include "foundation/HostCall.h"

#include <new>

namespace VLK {

namespace {

const char* const kStatusLabels[] = {
    "Success",
    "tooBig",
    "noSuchName",
    "badValue",
    "readOnly",
    "generalError",
    "noAccess",
    "wrongType",
    "wrongLength",
    "wrongEncoding",
    "wrongValue",
    "noCreation",
    "inconsistentValue",
    "resourcesUnavailable",
    "commitFail",
    "undoFail",
    "authorizationError",
    "notWritable",
    "inconsistentName",
};
constexpr int kStatusCount = sizeof(kStatusLabels) / sizeof(kStatusLabels[0]);

constexpr int kSnmpV1ProtocolId = 0;

constexpr char kSettings[] = "MIB Handler";
constexpr char kDoNotSerializeSet[] = "DoNotSerializeSet";

} // namespace

std::atomic<bool> g_bSerializeSet{true};

const char* LabelErrorStatus(int status)
{
    return status >= 0 && status < kStatusCount ? kStatusLabels[status] : "? unknown error status?";
}

IAccessControl::~IAccessControl() = default;

IMIBHandler::~IMIBHandler() = default;

BMibHandler::Transactions::Transactions() : m_lock(true) {}

BMibHandler::Transactions::~Transactions() = default;

bool BMibHandler::Transactions::GetParameters(unsigned int id, BTransactionParameters& params)
{
    BTransactions* transactions = BTransactions::GetInstance();
    return transactions && transactions->GetParameters(id, params);
}

BMibHandler::BMibHandler(IAccessControl* accessControl) : BMibHandler(nullptr, accessControl) {}

BMibHandler::BMibHandler(BMibTree* tree, IAccessControl* accessControl)
    : m_ownsTree(tree == nullptr), m_accessControl(accessControl), m_tree(tree), m_setLock(true),
      m_system(nullptr), m_systemImpl(nullptr), m_sysORImpl(nullptr)
{
    VKDbgModuleTraceClass(eTraceMibHandler, "BMibHandler");
    if (m_ownsTree)
        // Its members keep it from being copied.
        // cppcheck-suppress [noCopyConstructor, noOperatorEq]
        m_tree = new (std::nothrow) BMibTree;
    m_system = new (std::nothrow) BMib2System;
    vInitSysORTable();
}

BMibHandler::~BMibHandler()
{
    VKDbgModuleTraceClass(eTraceMibHandler, "~~~~BMibHandler");
    if (!m_ownsTree) {
        m_tree->Unregister(m_systemImpl);
        m_tree->Unregister(m_sysORImpl);
    }
    delete m_systemImpl;
    delete m_sysORImpl;
    delete m_system;
    if (m_ownsTree)
        delete m_tree;
}

int BMibHandler::Init(BTime* time, INonVolatile* store)
{
    if (!m_systemImpl && m_system) {
        m_system->SetTime(time);
        m_system->SetStore(store);
        m_system->InitFromNV();
        RegisterSystemGroup();
    }
    int doNotSerialize = 0;
    const bool read =
        store &&
        HostCall(
            [&] { return store->GetInt(kSettings, kDoNotSerializeSet, doNotSerialize, 0) == 0; },
            false);
    g_bSerializeSet = !(read && doNotSerialize != 0);
    return 1;
}

int BMibHandler::Query(int pduType, int transactionId, const BSecurityParams& security,
                       const BString& context, BVarBindList& list, int& errorIndex)
{
    VKDbgModuleTraceClass(eTraceMibHandler, "Query");
    errorIndex = 0;
    const unsigned id = static_cast<unsigned>(transactionId);
    BTransactions* transactions = BTransactions::GetInstance();
    const bool isV1 = transactions && transactions->GetProtocolId(id) == kSnmpV1ProtocolId;
    switch (pduType) {
    case ePduGet:
        return QueryGet(id, security, context, list, errorIndex, isV1);
    case ePduGetNext:
    case ePduGetBulk:
        // CONTRACT: one step per binding, no repetitions; an engine that
        // repeats makes the repetitions itself.
        return QueryGetNext(id, security, context, list, errorIndex, isV1);
    case ePduSet:
        return QuerySet(id, security, context, list, errorIndex);
    default:
        return eSnmpGenErr;
    }
}

ITransactions* BMibHandler::GetITransactions() { return &m_transactions; }

} // namespace VLK
