#pragma once

#include "examples/WholeSetTable.h"

#include <map>
#include <string>

namespace VLK::examples {

// The doors of a house. A door is created with the status column, needs a name to
// be active, and keeps that name while it is; the other columns may change at any
// time. A door that is left inactive for the activation time-out is removed.
//
// Nothing is kept when the program ends: a module that keeps rows writes those
// that are nonVolatile to the host's store in commit and undo.
class CDoorTable : public CWholeSetTable {
public:
    enum EColumn { eIndex = 1, eName = 2, eOpenSeconds = 3, eStorage = 4, eStatus = 5 };

    explicit CDoorTable(int activationTimeout);  // milliseconds
    ~CDoorTable() override { CancelTimeouts(); } // they use the members

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;
    void RowActivationTimeout(const BObjectIdentifier& instance) override;

private:
    // A row with its defaults. The name has none: empty says that it is not set.
    struct SDoor {
        std::string name;
        int openSeconds = 30;
        EStorageType storage = eStorageVolatile;
        bool active = false;

        ERowStatus Status() const;
    };
    using Doors = std::map<unsigned, SDoor>; // by doorIndex

    const SDoor* Find(const BObjectIdentifier& instance) const;
    int StatusAfterSet(const BObjectIdentifier& instance);
    int TestColumn(const BObjectIdentifier& instance);
    int TestStatus(const BObjectIdentifier& instance, ERowStatus value) const;
    template <class TChange>
    int SetColumn(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot,
                  TChange change);
    int Keep(const BObjectIdentifier& instance, void** slot) const;
    int End(const BObjectIdentifier& instance, ESnmpSetOpCode op, void** slot);

    int OnGet_Name(const BObjectIdentifier& instance, unsigned id, BString& value);
    int OnSet_Name(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
                   const BString& value, void** slot);
    int OnGet_OpenSeconds(const BObjectIdentifier& instance, unsigned id, int& value);
    int OnSet_OpenSeconds(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
                          int value, void** slot);
    int OnGet_Storage(const BObjectIdentifier& instance, unsigned id, EStorageType& value);
    int OnSet_Storage(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
                      EStorageType value, void** slot);
    int OnGet_Status(const BObjectIdentifier& instance, unsigned id, ERowStatus& value, int flag);
    int OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
                     ERowStatus value, void** slot);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    Doors m_doors;
};

// What is registered with the agent.
class CDoorModule : public BMibImplGroup {
public:
    explicit CDoorModule(int activationTimeout) : m_table(activationTimeout) {}
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_table; }

private:
    CDoorTable m_table;
};

} // namespace VLK::examples
