#include "modules/rmon/RmonTables.h"

namespace VLK::modules {

using Table = CEventTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CEventTable::s_map[] = {
    ColumnRow<eKindInteger, &Table::OnGet_Index>(eEventIndex, "eventIndex", eAsnInteger,
                                                 eRqReadOnly),
    ColumnRow<eKindDisplayString, &Table::OnGet<&SEvent::description>,
              &Table::OnSet<&SEvent::description, eWhileValid>>(
        eEventDescription, "eventDescription", eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindEnumerated, &Table::OnGet<&SEvent::type>,
              &Table::OnSet<&SEvent::type, eWhileValid>>(eEventType, "eventType", eAsnInteger,
                                                         eRqReadCreate),
    ColumnRow<eKindOctetString, &Table::OnGet<&SEvent::community>,
              &Table::OnSet<&SEvent::community, eWhileValid>>(eEventCommunity, "eventCommunity",
                                                              eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindUnsigned, &Table::OnGet_LastTimeSent>(eEventLastTimeSent, "eventLastTimeSent",
                                                         eAsnTimeTicks, eRqReadOnly),
    ColumnRow<eKindDisplayString, &Table::OnGet<&SEvent::owner>,
              &Table::OnSet<&SEvent::owner, eWhileValid>>(eEventOwner, "eventOwner",
                                                          eAsnOctetString, eRqReadCreate),
    ColumnRow<eKindEntryStatus, &Table::OnGet_Status, &Table::OnSet_Status>(
        eEventStatus, "eventStatus", eAsnInteger, eRqReadCreate),
    kRqEnd};

const SConstraintMapEntry CEventTable::s_constraints[] = {
    {eConstraintRange, eEventDescription, nullptr, 0, kEventTextMost},
    {eConstraintEnumeration, eEventType, nullptr, 0, 0},
    {eConstraintItem, eEventType, "none", eEventNone, 0},
    {eConstraintItem, eEventType, "log", eEventLog, 0},
    {eConstraintItem, eEventType, "snmptrap", eEventTrap, 0},
    {eConstraintItem, eEventType, "logandtrap", eEventLogAndTrap, 0},
    {eConstraintRange, eEventCommunity, nullptr, 0, kEventTextMost},
    {eConstraintRange, eEventOwner, nullptr, 0, kOwnerMost},
    {eConstraintConvention, eEventStatus, cszEntryStatus, 0, 0},
    kConstraintEnd};

CEventTable::CEventTable(CEventRows& rows, int activationTimeout)
    : TEntryTable(BString("RMON-MIB.eventEntry"),
                  BObjectIdentifier(BString("1.3.6.1.2.1.16.9.1.1")), rows, eEventStatus,
                  activationTimeout)
{
}

int CEventTable::OnGet_LastTimeSent(const BObjectIdentifier& row, unsigned, unsigned& value)
{
    return Look(row, [&](const Entry& entry) { value = entry.run.lastTimeSent; });
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CLogTable::s_map[] = {
    ColumnRow<eKindInteger, &CLogTable::OnGet_Event>(1, "logEventIndex", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindInteger, &CLogTable::OnGet_Number>(2, "logIndex", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindUnsigned, &CLogTable::OnGet_Time>(3, "logTime", eAsnTimeTicks, eRqReadOnly),
    ColumnRow<eKindDisplayString, &CLogTable::OnGet_Description>(4, "logDescription",
                                                                 eAsnOctetString, eRqReadOnly),
    kRqEnd};

CLogTable::CLogTable(const CEventRows& rows)
    : BMibTableImpl(BString("RMON-MIB.logEntry"),
                    BObjectIdentifier(BString("1.3.6.1.2.1.16.9.2.1"))),
      m_rows(rows)
{
}

int CLogTable::NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                         BObjectIdentifier& nextIndex)
{
    unsigned event = index.Length() > 0 ? index[0] : 0;
    unsigned number = index.Length() > 1 ? index[1] : 0;
    return m_rows.LogAfter(event, number) && nextIndex.Set(event) && nextIndex.Append(number);
}

bool CLogTable::Find(const BObjectIdentifier& row, SLogEntry& entry) const
{
    return row.Length() == 2 && m_rows.LookAtLog(row[0], row[1], entry);
}

int CLogTable::OnGet_Event(const BObjectIdentifier& row, unsigned, int& value)
{
    SLogEntry entry;
    if (!Find(row, entry))
        return eSnmpNoSuchName;
    value = static_cast<int>(row[0]);
    return eSnmpNoError;
}

int CLogTable::OnGet_Number(const BObjectIdentifier& row, unsigned, int& value)
{
    SLogEntry entry;
    if (!Find(row, entry))
        return eSnmpNoSuchName;
    value = static_cast<int>(entry.number);
    return eSnmpNoError;
}

int CLogTable::OnGet_Time(const BObjectIdentifier& row, unsigned, unsigned& value)
{
    SLogEntry entry;
    if (!Find(row, entry))
        return eSnmpNoSuchName;
    value = entry.time;
    return eSnmpNoError;
}

int CLogTable::OnGet_Description(const BObjectIdentifier& row, unsigned, BString& value)
{
    SLogEntry entry;
    if (!Find(row, entry))
        return eSnmpNoSuchName;
    value = std::move(entry.description);
    return eSnmpNoError;
}

} // namespace VLK::modules
