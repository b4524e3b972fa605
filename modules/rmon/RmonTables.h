// alarmTable, eventTable and logTable (RFC 2819 section 5).
#pragma once

#include "modules/rmon/AlarmSampler.h"
#include "modules/rmon/EntryTable.h"

namespace VLK::modules {

// The alarms as managers see and edit them. What alarmVariable is set to is sampled in
// the test phase, without a lock of this table.
//
// Ownership: not of rows and sampler, which outlive it.
// Threads, Errors: as TEntryTable.
class CAlarmTable : public TEntryTable<CAlarmRows> {
public:
    CAlarmTable(CAlarmRows& rows, CAlarmSampler& sampler, int activationTimeout);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    using TEntryTable::Set;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;

private:
    int TestVariables(const BVarBindList& list, int& index, int count) const;
    bool IsVariable(const BVarBind& binding) const;
    int TestValid(const BObjectIdentifier& row) override;
    bool BeginValid() override { return m_sampler.Watch(); }

    int OnGet_Variable(const BObjectIdentifier& row, unsigned id, BObjectIdentifier& value);
    int OnGet_Value(const BObjectIdentifier& row, unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    CAlarmSampler& m_sampler;
};

// Events may be changed while they are valid.
class CEventTable : public TEntryTable<CEventRows> {
public:
    CEventTable(CEventRows& rows, int activationTimeout);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    int OnGet_LastTimeSent(const BObjectIdentifier& row, unsigned id, unsigned& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];
};

// Read-only; the logs of the events that are valid.
//
// Ownership: not of the rows, which outlive it.
// Threads, Errors: as BMibTableImpl.
class CLogTable : public BMibTableImpl {
public:
    explicit CLogTable(const CEventRows& rows);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    bool Find(const BObjectIdentifier& row, SLogEntry& entry) const;
    int OnGet_Event(const BObjectIdentifier& row, unsigned id, int& value);
    int OnGet_Number(const BObjectIdentifier& row, unsigned id, int& value);
    int OnGet_Time(const BObjectIdentifier& row, unsigned id, unsigned& value);
    int OnGet_Description(const BObjectIdentifier& row, unsigned id, BString& value);

    static SRqHndlrMapEntry s_map[];

    const CEventRows& m_rows;
};

} // namespace VLK::modules
