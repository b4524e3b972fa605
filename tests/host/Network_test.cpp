#include "host/access/Network.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace VLK::host;

namespace {

BTransportAddress From(const std::string& host)
{
    BTransportAddress address;
    bool isV6 = host.find(':') != host.npos;
    EXPECT_TRUE(address.Parse(isV6 ? "udp6:[" + host + "]:5" : "udp:" + host + ":5")) << host;
    return address;
}

bool Holds(const char* network, const char* host)
{
    BNetwork parsed;
    EXPECT_EQ(parsed.Parse(network), "") << network;
    return parsed.Holds(From(host));
}

bool AnyHolds(const std::vector<BNetwork>& networks, const char* host)
{
    return std::any_of(networks.begin(), networks.end(),
                       [&](const BNetwork& network) { return network.Holds(From(host)); });
}

std::string Refusal(const std::string& text)
{
    BNetwork network;
    return network.Parse(text);
}

} // namespace

TEST(Network, HoldsTheAddressesOfItsPrefix)
{
    struct SCase {
        const char* network;
        const char* inside;
        const char* outside;
    };
    for (const SCase& test : {
             SCase{"10.0.0.0/8", "10.255.255.255", "11.0.0.0"},
             SCase{"10.0.0.0/8", "10.0.0.0", "9.255.255.255"},
             SCase{"192.0.2.128/25", "192.0.2.128", "192.0.2.127"},
             SCase{"192.0.2.4/31", "192.0.2.5", "192.0.2.6"},
             SCase{"192.0.2.4/32", "192.0.2.4", "192.0.2.5"},
             SCase{"192.0.2.4", "192.0.2.4", "192.0.2.5"},
             SCase{"0.0.0.0/1", "127.1.1.1", "128.0.0.0"},
             SCase{"2001:db8::/32", "2001:db8:ffff::1", "2001:db9::"},
             SCase{"2001:db8:8000::/33", "2001:db8:8000::", "2001:db8:7fff::"},
             SCase{"2001:db8::2/127", "2001:db8::3", "2001:db8::4"},
             SCase{"::1", "::1", "::2"},
         }) {
        EXPECT_TRUE(Holds(test.network, test.inside)) << test.network << " " << test.inside;
        EXPECT_FALSE(Holds(test.network, test.outside)) << test.network << " " << test.outside;
    }
}

TEST(Network, MappedAddressesCountAsIPv4OnBothSides)
{
    EXPECT_TRUE(Holds("10.0.0.0/8", "::ffff:10.1.2.3"));
    EXPECT_TRUE(Holds("::ffff:10.0.0.0/104", "10.1.2.3"));
    EXPECT_TRUE(Holds("::ffff:10.0.0.0/104", "::ffff:10.1.2.3"));
    EXPECT_FALSE(Holds("::ffff:10.0.0.0/104", "11.1.2.3"));
    EXPECT_TRUE(Holds("::ffff:0.0.0.0/96", "10.1.2.3")) << "which is all of IPv4";
    EXPECT_FALSE(Holds("::ffff:0.0.0.0/96", "2001:db8::1"));
    EXPECT_FALSE(Holds("::fffe:0.0.0.0/95", "10.1.2.3"));
    EXPECT_FALSE(Holds("::/0", "::ffff:10.1.2.3"));
    EXPECT_FALSE(Holds("::/0", "10.1.2.3"));
    EXPECT_FALSE(Holds("0.0.0.0/0", "2001:db8::1"));
    EXPECT_TRUE(Holds("::/0", "2001:db8::1"));
    EXPECT_TRUE(Holds("0.0.0.0/0", "10.1.2.3"));
}

TEST(Network, ThisMachineIsTheLoopbackNetworks)
{
    std::vector<BNetwork> here = BNetwork::ThisMachine();
    for (const char* host : {"127.0.0.1", "127.255.3.4", "::1", "::ffff:127.0.0.1"})
        EXPECT_TRUE(AnyHolds(here, host)) << host;
    for (const char* host : {"128.0.0.1", "0.0.0.0", "::2", "::", "::ffff:10.0.0.1"})
        EXPECT_FALSE(AnyHolds(here, host)) << host;
}

TEST(Network, AnywhereIsBothFamilies)
{
    for (const char* host : {"10.0.0.1", "255.255.255.255", "::1", "2001:db8::1", "::ffff:1.2.3.4"})
        EXPECT_TRUE(AnyHolds(BNetwork::Anywhere(), host)) << host;
}

TEST(Network, OneThatWasNeverReadHoldsNoAddressOfAHost)
{
    EXPECT_FALSE(BNetwork().Holds(From("10.0.0.1")));
    EXPECT_FALSE(BNetwork().Holds(From("::1")));
}

TEST(Network, SaysWhyATextIsRefused)
{
    const std::string none = "is no network: write it like 192.0.2.0/24 or 2001:db8::/32";
    for (const std::string& text :
         {std::string(), std::string("10.0.0/8"), std::string("10.0.0.0.0/8"),
          std::string("localhost"), std::string("10.0.0.0 /8"), std::string("/8"),
          std::string("2001:db8/32"), std::string("fe80::1%eth0"), std::string("010.0.0.0"),
          std::string("10.0.0.0\0/8", 11)})
        EXPECT_EQ(Refusal(text), none) << text;
    for (const char* text : {"10.0.0.0/", "10.0.0.0/33", "10.0.0.0/8x", "10.0.0.0/-1",
                             "10.0.0.0/0008", "10.0.0.0/8/8"})
        EXPECT_EQ(Refusal(text), "has no prefix of 0 to 32 bits") << text;
    EXPECT_EQ(Refusal("2001:db8::/129"), "has no prefix of 0 to 128 bits");
    EXPECT_EQ(Refusal("10.0.0.1/8"), "goes beyond its prefix: the network is 10.0.0.0/8");
    EXPECT_EQ(Refusal("192.0.2.129/25"), "goes beyond its prefix: the network is 192.0.2.128/25");
    EXPECT_EQ(Refusal("2001:db8::1/32"), "goes beyond its prefix: the network is 2001:db8::/32");
}

TEST(Network, ARefusedTextLeavesItAsItWas)
{
    BNetwork network;
    ASSERT_EQ(network.Parse("10.0.0.0/8"), "");
    EXPECT_NE(network.Parse("192.0.2.1/24"), "");
    EXPECT_TRUE(network.Holds(From("10.1.1.1")));
}
