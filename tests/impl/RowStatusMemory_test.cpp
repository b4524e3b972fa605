// Row-status tables without memory: a status that says so, nothing left behind,
// and no row told twice.
#include "tests/impl/RowStatusTest.h"
#include "tests/support/AllocationSweep.h"

namespace VLK {
namespace Test {
namespace {

// A table whose handlers allocate nothing: its rows are numbered below 100, and
// hold their status.
template <class Base, class Status = ERowStatus>
class TLean : public Base {
public:
    TLean() : Base("lean", MakeOid("1.3.9")) { this->Initialize(); }
    ~TLean() override { this->CancelTimeouts(); }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
    int OnSet_Level(const BObjectIdentifier&, ESnmpSetOpCode, unsigned, int, void**) { return 0; }
    int OnGet_Status(const BObjectIdentifier& instance, unsigned, Status& value, int)
    {
        value = static_cast<Status>(status[instance[0]]);
        return value == 0 ? int(eSnmpNoSuchName) : 0;
    }
    int OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, Status, void**)
    {
        if (op == eSetCommit)
            status[instance[0]] = this->GetRowState(instance);
        if (op == eSetUndo)
            status[instance[0]] = this->GetRowStatusUndoValue(instance);
        return 0;
    }
    void RowActivationTimeout(const BObjectIdentifier& instance) override { ++told[instance[0]]; }

    static SRqHndlrMapEntry s_map[];
    int status[100] = {};
    int told[100] = {};
};

template <class Base, class Status>
SRqHndlrMapEntry TLean<Base, Status>::s_map[] = {
    ColumnRow<eKindInteger, nullptr, &TLean::OnSet_Level>(eProbeLevel, "level", eAsnInteger,
                                                          eRqReadCreate),
    ColumnRow<std::is_same_v<Status, ERowStatus> ? eKindRowStatus : eKindEntryStatus,
              &TLean::OnGet_Status, &TLean::OnSet_Status>(eProbeStatus, "status", eAsnInteger,
                                                          eRqReadCreate),
    kRqEnd};

using CLean = TLean<BMibTableImplEx>;

// A lean table with so many other rows, from 50 on, on the time-out list and in
// the middle of a SET: beyond 32 rows they are kept elsewhere.
template <class Table>
struct TCrowd {
    explicit TCrowd(unsigned rows)
    {
        table.SetActivationTimeout(INT_MAX);
        for (unsigned row = 50; row < 50 + rows; ++row) {
            table.AddToTimeoutList(MakeOid(Arcs{row}));
            others.Status(std::to_string(row).c_str(), 4);
        }
        EXPECT_EQ(0, others.Phase(eSetTest));
        table.SetActivationTimeout(0);
    }

    Table table;
    RowSet others{table};
};
using Crowd = TCrowd<CLean>;

// The timer's own list and index grow here, not in a sweep.
void GrowTimer()
{
    CLean table;
    BTimer* const timer = BTimer::GetInstance();
    for (int i = 0; i < 1000; ++i)
        ASSERT_NE(0, timer->Subscribe(&table, INT_MAX, 1));
    timer->Unsubscribe(&table);
}

class RowStatusMemory : public ::testing::TestWithParam<unsigned> {
protected:
    RowStatusMemory() { GrowTimer(); }

    HandTimer timer;
    const BObjectIdentifier row = MakeOid("7");
};
INSTANTIATE_TEST_SUITE_P(Crowds, RowStatusMemory, ::testing::Values(0u, 31u, 32u, 40u));

// A SET that makes row 7, waiting, after so many columns of that row.
struct SCreation : Crowd {
    SCreation(unsigned rows, int columns) : Crowd(rows), set(table)
    {
        for (int i = 0; i < columns; ++i)
            set.Level("7", i);
        set.Status("7", eRowCreateAndWait);
        set.slots.resize(set.list.Count());
    }
    RowSet set;
};

TEST_P(RowStatusMemory, CreationIsResourceUnavailableOrDone)
{
    for (const int columns : {1, 40}) {
        int refusals = 0;
        VLKTest::SweepAllocations(
            [&] { return std::make_unique<SCreation>(GetParam(), columns); },
            [](auto& creation) { return creation->set.Phase(eSetTest); },
            [&](auto& creation, int status) {
                CLean& table = creation->table;
                EXPECT_EQ(status == 0 ? 0 : columns, creation->set.index);
                if (status == 0) {
                    EXPECT_EQ(eRowNotReady, table.LastRowStatus());
                    EXPECT_EQ(eRowNotInService, table.GetRowState(row));
                    EXPECT_EQ(0, creation->set.Phase(eSetCommit));
                    timer.Tick();
                    EXPECT_EQ(0, table.told[7]) << "the SET is under way";
                } else {
                    ++refusals;
                    EXPECT_EQ(eSnmpResourceUnavailable, status);
                    EXPECT_EQ(std::string(2 * columns + 2, '-'), creation->set.Marks());
                    EXPECT_EQ(eRowNotReady, table.GetRowStatusUndoValue(row));
                    EXPECT_EQ(eSnmpCommitFailed, creation->set.Phase(eSetCommit));
                }
                EXPECT_EQ(0, creation->set.Phase(eSetCleanup));
                EXPECT_EQ(eRowNotReady, table.GetRowStatusUndoValue(row));
                timer.Tick(2);
                EXPECT_EQ(status == 0 ? 1 : 0, table.told[7]);
            });
        EXPECT_GE(refusals, 2) << "the row's state and its place";
    }
}

TEST_P(RowStatusMemory, CommitUndoAndCleanupNeedNone)
{
    for (const ESnmpSetOpCode op : {eSetCommit, eSetUndo, eSetCleanup})
        VLKTest::SweepAllocations(
            [&] {
                auto creation = std::make_unique<SCreation>(GetParam(), 40);
                for (const ESnmpSetOpCode phase : kPhases) {
                    if (phase == op)
                        break;
                    EXPECT_EQ(0, creation->set.Phase(phase));
                }
                return creation;
            },
            [op](auto& creation) { return creation->set.Phase(op); },
            [&](auto& creation, int status) {
                EXPECT_EQ(0, status) << "a row that cannot be timed is none the worse";
                EXPECT_EQ(op == eSetCommit ? int(eRowNotInService) : 0, creation->table.status[7]);
                EXPECT_EQ(0, creation->set.Phase(eSetCleanup));
                timer.Tick(2);
                EXPECT_LE(creation->table.told[7], op == eSetCommit ? 1 : 0);
            });
}

TEST_P(RowStatusMemory, RowIsOnTheTimeoutListOrHasNoSubscription)
{
    int refusals = 0;
    VLKTest::SweepAllocations([&] { return std::make_unique<Crowd>(GetParam()); },
                              [&](auto& crowd) {
                                  const int handle = BTimer::Subscription::s_idCounter;
                                  crowd->table.AddToTimeoutList(row);
                                  return handle;
                              },
                              [&](auto& crowd, int handle) {
                                  BTimeInterval interval{0, 0, handle, &crowd->table, 0};
                                  crowd->table.OnTimeout(interval); // asks the list
                                  const bool isListed = crowd->table.told[7] == 1;
                                  refusals += !isListed;
                                  EXPECT_EQ(isListed, BTimer::GetInstance()->Unsubscribe(handle));
                                  crowd->table.AddToTimeoutList(row);
                                  timer.Tick(2);
                                  EXPECT_EQ(isListed ? 2 : 1, crowd->table.told[7]);
                              });
    EXPECT_GE(refusals, 2) << "the subscription and its place on the list";
}

TEST_P(RowStatusMemory, RowIsToldOnceAndAtTheNextTick)
{
    VLKTest::SweepAllocations(
        [&] {
            auto crowd = std::make_unique<Crowd>(GetParam());
            crowd->table.SetActivationTimeout(5000);
            crowd->table.AddToTimeoutList(row);
            timer.Tick(4);
            return crowd;
        },
        [&](auto& crowd) {
            timer.Tick();
            return crowd->table.told[7];
        },
        [&](auto& crowd, int told) {
            timer.Tick();
            EXPECT_EQ(1, crowd->table.told[7]) << "told before: " << told;
            timer.Tick(6);
            EXPECT_EQ(1, crowd->table.told[7]);
        });
}

TEST_P(RowStatusMemory, RowThatWaitsForItsSetIsToldAtTheTickAfterIt)
{
    VLKTest::SweepAllocations(
        [&] {
            auto creation = std::make_unique<SCreation>(GetParam(), 0);
            creation->table.SetActivationTimeout(5000);
            creation->table.AddToTimeoutList(row);
            EXPECT_EQ(0, creation->set.Phase(eSetTest));
            timer.Tick(4);
            return creation;
        },
        [&](auto& creation) {
            timer.Tick();
            return creation->table.told[7];
        },
        [&](auto& creation, int told) {
            EXPECT_EQ(0, told);
            timer.Tick();
            EXPECT_EQ(0, creation->table.told[7]);
            EXPECT_EQ(0, creation->set.Phase(eSetCleanup));
            timer.Tick();
            EXPECT_EQ(1, creation->table.told[7]);
            timer.Tick(6);
            EXPECT_EQ(1, creation->table.told[7]);
        });
}

TEST(RowStatusWithoutMemory, RowThatIsNotThereIsNotedAsTheLastStatusReadAllTheSame)
{
    using CLeanEntries = TLean<BMibTableImplEx, EEntryStatus>;
    TCrowd<CLeanEntries> entries(0);
    RowSet set(entries.table);
    set.Status("7", eEntryCreateRequest);
    set.slots.resize(1);
    {
        FailingAlloc fail(1); // the row's state is granted, its place is not
        EXPECT_EQ(eSnmpResourceUnavailable, set.Phase(eSetTest));
    }
    EXPECT_EQ(eEntryInvalid, entries.table.LastEntryStatus());
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ(0, entries.table.LastEntryStatus()) << "what the state machine was asked about";
}

// Looks whether the list it is given is whole.
class CLeanIndex : public TLean<BMibTableImplEx2> {
public:
    int PreIxAllocOrDealloc(const BObjectIdentifier&, BVarBindList& list) override
    {
        isWhole = list.Count() == 4 && list[0].Name().Length() == 5 &&
                  list[1].Value().Octets().Length() == 4 &&
                  list[2].Value().ObjectId().Length() == 3 && list[3].Value().Int() == 4;
        ++calls;
        return 0;
    }
    int calls = 0;
    bool isWhole = false;
};

TEST(RowStatusWithoutMemory, HookOfIndexesSeesAWholeListOrIsNotCalled)
{
    const HandTimer timer; // made before allocations are counted
    struct SIndexed {
        SIndexed() : set(table)
        {
            BObjectSyntax oid;
            oid.SetObjectId(MakeOid("1.3.6"));
            set.Foreign("1.3.8.1.1", Number(1)).Foreign("1.3.8.2", Text("text"));
            set.Foreign("1.3.8.3", oid).Status("7", eRowCreateAndGo);
            set.slots.resize(4);
        }
        CLeanIndex table;
        RowSet set;
    };
    const unsigned allocations =
        VLKTest::SweepAllocations([] { return std::make_unique<SIndexed>(); },
                                  [](auto& indexed) { return indexed->set.Phase(eSetTest); },
                                  [](auto& indexed, int status) {
                                      EXPECT_EQ(indexed->table.calls == 1, indexed->table.isWhole);
                                      EXPECT_TRUE(status == 0 || status == eSnmpResourceUnavailable)
                                          << status;
                                      EXPECT_EQ(3, indexed->set.index);
                                      if (status == 0) {
                                          EXPECT_EQ(1, indexed->table.calls);
                                      }
                                      EXPECT_EQ(0, indexed->set.Phase(eSetCleanup));
                                  });
    EXPECT_GE(allocations, 10u) << "seven of the list, and the row's";
}

} // namespace
} // namespace Test
} // namespace VLK
