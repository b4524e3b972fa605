#include "host/access/Network.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>

namespace VLK::host {

namespace {

constexpr unsigned kV4Bits = 32;
constexpr unsigned kV6Bits = 128;
constexpr unsigned kMappedBits = kV6Bits - kV4Bits;

bool ParseBits(const std::string& text, unsigned most, unsigned& bits)
{
    if (text.empty() || text.size() > 3 || text.find_first_not_of("0123456789") != text.npos)
        return false;
    bits = static_cast<unsigned>(std::stoul(text));
    return bits <= most;
}

bool SameBits(const unsigned char* a, const unsigned char* b, unsigned bits)
{
    if (std::memcmp(a, b, bits / 8) != 0)
        return false;
    return bits % 8 == 0 || (a[bits / 8] ^ b[bits / 8]) >> (8 - bits % 8) == 0;
}

void ClearFrom(unsigned char* bytes, unsigned bits)
{
    if (bits % 8)
        bytes[bits / 8] = static_cast<unsigned char>(bytes[bits / 8] & (0xff00 >> (bits % 8)));
    std::fill(bytes + (bits + 7) / 8, bytes + 16, static_cast<unsigned char>(0));
}

std::string TextOf(bool v6, const unsigned char* bytes)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(v6 ? AF_INET6 : AF_INET, bytes, text, sizeof text);
    return text;
}

} // namespace

std::string BNetwork::Parse(const std::string& text)
{
    BNetwork parsed;
    size_t slash = text.find('/');
    std::string host = text.substr(0, slash);
    parsed.m_v6 = host.find(':') != host.npos;
    if (host.find('\0') != host.npos ||
        inet_pton(parsed.m_v6 ? AF_INET6 : AF_INET, host.c_str(), parsed.m_bytes) != 1)
        return "is no network: write it like 192.0.2.0/24 or 2001:db8::/32";
    unsigned most = parsed.m_v6 ? kV6Bits : kV4Bits;
    parsed.m_bits = most;
    if (slash != text.npos && !ParseBits(text.substr(slash + 1), most, parsed.m_bits))
        return "has no prefix of 0 to " + std::to_string(most) + " bits";

    unsigned char whole[16];
    std::memcpy(whole, parsed.m_bytes, sizeof whole);
    ClearFrom(parsed.m_bytes, parsed.m_bits);
    if (std::memcmp(whole, parsed.m_bytes, sizeof whole) != 0)
        return "goes beyond its prefix: the network is " + parsed.ToString();

    BTransportAddress address = BTransportAddress::V6(parsed.m_bytes, 0);
    const unsigned char* v4 = address.V4Bytes();
    if (parsed.m_v6 && v4 && parsed.m_bits >= kMappedBits) {
        std::memmove(parsed.m_bytes, parsed.m_bytes + 12, 4);
        parsed.m_v6 = false;
        parsed.m_bits -= kMappedBits;
    }
    *this = parsed;
    return "";
}

std::string BNetwork::ToString() const
{
    return TextOf(m_v6, m_bytes) + "/" + std::to_string(m_bits);
}

bool BNetwork::Holds(const BTransportAddress& address) const
{
    const unsigned char* v4 = address.V4Bytes();
    if (m_v6 == (v4 != nullptr))
        return false;
    return SameBits(m_v6 ? address.Bytes() : v4, m_bytes, m_bits);
}

std::vector<BNetwork> BNetwork::ThisMachine()
{
    std::vector<BNetwork> networks(2);
    networks[0].Parse("127.0.0.0/8");
    networks[1].Parse("::1");
    return networks;
}

std::vector<BNetwork> BNetwork::Anywhere()
{
    std::vector<BNetwork> networks(2);
    networks[0].Parse("0.0.0.0/0");
    networks[1].Parse("::/0");
    return networks;
}

} // namespace VLK::host
