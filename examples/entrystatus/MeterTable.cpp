#include "examples/entrystatus/MeterTable.h"

namespace VLK::examples {

VKMIBH_CONSTINIT SRqHndlrMapEntry CMeterTable::s_map[] = {
    ColumnRow<eKindInteger>(eIndex, "meterIndex", eAsnInteger, eRqNotAccessible),
    ColumnRow<eKindInteger, &CMeterTable::OnGet_Interval, &CMeterTable::OnSet_Interval>(
        eInterval, "meterInterval", eAsnInteger, eRqReadWrite),
    ColumnRow<eKindDisplayString, &CMeterTable::OnGet_Owner, &CMeterTable::OnSet_Owner>(
        eOwner, "meterOwner", eAsnOctetString, eRqReadWrite),
    ColumnRow<eKindEntryStatus, &CMeterTable::OnGet_Status, &CMeterTable::OnSet_Status>(
        eStatus, "meterStatus", eAsnInteger, eRqReadWrite),
    kRqEnd};

const SConstraintMapEntry CMeterTable::s_constraints[] = {
    {eConstraintRange, eIndex, nullptr, 1, 65535},
    {eConstraintRange, eInterval, nullptr, 1, 3600},
    {eConstraintConvention, eOwner, cszOwnerString, 0, 0},
    {eConstraintConvention, eStatus, cszEntryStatus, 0, 0},
    kConstraintEnd};

CMeterTable::CMeterTable(int activationTimeout)
    : CWholeSetTable("EXAMPLE-MIB.meterTable", BObjectIdentifier("1.3.6.1.4.1.32473.2.4.1"))
{
    SetActivationTimeout(activationTimeout);
}

const CMeterTable::SMeter* CMeterTable::Find(const BObjectIdentifier& instance) const
{
    const auto meter = m_meters.find(instance.Length() == 1 ? instance[0] : 0);
    return meter != m_meters.end() ? &meter->second : nullptr;
}

int CMeterTable::NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                           BObjectIdentifier& nextIndex)
{
    const auto next = m_meters.upper_bound(index.Length() > 0 ? index[0] : 0);
    return next != m_meters.end() && nextIndex.Set(next->first);
}

void CMeterTable::RowActivationTimeout(const BObjectIdentifier& instance)
{
    m_meters.erase(instance[0]);
}

// The status that the row will have, 0 = none, whichever binding says so.
int CMeterTable::StatusAfterSet(const BObjectIdentifier& instance)
{
    const SMeter* meter = Find(instance);
    RowState row{eRowOfEntryStatus, eSetTest, 0, meter ? int(meter->status) : 0, 0};
    if (const BObjectSyntax* requested = Requested(eStatus, instance))
        EntryStatusTestSet(EEntryStatus(row.newValue), EEntryStatus(requested->Int()), &row);
    return row.newValue;
}

// A column may change in a row that is not, or does not stay, valid.
int CMeterTable::TestColumn(const BObjectIdentifier& instance)
{
    const SMeter* meter = Find(instance);
    const int after = StatusAfterSet(instance);
    if (after == 0)
        return meter ? eSnmpInconsistentValue : eSnmpInconsistentName;
    const bool staysValid = meter && meter->status == eEntryValid && after == eEntryValid;
    return staysValid ? eSnmpInconsistentValue : eSnmpNoError;
}

// The slot of a binding keeps a copy of its row as it was before the SET, or an
// empty map. So undo need not know what was changed, in which order, and takes no
// memory.
int CMeterTable::Keep(const BObjectIdentifier& instance, void** slot) const
{
    const auto row = m_meters.equal_range(instance[0]);
    *slot = new Meters(row.first, row.second);
    return eSnmpNoError;
}

int CMeterTable::End(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot)
{
    Meters* const before = static_cast<Meters*>(*slot);
    if (op == eSetCleanup) {
        delete before;
    } else if (Find(instance) || IsRowDeletion(instance)) {
        m_meters.erase(instance[0]);
        m_meters.merge(*before);
    } // else it has timed out since: it stays away
    return eSnmpNoError;
}

template <class TChange>
int CMeterTable::SetColumn(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot,
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
    change(m_meters[instance[0]]);
    return eSnmpNoError;
}

int CMeterTable::OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                              EEntryStatus value, void** slot)
{
    if (op == eSetTest) {
        if (instance.Length() != 1 || instance[0] < 1 || instance[0] > 65535)
            return eSnmpNoCreation;
        if (value < eEntryValid || value > eEntryInvalid)
            return eSnmpWrongValue;
        // Two statuses for one row: what the row becomes would hang on their order.
        const BObjectSyntax* first = Requested(eStatus, instance);
        return first && first->Int() == value ? Keep(instance, slot) : int(eSnmpInconsistentValue);
    }
    if (op != eSetCommit)
        return End(instance, op, slot);
    const int status = GetRowState(instance);
    if (status == 0)
        m_meters.erase(instance[0]);
    else
        m_meters[instance[0]].status = EEntryStatus(status);
    return eSnmpNoError;
}

int CMeterTable::OnSet_Interval(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                                int value, void** slot)
{
    return SetColumn(instance, op, slot, [&](SMeter& meter) { meter.interval = value; });
}

int CMeterTable::OnSet_Owner(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned,
                             const BString& value, void** slot)
{
    return SetColumn(instance, op, slot,
                     [&](SMeter& meter) { meter.owner.assign(value.c_str(), value.length()); });
}

// noSuchName says that there is no such row.
int CMeterTable::OnGet_Interval(const BObjectIdentifier& instance, unsigned, int& value)
{
    const SMeter* meter = Find(instance);
    if (!meter)
        return eSnmpNoSuchName;
    value = meter->interval;
    return eSnmpNoError;
}

int CMeterTable::OnGet_Owner(const BObjectIdentifier& instance, unsigned, BString& value)
{
    const SMeter* meter = Find(instance);
    if (!meter)
        return eSnmpNoSuchName;
    value = BString(meter->owner.data(), static_cast<unsigned>(meter->owner.size()));
    return eSnmpNoError;
}

int CMeterTable::OnGet_Status(const BObjectIdentifier& instance, unsigned, EEntryStatus& value, int)
{
    const SMeter* meter = Find(instance);
    if (!meter)
        return eSnmpNoSuchName;
    value = meter->status;
    return eSnmpNoError;
}

} // namespace VLK::examples
