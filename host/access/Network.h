// Networks that requests may come from.
#pragma once

#include "host/TransportAddress.h"

#include <string>
#include <vector>

namespace VLK::host {

// An IPv4 or IPv6 prefix. Addresses and networks that are IPv4 mapped into IPv6
// (RFC 4291 section 2.5.5.2) count as IPv4: "::/0" does not hold them.
class BNetwork {
public:
    // Reads "IP/BITS", or "IP" for that one address. Why it is refused, in words
    // that follow the quoted text; empty when it is not.
    std::string Parse(const std::string& text);
    bool Holds(const BTransportAddress& address) const;
    // The form that Parse() reads, with its bits.
    std::string ToString() const;

    // 127.0.0.0/8 and ::1.
    static std::vector<BNetwork> ThisMachine();
    static std::vector<BNetwork> Anywhere();

private:
    bool m_v6 = false;
    unsigned m_bits = 32; // of 0.0.0.0, which nobody has
    unsigned char m_bytes[16] = {};
};

} // namespace VLK::host
