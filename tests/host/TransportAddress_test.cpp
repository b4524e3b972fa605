#include "host/TransportAddress.h"

#include <gtest/gtest.h>

using VLK::host::BTransportAddress;

namespace {

std::string Canonical(const std::string& text)
{
    BTransportAddress address;
    return address.Parse(text) ? address.ToString() : "refused";
}

} // namespace

TEST(TransportAddress, ReadsAndWritesBothForms)
{
    EXPECT_EQ(Canonical("udp:127.0.0.1:1161"), "udp:127.0.0.1:1161");
    EXPECT_EQ(Canonical("udp:0.0.0.0:0"), "udp:0.0.0.0:0");
    EXPECT_EQ(Canonical("udp6:[::1]:65535"), "udp6:[::1]:65535");
    EXPECT_EQ(Canonical("udp6:[0:0:0:0:0:0:0:1]:161"), "udp6:[::1]:161");
}

TEST(TransportAddress, RefusesWhatIsNoAddressAndStaysUnchanged)
{
    for (const char* text :
         {"", "udp", "udp:", "udp:127.0.0.1", "udp:127.0.0.1:", "udp:127.0.0.1:65536",
          "udp:127.0.0.1:-1", "udp:127.0.0.1:1x", "udp:127.0.0:1", "udp:localhost:161",
          "tcp:127.0.0.1:161", "127.0.0.1:161", "udp6:::1:161", "udp6:[::1]", "udp6:[::1:161",
          "udp6:[127.0.0.1]:161", "udp:[::1]:161", "udp:127.0.0.1:000161", " udp:127.0.0.1:161"}) {
        BTransportAddress address;
        address.Parse("udp:10.1.2.3:4");
        EXPECT_FALSE(address.Parse(text)) << text;
        EXPECT_EQ(address.ToString(), "udp:10.1.2.3:4") << text;
    }
    BTransportAddress address;
    EXPECT_FALSE(address.Parse(std::string("udp:127.0.0.1\0:161", 18)));
}
