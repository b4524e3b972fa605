// Requests through BMibHandler::Query, in process, with a transaction open.
//
// Each benchmark reports, beside its time, the calls of operator new per
// operation. The floor of a request is the copy of its bindings alone.
#include "bench/Agent.h"
#include "bench/AllocScope.h"

#include <vkmibh/system.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace VLK {
namespace {

// Ten integer scalars, of which the first can be written.
class Scalars : public BMibScalarGroupImpl {
public:
    explicit Scalars(const BObjectIdentifier& oid)
        : BMibScalarGroupImpl(BString("bench.scalars"), oid)
    {
    }
    int OnGet(unsigned, int& value)
    {
        value = m_value;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit)
            m_value = value;
        return eSnmpNoError;
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
    int m_value = 1;
};

constexpr SRqHndlrMapEntry ReadRow(unsigned column, const char* name)
{
    return ScalarRow<eKindInteger, &Scalars::OnGet>(column, name, eAsnInteger, eRqReadOnly);
}

SRqHndlrMapEntry Scalars::s_map[] = {
    ScalarRow<eKindInteger, &Scalars::OnGet, &Scalars::OnSet>(1, "one", eAsnInteger, eRqReadWrite),
    ReadRow(2, "two"),
    ReadRow(3, "three"),
    ReadRow(4, "four"),
    ReadRow(5, "five"),
    ReadRow(6, "six"),
    ReadRow(7, "seven"),
    ReadRow(8, "eight"),
    ReadRow(9, "nine"),
    ReadRow(10, "ten"),
    kRqEnd};

// One column over rows with scattered indices, found by binary search.
class Table : public BMibTableImpl {
public:
    Table(const BObjectIdentifier& oid, unsigned rows) : BMibTableImpl(BString("bench.table"), oid)
    {
        for (unsigned i = 0; i < rows; ++i)
            m_rows.push_back(7 * i + 1);
    }
    int OnGet(const BObjectIdentifier& instance, unsigned, int& value)
    {
        value = static_cast<int>(instance[0]);
        return std::binary_search(m_rows.begin(), m_rows.end(), instance[0]) ? eSnmpNoError
                                                                             : eSnmpNoSuchName;
    }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const auto next = index.Length() == 0
                              ? m_rows.begin()
                              : std::upper_bound(m_rows.begin(), m_rows.end(), index[0]);
        return next != m_rows.end() && nextIndex.Set(*next);
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
    std::vector<unsigned> m_rows;
};

SRqHndlrMapEntry Table::s_map[] = {
    ColumnRow<eKindInteger, &Table::OnGet>(1, "value", eAsnInteger, eRqReadOnly), kRqEnd};

BVarBindList ScalarNames(int count)
{
    BVarBindList list;
    for (int i = 1; i <= count; ++i) {
        BObjectIdentifier name = MakeOid("1.3.6.1.4.1.32473.1");
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

// What a request costs that does nothing: its bindings are copied.
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
    agent.Add(new Scalars(MakeOid("1.3.6.1.4.1.32473.1")));
    BVarBindList list = ScalarNames(static_cast<int>(state.range(0)));
    const AllocScope allocs(state);
    for (auto _ : state) {
        ClearValues(list);
        if (agent.Query(ePduGet, list) != eSnmpNoError)
            state.SkipWithError("GET failed");
    }
}
BENCHMARK(GetScalars)->Arg(1)->Arg(10);

void SetScalar(benchmark::State& state)
{
    Agent agent;
    agent.Add(new Scalars(MakeOid("1.3.6.1.4.1.32473.1")));
    BVarBindList list = ScalarNames(1);
    list[0].Value().SetInt(5);
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (agent.Query(ePduSet, list) != eSnmpNoError)
            state.SkipWithError("SET failed");
    }
}
BENCHMARK(SetScalar);

void SetSysContact(benchmark::State& state)
{
    Agent agent;
    agent.Handler().Init(nullptr, nullptr);
    BVarBindList list;
    BObjectSyntax text;
    text.SetOctets(BString("someone@example.org"));
    list.Append(MakeOid("1.3.6.1.2.1.1.4.0"), text);
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (agent.Query(ePduSet, list) != eSnmpNoError)
            state.SkipWithError("SET failed");
    }
}
BENCHMARK(SetSysContact);

// One step from the middle of a table.
void GetNextInTable(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    Agent agent;
    agent.Add(new Table(MakeOid("1.3.6.1.4.1.32473.2.1"), rows));
    BObjectIdentifier from = MakeOid("1.3.6.1.4.1.32473.2.1.1");
    from.Append(7 * (rows / 2) + 1);
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
BENCHMARK(GetNextInTable)->Arg(10000);

// A whole table, from before its first row to the end of the view.
void WalkTable(benchmark::State& state)
{
    const unsigned rows = static_cast<unsigned>(state.range(0));
    Agent agent;
    agent.Add(new Table(MakeOid("1.3.6.1.4.1.32473.2.1"), rows));
    const BObjectIdentifier from = MakeOid("1.3.6.1.4.1.32473.2.1");
    BVarBindList list;
    list.Append(from);
    unsigned long long steps = 0;
    for (auto _ : state) {
        list[0].Name().Set(from);
        list[0].Value().SetNull();
        while (agent.Query(ePduGetNext, list) == eSnmpNoError && !list[0].Value().IsException())
            ++steps;
    }
    if (steps != uint64_t(rows) * state.iterations())
        state.SkipWithError("the walk missed rows");
    state.counters["per_step"] = benchmark::Counter(
        static_cast<double>(steps), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(WalkTable)->RangeMultiplier(10)->Range(100, 100000)->Unit(benchmark::kMicrosecond);

// The sysORTable lies inside the system group: three regions are asked.
void GetNextInNestedRegions(benchmark::State& state)
{
    Agent agent;
    agent.Handler().Init(nullptr, nullptr);
    const BObjectIdentifier from = MakeOid("1.3.6.1.2.1.1.9.3.4");
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
BENCHMARK(GetNextInNestedRegions);

BObjectIdentifier SiblingOid(unsigned arc)
{
    BObjectIdentifier oid = MakeOid("1.3.6.1.4.1.32473.3");
    oid.Append(arc);
    return oid;
}

void GetAmongSiblings(benchmark::State& state)
{
    const unsigned count = static_cast<unsigned>(state.range(0));
    Agent agent;
    for (unsigned i = 0; i < count; ++i)
        agent.Add(new Scalars(SiblingOid(i + 1)));
    BObjectIdentifier name = SiblingOid(count / 2);
    name.Append(1u);
    name.Append(0u);
    BVarBindList list;
    list.Append(name);
    const AllocScope allocs(state);
    for (auto _ : state) {
        ClearValues(list);
        if (agent.Query(ePduGet, list) != eSnmpNoError || list[0].Value().IsException())
            state.SkipWithError("GET failed");
    }
}
BENCHMARK(GetAmongSiblings)->Arg(10)->Arg(10000);

enum EOrder { eAscending, eDescending, eShuffled };

void RegisterSiblings(benchmark::State& state)
{
    std::vector<unsigned> arcs;
    for (unsigned i = 1; i <= 10000; ++i)
        arcs.push_back(i);
    if (state.range(0) == eDescending)
        std::reverse(arcs.begin(), arcs.end());
    if (state.range(0) == eShuffled)
        std::shuffle(arcs.begin(), arcs.end(), std::mt19937(1));
    std::vector<std::unique_ptr<Scalars>> impls;
    for (unsigned arc : arcs)
        impls.emplace_back(new Scalars(SiblingOid(arc)));
    for (auto _ : state) {
        state.PauseTiming();
        auto handler = std::make_unique<BMibHandler>(nullptr);
        state.ResumeTiming();
        for (auto& impl : impls)
            handler->RegisterSubtreeHandler(impl.get());
        state.PauseTiming();
        handler.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(RegisterSiblings)
    ->Arg(eAscending)
    ->Arg(eDescending)
    ->Arg(eShuffled)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace VLK
