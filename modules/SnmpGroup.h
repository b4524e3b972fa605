// The snmp group of SNMPv2-MIB (RFC 3418).
#pragma once

#include "modules/SnmpCounters.h"

#include <vkmibh/impl.h>
#include <vkmibh/nonvolatile.h>

namespace VLK::modules {

enum EAuthenTraps : int { eAuthenTrapsEnabled = 1, eAuthenTrapsDisabled = 2 };

// The counters of a protocol engine, and whether it tells of requests that fail
// their authentication: as it is told at first, until a manager or the store says
// something else.
//
// Ownership: of neither counters nor store, which outlive it; the store may be
//            null, and nothing is kept then.
// Threads:   as BMibScalarGroupImpl; AreTrapsEnabled() may be asked by any.
// Errors:    as BMibScalarGroupImpl.
// Contract:  the objects that RFC 3418 made obsolete are not there.
class CSnmpGroup : public BMibScalarGroupImpl, private INVCallback {
public:
    CSnmpGroup(const SSnmpCounters& counters, INonVolatile* store,
               EAuthenTraps first = eAuthenTrapsDisabled);

    // What it is told at first is another value now: the same rule. Not while a SET is at
    // work.
    void SetFirst(EAuthenTraps first);
    bool AreTrapsEnabled() const { return m_authenTraps == eAuthenTrapsEnabled; }

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    struct SState {
        EAuthenTraps value;
        bool isManaged;
    };
    template <SSnmpCounters::CCounter SSnmpCounters::*counter>
    int OnGet(unsigned, unsigned& value)
    {
        value = m_counters.*counter;
        return eSnmpNoError;
    }
    int OnGet_EnableAuthenTraps(unsigned id, EAuthenTraps& value);
    int OnSet_EnableAuthenTraps(ESnmpSetOpCode op, unsigned id, EAuthenTraps value, void** slot);
    void Change(const SState& state);
    int Update() override;

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    const SSnmpCounters& m_counters;
    INonVolatile* m_store;
    std::atomic<EAuthenTraps> m_authenTraps;
    std::atomic<bool> m_isManaged; // a manager or the store has said what it is
};

class CSnmpModule : public BMibImplGroup {
public:
    CSnmpModule(const SSnmpCounters& counters, INonVolatile* store,
                EAuthenTraps first = eAuthenTrapsDisabled)
        : BMibImplGroup(BString("SNMPv2-MIB.snmp")), m_group(counters, store, first)
    {
    }
    CSnmpGroup& Group() { return m_group; }
    const CSnmpGroup& Group() const { return m_group; }
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_group; }

private:
    CSnmpGroup m_group;
};

} // namespace VLK::modules
