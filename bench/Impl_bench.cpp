// The implementation framework without the handler above it: adapters, the list
// form of Get, and the walk of a table.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>
#include <vkmibh/impl.h>

#include "bench/AllocScope.h"

namespace {

using namespace VLK;

const unsigned kRoot[] = {1, 3, 6, 1, 4, 1, 32473, 1};

BObjectIdentifier Root() { return BObjectIdentifier(8, kRoot); }

class CTen : public BMibScalarGroupImpl {
public:
    CTen() : BMibScalarGroupImpl("ten", Root()) { Initialize(); }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    static SRqHndlrMapEntry s_map[];

    int OnGet_Number(unsigned, unsigned& value)
    {
        value = m_number;
        return 0;
    }
    int OnSet_Number(ESnmpSetOpCode op, unsigned, unsigned value, void**)
    {
        if (op == eSetCommit)
            m_number = value;
        return 0;
    }
    int OnGet_Text(unsigned, BString& value)
    {
        value = m_text;
        return 0;
    }
    int OnSet_Text(ESnmpSetOpCode op, unsigned, const BString& value, void**)
    {
        if (op == eSetCommit)
            m_text = value;
        return 0;
    }

private:
    unsigned m_number = 12;
    BString m_text = "a description of the usual length, forty-odd";
};

constexpr SRqHndlrMapEntry Number(unsigned column)
{
    return ScalarRow<eKindUnsigned, &CTen::OnGet_Number, &CTen::OnSet_Number>(
        column, "number", eAsnGauge32, eRqReadWrite);
}
constexpr SRqHndlrMapEntry Text(unsigned column)
{
    return ScalarRow<eKindDisplayString, &CTen::OnGet_Text, &CTen::OnSet_Text>(
        column, "text", eAsnOctetString, eRqReadWrite);
}
VKMIBH_CONSTINIT SRqHndlrMapEntry CTen::s_map[] = {Number(1), Text(2),    Number(3), Number(4),
                                                   Text(5),   Number(6),  Number(7), Text(8),
                                                   Number(9), Number(10), kRqEnd};

void AdapterGetNumber(benchmark::State& state)
{
    CTen impl;
    BObjectSyntax value;
    const AllocScope allocs(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(impl.Get(&CTen::s_map[0], 1, value, nullptr));
}
BENCHMARK(AdapterGetNumber);

void AdapterGetText(benchmark::State& state)
{
    CTen impl;
    BObjectSyntax value;
    const AllocScope allocs(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(impl.Get(&CTen::s_map[1], 1, value, nullptr));
}
BENCHMARK(AdapterGetText);

// All four phases but the undo, as a SET that succeeds.
void SetAll(benchmark::State& state, const SRqHndlrMapEntry& entry, const BObjectSyntax& value)
{
    CTen impl;
    const AllocScope allocs(state);
    for (auto _ : state) {
        SSetSlot slot{};
        for (ESnmpSetOpCode op : {eSetTest, eSetCommit, eSetCleanup})
            benchmark::DoNotOptimize(impl.Set(&entry, 1, op, &slot.scratch, value, nullptr));
    }
}

void AdapterSetNumber(benchmark::State& state)
{
    BObjectSyntax value;
    value.SetGauge(77);
    SetAll(state, CTen::s_map[0], value);
}
BENCHMARK(AdapterSetNumber);

void AdapterSetText(benchmark::State& state)
{
    BObjectSyntax value;
    value.SetOctets(BString("a new description of the usual length"));
    SetAll(state, CTen::s_map[1], value);
}
BENCHMARK(AdapterSetText);

BVarBindList TenBindings()
{
    BVarBindList list;
    for (unsigned column = 1; column <= 10; ++column) {
        BObjectIdentifier name(Root());
        name.Append(column);
        name.Append(0u);
        list.Append(name);
    }
    return list;
}

void ListGetTen(benchmark::State& state)
{
    CTen impl;
    BVarBindList list = TenBindings();
    const AllocScope allocs(state);
    for (auto _ : state) {
        int index = 0;
        benchmark::DoNotOptimize(impl.Get(1, list, index, 10));
    }
}
BENCHMARK(ListGetTen);

// The floor of ListGetTen: a copy of the answered bindings.
void CopyTen(benchmark::State& state)
{
    CTen impl;
    BVarBindList list = TenBindings();
    int index = 0;
    impl.Get(1, list, index, 10);
    const AllocScope allocs(state);
    for (auto _ : state) {
        BVarBindList copy(list);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(CopyTen);

class CRows : public BMibTableImpl {
public:
    explicit CRows(unsigned count) : BMibTableImpl("rows", Root())
    {
        for (unsigned i = 1; i <= count; ++i)
            m_rows.push_back(i * 3);
        Initialize();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const auto row = index.Length() == 0
                             ? m_rows.begin()
                             : std::upper_bound(m_rows.begin(), m_rows.end(), index[0]);
        return row != m_rows.end() && nextIndex.Set(*row);
    }
    int OnGet_Number(const BObjectIdentifier& instance, unsigned, unsigned& value)
    {
        if (!std::binary_search(m_rows.begin(), m_rows.end(), instance[0]))
            return eSnmpNoSuchName;
        value = instance[0];
        return 0;
    }

private:
    static SRqHndlrMapEntry s_map[];
    std::vector<unsigned> m_rows;
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CRows::s_map[] = {
    ColumnRow<eKindUnsigned>(1, "index", eAsnGauge32, eRqNotAccessible),
    ColumnRow<eKindUnsigned, &CRows::OnGet_Number>(2, "number", eAsnGauge32, eRqReadOnly), kRqEnd};

void TableGetNextStep(benchmark::State& state)
{
    CRows table(static_cast<unsigned>(state.range(0)));
    BVarBind binding(Root());
    const AllocScope allocs(state);
    for (auto _ : state) {
        table.GetNext(1, binding);
        if (binding.Value().IsException())
            binding.Set(Root());
    }
}
BENCHMARK(TableGetNextStep)->Arg(100)->Arg(10000)->Arg(100000);

void TableGet(benchmark::State& state)
{
    CRows table(10000);
    BObjectIdentifier name(Root());
    name.Append(2u);
    name.Append(15000u);
    BVarBindList list;
    list.Append(name);
    const AllocScope allocs(state);
    for (auto _ : state) {
        int index = 0;
        benchmark::DoNotOptimize(table.Get(1, list, index, 1));
    }
}
BENCHMARK(TableGet);

} // namespace
