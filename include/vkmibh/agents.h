// The protocol agents of a process, driven together.
#pragma once

#include <vkmibh/cmdhandler.h>
#include <vkmibh/traps.h>

namespace VLK {

class BTime;

// What the registry returns beside the agents' own statuses.
constexpr int kAgentNameTaken = static_cast<int>(0x80010011u);
constexpr int kAgentRegistered = static_cast<int>(0x80010012u); // under another name
constexpr int kAgentNotStored = static_cast<int>(0x80010013u);
constexpr int kAgentUnknown = static_cast<int>(0x80010014u);
constexpr int kAgentThrew = -1; // the status of an agent that throws

// One protocol agent, for instance SNMP on one address. The host derives it.
//
//   class CUdpAgent : public BAgent {
//       int SendTrap(const BTrap& trap, int flag) override;
//       ...
//
// Ownership: the host's.
// Threads:   called on the thread that drives the registry, and SendTrap() on
//            those that raise traps, beside one another and beside the rest.
// Errors:    0 = done, any other status is the agent's own. `flag` is always 0.
// Contract:  slot order is ABI.
class VKMIBH_API BAgent {
public:
    BAgent() = default;
    BAgent(const BAgent&) = delete;
    BAgent& operator=(const BAgent&) = delete;

    // Virtual operations, in slot order.
    virtual ~BAgent();
    virtual int SendTrap(const BTrap& trap, int flag) = 0;
    virtual int Init(int flag) = 0;
    // Stops answering until Resume(), and may keep what it has open.
    virtual int Suspend(int flag) = 0;
    virtual int Resume(int flag) = 0;
    virtual int Start(int flag) = 0;
    virtual int Stop(int flag) = 0;
    // Its parameters for the operator, in lines without the last line's end.
    virtual BString GetParams() = 0;
};

// What code that raises traps sees of the agents.
//
// Ownership: stays with its maker, and the trap with its own.
// Threads:   as the derived class says.
// Errors:    none are reported: traps are not acknowledged.
// Contract:  slot order is ABI.
class VKMIBH_API ITrapSender {
public:
    virtual ~ITrapSender();
    // Through the agent of that name, if there is one; null: through all.
    virtual void SendTrap(const BTrap& trap, const char* agentName) = 0;
};

// The agents by name, and the console's commands "agents" and "agparams".
//
//   BAgents agents(time);
//   agents.Register("udp", &udpAgent);
//   if (agents.Init() != 0 || agents.Start() != 0)
//       agents.Stop();
//   console.Register(&agents);
//
// Ownership: not of the agents, which outlive it, nor of the clock.
// Threads:   no lock inside: one thread registers, before Init() and Start(), and
//            one drives. After that SendTrap() and the queries may run side by
//            side; a host that does otherwise guards it.
// Errors:    the agents' statuses and the codes above; 0 = done. Init() and Start()
//            go on after a failure and return the last one; Stop(), Suspend() and
//            Resume() end at the first. A console text without memory is not
//            written; what a stream throws ends the command.
// Contract:  slot order and field order are ABI.
class VKMIBH_API BAgents : public ITrapSender, public BCmdHandler {
public:
    static const SCmdMapEntry s_cliEntries[];
    static const char s_cmdHandlerName[];

    // Start() records the start time of that clock.
    explicit BAgents(BTime& time);

    // A null agent is not stored.
    int Register(const BString& name, BAgent* agent);
    int Init();
    int Start();
    int Stop();
    int Suspend();
    int Suspend(const BString& name);
    int Resume();
    int Resume(const BString& name);

    BAgent* GetAgent(const BString& name) const;
    // In the order of the names; the index is not checked.
    BAgent* AgentAt(int index) const;
    int GetNumAgents() const { return static_cast<int>(m_agents.Count()); }

    // Virtual operations, in slot order.
    ~BAgents() override;
    void SendTrap(const BTrap& trap, const char* agentName) override;
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& secParams, const BString& contextName) override;
    const char* CmdGetHndlrName() const override;
    const SCmdMapEntry* CmdGetMap() const override;

private:
    friend struct SLayoutCheck;
    VKMIBH_LOCAL void Execute(int command, ICmdStream& out, const BStringArray& args);
    VKMIBH_LOCAL void ExecuteAgents(ICmdStream& out, const BString& argument);
    VKMIBH_LOCAL void List(ICmdStream& out) const;
    VKMIBH_LOCAL void DumpParams(const BString& name, ICmdStream& out) const;
    VKMIBH_LOCAL void DumpParamsAt(int index, ICmdStream& out) const;

    BMapStr2Ptr m_agents;
    BTime& m_time;
};

} // namespace VLK
