#include "modules/interfaces/LinkSocket.h"

#include <cerrno>
#include <libmnl/libmnl.h>
#include <system_error>

namespace VLK::modules {

namespace {

// The kernel's largest datagram of a dump.
constexpr std::size_t kLargest = 32768;

} // namespace

CLinkSocket::CLinkSocket(unsigned groups, EReading reading) : m_socket(nullptr), m_buffer(kLargest)
{
    const int flags = SOCK_CLOEXEC | (reading == eReadingGoesOn ? SOCK_NONBLOCK : 0);
    m_socket = mnl_socket_open2(NETLINK_ROUTE, flags);
    if (!m_socket)
        throw std::system_error(errno, std::generic_category(), "rtnetlink");
    if (mnl_socket_bind(m_socket, groups, MNL_SOCKET_AUTOPID) < 0) {
        const int error = errno;
        mnl_socket_close(m_socket);
        throw std::system_error(error, std::generic_category(), "rtnetlink");
    }
}

CLinkSocket::~CLinkSocket() { mnl_socket_close(m_socket); }

int CLinkSocket::Descriptor() const { return mnl_socket_get_fd(m_socket); }

void CLinkSocket::Send(const nlmsghdr& message)
{
    if (mnl_socket_sendto(m_socket, &message, message.nlmsg_len) < 0)
        throw std::system_error(errno, std::generic_category(), "rtnetlink");
}

bool CLinkSocket::Receive()
{
    m_received = static_cast<int>(mnl_socket_recvfrom(m_socket, m_buffer.data(), m_buffer.size()));
    return m_received >= 0;
}

const nlmsghdr* CLinkSocket::Checked(const nlmsghdr* message, int left)
{
    return mnl_nlmsg_ok(message, left) ? message : nullptr;
}

const nlmsghdr* CLinkSocket::Next(const nlmsghdr* message, int& left)
{
    return mnl_nlmsg_next(message, &left);
}

} // namespace VLK::modules
