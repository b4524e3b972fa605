#include "host/LimitedLog.h"

#include <utility>

namespace VLK::host {

BLimitedLog::BLimitedLog(ELogLevel level, FWrite write, std::function<CClock::time_point()> now)
    : m_level(level), m_write(std::move(write)), m_limit(std::move(now))
{
}

std::optional<std::string> BLimitedLog::Take()
{
    const BLock lock(m_lock);
    if (!m_limit.Take())
        return std::nullopt;
    unsigned long omitted = m_limit.TakeRefused();
    return omitted ? " (" + std::to_string(omitted) + " before it were not logged)" : "";
}

} // namespace VLK::host
