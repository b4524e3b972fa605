// Locks, events and threads.
#pragma once

#include <pthread.h>
#include <vkmibh/platform.h>

namespace VLK {

// Waits take milliseconds of the monotonic clock: 0 asks without waiting, this
// value waits for ever.
constexpr unsigned kWaitForever = ~0u;

// Results of every bounded wait. Only eWaitDone grants what was waited for.
enum EWaitResult { eWaitDone = 0, eWaitTimeout = 258, eWaitRefused = 259 };

// A mutex. With true its owner may take it again and gives it back as often.
//
// Ownership: owns the system's mutex; must be free when it is destroyed.
// Threads:   for any number of threads; Done() belongs to the owner.
// Errors:    EWaitResult. With false, a second Wait() by the owner is refused.
// Contract:  every mutex of the library is made with true.
class VKMIBH_API VKMIBH_TSA(capability("mutex")) TMutex {
public:
    explicit TMutex(bool recursive);
    ~TMutex();
    TMutex(const TMutex&) = delete;
    TMutex& operator=(const TMutex&) = delete;

    int Wait(unsigned timeout) VKMIBH_TSA(acquire_capability());
    void Done() VKMIBH_TSA(release_capability());

private:
    pthread_mutex_t m_mutex;
};

// Holds a TMutex for a scope. Ownership: refers to it. Threads: one. Errors: none.
class VKMIBH_TSA(scoped_lockable) TMutexLock {
public:
    explicit TMutexLock(TMutex& mutex) VKMIBH_TSA(acquire_capability(mutex)) : m_mutex(mutex)
    {
        m_mutex.Wait(kWaitForever);
    }
    ~TMutexLock() VKMIBH_TSA(release_capability()) { m_mutex.Done(); }
    TMutexLock(const TMutexLock&) = delete;
    TMutexLock& operator=(const TMutexLock&) = delete;

private:
    TMutex& m_mutex;
};

// A flag to wait for. Set() lets every waiter go, and every later one, until
// Reset().
//
// Ownership: owns its mutex and condition; nobody may wait when it is destroyed.
// Threads:   for any number of threads. Wait() is a cancellation point and
//            leaves no lock behind when its thread is cancelled there.
// Errors:    EWaitResult.
// Contract:  0 = signalled, 258 = the time is over.
class VKMIBH_API TEvent {
public:
    TEvent();
    ~TEvent();
    TEvent(const TEvent&) = delete;
    TEvent& operator=(const TEvent&) = delete;

    void Set();
    void Reset();
    int Wait(unsigned timeout);

private:
    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    bool m_signalled;
};

// A lock for many readers or a single writer.
//
// A thread that reads already is always let in again, and the writer may write
// and read again; each gives back as often as it took. New readers queue behind
// a waiting writer, and the readers waiting when a writer ends go before the
// next writer: neither side starves. Writers go in the order of their coming.
// A reader that asks to write is refused at once, for it would wait for itself.
// A writer that still reads when it has done writing goes on as a reader.
//
// Ownership: free when destroyed, and no reader still on his way out of DoneReading().
//            Takes memory, for readers, only when more than ever before read at once.
// Threads:   for any number of threads; whoever took it gives it back. Waiting
//            is no cancellation point.
// Errors:    EWaitResult; refused also when memory for a reader is missing.
//            Giving back what the calling thread does not hold does nothing.
// Contract:  the library always waits for ever.
class VKMIBH_API VKMIBH_TSA(capability("shared_mutex")) TSWMRSynch {
public:
    TSWMRSynch();
    ~TSWMRSynch();
    TSWMRSynch(const TSWMRSynch&) = delete;
    TSWMRSynch& operator=(const TSWMRSynch&) = delete;

    int WaitToRead(unsigned timeout) VKMIBH_TSA(try_acquire_shared_capability(0));
    void DoneReading() VKMIBH_TSA(release_shared_capability());
    int WaitToWrite(unsigned timeout) VKMIBH_TSA(try_acquire_capability(0));
    void DoneWriting() VKMIBH_TSA(release_capability());

private:
    struct SState;
    SState* m_state;
};

// Reads under a TSWMRSynch for a scope. Ownership: refers to it. Threads: one. Errors: Granted().
class VKMIBH_TSA(scoped_lockable) TReadLock {
public:
    explicit TReadLock(TSWMRSynch& lock) VKMIBH_TSA(acquire_shared_capability(lock))
        : m_lock(lock), m_granted(lock.WaitToRead(kWaitForever) == 0)
    {
    }
    ~TReadLock() VKMIBH_TSA(release_capability())
    {
        if (m_granted)
            m_lock.DoneReading();
    }
    TReadLock(const TReadLock&) = delete;
    TReadLock& operator=(const TReadLock&) = delete;
    // False only when memory for one more reader was missing.
    bool Granted() const { return m_granted; }

private:
    TSWMRSynch& m_lock;
    const bool m_granted;
};

// Writes under a TSWMRSynch for a scope. Ownership: refers to it. Threads: one. Errors: ask
// Granted() before writing: it is false when the calling thread holds the lock as a reader.
class VKMIBH_TSA(scoped_lockable) TWriteLock {
public:
    explicit TWriteLock(TSWMRSynch& lock) VKMIBH_TSA(acquire_capability(lock))
        : m_lock(lock), m_granted(lock.WaitToWrite(kWaitForever) == 0)
    {
    }
    ~TWriteLock() VKMIBH_TSA(release_capability())
    {
        if (m_granted)
            m_lock.DoneWriting();
    }
    TWriteLock(const TWriteLock&) = delete;
    TWriteLock& operator=(const TWriteLock&) = delete;
    bool Granted() const { return m_granted; }

private:
    TSWMRSynch& m_lock;
    const bool m_granted;
};

// What Start() is told beside the stack's size.
enum EThreadStart {
    eThreadBlockSignals = 0,  // the process's signals go to the host's threads
    eThreadInheritSignals = 1 // the signal mask of the thread that starts it
};

// A thread that runs Run() of a derived class until it returns.
//
//   class CPoller : public TThread {
//   public:
//       CPoller() : TThread(false) {}
//       ~CPoller() override { Stop(kWaitForever); }
//       int Run() override {
//           while (WaitForStop(1000) != eWaitDone)
//               Poll();
//           return 0;
//       }
//   };
//
// Ownership: the destructor stops and joins a thread that still runs, but a
//            derived class stops it in its own destructor, since Run() uses
//            what is destroyed there.
// Threads:   the commands may come from any thread. From the thread itself
//            Stop(), Join() and Terminate() only leave the request to stop.
// Errors:    nonzero = started or ended, 0 = not. An exception out of Run()
//            ends the thread, nothing else.
// Contract:  the virtuals keep this order. Cancellation is possible only in
//            WaitForStop(), so that a terminated thread leaves no lock behind.
class VKMIBH_API TThread {
public:
    // With true the system forgets the thread at its end, without a Join();
    // commands and destructor behave the same.
    explicit TThread(bool detached);
    TThread(const TThread&) = delete;
    TThread& operator=(const TThread&) = delete;

    // In slot order.
    virtual ~TThread();
    // Stack size in bytes, 0 for the system's; flags of EThreadStart. Refused
    // while the thread runs; a thread that has ended may be started again.
    virtual int Start(unsigned stackSize, unsigned flags);
    // Ends the thread where it waits for its stop event, and joins it: waits
    // as long as Run() is busy elsewhere.
    virtual void Terminate();
    // Signals the stop event and waits for the end. A thread that never ran has ended.
    virtual int Stop(unsigned timeout);
    virtual int Join(unsigned timeout);
    // Makes the object ready for another Start(), which calls it.
    virtual void ResetMembers();
    virtual int Run();
    // Called on the thread after Run(), not when it was terminated.
    virtual void OnThreadEnd();

protected:
    // EWaitResult of waiting for the stop event: 0 = stop, 258 = the time is over.
    int WaitForStop(unsigned timeout);

private:
    struct SState;
    static void* Main(void* state);
    SState* m_state;
};

// Keeps what is written to standard output in one piece, console and trace alike.
// Ownership: none. Threads: one may hold several at once. Errors: none.
class VKMIBH_API TTraceGuard {
public:
    TTraceGuard();
    ~TTraceGuard();
    TTraceGuard(const TTraceGuard&) = delete;
    TTraceGuard& operator=(const TTraceGuard&) = delete;
};

} // namespace VLK
