#include "modules/interfaces/LinkMessage.h"

#include <net/if.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

namespace VLK::modules {

namespace {

// Of the attributes that are read.
constexpr std::size_t kAttributes = IFLA_PARENT_DEV_NAME + 1;
using Attributes = std::array<const nlattr*, kAttributes>;

void Note(Attributes& all, const nlattr* attribute)
{
    const std::size_t type = mnl_attr_get_type(attribute);
    if (type < all.size())
        all[type] = attribute;
}

Attributes AttributesOf(const nlmsghdr& message)
{
    Attributes all{};
    auto* attribute =
        static_cast<const nlattr*>(mnl_nlmsg_get_payload_offset(&message, sizeof(ifinfomsg)));
    const auto* const end = static_cast<const char*>(mnl_nlmsg_get_payload_tail(&message));
    while (
        mnl_attr_ok(attribute, static_cast<int>(end - reinterpret_cast<const char*>(attribute)))) {
        Note(all, attribute);
        attribute = mnl_attr_next(attribute);
    }
    return all;
}

// A number of exactly that size; none when the attribute is not there.
template <class Number>
std::optional<Number> NumberIn(const nlattr* attribute)
{
    if (!attribute || mnl_attr_get_payload_len(attribute) != sizeof(Number))
        return std::nullopt;
    Number number;
    std::memcpy(&number, mnl_attr_get_payload(attribute), sizeof number);
    return number;
}

std::string BytesIn(const nlattr* attribute)
{
    if (!attribute)
        return {};
    return {static_cast<const char*>(mnl_attr_get_payload(attribute)),
            mnl_attr_get_payload_len(attribute)};
}

// Up to its NUL.
std::string TextIn(const nlattr* attribute)
{
    const std::string bytes = BytesIn(attribute);
    return bytes.substr(0, bytes.find('\0'));
}

// What made the link: "bridge", "vlan"; empty for the drivers of devices.
std::string KindIn(const nlattr* info)
{
    if (!info)
        return {};
    auto* attribute = static_cast<const nlattr*>(mnl_attr_get_payload(info));
    const char* const end =
        static_cast<const char*>(mnl_attr_get_payload(info)) + mnl_attr_get_payload_len(info);
    while (
        mnl_attr_ok(attribute, static_cast<int>(end - reinterpret_cast<const char*>(attribute)))) {
        if (mnl_attr_get_type(attribute) == IFLA_INFO_KIND)
            return TextIn(attribute);
        attribute = mnl_attr_next(attribute);
    }
    return {};
}

struct STypeOfKind {
    const char* kind;
    EIfType type;
};
constexpr STypeOfKind kTypesOfKinds[] = {
    {"bond", eIfTypeIeee8023adLag}, {"bridge", eIfTypeBridge},      {"erspan", eIfTypeTunnel},
    {"geneve", eIfTypeTunnel},      {"gretap", eIfTypeTunnel},      {"ip6erspan", eIfTypeTunnel},
    {"ip6gretap", eIfTypeTunnel},   {"team", eIfTypeIeee8023adLag}, {"vlan", eIfTypeL2Vlan},
    {"vti", eIfTypeTunnel},         {"vti6", eIfTypeTunnel},        {"vxlan", eIfTypeTunnel},
    {"wireguard", eIfTypeTunnel},   {"xfrm", eIfTypeTunnel},
};

EIfType TypeOfHardware(unsigned hardware)
{
    switch (hardware) {
    case ARPHRD_ETHER:
        return eIfTypeEthernetCsmacd;
    case ARPHRD_LOOPBACK:
        return eIfTypeSoftwareLoopback;
    case ARPHRD_PPP:
        return eIfTypePpp;
    case ARPHRD_SLIP:
    case ARPHRD_CSLIP:
    case ARPHRD_SLIP6:
    case ARPHRD_CSLIP6:
        return eIfTypeSlip;
    case ARPHRD_TUNNEL:
    case ARPHRD_TUNNEL6:
    case ARPHRD_SIT:
    case ARPHRD_IPGRE:
    case ARPHRD_IP6GRE:
        return eIfTypeTunnel;
    case ARPHRD_IEEE80211:
    case ARPHRD_IEEE80211_PRISM:
    case ARPHRD_IEEE80211_RADIOTAP:
        return eIfTypeIeee80211;
    case ARPHRD_INFINIBAND:
        return eIfTypeInfiniband;
    case ARPHRD_IEEE1394:
        return eIfTypeIeee1394;
    case ARPHRD_IEEE802_TR:
        return eIfTypeTokenRing;
    case ARPHRD_FDDI:
        return eIfTypeFddi;
    case ARPHRD_ATM:
        return eIfTypeAtm;
    case ARPHRD_HDLC:
        return eIfTypeHdlc;
    case ARPHRD_FRAD:
    case ARPHRD_DLCI:
        return eIfTypeFrameRelay;
    default:
        return eIfTypeOther;
    }
}

// Bridges, tunnels and the like look like Ethernet to the rest of the kernel.
EIfType TypeOf(const std::string& kind, unsigned hardware)
{
    for (const STypeOfKind& known : kTypesOfKinds) {
        if (kind == known.kind)
            return known.type;
    }
    return TypeOfHardware(hardware);
}

EIfStatus StatusOf(unsigned operState)
{
    switch (operState) {
    case IF_OPER_NOTPRESENT:
        return eIfNotPresent;
    case IF_OPER_DOWN:
        return eIfDown;
    case IF_OPER_LOWERLAYERDOWN:
        return eIfLowerLayerDown;
    case IF_OPER_TESTING:
        return eIfTesting;
    case IF_OPER_DORMANT:
        return eIfDormant;
    case IF_OPER_UP:
        return eIfUp;
    default:
        return eIfUnknown;
    }
}

// All octets 0 stand for none: those of the loopback and of tunnels without ends.
std::string AddressIn(const nlattr* attribute)
{
    std::string address = BytesIn(attribute);
    if (std::all_of(address.begin(), address.end(), [](char octet) { return octet == 0; }))
        address.clear();
    return address;
}

// A device of a bus has a connector, what the kernel made by itself has none.
std::optional<bool> ConnectorOf(const Attributes& all, const std::string& kind, unsigned hardware)
{
    if (all[IFLA_PARENT_DEV_NAME])
        return true;
    if (!kind.empty() || hardware == ARPHRD_LOOPBACK)
        return false;
    return std::nullopt;
}

std::optional<bool> PromiscuityOf(const Attributes& all)
{
    // The flag is that of ifconfig alone; the count knows of packet captures too.
    if (const auto count = NumberIn<std::uint32_t>(all[IFLA_PROMISCUITY]))
        return *count > 0;
    return std::nullopt;
}

// Discards are counted as /proc/net/dev does. Packets are counted without regard to
// their casts, multicasts that came in excepted: only where there are none, all are
// unicast.
SIfCounters CountersIn(const nlattr* attribute, unsigned flags)
{
    constexpr std::size_t kLeast = offsetof(rtnl_link_stats64, rx_compressed);
    if (!attribute || mnl_attr_get_payload_len(attribute) < kLeast)
        return {};
    rtnl_link_stats64 stats{};
    std::memcpy(&stats, mnl_attr_get_payload(attribute),
                std::min<std::size_t>(sizeof stats, mnl_attr_get_payload_len(attribute)));
    SIfCounters counters;
    counters.inOctets = stats.rx_bytes;
    counters.inMulticastPkts = stats.multicast;
    counters.inDiscards = stats.rx_dropped + stats.rx_missed_errors;
    counters.inErrors = stats.rx_errors;
    counters.outOctets = stats.tx_bytes;
    counters.outDiscards = stats.tx_dropped;
    counters.outErrors = stats.tx_errors;
    if (!(flags & (IFF_BROADCAST | IFF_MULTICAST))) {
        counters.inUcastPkts = stats.rx_packets;
        counters.outUcastPkts = stats.tx_packets;
    }
    return counters;
}

// None for what is not about the link as such.
std::optional<ifinfomsg> HeaderOf(const nlmsghdr& message, unsigned type)
{
    if (message.nlmsg_type != type || mnl_nlmsg_get_payload_len(&message) < sizeof(ifinfomsg))
        return std::nullopt;
    ifinfomsg header;
    std::memcpy(&header, mnl_nlmsg_get_payload(&message), sizeof header);
    if (header.ifi_family != AF_UNSPEC || header.ifi_index <= 0)
        return std::nullopt;
    return header;
}

} // namespace

std::optional<SInterface> InterfaceIn(const nlmsghdr& message)
{
    const std::optional<ifinfomsg> header = HeaderOf(message, RTM_NEWLINK);
    if (!header)
        return std::nullopt;
    const Attributes all = AttributesOf(message);
    const auto operState = NumberIn<std::uint8_t>(all[IFLA_OPERSTATE]);
    if (!operState || !all[IFLA_IFNAME])
        return std::nullopt;
    const std::string kind = KindIn(all[IFLA_LINKINFO]);
    SInterface link;
    link.index = static_cast<unsigned>(header->ifi_index);
    link.name = TextIn(all[IFLA_IFNAME]);
    link.alias = TextIn(all[IFLA_IFALIAS]);
    link.address = AddressIn(all[IFLA_ADDRESS]);
    link.type = TypeOf(kind, header->ifi_type);
    link.admin = header->ifi_flags & IFF_UP ? eIfUp : eIfDown;
    link.oper = StatusOf(*operState);
    link.mtu = NumberIn<std::uint32_t>(all[IFLA_MTU]);
    link.isPromiscuous = PromiscuityOf(all);
    link.hasConnector = ConnectorOf(all, kind, header->ifi_type);
    link.counters = CountersIn(all[IFLA_STATS64], header->ifi_flags);
    link.master = NumberIn<std::uint32_t>(all[IFLA_MASTER]).value_or(0);
    // The two ends of a veth name each other there, and neither is below.
    const unsigned lower = NumberIn<std::uint32_t>(all[IFLA_LINK]).value_or(0);
    link.hasLowerLayer = lower != 0 && lower != link.index && kind != "veth";
    return link;
}

std::optional<unsigned> GoneIn(const nlmsghdr& message)
{
    const std::optional<ifinfomsg> header = HeaderOf(message, RTM_DELLINK);
    if (!header)
        return std::nullopt;
    return static_cast<unsigned>(header->ifi_index);
}

} // namespace VLK::modules
