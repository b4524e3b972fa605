// The locks of what may subscribe to the timer.
#pragma once

#include <vkmibh/rowstatus.h>

namespace VLK {

// The timer's lock, then the table's mutex: the order in which a time-out takes
// them. Both are recursive.
class BMibTableImplEx::Locks {
public:
    explicit Locks(const BMibTableImplEx& table) VKMIBH_TSA(no_thread_safety_analysis)
        : m_timer(BTimer::GetInstance()), m_table(table.Mutex())
    {
        if (m_timer)
            m_timer->Mutex().Wait(kWaitForever);
        m_table.Wait(kWaitForever);
    }
    ~Locks() VKMIBH_TSA(no_thread_safety_analysis)
    {
        m_table.Done();
        if (m_timer)
            m_timer->Mutex().Done();
    }
    Locks(const Locks&) = delete;
    Locks& operator=(const Locks&) = delete;

    // Null without memory for one.
    BTimer* Timer() const { return m_timer; }

private:
    BTimer* const m_timer;
    TMutex& m_table;
};

} // namespace VLK
