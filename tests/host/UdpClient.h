// A UDP socket that talks to the agent over the IPv4 loopback.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

// Whether the machine has IPv6.
inline bool HasLoopbackV6()
{
    const int descriptor = socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in6 address = {};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    const bool isBound = descriptor >= 0 && bind(descriptor, reinterpret_cast<sockaddr*>(&address),
                                                 sizeof address) == 0;
    close(descriptor);
    return isBound;
}

class UdpClient {
public:
    explicit UdpClient(unsigned port) : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in to = {};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<unsigned short>(port));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(m_socket, reinterpret_cast<sockaddr*>(&to), sizeof to), 0);
    }
    ~UdpClient() { close(m_socket); }
    UdpClient(const UdpClient&) = delete;
    UdpClient& operator=(const UdpClient&) = delete;

    bool Send(const std::string& datagram) const
    {
        return send(m_socket, datagram.data(), datagram.size(), 0) ==
               static_cast<ssize_t>(datagram.size());
    }

    // Empty when nothing comes for that long.
    std::string Receive(int milliseconds = 10000) const
    {
        pollfd wait{m_socket, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1)
            return "";
        char datagram[65536]; // not cleared: a test may receive very many
        const ssize_t count = recv(m_socket, datagram, sizeof datagram, 0);
        return std::string(datagram, count > 0 ? static_cast<size_t>(count) : 0);
    }

private:
    int m_socket;
};
