#include "modules/ViewTreeFamily.h"

#include <memory>
#include <new>
#include <utility>

namespace VLK::modules {

namespace {

constexpr unsigned kViewNameMost = 32;
constexpr unsigned kArcsMost = 128; // of any instance name, RFC 2578 section 3.5

bool IsKept(EStorageType storage)
{
    return storage == eStoragePermanent || storage == eStorageReadOnly;
}

// What a set handler keeps in its slot between the phases.
BFilterTable::Entry* KeptIn(void** slot)
{
    return slot ? static_cast<BFilterTable::Entry*>(*slot) : nullptr;
}

// All bindings of the SET that a thread serves, those of other tables too.
thread_local const BVarBindList* t_bindings = nullptr;

class BBindingsInReach {
public:
    explicit BBindingsInReach(const BVarBindList& bindings) : m_before(t_bindings)
    {
        t_bindings = &bindings;
    }
    ~BBindingsInReach() { t_bindings = m_before; }
    BBindingsInReach(const BBindingsInReach&) = delete;
    BBindingsInReach& operator=(const BBindingsInReach&) = delete;

private:
    const BVarBindList* m_before;
};

} // namespace

using Table = CViewTreeFamilyTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CViewTreeFamilyTable::s_map[] = {
    ColumnRow<eKindOctetString>(eViewName, "vacmViewTreeFamilyViewName", eAsnOctetString,
                                eRqNotAccessible),
    ColumnRow<eKindObjectId>(eSubtree, "vacmViewTreeFamilySubtree", eAsnObjectId, eRqNotAccessible),
    ColumnRow<eKindOctetString, &Table::OnGet_Mask, &Table::OnSet_Mask>(
        eMask, "vacmViewTreeFamilyMask", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Table::OnGet_Type, &Table::OnSet_Type>(
        eType, "vacmViewTreeFamilyType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Table::OnGet_Storage, &Table::OnSet_Storage>(
        eStorage, "vacmViewTreeFamilyStorageType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindRowStatus, &Table::OnGet_Status, &Table::OnSet_Status>(
        eStatus, "vacmViewTreeFamilyStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CViewTreeFamilyTable::s_constraints[] = {
    {eConstraintRange, eMask, nullptr, 0, 16},
    {eConstraintEnumeration, eType, nullptr, 0, 0},
    {eConstraintItem, eType, "included", eFilterIncluded, 0},
    {eConstraintItem, eType, "excluded", eFilterExcluded, 0},
    {eConstraintConvention, eStorage, cszStorageType, 0, 0},
    {eConstraintConvention, eStatus, cszRowStatus, 0, 0},
    kConstraintEnd};

CViewTreeFamilyTable::CViewTreeFamilyTable(BFilterTable& views, INonVolatile* store)
    : BMibTableImplEx(BString("SNMP-VIEW-BASED-ACM-MIB.vacmViewTreeFamilyEntry"),
                      BObjectIdentifier(BString("1.3.6.1.6.3.16.1.5.2.1"))),
      m_views(views), m_saver(views, store)
{
}

int CViewTreeFamilyTable::NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                                    BObjectIdentifier& nextIndex)
{
    return m_views.NextIndex(index, nextIndex);
}

int CViewTreeFamilyTable::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op,
                              void** slots, int& index, int count)
{
    const BBindingsInReach inReach(list);
    return BMibTableImplEx::Set(id, list, op, slots, index, count);
}

// The state machine calls what is no status a general error of rows that exist.
int CViewTreeFamilyTable::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    if (op == eSetTest && IsRowStatus(binding) &&
        (binding.Value().Int() < eRowActive || binding.Value().Int() > eRowDestroy))
        return eSnmpWrongValue;
    return BMibTableImplEx::Set(id, op, slot, binding);
}

template <class V>
int CViewTreeFamilyTable::GetColumn(const BObjectIdentifier& index, V Row::*field, V& value)
{
    TMutexLock lock(m_views.Mutex());
    const Row* const row = m_views.Peek(index);
    if (!row)
        return eSnmpNoSuchName;
    value = row->*field;
    return value == row->*field ? eSnmpNoError : eSnmpGenErr;
}

template <class V>
int CViewTreeFamilyTable::SetColumn(const BObjectIdentifier& index, ESnmpSetOpCode op,
                                    V Row::*field, const V& value, void** slot)
{
    if (op == eSetTest) {
        const int status = TestColumn(index);
        return status == eSnmpNoError ? Keep(index, slot) : status;
    }
    if (op != eSetCommit)
        return Leave(index, op, slot);
    V copy = value; // half a mask would show something else
    if (!(copy == value))
        return eSnmpCommitFailed;
    {
        TMutexLock lock(m_views.Mutex());
        // The status may come later, and a row that is destroyed takes its columns
        // with it.
        if (!m_views.Peek(index) && IsRowCreation(index) && !MakeRow(index))
            return eSnmpCommitFailed;
        m_views.Change(index, [&](Row& row) { std::swap(row.*field, copy); });
    }
    m_saver.Request(); // without the table's lock: the store takes its own first
    return eSnmpNoError;
}

// The slot takes the row as it was before the SET, nothing where there was none. So
// undo need not know what was changed, and in which order.
int CViewTreeFamilyTable::Keep(const BObjectIdentifier& index, void** slot)
{
    TMutexLock lock(m_views.Mutex());
    const Row* const row = m_views.Peek(index);
    if (!row)
        return eSnmpNoError;
    std::unique_ptr<Row> before(slot ? new (std::nothrow) Row(*row) : nullptr);
    if (!before || before->viewName != row->viewName || before->subtree != row->subtree ||
        before->mask != row->mask)
        return eSnmpResourceUnavailable;
    *slot = before.release();
    return eSnmpNoError;
}

// Undo and cleanup, of any column.
int CViewTreeFamilyTable::Leave(const BObjectIdentifier& index, ESnmpSetOpCode op, void** slot)
{
    if (op == eSetCleanup) {
        delete KeptIn(slot);
        return eSnmpNoError;
    }
    const int status = Restore(index, slot);
    m_saver.Request();
    return status;
}

int CViewTreeFamilyTable::Restore(const BObjectIdentifier& index, void** slot)
{
    TMutexLock lock(m_views.Mutex());
    Row* const before = KeptIn(slot);
    if (!before) {
        delete m_views.Remove(index);
        return eSnmpNoError;
    }
    // Takes no memory.
    if (m_views.Change(index, [before](Row& row) { std::swap(row, *before); }))
        return eSnmpNoError;
    if (!m_views.Insert(index, before))
        return eSnmpUndoFailed;
    *slot = nullptr;
    return eSnmpNoError;
}

// Also by a binding that is tested later.
bool CViewTreeFamilyTable::WillBeMade(const BObjectIdentifier& index) const
{
    if (IsRowCreation(index))
        return true;
    BObjectIdentifier status(Oid());
    if (!t_bindings || !status.Append(eStatus) || !status.Append(index, true))
        return false;
    for (int i = 0; i < static_cast<int>(t_bindings->Count()); ++i) {
        const BVarBind& binding = (*t_bindings)[i];
        if (IsRowCreation(binding) && binding.Name() == status)
            return true;
    }
    return false;
}

// A row that exists, or that this SET makes.
int CViewTreeFamilyTable::TestColumn(const BObjectIdentifier& index)
{
    TMutexLock lock(m_views.Mutex());
    const Row* const row = m_views.Peek(index);
    if (row)
        return row->storageType == eStorageReadOnly ? eSnmpNotWritable : eSnmpNoError;
    return WillBeMade(index) ? eSnmpNoError : eSnmpInconsistentName;
}

// RFC 2579, StorageType: what is permanent or readOnly stays so, and nothing else
// becomes it.
int CViewTreeFamilyTable::TestStorage(const BObjectIdentifier& index, EStorageType value)
{
    const int status = TestColumn(index);
    if (status != eSnmpNoError)
        return status;
    TMutexLock lock(m_views.Mutex());
    const Row* const row = m_views.Peek(index);
    if (row && row->storageType == value)
        return eSnmpNoError;
    const bool changes = value == eStorageVolatile || value == eStorageNonVolatile;
    return changes && !(row && IsKept(row->storageType)) ? eSnmpNoError : eSnmpInconsistentValue;
}

int CViewTreeFamilyTable::TestStatus(const BObjectIdentifier& index, ERowStatus value)
{
    TMutexLock lock(m_views.Mutex());
    const Row* const row = m_views.Peek(index);
    if (row) {
        const bool refused = value == eRowDestroy
                                 ? IsKept(row->storageType)
                                 : row->storageType == eStorageReadOnly && value != row->rowStatus;
        return refused ? eSnmpInconsistentValue : eSnmpNoError;
    }
    return !IsRowCreation(index) || MayExist(index) ? eSnmpNoError : eSnmpNoCreation;
}

bool CViewTreeFamilyTable::MayExist(const BObjectIdentifier& index)
{
    BString view;
    BObjectIdentifier subtree;
    return BFilterTable::SplitIndex(index, view, subtree, false) && index[0] > 0 &&
           index[0] <= kViewNameMost && Oid().Length() + 1 + index.Length() <= kArcsMost &&
           !IsReadOnly(view);
}

// One more family would change what the view shows.
bool CViewTreeFamilyTable::IsReadOnly(const BString& view)
{
    for (int i = static_cast<int>(m_views.Count()); --i >= 0;) {
        const Row& row = *m_views.PeekAt(i);
        if (row.storageType == eStorageReadOnly && row.viewName == view)
            return true;
    }
    return false;
}

// Two statuses for one row: what the row becomes would hang on their order.
int CViewTreeFamilyTable::AskForRow(const BObjectIdentifier& index)
{
    if (m_asked.Find(index) >= 0)
        return eSnmpInconsistentValue;
    return m_asked.Insert(index, this) ? eSnmpNoError : eSnmpResourceUnavailable;
}

// Not in service yet; false without memory.
bool CViewTreeFamilyTable::MakeRow(const BObjectIdentifier& index)
{
    BString view;
    BObjectIdentifier subtree;
    return BFilterTable::SplitIndex(index, view, subtree, false) &&
           m_views.Insert(view, subtree, BOctetString(), eFilterIncluded, eStorageNonVolatile,
                          eRowNotInService, false);
}

int CViewTreeFamilyTable::CommitStatus(const BObjectIdentifier& index)
{
    const ERowStatus status = static_cast<ERowStatus>(GetRowState(index));
    TMutexLock lock(m_views.Mutex());
    if (status == 0) {
        delete m_views.Remove(index);
        return eSnmpNoError;
    }
    if (!m_views.Peek(index) && !MakeRow(index))
        return eSnmpCommitFailed;
    m_views.Change(index, [status](Row& row) { row.rowStatus = status; });
    return eSnmpNoError;
}

int CViewTreeFamilyTable::OnGet_Mask(const BObjectIdentifier& index, unsigned, BOctetString& value)
{
    return GetColumn(index, &Row::mask, value);
}

int CViewTreeFamilyTable::OnSet_Mask(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned,
                                     const BOctetString& value, void** slot)
{
    return SetColumn(index, op, &Row::mask, value, slot);
}

int CViewTreeFamilyTable::OnGet_Type(const BObjectIdentifier& index, unsigned, EFilterType& value)
{
    return GetColumn(index, &Row::type, value);
}

int CViewTreeFamilyTable::OnSet_Type(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned,
                                     EFilterType value, void** slot)
{
    return SetColumn(index, op, &Row::type, value, slot);
}

int CViewTreeFamilyTable::OnGet_Storage(const BObjectIdentifier& index, unsigned,
                                        EStorageType& value)
{
    return GetColumn(index, &Row::storageType, value);
}

int CViewTreeFamilyTable::OnSet_Storage(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned,
                                        EStorageType value, void** slot)
{
    const int status = op == eSetTest ? TestStorage(index, value) : eSnmpNoError;
    return status != eSnmpNoError ? status : SetColumn(index, op, &Row::storageType, value, slot);
}

int CViewTreeFamilyTable::OnGet_Status(const BObjectIdentifier& index, unsigned, ERowStatus& value,
                                       int)
{
    return GetColumn(index, &Row::rowStatus, value);
}

int CViewTreeFamilyTable::OnSet_Status(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned,
                                       ERowStatus value, void** slot)
{
    if (op == eSetTest) {
        int status = TestStatus(index, value);
        if (status == eSnmpNoError)
            status = AskForRow(index);
        return status == eSnmpNoError ? Keep(index, slot) : status;
    }
    if (op == eSetCleanup)
        m_asked.Remove(index);
    if (op != eSetCommit)
        return Leave(index, op, slot);
    const int status = CommitStatus(index);
    m_saver.Request();
    return status;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CViewSpinLock::s_map[] = {
    ScalarRow<eKindInteger, &CViewSpinLock::OnGet, &CViewSpinLock::OnSet>(
        0, "vacmViewSpinLock", eAsnInteger, eRqReadWrite),
    kRqEnd};

} // namespace VLK::modules
