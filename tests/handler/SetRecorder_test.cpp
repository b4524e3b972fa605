// SET phases: every pattern of runs, every position, every phase that can fail.
#include <vkmibh/testing/recorder.h>
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>

namespace VLK {
namespace Test {
namespace {

struct SRun {
    char name;
    int first;
    int length;
};

// What a SET over these runs must do when `phase` fails at `position` (with
// position -1 nothing fails), and what it must answer.
struct SExpectation {
    SExpectation(const std::vector<SRun>& runs, ESnmpSetOpCode phase, int position, int failWith)
    {
        // To be undone at all, the last run's commit fails.
        const bool undoes = position >= 0 && (phase == eSetCommit || phase == eSetUndo);
        const int commitFailsAt = phase == eSetUndo ? runs.back().first : position;
        size_t tested = 0;
        bool testFailed = false;
        for (const SRun& run : runs) {
            Log(run, eSetTest);
            ++tested;
            testFailed = phase == eSetTest && Holds(run, position);
            if (testFailed)
                break;
        }
        if (testFailed)
            Fail(failWith, position);
        else
            Commit(runs, undoes ? commitFailsAt : -1, failWith);
        if (undoes)
            Undo(runs, commitFailsAt, phase == eSetUndo ? position : -1, failWith);
        for (size_t i = 0; i < tested; ++i) {
            Log(runs[i], eSetCleanup);
            if (phase == eSetCleanup && Holds(runs[i], position)) {
                Fail(failWith, position);
                break;
            }
        }
    }

    static bool Holds(const SRun& run, int position)
    {
        return position >= run.first && position < run.first + run.length;
    }
    void Log(const SRun& run, ESnmpSetOpCode phase)
    {
        log.push_back(SetLogLine(run.name, phase, run.first, run.length));
    }
    void Fail(int with, int position)
    {
        status = with;
        errorIndex = position + 1;
    }
    void Commit(const std::vector<SRun>& runs, int failAt, int failWith)
    {
        for (const SRun& run : runs) {
            Log(run, eSetCommit);
            if (Holds(run, failAt))
                return Fail(failWith, failAt);
        }
    }
    void Undo(const std::vector<SRun>& runs, int commitFailsAt, int failAt, int failWith)
    {
        for (const SRun& run : runs) {
            if (run.first > commitFailsAt)
                return;
            Log(run, eSetUndo);
            if (Holds(run, failAt))
                return Fail(failWith, -1);
        }
    }

    SetLog log;
    int status = 0;
    int errorIndex = 0;
};

class SetRecorder : public ::testing::Test {
protected:
    SetRecorder() : handler(nullptr)
    {
        for (char name : {'A', 'B', 'C'}) {
            const std::string oid = OidOf(name);
            auto recorder = std::make_unique<RecorderHandler>(name, oid.c_str(), log);
            handler.RegisterSubtreeHandler(recorder.get());
            recorders[name] = std::move(recorder);
        }
    }

    static std::string OidOf(char name) { return "1.3.5." + std::to_string(name - 'A' + 1); }

    // "AAB": two bindings for A, then one for B.
    static BVarBindList ListOf(const std::string& pattern)
    {
        BVarBindList list;
        for (size_t i = 0; i < pattern.size(); ++i)
            list.Append(MakeOid((OidOf(pattern[i]) + "." + std::to_string(i)).c_str()));
        return list;
    }
    static std::vector<SRun> RunsOf(const std::string& pattern)
    {
        std::vector<SRun> runs;
        for (size_t i = 0; i < pattern.size(); ++i) {
            if (!runs.empty() && runs.back().name == pattern[i])
                ++runs.back().length;
            else
                runs.push_back({pattern[i], static_cast<int>(i), 1});
        }
        return runs;
    }

    int Set(const std::string& pattern)
    {
        log.clear();
        BVarBindList list = ListOf(pattern);
        errorIndex = kUntouched;
        return handler.QuerySet(1, BSecurityParams(), BString(), list, errorIndex);
    }
    void FailAt(const std::string& pattern, ESnmpSetOpCode phase, int position)
    {
        for (auto& recorder : recorders)
            recorder.second->failAt.clear();
        if (position < 0)
            return;
        recorders[pattern[static_cast<size_t>(position)]]->failAt.insert({phase, position});
        if (phase == eSetUndo)
            recorders[pattern.back()]->failAt.insert({eSetCommit, RunsOf(pattern).back().first});
    }
    int SlotErrors()
    {
        int errors = 0;
        for (auto& recorder : recorders)
            errors += recorder.second->slotErrors;
        return errors;
    }
    void Check(const std::string& pattern, ESnmpSetOpCode phase, int position, int failWith)
    {
        SCOPED_TRACE(pattern + ": " + PhaseText(phase) + " fails at " + std::to_string(position));
        FailAt(pattern, phase, position);
        for (auto& recorder : recorders)
            recorder.second->failWith = failWith;
        const SExpectation expected(RunsOf(pattern), phase, position, failWith);
        EXPECT_EQ(expected.status, Set(pattern));
        EXPECT_EQ(expected.log, log);
        EXPECT_EQ(position < 0 ? kUntouched : expected.errorIndex, errorIndex);
        EXPECT_EQ(0, SlotErrors());
    }

    SetLog log;
    BMibHandler handler;
    std::map<char, std::unique_ptr<RecorderHandler>> recorders;
    int errorIndex = 0;
};

// All patterns of one to four bindings over three handlers.
std::vector<std::string> Patterns()
{
    std::vector<std::string> patterns = {""};
    for (size_t i = 0; patterns[i].size() < 4; ++i)
        for (char name : {'A', 'B', 'C'})
            patterns.push_back(patterns[i] + name);
    patterns.erase(patterns.begin());
    patterns.push_back("AAAAAAAAAABBBBBBBBBBAAAAAAAAAA");
    return patterns;
}

TEST_F(SetRecorder, EveryPatternPhaseAndPosition)
{
    int checked = 0;
    for (const std::string& pattern : Patterns())
        for (ESnmpSetOpCode phase : {eSetTest, eSetCommit, eSetUndo, eSetCleanup})
            for (int position = -1; position < static_cast<int>(pattern.size()); ++position) {
                Check(pattern, phase, position, 14);
                ++checked;
                ASSERT_FALSE(HasFailure());
            }
    EXPECT_EQ(4 * (3 * 2 + 9 * 3 + 27 * 4 + 81 * 5 + 31), checked);
}

TEST_F(SetRecorder, EveryPatternPhaseAndPositionWithThrowingHandlers)
{
    for (auto& recorder : recorders)
        recorder.second->throwInstead = true;
    for (const std::string& pattern : Patterns())
        for (ESnmpSetOpCode phase : {eSetTest, eSetCommit, eSetUndo, eSetCleanup})
            for (int position = -1; position < static_cast<int>(pattern.size()); ++position) {
                Check(pattern, phase, position, 5);
                ASSERT_FALSE(HasFailure());
            }
}

TEST_F(SetRecorder, TwoNeighboursMakeOneCallPerPhase)
{
    EXPECT_EQ(0, Set("AA"));
    EXPECT_EQ((SetLog{"A test 0+2", "A commit 0+2", "A cleanup 0+2"}), log);
}

TEST_F(SetRecorder, ABAMakesThreeCallsPerPhase)
{
    EXPECT_EQ(0, Set("ABA"));
    EXPECT_EQ((SetLog{"A test 0+1", "B test 1+1", "A test 2+1", "A commit 0+1", "B commit 1+1",
                      "A commit 2+1", "A cleanup 0+1", "B cleanup 1+1", "A cleanup 2+1"}),
              log);
}

TEST_F(SetRecorder, FailedCommitOfTheSecondOfThreeRunsUndoesTwoAndCleansThree)
{
    recorders['B']->failAt = {{eSetCommit, 1}};
    EXPECT_EQ(14, Set("ABC"));
    EXPECT_EQ(2, errorIndex);
    EXPECT_EQ(
        (SetLog{"A test 0+1", "B test 1+1", "C test 2+1", "A commit 0+1", "B commit 1+1",
                "A undo 0+1", "B undo 1+1", "A cleanup 0+1", "B cleanup 1+1", "C cleanup 2+1"}),
        log);
}

TEST_F(SetRecorder, AFailedCleanupReplacesAFailedUndo)
{
    recorders['A']->failAt = {{eSetUndo, 0}};
    recorders['A']->failWith = 15;
    recorders['B']->failAt = {{eSetCommit, 1}, {eSetCleanup, 1}};
    EXPECT_EQ(14, Set("ABC"));
    EXPECT_EQ(2, errorIndex);
    EXPECT_EQ((SetLog{"A test 0+1", "B test 1+1", "C test 2+1", "A commit 0+1", "B commit 1+1",
                      "A undo 0+1", "A cleanup 0+1", "B cleanup 1+1"}),
              log);
    recorders['B']->failAt = {{eSetCommit, 1}};
    EXPECT_EQ(15, Set("ABC"));
    EXPECT_EQ(0, errorIndex) << "a failed undo points at no binding";
}

TEST_F(SetRecorder, AForeignInstanceAHandlerClaimsJoinsItsRun)
{
    recorders['A']->alsoHandles = {OidOf('B') + ".1", "1.9.9"};
    EXPECT_EQ(0, Set("ABC"));
    EXPECT_EQ((SetLog{"A test 0+2", "C test 2+1", "A commit 0+2", "C commit 2+1", "A cleanup 0+2",
                      "C cleanup 2+1"}),
              log);
}

TEST_F(SetRecorder, OutsideEveryRegionIsNoSuchNameAfterTheRunsBefore)
{
    BVarBindList list = ListOf("AB");
    list.Append(MakeOid("1.9.9"));
    list.Append(ListOf("C"));
    EXPECT_EQ(2, handler.QuerySet(1, BSecurityParams(), BString(), list, errorIndex));
    EXPECT_EQ(3, errorIndex);
    EXPECT_EQ((SetLog{"A test 0+1", "B test 1+1", "A cleanup 0+1", "B cleanup 1+1"}), log);
}

TEST_F(SetRecorder, AThrowWhileRunsAreFormedIsAGeneralErrorAndCleansUp)
{
    class Asker : public RecorderHandler {
    public:
        using RecorderHandler::RecorderHandler;
        bool HandlesInstance(const BObjectIdentifier&) override
        {
            throw std::runtime_error("asked");
        }
    };
    Asker asker('D', "1.3.5.9", log);
    handler.RegisterSubtreeHandler(&asker);
    BVarBindList list = ListOf("A");
    list.Append(MakeOid("1.3.5.9.1"));
    list.Append(MakeOid("1.3.5.9.2"));
    list.Append(ListOf("B"));
    EXPECT_EQ(5, handler.QuerySet(1, BSecurityParams(), BString(), list, errorIndex));
    EXPECT_EQ(4, errorIndex) << "the binding it was asked for";
    EXPECT_EQ((SetLog{"A test 0+1", "A cleanup 0+1"}), log);
    handler.UnregisterSubtreeHandler(&asker);
}

TEST_F(SetRecorder, AnIndexOutsideTheRunIsNotTrusted)
{
    class Wild : public RecorderHandler {
    public:
        using RecorderHandler::RecorderHandler;
        int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
                int count) override
        {
            RecorderHandler::Set(id, list, op, slots, index, count);
            if (op == failing)
                index = claimed;
            return op == failing ? 14 : 0;
        }
        ESnmpSetOpCode failing = eSetTest;
        int claimed = 0;
    };
    Wild wild('D', "1.3.5.9", log);
    handler.RegisterSubtreeHandler(&wild);
    BVarBindList list = ListOf("A");
    list.Append(MakeOid("1.3.5.9.1"));
    list.Append(MakeOid("1.3.5.9.2"));
    list.Append(ListOf("B"));
    for (int claimed : {-5, 0, 3, 999}) {
        wild.claimed = claimed;
        for (ESnmpSetOpCode phase : {eSetTest, eSetCommit, eSetCleanup}) {
            wild.failing = phase;
            log.clear();
            EXPECT_EQ(14, handler.QuerySet(1, BSecurityParams(), BString(), list, errorIndex));
            EXPECT_EQ(2, errorIndex) << claimed << " in " << PhaseText(phase);
            EXPECT_EQ(phase == eSetCommit, std::count(log.begin(), log.end(), "A undo 0+1") == 1);
            EXPECT_EQ(0, std::count(log.begin(), log.end(), "B undo 3+1"));
        }
    }
    handler.UnregisterSubtreeHandler(&wild);
}

TEST_F(SetRecorder, AnEmptyListRunsNoPhase)
{
    EXPECT_EQ(0, Set(""));
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(kUntouched, errorIndex);
}

} // namespace
} // namespace Test
} // namespace VLK
