#include "tests/support/BreaksLockRules.h"
#include "tests/support/FailingAlloc.h"
#include "tests/support/Threads.h"

#include <functional>
#include <gtest/gtest.h>
#include <vector>
#include <vkmibh/base.h>

namespace VLK {
namespace {

// Runs on another thread and gives back what it said.
int Elsewhere(const std::function<int()>& ask)
{
    int result = -1;
    std::thread([&] { result = ask(); }).join();
    return result;
}

int TryRead(TSWMRSynch& lock)
{
    return Elsewhere([&] {
        const int result = lock.WaitToRead(0);
        if (result == eWaitDone)
            lock.DoneReading();
        return result;
    });
}

int TryWrite(TSWMRSynch& lock)
{
    return Elsewhere([&] {
        const int result = lock.WaitToWrite(0);
        if (result == eWaitDone)
            lock.DoneWriting();
        return result;
    });
}

// A thread that takes the lock and keeps it until it is told.
class Holder {
public:
    Holder(TSWMRSynch& lock, bool write)
        : m_lock(lock), m_write(write), m_thread([this] { Main(); })
    {
    }
    ~Holder()
    {
        Release();
        m_thread.join();
    }
    bool Holds() const { return m_holds; }
    bool WaitUntilHeld()
    {
        return Eventually([this] { return Holds(); });
    }
    // For the lock that somebody else has: it waits, or is about to.
    bool WaitUntilItAsks()
    {
        const bool asks = Eventually([this] { return bool(m_asks); });
        GiveOthersTime();
        return asks;
    }
    void Release() { m_release.Set(); }

private:
    void Main()
    {
        m_asks = true;
        if (m_write)
            m_lock.WaitToWrite(kWaitForever);
        else
            m_lock.WaitToRead(kWaitForever);
        m_holds = true;
        m_release.Wait(kWaitForever);
        m_holds = false;
        if (m_write)
            m_lock.DoneWriting();
        else
            m_lock.DoneReading();
    }
    TSWMRSynch& m_lock;
    const bool m_write;
    std::atomic<bool> m_asks{false};
    std::atomic<bool> m_holds{false};
    TEvent m_release;
    std::thread m_thread;
};

// A waiting writer shows in that new readers are no longer let in.
bool WriterWaits(TSWMRSynch& lock)
{
    return Eventually([&] { return TryRead(lock) == eWaitTimeout; });
}

TEST(SwmrSynch, ManyReadAtOnce)
{
    TSWMRSynch lock;
    EXPECT_EQ(lock.WaitToRead(kWaitForever), eWaitDone);
    EXPECT_EQ(TryRead(lock), eWaitDone);
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
    lock.DoneReading();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, WriterExcludesEverybody)
{
    TSWMRSynch lock;
    EXPECT_EQ(lock.WaitToWrite(kWaitForever), eWaitDone);
    EXPECT_EQ(TryRead(lock), eWaitTimeout);
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
    lock.DoneWriting();
    EXPECT_EQ(TryRead(lock), eWaitDone);
}

TEST(SwmrSynch, ReaderGivesBackAsOftenAsItTook)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    lock.WaitToRead(kWaitForever);
    lock.DoneReading();
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
    lock.DoneReading();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, WriterMayWriteAndReadAgain)
{
    TSWMRSynch lock;
    EXPECT_EQ(lock.WaitToWrite(kWaitForever), eWaitDone);
    EXPECT_EQ(lock.WaitToWrite(kWaitForever), eWaitDone);
    EXPECT_EQ(lock.WaitToRead(kWaitForever), eWaitDone);
    EXPECT_EQ(lock.WaitToWrite(kWaitForever), eWaitDone);
    lock.DoneWriting();
    lock.DoneReading();
    lock.DoneWriting();
    EXPECT_EQ(TryRead(lock), eWaitTimeout);
    lock.DoneWriting();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, WriterThatStillReadsGoesOnAsAReader)
{
    TSWMRSynch lock;
    lock.WaitToWrite(kWaitForever);
    lock.WaitToRead(kWaitForever);
    lock.DoneWriting();
    EXPECT_EQ(TryRead(lock), eWaitDone);
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
    lock.DoneReading();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, UpgradeIsRefused)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    EXPECT_EQ(lock.WaitToWrite(kWaitForever), eWaitRefused);
    EXPECT_EQ(lock.WaitToWrite(0), eWaitRefused);
    EXPECT_EQ(TryRead(lock), eWaitDone);
    lock.DoneReading();
    EXPECT_EQ(lock.WaitToWrite(kWaitForever), eWaitDone);
    lock.DoneWriting();
}

TEST(SwmrSynch, GivingBackWhatIsNotHeldDoesNothing)
{
    TSWMRSynch lock;
    lock.DoneReading();
    lock.DoneWriting();
    Holder reader(lock, false);
    ASSERT_TRUE(reader.WaitUntilHeld());
    lock.DoneReading();
    lock.DoneWriting();
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
}

TEST(SwmrSynch, NewReadersQueueBehindAWaitingWriter)
{
    TSWMRSynch lock;
    Holder first(lock, false);
    ASSERT_TRUE(first.WaitUntilHeld());
    Holder writer(lock, true);
    ASSERT_TRUE(WriterWaits(lock));
    Holder late(lock, false);
    GiveOthersTime();
    EXPECT_FALSE(late.Holds());
    EXPECT_FALSE(writer.Holds());
    first.Release();
    ASSERT_TRUE(writer.WaitUntilHeld());
    GiveOthersTime();
    EXPECT_FALSE(late.Holds());
    writer.Release();
    EXPECT_TRUE(late.WaitUntilHeld());
}

TEST(SwmrSynch, ReaderEntersAgainPastAWaitingWriter)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    Holder writer(lock, true);
    ASSERT_TRUE(WriterWaits(lock));
    EXPECT_EQ(lock.WaitToRead(0), eWaitDone); // for ever would wait for itself
    lock.DoneReading();
    EXPECT_FALSE(writer.Holds());
    lock.DoneReading();
    EXPECT_TRUE(writer.WaitUntilHeld());
}

TEST(SwmrSynch, WaitingReadersGoBeforeTheNextWriter)
{
    TSWMRSynch lock;
    lock.WaitToWrite(kWaitForever);
    Holder writer(lock, true); // comes before the readers
    ASSERT_TRUE(writer.WaitUntilItAsks());
    Holder one(lock, false);
    Holder two(lock, false);
    ASSERT_TRUE(one.WaitUntilItAsks());
    ASSERT_TRUE(two.WaitUntilItAsks());
    lock.DoneWriting();
    EXPECT_TRUE(one.WaitUntilHeld());
    EXPECT_TRUE(two.WaitUntilHeld());
    EXPECT_FALSE(writer.Holds());
    one.Release();
    GiveOthersTime();
    EXPECT_FALSE(writer.Holds());
    two.Release();
    EXPECT_TRUE(writer.WaitUntilHeld());
}

TEST(SwmrSynch, WritersGoInTheOrderOfTheirComing)
{
    TSWMRSynch lock;
    lock.WaitToWrite(kWaitForever);
    std::vector<int> order;
    std::vector<std::thread> writers;
    for (int i = 0; i < 4; ++i) {
        writers.emplace_back([&, i] {
            lock.WaitToWrite(kWaitForever);
            order.push_back(i);
            lock.DoneWriting();
        });
        GiveOthersTime();
    }
    lock.DoneWriting();
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

TEST(SwmrSynch, BoundedWaitsEnd)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    EXPECT_EQ(Elsewhere([&] { return lock.WaitToWrite(10); }), eWaitTimeout);
    lock.DoneReading();
    lock.WaitToWrite(kWaitForever);
    EXPECT_EQ(Elsewhere([&] { return lock.WaitToRead(10); }), eWaitTimeout);
    EXPECT_EQ(Elsewhere([&] { return lock.WaitToWrite(10); }), eWaitTimeout);
    lock.DoneWriting();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, WriterThatGivesUpLetsTheReadersBehindItIn)
{
    TSWMRSynch lock;
    Holder first(lock, false);
    ASSERT_TRUE(first.WaitUntilHeld());
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        while (!stop) // on a slow machine nobody may notice that it waited once
            EXPECT_EQ(lock.WaitToWrite(50), eWaitTimeout);
    });
    EXPECT_TRUE(WriterWaits(lock));
    Holder late(lock, false);
    EXPECT_TRUE(late.WaitUntilHeld());
    stop = true;
    writer.join();
    EXPECT_TRUE(first.Holds());
}

TEST(SwmrSynch, ReaderThatGivesUpLeavesTheOthersWaiting)
{
    TSWMRSynch lock;
    lock.WaitToWrite(kWaitForever);
    Holder first(lock, false);
    for (int i = 0; i < 10; ++i) // the first one may come late
        EXPECT_EQ(Elsewhere([&] { return lock.WaitToRead(5); }), eWaitTimeout);
    Holder last(lock, false);
    GiveOthersTime();
    lock.DoneWriting();
    EXPECT_TRUE(first.WaitUntilHeld());
    EXPECT_TRUE(last.WaitUntilHeld());
}

TEST(SwmrSynch, WriterThatGivesUpLetsNobodyPastAnEarlierOne)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    Holder writer(lock, true);
    ASSERT_TRUE(WriterWaits(lock));
    Holder late(lock, false);
    for (int i = 0; i < 10; ++i) // the reader may come late
        EXPECT_EQ(Elsewhere([&] { return lock.WaitToWrite(5); }), eWaitTimeout);
    EXPECT_FALSE(late.Holds());
    EXPECT_FALSE(writer.Holds());
    lock.DoneReading();
    EXPECT_TRUE(writer.WaitUntilHeld());
    writer.Release();
    EXPECT_TRUE(late.WaitUntilHeld());
}

TEST(SwmrSynch, WriterDoesNotStarveUnderAStreamOfReaders)
{
    TSWMRSynch lock;
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            while (!stop) {
                lock.WaitToRead(kWaitForever);
                std::this_thread::yield();
                lock.DoneReading();
            }
        });
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(lock.WaitToWrite(20000), eWaitDone);
        lock.DoneWriting();
    }
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
}

TEST(SwmrSynch, ReaderDoesNotStarveUnderAStreamOfWriters)
{
    TSWMRSynch lock;
    std::atomic<bool> stop{false};
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i) {
        writers.emplace_back([&] {
            while (!stop) {
                lock.WaitToWrite(kWaitForever);
                std::this_thread::yield();
                lock.DoneWriting();
            }
        });
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(lock.WaitToRead(20000), eWaitDone);
        lock.DoneReading();
    }
    stop = true;
    for (std::thread& writer : writers)
        writer.join();
}

TEST(SwmrSynch, ReadersAndWritersNeverMeet)
{
    TSWMRSynch lock;
    long first = 0;
    long second = 0; // always equal to first for whoever reads
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                if ((i + t) % 5 == 0) {
                    TWriteLock write(lock);
                    ++first;
                    ++second;
                } else {
                    TReadLock read(lock);
                    TReadLock again(lock);
                    if (first != second)
                        ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(first, 4 * 400);
}

// Whether a writer gets the lock or gives up waiting for it, at any moment.
TEST(SwmrSynch, WritersThatComeAndGiveUpNeverMeetReaders)
{
    TSWMRSynch lock;
    long first = 0;
    long second = 0;
    std::atomic<int> wrong{0};
    std::atomic<long> written{0};
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < 6; ++number) {
        threads.emplace_back([&, number] {
            for (unsigned i = 0; i < 600; ++i) {
                if (number % 2) {
                    if (lock.WaitToWrite(i % 3) == eWaitDone) {
                        TReadLock inside(lock);
                        ++first;
                        ++written;
                        ++second;
                        lock.DoneWriting();
                    }
                } else {
                    TReadLock read(lock);
                    TReadLock again(lock);
                    if (first != second || lock.WaitToWrite(0) != eWaitRefused)
                        ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(first, written);
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, AThreadMayReadManyLocksAtOnce)
{
    std::vector<TSWMRSynch> locks(9);
    for (int round = 0; round < 2; ++round) {
        for (TSWMRSynch& lock : locks)
            ASSERT_EQ(lock.WaitToRead(0), eWaitDone);
    }
    for (int round = 0; round < 2; ++round) {
        for (TSWMRSynch& lock : locks) {
            EXPECT_EQ(lock.WaitToWrite(0), eWaitRefused);
            EXPECT_EQ(TryWrite(lock), eWaitTimeout);
            lock.DoneReading();
        }
    }
    for (TSWMRSynch& lock : locks)
        EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, RemembersMoreReadersThanFitAtFirst)
{
    TSWMRSynch lock;
    std::vector<std::unique_ptr<Holder>> readers;
    for (int i = 0; i < 40; ++i)
        readers.push_back(std::make_unique<Holder>(lock, false));
    for (auto& reader : readers)
        EXPECT_TRUE(reader->WaitUntilHeld());
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
    readers.clear();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, ReaderWithoutMemoryIsRefused)
{
    TSWMRSynch lock;
    std::vector<std::unique_ptr<Holder>> readers;
    int result = eWaitDone;
    for (int i = 0; i < 100 && result == eWaitDone; ++i) {
        readers.push_back(std::make_unique<Holder>(lock, false));
        ASSERT_TRUE(readers.back()->WaitUntilHeld());
        FailingAlloc fail(0);
        result = lock.WaitToRead(0);
        if (result == eWaitDone)
            lock.DoneReading();
    }
    EXPECT_EQ(result, eWaitRefused);
    readers.clear();
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

TEST(SwmrSynch, WithoutItsStateEverythingIsRefused)
{
    std::unique_ptr<TSWMRSynch> lock;
    {
        FailingAlloc fail(1); // the object itself
        lock = std::make_unique<TSWMRSynch>();
        EXPECT_TRUE(fail.Failed());
    }
    EXPECT_EQ(lock->WaitToRead(kWaitForever), eWaitRefused);
    EXPECT_EQ(lock->WaitToWrite(kWaitForever), eWaitRefused);
    lock->DoneReading();
    lock->DoneWriting();
    EXPECT_FALSE(TReadLock(*lock).Granted());
}

TEST(SwmrSynch, GuardsTellWhetherTheyWereGranted)
{
    TSWMRSynch lock;
    {
        TReadLock read(lock);
        EXPECT_TRUE(read.Granted());
        TWriteLock upgrade(lock);
        EXPECT_FALSE(upgrade.Granted());
    }
    {
        TWriteLock write(lock);
        EXPECT_TRUE(write.Granted());
        EXPECT_EQ(TryRead(lock), eWaitTimeout);
    }
    EXPECT_EQ(TryWrite(lock), eWaitDone);
}

} // namespace
} // namespace VLK
