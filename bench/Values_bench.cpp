// Values: what a binding costs before anything is asked of it.
#include "bench/AllocScope.h"

#include <benchmark/benchmark.h>
#include <string>
#include <vkmibh/values.h>

using namespace VLK;

namespace {

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

void OidCompareEqual12(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    const BObjectIdentifier b = a; // NOLINT(performance-unnecessary-copy-initialization): elsewhere
    const AllocScope allocs(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.Compare(b));
}
BENCHMARK(OidCompareEqual12);

void OidCompareDifferingEarly(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    const BObjectIdentifier b = Oid("1.3.7.1.2.1.2.2.1.10.1.7");
    const AllocScope allocs(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.Compare(b));
}
BENCHMARK(OidCompareDifferingEarly);

void OidCopy(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    const AllocScope allocs(state);
    for (auto _ : state) {
        BObjectIdentifier copy(a);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(OidCopy);

void OidSetIntoStorage(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    BObjectIdentifier copy(a);
    const AllocScope allocs(state);
    for (auto _ : state) {
        copy.Set(a);
        benchmark::DoNotOptimize(copy.Arcs());
    }
}
BENCHMARK(OidSetIntoStorage);

void OidToString(benchmark::State& state)
{
    const BObjectIdentifier a = Oid(kName);
    const AllocScope allocs(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(a.ToString());
}
BENCHMARK(OidToString);

void SyntaxCopy(benchmark::State& state, BObjectSyntax (*make)())
{
    const BObjectSyntax value = make();
    const AllocScope allocs(state);
    for (auto _ : state) {
        BObjectSyntax copy(value);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK_CAPTURE(SyntaxCopy, Int, Integer);
BENCHMARK_CAPTURE(SyntaxCopy, Octets, Octets);
BENCHMARK_CAPTURE(SyntaxCopy, ObjectId, ObjectId);

void SyntaxSetInt(benchmark::State& state)
{
    BObjectSyntax value;
    const AllocScope allocs(state);
    for (auto _ : state) {
        value.SetInt(1);
        benchmark::DoNotOptimize(value.Syntax());
    }
}
BENCHMARK(SyntaxSetInt);

// One call of the trace hook, as every operation of a tagged value makes them.
void TraceHook(benchmark::State& state)
{
    for (auto _ : state)
        VKDbgModuleTraceClass(eTraceObjectSyntax, "FreeResources");
}
BENCHMARK(TraceHook);

void ListCopy(benchmark::State& state)
{
    BVarBindList list;
    for (int i = 0; i < state.range(0); ++i)
        list.Append(Oid(kName), Integer());
    const AllocScope allocs(state);
    for (auto _ : state) {
        BVarBindList copy(list);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(ListCopy)->Arg(1)->Arg(10);

void ListBuild(benchmark::State& state)
{
    const BVarBind binding(Oid(kName), Integer());
    const AllocScope allocs(state);
    for (auto _ : state) {
        BVarBindList list;
        for (int i = 0; i < state.range(0); ++i)
            list.Append(binding);
        benchmark::DoNotOptimize(list.Count());
    }
}
BENCHMARK(ListBuild)->Arg(1)->Arg(10);

} // namespace
