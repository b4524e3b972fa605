// What was read, kept for as long as it may be shown.
#pragma once

#include "modules/hostresources/HostSource.h"

#include <atomic>
#include <functional>
#include <memory>
#include <utility>
#include <vkmibh/sync.h>

namespace VLK::modules {

// Reads again for a request that finds nothing younger than the time to live, in
// milliseconds; all of one request sees the same. With 0 each request reads.
//
// Ownership: of the value, together with whoever holds it. The clock outlives it.
// Threads:   for any number of threads; the reading runs under a lock of its own,
//            so that two requests do not read the same at once.
// Errors:    what the reading throws; the next request reads then.
template <class T>
class TSnapshot {
public:
    TSnapshot(IHostSource& clock, unsigned timeToLive, std::function<T()> read)
        : m_clock(clock), m_timeToLive(timeToLive), m_read(std::move(read)), m_lock(true)
    {
    }

    // On any thread.
    void SetTimeToLive(unsigned timeToLive) { m_timeToLive = timeToLive; }

    // Request 0 is nobody's.
    std::shared_ptr<const T> At(unsigned request)
    {
        TMutexLock lock(m_lock);
        const bool isOurs = request != 0 && request == m_request;
        if (!m_value || !(isOurs || m_clock.Milliseconds() - m_readAt < m_timeToLive)) {
            // Its age counts from before the reading, which takes its time.
            const int64_t now = m_clock.Milliseconds();
            m_value = std::make_shared<const T>(m_read());
            m_readAt = now;
            m_request = request;
        }
        return m_value;
    }

private:
    IHostSource& m_clock;
    std::atomic<int64_t> m_timeToLive;
    const std::function<T()> m_read;
    TMutex m_lock;
    std::shared_ptr<const T> m_value VKMIBH_TSA(guarded_by(m_lock));
    int64_t m_readAt VKMIBH_TSA(guarded_by(m_lock)) = 0;
    unsigned m_request VKMIBH_TSA(guarded_by(m_lock)) = 0;
};

} // namespace VLK::modules
