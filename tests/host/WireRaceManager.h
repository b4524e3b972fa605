// A manager of a race: asks one thing after the other over UDP, and holds each answer to
// what may be answered.
#pragma once

#include "Ber.h"
#include "UdpClient.h"
#include "V3Message.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <map>
#include <optional>

namespace race {

inline const ber::Oid kDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
inline const ber::Oid kObjectId{1, 3, 6, 1, 2, 1, 1, 2, 0};
inline const ber::Oid kUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};
// sysContact, sysName and sysLocation, which are only ever set together, to one text.
inline const std::array<ber::Oid, 3> kTexts{
    {{1, 3, 6, 1, 2, 1, 1, 4, 0}, {1, 3, 6, 1, 2, 1, 1, 5, 0}, {1, 3, 6, 1, 2, 1, 1, 6, 0}}};

// Who writes, in the order in which they are told of in `Seen()`.
inline constexpr std::array<const char*, 4> kWriters{{"one", "two", "old", "operator"}};

// The text number n of a writer: of any length, and spoiled by any octet of another one.
inline std::string TextOf(const std::string& writer, long number)
{
    const char filling = static_cast<char>('a' + number % 26);
    return writer + "-" + std::to_string(number) + "-" +
           std::string(static_cast<size_t>(number % 40), filling);
}

// What one of them has read. Each writer sets its texts in order, so nobody reads an
// earlier one of it after a later one.
class CWitness {
public:
    // Bits of those who were read.
    unsigned Seen() const { return m_seen; }

    void Read(const std::string& text)
    {
        const size_t dash = text.find('-');
        const std::string name = text.substr(0, dash);
        for (size_t writer = 0; writer < kWriters.size(); ++writer) {
            if (name != kWriters[writer] || dash == text.npos)
                continue;
            const long number = std::strtol(text.c_str() + dash + 1, nullptr, 10);
            EXPECT_EQ(text, TextOf(name, number)) << "a text that nobody has set";
            EXPECT_GE(number, m_last[writer]) << "an old text of " << name;
            m_last[writer] = number;
            m_seen = m_seen | 1u << writer;
            return;
        }
        ADD_FAILURE() << "a text of nobody: " << text;
    }
    // All three of one answer.
    void ReadAll(const std::vector<std::string>& texts)
    {
        ASSERT_EQ(texts.size(), kTexts.size());
        EXPECT_EQ(texts[0], texts[1]);
        EXPECT_EQ(texts[1], texts[2]);
        Read(texts[0]);
    }

private:
    std::array<long, kWriters.size()> m_last{};
    std::atomic<unsigned> m_seen{0};
};

// The arcs of an identifier as it is encoded.
inline ber::Oid ArcsOf(const ber::Bytes& content)
{
    ber::Oid arcs;
    unsigned arc = 0;
    for (const char c : content) {
        const auto octet = static_cast<unsigned char>(c);
        arc = arc << 7 | (octet & 0x7f);
        if (octet & 0x80)
            continue;
        arcs.push_back(arc);
        arc = 0;
    }
    return arcs;
}

// One request at a time, each sent once: nothing gets lost on the loopback, and what is
// asked twice may be set twice.
class CManager {
public:
    enum { kGet = 0xa0, kGetNext = 0xa1, kGetBulk = 0xa5, kSet = 0xa3 };

    CManager(unsigned port, int version, std::string community)
        : m_client(port), m_version(version), m_community(std::move(community))
    {
    }

    // An answer that fits, or none: then the test has failed.
    std::optional<ber::Reply> Ask(int pduType, const ber::Bytes& bindings, int second = 0)
    {
        const int id = ++m_id;
        ++m_asked[pduType];
        m_client.Send(ber::Message(m_version, m_community, pduType, id, 0, second, bindings));
        ber::Reply reply = ber::ReadReply(m_client.Receive(kPatience));
        const bool fits = reply.ok && reply.version == m_version && reply.pduType == 0xa2 &&
                          reply.community == m_community && reply.requestId == id;
        EXPECT_TRUE(fits) << "request " << id << " is answered with " << reply.requestId;
        return fits ? std::optional(std::move(reply)) : std::nullopt;
    }
    // One that has no error.
    std::optional<ber::Reply> Have(int pduType, const ber::Bytes& bindings, int second = 0)
    {
        std::optional<ber::Reply> reply = Ask(pduType, bindings, second);
        EXPECT_TRUE(!reply || (reply->status == 0 && reply->index == 0)) << reply->status;
        return reply && reply->status == 0 ? std::move(reply) : std::nullopt;
    }

    void SetTexts(const std::string& text)
    {
        ber::Bytes bindings;
        for (const ber::Oid& name : kTexts)
            bindings += ber::Binding(name, ber::Tlv(4, text));
        const auto reply = Have(kSet, bindings);
        EXPECT_TRUE(!reply || reply->bindings == bindings);
    }
    void ReadTexts()
    {
        ber::Bytes bindings;
        for (const ber::Oid& name : kTexts)
            bindings += ber::Binding(name);
        if (const auto reply = Have(kGet, bindings))
            m_witness.ReadAll(reply->values);
    }
    void Send(const ber::Bytes& datagram) const { m_client.Send(datagram); }
    ber::Bytes Receive() const { return m_client.Receive(kPatience); }

    int Version() const { return m_version; }
    long Asked(int pduType) const
    {
        const auto asked = m_asked.find(pduType);
        return asked == m_asked.end() ? 0 : asked->second;
    }
    void CountOne(int pduType) { ++m_asked[pduType]; }
    CWitness& Witness() { return m_witness; }
    const CWitness& Witness() const { return m_witness; }

private:
    static constexpr int kPatience = 60000;

    const UdpClient m_client;
    const int m_version;
    const std::string m_community;
    int m_id = 0x1000;
    std::map<int, long> m_asked;
    CWitness m_witness;
};

} // namespace race
