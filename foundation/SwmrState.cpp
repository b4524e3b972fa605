#include "foundation/SwmrState.h"

#include "foundation/Deadline.h"

#include <cerrno>
#include <new>

namespace VLK {

SwmrWaiter::SwmrWaiter(pthread_t waiting) : thread(waiting), granted(false), next(nullptr)
{
    InitMonotonic(condition);
}

SwmrWaiter::~SwmrWaiter() { pthread_cond_destroy(&condition); }

void SwmrWaiter::Grant()
{
    granted = true;
    pthread_cond_signal(&condition);
}

void SwmrQueue::Push(SwmrWaiter* waiter)
{
    (last ? last->next : first) = waiter;
    last = waiter; // cppcheck-suppress danglingLifetime ; whoever waits leaves the queue first
    ++count;
}

SwmrWaiter* SwmrQueue::Pop()
{
    SwmrWaiter* const waiter = first;
    if (waiter)
        Remove(waiter);
    return waiter;
}

void SwmrQueue::Remove(SwmrWaiter* waiter)
{
    SwmrWaiter* before = nullptr;
    for (SwmrWaiter* at = first; at != waiter; at = at->next)
        before = at;
    (before ? before->next : first) = waiter->next;
    if (last == waiter)
        last = before;
    --count;
}

SwmrReaders::~SwmrReaders()
{
    if (m_entries != m_inline)
        delete[] m_entries;
}

SwmrReaders::Entry* SwmrReaders::Find(pthread_t thread)
{
    for (unsigned i = 0; i < m_used; ++i) {
        if (pthread_equal(m_entries[i].thread, thread))
            return &m_entries[i];
    }
    return nullptr;
}

bool SwmrReaders::Reserve(unsigned more)
{
    if (more <= m_capacity - m_used)
        return true;
    // Each is a thread, of which there are never so many that this wraps.
    const unsigned wanted = (m_used + more) * 2;
    Entry* const entries = new (std::nothrow) Entry[wanted];
    if (!entries)
        return false;
    for (unsigned i = 0; i < m_used; ++i)
        entries[i] = m_entries[i];
    if (m_entries != m_inline)
        delete[] m_entries;
    m_entries = entries;
    m_capacity = wanted;
    return true;
}

void SwmrReaders::Add(pthread_t thread) { m_entries[m_used++] = Entry{thread, 1}; }

void SwmrReaders::Remove(Entry* entry) { *entry = m_entries[--m_used]; }

thread_local SwmrGate::SInside SwmrGate::t_inside[kMostGates];

namespace {

std::uint64_t NextGate()
{
    static std::atomic<std::uint64_t> s_last{0};
    return s_last.fetch_add(1, std::memory_order_relaxed) + 1;
}

} // namespace

SwmrGate::SwmrGate() : m_id(NextGate()) {}

SwmrGate::SInside* SwmrGate::Find(std::uint64_t gate)
{
    for (SInside& inside : t_inside) {
        if (inside.gate == gate)
            return &inside;
    }
    return nullptr;
}

bool SwmrGate::Pass()
{
    if (SInside* const own = FindOwn()) {
        ++own->count;
        return true;
    }
    SInside* const free = Find(0);
    if (!free)
        return false;
    const unsigned before = m_state.fetch_add(kReader, std::memory_order_acquire);
    if ((before & kClosed) == 0 && before < kMostReaders * kReader) {
        *free = SInside{m_id, 1};
        return true;
    }
    m_state.fetch_sub(kReader, std::memory_order_release);
    return false;
}

SwmrGate::ELeft SwmrGate::Leave()
{
    SInside* const own = FindOwn();
    if (!own)
        return eNotInside;
    if (--own->count)
        return eLeft;
    own->gate = 0;
    const unsigned before = m_state.fetch_sub(kReader, std::memory_order_acq_rel);
    return before == kReader + kClosed ? eLeftLast : eLeft;
}

TSWMRSynch::SState::SState() : writer() { pthread_mutex_init(&mutex, nullptr); }

TSWMRSynch::SState::~SState() { pthread_mutex_destroy(&mutex); }

int TSWMRSynch::SState::Read(unsigned timeout)
{
    const pthread_t self = pthread_self();
    AdmitWriter(); // it may have seen this thread go in and out of the gate
    if (SwmrReaders::Entry* const entry = readers.Find(self)) {
        ++entry->count;
        return eWaitDone;
    }
    // Room for those who wait already, too: who lets them in cannot fail.
    if (!readers.Reserve(waitingReaders.count + 1))
        return eWaitRefused;
    if (Writes(self) || (!writeDepth && !waitingWriters.first)) {
        readers.Add(self);
        return eWaitDone;
    }
    if (timeout == 0)
        return eWaitTimeout;
    SwmrWaiter waiter(self);
    waitingReaders.Push(&waiter);
    if (Await(waiter, timeout))
        return eWaitDone;
    waitingReaders.Remove(&waiter);
    return eWaitTimeout;
}

int TSWMRSynch::SState::Write(unsigned timeout)
{
    const pthread_t self = pthread_self();
    if (Writes(self)) {
        ++writeDepth;
        return eWaitDone;
    }
    if (readers.Find(self) || gate.IsInside())
        return eWaitRefused; // it would wait for itself
    gate.Close();
    if (!writeDepth && !waitingWriters.first && NobodyReads()) {
        writer = self;
        writeDepth = 1;
        return eWaitDone;
    }
    if (timeout == 0) {
        OpenGate();
        return eWaitTimeout;
    }
    SwmrWaiter waiter(self);
    waitingWriters.Push(&waiter);
    if (Await(waiter, timeout))
        return eWaitDone;
    waitingWriters.Remove(&waiter);
    if (!writeDepth && !waitingWriters.first)
        AdmitReaders(); // they queued behind this writer only
    OpenGate();
    return eWaitTimeout;
}

void TSWMRSynch::SState::OpenGate()
{
    if (!writeDepth && !waitingWriters.first && !waitingReaders.first)
        gate.Open();
}

bool TSWMRSynch::SState::Await(SwmrWaiter& waiter, unsigned timeout)
{
    const bool forever = timeout == kWaitForever;
    const timespec at = forever ? timespec() : DeadlineAfter(timeout);
    int cancelState;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
    int result = 0;
    while (!waiter.granted && result != ETIMEDOUT) {
        result = forever ? pthread_cond_wait(&waiter.condition, &mutex)
                         : pthread_cond_timedwait(&waiter.condition, &mutex, &at);
    }
    pthread_setcancelstate(cancelState, nullptr);
    return waiter.granted;
}

void TSWMRSynch::SState::AdmitReaders()
{
    while (SwmrWaiter* const waiter = waitingReaders.Pop()) {
        readers.Add(waiter->thread);
        waiter->Grant();
    }
}

void TSWMRSynch::SState::AdmitWriter()
{
    if (writeDepth || !NobodyReads())
        return;
    if (SwmrWaiter* const waiter = waitingWriters.Pop()) {
        writer = waiter->thread;
        writeDepth = 1;
        waiter->Grant();
    }
}

} // namespace VLK
