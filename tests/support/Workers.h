// Threads that repeat a step each until time is up, and how long that is.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace VLK {
namespace Test {

// What a test of races takes: as long as VKMIBH_RACE_SECONDS says, or else half a
// minute where races are looked for and hardly anything elsewhere.
inline std::chrono::seconds RaceTime()
{
#ifdef __SANITIZE_THREAD__
    constexpr int kDefault = 30;
#else
    constexpr int kDefault = 2;
#endif
    const char* const text = std::getenv("VKMIBH_RACE_SECONDS");
    const int seconds = text ? static_cast<int>(std::strtol(text, nullptr, 10)) : kDefault;
    return std::chrono::seconds(seconds > 0 ? seconds : kDefault);
}

// Works until time is up, and what the test has to see was seen. All workers get on, or the process
// ends: what hangs cannot be joined. Steps are short; how many there were is printed.
class Workers {
public:
    explicit Workers(std::chrono::milliseconds duration, std::function<bool()> seen = {})
        : m_end(std::chrono::steady_clock::now() + duration), m_seen(std::move(seen))
    {
    }

    // `step` is called over and over.
    void Add(const char* name, std::function<void()> step)
    {
        m_workers.push_back(std::make_unique<SWorker>());
        SWorker& worker = *m_workers.back();
        worker.name = name;
        worker.thread = std::thread([this, &worker, step = std::move(step)] {
            do {
                step();
                ++worker.steps;
            } while (!IsOver());
            worker.done = true;
        });
    }
    void Join()
    {
        for (auto& worker : m_workers) {
            Watch(*worker);
            worker->thread.join();
            std::printf("%s: %ld steps\n", worker->name.c_str(), worker->steps.load());
        }
    }

private:
    struct SWorker {
        std::string name;
        std::thread thread;
        std::atomic<long> steps{0};
        std::atomic<bool> done{false};
    };

    bool IsOver() const
    {
        return std::chrono::steady_clock::now() >= m_end && (!m_seen || m_seen());
    }

    // Two minutes without a step are too many, however slow the machine is.
    static void Watch(SWorker& worker)
    {
        long steps = -1;
        auto hangsAt = std::chrono::steady_clock::time_point();
        while (!worker.done) {
            const auto now = std::chrono::steady_clock::now();
            if (worker.steps != steps)
                hangsAt = now + std::chrono::minutes(2);
            steps = worker.steps;
            if (now > hangsAt) {
                std::fprintf(stderr, "%s hangs after %ld steps\n", worker.name.c_str(), steps);
                std::abort();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    const std::chrono::steady_clock::time_point m_end;
    const std::function<bool()> m_seen;
    std::vector<std::unique_ptr<SWorker>> m_workers;
};

} // namespace Test
} // namespace VLK
