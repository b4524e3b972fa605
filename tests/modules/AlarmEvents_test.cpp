#include "Alarms.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Lines = std::vector<std::string>;

class AlarmEvents : public testing::Test {
protected:
    int Set(const Bindings& bindings) { return agent.client.Set(bindings); }
    std::string Get(int column, unsigned index = 1)
    {
        return agent.client.Get(At(kEvent, column, index));
    }
    // An alarm that rises and falls with number 1, once in a second.
    void AddAlarm(unsigned index, int event)
    {
        agent.Let(1, 0);
        agent.AddAlarm(index, 1, 1,
                       {{At(kAlarm, 6, index), Number(eStartRising)},
                        {At(kAlarm, 7, index), Number(1)},
                        {At(kAlarm, 8, index), Number(0)},
                        {At(kAlarm, 9, index), Number(event)}});
        agent.Seconds(2);
    }
    void Happen(unsigned upTime)
    {
        agent.upTime = upTime;
        agent.Let(1, 1);
        agent.Seconds(1);
        agent.Let(1, 0);
        agent.Seconds(1);
    }
    Lines Log()
    {
        Lines log;
        for (const std::string& line : agent.client.Walk()) {
            if (line.compare(0, kLog.size(), kLog) == 0)
                log.push_back(line.substr(kLog.size()));
        }
        return log;
    }

    AlarmAgent agent;
};

const std::string kText = "alarm 7: 1.3.6.1.4.1.32473.5.1 is 1, at or above the rising threshold 1";

} // namespace

TEST_F(AlarmEvents, ARowIsMadeWithDefaults)
{
    ASSERT_EQ(Set({{At(kEvent, 7, 1), Number(2)}}), 0);
    EXPECT_EQ(agent.client.Walk(), (Lines{"9.1.1.1.1=1", "9.1.1.2.1=", "9.1.1.3.1=1", "9.1.1.4.1=",
                                          "9.1.1.5.1=0", "9.1.1.6.1=", "9.1.1.7.1=3"}));
}

TEST_F(AlarmEvents, ColumnsMayChangeWhileTheRowIsValid)
{
    agent.AddEvent(1, eEventNone);
    const Bindings settings{{At(kEvent, 2, 1), Bytes("what")},
                            {At(kEvent, 3, 1), Number(4)},
                            {At(kEvent, 4, 1), Bytes(std::string("pub\0\xff", 5))},
                            {At(kEvent, 6, 1), Bytes("monitor")}};
    for (const Binding& setting : settings) {
        EXPECT_EQ(Set({setting}), 0) << setting.name;
        EXPECT_EQ(agent.client.Get(setting.name), setting.value.ValToStr().c_str());
    }
    for (int type : {0, 5, -1})
        EXPECT_EQ(Set({{At(kEvent, 3, 1), Number(type)}}), eSnmpWrongValue);
    for (int column : {2, 4, 6}) {
        EXPECT_EQ(Set({{At(kEvent, column, 1), Bytes(std::string(127, 'x'))}}), 0);
        EXPECT_EQ(Set({{At(kEvent, column, 1), Bytes(std::string(128, 'x'))}}), eSnmpWrongLength);
    }
    for (int column : {1, 5})
        EXPECT_EQ(Set({{At(kEvent, column, 1), Number(1)}}), eSnmpNotWritable);
    EXPECT_EQ(Set({{"9.2.1.4.1.1", Bytes("x")}}), eSnmpNotWritable);
    EXPECT_EQ(Set({{At(kEvent, 2, 2), Bytes("x")}}), eSnmpInconsistentName);
}

TEST_F(AlarmEvents, TheTypeDecidesWhatHappens)
{
    const struct {
        int type;
        std::size_t traps, lines;
    } types[] = {
        {eEventNone, 0, 0}, {eEventLog, 0, 4}, {eEventTrap, 1, 0}, {eEventLogAndTrap, 1, 4}};
    for (const auto& one : types) {
        SCOPED_TRACE(one.type);
        agent.traps.Clear();
        Set({{At(kEvent, 7, 1), Number(4)}});
        Set({{At(kAlarm, 12, 7), Number(4)}});
        agent.AddEvent(1, one.type);
        AddAlarm(7, 1);
        Happen(4711);
        EXPECT_EQ(agent.traps.Sent().size(), one.traps);
        EXPECT_EQ(Log().size(), one.lines);
        EXPECT_EQ(Get(5), "4711");
    }
}

TEST_F(AlarmEvents, AnEventThatIsNotValidDoesNotHappen)
{
    agent.AddEvent(1, eEventLogAndTrap);
    ASSERT_EQ(Set({{At(kEvent, 7, 1), Number(3)}}), 0);
    AddAlarm(7, 1);
    AddAlarm(8, 2); // there is none
    AddAlarm(9, 0);
    Happen(5);
    EXPECT_EQ(Get(5), "0");
    EXPECT_TRUE(agent.traps.Sent().empty());
    EXPECT_TRUE(Log().empty());
    // It was raised all the same: the next one comes when it has fallen and rises.
    ASSERT_EQ(Set({{At(kEvent, 7, 1), Number(1)}}), 0);
    Happen(6);
    EXPECT_EQ(Get(5), "6");
}

TEST_F(AlarmEvents, TheLogTellsWhatHappened)
{
    agent.AddEvent(1, eEventLog);
    agent.AddEvent(2, eEventLog);
    AddAlarm(7, 1);
    AddAlarm(8, 2);
    Happen(100);
    Happen(4294967295u);
    Lines lines = Log();
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_EQ((Lines(lines.begin(), lines.begin() + 4)),
              (Lines{"1.1.1=1", "1.1.2=1", "1.2.1=2", "1.2.2=2"}));
    EXPECT_EQ((Lines(lines.begin() + 4, lines.begin() + 8)),
              (Lines{"2.1.1=1", "2.1.2=2", "2.2.1=1", "2.2.2=2"}));
    EXPECT_EQ(agent.client.Get(kLog + "3.1.1"), "100");
    EXPECT_EQ(agent.client.Get(kLog + "3.2.2"), "4294967295");
    EXPECT_EQ(agent.client.Get(kLog + "4.1.1"), kText);
    for (const char* none : {"4.1.0", "4.1.3", "4.3.1", "4.1", "4.1.1.1"})
        EXPECT_EQ(agent.client.Get(kLog + none), kNoInstance) << none;
}

TEST_F(AlarmEvents, TheOldestEntriesOfALogGoFirst)
{
    agent.AddEvent(1, eEventLog);
    AddAlarm(7, 1);
    for (unsigned i = 1; i <= kLogMost + 3; ++i)
        Happen(i);
    const Lines lines = Log();
    ASSERT_EQ(lines.size(), 4u * kLogMost);
    EXPECT_EQ(lines.front(), "1.1.4=1");
    EXPECT_EQ(agent.client.Get(kLog + "2.1.3"), kNoInstance);
    EXPECT_EQ(agent.client.Get(kLog + "3.1.4"), "4");
    EXPECT_EQ(agent.client.Get(kLog + "3.1.67"), "67");
}

TEST_F(AlarmEvents, TheLogGoesWithTheValidEvent)
{
    agent.AddEvent(1, eEventLog);
    agent.AddEvent(2, eEventLog);
    AddAlarm(7, 1);
    AddAlarm(8, 2);
    Happen(100);
    const Lines before = agent.client.Walk();
    for (int status : {3, 4}) {
        EXPECT_EQ(agent.client.SetInVain({{At(kEvent, 7, 1), Number(status)}}), eSnmpCommitFailed);
        EXPECT_EQ(agent.client.Walk(), before) << status;
    }
    ASSERT_EQ(Set({{At(kEvent, 7, 1), Number(3)}}), 0);
    EXPECT_EQ(Log().size(), 4u);
    EXPECT_EQ(Log().front(), "1.2.1=2") << "that of the other event";
    EXPECT_EQ(agent.client.Get(kLog + "1.1.1"), kNoInstance);
    ASSERT_EQ(Set({{At(kEvent, 7, 1), Number(1)}}), 0);
    EXPECT_EQ(Log().size(), 4u);
    EXPECT_EQ(Log().front(), "1.2.1=2") << "that of the other event";
    Happen(200);
    EXPECT_EQ(Log().front(), "1.1.2=1") << "numbers go on";
}

TEST_F(AlarmEvents, ALongTextIsCut)
{
    std::string deep = NumberName(1);
    for (int i = 0; i < 60; ++i)
        deep += ".4294967295";
    agent.numbers.Add(deep.c_str(), 1);
    agent.AddEvent(1, eEventLog);
    ASSERT_EQ(Set({{At(kAlarm, 12, 7), Number(2)},
                   {At(kAlarm, 2, 7), Number(1)},
                   {At(kAlarm, 3, 7), Oid(deep)},
                   {At(kAlarm, 9, 7), Number(1)}}),
              0);
    ASSERT_EQ(Set({{At(kAlarm, 12, 7), Number(1)}}), 0);
    agent.Seconds(2);
    const std::string text = agent.client.Get(kLog + "4.1.1");
    EXPECT_EQ(text.size(), 255u);
    EXPECT_EQ(text.substr(0, 37), "alarm 7: 1.3.6.1.4.1.32473.5.1.429496");
}

TEST_F(AlarmEvents, ValidRowsAreThereAfterARestart)
{
    // The saves that follow leave these out.
    agent.Let(1, 0);
    ASSERT_EQ(Set({{At(kEvent, 7, 3), Number(2)}}), 0);
    ASSERT_EQ(Set({{At(kAlarm, 12, 9), Number(2)}, {At(kAlarm, 3, 9), Oid(NumberName(1))}}), 0);
    const std::string community("c\0\xfe", 3);
    agent.AddEvent(1, eEventLogAndTrap);
    ASSERT_EQ(Set({{At(kEvent, 2, 1), Bytes("what")},
                   {At(kEvent, 4, 1), Bytes(community)},
                   {At(kEvent, 6, 1), Bytes("me")}}),
              0);
    agent.AddEvent(2, eEventNone);
    AddAlarm(7, 1);
    AddAlarm(8, 2);
    ASSERT_EQ(Set({{At(kAlarm, 11, 8), Bytes("you\r\n")}}), 0);
    const Lines before = agent.client.Walk();

    AlarmAgent later(&agent.store);
    later.Let(1, 0);
    later.Seconds(2);
    Lines kept;
    for (const std::string& line : before) {
        const std::string name = line.substr(0, line.find('='));
        const std::string index = name.substr(name.rfind('.'));
        if (index != (name[0] == '3' ? ".9" : ".3"))
            kept.push_back(line);
    }
    EXPECT_EQ(later.client.Walk(), kept);
    later.upTime = 5;
    later.Let(1, 1);
    later.Seconds(1);
    EXPECT_EQ(later.traps.Sent().size(), 1u);
    EXPECT_EQ(later.client.Get(At(kEvent, 5, 1)), "5");
}

TEST_F(AlarmEvents, WhatIsNoRowIsNotLoaded)
{
    agent.AddEvent(1, eEventLog);
    AddAlarm(7, 1);
    const auto events = agent.store.records["mib-2.rmon.eventTable"];
    const auto alarms = agent.store.records["mib-2.rmon.alarmTable"];
    ASSERT_EQ(events.size(), 1u);
    ASSERT_EQ(alarms.size(), 1u);
    const auto isLoaded = [&](const char* section, const FakeStore::Record& record) {
        agent.store.records[section] = {record};
        AlarmAgent later(&agent.store);
        return section[11] == 'a' ? later.Status(7) == "1"
                                  : later.client.Get(At(kEvent, 7, 1)) == "1";
    };
    const auto spoil = [&](const char* section, const FakeStore::Record& good) {
        EXPECT_TRUE(isLoaded(section, good));
        for (const auto& [field, value] : good.fields) {
            FakeStore::Record bad = good;
            bad.fields[field] = "of no kind";
            EXPECT_FALSE(isLoaded(section, bad)) << section << " " << field;
            bad.fields[field] = "number:-2000000000";
            const bool isThreshold = section[11] == 'a' && (field == 7 || field == 8);
            EXPECT_EQ(isLoaded(section, bad), isThreshold) << section << " " << field;
        }
    };
    spoil("mib-2.rmon.eventTable", events[0]);
    spoil("mib-2.rmon.alarmTable", alarms[0]);
}

TEST_F(AlarmEvents, WithoutAStoreNothingIsKept)
{
    FakeTraps traps;
    CAlarmModule module(traps, nullptr, {}, [] { return 0u; });
    ModuleClient client(module, "1.3.6.1.2.1.16");
    EXPECT_EQ(client.Set({{At(kEvent, 7, 1), Number(2)}}), 0);
    EXPECT_EQ(client.Set({{At(kEvent, 7, 1), Number(1)}}), 0);
    EXPECT_EQ(client.Get(At(kEvent, 7, 1)), "1");
}
