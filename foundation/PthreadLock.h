// Holds a system mutex for a scope; also released by a thread's forced end.
#pragma once

#include "foundation/LockSoon.h"

namespace VLK {

class PthreadLock {
public:
    explicit PthreadLock(pthread_mutex_t& mutex) : m_mutex(mutex) { LockSoon(m_mutex); }
    ~PthreadLock() { pthread_mutex_unlock(&m_mutex); }
    PthreadLock(const PthreadLock&) = delete;
    PthreadLock& operator=(const PthreadLock&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

} // namespace VLK
