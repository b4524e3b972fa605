// An agent with alarms on numbers that tests make up, whose seconds pass by hand.
#pragma once

#include "Interfaces.h"

#include "modules/rmon/AlarmModule.h"
#include "tests/support/FakeAccess.h"
#include "tests/support/FakeStore.h"
#include "tests/support/ListHandler.h"

namespace VLK {
namespace Test {

// Columns of alarmTable and eventTable, to be followed by an index.
const std::string kAlarm = "3.1.1.";
const std::string kEvent = "9.1.1.";
const std::string kLog = "9.2.1.";
constexpr const char* kNumbers = "1.3.6.1.4.1.32473.5";

inline std::string At(const std::string& entry, int column, unsigned index)
{
    return entry + std::to_string(column) + "." + std::to_string(index);
}

inline BObjectSyntax Oid(const std::string& dotted)
{
    BObjectSyntax syntax;
    syntax.SetObjectId(MakeOid(dotted.c_str()));
    return syntax;
}

inline BObjectSyntax Count(unsigned value)
{
    BObjectSyntax syntax;
    syntax.SetCounter(value);
    return syntax;
}

inline std::string NumberName(unsigned number)
{
    return std::string(kNumbers) + "." + std::to_string(number);
}

class AlarmAgent {
public:
    explicit AlarmAgent(FakeStore* kept = nullptr) : store(kept ? *kept : m_ownStore)
    {
        store.saveAtOnce = true;
        client.handler.RegisterSubtreeHandler(&numbers);
        module.Sampler().SetAgent(&client.handler);
    }
    ~AlarmAgent() { client.handler.UnregisterSubtreeHandler(&numbers); }

    void Let(unsigned number, const BObjectSyntax& value)
    {
        numbers.instances[ArcsOf(MakeOid(NumberName(number).c_str()))] = value;
    }
    void Let(unsigned number, int value) { Let(number, Number(value)); }
    void Seconds(int count)
    {
        for (int i = 0; i < count; ++i) {
            module.Alarms().Tick();
            module.Sampler().SampleDue();
        }
    }
    // An event of that type, valid.
    void AddEvent(unsigned index, int type)
    {
        ASSERT_EQ(
            client.Set({{At(kEvent, 7, index), Number(2)}, {At(kEvent, 3, index), Number(type)}}),
            0);
        ASSERT_EQ(client.Set({{At(kEvent, 7, index), Number(1)}}), 0);
    }
    // An alarm on a number, valid; further columns may be given.
    void AddAlarm(unsigned index, unsigned number, int interval, Bindings more = {})
    {
        Bindings bindings{{At(kAlarm, 12, index), Number(2)},
                          {At(kAlarm, 2, index), Number(interval)},
                          {At(kAlarm, 3, index), Oid(NumberName(number))}};
        bindings.insert(bindings.end(), more.begin(), more.end());
        ASSERT_EQ(client.Set(bindings), 0) << client.errorIndex;
        ASSERT_EQ(client.Set({{At(kAlarm, 12, index), Number(1)}}), 0);
    }
    std::string Status(unsigned index) { return client.Get(At(kAlarm, 12, index)); }
    std::string Value(unsigned index) { return client.Get(At(kAlarm, 5, index)); }

private:
    FakeStore m_ownStore;

public:
    FakeStore& store;
    FakeTraps traps;
    unsigned upTime = 0;
    modules::SAlarmOptions options;
    modules::CAlarmModule module{traps, &store, options, [this] { return upTime; }};
    ListHandler numbers{kNumbers};
    ModuleClient client{module, "1.3.6.1.2.1.16"};
};

// A risingAlarm (1) or fallingAlarm (2) as FakeTraps keeps it.
inline std::string AlarmTrap(int number, unsigned index, unsigned variable, int sampleType,
                             int value, int threshold)
{
    const auto bind = [&](int column, const std::string& text) {
        return " 1.3.6.1.2.1.16." + At(kAlarm, column, index) + "=" + text;
    };
    const auto integer = [](int of) { return "2/" + std::to_string(of); };
    return "1.3.6.1.2.1.16.0." + std::to_string(number) + ":" +
           bind(1, integer(static_cast<int>(index))) + bind(3, "6/" + NumberName(variable)) +
           bind(4, integer(sampleType)) + bind(5, integer(value)) +
           bind(number == 1 ? 7 : 8, integer(threshold));
}

constexpr const char* kNoInstance = "Null/noSuchInstance";

} // namespace Test
} // namespace VLK
