// The view filter table: is an identifier in a view? However many rows there are, a
// look-up compares those that may cover the identifier; rows whose address somebody
// outside has are compared all.
#include "bench/AllocScope.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <vkmibh/filter.h>

using namespace VLK;

namespace {

constexpr unsigned kPrefix[] = {1, 3, 6, 1, 2, 1, 2, 2, 1};

BString ViewName(unsigned i)
{
    char text[32];
    const int length = std::snprintf(text, sizeof text, "view%07u", i);
    return BString(text, static_cast<unsigned>(length));
}

BObjectIdentifier Subtree(unsigned i)
{
    BObjectIdentifier oid(sizeof kPrefix / sizeof *kPrefix, kPrefix);
    oid.Append(i);
    return oid;
}

// `rows` families under different subtrees, `perView` to a view.
void Fill(BFilterTable& table, unsigned rows, unsigned perView)
{
    for (unsigned i = 0; i < rows; ++i)
        table.Insert(ViewName(i / perView), Subtree(i), BOctetString(), eFilterIncluded,
                     eStorageVolatile, eRowActive, false);
}

// The table takes notice of what rests after some look-ups.
void LetRest(BFilterTable& table)
{
    for (int i = 0; i < 100; ++i)
        table.Filter(ViewName(0), Subtree(0));
}

// Asks one view for the subtree of one row after the other.
void Ask(benchmark::State& state, unsigned perView, unsigned first)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    BFilterTable table(nullptr);
    Fill(table, rows, perView);
    const BString view = ViewName(0);
    BObjectIdentifier asked = Subtree(first);
    asked.Append(1u);
    unsigned& arc = asked[sizeof kPrefix / sizeof *kPrefix];
    unsigned i = 0;
    LetRest(table);
    const AllocScope allocs(state);
    for (auto _ : state) {
        arc = first + i * 7919u % rows;
        benchmark::DoNotOptimize(table.Filter(view, asked));
        i = i + 1 == rows ? 0 : i + 1;
    }
}

// All rows belong to the view that is asked; one of them matches.
void FilterOneView(benchmark::State& state)
{
    Ask(state, static_cast<unsigned>(state.range(0)), 0);
}
BENCHMARK(FilterOneView)->RangeMultiplier(10)->Range(10, 10000);

// The floor: the name of one view and the subtree of one family are compared.
void FilterOneViewFloor(benchmark::State& state)
{
    const BString view = ViewName(0), same = ViewName(0);
    const BObjectIdentifier family = Subtree(0);
    const BOctetString mask;
    BObjectIdentifier asked = family;
    asked.Append(1u);
    const AllocScope allocs(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(view == same);
        benchmark::DoNotOptimize(asked.IsUnderSubtree(family, mask.Data(), mask.Length()));
    }
}
BENCHMARK(FilterOneViewFloor);

// All rows belong to it, and none matches.
void FilterOneViewNoMatch(benchmark::State& state)
{
    Ask(state, static_cast<unsigned>(state.range(0)), 1u << 20);
}
BENCHMARK(FilterOneViewNoMatch)->RangeMultiplier(10)->Range(10, 10000);

// Ten rows to a view, of which one in so many is asked.
void FilterManyViews(benchmark::State& state) { Ask(state, 10, 0); }
BENCHMARK(FilterManyViews)->RangeMultiplier(10)->Range(10, 10000);

// All rows came from outside.
void FilterLentRows(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    BFilterTable table(nullptr);
    Fill(table, rows, rows);
    for (unsigned i = 0; i < rows; ++i)
        table.RowAt(static_cast<int>(i));
    const BString view = ViewName(0);
    const BObjectIdentifier asked = Subtree(rows / 2);
    const AllocScope allocs(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(table.Filter(view, asked));
}
BENCHMARK(FilterLentRows)->Arg(10000);

// The rows of a view from the last to the first, by the operations that step from
// one to the next; the time is that of the whole walk.
void WalkOneView(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    BFilterTable table(nullptr);
    Fill(table, rows, rows);
    const BString view = ViewName(0);
    const AllocScope allocs(state);
    for (auto _ : state) {
        unsigned met = 0;
        for (const auto* row = table.GetLastRowWithViewName(view); row;
             row = table.GetPrevRowWithSameViewName(row))
            ++met;
        if (met != rows)
            state.SkipWithError("the walk does not meet all rows");
    }
}
BENCHMARK(WalkOneView)->RangeMultiplier(10)->Range(10, 10000);

} // namespace
