#include "host/RateLimit.h"

#include <algorithm>
#include <utility>

namespace VLK::host {

BRateLimit::BRateLimit(std::function<CClock::time_point()> now)
    : m_now(std::move(now)), m_refilled(m_now())
{
}

bool BRateLimit::Take()
{
    auto intervals = (m_now() - m_refilled) / kInterval;
    m_refilled += intervals * kInterval;
    m_left = static_cast<unsigned>(std::min<decltype(intervals)>(kBurst, m_left + intervals));
    if (m_left == 0) {
        ++m_refused;
        return false;
    }
    --m_left;
    return true;
}

unsigned long BRateLimit::TakeRefused() { return std::exchange(m_refused, 0); }

} // namespace VLK::host
