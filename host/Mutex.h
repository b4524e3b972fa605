// Locks whose holders the compiler can follow.
#pragma once

#include <mutex>
#include <vkmibh/platform.h>

namespace VLK::host {

// std::mutex, of which clang's thread-safety analysis knows nothing.
//
// Threads: any; not twice on the same one.
class VKMIBH_TSA(capability("mutex")) BMutex {
public:
    void lock() VKMIBH_TSA(acquire_capability()) { m_mutex.lock(); }
    void unlock() VKMIBH_TSA(release_capability()) { m_mutex.unlock(); }

private:
    friend class BLock;
    std::mutex m_mutex;
};

// Holds a mutex for as long as it lives, unless it lets go of it between.
//
// Ownership: the mutex outlives it.
class VKMIBH_TSA(scoped_lockable) BLock {
public:
    explicit BLock(BMutex& mutex) VKMIBH_TSA(acquire_capability(mutex)) : m_lock(mutex.m_mutex) {}
    ~BLock() VKMIBH_TSA(release_capability()) {}
    BLock(const BLock&) = delete;
    BLock& operator=(const BLock&) = delete;

    void Unlock() VKMIBH_TSA(release_capability()) { m_lock.unlock(); }
    void Lock() VKMIBH_TSA(acquire_capability()) { m_lock.lock(); }
    // For condition variables, which give it back as they have found it.
    std::unique_lock<std::mutex>& ToWaitWith() { return m_lock; }

private:
    std::unique_lock<std::mutex> m_lock;
};

} // namespace VLK::host
