// A million requests to the real agent: nothing in it grows by them.
#include "Ber.h"
#include "RunningAgent.h"
#include "UdpClient.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <random>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kRequests = 100000;
constexpr long kMemoryMore = 1024 * 1024; // what was freed is held back
#else
constexpr int kRequests = 1000000;
constexpr long kMemoryMore = 1024; // KiB
#endif
constexpr int kTenth = kRequests / 10; // the first one warms up
constexpr size_t kInFlight = 32;

constexpr int kV1 = 0, kV2c = 1;
constexpr int kGet = 0xa0, kGetNext = 0xa1, kSet = 0xa3, kGetBulk = 0xa5;

const ber::Oid kSystem{1, 3, 6, 1, 2, 1, 1};
const ber::Oid kDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const ber::Oid kObjectId{1, 3, 6, 1, 2, 1, 1, 2, 0};
const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const ber::Oid kOrTable{1, 3, 6, 1, 2, 1, 1, 9};
const ber::Oid kViews{1, 3, 6, 1, 6, 3, 16, 1, 5, 2};
const ber::Oid kNobodys{1, 3, 6, 1, 4, 1, 32473, 1, 0};

// Of a view behind all others.
ber::Oid Row(unsigned column)
{
    ber::Oid name{1, 3, 6, 1, 6, 3, 16, 1, 5, 2, 1, column, 11};
    for (char c : std::string("temporaries"))
        name.push_back(static_cast<unsigned char>(c));
    name.insert(name.end(), {2, 1, 3});
    return name;
}

// One kind of request, and what it is answered. Request ids have four octets in
// both, so that one may be put in the place of another.
class BKind {
public:
    static constexpr int kFirstId = 0x01000000;
    static constexpr int kUnanswered = -1;

    BKind(int version, const char* community, int pduType, const ber::Bytes& bindings,
          int status = 0, int repetitions = 0)
        : m_request(ber::Message(version, community, pduType, kMarked, 0, repetitions, bindings)),
          m_requestId(m_request.find(Octets(kMarked))), m_status(status)
    {
    }

    bool IsAnswered() const { return m_status != kUnanswered; }
    const ber::Bytes& Request(int id) { return m_request.replace(m_requestId, 4, Octets(id)); }
    // The first answer is looked into, the others have to be the same.
    bool IsAnswer(ber::Bytes datagram, int id)
    {
        if (m_answer.empty()) {
            const ber::Reply reply = ber::ReadReply(datagram);
            m_answer = datagram;
            m_answerId = datagram.find(Octets(id));
            return reply.ok && reply.requestId == id && reply.status == m_status;
        }
        return m_answer.replace(m_answerId, 4, Octets(id)) == datagram;
    }

private:
    static constexpr int kMarked = 0x7a7b7c7d;

    static ber::Bytes Octets(int id) { return ber::Integer(id).substr(2); }

    ber::Bytes m_request;
    size_t m_requestId;
    int m_status;
    ber::Bytes m_answer;
    size_t m_answerId = 0;
};

ber::Bytes Text(const char* text) { return ber::Tlv(4, text); }

// What is asked, in rounds of a thousand requests; four of them are SETs that have to
// be kept, which take as long as the disk.
class BMix {
public:
    BMix()
    {
        const ber::Bytes descr = ber::Binding(kDescr);
        const std::pair<BKind, unsigned> kinds[] = {
            {{kV2c, "public", kGet, descr}, 30},
            {{kV2c, "boss", kGet, descr + ber::Binding(kObjectId) + ber::Binding(kNobodys)}, 15},
            {{kV1, "public", kGet, descr + ber::Binding(kObjectId)}, 10},
            {{kV1, "boss", kGet, ber::Binding(kNobodys), 2}, 3},
            {{kV2c, "public", kGetNext, ber::Binding(kSystem)}, 12},
            {{kV2c, "boss", kGetNext, ber::Binding(kViews) + ber::Binding(kOrTable)}, 10},
            {{kV2c, "public", kGetBulk, ber::Binding(kOrTable), 0, 8}, 8},
            {{kV2c, "public", kGet, ber::Binding(Row(3)), 16}, 3},
            {{kV2c, "public", kSet, ber::Binding(kContact, Text("x")), 6}, 3},
            {{kV2c, "boss", kSet, ber::Binding(kContact, ber::Integer(1)), 7}, 2},
            {{kV2c, "stranger", kGet, descr, BKind::kUnanswered}, 3},
            {{kV1, "stranger", kSet, ber::Binding(kContact, Text("x")), BKind::kUnanswered}, 1},
        };
        std::mt19937 random(1);
        std::vector<size_t> lots;
        for (const auto& [kind, share] : kinds) {
            lots.insert(lots.end(), share, m_kinds.size());
            m_kinds.push_back(kind);
        }
        for (size_t& slot : m_round)
            slot = lots[random() % lots.size()];
        const ber::Bytes sets[] = {
            ber::Binding(kContact, Text("Jane at the desk")),
            ber::Binding(Row(6), ber::Integer(4)) + ber::Binding(Row(3), Text("\xf0")),
            ber::Binding(kContact, Text("Jack by the sink")),
            ber::Binding(Row(6), ber::Integer(6)),
        };
        for (size_t i = 0; i < kSets; ++i) {
            m_round[100 + 250 * i] = m_kinds.size();
            m_kinds.emplace_back(kV2c, "boss", kSet, sets[i]);
        }
    }
    BKind& At(int request) { return m_kinds[m_round[static_cast<size_t>(request) % kRound]]; }
    // The SETs alone.
    BKind& SetAt(int request)
    {
        return m_kinds[m_kinds.size() - kSets + static_cast<size_t>(request) % kSets];
    }

private:
    static constexpr size_t kRound = 1000;
    static constexpr size_t kSets = 4;
    std::vector<BKind> m_kinds;
    size_t m_round[kRound];
};

struct SFootprint {
    long memory = 0; // KiB
    long descriptors = 0;
    long store = 0; // octets, with the log
    long ticks = 0; // of the processor, from the start

    static SFootprint Of(pid_t pid, const std::string& store)
    {
        const std::string process = "/proc/" + std::to_string(pid);
        SFootprint footprint;
        const std::string status = ReadFile(process + "/status");
        footprint.memory = std::stol(status.substr(status.find("VmRSS:") + 6));
        for (const auto& entry : std::filesystem::directory_iterator(process + "/fd"))
            footprint.descriptors += !entry.path().empty();
        for (const char* file : {"", "-wal"})
            footprint.store += static_cast<long>(std::filesystem::file_size(store + file));
        // Behind the name: utime and stime are the fields 14 and 15.
        const std::string stat = ReadFile(process + "/stat");
        std::istringstream fields(stat.substr(stat.rfind(')') + 2));
        std::string skipped;
        for (int field = 3; field < 14; ++field)
            fields >> skipped;
        long user = 0;
        long system = 0;
        fields >> user >> system;
        footprint.ticks = user + system;
        return footprint;
    }
};

class ManyRequests : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    bool TakeAnswer()
    {
        const auto [kind, id] = open.front();
        open.pop_front();
        return kind->IsAnswer(client.Receive(30000), id);
    }

    void Ask(BKind& kind)
    {
        const int id = BKind::kFirstId + asked++;
        ASSERT_TRUE(client.Send(kind.Request(id)));
        if (kind.IsAnswered())
            open.emplace_back(&kind, id);
        if (open.size() < kInFlight)
            return;
        ASSERT_TRUE(TakeAnswer()) << "before request " << asked;
    }
    void WaitForAll()
    {
        while (!open.empty()) {
            ASSERT_TRUE(TakeAnswer()) << "before request " << asked;
        }
    }

    // Until the log of the store begins again at its beginning.
    void FillLog()
    {
        for (int i = 0; i < 600 && !HasFatalFailure(); ++i)
            Ask(mix.SetAt(i));
        WaitForAll();
    }
    void AskTenth()
    {
        for (int i = 0; i < kTenth && !HasFatalFailure(); ++i)
            Ask(mix.At(i));
        WaitForAll();
    }

    TempDir directory;
    std::string store = directory.File("store.db");
    ConfigFile file{"agentAddress = \"udp:127.0.0.1:0\"\n"
                    "[[community]]\nname = \"boss\"\nread = \"everything\"\n"
                    "write = \"everything\"\n"
                    "[[community]]\nname = \"public\"\nread = \"systemonly\"\n"};
    ConfiguredAgent agent{store, file};
    UdpClient client{agent.IsReady() ? agent.Port() : 0};
    BMix mix;
    std::deque<std::pair<BKind*, int>> open;
    int asked = 0;
};

} // namespace

TEST_F(ManyRequests, LeaveTheAgentAsItWas)
{
    FillLog();
    AskTenth();
    const SFootprint warm = SFootprint::Of(agent.Pid(), store);
    SFootprint last = warm;
    std::vector<long> ticks;
    for (int tenth = 2; tenth <= 10; ++tenth) {
        AskTenth();
        ASSERT_FALSE(HasFatalFailure());
        const SFootprint now = SFootprint::Of(agent.Pid(), store);
        ticks.push_back(now.ticks - last.ticks);
        last = now;
        std::printf("after %7d requests: %ld KiB, %ld descriptors, %ld octets in the store, "
                    "%ld ticks for the last %d\n",
                    asked, now.memory, now.descriptors, now.store, ticks.back(), kTenth);
        EXPECT_EQ(now.descriptors, warm.descriptors);
        EXPECT_LE(now.store, warm.store);
        EXPECT_LE(now.memory, warm.memory + kMemoryMore);
    }
    // Another process may slow one of the last two down, not both.
    const long atTheEnd = std::min(ticks[7], ticks[8]);
    std::sort(ticks.begin(), ticks.end());
    EXPECT_LE(2 * atTheEnd, 3 * ticks[4]);
    EXPECT_EQ(agent.Ask("snmpget", "2c", "public", {oid::kSysContact}, {"-Oqv"}).output,
              "\"Jack by the sink\"\n");
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}
