#include "host/HostError.h"
#include "host/wire/NetSnmpEngine.h"

#include "Ber.h"

#include <cstring>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace VLK::host;

namespace {

// Keeps the requests, and answers each with an echo.
class Recorder : public IRequestHandler {
public:
    std::vector<SRequest> requests;

    bool Handle(SRequest& request, SResponse& response) override
    {
        requests.push_back(request);
        response = SResponse();
        response.echo = true;
        return true;
    }
    void AnswerInstead(int, const SRequest&, SResponse&) override {}
};

class NetSnmpEngine : public testing::Test {
protected:
    // One for all tests: the wire library does not start twice without a leak.
    static void SetUpTestSuite() { s_engine = new BNetSnmpEngine(s_recorder); }
    static void TearDownTestSuite() { delete s_engine; }

    void SetUp() override
    {
        s_recorder.requests.clear();
        ASSERT_EQ(pipe(stop), 0);
    }
    void TearDown() override
    {
        close(stop[0]);
        close(stop[1]);
    }

    // Sends from one address to the other and serves until the answer is
    // there; returns where it came from.
    template <class TAddress>
    TAddress Exchange(const TAddress& from, const TAddress& to)
    {
        int client = socket(reinterpret_cast<const sockaddr&>(from).sa_family, SOCK_DGRAM, 0);
        EXPECT_EQ(bind(client, reinterpret_cast<const sockaddr*>(&from), sizeof from), 0);
        ber::Bytes datagram =
            ber::Message(1, "any", 0xa0, 1, 0, 0, ber::Binding({1, 3, 6, 1, 2, 1, 1, 1, 0}));
        EXPECT_EQ(sendto(client, datagram.data(), datagram.size(), 0,
                         reinterpret_cast<const sockaddr*>(&to), sizeof to),
                  static_cast<ssize_t>(datagram.size()));
        std::thread serving([&] { s_engine->Serve(stop[0]); });
        pollfd wait{client, POLLIN, 0};
        EXPECT_EQ(poll(&wait, 1, 10000), 1);
        EXPECT_EQ(write(stop[1], "x", 1), 1);
        serving.join();
        char answer[1000];
        TAddress source = {};
        socklen_t length = sizeof source;
        EXPECT_GT(recvfrom(client, answer, sizeof answer, MSG_DONTWAIT,
                           reinterpret_cast<sockaddr*>(&source), &length),
                  0);
        close(client);
        return source;
    }

    int stop[2] = {-1, -1};
    static Recorder s_recorder;
    static BNetSnmpEngine* s_engine;
};

Recorder NetSnmpEngine::s_recorder;
BNetSnmpEngine* NetSnmpEngine::s_engine = nullptr;

sockaddr_in V4(const char* text, unsigned port)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text));
    sockaddr_in out = {};
    out.sin_family = AF_INET;
    out.sin_port = htons(static_cast<uint16_t>(port));
    std::memcpy(&out.sin_addr, address.Bytes(), 4);
    return out;
}

sockaddr_in6 LoopbackV6(unsigned port)
{
    sockaddr_in6 out = {};
    out.sin6_family = AF_INET6;
    out.sin6_port = htons(static_cast<uint16_t>(port));
    out.sin6_addr = in6addr_loopback;
    return out;
}

bool HasLoopbackV6()
{
    int descriptor = socket(AF_INET6, SOCK_DGRAM, 0);
    sockaddr_in6 address = LoopbackV6(0);
    bool bound = descriptor >= 0 &&
                 bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return bound;
}

BTransportAddress Address(const char* text)
{
    BTransportAddress address;
    EXPECT_TRUE(address.Parse(text));
    return address;
}

} // namespace

TEST_F(NetSnmpEngine, OnEveryAddressTheAnswerLeavesFromTheOneAsked)
{
    unsigned port = s_engine->Open(Address("udp:0.0.0.0:0")).Port();
    sockaddr_in source = Exchange(V4("udp:127.0.0.3:0", 0), V4("udp:127.0.0.9:0", port));
    EXPECT_EQ(source.sin_addr.s_addr, htonl(0x7f000009));
    ASSERT_EQ(s_recorder.requests.size(), 1u);
    EXPECT_EQ(s_recorder.requests[0].local.ToString(), "udp:127.0.0.9:" + std::to_string(port));
    EXPECT_EQ(s_recorder.requests[0].remote.V4Bytes()[3], 3);
}

TEST_F(NetSnmpEngine, OnEveryIPv6AddressTheOneAskedIsKnown)
{
    if (!HasLoopbackV6()) {
        EXPECT_THROW(s_engine->Open(Address("udp6:[::1]:0")), BHostError);
        return;
    }
    unsigned port = s_engine->Open(Address("udp6:[::]:0")).Port();
    sockaddr_in6 source = Exchange(LoopbackV6(0), LoopbackV6(port));
    EXPECT_TRUE(IN6_IS_ADDR_LOOPBACK(&source.sin6_addr));
    ASSERT_EQ(s_recorder.requests.size(), 1u);
    EXPECT_EQ(s_recorder.requests[0].local.ToString(), "udp6:[::1]:" + std::to_string(port));
    EXPECT_TRUE(s_recorder.requests[0].remote.IsLoopback());
}
