#include "host/agents/ListenAgent.h"

#include "host/agents/Parameters.h"

namespace VLK::host {

BListenAgent::BListenAgent(IEngine& engine, const BTransportAddress& address)
    : m_address(engine.Open(address, m_traffic))
{
}

int BListenAgent::SendTrap(const BTrap&, int) { return 0; }

int BListenAgent::Init(int) { return 0; }

int BListenAgent::Suspend(int)
{
    m_traffic.isSuspended = true;
    return 0;
}

int BListenAgent::Resume(int)
{
    m_traffic.isSuspended = false;
    return 0;
}

int BListenAgent::Start(int flag) { return Resume(flag); }

int BListenAgent::Stop(int flag) { return Suspend(flag); }

BString BListenAgent::GetParams()
{
    return BParameters()
        .Add("address", m_address.ToString())
        .Add("state", m_traffic.isSuspended ? "suspended" : "running")
        .Add("received", m_traffic.received)
        .Add("answered", m_traffic.answered)
        .Add("dropped while suspended", m_traffic.dropped)
        .Add("dropped for want of a thread", m_traffic.overload)
        .Text();
}

} // namespace VLK::host
