#include "foundation/Deadline.h"
#include "foundation/PthreadLock.h"

#include <cerrno>
#include <vkmibh/sync.h>

namespace VLK {

TEvent::TEvent() : m_signalled(false)
{
    pthread_mutex_init(&m_mutex, nullptr);
    InitMonotonic(m_condition);
}

TEvent::~TEvent()
{
    pthread_cond_destroy(&m_condition);
    pthread_mutex_destroy(&m_mutex);
}

void TEvent::Set()
{
    PthreadLock lock(m_mutex);
    m_signalled = true;
    pthread_cond_broadcast(&m_condition);
}

void TEvent::Reset()
{
    PthreadLock lock(m_mutex);
    m_signalled = false;
}

int TEvent::Wait(unsigned timeout)
{
    const timespec at = timeout == kWaitForever ? timespec() : DeadlineAfter(timeout);
    PthreadLock lock(m_mutex);
    while (!m_signalled) {
        if (timeout == 0)
            return eWaitTimeout;
        const int result = timeout == kWaitForever
                               ? pthread_cond_wait(&m_condition, &m_mutex)
                               : pthread_cond_timedwait(&m_condition, &m_mutex, &at);
        if (result == ETIMEDOUT)
            return m_signalled ? eWaitDone : eWaitTimeout;
        if (result != 0)
            return eWaitRefused;
    }
    return eWaitDone;
}

} // namespace VLK
