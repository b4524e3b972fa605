#include "modules/interfaces/Snapshots.h"

#include "modules/interfaces/LinkHistory.h"

#include <algorithm>
#include <set>
#include <vkmibh/transactions.h>

namespace VLK::modules {

namespace {

bool IsBefore(const SIfRow& row, unsigned index) { return row.index < index; }
bool IsAfter(unsigned index, const SIfRow& row) { return index < row.index; }

constexpr CCounter SIfCounters::*kCounters[] = {
    &SIfCounters::inOctets,     &SIfCounters::inUcastPkts, &SIfCounters::inMulticastPkts,
    &SIfCounters::inDiscards,   &SIfCounters::inErrors,    &SIfCounters::outOctets,
    &SIfCounters::outUcastPkts, &SIfCounters::outDiscards, &SIfCounters::outErrors,
};

// 64 bits do not wrap while anybody looks: what got less started anew.
bool HasDecreased(const SIfCounters& before, const SIfCounters& now)
{
    return std::any_of(std::begin(kCounters), std::end(kCounters), [&](auto counter) {
        return before.*counter && now.*counter && *(now.*counter) < *(before.*counter);
    });
}

bool IsOpen(unsigned transactionId)
{
    BTransactions* const transactions = BTransactions::GetInstance();
    return transactions && transactions->GetProtocolId(transactionId) != -1;
}

} // namespace

const SIfRow* SSnapshot::Find(unsigned index) const
{
    const auto found = std::lower_bound(rows.begin(), rows.end(), index, IsBefore);
    return found != rows.end() && found->index == index ? &*found : nullptr;
}

const SIfRow* SSnapshot::After(unsigned index) const
{
    const auto found = std::upper_bound(rows.begin(), rows.end(), index, IsAfter);
    return found != rows.end() ? &*found : nullptr;
}

CSnapshots::CSnapshots(IInterfaces& source, const CLinkHistory& history, unsigned timeToLive,
                       FUptime upTime)
    : m_source(source), m_history(history), m_timeToLive(timeToLive), m_upTime(std::move(upTime))
{
}

std::shared_ptr<const SSnapshot> CSnapshots::Of(unsigned transactionId)
{
    TMutexLock lock(m_lock);
    for (const SSeen& seen : m_seen) {
        if (seen.transactionId == transactionId)
            return seen.snapshot;
    }
    if (!IsFresh())
        Refresh();
    Keep(transactionId);
    return m_newest;
}

void CSnapshots::Keep(unsigned transactionId)
{
    const auto isOver = [](const SSeen& seen) { return !IsOpen(seen.transactionId); };
    m_seen.erase(std::remove_if(m_seen.begin(), m_seen.end(), isOver), m_seen.end());
    // An id that is not open may be anybody's, and the next one's too.
    if (IsOpen(transactionId))
        m_seen.push_back(SSeen{transactionId, m_newest});
}

bool CSnapshots::IsFresh() const { return m_newest && m_upTime() - m_takenAt < m_timeToLive; }

void CSnapshots::Refresh()
{
    // Before the question, so that none is older than it says.
    const std::uint64_t now = m_upTime();
    std::vector<SInterface> all = m_source.Read();
    auto snapshot = std::make_shared<SSnapshot>();
    snapshot->rows.reserve(all.size());
    std::set<unsigned> masters;
    for (SInterface& interface : all) {
        if (interface.master != 0)
            masters.insert(interface.master);
        snapshot->rows.push_back(SIfRow{std::move(interface), false, 0, {}, {}});
    }
    for (SIfRow& row : snapshot->rows) {
        row.isOnTop = row.hasLowerLayer || masters.count(row.index) > 0;
        const SIfRow* const before = m_newest ? m_newest->Find(row.index) : nullptr;
        if (before)
            row.decreasedAt =
                HasDecreased(before->counters, row.counters) ? now : before->decreasedAt;
    }
    m_history.Stamp(*snapshot, now);
    m_newest = std::move(snapshot);
    m_takenAt = now;
}

} // namespace VLK::modules
