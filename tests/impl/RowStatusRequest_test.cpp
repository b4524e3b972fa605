// SET of a run of bindings: refusals before anything is tested, errors, marks, and
// what is left of a request.
#include "tests/impl/RowStatusTest.h"

#include <algorithm>

namespace VLK {
namespace Test {
namespace {

class RowStatusRequest : public ::testing::Test {
protected:
    // Whether a SET has left something noted of the row.
    bool HasState(const char* row) const
    {
        return table.GetRowStatusUndoValue(MakeOid(row)) != eRowNotReady;
    }

    HandTimer timer;
    CRowProbe table;
};

TEST_F(RowStatusRequest, TableThatIsNotInitializedIsNoSuchName)
{
    RowSet set(table);
    set.Foreign("1.3.8.1", Number(1)).Status("7", eRowCreateAndGo).Level("7", 1);
    table.Cleanup();
    for (const ESnmpSetOpCode op : kPhases) {
        EXPECT_EQ(eSnmpNoSuchName, set.Phase(op));
        EXPECT_EQ(1, set.index) << "the run's first binding";
    }
    EXPECT_TRUE(table.log.empty());
    EXPECT_EQ("----", set.Marks());
    EXPECT_EQ((std::vector<int>{0, 0}), set.Ranks());
}

TEST_F(RowStatusRequest, TableThatStopsWithinARequestForgetsItsRows)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndGo);
    EXPECT_EQ(0, set.Phase(eSetTest));
    table.Cleanup();
    EXPECT_EQ(eSnmpNoSuchName, set.Phase(eSetCleanup));
    table.Initialize();
    EXPECT_EQ(eSnmpCommitFailed, set.Phase(eSetCommit));
}

TEST_F(RowStatusRequest, RowThatItsOwnStatusHandlerSetsMeanwhileIsNotNotedTwice)
{
    for (const int noted : {0, 31, 32}) { // rows, also where the next one goes elsewhere
        RowSet others(table);
        for (int row = 0; row < noted; ++row)
            others.Status(("8." + std::to_string(row)).c_str(), eRowDestroy);
        EXPECT_EQ(0, others.Phase(eSetTest));
        RowSet inner(table);
        inner.Status("7", eRowCreateAndWait);
        table.during = [&](const std::string& what) {
            table.during = nullptr;
            EXPECT_EQ("get 3.7", what);
            EXPECT_EQ(0, inner.Phase(eSetTest));
        };
        RowSet outer(table);
        outer.Status("7", eRowCreateAndGo);
        EXPECT_EQ(eSnmpResourceUnavailable, outer.Phase(eSetTest)) << noted;
        EXPECT_TRUE(HasState("7"));
        EXPECT_EQ(0, inner.Phase(eSetCleanup));
        EXPECT_FALSE(HasState("7")) << noted;
        EXPECT_EQ(0, others.Phase(eSetCleanup));
    }
}

TEST_F(RowStatusRequest, CreationWithoutAnIndexIsInconsistentNameForAnyNumberOfBindings)
{
    for (const int value : {eRowCreateAndGo, eRowCreateAndWait}) {
        RowSet alone(table);
        alone.Add("1.3.9.3", Number(value));
        EXPECT_EQ(eSnmpInconsistentName, alone.Phase(eSetTest));
        EXPECT_EQ(0, alone.index);
        EXPECT_EQ("--", alone.Marks());

        RowSet many(table);
        many.Foreign("1.3.8.1", Number(1)).Status("7", eRowCreateAndGo).Level("7", 1);
        many.Add("1.3.9.3", Number(value)).Add("1.3.9.3", Number(value));
        EXPECT_EQ(eSnmpInconsistentName, many.Phase(eSetTest));
        EXPECT_EQ(3, many.index) << "the first of them";
        EXPECT_EQ("--------", many.Marks());

        EXPECT_EQ(eSnmpInconsistentName, many.WithoutSlots().Phase(eSetTest));
        EXPECT_EQ(3, many.index);
    }
    EXPECT_TRUE(table.log.empty()) << "before any binding is tested";
}

TEST_F(RowStatusRequest, OtherStatusWithoutAnIndexIsNoSuchName)
{
    for (const int value : kStatusValues) {
        if (value == eRowCreateAndGo || value == eRowCreateAndWait)
            continue;
        RowSet set(table);
        set.Level("8", 1).Add("1.3.9.3", Number(value));
        table.Row("8");
        EXPECT_EQ(eSnmpNoSuchName, set.Phase(eSetTest)) << value;
        EXPECT_EQ(1, set.index);
        EXPECT_EQ("t---", set.Marks()) << "in its turn";
    }
}

TEST_F(RowStatusRequest, CreationWithoutAnIndexIsNoSuchNameInLaterPhases)
{
    RowSet set(table);
    set.Add("1.3.9.3", Number(eRowCreateAndGo)).WithoutSlots();
    for (const ESnmpSetOpCode op : {eSetCommit, eSetUndo, eSetCleanup})
        EXPECT_EQ(eSnmpNoSuchName, set.Phase(op));
}

TEST_F(RowStatusRequest, EntryCreationWithoutAnIndexIsInconsistentName)
{
    CEntryProbe entries;
    RowSet set(entries);
    set.Add("1.3.9.3", Number(eEntryCreateRequest));
    EXPECT_EQ(eSnmpInconsistentName, set.Phase(eSetTest));
    RowSet other(entries);
    other.Add("1.3.9.3", Number(eEntryInvalid));
    EXPECT_EQ(eSnmpNoSuchName, other.Phase(eSetTest));
}

TEST_F(RowStatusRequest, CreatesChangesAndDestroysRows)
{
    RowSet create(table);
    create.Name("7", "seven").Status("7", eRowCreateAndWait).Level("7", 3);
    EXPECT_EQ(0, create.Run());
    EXPECT_EQ(eRowNotInService, table.Row("7").status);
    EXPECT_EQ("seven", table.Row("7").name);
    EXPECT_EQ(3, table.Row("7").level);

    RowSet change(table);
    change.Status("7", eRowActive).Level("7", 4);
    EXPECT_EQ(0, change.Run());
    EXPECT_EQ(eRowActive, table.Row("7").status);
    EXPECT_EQ(4, table.Row("7").level);

    RowSet destroy(table);
    destroy.Status("7", eRowDestroy).Status("8", eRowDestroy);
    EXPECT_EQ(0, destroy.Run());
    EXPECT_TRUE(table.rows.empty());
    EXPECT_FALSE(HasState("7") || HasState("8"));
}

// Which calls a phase makes when that one of three bindings, in the middle of
// which a row is made, answers `answer`; and what the phase is then answered with.
struct SFailure {
    const char* at; // "2.8", "3.7", "2.7"
    int index;      // of that binding
    const char* called;
};

TEST_F(RowStatusRequest, FirstErrorOfAPhaseEndsItAtItsBinding)
{
    // In the order of the calls: 3.7 is the binding in the middle, and goes first.
    const SFailure failures[] = {
        {"3.7", 2, "3.7"}, {"2.7", 1, "3.7 2.7"}, {"2.8", 3, "3.7 2.7 2.8"}};
    for (const ESnmpSetOpCode op : kPhases)
        for (const SFailure& failure : failures)
            for (const int answer : {5, 12, 99, kThrow}) {
                CRowProbe probe;
                probe.Row("8");
                RowSet set(probe);
                set.Foreign("1.3.8.1", Number(1));
                set.Level("7", 1).Status("7", eRowCreateAndGo).Level("8", 1);
                probe.answers[PhaseName(op) + " " + failure.at] = answer;
                int status = 0;
                for (const ESnmpSetOpCode phase : kPhases) {
                    EXPECT_EQ(0, status);
                    probe.TakeLog();
                    status = set.Phase(phase);
                    if (phase == op)
                        break;
                }
                EXPECT_EQ(answer == kThrow ? int(eSnmpGenErr) : answer, status);
                EXPECT_EQ(failure.index, set.index) << op << failure.at;
                std::string called;
                for (const std::string& line : probe.log) {
                    const std::string::size_type at = line.find(' ');
                    if (line.substr(0, at) == PhaseName(op))
                        called += (called.empty() ? "" : " ") +
                                  line.substr(at + 1, line.find('=') - at - 1);
                }
                EXPECT_EQ(failure.called, called) << op;
            }
}

TEST_F(RowStatusRequest, MarksTellWhichHandlersWereCalled)
{
    table.Row("8").status = eRowActive;
    const auto marksAfter = [this](const char* failing, ESnmpSetOpCode last) {
        table.answers = {{failing, eSnmpGenErr}};
        RowSet set(table);
        set.Level("8", 1).Status("9", eRowCreateAndGo).Name("9", "x");
        for (const ESnmpSetOpCode op : kPhases) {
            set.Phase(op);
            if (op == last)
                break;
        }
        std::string marks = set.Marks();
        table.answers.clear();
        set.Phase(eSetUndo);
        set.Phase(eSetCleanup);
        return marks;
    };
    EXPECT_EQ("t-t-t-", marksAfter("none", eSetTest));
    EXPECT_EQ("t-----", marksAfter("test 2.8", eSetTest)) << "refused, but called";
    EXPECT_EQ("t-----", marksAfter("get 3.9", eSetTest)) << "the get handler does not count";
    EXPECT_EQ("t-t---", marksAfter("test 3.9", eSetTest));
    EXPECT_EQ("tctctc", marksAfter("none", eSetCommit));
    EXPECT_EQ("tctct-", marksAfter("commit 3.9", eSetCommit));
    EXPECT_EQ("tctctc", marksAfter("none", eSetUndo)) << "undo marks nothing";
}

TEST_F(RowStatusRequest, UndoVisitsOnlyWhatWasCommitted)
{
    table.Row("8").status = eRowActive;
    table.answers["commit 3.9"] = eSnmpCommitFailed;
    RowSet set(table);
    set.Level("8", 4).Status("9", eRowCreateAndGo).Name("9", "x").Status("8", eRowDestroy);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ(eSnmpCommitFailed, set.Phase(eSetCommit));
    EXPECT_EQ(1, set.index);
    table.TakeLog();
    EXPECT_EQ(0, set.Phase(eSetUndo));
    EXPECT_EQ((Log{"undo 2.8=4", "undo 3.9=4"}), table.TakeLog());
    EXPECT_EQ(0, table.Row("8").level);
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ((Log{"cleanup 2.8=4", "cleanup 3.9=4", "cleanup 1.9=x", "cleanup 3.8=6"}),
              table.TakeLog());
}

TEST_F(RowStatusRequest, CleanupVisitsOnlyWhatWasTested)
{
    table.Row("8").status = eRowActive;
    RowSet set(table);
    set.Level("8", 4).Status("8", eRowCreateAndGo).Name("8", "x");
    EXPECT_EQ(eSnmpInconsistentValue, set.Phase(eSetTest));
    EXPECT_EQ(1, set.index);
    EXPECT_EQ("------", set.Marks()) << "the refused creation was ordered first";
    table.TakeLog();
    EXPECT_EQ(0, set.Phase(eSetUndo));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_TRUE(table.log.empty());

    RowSet later(table);
    later.Level("8", 4).Status("8", eRowNotReady).Name("8", "x");
    EXPECT_EQ(eSnmpWrongValue, later.Phase(eSetTest));
    table.TakeLog();
    EXPECT_EQ(0, later.Phase(eSetCleanup));
    EXPECT_EQ(Log{"cleanup 2.8=4"}, table.log);
}

TEST_F(RowStatusRequest, CleanupForgetsTheRowOfAFailedStatusTest)
{
    table.Row("8").status = eRowActive;
    RowSet set(table);
    set.Status("8", eRowCreateAndGo);
    EXPECT_EQ(eSnmpInconsistentValue, set.Phase(eSetTest));
    EXPECT_TRUE(HasState("8")) << "it is there until the cleanup";
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_FALSE(HasState("8"));
    EXPECT_EQ(Log{"get 3.8"}, table.TakeLog()) << "and its handler is not called";

    // The next SET starts clean, from the status of its own time.
    table.Row("8").status = eRowNotInService;
    RowSet next(table);
    next.Status("8", eRowActive);
    EXPECT_EQ(0, next.Phase(eSetTest));
    EXPECT_EQ((Log{"get 3.8", "test 3.8=1"}), table.log);
    EXPECT_EQ(eRowNotInService, table.GetRowStatusUndoValue(MakeOid("8")));
    EXPECT_EQ(0, next.Phase(eSetCleanup));
}

TEST_F(RowStatusRequest, CleanupThatFailsForgetsAllRowsOfTheRun)
{
    for (const int answer : {5, kThrow}) {
        table.answers["cleanup 3.7"] = answer;
        RowSet set(table);
        set.Status("7", eRowCreateAndGo).Status("8", eRowCreateAndGo).Status("9", eRowDestroy);
        EXPECT_EQ(0, set.Phase(eSetTest));
        EXPECT_TRUE(HasState("7") && HasState("8") && HasState("9"));
        EXPECT_EQ(eSnmpGenErr, set.Phase(eSetCleanup));
        EXPECT_EQ(0, set.index);
        EXPECT_FALSE(HasState("7") || HasState("8") || HasState("9"));
    }
}

TEST_F(RowStatusRequest, CleanupLeavesTheRowsOfOtherRuns)
{
    RowSet first(table);
    first.Status("7", eRowCreateAndGo);
    RowSet second(table);
    second.Foreign("1.3.9.3.7", Number(1)).Status("8", eRowCreateAndGo).Level("7", 1);
    second.Foreign("1.3.9.3.7", Number(1));
    EXPECT_EQ(0, first.Phase(eSetTest));
    EXPECT_EQ(0, second.Phase(eSetTest));
    EXPECT_EQ(0, second.Phase(eSetCleanup));
    EXPECT_FALSE(HasState("8"));
    EXPECT_TRUE(HasState("7")) << "which it names in no status binding of its own";
    EXPECT_EQ(0, first.Phase(eSetCleanup));
    EXPECT_FALSE(HasState("7"));
}

TEST_F(RowStatusRequest, CleanupWithoutSlotsForgetsTheRowsToo)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndGo).Status("8", eRowActive).WithoutSlots();
    EXPECT_EQ(eSnmpInconsistentValue, set.Phase(eSetTest));
    EXPECT_TRUE(HasState("8"));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_FALSE(HasState("7") || HasState("8"));
}

TEST_F(RowStatusRequest, RowsAreForgottenForWhoeverLeavesTheCleanupOut)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndGo).Level("8", 1).Status("9", eRowDestroy);
    table.Row("8");
    EXPECT_EQ(0, set.Phase(eSetTest));
    table.ForgetRows(set.list, 1, 2);
    EXPECT_TRUE(HasState("7"));
    EXPECT_FALSE(HasState("9"));
    table.ForgetRows(set.list, 0, 1);
    EXPECT_FALSE(HasState("7"));
    table.ForgetRows(set.list, 0, 3);
}

TEST_F(RowStatusRequest, OtherColumnsOfTheRowKnowThatItIsMadeOrDestroyed)
{
    std::map<std::string, std::string> seen;
    table.during = [&](const std::string& what) {
        seen[what] = std::string(table.IsRowCreation(MakeOid("7")) ? "made" : "") +
                     (table.IsRowDeletion(MakeOid("7")) ? "destroyed" : "");
    };
    RowSet create(table);
    create.Level("7", 1).Status("7", eRowCreateAndGo).Name("7", "x");
    EXPECT_EQ(0, create.Run());
    for (const char* call : {"test 2.7", "test 1.7", "commit 2.7", "commit 1.7"})
        EXPECT_EQ("made", seen[call]) << call;
    seen.clear();
    RowSet destroy(table);
    destroy.Level("7", 1).Status("7", eRowDestroy).Name("7", "x");
    EXPECT_EQ(0, destroy.Run());
    EXPECT_EQ("", seen["test 2.7"]) << "a deletion is not ordered first";
    EXPECT_EQ("destroyed", seen["test 1.7"]);
    EXPECT_EQ("destroyed", seen["cleanup 3.7"]);
}

TEST_F(RowStatusRequest, TwoStatusBindingsOfARowAreOneChange)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndWait).Level("7", 2).Status("7", eRowActive);
    EXPECT_EQ(0, set.Run());
    EXPECT_EQ(eRowActive, table.Row("7").status);
    timer.Tick(2);
    EXPECT_EQ(0, std::count(table.log.begin(), table.log.end(), "timeout 7"));
}

} // namespace
} // namespace Test
} // namespace VLK
