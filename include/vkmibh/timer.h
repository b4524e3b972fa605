// Time and the timer service.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

// A start instant, and how long ago it was.
//
//   BTime started;
//   unsigned ticks = started.SysUptime(); // TimeTicks, RFC 2578 section 7.1.8
//
// Ownership: a plain record.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    none.
// Contract:  the arithmetic is that of 32-bit seconds and 16-bit milliseconds
//            of the wall clock; setting the clock moves the answers.
class VKMIBH_API BTime {
public:
    // An instant: seconds since the epoch and milliseconds, the rest unused.
    struct SInstant {
        int seconds;
        unsigned short milliseconds;
        short timeZone;
        short daylight;
    };

    // Starts now.
    BTime();

    // Starts again, now.
    void RecordStartTime();

    // Seconds since the epoch.
    int StartTime() const;
    // Whole seconds since the start: the difference of the two seconds fields.
    int Uptime() const;
    // Hundredths of a second since the start, wrapping after 497 days.
    unsigned SysUptime() const;

private:
    friend struct SLayoutCheck;
    SInstant m_start;
};

class ITimeSubscriber;

// One subscription, handed to the subscriber at each callback. The subscriber
// may change interval and count there; a count set to 0 ends it.
struct BTimeInterval {
    int interval;   // milliseconds, not negative
    unsigned count; // callbacks still to make, ~0 for ever
    int id;         // never 0
    ITimeSubscriber* subscriber;
    int remaining; // milliseconds to the next callback
};

// Who is called back by the timer.
//
// Ownership: stays with its maker, who unsubscribes it before it goes.
// Threads:   called on the timer's thread with the timer's lock held: keep it
//            short. It may subscribe and unsubscribe anything, itself included,
//            but not register handlers nor issue a request: those take locks
//            that come before the timer's.
// Errors:    an exception is dropped; the tick goes on.
// Contract:  the virtuals keep this order.
class VKMIBH_API ITimeSubscriber {
public:
    // In slot order.
    virtual ~ITimeSubscriber();
    virtual void OnTimeout(BTimeInterval& interval) = 0;
};

// Calls subscribers back after an interval, once, some times or for ever, from
// a thread of its own that ticks once a second.
//
//   int id = BTimer::GetInstance()->Subscribe(this, 30000, 1); // OnTimeout in 30 s
//   BTimer::GetInstance()->Unsubscribe(id);                    // or not
//
// A tick counts as exactly 1000 ms, however late it comes; an interval that is
// no multiple fires at the tick after it, and counts anew from there. What is
// subscribed during a tick is first looked at in the next one.
//
// Ownership: owns its records and its thread, not the subscribers. The instance
//            lives until DestroyInstance() or the end of the process.
// Threads:   for any number of threads. Unsubscribe() from another thread waits
//            for a callback that runs, and none comes after it. Whoever takes
//            a lock of its own in OnTimeout() must not hold it when it calls
//            the timer, unless it took Mutex() first. Not to be destroyed from
//            a callback, nor by a thread that holds Mutex() or a lock that a
//            callback takes: it waits for the callback that runs. A forked
//            child has no ticking thread: fork before the first use.
// Errors:    Subscribe: the id, or 0 = refused. Unsubscribe: true = there was one.
// Contract:  fields and virtuals keep this order; ids rise from 1 through the
//            whole process and are never 0. Subscribe() and Unsubscribe() of an id
//            take the same time however many there are, that of a subscriber and
//            a tick look at all of them.
class VKMIBH_API BTimer : public BSingleton {
public:
    struct Subscription : BTimeInterval {
        static std::atomic<int> s_idCounter; // the next id
    };
    class TimerThread;

    BTimer();

    // The one instance, made at first use; null without memory.
    static BTimer* GetInstance();
    static void DestroyInstance();
    static std::atomic<BTimer*> s_pInstance;

    // Interval in milliseconds; 0 and below fire at every tick. Count -1 is for
    // ever. Refused without memory, without a subscriber, or when the thread
    // could not be started.
    int Subscribe(ITimeSubscriber* subscriber, int interval, int count);
    bool Unsubscribe(int id);
    // Ends all subscriptions of that subscriber.
    void Unsubscribe(ITimeSubscriber* subscriber);
    // The tick, with the milliseconds it stands for.
    void Timeout(unsigned elapsed);
    // The lock a callback runs under; recursive.
    TMutex& Mutex() VKMIBH_TSA(lock_returned(m_lock)) { return m_lock; }

    // In slot order. Destroy() deletes the timer.
    ~BTimer() override;
    void Destroy() override;

private:
    friend struct SLayoutCheck;
    struct STick;
    struct SRecord;
    class Index;
    VKMIBH_LOCAL static SRecord* RecordOf(BLLItem* item);
    VKMIBH_LOCAL bool EnsureTicking() VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool Enter(SRecord* record) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool IsCalled(const SRecord* record) const VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL void Advance(SRecord* record, unsigned elapsed, STick& tick)
        VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL void MarkDead(SRecord* record) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL void End(SRecord* record) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL void Sweep() VKMIBH_TSA(requires_capability(m_lock));

    TMutex m_lock;
    BLinkList m_subscriptions VKMIBH_TSA(guarded_by(m_lock));
    TimerThread* m_thread; // null until it could be started
    bool m_hasDead VKMIBH_TSA(guarded_by(m_lock));
    STick* m_tick VKMIBH_TSA(guarded_by(m_lock));  // the innermost tick under way
    Index* m_index VKMIBH_TSA(guarded_by(m_lock)); // of the list by id, null until there is one
};

} // namespace VLK
