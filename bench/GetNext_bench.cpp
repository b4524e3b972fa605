// GETNEXTs through BMibHandler::Query: one step, whole walks, regions in regions.
// Beside each stands its floor.
#include "bench/AllocScope.h"
#include "bench/Modules.h"

#include <cstdint>
#include <utility>

namespace VLK {
namespace {

const char kEntry[] = "1.3.6.1.4.1.32473.2.1";

BObjectIdentifier Cell(const char* entry, unsigned row)
{
    BObjectIdentifier name = MakeOid(entry);
    name.Append(1u);
    name.Append(row);
    return name;
}

// One step from the middle of a table.
void GetNextInTable(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    Agent agent;
    agent.Add(new Table(MakeOid(kEntry), rows));
    const BObjectIdentifier from = Cell(kEntry, Table::Row(rows / 2));
    BVarBindList list;
    list.Append(from);
    const AllocScope allocs(state);
    for (auto _ : state) {
        list[0].Name().Set(from);
        list[0].Value().SetNull();
        if (agent.Query(ePduGetNext, list) != eSnmpNoError)
            state.SkipWithError("GETNEXT failed");
    }
}
BENCHMARK(GetNextInTable)->RangeMultiplier(100)->Range(100, 1000000);

void GetNextInTableFloor(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    Table table(MakeOid(kEntry), rows);
    const BObjectIdentifier from = Cell(kEntry, Table::Row(rows / 2));
    BVarBind binding(from);
    BObjectIdentifier index;
    const AllocScope allocs(state);
    for (auto _ : state) {
        binding.Name().Set(from);
        binding.Value().SetNull();
        index.Set(Table::Row(rows / 2));
        if (!FloorNext(table, binding, index))
            state.SkipWithError("GETNEXT failed");
    }
}
BENCHMARK(GetNextInTableFloor)->RangeMultiplier(100)->Range(100, 1000000);

void CountSteps(benchmark::State& state, unsigned rows, unsigned long long steps)
{
    if (steps != uint64_t(rows) * state.iterations())
        state.SkipWithError("the walk missed rows");
    state.counters["per_step"] = benchmark::Counter(
        static_cast<double>(steps), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// A whole table, from before its first row to the end of the view.
void WalkTable(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    Agent agent;
    agent.Add(new Table(MakeOid(kEntry), rows));
    const BObjectIdentifier from = MakeOid(kEntry);
    BVarBindList list;
    list.Append(from);
    unsigned long long steps = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        list[0].Name().Set(from);
        list[0].Value().SetNull();
        while (agent.Query(ePduGetNext, list) == eSnmpNoError && !list[0].Value().IsException())
            ++steps;
    }
    CountSteps(state, rows, steps);
}
BENCHMARK(WalkTable)->RangeMultiplier(10)->Range(100, 1000000)->Unit(benchmark::kMicrosecond);

void WalkTableFloor(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    Table table(MakeOid(kEntry), rows);
    BVarBind binding(MakeOid(kEntry));
    unsigned long long steps = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        BObjectIdentifier index;
        while (FloorNext(table, binding, index))
            ++steps;
    }
    CountSteps(state, rows, steps);
}
BENCHMARK(WalkTableFloor)->RangeMultiplier(10)->Range(100, 1000000)->Unit(benchmark::kMicrosecond);

// A table lies inside another one, between two of its rows: from its middle, it and the
// table around it are asked.
void GetNextInNestedRegions(benchmark::State& state)
{
    Agent agent;
    agent.Add(new Table(MakeOid("1.3.6.1.4.1.32473.5"), 100));
    agent.Add(new Table(MakeOid("1.3.6.1.4.1.32473.5.1.10"), 100));
    const BObjectIdentifier from = Cell("1.3.6.1.4.1.32473.5.1.10", Table::Row(50));
    BVarBindList list;
    list.Append(from);
    const AllocScope allocs(state);
    for (auto _ : state) {
        list[0].Name().Set(from);
        list[0].Value().SetNull();
        if (agent.Query(ePduGetNext, list) != eSnmpNoError || list[0].Name().Length() != 12)
            state.SkipWithError("GETNEXT failed");
    }
}
BENCHMARK(GetNextInNestedRegions);

void GetNextInNestedRegionsFloor(benchmark::State& state)
{
    Table outer(MakeOid("1.3.6.1.4.1.32473.5"), 100);
    Table inner(MakeOid("1.3.6.1.4.1.32473.5.1.10"), 100);
    const BObjectIdentifier from = Cell("1.3.6.1.4.1.32473.5.1.10", Table::Row(50));
    BVarBind first(from), second(from);
    BObjectIdentifier index;
    const AllocScope allocs(state);
    for (auto _ : state) {
        for (BVarBind* binding : {&first, &second}) {
            binding->Name().Set(from);
            binding->Value().SetNull();
        }
        index.Set(Table::Row(50));
        const bool found = FloorNext(inner, first, index);
        index.Set(10u);
        if (!found || !FloorNext(outer, second, index))
            state.SkipWithError("GETNEXT failed");
    }
}
BENCHMARK(GetNextInNestedRegionsFloor);

} // namespace
} // namespace VLK
