// Rows that are left inactive, between and beside the phases of SETs.
#include "Modules.h"

#include <gtest/gtest.h>
#include <thread>

namespace VLK::Test {
namespace {

// Lets more time pass than any row has.
void Wait() { BTimer::GetInstance()->Timeout(2 * Modules::kTimeout); }

// Doors 1 and 2 are the house's own.
class RowTimeouts : public testing::Test {
protected:
    std::string Doors() { return m_agent.Walk("3.1.5"); }
    std::string Meters() { return m_agent.Walk("4.1.4"); }

    const std::string kDoors = "3.1.5.1=1 3.1.5.2=1 ";
    Modules m_agent;
};

} // namespace

TEST_F(RowTimeouts, RemoveInactiveRowsOnly)
{
    ASSERT_EQ(m_agent.Set({"3.1.5.7 i 4", "3.1.2.7 s gate", "3.1.5.8 i 5", "4.1.4.5 i 2"}), 0);
    EXPECT_EQ(Doors(), kDoors + "3.1.5.7=1 3.1.5.8=3 ");
    Wait();
    EXPECT_EQ(Doors(), kDoors + "3.1.5.7=1 ");
    EXPECT_EQ(Meters(), "");
}

TEST_F(RowTimeouts, LeaveAPermanentRowAlone)
{
    ASSERT_EQ(m_agent.Set({"3.1.5.1 i 2"}), 0);
    Wait();
    EXPECT_EQ(Doors(), "3.1.5.1=2 3.1.5.2=1 ");
}

TEST_F(RowTimeouts, AreThoseFromBeforeAnUndoneSet)
{
    ASSERT_EQ(m_agent.Set({"3.1.5.7 i 4", "3.1.2.7 s gate", "3.1.5.8 i 5", "3.1.5.9 i 5"}), 0);
    m_agent.neighbour.failAt = {{eSetCommit, 5}};
    EXPECT_EQ(m_agent.Set({"3.1.5.7 i 2", "3.1.5.8 i 1", "3.1.2.8 s x", "3.1.5.9 i 6",
                           "3.1.5.10 i 5", "99.0 i 1"}),
              eSnmpCommitFailed);
    EXPECT_EQ(Doors(), kDoors + "3.1.5.7=1 3.1.5.8=3 3.1.5.9=3 ");
    Wait();
    EXPECT_EQ(Doors(), kDoors + "3.1.5.7=1 ") << "activated, destroyed, and neither";
}

// A SET of columns does not hold its row, which may go before the columns are
// committed; then the row stays away.
TEST_F(RowTimeouts, BetweenThePhasesOfASetOfColumns)
{
    for (const char* column : {"3.1.3.8 i 5", "4.1.2.8 i 5"}) {
        ASSERT_EQ(m_agent.Set({"3.1.5.8 i 5", "4.1.4.8 i 2"}), 0);
        m_agent.neighbour.onSet = [](ESnmpSetOpCode op) {
            if (op == eSetCommit)
                Wait();
        };
        EXPECT_EQ(m_agent.Set({"99.0 i 1", column}), eSnmpCommitFailed) << column;
        EXPECT_EQ(m_agent.errorIndex, 2);
        EXPECT_EQ(Doors(), kDoors);
        EXPECT_EQ(Meters(), "");
        m_agent.neighbour.onSet = nullptr;
    }
}

TEST_F(RowTimeouts, AfterTheColumnsAreCommittedAndBeforeTheyAreUndone)
{
    ASSERT_EQ(m_agent.Set({"3.1.5.8 i 5", "4.1.4.8 i 2"}), 0);
    m_agent.neighbour.onSet = [](ESnmpSetOpCode op) {
        if (op == eSetCommit)
            Wait();
    };
    m_agent.neighbour.failAt = {{eSetCommit, 2}};
    EXPECT_EQ(m_agent.Set({"3.1.3.8 i 5", "4.1.2.8 i 5", "99.0 i 1"}), eSnmpCommitFailed);
    EXPECT_EQ(m_agent.errorIndex, 3);
    EXPECT_EQ(Doors(), kDoors);
    EXPECT_EQ(Meters(), "");
}

TEST_F(RowTimeouts, DoNotComeBetweenThePhasesOfASetOfTheStatus)
{
    ASSERT_EQ(m_agent.Set({"3.1.5.8 i 5", "4.1.4.8 i 2"}), 0);
    m_agent.neighbour.onSet = [](ESnmpSetOpCode op) {
        if (op != eSetTest)
            Wait();
    };
    EXPECT_EQ(m_agent.Set({"99.0 i 1", "3.1.2.8 s x", "3.1.5.8 i 1", "99.0 i 1", "4.1.4.8 i 1"}),
              0);
    Wait();
    EXPECT_EQ(Doors(), kDoors + "3.1.5.8=1 ");
    EXPECT_EQ(Meters(), "4.1.4.8=1 ");
}

namespace {

class RowRaces : public testing::TestWithParam<bool> {
protected:
    RowRaces() { g_bSerializeSet = GetParam(); }
    ~RowRaces() override { g_bSerializeSet = true; }

    // What managers do with one door and one meter, over and over.
    static void Manage(Modules& agent, const std::string& row)
    {
        const Bindings kSets[] = {
            {"3.1.5." + row + " i 5", "4.1.4." + row + " i 2"},
            {"3.1.3." + row + " i 5"},
            {"4.1.2." + row + " i 5"},
            {"3.1.2." + row + " s name", "3.1.5." + row + " i 1"},
            {"4.1.3." + row + " s name", "4.1.4." + row + " i 1"},
            {"3.1.5." + row + " i 6", "4.1.4." + row + " i 4"},
        };
        for (int i = 0; i < kRounds; ++i) {
            for (const Bindings& set : kSets) {
                BVarBindList list;
                for (const std::string& binding : set)
                    list.Append(BindingOf(binding));
                Client(agent.handler).Query(ePduSet, list);
            }
        }
    }

    using Bindings = std::vector<std::string>;
    static constexpr int kRounds = 60;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Sets, RowRaces, testing::Bool(),
                         [](const auto& test) { return test.param ? "OneAtATime" : "SideBySide"; });

TEST_P(RowRaces, SetsWalksAndTimeoutsDoNotDisturbEachOther)
{
    Modules agent(1000);
    std::atomic<bool> done{false};
    std::thread ticks([&] {
        while (!done)
            BTimer::GetInstance()->Timeout(1000);
    });
    std::thread walks([&] {
        while (!done)
            EXPECT_EQ(agent.Walk().compare(0, 6, "1.1.0="), 0);
    });
    std::vector<std::thread> managers;
    for (const char* row : {"7", "8", "7"})
        managers.emplace_back([&, row] { Manage(agent, row); });
    for (std::thread& manager : managers)
        manager.join();
    done = true;
    ticks.join();
    walks.join();
    for (const char* row : {"7", "8"}) {
        EXPECT_EQ(agent.Set({std::string("3.1.5.") + row + " i 6"}), 0);
        agent.Set({std::string("4.1.4.") + row + " i 4"});
    }
    EXPECT_EQ(agent.Walk("3.1.5") + agent.Walk("4.1.4"), "3.1.5.1=1 3.1.5.2=1 ");
}

TEST(RowRaces, ATableGoesWhileItsRowsTimeOut)
{
    BVarBindList list;
    for (const char* door : {"3.1.5.7 i 5", "3.1.5.8 i 5", "3.1.5.9 i 5"})
        list.Append(BindingOf(door));
    std::atomic<bool> done{false};
    std::thread ticks([&] {
        while (!done)
            BTimer::GetInstance()->Timeout(1000);
    });
    for (int i = 0; i < 200; ++i) {
        examples::CDoorModule doors(0); // milliseconds: at the next tick
        BMibHandler handler(nullptr);   // goes first and unregisters nothing
        handler.RegisterGroup(&doors);
        doors.Init();
        EXPECT_EQ(Client(handler).Query(ePduSet, list), 0);
    }
    done = true;
    ticks.join();
}

} // namespace VLK::Test
