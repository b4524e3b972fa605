// SETs through BMibHandler::Query, in all their phases. Beside them stands the floor.
#include "bench/AllocScope.h"
#include "bench/Modules.h"

#include <vkmibh/system.h>

#include <vector>

namespace VLK {
namespace {

const char kEntry[] = "1.3.6.1.4.1.32473.2.1";

BVarBindList Cells(int count)
{
    BVarBindList list;
    BObjectSyntax value;
    for (int i = 0; i < count; ++i) {
        BObjectIdentifier name = MakeOid(kEntry);
        name.Append(1u);
        name.Append(Table::Row(static_cast<unsigned>(i)));
        value.SetInt(i);
        list.Append(name, value);
    }
    return list;
}

// Test, commit and cleanup of each binding; or, where the last one fails to be
// committed, test, commit, undo and cleanup.
void SetCells(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    Agent agent;
    Table* const table = new Table(MakeOid(kEntry), 100);
    agent.Add(table);
    if (state.range(1))
        table->refused = Table::Row(static_cast<unsigned>(count - 1));
    const int expected = state.range(1) ? eSnmpCommitFailed : eSnmpNoError;
    BVarBindList list = Cells(count);
    const AllocScope allocs(state);
    for (auto _ : state) {
        if (agent.Query(ePduSet, list) != expected)
            state.SkipWithError("SET failed");
    }
}
BENCHMARK(SetCells)->ArgNames({"", "undo"})->ArgsProduct({{1, 50}, {0, 1}});

void SetCellsFloor(benchmark::State& state)
{
    Table table(MakeOid(kEntry), 100);
    const int count = static_cast<int>(state.range(0));
    std::vector<ESnmpSetOpCode> phases = {eSetTest, eSetCommit, eSetCleanup};
    if (state.range(1))
        phases = {eSetTest, eSetCommit, eSetUndo, eSetCleanup};
    const BVarBindList list = Cells(count);
    std::vector<BObjectIdentifier> rows;
    rows.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        rows.emplace_back(Table::Row(static_cast<unsigned>(i)));
    std::vector<SSetSlot> slots(rows.size());
    const AllocScope allocs(state);
    for (auto _ : state) {
        for (const ESnmpSetOpCode phase : phases) {
            for (int i = 0; i < count; ++i) {
                const size_t at = static_cast<size_t>(i);
                if (table.BMibImpl::Set(&Table::s_map[0], 1, phase, &slots[at].scratch,
                                        list[i].Value(), &rows[at]) != eSnmpNoError)
                    state.SkipWithError("SET failed");
            }
        }
    }
}
BENCHMARK(SetCellsFloor)->ArgNames({"", "undo"})->ArgsProduct({{1, 50}, {0, 1}});

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

} // namespace
} // namespace VLK
