// A socket that notifications are sent to.
#pragma once

#include "Ber.h"

#include <arpa/inet.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

// Where notifications go. Of every three informs one is not answered.
class SoakReceiver {
public:
    // Each datagram may be looked at.
    explicit SoakReceiver(std::function<void(const ber::Bytes&)> look = [](const ber::Bytes&) {})
        : m_look(std::move(look)), m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof own;
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&own), length), 0);
        EXPECT_EQ(getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length), 0);
        m_port = ntohs(own.sin_port);
    }
    ~SoakReceiver() { close(m_socket); }
    SoakReceiver(const SoakReceiver&) = delete;
    SoakReceiver& operator=(const SoakReceiver&) = delete;

    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }
    int Taken() const { return m_taken; }
    int Answered() const { return m_answered; }

    // For a datagram, as long as that.
    void Wait(int milliseconds) const
    {
        pollfd wait{m_socket, POLLIN, 0};
        poll(&wait, 1, milliseconds);
    }
    void TakeAll()
    {
        char datagram[2000];
        sockaddr_in from = {};
        socklen_t length = sizeof from;
        for (;;) {
            const ssize_t count = recvfrom(m_socket, datagram, sizeof datagram, MSG_DONTWAIT,
                                           reinterpret_cast<sockaddr*>(&from), &length);
            if (count <= 0)
                return;
            Answer(ber::Bytes(datagram, static_cast<size_t>(count)), from);
        }
    }

private:
    void Answer(ber::Bytes datagram, const sockaddr_in& to)
    {
        m_look(datagram);
        const size_t inform = datagram.find('\xa6');
        if (++m_taken % 3 == 0 || inform == datagram.npos)
            return;
        datagram[inform] = '\xa2';
        sendto(m_socket, datagram.data(), datagram.size(), 0,
               reinterpret_cast<const sockaddr*>(&to), sizeof to);
        ++m_answered;
    }

    const std::function<void(const ber::Bytes&)> m_look;
    int m_socket;
    unsigned m_port = 0;
    int m_taken = 0;
    int m_answered = 0;
};
