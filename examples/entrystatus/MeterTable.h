#pragma once

#include "examples/WholeSetTable.h"

#include <map>
#include <string>

namespace VLK::examples {

// Meters that managers set up, in the older style of RFC 1757: a meter is made with
// createRequest, is changed while it is underCreation, and works while it is valid;
// invalid removes it. One that stays underCreation for the time-out is removed.
class CMeterTable : public CWholeSetTable {
public:
    enum EColumn { eIndex = 1, eInterval = 2, eOwner = 3, eStatus = 4 };

    explicit CMeterTable(int activationTimeout);  // milliseconds
    ~CMeterTable() override { CancelTimeouts(); } // they use the members

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;
    void RowActivationTimeout(const BObjectIdentifier& instance) override;

private:
    // A row with its defaults.
    struct SMeter {
        int interval = 1800;
        std::string owner;
        EEntryStatus status = eEntryUnderCreation;
    };
    using Meters = std::map<unsigned, SMeter>; // by meterIndex

    const SMeter* Find(const BObjectIdentifier& instance) const;
    int StatusAfterSet(const BObjectIdentifier& instance);
    int TestColumn(const BObjectIdentifier& instance);
    template <class TChange>
    int SetColumn(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot,
                  TChange change);
    int Keep(const BObjectIdentifier& instance, void** slot) const;
    int End(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot);

    int OnGet_Interval(const BObjectIdentifier& instance, unsigned id, int& value);
    int OnSet_Interval(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id, int value,
                       void** slot);
    int OnGet_Owner(const BObjectIdentifier& instance, unsigned id, BString& value);
    int OnSet_Owner(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
                    const BString& value, void** slot);
    int OnGet_Status(const BObjectIdentifier& instance, unsigned id, EEntryStatus& value, int flag);
    int OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
                     EEntryStatus value, void** slot);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    Meters m_meters;
};

// What is registered with the agent.
class CMeterModule : public BMibImplGroup {
public:
    explicit CMeterModule(int activationTimeout) : m_table(activationTimeout) {}
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_table; }

private:
    CMeterTable m_table;
};

} // namespace VLK::examples
