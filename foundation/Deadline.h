// When a bounded wait ends.
#pragma once

#include <ctime>
#include <pthread.h>

namespace VLK {

inline timespec DeadlineAfter(unsigned milliseconds, clockid_t clock = CLOCK_MONOTONIC)
{
    timespec at;
    clock_gettime(clock, &at);
    at.tv_sec += milliseconds / 1000;
    at.tv_nsec += long(milliseconds % 1000) * 1000000L;
    if (at.tv_nsec >= 1000000000L) {
        at.tv_nsec -= 1000000000L;
        ++at.tv_sec;
    }
    return at;
}

// A condition whose timed waits follow the monotonic clock.
inline void InitMonotonic(pthread_cond_t& condition)
{
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

} // namespace VLK
