#include "host/Relay.h"

#include "host/HostError.h"
#include "host/SystemError.h"

#include <algorithm>
#include <cerrno>
#include <sys/timerfd.h>
#include <system_error>

namespace VLK::host {

namespace {

int64_t Now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

} // namespace

BRelay::BRelay(unsigned workers, std::chrono::nanoseconds patience, std::chrono::milliseconds grace)
    : m_workers(std::max(workers, 1u)), m_patience(patience.count()), m_grace(grace),
      m_timer(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC))
{
    if (!m_timer.IsOpen())
        throw BHostError(eExitUsage, "no timer: " + SystemError(errno));
}

void BRelay::Arm(int64_t nanoseconds)
{
    constexpr int64_t kSecond = 1000000000;
    itimerspec when = {};
    when.it_value.tv_sec = static_cast<time_t>(nanoseconds / kSecond);
    when.it_value.tv_nsec = static_cast<long>(nanoseconds % kSecond);
    timerfd_settime(m_timer.Get(), 0, &when, nullptr);
}

// The timer is set once for as many pieces of work as end before it expires. Either
// this sees that it is not set, or whoever waits for it sees this work.
int64_t BRelay::Begin()
{
    m_lastBegun = std::max(Now(), m_lastBegun + 1);
    int64_t ticket = m_lastBegun;
    m_begun = ticket;
    if (!m_isArmed.exchange(true))
        Arm(m_patience);
    return ticket;
}

bool BRelay::End(int64_t ticket) { return m_begun.compare_exchange_strong(ticket, kNone); }

bool BRelay::HasWorker()
{
    if (m_late < m_workers)
        return true;
    BLock lock(m_lock);
    if (m_waitedAt == m_returned)
        return false;
    m_waitedAt = m_returned;
    return m_return.wait_for(lock.ToWaitWith(), m_grace, [this] { return m_late < m_workers; });
}

// The ticket of work that has taken too long, or kNone at the end.
int64_t BRelay::WaitForOverdue()
{
    for (;;) {
        uint64_t expirations;
        if (read(m_timer.Get(), &expirations, sizeof expirations) < 0)
            continue; // a signal
        if (m_hasEnded)
            return kNone;
        m_isArmed = false;
        int64_t ticket = m_begun;
        if (ticket == kNone)
            continue;
        int64_t left = ticket + m_patience - Now();
        if (left <= 0)
            return ticket;
        m_isArmed = true;
        Arm(left);
    }
}

// Waits until the role is the calling thread's; false at the end.
bool BRelay::Standby(const std::function<void()>& serve)
{
    BLock lock(m_lock);
    ++m_standbys;
    for (;;) {
        m_change.wait(lock.ToWaitWith(), [this]() VKMIBH_TSA(requires_capability(m_lock)) {
            return m_hasEnded || !m_isWatched;
        });
        if (m_hasEnded)
            return false;
        m_isWatched = true;
        lock.Unlock();
        int64_t ticket = WaitForOverdue();
        lock.Lock();
        m_isWatched = false;
        if (m_hasEnded)
            return false;
        if (m_begun.compare_exchange_strong(ticket, kNone))
            break;
    }
    --m_standbys;
    ++m_late;
    m_owner = std::this_thread::get_id();
    if (m_standbys > 0)
        m_change.notify_one();
    else
        AddThread(serve);
    return true;
}

// The first thread and m_workers more: one has the role when all others are late.
void BRelay::AddThread(const std::function<void()>& serve)
{
    if (m_threads.size() >= m_workers)
        return;
    try {
        m_threads.emplace_back([this, &serve] {
            while (Standby(serve) && Work(serve))
                continue;
        });
    } catch (const std::exception&) {
        // No one watches until a late thread stands by.
        return;
    }
}

// Serves with the role; whether the thread is to stand by then.
bool BRelay::Work(const std::function<void()>& serve)
{
    try {
        serve();
    } catch (...) {
        EndAll(std::current_exception());
        return false;
    }
    {
        const BLock lock(m_lock);
        if (m_owner != std::this_thread::get_id()) {
            --m_late;
            ++m_returned;
            m_return.notify_one();
            return true;
        }
    }
    EndAll(nullptr);
    return false;
}

void BRelay::EndAll(std::exception_ptr failure)
{
    const BLock lock(m_lock);
    if (!m_failure)
        m_failure = std::move(failure);
    m_hasEnded = true;
    Arm(1);
    m_change.notify_all();
}

void BRelay::Run(const std::function<void()>& serve)
{
    {
        const BLock lock(m_lock);
        m_owner = std::this_thread::get_id();
        AddThread(serve);
    }
    while (Work(serve) && Standby(serve))
        continue;
    for (std::thread& thread : m_threads)
        thread.join();
    const BLock lock(m_lock);
    if (m_failure)
        std::rethrow_exception(m_failure);
}

} // namespace VLK::host
