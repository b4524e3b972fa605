#include "host/HostError.h"

#include "Ber.h"
#include "EngineTest.h"
#include "UdpClient.h"

#include <atomic>
#include <cstring>
#include <ifaddrs.h>
#include <map>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <set>
#include <string>
#include <sys/socket.h>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

ber::Bytes Get(const std::string& community, int requestId = 1)
{
    return ber::Message(1, community, 0xa0, requestId, 0, 0,
                        ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}));
}

class NetSnmpEngine : public EngineTest {
protected:
    // Sends from one address to the other and serves until the answer is
    // there; returns where it came from.
    template <class TAddress>
    TAddress Exchange(const TAddress& from, const TAddress& to,
                      const ber::Bytes& datagram = Get("any"))
    {
        int client = SendFrom(from, to, datagram);
        pollfd wait{client, POLLIN, 0};
        ServeWhile([&] { EXPECT_EQ(poll(&wait, 1, 10000), 1); });
        char answer[1000];
        TAddress source = {};
        socklen_t length = sizeof source;
        EXPECT_GT(recvfrom(client, answer, sizeof answer, MSG_DONTWAIT,
                           reinterpret_cast<sockaddr*>(&source), &length),
                  0);
        close(client);
        return source;
    }

    // Sends what gets no answer, and serves until the count is reached.
    template <class TAddress, class TCount>
    void SendAndServe(const TAddress& from, const TAddress& to, TCount count, unsigned expected)
    {
        int client = SendFrom(from, to, Get("any"));
        ServeWhile([&] { EXPECT_TRUE(Eventually([&] { return count() == expected; })); });
        pollfd wait{client, POLLIN, 0};
        EXPECT_EQ(poll(&wait, 1, 0), 0);
        close(client);
    }

    template <class TAddress>
    static int SendFrom(const TAddress& from, const TAddress& to, const ber::Bytes& datagram)
    {
        int client = socket(reinterpret_cast<const sockaddr&>(from).sa_family, SOCK_DGRAM, 0);
        const int on = 1;
        EXPECT_EQ(setsockopt(client, SOL_SOCKET, SO_BROADCAST, &on, sizeof on), 0);
        EXPECT_EQ(bind(client, reinterpret_cast<const sockaddr*>(&from), sizeof from), 0);
        EXPECT_EQ(sendto(client, datagram.data(), datagram.size(), 0,
                         reinterpret_cast<const sockaddr*>(&to), sizeof to),
                  static_cast<ssize_t>(datagram.size()));
        return client;
    }
};

sockaddr_in V4(const char* text, unsigned port)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text));
    sockaddr_in out = {};
    out.sin_family = AF_INET;
    out.sin_port = htons(static_cast<uint16_t>(port));
    std::memcpy(&out.sin_addr, address.Bytes(), 4);
    return out;
}

sockaddr_in6 LoopbackV6(unsigned port)
{
    sockaddr_in6 out = {};
    out.sin6_family = AF_INET6;
    out.sin6_port = htons(static_cast<uint16_t>(port));
    out.sin6_addr = in6addr_loopback;
    return out;
}

void SetPort(sockaddr_in& address, unsigned port)
{
    address.sin_port = htons(static_cast<uint16_t>(port));
}

void SetPort(sockaddr_in6& address, unsigned port)
{
    address.sin6_port = htons(static_cast<uint16_t>(port));
}

unsigned PortOf(const sockaddr_in& address) { return ntohs(address.sin_port); }
unsigned PortOf(const sockaddr_in6& address) { return ntohs(address.sin6_port); }

// Whether this machine has a datagram that is sent to the address come to who listens.
template <class TAddress>
bool Comes(TAddress own, TAddress to)
{
    const int on = 1;
    auto& address = reinterpret_cast<sockaddr&>(own);
    const int descriptor = socket(address.sa_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    setsockopt(descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    socklen_t length = sizeof own;
    bool comes =
        bind(descriptor, &address, length) == 0 && getsockname(descriptor, &address, &length) == 0;
    SetPort(to, PortOf(own));
    pollfd wait{descriptor, POLLIN, 0};
    comes = comes && sendto(descriptor, "x", 1, 0, reinterpret_cast<sockaddr*>(&to), length) == 1 &&
            poll(&wait, 1, 1000) == 1;
    close(descriptor);
    return comes;
}

sockaddr_in6 AnyV6()
{
    sockaddr_in6 any = {};
    any.sin6_family = AF_INET6;
    return any;
}

// Addresses of one interface; without a scope there is none that has both in use.
struct SOwnV6 {
    sockaddr_in6 link; // link-local
    sockaddr_in6 world;
};

SOwnV6 OwnV6()
{
    std::map<std::string, SOwnV6> interfaces;
    ifaddrs* all = nullptr;
    EXPECT_EQ(getifaddrs(&all), 0);
    for (const ifaddrs* at = all; at; at = at->ifa_next) {
        if (!at->ifa_addr || at->ifa_addr->sa_family != AF_INET6)
            continue;
        sockaddr_in6 address;
        std::memcpy(&address, at->ifa_addr, sizeof address);
        SOwnV6& own = interfaces[at->ifa_name];
        if (Comes(address, address))
            (IN6_IS_ADDR_LINKLOCAL(&address.sin6_addr) ? own.link : own.world) = address;
    }
    freeifaddrs(all);
    for (const auto& [name, own] : interfaces) {
        if (own.link.sin6_scope_id != 0 && own.world.sin6_family == AF_INET6)
            return own;
    }
    return {};
}

// One that is read here, and one that is left to the wire library.
std::vector<ber::Bytes> PlainAndUnusual()
{
    ber::Bytes unusual = Get("any");
    unusual.insert(1, 1, '\x81'); // the length takes two octets
    return {Get("any"), unusual};
}

} // namespace

TEST_F(NetSnmpEngine, OnEveryAddressTheAnswerLeavesFromTheOneAsked)
{
    unsigned port = Engine().Open(Address("udp:0.0.0.0:0"), Kept<STraffic>()).Port();
    sockaddr_in source = Exchange(V4("udp:127.0.0.3:0", 0), V4("udp:127.0.0.9:0", port));
    EXPECT_EQ(source.sin_addr.s_addr, htonl(0x7f000009));
    ASSERT_EQ(Handler().requests.size(), 1u);
    EXPECT_EQ(Handler().requests[0].local.ToString(), "udp:127.0.0.9:" + std::to_string(port));
    EXPECT_EQ(Handler().requests[0].remote.V4Bytes()[3], 3);
}

TEST_F(NetSnmpEngine, ABroadcastIsAnsweredFromAnAddressOfItsInterface)
{
    if (!Comes(V4("udp:0.0.0.0:0", 0), V4("udp:127.255.255.255:0", 0)))
        GTEST_SKIP() << "the loopback interface passes no broadcasts on";
    unsigned port = Engine().Open(Address("udp:0.0.0.0:0"), Kept<STraffic>()).Port();
    for (const ber::Bytes& datagram : PlainAndUnusual()) {
        sockaddr_in source =
            Exchange(V4("udp:127.0.0.1:0", 0), V4("udp:127.255.255.255:0", port), datagram);
        EXPECT_EQ(source.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
        ASSERT_FALSE(Handler().requests.empty());
        EXPECT_EQ(Handler().requests.back().local.ToString(),
                  "udp:127.0.0.1:" + std::to_string(port));
    }
    EXPECT_EQ(Handler().requests.size(), 2u);
}

TEST_F(NetSnmpEngine, OnEveryIPv6AddressTheOneAskedIsKnown)
{
    if (!HasLoopbackV6()) {
        EXPECT_THROW(Engine().Open(Address("udp6:[::1]:0"), Kept<STraffic>()), BHostError);
        return;
    }
    unsigned port = Engine().Open(Address("udp6:[::]:0"), Kept<STraffic>()).Port();
    sockaddr_in6 source = Exchange(LoopbackV6(0), LoopbackV6(port));
    EXPECT_TRUE(IN6_IS_ADDR_LOOPBACK(&source.sin6_addr));
    ASSERT_EQ(Handler().requests.size(), 1u);
    EXPECT_EQ(Handler().requests[0].local.ToString(), "udp6:[::1]:" + std::to_string(port));
    EXPECT_EQ(Handler().requests[0].remote.ToString().find("udp6:[::1]:"), 0u);
}

TEST_F(NetSnmpEngine, AMulticastIsAnsweredFromAnAddressOfItsInterface)
{
    const sockaddr_in6 own = OwnV6().link;
    sockaddr_in6 all = own;
    ASSERT_EQ(inet_pton(AF_INET6, "ff01::1", &all.sin6_addr), 1); // of this machine alone
    if (own.sin6_scope_id == 0 || !Comes(AnyV6(), all))
        GTEST_SKIP() << "no interface with all kinds of addresses";
    SetPort(all, Engine().Open(Address("udp6:[::]:0"), Kept<STraffic>()).Port());
    for (const ber::Bytes& datagram : PlainAndUnusual()) {
        const sockaddr_in6 source = Exchange(own, all, datagram);
        EXPECT_FALSE(IN6_IS_ADDR_MULTICAST(&source.sin6_addr));
        EXPECT_EQ(source.sin6_scope_id, own.sin6_scope_id);
    }
}

// Whoever asks: the system alone would answer the loopback from the loopback.
TEST_F(NetSnmpEngine, EveryIPv6AddressIsAnsweredFromItself)
{
    const auto [link, world] = OwnV6();
    if (link.sin6_scope_id == 0)
        GTEST_SKIP() << "no interface with all kinds of addresses";
    const unsigned port = Engine().Open(Address("udp6:[::]:0"), Kept<STraffic>()).Port();
    const std::pair<sockaddr_in6, sockaddr_in6> pairs[] = {
        {link, link}, {world, link}, {world, world}, {LoopbackV6(0), world}};
    for (auto [from, to] : pairs) {
        SetPort(to, port);
        for (const ber::Bytes& datagram : PlainAndUnusual()) {
            const sockaddr_in6 source = Exchange(from, to, datagram);
            EXPECT_TRUE(IN6_ARE_ADDR_EQUAL(&source.sin6_addr, &to.sin6_addr));
            EXPECT_EQ(source.sin6_port, to.sin6_port);
        }
    }
}

// However many there are: a flood would keep the agent from ending.
TEST_F(NetSnmpEngine, TheEndGoesBeforeWhatHasNotBeenTaken)
{
    const unsigned port = Engine().Open(Address("udp:127.0.0.1:0"), Kept<STraffic>()).Port();
    const int client = SendFrom(V4("udp:127.0.0.1:0", 0), V4("udp:127.0.0.1:0", port), Get("any"));
    ServeThoughStopped();
    EXPECT_EQ(Handler().requests.size(), 0u);
    pollfd wait{client, POLLIN, 0};
    ServeWhile([&] { EXPECT_EQ(poll(&wait, 1, 10000), 1); });
    EXPECT_EQ(Handler().requests.size(), 1u);
    close(client);
}

TEST_F(NetSnmpEngine, AnswersCountAndThoseForWhichNoneFitsAreSilentDrops)
{
    STraffic& traffic = Kept<STraffic>();
    unsigned port = Engine().Open(Address("udp:127.0.0.1:0"), traffic).Port();
    const sockaddr_in from = V4("udp:127.0.0.1:0", 0);
    const sockaddr_in to = V4("udp:127.0.0.1:0", port);
    const unsigned dropsBefore = Counters().silentDrops;
    Handler().isTooLarge = true;
    Exchange(from, to);
    EXPECT_EQ(traffic.received, 1u);
    EXPECT_EQ(traffic.answered, 1u);
    EXPECT_EQ(Counters().silentDrops, dropsBefore) << "its replacement was sent";
    Handler().isTooLargeInstead = true;
    SendAndServe(
        from, to, [] { return Counters().silentDrops.load(); }, dropsBefore + 1);
    EXPECT_EQ(Counters().silentDrops, dropsBefore + 1);
    EXPECT_EQ(traffic.received, 2u);
    EXPECT_EQ(traffic.answered, 1u);
}

// More than one call of the system brings, some of them for the wire library.
TEST_F(NetSnmpEngine, WhatHasWaitedTogetherIsAnsweredToWhoSentIt)
{
    constexpr int kEach = 20;
    STraffic& traffic = Kept<STraffic>();
    const unsigned port = Engine().Open(Address("udp:127.0.0.1:0"), traffic).Port();
    const UdpClient clients[] = {UdpClient(port), UdpClient(port)};
    const ber::Oid name{1, 3, 6, 1, 2, 1, 1, 1, 0};
    for (int i = 0; i < kEach; ++i) {
        for (int client : {0, 1}) {
            const ber::Bytes binding =
                i % 3 ? ber::Binding(name) : ber::Binding(name, ber::Tlv(4, "no value of a GET"));
            ASSERT_TRUE(clients[client].Send(
                ber::Message(1, "public", 0xa0, 1000 * client + i, 0, 0, binding)));
        }
    }
    ServeWhile([&] {
        for (int client : {0, 1}) {
            std::set<int> ids;
            for (int i = 0; i < kEach; ++i) {
                const ber::Reply reply = ber::ReadReply(clients[client].Receive(20000));
                ASSERT_TRUE(reply.ok);
                ids.insert(reply.requestId);
            }
            EXPECT_EQ(ids.size(), static_cast<size_t>(kEach));
            EXPECT_EQ(*ids.begin(), 1000 * client);
            EXPECT_EQ(*ids.rbegin(), 1000 * client + kEach - 1);
        }
    });
    EXPECT_EQ(traffic.received, 2u * kEach);
    EXPECT_EQ(traffic.answered, 2u * kEach);
}

TEST_F(NetSnmpEngine, EachOfThoseThatHaveWaitedTogetherIsAnsweredFromTheAddressItAsked)
{
    const unsigned port = Engine().Open(Address("udp:0.0.0.0:0"), Kept<STraffic>()).Port();
    const int client = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    constexpr int kFirst = 2;
    constexpr int kLast = 21;
    for (int host = kFirst; host <= kLast; ++host) {
        const sockaddr_in to = V4(("udp:127.0.0." + std::to_string(host) + ":0").c_str(), port);
        const ber::Bytes value = host % 3 ? ber::Tlv(5, "") : ber::Tlv(4, "not plain");
        const ber::Bytes asked = ber::Message(1, "public", 0xa0, host, 0, 0,
                                              ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}, value));
        ASSERT_EQ(sendto(client, asked.data(), asked.size(), 0,
                         reinterpret_cast<const sockaddr*>(&to), sizeof to),
                  static_cast<ssize_t>(asked.size()));
    }
    ServeWhile([&] {
        for (int host = kFirst; host <= kLast; ++host) {
            pollfd wait{client, POLLIN, 0};
            ASSERT_EQ(poll(&wait, 1, 20000), 1);
            char answer[1000];
            sockaddr_in source = {};
            socklen_t length = sizeof source;
            const ssize_t count = recvfrom(client, answer, sizeof answer, 0,
                                           reinterpret_cast<sockaddr*>(&source), &length);
            ASSERT_GT(count, 0);
            const int id = ber::ReadReply(ber::Bytes(answer, static_cast<size_t>(count))).requestId;
            EXPECT_EQ(ntohl(source.sin_addr.s_addr), 0x7f000000u + static_cast<unsigned>(id));
        }
    });
    close(client);
    ASSERT_EQ(Handler().requests.size(), static_cast<size_t>(kLast - kFirst + 1));
    for (const SRequest& request : Handler().requests)
        EXPECT_EQ(request.local.V4Bytes()[3], request.requestId);
}

TEST_F(NetSnmpEngine, ASlowRequestHoldsUpNoneThatHasWaitedWithIt)
{
    constexpr int kSlow = 999;
    constexpr int kQuick = 20; // more than one call of the system brings
    const unsigned port = Engine().Open(Address("udp:127.0.0.1:0"), Kept<STraffic>()).Port();
    const UdpClient slow(port);
    const UdpClient quick(port);
    ASSERT_TRUE(slow.Send(Get("public", kSlow)));
    for (int i = 0; i < kQuick; ++i)
        ASSERT_TRUE(quick.Send(Get("public", i)));
    std::atomic<bool> isHeld{true};
    Handler().onRequest = [&](const SRequest& request, SResponse&) {
        if (request.requestId == kSlow) {
            EXPECT_TRUE(Eventually([&] { return !isHeld; }));
        }
    };
    ServeWhile([&] {
        for (int i = 0; i < kQuick; ++i)
            EXPECT_FALSE(quick.Receive(10000).empty()) << i;
        isHeld = false;
        EXPECT_EQ(ber::ReadReply(slow.Receive(20000)).requestId, kSlow);
    });
}

// They are no more the system's, which would have lost them with the socket.
TEST_F(NetSnmpEngine, WhatHasBeenTakenIsAnsweredBeforeTheEnd)
{
    constexpr int kSlow = 999;
    constexpr int kQuick = 3;
    const unsigned ports[] = {Engine().Open(Address("udp:127.0.0.1:0"), Kept<STraffic>()).Port(),
                              Engine().Open(Address("udp:127.0.0.1:0"), Kept<STraffic>()).Port()};
    const UdpClient clients[] = {UdpClient(ports[0]), UdpClient(ports[1])};
    ASSERT_TRUE(clients[1].Send(Get("public", kSlow)));
    for (int i = 0; i < kQuick; ++i) {
        for (const UdpClient& client : clients)
            ASSERT_TRUE(client.Send(Get("public", i)));
    }
    std::atomic<bool> isHeld{true};
    Handler().onRequest = [&](const SRequest& request, SResponse&) {
        if (request.requestId != kSlow)
            return;
        Stop();
        EXPECT_TRUE(Eventually([&] { return !isHeld; }));
    };
    ServeWhile([&] {
        for (const UdpClient& client : clients) {
            for (int i = 0; i < kQuick; ++i)
                EXPECT_FALSE(client.Receive(10000).empty()) << i;
        }
        isHeld = false;
        EXPECT_EQ(ber::ReadReply(clients[1].Receive(20000)).requestId, kSlow);
    });
}

TEST_F(NetSnmpEngine, WhoHasAnAnswerFindsItCounted)
{
    STraffic& traffic = Kept<STraffic>();
    const unsigned port = Engine().Open(Address("udp:127.0.0.1:0"), traffic).Port();
    ServeWhile([&] {
        UdpClient client(port);
        for (unsigned i = 1; i <= 3000; ++i) {
            ASSERT_TRUE(client.Send(ber::Message(1, "public", 0xa0, 1, 0, 0, "")));
            ASSERT_FALSE(client.Receive().empty());
            ASSERT_EQ(traffic.answered, i);
        }
    });
}

TEST_F(NetSnmpEngine, ASuspendedAddressTakesMessagesAwayAndCountsThem)
{
    STraffic& traffic = Kept<STraffic>();
    unsigned port = Engine().Open(Address("udp:127.0.0.1:0"), traffic).Port();
    const sockaddr_in from = V4("udp:127.0.0.1:0", 0);
    const sockaddr_in to = V4("udp:127.0.0.1:0", port);
    traffic.isSuspended = true;
    SendAndServe(
        from, to, [&] { return traffic.dropped.load(); }, 1);
    EXPECT_EQ(traffic.dropped, 1u);
    EXPECT_EQ(traffic.answered, 0u);
    EXPECT_TRUE(Handler().requests.empty());
    traffic.isSuspended = false;
    Exchange(from, to);
    EXPECT_EQ(traffic.received, 2u);
    EXPECT_EQ(traffic.dropped, 1u);
    EXPECT_EQ(Handler().requests.size(), 1u) << "what was taken away does not come back";
}
