// Rows that are left inactive: when they are told, and when not.
#include "tests/impl/RowStatusTest.h"
#include "tests/support/FailingAlloc.h"

#include <vkmibh/handler.h>

namespace VLK {
namespace Test {
namespace {

// Every rule holds for a table with few rows and for one whose maps are full: so
// many other rows are on the time-out list, far from their time, and so many are
// in the middle of a SET.
struct SCrowd {
    int timed;
    int inSet;
};

class RowStatusTimeouts : public ::testing::TestWithParam<SCrowd> {
protected:
    RowStatusTimeouts()
    {
        table.SetActivationTimeout(INT_MAX);
        for (int i = 0; i < GetParam().timed; ++i)
            table.AddToTimeoutList(MakeOid(Arcs{9, unsigned(i)}));
        for (int i = 0; i < GetParam().inSet; ++i)
            others.Status(("8." + std::to_string(i)).c_str(), eRowDestroy);
        EXPECT_EQ(0, others.Phase(eSetTest));
        table.SetActivationTimeout(0);
        table.log.clear();
    }
    // Puts row 7 on the list, or another; its handle.
    int Add(const char* row = "7")
    {
        const int handle = BTimer::Subscription::s_idCounter;
        table.AddToTimeoutList(MakeOid(row));
        return handle;
    }
    void Remove(const char* row) { table.RemoveFromTimeoutList(MakeOid(row)); }
    // The rows that are told in so many ticks, each after the tick's number.
    std::string Told(int ticks)
    {
        std::string told;
        table.log.clear();
        for (int tick = 1; tick <= ticks; ++tick) {
            timer.Tick();
            for (const std::string& line : table.TakeLog())
                told += (told.empty() ? "" : ", ") + std::to_string(tick) + " " + line;
        }
        return told;
    }
    // The timer's callback for that subscription, made by hand.
    BTimeInterval CallBack(int handle)
    {
        BTimeInterval interval{0, 0, handle, &table, 0};
        table.OnTimeout(interval);
        return interval;
    }
    void OnTold(const std::function<void()>& act)
    {
        table.during = [act](const std::string& what) {
            if (what == "timeout 7")
                act();
        };
    }
    RowSet SetOf(int requested)
    {
        RowSet set(table);
        set.Status("7", requested);
        return set;
    }

    HandTimer timer;
    CRowProbe table;
    RowSet others{table};
};

INSTANTIATE_TEST_SUITE_P(FewRows, RowStatusTimeouts, ::testing::Values(SCrowd{0, 0}));
INSTANTIATE_TEST_SUITE_P(ManyRows, RowStatusTimeouts,
                         ::testing::Values(SCrowd{31, 31}, SCrowd{32, 32}, SCrowd{200, 200}));

TEST_P(RowStatusTimeouts, AreNoneUntilOneIsSet)
{
    EXPECT_EQ(0, CRowProbe().ActivationTimeout());
    table.SetActivationTimeout(-5);
    EXPECT_EQ(-5, table.ActivationTimeout());
    Add();
    EXPECT_EQ("1 timeout 7", Told(3)) << "the next tick, and once";
}

TEST_P(RowStatusTimeouts, CountInMillisecondsByTicks)
{
    const std::pair<int, const char*> times[] = {{0, "1 timeout 7"},    {1, "1 timeout 7"},
                                                 {1000, "1 timeout 7"}, {1001, "2 timeout 7"},
                                                 {3000, "3 timeout 7"}, {3500, "4 timeout 7"}};
    for (const auto& time : times) {
        table.SetActivationTimeout(time.first);
        Add();
        EXPECT_EQ(time.second, Told(6)) << time.first;
    }
}

TEST_P(RowStatusTimeouts, TimeoutThatIsChangedHoldsForLaterRows)
{
    table.SetActivationTimeout(3000);
    Add("7");
    table.SetActivationTimeout(1000);
    Add("6");
    EXPECT_EQ("1 timeout 6, 3 timeout 7", Told(4));
}

TEST_P(RowStatusTimeouts, RowsAreToldInTheOrderInWhichTheyWereTimed)
{
    for (const char* row : {"7", "3", "5.1", "5"})
        Add(row);
    EXPECT_EQ("1 timeout 7, 1 timeout 3, 1 timeout 5.1, 1 timeout 5", Told(2));
}

TEST_P(RowStatusTimeouts, RowThatIsAddedAgainIsTimedAnew)
{
    table.SetActivationTimeout(2000);
    const int first = Add();
    timer.Tick();
    const int second = Add();
    EXPECT_FALSE(BTimer::GetInstance()->Unsubscribe(first)) << "has only one subscription";
    EXPECT_EQ("2 timeout 7", Told(5));
    EXPECT_NE(first, second);
}

TEST_P(RowStatusTimeouts, RowThatIsUpdatedIsTimedAnewOrAdded)
{
    table.SetActivationTimeout(2000);
    Add();
    timer.Tick();
    table.UpdateTimeoutList(MakeOid("7"));
    table.UpdateTimeoutList(MakeOid("6"));
    EXPECT_EQ("2 timeout 7, 2 timeout 6", Told(5));
}

TEST_P(RowStatusTimeouts, RemovedRowIsNotTold)
{
    const int handle = Add();
    Add("6");
    Remove("7");
    Remove("7");
    Remove("5");
    EXPECT_FALSE(BTimer::GetInstance()->Unsubscribe(handle));
    EXPECT_EQ("1 timeout 6", Told(3));
    CallBack(handle);
    EXPECT_TRUE(table.log.empty());
}

TEST_P(RowStatusTimeouts, EmptyInstanceIsARowLikeOthers)
{
    Add("");
    EXPECT_EQ("1 timeout ", Told(2));
}

TEST_P(RowStatusTimeouts, CallbackOfNoSubscriptionOfTheListDoesNothing)
{
    const int handle = Add();
    for (const int id : {handle + 1, handle - 1000000, 0, -1, INT_MIN, INT_MAX})
        CallBack(id);
    EXPECT_TRUE(table.log.empty());
    EXPECT_EQ(0u, CallBack(handle).count);
    EXPECT_EQ(Log{"timeout 7"}, table.TakeLog());
    CallBack(handle);
    EXPECT_TRUE(table.log.empty()) << "the row is off the list then";
}

TEST_P(RowStatusTimeouts, RowLeftInactiveByACommitIsTold)
{
    table.SetActivationTimeout(2000);
    EXPECT_EQ(0, SetOf(eRowCreateAndWait).Run());
    EXPECT_EQ("2 timeout 7", Told(4));
    EXPECT_EQ(0, SetOf(eRowActive).Run());
    EXPECT_EQ("", Told(4));
    EXPECT_EQ(0, SetOf(eRowNotInService).Run());
    EXPECT_EQ("2 timeout 7", Told(4));
}

TEST_P(RowStatusTimeouts, RowThatIsActivatedOrDestroyedInTimeIsNotTold)
{
    table.SetActivationTimeout(2000);
    EXPECT_EQ(0, SetOf(eRowCreateAndWait).Run());
    timer.Tick();
    EXPECT_EQ(0, SetOf(eRowActive).Run());
    EXPECT_EQ("", Told(4));
    EXPECT_EQ(0, SetOf(eRowNotInService).Run());
    timer.Tick();
    EXPECT_EQ(0, SetOf(eRowDestroy).Run());
    EXPECT_EQ("", Told(4));
}

TEST_P(RowStatusTimeouts, UndoRestoresWhatCountsForTheRow)
{
    table.SetActivationTimeout(2000);
    table.answers["commit 3.7"] = eSnmpCommitFailed;
    EXPECT_EQ(eSnmpCommitFailed, SetOf(eRowCreateAndWait).Run());
    EXPECT_EQ("", Told(4)) << "there was no row";

    table.Row("7").status = eRowNotInService;
    Add();
    timer.Tick();
    EXPECT_EQ(eSnmpCommitFailed, SetOf(eRowActive).Run());
    EXPECT_EQ("2 timeout 7", Told(4)) << "inactive before, timed anew";

    table.Row("7").status = eRowActive;
    EXPECT_EQ(eSnmpCommitFailed, SetOf(eRowNotInService).Run());
    EXPECT_EQ("", Told(4)) << "active before";
}

TEST_P(RowStatusTimeouts, SetThatIsOnlyTestedChangesNothing)
{
    Add();
    table.Row("7").status = eRowNotInService;
    RowSet set = SetOf(eRowActive);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ("1 timeout 7", Told(3));
}

TEST_P(RowStatusTimeouts, RowIsNotToldBetweenThePhasesOfItsSet)
{
    table.Row("7").status = eRowNotInService;
    Add();
    RowSet set = SetOf(eRowActive);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ("", Told(3));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ("1 timeout 7", Told(3)) << "at the tick after it, and once";
}

TEST_P(RowStatusTimeouts, SetInTheMiddleOfWhichTheTimeCameMayStillActivateTheRow)
{
    table.Row("7").status = eRowNotInService;
    Add();
    RowSet set = SetOf(eRowActive);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ("", Told(1));
    EXPECT_EQ(0, set.Phase(eSetCommit));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ("", Told(4));
}

TEST_P(RowStatusTimeouts, SetInTheMiddleOfWhichTheTimeCameMayTimeTheRowAnew)
{
    table.SetActivationTimeout(3000);
    table.Row("7").status = eRowNotInService;
    Add();
    RowSet set = SetOf(eRowNotInService);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ("", Told(5));
    EXPECT_EQ(0, set.Phase(eSetCommit));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ("3 timeout 7", Told(8));
}

TEST_P(RowStatusTimeouts, RowThatWaitsForItsSetHasANewSubscription)
{
    table.SetActivationTimeout(5000);
    const int handle = Add();
    RowSet set = SetOf(eRowCreateAndWait);
    EXPECT_EQ(0, set.Phase(eSetTest));
    const int next = BTimer::Subscription::s_idCounter;
    EXPECT_EQ(0u, CallBack(handle).count) << "the old one ends";
    EXPECT_EQ(next + 1, BTimer::Subscription::s_idCounter);
    CallBack(handle);
    EXPECT_EQ(next + 1, BTimer::Subscription::s_idCounter) << "and is known no more";
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ("1 timeout 7", Told(6)) << "the new one is for the next tick";

    table.SetActivationTimeout(0);
    Add();
    EXPECT_EQ(0, set.Phase(eSetTest));
    timer.Tick();
    Remove("7");
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ("", Told(3)) << "removed while it waited";
}

TEST_P(RowStatusTimeouts, SetOfOtherRowsOrColumnsKeepsNoRowWaiting)
{
    Add();
    table.Row("7").status = eRowNotInService;
    RowSet set(table);
    set.Level("7", 1).Status("6", eRowCreateAndGo);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ("1 timeout 7", Told(2));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
}

TEST_P(RowStatusTimeouts, HookMayTimeTheRowAnew)
{
    table.SetActivationTimeout(2000);
    OnTold([this] { Add(); });
    Add();
    EXPECT_EQ("2 timeout 7, 4 timeout 7, 6 timeout 7", Told(7));
    Remove("7");
    EXPECT_EQ("", Told(5));
}

TEST_P(RowStatusTimeouts, HookMayTakeRowsOff)
{
    OnTold([this] {
        Remove("7");
        Remove("6");
    });
    for (const char* row : {"7", "6", "5"})
        Add(row);
    EXPECT_EQ("1 timeout 7, 1 timeout 5", Told(3));
}

TEST_P(RowStatusTimeouts, HookMaySetTheRow)
{
    EXPECT_EQ(0, SetOf(eRowCreateAndWait).Run());
    OnTold([this] { EXPECT_EQ(0, SetOf(eRowDestroy).Run()); });
    timer.Tick();
    EXPECT_FALSE(table.HasRow("7"));
    EXPECT_EQ("", Told(3));

    EXPECT_EQ(0, SetOf(eRowCreateAndWait).Run());
    int left = 2;
    OnTold([&] {
        if (--left > 0) {
            EXPECT_EQ(0, SetOf(eRowNotInService).Run());
        }
    });
    timer.Tick(3);
    EXPECT_EQ(0, left) << "timed anew by its own SET";
}

TEST_P(RowStatusTimeouts, HookThatThrowsIsDoneAllTheSame)
{
    table.answers["timeout 7"] = kThrow;
    const int handle = Add();
    Add("6");
    EXPECT_EQ("1 timeout 7, 1 timeout 6", Told(3));
    CallBack(handle);
    EXPECT_TRUE(table.log.empty()) << "the row is off the list";
    OnTold([this] { Add("5"); });
    Add();
    EXPECT_EQ("1 timeout 7, 2 timeout 5", Told(3)) << "what it did before stays";
}

TEST_P(RowStatusTimeouts, UnregisteredTableIsToldNothing)
{
    BMibTree tree;
    BMibHandler handler(&tree, nullptr);
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&table));
    table.SetActivationTimeout(2000);
    Add();
    Add("6");
    timer.Tick();
    ASSERT_TRUE(handler.UnregisterSubtreeHandler(&table));
    EXPECT_EQ("", Told(4));
    Add();
    EXPECT_EQ("2 timeout 7", Told(4)) << "timed when it is next set";
}

// Rows that are pending or noted when their table goes, which says nothing of it
// in its destructor.
class CSilent : public BMibTableImplEx {
public:
    CSilent() : BMibTableImplEx("silent", MakeOid("1.3.9")) {}
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
    using BMibTableImplEx::CancelTimeouts;
};

class CCancelling : public CRowProbe {
public:
    using CRowProbe::CancelTimeouts;
};

TEST(RowStatusTimeoutsAtTheEnd, DestroyedTableHasNoSubscriptions)
{
    const HandTimer timer;
    for (const unsigned rows : {1u, 32u, 33u, 100u}) {
        auto table = std::make_unique<CSilent>();
        const int first = BTimer::Subscription::s_idCounter;
        for (unsigned row = 0; row < rows; ++row)
            table->AddToTimeoutList(MakeOid(Arcs{row}));
        const int end = BTimer::Subscription::s_idCounter;
        ASSERT_EQ(int(rows), end - first);
        table.reset();
        for (int handle = first; handle < end; ++handle)
            EXPECT_FALSE(BTimer::GetInstance()->Unsubscribe(handle)) << handle - first;
    }
}

TEST(RowStatusTimeoutsAtTheEnd, CanceledTableMayGoOn)
{
    HandTimer timer;
    for (const unsigned rows : {1u, 33u, 100u}) {
        CCancelling table;
        const int first = BTimer::Subscription::s_idCounter;
        for (unsigned row = 0; row < rows; ++row)
            table.AddToTimeoutList(MakeOid(Arcs{row}));
        table.CancelTimeouts();
        table.CancelTimeouts();
        timer.Tick();
        for (int handle = first; handle < first + int(rows); ++handle) {
            BTimeInterval interval{0, 0, handle, &table, 0};
            table.OnTimeout(interval);
        }
        EXPECT_TRUE(table.log.empty()) << "none is on the list";
        for (unsigned row = 0; row < rows; ++row)
            table.AddToTimeoutList(MakeOid(Arcs{row}));
        timer.Tick();
        EXPECT_EQ(rows, table.log.size());
    }
}

TEST(RowStatusTimeoutsAtTheEnd, TableWithoutAHookLosesTheSubscriptionOnly)
{
    HandTimer timer;
    CSilent table;
    const int handle = BTimer::Subscription::s_idCounter;
    table.AddToTimeoutList(MakeOid("7"));
    timer.Tick();
    EXPECT_FALSE(BTimer::GetInstance()->Unsubscribe(handle));
}

TEST(RowStatusTimeoutsAtTheEnd, DestroyedTableGivesBackWhatItNotedOfRows)
{
    const HandTimer timer;
    { // makes what stays
        CRowProbe table;
        EXPECT_EQ(0, RowSet(table).Status("1", eRowCreateAndGo).Phase(eSetTest));
    }
    for (const unsigned rows : {1u, 32u, 33u, 100u}) {
        const long before = FailingAlloc::Live();
        {
            CRowProbe table;
            RowSet set(table);
            for (unsigned row = 0; row < rows; ++row)
                set.Status(std::to_string(row).c_str(), eRowCreateAndGo);
            EXPECT_EQ(0, set.Phase(eSetTest));
        }
        EXPECT_EQ(before, FailingAlloc::Live()) << rows;
    }
}

TEST(RowStatusTimeoutsAtTheEnd, TableMayOutliveTheTimer)
{
    auto table = std::make_unique<CSilent>();
    table->SetActivationTimeout(INT_MAX);
    for (unsigned row = 0; row < 40; ++row)
        table->AddToTimeoutList(MakeOid(Arcs{row}));
    BTimer::DestroyInstance();
    table->CancelTimeouts();
    table.reset();
    EXPECT_EQ(nullptr, BTimer::s_pInstance.load()) << "no timer is made to cancel";
}

TEST(RowStatusTimeoutsAtTheEnd, TableGoesOnWithTheNextTimer)
{
    CRowProbe table;
    table.SetActivationTimeout(INT_MAX);
    for (unsigned row = 0; row < 40; ++row)
        table.AddToTimeoutList(MakeOid(Arcs{row}));
    BTimer::DestroyInstance();
    HandTimer timer;
    table.SetActivationTimeout(0);
    for (const unsigned row : {3u, 39u})
        table.AddToTimeoutList(MakeOid(Arcs{row}));
    timer.Tick(2);
    EXPECT_EQ((Log{"timeout 3", "timeout 39"}), table.log);
}

} // namespace
} // namespace Test
} // namespace VLK
