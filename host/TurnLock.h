// A lock whose waiters have their turn.
#pragma once

#include <mutex>

namespace VLK::host {

// A thread that lets go of a plain mutex and takes it again at once is quicker than one
// that has to be woken first, and may be so for minutes. Here whoever came meanwhile is
// before it. For std::lock_guard.
//
// Threads: any; not twice on the same one.
class BTurnLock {
public:
    void lock()
    {
        std::lock_guard<std::mutex> next(m_next);
        m_taken.lock();
    }
    void unlock() { m_taken.unlock(); }
    // Whether somebody waits who is the next one.
    bool IsWaitedFor()
    {
        const bool isFree = m_next.try_lock();
        if (isFree)
            m_next.unlock();
        return !isFree;
    }

private:
    std::mutex m_next; // held by the one that waits for the other
    std::mutex m_taken;
};

} // namespace VLK::host
