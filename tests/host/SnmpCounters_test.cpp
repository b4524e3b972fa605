// What the agent counts of crafted messages, and what it keeps of the snmp group.
#include "Ber.h"
#include "RunningAgent.h"
#include "UdpClient.h"

#include <chrono>

namespace {

enum EVersion { kV1 = 0, kV2c = 1 };
enum EPdu { kGet = 0xa0, kGetNext = 0xa1, kResponse = 0xa2, kSet = 0xa3, kGetBulk = 0xa5 };
const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const ber::Oid kEnd{1, 9};
const std::string kEnable = ".1.3.6.1.2.1.11.30.0";

// By their arcs below snmp.
struct Counts {
    int inPkts = 0;
    int badVersions = 0;
    int badNames = 0;
    int badUses = 0;
    int parseErrors = 0;
    int silentDrops = 0;
};

Counts operator-(const Counts& a, const Counts& b)
{
    return {a.inPkts - b.inPkts,   a.badVersions - b.badVersions, a.badNames - b.badNames,
            a.badUses - b.badUses, a.parseErrors - b.parseErrors, a.silentDrops - b.silentDrops};
}

bool operator==(const Counts& a, const Counts& b)
{
    return a.inPkts == b.inPkts && a.badVersions == b.badVersions && a.badNames == b.badNames &&
           a.badUses == b.badUses && a.parseErrors == b.parseErrors &&
           a.silentDrops == b.silentDrops;
}

void PrintTo(const Counts& counts, std::ostream* out)
{
    *out << counts.inPkts << " packets, " << counts.badVersions << " bad versions, "
         << counts.badNames << " bad names, " << counts.badUses << " bad uses, "
         << counts.parseErrors << " parse errors, " << counts.silentDrops << " silent drops";
}

class SnmpCounters : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    // The request that reads them is among the packets.
    Counts Read()
    {
        ber::Bytes list;
        for (unsigned arc : {1u, 3u, 4u, 5u, 6u, 31u})
            list += ber::Binding({1, 3, 6, 1, 2, 1, 11, arc, 0});
        EXPECT_TRUE(client.Send(ber::Message(kV2c, "public", kGet, ++requests, 0, 0, list)));
        ber::Reply reply;
        do
            reply = ber::ReadReply(client.Receive());
        while (reply.ok && reply.requestId != requests);
        EXPECT_EQ(reply.values.size(), 6u);
        reply.values.resize(6);
        int numbers[6];
        for (size_t i = 0; i < 6; ++i)
            numbers[i] = ber::Reader(ber::Tlv(2, reply.values[i])).Number();
        return {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]};
    }

    // The message counts as that and as nothing else, beside the packet it is.
    void ExpectCounted(const ber::Bytes& datagram, Counts expected, const std::string& what)
    {
        Counts before = Read();
        EXPECT_TRUE(client.Send(datagram));
        expected.inPkts = 2;
        Counts counted = Read() - before;
        // One that takes long is worked on beside those that read, which are packets too.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (int more = 1; !(counted == expected) && std::chrono::steady_clock::now() < end;
             ++more) {
            counted = Read() - before;
            counted.inPkts -= more;
        }
        EXPECT_EQ(counted, expected) << what;
    }

    static Counts BadVersion() { return {0, 1, 0, 0, 0, 0}; }
    static Counts BadName() { return {0, 0, 1, 0, 0, 0}; }
    static Counts BadUse() { return {0, 0, 0, 1, 0, 0}; }
    static Counts ParseError() { return {0, 0, 0, 0, 1, 0}; }
    static Counts Nothing() { return {}; }

    static ber::Bytes Ask(int version, const char* community, int pduType,
                          const ber::Oid& name = kContact)
    {
        return ber::Message(version, community, pduType, 5, 0, 0,
                            pduType == kSet ? ber::Binding(name, ber::Tlv(4, "x"))
                                            : ber::Binding(name));
    }

    TempDir directory;
    RunningAgent agent{directory.File("store.db")};
    UdpClient client{agent.IsReady() ? agent.Port() : 0};
    int requests = 1000000;
};

} // namespace

TEST_F(SnmpCounters, AnsweredRequestsArePacketsAndNothingElse)
{
    for (int version : {kV1, kV2c}) {
        ExpectCounted(Ask(version, "public", kGet), Nothing(), "get");
        ExpectCounted(Ask(version, "public", kGet, kEnd), Nothing(), "get of nothing");
        ExpectCounted(Ask(version, "public", kGetNext), Nothing(), "get-next");
        ExpectCounted(Ask(version, "public", kGetNext, kEnd), Nothing(), "get-next at the end");
        ExpectCounted(Ask(version, "private", kSet), Nothing(), "set");
        ExpectCounted(Ask(version, "private", kSet, kEnd), Nothing(), "set of nothing");
    }
    ExpectCounted(Ask(kV2c, "public", kGetBulk), Nothing(), "get-bulk");
}

TEST_F(SnmpCounters, OtherVersionsAreBadVersions)
{
    for (int version : {2, 3, 4, -1, 2147483647})
        ExpectCounted(Ask(version, "public", kGet), BadVersion(), std::to_string(version));
    ExpectCounted(ber::Tlv(0x30, ber::Integer(3)), BadVersion(), "a third version cut short");
}

TEST_F(SnmpCounters, UnknownCommunitiesAreBadNames)
{
    for (int version : {kV1, kV2c}) {
        ExpectCounted(Ask(version, "other", kGet), BadName(), "get");
        ExpectCounted(Ask(version, "", kSet), BadName(), "set without a name");
    }
}

TEST_F(SnmpCounters, ASetUnderACommunityWithoutWriteViewIsABadUse)
{
    for (int version : {kV1, kV2c})
        ExpectCounted(Ask(version, "public", kSet), BadUse(), std::to_string(version));
    ber::Bytes unfit =
        ber::Message(kV2c, "public", kSet, 5, 0, 0, ber::Binding(kContact, ber::Tlv(0x81, "")));
    ExpectCounted(unfit, BadUse(), "a value that is none");
}

TEST_F(SnmpCounters, WhatCannotBeDecodedIsAParseError)
{
    const ber::Bytes whole = Ask(kV2c, "public", kGet);
    const ber::Bytes pdu =
        ber::Tlv(kGet, ber::Integer(1) + ber::Integer(0) + ber::Integer(0) + ber::Tlv(0x30, ""));
    const std::vector<std::pair<std::string, ber::Bytes>> messages{
        {"an empty datagram", ""},
        {"no sequence", ber::Tlv(4, "x")},
        {"text", "GET / HTTP/1.0\r\n\r\n"},
        {"cut in the middle", whole.substr(0, whole.size() / 2)},
        {"cut by one", whole.substr(0, whole.size() - 1)},
        {"no version", ber::Tlv(0x30, ber::Tlv(4, "public") + pdu)},
        {"an empty version", ber::Tlv(0x30, ber::Tlv(2, "") + ber::Tlv(4, "public") + pdu)},
        {"a version of 64 bits",
         ber::Tlv(0x30, ber::Tlv(2, "\1\1\1\1\1\1\1\1") + ber::Tlv(4, "public") + pdu)},
        {"no community", ber::Tlv(0x30, ber::Integer(1) + pdu)},
        {"no PDU", ber::Tlv(0x30, ber::Integer(1) + ber::Tlv(4, "public"))},
        {"no PDU type", Ask(kV2c, "public", 0xaf)},
        {"no list", ber::Tlv(0x30, ber::Integer(1) + ber::Tlv(4, "public") +
                                       ber::Tlv(kGet, ber::Integer(1) + ber::Integer(0)))},
        {"a binding without a name",
         ber::Message(kV2c, "public", kGet, 1, 0, 0, ber::Tlv(0x30, ber::Tlv(5, "")))},
        {"an arc of 33 bits",
         ber::Message(kV2c, "public", kGet, 1, 0, 0,
                      ber::Tlv(0x30, ber::Tlv(6, "\x2b\x90\x80\x80\x80\x01") + ber::Tlv(5, "")))},
    };
    for (const auto& [what, datagram] : messages)
        ExpectCounted(datagram, ParseError(), what);
}

TEST_F(SnmpCounters, WellFormedMessagesThatAreNoRequestsArePacketsOnly)
{
    ExpectCounted(Ask(kV2c, "public", kResponse), Nothing(), "a response");
    ExpectCounted(Ask(kV2c, "public", 0xa7), Nothing(), "a notification");
    ExpectCounted(Ask(kV2c, "public", 0xa6), Nothing(), "an inform");
}

TEST_F(SnmpCounters, AnAnswerThatWasTooBigIsNoSilentDropWhenItsReplacementIsSent)
{
    ber::Bytes list;
    for (int i = 0; i < 3000; ++i)
        list += ber::Binding(kContact);
    std::string text(255, 'x');
    agent.Ask("snmpset", "2c", "private", {oid::kSysContact, "s", text});
    ExpectCounted(ber::Message(kV2c, "public", kGet, 5, 0, 0, list), Nothing(), "tooBig");
}

TEST_F(SnmpCounters, AuthenticationTrapsStayEnabledOverAKill)
{
    auto enabled = [](const RunningAgent& asked) {
        return asked.Ask("snmpget", "2c", "public", {kEnable}, {"-Oqv"}).output;
    };
    ASSERT_EQ(enabled(agent), "2\n");
    for (const char* value : {"1", "2", "1"}) {
        Outcome set = agent.Ask("snmpset", "2c", "private", {kEnable, "i", value});
        EXPECT_EQ(set.status, 0) << set.output;
    }
    EXPECT_EQ(agent.Kill(SIGKILL), 128 + SIGKILL);
    RunningAgent next(directory.File("store.db"));
    ASSERT_TRUE(next.IsReady()) << next.FirstLine();
    EXPECT_EQ(enabled(next), "1\n");
    EXPECT_EQ(next.Ask("snmpset", "2c", "private", {kEnable, "i", "2"}).status, 0);
    EXPECT_EQ(next.Kill(SIGKILL), 128 + SIGKILL);
    RunningAgent last(directory.File("store.db"));
    ASSERT_TRUE(last.IsReady()) << last.FirstLine();
    EXPECT_EQ(enabled(last), "2\n");
}
