// The socket of a listening address.
#pragma once

#include <memory>
#include <sys/socket.h>

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

namespace VLK::host {

// The datagrams that one call of the system has brought, as several may be waiting.
//
// Threads: one at a time.
class BDatagrams {
public:
    BDatagrams();

    // Takes those that wait at the socket, up to kMost, in the place of what was there;
    // none when none does. Does not wait.
    void Receive(int descriptor);
    unsigned Count() const { return m_count; }
    const unsigned char* Data(unsigned index) const { return m_room.get() + index * kRoom; }
    size_t Length(unsigned index) const { return m_headers[index].msg_len; }
    netsnmp_indexed_addr_pair Ends(unsigned index) const;

private:
    static constexpr unsigned kMost = 8;
    static constexpr size_t kRoom = 65536;
    static constexpr size_t kInfo = 64;

    void Prepare(unsigned index);

    std::unique_ptr<unsigned char[]> m_room; // touched where a datagram is only
    mmsghdr m_headers[kMost];
    iovec m_data[kMost];
    netsnmp_sockaddr_storage m_remotes[kMost];
    alignas(cmsghdr) unsigned char m_infos[kMost][kInfo];
    unsigned m_count = 0;
};

// Reads and writes datagrams with both their ends, for itself or for the wire library:
// the address that a message went to is the one that its answer leaves from, also over
// IPv6, of which the wire library's own functions keep the sender only. One that went to a
// broadcast or multicast address is answered from an address of the interface.
//
// Ownership: the transport outlives it, and it the transport's use.
// Threads:   that of the wire library.
class BUdpSocket {
public:
    // Takes the reading of the transport over, over IPv6 the writing too. False with
    // errno when the socket cannot tell both ends.
    bool Take(netsnmp_transport& transport, bool isV6);
    int Descriptor() const { return m_transport->sock; }

    // Back to where a datagram came from. 0, or the system's error.
    int Send(const unsigned char* message, size_t length,
             const netsnmp_indexed_addr_pair& ends) const;
    // Gives the wire library a datagram as if its transport had read it.
    static int HandOver(session_list* session, int descriptor, const unsigned char* message,
                        size_t length, const netsnmp_indexed_addr_pair& ends);

private:
    netsnmp_transport* m_transport = nullptr;
};

} // namespace VLK::host
