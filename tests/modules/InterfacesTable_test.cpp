#include "Interfaces.h"

#include <vkmibh/testing/walks.h>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

constexpr const char* kIfEntry = "1.3.6.1.2.1.2.2.1";
constexpr const char* kIfXEntry = "1.3.6.1.2.1.31.1.1.1";

// An interface of which everything is told.
SInterface Whole()
{
    SInterface link = Link(2, "eth0");
    link.alias = "to the core";
    link.address = std::string("\x02\x00\x5e\x10\x00\xff", 6);
    link.mtu = 1500;
    link.speed = 1000000000;
    link.isPromiscuous = true;
    link.hasConnector = true;
    link.counters.inOctets = 0x100000001u;
    link.counters.inUcastPkts = 0x200000002u;
    link.counters.inMulticastPkts = 0x300000003u;
    link.counters.inDiscards = 0x400000004u;
    link.counters.inErrors = 0x500000005u;
    link.counters.outOctets = 0x600000006u;
    link.counters.outUcastPkts = 0x700000007u;
    link.counters.outDiscards = 0x800000008u;
    link.counters.outErrors = 0xffffffffffffffffu;
    return link;
}

// One of which as little is told as can be.
SInterface Bare()
{
    SInterface link = Link(70000, "odd", eIfUnknown);
    link.admin = eIfDown;
    link.type = eIfTypeOther;
    return link;
}

class InterfacesTable : public testing::Test {
protected:
    std::uint64_t now = 123450; // milliseconds
    FakeInterfaces interfaces;
    FakeTraps traps;
    SInterfacesOptions options{0};
    CInterfacesModule module{interfaces, traps, nullptr, options, [this] { return now; }};
    ModuleClient client{module, "1.3.6.1.2.1"};

    std::string IfGet(int column, unsigned index)
    {
        return client.Get("2.2.1." + std::to_string(column) + "." + std::to_string(index));
    }
    std::string IfXGet(int column, unsigned index)
    {
        return client.Get("31.1.1.1." + std::to_string(column) + "." + std::to_string(index));
    }
    void Show(const SInterface& link) { interfaces.links = {link}; }
};

constexpr const char* kNone = "Null/noSuchInstance";

} // namespace

TEST_F(InterfacesTable, EveryColumnOfIfTableIsWalkedAndGot)
{
    interfaces.links = {Whole(), Bare()};
    module.History().Compare(interfaces.links, 0);
    EXPECT_EQ(TwoWalks(*module.GetImplAt(1), kIfEntry,
                       {
                           {"1.3.6.1.2.1.2.2.1.1.2", eAsnInteger, "2"},
                           {"1.3.6.1.2.1.2.2.1.1.70000", eAsnInteger, "70000"},
                           {"1.3.6.1.2.1.2.2.1.2.2", eAsnOctetString, "eth0"},
                           {"1.3.6.1.2.1.2.2.1.2.70000", eAsnOctetString, "odd"},
                           {"1.3.6.1.2.1.2.2.1.3.2", eAsnInteger, "6"},
                           {"1.3.6.1.2.1.2.2.1.3.70000", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.2.2.1.4.2", eAsnInteger, "1500"},
                           {"1.3.6.1.2.1.2.2.1.5.2", eAsnGauge32, "1000000000"},
                           {"1.3.6.1.2.1.2.2.1.6.2", eAsnOctetString, "02:00:5e:10:00:ff"},
                           {"1.3.6.1.2.1.2.2.1.6.70000", eAsnOctetString, ""},
                           {"1.3.6.1.2.1.2.2.1.7.2", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.2.2.1.7.70000", eAsnInteger, "2"},
                           {"1.3.6.1.2.1.2.2.1.8.2", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.2.2.1.8.70000", eAsnInteger, "4"},
                           {"1.3.6.1.2.1.2.2.1.9.2", eAsnTimeTicks, "0"},
                           {"1.3.6.1.2.1.2.2.1.9.70000", eAsnTimeTicks, "0"},
                           {"1.3.6.1.2.1.2.2.1.10.2", eAsnCounter32, "1"},
                           {"1.3.6.1.2.1.2.2.1.11.2", eAsnCounter32, "2"},
                           {"1.3.6.1.2.1.2.2.1.13.2", eAsnCounter32, "4"},
                           {"1.3.6.1.2.1.2.2.1.14.2", eAsnCounter32, "5"},
                           {"1.3.6.1.2.1.2.2.1.16.2", eAsnCounter32, "6"},
                           {"1.3.6.1.2.1.2.2.1.17.2", eAsnCounter32, "7"},
                           {"1.3.6.1.2.1.2.2.1.19.2", eAsnCounter32, "8"},
                           {"1.3.6.1.2.1.2.2.1.20.2", eAsnCounter32, "4294967295"},
                       })
                  .Run(),
              "");
}

TEST_F(InterfacesTable, EveryColumnOfIfXTableIsWalkedAndGot)
{
    interfaces.links = {Whole(), Bare()};
    module.History().Compare(interfaces.links, 0);
    EXPECT_EQ(TwoWalks(*module.GetImplAt(2), kIfXEntry,
                       {
                           {"1.3.6.1.2.1.31.1.1.1.1.2", eAsnOctetString, "eth0"},
                           {"1.3.6.1.2.1.31.1.1.1.1.70000", eAsnOctetString, "odd"},
                           {"1.3.6.1.2.1.31.1.1.1.2.2", eAsnCounter32, "3"},
                           {"1.3.6.1.2.1.31.1.1.1.6.2", eAsnCounter64, "4294967297"},
                           {"1.3.6.1.2.1.31.1.1.1.7.2", eAsnCounter64, "8589934594"},
                           {"1.3.6.1.2.1.31.1.1.1.8.2", eAsnCounter64, "12884901891"},
                           {"1.3.6.1.2.1.31.1.1.1.10.2", eAsnCounter64, "25769803782"},
                           {"1.3.6.1.2.1.31.1.1.1.11.2", eAsnCounter64, "30064771079"},
                           {"1.3.6.1.2.1.31.1.1.1.14.2", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.31.1.1.1.14.70000", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.31.1.1.1.15.2", eAsnGauge32, "1000"},
                           {"1.3.6.1.2.1.31.1.1.1.16.2", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.31.1.1.1.17.2", eAsnInteger, "1"},
                           {"1.3.6.1.2.1.31.1.1.1.18.2", eAsnOctetString, "to the core"},
                           {"1.3.6.1.2.1.31.1.1.1.18.70000", eAsnOctetString, ""},
                           {"1.3.6.1.2.1.31.1.1.1.19.2", eAsnTimeTicks, "0"},
                           {"1.3.6.1.2.1.31.1.1.1.19.70000", eAsnTimeTicks, "0"},
                       })
                  .Run(),
              "");
}

TEST_F(InterfacesTable, ScalarsAreWalkedAndGot)
{
    interfaces.links = {Whole(), Bare()};
    module.History().Compare(interfaces.links, 0);
    EXPECT_EQ(
        TwoWalks(*module.GetImplAt(0), "1.3.6.1.2.1.2.1", {{"1.3.6.1.2.1.2.1.0", eAsnInteger, "2"}})
            .Run(),
        "");
    EXPECT_EQ(TwoWalks(*module.GetImplAt(3), "1.3.6.1.2.1.31.1.5",
                       {{"1.3.6.1.2.1.31.1.5.0", eAsnTimeTicks, "0"}})
                  .Run(),
              "");
}

TEST_F(InterfacesTable, AWalkOfAllGoesThroughTheModuleInOrder)
{
    interfaces.links = {Whole()};
    module.History().Compare(interfaces.links, 0);
    const std::vector<std::string> walk = client.Walk();
    ASSERT_EQ(walk.size(), 1u + 17u + 13u + 1u);
    EXPECT_EQ(walk.front(), "2.1.0=1");
    EXPECT_EQ(walk[1], "2.2.1.1.2=2");
    EXPECT_EQ(walk.back(), "31.1.5.0=0");
}

TEST_F(InterfacesTable, WithoutInterfacesThereAreOnlyScalars)
{
    module.History().Compare({}, 0);
    EXPECT_EQ(client.Walk(), (std::vector<std::string>{"2.1.0=0", "31.1.5.0=0"}));
}

TEST_F(InterfacesTable, TimesAreNotThereWhileNobodyWatches)
{
    Show(Whole());
    EXPECT_EQ(IfGet(9, 2), kNone);
    EXPECT_EQ(IfXGet(19, 2), kNone);
    EXPECT_EQ(client.Get("31.1.5.0"), kNone);
    EXPECT_EQ(client.Walk().back(), "31.1.1.1.18.2=to the core");
}

TEST_F(InterfacesTable, OnlyRowsAndColumnsThatAreThereAreGot)
{
    Show(Whole());
    for (const char* name :
         {"2.2.1.1.1", "2.2.1.1.3", "2.2.1.1.2.0", "2.2.1.12.2", "2.2.1.15.2", "2.2.1.18.2",
          "2.2.1.21.2", "2.2.1.22.2", "2.2.1.23.2", "31.1.1.1.3.2", "31.1.1.1.4.2", "31.1.1.1.5.2",
          "31.1.1.1.9.2", "31.1.1.1.12.2", "31.1.1.1.13.2", "2.2.1.1.4294967295"})
        EXPECT_EQ(client.Get(name), kNone) << name;
}

TEST_F(InterfacesTable, IndexesUpToTheLastAreServed)
{
    interfaces.links = {Link(1, "first"), Link(2147483647, "last")};
    EXPECT_EQ(IfGet(1, 2147483647), "2147483647");
    Client manager(client.handler);
    ASSERT_EQ(manager.GetNext({"1.3.6.1.2.1.2.2.1.1.1"}), 0);
    EXPECT_EQ(manager.NameAt(0), "1.3.6.1.2.1.2.2.1.1.2147483647");
    ASSERT_EQ(manager.GetNext({"1.3.6.1.2.1.2.2.1.1.4294967295"}), 0);
    EXPECT_EQ(manager.NameAt(0), "1.3.6.1.2.1.2.2.1.2.1");
}

TEST_F(InterfacesTable, SpeedsSaturateAndAreRounded)
{
    struct SCase {
        std::uint64_t speed;
        const char* ifSpeed;
        const char* ifHighSpeed;
    };
    const SCase cases[] = {
        {0, "0", "0"},
        {64000, "64000", "0"},
        {499999, "499999", "0"},
        {500000, "500000", "1"},
        {1499999, "1499999", "1"},
        {10000000, "10000000", "10"},
        {4294967294u, "4294967294", "4295"},
        {4294967295u, "4294967295", "4295"},
        {4294967296u, "4294967295", "4295"},
        {10000000000u, "4294967295", "10000"},
        {800000000000u, "4294967295", "800000"},
        {18446744073709551615u, "4294967295", "4294967295"},
    };
    for (const SCase& test : cases) {
        SInterface link = Whole();
        link.speed = test.speed;
        Show(link);
        EXPECT_EQ(IfGet(5, 2), test.ifSpeed) << test.speed;
        EXPECT_EQ(IfXGet(15, 2), test.ifHighSpeed) << test.speed;
    }
}

TEST_F(InterfacesTable, MtusSaturate)
{
    for (auto [mtu, text] : {std::pair<unsigned, const char*>{0, "0"},
                             {68, "68"},
                             {65536, "65536"},
                             {2147483647, "2147483647"},
                             {2147483648u, "2147483647"},
                             {4294967295u, "2147483647"}}) {
        SInterface link = Whole();
        link.mtu = mtu;
        Show(link);
        EXPECT_EQ(IfGet(4, 2), text);
    }
}

TEST_F(InterfacesTable, EveryStatusIsShown)
{
    for (int status = eIfUp; status <= eIfLowerLayerDown; ++status) {
        Show(Link(2, "eth0", static_cast<EIfStatus>(status)));
        EXPECT_EQ(IfGet(8, 2), std::to_string(status));
    }
}

TEST_F(InterfacesTable, TruthsAreTrueFalseOrNotThere)
{
    SInterface link = Whole();
    link.isPromiscuous = false;
    link.hasConnector = false;
    Show(link);
    EXPECT_EQ(IfXGet(16, 2), "2");
    EXPECT_EQ(IfXGet(17, 2), "2");
    link.isPromiscuous.reset();
    link.hasConnector.reset();
    Show(link);
    EXPECT_EQ(IfXGet(16, 2), kNone);
    EXPECT_EQ(IfXGet(17, 2), kNone);
}

TEST_F(InterfacesTable, TextsAreAscii)
{
    SInterface link = Whole();
    link.name = "a\x7f\x1b\xc3\xa9~";
    Show(link);
    EXPECT_EQ(IfGet(2, 2), "a????~");
    EXPECT_EQ(IfXGet(1, 2), "a????~");
}

TEST_F(InterfacesTable, AliasesHaveUpToSixtyFourCharacters)
{
    SInterface link = Whole();
    for (std::size_t length : {0u, 1u, 63u, 64u, 65u, 255u}) {
        link.alias = std::string(length, 'x');
        Show(link);
        EXPECT_EQ(IfXGet(18, 2), std::string(std::min<std::size_t>(length, 64), 'x')) << length;
    }
}

TEST_F(InterfacesTable, AddressesOfAnyLengthAreShown)
{
    SInterface link = Whole();
    for (std::size_t length : {1u, 4u, 8u, 20u, 32u}) {
        link.address = std::string(length, '\x01');
        Show(link);
        EXPECT_EQ(IfGet(6, 2).size(), 3 * length - 1) << length;
    }
}

TEST_F(InterfacesTable, NothingButTheTrapEnableIsWritable)
{
    Show(Whole());
    module.History().Compare(interfaces.links, 0);
    for (const std::string& instance : client.Walk()) {
        const std::string name = instance.substr(0, instance.find('='));
        if (name != "31.1.1.1.14.2") {
            EXPECT_EQ(client.Set({{name, Number(1)}}), eSnmpNotWritable) << name;
        }
    }
}

TEST_F(InterfacesTable, InterfacesComeAndGoBetweenRequests)
{
    interfaces.links = {Link(1, "lo"), Link(2, "eth0"), Link(3, "eth1")};
    Client manager(client.handler);
    ASSERT_EQ(manager.GetNext({"1.3.6.1.2.1.2.2.1.2.1"}), 0);
    EXPECT_EQ(manager.TextAt(0), "eth0");
    interfaces.links = {Link(1, "lo"), Link(3, "eth1"), Link(9, "new")};
    EXPECT_EQ(IfGet(2, 2), kNone);
    EXPECT_EQ(IfGet(2, 9), "new");
    Client later(client.handler);
    ASSERT_EQ(later.GetNext({"1.3.6.1.2.1.2.2.1.2.2"}), 0);
    EXPECT_EQ(later.TextAt(0), "eth1");
    EXPECT_EQ(client.Get("2.1.0"), "3");
}

TEST_F(InterfacesTable, WhatCannotBeToldIsAnError)
{
    Show(Whole());
    interfaces.isBroken = true;
    EXPECT_EQ(IfGet(1, 2), "status 5");
    EXPECT_EQ(client.Get("2.1.0"), "status 5");
    EXPECT_EQ(client.Get("31.1.5.0"), "status 5");
    Client manager(client.handler);
    EXPECT_EQ(manager.GetNext({kIfEntry}), eSnmpGenErr);
    interfaces.isBroken = false;
    EXPECT_EQ(IfGet(1, 2), "2");
}

TEST_F(InterfacesTable, LabelsOfStatusesAreKnown)
{
    BString label;
    IMIBInfo* const info = module.GetImplAt(1)->GetIMibInfo();
    ASSERT_EQ(info->GetEnumLabel(BString("ifOperStatus"), 7, label), 1);
    EXPECT_STREQ(label.c_str(), "lowerLayerDown");
    ASSERT_EQ(info->GetEnumLabel(BString("ifAdminStatus"), 2, label), 1);
    EXPECT_STREQ(label.c_str(), "down");
}
