#include "modules/interfaces/LinkHistory.h"

#include "modules/interfaces/Snapshots.h"

#include <algorithm>

namespace VLK::modules {

namespace {

bool IsDown(EIfStatus status) { return status == eIfDown || status == eIfLowerLayerDown; }

// Whether notifications tell of it.
bool IsTransition(EIfStatus before, EIfStatus now)
{
    return IsDown(before) != IsDown(now) && before != eIfNotPresent && now != eIfNotPresent;
}

bool HasIndex(const SInterface& link, unsigned index) { return link.index < index; }

bool IsAmong(const std::vector<SInterface>& links, unsigned index)
{
    const auto found = std::lower_bound(links.begin(), links.end(), index, HasIndex);
    return found != links.end() && found->index == index;
}

} // namespace

CLinkHistory::Transitions CLinkHistory::Changed(const SInterface& link, std::uint64_t now)
{
    TMutexLock lock(m_lock);
    Transitions transitions;
    Take(link, now, transitions);
    return transitions;
}

void CLinkHistory::Gone(unsigned index, std::uint64_t now)
{
    TMutexLock lock(m_lock);
    Drop(index, now);
}

CLinkHistory::Transitions CLinkHistory::Compare(const std::vector<SInterface>& links,
                                                std::uint64_t now)
{
    TMutexLock lock(m_lock);
    Transitions transitions;
    const std::uint64_t since = m_hasBegun ? now : 0;
    std::vector<unsigned> gone;
    for (const auto& [index, link] : m_links) {
        if (!IsAmong(links, index))
            gone.push_back(index);
    }
    for (unsigned index : gone)
        Drop(index, since);
    for (const SInterface& link : links)
        Take(link, since, transitions);
    m_hasBegun = true;
    return transitions;
}

void CLinkHistory::Take(const SInterface& link, std::uint64_t now, Transitions& transitions)
{
    const auto found = m_links.find(link.index);
    if (found == m_links.end()) {
        m_links.emplace(link.index, SLink{link, now, now});
        m_tableLastChange = now;
        return;
    }
    SLink& known = found->second;
    SInterface last = link;
    const EIfStatus before = known.last.oper;
    if (IsTransition(before, link.oper)) {
        const bool isDown = IsDown(link.oper);
        transitions.push_back({isDown ? SLinkTransition::eLinkDown : SLinkTransition::eLinkUp,
                               link.index, link.name, IsOnTop(link), link.admin,
                               isDown ? before : link.oper});
    }
    known.last = std::move(last);
    if (before != link.oper)
        known.lastChange = now;
}

void CLinkHistory::Drop(unsigned index, std::uint64_t now)
{
    if (m_links.erase(index) > 0)
        m_tableLastChange = now;
}

bool CLinkHistory::IsOnTop(const SInterface& link) const
{
    return link.hasLowerLayer || std::any_of(m_links.begin(), m_links.end(), [&](const auto& item) {
               return item.second.last.master == link.index;
           });
}

void CLinkHistory::Stamp(SSnapshot& snapshot, std::uint64_t now) const
{
    TMutexLock lock(m_lock);
    if (!m_hasBegun)
        return;
    bool isSame = snapshot.rows.size() == m_links.size();
    for (SIfRow& row : snapshot.rows) {
        const auto found = m_links.find(row.index);
        const bool isKnown = found != m_links.end();
        isSame = isSame && isKnown;
        const bool isUnchanged = isKnown && found->second.last.oper == row.oper;
        row.lastChange = isUnchanged ? found->second.lastChange : now;
        row.discontinuity = std::max(row.decreasedAt, isKnown ? found->second.appeared : now);
    }
    snapshot.tableLastChange = isSame ? m_tableLastChange : now;
}

} // namespace VLK::modules
