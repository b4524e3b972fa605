// Arrays and maps: look-up and filling, small and large.
#include "bench/AllocScope.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <vkmibh/containers.h>

using namespace VLK;

namespace {

// Keys in a scrambled order, so that neither the cache nor the branch predictor
// knows the next one.
unsigned Scrambled(unsigned i, unsigned count) { return i * 7919u % count; }

int MakeKey(unsigned i, int*) { return static_cast<int>(i); }

BObjectIdentifier MakeKey(unsigned i, BObjectIdentifier*)
{
    static const unsigned s_prefix[] = {1, 3, 6, 1, 2, 1, 2, 2, 1, 10};
    BObjectIdentifier oid(10, s_prefix);
    oid.Append(i);
    return oid;
}

BString MakeKey(unsigned i, BString*)
{
    char text[32];
    const int length = std::snprintf(text, sizeof text, "interface%07u", i);
    return BString(text, static_cast<unsigned>(length));
}

template <class Map, class Key>
void Fill(Map& map, unsigned count)
{
    for (unsigned i = 0; i < count; ++i)
        map.Insert(MakeKey(i, static_cast<Key*>(nullptr)), nullptr);
}

// Looks every key up, in a scrambled order.
template <class Map, class Key, class LookUp>
void LookKeysUp(benchmark::State& state, LookUp lookUp)
{
    const unsigned count = static_cast<unsigned>(state.range(0));
    Map map;
    Fill<Map, Key>(map, count);
    unsigned i = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookUp(map, map.KeyAt(static_cast<int>(Scrambled(i, count)))));
        i = i + 1 == count ? 0 : i + 1;
    }
}

template <class Map, class Key>
void MapFind(benchmark::State& state)
{
    LookKeysUp<Map, Key>(state, [](const Map& map, const Key& key) { return map.Find(key); });
}
BENCHMARK_TEMPLATE(MapFind, BMapInt2Ptr, int)->Arg(10)->Arg(10000);
BENCHMARK_TEMPLATE(MapFind, BMapStr2Ptr, BString)->Arg(10)->Arg(10000);
BENCHMARK_TEMPLATE(MapFind, BMapOid2Ptr, BObjectIdentifier)->Arg(10)->Arg(10000);

template <class Map, class Key>
void MapNext(benchmark::State& state)
{
    LookKeysUp<Map, Key>(state, [](const Map& map, const Key& key) { return map.Next(key); });
}
BENCHMARK_TEMPLATE(MapNext, BMapInt2Ptr, int)->Arg(10)->Arg(10000);
BENCHMARK_TEMPLATE(MapNext, BMapStr2Ptr, BString)->Arg(10)->Arg(10000);
BENCHMARK_TEMPLATE(MapNext, BMapOid2Ptr, BObjectIdentifier)->Arg(10)->Arg(10000);

template <class Map, class Key>
void MapFill(benchmark::State& state)
{
    const AllocScope allocs(state);
    for (auto _ : state) {
        Map map;
        Fill<Map, Key>(map, static_cast<unsigned>(state.range(0)));
        benchmark::DoNotOptimize(map.Count());
    }
}
BENCHMARK_TEMPLATE(MapFill, BMapInt2Ptr, int)->Arg(10)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(MapFill, BMapOid2Ptr, BObjectIdentifier)
    ->Arg(10)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

void PtrArrayPush1000(benchmark::State& state)
{
    const AllocScope allocs(state);
    for (auto _ : state) {
        BPtrArray array;
        for (int i = 0; i < 1000; ++i)
            array.PushBack(&state);
        benchmark::DoNotOptimize(array.Count());
    }
}
BENCHMARK(PtrArrayPush1000);

} // namespace
