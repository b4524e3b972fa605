#include "foundation/Deadline.h"
#include "foundation/LockSoon.h"

#include <cerrno>
#include <vkmibh/sync.h>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VKMIBH_TSAN 1
#endif
#elif defined(__SANITIZE_THREAD__)
#define VKMIBH_TSAN 1
#endif

namespace VLK {

namespace {

int LockUntil(pthread_mutex_t& mutex, unsigned timeout)
{
#if defined(VKMIBH_TSAN)
    // ThreadSanitizer does not see pthread_mutex_clocklock().
    const timespec at = DeadlineAfter(timeout, CLOCK_REALTIME);
    return pthread_mutex_timedlock(&mutex, &at);
#else
    const timespec at = DeadlineAfter(timeout);
    return pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &at);
#endif
}

} // namespace

TMutex::TMutex(bool recursive)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes,
                              recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&m_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

TMutex::~TMutex() { pthread_mutex_destroy(&m_mutex); }

int TMutex::Wait(unsigned timeout)
{
    int result;
    if (timeout == kWaitForever)
        result = LockSoon(m_mutex);
    else if (timeout == 0)
        result = pthread_mutex_trylock(&m_mutex);
    else
        result = LockUntil(m_mutex, timeout);
    if (result == 0)
        return eWaitDone;
    return result == ETIMEDOUT || result == EBUSY ? eWaitTimeout : eWaitRefused;
}

void TMutex::Done() { pthread_mutex_unlock(&m_mutex); }

} // namespace VLK
