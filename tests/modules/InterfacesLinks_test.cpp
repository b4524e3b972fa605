#include "Interfaces.h"

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Sent = std::vector<std::string>;

// Milliseconds of uptime at which things happen.
constexpr std::uint64_t kThen = 100000;
constexpr std::uint64_t kLater = 200000;
constexpr std::uint64_t kNow = 300000;

class InterfacesLinks : public testing::Test {
protected:
    void Begin(const std::vector<SInterface>& links)
    {
        interfaces.links = links;
        Raise(module.History().Compare(links, kThen));
    }
    // The kernel tells of it, and shows it from then on.
    void Change(const SInterface& link, std::uint64_t at = kLater)
    {
        Put(link);
        Raise(module.History().Changed(link, at));
    }
    void Remove(unsigned index, std::uint64_t at = kLater)
    {
        Take(index);
        module.History().Gone(index, at);
    }
    void Put(const SInterface& link)
    {
        Take(link.index);
        auto& links = interfaces.links;
        const auto after = [&](const SInterface& other) { return other.index > link.index; };
        links.insert(std::find_if(links.begin(), links.end(), after), link);
    }
    void Take(unsigned index)
    {
        auto& links = interfaces.links;
        const auto is = [&](const SInterface& other) { return other.index == index; };
        links.erase(std::remove_if(links.begin(), links.end(), is), links.end());
    }
    void Raise(const CLinkHistory::Transitions& transitions)
    {
        for (const SLinkTransition& transition : transitions)
            module.Traps().Raise(transition);
    }
    Sent TakeSent()
    {
        Sent sent = traps.Sent();
        traps.Clear();
        return sent;
    }
    std::string LastChange(unsigned index)
    {
        return client.Get("2.2.1.9." + std::to_string(index));
    }
    std::string Discontinuity(unsigned index)
    {
        return client.Get("31.1.1.1.19." + std::to_string(index));
    }
    std::string TableLastChange() { return client.Get("31.1.5.0"); }

    FakeInterfaces interfaces;
    FakeTraps traps;
    CInterfacesModule module{interfaces, traps, nullptr, SInterfacesOptions{0},
                             [] { return kNow; }};
    ModuleClient client{module, "1.3.6.1.2.1"};
};

bool IsDown(int status) { return status == eIfDown || status == eIfLowerLayerDown; }

} // namespace

TEST_F(InterfacesLinks, WhatIsThereAtFirstWasAlwaysSo)
{
    Begin({Link(2, "eth0"), Link(3, "eth1", eIfDown)});
    EXPECT_EQ(TakeSent(), Sent());
    EXPECT_EQ(LastChange(2), "0");
    EXPECT_EQ(Discontinuity(2), "0");
    EXPECT_EQ(TableLastChange(), "0");
}

TEST_F(InterfacesLinks, EveryPairOfStatesRaisesWhatTheStandardSays)
{
    for (int before = eIfUp; before <= eIfLowerLayerDown; ++before) {
        for (int after = eIfUp; after <= eIfLowerLayerDown; ++after) {
            SCOPED_TRACE(testing::Message() << before << " to " << after);
            Begin({Link(2, "eth0", static_cast<EIfStatus>(before))});
            TakeSent();
            Change(Link(2, "eth0", static_cast<EIfStatus>(after)));
            Sent expected;
            if (before != eIfNotPresent && after != eIfNotPresent) {
                // The state beside down is the one that is told.
                if (IsDown(after) && !IsDown(before))
                    expected = {LinkDown(2, eIfUp, before)};
                else if (IsDown(before) && !IsDown(after))
                    expected = {LinkUp(2, eIfUp, after)};
            }
            EXPECT_EQ(TakeSent(), expected);
        }
    }
}

TEST_F(InterfacesLinks, TheAdministrativeStateIsThatOfTheTransition)
{
    Begin({Link(2, "eth0")});
    SInterface link = Link(2, "eth0", eIfDown);
    link.admin = eIfDown;
    Change(link);
    EXPECT_EQ(TakeSent(), Sent{LinkDown(2, eIfDown, eIfUp)});
    Change(Link(2, "eth0", eIfUnknown));
    EXPECT_EQ(TakeSent(), Sent{LinkUp(2, eIfUp, eIfUnknown)});
}

TEST_F(InterfacesLinks, AStateThatIsToldAgainIsNoChange)
{
    Begin({Link(2, "eth0")});
    Change(Link(2, "eth0"));
    EXPECT_EQ(TakeSent(), Sent());
    EXPECT_EQ(LastChange(2), "0");
}

TEST_F(InterfacesLinks, TheLastChangeIsThatOfTheOperationalState)
{
    Begin({Link(2, "eth0"), Link(3, "eth1")});
    Change(Link(2, "eth0", eIfDormant));
    EXPECT_EQ(TakeSent(), Sent()) << "neither is down";
    EXPECT_EQ(LastChange(2), "20000");
    EXPECT_EQ(LastChange(3), "0");
    SInterface renamed = Link(2, "lan", eIfDormant);
    renamed.admin = eIfDown;
    Change(renamed, kNow);
    EXPECT_EQ(LastChange(2), "20000");
    EXPECT_EQ(Discontinuity(2), "0");
    EXPECT_EQ(TableLastChange(), "0");
}

TEST_F(InterfacesLinks, WhatAppearsHasChangedThenAndRaisesNothing)
{
    Begin({Link(2, "eth0")});
    Change(Link(3, "eth1"));
    EXPECT_EQ(TakeSent(), Sent());
    EXPECT_EQ(LastChange(3), "20000");
    EXPECT_EQ(Discontinuity(3), "20000") << "its counters began at 0";
    EXPECT_EQ(TableLastChange(), "20000");
    EXPECT_EQ(LastChange(2), "0");
}

TEST_F(InterfacesLinks, WhatVanishesChangesTheTableAndRaisesNothing)
{
    Begin({Link(2, "eth0"), Link(3, "eth1")});
    Remove(3);
    EXPECT_EQ(TakeSent(), Sent());
    EXPECT_EQ(TableLastChange(), "20000");
    Remove(3, kNow);
    EXPECT_EQ(TableLastChange(), "20000") << "it is gone already";
}

TEST_F(InterfacesLinks, AnIndexThatReturnsIsAnotherInterface)
{
    Begin({Link(2, "eth0")});
    Remove(2);
    Change(Link(2, "eth0", eIfDown), kLater + 1000);
    EXPECT_EQ(TakeSent(), Sent());
    EXPECT_EQ(LastChange(2), "20100");
    EXPECT_EQ(Discontinuity(2), "20100");
    EXPECT_EQ(TableLastChange(), "20100");
}

TEST_F(InterfacesLinks, WhatARequestSeesBeforeItsMessageHappensNow)
{
    Begin({Link(2, "eth0"), Link(3, "eth1")});
    Put(Link(2, "eth0", eIfDown));
    EXPECT_EQ(LastChange(2), "30000");
    EXPECT_EQ(LastChange(3), "0");
    EXPECT_EQ(TableLastChange(), "0");
    Put(Link(4, "eth2"));
    EXPECT_EQ(LastChange(4), "30000");
    EXPECT_EQ(Discontinuity(4), "30000");
    EXPECT_EQ(TableLastChange(), "30000");
    Take(4);
    EXPECT_EQ(TableLastChange(), "0");
    Take(3);
    EXPECT_EQ(TableLastChange(), "30000");
    Put(Link(5, "eth3"));
    EXPECT_EQ(TableLastChange(), "30000") << "as many, and others";
    EXPECT_EQ(TakeSent(), Sent()) << "requests raise nothing";
}

TEST_F(InterfacesLinks, WhatWasMissedIsFoundByComparing)
{
    Begin({Link(2, "eth0"), Link(3, "eth1"), Link(4, "eth2", eIfDown), Link(5, "eth3")});
    interfaces.links = {Link(2, "eth0"), Link(3, "eth1", eIfDown), Link(4, "eth2"),
                        Link(6, "eth4")};
    Raise(module.History().Compare(interfaces.links, kLater));
    EXPECT_EQ(TakeSent(), (Sent{LinkDown(3, eIfUp, eIfUp), LinkUp(4, eIfUp, eIfUp)}));
    EXPECT_EQ(LastChange(2), "0");
    EXPECT_EQ(LastChange(3), "20000");
    EXPECT_EQ(LastChange(6), "20000");
    EXPECT_EQ(TableLastChange(), "20000");
}

TEST_F(InterfacesLinks, TimesWrapLikeTimeTicks)
{
    Begin({Link(2, "eth0")});
    Change(Link(2, "eth0", eIfDown), 42949672960u + 70);
    EXPECT_EQ(LastChange(2), "7");
}

TEST_F(InterfacesLinks, WhatIsOnTopOfAnotherRaisesNothingByDefault)
{
    SInterface vlan = Link(3, "eth0.5");
    vlan.hasLowerLayer = true;
    SInterface port = Link(2, "eth0");
    port.master = 4;
    Begin({port, vlan, Link(4, "br0"), Link(5, "br1")});
    for (unsigned index : {2u, 3u, 4u, 5u}) {
        SInterface link = interfaces.links[index - 2];
        link.oper = eIfLowerLayerDown;
        Change(link);
    }
    EXPECT_EQ(TakeSent(), (Sent{LinkDown(2, eIfUp, eIfUp), LinkDown(5, eIfUp, eIfUp)}));
    for (auto [index, enable] : {std::pair<int, const char*>{2, "1"}, {3, "2"}, {4, "2"}, {5, "1"}})
        EXPECT_EQ(client.Get("31.1.1.1.14." + std::to_string(index)), enable) << index;
    port.master = 0;
    port.oper = eIfLowerLayerDown;
    Change(port);
    EXPECT_EQ(client.Get("31.1.1.1.14.4"), "1") << "a bridge without ports";
    Change(Link(4, "br0"));
    EXPECT_EQ(TakeSent(), Sent{LinkUp(4, eIfUp, eIfUp)});
}
