// The hrStorage group of HOST-RESOURCES-MIB (RFC 2790 section 6).
#pragma once

#include "modules/hostresources/HostStorage.h"

#include <vkmibh/impl.h>

namespace VLK::modules {

// hrMemorySize: a host with 2 TiB or more has the largest number. No instance
// where the size is not known.
//
// Ownership: not of the source, which outlives it.
// Threads:   as BMibScalarImpl.
// Errors:    as BMibScalarImpl.
// Contract:  read anew for each request.
class CHrMemorySize : public BMibScalarImpl {
public:
    explicit CHrMemorySize(IHostSource& source);

    using BMibScalarImpl::Get;
    int Get(unsigned id, BVarBind& binding) override;
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    int OnGet(unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    IHostSource& m_source;
};

// hrStorageTable. hrStorageSize is read-only, and hrStorageAllocationFailures is not
// there: nobody counts them.
//
// Ownership: not of the source, which outlives it.
// Threads:   as BMibTableImpl.
// Errors:    as BMibTableImpl.
// Contract:  as CHostStorage.
class CHrStorageTable : public BMibTableImpl {
public:
    enum EColumn { eIndex = 1, eType = 2, eDescr = 3, eAllocationUnits = 4, eSize = 5, eUsed = 6 };

    CHrStorageTable(IHostSource& source, unsigned timeToLive);
    void SetTimeToLive(unsigned timeToLive) { m_storage.SetTimeToLive(timeToLive); }

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    int OnGet_Index(const BObjectIdentifier& index, unsigned id, int& value);
    int OnGet_Type(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value);
    int OnGet_Descr(const BObjectIdentifier& index, unsigned id, BString& value);
    template <int SStorageRow::*field>
    int OnGet(const BObjectIdentifier& index, unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    CHostStorage m_storage;
};

} // namespace VLK::modules
