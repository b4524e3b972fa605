#include "host/HostError.h"

#include "Ber.h"
#include "EngineTest.h"
#include "UdpClient.h"

#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <set>
#include <sys/socket.h>

using namespace VLK;
using namespace VLK::host;
using namespace VLK::Test;

namespace {

class NetSnmpEngine : public EngineTest {
protected:
    // Sends from one address to the other and serves until the answer is
    // there; returns where it came from.
    template <class TAddress>
    TAddress Exchange(const TAddress& from, const TAddress& to)
    {
        int client = SendFrom(from, to);
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
        int client = SendFrom(from, to);
        ServeWhile([&] { EXPECT_TRUE(Eventually([&] { return count() == expected; })); });
        pollfd wait{client, POLLIN, 0};
        EXPECT_EQ(poll(&wait, 1, 0), 0);
        close(client);
    }

    template <class TAddress>
    static int SendFrom(const TAddress& from, const TAddress& to)
    {
        int client = socket(reinterpret_cast<const sockaddr&>(from).sa_family, SOCK_DGRAM, 0);
        EXPECT_EQ(bind(client, reinterpret_cast<const sockaddr*>(&from), sizeof from), 0);
        ber::Bytes datagram =
            ber::Message(1, "any", 0xa0, 1, 0, 0, ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}));
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

bool HasLoopbackV6()
{
    int descriptor = socket(AF_INET6, SOCK_DGRAM, 0);
    sockaddr_in6 address = LoopbackV6(0);
    bool bound = descriptor >= 0 &&
                 bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return bound;
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
