#include "Alarms.h"

#include "tests/support/AllocationSweep.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Lines = std::vector<std::string>;

// A sender that allocates nothing.
class CountedTraps : public ITrapSender {
public:
    void SendTrap(const BTrap& trap, const char*) override
    {
        ++sent;
        areWhole = areWhole && trap.IsWhole() && trap.Bindings().Count() == 5;
        for (int i = 0; areWhole && i < 5; ++i)
            areWhole = trap.Bindings()[i].Name().Length() == 12;
    }
    int sent = 0;
    bool areWhole = true;
};

// An alarm that is valid, and what is asked for next.
struct SAgent {
    SAgent()
    {
        numbers.keepsLog = false;
        numbers.onGet = [](BVarBind& binding) {
            binding.Value().SetInt(5);
            return 0;
        };
        client.handler.RegisterSubtreeHandler(&numbers);
        module.Sampler().SetAgent(&client.handler);
        client.Set({{At(kEvent, 7, 1), Number(2)}, {At(kEvent, 3, 1), Number(eEventLogAndTrap)}});
        client.Set({{At(kEvent, 7, 1), Number(1)}});
        client.Set({{At(kAlarm, 12, 7), Number(2)},
                    {At(kAlarm, 3, 7), Oid(NumberName(1))},
                    {At(kAlarm, 2, 7), Number(1)},
                    {At(kAlarm, 9, 7), Number(1)},
                    {At(kAlarm, 11, 7), Bytes("an owner that is long enough for the heap")}});
        client.Set({{At(kAlarm, 12, 7), Number(1)}});
        before = client.Walk();
    }
    ~SAgent() { client.handler.UnregisterSubtreeHandler(&numbers); }

    int Ask()
    {
        int errorIndex = 0;
        return client.handler.Query(ePduSet, 1, {}, BString(), list, errorIndex);
    }

    CountedTraps traps;
    CAlarmModule module{traps, nullptr, {}, [] { return 1u; }};
    ListHandler numbers{kNumbers};
    ModuleClient client{module, "1.3.6.1.2.1.16"};
    Lines before;
    BVarBindList list;
};

std::unique_ptr<SAgent> MakeAgent(const Bindings& bindings = {})
{
    auto agent = std::make_unique<SAgent>();
    for (const Binding& binding : bindings)
        agent->list.Append(MakeOid(("1.3.6.1.2.1.16." + binding.name).c_str()), binding.value);
    return agent;
}

class AlarmMemory : public testing::Test {
protected:
    // What stays from its first use on is no leak.
    AlarmMemory()
    {
        BTransactions::GetInstance();
        const auto agent = MakeAgent({{At(kAlarm, 12, 8), Number(2)}});
        agent->Ask();
    }
};

} // namespace

TEST_F(AlarmMemory, ASetIsDoneWholeOrNotAtAll)
{
    const std::string owner = "a new owner that is long enough for the heap";
    const Bindings changes[] = {{{At(kAlarm, 2, 8), Number(9)},
                                 {At(kAlarm, 12, 8), Number(2)},
                                 {At(kAlarm, 3, 8), Oid(NumberName(1))},
                                 {At(kAlarm, 11, 8), Bytes(owner)}},
                                {{At(kAlarm, 11, 7), Bytes(owner)}},
                                {{At(kAlarm, 12, 7), Number(3)}, {At(kAlarm, 2, 7), Number(9)}},
                                {{At(kAlarm, 12, 7), Number(4)}, {At(kEvent, 7, 1), Number(3)}}};
    for (const Bindings& change : changes) {
        SCOPED_TRACE(change[0].name);
        const auto done = MakeAgent(change);
        ASSERT_EQ(done->Ask(), 0);
        const Lines after = done->client.Walk();
        ASSERT_NE(after, done->before);
        const unsigned allocations = VLKTest::SweepAllocations(
            [&] { return MakeAgent(change); },
            [](std::unique_ptr<SAgent>& agent) { return agent->Ask(); },
            [&](std::unique_ptr<SAgent>& agent, int status) {
                EXPECT_EQ(agent->client.Walk(), status == 0 ? after : agent->before) << status;
            });
        EXPECT_GT(allocations, 3u);
    }
}

TEST_F(AlarmMemory, ANotificationIsSentWholeOrNotAtAll)
{
    const unsigned allocations = VLKTest::SweepAllocations(
        [] {
            auto agent = MakeAgent();
            agent->module.Alarms().Tick();
            agent->module.Sampler().SampleDue();
            agent->module.Alarms().Tick();
            return agent;
        },
        [](std::unique_ptr<SAgent>& agent) {
            agent->module.Sampler().SampleDue();
            return agent->traps.sent;
        },
        [](std::unique_ptr<SAgent>& agent, int) {
            EXPECT_TRUE(agent->traps.areWhole);
            EXPECT_LE(agent->traps.sent, 1);
            EXPECT_EQ(agent->client.Get(At(kAlarm, 12, 7)), "1") << "it is no reason to end";
            agent->module.Alarms().Tick();
            agent->module.Sampler().SampleDue();
            EXPECT_EQ(agent->client.Get(At(kAlarm, 5, 7)), "5") << "later it does";
        });
    EXPECT_GT(allocations, 10u);
}
