// ifTable, ifXTable, ifNumber and ifTableLastChange of IF-MIB (RFC 2863).
#pragma once

#include "modules/interfaces/LinkTraps.h"
#include "modules/interfaces/Snapshots.h"

#include <vkmibh/impl.h>

namespace VLK::modules {

// What both tables have in common: a row for each interface under its ifIndex. A row
// lacks the columns of which the kernel tells nothing.
//
// Ownership: not of the snapshots, which outlive it.
// Threads:   as BMibTableImpl.
// Errors:    as BMibTableImpl; genErr when the interfaces cannot be told.
// Contract:  columns that are deprecated, and those that the kernel never tells, are
//            not there at all.
class CInterfaceTable : public BMibTableImpl {
public:
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

protected:
    CInterfaceTable(const char* name, const char* oid, CSnapshots& snapshots);

    std::shared_ptr<const SSnapshot> Snapshot(unsigned id) { return m_snapshots.Of(id); }
    // Null: there is no such row.
    static const SIfRow* RowIn(const SSnapshot& snapshot, const BObjectIdentifier& index);

    // `read` is bool(const SIfRow&, V&): false when the row lacks the column.
    template <class V, auto read>
    int OnGet(const BObjectIdentifier& index, unsigned id, V& value)
    {
        const std::shared_ptr<const SSnapshot> snapshot = Snapshot(id);
        const SIfRow* const row = RowIn(*snapshot, index);
        return row && read(*row, value) ? eSnmpNoError : eSnmpNoSuchName;
    }

private:
    CSnapshots& m_snapshots;
};

class CIfTable : public CInterfaceTable {
public:
    explicit CIfTable(CSnapshots& snapshots);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];
};

class CIfXTable : public CInterfaceTable {
public:
    CIfXTable(CSnapshots& snapshots, CLinkTrapEnables& enables);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    int OnGet_Enable(const BObjectIdentifier& index, unsigned id, ELinkTraps& value);
    int OnSet_Enable(const BObjectIdentifier& index, ESnmpSetOpCode op, unsigned id,
                     ELinkTraps value, void** slot);
    int TestEnable(const BObjectIdentifier& index, unsigned id, void** slot);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    CLinkTrapEnables& m_enables;
};

class CIfNumber : public BMibScalarImpl {
public:
    explicit CIfNumber(CSnapshots& snapshots);
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];

    CSnapshots& m_snapshots;
};

// Not there while nobody watches the interfaces.
class CIfTableLastChange : public BMibScalarImpl {
public:
    explicit CIfTableLastChange(CSnapshots& snapshots);
    using BMibScalarImpl::Get;
    int Get(unsigned id, BVarBind& binding) override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned id, unsigned& value);

    static SRqHndlrMapEntry s_map[];

    CSnapshots& m_snapshots;
};

} // namespace VLK::modules
