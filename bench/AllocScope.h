// Reports the allocations of a benchmark, per iteration, beside its times; under
// callgrind also its instructions.
//
// callgrind counts from the start of the scope to its end and writes a dump for
// each run. Its trigger says "run N iterations M", and N is a counter of the
// benchmark, so that a script can put the two together.
#pragma once

#include "bench/AllocCount.h"

#include <benchmark/benchmark.h>

#include <cstdio>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define RUNNING_ON_VALGRIND 0
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_TOGGLE_COLLECT
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(text) static_cast<void>(text)
#endif

class AllocScope {
public:
    explicit AllocScope(benchmark::State& state) : m_state(state), m_before(AllocCount())
    {
        CALLGRIND_START_INSTRUMENTATION;
        CALLGRIND_ZERO_STATS;
    }
    ~AllocScope()
    {
        m_state.counters["allocs"] = benchmark::Counter(
            static_cast<double>(AllocCount() - m_before), benchmark::Counter::kAvgIterations);
        if (RUNNING_ON_VALGRIND)
            DumpInstructions();
    }
    AllocScope(const AllocScope&) = delete;
    AllocScope& operator=(const AllocScope&) = delete;

    // What is neither timed nor counted.
    void Pause()
    {
        m_state.PauseTiming();
        CALLGRIND_TOGGLE_COLLECT;
        m_paused = AllocCount();
    }
    void Resume()
    {
        m_before += AllocCount() - m_paused;
        CALLGRIND_TOGGLE_COLLECT;
        m_state.ResumeTiming();
    }

private:
    void DumpInstructions()
    {
        static int s_run = 0;
        char trigger[64];
        std::snprintf(trigger, sizeof trigger, "run %d iterations %lld", ++s_run,
                      static_cast<long long>(m_state.iterations()));
        CALLGRIND_DUMP_STATS_AT(trigger);
        CALLGRIND_STOP_INSTRUMENTATION;
        m_state.counters["run"] = s_run;
    }

    benchmark::State& m_state;
    unsigned long long m_before;
    unsigned long long m_paused = 0;
};
