// A slow module delays nobody but those who ask for it.
#include "tests/support/Threads.h"

#include "Ber.h"
#include "RunningAgent.h"
#include "UdpClient.h"

#include <csignal>
#include <fstream>

using namespace VLK;

namespace {

const ber::Oid kSysDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const ber::Oid kWaiting{1, 3, 6, 1, 4, 1, 32473, 6, 3, 0};
const ber::Oid kSlowSet{1, 3, 6, 1, 4, 1, 32473, 6, 2, 0};

ber::Oid SlowGet(unsigned number) { return {1, 3, 6, 1, 4, 1, 32473, 6, 1, number, 0}; }

ber::Bytes Get(int requestId, const ber::Oid& name)
{
    return ber::Message(1, "private", 0xa0, requestId, 0, 0, ber::Binding(name));
}

ber::Bytes Set(int requestId, const ber::Oid& name, int value)
{
    return ber::Message(1, "private", 0xa3, requestId, 0, 0,
                        ber::Binding(name, ber::Integer(value)));
}

// The bytes of an answer's PDU.
ber::Reader PduOf(const std::string& datagram)
{
    ber::Reader message(ber::Reader(datagram).Element());
    message.Number();
    message.Element();
    return ber::Reader(message.Element());
}

int RequestId(const std::string& datagram) { return PduOf(datagram).Number(); }

int ErrorStatus(const std::string& datagram)
{
    ber::Reader pdu = PduOf(datagram);
    pdu.Number();
    return pdu.Number();
}

// The first binding's value, an integer.
int Value(const std::string& datagram)
{
    ber::Reader pdu = PduOf(datagram);
    for (int i = 0; i < 3; ++i)
        pdu.Number();
    ber::Reader binding(ber::Reader(pdu.Element()).Element());
    binding.Element();
    return binding.Number();
}

class SlowModules : public testing::Test {
protected:
    void Start(unsigned workers)
    {
        m_agent = std::make_unique<RunningServer>(Arguments{
            SLOW_AGENT, "--store", m_directory.File("store.db"), "--listen", "udp:127.0.0.1:0",
            "--community", "private:rw", "--workers", std::to_string(workers)});
        ASSERT_TRUE(m_agent->IsReady()) << m_agent->FirstLine();
    }
    std::unique_ptr<UdpClient> Client() const
    {
        return std::make_unique<UdpClient>(m_agent->Port());
    }
    // The answer to a request that nothing holds up; empty when none comes.
    std::string Ask(const ber::Bytes& request) const
    {
        auto client = Client();
        EXPECT_TRUE(client->Send(request));
        return client->Receive();
    }
    // Asks again, as what is asked while no thread is free gets no answer.
    bool AreWaiting(int count) const
    {
        return Eventually([&] {
            auto client = Client();
            client->Send(Get(9, kWaiting));
            std::string answer = client->Receive(200);
            return !answer.empty() && Value(answer) == count;
        });
    }
    // Until the agent has taken all messages from its socket.
    bool AreAllRead() const
    {
        return Eventually([&] { return Unread() == 0; });
    }
    void LetGo() const { kill(m_agent->Pid(), SIGUSR1); }
    void HoldAgain() const
    {
        kill(m_agent->Pid(), SIGUSR2);
        EXPECT_TRUE(AreWaiting(0));
    }
    long Status(const std::string& field) const
    {
        std::ifstream status("/proc/" + std::to_string(m_agent->Pid()) + "/status");
        for (std::string word; status >> word;) {
            long value = 0;
            if (word == field && status >> value)
                return value;
        }
        return -1;
    }

    TempDir m_directory;
    std::unique_ptr<RunningServer> m_agent;

private:
    // Bytes that wait at the agent's port: "sl local remote st tx:rx ...".
    long Unread() const
    {
        char port[16];
        std::snprintf(port, sizeof port, ":%04X", m_agent->Port());
        std::ifstream sockets("/proc/net/udp");
        std::string local;
        std::string remote;
        std::string queues;
        for (std::string line; std::getline(sockets, line);) {
            std::string word;
            std::istringstream words(line);
            words >> word >> local >> remote >> word >> queues;
            if (local.find(port) != local.npos)
                return std::stol(queues.substr(queues.find(':') + 1), nullptr, 16);
        }
        return -1;
    }
};

TEST_F(SlowModules, HoldUpNoOtherRequest)
{
    Start(4);
    auto slow = Client();
    ASSERT_TRUE(slow->Send(Get(77, SlowGet(1))));
    for (int i = 1; i <= 500; ++i) {
        std::string answer = Ask(Get(i, kSysDescr));
        ASSERT_FALSE(answer.empty());
        EXPECT_EQ(RequestId(answer), i);
    }
    EXPECT_EQ(Value(Ask(Get(1, kWaiting))), 1);
    LetGo();
    std::string late = slow->Receive();
    EXPECT_EQ(RequestId(late), 77);
    EXPECT_EQ(Value(late), 1);
}

TEST_F(SlowModules, AnswerEachOfTheirOwnClients)
{
    Start(8);
    std::vector<std::unique_ptr<UdpClient>> clients;
    for (unsigned i = 1; i <= 7; ++i) {
        clients.push_back(Client());
        ASSERT_TRUE(clients.back()->Send(Get(static_cast<int>(100 + i), SlowGet(i))));
    }
    ASSERT_TRUE(AreWaiting(7));
    LetGo();
    for (size_t i = 0; i < clients.size(); ++i)
        EXPECT_EQ(RequestId(clients[i]->Receive()), static_cast<int>(101 + i));
}

TEST_F(SlowModules, AreServedAgainAndAgainByTheSameThreads)
{
    Start(2);
    long threads = 0;
    for (int round = 0; round < 20; ++round) {
        auto slow = Client();
        ASSERT_TRUE(slow->Send(Get(round, SlowGet(1))));
        ASSERT_TRUE(AreWaiting(1));
        if (round == 0)
            threads = Status("Threads:");
        LetGo();
        EXPECT_EQ(RequestId(slow->Receive()), round);
        HoldAgain();
    }
    EXPECT_EQ(Status("Threads:"), threads);
}

// The agent's socket hands messages out in the order they came: what comes behind
// the last slow request finds no thread free.
TEST_F(SlowModules, ThatTakeAllThreadsMakeOtherRequestsBeDropped)
{
    Start(2);
    UdpClient slow(m_agent->Port());
    ASSERT_TRUE(slow.Send(Get(1, SlowGet(1))));
    ASSERT_TRUE(slow.Send(Get(2, SlowGet(2))));
    UdpClient dropped(m_agent->Port());
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(dropped.Send(Get(1000 + i, kSysDescr)));
    ASSERT_TRUE(AreAllRead());
    LetGo();
    int first = RequestId(slow.Receive());
    int second = RequestId(slow.Receive());
    EXPECT_EQ(first + second, 3);
    ASSERT_TRUE(AreWaiting(-1));
    ASSERT_TRUE(dropped.Send(Get(7, kSysDescr)));
    EXPECT_EQ(RequestId(dropped.Receive()), 7);
    EXPECT_EQ(m_agent->Kill(SIGTERM), 0);
    std::string log = m_agent->Rest();
    EXPECT_NE(log.find("no thread is free: no answer to udp:127.0.0.1:"), log.npos) << log;
}

TEST_F(SlowModules, TakeNoMemoryForWhatWaitsForThem)
{
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "a sanitizer keeps freed memory";
#endif
    Start(1);
    UdpClient client(m_agent->Port());
    ASSERT_TRUE(client.Send(Get(1, SlowGet(1))));
    long before = 0;
    for (int i = 0; i < 40000; ++i) {
        ASSERT_TRUE(client.Send(Get(1000 + i, kSysDescr)));
        if (i % 100 == 0) {
            ASSERT_TRUE(AreAllRead());
        }
        if (i == 4000)
            before = Status("VmRSS:");
    }
    EXPECT_LT(Status("VmRSS:"), before + 1024);
    LetGo();
    EXPECT_EQ(RequestId(client.Receive()), 1);
}

TEST_F(SlowModules, HoldUpOtherSetsWhichWaitInTheirOrderWithoutAThread)
{
    Start(2);
    UdpClient sets(m_agent->Port());
    for (int i = 1; i <= 20; ++i)
        ASSERT_TRUE(sets.Send(Set(i, kSlowSet, i)));
    ASSERT_TRUE(AreWaiting(1));
    EXPECT_EQ(RequestId(Ask(Get(5, kSysDescr))), 5);
    LetGo();
    for (int i = 1; i <= 20; ++i) {
        std::string answer = sets.Receive();
        EXPECT_EQ(RequestId(answer), i);
        EXPECT_EQ(ErrorStatus(answer), 0);
    }
    EXPECT_EQ(Value(Ask(Get(6, kSlowSet))), 20);
}

TEST_F(SlowModules, HoldUpNoMoreSetsThanAreToWait)
{
    Start(2);
    UdpClient sets(m_agent->Port());
    for (int i = 1; i <= 1 + 64 + 10; ++i)
        ASSERT_TRUE(sets.Send(Set(i, kSlowSet, i)));
    ASSERT_TRUE(AreAllRead());
    ASSERT_TRUE(AreWaiting(1));
    LetGo();
    for (int i = 1; i <= 1 + 64; ++i)
        EXPECT_EQ(RequestId(sets.Receive()), i);
    ASSERT_TRUE(sets.Send(Set(77, kSlowSet, 77)));
    EXPECT_EQ(RequestId(sets.Receive()), 77) << "the others are lost";
}

// What waits for it is not begun any more.
TEST_F(SlowModules, AreWaitedForAtTheEnd)
{
    Start(4);
    UdpClient sets(m_agent->Port());
    ASSERT_TRUE(sets.Send(Set(1, kSlowSet, 5)));
    ASSERT_TRUE(sets.Send(Set(2, kSlowSet, 6)));
    ASSERT_TRUE(AreWaiting(1));
    ASSERT_TRUE(AreAllRead());
    kill(m_agent->Pid(), SIGTERM);
    GiveOthersTime();
    LetGo();
    EXPECT_EQ(m_agent->Wait(), 0);
    std::string answer = sets.Receive();
    EXPECT_EQ(RequestId(answer), 1);
    EXPECT_EQ(ErrorStatus(answer), 0);
}

} // namespace
