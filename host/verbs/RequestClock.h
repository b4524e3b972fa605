// Which modules keep requests waiting, told without a clock for those that do not.
#pragma once

#include "host/Mutex.h"
#include "host/Relay.h"

#include <array>
#include <chrono>
#include <memory>
#include <optional>

namespace VLK::host {

// A request is slow when a module has kept it for longer.
constexpr std::chrono::milliseconds kSlowRequest{1};

// The slow requests of one module.
struct SSlowness {
    uint64_t requests = 0;
    std::chrono::nanoseconds total{0};
    std::chrono::nanoseconds worst{0};
    std::chrono::system_clock::time_point worstAt;
};

// Threads: any.
class BSlowness {
public:
    void Add(std::chrono::nanoseconds duration);
    SSlowness Now() const;

private:
    mutable BMutex m_lock;
    SSlowness m_sum VKMIBH_TSA(guarded_by(m_lock));
};

// From the beginning of a request to its end, on the thread that runs it.
//
// With a relay no clock is read while the thread has its role, as that says that the
// request has not been at work for the relay's patience. When a module returns and the
// role is gone, the time since the request's beginning counts as that module's; from
// then on each call of a module is timed. Without a relay each is timed from the start.
//
// A request with more slow modules than kMostModules is counted for the slowest.
//
// Threads: one each; nested requests are part of the outermost.
class BRequestClock {
public:
    static constexpr size_t kMostModules = 8;

    // The relay, which may be null, outlives it; the ticket is what Begin() gave.
    explicit BRequestClock(const BRelay* relay = nullptr, int64_t ticket = 0);
    ~BRequestClock();
    BRequestClock(const BRequestClock&) = delete;
    BRequestClock& operator=(const BRequestClock&) = delete;

    static bool IsOnThisThread() { return t_clock != nullptr; }
    // A call into the module has ended.
    static void OnReturn(const std::shared_ptr<BSlowness>& module)
    {
        if (t_clock && t_clock->IsLate())
            t_clock->Count(module);
    }

private:
    struct SShare {
        std::shared_ptr<BSlowness> module;
        int64_t nanoseconds;
    };

    bool IsLate() const { return !m_relay || m_relay->IsLate(m_ticket); }
    void Count(const std::shared_ptr<BSlowness>& module);
    SShare* ShareOf(const std::shared_ptr<BSlowness>& module, int64_t nanoseconds);

    static thread_local BRequestClock* t_clock;

    BRequestClock* const m_outer;
    const BRelay* const m_relay;
    const int64_t m_ticket;
    int64_t m_counted; // up to when, in nanoseconds
    // Not made for a request that is in time.
    std::optional<std::array<SShare, kMostModules>> m_shares;
    size_t m_count = 0; // of those in use
};

} // namespace VLK::host
