// A row-status table and what it knows of the rows that a SET touches.
#include "impl/RowStatusMany.h"

#include "impl/InstanceView.h"

#include <new>

namespace VLK {

namespace {

void DeleteState(void* state) { delete static_cast<BMibTableImplEx::RowState*>(state); }

} // namespace

BMibTableImplEx::BMibTableImplEx(const BString& name, const BObjectIdentifier& oid)
    : BMibTableImplEx(name, oid, eImplTableEx)
{
}

BMibTableImplEx::BMibTableImplEx(const BString& name, const BObjectIdentifier& oid, EImplKind kind)
    : BMibTableImpl(name, oid, kind), m_activationTimeout(0), m_lastRowStatus(0),
      m_lastEntryStatus(0), m_many(nullptr)
{
}

BMibTableImplEx::~BMibTableImplEx()
{
    CancelTimeouts();
    for (unsigned i = 0; i < m_rowStates.Count(); ++i)
        DeleteState(m_rowStates.DataAt(static_cast<int>(i)));
    if (m_many)
        m_many->states.ForEachData(DeleteState);
    delete m_many;
}

void BMibTableImplEx::RowActivationTimeout(const BObjectIdentifier&) {}

void BMibTableImplEx::SetActivationTimeout(int milliseconds)
{
    TMutexLock lock(Mutex());
    m_activationTimeout = milliseconds;
}

int BMibTableImplEx::ActivationTimeout() const
{
    TMutexLock lock(Mutex());
    return m_activationTimeout;
}

const SRqHndlrMapEntry* BMibTableImplEx::FindStatusColumn(const BVarBind& binding) const
{
    const unsigned length = Oid().Length();
    if (binding.Name().Length() <= length || binding.Value().Syntax() != eAsnInteger)
        return nullptr;
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(binding.Name()[length]);
    return entry && RqIsStatusKind(entry->kind) && entry->getHandler ? entry : nullptr;
}

int BMibTableImplEx::IsRowStatus(const BVarBind& binding) const
{
    return FindStatusColumn(binding) != nullptr;
}

int BMibTableImplEx::IsRowCreation(const BVarBind& binding) const
{
    const SRqHndlrMapEntry* entry = FindStatusColumn(binding);
    if (!entry)
        return 0;
    const int value = binding.Value().Int();
    if (entry->kind == eKindEntryStatus)
        return value == eEntryCreateRequest;
    return value == eRowCreateAndGo || value == eRowCreateAndWait;
}

int BMibTableImplEx::IsRowDeletion(const BVarBind& binding) const
{
    const SRqHndlrMapEntry* entry = FindStatusColumn(binding);
    if (!entry)
        return 0;
    return binding.Value().Int() ==
           (entry->kind == eKindEntryStatus ? int(eEntryInvalid) : int(eRowDestroy));
}

bool BMibTableImplEx::IsRowCreation(const BObjectIdentifier& instance) const
{
    TMutexLock lock(Mutex());
    const RowState* state = FindState(instance);
    return state && state->IsCreation();
}

bool BMibTableImplEx::IsRowDeletion(const BObjectIdentifier& instance) const
{
    TMutexLock lock(Mutex());
    const RowState* state = FindState(instance);
    return state && state->IsDeletion();
}

int BMibTableImplEx::GetRowState(const BObjectIdentifier& instance) const
{
    TMutexLock lock(Mutex());
    const RowState* state = FindState(instance);
    return state ? state->newValue : 0;
}

ERowStatus BMibTableImplEx::GetRowStatusUndoValue(const BObjectIdentifier& instance) const
{
    TMutexLock lock(Mutex());
    const RowState* state = FindState(instance);
    return state ? static_cast<ERowStatus>(state->undoValue) : eRowNotReady;
}

EEntryStatus BMibTableImplEx::GetEntryStatusUndoValue(const BObjectIdentifier& instance) const
{
    static_assert(int(eEntryUnderCreation) == int(eRowNotReady));
    return static_cast<EEntryStatus>(GetRowStatusUndoValue(instance));
}

ERowStatus BMibTableImplEx::LastRowStatus() const
{
    TMutexLock lock(Mutex());
    return static_cast<ERowStatus>(m_lastRowStatus);
}

EEntryStatus BMibTableImplEx::LastEntryStatus() const
{
    TMutexLock lock(Mutex());
    return static_cast<EEntryStatus>(m_lastEntryStatus);
}

BMibTableImplEx::SManyRows* BMibTableImplEx::Many()
{
    if (!m_many)
        m_many = new (std::nothrow) SManyRows;
    return m_many;
}

BMibTableImplEx::RowState* BMibTableImplEx::FindState(const BObjectIdentifier& instance) const
{
    if (void* state = m_rowStates.GetData(instance))
        return static_cast<RowState*>(state);
    void** const kept = m_many ? m_many->states.Find(instance) : nullptr;
    return kept ? static_cast<RowState*>(*kept) : nullptr;
}

bool BMibTableImplEx::InsertState(const BObjectIdentifier& instance, RowState* state)
{
    if (FindState(instance))
        return false;
    if (m_rowStates.Count() < kRowsInMaps)
        return m_rowStates.Insert(instance, state);
    SManyRows* const many = Many();
    return many && many->states.Insert(instance, state);
}

void BMibTableImplEx::DropState(const BObjectIdentifier& instance)
{
    void* state = m_rowStates.Remove(instance);
    if (!state && m_many)
        state = m_many->states.Remove(instance);
    DeleteState(state);
}

void BMibTableImplEx::ForgetRows(const BVarBindList& list, int index, int count)
{
    TMutexLock lock(Mutex());
    for (int k = index; k < index + count; ++k) {
        if (IsRowStatus(list[k])) {
            const InstanceView instance(list[k].Name(), Oid().Length() + 1);
            DropState(instance.Oid());
        }
    }
}

} // namespace VLK
