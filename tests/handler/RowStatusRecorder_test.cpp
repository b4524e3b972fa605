// SET on row-status tables through BMibHandler::Query: every request of a list of
// them, with every handler call in it failing, alone and together with others.
#include "tests/handler/RowStatusAgent.h"

#include <gtest/gtest.h>

#include <sstream>

namespace VLK {
namespace Test {
namespace {

constexpr ESnmpSetOpCode kPhases[] = {eSetTest, eSetCommit, eSetUndo, eSetCleanup};

// A SET, what is there before it, and its answer when nothing fails: the status
// and the error index.
struct SScenario {
    const char* rows; // "A1=1" is an active row; its name and level are "old" and 9
    const char* bindings;
    int status;
    int errorIndex;

    Content Before() const
    {
        Content content;
        std::istringstream words(rows);
        for (std::string word; words >> word;)
            content[word.substr(0, 2)] = {word[3] - '0', "old", 9};
        return content;
    }
    std::vector<SBinding> List() const
    {
        std::vector<SBinding> list;
        std::istringstream words(bindings);
        for (std::string word; words >> word;)
            list.emplace_back(word);
        return list;
    }
};

void PrintTo(const SScenario& scenario, std::ostream* out)
{
    *out << "SET " << scenario.bindings << " with rows " << scenario.rows;
}

constexpr SScenario kScenarios[] = {
    // One row.
    {"", "As1=4", 0, 0},
    {"", "As1=5", 0, 0},
    {"", "As1=6", 0, 0},
    {"", "As1=1", 12, 1},
    {"A1=1", "As1=4", 12, 1},
    {"A1=1", "As1=3", 10, 1},
    {"A1=1", "As1=6", 0, 0},
    {"A1=1", "As1=2", 0, 0},
    {"A1=2", "As1=1", 0, 0},
    {"A1=2", "As1=2", 0, 0},
    {"A1=3", "As1=1", 0, 0},
    {"A1=2", "As1=6", 0, 0},
    {"A1=2", "An1=x Al1=7", 0, 0},
    // Columns around the binding that makes their row.
    {"", "As1=4 An1=x Al1=7", 0, 0},
    {"", "An1=x Al1=7 As1=4", 0, 0},
    {"", "An1=x As1=5 Al1=7", 0, 0},
    {"", "An1=x Al1=7 As1=5 As1=1", 0, 0},
    {"A2=1", "An1=x Al2=7 As1=4", 18, 1},
    {"", "An1=x", 18, 1},
    // Around one that changes or destroys it.
    {"A1=2", "An1=x As1=1 Al1=7", 0, 0},
    {"A1=1", "An1=x As1=6", 0, 0},
    {"A1=1", "Al1=7 As1=2 An1=x As1=1", 0, 0},
    // Two and three rows.
    {"", "As1=4 As2=5", 0, 0},
    {"A2=2 A3=1", "As1=5 As2=1 As3=6", 0, 0},
    {"", "An1=x As1=4 An2=y As2=5", 0, 0},
    {"", "As1=4 An1=x As2=4 An2=y", 0, 0},
    {"", "An1=x An2=y As2=4 As1=4", 18, 1},
    {"", "As1=4 As2=1", 12, 2},
    {"A2=1", "An2=x Al1=7 As1=4 An1=y As2=6", 0, 0},
    // Made and destroyed by one request.
    {"", "As1=4 As1=6", 0, 0},
    {"", "As1=5 As1=6", 0, 0},
    {"", "As1=6 As1=5", 0, 0},
    {"A1=1", "As1=6 As1=4", 0, 0},
    {"A1=2", "As1=6 As1=5", 0, 0},
    {"A1=1", "As1=4 As1=6", 12, 1},
    {"", "As1=5 An1=x As1=1 As1=6", 0, 0},
    {"A1=1", "As1=6 Al1=7 As1=4 An1=x", 0, 0},
    {"A1=2", "Al1=7 As1=6 As1=5 As1=1", 0, 0},
    // Runs of one table that another's binding splits.
    {"", "As1=4 Bs1=4 Al1=7", 0, 0},
    {"", "Al1=7 Bs1=4 As1=4", 18, 1},
    {"B2=1", "As1=5 Bl2=7 As1=1", 0, 0},
    {"B2=2", "As1=5 Bs2=6 As1=6", 0, 0},
    {"A1=1", "As1=6 Bs1=5 As1=4", 0, 0},
    {"", "As1=5 Bs1=5 As1=1 Bs1=1", 0, 0},
    {"A2=1", "Al1=7 As1=4 Bn1=x Bs1=5 As2=6", 0, 0},
    {"B1=1", "As1=5 Bs1=4 As1=1", 12, 2},
    {"", "As1=4 Bs1=1 As1=6", 12, 2},
    // EntryStatus.
    {"", "Es1=2", 0, 0},
    {"", "Es1=1", 10, 1},
    {"E1=1", "Es1=2", 3, 1},
    {"E1=3", "Es1=1", 0, 0},
    {"E1=1", "Es1=4", 0, 0},
    {"E1=1", "Es1=3", 0, 0},
    {"", "En1=x El1=7 Es1=2 Es1=1", 0, 0},
    {"E2=3", "Es1=2 As1=5 Es2=4 Es1=4", 0, 0},
    {"E1=3", "Es1=4 El1=7 Es1=2", 0, 0},
};

class RowStatusRecorder : public ::testing::TestWithParam<SScenario> {
protected:
    // Whether all went as it must.
    void Check(const Fails& fails, bool throwing = false)
    {
        std::string trace = throwing ? "throws:" : "fails:";
        for (const auto& [phase, position] : fails)
            trace += " " + PhaseName(phase) + " " + std::to_string(position);
        SCOPED_TRACE(trace);
        const Content before = GetParam().Before();
        const std::vector<SBinding> list = GetParam().List();
        const Expectation expected(list, before, fails, throwing);
        RowStatusAgent agent(before);
        EXPECT_EQ(expected.status, agent.Set(list, fails, throwing));
        EXPECT_EQ(expected.log, agent.CallLog());
        EXPECT_EQ(expected.errorIndex, agent.ErrorIndex());
        EXPECT_EQ(0, agent.States());
        const Content rows = agent.Rows();
        EXPECT_EQ(expected.undoFailed ? rows : expected.after, rows);
        EXPECT_EQ(Log(expected.pending.begin(), expected.pending.end()), agent.Pending());
    }
    // Every call of the request: its phase, and the position of its binding.
    static std::vector<Fails::value_type> Calls()
    {
        std::vector<Fails::value_type> calls;
        for (const ESnmpSetOpCode phase : kPhases) {
            for (int k = 0; k < int(GetParam().List().size()); ++k)
                calls.emplace_back(phase, k);
        }
        return calls;
    }
};

TEST_P(RowStatusRecorder, NothingFails)
{
    Check({});
    const Expectation expected(GetParam().List(), GetParam().Before(), {}, false);
    EXPECT_EQ(GetParam().status, expected.status);
    EXPECT_EQ(GetParam().errorIndex, expected.errorIndex);
}

TEST_P(RowStatusRecorder, OneCallFails)
{
    for (const auto& call : Calls())
        Check({call});
}

TEST_P(RowStatusRecorder, TwoCallsFail)
{
    for (const auto& one : Calls()) {
        for (const auto& other : Calls()) {
            if (one < other)
                Check({one, other});
        }
    }
}

TEST_P(RowStatusRecorder, CommitUndoAndCleanupFail)
{
    const int count = int(GetParam().List().size());
    for (int commit = 0; commit < count; ++commit) {
        for (int undo = 0; undo < count; ++undo) {
            for (int cleanup = 0; cleanup < count; ++cleanup)
                Check({{eSetCommit, commit}, {eSetUndo, undo}, {eSetCleanup, cleanup}});
        }
    }
}

TEST_P(RowStatusRecorder, OneOrTwoCallsThrow)
{
    for (const auto& one : Calls()) {
        Check({one}, true);
        for (const auto& other : Calls()) {
            if (one.first == eSetCommit && other.first == eSetUndo)
                Check({one, other}, true);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, RowStatusRecorder, ::testing::ValuesIn(kScenarios),
                         [](const auto& scenario) { return std::to_string(scenario.index); });

} // namespace
} // namespace Test
} // namespace VLK
