// Taking a system mutex that is mostly held for less time than it takes to sleep.
#pragma once

#include <cerrno>
#include <pthread.h>

namespace VLK {

// Tells the processor that it waits for another one.
inline void SpinPause()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ __volatile__("isb");
#endif
}

// Waits like pthread_mutex_lock(), a microsecond or two of it awake: the locks of a
// request are held for less, and two threads that had each other put to sleep would be
// slower together than one.
inline int LockSoon(pthread_mutex_t& mutex)
{
    constexpr int kLongestPause = 16;
    int result = pthread_mutex_trylock(&mutex);
    for (int pause = 1; result == EBUSY && pause <= kLongestPause; pause *= 2) {
        for (int i = 0; i < pause; ++i)
            SpinPause();
        result = pthread_mutex_trylock(&mutex);
    }
    return result == EBUSY ? pthread_mutex_lock(&mutex) : result;
}

} // namespace VLK
