// Registering many subtrees with a handler, and the floor: a node made for each, with the
// name that nodes have.
#include "bench/AllocScope.h"
#include "bench/Modules.h"

#include <memory>
#include <random>
#include <vector>

namespace VLK {
namespace {

constexpr unsigned kCount = 10000;

enum EOrder { eAscending, eDescending, eShuffled };

std::vector<std::unique_ptr<Scalars>> Siblings(EOrder order)
{
    std::vector<unsigned> arcs;
    for (unsigned i = 1; i <= kCount; ++i)
        arcs.push_back(i);
    if (order == eDescending)
        std::reverse(arcs.begin(), arcs.end());
    if (order == eShuffled)
        std::shuffle(arcs.begin(), arcs.end(), std::mt19937(1));
    std::vector<std::unique_ptr<Scalars>> modules;
    for (const unsigned arc : arcs) {
        BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.32473.3");
        oid.Append(arc);
        modules.push_back(std::make_unique<Scalars>(oid));
    }
    return modules;
}

void RegisterSiblings(benchmark::State& state)
{
    const auto modules = Siblings(static_cast<EOrder>(state.range(0)));
    AllocScope allocs(state);
    for (auto _ : state) {
        allocs.Pause();
        auto handler = std::make_unique<BMibHandler>(nullptr);
        allocs.Resume();
        for (const auto& module : modules)
            handler->RegisterSubtreeHandler(module.get());
        allocs.Pause();
        handler.reset();
        allocs.Resume();
    }
}
BENCHMARK(RegisterSiblings)
    ->Arg(eAscending)
    ->Arg(eDescending)
    ->Arg(eShuffled)
    ->Unit(benchmark::kMicrosecond);

void RegisterSiblingsFloor(benchmark::State& state)
{
    const auto modules = Siblings(static_cast<EOrder>(state.range(0)));
    std::vector<std::unique_ptr<BMibNode>> nodes(kCount);
    AllocScope allocs(state);
    for (auto _ : state) {
        for (unsigned i = 0; i < kCount; ++i)
            nodes[i] = std::make_unique<BMibNode>(modules[i]->Oid().ToString(), i, nullptr);
        allocs.Pause();
        for (auto& node : nodes)
            node.reset();
        allocs.Resume();
    }
}
BENCHMARK(RegisterSiblingsFloor)
    ->Arg(eAscending)
    ->Arg(eDescending)
    ->Arg(eShuffled)
    ->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace VLK
