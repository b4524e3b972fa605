// Informs of SNMPv3, whose receivers have engines of their own: nothing waits for one.
#include "ReloadingAgent.h"
#include "TrapDaemon.h"
#include "V3Message.h"

#include <atomic>
#include <poll.h>
#include <thread>

namespace {

const std::string kRaise = ".1.3.6.1.4.1.32473.5.1.0";
const std::string kDescription = ".1.3.6.1.2.1.1.1.0";
const std::string kTrap = ".1.3.6.1.4.1.32473.5.0.18";

// Not before tests have seen what they wait for.
constexpr int kLongTimeout = 60;

std::string Configuration(const std::string& address, const std::string& timeout,
                          const std::string& level = "authPriv",
                          const std::string& passphrase = "a word to sign with")
{
    return "[[community]]\nname = \"boss\"\nread = \"everything\"\nwrite = \"everything\"\n"
           "[[user]]\nname = \"noc\"\nauth = \"SHA-256\"\nauthPassphrase = \"" +
           passphrase +
           "\"\npriv = \"AES\"\nprivPassphrase = \"a word to hide with\"\n"
           "[[group]]\nname = \"senders\"\nmembers = [{ securityName = \"noc\", "
           "securityModel = \"USM\" }]\n"
           "[[access]]\ngroup = \"senders\"\nnotify = \"everything\"\n"
           "[[trapSink]]\naddress = \"" +
           address + "\"\nversion = \"3\"\nuser = \"noc\"\nlevel = \"" + level +
           "\"\ninform = true\nretries = 200\ntimeout = " + timeout + "\n";
}

// What a daemon has to know of the user.
std::string User(const std::string& passphrase = "a word to sign with")
{
    return "createUser noc SHA-256 \"" + passphrase +
           "\" AES \"a word to hide with\"\nauthUser log noc\n";
}

// A receiver of the test's own, datagram by datagram.
class Socket {
public:
    explicit Socket(unsigned to = 0) : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = LoopbackPort(0);
        socklen_t length = sizeof own;
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&own), length), 0);
        EXPECT_EQ(getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length), 0);
        m_port = ntohs(own.sin_port);
        m_peer = LoopbackPort(to);
    }
    ~Socket() { close(m_socket); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }
    // Empty when nothing comes in that time.
    ber::Bytes Receive(int milliseconds = 20000)
    {
        pollfd wait{m_socket, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1)
            return "";
        ber::Bytes datagram(65536, '\0');
        sockaddr_in from = {};
        socklen_t length = sizeof from;
        const ssize_t count = recvfrom(m_socket, datagram.data(), datagram.size(), 0,
                                       reinterpret_cast<sockaddr*>(&from), &length);
        if (count > 0)
            m_peer = from;
        datagram.resize(count > 0 ? static_cast<size_t>(count) : 0);
        return datagram;
    }
    // To who sent the last one, or to the port of the beginning.
    void Send(const ber::Bytes& datagram) const { SendTo(datagram, m_peer); }
    void SendTo(const ber::Bytes& datagram, const Socket& sender) const
    {
        SendTo(datagram, sender.m_peer);
    }

private:
    static sockaddr_in LoopbackPort(unsigned port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }
    void SendTo(const ber::Bytes& datagram, const sockaddr_in& to) const
    {
        sendto(m_socket, datagram.data(), datagram.size(), 0,
               reinterpret_cast<const sockaddr*>(&to), sizeof to);
    }

    int m_socket;
    unsigned m_port = 0;
    sockaddr_in m_peer = {};
};

// One address before daemons that come and go; what no daemon is there for is lost.
class Switch {
public:
    Switch() : m_thread([this] { Relay(); }) {}
    ~Switch()
    {
        m_isOver = true;
        m_thread.join();
    }
    std::string Address() const { return m_front.Address(); }
    unsigned Lost() const { return m_lost; }
    void LeadTo(const TrapDaemon& daemon) { m_port = daemon.Port(); }

private:
    void Relay()
    {
        unsigned port = 0;
        std::unique_ptr<Socket> back;
        while (!m_isOver) {
            if (m_port != port) {
                port = m_port;
                back = std::make_unique<Socket>(port);
            }
            const ber::Bytes question = m_front.Receive(5);
            if (!question.empty() && !back)
                ++m_lost;
            else if (!question.empty())
                back->Send(question);
            const ber::Bytes answer = back ? back->Receive(5) : "";
            if (!answer.empty())
                m_front.Send(answer);
        }
    }

    Socket m_front;
    std::atomic<unsigned> m_port{0};
    std::atomic<unsigned> m_lost{0};
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

bool IsQuestionForEngine(const ber::Bytes& datagram)
{
    const v3::Reply message = v3::ReadReply(datagram);
    return message.ok && message.pduType == v3::kGet && message.engineId.empty() &&
           message.user.empty();
}

int MessageId(const ber::Bytes& datagram)
{
    ber::Reader message(ber::Reader(datagram).Element());
    message.Number();
    return ber::Reader(message.Element()).Number();
}

ber::Bytes Report(const ber::Bytes& question, const ber::Bytes& engine, const ber::Oid& counter,
                  const ber::Bytes& user = "")
{
    const ber::Bytes global = ber::Integer(MessageId(question)) + ber::Integer(65507) +
                              ber::Tlv(4, ber::Bytes(1, '\0')) + ber::Integer(3);
    const ber::Bytes security = ber::Tlv(4, engine) + ber::Integer(1) + ber::Integer(1) +
                                ber::Tlv(4, user) + ber::Tlv(4, "") + ber::Tlv(4, "");
    const ber::Bytes pdu = ber::Integer(0) + ber::Integer(0) + ber::Integer(0) +
                           ber::Tlv(0x30, ber::Binding(counter, ber::Tlv(0x41, "\1")));
    return ber::Tlv(
        0x30,
        ber::Integer(3) + ber::Tlv(0x30, global) + ber::Tlv(4, ber::Tlv(0x30, security)) +
            ber::Tlv(0x30, ber::Tlv(4, engine) + ber::Tlv(4, "") + ber::Tlv(v3::kReport, pdu)));
}

const ber::Bytes kEngine = "\x80\1\2\3\5one engine";
const ber::Bytes kOther = "\x80\1\2\3\5another one";

// Questions that come meanwhile are answered with the engine; without one they are not.
ber::Bytes NextInform(Socket& receiver, const ber::Bytes& engine = "")
{
    for (ber::Bytes next = receiver.Receive(); !next.empty(); next = receiver.Receive()) {
        if (v3::ReadReply(next).pduType == v3::kInform)
            return next;
        if (!engine.empty() && IsQuestionForEngine(next))
            receiver.Send(Report(next, engine, v3::kUnknownEngineIds));
    }
    return "";
}

// Whether informs come for the engine, once questions are answered with it.
bool TellsEngine(Socket& receiver, const ber::Bytes& engine)
{
    for (int tries = 0; tries < 100; ++tries) {
        const ber::Bytes inform = NextInform(receiver, engine);
        if (inform.empty() || v3::ReadReply(inform).engineId == engine)
            return !inform.empty();
    }
    return false;
}

class InformEngines : public testing::Test {
protected:
    void Start(const std::string& configuration)
    {
        agent = std::make_unique<ReloadingAgent>(configuration, Arguments(), TRAPPING_AGENT);
        ASSERT_TRUE(agent->IsReady()) << agent->LogText();
    }
    void Raise() { EXPECT_EQ(agent->Ask("snmpset", "boss", {kRaise, "i", "2"}).status, 0); }
    static bool IsInform(const std::string& line)
    {
        return line.find(kTrap) != line.npos && line.find("INFORM, SNMP v3, user noc") != line.npos;
    }
    // The inform of this test, once its receiver has come.
    static bool TakesInform(TrapDaemon& daemon)
    {
        for (std::string line = daemon.Next(); !line.empty(); line = daemon.Next()) {
            if (IsInform(line))
                return true;
        }
        return false;
    }

    std::unique_ptr<ReloadingAgent> agent;
};

} // namespace

// The request is answered before the receiver says who it is, and the receiver is heard still.
TEST_F(InformEngines, NoRequestWaitsForAReceiverThatIsSilent)
{
    Socket receiver;
    ASSERT_NO_FATAL_FAILURE(
        Start(Configuration(receiver.Address(), std::to_string(kLongTimeout), "noAuthNoPriv")));
    const ber::Bytes question = receiver.Receive();
    ASSERT_TRUE(IsQuestionForEngine(question)) << "coldStart";
    Raise();
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(agent->Shows("boss", kDescription));
    receiver.Send(Report(question, kEngine, v3::kUnknownEngineIds));
    for (int i = 0; i < 2; ++i) {
        const v3::Reply inform = v3::ReadReply(NextInform(receiver));
        EXPECT_EQ(inform.engineId, kEngine);
        EXPECT_EQ(inform.user, "noc");
    }
}

TEST_F(InformEngines, OnlyTheReceiverTellsItsEngineAndOnlyInAnswer)
{
    Socket receiver;
    Socket stranger;
    ASSERT_NO_FATAL_FAILURE(
        Start(Configuration(receiver.Address(), std::to_string(kLongTimeout), "noAuthNoPriv")));
    const ber::Bytes question = receiver.Receive();
    ASSERT_TRUE(IsQuestionForEngine(question));
    stranger.SendTo(Report(question, kOther, v3::kUnknownEngineIds), receiver);
    receiver.Send(Report(question, kOther, v3::kUnknownUserNames));
    EXPECT_TRUE(agent->Shows("boss", kDescription));
    EXPECT_EQ(receiver.Receive(50), "");
}

TEST_F(InformEngines, AStrangersWordOfTheEngineIsNotTaken)
{
    Socket receiver;
    Socket stranger;
    ASSERT_NO_FATAL_FAILURE(
        Start(Configuration(receiver.Address(), std::to_string(kLongTimeout), "noAuthNoPriv")));
    const ber::Bytes question = receiver.Receive();
    ASSERT_TRUE(IsQuestionForEngine(question));
    stranger.SendTo(Report(question, kOther, v3::kUnknownEngineIds), receiver);
    receiver.Send(Report(question, kEngine, v3::kUnknownEngineIds));
    EXPECT_EQ(v3::ReadReply(receiver.Receive()).engineId, kEngine);
}

TEST_F(InformEngines, AnInformThatComesToAnotherEngineGoesToThatOne)
{
    Socket receiver;
    ASSERT_NO_FATAL_FAILURE(
        Start(Configuration(receiver.Address(), std::to_string(kLongTimeout), "noAuthNoPriv")));
    receiver.Send(Report(receiver.Receive(), kEngine, v3::kUnknownEngineIds));
    const ber::Bytes inform = receiver.Receive();
    EXPECT_EQ(v3::ReadReply(inform).engineId, kEngine);
    receiver.Send(Report(inform, kOther, v3::kUnknownEngineIds));
    EXPECT_EQ(v3::ReadReply(receiver.Receive()).engineId, kOther);
}

TEST_F(InformEngines, AnInformThatIsNotAnsweredHasTheEngineAskedForAgain)
{
    Socket receiver;
    ASSERT_NO_FATAL_FAILURE(Start(Configuration(receiver.Address(), "0.5", "noAuthNoPriv")));
    EXPECT_TRUE(IsQuestionForEngine(receiver.Receive())) << "which is lost";
    EXPECT_TRUE(TellsEngine(receiver, kEngine));
    EXPECT_TRUE(TellsEngine(receiver, kOther));
}

TEST_F(InformEngines, AnInformThatIsReportedAsUntimelyIsTriedAgain)
{
    Socket receiver;
    ASSERT_NO_FATAL_FAILURE(Start(Configuration(receiver.Address(), "0.5", "noAuthNoPriv")));
    EXPECT_TRUE(TellsEngine(receiver, kEngine));
    for (int i = 0; i < 6; ++i) {
        const ber::Bytes inform = NextInform(receiver, kEngine);
        ASSERT_NE(inform, "") << i;
        receiver.Send(Report(inform, kEngine, v3::kNotInTimeWindows, "noc"));
    }
}

TEST_F(InformEngines, AReceiverThatComesLateTakesWhatIsKeptForIt)
{
    Switch address;
    ASSERT_NO_FATAL_FAILURE(Start(Configuration(address.Address(), "1")));
    Raise();
    EXPECT_TRUE(VLK::Eventually([&] { return address.Lost() > 1; }));
    TrapDaemon daemon(User());
    ASSERT_TRUE(daemon.IsReady());
    address.LeadTo(daemon);
    EXPECT_TRUE(TakesInform(daemon));
}

TEST_F(InformEngines, AReceiverThatStartsAgainAsAnotherEngineIsSentTo)
{
    Switch address;
    ASSERT_NO_FATAL_FAILURE(Start(Configuration(address.Address(), "1")));
    TrapDaemon first(User());
    ASSERT_TRUE(first.IsReady());
    address.LeadTo(first);
    Raise();
    EXPECT_TRUE(TakesInform(first));
    TrapDaemon second("engineIDType 1\nexactEngineID 0x80000102030405060708\n" + User());
    ASSERT_TRUE(second.IsReady());
    address.LeadTo(second);
    Raise();
    EXPECT_TRUE(TakesInform(second));
}

TEST_F(InformEngines, APassphraseThatChangesIsUsedForWhatIsPending)
{
    Switch address;
    TrapDaemon daemon(User("another word to sign with"));
    ASSERT_TRUE(daemon.IsReady());
    address.LeadTo(daemon);
    ASSERT_NO_FATAL_FAILURE(Start(Configuration(address.Address(), "1")));
    Raise();
    EXPECT_TRUE(agent->Shows("boss", kDescription));
    agent->Write(Configuration(address.Address(), "1", "authPriv", "another word to sign with"));
    kill(agent->Pid(), SIGHUP);
    EXPECT_TRUE(agent->Logs(agent->ReadAgain()));
    EXPECT_TRUE(TakesInform(daemon));
}
