#include "examples/rowstatus/DoorTable.h"

namespace VLK::examples {

VKMIBH_CONSTINIT SRqHndlrMapEntry CDoorTable::s_map[] = {
    ColumnRow<eKindInteger>(eIndex, "doorIndex", eAsnInteger, eRqNotAccessible),
    ColumnRow<eKindDisplayString, &CDoorTable::OnGet_Name, &CDoorTable::OnSet_Name>(
        eName, "doorName", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindInteger, &CDoorTable::OnGet_OpenSeconds, &CDoorTable::OnSet_OpenSeconds>(
        eOpenSeconds, "doorOpenSeconds", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindEnumerated, &CDoorTable::OnGet_Storage, &CDoorTable::OnSet_Storage>(
        eStorage, "doorStorage", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindRowStatus, &CDoorTable::OnGet_Status, &CDoorTable::OnSet_Status>(
        eStatus, "doorStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CDoorTable::s_constraints[] = {
    {eConstraintRange, eIndex, nullptr, 1, 2147483647},
    {eConstraintRefined, eName, cszDisplayString, 1, 32},
    {eConstraintRange, eOpenSeconds, nullptr, 1, 3600},
    {eConstraintConvention, eStorage, cszStorageType, 0, 0},
    {eConstraintConvention, eStatus, cszRowStatus, 0, 0},
    kConstraintEnd};

CDoorTable::CDoorTable(int activationTimeout)
    : CWholeSetTable("EXAMPLE-MIB.doorTable", BObjectIdentifier("1.3.6.1.4.1.32473.2.3.1")),
      m_doors{{1, {"main entrance", 30, eStoragePermanent, true}},
              {2, {"vault", 10, eStorageReadOnly, true}}}
{
    SetActivationTimeout(activationTimeout);
}

// What is missing tells notReady from notInService.
ERowStatus CDoorTable::SDoor::Status() const
{
    if (active)
        return eRowActive;
    return name.empty() ? eRowNotReady : eRowNotInService;
}

const CDoorTable::SDoor* CDoorTable::Find(const BObjectIdentifier& instance) const
{
    const auto door = m_doors.find(instance.Length() == 1 ? instance[0] : 0);
    return door != m_doors.end() ? &door->second : nullptr;
}

int CDoorTable::NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                          BObjectIdentifier& nextIndex)
{
    const auto next = m_doors.upper_bound(index.Length() > 0 ? index[0] : 0);
    return next != m_doors.end() && nextIndex.Set(next->first);
}

void CDoorTable::RowActivationTimeout(const BObjectIdentifier& instance)
{
    const SDoor* door = Find(instance);
    if (door && door->storage != eStoragePermanent)
        m_doors.erase(instance[0]);
}

// The status that the row will have, 0 = none, whichever binding says so.
int CDoorTable::StatusAfterSet(const BObjectIdentifier& instance)
{
    const SDoor* door = Find(instance);
    RowState row{eRowOfRowStatus, eSetTest, 0, door ? int(door->Status()) : 0, 0};
    if (const BObjectSyntax* requested = Requested(eStatus, instance))
        RowStatusTestSet(ERowStatus(row.newValue), ERowStatus(requested->Int()), &row);
    return row.newValue;
}

// What holds for every column but the status.
int CDoorTable::TestColumn(const BObjectIdentifier& instance)
{
    const SDoor* door = Find(instance);
    if (StatusAfterSet(instance) == 0)
        return door ? eSnmpInconsistentValue : eSnmpInconsistentName;
    return door && door->storage == eStorageReadOnly ? eSnmpInconsistentValue : eSnmpNoError;
}

int CDoorTable::TestStatus(const BObjectIdentifier& instance, ERowStatus value) const
{
    if (instance.Length() != 1 || instance[0] < 1 || instance[0] > 2147483647u)
        return eSnmpNoCreation;
    // Two statuses for one row: what the row becomes would hang on their order.
    const BObjectSyntax* first = Requested(eStatus, instance);
    if (!first || first->Int() != value)
        return eSnmpInconsistentValue;
    const SDoor* door = Find(instance);
    if (door && door->storage == eStorageReadOnly)
        return eSnmpInconsistentValue;
    if (value == eRowDestroy)
        return door && door->storage == eStoragePermanent ? eSnmpInconsistentValue : eSnmpNoError;
    const bool hasName = (door && !door->name.empty()) || Requested(eName, instance);
    return hasName || value == eRowCreateAndWait ? eSnmpNoError : eSnmpInconsistentValue;
}

// The slot of a binding keeps a copy of its row as it was before the SET, or an
// empty map. So undo need not know what was changed, in which order, and takes no
// memory.
int CDoorTable::Keep(const BObjectIdentifier& instance, void** slot) const
{
    const auto row = m_doors.equal_range(instance[0]);
    *slot = new Doors(row.first, row.second);
    return eSnmpNoError;
}

int CDoorTable::End(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot)
{
    Doors* const before = static_cast<Doors*>(*slot);
    if (op == eSetCleanup) {
        delete before;
    } else if (Find(instance) || IsRowDeletion(instance)) {
        m_doors.erase(instance[0]);
        m_doors.merge(*before);
    } // else it has timed out since: it stays away
    return eSnmpNoError;
}

template <class TChange>
int CDoorTable::SetColumn(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot,
                          TChange change)
{
    if (op == eSetTest) {
        const int status = TestColumn(instance);
        return status == eSnmpNoError ? Keep(instance, slot) : status;
    }
    if (op != eSetCommit)
        return End(instance, op, slot);
    // The row may have timed out since the test.
    if (!Find(instance) && !IsRowCreation(instance))
        return eSnmpCommitFailed;
    change(m_doors[instance[0]]);
    return eSnmpNoError;
}

int CDoorTable::OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                             ERowStatus value, void** slot)
{
    if (op == eSetTest) {
        const int status = TestStatus(instance, value);
        return status == eSnmpNoError ? Keep(instance, slot) : status;
    }
    if (op != eSetCommit)
        return End(instance, op, slot);
    const int status = GetRowState(instance);
    if (status == 0)
        m_doors.erase(instance[0]);
    else
        m_doors[instance[0]].active = status == eRowActive;
    return eSnmpNoError;
}

int CDoorTable::OnSet_Name(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                           const BString& value, void** slot)
{
    if (op == eSetTest) {
        const SDoor* door = Find(instance);
        if (door && door->active && StatusAfterSet(instance) == eRowActive)
            return eSnmpInconsistentValue;
    }
    return SetColumn(instance, op, slot,
                     [&](SDoor& door) { door.name.assign(value.c_str(), value.length()); });
}

int CDoorTable::OnSet_OpenSeconds(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                                  int value, void** slot)
{
    return SetColumn(instance, op, slot, [&](SDoor& door) { door.openSeconds = value; });
}

// RFC 2579: a row is made permanent or readOnly by its agent only, and stays so.
int CDoorTable::OnSet_Storage(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                              EStorageType value, void** slot)
{
    if (op == eSetTest) {
        const SDoor* door = Find(instance);
        if (value >= eStoragePermanent || (door && door->storage >= eStoragePermanent))
            return eSnmpInconsistentValue;
    }
    return SetColumn(instance, op, slot, [&](SDoor& door) { door.storage = value; });
}

// noSuchName says that there is no such row, or that the column has no value yet.
int CDoorTable::OnGet_Name(const BObjectIdentifier& instance, unsigned, BString& value)
{
    const SDoor* door = Find(instance);
    if (!door || door->name.empty())
        return eSnmpNoSuchName;
    value = BString(door->name.data(), static_cast<unsigned>(door->name.size()));
    return eSnmpNoError;
}

int CDoorTable::OnGet_OpenSeconds(const BObjectIdentifier& instance, unsigned, int& value)
{
    const SDoor* door = Find(instance);
    if (!door)
        return eSnmpNoSuchName;
    value = door->openSeconds;
    return eSnmpNoError;
}

int CDoorTable::OnGet_Storage(const BObjectIdentifier& instance, unsigned, EStorageType& value)
{
    const SDoor* door = Find(instance);
    if (!door)
        return eSnmpNoSuchName;
    value = door->storage;
    return eSnmpNoError;
}

int CDoorTable::OnGet_Status(const BObjectIdentifier& instance, unsigned, ERowStatus& value, int)
{
    const SDoor* door = Find(instance);
    if (!door)
        return eSnmpNoSuchName;
    value = door->Status();
    return eSnmpNoError;
}

} // namespace VLK::examples
