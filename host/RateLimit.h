// How often what anybody can cause may be done.
#pragma once

#include <chrono>
#include <functional>

namespace VLK::host {

// kBurst times at once, and then once every kInterval; refusals are counted.
//
// Threads: one at a time.
class BRateLimit {
public:
    using CClock = std::chrono::steady_clock;
    static constexpr unsigned kBurst = 10;
    static constexpr std::chrono::seconds kInterval{10};

    explicit BRateLimit(std::function<CClock::time_point()> now = CClock::now);

    // Whether it may be done now.
    bool Take();
    // How often it might not, since this was last asked.
    unsigned long TakeRefused();

private:
    std::function<CClock::time_point()> m_now;
    unsigned m_left = kBurst;
    CClock::time_point m_refilled; // up to when m_left counts
    unsigned long m_refused = 0;
};

} // namespace VLK::host
