// The way of traps to the agents, open while there are any.
#pragma once

#include <mutex>
#include <shared_mutex>
#include <vkmibh/agents.h>

namespace VLK::host {

// Passes traps on to a sender, and before Open() and after Close() to nobody.
//
// Ownership: the sender outlives the time that it is open for it.
// Threads:   any. Close() waits for traps that are being passed on.
// Errors:    none.
class BTrapGate : public ITrapSender {
public:
    void Open(ITrapSender& agents) { Set(&agents); }
    void Close() { Set(nullptr); }

    void SendTrap(const BTrap& trap, const char* agentName) override
    {
        std::shared_lock<std::shared_mutex> lock(m_lock);
        if (m_agents)
            m_agents->SendTrap(trap, agentName);
    }

private:
    void Set(ITrapSender* agents)
    {
        std::lock_guard<std::shared_mutex> lock(m_lock);
        m_agents = agents;
    }

    std::shared_mutex m_lock; // shared by those that raise traps
    ITrapSender* m_agents = nullptr;
};

} // namespace VLK::host
