// The thread that ticks for a timer.
#pragma once

#include <vkmibh/timer.h>

namespace VLK {

class BTimer::TimerThread : public TThread {
public:
    static constexpr unsigned kPeriod = 1000; // milliseconds

    explicit TimerThread(BTimer* timer) : TThread(false), m_timer(timer), m_period(kPeriod) {}
    ~TimerThread() override { Stop(kWaitForever); }

    int Run() override
    {
        // CONTRACT: the nominal period, never the time measured: late ticks are
        // not caught up, and subscribers count on ticks.
        while (WaitForStop(m_period) == eWaitTimeout)
            m_timer->Timeout(m_period);
        return 0;
    }

private:
    friend struct SLayoutCheck;
    BTimer* m_timer;
    unsigned m_period;
};

} // namespace VLK
