#include "modules/rmon/RmonTables.h"

#include <climits>

namespace VLK::modules {

using Table = CAlarmTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CAlarmTable::s_map[] = {
    ColumnRow<eKindInteger, &Table::OnGet_Index>(eAlarmIndex, "alarmIndex", eAsnInteger,
                                                 eRqReadOnly),
    ColumnRow<eKindInteger, &Table::OnGet<&SAlarm::interval>,
              &Table::OnSet<&SAlarm::interval, eNotWhileValid>>(eAlarmInterval, "alarmInterval",
                                                                eAsnInteger, eRqReadCreate),
    ColumnRow<eKindObjectId, &Table::OnGet_Variable,
              &Table::OnSet<&SAlarm::variable, eNotWhileValid>>(eAlarmVariable, "alarmVariable",
                                                                eAsnObjectId, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Table::OnGet<&SAlarm::sampleType>,
              &Table::OnSet<&SAlarm::sampleType, eNotWhileValid>>(
        eAlarmSampleType, "alarmSampleType", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger, &Table::OnGet_Value>(eAlarmValue, "alarmValue", eAsnInteger,
                                                 eRqReadOnly),
    ColumnRow<eKindEnumerated, &Table::OnGet<&SAlarm::startup>,
              &Table::OnSet<&SAlarm::startup, eNotWhileValid>>(
        eAlarmStartupAlarm, "alarmStartupAlarm", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger, &Table::OnGet<&SAlarm::rising>,
              &Table::OnSet<&SAlarm::rising, eNotWhileValid>>(
        eAlarmRisingThreshold, "alarmRisingThreshold", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger, &Table::OnGet<&SAlarm::falling>,
              &Table::OnSet<&SAlarm::falling, eNotWhileValid>>(
        eAlarmFallingThreshold, "alarmFallingThreshold", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger, &Table::OnGet<&SAlarm::risingEvent>,
              &Table::OnSet<&SAlarm::risingEvent, eNotWhileValid>>(
        eAlarmRisingEventIndex, "alarmRisingEventIndex", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindInteger, &Table::OnGet<&SAlarm::fallingEvent>,
              &Table::OnSet<&SAlarm::fallingEvent, eNotWhileValid>>(
        eAlarmFallingEventIndex, "alarmFallingEventIndex", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindDisplayString, &Table::OnGet<&SAlarm::owner>,
              &Table::OnSet<&SAlarm::owner, eWhileValid>>(eAlarmOwner, "alarmOwner",
                                                          eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindEntryStatus, &Table::OnGet_Status, &Table::OnSet_Status>(
        eAlarmStatus, "alarmStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CAlarmTable::s_constraints[] = {
    {eConstraintRange, eAlarmInterval, nullptr, 1, INT_MAX},
    {eConstraintEnumeration, eAlarmSampleType, nullptr, 0, 0},
    {eConstraintItem, eAlarmSampleType, "absoluteValue", eAbsoluteValue, 0},
    {eConstraintItem, eAlarmSampleType, "deltaValue", eDeltaValue, 0},
    {eConstraintEnumeration, eAlarmStartupAlarm, nullptr, 0, 0},
    {eConstraintItem, eAlarmStartupAlarm, "risingAlarm", eStartRising, 0},
    {eConstraintItem, eAlarmStartupAlarm, "fallingAlarm", eStartFalling, 0},
    {eConstraintItem, eAlarmStartupAlarm, "risingOrFallingAlarm", eStartRisingOrFalling, 0},
    {eConstraintRange, eAlarmRisingEventIndex, nullptr, 0, kIndexMost},
    {eConstraintRange, eAlarmFallingEventIndex, nullptr, 0, kIndexMost},
    {eConstraintRange, eAlarmOwner, nullptr, 0, kOwnerMost},
    {eConstraintConvention, eAlarmStatus, cszEntryStatus, 0, 0},
    kConstraintEnd};

CAlarmTable::CAlarmTable(CAlarmRows& rows, CAlarmSampler& sampler, int activationTimeout)
    : TEntryTable(BString("RMON-MIB.alarmEntry"),
                  BObjectIdentifier(BString("1.3.6.1.2.1.16.3.1.1")), rows, eAlarmStatus,
                  activationTimeout),
      m_sampler(sampler)
{
}

int CAlarmTable::Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                     int& index, int count)
{
    const int first = index;
    const int status = TEntryTable::Set(id, list, op, slots, index, count);
    if (op != eSetTest || status != eSnmpNoError)
        return status;
    index = first;
    return TestVariables(list, index, count);
}

// After the other tests: it asks other implementations, whose locks are not to be
// waited for with those of this one.
int CAlarmTable::TestVariables(const BVarBindList& list, int& index, int count) const
{
    const int first = index;
    for (int i = first; i < first + count; ++i) {
        const int status =
            IsVariable(list[i]) ? m_sampler.Test(list[i].Value().ObjectId()) : int(eSnmpNoError);
        if (status != eSnmpNoError) {
            index = i;
            return status;
        }
    }
    return eSnmpNoError;
}

bool CAlarmTable::IsVariable(const BVarBind& binding) const
{
    const unsigned length = Oid().Length();
    return binding.Name().Length() > length && binding.Name()[length] == eAlarmVariable;
}

// All other columns have defaults.
int CAlarmTable::TestValid(const BObjectIdentifier& row)
{
    bool isSet = Requested(eAlarmVariable, row) != nullptr;
    Look(row, [&](const Entry& entry) { isSet = isSet || entry.settings.variable.Length() != 0; });
    return isSet ? eSnmpNoError : eSnmpInconsistentValue;
}

// 0.0 until it is set.
int CAlarmTable::OnGet_Variable(const BObjectIdentifier& row, unsigned id, BObjectIdentifier& value)
{
    const int status = OnGet<&SAlarm::variable>(row, id, value);
    if (status != eSnmpNoError || value.Length() != 0)
        return status;
    return value.Set(0u) && value.Append(0u) ? eSnmpNoError : eSnmpGenErr;
}

// None before the first period is complete.
int CAlarmTable::OnGet_Value(const BObjectIdentifier& row, unsigned, int& value)
{
    std::optional<int> found;
    Look(row, [&](const Entry& entry) { found = entry.run.value; });
    value = found.value_or(0);
    return found ? eSnmpNoError : eSnmpNoSuchName;
}

} // namespace VLK::modules
