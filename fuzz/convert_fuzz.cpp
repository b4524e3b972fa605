// Messages of any bytes through the check of their numbers, the wire library's
// decoder and the conversion to our requests; what is converted comes back the
// same from an answer. What is read without the wire library is read the same, and
// answered with the same octets.
#include "fuzz/Fuzz.h"
#include "host/wire/Convert.h"
#include "host/wire/DatagramCheck.h"
#include "host/wire/PlainMessage.h"
#include "tests/support/Oids.h"

#include <memory>
#include <vkmibh/handler.h>

namespace VLK::Fuzz {
namespace {

struct SPduEnd {
    void operator()(netsnmp_pdu* pdu) const { snmp_free_pdu(pdu); }
};
using CPdu = std::unique_ptr<netsnmp_pdu, SPduEnd>;

constexpr unsigned char kCommunity = 'c';

CPdu Parse(std::vector<unsigned char> octets)
{
    CPdu pdu(snmp_pdu_create(SNMP_MSG_GET));
    pdu->version = SNMP_VERSION_2c;
    pdu->community = static_cast<u_char*>(calloc(1, 1));
    *pdu->community = kCommunity;
    pdu->community_len = 1;
    size_t length = octets.size();
    return snmp_pdu_parse(pdu.get(), octets.data(), &length) == 0 ? std::move(pdu) : nullptr;
}

// As a request comes from a socket.
void GiveEnds(netsnmp_pdu& pdu)
{
    auto* ends =
        static_cast<netsnmp_indexed_addr_pair*>(calloc(1, sizeof(netsnmp_indexed_addr_pair)));
    ends->remote_addr.sin.sin_family = AF_INET;
    ends->local_addr.sin.sin_family = AF_INET;
    pdu.transport_data = ends;
    pdu.transport_data_length = sizeof *ends;
}

std::vector<unsigned char> Build(netsnmp_pdu& pdu)
{
    std::vector<unsigned char> buffer(1 << 17);
    size_t room = buffer.size();
    unsigned char* end = snmp_pdu_build(&pdu, buffer.data(), &room);
    return end ? std::vector<unsigned char>(buffer.data(), end) : std::vector<unsigned char>();
}

void RequireSameText(const std::string& wanted, const std::string& got)
{
    if (wanted != got)
        Differ("a value: " + wanted + " came back as " + got);
}

void RequireSame(const BVarBindList& wanted, const BVarBindList& got)
{
    Require(wanted.Count() == got.Count(), "the number of bindings");
    for (int i = 0; i < static_cast<int>(wanted.Count()); ++i) {
        Require(wanted[i].Name() == got[i].Name(), "a name");
        Require(wanted[i].Value().Syntax() == got[i].Value().Syntax(), "a tag");
        RequireSameText(PlainOf(wanted[i].Value().ValToStr()), PlainOf(got[i].Value().ValToStr()));
    }
}

// The values as the wire library has them.
void RequireValue(const netsnmp_variable_list& from, const BObjectSyntax& value)
{
    const auto number = from.val.integer ? static_cast<unsigned>(*from.val.integer) : 0;
    const std::string octets(reinterpret_cast<const char*>(from.val.string),
                             from.val.string ? from.val_len : 0);
    bool isSame = value.Syntax() == from.type;
    switch (from.type) {
    case ASN_INTEGER:
        isSame = isSame && value.Int() == static_cast<int>(number);
        break;
    case ASN_COUNTER:
    case ASN_GAUGE:
    case ASN_TIMETICKS:
        isSame = isSame && value.Unsigned() == number;
        break;
    case ASN_COUNTER64:
        isSame = isSame && value.Ctr64().high == from.val.counter64->high &&
                 value.Ctr64().low == from.val.counter64->low;
        break;
    case ASN_OBJECT_ID: {
        const BObjectIdentifier id = isSame ? value.ObjectId() : BObjectIdentifier();
        isSame = isSame && id.Length() * sizeof(oid) == from.val_len;
        for (unsigned i = 0; isSame && i < id.Length(); ++i)
            isSame = id[i] == from.val.objid[i];
        break;
    }
    case ASN_OCTET_STR:
    case ASN_OPAQUE:
        isSame =
            isSame && value.Octets().Length() == octets.size() &&
            std::equal(octets.begin(), octets.end(), value.Octets().Data(),
                       [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
        break;
    }
    Require(isSame, "a value of the message");
}

void CheckValues(const netsnmp_pdu& pdu, const host::SRequest& request)
{
    int index = 0;
    for (const netsnmp_variable_list* from = pdu.variables; from; from = from->next_variable)
        RequireValue(*from, request.bindings[index++].Value());
    Require(index == static_cast<int>(request.bindings.Count()), "the bindings of the message");
}

// No message can hold a shorter identifier (X.690 section 8.19): the wire library takes
// one without octets for 0, and writes that as 0.0.
bool HasShortIdentifier(const BVarBindList& list)
{
    for (int i = 0; i < static_cast<int>(list.Count()); ++i) {
        const BObjectSyntax& value = list[i].Value();
        if (list[i].Name().Length() < 2 ||
            (value.Syntax() == eAsnObjectId && value.ObjectId().Length() < 2))
            return true;
    }
    return false;
}

// A SET's values, sent back in an answer, and read again as a SET.
void CheckRoundTrip(netsnmp_pdu& pdu, const host::SRequest& request)
{
    host::SResponse response;
    for (int i = 0; i < static_cast<int>(request.bindings.Count()); ++i)
        response.bindings.push_back(request.bindings[i]);
    const CPdu answer(host::MakeResponse(pdu, response));
    Require(answer != nullptr, "an answer");
    Require(answer->command == SNMP_MSG_RESPONSE && answer->reqid == pdu.reqid, "its header");
    const CPdu again = Parse(Build(*answer));
    if (!again)
        Differ("an answer that cannot be read");
    again->command = SNMP_MSG_SET;
    GiveEnds(*again);
    host::SRequest back;
    Require(host::ReadRequest(*again, back), "the answer's bindings");
    RequireSame(request.bindings, back.bindings);
}

struct SPlain {
    host::SRequest request;
    std::vector<unsigned char> bindings;
};

std::vector<unsigned char> Element(unsigned char tag, std::vector<unsigned char> content)
{
    const size_t length = content.size();
    const auto digit = [length](int shift) {
        return static_cast<unsigned char>(length >> shift & 0xff);
    };
    content.insert(content.begin(), {tag, 0x83, digit(16), digit(8), digit(0)});
    return content;
}

// By community.
std::vector<unsigned char> MessageOf(const std::vector<unsigned char>& pdu)
{
    std::vector<unsigned char> message{0x02, 0x01, 0x01, 0x04, 0x01, kCommunity};
    message.insert(message.end(), pdu.begin(), pdu.end());
    return Element(0x30, message);
}

// Some managers send numbers with more octets than they need: the first of them again.
void CheckPaddedNumber(const SPlain& plain)
{
    const auto id = static_cast<unsigned>(plain.request.requestId);
    const unsigned char sign = id >> 31 ? 0xff : 0;
    std::vector<unsigned char> content{0x02, 6, sign, sign};
    for (int shift = 24; shift >= 0; shift -= 8)
        content.push_back(static_cast<unsigned char>(id >> shift & 0xff));
    content.insert(content.end(), {0x02, 1, 0, 0x02, 1, 0});
    const std::vector<unsigned char> list = Element(0x30, plain.bindings);
    content.insert(content.end(), list.begin(), list.end());
    const std::vector<unsigned char> message = MessageOf(Element(ePduGet, content));
    Require(host::IsSound(message.data(), message.size()), "a number that is padded");
}

// The octets as the PDU of a message, read without the wire library; null when they are
// left to that.
std::unique_ptr<SPlain> ReadPlain(const unsigned char* data, size_t size)
{
    const std::vector<unsigned char> message =
        MessageOf(std::vector<unsigned char>(data, data + size));
    auto plain = std::make_unique<SPlain>();
    if (!host::ReadPlainRequest(message.data(), message.size(), plain->request, plain->bindings))
        return nullptr;
    Require(host::IsSound(message.data(), message.size()), "a plain request that is not sound");
    CheckPaddedNumber(*plain);
    return plain;
}

std::vector<unsigned char> BuildMessage(netsnmp_pdu& pdu)
{
    netsnmp_session session;
    snmp_sess_init(&session);
    session.version = pdu.version;
    size_t length = 4096; // grows
    auto* packet = static_cast<u_char*>(malloc(length));
    size_t offset = 0;
    std::vector<unsigned char> built;
    if (snmp_build(&packet, &length, &offset, &session, &pdu) == 0)
        built.assign(packet + length - offset, packet + length);
    free(packet);
    return built;
}

// What the wire library has read, sent back as it came and value by value.
void CheckPlainAnswers(netsnmp_pdu& pdu, SPlain& plain)
{
    static host::BPlainAnswer written;
    plain.request.maxMessage = 65535;
    host::SResponse response;
    for (int i = 0; i < static_cast<int>(plain.request.bindings.Count()); ++i)
        response.bindings.push_back(plain.request.bindings[i]);
    for (bool isEcho : {false, true}) {
        response.echo = isEcho;
        response.status = isEcho ? eSnmpGenErr : eSnmpNoError;
        const CPdu answer(host::MakeResponse(pdu, response));
        Require(answer != nullptr, "an answer to a plain request");
        const std::vector<unsigned char> wanted = BuildMessage(*answer);
        if (wanted.empty() || wanted.size() > plain.request.maxMessage)
            continue;
        Require(written.Write(plain.request, plain.bindings, response) == 0, "a plain answer");
        Require(wanted ==
                    std::vector<unsigned char>(written.Data(), written.Data() + written.Length()),
                "its octets");
    }
}

} // namespace
} // namespace VLK::Fuzz

int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    using namespace VLK;
    using namespace VLK::Fuzz;
    const bool isSound = host::IsSound(data, size);
    host::MessageVersion(data, size);
    const CPdu pdu = Parse(std::vector<unsigned char>(data, data + size));
    const std::unique_ptr<SPlain> plain = ReadPlain(data, size);
    Require(!plain || (pdu && host::IsRequest(*pdu)), "a plain request that is none");
    if (!pdu || !host::IsRequest(*pdu))
        return 0;
    GiveEnds(*pdu);
    host::SRequest request;
    const bool isRead = host::ReadRequest(*pdu, request);
    Require(isRead || !plain, "a plain request that cannot be read");
    if (!isRead)
        return 0;
    if (plain) {
        Require(request.unfitStatus == 0, "a plain request with a value that does not fit");
        const host::SRequest& same = plain->request;
        Require(request.requestId == same.requestId && request.pduType == same.pduType &&
                    request.nonRepeaters == same.nonRepeaters &&
                    request.maxRepetitions == same.maxRepetitions &&
                    request.community == same.community && request.protocol == same.protocol,
                "its header");
        RequireSame(request.bindings, same.bindings);
        CheckPlainAnswers(*pdu, *plain);
    }
    Require(request.unfitIndex >= 0 && request.unfitIndex <= int(request.bindings.Count()),
            "the binding that does not fit");
    Require((request.unfitIndex == 0) == (request.unfitStatus == 0), "and its status");
    if (request.pduType == ePduSet && request.unfitStatus == 0)
        CheckValues(*pdu, request);
    if (request.pduType == ePduSet && request.unfitStatus == 0 && isSound &&
        !HasShortIdentifier(request.bindings))
        CheckRoundTrip(*pdu, request);
    return 0;
}
