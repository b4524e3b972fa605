// Stands between a client and the agent, and keeps what the client has sent.
#pragma once

#include "UdpClient.h"

#include <atomic>
#include <thread>
#include <vector>

class UdpProxy {
public:
    explicit UdpProxy(unsigned port)
        : m_agent(port), m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof own;
        if (bind(m_socket, reinterpret_cast<sockaddr*>(&own), length) == 0 &&
            getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length) == 0)
            m_port = ntohs(own.sin_port);
        m_thread = std::thread([this] { Relay(); });
    }
    ~UdpProxy() { End(); }
    UdpProxy(const UdpProxy&) = delete;
    UdpProxy& operator=(const UdpProxy&) = delete;

    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }
    // What the client has sent; nothing is relayed any more.
    std::vector<std::string> End()
    {
        if (m_thread.joinable()) {
            m_isEnded = true;
            m_thread.join();
            close(m_socket);
        }
        return m_sent;
    }

private:
    void Relay()
    {
        std::vector<char> datagram(65536);
        while (!m_isEnded) {
            pollfd wait{m_socket, POLLIN, 0};
            if (poll(&wait, 1, 20) != 1)
                continue;
            sockaddr_in from = {};
            socklen_t length = sizeof from;
            const ssize_t count = recvfrom(m_socket, datagram.data(), datagram.size(), 0,
                                           reinterpret_cast<sockaddr*>(&from), &length);
            if (count <= 0)
                continue;
            m_sent.emplace_back(datagram.data(), static_cast<size_t>(count));
            m_agent.Send(m_sent.back());
            const std::string answer = m_agent.Receive();
            sendto(m_socket, answer.data(), answer.size(), 0, reinterpret_cast<sockaddr*>(&from),
                   length);
        }
    }

    UdpClient m_agent;
    int m_socket;
    unsigned m_port = 0;
    std::vector<std::string> m_sent;
    std::atomic<bool> m_isEnded{false};
    std::thread m_thread;
};
