#include "Interfaces.h"

#include "tests/support/FakeStore.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Sent = std::vector<std::string>;
using Records = FakeStore::Records;

constexpr const char* kSection = "mib-2.ifMIB.ifLinkUpDownTrapEnable";
const std::string kEth0 = "31.1.1.1.14.2";
const std::string kVlan = "31.1.1.1.14.3";

class InterfacesTrapEnable : public testing::Test {
protected:
    InterfacesTrapEnable()
    {
        store.saveAtOnce = true;
        SInterface vlan = Link(3, "eth0.5");
        vlan.hasLowerLayer = true;
        interfaces.links = {Link(2, "eth0"), vlan};
        module.History().Compare(interfaces.links, 0);
    }
    // How many notifications a link raises when it goes down and up.
    std::size_t Flap(SInterface link)
    {
        traps.Clear();
        for (EIfStatus oper : {eIfDown, eIfUp}) {
            link.oper = oper;
            for (const SLinkTransition& transition : module.History().Changed(link, 0))
                module.Traps().Raise(transition);
        }
        return traps.Sent().size();
    }
    Records Saved() { return store.records[kSection]; }
    static FakeStore::Record Record(const std::string& key, const std::string& name,
                                    const std::string& value)
    {
        return {key, {{1, "octets:" + name}, {2, "number:" + value}}};
    }

    FakeStore store;
    FakeInterfaces interfaces;
    FakeTraps traps;
    CInterfacesModule module{interfaces, traps, &store, SInterfacesOptions{0}, [] { return 1000; }};
    ModuleClient client{module, "1.3.6.1.2.1"};
};

} // namespace

TEST_F(InterfacesTrapEnable, DecidesAboutNotifications)
{
    EXPECT_EQ(Flap(interfaces.links[0]), 2u);
    EXPECT_EQ(client.Set({{kEth0, Number(2)}}), 0);
    EXPECT_EQ(client.Get(kEth0), "2");
    EXPECT_EQ(Flap(interfaces.links[0]), 0u);
    EXPECT_EQ(client.Set({{kEth0, Number(1)}}), 0);
    EXPECT_EQ(Flap(interfaces.links[0]), 2u);
    EXPECT_EQ(Flap(interfaces.links[1]), 0u);
    EXPECT_EQ(client.Set({{kVlan, Number(1)}}), 0);
    EXPECT_EQ(Flap(interfaces.links[1]), 2u);
}

TEST_F(InterfacesTrapEnable, TakesEnabledAndDisabledOfRowsThatAreThere)
{
    for (int value : {0, 3, -1, 2147483647})
        EXPECT_EQ(client.Set({{kEth0, Number(value)}}), eSnmpWrongValue) << value;
    EXPECT_EQ(client.Set({{kEth0, Bytes("1")}}), eSnmpWrongType);
    for (const char* name : {"31.1.1.1.14.1", "31.1.1.1.14.4", "31.1.1.1.14.2.0"})
        EXPECT_EQ(client.Set({{name, Number(2)}}), eSnmpNoCreation) << name;
    EXPECT_EQ(client.Set({{"31.1.1.1.14", Number(2)}}), eSnmpNoSuchName);
    EXPECT_EQ(client.Get(kEth0), "1");
    EXPECT_EQ(store.updatesRequested, 0);
    EXPECT_EQ(Saved(), Records());
}

TEST_F(InterfacesTrapEnable, IsSavedByTheNameOfTheInterface)
{
    ASSERT_EQ(client.Set({{kVlan, Number(1)}}), 0);
    EXPECT_EQ(Saved(), Records{Record("1", "eth0.5", "1 enabled")});
    ASSERT_EQ(client.Set({{kEth0, Number(2)}}), 0);
    EXPECT_EQ(Saved(),
              (Records{Record("1", "eth0", "2 disabled"), Record("2", "eth0.5", "1 enabled")}));
    EXPECT_EQ(store.flagsUsed, 0);
}

TEST_F(InterfacesTrapEnable, IsReadFromTheStoreAndFollowsTheName)
{
    ASSERT_EQ(client.Set({{kEth0, Number(2)}}), 0);
    CInterfacesModule restarted(interfaces, traps, &store, SInterfacesOptions{0},
                                [] { return 1000; });
    interfaces.links = {Link(2, "wan"), Link(7, "eth0")};
    ModuleClient later(restarted, "1.3.6.1.2.1");
    EXPECT_EQ(later.Get(kEth0), "1");
    EXPECT_EQ(later.Get("31.1.1.1.14.7"), "2");
    ASSERT_EQ(later.Set({{"31.1.1.1.14.2", Number(2)}}), 0);
    EXPECT_EQ(Saved(),
              (Records{Record("1", "eth0", "2 disabled"), Record("2", "wan", "2 disabled")}));
}

TEST_F(InterfacesTrapEnable, StaysForAnInterfaceThatIsAway)
{
    ASSERT_EQ(client.Set({{kEth0, Number(2)}}), 0);
    const SInterface eth0 = interfaces.links[0];
    interfaces.links.erase(interfaces.links.begin());
    EXPECT_EQ(client.Get(kEth0), "Null/noSuchInstance");
    ASSERT_EQ(client.Set({{kVlan, Number(1)}}), 0);
    interfaces.links.insert(interfaces.links.begin(), eth0);
    EXPECT_EQ(client.Get(kEth0), "2");
    EXPECT_EQ(Saved().size(), 2u);
}

TEST(InterfacesTrapEnableAtItsStart, LeavesOutRecordsThatCannotBeRead)
{
    FakeStore store;
    store.records[kSection] = {{"1", {{1, "octets:no value"}}},
                               {"2", {{2, "number:2 disabled"}}},
                               {"3", {{1, "octets:three"}, {2, "number:3"}}},
                               {"4", {{1, "octets:"}, {2, "number:2"}}},
                               {"5", {{1, "octets:eth0"}, {2, "number:2"}}},
                               {"6", {{1, "octets:eth0"}, {2, "number:1"}}}};
    store.recordsPromised = 1;
    CLinkTrapEnables enables(&store);
    EXPECT_EQ(enables.Said("eth0"), eLinkTrapsDisabled) << "of two the first";
    for (const char* name : {"no value", "three", ""})
        EXPECT_FALSE(enables.Said(name)) << name;
}

TEST_F(InterfacesTrapEnable, AFailedSetTakesBackWhatItSaid)
{
    EXPECT_EQ(client.SetInVain({{kEth0, Number(2)}}), eSnmpCommitFailed);
    EXPECT_EQ(client.Get(kEth0), "1");
    EXPECT_EQ(Saved(), Records()) << "nothing was said before";
    ASSERT_EQ(client.Set({{kEth0, Number(1)}}), 0);
    EXPECT_EQ(client.SetInVain(
                  {{kEth0, Number(2)}, {kVlan, Number(1)}, {kEth0, Number(1)}, {kEth0, Number(2)}}),
              eSnmpCommitFailed);
    EXPECT_EQ(client.Get(kEth0), "1");
    EXPECT_EQ(client.Get(kVlan), "2");
    EXPECT_EQ(Saved(), Records{Record("1", "eth0", "1 enabled")});
}

TEST_F(InterfacesTrapEnable, ASetGoesOnWhenItsInterfaceVanishes)
{
    interfaces.onRead = [this] {
        if (interfaces.reads > 1)
            interfaces.links.clear();
    };
    interfaces.reads = 0;
    EXPECT_EQ(client.Set({{kEth0, Number(2)}}), 0);
    EXPECT_EQ(Saved(), Records{Record("1", "eth0", "2 disabled")});
}

TEST(InterfacesTrapEnableWithoutStore, IsSetAndNotKept)
{
    FakeInterfaces interfaces;
    interfaces.links = {Link(2, "eth0")};
    FakeTraps traps;
    CInterfacesModule module(interfaces, traps, nullptr, SInterfacesOptions{0}, [] { return 1; });
    ModuleClient client(module, "1.3.6.1.2.1");
    EXPECT_EQ(client.Set({{kEth0, Number(2)}}), 0);
    EXPECT_EQ(client.Get(kEth0), "2");
}
