// What is read and written without the wire library is what that would have read and
// written.
#include "host/wire/PlainMessage.h"

#include "BadMessages.h"
#include "EngineTest.h"
#include "UdpClient.h"
#include "host/wire/Convert.h"
#include "host/wire/DatagramCheck.h"
#include "tests/support/Seed.h"

#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <random>
#include <vkmibh/handler.h>

using namespace VLK;
using namespace VLK::host;

namespace {

const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
constexpr int kV2c = 1;
constexpr int kTags[] = {0xa0, 0xa1, 0xa3, 0xa5};

struct SPduEnd {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};
using CPdu = std::unique_ptr<netsnmp_pdu, SPduEnd>;

struct SRead {
    bool isPlain = false;
    SRequest request;
    std::vector<unsigned char> bindings;
};

// Nothing behind the end is read: a sanitizer would see it.
SRead Read(const ber::Bytes& message)
{
    const std::vector<unsigned char> exact(message.begin(), message.end());
    SRead read;
    read.isPlain = ReadPlainRequest(exact.data(), exact.size(), read.request, read.bindings);
    return read;
}

// As it comes from a socket.
void GiveEnds(netsnmp_pdu& pdu)
{
    netsnmp_indexed_addr_pair ends = {};
    ends.remote_addr.sin.sin_family = AF_INET;
    ends.local_addr.sin.sin_family = AF_INET;
    pdu.transport_data = calloc(1, sizeof ends);
    memcpy(pdu.transport_data, &ends, sizeof ends);
    pdu.transport_data_length = sizeof ends;
}

// By the wire library; null when it does not understand it.
CPdu Parse(const ber::Bytes& message)
{
    ber::Reader outer(message);
    ber::Reader whole(outer.Element());
    const int version = whole.Number();
    const ber::Bytes community = whole.Element();
    const int tag = whole.Tag();
    ber::Bytes octets = ber::Tlv(tag, whole.Element());
    CPdu pdu(snmp_pdu_create(SNMP_MSG_GET));
    pdu->version = version;
    pdu->community = static_cast<u_char*>(malloc(community.size() + 1));
    memcpy(pdu->community, community.data(), community.size());
    pdu->community_len = community.size();
    size_t length = octets.size();
    GiveEnds(*pdu);
    return snmp_pdu_parse(pdu.get(), reinterpret_cast<u_char*>(octets.data()), &length) == 0
               ? std::move(pdu)
               : nullptr;
}

void ExpectSame(const BVarBindList& wanted, const BVarBindList& got)
{
    ASSERT_EQ(wanted.Count(), got.Count());
    for (int i = 0; i < static_cast<int>(wanted.Count()); ++i) {
        EXPECT_EQ(wanted[i].Name(), got[i].Name());
        EXPECT_EQ(wanted[i].Value().Syntax(), got[i].Value().Syntax());
        EXPECT_EQ(wanted[i].Value().ValToStr(), got[i].Value().ValToStr());
    }
}

void ExpectSame(const SRequest& wanted, const SRequest& got)
{
    EXPECT_EQ(wanted.unfitStatus, got.unfitStatus);
    EXPECT_EQ(wanted.unfitIndex, got.unfitIndex);
    EXPECT_EQ(wanted.protocol, got.protocol);
    EXPECT_EQ(wanted.pduType, got.pduType);
    EXPECT_EQ(wanted.requestId, got.requestId);
    EXPECT_EQ(wanted.community, got.community);
    EXPECT_EQ(wanted.nonRepeaters, got.nonRepeaters);
    EXPECT_EQ(wanted.maxRepetitions, got.maxRepetitions);
    ExpectSame(wanted.bindings, got.bindings);
}

// That the wire library reads the same.
void ExpectSame(const ber::Bytes& message, const SRead& read)
{
    const CPdu pdu = Parse(message);
    ASSERT_TRUE(pdu);
    SRequest wanted;
    ASSERT_TRUE(ReadRequest(*pdu, wanted));
    ExpectSame(wanted, read.request);
}

ber::Bytes ByteString(std::initializer_list<int> values)
{
    ber::Bytes bytes;
    for (int value : values)
        bytes += static_cast<char>(value);
    return bytes;
}

ber::Bytes Set(const ber::Bytes& value)
{
    return ber::Message(kV2c, "private", ePduSet, 7, 0, 0, ber::Binding(kContact, value));
}

// The answer that the wire library would send; empty when it has none.
ber::Bytes Build(const ber::Bytes& message, const SResponse& response)
{
    const CPdu request = Parse(message);
    const CPdu answer(MakeResponse(*request, response));
    if (!answer)
        return "";
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = answer->version;
    size_t length = 4096; // grows
    auto* packet = static_cast<u_char*>(malloc(length));
    size_t offset = 0;
    ber::Bytes built;
    if (snmp_build(&packet, &length, &offset, &session, answer.get()) == 0)
        built.assign(reinterpret_cast<char*>(packet) + length - offset, offset);
    free(packet);
    return built;
}

ber::Bytes Write(SRead read, const SResponse& response, unsigned maxMessage = 65527)
{
    static BPlainAnswer answer;
    read.request.maxMessage = maxMessage;
    if (answer.Write(read.request, read.bindings, response) != 0)
        return "";
    return ber::Bytes(reinterpret_cast<const char*>(answer.Data()), answer.Length());
}

class Values {
public:
    explicit Values(unsigned seed) : m_random(seed) {}

    BVarBind Next()
    {
        BVarBind binding(Id());
        Fill(binding.Value());
        return binding;
    }
    unsigned Below(unsigned bound) { return m_random() % bound; }
    // Of every length that an encoding may have.
    unsigned Number() { return m_random() >> Below(32); }

private:
    BObjectIdentifier Id()
    {
        unsigned arcs[128];
        const unsigned count = Below(8) ? 2 + Below(20) : Below(129);
        for (unsigned& arc : arcs)
            arc = Number();
        arcs[0] = Below(3);
        arcs[1] = arcs[0] < 2 ? Below(40) : Number();
        return BObjectIdentifier(count, arcs);
    }
    BOctetString Octets()
    {
        std::vector<unsigned char> octets(Below(4) ? Below(40) : Below(400));
        for (unsigned char& octet : octets)
            octet = static_cast<unsigned char>(m_random());
        return BOctetString(static_cast<unsigned>(octets.size()), octets.data());
    }
    void Fill(BObjectSyntax& value)
    {
        switch (Below(11)) {
        case 0:
            return value.SetNull();
        case 1:
            return value.SetInt(static_cast<int>(Below(2) ? Number() : ~Number()));
        case 2:
            return value.SetCounter(Number());
        case 3:
            return value.SetGauge(Number());
        case 4:
            return value.SetTimeTicks(Number());
        case 5:
            return value.SetCtr64(SCTR64{Below(2) ? Number() : 0, Number()});
        case 6:
            return value.SetOctets(Octets());
        case 7:
            return value.SetOpaque(Octets());
        case 8:
            return value.SetObjectId(Id());
        case 9:
            return value.SetIpAddress(BIpAddress(10, 0, 255, 127));
        default:
            return value.SetV2Exception(static_cast<ESnmpException>(eNoSuchObject + Below(3)));
        }
    }

    std::mt19937 m_random;
};

ber::Bytes Encoded(const std::vector<BVarBind>& bindings)
{
    SResponse response;
    response.bindings = bindings;
    return ber::ReadReply(Build(ber::Message(kV2c, "", ePduGet, 1, 0, 0, ""), response)).bindings;
}

// The first binding's length in one octet more than it takes.
ber::Bytes WithLongLength(const ber::Bytes& bindings)
{
    const ber::Bytes content = ber::Reader(bindings).Element();
    const ber::Bytes shortest = ber::Length(content.size());
    ber::Bytes length = ByteString({0x81}) + shortest;
    if (shortest.size() > 1)
        length = static_cast<char>(shortest[0] + 1) + ByteString({0}) + shortest.substr(1);
    return bindings[0] + length + bindings.substr(1 + shortest.size());
}

// A request twice: in the usual encoding, and in one that is left to the wire library.
struct STwins {
    ber::Bytes plain;
    ber::Bytes other;
};

STwins AnyTwins(Values& values)
{
    const int tag = kTags[values.Below(4)];
    std::vector<BVarBind> bindings;
    for (unsigned count = 1 + values.Below(4); count; --count) {
        bindings.push_back(values.Next());
        if (tag != ePduSet)
            bindings.back().Value().SetNull();
    }
    const auto version = static_cast<int>(values.Below(2));
    const ber::Bytes community(values.Below(3) ? 6 : values.Below(256), 'c');
    const auto id = static_cast<int>(values.Number() ^ (values.Below(2) ? UINT32_MAX : 0));
    const auto first = static_cast<int>(values.Number());
    const auto second = static_cast<int>(values.Number());
    const ber::Bytes list = Encoded(bindings);
    return {ber::Message(version, community, tag, id, first, second, list),
            ber::Message(version, community, tag, id, first, second, WithLongLength(list))};
}

// Some of them about as long as a message may be, or longer.
SResponse AnyResponse(Values& values)
{
    SResponse response;
    response.status = static_cast<int>(values.Below(19));
    response.index = static_cast<int>(values.Below(400));
    response.echo = !values.Below(4);
    if (response.echo)
        return response;
    for (unsigned count = values.Below(30); count; --count)
        response.bindings.push_back(values.Next());
    if (values.Below(4))
        return response;
    response.bindings.resize(1);
    const std::vector<unsigned char> octets(65300 + values.Below(240), 'x');
    response.bindings[0].Value().SetOctets(
        BOctetString(static_cast<unsigned>(octets.size()), octets.data()));
    return response;
}

class PlainMessageEngine : public VLK::Test::EngineTest {};

} // namespace

TEST(PlainMessage, ReadsRequestsLikeTheWireLibrary)
{
    const ber::Bytes names = ber::Binding(kContact) + ber::Binding({1, 3, 6, 1, 4, 1, 4294967295});
    for (int version : {0, 1}) {
        for (int tag : kTags) {
            for (int number : {0, 1, 127, 128, -1, -129, 65536, 2147483647}) {
                const ber::Bytes message =
                    ber::Message(version, "public", tag, number, number, 3, names);
                const SRead read = Read(message);
                ASSERT_TRUE(read.isPlain) << tag;
                ExpectSame(message, read);
                EXPECT_EQ(names, ber::Bytes(read.bindings.begin(), read.bindings.end()));
            }
        }
    }
    const ber::Bytes empty = ber::Message(kV2c, "", ePduGet, 1, 0, 0, "");
    ASSERT_TRUE(Read(empty).isPlain);
    ExpectSame(empty, Read(empty));
}

// Whoever sends them: nobody knows yet who asks. A list that grows as it is read is moved
// hundreds of times.
TEST(PlainMessage, ManyBindingsFindTheirRoomAtOnce)
{
    ber::Bytes names;
    for (unsigned count = 1; count <= 9000; ++count) {
        names += ber::Binding({1, 3});
        if (count != 1 && count != 13 && count != 9000)
            continue;
        const ber::Bytes message = ber::Message(kV2c, "public", ePduGet, 1, 0, 0, names);
        const SRead read = Read(message);
        ASSERT_TRUE(read.isPlain);
        EXPECT_EQ(read.request.bindings.Count(), count);
        EXPECT_EQ(read.request.bindings.Capacity(), count);
        SRequest byLibrary;
        ASSERT_TRUE(ReadRequest(*Parse(message), byLibrary));
        EXPECT_EQ(byLibrary.bindings.Count(), count);
        EXPECT_EQ(byLibrary.bindings.Capacity(), count);
    }
    ber::Bytes none;
    for (int i = 0; i < 30000; ++i)
        none += ber::Tlv(0x30, "");
    const SRead broken = Read(ber::Message(kV2c, "public", ePduGet, 1, 0, 0, none));
    EXPECT_FALSE(broken.isPlain);
    EXPECT_LE(broken.request.bindings.Capacity(), none.size() / ber::Binding({1, 3}).size());
}

TEST(PlainMessage, ReadsValuesLikeTheWireLibrary)
{
    for (const ber::Bytes& value :
         {ber::Tlv(0x02, ByteString({0x80})), ber::Tlv(0x02, ByteString({0x7f, 0xff, 0xff, 0xff})),
          ber::Tlv(0x02, ByteString({0x00, 0x80})), ber::Tlv(0x04, ""),
          ber::Tlv(0x04, ber::Bytes(300, 'x')), ber::Tlv(0x05, ""), ber::ObjectId(kContact),
          ber::ObjectId({2, 40, 1}), ber::Tlv(0x40, "abcd"), ber::Tlv(0x41, ByteString({0})),
          ber::Tlv(0x41, ByteString({0, 0xff, 0xff, 0xff, 0xff})),
          ber::Tlv(0x42, ByteString({0x7f, 1})), ber::Tlv(0x43, ByteString({1, 2, 3}))}) {
        const SRead read = Read(Set(value));
        EXPECT_TRUE(read.isPlain) << testing::PrintToString(value);
        ExpectSame(Set(value), read);
    }
}

// What has more than one reading, or another encoding in the answer.
TEST(PlainMessage, LeavesTheRestToTheWireLibrary)
{
    for (const ber::Bytes& value :
         {ber::Tlv(0x02, ""), ber::Tlv(0x02, ByteString({0, 1})),
          ber::Tlv(0x02, ByteString({0xff, 0x80})), ber::Tlv(0x02, ByteString({0, 0x80, 0, 0, 0})),
          ber::Tlv(0x41, ByteString({0x80})), ber::Tlv(0x41, ByteString({1, 0, 0, 0, 0})),
          ber::Tlv(0x05, "x"), ber::Tlv(0x06, ""), ber::Tlv(0x06, ByteString({0x2b, 0x80, 1})),
          ber::Tlv(0x06, ByteString({0x2b, 0x81})), ber::Tlv(0x06, ByteString({0x81, 0})),
          ber::Tlv(0x06, ber::Bytes(128, 1)), ber::Tlv(0x40, "abc"), ber::Tlv(0x44, "opaque"),
          ber::Tlv(0x46, ByteString({1})), ber::Tlv(0x80, ""), ByteString({0x04, 0x81, 1, 'x'}),
          ByteString({0x04, 0x82, 0, 1, 'x'}), ber::Bytes()})
        EXPECT_FALSE(Read(Set(value)).isPlain) << testing::PrintToString(value);
    EXPECT_TRUE(Read(Set(ber::Tlv(0x06, ber::Bytes(127, 1)))).isPlain);

    const ber::Bytes binding = ber::Binding(kContact);
    const auto get = [&](int version, const ber::Bytes& community, int tag,
                         const ber::Bytes& bindings) {
        return Read(ber::Message(version, community, tag, 1, 0, 0, bindings)).isPlain;
    };
    EXPECT_TRUE(get(1, ber::Bytes(255, 'c'), ePduGet, binding));
    EXPECT_FALSE(get(1, ber::Bytes(256, 'c'), ePduGet, binding));
    EXPECT_FALSE(get(2, "public", ePduGet, binding));
    EXPECT_FALSE(get(3, "public", ePduGet, binding));
    for (int tag : {0xa2, 0xa4, 0xa6, 0xa7, 0xa8})
        EXPECT_FALSE(get(1, "public", tag, binding)) << tag;
    EXPECT_FALSE(get(1, "public", ePduGet, ber::Binding(kContact, ber::Tlv(0x04, "x"))));
    EXPECT_FALSE(get(1, "public", ePduGet, ber::Binding(kContact, ber::Tlv(0x05, "") + binding)));
    EXPECT_FALSE(get(1, "public", ePduGet, ber::Tlv(0x04, "x")));
    const ber::Bytes whole = ber::Message(1, "public", ePduGet, 1, 0, 0, binding);
    EXPECT_FALSE(Read(whole + '\0').isPlain);
    // Its length indefinite, reserved, in five octets, beyond the datagram, and as it may be.
    const ber::Bytes body = whole.substr(2);
    const ber::Bytes octet(1, static_cast<char>(body.size()));
    for (const ber::Bytes& length :
         {ByteString({0x80}), ByteString({0xff}), ByteString({0x85, 0, 0, 0, 0}) + octet,
          ByteString({0x84, 0x80, 0, 0}) + octet, ByteString({0x84, 0xff, 0xff, 0xff}) + octet})
        EXPECT_FALSE(Read('0' + length + body).isPlain) << testing::PrintToString(length);
    EXPECT_TRUE(Read('0' + ByteString({0x84, 0, 0, 0}) + octet + body).isPlain);
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(Read(whole.substr(0, length)).isPlain) << length;
}

TEST(PlainMessage, WhatItReadsOfBadMessagesTheWireLibraryReadsToo)
{
    const unsigned seed = VLK::Test::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::vector<ber::Bytes> whole;
    for (int tag : kTags)
        whole.push_back(ber::Message(kV2c, "public", tag, BadMessages::kId, 0, 2,
                                     ber::Binding(kContact) + ber::Binding({1, 3})));
    whole.push_back(Set(ber::Tlv(4, "someone") + ""));
    whole.push_back(Set(ber::Tlv(0x43, "abc")));
    whole.push_back(Set(ber::ObjectId(kContact)));
    BadMessages messages(seed, whole);
    int plain = 0;
    for (int i = 0; i < 5000 && !HasFailure(); ++i) {
        const ber::Bytes message = messages.Next();
        const SRead read = Read(message);
        if (!read.isPlain)
            continue;
        ++plain;
        EXPECT_TRUE(
            IsSound(reinterpret_cast<const unsigned char*>(message.data()), message.size()));
        ExpectSame(message, read);
        if (HasFatalFailure())
            FAIL() << testing::PrintToString(message);
        SResponse echo;
        echo.echo = true;
        echo.status = eSnmpGenErr;
        echo.index = 1;
        EXPECT_EQ(Build(message, echo), Write(read, echo)) << testing::PrintToString(message);
    }
    EXPECT_GT(plain, 500);
}

TEST(PlainMessage, AnswersAreThoseOfTheWireLibrary)
{
    const unsigned seed = VLK::Test::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Values values(seed);
    for (int i = 0; i < 2000; ++i) {
        const ber::Bytes message =
            ber::Message(static_cast<int>(values.Below(2)), ber::Bytes(values.Below(200), 'c'),
                         ePduGet, static_cast<int>(values.Number()), 0, 0, ber::Binding(kContact));
        const SRead read = Read(message);
        ASSERT_TRUE(read.isPlain);
        SResponse response;
        response.status = static_cast<int>(values.Below(19));
        response.index = static_cast<int>(values.Below(400));
        for (unsigned count = values.Below(12); count; --count)
            response.bindings.push_back(values.Next());
        ASSERT_EQ(Build(message, response), Write(read, response));
        response.echo = true;
        ASSERT_EQ(Build(message, response), Write(read, response));
    }
}

TEST(PlainMessage, AnswersEndWhereTheMessageDoes)
{
    const SRead read = Read(ber::Message(kV2c, "public", ePduGet, 1, 0, 0, ber::Binding(kContact)));
    BVarBind large(BObjectIdentifier(BString("1.3.6.1.2.1.1.1.0")));
    for (unsigned octets : {10u, 1000u, 65400u}) {
        large.Value().SetOctets(BOctetString(octets, nullptr));
        SResponse response;
        response.bindings = {large};
        const auto length = static_cast<unsigned>(Write(read, response).size());
        ASSERT_GT(length, octets);
        BPlainAnswer answer;
        SRequest request = read.request;
        request.maxMessage = length;
        EXPECT_EQ(answer.Write(request, read.bindings, response), 0);
        --request.maxMessage;
        EXPECT_EQ(answer.Write(request, read.bindings, response), eSnmpTooBig);
        // More than a buffer holds.
        request.maxMessage = 1000000;
        response.bindings.assign(70000 / octets + 1, large);
        EXPECT_EQ(answer.Write(request, read.bindings, response), eSnmpTooBig);
    }
}

TEST(PlainMessage, WhatNoMessageHoldsIsAnError)
{
    const SRead read = Read(ber::Message(kV2c, "public", ePduGet, 1, 0, 0, ber::Binding(kContact)));
    for (const char* name : {"3.1", "0.40.1", "1.41"}) {
        SResponse response;
        response.bindings = {BVarBind(BObjectIdentifier(BString(name)))};
        EXPECT_EQ(BPlainAnswer().Write(read.request, read.bindings, response), eSnmpGenErr) << name;
        response.bindings = {BVarBind(BObjectIdentifier(BString("1.3")))};
        response.bindings[0].Value().SetObjectId(BObjectIdentifier(BString(name)));
        EXPECT_EQ(BPlainAnswer().Write(read.request, read.bindings, response), eSnmpGenErr) << name;
    }
    const std::vector<unsigned> arcs(129, 1);
    SResponse response;
    response.bindings = {BVarBind(BObjectIdentifier(129, arcs.data()))};
    EXPECT_EQ(BPlainAnswer().Write(read.request, read.bindings, response), eSnmpGenErr);
}

TEST_F(PlainMessageEngine, NoManagerCanTellWhichOfTheTwoHasAnswered)
{
    constexpr unsigned kPairs = 200;
    const unsigned seed = VLK::Test::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Values values(seed);
    auto& traffic = Kept<STraffic>();
    const UdpClient client(Engine().Open(VLK::Test::Address("udp:127.0.0.1:0"), traffic).Port());
    const unsigned faults = Counters().inASNParseErrs;
    std::mutex lock;
    SResponse next;
    Handler().onRequest = [&](const SRequest&, SResponse& response) {
        const std::lock_guard<std::mutex> guard(lock);
        response = next;
    };
    unsigned plain = 0;
    ServeWhile([&] {
        for (unsigned i = 0; i < kPairs; ++i) {
            const STwins twins = AnyTwins(values);
            plain += Read(twins.plain).isPlain;
            ASSERT_FALSE(Read(twins.other).isPlain);
            {
                const std::lock_guard<std::mutex> guard(lock);
                next = AnyResponse(values);
            }
            ASSERT_TRUE(client.Send(twins.other));
            const ber::Bytes wanted = client.Receive(20000);
            ASSERT_FALSE(wanted.empty()) << testing::PrintToString(twins.other);
            ASSERT_TRUE(client.Send(twins.plain));
            ASSERT_EQ(wanted, client.Receive(20000)) << testing::PrintToString(twins.plain);
        }
    });
    EXPECT_GT(plain, kPairs / 20);
    EXPECT_EQ(traffic.received, 2 * kPairs);
    EXPECT_EQ(traffic.answered, 2 * kPairs);
    EXPECT_EQ(Counters().inASNParseErrs, faults);
    const std::vector<SRequest>& requests = Handler().requests;
    ASSERT_EQ(requests.size(), size_t{2} * kPairs);
    for (size_t i = 0; i < requests.size() && !HasFailure(); i += 2) {
        ExpectSame(requests[i], requests[i + 1]);
        EXPECT_EQ(requests[i].maxMessage, requests[i + 1].maxMessage);
        EXPECT_EQ(requests[i].local.ToString(), requests[i + 1].local.ToString());
        EXPECT_EQ(requests[i].remote.ToString(), requests[i + 1].remote.ToString());
    }
}
