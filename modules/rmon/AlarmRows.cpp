#include "modules/rmon/AlarmRows.h"

#include <algorithm>
#include <climits>

namespace VLK::modules {

namespace {

// The value that thresholds are compared with; none: there is no period behind it.
std::optional<int> ValueOf(const SAlarm& alarm, SAlarmRun& run, const SSample& sample)
{
    if (alarm.sampleType == eAbsoluteValue)
        return AbsoluteValue(sample);
    const std::optional<SSample> before = std::exchange(run.last, sample);
    return before ? DeltaValue(*before, sample) : std::nullopt;
}

// The first time behind `now` of those that are an interval apart.
std::uint64_t DueAfter(std::uint64_t now, std::uint64_t due, std::uint64_t interval)
{
    return due > now ? due : due + (1 + (now - due) / interval) * interval;
}

} // namespace

CAlarmRows::CAlarmRows(INonVolatile* store) : TEntryRows(store)
{
    const int count = store ? store->GetRecordCount(Section()) : 0;
    for (int position = 0; position < count; ++position)
        LoadAt(position);
}

const char* CAlarmRows::Section() const { return "mib-2.rmon.alarmTable"; }

void CAlarmRows::LoadAt(int position)
{
    unsigned index = 0;
    SAlarm alarm;
    CEntryReader reader(*Store(), Section(), position);
    reader.Number(eAlarmIndex, index, 1, kIndexMost);
    reader.Number(eAlarmInterval, alarm.interval, 1, INT_MAX);
    reader.Oid(eAlarmVariable, alarm.variable);
    reader.Number(eAlarmSampleType, alarm.sampleType, eAbsoluteValue, eDeltaValue);
    reader.Number(eAlarmStartupAlarm, alarm.startup, eStartRising, eStartRisingOrFalling);
    reader.Number(eAlarmRisingThreshold, alarm.rising, INT_MIN, INT_MAX);
    reader.Number(eAlarmFallingThreshold, alarm.falling, INT_MIN, INT_MAX);
    reader.Number(eAlarmRisingEventIndex, alarm.risingEvent, 0, kIndexMost);
    reader.Number(eAlarmFallingEventIndex, alarm.fallingEvent, 0, kIndexMost);
    reader.Text(eAlarmOwner, alarm.owner, kOwnerMost);
    if (!reader.IsGood())
        return;
    Change(index, [&](SEntry& entry) { entry.settings = CopyOf(alarm); });
    SetStatus(index, eEntryValid);
}

int CAlarmRows::SaveEntry(const char* key, unsigned index, const SAlarm& alarm)
{
    CEntryWriter writer(*Store(), Section(), key);
    writer.Number(eAlarmIndex, static_cast<int>(index));
    writer.Number(eAlarmInterval, alarm.interval);
    writer.Oid(eAlarmVariable, alarm.variable);
    writer.Number(eAlarmSampleType, alarm.sampleType);
    writer.Number(eAlarmStartupAlarm, alarm.startup);
    writer.Number(eAlarmRisingThreshold, alarm.rising);
    writer.Number(eAlarmFallingThreshold, alarm.falling);
    writer.Number(eAlarmRisingEventIndex, alarm.risingEvent);
    writer.Number(eAlarmFallingEventIndex, alarm.fallingEvent);
    writer.Text(eAlarmOwner, alarm.owner);
    return writer.Status();
}

void CAlarmRows::SetStatus(unsigned index, EEntryStatus status)
{
    TMutexLock lock(m_lock);
    SEntry& entry = m_entries[index];
    if (status == eEntryValid && entry.status != eEntryValid) {
        entry.run = SAlarmRun();
        entry.run.start = ++m_starts;
        m_nextDue = 0;
    }
    entry.status = status;
}

void CAlarmRows::Restore(unsigned index, Entries& before, bool wasExtracted)
{
    TEntryRows::Restore(index, before, wasExtracted);
    TMutexLock lock(m_lock);
    m_nextDue = 0;
}

CAlarmRows::ETick CAlarmRows::Tick()
{
    TMutexLock lock(m_lock);
    ++m_now;
    if (m_nextDue == kNever)
        return eTickIdle;
    return m_nextDue <= m_now ? eTickDue : eTickNothing;
}

bool CAlarmRows::IsIdle() const
{
    TMutexLock lock(m_lock);
    return std::none_of(m_entries.begin(), m_entries.end(),
                        [](const auto& row) { return row.second.status == eEntryValid; });
}

std::vector<unsigned> CAlarmRows::Due()
{
    TMutexLock lock(m_lock);
    std::vector<unsigned> due;
    std::uint64_t next = kNever;
    for (auto& [index, entry] : m_entries) {
        if (entry.status != eEntryValid)
            continue;
        SAlarmRun& run = entry.run;
        const bool isDelta = entry.settings.sampleType == eDeltaValue;
        const auto interval = static_cast<std::uint64_t>(entry.settings.interval);
        if (run.due == 0)
            run.due = std::max<std::uint64_t>(m_now, 1) + (isDelta ? 0 : interval);
        if (run.due <= m_now)
            due.push_back(index);
        next = std::min(next, DueAfter(m_now, run.due, interval));
    }
    m_nextDue = next;
    return due;
}

std::optional<SDueSample> CAlarmRows::Begin(unsigned index)
{
    TMutexLock lock(m_lock);
    const auto found = m_entries.find(index);
    if (found == m_entries.end() || found->second.status != eEntryValid)
        return std::nullopt;
    SAlarmRun& run = found->second.run;
    if (run.due == 0 || run.due > m_now)
        return std::nullopt;
    SDueSample due{index, run.start, CopyOf(found->second.settings.variable)};
    const auto interval = static_cast<std::uint64_t>(found->second.settings.interval);
    run.due = DueAfter(m_now, run.due, interval);
    return due;
}

// Null: the alarm is not valid any more, or is valid anew.
CAlarmRows::SEntry* CAlarmRows::Find(const SDueSample& due)
{
    const auto found = m_entries.find(due.index);
    const bool isSame = found != m_entries.end() && found->second.status == eEntryValid &&
                        found->second.run.start == due.start;
    return isSame ? &found->second : nullptr;
}

std::optional<SAlarmRaised> CAlarmRows::Take(const SDueSample& due, const SSample& sample)
{
    TMutexLock lock(m_lock);
    SEntry* const entry = Find(due);
    if (!entry)
        return std::nullopt;
    const SAlarm& alarm = entry->settings;
    const std::optional<int> value = ValueOf(alarm, entry->run, sample);
    if (!value)
        return std::nullopt;
    CCrossings crossings = entry->run.crossings;
    std::optional<SAlarmRaised> raised;
    const unsigned crossed = crossings.Feed({alarm.startup, alarm.rising, alarm.falling}, *value);
    if (crossed != eCrossNone) // without memory for it nothing has happened
        raised = SAlarmRaised{crossed, CopyOf(alarm), *value};
    entry->run.crossings = crossings;
    entry->run.value = value;
    return raised;
}

void CAlarmRows::Miss(const SDueSample& due)
{
    TMutexLock lock(m_lock);
    if (SEntry* const entry = Find(due))
        entry->run.last.reset();
}

bool CAlarmRows::Drop(const SDueSample& due)
{
    TMutexLock lock(m_lock);
    if (!Find(due))
        return false;
    m_entries.erase(due.index);
    return true;
}

} // namespace VLK::modules
