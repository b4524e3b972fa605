// A UDP address over IPv4 or IPv6: where the agent listens, who asks.
#pragma once

#include <cstdint>
#include <string>

namespace VLK::host {

class BTransportAddress {
public:
    BTransportAddress() = default;
    static BTransportAddress V4(const unsigned char bytes[4], unsigned port);
    static BTransportAddress V6(const unsigned char bytes[16], unsigned port);

    // Reads "udp:IP:PORT" or "udp6:[IP]:PORT"; port 0 lets the system choose.
    bool Parse(const std::string& text);
    // The form that Parse() reads.
    std::string ToString() const;

    bool IsV6() const { return m_v6; }
    // The IPv4 address, also when it is mapped into IPv6 (RFC 4291 section 2.5.5.2);
    // null when there is none.
    const unsigned char* V4Bytes() const;
    const unsigned char* Bytes() const { return m_bytes; }
    unsigned Port() const { return m_port; }
    void SetPort(unsigned port) { m_port = port; }

    bool operator==(const BTransportAddress& other) const;
    bool operator!=(const BTransportAddress& other) const { return !(*this == other); }

private:
    bool m_v6 = false;
    unsigned char m_bytes[16] = {};
    unsigned m_port = 0;
};

} // namespace VLK::host
