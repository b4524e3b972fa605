#include "host/verbs/RequestClock.h"

#include <algorithm>

namespace VLK::host {

namespace {

// As the relay's tickets.
int64_t Now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

} // namespace

void BSlowness::Add(std::chrono::nanoseconds duration)
{
    const BLock lock(m_lock);
    ++m_sum.requests;
    m_sum.total += duration;
    if (duration > m_sum.worst) {
        m_sum.worst = duration;
        m_sum.worstAt = std::chrono::system_clock::now();
    }
}

SSlowness BSlowness::Now() const
{
    const BLock lock(m_lock);
    return m_sum;
}

thread_local BRequestClock* BRequestClock::t_clock = nullptr;

BRequestClock::BRequestClock(const BRelay* relay, int64_t ticket)
    : m_outer(t_clock), m_relay(relay), m_ticket(ticket), m_counted(relay ? ticket : Now())
{
    if (!m_outer)
        t_clock = this;
}

BRequestClock::~BRequestClock()
{
    if (m_outer)
        return;
    t_clock = nullptr;
    for (size_t i = 0; i < m_count; ++i) {
        const SShare& share = (*m_shares)[i];
        const std::chrono::nanoseconds duration(share.nanoseconds);
        if (duration > kSlowRequest)
            share.module->Add(duration);
    }
}

void BRequestClock::Count(const std::shared_ptr<BSlowness>& module)
{
    const int64_t now = Now();
    const int64_t passed = now - m_counted;
    m_counted = now;
    if (SShare* share = ShareOf(module, passed))
        share->nanoseconds += passed;
}

// A module that is new here takes the place of the quickest when there is no other.
BRequestClock::SShare* BRequestClock::ShareOf(const std::shared_ptr<BSlowness>& module,
                                              int64_t nanoseconds)
{
    if (!m_shares)
        m_shares.emplace();
    const auto begin = m_shares->begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(m_count);
    const auto known =
        std::find_if(begin, end, [&](const SShare& share) { return share.module == module; });
    if (known != end)
        return &*known;
    if (m_count < kMostModules) {
        *end = {module, 0};
        ++m_count;
        return &*end;
    }
    const auto quickest = std::min_element(
        begin, end, [](const SShare& a, const SShare& b) { return a.nanoseconds < b.nanoseconds; });
    if (quickest->nanoseconds >= nanoseconds)
        return nullptr;
    *quickest = {module, 0};
    return &*quickest;
}

} // namespace VLK::host
