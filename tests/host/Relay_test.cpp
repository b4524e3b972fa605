#include "host/Relay.h"

#include "tests/support/Threads.h"

#include <deque>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <stdexcept>

using namespace VLK;
using namespace VLK::host;
using namespace std::chrono_literals;

namespace {

using CJob = std::function<void()>;

// Jobs for whoever has the role. One that is still waiting when Release() is called
// goes on then.
class Jobs {
public:
    void Add(CJob job)
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_jobs.push_back(std::move(job));
        m_change.notify_all();
    }
    void End()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_hasEnded = true;
        m_change.notify_all();
    }
    // False when there is no other, and will not be. Throws for an empty one.
    bool Next(CJob& job)
    {
        EXPECT_FALSE(m_isTaken.exchange(true)) << "two threads have the role";
        std::unique_lock<std::mutex> lock(m_lock);
        m_change.wait(lock, [this] { return m_hasEnded || !m_jobs.empty(); });
        bool hasOne = !m_jobs.empty();
        if (hasOne && !m_jobs.front())
            throw std::runtime_error("the network is down");
        if (hasOne) {
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        m_isTaken = false;
        return hasOne;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_change;
    std::deque<CJob> m_jobs;
    bool m_hasEnded = false;
    std::atomic<bool> m_isTaken{false};
};

// What a slow job waits for.
class Gate {
public:
    void Open()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_isOpen = true;
        m_change.notify_all();
    }
    void Wait()
    {
        std::unique_lock<std::mutex> lock(m_lock);
        m_change.wait(lock, [this] { return m_isOpen; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_change;
    bool m_isOpen = false;
};

// A relay that serves jobs on a thread of its own.
class Relay : public testing::Test {
protected:
    void Start(unsigned workers, std::chrono::nanoseconds patience = 1ms,
               std::chrono::milliseconds grace = 1ms)
    {
        m_relay = std::make_unique<BRelay>(workers, patience, grace);
        m_serving = std::thread([this] {
            try {
                m_relay->Run([this] { Serve(); });
            } catch (const std::runtime_error& error) {
                m_failure = error.what();
            }
            m_hasReturned = true;
        });
    }
    void Finish()
    {
        m_jobs.End();
        m_serving.join();
    }
    void Serve()
    {
        CJob job;
        while (m_jobs.Next(job)) {
            if (!m_relay->HasWorker()) {
                ++m_refused;
                continue;
            }
            int64_t ticket = m_relay->Begin();
            job();
            ++m_done;
            if (!m_relay->End(ticket))
                return;
        }
    }
    bool Comes(const std::function<bool()>& condition) { return Eventually(condition); }

    Jobs m_jobs;
    std::unique_ptr<BRelay> m_relay;
    std::thread m_serving;
    std::atomic<int> m_done{0};
    std::atomic<int> m_refused{0};
    std::atomic<bool> m_hasReturned{false};
    std::string m_failure;
};

TEST_F(Relay, WorkThatIsDoneAtOnceStaysOnTheFirstThread)
{
    Start(4, 1h);
    std::set<std::thread::id> threads;
    for (int i = 0; i < 1000; ++i)
        m_jobs.Add([&] { threads.insert(std::this_thread::get_id()); });
    EXPECT_TRUE(Comes([&] { return m_done == 1000; }));
    EXPECT_EQ(threads, std::set<std::thread::id>{m_serving.get_id()});
    Finish();
}

TEST_F(Relay, LateWorkKeepsNothingElseWaiting)
{
    Start(4);
    Gate gate;
    std::atomic<std::thread::id> other{};
    m_jobs.Add([&] { gate.Wait(); });
    m_jobs.Add([&] { other = std::this_thread::get_id(); });
    EXPECT_TRUE(Comes([&] { return m_done == 1; }));
    EXPECT_NE(other.load(), m_serving.get_id());
    EXPECT_NE(other.load(), std::thread::id());
    EXPECT_EQ(m_relay->Late(), 1u);
    gate.Open();
    EXPECT_TRUE(Comes([&] { return m_done == 2 && m_relay->Late() == 0; }));
    Finish();
}

TEST_F(Relay, WorkInTimeIsLeftAlone)
{
    Start(4, 1h);
    Gate gate;
    m_jobs.Add([&] { gate.Wait(); });
    m_jobs.Add([] {});
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(m_done, 0);
    EXPECT_EQ(m_relay->Late(), 0u);
    gate.Open();
    EXPECT_TRUE(Comes([&] { return m_done == 2; }));
    Finish();
}

TEST_F(Relay, OneThreadMoreThanMayBeLateTellsThatNoneIsFree)
{
    Start(3);
    Gate gates[3];
    for (Gate& gate : gates)
        m_jobs.Add([&] { gate.Wait(); });
    EXPECT_TRUE(Comes([&] { return m_relay->Late() == 3; }));
    m_jobs.Add([] { ADD_FAILURE() << "was to be refused"; });
    EXPECT_TRUE(Comes([&] { return m_refused == 1; }));
    EXPECT_EQ(m_done, 0);
    gates[1].Open();
    EXPECT_TRUE(Comes([&] { return m_relay->Late() == 2; }));
    m_jobs.Add([] {});
    EXPECT_TRUE(Comes([&] { return m_done == 2; }));
    // The thread that was late watches again.
    m_jobs.Add([&] { gates[1].Wait(), gates[2].Wait(); });
    m_jobs.Add([] { ADD_FAILURE() << "was to be refused"; });
    EXPECT_TRUE(Comes([&] { return m_refused == 2; }));
    gates[0].Open();
    gates[2].Open();
    EXPECT_TRUE(Comes([&] { return m_done == 5 && m_relay->Late() == 0; }));
    Finish();
}

TEST_F(Relay, AThreadThatComesBackSoonIsWaitedFor)
{
    Start(1, 1ms, 1h);
    Gate gate;
    m_jobs.Add([&] { gate.Wait(); });
    EXPECT_TRUE(Comes([&] { return m_relay->Late() == 1; }));
    m_jobs.Add([] {});
    GiveOthersTime();
    EXPECT_EQ(m_done, 0);
    gate.Open();
    EXPECT_TRUE(Comes([&] { return m_done == 2; }));
    EXPECT_EQ(m_refused, 0);
    Finish();
}

TEST_F(Relay, ThreadsThatDoNotComeBackAreWaitedForOnce)
{
    Start(1, 1ms, 200ms);
    Gate gate;
    m_jobs.Add([&] { gate.Wait(); });
    EXPECT_TRUE(Comes([&] { return m_relay->Late() == 1; }));
    for (int i = 0; i < 1000; ++i)
        m_jobs.Add([] { ADD_FAILURE() << "was to be refused"; });
    EXPECT_TRUE(Comes([&] { return m_refused == 1000; })) << "waited for each";
    gate.Open();
    EXPECT_TRUE(Comes([&] { return m_relay->Late() == 0; }));
    Finish();
}

TEST_F(Relay, ServesWithOneWorker)
{
    Start(1);
    for (int round = 1; round <= 3; ++round) {
        Gate gate;
        m_jobs.Add([&] { gate.Wait(); });
        EXPECT_TRUE(Comes([&] { return m_relay->Late() == 1; }));
        m_jobs.Add([] { ADD_FAILURE() << "was to be refused"; });
        EXPECT_TRUE(Comes([&] { return m_refused == round; }));
        gate.Open();
        EXPECT_TRUE(Comes([&] { return m_done == round && m_relay->Late() == 0; }));
    }
    Finish();
}

TEST_F(Relay, EndsWhenLateWorkHas)
{
    Start(4);
    Gate gate;
    m_jobs.Add([&] { gate.Wait(); });
    m_jobs.Add([] {});
    EXPECT_TRUE(Comes([&] { return m_done == 1; }));
    m_jobs.End();
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(m_hasReturned);
    gate.Open();
    m_serving.join();
    EXPECT_EQ(m_done, 2);
}

TEST_F(Relay, EndsWithoutHavingWorked)
{
    Start(4);
    Finish();
    EXPECT_EQ(m_failure, "");
}

TEST_F(Relay, ThrowsWhatServingThrewOnWhateverThread)
{
    Start(4);
    Gate gate;
    m_jobs.Add([&] { gate.Wait(); });
    m_jobs.Add(nullptr);
    EXPECT_TRUE(Comes([&] { return m_relay->Late() == 1; }));
    gate.Open();
    m_serving.join();
    EXPECT_EQ(m_failure, "the network is down");
}

TEST_F(Relay, DoesEveryJobOnceHoweverLongEachTakes)
{
    constexpr int kJobs = 4000;
    Start(5, 50us);
    std::vector<std::atomic<int>> done(kJobs);
    std::mutex lock;
    std::set<std::thread::id> threads;
    std::mt19937 random(4711);
    for (int i = 0; i < kJobs; ++i) {
        auto length = std::chrono::microseconds(random() % 10 == 0 ? random() % 500 : 0);
        m_jobs.Add([&, i, length] {
            if (length > 0us)
                std::this_thread::sleep_for(length);
            ++done[static_cast<size_t>(i)];
            std::lock_guard<std::mutex> guard(lock);
            threads.insert(std::this_thread::get_id());
        });
    }
    EXPECT_TRUE(Comes([&] { return m_done + m_refused == kJobs; }));
    Finish();
    int sum = 0;
    for (const std::atomic<int>& count : done) {
        EXPECT_LE(count, 1);
        sum += count;
    }
    EXPECT_EQ(sum, m_done);
    EXPECT_GT(threads.size(), 1u);
    EXPECT_LE(threads.size(), 6u);
}

TEST_F(Relay, SleepsWhileNothingIsToBeDone)
{
    Start(4);
    m_jobs.Add([] {});
    EXPECT_TRUE(Comes([&] { return m_done == 1; }));
    std::this_thread::sleep_for(20ms); // the timer of that job expires
    timespec before;
    timespec after;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
    std::this_thread::sleep_for(200ms);
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
    auto spent = (after.tv_sec - before.tv_sec) * 1000000000l + (after.tv_nsec - before.tv_nsec);
    EXPECT_LT(spent, 20000000l);
    Finish();
}

} // namespace
