#include "host/wire/DatagramCheck.h"

#include "Ber.h"

#include <gtest/gtest.h>

using VLK::host::KeepsItsNumbers;

namespace {

const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const int kSet = 0xa3;

bool Keeps(const ber::Bytes& message)
{
    return KeepsItsNumbers(reinterpret_cast<const unsigned char*>(message.data()), message.size());
}

bool KeepsValue(int tag, const ber::Bytes& content)
{
    return Keeps(
        ber::Message(1, "private", kSet, 1, 0, 0, ber::Binding(kContact, ber::Tlv(tag, content))));
}

ber::Bytes Bytes(std::initializer_list<int> values)
{
    ber::Bytes bytes;
    for (int value : values)
        bytes += static_cast<char>(value);
    return bytes;
}

} // namespace

TEST(DatagramCheck, IntegersOf32BitsPassInAnyLength)
{
    for (int tag : {0x02, 0x41, 0x42, 0x43, 0x47}) {
        EXPECT_TRUE(KeepsValue(tag, ""));
        EXPECT_TRUE(KeepsValue(tag, Bytes({0x80, 0, 0, 0})));
        EXPECT_TRUE(KeepsValue(tag, Bytes({0, 0xff, 0xff, 0xff, 0xff})));
        EXPECT_TRUE(KeepsValue(tag, Bytes({0, 0, 0, 0, 0, 0, 0, 5})));
        EXPECT_TRUE(KeepsValue(tag, Bytes({0xff, 0xff, 0x80, 0, 0, 0})));
    }
}

TEST(DatagramCheck, WiderIntegersDoNotPass)
{
    for (int tag : {0x02, 0x41, 0x42, 0x43, 0x47}) {
        EXPECT_FALSE(KeepsValue(tag, Bytes({1, 0, 0, 0, 5})));
        EXPECT_FALSE(KeepsValue(tag, Bytes({0xff, 0x7f, 0xff, 0xff, 0xff})));
        EXPECT_FALSE(KeepsValue(tag, Bytes({0xfe, 0xff, 0xff, 0xff, 0xff})));
        EXPECT_FALSE(KeepsValue(tag, Bytes({0, 1, 0, 0, 0, 5})));
    }
    EXPECT_TRUE(KeepsValue(0x46, Bytes({1, 0, 0, 0, 5}))) << "Counter64";
    EXPECT_TRUE(KeepsValue(0x04, Bytes({1, 0, 0, 0, 5}))) << "octets";
}

TEST(DatagramCheck, ArcsAbove32BitsDoNotPass)
{
    EXPECT_TRUE(KeepsValue(0x06, Bytes({0x2b, 0x8f, 0xff, 0xff, 0xff, 0x7f})));
    EXPECT_FALSE(KeepsValue(0x06, Bytes({0x2b, 0x90, 0x80, 0x80, 0x80, 0x00})));
    // 2^64 + 4, which would wrap to 4.
    ber::Bytes wrapped =
        Bytes({0x2b, 6, 1, 2, 1, 1, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x04, 0});
    EXPECT_FALSE(KeepsValue(0x06, wrapped));
    ber::Bytes binding = ber::Tlv(0x30, ber::Tlv(6, wrapped) + ber::Tlv(4, "x"));
    EXPECT_FALSE(Keeps(ber::Message(1, "private", kSet, 1, 0, 0, binding))) << "as a name";
}

TEST(DatagramCheck, WhatIsMalformedIsLeftToTheDecoder)
{
    ber::Bytes whole = ber::Message(1, "private", kSet, 1, 0, 0, ber::Binding(kContact));
    for (size_t length = 0; length <= whole.size(); ++length)
        EXPECT_TRUE(Keeps(whole.substr(0, length)));
    EXPECT_TRUE(Keeps(Bytes({0x30, 0xff})));
    EXPECT_TRUE(Keeps(Bytes({0x30, 0x88, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff})));
    ber::Bytes deep;
    for (int i = 0; i < 10000; ++i)
        deep = ber::Tlv(0x30, deep).substr(0, 60000);
    EXPECT_TRUE(Keeps(deep));
}
