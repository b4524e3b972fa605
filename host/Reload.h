// Reading the configuration again, while the agent serves.
#pragma once

#include "host/Modules.h"
#include "host/Options.h"
#include "host/access/ReportingHandler.h"
#include "host/agents/HostAgents.h"
#include "host/wire/NetSnmpEngine.h"

namespace VLK::host {

// What a configuration is at work in.
struct SConfigured {
    BAccess& access;
    BReportingHandler& handler;
    BModules& modules;
    BNetSnmpEngine& engine;
    BHostAgents& agents;
};

// A configuration with mistakes is told with all of them, and the old one stays. What
// cannot change while the agent runs is told, each time that it differs. One that says
// the same changes nothing.
//
// Ownership: of nothing that it is given, which outlives it.
// Threads:   one at a time.
// Errors:    none are thrown: a line in the log tells.
class BReload {
public:
    BReload(const SOptions& options, const SConfiguration& started, const SConfigured& parts)
        : m_options(options), m_started(started), m_parts(parts)
    {
    }
    void Read() noexcept;

private:
    void Try(const SConfiguration& configuration);
    void Apply(const SConfiguration& configuration);
    void TellOfStart(const SConfiguration& configuration) const;

    const SOptions& m_options;
    const SConfiguration& m_started;
    SConfigured m_parts;
};

} // namespace VLK::host
