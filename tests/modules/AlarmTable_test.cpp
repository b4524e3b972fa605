#include "Alarms.h"

#include <thread>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Lines = std::vector<std::string>;

std::string Row(int column, unsigned index = 7) { return At(kAlarm, column, index); }

class AlarmTable : public testing::Test {
protected:
    AlarmTable() { agent.Let(1, 5); }
    int Set(const Bindings& bindings) { return agent.client.Set(bindings); }
    std::string Get(const std::string& name) { return agent.client.Get(name); }

    AlarmAgent agent;
};

constexpr unsigned kLongEnough = 20000; // milliseconds

// A value that each settable column takes, beside its default.
const Bindings kSettings{
    {Row(2), Number(10)}, {Row(3), Oid(NumberName(1))}, {Row(4), Number(2)},
    {Row(6), Number(1)},  {Row(7), Number(100)},        {Row(8), Number(-100)},
    {Row(9), Number(3)},  {Row(10), Number(65535)},     {Row(11), Bytes("me")}};

} // namespace

TEST_F(AlarmTable, ARowIsMadeWithDefaults)
{
    EXPECT_EQ(agent.client.Walk(), Lines());
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    EXPECT_EQ(agent.client.Walk(),
              (Lines{"3.1.1.1.7=7", "3.1.1.2.7=60", "3.1.1.3.7=0.0", "3.1.1.4.7=1", "3.1.1.6.7=3",
                     "3.1.1.7.7=0", "3.1.1.8.7=0", "3.1.1.9.7=0", "3.1.1.10.7=0",
                     "3.1.1.11.7=", "3.1.1.12.7=3"}));
}

TEST_F(AlarmTable, ColumnsAreSetInAnyOrderWithTheRow)
{
    Bindings reversed(kSettings.rbegin(), kSettings.rend());
    reversed.insert(reversed.begin() + 4, {Row(12), Number(2)});
    ASSERT_EQ(Set(reversed), 0) << agent.client.errorIndex;
    for (const Binding& setting : kSettings)
        EXPECT_EQ(Get(setting.name), setting.value.ValToStr().c_str()) << setting.name;
    EXPECT_EQ(Get(Row(12)), "3");
    ASSERT_EQ(Set({{Row(12), Number(1)}}), 0);
    EXPECT_EQ(Get(Row(12)), "1");
}

TEST_F(AlarmTable, ColumnsTakeTheirRangesOnly)
{
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    const struct {
        int column;
        std::vector<int> good;
        std::vector<int> bad;
    } ranges[] = {{2, {1, 2147483647}, {0, -1}},   {4, {1, 2}, {0, 3}},
                  {6, {1, 2, 3}, {0, 4}},          {7, {-2147483647 - 1, 2147483647}, {}},
                  {8, {-2147483647 - 1, 0}, {}},   {9, {0, 1, 65535}, {-1, 65536}},
                  {10, {0, 1, 65535}, {-1, 65536}}};
    for (const auto& range : ranges) {
        for (int value : range.good) {
            EXPECT_EQ(Set({{Row(range.column), Number(value)}}), 0) << range.column << " " << value;
            EXPECT_EQ(Get(Row(range.column)), std::to_string(value));
        }
        for (int value : range.bad) {
            EXPECT_EQ(Set({{Row(range.column), Number(value)}}), eSnmpWrongValue)
                << range.column << " " << value;
        }
        EXPECT_EQ(Set({{Row(range.column), Bytes("1")}}), eSnmpWrongType);
    }
    EXPECT_EQ(Set({{Row(11), Bytes(std::string(127, 'x'))}}), 0);
    EXPECT_EQ(Set({{Row(11), Bytes("")}}), 0);
    EXPECT_EQ(Set({{Row(11), Bytes(std::string(128, 'x'))}}), eSnmpWrongLength);
    for (int column : {1, 5})
        EXPECT_EQ(Set({{Row(column), Number(1)}}), eSnmpNotWritable) << column;
}

TEST_F(AlarmTable, StatusesGoTheirWays)
{
    // From no row (0), underCreation and valid; what each status answers, and leads to.
    const struct {
        int from, to, status, becomes;
    } ways[] = {{0, 1, eSnmpWrongValue, 0},
                {0, 2, 0, 3},
                {0, 3, eSnmpWrongValue, 0},
                {0, 4, eSnmpWrongValue, 0},
                {0, 5, eSnmpWrongValue, 0},
                {3, 1, 0, 1},
                {3, 2, eSnmpBadValue, 3},
                {3, 3, 0, 3},
                {3, 4, 0, 0},
                {3, 5, eSnmpWrongValue, 3},
                {3, 0, eSnmpWrongValue, 3},
                {1, 1, 0, 1},
                {1, 2, eSnmpBadValue, 1},
                {1, 3, 0, 3},
                {1, 4, 0, 0},
                {1, 5, eSnmpWrongValue, 1},
                {1, -1, eSnmpWrongValue, 1}};
    for (const auto& way : ways) {
        SCOPED_TRACE(testing::Message() << way.from << " to " << way.to);
        AlarmAgent fresh;
        fresh.Let(1, 5);
        if (way.from == 1)
            fresh.AddAlarm(7, 1, 10);
        else if (way.from == 3)
            fresh.client.Set({{Row(12), Number(2)}, {Row(3), Oid(NumberName(1))}});
        ASSERT_EQ(fresh.Status(7), way.from ? std::to_string(way.from) : kNoInstance);
        EXPECT_EQ(fresh.client.Set({{Row(12), Number(way.to)}}), way.status);
        EXPECT_EQ(fresh.Status(7), way.becomes ? std::to_string(way.becomes) : kNoInstance);
    }
}

TEST_F(AlarmTable, IndexesAre1To65535)
{
    for (const char* index : {"0", "65536", "4294967295", "1.1"})
        EXPECT_EQ(Set({{kAlarm + "12." + index, Number(2)}}), eSnmpNoCreation) << index;
    for (const char* index : {"1", "65535"})
        EXPECT_EQ(Set({{kAlarm + "12." + index, Number(2)}}), 0) << index;
    EXPECT_EQ(Set({{kAlarm + "2.5", Number(1)}}), eSnmpInconsistentName);
}

TEST_F(AlarmTable, AValidRowKeepsItsSettingsButTheOwner)
{
    agent.AddAlarm(7, 1, 10);
    for (const Binding& setting : kSettings) {
        EXPECT_EQ(Set({setting}), setting.name == Row(11) ? 0 : int(eSnmpInconsistentValue))
            << setting.name;
        // Not even with its end, but with a break.
        EXPECT_EQ(Set({setting, {Row(12), Number(4)}}), eSnmpInconsistentValue);
        EXPECT_EQ(Set({setting, {Row(12), Number(3)}}), 0) << setting.name;
        EXPECT_EQ(Get(setting.name), setting.value.ValToStr().c_str());
        ASSERT_EQ(Set({{Row(12), Number(1)}}), 0);
    }
}

TEST_F(AlarmTable, ARowWithoutAVariableIsNotValid)
{
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    EXPECT_EQ(Set({{Row(12), Number(1)}}), eSnmpInconsistentValue);
    EXPECT_EQ(Set({{Row(12), Number(1)}, {Row(3), Oid(NumberName(1))}}), 0);
    EXPECT_EQ(agent.Status(7), "1");
}

TEST_F(AlarmTable, TwoStatusesOfARowAreRefused)
{
    EXPECT_EQ(Set({{Row(12), Number(2)}, {Row(3), Oid(NumberName(1))}, {Row(12), Number(1)}}),
              eSnmpInconsistentValue);
    EXPECT_EQ(agent.client.errorIndex, 3);
    EXPECT_EQ(agent.client.Walk(), Lines());
}

TEST_F(AlarmTable, AVariableIsAnIntegerThatIsThere)
{
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    BObjectSyntax value;
    value.SetGauge(1);
    agent.Let(2, value);
    value.SetTimeTicks(1);
    agent.Let(3, value);
    agent.Let(4, Count(1));
    for (unsigned good : {1u, 2u, 3u, 4u})
        EXPECT_EQ(Set({{Row(3), Oid(NumberName(good))}}), 0) << good;

    value.SetCtr64(BCounter64(0, 1));
    agent.Let(5, value);
    agent.Let(6, Bytes("12"));
    agent.Let(7, Oid("1.3"));
    for (unsigned bad : {5u, 6u, 7u, 8u}) { // the last one is not there
        EXPECT_EQ(Set({{Row(7), Number(1)}, {Row(3), Oid(NumberName(bad))}}), eSnmpWrongValue)
            << bad;
        EXPECT_EQ(agent.client.errorIndex, 2);
        EXPECT_EQ(Get(Row(7)), "0");
    }
    for (const char* nowhere : {"0.0", "1.3", "1.3.6.1.2.1.99.1.0", "2.5"})
        EXPECT_EQ(Set({{Row(3), Oid(nowhere)}}), eSnmpWrongValue) << nowhere;
    EXPECT_EQ(Get(Row(3)), NumberName(4));
    // A column of this very table will do.
    EXPECT_EQ(Set({{Row(3), Oid("1.3.6.1.2.1.16." + Row(2))}}), 0);

    agent.numbers.onGet = [](BVarBind&) { return eSnmpGenErr; };
    EXPECT_EQ(Set({{Row(3), Oid(NumberName(1))}}), eSnmpResourceUnavailable);
    agent.module.Sampler().SetAgent(nullptr);
    EXPECT_EQ(Set({{Row(3), Oid(NumberName(1))}}), eSnmpResourceUnavailable);
}

TEST_F(AlarmTable, TheVariableIsAskedForWithoutTheLocksOfTheTable)
{
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    // A request of another thread gets through while the variable is asked for.
    bool isFree = false;
    agent.numbers.onGet = [&](BVarBind& binding) {
        std::thread other([&] {
            TMutex& table = agent.module.GetImplAt(0)->Mutex();
            TMutex& timer = BTimer::GetInstance()->Mutex();
            const bool isTableFree = table.Wait(kLongEnough) == eWaitDone;
            const bool isTimerFree = timer.Wait(kLongEnough) == eWaitDone;
            if (isTimerFree)
                timer.Done();
            if (isTableFree)
                table.Done();
            isFree = isTableFree && isTimerFree;
        });
        other.join();
        binding.Value().SetInt(1);
        return 0;
    };
    EXPECT_EQ(Set({{Row(3), Oid(NumberName(1))}}), 0);
    EXPECT_TRUE(isFree);
}

TEST_F(AlarmTable, WhatFailsLaterIsUndone)
{
    // Another row, and each kind of change, in a SET whose end fails.
    agent.AddAlarm(7, 1, 10, {{Row(11), Bytes("before")}});
    agent.AddAlarm(8, 1, 10);
    ASSERT_EQ(Set({{At(kAlarm, 12, 8), Number(3)}}), 0);
    agent.Seconds(10);
    const Lines before = agent.client.Walk();
    const auto stored = agent.store.records;
    const std::vector<Bindings> changes{
        {{At(kAlarm, 12, 9), Number(2)}, {At(kAlarm, 2, 9), Number(5)}},
        {{At(kAlarm, 7, 9), Number(5)}, {At(kAlarm, 12, 9), Number(2)}},
        {{Row(11), Bytes("after")}},
        {{Row(12), Number(4)}},
        {{Row(12), Number(3)}},
        {{Row(12), Number(3)}, {Row(7), Number(9)}, {Row(3), Oid(NumberName(1))}},
        {{At(kAlarm, 12, 8), Number(1)}, {At(kAlarm, 2, 8), Number(3)}},
        {{At(kAlarm, 12, 8), Number(4)}, {Row(12), Number(4)}, {At(kAlarm, 12, 9), Number(2)}}};
    for (const Bindings& change : changes) {
        SCOPED_TRACE(change[0].name + " " + change[0].value.ValToStr().c_str());
        EXPECT_EQ(agent.client.SetInVain(change), eSnmpCommitFailed);
        EXPECT_EQ(agent.client.Walk(), before);
        EXPECT_EQ(agent.store.records, stored);
    }
    EXPECT_EQ(agent.client.neighbour.slotErrors, 0);
}

TEST_F(AlarmTable, AFailingTestChangesNothingAtAnyPosition)
{
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    const Lines before = agent.client.Walk();
    for (std::size_t bad = 0; bad <= kSettings.size(); ++bad) {
        Bindings bindings = kSettings;
        bindings.insert(bindings.begin() + static_cast<int>(bad), {Row(5), Number(1)});
        EXPECT_EQ(Set(bindings), eSnmpNotWritable);
        EXPECT_EQ(agent.client.errorIndex, static_cast<int>(bad) + 1);
        EXPECT_EQ(agent.client.Walk(), before);
    }
}

TEST_F(AlarmTable, AnAlarmWhoseEndIsUndoneGoesOnWhereItWas)
{
    agent.AddEvent(1, eEventTrap);
    agent.AddAlarm(7, 1, 1, {{Row(7), Number(5)}, {Row(8), Number(0)}, {Row(9), Number(1)}});
    agent.Seconds(2);
    ASSERT_EQ(agent.traps.Sent().size(), 1u);
    EXPECT_EQ(agent.client.SetInVain({{Row(12), Number(4)}}), eSnmpCommitFailed);
    EXPECT_EQ(agent.client.SetInVain({{Row(12), Number(3)}}), eSnmpCommitFailed);
    EXPECT_EQ(agent.Value(7), "5");
    agent.Seconds(3);
    EXPECT_EQ(agent.traps.Sent().size(), 1u) << "it has risen already";
    agent.Let(1, 0);
    agent.Seconds(1);
    agent.Let(1, 6);
    agent.Seconds(1);
    EXPECT_EQ(agent.traps.Sent().size(), 2u);
}

TEST_F(AlarmTable, ARowThatIsNotFinishedIsRemovedInTheEnd)
{
    ASSERT_EQ(Set({{Row(12), Number(2)}}), 0);
    agent.AddAlarm(8, 1, 10);
    auto& table = static_cast<BMibTableImplEx&>(*agent.module.GetImplAt(0));
    EXPECT_EQ(table.ActivationTimeout(), 600000);
    for (unsigned index : {7u, 8u}) // a valid one stays, whatever the timer says
        table.RowActivationTimeout(BObjectIdentifier(index));
    EXPECT_EQ(agent.Status(7), kNoInstance);
    EXPECT_EQ(agent.Status(8), "1");
}
