// What a manager has set is there after the agent was killed.
#include "Modules.h"
#include "RunningExample.h"

#include "examples/stored/Setpoint.h"
#include "tests/support/FakeStore.h"

#include <csignal>
#include <gtest/gtest.h>

namespace VLK::Test {
namespace {

const std::string kSetpoint = "1.3.6.1.4.1.32473.2.8.1.0";
const std::string kKept = "example.setpoint/setpointValue";

// An agent that is asked directly, with a neighbour whose commit can be made to fail.
class Setpoint : public testing::Test {
protected:
    int Set(int value)
    {
        BVarBindList list;
        list.Append(BindingOf("8.1.0 i " + std::to_string(value)));
        list.Append(BindingOf("99.0 i 1"));
        return Client(m_handler).Query(ePduSet, list);
    }
    std::string Value()
    {
        BVarBindList list;
        list.Append(MakeOid(kSetpoint.c_str()));
        Client(m_handler).Query(ePduGet, list);
        return list[0].Value().ValToStr().c_str();
    }
    void Start()
    {
        m_module = std::make_unique<examples::CSetpointModule>(&m_store);
        m_handler.RegisterGroup(m_module.get());
        m_module->Init();
        m_handler.RegisterSubtreeHandler(&m_neighbour);
    }
    ~Setpoint() override
    {
        if (m_module)
            m_handler.UnregisterGroup(m_module.get());
        m_handler.UnregisterSubtreeHandler(&m_neighbour);
    }

    FakeStore m_store;
    SetLog m_log;
    RecorderHandler m_neighbour{'N', (kExamplesRoot + "99").c_str(), m_log};
    std::unique_ptr<examples::CSetpointModule> m_module;
    BMibHandler m_handler{nullptr};
};

} // namespace

TEST_F(Setpoint, StartsWithWhatTheStoreKeeps)
{
    m_store.numbers[kKept] = 7;
    Start();
    EXPECT_EQ(Value(), "7");
}

TEST_F(Setpoint, StartsWithItsDefaultWhereTheStoreKeepsNothingOfUse)
{
    m_store.numbers[kKept] = 31;
    Start();
    EXPECT_EQ(Value(), "20");
}

TEST_F(Setpoint, IsSavedWhenItIsSet)
{
    m_store.saveAtOnce = true;
    Start();
    EXPECT_EQ(Set(23), eSnmpNoError);
    EXPECT_EQ(m_store.numbers[kKept], 23);
}

TEST_F(Setpoint, IsSavedAgainAsItWasWhenTheSetIsUndone)
{
    m_store.saveAtOnce = true;
    Start();
    m_neighbour.failAt = {{eSetCommit, 1}};
    EXPECT_EQ(Set(23), eSnmpCommitFailed);
    EXPECT_EQ(Value(), "20");
    EXPECT_EQ(m_store.numbers[kKept], 20);
}

TEST(SetpointAgent, KeepsWhatASetHasAcknowledgedWhenItIsKilled)
{
    TempDir directory;
    const std::string file = directory.File("setpoint.db");
    const Arguments quiet = {"-Oqv"};
    {
        RunningExample first("stored", {file});
        ASSERT_TRUE(first.Server().IsReady()) << first.Server().FirstLine();
        EXPECT_EQ(
            first.Server().Ask("snmpset", "2c", "private", {kSetpoint, "i", "23"}, quiet).output,
            "23\n");
        first.Server().Kill(SIGKILL);
    }
    RunningExample second("stored", {file});
    ASSERT_TRUE(second.Server().IsReady()) << second.Server().FirstLine();
    EXPECT_EQ(second.Server().Ask("snmpget", "2c", "public", {kSetpoint}, quiet).output, "23\n");
}

} // namespace VLK::Test
