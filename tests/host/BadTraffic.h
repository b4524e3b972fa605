// Bad messages to a running agent, and a judge of what it answers.
#pragma once

#include "BadMessages.h"
#include "Footprint.h"
#include "RunningAgent.h"
#include "StrictReader.h"
#include "UdpClient.h"
#include "UdpProxy.h"

#include <cstdio>
#include <map>
#include <memory>
#include <sys/stat.h>

// An answer is right when the message with its request id is whole by the strict reader,
// and when it has data only for whoever may read them. A request that must be answered
// stands behind every few messages: the agent reads in order.
class BadTraffic : public testing::Test {
protected:
    void SetUp() override
    {
        WriteFile(m_config, kText);
        chmod(m_config.c_str(), 0600);
        m_agent = std::make_unique<RunningServer>(
            Arguments{VKAGENTD, "--store", m_store, "--config", m_config});
        ASSERT_TRUE(m_agent->IsReady()) << m_agent->FirstLine();
        m_client = std::make_unique<UdpClient>(m_agent->Port());
    }

    // Sends so many; how many of them were answered is counted.
    void Send(BadMessages& messages, int count)
    {
        for (int sent = 0; sent < count && !HasFailure();) {
            m_batch.clear();
            size_t octets = 0;
            while (sent < count && m_batch.size() < 24 && octets < 60000) {
                m_batch.push_back(messages.Next());
                octets += m_batch.back().size() + 500;
                ++sent;
            }
            SendBatch();
        }
    }

    // Messages of every version and level that the agent answers.
    std::vector<ber::Bytes> WholeOnes()
    {
        const ber::Bytes descr = ber::Binding(kDescr);
        const ber::Bytes set = ber::Binding(kContact, ber::Tlv(4, "somebody"));
        std::vector<ber::Bytes> whole{
            ber::Message(0, "public", 0xa0, BadMessages::kId, 0, 0, descr),
            ber::Message(1, "public", 0xa0, BadMessages::kId, 0, 0, descr + ber::Binding(kContact)),
            ber::Message(1, "public", 0xa1, BadMessages::kId, 0, 0, ber::Binding({1, 3, 6, 1})),
            ber::Message(1, "public", 0xa5, BadMessages::kId, 1, 5,
                         descr + ber::Binding({1, 3, 6, 1})),
            ber::Message(1, "boss", 0xa3, BadMessages::kId, 0, 0, set),
        };
        v3::Request request;
        request.bindings = descr;
        whole.push_back(request.Encode()); // discovery
        request.user = "anyone";
        request.engineId = request.contextEngineId = EngineId();
        whole.push_back(request.Encode());
        request.flags = 0;
        whole.push_back(request.Encode());
        for (const char* level : {"authNoPriv", "authPriv"})
            m_recorded.push_back(Recorded(level));
        whole.insert(whole.end(), m_recorded.begin(), m_recorded.end());
        return whole;
    }

    void PrintOutcome(int sent) const
    {
        std::printf("%d messages, %d of them whole: %d answers, %d with data, %d reports\n", sent,
                    m_whole, m_answers, m_withData, m_reports);
    }

    static inline const ber::Oid kDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
    static inline const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};

    TempDir m_directory;
    std::string m_store = m_directory.File("store.db");
    std::unique_ptr<RunningServer> m_agent;
    std::unique_ptr<UdpClient> m_client;
    int m_whole = 0;
    int m_answers = 0;
    int m_withData = 0;
    int m_reports = 0;

private:
    static constexpr const char* kText = R"(agentAddress = "udp:127.0.0.1:0"
[[community]]
name = "public"
read = "systemonly"
[[community]]
name = "boss"
read = "systemonly"
write = "systemonly"
[[user]]
name = "anyone"
read = "systemonly"
[[user]]
name = "reader"
auth = "SHA-256"
authPassphrase = "the reader's word"
priv = "AES"
privPassphrase = "the reader's other word"
read = "systemonly"
)";
    // Of no bad message, also when three of its bits are turned.
    static constexpr int kProbe = 0x70000000;
    static constexpr int kPatience = 10000;

    ber::Bytes EngineId() const
    {
        EXPECT_TRUE(m_client->Send(v3::Request().Encode()));
        return v3::ReadReply(m_client->Receive()).engineId;
    }

    // The last message of a client with authentication.
    ber::Bytes Recorded(const std::string& level) const
    {
        UdpProxy proxy(m_agent->Port());
        const Outcome get = m_agent->Tools().Run({"snmpget",
                                                  "-v3",
                                                  "-l",
                                                  level,
                                                  "-u",
                                                  "reader",
                                                  "-a",
                                                  "SHA-256",
                                                  "-A",
                                                  "the reader's word",
                                                  "-x",
                                                  "AES",
                                                  "-X",
                                                  "the reader's other word",
                                                  "-r",
                                                  "1",
                                                  "-t",
                                                  "10",
                                                  proxy.Address(),
                                                  oid::kSysDescr});
        EXPECT_NE(get.output.find(level == "authPriv" ? "Velkoran" : ""), std::string::npos)
            << get.output;
        return proxy.End().back();
    }

    void SendBatch()
    {
        for (const ber::Bytes& message : m_batch) {
            m_recordedSent += std::count(m_recorded.begin(), m_recorded.end(), message);
            if (const std::optional<strict::Message> read = strict::Read(message)) {
                ++m_whole;
                m_open.emplace(read->requestId, *read);
            }
            // What cannot be sent is longer than a datagram.
            EXPECT_EQ(m_client->Send(message), message.size() <= 65507) << message.size();
        }
        const int probe = kProbe + m_probes++ % 0xffff;
        const ber::Bytes request =
            ber::Message(1, "public", 0xa0, probe, 0, 0, ber::Binding(kDescr));
        ASSERT_TRUE(m_client->Send(request));
        for (int tries = 0;;) {
            const ber::Bytes answer = m_client->Receive(kPatience);
            if (answer.empty()) {
                // The system may drop what finds no room: it is asked again.
                if (++tries > 4)
                    return TellFailure("no answer to what came behind", answer);
                ASSERT_TRUE(m_client->Send(request));
                continue;
            }
            if (IsAnswerTo(probe, answer))
                return;
            Judge(answer);
            if (HasFailure())
                return;
        }
    }

    static bool IsAnswerTo(int probe, const ber::Bytes& datagram)
    {
        const ber::Reply reply = ber::ReadReply(datagram);
        return reply.version == 1 && reply.pduType == 0xa2 && reply.requestId == probe &&
               reply.status == 0 && reply.values == std::vector<ber::Bytes>{"Velkoran agent"};
    }

    void Judge(const ber::Bytes& datagram)
    {
        if (IsAnswerTo(kProbe + (m_probes + 0xffff - 2) % 0xffff, datagram))
            return; // the one before was asked again
        ++m_answers;
        const std::optional<strict::Message> answer = strict::Read(datagram);
        if (!answer)
            return TellFailure("a malformed answer", datagram);
        const bool isV3 = answer->version == 3;
        if (isV3 && answer->pduType == 0xa8) {
            ++m_reports;
            return JudgeReport(v3::ReadReply(datagram), datagram);
        }
        const auto [first, last] = m_open.equal_range(answer->requestId);
        const bool isAsked = std::any_of(first, last, [&](const auto& asked) {
            return asked.second.version == answer->version && asked.second.name == answer->name;
        });
        if (!isAsked)
            return TellFailure("an answer to a malformed message", datagram);
        if (isV3 && answer->name == "reader") {
            // As it was sent once it is believed, each time and maybe late, and never when
            // it was changed. Who only says that he is `reader` gets an error: it is below
            // the level of his view.
            const bool isError = answer->flags == 0 && v3::ReadReply(datagram).status > 0;
            if (!isError && ++m_believed > m_recordedSent)
                TellFailure("an answer to a forged message", datagram);
            return;
        }
        m_withData += isV3 || ber::ReadReply(datagram).status == 0;
        const bool mayRead =
            isV3 ? answer->name == "anyone" : answer->name == "public" || answer->name == "boss";
        if (!mayRead || answer->pduType != 0xa2)
            TellFailure("an answer to whom there is none for", datagram);
    }

    // Counters of USM, of the dispatcher or of the contexts, and nothing else.
    void JudgeReport(const v3::Reply& report, const ber::Bytes& datagram)
    {
        const ber::Bytes counters[] = {ber::Name({1, 3, 6, 1, 6, 3, 15, 1, 1}),
                                       ber::Name({1, 3, 6, 1, 6, 3, 11, 2, 1}),
                                       ber::Name({1, 3, 6, 1, 6, 3, 12, 1})};
        const bool isCounter =
            std::any_of(std::begin(counters), std::end(counters), [&](const ber::Bytes& counter) {
                return report.names.size() == 1 && report.names[0].rfind(counter, 0) == 0;
            });
        if (!isCounter)
            TellFailure("a report of something else", datagram);
    }

    static std::string Text(const ber::Bytes& octets)
    {
        static const char digits[] = "0123456789abcdef";
        std::string text;
        for (unsigned char octet : octets.substr(0, 600))
            text += {digits[octet >> 4], digits[octet & 15]};
        return text;
    }

    void TellFailure(const std::string& what, const ber::Bytes& answer) const
    {
        std::string text = what + ": " + Text(answer) + "\nto one of";
        for (const ber::Bytes& message : m_batch)
            text += "\n" + std::to_string(strict::Read(message).has_value()) + " " + Text(message);
        ADD_FAILURE() << text;
    }

    std::string m_config = m_directory.File("agent.toml");
    std::vector<ber::Bytes> m_batch;
    std::vector<ber::Bytes> m_recorded;
    std::ptrdiff_t m_recordedSent = 0;
    std::ptrdiff_t m_believed = 0;
    // By request id: a SET is answered late, when the disk has it.
    std::multimap<int, strict::Message> m_open;
    int m_probes = 0;
};
