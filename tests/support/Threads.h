// Threads of a test that wait for one another without sleeping.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace VLK {

// Waits until the condition holds; false when it does not within 20 seconds,
// long enough for a loaded machine under a sanitizer.
template <class Condition>
bool Eventually(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

// Threads that begin when all of them are there: the first would be done before the last
// one came.
class Together {
public:
    explicit Together(int threads) : m_missing(threads) {}
    void Begin()
    {
        --m_missing;
        while (m_missing > 0)
            std::this_thread::yield();
    }

private:
    std::atomic<int> m_missing;
};

// Time for another thread to do what it must not do. A test that uses it still
// passes on a slow machine, and fails there more rarely when the rule is broken.
inline void GiveOthersTime() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

} // namespace VLK
