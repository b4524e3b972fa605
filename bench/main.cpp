// Proves that the allocation counter counts, then runs the benchmarks.
#include "bench/AllocCount.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <new>

namespace {

void* volatile g_sink;

bool CounterCounts()
{
    const unsigned long long before = AllocCount();
    g_sink = new char[64];
    delete[] static_cast<char*>(g_sink);
    g_sink = new (std::nothrow) long(1);
    delete static_cast<long*>(g_sink);
    return AllocCount() == before + 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (!CounterCounts()) {
        std::fputs("vkmibh_bench: the allocation counter does not count\n", stderr);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
