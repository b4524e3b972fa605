// The events and their logs.
#pragma once

#include "modules/rmon/AlarmRows.h"

#include <deque>

namespace VLK::modules {

enum EEventColumn : int {
    eEventIndex = 1,
    eEventDescription = 2,
    eEventType = 3,
    eEventCommunity = 4,
    eEventLastTimeSent = 5,
    eEventOwner = 6,
    eEventStatus = 7
};

// eventType; the values less 1 are bits.
enum EEventType : int { eEventNone = 1, eEventLog = 2, eEventTrap = 3, eEventLogAndTrap = 4 };

constexpr unsigned kEventTextMost = 127;
constexpr unsigned kLogTextMost = 255;
// Entries that the log of one event holds: the oldest ones go first.
constexpr unsigned kLogMost = 64;

struct SEvent {
    BString description;
    EEventType type = eEventNone;
    BOctetString community;
    BString owner;

    auto Tie() const { return std::tie(description, type, community, owner); }
    bool operator==(const SEvent& other) const { return Tie() == other.Tie(); }
};

struct SLogEntry {
    unsigned number = 0; // logIndex
    unsigned time = 0;   // sysUpTime
    BString description;
};

struct SEventRun {
    unsigned lastTimeSent = 0; // sysUpTime
    unsigned lastNumber = 0;   // of its log
    std::deque<SLogEntry> log; // in rising order; of a valid event
};

// The rows of eventTable, and of logTable.
//
// Ownership, Threads, Errors: as TEntryRows.
class CEventRows : public TEntryRows<SEvent, SEventRun> {
public:
    // Loads what is stored.
    explicit CEventRows(INonVolatile* store);

    void SetStatus(unsigned index, EEntryStatus status);

    // The event happens, if it is there and valid: logs it. True: it is to be sent.
    bool Happen(unsigned index, unsigned upTime, const std::string& what);

    // False: there is no such entry.
    bool LookAtLog(unsigned index, unsigned number, SLogEntry& entry) const;
    // The first entry of a log behind that one, in the order of logTable; also one that
    // LookAtLog() does not show.
    bool LogAfter(unsigned& index, unsigned& number) const;

private:
    void LoadAt(int position);
    const char* Section() const override;
    int SaveEntry(const char* key, unsigned index, const SEvent& event) override;
};

} // namespace VLK::modules
