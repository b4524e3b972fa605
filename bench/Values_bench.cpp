// Values: what a binding costs before anything is asked of it.
#include "bench/AllocCount.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vkmibh/values.h>

using namespace VLK;

namespace {

// Reports the allocations per iteration of the loop that it lives around.
class AllocationsPerRound {
public:
    explicit AllocationsPerRound(benchmark::State& state) : m_state(state), m_before(AllocCount())
    {
    }
    ~AllocationsPerRound()
    {
        m_state.counters["allocs"] = benchmark::Counter(
            static_cast<double>(AllocCount() - m_before), benchmark::Counter::kAvgIterations);
    }

private:
    benchmark::State& m_state;
    const unsigned long long m_before;
};

BObjectIdentifier Oid(const char* dotted) { return BObjectIdentifier(BString(dotted)); }

const char kName[] = "1.3.6.1.2.1.2.2.1.10.1.7";

BObjectSyntax Integer()
{
    BObjectSyntax value;
    value.SetInt(4711);
    return value;
}

BObjectSyntax Octets()
{
    BObjectSyntax value;
    value.SetOctets(BString("a description of some length"));
    return value;
}

BObjectSyntax ObjectId()
{
    BObjectSyntax value;
    value.SetObjectId(Oid(kName));
    return value;
}

void BM_OidCompareEqual12(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    const BObjectIdentifier b = a;
    AllocationsPerRound allocations(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.Compare(b));
}
BENCHMARK(BM_OidCompareEqual12);

void BM_OidCompareDifferingEarly(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    const BObjectIdentifier b = Oid("1.3.7.1.2.1.2.2.1.10.1.7");
    AllocationsPerRound allocations(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.Compare(b));
}
BENCHMARK(BM_OidCompareDifferingEarly);

void BM_OidCopy(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    AllocationsPerRound allocations(state);
    for (auto _ : state) {
        BObjectIdentifier copy(a);
        benchmark::DoNotOptimize(copy.Arcs());
    }
}
BENCHMARK(BM_OidCopy);

void BM_OidSetIntoStorage(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    BObjectIdentifier copy(a);
    AllocationsPerRound allocations(state);
    for (auto _ : state) {
        copy.Set(a);
        benchmark::DoNotOptimize(copy.Arcs());
    }
}
BENCHMARK(BM_OidSetIntoStorage);

void BM_OidToString(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    AllocationsPerRound allocations(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.ToString());
}
BENCHMARK(BM_OidToString);

void BM_SyntaxCopy(benchmark::State& state, BObjectSyntax (*make)())
{
    const BObjectSyntax value = make();
    AllocationsPerRound allocations(state);
    for (auto _ : state) {
        BObjectSyntax copy(value);
        benchmark::DoNotOptimize(copy.Syntax());
    }
}
BENCHMARK_CAPTURE(BM_SyntaxCopy, Int, Integer);
BENCHMARK_CAPTURE(BM_SyntaxCopy, Octets, Octets);
BENCHMARK_CAPTURE(BM_SyntaxCopy, ObjectId, ObjectId);

void BM_SyntaxSetInt(benchmark::State& state)
{
    BObjectSyntax value;
    AllocationsPerRound allocations(state);
    for (auto _ : state) {
        value.SetInt(1);
        benchmark::DoNotOptimize(value.Syntax());
    }
}
BENCHMARK(BM_SyntaxSetInt);

// One call of the trace hook, as every operation of a tagged value makes them.
void BM_TraceHook(benchmark::State& state)
{
    for (auto _ : state)
        VKDbgModuleTraceClass(eTraceObjectSyntax, "FreeResources");
}
BENCHMARK(BM_TraceHook);

void BM_ListCopy(benchmark::State& state)
{
    BVarBindList list;
    for (int i = 0; i < state.range(0); ++i)
        list.Append(Oid(kName), Integer());
    AllocationsPerRound allocations(state);
    for (auto _ : state) {
        BVarBindList copy(list);
        benchmark::DoNotOptimize(copy.Count());
    }
}
BENCHMARK(BM_ListCopy)->Arg(1)->Arg(10);

void BM_ListBuild(benchmark::State& state)
{
    const BVarBind binding(Oid(kName), Integer());
    AllocationsPerRound allocations(state);
    for (auto _ : state) {
        BVarBindList list;
        for (int i = 0; i < state.range(0); ++i)
            list.Append(binding);
        benchmark::DoNotOptimize(list.Count());
    }
}
BENCHMARK(BM_ListBuild)->Arg(1)->Arg(10);

} // namespace
