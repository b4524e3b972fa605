#include "tests/foundation/SwmrProbe.h"
#include "tests/support/FailingAlloc.h"

#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace VLK {
namespace {

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
    void Release() { m_release.Set(); }

private:
    void Main()
    {
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
    std::atomic<bool> m_holds{false};
    TEvent m_release;
    std::thread m_thread;
};

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
    ASSERT_TRUE(WaitUntilTheyWait(lock, 0, 1));
    EXPECT_EQ(TryRead(lock), eWaitTimeout);
    Holder late(lock, false);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 1, 1));
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
    ASSERT_TRUE(WaitUntilTheyWait(lock, 0, 1));
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
    ASSERT_TRUE(WaitUntilTheyWait(lock, 0, 1));
    Holder one(lock, false);
    Holder two(lock, false);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 2, 1));
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
    std::vector<unsigned> order;
    std::vector<std::thread> writers;
    for (unsigned i = 0; i < 4; ++i) {
        writers.emplace_back([&, i] {
            lock.WaitToWrite(kWaitForever);
            order.push_back(i);
            lock.DoneWriting();
        });
        EXPECT_TRUE(WaitUntilTheyWait(lock, 0, i + 1));
    }
    lock.DoneWriting();
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(order, (std::vector<unsigned>{0, 1, 2, 3}));
}

// The last reader is out of the gate, and has yet to tell the writer that waits for it:
// whoever comes just then goes behind that one.
TEST(SwmrSynch, NobodyOvertakesAWriterInTheMomentInWhichTheLockIsFree)
{
    TSWMRSynch lock;
    Holder reader(lock, false);
    ASSERT_TRUE(reader.WaitUntilHeld());
    Holder writer(lock, true);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 0, 1));
    auto* const state = StateOf(lock);
    {
        const PthreadLock inside(state->mutex);
        reader.Release();
        EXPECT_TRUE(Eventually([&] { return state->NobodyReads(); }));
        EXPECT_EQ(state->Write(0), eWaitTimeout);
        EXPECT_EQ(state->Read(0), eWaitTimeout);
    }
    EXPECT_TRUE(writer.WaitUntilHeld());
}

// A reader that finds the gate closed may have been all that the writer saw in it.
TEST(SwmrSynch, AReaderThatGoesBackFromTheGateLetsTheWriterIn)
{
    TSWMRSynch lock;
    ASSERT_EQ(lock.WaitToRead(0), eWaitDone);
    Holder writer(lock, true);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 0, 1));
    StateOf(lock)->gate.Leave(); // and looks at nothing else, as who goes back
    EXPECT_FALSE(writer.Holds());
    EXPECT_EQ(lock.WaitToRead(0), eWaitTimeout);
    EXPECT_TRUE(writer.WaitUntilHeld());
}

TEST(SwmrSynch, BoundedWaitsEnd)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    EXPECT_EQ(Elsewhere([&] { return lock.WaitToWrite(10); }), eWaitTimeout);
    EXPECT_TRUE(IsGateOpen(lock));
    EXPECT_EQ(TryWrite(lock), eWaitTimeout);
    EXPECT_TRUE(IsGateOpen(lock));
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
    EXPECT_TRUE(WaitUntilTheyWait(lock, 0, 1));
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
    ASSERT_TRUE(WaitUntilTheyWait(lock, 1, 0));
    EXPECT_EQ(Elsewhere([&] { return lock.WaitToRead(5); }), eWaitTimeout);
    Holder last(lock, false);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 2, 0));
    lock.DoneWriting();
    EXPECT_TRUE(first.WaitUntilHeld());
    EXPECT_TRUE(last.WaitUntilHeld());
}

TEST(SwmrSynch, WriterThatGivesUpLetsNobodyPastAnEarlierOne)
{
    TSWMRSynch lock;
    lock.WaitToRead(kWaitForever);
    Holder writer(lock, true);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 0, 1));
    Holder late(lock, false);
    ASSERT_TRUE(WaitUntilTheyWait(lock, 1, 1));
    EXPECT_EQ(Elsewhere([&] { return lock.WaitToWrite(5); }), eWaitTimeout);
    EXPECT_FALSE(late.Holds());
    EXPECT_FALSE(writer.Holds());
    lock.DoneReading();
    EXPECT_TRUE(writer.WaitUntilHeld());
    writer.Release();
    EXPECT_TRUE(late.WaitUntilHeld());
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

// More than the gate counts and than the list has room for at first. Those of the gate go
// before those of the list.
TEST(SwmrSynch, RemembersMoreReadersThanFitAtFirst)
{
    TSWMRSynch lock;
    std::deque<Holder> readers;
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(readers.emplace_back(lock, false).WaitUntilHeld());
    for (; !readers.empty(); readers.pop_front())
        EXPECT_EQ(TryWrite(lock), eWaitTimeout) << readers.size() << " read";
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
