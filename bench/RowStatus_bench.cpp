// Rows of a row-status table, made, activated, destroyed and timed out.
//
// Times are per row, or stand beside a counter per_row; they shall not depend on how
// many rows there are. The table finds its rows by index in an array: what is
// measured is the library.
#include "bench/Agent.h"
#include "bench/AllocScope.h"

#include <vkmibh/impl.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <random>
#include <utility>
#include <vector>

namespace VLK {
namespace {

constexpr unsigned kColumns = 20; // the last one is the status
constexpr int kTimeout = 3600000;
const char kEntry[] = "1.3.6.1.4.1.32473.4.1";

class RowTable : public BMibTableImplEx {
public:
    explicit RowTable(unsigned rows) : BMibTableImplEx(BString("bench.rows"), MakeOid(kEntry))
    {
        m_rows.resize(rows);
        SetActivationTimeout(kTimeout);
    }
    ~RowTable() override { CancelTimeouts(); }

    template <unsigned Column>
    int OnGet(const BObjectIdentifier& instance, unsigned, int& value)
    {
        const SRow& row = m_rows[instance[0]];
        value = row.values[Column];
        return row.status != 0 ? eSnmpNoError : eSnmpNoSuchName;
    }
    template <unsigned Column>
    int OnSet(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, int value,
              void** slot)
    {
        SRow& row = m_rows[instance[0]];
        if (op == eSetTest && row.status == 0 && !IsRowCreation(instance))
            return eSnmpInconsistentName;
        if (op == eSetCommit) {
            *slot = reinterpret_cast<void*>(std::intptr_t(row.values[Column]));
            row.values[Column] = value;
        } else if (op == eSetUndo) {
            row.values[Column] = int(reinterpret_cast<std::intptr_t>(*slot));
        }
        return eSnmpNoError;
    }
    int OnGetStatus(const BObjectIdentifier& instance, unsigned, ERowStatus& value, int)
    {
        const int status = m_rows[instance[0]].status;
        if (status != 0)
            value = static_cast<ERowStatus>(status);
        return status != 0 ? eSnmpNoError : eSnmpNoSuchName;
    }
    int OnSetStatus(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, ERowStatus,
                    void**)
    {
        if (op == eSetCommit)
            m_rows[instance[0]].status = GetRowState(instance);
        else if (op == eSetUndo)
            m_rows[instance[0]].status = GetRowStatusUndoValue(instance);
        return op == eSetCommit && failsCommits ? eSnmpCommitFailed : eSnmpNoError;
    }
    void RowActivationTimeout(const BObjectIdentifier& instance) override
    {
        m_rows[instance[0]].status = 0;
        ++timeouts;
    }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    static SRqHndlrMapEntry s_map[];

    bool failsCommits = false;
    unsigned timeouts = 0;

private:
    struct SRow {
        int status = 0;
        int values[kColumns] = {};
    };

    template <unsigned Column>
    static constexpr SRqHndlrMapEntry Row()
    {
        return ColumnRow<eKindInteger, &RowTable::OnGet<Column>, &RowTable::OnSet<Column>>(
            Column, "value", eAsnInteger, eRqReadCreate);
    }
    std::vector<SRow> m_rows;
};

SRqHndlrMapEntry RowTable::s_map[] = {
    Row<1>(),
    Row<2>(),
    Row<3>(),
    Row<4>(),
    Row<5>(),
    Row<6>(),
    Row<7>(),
    Row<8>(),
    Row<9>(),
    Row<10>(),
    Row<11>(),
    Row<12>(),
    Row<13>(),
    Row<14>(),
    Row<15>(),
    Row<16>(),
    Row<17>(),
    Row<18>(),
    Row<19>(),
    ColumnRow<eKindRowStatus, &RowTable::OnGetStatus, &RowTable::OnSetStatus>(
        kColumns, "status", eAsnInteger, eRqReadCreate),
    kRqEnd};

enum EOrder { eAscending, eShuffled };

std::vector<unsigned> Indices(unsigned from, unsigned count, EOrder order)
{
    std::vector<unsigned> indices;
    for (unsigned i = from; i < from + count; ++i)
        indices.push_back(i);
    if (order == eShuffled)
        std::shuffle(indices.begin(), indices.end(), std::mt19937(1));
    return indices;
}

// A table behind a handler, and requests of one status binding.
class Rows {
public:
    Rows(benchmark::State& state, unsigned rows) : m_state(state), m_table(new RowTable(rows))
    {
        m_agent.Add(m_table);
        m_binding.Append(Name(kColumns, 0));
        m_arcAt = m_binding[0].Name().Length() - 1;
    }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    static BObjectIdentifier Name(unsigned column, unsigned row)
    {
        BObjectIdentifier name = MakeOid(kEntry);
        name.Append(column);
        name.Append(row);
        return name;
    }
    void SetStatus(unsigned row, ERowStatus status)
    {
        m_binding[0].Name()[m_arcAt] = row;
        m_binding[0].Value().SetInt(status);
        Set(m_binding, eSnmpNoError);
    }
    void SetAll(const std::vector<unsigned>& rows, ERowStatus status)
    {
        for (const unsigned row : rows)
            SetStatus(row, status);
    }
    void Set(BVarBindList& list, int expected)
    {
        if (m_agent.Query(ePduSet, list) != expected)
            m_state.SkipWithError("SET failed");
    }
    RowTable& Table() { return *m_table; }

private:
    benchmark::State& m_state;
    RowTable* const m_table; // the agent's
    Agent m_agent;
    BVarBindList m_binding;
    unsigned m_arcAt = 0;
};

void CountPerRow(benchmark::State& state, unsigned rows)
{
    state.counters["per_row"] =
        benchmark::Counter(double(rows) * double(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BVarBindList AllColumns(unsigned row, ERowStatus status)
{
    BVarBindList list;
    BObjectSyntax value;
    for (unsigned column = 1; column <= kColumns; ++column) {
        value.SetInt(column < kColumns ? int(column) : int(status));
        list.Append(Rows::Name(column, row), value);
    }
    return list;
}

// One row is made, activated and destroyed while so many others exist, which are
// active or pending. They have the odd indices, it has one of the even ones.
void RowComesAndGoes(benchmark::State& state)
{
    const unsigned others = unsigned(state.range(0));
    const ERowStatus status = state.range(1) ? eRowCreateAndWait : eRowCreateAndGo;
    Rows rows(state, 2 * others);
    for (unsigned i = 0; i < others; ++i)
        rows.SetStatus(2 * i + 1, status);
    const std::vector<unsigned> indices = Indices(0, others, static_cast<EOrder>(state.range(2)));
    size_t next = 0;
    const AllocScope allocs(state);
    for (auto _ : state) {
        const unsigned row = 2 * indices[next];
        next = next + 1 < indices.size() ? next + 1 : 0;
        rows.SetStatus(row, eRowCreateAndWait);
        rows.SetStatus(row, eRowActive);
        rows.SetStatus(row, eRowDestroy);
    }
}
BENCHMARK(RowComesAndGoes)
    ->ArgNames({"others", "pending", "shuffled"})
    ->ArgsProduct({{100, 10000, 100000}, {0, 1}, {eAscending, eShuffled}});

// The floor: the module's code for the status in three phases of three SETs, with the
// record of a row's state, and the timer's that ends its wait.
void RowComesAndGoesFloor(benchmark::State& state)
{
    class Subscriber : public ITimeSubscriber {
        void OnTimeout(BTimeInterval&) override {}
    } subscriber;
    BTimer& timer = *BTimer::GetInstance();
    RowTable table(1);
    const BVarBindList list = AllColumns(0, eRowActive);
    const BObjectIdentifier index(0u);
    const AllocScope allocs(state);
    for (auto _ : state) {
        auto row = std::make_unique<BObjectIdentifier>(index);
        const int id = timer.Subscribe(&subscriber, kTimeout, 1);
        for (int set = 0; set < 3; ++set) {
            for (const ESnmpSetOpCode phase : {eSetTest, eSetCommit, eSetCleanup}) {
                void* slot = nullptr;
                table.BMibImpl::Set(&RowTable::s_map[kColumns - 1], 1, phase, &slot,
                                    list[int(kColumns) - 1].Value(), row.get());
            }
        }
        timer.Unsubscribe(id);
    }
}
BENCHMARK(RowComesAndGoesFloor);

// All rows are made and wait, then all are activated, then all are destroyed.
void RowsComeAndGo(benchmark::State& state)
{
    const unsigned count = unsigned(state.range(0));
    Rows rows(state, count);
    const std::vector<unsigned> indices = Indices(0, count, static_cast<EOrder>(state.range(1)));
    for (auto _ : state) {
        rows.SetAll(indices, eRowCreateAndWait);
        rows.SetAll(indices, eRowActive);
        rows.SetAll(indices, eRowDestroy);
    }
    CountPerRow(state, count);
}
BENCHMARK(RowsComeAndGo)
    ->ArgNames({"rows", "shuffled"})
    ->ArgsProduct({{100, 10000, 100000}, {eAscending, eShuffled}})
    ->Unit(benchmark::kMillisecond);

// Processor time, as the others' per_row is.
double ThreadSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

// So many pending rows time out in one tick.
void RowsTimeOut(benchmark::State& state)
{
    const unsigned count = unsigned(state.range(0));
    Rows rows(state, count);
    const std::vector<unsigned> indices = Indices(0, count, static_cast<EOrder>(state.range(1)));
    unsigned long long expected = 0;
    for (auto _ : state) {
        rows.SetAll(indices, eRowCreateAndWait);
        const double start = ThreadSeconds();
        BTimer::GetInstance()->Timeout(kTimeout);
        state.SetIterationTime(ThreadSeconds() - start);
        expected += count;
    }
    if (rows.Table().timeouts != expected)
        state.SkipWithError("rows were not timed out");
    CountPerRow(state, count);
}
BENCHMARK(RowsTimeOut)
    ->ArgNames({"rows", "shuffled"})
    ->ArgsProduct({{100, 10000, 100000}, {eAscending, eShuffled}})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

// All rows are made by one SET.
void RowsInOneSet(benchmark::State& state)
{
    const unsigned count = unsigned(state.range(0));
    Rows rows(state, count);
    BVarBindList create, destroy;
    BObjectSyntax value;
    for (const unsigned row : Indices(0, count, static_cast<EOrder>(state.range(1)))) {
        value.SetInt(eRowCreateAndWait);
        create.Append(Rows::Name(kColumns, row), value);
        value.SetInt(eRowDestroy);
        destroy.Append(Rows::Name(kColumns, row), value);
    }
    for (auto _ : state) {
        rows.Set(create, eSnmpNoError);
        rows.Set(destroy, eSnmpNoError);
    }
    CountPerRow(state, count);
}
BENCHMARK(RowsInOneSet)
    ->ArgNames({"rows", "shuffled"})
    ->ArgsProduct({{100, 10000}, {eAscending, eShuffled}})
    ->Unit(benchmark::kMillisecond);

// A row and its columns, in one SET, which is then destroyed in another; or taken
// back, with the status column failing to commit: all four phases.
void SetOfTwentyColumns(benchmark::State& state)
{
    Rows rows(state, 1);
    const bool undoes = state.range(0) != 0;
    rows.Table().failsCommits = undoes;
    BVarBindList create = AllColumns(0, eRowCreateAndGo);
    const AllocScope allocs(state);
    for (auto _ : state) {
        rows.Set(create, undoes ? eSnmpCommitFailed : eSnmpNoError);
        if (!undoes)
            rows.SetStatus(0, eRowDestroy);
    }
}
BENCHMARK(SetOfTwentyColumns)->ArgName("undoes")->Arg(0)->Arg(1);

} // namespace
} // namespace VLK
