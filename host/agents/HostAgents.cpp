#include "host/agents/HostAgents.h"

#include <new>

namespace VLK::host {

namespace {

BString TextOf(const std::string& text)
{
    return BString(text.data(), static_cast<unsigned>(text.size()));
}

} // namespace

BHostAgents::BHostAgents(BTime& time, BAccess& access, BTrapGate& gate)
    : m_registry(time), m_access(access), m_gate(gate)
{
}

void BHostAgents::Open(IEngine& engine, const SConfiguration& configuration)
{
    for (const BTransportAddress& address : configuration.listen) {
        m_listening.push_back(std::make_unique<BListenAgent>(engine, address));
        Register(m_listening.back()->Address().ToString(), *m_listening.back());
    }
    auto upTime = [this] { return m_upTime.Ticks(); };
    for (const STrapSink& sink : configuration.trapSinks) {
        m_sinks.push_back(std::make_unique<BSinkAgent>(engine, sink, m_access, upTime));
        Register("trap:" + sink.address.ToString(), *m_sinks.back());
    }
}

// One receiver may be there more than once, under several communities.
void BHostAgents::Register(const std::string& name, BAgent& agent)
{
    std::string unique = name;
    for (int number = 2; m_registry.GetAgent(TextOf(unique)); ++number)
        unique = name + "#" + std::to_string(number);
    if (m_registry.Register(TextOf(unique), &agent) != 0)
        throw std::bad_alloc();
}

void BHostAgents::Start()
{
    m_registry.Init();
    m_registry.Start();
    m_gate.Open(m_registry);
    const BTrapOIDs* oids = BTrapOIDs::GetInstance();
    if (!oids)
        throw std::bad_alloc();
    m_gate.SendTrap(BTrapV1(oids->SnmpTraps(), eTrapColdStart, 0), nullptr);
}

void BHostAgents::Stop() { m_gate.Close(); }

std::vector<BTransportAddress> BHostAgents::Addresses() const
{
    std::vector<BTransportAddress> addresses;
    for (const std::unique_ptr<BListenAgent>& agent : m_listening)
        addresses.push_back(agent->Address());
    return addresses;
}

} // namespace VLK::host
