// IP address text.
#include "tests/support/ValueText.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLKTest;

TEST(IpAddress, DefaultIsZero) { EXPECT_EQ(Text(BIpAddress().ToString()), "0.0.0.0"); }

TEST(IpAddress, BytesAreInNetworkOrder)
{
    BIpAddress address(192, 168, 1, 254);
    EXPECT_EQ(address[0], 192);
    EXPECT_EQ(address[3], 254);
    address[3] = 255;
    EXPECT_EQ(Text(address.ToString()), "192.168.1.255");
}

TEST(IpAddress, AcceptedTable)
{
    const struct {
        const char* text;
        const char* address;
    } rows[] = {
        {"192.168.1.254", "192.168.1.254"},
        {"0.0.0.0", "0.0.0.0"},
        {"255.255.255.255", "255.255.255.255"},
        {"010.001.000.009", "10.1.0.9"},
    };
    for (const auto& row : rows) {
        BIpAddress address(9, 9, 9, 9);
        EXPECT_TRUE(address.AssignFromDottedDecimalStr(BString(row.text))) << row.text;
        EXPECT_EQ(Text(address.ToString()), row.address);
    }
}

TEST(IpAddress, EmptyPartsAreZero)
{
    const struct {
        const char* text;
        const char* address;
    } rows[] = {
        {"1..2.3", "1.0.2.3"}, {"1.2.3.", "1.2.3.0"}, {".2.3.4", "0.2.3.4"}, {"...", "0.0.0.0"}};
    for (const auto& row : rows) {
        BIpAddress address(9, 9, 9, 9);
        EXPECT_TRUE(address.AssignFromDottedDecimalStr(BString(row.text))) << row.text;
        EXPECT_EQ(Text(address.ToString()), row.address);
    }
}

TEST(IpAddress, RefusedTextLeavesTheAddress)
{
    for (const char* text : {"",
                             "1",
                             "1.2.3",
                             "256.1.1.1",
                             "1.256.1.1",
                             "1.1.256.1",
                             "1.1.1.256",
                             "1.2.3.4.5",
                             "1.2.3.x",
                             "1.2.3.4.",
                             "1.2.-3.4",
                             "+1.2.3.4",
                             " 1.2.3.4",
                             "1.2.3.4 ",
                             "1. 2.3.4",
                             "0192.168.001.004",
                             "255.255.255.2555",
                             "1.2.3.99999999",
                             "4294967297.1.1",
                             "999999999.1.1.1",
                             ".."}) {
        BIpAddress address(9, 8, 7, 6);
        EXPECT_FALSE(address.AssignFromDottedDecimalStr(BString(text))) << text;
        EXPECT_EQ(Text(address.ToString()), "9.8.7.6") << text;
    }
}

TEST(IpAddress, SixteenCharactersAreTooMany)
{
    BIpAddress address;
    EXPECT_FALSE(address.AssignFromDottedDecimalStr(BString("0255.255.255.255")));
    EXPECT_TRUE(address.AssignFromDottedDecimalStr(BString("00001.00002.3.4")));
    EXPECT_EQ(Text(address.ToString()), "1.2.3.4");
}

TEST(IpAddress, ManyDigitsAboveByteRangeDoNotWrap)
{
    BIpAddress address;
    // 2^32 + 1 in a part: wrapped it would be 1.
    EXPECT_FALSE(address.AssignFromDottedDecimalStr(BString("4294967297.1.1.")));
    EXPECT_FALSE(address.AssignFromDottedDecimalStr(BString("...4294967297")));
}

TEST(IpAddress, ANulIsNoDigit)
{
    BIpAddress address;
    EXPECT_FALSE(address.AssignFromDottedDecimalStr(BString("1.2.3.4\0", 8)));
}
