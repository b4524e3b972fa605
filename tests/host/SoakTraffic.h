// Everything that an agent may be asked, mixed by chance, for as long as one likes.
#pragma once

#include "BadMessages.h"
#include "Footprint.h"
#include "PipedAgent.h"
#include "SoakReceiver.h"
#include "UdpClient.h"

#include <map>

class SoakTraffic {
public:
    SoakTraffic(unsigned seed, const std::string& directory)
        : m_random(seed), m_store(directory + "/store.db"), m_config(directory + "/agent.toml"),
          m_bad(seed, {ber::Message(1, "private", 0xa0, BadMessages::kId, 0, 0, Descr()),
                       ber::Message(0, "public", 0xa1, BadMessages::kId, 0, 0, Descr()),
                       v3::Request().Encode()})
    {
        WriteFile(m_config, Text());
        chmod(m_config.c_str(), 0600);
        m_agent = std::make_unique<PipedAgent>(
            m_store, Arguments{"--console", "--config", m_config, "--workers", "8"});
    }

    bool IsReady()
    {
        if (!m_agent->IsReady())
            return false;
        m_client = std::make_unique<UdpClient>(m_agent->Port());
        m_engineId = v3::ReadReply(Ask(v3::Request().Encode())).engineId;
        return !m_engineId.empty() && MakeAlarm();
    }

    // One thing after the other.
    void Step()
    {
        m_receiver.TakeAll();
        using FAct = void (SoakTraffic::*)();
        static constexpr std::pair<unsigned, FAct> kActs[] = {
            {40, &SoakTraffic::Get},        {8, &SoakTraffic::GetV3},
            {6, &SoakTraffic::Walk},        {3, &SoakTraffic::WalkV1},
            {6, &SoakTraffic::SetScalar},   {6, &SoakTraffic::ChangeView},
            {6, &SoakTraffic::ChangeAlarm}, {8, &SoakTraffic::BeRefused},
            {12, &SoakTraffic::SendBad},    {4, &SoakTraffic::Command},
            {3, &SoakTraffic::TurnSwitch},
        };
        unsigned lot = Below(102 * 10);
        if (lot == 0)
            return AskWithPrivacy();
        lot /= 10;
        for (const auto& [share, act] : kActs) {
            if (lot < share)
                return (this->*act)();
            lot -= share;
        }
    }

    SFootprint Footprint() const { return SFootprint::Of(m_agent->Pid(), m_store); }
    long Asked() const { return m_asked; }
    const SoakReceiver& Receiver() const { return m_receiver; }
    int End() { return m_agent->Kill(SIGTERM); }
    std::string Log() const { return m_agent->LogText(); }
    // Enough SETs for the log of the store to begin again at its beginning.
    void FillLog()
    {
        for (int i = 0; i < 600 && !testing::Test::HasFailure(); ++i)
            SetScalar();
    }

private:
    static constexpr int kPatience = 20000;

    static ber::Bytes Descr() { return ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}); }
    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }

    std::string Text() const
    {
        const std::string sink = "community = \"notes\"\naddress = \"" + m_receiver.Address();
        return "snmpEnableAuthenTraps = true\nalarmCommunity = \"notes\"\n"
               "[[community]]\nname = \"notes\"\nread = \"everything\"\nsources = []\n"
               "[[view]]\nname = \"soak\"\ninclude = [\"1.3\"]\n"
               "[[user]]\nname = \"anyone\"\nread = \"everything\"\n"
               "[[user]]\nname = \"writer\"\nauth = \"SHA-256\"\n"
               "authPassphrase = \"the writer's word\"\npriv = \"AES\"\n"
               "privPassphrase = \"the writer's other word\"\nread = \"everything\"\n"
               "write = \"everything\"\n"
               "[[trapSink]]\n" +
               sink + "\"\n[[trapSink]]\nversion = \"1\"\n" + sink +
               "\"\n[[trapSink]]\ninform = true\ntimeout = 0.5\nretries = 2\n" + sink + "\"\n";
    }

    // What is not answered was lost, as the network may do.
    ber::Bytes Ask(const ber::Bytes& request)
    {
        ++m_asked;
        for (int tries = 0; tries < 3; ++tries) {
            EXPECT_TRUE(m_client->Send(request));
            ber::Bytes answer = m_client->Receive(kPatience);
            if (!answer.empty())
                return answer;
        }
        ADD_FAILURE() << "no answer";
        return "";
    }
    // Until the answer comes that has the number of the request.
    ber::Reply Request(int version, const char* community, int pduType, const ber::Bytes& bindings,
                       int second = 0)
    {
        const int id = 0x70000000 + m_requests++ % 0xffffff;
        ber::Bytes answer = Ask(ber::Message(version, community, pduType, id, 0, second, bindings));
        for (;;) {
            ber::Reply reply = ber::ReadReply(answer);
            if (reply.ok && reply.version == version && reply.requestId == id)
                return reply;
            answer = m_client->Receive(kPatience);
            if (answer.empty()) {
                ADD_FAILURE() << "no answer to the request itself";
                return {};
            }
        }
    }
    int Set(const ber::Bytes& bindings) { return Request(1, "private", 0xa3, bindings).status; }

    static ber::Bytes Number(const ber::Oid& entry, unsigned column, const ber::Oid& index,
                             int value)
    {
        return ber::Binding(Cell(entry, column, index), ber::Integer(value));
    }
    static ber::Oid Cell(ber::Oid entry, unsigned column, const ber::Oid& index)
    {
        entry.push_back(column);
        entry.insert(entry.end(), index.begin(), index.end());
        return entry;
    }

    void Get()
    {
        static const ber::Oid kNames[] = {{1, 3, 6, 1, 2, 1, 1, 3, 0},
                                          {1, 3, 6, 1, 2, 1, 2, 1, 0},
                                          {1, 3, 6, 1, 2, 1, 11, 1, 0},
                                          {1, 3, 6, 1, 2, 1, 25, 1, 6, 0}};
        const ber::Bytes name = ber::Binding(kNames[Below(4)]);
        EXPECT_EQ(Request(static_cast<int>(Below(2)), "public", 0xa0, name + Descr()).status, 0);
    }

    void GetV3()
    {
        v3::Request request;
        request.engineId = request.contextEngineId = Below(4) ? m_engineId : "";
        request.user = Below(4) ? "anyone" : "nobody";
        request.bindings = Descr();
        v3::Reply reply = v3::ReadReply(Ask(request.Encode()));
        for (int i = 0; i < 100 && !reply.ok; ++i) // late answers to others
            reply = v3::ReadReply(m_client->Receive(kPatience));
        EXPECT_TRUE(reply.ok);
    }

    // Of all, or of a module that asks the kernel.
    void Walk()
    {
        static const std::vector<ber::Oid> kStarts{
            {1, 3}, {1, 3, 6, 1, 2, 1, 2}, {1, 3, 6, 1, 2, 1, 25}, {1, 3, 6, 1, 2, 1, 31}};
        ber::Bytes name = ber::ObjectId(kStarts[Below(4)]);
        for (int steps = 0; steps < 200; ++steps) {
            const ber::Reply reply =
                Request(1, "public", 0xa5, ber::Tlv(0x30, name + ber::Tlv(5, "")), 40);
            EXPECT_EQ(reply.status, 0);
            if (reply.tags.empty() || reply.tags.back() == 130)
                return;
            name = ber::Tlv(6, reply.names.back());
        }
        ADD_FAILURE() << "a walk does not end";
    }
    void WalkV1()
    {
        ber::Bytes name = ber::ObjectId({1, 3, 6, 1, 2, 1, 1});
        for (int steps = 0; steps < 30; ++steps) {
            const ber::Reply reply =
                Request(0, "public", 0xa1, ber::Tlv(0x30, name + ber::Tlv(5, "")));
            EXPECT_EQ(reply.status, 0);
            if (reply.names.empty())
                return;
            name = ber::Tlv(6, reply.names.back());
        }
    }

    void SetScalar()
    {
        EXPECT_EQ(Set(ber::Binding({1, 3, 6, 1, 2, 1, 1, 4 + Below(3), 0},
                                   ber::Tlv(4, "soak " + std::to_string(Below(1000000))))),
                  0);
    }

    // Makes the row, or destroys it, as it may be.
    void ChangeView()
    {
        static const ber::Oid kEntry{1, 3, 6, 1, 6, 3, 16, 1, 5, 2, 1};
        const ber::Oid index{4, 's', 'o', 'a', 'k', 3, 1, 4, Below(20)};
        if (Set(Number(kEntry, 6, index, 4) + Number(kEntry, 4, index, 2)) != 0) {
            EXPECT_EQ(Set(Number(kEntry, 6, index, 6)), 0);
        }
    }

    static ber::Oid Events() { return {1, 3, 6, 1, 2, 1, 16, 9, 1, 1}; }
    static ber::Oid Alarms() { return {1, 3, 6, 1, 2, 1, 16, 3, 1, 1}; }

    // Notifies whenever snmpEnableAuthenTraps is turned.
    bool MakeAlarm()
    {
        return Set(Number(Events(), 7, {1}, 2) + Number(Events(), 3, {1}, 4)) == 0 &&
               Set(Number(Events(), 7, {1}, 1)) == 0 && AddAlarm(1, 1, true);
    }
    bool AddAlarm(unsigned index, int interval, bool isStarted)
    {
        const ber::Bytes columns =
            Number(Alarms(), 12, {index}, 2) + Number(Alarms(), 2, {index}, interval) +
            ber::Binding(Cell(Alarms(), 3, {index}), ber::ObjectId({1, 3, 6, 1, 2, 1, 11, 30, 0})) +
            Number(Alarms(), 7, {index}, 2) + Number(Alarms(), 8, {index}, 1) +
            Number(Alarms(), 9, {index}, 1) + Number(Alarms(), 10, {index}, 1);
        return Set(columns) == 0 && (!isStarted || Set(Number(Alarms(), 12, {index}, 1)) == 0);
    }
    void ChangeAlarm()
    {
        const unsigned index = 2 + Below(10);
        if (!AddAlarm(index, 60, Below(2) == 0)) {
            EXPECT_EQ(Set(Number(Alarms(), 12, {index}, 4)), 0);
        }
    }
    void TurnSwitch()
    {
        m_isOn = !m_isOn;
        EXPECT_EQ(Set(ber::Binding({1, 3, 6, 1, 2, 1, 11, 30, 0}, ber::Integer(m_isOn ? 1 : 2))),
                  0);
    }

    void BeRefused()
    {
        const ber::Bytes text = ber::Binding({1, 3, 6, 1, 2, 1, 1, 4, 0}, ber::Tlv(4, "x"));
        EXPECT_NE(Request(1, "public", 0xa3, text).status, 0);
        EXPECT_NE(Set(text + Number({1, 3, 6, 1, 2, 1, 1}, 1, {0}, 5)), 0);
        EXPECT_TRUE(m_client->Send(ber::Message(1, "stranger", 0xa0, 1, 0, 0, Descr())));
    }
    void SendBad()
    {
        for (int i = 0; i < 20; ++i)
            m_client->Send(m_bad.Next());
        Get(); // behind them
    }

    // Until the answer to the last command is there.
    void Command()
    {
        const std::string sink = "trap:" + m_receiver.Address();
        const std::string commands[] = {"get 1.3.6.1.2.1.1.3.0\n",
                                        "getnext 1\n",
                                        "set 1.3.6.1.2.1.1.6.0 4 there\n",
                                        "agents -s" + sink + "\nagents -r" + sink + "\n",
                                        "agparams " + sink + "\n",
                                        "nonsense 1 2 3\n",
                                        "clivacm\n",
                                        "get 1.3.6.1.2.1.99\n"};
        ++m_asked;
        m_agent->Type(commands[Below(8)] + "help getnext\n");
        for (int lines = 0; lines < 100; ++lines) {
            if (m_agent->Line().find("getnext: ") != std::string::npos)
                return;
        }
        ADD_FAILURE() << "the console does not answer";
    }

    void AskWithPrivacy()
    {
        ++m_asked;
        const Outcome set = m_tools.Run({"snmpset",
                                         "-v3",
                                         "-l",
                                         "authPriv",
                                         "-u",
                                         "writer",
                                         "-a",
                                         "SHA-256",
                                         "-A",
                                         "the writer's word",
                                         "-x",
                                         "AES",
                                         "-X",
                                         "the writer's other word",
                                         "-t",
                                         "20",
                                         "-On",
                                         m_agent->Address(),
                                         oid::kSysLocation,
                                         "s",
                                         "with privacy"});
        EXPECT_EQ(set.status, 0) << set.output;
    }

    std::mt19937 m_random;
    std::string m_store;
    std::string m_config;
    BadMessages m_bad;
    SoakReceiver m_receiver;
    SnmpTools m_tools;
    std::unique_ptr<PipedAgent> m_agent;
    std::unique_ptr<UdpClient> m_client;
    ber::Bytes m_engineId;
    int m_requests = 0;
    long m_asked = 0;
    bool m_isOn = true;
};
