// What a TSWMRSynch knows: who reads, who writes, who waits. Every member is
// called with the state's mutex held, but for the gate's Pass() and Leave().
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
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

// The threads that read without having passed the gate, and how often each took the
// lock.
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

// Where most readers pass, without the mutex: it counts them, and is closed while a writer
// writes or waits. Each thread knows itself which gates it has passed.
//
// A reader that finds it closed goes back; the last to go while it is closed looks, under
// the mutex, whether a writer waited for just that. One atomic holds both, so that of a reader
// and a writer that come at once one sees the other.
class SwmrGate {
public:
    SwmrGate();

    // Again, or because it is open; false also when there is no room for one more.
    bool Pass();
    // eLeftLast: the gate is closed, and a writer may have waited for this thread alone.
    enum ELeft { eNotInside, eLeft, eLeftLast };
    ELeft Leave();
    bool IsInside() const { return FindOwn() != nullptr; }

    // With the mutex held.
    void Close() { m_state.fetch_or(kClosed, std::memory_order_acq_rel); }
    void Open() { m_state.fetch_and(~kClosed, std::memory_order_release); }
    bool Empty() const { return m_state.load(std::memory_order_acquire) < kReader; }

private:
    // A thread inside a gate; unlike an address, an id never comes again.
    struct SInside {
        std::uint64_t gate;
        unsigned count;
    };
    static constexpr unsigned kClosed = 1;
    static constexpr unsigned kReader = 2;
    static constexpr unsigned kMostReaders = 64; // more are told by the list
    static constexpr int kMostGates = 4;         // that a thread is inside of at once

    SInside* FindOwn() const { return Find(m_id); }
    static SInside* Find(std::uint64_t gate);

    static thread_local SInside t_inside[kMostGates];
    const std::uint64_t m_id; // never 0
    std::atomic<unsigned> m_state{0};
};

struct TSWMRSynch::SState {
    SState();
    ~SState();
    SState(const SState&) = delete;
    SState& operator=(const SState&) = delete;

    int Read(unsigned timeout);
    int Write(unsigned timeout);
    bool NobodyReads() const { return readers.Empty() && gate.Empty(); }
    // Unless somebody writes or waits.
    VKMIBH_LOCAL void OpenGate();
    bool Writes(pthread_t thread) const { return writeDepth && pthread_equal(writer, thread); }
    // Waits until granted; false when the time was over first.
    bool Await(SwmrWaiter& waiter, unsigned timeout);
    void AdmitReaders();
    // Gives the lock to the next writer if nobody has it.
    void AdmitWriter();

    SwmrGate gate; // the only member that needs no mutex
    pthread_mutex_t mutex;
    pthread_t writer;
    unsigned writeDepth = 0;
    SwmrReaders readers;
    SwmrQueue waitingReaders;
    SwmrQueue waitingWriters;
};

} // namespace VLK
