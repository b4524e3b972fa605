#include "host/TransportAddress.h"

#include <arpa/inet.h>
#include <cstring>

namespace VLK::host {

namespace {

const unsigned char kMappedPrefix[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};

bool StripPrefix(std::string& text, const char* prefix)
{
    size_t length = std::strlen(prefix);
    if (text.compare(0, length, prefix) != 0)
        return false;
    text.erase(0, length);
    return true;
}

bool ParsePort(const std::string& text, unsigned& port)
{
    if (text.empty() || text.size() > 5 || text.find_first_not_of("0123456789") != text.npos)
        return false;
    unsigned long value = std::stoul(text);
    if (value > 65535)
        return false;
    port = static_cast<unsigned>(value);
    return true;
}

} // namespace

bool BTransportAddress::operator==(const BTransportAddress& other) const
{
    return m_v6 == other.m_v6 && m_port == other.m_port &&
           std::memcmp(m_bytes, other.m_bytes, m_v6 ? 16 : 4) == 0;
}

BTransportAddress BTransportAddress::V4(const unsigned char bytes[4], unsigned port)
{
    BTransportAddress address;
    std::memcpy(address.m_bytes, bytes, 4);
    address.m_port = port;
    return address;
}

BTransportAddress BTransportAddress::V6(const unsigned char bytes[16], unsigned port)
{
    BTransportAddress address;
    address.m_v6 = true;
    std::memcpy(address.m_bytes, bytes, 16);
    address.m_port = port;
    return address;
}

bool BTransportAddress::Parse(const std::string& text)
{
    BTransportAddress parsed;
    std::string rest = text;
    parsed.m_v6 = StripPrefix(rest, "udp6:[");
    if (!parsed.m_v6 && !StripPrefix(rest, "udp:"))
        return false;
    const char* separator = parsed.m_v6 ? "]:" : ":";
    size_t end = rest.rfind(separator);
    if (end == rest.npos)
        return false;
    std::string host = rest.substr(0, end);
    if (host.find('\0') != host.npos ||
        !ParsePort(rest.substr(end + std::strlen(separator)), parsed.m_port))
        return false;
    if (inet_pton(parsed.m_v6 ? AF_INET6 : AF_INET, host.c_str(), parsed.m_bytes) != 1)
        return false;
    *this = parsed;
    return true;
}

std::string BTransportAddress::ToString() const
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(m_v6 ? AF_INET6 : AF_INET, m_bytes, text, sizeof text);
    std::string host = m_v6 ? "udp6:[" + std::string(text) + "]" : "udp:" + std::string(text);
    return host + ":" + std::to_string(m_port);
}

const unsigned char* BTransportAddress::V4Bytes() const
{
    if (!m_v6)
        return m_bytes;
    return std::memcmp(m_bytes, kMappedPrefix, sizeof kMappedPrefix) == 0 ? m_bytes + 12 : nullptr;
}

} // namespace VLK::host
