// Asks one server the questions of one case, checks each answer, and prints what it took:
//
//   wire_load CASE TABLE PORT PID CORE WINDOW SECONDS [echo]
//
//   all-requests requests seconds nanoseconds-of-the-server's-processor bindings p50 p99
//
// The first number is with those of the warm-up, the others are without them.
// WINDOW requests are under way at once. With one, the generator sleeps until the answer
// is there, and p50 and p99 are nanoseconds; with more it asks again and again whether
// there is one, as it has its core for itself.
//
// A wrong answer, or none within half a minute, ends it with status 1.
#include "bench/wire/Questions.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <sched.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/time.h>
#include <system_error>

using namespace wire;

namespace {

constexpr unsigned kWarmUp = 200; // requests, unless they take longer than
constexpr std::chrono::milliseconds kLongestWarmUp{50};
constexpr std::chrono::seconds kPatience{30};

using CClock = std::chrono::steady_clock;

// What the scheduler has counted for all threads of a process, in nanoseconds.
uint64_t ProcessorTimeOf(const std::string& pid)
{
    uint64_t sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + pid + "/task")) {
        std::ifstream file(thread.path() / "schedstat");
        uint64_t time = 0;
        if (file >> time)
            sum += time;
    }
    return sum;
}

int Connect(unsigned port)
{
    const int client = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    timeval patience = {kPatience.count(), 0};
    if (client < 0 || connect(client, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0 ||
        setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0)
        throw std::system_error(errno, std::generic_category());
    return client;
}

void StayOn(unsigned core)
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) != 0)
        throw std::system_error(errno, std::generic_category());
}

// Requests go out in the order of the questions; answers may come in any.
class CGenerator {
public:
    // The datagram is room, written before it is read.
    // cppcheck-suppress uninitMemberVar
    CGenerator(std::vector<SQuestion> questions, unsigned port, size_t window, bool isEcho)
        : m_questions(std::move(questions)), m_client(Connect(port)), m_window(window),
          m_isEcho(isEcho), m_slots(window)
    {
    }

    // One request more has its answer.
    void Exchange()
    {
        while (!NextSlot().question)
            Send();
        Receive();
    }
    // No request is under way any more.
    void Drain()
    {
        while (m_answered < m_sent)
            Receive();
    }
    void ForgetTimes()
    {
        m_bindings = 0;
        m_times.clear();
    }
    size_t Questions() const { return m_questions.size(); }
    uint64_t Sent() const { return m_sent; }
    uint64_t Bindings() const { return m_bindings; }
    std::vector<uint32_t>& Times() { return m_times; }

private:
    struct SSlot {
        const SQuestion* question = nullptr; // null when it is answered
        unsigned sequence = 0;
        CClock::time_point at;
    };

    // Taken until its request is answered: the window's end waits for a late one.
    SSlot& NextSlot() { return m_slots[m_sequence % m_window]; }

    void Send()
    {
        SQuestion& question = m_questions[m_next];
        m_next = m_next + 1 == m_questions.size() ? 0 : m_next + 1;
        SSlot& slot = NextSlot();
        const unsigned sequence = m_sequence++ & 0xffffff;
        SetId(question, sequence);
        slot = {&question, sequence, CClock::now()};
        if (send(m_client, question.datagram.data(), question.datagram.size(), 0) < 0)
            throw std::system_error(errno, std::generic_category());
        ++m_sent;
    }

    ssize_t Read()
    {
        if (m_window == 1)
            return recv(m_client, m_datagram, sizeof m_datagram, 0);
        const CClock::time_point end = CClock::now() + kPatience;
        for (;;) {
            const ssize_t length = recv(m_client, m_datagram, sizeof m_datagram, MSG_DONTWAIT);
            if (length >= 0 || errno != EAGAIN || CClock::now() > end)
                return length;
        }
    }

    void Receive()
    {
        const ssize_t length = Read();
        if (length < 0)
            throw std::system_error(errno, std::generic_category(), "no answer");
        SSlot& slot = SlotOf(static_cast<size_t>(length));
        if (m_window == 1)
            m_times.push_back(
                static_cast<uint32_t>(std::chrono::nanoseconds(CClock::now() - slot.at).count()));
        m_bindings += slot.question->count;
        slot.question = nullptr;
        ++m_answered;
    }

    // That of the request that the datagram answers, rightly.
    SSlot& SlotOf(size_t length)
    {
        for (size_t i = 0; i < m_window; ++i) {
            SSlot& slot = m_slots[(m_answered + i) % m_window];
            if (!slot.question)
                continue;
            // A question that is asked twice at once has the later one's id.
            SetId(const_cast<SQuestion&>(*slot.question), slot.sequence);
            const std::string& datagram = slot.question->datagram;
            if (m_isEcho ? datagram.size() == length &&
                               std::memcmp(datagram.data(), m_datagram, length) == 0
                         : IsAnswer(*slot.question, m_datagram, length))
                return slot;
        }
        throw std::runtime_error("a wrong answer");
    }

    std::vector<SQuestion> m_questions;
    const int m_client;
    const size_t m_window;
    const bool m_isEcho;
    std::vector<SSlot> m_slots;
    size_t m_next = 0;
    unsigned m_sequence = 0;
    uint64_t m_sent = 0;
    uint64_t m_answered = 0;
    uint64_t m_bindings = 0;
    std::vector<uint32_t> m_times;
    unsigned char m_datagram[65536];
};

uint32_t Percentile(std::vector<uint32_t>& times, size_t percent)
{
    if (times.empty())
        return 0;
    const size_t at = std::min(times.size() * percent / 100, times.size() - 1);
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(at), times.end());
    return times[at];
}

// For so long, and all questions once at least where several are under way.
void Measure(CGenerator& generator, const std::string& pid, size_t window, double seconds)
{
    const CClock::time_point start = CClock::now();
    for (unsigned i = 0; i < kWarmUp && CClock::now() < start + kLongestWarmUp; ++i)
        generator.Exchange();
    generator.Drain();
    generator.ForgetTimes();
    const size_t least = window > 1 ? generator.Questions() : 1;
    const uint64_t before = ProcessorTimeOf(pid);
    const CClock::time_point begin = CClock::now();
    const CClock::time_point end = begin + std::chrono::duration_cast<CClock::duration>(
                                               std::chrono::duration<double>(seconds));
    uint64_t requests = 0;
    while (requests < least || CClock::now() < end) {
        generator.Exchange();
        ++requests;
    }
    requests += window - 1; // those under way
    generator.Drain();
    const std::chrono::duration<double> passed = CClock::now() - begin;
    const uint64_t processor = ProcessorTimeOf(pid) - before;
    std::printf("%llu %llu %.9f %llu %llu %u %u\n",
                static_cast<unsigned long long>(generator.Sent()),
                static_cast<unsigned long long>(requests), passed.count(),
                static_cast<unsigned long long>(processor),
                static_cast<unsigned long long>(generator.Bindings()),
                Percentile(generator.Times(), 50), Percentile(generator.Times(), 99));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 8) {
        std::fputs("usage: wire_load CASE TABLE PORT PID CORE WINDOW SECONDS [echo]\n", stderr);
        return 2;
    }
    try {
        const auto number = [argv](int i) { return static_cast<unsigned>(std::stoul(argv[i])); };
        std::vector<SQuestion> questions = QuestionsOf(argv[1], number(2));
        if (questions.empty())
            throw std::runtime_error(std::string("no case ") + argv[1]);
        StayOn(number(5));
        const size_t window = std::max(number(6), 1u);
        CGenerator generator(std::move(questions), number(3), window,
                             argc > 8 && std::strcmp(argv[8], "echo") == 0);
        Measure(generator, argv[4], window, std::stod(argv[7]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "wire_load: %s %s: %s\n", argv[1], argv[2], error.what());
        return 1;
    }
    return 0;
}
