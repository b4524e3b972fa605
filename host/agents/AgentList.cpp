#include "host/agents/AgentList.h"

#include <new>
#include <utility>

namespace VLK::host {

struct BAgentList::SMoment {
    explicit SMoment(BTime& time) : registry(time) {}

    std::vector<SNamed> agents;
    BAgents registry;
};

BAgentList::BAgentList(BTime& time) : m_time(time), m_now(std::make_shared<SMoment>(time)) {}

void BAgentList::Replace(std::vector<SNamed> agents)
{
    auto next = std::make_shared<SMoment>(m_time);
    next->agents = std::move(agents);
    for (const SNamed& named : next->agents) {
        const BString name(named.name.data(), static_cast<unsigned>(named.name.size()));
        if (next->registry.Register(name, named.agent.get()) != 0)
            throw std::bad_alloc();
    }
    // What was there before ends without the lock, if nobody else has it.
    const BLock lock(m_lock);
    m_now.swap(next);
}

std::shared_ptr<BAgents> BAgentList::Registry() const
{
    const BLock lock(m_lock);
    return {m_now, &m_now->registry};
}

void BAgentList::SendTrap(const BTrap& trap, const char* agentName)
{
    Registry()->SendTrap(trap, agentName);
}

int BAgentList::CmdExecute(ICmdStream& out, const BString& cmd, const BStringArray& args,
                           const BSecurityParams& secParams, const BString& contextName)
{
    return Registry()->CmdExecute(out, cmd, args, secParams, contextName);
}

} // namespace VLK::host
