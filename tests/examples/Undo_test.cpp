// What a SET has changed is taken back when a later commit fails, whatever the order
// of its bindings, and nothing of it is left for the next SET.
#include "Modules.h"

#include "tests/support/AllocationSweep.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace VLK::Test {
namespace {

using Lines = std::vector<std::string>;

// The rows that the SETs below change: door 7 is active, 8 notReady and 9
// notInService; meter 5 is valid, 6 underCreation.
const std::vector<Lines> kRows = {
    {"3.1.5.7 i 4", "3.1.2.7 s gate"},  {"3.1.5.8 i 5"}, {"3.1.5.9 i 5", "3.1.2.9 s back door"},
    {"4.1.4.5 i 2", "4.1.3.5 s owner"}, {"4.1.4.5 i 1"}, {"4.1.4.6 i 2"},
};

struct SSet {
    const char* name;
    Lines bindings;

    friend void PrintTo(const SSet& set, std::ostream* out) { *out << set.name; }
};

const SSet kSets[] = {
    {"Scalars", {"1.1.0 i 25", "1.2.0 i 3"}},
    {"OneScalarTwice", {"1.1.0 i 25", "1.1.0 i 26"}},
    {"CreateADoor", {"3.1.5.10 i 4", "3.1.2.10 s new", "3.1.3.10 i 5"}},
    {"CreateAWaitingDoor", {"3.1.5.10 i 5", "3.1.3.10 i 5"}},
    {"CreateTwoDoors", {"3.1.5.10 i 4", "3.1.2.10 s a", "3.1.5.11 i 4", "3.1.2.11 s b"}},
    {"DestroyDoors", {"3.1.5.7 i 6", "3.1.5.8 i 6", "3.1.5.9 i 6"}},
    {"DestroyNoDoor", {"3.1.5.10 i 6", "3.1.3.7 i 5"}},
    {"RenameAnActiveDoor", {"3.1.5.7 i 2", "3.1.2.7 s other", "3.1.3.7 i 9"}},
    {"ActivateADoor", {"3.1.5.8 i 1", "3.1.2.8 s now", "3.1.4.8 i 3"}},
    {"ColumnsOfADoor", {"3.1.3.7 i 1", "3.1.4.7 i 3", "3.1.2.8 s named"}},
    {"ReplaceADoor", {"3.1.5.7 i 6", "3.1.5.10 i 4", "3.1.2.10 s new"}},
    {"CreateAMeter", {"4.1.4.7 i 2", "4.1.3.7 s owner", "4.1.2.7 i 5"}},
    {"ChangeAValidMeter", {"4.1.4.5 i 3", "4.1.2.5 i 5", "4.1.3.5 s other"}},
    {"ValidateAMeter", {"4.1.4.6 i 1", "4.1.2.6 i 5"}},
    {"RemoveMeters", {"4.1.4.5 i 4", "4.1.4.6 i 4"}},
    {"Fans", {"5.1.3.1 u 50", "5.1.3.2 u 60"}},
    {"Parameters", {"6.1.0 i 6", "6.2.7.1 i 41"}},
    {"AllModules", {"1.1.0 i 25", "3.1.3.7 i 1", "4.1.2.6 i 5", "6.1.0 i 6"}},
};

class Undo : public testing::TestWithParam<SSet> {
protected:
    static std::unique_ptr<Modules> Agent()
    {
        auto agent = std::make_unique<Modules>();
        for (const Lines& row : kRows)
            EXPECT_EQ(agent->Set(row), 0) << row[0];
        return agent;
    }

    // The SET with the neighbour's commit failing behind so many bindings.
    static void FailBehind(Modules& agent, Lines bindings, size_t count)
    {
        const std::string before = agent.Walk();
        bindings.insert(bindings.begin() + static_cast<int>(count), "99.0 i 1");
        agent.neighbour.failAt = {{eSetCommit, static_cast<int>(count)}};
        EXPECT_EQ(agent.Set(bindings), eSnmpCommitFailed);
        EXPECT_EQ(agent.errorIndex, static_cast<int>(count) + 1);
        EXPECT_EQ(agent.Walk(), before) << "behind " << count;
        EXPECT_EQ(agent.neighbour.slotErrors, 0);
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Sets, Undo, testing::ValuesIn(kSets),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(Undo, LeavesEverythingAsItWas)
{
    Lines bindings = GetParam().bindings;
    std::sort(bindings.begin(), bindings.end());
    std::string after;
    do {
        SCOPED_TRACE(testing::PrintToString(bindings));
        const std::unique_ptr<Modules> agent = Agent();
        const std::string before = agent->Walk();
        for (size_t count = 0; count <= bindings.size(); ++count)
            FailBehind(*agent, bindings, count);
        ASSERT_EQ(agent->Set(bindings), 0);
        EXPECT_NE(agent->Walk(), before);
        // Of one object that is set twice the last value counts.
        if (after.empty() || std::string(GetParam().name) == "OneScalarTwice")
            after = agent->Walk();
        EXPECT_EQ(agent->Walk(), after) << "the order made a difference";
    } while (std::next_permutation(bindings.begin(), bindings.end()));
}

TEST_P(Undo, WithoutMemoryASetIsDoneOrNot)
{
    const Lines& bindings = GetParam().bindings;
    std::string before, after;
    {
        const std::unique_ptr<Modules> agent = Agent();
        before = agent->Walk();
        ASSERT_EQ(agent->Set(bindings), 0);
        after = agent->Walk();
    }
    BVarBindList list;
    for (const std::string& binding : bindings)
        list.Append(BindingOf(binding));
    const auto set = [&](const std::unique_ptr<Modules>& agent) {
        int errorIndex = 0;
        return agent->handler.QuerySet(1, BSecurityParams(), BString(), list, errorIndex);
    };
    const auto check = [&](const std::unique_ptr<Modules>& agent, int status) {
        EXPECT_EQ(agent->Walk(), status == eSnmpNoError ? after : before) << status;
        if (status != eSnmpNoError) {
            EXPECT_EQ(agent->Set(bindings), 0) << "once there is memory again";
        }
    };
    const bool needsMemory = std::string(GetParam().name) != "Parameters";
    EXPECT_EQ(VLKTest::SweepAllocations(Agent, set, check) > 0, needsMemory);
}

} // namespace VLK::Test
