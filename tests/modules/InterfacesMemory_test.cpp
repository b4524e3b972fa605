#include "Interfaces.h"

#include "tests/support/AllocationSweep.h"
#include "tests/support/FakeStore.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

constexpr const char* kColumn = "1.3.6.1.2.1.2.2.1.2";
constexpr const char* kEnable = "1.3.6.1.2.1.31.1.1.1.14.2";

// A sender that allocates nothing.
class CountedTraps : public ITrapSender {
public:
    void SendTrap(const BTrap& trap, const char*) override
    {
        ++sent;
        areWhole = areWhole && trap.IsWhole() && trap.Bindings().Count() == 3;
        for (int i = 0; areWhole && i < 3; ++i)
            areWhole = trap.Bindings()[i].Name().Length() == 11;
    }
    int sent = 0;
    bool areWhole = true;
};

struct SAgent {
    FakeInterfaces interfaces;
    CountedTraps traps;
    FakeStore store;
    CInterfacesModule module{interfaces, traps, &store, SInterfacesOptions{0}, [] { return 1; }};
    BVarBindList list; // of the request
};

std::unique_ptr<SAgent> MakeAgent(const char* name)
{
    auto agent = std::make_unique<SAgent>();
    SInterface link = Link(2, "a name that is long enough for the heap");
    link.alias = "an alias that is long enough for the heap";
    link.address = "an address that is as long as that";
    agent->interfaces.links = {link};
    agent->module.History().Compare(agent->interfaces.links, 0);
    agent->module.Init();
    BObjectSyntax value;
    value.SetInt(eLinkTrapsDisabled);
    agent->list.Append(MakeOid(name), value);
    return agent;
}

class InterfacesMemory : public testing::Test {
protected:
    // What stays from its first use on is no leak.
    InterfacesMemory() { BTransactions::GetInstance(); }
};

// Status of a GET, as the list form tells it.
int Ask(SAgent& agent, int implementation)
{
    int index = 0;
    return agent.module.GetImplAt(implementation)->Get(1, agent.list, index, 1);
}

} // namespace

TEST_F(InterfacesMemory, AnAnswerComesWholeOrAsAnError)
{
    const std::pair<int, const char*> names[] = {{0, "1.3.6.1.2.1.2.1.0"},
                                                 {1, "1.3.6.1.2.1.2.2.1.2.2"},
                                                 {1, "1.3.6.1.2.1.2.2.1.4.2"},
                                                 {2, kEnable}};
    for (const auto& [implementation, name] : names) {
        SCOPED_TRACE(name);
        VLKTest::SweepAllocations(
            [name = name] { return MakeAgent(name); },
            [implementation = implementation](std::unique_ptr<SAgent>& agent) {
                return Ask(*agent, implementation);
            },
            [](std::unique_ptr<SAgent>&, int status) {
                EXPECT_TRUE(status == eSnmpNoError || status == eSnmpGenErr) << status;
            });
    }
}

TEST_F(InterfacesMemory, AWalkGoesOnOrFails)
{
    VLKTest::SweepAllocations(
        [] { return MakeAgent(kColumn); },
        [](std::unique_ptr<SAgent>& agent) {
            BVarBind& binding = agent->list[0];
            int status = eSnmpGenErr;
            try {
                status = agent->module.GetImplAt(1)->GetNext(1, binding);
            } catch (const std::bad_alloc&) {
            }
            return status == eSnmpNoError && binding.Value().Syntax() == eAsnOctetString;
        },
        [](std::unique_ptr<SAgent>& agent, bool) {
            BVarBind binding(MakeOid(kColumn));
            EXPECT_EQ(agent->module.GetImplAt(1)->GetNext(1, binding), 0) << "later it does";
            EXPECT_STREQ(binding.Value().ValToStr().c_str(),
                         agent->interfaces.links[0].name.c_str());
        });
}

TEST_F(InterfacesMemory, ANotificationIsSentWholeOrNotAtAll)
{
    const unsigned allocations = VLKTest::SweepAllocations(
        [] { return MakeAgent(kEnable); },
        [](std::unique_ptr<SAgent>& agent) {
            try {
                SInterface link = agent->interfaces.links[0];
                link.oper = eIfDown;
                for (const SLinkTransition& down : agent->module.History().Changed(link, 5))
                    agent->module.Traps().Raise(down);
                return true;
            } catch (const std::bad_alloc&) {
                return false;
            }
        },
        [](std::unique_ptr<SAgent>& agent, bool) { EXPECT_TRUE(agent->traps.areWhole); });
    EXPECT_GT(allocations, 5u);
}

TEST_F(InterfacesMemory, ALinkThatCouldNotBeTakenInIsFoundByComparing)
{
    VLKTest::SweepAllocations(
        [] { return MakeAgent(kEnable); },
        [](std::unique_ptr<SAgent>& agent) {
            try {
                SInterface link = agent->interfaces.links[0];
                link.oper = eIfDown;
                return agent->module.History().Changed(link, 5).size() == 1;
            } catch (const std::bad_alloc&) {
                return false;
            }
        },
        [](std::unique_ptr<SAgent>& agent, bool isTaken) {
            agent->interfaces.links[0].oper = eIfDown;
            EXPECT_EQ(agent->module.History().Compare(agent->interfaces.links, 6).size(),
                      isTaken ? 0u : 1u);
        });
}

TEST_F(InterfacesMemory, ASetIsDoneOrLeavesWhatWasThere)
{
    VLKTest::SweepAllocations([] { return MakeAgent(kEnable); },
                              [](std::unique_ptr<SAgent>& agent) {
                                  BMibImpl& table = *agent->module.GetImplAt(2);
                                  SSetSlot slot{};
                                  void** slots = &slot.scratch;
                                  int index = 0;
                                  int status = table.Set(1, agent->list, eSetTest, slots, index, 1);
                                  if (status == 0) {
                                      status = table.Set(1, agent->list, eSetCommit, slots,
                                                         index = 0, 1);
                                      if (status != 0)
                                          table.Set(1, agent->list, eSetUndo, slots, index = 0, 1);
                                  }
                                  table.Set(1, agent->list, eSetCleanup, slots, index = 0, 1);
                                  return status;
                              },
                              [](std::unique_ptr<SAgent>& agent, int status) {
                                  EXPECT_EQ(Ask(*agent, 2), 0);
                                  EXPECT_EQ(agent->list[0].Value().Int(), status == 0 ? 2 : 1);
                              });
}
