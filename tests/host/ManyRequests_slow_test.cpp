// A million requests to the real agent: nothing in it grows by them.
#include "Ber.h"
#include "Footprint.h"
#include "RunningAgent.h"
#include "UdpClient.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kRequests = 100000;
constexpr long kMemoryMore = 1024 * 1024; // what was freed is held back
#else
constexpr int kRequests = 1000000;
constexpr long kMemoryMore = 1024; // KiB
#endif
constexpr long kMemoryOfThread = 256;
constexpr int kTenth = kRequests / 10; // the first one warms up
constexpr size_t kInFlight = 32;
constexpr int kPatience = 1000;

constexpr int kV1 = 0, kV2c = 1;
constexpr int kGet = 0xa0, kGetNext = 0xa1, kSet = 0xa3, kGetBulk = 0xa5;

const ber::Oid kSystem{1, 3, 6, 1, 2, 1, 1};
const ber::Oid kDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
const ber::Oid kObjectId{1, 3, 6, 1, 2, 1, 1, 2, 0};
const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const ber::Oid kOrTable{1, 3, 6, 1, 2, 1, 1, 9};
const ber::Oid kViews{1, 3, 6, 1, 6, 3, 16, 1, 5, 2};
const ber::Oid kNobodys{1, 3, 6, 1, 4, 1, 32473, 1, 0};

// A row of a view that comes after all others.
ber::Oid Row(unsigned column)
{
    ber::Oid name{1, 3, 6, 1, 6, 3, 16, 1, 5, 2, 1, column, 11};
    for (char c : std::string("temporaries"))
        name.push_back(static_cast<unsigned char>(c));
    name.insert(name.end(), {2, 1, 3});
    return name;
}

// The request id of an answer, read without copying anything; 0 if it has none of four
// octets.
int IdOf(const ber::Bytes& answer)
{
    auto octet = [&](size_t at) {
        return at < answer.size() ? static_cast<unsigned char>(answer[at]) : 0u;
    };
    auto open = [&](size_t at) { return at + (octet(at + 1) < 128 ? 2 : 2 + octet(at + 1) % 128); };
    size_t at = open(0);        // the message
    for (int i = 0; i < 2; ++i) // version and community, both short
        at += 2 + octet(at + 1);
    at = open(at); // the PDU
    if (octet(at) != 2 || octet(at + 1) != 4)
        return 0;
    return ber::Reader(answer.substr(at, 6)).Number();
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
    bool IsAnswer(const ber::Bytes& datagram, int id)
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
            ber::Binding(Row(4), ber::Integer(2)) + ber::Binding(Row(3), Text("\xf0")),
            ber::Binding(kContact, Text("Jack by the sink")),
            ber::Binding(Row(4), ber::Integer(1)) + ber::Binding(Row(3), Text("\x80")),
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

class ManyRequests : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(agent.IsReady()) << agent.FirstLine(); }

    // Answers come in any order.
    void TakeAnswer()
    {
        const std::string datagram = client.Receive(kPatience);
        if (datagram.empty())
            return AskAgain();
        silences = 0;
        const auto answered = open.find(IdOf(datagram));
        if (answered == open.end()) {
            EXPECT_GT(askedAgain, 0) << "an answer that nobody waits for";
            return;
        }
        ASSERT_TRUE(answered->second->IsAnswer(datagram, answered->first))
            << "request " << answered->first - BKind::kFirstId;
        open.erase(answered);
    }
    // A busy agent may drop requests, as the network may.
    void AskAgain()
    {
        ++askedAgain;
        ASSERT_LT(++silences, 30) << open.size() << " requests are not answered";
        for (const auto& [id, kind] : open)
            EXPECT_TRUE(client.Send(kind->Request(id)));
    }

    void Ask(BKind& kind, size_t inFlight = kInFlight)
    {
        const int id = BKind::kFirstId + asked++;
        ASSERT_TRUE(client.Send(kind.Request(id)));
        if (kind.IsAnswered())
            open[id] = &kind;
        while (open.size() >= inFlight && !HasFatalFailure())
            TakeAnswer();
    }
    void WaitForAll()
    {
        while (!open.empty() && !HasFatalFailure())
            TakeAnswer();
    }

    // Until the log of the store begins again at its beginning.
    void FillLog()
    {
        for (int i = 0; i < 600 && !HasFatalFailure(); ++i)
            Ask(mix.SetAt(i), 1);
        WaitForAll();
    }
    void AskTenth()
    {
        for (int i = 0; i < kTenth && !HasFatalFailure(); ++i)
            Ask(mix.At(i));
        WaitForAll();
    }

    // The processor's ticks for a tenth, which leaves the agent as `footprint` says.
    long TicksOfTenth(SFootprint& footprint)
    {
        const long before = footprint.ticks;
        AskTenth();
        footprint = SFootprint::Of(agent.Pid(), store);
        const long ticks = footprint.ticks - before;
        std::printf("after %7d requests: %ld KiB, %ld threads, %ld descriptors, %ld octets in the "
                    "store, %ld ticks for the last %d\n",
                    asked, footprint.memory, footprint.threads, footprint.descriptors,
                    footprint.store, ticks, kTenth);
        return ticks;
    }

    TempDir directory;
    std::string store = directory.File("store.db");
    ConfigFile file{"agentAddress = \"udp:127.0.0.1:0\"\n"
                    "[[view]]\nname = \"temporaries\"\ninclude = [\"1.3\"]\n"
                    "[[community]]\nname = \"boss\"\nread = \"everything\"\n"
                    "write = \"everything\"\n"
                    "[[community]]\nname = \"public\"\nread = \"systemonly\"\n"};
    ConfiguredAgent agent{store, file};
    UdpClient client{agent.IsReady() ? agent.Port() : 0};
    BMix mix;
    std::map<int, BKind*> open; // by request id
    int asked = 0;
    int askedAgain = 0;
    int silences = 0; // one after the other
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
        ticks.push_back(TicksOfTenth(last));
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_EQ(last.descriptors, warm.descriptors);
        EXPECT_LE(last.store, warm.store);
        EXPECT_LE(last.memory,
                  warm.memory + kMemoryMore + kMemoryOfThread * (last.threads - warm.threads));
    }
    long atTheEnd = ticks.back();
    std::sort(ticks.begin(), ticks.end());
    const long median = ticks[ticks.size() / 2];
    // What slows the agent down from outside passes, what grows in it stays.
    for (int more = 0; more < 20 && 2 * atTheEnd > 3 * median; ++more)
        atTheEnd = TicksOfTenth(last);
    EXPECT_LE(2 * atTheEnd, 3 * median);
    EXPECT_EQ(agent.Ask("snmpget", "2c", "public", {oid::kSysContact}, {"-Oqv"}).output,
              "\"Jack by the sink\"\n");
    std::printf("asked again %d times\n", askedAgain);
    EXPECT_EQ(agent.Kill(SIGTERM), 0);
}
