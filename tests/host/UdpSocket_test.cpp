#include "host/wire/UdpSocket.h"

#include "host/Descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <vector>

using namespace VLK::host;

namespace {

// A socket of the loopback interface, as the wire library has it in a transport.
class Bound {
public:
    Bound() : m_descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        m_own.sin_family = AF_INET;
        m_own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof m_own;
        EXPECT_EQ(bind(Get(), reinterpret_cast<sockaddr*>(&m_own), length), 0);
        EXPECT_EQ(getsockname(Get(), reinterpret_cast<sockaddr*>(&m_own), &length), 0);
        m_transport.sock = Get();
        EXPECT_TRUE(m_socket.Take(m_transport, false));
    }
    int Get() const { return m_descriptor.Get(); }
    const BUdpSocket& Socket() const { return m_socket; }
    const sockaddr_in& Own() const { return m_own; }
    void SendTo(const Bound& other, const std::string& datagram) const
    {
        EXPECT_EQ(sendto(Get(), datagram.data(), datagram.size(), 0,
                         reinterpret_cast<const sockaddr*>(&other.m_own), sizeof other.m_own),
                  static_cast<ssize_t>(datagram.size()));
    }

private:
    BDescriptor m_descriptor;
    sockaddr_in m_own = {};
    netsnmp_transport m_transport = {};
    BUdpSocket m_socket;
};

std::string TextOf(const BDatagrams& datagrams, unsigned index)
{
    return {reinterpret_cast<const char*>(datagrams.Data(index)), datagrams.Length(index)};
}

netsnmp_indexed_addr_pair To(const sockaddr_in& remote)
{
    netsnmp_indexed_addr_pair ends = {};
    ends.remote_addr.sin = remote;
    ends.local_addr.sin.sin_family = AF_INET;
    return ends;
}

} // namespace

TEST(UdpSocket, WhereNoneWaitsNoneIsThere)
{
    const Bound agent;
    const Bound manager;
    BDatagrams datagrams;
    datagrams.Receive(agent.Get());
    EXPECT_EQ(datagrams.Count(), 0u);
    manager.SendTo(agent, "one");
    datagrams.Receive(agent.Get());
    EXPECT_EQ(datagrams.Count(), 1u);
    datagrams.Receive(agent.Get());
    EXPECT_EQ(datagrams.Count(), 0u) << "the one before is taken";
    datagrams.Receive(-1);
    EXPECT_EQ(datagrams.Count(), 0u);
}

TEST(UdpSocket, ThoseThatWaitComeInTheirOrderEachWithItsEnds)
{
    constexpr size_t kLongest = 65507;
    const Bound agent;
    const Bound managers[2];
    const std::vector<std::string> sent = {
        "first", "",  std::string(kLongest, 'x'), "4",   "5", "6", "7",
        "8",     "9", std::string(9000, 'y'),     "last"};
    for (size_t i = 0; i < sent.size(); ++i)
        managers[i % 2].SendTo(agent, sent[i]);
    BDatagrams datagrams;
    std::vector<std::string> received;
    for (datagrams.Receive(agent.Get()); datagrams.Count() > 0; datagrams.Receive(agent.Get())) {
        for (unsigned i = 0; i < datagrams.Count(); ++i) {
            const netsnmp_indexed_addr_pair ends = datagrams.Ends(i);
            EXPECT_EQ(ends.remote_addr.sin.sin_port, managers[received.size() % 2].Own().sin_port);
            EXPECT_EQ(ends.remote_addr.sin.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
            EXPECT_EQ(ends.local_addr.sin.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
            received.push_back(TextOf(datagrams, i));
        }
    }
    EXPECT_TRUE(received == sent) << received.size();
}

TEST(UdpSocket, WhatCannotBeSentTellsWhy)
{
    const Bound agent;
    const Bound manager;
    const std::vector<unsigned char> bytes(70000, 'z');
    const netsnmp_indexed_addr_pair ends = To(manager.Own());
    EXPECT_EQ(agent.Socket().Send(bytes.data(), 3, ends), 0);
    EXPECT_EQ(agent.Socket().Send(bytes.data(), bytes.size(), ends), EMSGSIZE);
    sockaddr_in broadcast = manager.Own();
    broadcast.sin_addr.s_addr = htonl(INADDR_BROADCAST);
    EXPECT_NE(agent.Socket().Send(bytes.data(), 3, To(broadcast)), 0) << "nobody has allowed it";
    BDatagrams datagrams;
    datagrams.Receive(manager.Get());
    ASSERT_EQ(datagrams.Count(), 1u);
    EXPECT_EQ(TextOf(datagrams, 0), "zzz");
}
