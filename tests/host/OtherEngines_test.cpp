// Keys for the engine of a receiver open nothing here.
#include "RunningAgent.h"
#include "UdpClient.h"
#include "V3Message.h"

#include <sys/stat.h>

namespace {

const ber::Bytes kEngine("\x80\x00\x1f\x88\x04receiver", 13);
const ber::Oid kSysDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const ber::Oid kSysContact{1, 3, 6, 1, 2, 1, 1, 4, 0};

// A receiver of informs, which says who it is and acknowledges nothing.
class Receiver {
public:
    Receiver() : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof own;
        if (bind(m_socket, reinterpret_cast<sockaddr*>(&own), length) == 0 &&
            getsockname(m_socket, reinterpret_cast<sockaddr*>(&own), &length) == 0)
            m_port = ntohs(own.sin_port);
    }
    ~Receiver() { close(m_socket); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    std::string Address() const { return "udp:127.0.0.1:" + std::to_string(m_port); }
    // Answers questions until an inform comes for this engine.
    bool IsInformed() const
    {
        char datagram[65536];
        for (;;) {
            pollfd wait{m_socket, POLLIN, 0};
            sockaddr_in from = {};
            socklen_t length = sizeof from;
            if (poll(&wait, 1, 60000) != 1)
                return false;
            const ssize_t count = recvfrom(m_socket, datagram, sizeof datagram, 0,
                                           reinterpret_cast<sockaddr*>(&from), &length);
            const ber::Bytes message(datagram, count > 0 ? static_cast<size_t>(count) : 0);
            const v3::Reply read = v3::ReadReply(message);
            if (read.pduType == v3::kInform && read.engineId == kEngine)
                return true;
            const ber::Bytes answer = WhoIAm(message);
            sendto(m_socket, answer.data(), answer.size(), 0, reinterpret_cast<sockaddr*>(&from),
                   length);
        }
    }

private:
    static ber::Bytes WhoIAm(const ber::Bytes& question)
    {
        ber::Reader message(ber::Reader(question).Element());
        message.Number();
        v3::Request report;
        report.id = ber::Reader(message.Element()).Number();
        report.engineId = report.contextEngineId = kEngine;
        report.flags = 0;
        report.pduType = v3::kReport;
        report.bindings = ber::Binding(v3::kUnknownEngineIds, ber::Tlv(0x41, "\x01"));
        return report.Encode();
    }

    int m_socket;
    unsigned m_port = 0;
};

v3::Reply Exchange(const RunningServer& agent, const v3::Request& request)
{
    const UdpClient client(agent.Port());
    EXPECT_TRUE(client.Send(request.Encode()));
    return v3::ReadReply(client.Receive(20000));
}

} // namespace

TEST(OtherEngines, AUserOfAReceiversEngineIsNobodyHere)
{
    const Receiver receiver;
    const TempDir directory;
    const std::string config = directory.File("agent.toml");
    WriteFile(config, "agentAddress = [\"udp:127.0.0.1:0\"]\n"
                      "[[user]]\nname = \"anyone\"\nread = \"everything\"\n"
                      "write = \"everything\"\nnotify = \"everything\"\n"
                      "[[trapSink]]\naddress = \"" +
                          receiver.Address() +
                          "\"\nversion = \"3\"\nuser = \"anyone\"\n"
                          "level = \"noAuthNoPriv\"\ninform = true\ntimeout = 1\n"
                          "retries = 50\n");
    chmod(config.c_str(), 0600);
    const RunningServer agent(
        {VKAGENTD, "--store", directory.File("store.db"), "--config", config});
    ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
    ASSERT_TRUE(receiver.IsInformed());

    v3::Request request;
    request.user = "anyone";
    request.contextEngineId = Exchange(agent, v3::Request()).engineId;
    request.bindings = ber::Binding(kSysDescr);
    request.engineId = request.contextEngineId;
    EXPECT_EQ(Exchange(agent, request).pduType, v3::kResponse);

    request.engineId = kEngine;
    const v3::Reply reply = Exchange(agent, request);
    EXPECT_TRUE(reply.Reports(v3::kUnknownEngineIds)) << reply.pduType;
    EXPECT_EQ(reply.engineId, request.contextEngineId) << "its own, so that the client learns it";
    request.pduType = v3::kSet;
    request.bindings = ber::Binding(kSysContact, ber::Tlv(4, "not he"));
    EXPECT_TRUE(Exchange(agent, request).Reports(v3::kUnknownEngineIds));
    request.pduType = v3::kGet;
    request.engineId = request.contextEngineId;
    request.bindings = ber::Binding(kSysContact);
    const v3::Reply contact = Exchange(agent, request);
    ASSERT_EQ(contact.values.size(), 1u);
    EXPECT_NE(contact.values[0], "not he");
}
