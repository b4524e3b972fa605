// What is read out of the kernel's messages, and what is no message about a link.
#include "modules/interfaces/LinkMessage.h"

#include <net/if.h>

#include <gtest/gtest.h>
#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <memory>

using namespace VLK::modules;

namespace {

// A message about link 7 called "lan", to which tests add.
class Message {
public:
    explicit Message(unsigned short type = RTM_NEWLINK)
        : m_buffer(std::make_shared<std::vector<char>>(8192))
    {
        m_message = mnl_nlmsg_put_header(m_buffer->data());
        m_message->nlmsg_type = type;
        header = static_cast<ifinfomsg*>(mnl_nlmsg_put_extra_header(m_message, sizeof(ifinfomsg)));
        header->ifi_family = AF_UNSPEC;
        header->ifi_type = ARPHRD_ETHER;
        header->ifi_index = 7;
    }
    static Message Usual(unsigned char operState = IF_OPER_UP)
    {
        Message message;
        message.Text(IFLA_IFNAME, "lan").Byte(IFLA_OPERSTATE, operState);
        return message;
    }

    Message& Text(unsigned short type, const char* text)
    {
        mnl_attr_put_strz(m_message, type, text);
        return *this;
    }
    Message& Byte(unsigned short type, unsigned char value)
    {
        mnl_attr_put_u8(m_message, type, value);
        return *this;
    }
    Message& Word(unsigned short type, std::uint32_t value)
    {
        mnl_attr_put_u32(m_message, type, value);
        return *this;
    }
    Message& Bytes(unsigned short type, const std::string& bytes)
    {
        mnl_attr_put(m_message, type, bytes.size(), bytes.data());
        return *this;
    }
    Message& Kind(const char* kind)
    {
        nlattr* const info = mnl_attr_nest_start(m_message, IFLA_LINKINFO);
        mnl_attr_put_u32(m_message, IFLA_INFO_XSTATS, 1);
        mnl_attr_put_strz(m_message, IFLA_INFO_KIND, kind);
        mnl_attr_nest_end(m_message, info);
        return *this;
    }
    Message& Stats(const rtnl_link_stats64& stats, std::size_t length = sizeof(rtnl_link_stats64))
    {
        mnl_attr_put(m_message, IFLA_STATS64, length, &stats);
        return *this;
    }
    Message& CutTo(std::size_t length)
    {
        m_message->nlmsg_len = static_cast<__u32>(length);
        return *this;
    }
    std::size_t Length() const { return m_message->nlmsg_len; }

    const nlmsghdr& Get() const { return *m_message; }
    std::optional<SInterface> Read() const { return InterfaceIn(*m_message); }

private:
    std::shared_ptr<std::vector<char>> m_buffer; // of all copies
    nlmsghdr* m_message;

public:
    ifinfomsg* header;
};

SInterface Told(const Message& message)
{
    const std::optional<SInterface> link = message.Read();
    EXPECT_TRUE(link);
    return link.value_or(SInterface());
}

rtnl_link_stats64 Stats()
{
    rtnl_link_stats64 stats{};
    stats.rx_packets = 1;
    stats.tx_packets = 2;
    stats.rx_bytes = 3;
    stats.tx_bytes = 4;
    stats.rx_errors = 5;
    stats.tx_errors = 6;
    stats.rx_dropped = 7;
    stats.tx_dropped = 8;
    stats.multicast = 9;
    stats.collisions = 100;
    stats.rx_length_errors = 200;
    stats.rx_missed_errors = 1000;
    return stats;
}

} // namespace

TEST(InterfacesMessage, OfTheLeastThatIsNeeded)
{
    const SInterface link = Told(Message::Usual());
    EXPECT_EQ(link.index, 7u);
    EXPECT_EQ(link.name, "lan");
    EXPECT_EQ(link.alias, "");
    EXPECT_EQ(link.address, "");
    EXPECT_EQ(link.type, eIfTypeEthernetCsmacd);
    EXPECT_EQ(link.admin, eIfDown);
    EXPECT_EQ(link.oper, eIfUp);
    EXPECT_FALSE(link.mtu);
    EXPECT_FALSE(link.speed);
    EXPECT_FALSE(link.isPromiscuous);
    EXPECT_FALSE(link.hasConnector);
    EXPECT_FALSE(link.counters.inOctets);
    EXPECT_EQ(link.master, 0u);
    EXPECT_FALSE(link.hasLowerLayer);
}

TEST(InterfacesMessage, OfAllThatThereIs)
{
    Message message = Message::Usual();
    message.Text(IFLA_IFALIAS, "to the core")
        .Bytes(IFLA_ADDRESS, std::string("\x02\x00\x5e\x10\x00\xff", 6))
        .Word(IFLA_MTU, 9000)
        .Word(IFLA_PROMISCUITY, 2)
        .Word(IFLA_MASTER, 4)
        .Text(IFLA_PARENT_DEV_NAME, "0000:00:1f.6");
    message.header->ifi_flags = IFF_UP;
    const SInterface link = Told(message);
    EXPECT_EQ(link.alias, "to the core");
    EXPECT_EQ(link.address, std::string("\x02\x00\x5e\x10\x00\xff", 6));
    EXPECT_EQ(link.mtu, 9000u);
    EXPECT_EQ(link.admin, eIfUp);
    EXPECT_EQ(link.isPromiscuous, true);
    EXPECT_EQ(link.hasConnector, true);
    EXPECT_EQ(link.master, 4u);
}

TEST(InterfacesMessage, TellsTheOperationalState)
{
    const std::pair<unsigned char, EIfStatus> states[] = {
        {IF_OPER_UNKNOWN, eIfUnknown},
        {IF_OPER_NOTPRESENT, eIfNotPresent},
        {IF_OPER_DOWN, eIfDown},
        {IF_OPER_LOWERLAYERDOWN, eIfLowerLayerDown},
        {IF_OPER_TESTING, eIfTesting},
        {IF_OPER_DORMANT, eIfDormant},
        {IF_OPER_UP, eIfUp},
        {7, eIfUnknown},
        {255, eIfUnknown},
    };
    for (const auto& [state, status] : states)
        EXPECT_EQ(Told(Message::Usual(state)).oper, status) << int(state);
}

TEST(InterfacesMessage, TellsTheTypeByTheHardware)
{
    const std::pair<unsigned short, int> types[] = {
        {ARPHRD_ETHER, 6},
        {ARPHRD_LOOPBACK, 24},
        {ARPHRD_PPP, 23},
        {ARPHRD_SLIP, 28},
        {ARPHRD_TUNNEL, 131},
        {ARPHRD_TUNNEL6, 131},
        {ARPHRD_SIT, 131},
        {ARPHRD_IPGRE, 131},
        {ARPHRD_IP6GRE, 131},
        {ARPHRD_INFINIBAND, 199},
        {ARPHRD_IEEE80211_RADIOTAP, 71},
        {ARPHRD_IEEE1394, 144},
        {ARPHRD_IEEE802_TR, 9},
        {ARPHRD_FDDI, 15},
        {ARPHRD_ATM, 37},
        {ARPHRD_HDLC, 118},
        {ARPHRD_FRAD, 32},
        {ARPHRD_DLCI, 32},
        {ARPHRD_CAN, 1},
        {ARPHRD_NONE, 1},
        {ARPHRD_VOID, 1},
    };
    for (const auto& [hardware, type] : types) {
        Message message = Message::Usual();
        message.header->ifi_type = hardware;
        EXPECT_EQ(Told(message).type, type) << hardware;
    }
}

TEST(InterfacesMessage, TellsTheTypeByTheKindFirst)
{
    const std::pair<const char*, int> kinds[] = {
        {"bridge", 209}, {"vlan", 135},      {"bond", 161}, {"team", 161}, {"vxlan", 131},
        {"gretap", 131}, {"wireguard", 131}, {"veth", 6},   {"dummy", 6},  {"macvlan", 6},
    };
    for (const auto& [kind, type] : kinds) {
        const SInterface link = Told(Message::Usual().Kind(kind));
        EXPECT_EQ(link.type, type) << kind;
        EXPECT_EQ(link.hasConnector, false) << kind;
    }
}

TEST(InterfacesMessage, TellsOfAConnectorWhatIsKnown)
{
    EXPECT_EQ(Told(Message::Usual()).hasConnector, std::nullopt);
    EXPECT_EQ(Told(Message::Usual().Kind("can").Text(IFLA_PARENT_DEV_NAME, "1-1")).hasConnector,
              true);
    Message loopback = Message::Usual();
    loopback.header->ifi_type = ARPHRD_LOOPBACK;
    EXPECT_EQ(Told(loopback).hasConnector, false);
}

TEST(InterfacesMessage, AddressesOfZerosAreNone)
{
    for (std::size_t length : {0u, 4u, 6u, 20u}) {
        const std::string zeros(length, '\0');
        EXPECT_EQ(Told(Message::Usual().Bytes(IFLA_ADDRESS, zeros)).address, "") << length;
    }
    const std::string one("\0\0\0\0\0\1", 6);
    EXPECT_EQ(Told(Message::Usual().Bytes(IFLA_ADDRESS, one)).address, one);
}

TEST(InterfacesMessage, TellsWhatIsBelow)
{
    EXPECT_TRUE(Told(Message::Usual().Kind("vlan").Word(IFLA_LINK, 2)).hasLowerLayer);
    EXPECT_FALSE(Told(Message::Usual().Kind("veth").Word(IFLA_LINK, 2)).hasLowerLayer)
        << "its other end";
    EXPECT_FALSE(Told(Message::Usual().Kind("sit").Word(IFLA_LINK, 0)).hasLowerLayer);
    EXPECT_FALSE(Told(Message::Usual().Word(IFLA_LINK, 7)).hasLowerLayer) << "itself";
}

TEST(InterfacesMessage, CountersAreThoseOfTheirObjects)
{
    const SIfCounters counters = Told(Message::Usual().Stats(Stats())).counters;
    EXPECT_EQ(counters.inOctets, 3u);
    EXPECT_EQ(counters.inMulticastPkts, 9u);
    EXPECT_EQ(counters.inDiscards, 1007u) << "as the column drop of /proc/net/dev";
    EXPECT_EQ(counters.inErrors, 5u);
    EXPECT_EQ(counters.outOctets, 4u);
    EXPECT_EQ(counters.outDiscards, 8u);
    EXPECT_EQ(counters.outErrors, 6u);
}

TEST(InterfacesMessage, UnicastsAreToldWhereThereIsNothingElse)
{
    for (int flags : {int(IFF_BROADCAST), int(IFF_MULTICAST), IFF_BROADCAST | IFF_MULTICAST}) {
        Message message = Message::Usual().Stats(Stats());
        message.header->ifi_flags = static_cast<unsigned>(flags);
        EXPECT_FALSE(Told(message).counters.inUcastPkts) << flags;
        EXPECT_FALSE(Told(message).counters.outUcastPkts) << flags;
    }
    Message message = Message::Usual().Stats(Stats());
    message.header->ifi_flags = IFF_UP | IFF_POINTOPOINT | IFF_NOARP;
    EXPECT_EQ(Told(message).counters.inUcastPkts, 1u);
    EXPECT_EQ(Told(message).counters.outUcastPkts, 2u);
}

TEST(InterfacesMessage, CountersOfOlderAndNewerKernelsAreRead)
{
    EXPECT_EQ(Told(Message::Usual().Stats(Stats(), std::size_t{21} * 8)).counters.inDiscards,
              1007u);
    EXPECT_FALSE(Told(Message::Usual().Stats(Stats(), std::size_t{20} * 8)).counters.inDiscards);
    struct SNewer {
        rtnl_link_stats64 known;
        std::uint64_t more[8];
    } newer{Stats(), {}};
    const std::string bytes(reinterpret_cast<const char*>(&newer), sizeof newer);
    EXPECT_EQ(Told(Message::Usual().Bytes(IFLA_STATS64, bytes)).counters.outErrors, 6u);
}

TEST(InterfacesMessage, AttributesOfAnotherSizeAreLeftOut)
{
    const SInterface link = Told(Message::Usual()
                                     .Byte(IFLA_MTU, 1)
                                     .Bytes(IFLA_PROMISCUITY, "12345")
                                     .Bytes(IFLA_MASTER, "")
                                     .Bytes(IFLA_STATS64, "few")
                                     .Bytes(IFLA_LINKINFO, "x")
                                     .Bytes(60000, "later"));
    EXPECT_FALSE(link.mtu);
    EXPECT_FALSE(link.isPromiscuous);
    EXPECT_EQ(link.master, 0u);
    EXPECT_FALSE(link.counters.inOctets);
}

TEST(InterfacesMessage, TextsEndAtTheirNulOrTheirLength)
{
    Message message;
    message.Byte(IFLA_OPERSTATE, IF_OPER_UP)
        .Bytes(IFLA_IFNAME, "abc")
        .Bytes(IFLA_IFALIAS, std::string("one\0two\0", 8));
    EXPECT_EQ(Told(message).name, "abc");
    EXPECT_EQ(Told(message).alias, "one");
}

TEST(InterfacesMessage, WhatTellsOfNoLinksStateIsNone)
{
    Message ofBridge = Message::Usual();
    ofBridge.header->ifi_family = AF_BRIDGE;
    EXPECT_FALSE(ofBridge.Read());
    Message ofWireless;
    ofWireless.Text(IFLA_IFNAME, "wlan0").Bytes(IFLA_WIRELESS, "event");
    EXPECT_FALSE(ofWireless.Read());
    EXPECT_FALSE(Message().Byte(IFLA_OPERSTATE, IF_OPER_UP).Read()) << "without a name";
    Message withoutIndex = Message::Usual();
    withoutIndex.header->ifi_index = 0;
    EXPECT_FALSE(withoutIndex.Read());
    EXPECT_FALSE(
        Message(RTM_DELLINK).Text(IFLA_IFNAME, "lan").Byte(IFLA_OPERSTATE, IF_OPER_DOWN).Read());
    EXPECT_FALSE(Message(RTM_NEWADDR).Read());
}

TEST(InterfacesMessage, WhatIsCutShortIsReadUpToItsEnd)
{
    const std::size_t whole = Message::Usual().Word(IFLA_MTU, 1500).Length();
    for (std::size_t length = MNL_NLMSG_HDRLEN; length < whole; length += MNL_ALIGNTO) {
        const auto link = Message::Usual().Word(IFLA_MTU, 1500).CutTo(length).Read();
        EXPECT_FALSE(link && link->mtu) << length;
    }
}

TEST(InterfacesMessage, GoneIsWhatTheKernelTakesAway)
{
    EXPECT_EQ(GoneIn(Message(RTM_DELLINK).Get()), 7u);
    EXPECT_FALSE(GoneIn(Message::Usual().Get()));
    Message ofBridge(RTM_DELLINK);
    ofBridge.header->ifi_family = AF_BRIDGE;
    EXPECT_FALSE(GoneIn(ofBridge.Get())) << "it leaves its bridge and stays";
    EXPECT_FALSE(GoneIn(Message(RTM_DELLINK).CutTo(MNL_NLMSG_HDRLEN).Get()));
}
