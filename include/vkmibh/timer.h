// Time and the timer service.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

class VKMIBH_API BTime {
public:
    BTime();
    void RecordStartTime();
    int StartTime() const;
    int Uptime() const;
    unsigned SysUptime() const;

    // An instant: seconds since the epoch and milliseconds, the rest unused.
    struct SInstant {
        int seconds;
        unsigned short milliseconds;
        short timeZone;
        short daylight;
    };

private:
    friend struct SLayoutCheck;
    SInstant m_start;
};

class ITimeSubscriber;

// One subscription, handed to the subscriber at each callback.
struct BTimeInterval {
    int interval;
    unsigned count;
    int id;
    ITimeSubscriber* subscriber;
    int remaining;
};

class VKMIBH_API ITimeSubscriber {
public:
    virtual ~ITimeSubscriber();
    virtual void OnTimeout(BTimeInterval& interval) = 0;
};

class VKMIBH_API BTimer : public BSingleton {
public:
    struct Subscription : BTimeInterval {
        static int s_idCounter;
    };
    class TimerThread;

    BTimer();
    ~BTimer() override;
    void Destroy() override;

    static BTimer* GetInstance();
    static void DestroyInstance();
    static std::atomic<BTimer*> s_pInstance;

    int Subscribe(ITimeSubscriber* subscriber, int interval, int count);
    bool Unsubscribe(int id);
    void Unsubscribe(ITimeSubscriber* subscriber);
    void Timeout(unsigned elapsed);
    // The lock a callback runs under; recursive. Taken before any lock of a
    // subscriber that subscribes while it holds one of its own.
    TMutex& Mutex() { return m_lock; }

private:
    friend struct SLayoutCheck;
    void Sweep();
    TMutex m_lock;
    BLinkList m_subscriptions;
    TimerThread* m_thread;
    unsigned m_tickDepth;
    bool m_hasDead;
};

} // namespace VLK
