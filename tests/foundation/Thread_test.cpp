#include "tests/support/FailingAlloc.h"
#include "tests/support/Threads.h"
#include "tests/support/VtableSlot.h"

#include <csignal>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/resource.h>
#include <thread>
#include <vkmibh/base.h>

namespace VLK {
namespace {

class Worker : public TThread {
public:
    explicit Worker(bool detached = false) : TThread(detached) {}
    ~Worker() override
    {
        if (stopInDestructor)
            Stop(kWaitForever);
    }
    int Run() override
    {
        ++runs;
        const int result = body ? body(*this) : 0;
        ++returns;
        return result;
    }
    void OnThreadEnd() override { ++ends; }
    void ResetMembers() override
    {
        ++resets;
        TThread::ResetMembers();
    }
    using TThread::WaitForStop;

    std::function<int(Worker&)> body;
    std::atomic<int> runs{0};
    std::atomic<int> returns{0};
    std::atomic<int> ends{0};
    std::atomic<int> resets{0};
    bool stopInDestructor = true;
};

int UntilStopped(Worker& worker) { return worker.WaitForStop(kWaitForever); }

class Thread : public testing::TestWithParam<bool> {
protected:
    Worker worker{GetParam()};
};

TEST_P(Thread, RunsAndTellsItsEnd)
{
    EXPECT_NE(worker.Start(0, 0), 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_EQ(worker.runs, 1);
    EXPECT_EQ(worker.ends, 1);
}

TEST_P(Thread, DoesNotRunBeforeStart)
{
    EXPECT_EQ(worker.runs, 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_NE(worker.Stop(kWaitForever), 0);
    worker.Terminate();
    EXPECT_EQ(worker.runs, 0);
    EXPECT_NE(worker.Start(0, 0), 0); // the stop before counts no more
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_EQ(worker.runs, 1);
}

TEST_P(Thread, StopSignalsTheStopEvent)
{
    std::atomic<int> seen{-1};
    worker.body = [&](Worker& self) { return seen = self.WaitForStop(kWaitForever); };
    worker.Start(0, 0);
    EXPECT_EQ(worker.Join(0), 0);
    EXPECT_NE(worker.Stop(kWaitForever), 0);
    EXPECT_EQ(seen, eWaitDone);
    EXPECT_EQ(worker.ends, 1);
}

TEST_P(Thread, WaitForStopEndsWithTheTime)
{
    std::atomic<int> seen{-1};
    worker.body = [&](Worker& self) { return seen = self.WaitForStop(1); };
    worker.Start(0, 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_EQ(seen, eWaitTimeout);
}

TEST_P(Thread, StopOfABusyThreadRunsOutOfTime)
{
    TEvent go;
    worker.body = [&](Worker&) { return go.Wait(kWaitForever); };
    worker.Start(0, 0);
    EXPECT_EQ(worker.Stop(5), 0);
    go.Set();
    EXPECT_NE(worker.Stop(kWaitForever), 0);
}

TEST_P(Thread, SecondStartIsRefusedWhileItRuns)
{
    worker.body = UntilStopped;
    EXPECT_NE(worker.Start(0, 0), 0);
    EXPECT_EQ(worker.Start(0, 0), 0);
    EXPECT_NE(worker.Stop(kWaitForever), 0);
    EXPECT_EQ(worker.runs, 1);
}

TEST_P(Thread, StartsAgainAfterItsEnd)
{
    worker.body = UntilStopped;
    for (int i = 1; i <= 5; ++i) {
        EXPECT_NE(worker.Start(0, 0), 0);
        EXPECT_EQ(worker.Join(0), 0);
        EXPECT_NE(worker.Stop(kWaitForever), 0);
        EXPECT_EQ(worker.runs, i);
        EXPECT_EQ(worker.resets, i);
    }
}

// A run that ends while the next one is started is joined all the same: what
// would be left of it, ThreadSanitizer and valgrind report as a leak.
TEST_P(Thread, StartsAgainWhileItEnds)
{
    constexpr int kRuns = 200;
    for (int run = 0; run < kRuns; ++run) {
        while (!worker.Start(0, 0))
            std::this_thread::yield();
    }
    EXPECT_TRUE(worker.Join(kWaitForever));
    EXPECT_EQ(kRuns, worker.ends);
}

TEST_P(Thread, TerminateEndsItWhereItWaitsForStop)
{
    worker.body = [](Worker& self) {
        for (;;) // never heeds the event
            self.WaitForStop(kWaitForever);
        return 0;
    };
    worker.Start(0, 0);
    EXPECT_EQ(worker.Stop(5), 0);
    worker.Terminate();
    EXPECT_NE(worker.Join(0), 0);
    EXPECT_EQ(worker.runs, 1);
    EXPECT_EQ(worker.returns, 0);
    EXPECT_EQ(worker.ends, 0);
}

TEST_P(Thread, TerminateWaitsForWorkUnderWay)
{
    TEvent go;
    std::atomic<bool> worked{false};
    TMutex mutex(true);
    worker.body = [&](Worker& self) {
        {
            TMutexLock lock(mutex);
            go.Wait(kWaitForever); // a cancellation point, but not here
            worked = true;
        }
        for (;;)
            self.WaitForStop(kWaitForever);
        return 0;
    };
    worker.Start(0, 0);
    std::thread releaser([&] {
        GiveOthersTime();
        go.Set();
    });
    worker.Terminate();
    EXPECT_TRUE(worked);
    EXPECT_EQ(mutex.Wait(0), eWaitDone); // no lock left behind
    mutex.Done();
    releaser.join();
}

TEST_P(Thread, TerminateUnwindsTheStack)
{
    std::atomic<bool> unwound{false};
    struct Guard {
        explicit Guard(std::atomic<bool>& f) : flag(f) {}
        ~Guard() { flag = true; }
        std::atomic<bool>& flag;
    };
    worker.body = [&](Worker& self) {
        Guard guard(unwound);
        for (;;)
            self.WaitForStop(1000);
        return 0;
    };
    worker.Start(0, 0);
    EXPECT_TRUE(Eventually([&] { return worker.runs == 1; }));
    worker.Terminate();
    EXPECT_TRUE(unwound);
}

TEST_P(Thread, StartsAgainAfterTerminate)
{
    worker.body = [](Worker& self) {
        for (;;)
            self.WaitForStop(kWaitForever);
        return 0;
    };
    worker.Start(0, 0);
    worker.Terminate();
    worker.body = UntilStopped;
    EXPECT_NE(worker.Start(0, 0), 0);
    EXPECT_EQ(worker.Join(0), 0);
    EXPECT_NE(worker.Stop(kWaitForever), 0);
    EXPECT_EQ(worker.ends, 1);
}

TEST_P(Thread, ExceptionOutOfRunEndsTheThreadOnly)
{
    worker.body = [](Worker&) -> int { throw std::runtime_error("lost"); };
    worker.Start(0, 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_EQ(worker.ends, 1);
}

TEST_P(Thread, FromItselfCommandsOnlyAskToStop)
{
    std::atomic<int> join{-1}, stop{-1}, event{-1};
    worker.body = [&](Worker& self) {
        join = self.Join(kWaitForever);
        self.Terminate();
        stop = self.Stop(kWaitForever);
        event = self.WaitForStop(0);
        return 0;
    };
    worker.Start(0, 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_EQ(join, 0);
    EXPECT_EQ(stop, 0);
    EXPECT_EQ(event, eWaitDone);
}

TEST_P(Thread, StopFromManyThreadsAtOnce)
{
    worker.body = UntilStopped;
    worker.Start(0, 0);
    std::atomic<int> ended{0};
    auto stop = [&] { ended += worker.Stop(kWaitForever) != 0; };
    std::thread one(stop);
    std::thread two(stop);
    one.join();
    two.join();
    EXPECT_EQ(ended, 2);
}

TEST_P(Thread, DestructorStopsARunningThread)
{
    std::atomic<bool> ended{false};
    {
        Worker late(GetParam());
        late.body = [&](Worker& self) {
            self.WaitForStop(kWaitForever);
            ended = true;
            return 0;
        };
        late.Start(0, 0);
    }
    EXPECT_TRUE(ended);
}

TEST_P(Thread, BaseDestructorIsTheLastResort)
{
    class Endless : public TThread {
    public:
        Endless(bool detached, TEvent& started) : TThread(detached), m_started(started) {}
        int Run() override
        {
            TEvent& started = m_started;
            for (started.Set();;)
                WaitForStop(kWaitForever);
        }

    private:
        TEvent& m_started;
    };
    TEvent started;
    Endless endless(GetParam(), started);
    endless.Start(0, 0);
    started.Wait(kWaitForever);
    SUCCEED(); // leaving the scope would hang or crash
}

TEST_P(Thread, StackSizeIsTakenOrRaised)
{
    std::atomic<std::size_t> size{0};
    worker.body = [&](Worker&) {
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        std::size_t bytes = 0;
        pthread_attr_getstacksize(&attributes, &bytes);
        pthread_attr_destroy(&attributes);
        size = bytes;
        return 0;
    };
    EXPECT_NE(worker.Start(16 << 20, 0), 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_GE(size, std::size_t(16) << 20);
    EXPECT_LT(size, std::size_t(17) << 20);
    worker.body = nullptr;
    EXPECT_NE(worker.Start(1, 0), 0);
    EXPECT_NE(worker.Join(kWaitForever), 0);
}

// No more memory than there is, and a gibibyte, while this lives.
class BoundedMemory {
public:
    BoundedMemory()
    {
        EXPECT_EQ(getrlimit(RLIMIT_AS, &m_before), 0);
        std::ifstream file("/proc/self/statm");
        unsigned long long pages = 0;
        EXPECT_TRUE(file >> pages);
        rlimit bounded = m_before;
        bounded.rlim_cur =
            pages * static_cast<unsigned long long>(sysconf(_SC_PAGESIZE)) + (1u << 30);
        EXPECT_EQ(setrlimit(RLIMIT_AS, &bounded), 0);
    }
    ~BoundedMemory() { setrlimit(RLIMIT_AS, &m_before); }
    BoundedMemory(const BoundedMemory&) = delete;
    BoundedMemory& operator=(const BoundedMemory&) = delete;

private:
    rlimit m_before;
};

TEST_P(Thread, ThreadThatCannotBeMadeHasEnded)
{
    {
        const BoundedMemory bounded;
        EXPECT_EQ(worker.Start(3u << 30, 0), 0) << "a stack of three gibibytes";
    }
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_NE(worker.Stop(kWaitForever), 0);
    EXPECT_EQ(worker.runs + worker.ends, 0);
    EXPECT_NE(worker.Start(0, 0), 0) << "it may be tried again";
    EXPECT_NE(worker.Join(kWaitForever), 0);
    EXPECT_EQ(worker.runs, 1);
}

bool BlocksSignals()
{
    sigset_t set;
    pthread_sigmask(SIG_SETMASK, nullptr, &set);
    return sigismember(&set, SIGTERM) == 1 && sigismember(&set, SIGHUP) == 1;
}

TEST_P(Thread, SignalsAreLeftToTheHostUnlessInherited)
{
    std::atomic<int> blocked{-1};
    worker.body = [&](Worker&) {
        blocked = BlocksSignals();
        return 0;
    };
    worker.Start(0, eThreadBlockSignals);
    worker.Join(kWaitForever);
    EXPECT_EQ(blocked, 1);
    EXPECT_FALSE(BlocksSignals());
    worker.Start(0, eThreadInheritSignals);
    worker.Join(kWaitForever);
    EXPECT_EQ(blocked, 0);
}

TEST_P(Thread, UnknownFlagsAreRefused)
{
    EXPECT_EQ(worker.Start(0, 2), 0);
    EXPECT_EQ(worker.Start(0, ~0u), 0);
    EXPECT_EQ(worker.runs, 0);
}

INSTANTIATE_TEST_SUITE_P(Threads, Thread, testing::Bool(),
                         [](const auto& what) { return what.param ? "Detached" : "Joinable"; });

TEST(ThreadObject, MayBeDeletedByItsOwnRun)
{
    class Suicidal : public TThread {
    public:
        Suicidal(bool detached, TEvent& ended) : TThread(detached), m_ended(ended) {}
        int Run() override
        {
            TEvent& ended = m_ended;
            delete this;
            ended.Set();
            return 0;
        }

    private:
        TEvent& m_ended;
    };
    static TEvent s_ended[2]; // the thread may still be in Set() when the test is over
    for (bool detached : {false, true}) {
        TThread* const thread = new Suicidal(detached, s_ended[detached]);
        thread->Start(0, 0);
        EXPECT_EQ(s_ended[detached].Wait(20000), eWaitDone);
    }
}

TEST(ThreadObject, WithoutItsStateItDoesNotStart)
{
    FailingAlloc fail(0);
    Worker worker;
    EXPECT_TRUE(fail.Failed());
    EXPECT_EQ(worker.Start(0, 0), 0);
    worker.ResetMembers();
    EXPECT_EQ(worker.WaitForStop(0), eWaitRefused);
    worker.Terminate();
    EXPECT_NE(worker.Join(kWaitForever), 0);
}

TEST(ThreadObject, PlainRunReturnsAtOnce)
{
    TThread thread(false);
    EXPECT_NE(thread.Start(0, 0), 0);
    EXPECT_NE(thread.Join(kWaitForever), 0);
}

TEST(ThreadObject, VirtualsKeepTheirSlots)
{
    EXPECT_EQ(VtableSlot(&TThread::Start), 2);
    EXPECT_EQ(VtableSlot(&TThread::Terminate), 3);
    EXPECT_EQ(VtableSlot(&TThread::Stop), 4);
    EXPECT_EQ(VtableSlot(&TThread::Join), 5);
    EXPECT_EQ(VtableSlot(&TThread::ResetMembers), 6);
    EXPECT_EQ(VtableSlot(&TThread::Run), 7);
    EXPECT_EQ(VtableSlot(&TThread::OnThreadEnd), 8);
}

} // namespace
} // namespace VLK
