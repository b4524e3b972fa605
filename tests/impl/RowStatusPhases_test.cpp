// The phases of one status binding.
#include "tests/impl/RowStatusTest.h"

namespace VLK {
namespace Test {
namespace {

// The two kinds of status column, with what is good for a new row, ...
struct SRowKind : CRowProbe {
    using Value = ERowStatus;
    static constexpr int kMake = eRowCreateAndWait;
    static constexpr int kMade = eRowNotInService;
    static constexpr int kDestroy = eRowDestroy;
    static constexpr int kMadeTwice = eSnmpInconsistentValue;
    static constexpr int kPreset = eRowNotReady;
    static constexpr int kLastOfNone = eRowNotReady;
    static bool IsTimed(int status) { return status == eRowNotInService || status == eRowNotReady; }

    int Handle(const SRqHndlrMapEntry* entry, ESnmpSetOpCode op, void** slot, int value,
               const BObjectIdentifier& instance)
    {
        return HandleRowStatusSet(entry, RowSet::kId, op, slot, ERowStatus(value), instance);
    }
    int Last() const { return LastRowStatus(); }
};
struct SEntryKind : CEntryProbe {
    using Value = EEntryStatus;
    static constexpr int kMake = eEntryCreateRequest;
    static constexpr int kMade = eEntryUnderCreation;
    static constexpr int kDestroy = eEntryInvalid;
    static constexpr int kMadeTwice = eSnmpBadValue;
    static constexpr int kPreset = eEntryValid;
    static constexpr int kLastOfNone = 0; // what the state machine was asked about
    static bool IsTimed(int status) { return status == eEntryUnderCreation; }

    int Handle(const SRqHndlrMapEntry* entry, ESnmpSetOpCode op, void** slot, int value,
               const BObjectIdentifier& instance)
    {
        return HandleEntryStatusSet(entry, RowSet::kId, op, slot, EEntryStatus(value), instance);
    }
    int Last() const { return LastEntryStatus(); }
};
// ... and what is active (valid) in both.
constexpr int kActive = 1;

template <class Kind>
class RowStatusPhases : public ::testing::Test {
protected:
    int Handle(ESnmpSetOpCode op, int value)
    {
        table.log.clear();
        slot.tested = slot.committed = 0;
        return table.Handle(&table.Column(eProbeStatus), op, &slot.scratch, value, row);
    }
    void RowIs(int status) { table.Row("7").status = status; }
    std::string Marks() const
    {
        return std::string(slot.tested ? "t" : "-") + (slot.committed ? "c" : "-");
    }
    bool HasState() const { return table.GetRowStatusUndoValue(row) != eRowNotReady; }
    // "undo>new", and the requests it is noted for, as a handler sees it.
    std::string State() const
    {
        return std::to_string(table.GetRowStatusUndoValue(row)) + ">" +
               std::to_string(table.GetRowState(row)) + (table.IsRowCreation(row) ? " made" : "") +
               (table.IsRowDeletion(row) ? " destroyed" : "");
    }
    // The same, in the middle of each call of a handler.
    void WatchState()
    {
        table.during = [this](const std::string& what) { watched[what] = State(); };
    }
    // Whether the row is on the time-out list; the row is off it afterwards.
    bool IsPending()
    {
        EXPECT_FALSE(HasState());
        table.log.clear();
        timer.Tick();
        EXPECT_LE(table.log.size(), 1u);
        return table.log == Log{"timeout 7"};
    }
    // Runs test and commit, then undo if `undone`, then cleanup, for a row that was
    // `before` and a request for `requested`. Gives whether the row is on the
    // time-out list then, and in `becomes` the status that counted.
    bool IsPendingAfter(int before, int requested, bool undone, int& becomes)
    {
        RowIs(before);
        table.answers["get 3.7"] = before == 0 ? int(eSnmpNoSuchName) : 0;
        Handle(eSetTest, requested);
        EXPECT_EQ(0, Handle(eSetCommit, requested));
        becomes = table.GetRowState(row);
        if (undone)
            Handle(eSetUndo, requested);
        EXPECT_EQ(0, Handle(eSetCleanup, requested));
        return IsPending();
    }
    void ExpectNobodyCalled()
    {
        EXPECT_TRUE(table.log.empty());
        EXPECT_EQ("--", Marks());
    }
    std::string Logged(const char* phase, int value)
    {
        return std::string(phase) + " 3.7=" + std::to_string(value);
    }

    HandTimer timer;
    Kind table;
    SSetSlot slot{};
    const BObjectIdentifier row = MakeOid("7");
    std::map<std::string, std::string> watched;
};
using Kinds = ::testing::Types<SRowKind, SEntryKind>;
TYPED_TEST_SUITE(RowStatusPhases, Kinds, );

TYPED_TEST(RowStatusPhases, TestAsksForTheStatusWithItsPresetAndFlag)
{
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kMake));
    EXPECT_EQ((Log{"get 3.7", this->Logged("test", TypeParam::kMake)}), this->table.log);
    EXPECT_EQ(TypeParam::kPreset, this->table.preset);
    EXPECT_EQ(kRqStatusFlag, this->table.flag);
    EXPECT_EQ(RowSet::kId, this->table.id);
    EXPECT_EQ("t-", this->Marks());
}

TYPED_TEST(RowStatusPhases, TestNotesTheStatusThatItRead)
{
    this->RowIs(kActive);
    this->WatchState();
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kDestroy));
    EXPECT_EQ("3>0", this->watched["get 3.7"]) << "nothing is known before";
    EXPECT_EQ("1>0 destroyed", this->watched["test 3.7"]);
    EXPECT_EQ(kActive, this->table.Last());
}

TYPED_TEST(RowStatusPhases, TestTakesNoSuchNameForNoRow)
{
    this->RowIs(9);
    this->table.answers["get 3.7"] = eSnmpNoSuchName; // and writes a status all the same
    this->WatchState();
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kMake));
    EXPECT_EQ("0>" + std::to_string(TypeParam::kMade) + " made", this->watched["test 3.7"]);
    EXPECT_EQ(TypeParam::kLastOfNone, this->table.Last());
}

TYPED_TEST(RowStatusPhases, TestReturnsAnyOtherAnswerOfTheGetHandler)
{
    this->RowIs(kActive);
    for (const int status : {1, 3, 5, 13, 18, 99}) {
        this->table.answers["get 3.7"] = status;
        EXPECT_EQ(status, this->Handle(eSetTest, kActive));
        EXPECT_EQ(Log{"get 3.7"}, this->table.log);
        EXPECT_EQ("--", this->Marks());
        EXPECT_FALSE(this->HasState());
        EXPECT_EQ(0, this->table.Last()) << "is not noted";
        EXPECT_EQ(eSnmpCommitFailed, this->Handle(eSetCommit, kActive));
    }
}

TYPED_TEST(RowStatusPhases, GetHandlerThatThrowsLeavesNothing)
{
    this->table.answers["get 3.7"] = kThrow;
    EXPECT_THROW(this->Handle(eSetTest, TypeParam::kMake), std::runtime_error);
    EXPECT_EQ("--", this->Marks());
    EXPECT_FALSE(this->HasState());
}

TYPED_TEST(RowStatusPhases, SecondTestGoesOnFromWhatTheFirstOneMade)
{
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kMake));
    EXPECT_EQ(0, this->Handle(eSetTest, kActive));
    EXPECT_EQ(Log{"test 3.7=1"}, this->table.log) << "the row's status is not asked for again";
    EXPECT_EQ("0>1", this->State());
    EXPECT_EQ(TypeParam::kMadeTwice, this->Handle(eSetTest, TypeParam::kMake));
    EXPECT_EQ("0>1 made", this->State());
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kDestroy));
    EXPECT_EQ("0>0 destroyed", this->State());
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kMake)) << "once more, for it is gone";
}

TYPED_TEST(RowStatusPhases, RefusalOfTheStateMachineIsReturnedAndTheStateStays)
{
    this->RowIs(kActive);
    EXPECT_EQ(TypeParam::kMadeTwice, this->Handle(eSetTest, TypeParam::kMake));
    EXPECT_EQ(Log{"get 3.7"}, this->table.log) << "the set handler is not called";
    EXPECT_EQ("--", this->Marks());
    EXPECT_EQ("1>1 made", this->State());
}

TYPED_TEST(RowStatusPhases, HandlersStatusIsReturnedInEveryPhaseAndItsCallMarked)
{
    for (const int status : {0, 1, 5, 12, 99}) {
        for (const char* phase : {"test 3.7", "commit 3.7", "undo 3.7", "cleanup 3.7"})
            this->table.answers[phase] = status;
        EXPECT_EQ(status, this->Handle(eSetTest, TypeParam::kMake));
        EXPECT_EQ("t-", this->Marks());
        EXPECT_EQ(status, this->Handle(eSetCommit, TypeParam::kMake));
        EXPECT_EQ("-c", this->Marks());
        EXPECT_EQ(status, this->Handle(eSetUndo, TypeParam::kMake));
        EXPECT_EQ("--", this->Marks());
        EXPECT_EQ(status, this->Handle(eSetCleanup, TypeParam::kMake));
        EXPECT_EQ("--", this->Marks());
        EXPECT_FALSE(this->HasState());
    }
}

TYPED_TEST(RowStatusPhases, HandlerThatThrowsIsMarkedAllTheSame)
{
    for (const char* phase : {"test 3.7", "commit 3.7", "undo 3.7", "cleanup 3.7"})
        this->table.answers[phase] = kThrow;
    EXPECT_THROW(this->Handle(eSetTest, TypeParam::kMake), std::runtime_error);
    EXPECT_EQ("t-", this->Marks());
    EXPECT_THROW(this->Handle(eSetCommit, TypeParam::kMake), std::runtime_error);
    EXPECT_EQ("-c", this->Marks());
    EXPECT_THROW(this->Handle(eSetUndo, TypeParam::kMake), std::runtime_error);
    EXPECT_TRUE(this->HasState());
    EXPECT_THROW(this->Handle(eSetCleanup, TypeParam::kMake), std::runtime_error);
    EXPECT_FALSE(this->HasState()) << "the state goes at the end of the cleanup in any case";
}

TYPED_TEST(RowStatusPhases, CommitWithoutAStateIsCommitFailed)
{
    this->RowIs(kActive);
    this->table.AddToTimeoutList(this->row);
    EXPECT_EQ(eSnmpCommitFailed, this->Handle(eSetCommit, kActive));
    this->ExpectNobodyCalled();
    EXPECT_TRUE(this->IsPending()) << "the time-out list stays as it is";
}

TYPED_TEST(RowStatusPhases, UndoWithoutAStateIsUndoFailed)
{
    this->RowIs(kActive);
    this->table.AddToTimeoutList(this->row);
    EXPECT_EQ(eSnmpUndoFailed, this->Handle(eSetUndo, kActive));
    this->ExpectNobodyCalled();
    EXPECT_TRUE(this->IsPending()) << "the time-out list stays as it is";
}

TYPED_TEST(RowStatusPhases, CleanupWithoutAStateStillReachesTheHandler)
{
    this->table.answers["cleanup 3.7"] = 11;
    EXPECT_EQ(11, this->Handle(eSetCleanup, kActive));
    EXPECT_EQ(Log{"cleanup 3.7=1"}, this->table.log);
}

TYPED_TEST(RowStatusPhases, OtherOpCodesDoNothing)
{
    const ESnmpSetOpCode others[] = {ESnmpSetOpCode(0), ESnmpSetOpCode(160), ESnmpSetOpCode(223),
                                     ESnmpSetOpCode(227), ESnmpSetOpCode(255)};
    for (const ESnmpSetOpCode op : others) {
        EXPECT_EQ(0, this->Handle(op, TypeParam::kMake));
        this->ExpectNobodyCalled();
        EXPECT_FALSE(this->HasState());
    }
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kMake));
    const std::string state = this->State();
    for (const ESnmpSetOpCode op : others) {
        EXPECT_EQ(0, this->Handle(op, TypeParam::kDestroy));
        this->ExpectNobodyCalled();
        EXPECT_EQ(state, this->State());
    }
}

TYPED_TEST(RowStatusPhases, EveryPhaseStartsAgainFromTheValueBeforeTheRequest)
{
    const std::string made = "0>" + std::to_string(TypeParam::kMade) + " made";
    this->WatchState();
    this->Handle(eSetTest, TypeParam::kMake);
    this->Handle(eSetTest, kActive);
    EXPECT_EQ("0>1", this->State());
    EXPECT_EQ(0, this->Handle(eSetCommit, TypeParam::kMake));
    EXPECT_EQ(made, this->watched["commit 3.7"]);
    EXPECT_EQ(0, this->Handle(eSetCommit, kActive));
    EXPECT_EQ("0>1", this->watched["commit 3.7"]) << "within a phase it goes on";
    EXPECT_EQ(0, this->Handle(eSetUndo, TypeParam::kMake));
    EXPECT_EQ(made, this->watched["undo 3.7"]);
    EXPECT_EQ(0, this->Handle(eSetUndo, kActive));
    EXPECT_EQ("0>1", this->watched["undo 3.7"]);
    EXPECT_EQ(0, this->Handle(eSetCleanup, TypeParam::kMake));
    EXPECT_EQ("0>1", this->watched["cleanup 3.7"]) << "cleanup finds the state as it was left";
    EXPECT_FALSE(this->HasState());
}

TYPED_TEST(RowStatusPhases, CommitDoesNotAskTheStateMachineAgain)
{
    this->RowIs(kActive);
    this->WatchState();
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kDestroy));
    EXPECT_EQ(0, this->Handle(eSetCommit, TypeParam::kMake)) << "which would refuse";
    EXPECT_EQ(Log{this->Logged("commit", TypeParam::kMake)}, this->table.log);
    EXPECT_EQ("1>1 made", this->watched["commit 3.7"]);
}

TYPED_TEST(RowStatusPhases, UndoThatTheStateMachineRefusesIsReturned)
{
    this->RowIs(kActive);
    EXPECT_EQ(0, this->Handle(eSetTest, TypeParam::kDestroy));
    EXPECT_EQ(TypeParam::kMadeTwice, this->Handle(eSetUndo, TypeParam::kMake));
    this->ExpectNobodyCalled();
    EXPECT_EQ("1>1 made", this->State());
}

TYPED_TEST(RowStatusPhases, StateGoesAfterTheCleanupHandler)
{
    this->RowIs(kActive);
    this->WatchState();
    this->Handle(eSetTest, TypeParam::kDestroy);
    EXPECT_EQ(0, this->Handle(eSetCleanup, TypeParam::kDestroy));
    EXPECT_EQ("1>0 destroyed", this->watched["cleanup 3.7"]);
    EXPECT_FALSE(this->HasState());
    EXPECT_EQ(eSnmpCommitFailed, this->Handle(eSetCommit, TypeParam::kDestroy));
}

TYPED_TEST(RowStatusPhases, CommitTimesAnInactiveRowAndFreesASettledOne)
{
    for (const int before : kStatusValues)
        for (const int requested : kStatusValues)
            for (const bool wasPending : {false, true}) {
                if (wasPending)
                    this->table.AddToTimeoutList(this->row);
                int becomes = 0;
                const bool pending = this->IsPendingAfter(before, requested, false, becomes);
                bool expected = wasPending; // by a status that is none
                if (TypeParam::IsTimed(becomes))
                    expected = true;
                else if (becomes == kActive || becomes == 0)
                    expected = false;
                EXPECT_EQ(expected, pending) << before << " asked for " << requested << " is "
                                             << becomes << ", pending " << wasPending;
            }
}

TYPED_TEST(RowStatusPhases, UndoTimesARowThatWasInactiveAndFreesAnyOther)
{
    for (const int before : kStatusValues)
        for (const int requested : kStatusValues)
            for (const bool wasPending : {false, true}) {
                if (wasPending)
                    this->table.AddToTimeoutList(this->row);
                int becomes = 0;
                EXPECT_EQ(TypeParam::IsTimed(before),
                          this->IsPendingAfter(before, requested, true, becomes))
                    << before << " asked for " << requested << ", pending " << wasPending
                    << ": also where the state machine refuses the undo";
            }
}

TYPED_TEST(RowStatusPhases, CommitThatDestroysTakesTheRowOffTheTimeoutList)
{
    this->RowIs(TypeParam::kMade);
    this->table.AddToTimeoutList(this->row);
    this->Handle(eSetTest, TypeParam::kDestroy);
    this->Handle(eSetCommit, TypeParam::kDestroy);
    this->Handle(eSetCleanup, TypeParam::kDestroy);
    EXPECT_FALSE(this->IsPending());
}

TYPED_TEST(RowStatusPhases, TimeoutListIsDoneBeforeTheHandlerIsCalled)
{
    // A handler that takes the row off the list again has the last word.
    this->table.during = [this](const std::string& what) {
        if (what == "commit 3.7")
            this->table.RemoveFromTimeoutList(this->row);
    };
    this->Handle(eSetTest, TypeParam::kMake);
    this->Handle(eSetCommit, TypeParam::kMake);
    this->Handle(eSetCleanup, TypeParam::kMake);
    EXPECT_FALSE(this->IsPending());
}

TYPED_TEST(RowStatusPhases, EntriesWithoutHandlersAreRefused)
{
    for (const ESnmpSetOpCode op : kPhases) {
        EXPECT_EQ(eSnmpNotWritable,
                  this->table.Handle(nullptr, op, &this->slot.scratch, kActive, this->row));
        SRqHndlrMapEntry entry = this->table.Column(eProbeStatus);
        entry.setHandler = nullptr;
        EXPECT_EQ(eSnmpNotWritable,
                  this->table.Handle(&entry, op, &this->slot.scratch, kActive, this->row));
        entry = this->table.Column(eProbeStatus);
        entry.getHandler = nullptr;
        EXPECT_EQ(eSnmpGenErr,
                  this->table.Handle(&entry, op, &this->slot.scratch, kActive, this->row));
    }
    this->ExpectNobodyCalled();
}

TYPED_TEST(RowStatusPhases, WorkWithoutASlot)
{
    for (const ESnmpSetOpCode op : kPhases)
        EXPECT_EQ(0, this->table.Handle(&this->table.Column(eProbeStatus), op, nullptr,
                                        TypeParam::kMake, this->row));
    EXPECT_EQ(5u, this->table.log.size());
}

} // namespace
} // namespace Test
} // namespace VLK
