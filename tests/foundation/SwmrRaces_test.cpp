// Readers and writers of one lock, as many at once as will come. Under ThreadSanitizer
// this finds what a plain run may not.
#include "tests/foundation/SwmrProbe.h"

#include <gtest/gtest.h>
#include <vector>

namespace VLK {
namespace {

TEST(SwmrRaces, WriterDoesNotStarveUnderAStreamOfReaders)
{
    TSWMRSynch lock;
    std::atomic<bool> stop{false};
    Together together(4);
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            together.Begin();
            while (!stop) {
                lock.WaitToRead(kWaitForever);
                std::this_thread::yield();
                lock.DoneReading();
            }
        });
    }
    together.Begin();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(lock.WaitToWrite(20000), eWaitDone);
        lock.DoneWriting();
    }
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
}

// They are never in a queue, and come to the gate all the time.
TEST(SwmrRaces, WriterDoesNotStarveUnderThoseWhoOnlyTryToRead)
{
    TSWMRSynch lock;
    std::atomic<bool> stop{false};
    Together together(4);
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            together.Begin();
            while (!stop) {
                if (lock.WaitToRead(0) == eWaitDone)
                    lock.DoneReading();
                std::this_thread::yield();
            }
        });
    }
    together.Begin();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(lock.WaitToWrite(20000), eWaitDone);
        lock.DoneWriting();
    }
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
}

TEST(SwmrRaces, ReaderDoesNotStarveUnderAStreamOfWriters)
{
    TSWMRSynch lock;
    std::atomic<bool> stop{false};
    Together together(4);
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i) {
        writers.emplace_back([&] {
            together.Begin();
            while (!stop) {
                lock.WaitToWrite(kWaitForever);
                std::this_thread::yield();
                lock.DoneWriting();
            }
        });
    }
    together.Begin();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(lock.WaitToRead(20000), eWaitDone);
        lock.DoneReading();
    }
    stop = true;
    for (std::thread& writer : writers)
        writer.join();
}

TEST(SwmrRaces, ReadersAndWritersNeverMeet)
{
    TSWMRSynch lock;
    long first = 0;
    long second = 0; // always equal to first for whoever reads
    std::atomic<int> wrong{0};
    Together together(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            together.Begin();
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
TEST(SwmrRaces, WritersThatComeAndGiveUpNeverMeetReaders)
{
    TSWMRSynch lock;
    long first = 0;
    long second = 0;
    std::atomic<int> wrong{0};
    std::atomic<long> written{0};
    Together together(6);
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < 6; ++number) {
        threads.emplace_back([&, number] {
            together.Begin();
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
    EXPECT_TRUE(IsGateOpen(lock));
}

} // namespace
} // namespace VLK
