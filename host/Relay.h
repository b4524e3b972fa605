// Threads that take turns at one role: to serve.
//
//   BRelay relay(64, std::chrono::milliseconds(1));
//   relay.Run([&] {
//       while (std::optional<Job> job = NextJob()) { // nothing: it has ended
//           int64_t ticket = relay.Begin();
//           Do(*job);                                // on this very thread
//           if (!relay.End(ticket))
//               return;                              // another one serves now
//       }
//   });
#pragma once

#include "host/Descriptor.h"
#include "host/Mutex.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

namespace VLK::host {

// One thread has the role and does each piece of work itself, so that work which is
// done at once never waits for another thread. Work that takes longer than the
// patience loses its thread the role: a standby takes it over and goes on serving;
// the late thread finishes what it is at and stands by.
//
// Up to `workers` threads may be late or at work. When all are late, one thread
// more has the role, and HasWorker() tells it that it must begin no work.
//
// Threads: Begin(), End() and HasWorker() on the thread that has the role, and End()
//          on one that has lost it; Run() on one thread, which serves first.
// Errors:  the constructor throws BHostError, Run() what `serve` throws, which it
//          may do with the role only, and not between Begin() and End(). Where no
//          thread can be started, the role stays where it is.
class BRelay {
public:
    BRelay(unsigned workers, std::chrono::nanoseconds patience,
           std::chrono::milliseconds grace = std::chrono::milliseconds(100));
    BRelay(const BRelay&) = delete;
    BRelay& operator=(const BRelay&) = delete;

    // Calls `serve` on whatever thread has the role, until a call returns that still
    // has it: then all have ended. Waits for late threads, however long they take.
    void Run(const std::function<void()>& serve);

    int64_t Begin();
    // Whether the thread that has begun still has the role. If not, `serve` returns,
    // once it has delivered its result.
    bool End(int64_t ticket);
    // Whether the work that has begun so has lost its thread the role; on that thread.
    bool IsLate(int64_t ticket) const { return m_begun != ticket; }

    // Whether work can begin. Where all threads are late it waits the grace for one,
    // as they may only lack a processor; but not again before one has come back.
    bool HasWorker();
    bool HasEnded() const { return m_hasEnded; }
    // Threads that are at work without the role.
    unsigned Late() const { return m_late; }

private:
    static constexpr int64_t kNone = 0;

    void Arm(int64_t nanoseconds);
    bool Work(const std::function<void()>& serve);
    bool Standby(const std::function<void()>& serve);
    int64_t WaitForOverdue();
    void AddThread(const std::function<void()>& serve) VKMIBH_TSA(requires_capability(m_lock));
    void EndAll(std::exception_ptr failure);

    const unsigned m_workers;
    const int64_t m_patience;
    const std::chrono::milliseconds m_grace;
    BDescriptor m_timer; // readable when it is time to look
    // When the work of the thread with the role began, in nanoseconds and different
    // each time: its ticket.
    std::atomic<int64_t> m_begun{kNone};
    std::atomic<bool> m_isArmed{false};
    std::atomic<unsigned> m_late{0};
    int64_t m_lastBegun = kNone; // of the thread with the role

    BMutex m_lock;
    std::condition_variable m_change;
    std::thread::id m_owner VKMIBH_TSA(guarded_by(m_lock)); // of the role
    unsigned m_standbys VKMIBH_TSA(guarded_by(m_lock)) = 0;
    bool m_isWatched VKMIBH_TSA(guarded_by(m_lock)) = false; // a standby waits for the timer
    std::atomic<bool> m_hasEnded{false};                     // read without it too
    std::condition_variable m_return;                        // of a late thread
    uint64_t m_returned VKMIBH_TSA(guarded_by(m_lock)) = 0;
    // m_returned, when a thread was waited for in vain.
    std::optional<uint64_t> m_waitedAt VKMIBH_TSA(guarded_by(m_lock));
    std::exception_ptr m_failure VKMIBH_TSA(guarded_by(m_lock));
    std::vector<std::thread> m_threads;
};

} // namespace VLK::host
