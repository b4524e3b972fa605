// The agents of vkagentd: one for each address that it listens on, and one for
// each receiver of its traps.
#pragma once

#include "host/SysUpTime.h"
#include "host/agents/ListenAgent.h"
#include "host/agents/SinkAgent.h"
#include "host/agents/TrapGate.h"
#include "host/config/Configuration.h"

#include <memory>
#include <vector>

namespace VLK::host {

// Start() opens the gate and raises coldStart; Stop() closes it.
//
//   BHostAgents agents(time, access, gate);
//   BNetSnmpEngine engine(...);
//   agents.Open(engine, configuration);
//   agents.Start();
//   engine.Serve(...);
//   agents.Stop(); // before the engine goes
//
// Ownership: outlives the engine; clock, access control and gate outlive it.
// Threads:   one, but for the registry, which the console's thread drives once it
//            is there, and whoever raises traps reads.
// Errors:    Open() throws BHostError.
class BHostAgents {
public:
    BHostAgents(BTime& time, BAccess& access, BTrapGate& gate);

    void Open(IEngine& engine, const SConfiguration& configuration);
    void Start();
    void Stop();

    // Where it listens, in the order of the configuration.
    std::vector<BTransportAddress> Addresses() const;
    // With the console's commands.
    BAgents& Registry() { return m_registry; }

private:
    void Register(const std::string& name, BAgent& agent);

    BAgents m_registry;
    BAccess& m_access;
    BTrapGate& m_gate;
    BSysUpTime m_upTime;
    std::vector<std::unique_ptr<BListenAgent>> m_listening;
    std::vector<std::unique_ptr<BSinkAgent>> m_sinks;
};

} // namespace VLK::host
