// snmpTargetAddrTable, snmpTargetParamsTable (RFC 3413 section 4.1.2) and snmpNotifyTable
// (section 4.2.2), as managers see and edit them.
#pragma once

#include "modules/targets/NamedTable.h"

namespace VLK::modules {

// An address fits its domain as soon as both are there.
//
// Ownership, Threads, Errors: as TNamedTable.
class CTargetAddrTable : public TNamedTable<SAddressRow> {
public:
    explicit CTargetAddrTable(CRows& rows);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    int OnGet_Domain(const BObjectIdentifier& row, unsigned id, BObjectIdentifier& value);
    int OnSet_Domain(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned id,
                     const BObjectIdentifier& value, void** slot);
    int OnSet_Address(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned id,
                      const BOctetString& value, void** slot);
    ETargetDomain DomainAfterSet(const BObjectIdentifier& row) const;
    bool AddressAfterSet(const BObjectIdentifier& row, std::string& address) const;

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];
};

// Ownership, Threads, Errors: as TNamedTable.
class CTargetParamsTable : public TNamedTable<SParamsRow> {
public:
    explicit CTargetParamsTable(CRows& rows);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];
};

// Ownership, Threads, Errors: as TNamedTable.
class CNotifyTable : public TNamedTable<SNotifyRow> {
public:
    explicit CNotifyTable(CRows& rows);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];
};

} // namespace VLK::modules
