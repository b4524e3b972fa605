#include "Alarms.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Sent = std::vector<std::string>;
using Lines = std::vector<std::string>;

// Events 1 and 2 are traps.
class AlarmSampling : public testing::Test {
protected:
    AlarmSampling()
    {
        agent.Let(1, 5);
        agent.AddEvent(1, eEventTrap);
        agent.AddEvent(2, eEventTrap);
    }
    void AddAlarm(int sampleType, int rising, int falling, int interval = 1)
    {
        agent.AddAlarm(7, 1, interval,
                       {{At(kAlarm, 4, 7), Number(sampleType)},
                        {At(kAlarm, 7, 7), Number(rising)},
                        {At(kAlarm, 8, 7), Number(falling)},
                        {At(kAlarm, 9, 7), Number(1)},
                        {At(kAlarm, 10, 7), Number(2)}});
    }
    std::size_t Questions() const { return agent.numbers.runs.size(); }

    AlarmAgent agent;
};

} // namespace

TEST_F(AlarmSampling, AValueIsThereAfterAnInterval)
{
    AddAlarm(eAbsoluteValue, 100, 0, 3);
    const std::size_t asked = Questions();
    agent.Seconds(3);
    EXPECT_EQ(agent.Value(7), kNoInstance);
    EXPECT_EQ(Questions(), asked);
    for (const std::string& line : agent.client.Walk())
        EXPECT_NE(line.substr(0, 8), "3.1.1.5.");
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "5");
    agent.Let(1, 6);
    agent.Seconds(2);
    EXPECT_EQ(agent.Value(7), "5") << "that of the last period";
    EXPECT_EQ(Questions(), asked + 1);
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "6");
    EXPECT_EQ(Questions(), asked + 2);
    EXPECT_EQ(agent.traps.Sent(), Sent());
}

TEST_F(AlarmSampling, ADifferenceIsThatOfAPeriod)
{
    agent.Let(1, Count(4294967290u));
    AddAlarm(eDeltaValue, 100, -100, 2);
    agent.Seconds(1);
    agent.Let(1, Count(1));
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), kNoInstance);
    agent.Let(1, Count(5));
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "11");
    agent.Let(1, Count(5));
    agent.Seconds(2);
    EXPECT_EQ(agent.Value(7), "0");
}

TEST_F(AlarmSampling, ThresholdsRaiseTheirNotifications)
{
    AddAlarm(eAbsoluteValue, 10, 2);
    agent.Seconds(2);
    EXPECT_EQ(agent.traps.Sent(), Sent());
    Sent expected;
    const struct {
        int value, number, threshold; // 0: raises nothing
    } steps[] = {{10, 1, 10}, {12, 0, 0}, {3, 0, 0}, {11, 0, 0},
                 {2, 2, 2},   {-9, 0, 0}, {9, 0, 0}, {2147483647, 1, 10}};
    for (const auto& step : steps) {
        agent.Let(1, step.value);
        agent.Seconds(1);
        if (step.number != 0)
            expected.push_back(
                AlarmTrap(step.number, 7, 1, eAbsoluteValue, step.value, step.threshold));
        EXPECT_EQ(agent.traps.Sent(), expected) << step.value;
    }
}

TEST_F(AlarmSampling, ADifferenceRaisesToo)
{
    agent.Let(1, Count(100));
    AddAlarm(eDeltaValue, 10, 2);
    agent.Seconds(1);
    agent.Let(1, Count(130));
    agent.Seconds(1);
    agent.Let(1, Count(131));
    agent.Seconds(1);
    EXPECT_EQ(agent.traps.Sent(), (Sent{AlarmTrap(1, 7, 1, eDeltaValue, 30, 10),
                                        AlarmTrap(2, 7, 1, eDeltaValue, 1, 2)}));
}

TEST_F(AlarmSampling, ValidAnewStartsAnew)
{
    AddAlarm(eAbsoluteValue, 5, 0, 1);
    agent.Seconds(2);
    EXPECT_EQ(agent.traps.Sent().size(), 1u);
    ASSERT_EQ(agent.client.Set({{At(kAlarm, 12, 7), Number(1)}}), 0) << "it is valid already";
    agent.Seconds(2);
    EXPECT_EQ(agent.traps.Sent().size(), 1u);
    ASSERT_EQ(agent.client.Set({{At(kAlarm, 12, 7), Number(3)}}), 0);
    const std::size_t asked = Questions();
    agent.Seconds(5);
    EXPECT_EQ(Questions(), asked);
    ASSERT_EQ(agent.client.Set({{At(kAlarm, 12, 7), Number(1)}}), 0);
    EXPECT_EQ(agent.Value(7), kNoInstance);
    agent.Seconds(2);
    EXPECT_EQ(agent.traps.Sent().size(), 2u);
}

TEST_F(AlarmSampling, AVariableThatIsGoneInvalidatesTheAlarm)
{
    const auto gone = [this](const char* how, const std::function<void()>& make) {
        SCOPED_TRACE(how);
        agent.Let(1, 5);
        AddAlarm(eAbsoluteValue, 10, 2);
        agent.Seconds(2);
        EXPECT_EQ(agent.Status(7), "1");
        make();
        agent.Seconds(1);
        EXPECT_EQ(agent.Status(7), kNoInstance);
        EXPECT_TRUE(agent.store.records["mib-2.rmon.alarmTable"].empty());
        agent.numbers.onGet = nullptr;
    };
    gone("no instance", [this] { agent.numbers.instances.clear(); });
    gone("another type", [this] { agent.Let(1, Bytes("5")); });
    for (int status : {eSnmpNoSuchName, eSnmpAuthorizationError, eSnmpNoAccess})
        gone("refused", [=] { agent.numbers.onGet = [=](BVarBind&) { return status; }; });
}

TEST_F(AlarmSampling, AnErrorIsASampleThatIsMissed)
{
    agent.Let(1, Count(100));
    AddAlarm(eDeltaValue, 1000, -1000);
    agent.Seconds(1);
    agent.Let(1, Count(103));
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "3");
    for (int status : {eSnmpGenErr, eSnmpResourceUnavailable}) {
        agent.numbers.onGet = [=](BVarBind&) { return status; };
        agent.Seconds(1);
    }
    agent.numbers.onGet = [](BVarBind&) -> int { throw std::runtime_error("number"); };
    agent.Seconds(1);
    EXPECT_EQ(agent.Status(7), "1");
    agent.numbers.onGet = nullptr;
    agent.Let(1, Count(500));
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "3") << "no difference over more than a period";
    agent.Let(1, Count(507));
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "7");
}

TEST_F(AlarmSampling, AnAlarmMayChangeWhileItsVariableIsAskedFor)
{
    AddAlarm(eAbsoluteValue, 1, 0);
    agent.Seconds(1);
    // It goes, is another one, or is valid anew: the answer is for none of them.
    const Bindings end{{At(kAlarm, 12, 7), Number(4)}};
    const Bindings pause{{At(kAlarm, 12, 7), Number(3)}};
    for (const Bindings& change : {end, pause}) {
        agent.numbers.onGet = [&](BVarBind& binding) {
            agent.numbers.onGet = nullptr;
            agent.client.Set(change);
            if (agent.Status(7) == "3")
                agent.client.Set({{At(kAlarm, 12, 7), Number(1)}});
            else
                AddAlarm(eAbsoluteValue, 1, 0);
            binding.Value().SetInt(50);
            return 0;
        };
        agent.Seconds(1);
        EXPECT_EQ(agent.Status(7), "1");
        EXPECT_EQ(agent.Value(7), kNoInstance);
        EXPECT_EQ(agent.traps.Sent(), Sent());
        agent.numbers.onGet = nullptr;
        agent.Seconds(1); // it starts
        ASSERT_FALSE(HasFailure());
    }
    agent.Seconds(1);
    EXPECT_EQ(agent.Value(7), "5");
}

TEST_F(AlarmSampling, PeriodsThatWereMissedAreLeftOut)
{
    AddAlarm(eAbsoluteValue, 100, 0, 3);
    agent.Seconds(4);
    const std::size_t asked = Questions();
    for (int i = 0; i < 8; ++i)
        agent.module.Alarms().Tick();
    agent.module.Sampler().SampleDue();
    agent.module.Sampler().SampleDue();
    EXPECT_EQ(Questions(), asked + 1);
    agent.Seconds(1); // the ninth second since the last one in time
    EXPECT_EQ(Questions(), asked + 2);
}

TEST_F(AlarmSampling, NobodyIsWokenWithoutNeed)
{
    CAlarmRows& alarms = agent.module.Alarms();
    agent.Seconds(1);
    EXPECT_TRUE(alarms.IsIdle());
    EXPECT_EQ(alarms.Tick(), CAlarmRows::eTickIdle);
    AddAlarm(eAbsoluteValue, 100, 0, 100);
    EXPECT_FALSE(alarms.IsIdle());
    EXPECT_EQ(alarms.Tick(), CAlarmRows::eTickDue) << "it begins";
    agent.module.Sampler().SampleDue();
    for (int i = 1; i < 100; ++i)
        ASSERT_EQ(alarms.Tick(), CAlarmRows::eTickNothing) << i;
    EXPECT_EQ(alarms.Tick(), CAlarmRows::eTickDue);
    agent.module.Sampler().SampleDue();
    EXPECT_EQ(agent.Value(7), "5");
    EXPECT_EQ(alarms.Tick(), CAlarmRows::eTickNothing);
    ASSERT_EQ(agent.client.Set({{At(kAlarm, 12, 7), Number(4)}}), 0);
    agent.Seconds(100);
    EXPECT_EQ(alarms.Tick(), CAlarmRows::eTickIdle);
}

TEST_F(AlarmSampling, ManyAlarmsAreSampledEachBySelf)
{
    agent.store.saveAtOnce = false;
    for (unsigned index = 100; index < 400; ++index)
        agent.AddAlarm(index, 1, 5);
    const std::size_t asked = Questions();
    agent.Seconds(6);
    ASSERT_EQ(Questions(), asked + 300);
    for (std::size_t i = asked; i < Questions(); ++i)
        EXPECT_EQ(agent.numbers.runs[i].second, 1);
    EXPECT_EQ(agent.Value(399), "5");
}

TEST(AlarmIdentity, SamplesAreTakenInTheNameThatTheHostGives)
{
    FakeAccess access;
    BMibHandler handler(&access);
    ListHandler numbers(kNumbers);
    numbers.Add(NumberName(1).c_str(), 5);
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&numbers));
    FakeTraps traps;
    SAlarmOptions options;
    options.identity = {{2, BString("alarms"), 1}, BString("inside")};
    CAlarmModule module(traps, nullptr, options, [] { return 0u; });
    module.Sampler().SetAgent(&handler);
    EXPECT_EQ(module.Sampler().Test(MakeOid(NumberName(1).c_str())), 0);
    EXPECT_EQ(access.asked, Lines{NumberName(1)});
    EXPECT_EQ(access.kinds, std::set<int>{eAccessRead});
    EXPECT_EQ(access.lastSecurity.securityModel, 2);
    EXPECT_STREQ(access.lastSecurity.securityName.c_str(), "alarms");
    EXPECT_EQ(access.lastSecurity.securityLevel, 1);
    EXPECT_STREQ(access.lastContext.c_str(), "inside");
    access.refused = {NumberName(1)};
    EXPECT_EQ(module.Sampler().Test(MakeOid(NumberName(1).c_str())), eSnmpWrongValue);
    handler.UnregisterSubtreeHandler(&numbers);
}
