// The registry of agents: who is registered, and who is called in which order.
#include "tests/agents/RecordingAgent.h"
#include "tests/support/Oids.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>
#include <vkmibh/timer.h>

namespace VLK {

// The friend of the clock, to set it back.
struct SLayoutCheck {
    static void SetBack(BTime& time) { time.m_start.seconds -= 1000; }
};

namespace Test {
namespace {

using Calls = RecordingAgent::Calls;

constexpr unsigned Code(int code) { return static_cast<unsigned>(code); }

class Agents : public ::testing::Test {
protected:
    // Not in the order of their names.
    void RegisterThree()
    {
        ASSERT_EQ(0, agents.Register("c", &c));
        ASSERT_EQ(0, agents.Register("a", &a));
        ASSERT_EQ(0, agents.Register("b", &b));
    }
    // The calls since the last time.
    Calls Taken()
    {
        Calls taken;
        taken.swap(calls);
        return taken;
    }
    std::string Names() const
    {
        std::string names;
        for (int i = 0; i < agents.GetNumAgents(); ++i)
            names += agents.AgentAt(i) == &a ? 'a' : agents.AgentAt(i) == &b ? 'b' : 'c';
        return names;
    }

    Calls calls;
    RecordingAgent a{"a", calls};
    RecordingAgent b{"b", calls};
    RecordingAgent c{"c", calls};
    BTime time;
    BAgents agents{time};
    const BTrapV2 trap{MakeOid("1.3.6.1.6.3.1.1.5.1")};
};

TEST(AgentCodes, AreThoseOfTheLibrary)
{
    EXPECT_EQ(0x80010011u, Code(kAgentNameTaken));
    EXPECT_EQ(0x80010012u, Code(kAgentRegistered));
    EXPECT_EQ(0x80010013u, Code(kAgentNotStored));
    EXPECT_EQ(0x80010014u, Code(kAgentUnknown));
    EXPECT_EQ(-1, kAgentThrew);
}

TEST_F(Agents, AreNoneAtFirst)
{
    EXPECT_EQ(0, agents.GetNumAgents());
    EXPECT_EQ(nullptr, agents.GetAgent("a"));
    EXPECT_EQ(nullptr, agents.GetAgent(""));
    const std::function<int()> operations[] = {
        [this] { return agents.Init(); }, [this] { return agents.Start(); },
        [this] { return agents.Stop(); }, [this] { return agents.Suspend(); },
        [this] { return agents.Resume(); }};
    for (const auto& operation : operations)
        EXPECT_EQ(0, operation());
    agents.SendTrap(trap, nullptr);
    agents.SendTrap(trap, "a");
    EXPECT_EQ(Calls(), calls);
}

TEST_F(Agents, StandInTheOrderOfTheirNames)
{
    RegisterThree();
    EXPECT_EQ(3, agents.GetNumAgents());
    EXPECT_EQ("abc", Names());
    EXPECT_EQ(&b, agents.GetAgent("b"));
    for (const char* name : {"", "A", "bb", "d"})
        EXPECT_EQ(nullptr, agents.GetAgent(name)) << name;
    EXPECT_EQ(Calls(), calls) << "registering calls nobody";
}

TEST_F(Agents, ANameIsRegisteredOnce)
{
    RegisterThree();
    EXPECT_EQ(kAgentNameTaken, agents.Register("b", &c));
    EXPECT_EQ(&b, agents.GetAgent("b"));
    EXPECT_EQ("abc", Names());
}

TEST_F(Agents, AnAgentIsRegisteredUnderOneName)
{
    RegisterThree();
    for (RecordingAgent* agent : {&a, &b, &c}) {
        for (const char* name : {"", "aa", "z"})
            EXPECT_EQ(kAgentRegistered, agents.Register(name, agent)) << name;
    }
    EXPECT_EQ("abc", Names());
    EXPECT_EQ(nullptr, agents.GetAgent("z"));
}

TEST_F(Agents, TheNameIsCheckedBeforeTheAgent)
{
    RegisterThree();
    EXPECT_EQ(kAgentNameTaken, agents.Register("b", &b));
    EXPECT_EQ(kAgentNameTaken, agents.Register("b", nullptr));
}

TEST_F(Agents, ANullAgentIsNotStored)
{
    EXPECT_EQ(kAgentNotStored, agents.Register("a", nullptr));
    EXPECT_EQ(0, agents.GetNumAgents());
}

TEST_F(Agents, AnyTextIsAName)
{
    EXPECT_EQ(0, agents.Register("", &a));
    EXPECT_EQ(0, agents.Register(BString("x\0y", 3), &b));
    EXPECT_EQ(&a, agents.GetAgent(""));
    EXPECT_EQ(&b, agents.GetAgent(BString("x\0y", 3)));
    EXPECT_EQ(nullptr, agents.GetAgent("x"));
    agents.SendTrap(trap, "x");
    EXPECT_EQ(Calls(), Taken());
    agents.SendTrap(trap, "");
    EXPECT_EQ(Calls{"trap a"}, Taken());
}

TEST_F(Agents, AreNotDeletedWithTheRegistry)
{
    {
        BAgents other(time);
        EXPECT_EQ(0, other.Register("a", &a));
    }
    EXPECT_EQ(0, a.Init(0));
}

TEST_F(Agents, EveryOperationCallsAllInTheOrderOfTheirNames)
{
    RegisterThree();
    EXPECT_EQ(0, agents.Init());
    EXPECT_EQ((Calls{"init a", "init b", "init c"}), Taken());
    EXPECT_EQ(0, agents.Start());
    EXPECT_EQ((Calls{"start a", "start b", "start c"}), Taken());
    EXPECT_EQ(0, agents.Suspend());
    EXPECT_EQ((Calls{"suspend a", "suspend b", "suspend c"}), Taken());
    EXPECT_EQ(0, agents.Resume());
    EXPECT_EQ((Calls{"resume a", "resume b", "resume c"}), Taken());
    EXPECT_EQ(0, agents.Stop());
    EXPECT_EQ((Calls{"stop a", "stop b", "stop c"}), Taken());
}

TEST_F(Agents, InitAndStartGoOnAndGiveTheLastFailure)
{
    RegisterThree();
    a.status = 7;
    b.status = -9;
    EXPECT_EQ(-9, agents.Init());
    EXPECT_EQ((Calls{"init a", "init b", "init c"}), Taken());
    EXPECT_EQ(-9, agents.Start());
    EXPECT_EQ((Calls{"start a", "start b", "start c"}), Taken());
    b.status = 0;
    EXPECT_EQ(7, agents.Init());
    EXPECT_EQ(7, agents.Start());
    c.status = 1;
    EXPECT_EQ(1, agents.Init());
    EXPECT_EQ(1, agents.Start());
}

TEST_F(Agents, StopSuspendAndResumeEndAtTheFirstFailure)
{
    RegisterThree();
    b.status = -9;
    c.status = 3;
    EXPECT_EQ(-9, agents.Stop());
    EXPECT_EQ((Calls{"stop a", "stop b"}), Taken());
    EXPECT_EQ(-9, agents.Suspend());
    EXPECT_EQ((Calls{"suspend a", "suspend b"}), Taken());
    EXPECT_EQ(-9, agents.Resume());
    EXPECT_EQ((Calls{"resume a", "resume b"}), Taken());
    b.status = 0;
    EXPECT_EQ(3, agents.Stop());
    EXPECT_EQ((Calls{"stop a", "stop b", "stop c"}), Taken());
}

TEST_F(Agents, OneMayBeSuspendedAndResumedByName)
{
    RegisterThree();
    b.status = 5;
    EXPECT_EQ(5, agents.Suspend("b"));
    EXPECT_EQ(5, agents.Resume("b"));
    EXPECT_EQ(0, agents.Suspend("c"));
    EXPECT_EQ(0, agents.Resume("c"));
    EXPECT_EQ((Calls{"suspend b", "resume b", "suspend c", "resume c"}), Taken());
    for (const char* name : {"", "d", "B"}) {
        EXPECT_EQ(kAgentUnknown, agents.Suspend(name)) << name;
        EXPECT_EQ(kAgentUnknown, agents.Resume(name)) << name;
    }
    EXPECT_EQ(Calls(), Taken());
}

TEST_F(Agents, ATrapGoesThroughOneOrAll)
{
    RegisterThree();
    ITrapSender& sender = agents;
    sender.SendTrap(trap, "b");
    EXPECT_EQ(Calls{"trap b"}, Taken());
    EXPECT_EQ(&trap, b.lastTrap);
    EXPECT_EQ(nullptr, a.lastTrap);
    sender.SendTrap(trap, nullptr);
    EXPECT_EQ((Calls{"trap a", "trap b", "trap c"}), Taken());
    for (const char* name : {"", "d", "aa", "B"})
        sender.SendTrap(trap, name);
    EXPECT_EQ(Calls(), Taken());
}

TEST_F(Agents, ATrapGoesThroughAllWhateverTheyAnswer)
{
    RegisterThree();
    a.status = 1;
    b.throws = true;
    agents.SendTrap(trap, nullptr);
    EXPECT_EQ((Calls{"trap a", "trap b", "trap c"}), Taken());
    agents.SendTrap(trap, "b");
    EXPECT_EQ(Calls{"trap b"}, Taken());
}

TEST_F(Agents, OneThatThrowsHasFailed)
{
    RegisterThree();
    b.throws = true;
    EXPECT_EQ(kAgentThrew, agents.Init());
    EXPECT_EQ(kAgentThrew, agents.Start());
    EXPECT_EQ((Calls{"init a", "init b", "init c", "start a", "start b", "start c"}), Taken());
    EXPECT_EQ(kAgentThrew, agents.Stop());
    EXPECT_EQ(kAgentThrew, agents.Suspend());
    EXPECT_EQ(kAgentThrew, agents.Resume());
    EXPECT_EQ((Calls{"stop a", "stop b", "suspend a", "suspend b", "resume a", "resume b"}),
              Taken());
    EXPECT_EQ(kAgentThrew, agents.Suspend("b"));
    EXPECT_EQ(kAgentThrew, agents.Resume("b"));
}

// Looks at the clock when it is started.
class ClockReader : public RecordingAgent {
public:
    ClockReader(Calls& calls, const BTime& time) : RecordingAgent("clock", calls), m_time(time) {}
    int Init(int) override { return Read(); }
    int Stop(int) override { return Read(); }
    int Suspend(int) override { return Read(); }
    int Resume(int) override { return Read(); }
    int Start(int) override { return Read(); }
    unsigned seen = 0; // hundredths of a second

private:
    int Read()
    {
        seen = m_time.SysUptime();
        return 0;
    }
    const BTime& m_time;
};

TEST_F(Agents, StartRecordsTheStartTimeBeforeItStartsThem)
{
    ClockReader reader(calls, time);
    ASSERT_EQ(0, agents.Register("reader", &reader));
    SLayoutCheck::SetBack(time);
    const std::function<int()> others[] = {
        [this] { return agents.Init(); }, [this] { return agents.Suspend(); },
        [this] { return agents.Resume(); }, [this] { return agents.Stop(); }};
    for (const auto& operation : others) {
        EXPECT_EQ(0, operation());
        EXPECT_GE(reader.seen, 99000u) << "only Start() sets the clock";
    }
    EXPECT_EQ(0, agents.Start());
    EXPECT_LT(reader.seen, 99000u);
}

// Sends nothing, on many threads at once.
class CountingAgent : public BAgent {
public:
    int SendTrap(const BTrap&, int) override { return ++traps, 0; }
    int Init(int) override { return 0; }
    int Suspend(int) override { return 0; }
    int Resume(int) override { return 0; }
    int Start(int) override { return 0; }
    int Stop(int) override { return 0; }
    BString GetParams() override { return BString(); }
    std::atomic<int> traps{0};
};

TEST(AgentsOfManyThreads, SendTrapsAndAreAskedSideBySide)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 500;
    BTime time;
    BAgents agents(time);
    CountingAgent one;
    CountingAgent two;
    ASSERT_EQ(0, agents.Register("one", &one));
    ASSERT_EQ(0, agents.Register("two", &two));
    const BTrapV2 trap(MakeOid("1.3.6.1.6.3.1.1.5.1"));
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                agents.SendTrap(trap, nullptr);
                agents.SendTrap(trap, "two");
                ASSERT_EQ(&one, agents.GetAgent("one"));
                ASSERT_EQ(&two, agents.AgentAt(1));
                ASSERT_EQ(2, agents.GetNumAgents());
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(kThreads * kRounds, one.traps);
    EXPECT_EQ(2 * kThreads * kRounds, two.traps);
}

TEST(AgentsWithoutAny, StartRecordsTheStartTimeToo)
{
    BTime time;
    SLayoutCheck::SetBack(time);
    BAgents agents(time);
    EXPECT_EQ(0, agents.Start());
    EXPECT_LT(time.SysUptime(), 99000u);
}

} // namespace
} // namespace Test
} // namespace VLK
