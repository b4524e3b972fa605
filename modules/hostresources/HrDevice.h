// hrDeviceTable and hrProcessorTable of HOST-RESOURCES-MIB (RFC 2790 section 6).
#pragma once

#include "modules/hostresources/HostDevices.h"

#include <vkmibh/impl.h>

namespace VLK::modules {

// hrDeviceTable: the processors and the disk that the host is started from.
// hrDeviceErrors is not there: nobody counts them.
//
// Ownership: not of the devices, which outlive it.
// Threads:   as BMibTableImpl.
// Errors:    as BMibTableImpl.
// Contract:  as CHostDevices.
class CHrDeviceTable : public BMibTableImpl {
public:
    enum EColumn { eIndex = 1, eType = 2, eDescr = 3, eId = 4, eStatus = 5 };

    explicit CHrDeviceTable(CHostDevices& devices);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    int OnGet_Index(const BObjectIdentifier& index, unsigned id, int& value);
    int OnGet_Type(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value);
    int OnGet_Descr(const BObjectIdentifier& index, unsigned id, BString& value);
    int OnGet_Id(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value);
    int OnGet_Status(const BObjectIdentifier& index, unsigned id, EDeviceStatus& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    CHostDevices& m_devices;
};

// hrProcessorTable. A load that is not known yet has no instance.
//
// Ownership, Threads, Errors: as CHrDeviceTable.
// Contract:  as CHostDevices and CProcessorLoads.
class CHrProcessorTable : public BMibTableImpl {
public:
    enum EColumn { eFrwId = 1, eLoad = 2 };

    explicit CHrProcessorTable(CHostDevices& devices);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override;

private:
    int OnGet_FrwId(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value);
    int OnGet_Load(const BObjectIdentifier& index, unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    CHostDevices& m_devices;
};

} // namespace VLK::modules
