// The registry of agents, and its commands, when memory is short.
#include "tests/support/AllocationSweep.h"
#include "tests/support/Oids.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>
#include <vkmibh/agents.h>
#include <vkmibh/timer.h>
#include <vkmibh/transactions.h>

namespace VLK {
namespace Test {
namespace {

using VLKTest::SweepAllocations;

// Counts its calls and takes no memory.
class FrugalAgent : public BAgent {
public:
    int SendTrap(const BTrap&, int) override { return Count(traps); }
    int Init(int) override { return 0; }
    int Suspend(int) override { return Count(suspends); }
    int Resume(int) override { return 0; }
    int Start(int) override { return 0; }
    int Stop(int) override { return 0; }
    BString GetParams() override { return BString("parameters of some length"); }

    int traps = 0;
    int suspends = 0;

private:
    static int Count(int& calls)
    {
        ++calls;
        return 0;
    }
};

// Compares what is written with the whole texts.
class FrugalStream : public ICmdStream {
public:
    explicit FrugalStream(std::initializer_list<const char*> whole) : m_whole(whole) {}
    int GetLine(BString&) override { return 1; }
    int Write(const BString& text) override
    {
        bool isWhole = false;
        for (const char* whole : m_whole) {
            isWhole = isWhole || text.compare(0, BString::npos, whole, VKStrlen(whole)) == 0;
        }
        ++(isWhole ? written : broken);
        return 0;
    }
    int written = 0;
    int broken = 0;

private:
    const std::vector<const char*> m_whole;
};

constexpr char kUsage[] = "\nUsage:\n"
                          " agents -l                  list registered agents\n"
                          " agents -s[<agentName>]     suspend agent(s) \n"
                          " agents -r[<agentName>]     resume agent(s) \n";

struct Registry {
    FrugalAgent first;
    FrugalAgent second;
    BTime time;
    BAgents agents{time};
    FrugalStream out{"Registered agents:\n 1. first\n 2. second\n\n",
                     "*** first\nparameters of some length\n",
                     "*** second\nparameters of some length\n",
                     "*** first\n\n", // without memory for the parameters
                     "*** second\n\n",
                     "Agent(s) suspended.\n",
                     "Unknown agent 'a name that needs memory of its own'\n",
                     "Unknown argument 'a name that needs memory of its own'\n",
                     "Unknown argument '-sfirst'\n",
                     kUsage};
};

std::unique_ptr<Registry> MakeRegistry()
{
    auto registry = std::make_unique<Registry>();
    EXPECT_EQ(0, registry->agents.Register("first", &registry->first));
    EXPECT_EQ(0, registry->agents.Register("second", &registry->second));
    return registry;
}

TEST(AgentMemory, AnAgentIsRegisteredOrNotStored)
{
    const BString name("a name that needs memory of its own");
    FrugalAgent third;
    SweepAllocations([] { return MakeRegistry(); },
                     [&](auto& registry) { return registry->agents.Register(name, &third); },
                     [&](auto& registry, int code) {
                         EXPECT_TRUE(code == 0 || code == kAgentNotStored) << code;
                         EXPECT_EQ(code == 0 ? 3 : 2, registry->agents.GetNumAgents());
                         EXPECT_EQ(code == 0 ? &third : nullptr, registry->agents.GetAgent(name));
                     });
}

TEST(AgentMemory, TrapsNeedNone)
{
    const auto registry = MakeRegistry();
    const BTrapV2 trap(MakeOid("1.3.6.1.6.3.1.1.5.1"));
    const FailingAlloc fail(0);
    registry->agents.SendTrap(trap, "second");
    registry->agents.SendTrap(trap, nullptr);
    EXPECT_FALSE(fail.Failed());
    EXPECT_EQ(1, registry->first.traps);
    EXPECT_EQ(2, registry->second.traps);
}

// Runs a command with every allocation refused once; `check` sees what it did.
template <class Check>
void SweepCommand(const char* command, const char* argument, Check check)
{
    SCOPED_TRACE(std::string(command) + " " + argument);
    const BString name(command);
    BStringArray args;
    if (*argument)
        args.PushBack(argument);
    const BSecurityParams security;
    const BString context;
    SweepAllocations([] { return MakeRegistry(); },
                     [&](auto& registry) {
                         return registry->agents.CmdExecute(registry->out, name, args, security,
                                                            context);
                     },
                     [&](auto& registry, int) {
                         EXPECT_EQ(0, registry->out.broken) << "half a text";
                         check(*registry);
                     });
}

TEST(AgentMemory, ACommandsTextsAreWholeOrMissing)
{
    const auto nothing = [](const Registry&) {};
    SweepCommand("agents", "", nothing);
    SweepCommand("agparams", "", nothing);
    SweepCommand("agparams", "a name that needs memory of its own", nothing);
    SweepCommand("agents", "a name that needs memory of its own", nothing);
}

TEST(AgentMemory, OneAgentIsNotTakenForAll)
{
    SweepCommand("agparams", "first", [](const Registry& registry) {
        EXPECT_LE(registry.out.written, 1) << "those of all agents are shown";
    });
    SweepCommand("agents", "-sfirst", [](const Registry& registry) {
        EXPECT_EQ(0, registry.second.suspends) << "all are suspended";
    });
}

} // namespace
} // namespace Test
} // namespace VLK
