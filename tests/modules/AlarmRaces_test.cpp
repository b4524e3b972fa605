#include "Alarms.h"

#include "tests/support/Threads.h"

#include <mutex>
#include <thread>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

// Like a store that writes a file: one lock, held while it calls back.
class LockingStore : public FakeStore {
public:
    void RequestUpdate(INVCallback* callback) override
    {
        std::lock_guard<std::recursive_mutex> lock(m_lock);
        FakeStore::RequestUpdate(callback);
        calls.clear();
    }

private:
    std::recursive_mutex m_lock;
};

// The agent with its own thread, and with a timer that is hurried.
class AlarmRaces : public testing::Test {
protected:
    AlarmRaces()
    {
        agent.numbers.keepsLog = false;
        agent.numbers.onGet = [this](BVarBind& binding) {
            ++questions;
            binding.Value().SetInt(static_cast<int>(questions % 7));
            return isGone ? eSnmpNoSuchName : eSnmpNoError;
        };
    }
    static void Second() { BTimer::GetInstance()->Timeout(1000); }
    // Not by the fixture's client: a thread of its own, like an engine's.
    static int Set(BMibHandler& handler, const Bindings& bindings)
    {
        Client client(handler);
        BVarBindList list;
        for (const Binding& binding : bindings)
            list.Append(MakeOid(("1.3.6.1.2.1.16." + binding.name).c_str()), binding.value);
        return client.Query(ePduSet, list);
    }

    std::atomic<unsigned> questions{0};
    std::atomic<bool> isGone{false};
    LockingStore store;
    AlarmAgent agent{&store};
};

} // namespace

TEST_F(AlarmRaces, TheThreadSamplesWhatIsDue)
{
    const CAlarmRun run(agent.module, agent.client.handler);
    agent.AddEvent(1, eEventTrap);
    agent.AddAlarm(7, 1, 1, {{At(kAlarm, 7, 7), Number(1)}, {At(kAlarm, 9, 7), Number(1)}});
    EXPECT_TRUE(Eventually([&] {
        Second();
        return !agent.traps.Sent().empty();
    }));
    EXPECT_NE(agent.Value(7), kNoInstance);
    isGone = true;
    EXPECT_TRUE(Eventually([&] {
        Second();
        return agent.Status(7) == kNoInstance;
    }));
}

TEST_F(AlarmRaces, TheTimerIsUsedWhileThereAreAlarms)
{
    const CAlarmRun run(agent.module, agent.client.handler);
    // Whether the alarms' clock goes on: an alarm is sampled only then.
    agent.AddAlarm(7, 1, 1);
    const unsigned asked = questions;
    EXPECT_TRUE(Eventually([&] {
        Second();
        return questions > asked + 2;
    }));
    ASSERT_EQ(agent.client.Set({{At(kAlarm, 12, 7), Number(4)}}), 0);
    EXPECT_TRUE(Eventually([&] {
        Second();
        return !agent.module.Sampler().IsWatching();
    }));
    agent.AddAlarm(8, 1, 1);
    EXPECT_TRUE(agent.module.Sampler().IsWatching());
    const unsigned before = questions;
    EXPECT_TRUE(Eventually([&] {
        Second();
        return questions > before;
    }));
}

TEST_F(AlarmRaces, StoredAlarmsAreSampledFromTheStart)
{
    agent.AddAlarm(7, 1, 1);
    AlarmAgent later(&agent.store);
    later.Let(1, 5);
    {
        const CAlarmRun run(later.module, later.client.handler);
        EXPECT_TRUE(later.module.Sampler().IsWatching());
        EXPECT_TRUE(Eventually([&] {
            Second();
            return later.Value(7) == "5";
        }));
    }
    EXPECT_FALSE(later.module.Sampler().IsWatching());
    // It begins again, and ends without a word.
    const CAlarmRun again(later.module, later.client.handler);
    EXPECT_TRUE(later.module.Sampler().IsWatching());
}

TEST_F(AlarmRaces, ItEndsWhileSamplesAreTaken)
{
    for (unsigned index = 1; index <= 50; ++index)
        agent.AddAlarm(index, 1, 1);
    for (int round = 0; round < 20; ++round) {
        const CAlarmRun run(agent.module, agent.client.handler);
        const unsigned before = questions;
        EXPECT_TRUE(Eventually([&] {
            Second();
            return questions > before;
        }));
    }
}

// Samples, SETs of both tables, walks, seconds and saves side by side: would hang where
// the locks are taken in another order, and is for ThreadSanitizer.
TEST_F(AlarmRaces, RowsComeAndGoWhileTheyAreSampled)
{
    constexpr unsigned kRows = 4;
    std::atomic<bool> isOver{false};
    agent.AddEvent(1, eEventLogAndTrap);
    {
        const CAlarmRun run(agent.module, agent.client.handler);
        const auto storm = [&](unsigned first) {
            for (unsigned i = 0; !isOver; ++i) {
                const unsigned index = first + i % kRows;
                Set(agent.client.handler, {{At(kAlarm, 12, index), Number(2)},
                                           {At(kAlarm, 2, index), Number(1)},
                                           {At(kAlarm, 3, index), Oid(NumberName(1))},
                                           {At(kAlarm, 7, index), Number(3)},
                                           {At(kAlarm, 9, index), Number(1)}});
                for (int status : {1, 3, 1})
                    Set(agent.client.handler, {{At(kAlarm, 12, index), Number(status)}});
                if (i % 3 == 0)
                    Set(agent.client.handler, {{At(kAlarm, 12, index), Number(4)}});
                Set(agent.client.handler, {{At(kEvent, 7, 1), Number(i % 2 ? 3 : 1)},
                                           {At(kEvent, 2, 1), Bytes(std::to_string(i))}});
            }
        };
        const auto walk = [&] {
            while (!isOver) {
                Client client(agent.client.handler);
                client.GetNext({"1.3.6.1.2.1.16.3.1.1.5", "1.3.6.1.2.1.16.9.2.1.4"});
            }
        };
        std::thread threads[] = {std::thread(storm, 1u), std::thread(storm, 1u),
                                 std::thread(storm, 100u), std::thread(walk)};
        const unsigned before = questions;
        // However slow it is, it goes on.
        for (unsigned more = 0; more <= 500; more += 20) {
            EXPECT_TRUE(Eventually([&] {
                Second();
                isGone = questions % 50 == 49;
                return questions > before + more;
            }));
        }
        EXPECT_TRUE(Eventually([&] {
            Second();
            return agent.traps.Sent().size() > 3;
        }));
        isOver = true;
        for (std::thread& thread : threads)
            thread.join();
    }
    isGone = false;
    EXPECT_EQ(agent.client.Set({{At(kAlarm, 12, 500), Number(2)}}), 0);
}
