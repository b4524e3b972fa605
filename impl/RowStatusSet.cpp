// SET on a row-status table: the order of a run's bindings, and the phases of a
// status binding.
#include "impl/RowStatusLocks.h"

#include "foundation/HostCall.h"
#include "impl/InstanceView.h"
#include "impl/RankOrder.h"
#include "values/WholeCopy.h"

#include <memory>
#include <new>

namespace VLK {

// Where the two kinds of status column differ.
struct BMibTableImplEx::SRowStatusColumn {
    using Status = ERowStatus;
    static constexpr ERowKind kKind = eRowOfRowStatus;
    static constexpr Status kPreset = eRowNotReady;
    static constexpr Status kAbsent = eRowNotReady;

    static bool IsInactive(int value) { return value == eRowNotInService || value == eRowNotReady; }
    static bool IsSettled(int value) { return value == eRowActive || value == 0; }
    static int Test(BMibTableImplEx& table, int current, Status value, RowState* state)
    {
        return table.RowStatusTestSet(static_cast<Status>(current), value, state);
    }
    static int& Last(BMibTableImplEx& table) { return table.m_lastRowStatus; }
};

struct BMibTableImplEx::SEntryStatusColumn {
    using Status = EEntryStatus;
    static constexpr ERowKind kKind = eRowOfEntryStatus;
    static constexpr Status kPreset = eEntryValid;
    static constexpr Status kAbsent = eEntryInvalid;

    static bool IsInactive(int value) { return value == eEntryUnderCreation; }
    static bool IsSettled(int value) { return value == eEntryValid || value == 0; }
    static int Test(BMibTableImplEx& table, int current, Status value, RowState* state)
    {
        return table.EntryStatusTestSet(static_cast<Status>(current), value, state);
    }
    static int& Last(BMibTableImplEx& table) { return table.m_lastEntryStatus; }
};

namespace {

// A row's state goes at the end of its cleanup, whatever the handler does.
template <class Drop>
class AtEnd {
public:
    explicit AtEnd(Drop drop) : m_drop(drop) {}
    ~AtEnd() { m_drop(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

private:
    Drop m_drop;
};

bool HasInstance(const BVarBind& binding, unsigned tableLength)
{
    return binding.Name().Length() > tableLength + 1;
}

} // namespace

// Asks for the row's status before the request and notes it.
template <class Column>
int BMibTableImplEx::BeginRow(const SRqHndlrMapEntry* entry, unsigned id,
                              const BObjectIdentifier& instance)
{
    std::unique_ptr<RowState> state(new (std::nothrow) RowState{Column::kKind, eSetTest, 0, 0, 0});
    if (!state)
        return eSnmpResourceUnavailable;
    typename Column::Status value = Column::kPreset;
    const int status = (this->*entry->getHandler)(&instance, id, &value, kRqStatusFlag);
    if (status == eSnmpNoError)
        Column::Last(*this) = state->undoValue = state->newValue = value;
    else if (status == eSnmpNoSuchName)
        Column::Last(*this) = Column::kAbsent;
    else
        return status;
    if (!InsertState(instance, state.get()))
        return eSnmpResourceUnavailable;
    static_cast<void>(state.release()); // the table's now
    return eSnmpNoError;
}

template <class Column>
int BMibTableImplEx::TestStatus(const SRqHndlrMapEntry* entry, unsigned id,
                                typename Column::Status value, const BObjectIdentifier& instance)
{
    if (!FindState(instance)) {
        const int status = BeginRow<Column>(entry, id, instance);
        if (status != eSnmpNoError)
            return status;
    }
    RowState* const state = FindState(instance);
    return Column::Test(*this, state->newValue, value, state);
}

template <class Column>
int BMibTableImplEx::CommitStatus(typename Column::Status value, const BObjectIdentifier& instance)
{
    RowState* const state = FindState(instance);
    if (!state)
        return eSnmpCommitFailed;
    state->SetOpCode(eSetCommit);
    Column::Test(*this, state->newValue, value, state);
    if (Column::IsInactive(state->newValue))
        AddToTimeoutList(instance);
    else if (Column::IsSettled(state->newValue))
        RemoveFromTimeoutList(instance);
    return eSnmpNoError;
}

template <class Column>
int BMibTableImplEx::UndoStatus(typename Column::Status value, const BObjectIdentifier& instance)
{
    RowState* const state = FindState(instance);
    if (!state)
        return eSnmpUndoFailed;
    state->SetOpCode(eSetUndo);
    const int status = Column::Test(*this, state->newValue, value, state);
    if (Column::IsInactive(state->undoValue))
        AddToTimeoutList(instance);
    else
        RemoveFromTimeoutList(instance);
    return status;
}

template <class Column>
int BMibTableImplEx::HandleStatusSet(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op,
                                     void** slot, typename Column::Status value,
                                     const BObjectIdentifier& instance)
{
    if (!entry || !entry->setHandler)
        return eSnmpNotWritable;
    if (!entry->getHandler)
        return eSnmpGenErr;
    int status = eSnmpNoError;
    if (op == eSetTest)
        status = TestStatus<Column>(entry, id, value, instance);
    else if (op == eSetCommit)
        status = CommitStatus<Column>(value, instance);
    else if (op == eSetUndo)
        status = UndoStatus<Column>(value, instance);
    else if (op != eSetCleanup)
        return eSnmpNoError;
    if (status != eSnmpNoError)
        return status;

    const AtEnd drop([&] {
        if (op == eSetCleanup)
            DropState(instance);
    });
    const PhaseMark mark(slot, op);
    return (this->*entry->setHandler)(&instance, op, id, &value, slot);
}

int BMibTableImplEx::HandleRowStatusSet(const SRqHndlrMapEntry* entry, unsigned id,
                                        ESnmpSetOpCode op, void** slot, ERowStatus value,
                                        const BObjectIdentifier& instance)
{
    return HandleStatusSet<SRowStatusColumn>(entry, id, op, slot, value, instance);
}

int BMibTableImplEx::HandleEntryStatusSet(const SRqHndlrMapEntry* entry, unsigned id,
                                          ESnmpSetOpCode op, void** slot, EEntryStatus value,
                                          const BObjectIdentifier& instance)
{
    return HandleStatusSet<SEntryStatusColumn>(entry, id, op, slot, value, instance);
}

int BMibTableImplEx::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    const BObjectIdentifier& name = binding.Name();
    const BObjectSyntax& value = binding.Value();
    const unsigned length = Oid().Length();
    if (!HasInstance(binding, length))
        return eSnmpNoSuchName;
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(name[length]);
    if (!entry)
        return eSnmpNotWritable;
    const InstanceView instance(name, length + 1);
    if (!RqIsStatusKind(entry->kind) || value.Syntax() != eAsnInteger)
        return BMibImpl::Set(entry, id, op, slot, value, &instance.Oid());
    if (!entry->getHandler)
        return eSnmpGenErr;
    if (entry->kind == eKindEntryStatus) {
        if (!RqIsWritable(entry->access))
            return eSnmpNotWritable;
        return HandleEntryStatusSet(entry, id, op, slot, static_cast<EEntryStatus>(value.Int()),
                                    instance.Oid());
    }
    if (entry->access != eRqReadWrite && entry->access != eRqReadCreate)
        return eSnmpNotWritable;
    return HandleRowStatusSet(entry, id, op, slot, static_cast<ERowStatus>(value.Int()),
                              instance.Oid());
}

int BMibTableImplEx::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                         int& index, int count)
{
    const Locks locks(*this);
    const int first = index;
    // No row state outlives its request, also where the test of its binding failed.
    const AtEnd drop([&] {
        if (op == eSetCleanup)
            ForgetRows(list, first, count);
    });
    if (!IsInitialized())
        return eSnmpNoSuchName;
    if (op == eSetTest) {
        const int status = RefuseNameless(list, index, count);
        if (status != eSnmpNoError)
            return status;
        OrderCreations(list, slots, first, count);
    }
    const RankOrder order(slots, first, count);
    for (int rank = 0; rank < count; ++rank) {
        const int k = order.At(rank);
        SSetSlot* const slot = SlotAt(slots, k);
        if (!IsPhaseFor(op, slot))
            continue;
        void** scratch = slot ? &slot->scratch : nullptr;
        const int status =
            HostCall([&] { return Set(id, op, scratch, list[first + k]); }, int(eSnmpGenErr));
        if (status != eSnmpNoError) {
            // CONTRACT: in every phase, undo and cleanup included, the first error
            // ends the walk; a failed undo has left the table to its author anyway.
            index = first + k;
            return status;
        }
    }
    return eSnmpNoError;
}

// A row without an index cannot be made.
int BMibTableImplEx::RefuseNameless(const BVarBindList& list, int& index, int count) const
{
    for (int at = index; at < index + count; ++at) {
        if (!HasInstance(list[at], Oid().Length()) && IsRowCreation(list[at])) {
            index = at;
            return eSnmpInconsistentName;
        }
    }
    return eSnmpNoError;
}

// Ranks the bindings so that a row is made before the columns that stand right
// before its creating binding are tested.
void BMibTableImplEx::OrderCreations(const BVarBindList& list, void** slots, int first,
                                     int count) const
{
    if (!slots)
        return;
    for (int k = 0; k < count; ++k)
        SlotAt(slots, k)->position = first + k;
    for (int k = 0; k < count; ++k) {
        const BVarBind& creating = list[first + k];
        if (!IsRowCreation(creating))
            continue;
        for (int before = k - 1; before >= 0; --before) {
            const BVarBind& binding = list[first + before];
            if (!IsSameRow(binding, creating) || IsRowStatus(binding))
                break;
            SSetSlot* const slot = SlotAt(slots, before);
            SlotAt(slots, k)->position = slot->position;
            ++slot->position;
        }
    }
}

// `creating` names a row: others were refused before the order was asked for.
bool BMibTableImplEx::IsSameRow(const BVarBind& a, const BVarBind& creating) const
{
    if (!HasInstance(a, Oid().Length()))
        return false;
    const unsigned from = Oid().Length() + 1;
    const InstanceView left(a.Name(), from);
    const InstanceView right(creating.Name(), from);
    return left.Oid().Compare(right.Oid()) == 0;
}

BMibTableImplEx2::BMibTableImplEx2(const BString& name, const BObjectIdentifier& oid)
    : BMibTableImplEx(name, oid, eImplTableEx2)
{
}

int BMibTableImplEx2::PreIxAllocOrDealloc(const BObjectIdentifier&, BVarBindList&)
{
    return eSnmpNoError;
}

int BMibTableImplEx2::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                          int& index, int count)
{
    const Locks locks(*this);
    if (op == eSetTest && IsInitialized()) {
        int status = RefuseNameless(list, index, count);
        if (status == eSnmpNoError)
            status = PrepareIndexes(list, index, count);
        if (status != eSnmpNoError)
            return status;
    }
    return BMibTableImplEx::Set(id, list, op, slots, index, count);
}

// Calls the hook for every binding that makes or destroys a row.
int BMibTableImplEx2::PrepareIndexes(const BVarBindList& list, int& index, int count)
{
    const unsigned length = Oid().Length();
    BVarBindList copy;
    bool copied = false;
    for (int at = index; at < index + count; ++at) {
        if (!HasInstance(list[at], length) || !(IsRowCreation(list[at]) || IsRowDeletion(list[at])))
            continue;
        int status = eSnmpResourceUnavailable;
        copied = copied || CopyWhole(copy, list);
        if (copied) {
            const InstanceView instance(list[at].Name(), length + 1);
            status = HostCall([&] { return PreIxAllocOrDealloc(instance.Oid(), copy); },
                              int(eSnmpGenErr));
        }
        if (status != eSnmpNoError) {
            index = at;
            return status;
        }
    }
    return eSnmpNoError;
}

} // namespace VLK
