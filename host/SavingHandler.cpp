#include "host/SavingHandler.h"

#include <mutex>

namespace VLK::host {

namespace {

// Of one arc, and none that is encoded in less than two. The last one of a walk.
const BObjectIdentifier& NameOfSave()
{
    static const auto& name = *new BObjectIdentifier(BString("4294967295"));
    return name;
}

// The binding goes when the SET has ended, however it does.
class BOneMore {
public:
    BOneMore(BVarBindList& list, std::atomic<const BVarBind*>& own) : m_list(list), m_own(own)
    {
        m_own = &list.Last();
    }
    ~BOneMore()
    {
        m_own = nullptr;
        m_list.Remove(static_cast<int>(m_list.Count()) - 1);
    }
    BOneMore(const BOneMore&) = delete;
    BOneMore& operator=(const BOneMore&) = delete;

private:
    BVarBindList& m_list;
    std::atomic<const BVarBind*>& m_own;
};

} // namespace

int BSavingHandler::CAccess::CheckAccess(const BSecurityParams& security, unsigned char accessKind,
                                         const BString& context, const BVarBind& binding)
{
    return &binding == own ? 0
                           : m_accessControl->CheckAccess(security, accessKind, context, binding);
}

BSavingHandler::CKeeper::CKeeper(ISetSaves& saves)
    : BMibSubtreeHandler("save", NameOfSave()), m_saves(saves)
{
}

// There is nothing to read.
int BSavingHandler::CKeeper::Get(unsigned, BVarBindList& list, int& index, int count)
{
    for (int i = index; i < index + count; ++i)
        list[i].Value().SetV2Exception(eNoSuchObject);
    return eSnmpNoError;
}

int BSavingHandler::CKeeper::GetNext(unsigned, BVarBind& binding)
{
    binding.Value().SetV2Exception(eNoSuchObject);
    return eSnmpNoError;
}

// What those who undo the SET want to be saved waits again, and is tried at the end. An
// operator can type the name, too.
int BSavingHandler::CKeeper::Set(unsigned, const BVarBindList& list, ESnmpSetOpCode op, void**,
                                 int& index, int)
{
    if (op == eSetTest && index + 1 < static_cast<int>(list.Count()))
        return eSnmpNoSuchName;
    if (op != eSetCommit || m_saves.SaveHeld())
        return eSnmpNoError;
    m_saves.Hold();
    return eSnmpCommitFailed;
}

BSavingHandler::BSavingHandler(IAccessControl* accessControl, ISetSaves& saves, BMibTree* tree)
    : BMibHandler(tree, accessControl ? &m_access : nullptr), m_access(accessControl),
      m_keeper(saves), m_saves(saves)
{
    // Now: later it would wait for the requests that run, and all others for it.
    m_isRegistered = BMibHandler::RegisterSubtreeHandler(&m_keeper);
}

BSavingHandler::~BSavingHandler()
{
    if (m_isRegistered)
        BMibHandler::UnregisterSubtreeHandler(&m_keeper);
}

int BSavingHandler::Query(int pduType, int transactionId, const BSecurityParams& security,
                          const BString& context, BVarBindList& list, int& errorIndex)
{
    if (pduType != ePduSet)
        return BMibHandler::Query(pduType, transactionId, security, context, list, errorIndex);
    try {
        return QuerySet(transactionId, security, context, list, errorIndex);
    } catch (const std::exception& error) {
        m_lost.Write([&] { return std::string("a SET could not be kept: ") + error.what(); });
        errorIndex = 0;
        return eSnmpGenErr;
    }
}

bool BSavingHandler::IsSave(const BObjectIdentifier& region)
{
    return region.Compare(NameOfSave()) == 0;
}

void BSavingHandler::BetweenSets(const std::function<void()>& work)
{
    const std::lock_guard<BTurnLock> lock(m_setAndSave);
    work();
}

// Whether the list has got the binding that saves.
bool BSavingHandler::BeginSet(BVarBindList& list)
{
    m_isRegistered = m_isRegistered || RegisterSubtreeHandler(&m_keeper);
    if (!m_isRegistered || !list.Append(NameOfSave()))
        return false;
    if (list.Last().Name() == NameOfSave())
        return true;
    list.Remove(static_cast<int>(list.Count()) - 1); // without memory for the name
    return false;
}

int BSavingHandler::QuerySet(int transactionId, const BSecurityParams& security,
                             const BString& context, BVarBindList& list, int& errorIndex)
{
    const std::lock_guard<BTurnLock> lock(m_setAndSave);
    const int count = static_cast<int>(list.Count());
    if (!BeginSet(list)) {
        errorIndex = 0;
        return eSnmpResourceUnavailable;
    }
    const BOneMore binding(list, m_access.own);
    m_saves.Hold();
    const int status =
        BMibHandler::Query(ePduSet, transactionId, security, context, list, errorIndex);
    if (errorIndex > count)
        errorIndex = count;
    // What was undone may have to be saved.
    if (status != eSnmpNoError)
        m_saves.SaveHeld();
    return status;
}

} // namespace VLK::host
