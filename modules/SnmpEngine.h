// The engine of SNMPv3: snmpEngine of SNMP-FRAMEWORK-MIB (RFC 3411), snmpMPDStats of
// SNMP-MPD-MIB (RFC 3412) and usmStats of SNMP-USER-BASED-SM-MIB (RFC 3414).
#pragma once

#include "modules/SnmpCounters.h"

#include <chrono>
#include <string>
#include <vkmibh/impl.h>

namespace VLK::modules {

struct SSnmpEngine {
    std::string id;
    int boots = 0;
    int maxMessage = 0;
};

// snmpEngineTime counts from the construction.
//
// Ownership: copies what it is told.
// Threads:   as BMibScalarGroupImpl.
// Errors:    as BMibScalarGroupImpl.
class CSnmpEngine : public BMibScalarGroupImpl {
public:
    explicit CSnmpEngine(const SSnmpEngine& engine);

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet_Id(unsigned id, BOctetString& value);
    int OnGet_Boots(unsigned id, int& value);
    int OnGet_Time(unsigned id, int& value);
    int OnGet_MaxMessage(unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];

    const SSnmpEngine m_engine;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// Counters, all of them Counter32 and read-only.
//
// Ownership: not of the counters, which outlive it.
// Threads:   as BMibScalarGroupImpl.
// Errors:    as BMibScalarGroupImpl.
class CCounterGroup : public BMibScalarGroupImpl {
protected:
    CCounterGroup(const char* name, const char* oid, const SSnmpCounters& counters)
        : BMibScalarGroupImpl(BString(name), BObjectIdentifier(BString(oid))), m_counters(counters)
    {
    }
    template <SSnmpCounters::CCounter SSnmpCounters::*counter>
    int OnGet(unsigned, unsigned& value)
    {
        value = m_counters.*counter;
        return eSnmpNoError;
    }

private:
    const SSnmpCounters& m_counters;
};

class CMpdStats : public CCounterGroup {
public:
    explicit CMpdStats(const SSnmpCounters& counters);
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
};

class CUsmStats : public CCounterGroup {
public:
    explicit CUsmStats(const SSnmpCounters& counters);
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
};

class CSnmpEngineModule : public BMibImplGroup {
public:
    CSnmpEngineModule(const SSnmpEngine& engine, const SSnmpCounters& counters);

    int GetNumImpls() override { return 3; }
    BMibImpl* GetImplAt(int index) override;

private:
    CSnmpEngine m_engine;
    CMpdStats m_dispatcher;
    CUsmStats m_users;
};

} // namespace VLK::modules
