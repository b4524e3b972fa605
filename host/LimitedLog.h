// Log lines that anybody who sends requests can cause.
#pragma once

#include "host/Log.h"
#include "host/Mutex.h"
#include "host/RateLimit.h"

#include <functional>
#include <optional>

namespace VLK::host {

// Writes lines of one level at the rate of a BRateLimit; what was left out is counted, and told
// with the next line.
//
// Threads: any.
class BLimitedLog {
public:
    using CClock = BRateLimit::CClock;
    static constexpr unsigned kBurst = BRateLimit::kBurst;
    static constexpr std::chrono::seconds kInterval = BRateLimit::kInterval;

    using FWrite = std::function<void(ELogLevel, const std::string&)>;

    explicit BLimitedLog(ELogLevel level, FWrite write = LogLine,
                         std::function<CClock::time_point()> now = CClock::now);

    // `line` makes the text, and is called only when it is written.
    template <class TLine>
    void Write(TLine line)
    {
        if (!IsLogged(m_level))
            return;
        if (std::optional<std::string> note = Take())
            m_write(m_level, line() + *note);
    }

private:
    // What to add to the next line; nothing when it is to be left out.
    std::optional<std::string> Take();

    const ELogLevel m_level;
    BMutex m_lock;
    FWrite m_write;
    BRateLimit m_limit VKMIBH_TSA(guarded_by(m_lock));
};

} // namespace VLK::host
