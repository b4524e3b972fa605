// What a TSWMRSynch knows: who reads, who writes, who waits. Every member is
// called with the state's mutex held.
#pragma once

#include <pthread.h>

#include <vkmibh/sync.h>

namespace VLK {

// A thread that has to wait; lives on that thread's stack. Whoever makes room
// for it gives it the lock and wakes it, so that nobody can push in between.
struct SwmrWaiter {
    explicit SwmrWaiter(pthread_t waiting);
    ~SwmrWaiter();
    SwmrWaiter(const SwmrWaiter&) = delete;
    SwmrWaiter& operator=(const SwmrWaiter&) = delete;
    void Grant();

    pthread_t thread;
    bool granted;
    SwmrWaiter* next;
    pthread_cond_t condition;
};

// Waiters in the order of their coming.
struct SwmrQueue {
    void Push(SwmrWaiter* waiter);
    SwmrWaiter* Pop();
    void Remove(SwmrWaiter* waiter);

    SwmrWaiter* first = nullptr;
    SwmrWaiter* last = nullptr;
    unsigned count = 0;
};

// The threads that read, and how often each took the lock.
class SwmrReaders {
public:
    struct Entry {
        pthread_t thread;
        unsigned count;
    };

    SwmrReaders() = default; // cppcheck-suppress uninitMemberVar ; room, written before it is read
    ~SwmrReaders();
    SwmrReaders(const SwmrReaders&) = delete;
    SwmrReaders& operator=(const SwmrReaders&) = delete;

    bool Empty() const { return m_used == 0; }
    Entry* Find(pthread_t thread);
    // Makes room for that many more readers; false without memory.
    bool Reserve(unsigned more);
    // The room must have been reserved.
    void Add(pthread_t thread);
    void Remove(Entry* entry);

private:
    static constexpr unsigned kInline = 8;
    Entry m_inline[kInline];
    Entry* m_entries = m_inline;
    unsigned m_used = 0;
    unsigned m_capacity = kInline;
};

struct TSWMRSynch::SState {
    SState();
    ~SState();
    SState(const SState&) = delete;
    SState& operator=(const SState&) = delete;

    int Read(unsigned timeout);
    int Write(unsigned timeout);
    bool Writes(pthread_t thread) const { return writeDepth && pthread_equal(writer, thread); }
    // Waits until granted; false when the time was over first.
    bool Await(SwmrWaiter& waiter, unsigned timeout);
    void AdmitReaders();
    // Gives the lock to the next writer if nobody has it.
    void AdmitWriter();

    pthread_mutex_t mutex;
    pthread_t writer;
    unsigned writeDepth = 0;
    SwmrReaders readers;
    SwmrQueue waitingReaders;
    SwmrQueue waitingWriters;
};

} // namespace VLK
