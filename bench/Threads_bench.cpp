// GETs on two threads at once: what the second one adds. Ideal are halves of the time
// per GET; asking one module, which serves one request at a time, is to cost no more
// than waiting for it does.
#include "bench/Modules.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace VLK {
namespace {

// One handler for all threads, made by the first.
std::unique_ptr<Agent> g_agent;

BObjectIdentifier ModuleOid(int number)
{
    BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.32473.6");
    oid.Append(static_cast<unsigned>(number));
    return oid;
}

void MakeAgent(const benchmark::State&)
{
    g_agent = std::make_unique<Agent>();
    for (int i = 1; i <= 2; ++i)
        g_agent->Add(new Scalars(ModuleOid(i)));
}

void DropAgent(const benchmark::State&) { g_agent.reset(); }

// Ten bindings, so that the module has something to do.
BVarBindList Names(int module)
{
    BVarBindList list;
    for (unsigned i = 1; i <= 10; ++i) {
        BObjectIdentifier name = ModuleOid(module);
        name.Append(i);
        name.Append(0u);
        list.Append(name);
    }
    return list;
}

void Get(benchmark::State& state, int module)
{
    BVarBindList list = Names(module);
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i)
            list[i].Value().SetNull();
        if (g_agent->Query(ePduGet, list) != eSnmpNoError)
            state.SkipWithError("GET failed");
    }
}

void GetFromOneModule(benchmark::State& state) { Get(state, 1); }
BENCHMARK(GetFromOneModule)
    ->Setup(MakeAgent)
    ->Teardown(DropAgent)
    ->UseRealTime()
    ->Threads(1)
    ->Threads(2);

void GetFromOwnModule(benchmark::State& state) { Get(state, 1 + state.thread_index()); }
BENCHMARK(GetFromOwnModule)
    ->Setup(MakeAgent)
    ->Teardown(DropAgent)
    ->UseRealTime()
    ->Threads(1)
    ->Threads(2);

// The floor: each thread calls the code of a module that no other thread knows.
void GetFromOwnModuleFloor(benchmark::State& state)
{
    Scalars module(ModuleOid(1));
    BVarBindList list = Names(1);
    for (auto _ : state) {
        for (int i = 0; i < 10; ++i) {
            list[i].Value().SetNull();
            if (FloorGet(module, Scalars::s_map[i], list[i], nullptr) != eSnmpNoError)
                state.SkipWithError("GET failed");
        }
    }
}
BENCHMARK(GetFromOwnModuleFloor)->UseRealTime()->Threads(1)->Threads(2);

} // namespace
} // namespace VLK
