// GETs through BMibHandler::Query, in process, with a transaction open. Beside each
// stands its floor.
#include "bench/AllocScope.h"
#include "bench/Modules.h"

#include <memory>
#include <random>
#include <vector>

namespace VLK {
namespace {

const char kScalars[] = "1.3.6.1.4.1.32473.1";

BVarBindList ScalarNames(int count)
{
    BVarBindList list;
    for (int i = 1; i <= count; ++i) {
        BObjectIdentifier name = MakeOid(kScalars);
        name.Append(static_cast<unsigned>(i));
        name.Append(0u);
        list.Append(name);
    }
    return list;
}

// The bindings of a GET come without values.
void ClearValues(BVarBindList& list)
{
    for (unsigned i = 0; i < list.Count(); ++i)
        list[static_cast<int>(i)].Value().SetNull();
}

// What an engine pays that keeps the request beside the answer.
void CopyOfBindings(benchmark::State& state)
{
    const BVarBindList names = ScalarNames(static_cast<int>(state.range(0)));
    const AllocScope allocs(state);
    for (auto _ : state) {
        BVarBindList list(names);
        benchmark::DoNotOptimize(list);
    }
}
BENCHMARK(CopyOfBindings)->Arg(1)->Arg(10);

void GetScalars(benchmark::State& state)
{
    Agent agent;
    agent.Add(new Scalars(MakeOid(kScalars)));
    BVarBindList list = ScalarNames(static_cast<int>(state.range(0)));
    const AllocScope allocs(state);
    for (auto _ : state) {
        ClearValues(list);
        if (agent.Query(ePduGet, list) != eSnmpNoError)
            state.SkipWithError("GET failed");
    }
}
BENCHMARK(GetScalars)->Arg(1)->Arg(10);

void GetScalarsFloor(benchmark::State& state)
{
    Scalars module(MakeOid(kScalars));
    BVarBindList list = ScalarNames(static_cast<int>(state.range(0)));
    const AllocScope allocs(state);
    for (auto _ : state) {
        ClearValues(list);
        for (int i = 0; i < static_cast<int>(list.Count()); ++i) {
            if (FloorGet(module, Scalars::s_map[i], list[i], nullptr) != eSnmpNoError)
                state.SkipWithError("GET failed");
        }
    }
}
BENCHMARK(GetScalarsFloor)->Arg(1)->Arg(10);

BObjectIdentifier SiblingOid(unsigned arc)
{
    BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.32473.3");
    oid.Append(arc);
    return oid;
}

// The first scalars of as many subtrees, in an order that no cache foresees.
std::vector<unsigned> SpreadArcs(unsigned count)
{
    std::mt19937 random(1);
    std::vector<unsigned> arcs(4096);
    for (unsigned& arc : arcs)
        arc = 1 + random() % count;
    return arcs;
}

std::vector<BObjectIdentifier> FirstScalars(const std::vector<unsigned>& arcs)
{
    std::vector<BObjectIdentifier> names;
    for (const unsigned arc : arcs) {
        names.push_back(SiblingOid(arc));
        names.back().Append(1u);
        names.back().Append(0u);
    }
    return names;
}

// One GET after the other, each of another subtree.
void GetAmongSiblings(benchmark::State& state)
{
    const unsigned count = static_cast<unsigned>(state.range(0));
    Agent agent;
    for (unsigned i = 0; i < count; ++i)
        agent.Add(new Scalars(SiblingOid(i + 1)));
    const auto names = FirstScalars(SpreadArcs(count));
    BVarBindList list;
    list.Append(names[0]);
    size_t at = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        list[0].Name().Set(names[at++ % names.size()]);
        ClearValues(list);
        if (agent.Query(ePduGet, list) != eSnmpNoError || list[0].Value().IsException())
            state.SkipWithError("GET failed");
    }
}
BENCHMARK(GetAmongSiblings)->RangeMultiplier(10)->Range(10, 100000);

void GetAmongSiblingsFloor(benchmark::State& state)
{
    const unsigned count = static_cast<unsigned>(state.range(0));
    std::vector<std::unique_ptr<Scalars>> modules;
    for (unsigned i = 0; i < count; ++i)
        modules.push_back(std::make_unique<Scalars>(SiblingOid(i + 1)));
    const std::vector<unsigned> arcs = SpreadArcs(count);
    const auto names = FirstScalars(arcs);
    BVarBindList list;
    list.Append(names[0]);
    size_t at = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        list[0].Name().Set(names[at % names.size()]);
        ClearValues(list);
        Scalars& module = *modules[arcs[at++ % names.size()] - 1];
        if (FloorGet(module, Scalars::s_map[0], list[0], nullptr) != eSnmpNoError)
            state.SkipWithError("GET failed");
    }
}
BENCHMARK(GetAmongSiblingsFloor)->RangeMultiplier(10)->Range(10, 100000);

} // namespace
} // namespace VLK
