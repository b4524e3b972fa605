#include "host/wire/Udp6Ends.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>

namespace VLK::host {

namespace {

struct alignas(cmsghdr) SPacketInfo {
    unsigned char bytes[CMSG_SPACE(sizeof(in6_pktinfo))] = {};
};

msghdr MakeMessage(netsnmp_indexed_addr_pair& ends, iovec& data, SPacketInfo& info)
{
    msghdr message = {};
    message.msg_name = &ends.remote_addr.sin6;
    message.msg_namelen = sizeof ends.remote_addr.sin6;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = info.bytes;
    message.msg_controllen = sizeof info.bytes;
    return message;
}

void ReadLocalEnd(msghdr& message, netsnmp_indexed_addr_pair& ends)
{
    ends.local_addr.sin6.sin6_family = AF_INET6;
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level != IPPROTO_IPV6 || part->cmsg_type != IPV6_PKTINFO)
            continue;
        in6_pktinfo info;
        std::memcpy(&info, CMSG_DATA(part), sizeof info);
        ends.local_addr.sin6.sin6_addr = info.ipi6_addr;
        ends.if_index = static_cast<int>(info.ipi6_ifindex);
    }
}

void WriteLocalEnd(msghdr& message, const netsnmp_indexed_addr_pair& ends)
{
    const in6_addr& local = ends.local_addr.sin6.sin6_addr;
    in6_pktinfo info = {};
    if (!IN6_IS_ADDR_MULTICAST(&local)) // which is nobody's source: the system chooses
        info.ipi6_addr = local;
    // Only a link-local address means nothing without its interface.
    if (IN6_IS_ADDR_LINKLOCAL(&local))
        info.ipi6_ifindex = static_cast<unsigned>(ends.if_index);
    cmsghdr* part = CMSG_FIRSTHDR(&message);
    part->cmsg_level = IPPROTO_IPV6;
    part->cmsg_type = IPV6_PKTINFO;
    part->cmsg_len = CMSG_LEN(sizeof info);
    std::memcpy(CMSG_DATA(part), &info, sizeof info);
}

// The wire library frees what is put into `*opaque`.
int Receive(netsnmp_transport* transport, void* buffer, int size, void** opaque, int* opaqueLength)
{
    *opaque = nullptr;
    *opaqueLength = 0;
    auto* ends =
        static_cast<netsnmp_indexed_addr_pair*>(std::calloc(1, sizeof(netsnmp_indexed_addr_pair)));
    if (!ends)
        return -1;
    SPacketInfo info;
    iovec data = {buffer, static_cast<size_t>(size)};
    msghdr message = MakeMessage(*ends, data, info);
    ssize_t length;
    do
        length = recvmsg(transport->sock, &message, 0);
    while (length < 0 && errno == EINTR);
    if (length < 0) {
        std::free(ends);
        return -1;
    }
    ReadLocalEnd(message, *ends);
    *opaque = ends;
    *opaqueLength = sizeof *ends;
    return static_cast<int>(length);
}

// NOLINTNEXTLINE(readability-non-const-parameter): the wire library's signature
int Send(netsnmp_transport* transport, const void* buffer, int size, void** opaque,
         int* opaqueLength)
{
    netsnmp_indexed_addr_pair ends;
    if (!opaque || !*opaque || *opaqueLength != static_cast<int>(sizeof ends))
        return -1;
    std::memcpy(&ends, *opaque, sizeof ends);
    SPacketInfo info;
    iovec data = {const_cast<void*>(buffer), static_cast<size_t>(size)};
    msghdr message = MakeMessage(ends, data, info);
    WriteLocalEnd(message, ends);
    ssize_t length;
    do
        length = sendmsg(transport->sock, &message, 0);
    while (length < 0 && errno == EINTR);
    return static_cast<int>(length);
}

} // namespace

bool KeepBothEnds(netsnmp_transport& transport)
{
    int on = 1;
    if (setsockopt(transport.sock, IPPROTO_IPV6, IPV6_RECVPKTINFO, &on, sizeof on) != 0)
        return false;
    transport.f_recv = Receive;
    transport.f_send = Send;
    return true;
}

} // namespace VLK::host
