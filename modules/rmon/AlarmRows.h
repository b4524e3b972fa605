// The alarms and their samples.
#pragma once

#include "modules/rmon/EntryRows.h"
#include "modules/rmon/Thresholds.h"

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace VLK::modules {

enum EAlarmColumn : int {
    eAlarmIndex = 1,
    eAlarmInterval = 2,
    eAlarmVariable = 3,
    eAlarmSampleType = 4,
    eAlarmValue = 5,
    eAlarmStartupAlarm = 6,
    eAlarmRisingThreshold = 7,
    eAlarmFallingThreshold = 8,
    eAlarmRisingEventIndex = 9,
    eAlarmFallingEventIndex = 10,
    eAlarmOwner = 11,
    eAlarmStatus = 12
};

constexpr unsigned kOwnerMost = 127;
constexpr unsigned kIndexMost = 65535;

// What managers set, with the defaults of a new row.
struct SAlarm {
    int interval = 60; // seconds
    BObjectIdentifier variable;
    ESampleType sampleType = eAbsoluteValue;
    EStartupAlarm startup = eStartRisingOrFalling;
    int rising = 0;
    int falling = 0;
    int risingEvent = 0;
    int fallingEvent = 0;
    BString owner;

    auto Tie() const
    {
        return std::tie(interval, variable, sampleType, startup, rising, falling, risingEvent,
                        fallingEvent, owner);
    }
    bool operator==(const SAlarm& other) const { return Tie() == other.Tie(); }
};

// Of an alarm since it became valid.
struct SAlarmRun {
    std::uint64_t start = 0; // another one every time
    std::uint64_t due = 0;   // the second of the next sample; 0: not known yet
    std::optional<SSample> last;
    std::optional<int> value; // of the last period that is complete
    CCrossings crossings;
};

// A sample that is to be taken; the alarm may change or go meanwhile.
struct SDueSample {
    unsigned index;
    std::uint64_t start;
    BObjectIdentifier variable;
};

// What a sample crossed, and what a notification tells of it.
struct SAlarmRaised {
    unsigned crossed; // ECrossing
    SAlarm alarm;
    int value;
};

// The rows of alarmTable. Its clock counts seconds, and stands still while nobody
// ticks. An alarm starts at the first tick after it became valid; its first value is
// there an interval later.
//
// Ownership, Threads, Errors: as TEntryRows.
class CAlarmRows : public TEntryRows<SAlarm, SAlarmRun> {
public:
    enum ETick { eTickNothing, eTickDue, eTickIdle };

    // Loads what is stored.
    explicit CAlarmRows(INonVolatile* store);

    void SetStatus(unsigned index, EEntryStatus status);
    void Restore(unsigned index, Entries& before, bool wasExtracted);

    // A second later: whether samples may be due, or no alarm is there at all. Takes no
    // memory.
    ETick Tick();
    bool IsIdle() const;

    // The alarms whose samples are due; for one thread, as those below.
    std::vector<unsigned> Due();
    // Counts the sample as taken; none: the alarm has changed. Periods that were missed
    // are left out.
    std::optional<SDueSample> Begin(unsigned index);
    // None: nothing was crossed, or the alarm is another one meanwhile.
    std::optional<SAlarmRaised> Take(const SDueSample& due, const SSample& sample);
    // There was none: a difference is not taken over it.
    void Miss(const SDueSample& due);
    // The variable is not available: the alarm becomes invalid. False: it is another
    // one meanwhile.
    bool Drop(const SDueSample& due);

private:
    static constexpr std::uint64_t kNever = ~std::uint64_t{0};

    SEntry* Find(const SDueSample& due) VKMIBH_TSA(requires_capability(m_lock));
    void LoadAt(int position);
    const char* Section() const override;
    int SaveEntry(const char* key, unsigned index, const SAlarm& alarm) override;

    std::uint64_t m_now VKMIBH_TSA(guarded_by(m_lock)) = 0;
    std::uint64_t m_starts VKMIBH_TSA(guarded_by(m_lock)) = 0;
    // No sample is due before; 0: not known.
    std::uint64_t m_nextDue VKMIBH_TSA(guarded_by(m_lock)) = 0;
};

} // namespace VLK::modules
