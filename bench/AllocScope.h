// Reports the allocations of a benchmark, per iteration, beside its times.
#pragma once

#include "bench/AllocCount.h"

#include <benchmark/benchmark.h>

class AllocScope {
public:
    explicit AllocScope(benchmark::State& state) : m_state(state), m_before(AllocCount()) {}
    ~AllocScope()
    {
        m_state.counters["allocs"] = benchmark::Counter(
            static_cast<double>(AllocCount() - m_before), benchmark::Counter::kAvgIterations);
    }
    AllocScope(const AllocScope&) = delete;
    AllocScope& operator=(const AllocScope&) = delete;

private:
    benchmark::State& m_state;
    const unsigned long long m_before;
};
