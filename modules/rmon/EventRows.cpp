#include "modules/rmon/EventRows.h"

#include <algorithm>
#include <climits>

namespace VLK::modules {

namespace {

bool IsLogged(EEventType type) { return type == eEventLog || type == eEventLogAndTrap; }
bool IsSent(EEventType type) { return type == eEventTrap || type == eEventLogAndTrap; }

void Log(SEventRun& run, unsigned upTime, const std::string& what)
{
    SLogEntry entry;
    entry.time = upTime;
    const auto length = std::min<std::size_t>(what.size(), kLogTextMost);
    entry.description = BString(what.data(), static_cast<unsigned>(length));
    if (entry.description.length() != length)
        throw std::bad_alloc();
    if (run.lastNumber == INT_MAX) { // numbers rise through a log
        run.log.clear();
        run.lastNumber = 0;
    }
    entry.number = run.lastNumber + 1;
    run.log.push_back(std::move(entry));
    ++run.lastNumber;
    if (run.log.size() > kLogMost)
        run.log.pop_front();
}

auto Behind(const std::deque<SLogEntry>& log, unsigned number)
{
    return std::upper_bound(
        log.begin(), log.end(), number,
        [](unsigned wanted, const SLogEntry& entry) { return wanted < entry.number; });
}

} // namespace

CEventRows::CEventRows(INonVolatile* store) : TEntryRows(store)
{
    const int count = store ? store->GetRecordCount(Section()) : 0;
    for (int position = 0; position < count; ++position)
        LoadAt(position);
}

const char* CEventRows::Section() const { return "mib-2.rmon.eventTable"; }

void CEventRows::LoadAt(int position)
{
    unsigned index = 0;
    SEvent event;
    CEntryReader reader(*Store(), Section(), position);
    reader.Number(eEventIndex, index, 1, kIndexMost);
    reader.Text(eEventDescription, event.description, kEventTextMost);
    reader.Number(eEventType, event.type, eEventNone, eEventLogAndTrap);
    reader.Octets(eEventCommunity, event.community, kEventTextMost);
    reader.Text(eEventOwner, event.owner, kOwnerMost);
    if (!reader.IsGood())
        return;
    Change(index, [&](SEntry& entry) { entry.settings = CopyOf(event); });
    SetStatus(index, eEntryValid);
}

int CEventRows::SaveEntry(const char* key, unsigned index, const SEvent& event)
{
    CEntryWriter writer(*Store(), Section(), key);
    writer.Number(eEventIndex, static_cast<int>(index));
    writer.Text(eEventDescription, event.description);
    writer.Number(eEventType, event.type);
    writer.Octets(eEventCommunity, event.community);
    writer.Text(eEventOwner, event.owner);
    return writer.Status();
}

// The log of an event that is not valid is not shown, and gone when it is valid again.
void CEventRows::SetStatus(unsigned index, EEntryStatus status)
{
    TMutexLock lock(m_lock);
    SEntry& entry = m_entries[index];
    if (entry.status != eEntryValid)
        entry.run.log.clear();
    entry.status = status;
}

bool CEventRows::Happen(unsigned index, unsigned upTime, const std::string& what)
{
    TMutexLock lock(m_lock);
    const auto found = m_entries.find(index);
    if (found == m_entries.end() || found->second.status != eEntryValid)
        return false;
    SEntry& entry = found->second;
    entry.run.lastTimeSent = upTime;
    if (IsLogged(entry.settings.type))
        Log(entry.run, upTime, what);
    return IsSent(entry.settings.type);
}

bool CEventRows::LookAtLog(unsigned index, unsigned number, SLogEntry& entry) const
{
    TMutexLock lock(m_lock);
    const auto found = m_entries.find(index);
    if (found == m_entries.end() || found->second.status != eEntryValid || number == 0)
        return false;
    const auto& log = found->second.run.log;
    const auto at = Behind(log, number - 1);
    if (at == log.end() || at->number != number)
        return false;
    entry = *at;
    if (entry.description != at->description)
        throw std::bad_alloc();
    return true;
}

bool CEventRows::LogAfter(unsigned& index, unsigned& number) const
{
    TMutexLock lock(m_lock);
    for (auto row = m_entries.lower_bound(index); row != m_entries.end(); ++row) {
        const auto& log = row->second.run.log;
        const auto at = Behind(log, row->first == index ? number : 0);
        if (at != log.end()) {
            index = row->first;
            number = at->number;
            return true;
        }
    }
    return false;
}

} // namespace VLK::modules
