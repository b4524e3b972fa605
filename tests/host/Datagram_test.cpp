#include "Ber.h"
#include "RunningAgent.h"
#include "UdpClient.h"

namespace {

const ber::Oid kDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const ber::Oid kOrDescr{1, 3, 6, 1, 2, 1, 1, 9, 3};
enum EVersion { kV1 = 0, kV2c = 1 };
enum EPdu { kGet = 0xa0, kGetNext = 0xa1, kResponse = 0xa2, kSet = 0xa3, kGetBulk = 0xa5 };

class Datagram : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    ber::Reply Exchange(const ber::Bytes& datagram)
    {
        EXPECT_TRUE(client.Send(datagram));
        return ber::ReadReply(client.Receive());
    }

    // Requests are served in the order in which they came: the first answer
    // after an ignored one is the probe's.
    void ExpectIgnored(const ber::Bytes& datagram)
    {
        EXPECT_TRUE(client.Send(datagram));
        ber::Reply reply =
            Exchange(ber::Message(kV2c, "public", kGet, ++probes, 0, 0, ber::Binding(kDescr)));
        ASSERT_TRUE(reply.ok);
        EXPECT_EQ(reply.requestId, probes);
        EXPECT_EQ(reply.status, 0);
    }

    static ber::Bytes Repeat(const ber::Bytes& binding, int count)
    {
        ber::Bytes list;
        for (int i = 0; i < count; ++i)
            list += binding;
        return list;
    }

    // 300 of these make more than a datagram holds.
    void MakeContactLong()
    {
        ber::Bytes binding = ber::Binding(kContact, ber::Tlv(4, ber::Bytes(255, 'c')));
        ASSERT_EQ(Exchange(ber::Message(kV2c, "private", kSet, 1, 0, 0, binding)).status, 0);
    }

    TempDir directory;
    RunningAgent agent{directory.File("store.db")};
    UdpClient client{agent.IsReady() ? agent.Port() : 0};
    int probes = 1000000;
};

} // namespace

TEST_F(Datagram, TheAnswerRepeatsVersionCommunityAndRequestId)
{
    for (int version : {kV1, kV2c}) {
        ber::Reply reply = Exchange(
            ber::Message(version, "public", kGet, -2147483647, 0, 0, ber::Binding(kDescr)));
        ASSERT_TRUE(reply.ok);
        EXPECT_EQ(reply.version, version);
        EXPECT_EQ(reply.community, "public");
        EXPECT_EQ(reply.pduType, kResponse);
        EXPECT_EQ(reply.requestId, -2147483647);
        EXPECT_EQ(reply.status, 0);
        EXPECT_EQ(reply.index, 0);
        ASSERT_EQ(reply.names.size(), 1u);
        EXPECT_EQ(reply.names[0], ber::Name(kDescr));
        EXPECT_EQ(reply.values[0], "Velkoran agent");
    }
}

TEST_F(Datagram, AnEmptyListIsAnsweredEmpty)
{
    for (int type : {kGet, kGetNext, kSet, kGetBulk}) {
        ber::Reply reply = Exchange(ber::Message(kV2c, "private", type, 5, 0, 0, ""));
        ASSERT_TRUE(reply.ok) << type;
        EXPECT_EQ(reply.requestId, 5);
        EXPECT_EQ(reply.status, 0) << type;
        EXPECT_EQ(reply.index, 0) << type;
        EXPECT_TRUE(reply.names.empty());
    }
}

TEST_F(Datagram, AnErrorEchoesTheBindingsOfTheRequest)
{
    ber::Bytes list =
        ber::Binding(kContact, ber::Tlv(4, "new")) + ber::Binding(kDescr, ber::Tlv(4, "also new"));
    for (int version : {kV1, kV2c}) {
        ber::Reply reply = Exchange(ber::Message(version, "private", kSet, 6, 0, 0, list));
        ASSERT_TRUE(reply.ok);
        EXPECT_EQ(reply.status, version == kV1 ? 2 : 17);
        EXPECT_EQ(reply.index, 2);
        EXPECT_EQ(reply.bindings, list);
    }
}

TEST_F(Datagram, AnErrorOfV1GetEchoesTheRequestToo)
{
    ber::Bytes list = ber::Binding(kDescr) + ber::Binding({1, 3, 9});
    for (int type : {kGet, kGetNext}) {
        if (type == kGetNext)
            list = ber::Binding(kDescr) + ber::Binding({1, 9});
        ber::Reply reply = Exchange(ber::Message(kV1, "public", type, 7, 0, 0, list));
        ASSERT_TRUE(reply.ok);
        EXPECT_EQ(reply.status, 2);
        EXPECT_EQ(reply.index, 2);
        EXPECT_EQ(reply.bindings, list);
    }
}

TEST_F(Datagram, NegativeBulkCountsAreZero)
{
    ber::Bytes list = ber::Binding(kOrDescr) + ber::Binding(kDescr);
    ber::Reply none = Exchange(ber::Message(kV2c, "public", kGetBulk, 8, -1, -1, list));
    ASSERT_TRUE(none.ok);
    EXPECT_EQ(none.status, 0);
    EXPECT_TRUE(none.names.empty());
    ber::Reply one = Exchange(ber::Message(kV2c, "public", kGetBulk, 8, 1, -2147483647 - 1, list));
    EXPECT_EQ(one.names.size(), 1u);
    ber::Reply repeated =
        Exchange(ber::Message(kV2c, "public", kGetBulk, 8, -2147483647 - 1, 2, list));
    EXPECT_EQ(repeated.names.size(), 4u);
}

TEST_F(Datagram, BulkCountsOfAnySizeEndAtTheEndOfTheMib)
{
    // vacmViewTreeFamilyStatus, of the views that are built in.
    const ber::Oid kLastColumn{1, 3, 6, 1, 6, 3, 16, 1, 5, 2, 1, 6};
    ber::Reply reply = Exchange(
        ber::Message(kV2c, "public", kGetBulk, 9, 0, 2147483647, ber::Binding(kLastColumn)));
    ASSERT_TRUE(reply.ok);
    ASSERT_EQ(reply.names.size(), 2u + 1);
    EXPECT_EQ(reply.tags.back(), 130);
    EXPECT_EQ(reply.names.back(), reply.names[reply.names.size() - 2]);
}

TEST_F(Datagram, BulkInTheFirstVersionIsIgnored)
{
    ExpectIgnored(ber::Message(kV1, "public", kGetBulk, 10, 0, 1, ber::Binding(kDescr)));
}

TEST_F(Datagram, UnknownCommunitiesAreIgnored)
{
    ExpectIgnored(ber::Message(kV2c, "nobody", kGet, 11, 0, 0, ber::Binding(kDescr)));
    ExpectIgnored(ber::Message(kV2c, "", kGet, 11, 0, 0, ber::Binding(kDescr)));
    ExpectIgnored(ber::Message(kV1, "publi", kGet, 11, 0, 0, ber::Binding(kDescr)));
    ExpectIgnored(
        ber::Message(kV2c, ber::Bytes("public\0", 7), kGet, 11, 0, 0, ber::Binding(kDescr)));
}

TEST_F(Datagram, WhatIsNoRequestIsIgnored)
{
    for (int type : {0xa2, 0xa6, 0xa7, 0xa8, 0xa9, 0x30})
        ExpectIgnored(ber::Message(kV2c, "private", type, 12, 0, 0, ber::Binding(kDescr)));
    ber::Bytes trap = ber::ObjectId({1, 3, 6, 1, 4, 1, 32473}) + ber::Tlv(0x40, "\x7f\1\1\1") +
                      ber::Integer(6) + ber::Integer(1) + ber::Tlv(0x43, "\1") + ber::Tlv(0x30, "");
    ExpectIgnored(
        ber::Tlv(0x30, ber::Integer(kV1) + ber::Tlv(4, "private") + ber::Tlv(0xa4, trap)));
}

TEST_F(Datagram, OtherVersionsAreIgnored)
{
    for (int version : {2, 3, -1, 127})
        ExpectIgnored(ber::Message(version, "private", kGet, 13, 0, 0, ber::Binding(kDescr)));
}

TEST_F(Datagram, EveryTruncationIsIgnored)
{
    ber::Bytes whole = ber::Message(kV2c, "private", kSet, 14, 0, 0,
                                    ber::Binding(kContact, ber::Tlv(4, "truncated")));
    for (size_t length = 0; length < whole.size(); ++length)
        ExpectIgnored(whole.substr(0, length));
    ber::Reply contact =
        Exchange(ber::Message(kV2c, "public", kGet, 15, 0, 0, ber::Binding(kContact)));
    ASSERT_EQ(contact.values.size(), 1u);
    EXPECT_EQ(contact.values[0], "Mr. Qwin");
}

TEST_F(Datagram, NumbersThatWouldBeCutAreIgnored)
{
    ber::Bytes wide = ber::Tlv(2, ber::Bytes("\1\0\0\0\5", 5));
    ExpectIgnored(ber::Message(kV2c, "private", kSet, 14, 0, 0, ber::Binding(kContact, wide)));
    // sysContact, were the last arc but one not 2^64 too large.
    ber::Bytes name("\x2b\6\1\2\1\1\x82\x80\x80\x80\x80\x80\x80\x80\x80\4\0", 17);
    ber::Bytes binding = ber::Tlv(0x30, ber::Tlv(6, name) + ber::Tlv(4, "wrapped"));
    ExpectIgnored(ber::Message(kV2c, "private", kSet, 14, 0, 0, binding));
    ber::Reply contact =
        Exchange(ber::Message(kV2c, "public", kGet, 15, 0, 0, ber::Binding(kContact)));
    ASSERT_EQ(contact.values.size(), 1u);
    EXPECT_EQ(contact.values[0], "Mr. Qwin");
}

TEST_F(Datagram, AnIntegerAboveItsRangeIsAWrongEncoding)
{
    ber::Bytes value = ber::Tlv(2, ber::Bytes("\0\x80\0\0\0", 5));
    ber::Reply reply =
        Exchange(ber::Message(kV2c, "private", kSet, 14, 0, 0, ber::Binding(kContact, value)));
    EXPECT_EQ(reply.status, 9);
    EXPECT_EQ(reply.index, 1);
    EXPECT_EQ(reply.bindings, ber::Binding(kContact, value));
}

TEST_F(Datagram, ValuesOfNoKnownTypeAreRefusedToWritersOnly)
{
    ber::Bytes list =
        ber::Binding(kContact, ber::Tlv(4, "x")) + ber::Binding(kContact, ber::Tlv(0x45, "nsap"));
    ber::Reply writer = Exchange(ber::Message(kV2c, "private", kSet, 16, 0, 0, list));
    EXPECT_EQ(writer.requestId, 16);
    EXPECT_EQ(writer.status, 7);
    EXPECT_EQ(writer.index, 2);
    ber::Reply reader = Exchange(ber::Message(kV2c, "public", kSet, 17, 0, 0, list));
    EXPECT_EQ(reader.status, 6);
    EXPECT_EQ(reader.index, 1);
}

TEST_F(Datagram, ValuesInReadRequestsDoNotMatter)
{
    ber::Reply reply = Exchange(
        ber::Message(kV2c, "public", kGet, 18, 0, 0, ber::Binding(kDescr, ber::Tlv(4, "ignored"))));
    ASSERT_EQ(reply.values.size(), 1u);
    EXPECT_EQ(reply.values[0], "Velkoran agent");
}

TEST_F(Datagram, TooLargeAnAnswerOfV2HasNoBindings)
{
    MakeContactLong();
    ber::Bytes list = Repeat(ber::Binding(kContact), 300);
    ber::Reply reply = Exchange(ber::Message(kV2c, "public", kGet, 19, 0, 0, list));
    ASSERT_TRUE(reply.ok);
    EXPECT_EQ(reply.requestId, 19);
    EXPECT_EQ(reply.status, 1);
    EXPECT_EQ(reply.index, 0);
    EXPECT_TRUE(reply.names.empty());
}

TEST_F(Datagram, TooLargeAnAnswerOfV1HasTheBindingsOfTheRequest)
{
    MakeContactLong();
    ber::Bytes list = Repeat(ber::Binding({1, 3, 6, 1, 2, 1, 1, 3, 9}), 300);
    ber::Reply reply = Exchange(ber::Message(kV1, "public", kGetNext, 20, 0, 0, list));
    ASSERT_TRUE(reply.ok);
    EXPECT_EQ(reply.requestId, 20);
    EXPECT_EQ(reply.status, 1);
    EXPECT_EQ(reply.index, 0);
    EXPECT_EQ(reply.bindings, list);
}

TEST_F(Datagram, TheLargestAnswerIsSentInFull)
{
    MakeContactLong();
    // One binding of the answer takes 272 bytes; 240 of them come to 65280.
    ber::Bytes list = Repeat(ber::Binding(kContact), 240);
    ber::Reply reply = Exchange(ber::Message(kV2c, "public", kGet, 21, 0, 0, list));
    ASSERT_TRUE(reply.ok);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.names.size(), 240u);
    ber::Reply larger =
        Exchange(ber::Message(kV2c, "public", kGet, 22, 0, 0, list + ber::Binding(kContact)));
    EXPECT_EQ(larger.status, 1);
}

TEST_F(Datagram, ABulkAnswerIsCutToTheMessage)
{
    MakeContactLong();
    ber::Bytes list = Repeat(ber::Binding({1, 3, 6, 1, 2, 1, 1, 3, 9}), 300);
    EXPECT_TRUE(client.Send(ber::Message(kV2c, "public", kGetBulk, 23, 0, 3, list)));
    ber::Bytes datagram = client.Receive();
    ber::Reply reply = ber::ReadReply(datagram);
    ASSERT_TRUE(reply.ok);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.names.size(), 240u) << "bindings of 272 bytes each";
    EXPECT_LE(datagram.size(), 65507u);
    EXPECT_GT(datagram.size(), 65507u - 272u - 9u);
}

TEST_F(Datagram, AnEmptyCommunityIsNotTheConsole)
{
    ber::Bytes set = ber::Binding(kContact, ber::Tlv(4, "x"));
    for (int version : {kV1, kV2c}) {
        ExpectIgnored(ber::Message(version, "", kGet, 5, 0, 0, ber::Binding(kDescr)));
        ExpectIgnored(ber::Message(version, "", kSet, 6, 0, 0, set));
    }
    EXPECT_NE(agent.Ask("snmpget", "2c", "public", {oid::kSysContact}).output.find("Qwin"),
              std::string::npos);
}
