#include "host/wire/UdpSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <net-snmp/library/large_fd_set.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace VLK::host {

namespace {

struct alignas(cmsghdr) SPacketInfo {
    unsigned char bytes[CMSG_SPACE(sizeof(in6_pktinfo))]; // the larger one
};

// What the transport reads next, on the thread that has it read.
struct SHandedOver {
    const unsigned char* message;
    size_t length;
    const netsnmp_indexed_addr_pair* ends;
};
thread_local const SHandedOver* t_handedOver = nullptr;

msghdr MakeMessage(sockaddr* remote, socklen_t size, iovec& data)
{
    msghdr message = {};
    message.msg_name = remote;
    message.msg_namelen = size;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    return message;
}

void ReadLocalEnd(msghdr& message, netsnmp_indexed_addr_pair& ends)
{
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == IPPROTO_IPV6 && part->cmsg_type == IPV6_PKTINFO) {
            in6_pktinfo info;
            std::memcpy(&info, CMSG_DATA(part), sizeof info);
            ends.local_addr.sin6.sin6_family = AF_INET6;
            ends.local_addr.sin6.sin6_addr = info.ipi6_addr;
            ends.if_index = static_cast<int>(info.ipi6_ifindex);
        } else if (part->cmsg_level == IPPROTO_IP && part->cmsg_type == IP_PKTINFO) {
            in_pktinfo info;
            std::memcpy(&info, CMSG_DATA(part), sizeof info);
            ends.local_addr.sin.sin_family = AF_INET;
            ends.local_addr.sin.sin_addr =
                info.ipi_spec_dst; // nothing is sent from a broadcast one
            ends.if_index = info.ipi_ifindex;
        }
    }
}

template <class TInfo>
void WriteInfo(msghdr& message, SPacketInfo& room, int level, int type, const TInfo& info)
{
    message.msg_control = room.bytes;
    message.msg_controllen = CMSG_SPACE(sizeof info);
    cmsghdr* part = CMSG_FIRSTHDR(&message);
    part->cmsg_level = level;
    part->cmsg_type = type;
    part->cmsg_len = CMSG_LEN(sizeof info);
    std::memcpy(CMSG_DATA(part), &info, sizeof info);
}

void WriteLocalEnd(msghdr& message, SPacketInfo& room, const netsnmp_indexed_addr_pair& ends)
{
    room = {};
    if (ends.remote_addr.sa.sa_family != AF_INET6) {
        in_pktinfo info = {};
        info.ipi_spec_dst = ends.local_addr.sin.sin_addr;
        return WriteInfo(message, room, IPPROTO_IP, IP_PKTINFO, info);
    }
    const in6_addr& local = ends.local_addr.sin6.sin6_addr;
    in6_pktinfo info = {};
    if (!IN6_IS_ADDR_MULTICAST(&local)) // which is nobody's source: the system chooses
        info.ipi6_addr = local;
    // Only a link-local address means nothing without its interface.
    if (IN6_IS_ADDR_LINKLOCAL(&local))
        info.ipi6_ifindex = static_cast<unsigned>(ends.if_index);
    WriteInfo(message, room, IPPROTO_IPV6, IPV6_PKTINFO, info);
}

// Without what the other family has.
socklen_t SizeOf(const netsnmp_sockaddr_storage& address)
{
    return address.sa.sa_family == AF_INET6 ? sizeof address.sin6 : sizeof address.sin;
}

ssize_t SendTo(int descriptor, const void* bytes, size_t length,
               const netsnmp_indexed_addr_pair& ends)
{
    netsnmp_sockaddr_storage remote = ends.remote_addr;
    iovec data = {const_cast<void*>(bytes), length};
    msghdr message = MakeMessage(&remote.sa, SizeOf(remote), data);
    SPacketInfo room;
    WriteLocalEnd(message, room, ends);
    return sendmsg(descriptor, &message, MSG_DONTWAIT);
}

// The wire library frees what is put into `*opaque`.
int ReadHandedOver(netsnmp_transport*, void* buffer, int size, void** opaque, int* opaqueLength)
{
    *opaque = nullptr;
    *opaqueLength = 0;
    const SHandedOver* given = t_handedOver;
    if (!given)
        return -1;
    void* ends = std::malloc(sizeof *given->ends);
    if (!ends)
        return -1;
    std::memcpy(ends, given->ends, sizeof *given->ends);
    *opaque = ends;
    *opaqueLength = sizeof *given->ends;
    const size_t length = std::min(given->length, static_cast<size_t>(size));
    std::memcpy(buffer, given->message, length);
    return static_cast<int>(length);
}

// The signature is the wire library's.
int SendOverV6(netsnmp_transport* transport, const void* buffer, int size, void** opaque,
               int* opaqueLength) // NOLINT(readability-non-const-parameter)
{
    netsnmp_indexed_addr_pair ends;
    if (!opaque || !*opaque || *opaqueLength != static_cast<int>(sizeof ends))
        return -1;
    std::memcpy(&ends, *opaque, sizeof ends);
    return static_cast<int>(SendTo(transport->sock, buffer, static_cast<size_t>(size), ends));
}

} // namespace

// What describes a datagram is room, written before it is read.
// cppcheck-suppress uninitMemberVar
BDatagrams::BDatagrams() : m_room(new unsigned char[kMost * kRoom])
{
    static_assert(kInfo >= sizeof(SPacketInfo), "both families have room");
    for (unsigned i = 0; i < kMost; ++i) {
        m_data[i] = {m_room.get() + i * kRoom, kRoom};
        m_headers[i] = {};
        Prepare(i);
    }
}

void BDatagrams::Prepare(unsigned index)
{
    msghdr& header = m_headers[index].msg_hdr;
    header = MakeMessage(&m_remotes[index].sa, sizeof m_remotes[index], m_data[index]);
    header.msg_control = m_infos[index];
    header.msg_controllen = kInfo;
}

void BDatagrams::Receive(int descriptor)
{
    for (unsigned i = 0; i < m_count; ++i)
        Prepare(i); // the system has written there
    const int count = recvmmsg(descriptor, m_headers, kMost, MSG_DONTWAIT, nullptr);
    m_count = count > 0 ? static_cast<unsigned>(count) : 0;
}

netsnmp_indexed_addr_pair BDatagrams::Ends(unsigned index) const
{
    netsnmp_indexed_addr_pair ends = {};
    msghdr header = m_headers[index].msg_hdr;
    std::memcpy(&ends.remote_addr, &m_remotes[index], header.msg_namelen);
    ReadLocalEnd(header, ends);
    return ends;
}

bool BUdpSocket::Take(netsnmp_transport& transport, bool isV6)
{
    const int on = 1;
    if (setsockopt(transport.sock, isV6 ? IPPROTO_IPV6 : IPPROTO_IP,
                   isV6 ? IPV6_RECVPKTINFO : IP_PKTINFO, &on, sizeof on) != 0)
        return false;
    transport.f_recv = ReadHandedOver;
    if (isV6)
        transport.f_send = SendOverV6;
    m_transport = &transport;
    return true;
}

int BUdpSocket::Send(const unsigned char* message, size_t length,
                     const netsnmp_indexed_addr_pair& ends) const
{
    return SendTo(Descriptor(), message, length, ends) >= 0 ? 0 : errno;
}

int BUdpSocket::HandOver(session_list* session, int descriptor, const unsigned char* message,
                         size_t length, const netsnmp_indexed_addr_pair& ends)
{
    const SHandedOver given{message, length, &ends};
    netsnmp_large_fd_set ready;
    netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
    netsnmp_large_fd_setfd(descriptor, &ready);
    t_handedOver = &given;
    const int status = snmp_sess_read2(session, &ready);
    t_handedOver = nullptr;
    netsnmp_large_fd_set_cleanup(&ready);
    return status;
}

} // namespace VLK::host
