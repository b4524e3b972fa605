#include "host/PollSet.h"

#include "host/HostError.h"

#include "tests/support/NoDescriptors.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sys/eventfd.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace VLK::host;

namespace {

constexpr int kLong = 60000; // milliseconds

class Event {
public:
    Event() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    int Get() const { return m_descriptor.Get(); }
    void Set() { eventfd_write(Get(), 1); }
    void Clear()
    {
        eventfd_t value;
        eventfd_read(Get(), &value);
    }

private:
    BDescriptor m_descriptor;
};

std::set<unsigned> Ready(const BPollSet& polled, int milliseconds)
{
    std::set<unsigned> keys;
    for (unsigned key : polled.Wait(milliseconds))
        keys.insert(key);
    return keys;
}

// Has a signal interrupt whatever waits, again and again.
class Interruptions {
public:
    Interruptions()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, &m_before);
        Repeat(10000);
    }
    ~Interruptions()
    {
        Repeat(0);
        sigaction(SIGALRM, &m_before, nullptr);
    }

private:
    static void Repeat(suseconds_t microseconds)
    {
        const itimerval every = {{0, microseconds}, {0, microseconds}};
        setitimer(ITIMER_REAL, &every, nullptr);
    }
    struct sigaction m_before = {};
};

} // namespace

TEST(PollSet, WhatIsReadableComesByItsKeyUntilItIsRead)
{
    BPollSet polled;
    Event first;
    Event second;
    polled.Add(first.Get(), 7);
    polled.Add(second.Get(), 0);
    EXPECT_EQ(Ready(polled, 0), (std::set<unsigned>{}));
    first.Set();
    EXPECT_EQ(Ready(polled, kLong), (std::set<unsigned>{7}));
    second.Set();
    EXPECT_EQ(Ready(polled, kLong), (std::set<unsigned>{0, 7}));
    EXPECT_EQ(Ready(polled, -1), (std::set<unsigned>{0, 7}));
    const BPollSet::CReady ready = polled.Wait(0);
    EXPECT_TRUE(ready.Has(0));
    EXPECT_TRUE(ready.Has(7));
    EXPECT_FALSE(ready.Has(1));
    first.Clear();
    EXPECT_EQ(Ready(polled, 0), (std::set<unsigned>{0}));
}

TEST(PollSet, NothingIsWaitedForNoLongerThanAsked)
{
    BPollSet polled;
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(Ready(polled, 20), (std::set<unsigned>{}));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(20));
}

// More than come at a time: none is left out for ever.
TEST(PollSet, AllHaveTheirTurn)
{
    constexpr unsigned kCount = 100;
    BPollSet polled;
    std::vector<std::unique_ptr<Event>> events;
    std::set<unsigned> all;
    for (unsigned key = 0; key < kCount; ++key) {
        events.push_back(std::make_unique<Event>());
        events.back()->Set();
        polled.Add(events.back()->Get(), key);
        all.insert(key);
    }
    std::set<unsigned> seen;
    for (unsigned call = 0; call < kCount / 10; ++call)
        seen.merge(Ready(polled, kLong));
    EXPECT_EQ(seen, all);
}

TEST(PollSet, WhatComesWhileSomebodyWaitsIsWaitedForToo)
{
    BPollSet polled;
    Event added;
    added.Set();
    std::set<unsigned> ready;
    std::thread waiting([&] { ready = Ready(polled, kLong); });
    std::this_thread::sleep_for(std::chrono::milliseconds(5)); // either order will do
    polled.Add(added.Get(), 3);
    waiting.join();
    EXPECT_EQ(ready, (std::set<unsigned>{3}));
}

// As by a process that was started meanwhile, and has a copy of it.
TEST(PollSet, WhatIsTakenOutIsNotHeardOfAgainThoughItStaysOpen)
{
    BPollSet polled;
    auto event = std::make_unique<Event>();
    const BDescriptor copy(dup(event->Get()));
    polled.Add(event->Get(), 1);
    event->Set();
    EXPECT_EQ(Ready(polled, kLong), (std::set<unsigned>{1}));
    polled.Remove(event->Get());
    event.reset();
    EXPECT_EQ(Ready(polled, 0), (std::set<unsigned>{}));
}

TEST(PollSet, WhatIsClosedLeavesByItself)
{
    BPollSet polled;
    auto event = std::make_unique<Event>();
    polled.Add(event->Get(), 1);
    event->Set();
    event.reset();
    EXPECT_EQ(Ready(polled, 0), (std::set<unsigned>{}));
}

TEST(PollSet, ASetInASetIsReadableWhileOneOfItsOwnIs)
{
    BPollSet outer;
    BPollSet inner;
    Event event;
    outer.Add(inner.Descriptor(), 5);
    inner.Add(event.Get(), 6);
    EXPECT_EQ(Ready(outer, 0), (std::set<unsigned>{}));
    event.Set();
    EXPECT_EQ(Ready(outer, kLong), (std::set<unsigned>{5}));
    EXPECT_EQ(Ready(inner, 0), (std::set<unsigned>{6}));
    event.Clear();
    EXPECT_EQ(Ready(outer, 0), (std::set<unsigned>{}));
}

TEST(PollSet, ASignalEndsTheWaitWithNothing)
{
    BPollSet polled;
    const Interruptions interruptions;
    EXPECT_EQ(Ready(polled, -1), (std::set<unsigned>{}));
}

TEST(PollSet, WhatCannotBeWaitedForIsRefusedWithTheReason)
{
    BPollSet polled;
    try {
        polled.Add(-1, 1);
        FAIL() << "it is taken";
    } catch (const BHostError& error) {
        EXPECT_STREQ(error.what(), "cannot wait: Bad file descriptor");
        EXPECT_EQ(error.Status(), eExitUsage);
    }
    const NoDescriptors none;
    EXPECT_THROW(BPollSet(), BHostError);
}
