// SNMP-TARGET-MIB and SNMP-NOTIFICATION-MIB (RFC 3413 section 4).
#pragma once

#include "modules/SnmpCounters.h"
#include "modules/SpinLock.h"
#include "modules/targets/TargetTables.h"

namespace VLK::modules {

class CTargetSpinLock : public CSpinLock {
public:
    explicit CTargetSpinLock(int value = AnyValue())
        : CSpinLock("SNMP-TARGET-MIB.snmpTargetSpinLock", "1.3.6.1.6.3.12.1.1", value)
    {
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
};

// snmpUnavailableContexts and snmpUnknownContexts. A context that there is, is available.
class CContextCounters : public BMibRowImpl {
public:
    explicit CContextCounters(const SSnmpCounters& counters);
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet_Unavailable(unsigned id, unsigned& value);
    int OnGet_Unknown(unsigned id, unsigned& value);

    static SRqHndlrMapEntry s_map[];

    const SSnmpCounters& m_counters;
};

// Where notifications go, as managers set it; the host sends them there. Not there are the
// filters of notifications (snmpNotifyFilterTable), which RFC 3413 leaves to the agent.
//
// Ownership: of neither store nor counters, which outlive it; the store may be null, and
//            what managers set is not kept then.
// Threads:   as BMibTableImplEx and TNamedRows.
// Errors:    the constructor throws std::bad_alloc, and what the store throws.
class CTargetModule : public BMibImplGroup {
public:
    CTargetModule(INonVolatile* store, const SSnmpCounters& counters);

    CTargetRows& Rows() { return m_rows; }

    int GetNumImpls() override { return 5; }
    BMibImpl* GetImplAt(int index) override;

private:
    CTargetRows m_rows;
    CTargetSpinLock m_spinLock;
    CTargetAddrTable m_addresses;
    CTargetParamsTable m_params;
    CContextCounters m_contexts;
    CNotifyTable m_notifies;
};

} // namespace VLK::modules
