// The agents of vkagentd: one for each address that it listens on, and one for
// each receiver of its traps.
#pragma once

#include "host/Mutex.h"
#include "host/SysUpTime.h"
#include "host/agents/AgentList.h"
#include "host/agents/ListenAgent.h"
#include "host/agents/SinkAgent.h"
#include "host/agents/Targets.h"
#include "host/agents/TrapGate.h"

#include <memory>
#include <string>
#include <vector>

namespace VLK::host {

// Of all addresses and all receivers together.
struct SAgentTotals {
    uint64_t overload = 0; // requests dropped for want of a thread
    uint64_t receivers = 0;
    uint64_t sent = 0;
    uint64_t failed = 0;
    uint64_t notShown = 0;
    uint64_t overflowed = 0;
    uint64_t acknowledged = 0;
    uint64_t retried = 0;
    uint64_t givenUp = 0;
};

// Start() opens the gate and raises coldStart; Stop() closes it.
//
//   BHostAgents agents(time, access, gate);
//   BNetSnmpEngine engine(...);
//   agents.Open(engine, configuration);
//   agents.Start();
//   engine.Serve(...);
//   agents.Stop(); // before the engine goes
//
// Ownership: outlives the engine, and is not used when that is gone; clock, access
//            control, gate and rows outlive it.
// Threads:   one, but for SetSinks(), SetUsers() and FollowTables(), which any may call from Open()
//            to the engine's end, and the registry, which is anybody's.
// Errors:    Open() throws BHostError, and std::bad_alloc as SetSinks() does.
class BHostAgents {
public:
    BHostAgents(BTime& time, BAccess& access, BTrapGate& gate, modules::CTargetRows& rows);

    void Open(IEngine& engine, const SConfiguration& configuration);
    void Start();
    void Stop();

    // Makes these the sinks of the configuration, beside the receivers that managers
    // have set, at once. Those that were there before stay as they are, with their
    // counters and the informs that they have not acknowledged. One that cannot be sent
    // to is told in the log and left out. Without memory it throws, and those that
    // there were go on.
    void SetSinks(const std::vector<STrapSink>& sinks);
    // Those that messages can be sent as from the next SetSinks() on.
    void SetUsers(const std::vector<SUser>& users);
    // Makes what managers have set come true, once a SET is over.
    void FollowTables();

    // Where it listens, in the order of the configuration.
    std::vector<BTransportAddress> Addresses() const;
    // As it is now.
    std::shared_ptr<BAgents> Registry() const { return m_list.Registry(); }
    ICmdHandler& Commands() { return m_list; }

    // Of those that are there now. On any thread, once they are open.
    SAgentTotals Totals();

private:
    struct SSink {
        std::string name;
        std::shared_ptr<BSinkAgent> agent;
    };
    using CSinks = std::vector<SSink>;
    enum ERefusal { eRefusalThrown, eRefusalLogged };

    void Configure(const std::vector<STrapSink>& sinks, ERefusal refusal)
        VKMIBH_TSA(requires_capability(m_changes));
    void Select(ERefusal refusal) VKMIBH_TSA(requires_capability(m_changes));
    void Tell(std::vector<std::string> problems) VKMIBH_TSA(requires_capability(m_changes));
    void Change(const std::vector<STrapSink>& sinks, ERefusal refusal)
        VKMIBH_TSA(requires_capability(m_changes));
    static CSinks Keep(const std::vector<STrapSink>& sinks, CSinks& all);
    void Add(const std::vector<STrapSink>& sinks, ERefusal refusal, CSinks& next,
             std::vector<std::shared_ptr<BSinkAgent>>& added);
    std::shared_ptr<BSinkAgent> Make(const STrapSink& sink, ERefusal refusal);
    void Publish(const CSinks& sinks);

    BAgentList m_list;
    BAccess& m_access;
    BTrapGate& m_gate;
    modules::CTargetRows& m_rows;
    BSysUpTime m_upTime;
    IEngine* m_engine = nullptr;
    std::vector<std::shared_ptr<BListenAgent>> m_listening;
    BMutex m_changes; // is held for a change; the wire lock may be taken with it
    std::vector<SUser> m_users VKMIBH_TSA(guarded_by(m_changes));
    modules::STargets m_configured VKMIBH_TSA(guarded_by(m_changes));
    modules::STargets m_managed VKMIBH_TSA(guarded_by(m_changes)); // as the last SET has left them
    // There was no memory to follow the tables.
    bool m_isStale VKMIBH_TSA(guarded_by(m_changes)) = false;
    CSinks m_sinks VKMIBH_TSA(guarded_by(m_changes));
    std::vector<std::string> m_problems VKMIBH_TSA(guarded_by(m_changes)); // that were told
    BLimitedLog m_log{eLogWarning};
};

} // namespace VLK::host
