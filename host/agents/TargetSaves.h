// What a SET has made of the receivers of notifications comes true with its save.
#pragma once

#include "host/Log.h"
#include "host/SetSaves.h"
#include "host/agents/HostAgents.h"

#include <new>

namespace VLK::host {

// Ownership: saves and agents outlive it.
// Threads:   those that set; one at a time.
class BTargetSaves : public ISetSaves {
public:
    BTargetSaves(ISetSaves& saves, BHostAgents& agents) : m_saves(saves), m_agents(agents) {}

    void Hold() override { m_saves.Hold(); }
    bool SaveHeld() override
    {
        const bool isSaved = m_saves.SaveHeld();
        try {
            m_agents.FollowTables();
        } catch (const std::bad_alloc&) {
            LogLine(eLogError,
                    "no memory to send notifications as managers have set it: the next SET "
                    "tries again");
        }
        return isSaved;
    }

private:
    ISetSaves& m_saves;
    BHostAgents& m_agents;
};

} // namespace VLK::host
