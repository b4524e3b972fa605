#include "host/agents/HostAgents.h"

#include "host/HostError.h"

#include <algorithm>
#include <new>
#include <utility>

namespace VLK::host {

namespace {

template <class TNamed>
bool IsTaken(const std::vector<TNamed>& all, const std::string& name)
{
    return std::any_of(all.begin(), all.end(),
                       [&](const TNamed& named) { return named.name == name; });
}

// One receiver may be there more than once, under several communities.
template <class TNamed>
std::string FreeName(const std::string& name, const std::vector<TNamed>& taken)
{
    std::string unique = name;
    for (int number = 2; IsTaken(taken, unique); ++number)
        unique = name + "#" + std::to_string(number);
    return unique;
}

template <class TRows>
void EraseReadOnly(TRows& rows)
{
    for (auto at = rows.begin(); at != rows.end();)
        at = at->second.storage == eStorageReadOnly ? rows.erase(at) : std::next(at);
}

// Without the rows of the configuration.
modules::STargets Managed(modules::STargets rows)
{
    EraseReadOnly(rows.addresses);
    EraseReadOnly(rows.params);
    EraseReadOnly(rows.notifies);
    return rows;
}

} // namespace

BHostAgents::BHostAgents(BTime& time, BAccess& access, BTrapGate& gate, modules::CTargetRows& rows)
    : m_list(time), m_access(access), m_gate(gate), m_rows(rows)
{
}

void BHostAgents::Open(IEngine& engine, const SConfiguration& configuration)
{
    m_engine = &engine;
    for (const BTransportAddress& address : configuration.listen)
        m_listening.push_back(std::make_shared<BListenAgent>(engine, address));
    const BLock lock(m_changes);
    if (configuration.v3)
        m_users = configuration.users;
    Configure(configuration.trapSinks, eRefusalThrown);
    m_managed = Managed(m_rows.Copy());
    Select(eRefusalLogged); // what managers set keeps no agent from its start
}

void BHostAgents::SetSinks(const std::vector<STrapSink>& sinks)
{
    const BLock lock(m_changes);
    Configure(sinks, eRefusalLogged);
}

void BHostAgents::SetUsers(const std::vector<SUser>& users)
{
    const BLock lock(m_changes);
    m_users = users;
}

void BHostAgents::FollowTables()
{
    const BLock lock(m_changes);
    if (!(m_rows.TakeChange() || m_isStale) || !m_engine)
        return;
    m_isStale = true;
    m_managed = Managed(m_rows.Copy());
    Select(eRefusalLogged);
    m_isStale = false;
}

void BHostAgents::Configure(const std::vector<STrapSink>& sinks, ERefusal refusal)
{
    modules::STargets rows = RowsOf(sinks);
    m_rows.ReplaceReadOnly(rows);
    m_configured = std::move(rows);
    Select(refusal);
}

void BHostAgents::Select(ERefusal refusal)
{
    modules::STargets all = m_configured;
    all.addresses.insert(m_managed.addresses.begin(), m_managed.addresses.end());
    all.params.insert(m_managed.params.begin(), m_managed.params.end());
    all.notifies.insert(m_managed.notifies.begin(), m_managed.notifies.end());
    const std::shared_ptr<SRights> rights = m_access.Current();
    SReceivers receivers = ReceiversOf(all, rights->communities, m_users);
    Change(receivers.sinks, refusal);
    Tell(std::move(receivers.problems));
}

// Those that are new: SETs of other rows find the old ones again.
void BHostAgents::Tell(std::vector<std::string> problems)
{
    for (const std::string& problem : problems) {
        if (std::find(m_problems.begin(), m_problems.end(), problem) == m_problems.end())
            m_log.Write([&] { return problem; });
    }
    m_problems = std::move(problems);
}

void BHostAgents::Change(const std::vector<STrapSink>& sinks, ERefusal refusal)
{
    CSinks gone = m_sinks;
    CSinks next = Keep(sinks, gone);
    std::vector<std::shared_ptr<BSinkAgent>> added;
    try {
        added.reserve(next.size());
        Add(sinks, refusal, next, added);
        Publish(next);
    } catch (...) {
        for (const std::shared_ptr<BSinkAgent>& agent : added)
            agent->Leave();
        throw;
    }
    m_sinks.swap(next);
    for (const SSink& sink : gone)
        sink.agent->Leave();
}

// The agents that there are for these sinks, which are taken out of `all`; none where
// one has to be made.
BHostAgents::CSinks BHostAgents::Keep(const std::vector<STrapSink>& sinks, CSinks& all)
{
    CSinks kept(sinks.size());
    for (size_t i = 0; i < sinks.size(); ++i) {
        auto found = std::find_if(all.begin(), all.end(), [&](const SSink& candidate) {
            return candidate.agent->Sink() == sinks[i];
        });
        if (found == all.end())
            continue;
        kept[i] = std::move(*found);
        all.erase(found);
    }
    return kept;
}

// Makes those that are missing, and leaves out those that cannot be. There is room for
// all in `added`.
void BHostAgents::Add(const std::vector<STrapSink>& sinks, ERefusal refusal, CSinks& next,
                      std::vector<std::shared_ptr<BSinkAgent>>& added)
{
    for (size_t i = 0; i < sinks.size(); ++i) {
        if (next[i].agent)
            continue;
        next[i].name = FreeName("trap:" + sinks[i].address.ToString(), next);
        next[i].agent = Make(sinks[i], refusal);
        if (next[i].agent)
            added.push_back(next[i].agent);
    }
    next.erase(
        std::remove_if(next.begin(), next.end(), [](const SSink& sink) { return !sink.agent; }),
        next.end());
}

std::shared_ptr<BSinkAgent> BHostAgents::Make(const STrapSink& sink, ERefusal refusal)
{
    try {
        auto agent = std::make_shared<BSinkAgent>(*m_engine, sink, m_access,
                                                  [this] { return m_upTime.Ticks(); });
        if (agent->Sink() == sink)
            return agent;
        agent->Leave(); // there was no memory for its texts
        throw std::bad_alloc();
    } catch (const BHostError& error) {
        if (refusal == eRefusalThrown)
            throw;
        m_log.Write([&] { return std::string(error.what()); });
        return nullptr;
    }
}

void BHostAgents::Publish(const CSinks& sinks)
{
    std::vector<BAgentList::SNamed> all;
    for (const std::shared_ptr<BListenAgent>& agent : m_listening)
        all.push_back({FreeName(agent->Address().ToString(), all), agent});
    for (const SSink& sink : sinks)
        all.push_back({sink.name, sink.agent});
    m_list.Replace(std::move(all));
}

void BHostAgents::Start()
{
    std::shared_ptr<BAgents> registry = m_list.Registry();
    registry->Init();
    registry->Start();
    m_gate.Open(m_list);
    const BTrapOIDs* oids = BTrapOIDs::GetInstance();
    if (!oids)
        throw std::bad_alloc();
    m_gate.SendTrap(BTrapV1(oids->SnmpTraps(), eTrapColdStart, 0), nullptr);
}

void BHostAgents::Stop() { m_gate.Close(); }

std::vector<BTransportAddress> BHostAgents::Addresses() const
{
    std::vector<BTransportAddress> addresses;
    for (const std::shared_ptr<BListenAgent>& agent : m_listening)
        addresses.push_back(agent->Address());
    return addresses;
}

SAgentTotals BHostAgents::Totals()
{
    SAgentTotals totals;
    for (const std::shared_ptr<BListenAgent>& agent : m_listening)
        totals.overload += agent->Traffic().overload;
    const BLock lock(m_changes);
    for (const SSink& sink : m_sinks) {
        const SDelivery& delivery = sink.agent->Delivery();
        ++totals.receivers;
        totals.sent += delivery.sent;
        totals.failed += delivery.failed;
        totals.notShown += sink.agent->NotShown();
        totals.overflowed += delivery.overflowed;
        totals.acknowledged += delivery.acknowledged;
        totals.retried += delivery.retried;
        totals.givenUp += delivery.givenUp;
    }
    return totals;
}

} // namespace VLK::host
