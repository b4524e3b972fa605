// An address that requests come to, as an agent of the operator's.
#pragma once

#include "host/Engine.h"

#include <vkmibh/agents.h>

namespace VLK::host {

// Suspended, it takes requests away and counts them; nobody gets an answer. It
// sends no traps.
//
// Ownership: outlives the engine.
// Threads:   any; one at a time drives it.
// Errors:    none: 0 always.
class BListenAgent : public BAgent {
public:
    // Throws BHostError.
    BListenAgent(IEngine& engine, const BTransportAddress& address);

    // As it is, also for port 0.
    const BTransportAddress& Address() const { return m_address; }
    const STraffic& Traffic() const { return m_traffic; }

    int SendTrap(const BTrap& trap, int flag) override;
    int Init(int flag) override;
    int Suspend(int flag) override;
    int Resume(int flag) override;
    int Start(int flag) override;
    int Stop(int flag) override;
    BString GetParams() override;

private:
    STraffic m_traffic;
    BTransportAddress m_address;
};

} // namespace VLK::host
