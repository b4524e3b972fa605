// The interfaces as they all were at one moment.
#pragma once

#include "modules/interfaces/Interface.h"

#include <atomic>
#include <memory>
#include <vkmibh/sync.h>

namespace VLK::modules {

class CLinkHistory;

// An interface in a snapshot, with what its past says. Times are uptimes, 0 for
// what did not happen since the watch began; none while nobody watches.
struct SIfRow : SInterface {
    bool isOnTop = false; // of another interface
    std::uint64_t decreasedAt = 0;
    std::optional<std::uint64_t> lastChange;
    std::optional<std::uint64_t> discontinuity;
};

struct SSnapshot {
    std::vector<SIfRow> rows; // in rising order of their indexes
    std::optional<std::uint64_t> tableLastChange;

    // Null: there is none.
    const SIfRow* Find(unsigned index) const;
    const SIfRow* After(unsigned index) const;
    const SIfRow* First() const { return rows.empty() ? nullptr : &rows.front(); }
};

// Asks for the interfaces when what is known of them is too old. A transaction
// sees one snapshot from its first question to its end, however long it takes.
//
// Ownership: not of source and history, which outlive it.
// Threads:   any. Its lock is held while the source is asked, and comes before those of
//            the transaction registry and of the history.
// Errors:    throws what the source throws, and std::bad_alloc.
class CSnapshots {
public:
    // With a time to live of 0 milliseconds every transaction has its own.
    CSnapshots(IInterfaces& source, const CLinkHistory& history, unsigned timeToLive,
               FUptime upTime);

    // Transactions that have begun keep what they see.
    void SetTimeToLive(unsigned timeToLive) { m_timeToLive = timeToLive; }
    std::shared_ptr<const SSnapshot> Of(unsigned transactionId);

private:
    using SnapshotPtr = std::shared_ptr<const SSnapshot>;
    struct SSeen {
        unsigned transactionId;
        SnapshotPtr snapshot;
    };

    bool IsFresh() const VKMIBH_TSA(requires_capability(m_lock));
    void Refresh() VKMIBH_TSA(requires_capability(m_lock));
    void Keep(unsigned transactionId) VKMIBH_TSA(requires_capability(m_lock));

    IInterfaces& m_source;
    const CLinkHistory& m_history;
    std::atomic<unsigned> m_timeToLive;
    const FUptime m_upTime;
    TMutex m_lock{true};
    SnapshotPtr m_newest VKMIBH_TSA(guarded_by(m_lock));
    std::uint64_t m_takenAt VKMIBH_TSA(guarded_by(m_lock)) = 0;
    std::vector<SSeen> m_seen VKMIBH_TSA(guarded_by(m_lock)); // by transactions that are open
};

} // namespace VLK::modules
