// The registration tree: look-ups among few and many sibling subtrees, and
// registering them.
#include <vkmibh/tree.h>

#include "bench/AllocScope.h"
#include "tests/support/PlainHandler.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <memory>
#include <random>
#include <vector>

using namespace VLK;

namespace {

constexpr unsigned kSiblingArcs[] = {1, 3, 6, 1, 4, 1, 32473, 1};

BObjectIdentifier Below(unsigned arc)
{
    BObjectIdentifier oid(8, kSiblingArcs);
    oid.Append(arc);
    return oid;
}

enum EOrder { eAscending, eDescending, eRandom };

// As many handlers side by side, with every other arc free between them.
std::vector<std::unique_ptr<CPlainHandler>> Siblings(unsigned count, EOrder order = eAscending)
{
    std::vector<std::unique_ptr<CPlainHandler>> handlers;
    for (unsigned i = 0; i < count; ++i)
        handlers.push_back(std::make_unique<CPlainHandler>(Below(2 * i + 1)));
    if (order == eDescending)
        std::reverse(handlers.begin(), handlers.end());
    if (order == eRandom)
        std::shuffle(handlers.begin(), handlers.end(), std::mt19937(1));
    return handlers;
}

// Instances below the siblings, or beside them where no handler is.
std::vector<BObjectIdentifier> Queries(unsigned count, bool registered)
{
    std::mt19937 random(2);
    std::vector<BObjectIdentifier> queries(4096);
    for (BObjectIdentifier& oid : queries) {
        oid = Below(2 * (random() % count) + (registered ? 1 : 0));
        oid.Append(1);
        oid.Append(0);
    }
    return queries;
}

void Find(benchmark::State& state, BMibNode* (BMibTree::*find)(const BObjectIdentifier&) const,
          bool registered)
{
    const unsigned count = static_cast<unsigned>(state.range(0));
    BMibTree tree;
    const auto handlers = Siblings(count);
    for (const auto& handler : handlers)
        tree.Register(handler.get());
    const std::vector<BObjectIdentifier> queries = Queries(count, registered);
    std::size_t at = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        BMibNode* node = (tree.*find)(queries[at++ % 4096]);
        benchmark::DoNotOptimize(node);
        if (!node)
            state.SkipWithError("no handler was found");
    }
}

void FindSubtreeHandlerNode(benchmark::State& state)
{
    Find(state, &BMibTree::FindSubtreeHandlerNode, true);
}
BENCHMARK(FindSubtreeHandlerNode)->Arg(10)->Arg(10000)->Arg(100000);

void FindNextSubtreeHandlerNode(benchmark::State& state)
{
    Find(state, &BMibTree::FindNextSubtreeHandlerNode, true);
}
BENCHMARK(FindNextSubtreeHandlerNode)->Arg(10)->Arg(10000)->Arg(100000);

// No handler serves the identifier: the one after it is wanted.
void FindNextSubtreeHandlerNodeInGap(benchmark::State& state)
{
    Find(state, &BMibTree::FindNextSubtreeHandlerNode, false);
}
BENCHMARK(FindNextSubtreeHandlerNodeInGap)->Arg(10)->Arg(10000)->Arg(100000);

// Into a fresh tree; building and destroying it is not counted.
void Register(benchmark::State& state, EOrder order)
{
    const auto handlers = Siblings(static_cast<unsigned>(state.range(0)), order);
    for (auto _ : state) {
        state.PauseTiming();
        auto tree = std::make_unique<BMibTree>();
        state.ResumeTiming();
        int registered = 0;
        for (const auto& handler : handlers)
            registered += tree->Register(handler.get());
        if (registered != state.range(0))
            state.SkipWithError("a registration was refused");
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}
BENCHMARK_CAPTURE(Register, ascending, eAscending)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Register, descending, eDescending)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Register, random, eRandom)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);

void RegisterRange(benchmark::State& state)
{
    CPlainHandler handler(Below(1), 9, static_cast<unsigned>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto tree = std::make_unique<BMibTree>();
        state.ResumeTiming();
        if (!tree->Register(&handler))
            state.SkipWithError("the range was refused");
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(RegisterRange)->Arg(100000)->Unit(benchmark::kMillisecond);

void DestroyTree(benchmark::State& state)
{
    const auto handlers = Siblings(static_cast<unsigned>(state.range(0)), eRandom);
    for (auto _ : state) {
        state.PauseTiming();
        auto tree = std::make_unique<BMibTree>();
        for (const auto& handler : handlers)
            tree->Register(handler.get());
        state.ResumeTiming();
        tree.reset();
    }
}
BENCHMARK(DestroyTree)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
