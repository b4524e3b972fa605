// The agents of the moment, which come and go while the agent runs.
#pragma once

#include "host/Mutex.h"

#include <memory>
#include <string>
#include <vector>
#include <vkmibh/agents.h>

namespace VLK::host {

// A registry for each moment: it is never changed, but replaced by another one. Who has
// one may use it as long as he likes, and the agents in it.
//
// Ownership: shares the agents; the clock outlives it.
// Threads:   any.
// Errors:    Replace() throws std::bad_alloc, and nothing is replaced then.
class BAgentList : public ITrapSender, public BCmdHandler {
public:
    struct SNamed {
        std::string name;
        std::shared_ptr<BAgent> agent;
    };

    explicit BAgentList(BTime& time);

    // Names and agents are there once each.
    void Replace(std::vector<SNamed> agents);
    std::shared_ptr<BAgents> Registry() const;

    void SendTrap(const BTrap& trap, const char* agentName) override;
    int CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                   const BSecurityParams& secParams, const BString& contextName) override;
    const char* CmdGetHndlrName() const override { return BAgents::s_cmdHandlerName; }
    const SCmdMapEntry* CmdGetMap() const override { return BAgents::s_cliEntries; }

private:
    struct SMoment;

    BTime& m_time;
    mutable BMutex m_lock;
    std::shared_ptr<SMoment> m_now VKMIBH_TSA(guarded_by(m_lock));
};

} // namespace VLK::host
