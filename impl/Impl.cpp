#include <vkmibh/implbase.h>

#include <cstring>

#include "foundation/HostCall.h"
#include "impl/SetSlots.h"

namespace VLK {

namespace {

// The OID a walk was asked to go on from. Every OID of the protocol fits the
// array (RFC 2578 section 3.5: 128 arcs), so a step of the walk allocates
// nothing for it.
class AskedName {
public:
    AskedName() = default; // cppcheck-suppress uninitMemberVar ; room, written before it is read
    ~AskedName() { LetGo(); }
    AskedName(const AskedName&) = delete;
    AskedName& operator=(const AskedName&) = delete;

    bool Remember(const BObjectIdentifier& name)
    {
        LetGo();
        const unsigned length = name.Length();
        if (length > kArcs)
            return m_name.Set(name);
        if (length > 0)
            std::memcpy(m_arcs, name.Arcs(), length * sizeof *m_arcs);
        m_name.Attach(length, m_arcs, kArcs);
        return true;
    }
    const BObjectIdentifier& Name() const { return m_name; }

private:
    static constexpr unsigned kArcs = 128;

    void LetGo()
    {
        unsigned length;
        if (m_name.Arcs() == m_arcs)
            m_name.Detach(length);
        else
            m_name = BObjectIdentifier();
    }

    BObjectIdentifier m_name;
    unsigned m_arcs[kArcs];
};

} // namespace

BMibImpl::BMibImpl(const BString& name, const BObjectIdentifier& oid, unsigned rangePosition,
                   unsigned rangeUpperBound)
    : BMibImpl(name, oid, eImplBase, rangePosition, rangeUpperBound)
{
}

BMibImpl::BMibImpl(const BString& name, const BObjectIdentifier& oid, EImplKind kind,
                   unsigned rangePosition, unsigned rangeUpperBound)
    : BMibSubtreeHandler(name, oid, rangePosition, rangeUpperBound), m_initialized(0),
      m_externalConventions(nullptr)
{
    SetImplKind(kind);
    m_info.SetOwner(this);
}

BMibImpl::~BMibImpl() = default;

IMIBInfo* BMibImpl::GetIMibInfo() { return &m_info; }

BString BMibImpl::ToString() { return BString("BMibImpl"); }

void BMibImpl::Initialize() { SetInitialized(true); }

void BMibImpl::Cleanup() { SetInitialized(false); }

SRqHndlrMapEntry* BMibImpl::GetRqHndlrMap() const { return nullptr; }

const SConstraintMapEntry* BMibImpl::GetConstraintMap() const { return nullptr; }

// Hosts may start a single implementation without its mutex.
void BMibImpl::SetInitialized(bool initialized)
{
    __atomic_store_n(&m_initialized, static_cast<unsigned char>(initialized), __ATOMIC_RELEASE);
}

bool BMibImpl::IsInitialized() const
{
    return __atomic_load_n(&m_initialized, __ATOMIC_ACQUIRE) != 0;
}

int BMibImpl::Get(unsigned id, BVarBindList& list, int& index, int count)
{
    TMutexLock lock(Mutex());
    if (!IsInitialized())
        return eSnmpNoSuchName;
    const int first = index;
    for (int k = 0; k < count; ++k) {
        const int status = HostCall([&] { return Get(id, list[first + k]); }, int(eSnmpGenErr));
        if (status != eSnmpNoError) {
            index = first + k;
            return status;
        }
    }
    return eSnmpNoError;
}

int BMibImpl::GetNext(unsigned id, BVarBind& binding)
{
    TMutexLock lock(Mutex());
    if (!IsInitialized())
        return eSnmpNoSuchName;
    AskedName asked;
    for (;;) {
        if (!asked.Remember(binding.Name()))
            return eSnmpGenErr;
        // A module that goes back would keep the walk here for ever.
        if (!NextInstance(id, binding) || asked.Name().Compare(binding.Name()) >= 0)
            break;
        const int status = Get(id, binding);
        if (status != eSnmpNoError)
            return status;
        const unsigned syntax = binding.Value().Syntax();
        if (syntax != eNoSuchObject && syntax != eNoSuchInstance)
            return eSnmpNoError;
    }
    // Whatever is left of a step that led nowhere goes.
    binding.Name().Set(asked.Name());
    binding.Value().SetV2Exception(eEndOfMibView);
    return eSnmpNoError;
}

int BMibImpl::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                  int& index, int count)
{
    TMutexLock lock(Mutex());
    if (!IsInitialized())
        return eSnmpNoSuchName;
    const int first = index;
    int result = eSnmpNoError;
    for (int k = 0; k < count; ++k) {
        SSetSlot* slot = SlotAt(slots, k);
        if (!IsPhaseFor(op, slot))
            continue;
        if (slot && op == eSetTest)
            slot->position = first + k;
        void** scratch = slot ? &slot->scratch : nullptr;
        const int status =
            HostCall([&] { return Set(id, op, scratch, list[first + k]); }, int(eSnmpGenErr));
        if (status == eSnmpNoError)
            continue;
        if (result == eSnmpNoError) {
            result = status;
            index = first + k;
        }
        // What was begun is taken back and released as far as it can be.
        if (op != eSetUndo && op != eSetCleanup)
            break;
    }
    return result;
}

} // namespace VLK
