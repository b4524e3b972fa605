// sysORTable and sysORLastChange of SNMPv2-MIB (RFC 3418 section 2) under the names
// of the standard.
#pragma once

#include <functional>
#include <vector>
#include <vkmibh/system.h>

namespace VLK::modules {

using FUpTime = std::function<unsigned()>; // a sysUpTime

// The resources of a system group, whose times are readings of the agent's clock, as
// the standard has them: readings of sysUpTime.
//
// Ownership: not of the record, which outlives it.
// Threads:   as BMibImpl; the record has its own lock.
// Errors:    as BMibTableImpl.
// Contract:  registered at the entry; the library's own table is to be unregistered.
class CSysORTable : public BMibTableImpl {
public:
    enum EColumn { eIndex = 1, eId = 2, eDescr = 3, eUpTime = 4 };

    // The clock's zero is that reading of sysUpTime.
    CSysORTable(BMib2System& system, unsigned zero);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    int OnGet_Id(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value);
    int OnGet_Descr(const BObjectIdentifier& index, unsigned id, BString& value);
    int OnGet_UpTime(const BObjectIdentifier& index, unsigned id, unsigned& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    CSysORTableV2 m_rows; // serves nobody but this
    unsigned m_zero;
};

// Lies in the region of the library's system group: the deeper region is asked.
//
// Ownership, Threads: as CSysORTable.
// Errors:    as BMibScalarImpl.
class CSysORLastChange : public BMibScalarImpl {
public:
    CSysORLastChange(const BMib2System& system, unsigned zero);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned id, unsigned& value);

    static SRqHndlrMapEntry s_map[];

    const BMib2System& m_system;
    unsigned m_zero;
};

class CSysORModule : public BMibImplGroup {
public:
    // The record has its clock.
    CSysORModule(BMib2System& system, const FUpTime& sysUpTime);

    int GetNumImpls() override { return 2; }
    BMibImpl* GetImplAt(int index) override;

private:
    CSysORModule(BMib2System& system, unsigned zero);

    CSysORLastChange m_lastChange;
    CSysORTable m_table;
};

// A capability of an agent, one row.
struct SResource {
    const char* id;
    const char* description;
};

// The record has these rows and no others, from index 1 on. Throws std::bad_alloc.
void SetResources(BMib2System& system, const std::vector<SResource>& resources);

} // namespace VLK::modules
