// The hrSystem group of HOST-RESOURCES-MIB (RFC 2790 section 6).
#pragma once

#include "modules/hostresources/Snapshot.h"

#include <vkmibh/impl.h>

namespace VLK::modules {

// All of it is read-only here. What the source does not know has no instance.
//
// Ownership: not of the source, which outlives it.
// Threads:   as BMibScalarGroupImpl.
// Errors:    as BMibScalarGroupImpl.
// Contract:  users and processes are those of a snapshot, the rest is read anew.
class CHrSystem : public BMibScalarGroupImpl {
public:
    CHrSystem(IHostSource& source, unsigned timeToLive);
    void SetTimeToLive(unsigned timeToLive) { m_processes.SetTimeToLive(timeToLive); }

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }

private:
    int OnGet_Uptime(unsigned id, unsigned& value);
    int OnGet_Date(unsigned id, BOctetString& value);
    int OnGet_InitialLoadDevice(unsigned id, int& value);
    int OnGet_InitialLoadParameters(unsigned id, BOctetString& value);
    int OnGet_NumUsers(unsigned id, unsigned& value);
    int OnGet_Processes(unsigned id, unsigned& value);
    int OnGet_MaxProcesses(unsigned id, int& value);

    static SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];

    IHostSource& m_source;
    TSnapshot<SHostProcesses> m_processes;
};

} // namespace VLK::modules
