#include "host/wire/DatagramCheck.h"

#include "BadMessages.h"
#include "StrictReader.h"
#include "tests/support/Seed.h"

#include <gtest/gtest.h>

using VLK::host::IsSound;
using VLK::host::MessageVersion;

namespace {

const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const int kSet = 0xa3;

bool Keeps(const ber::Bytes& message)
{
    return IsSound(reinterpret_cast<const unsigned char*>(message.data()), message.size());
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
        EXPECT_FALSE(KeepsValue(tag, "")) << "no octet at all";
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

TEST(DatagramCheck, NamesOf128ArcsPassAndNoLongerOnes)
{
    EXPECT_TRUE(KeepsValue(0x06, ber::Bytes(127, '\1')));
    EXPECT_FALSE(KeepsValue(0x06, ber::Bytes(128, '\1')));
    EXPECT_FALSE(KeepsValue(0x06, Bytes({0x2b, 0x81}))) << "an arc that does not end";
}

TEST(DatagramCheck, WhatIsNotWholeDoesNotPass)
{
    const ber::Bytes whole = ber::Message(1, "private", kSet, 1, 0, 0, ber::Binding(kContact));
    EXPECT_TRUE(Keeps(whole));
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(Keeps(whole.substr(0, length))) << length;
    EXPECT_FALSE(Keeps(whole + '\0')) << "an octet too many";
    EXPECT_FALSE(Keeps(Bytes({0x30, 0xff})));
    EXPECT_FALSE(Keeps(Bytes({0x30, 0x80, 0, 0}))) << "without a length";
    EXPECT_FALSE(Keeps(Bytes({0x30, 0x88, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff})));
    EXPECT_FALSE(Keeps(Bytes({0x30, 0x85, 0, 0, 0, 0, 0})));
    ber::Bytes deep;
    for (int i = 0; i < 10000; ++i)
        deep = ber::Tlv(0x30, deep).substr(0, 60000);
    EXPECT_FALSE(Keeps(deep));
}

TEST(DatagramCheck, EveryElementIsTheOneThatHasToBeThere)
{
    for (int type : {0xa0, 0xa1, 0xa2, 0xa3, 0xa5, 0xa6, 0xa7, 0xa8})
        EXPECT_TRUE(Keeps(ber::Message(1, "c", type, 1, 0, 0, ber::Binding(kContact)))) << type;
    for (int type : {0x30, 0xa4, 0xa9, 0xbf, 0x04})
        EXPECT_FALSE(Keeps(ber::Message(1, "c", type, 1, 0, 0, ber::Binding(kContact)))) << type;
    EXPECT_TRUE(Keeps(ber::Message(1, "c", kSet, 1, 0, 0, "")));
    for (const ber::Bytes& list :
         {ber::ObjectId(kContact), ber::Tlv(0x30, ""), ber::Tlv(0x30, ber::ObjectId(kContact)),
          ber::Tlv(0x31, ber::ObjectId(kContact) + ber::Tlv(5, "")),
          ber::Binding(kContact, ber::Tlv(5, "") + ber::Tlv(5, ""))})
        EXPECT_FALSE(Keeps(ber::Message(1, "c", kSet, 1, 0, 0, list)));
    v3::Request request;
    request.bindings = ber::Binding(kContact);
    const ber::Bytes whole = request.Encode();
    EXPECT_TRUE(Keeps(whole));
    // Octets in place of numbers and numbers in place of octets.
    int numbers = 0;
    for (size_t at = 2; at + 1 < whole.size(); ++at) {
        if (whole.compare(at, 2, ber::Bytes("\x02\x04")) != 0)
            continue;
        ++numbers;
        ber::Bytes spoiled = whole;
        spoiled[at] = 4;
        EXPECT_FALSE(Keeps(spoiled)) << at;
    }
    EXPECT_EQ(numbers, 9);
}

// Trap-PDU of SNMPv1 (RFC 1157 section 4.1.6).
TEST(DatagramCheck, ATrapOfTheFirstVersionIsWhole)
{
    const ber::Bytes trap = ber::ObjectId({1, 3, 6, 1, 4, 1, 32473}) +
                            ber::Tlv(0x40, "\x7f\1\1\1") + ber::Integer(6) + ber::Integer(1) +
                            ber::Tlv(0x43, "\1");
    auto message = [](const ber::Bytes& pdu) {
        return ber::Tlv(0x30, ber::Integer(0) + ber::Tlv(4, "c") + ber::Tlv(0xa4, pdu));
    };
    EXPECT_TRUE(Keeps(message(trap + ber::Tlv(0x30, ""))));
    EXPECT_FALSE(Keeps(message(trap)));
}

// Nothing is read behind the end: a sanitizer would see it.
TEST(DatagramCheck, AgreesWithAStrictReaderOnBadMessages)
{
    const unsigned seed = VLK::Test::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    v3::Request request;
    request.bindings = ber::Binding(kContact);
    BadMessages messages(
        seed, {ber::Message(1, "private", kSet, BadMessages::kId, 0, 0, ber::Binding(kContact)),
               request.Encode()});
    int sound = 0;
    for (int i = 0; i < 50000; ++i) {
        const ber::Bytes message = messages.Next();
        const std::vector<unsigned char> exact(message.begin(), message.end());
        const bool isSound = IsSound(exact.data(), exact.size());
        const int version = MessageVersion(exact.data(), exact.size()).value_or(-1);
        sound += isSound;
        // Wide numbers in values are well formed, and do not pass.
        if (isSound && (version == 0 || version == 1 || version == 3)) {
            ASSERT_TRUE(strict::Read(message)) << testing::PrintToString(exact);
        }
    }
    EXPECT_GT(sound, 5000);
}
