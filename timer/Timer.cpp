#include "foundation/HostCall.h"
#include "foundation/Immortal.h"
#include "timer/TimerIndex.h"
#include "timer/TimerThread.h"

#include <limits>
#include <new>

namespace VLK {

namespace {

// How long a thread is asked to stop before it is terminated, in milliseconds.
constexpr unsigned kStopTimeout = 100;

// A record without a subscriber is dead: unknown to everybody, and freed when
// no tick walks the list any more.
bool IsDead(const BTimeInterval& record) { return record.subscriber == nullptr; }

int Minus(int remaining, unsigned elapsed)
{
    const int64_t left = int64_t(remaining) - elapsed;
    const int lowest = std::numeric_limits<int>::min();
    return left < lowest ? lowest : int(left);
}

void CallBack(BTimeInterval& record)
{
    // What it throws must not keep the others from being called.
    const auto call = [&record] {
        record.subscriber->OnTimeout(record);
        return 0;
    };
    HostCall(call, 0);
}

TMutex& CreationLock()
{
    static Immortal<TMutex> s_lock(true);
    return s_lock.Get();
}

} // namespace

std::atomic<int> BTimer::Subscription::s_idCounter{1};
std::atomic<BTimer*> BTimer::s_pInstance{nullptr};

ITimeSubscriber::~ITimeSubscriber() = default;

// A tick that runs. A callback may cause another one within it.
struct BTimer::STick {
    explicit STick(BTimer& ticking) VKMIBH_TSA(requires_capability(ticking.m_lock))
        : timer(ticking), called(nullptr), outer(ticking.m_tick)
    {
        timer.m_tick = this;
    }
    ~STick() VKMIBH_TSA(no_thread_safety_analysis) { timer.m_tick = outer; }
    STick(const STick&) = delete;
    STick& operator=(const STick&) = delete;

    BTimer& timer;
    SRecord* called;
    STick* const outer;
};

BTimer::BTimer()
    : BSingleton(eShutdownFirst), m_lock(true), m_thread(nullptr), m_hasDead(false),
      m_tick(nullptr), m_index(nullptr)
{
    EnsureTicking();
}

BTimer::~BTimer()
{
    if (m_thread && !m_thread->Stop(kStopTimeout))
        m_thread->Terminate();
    delete m_thread;
    // Not before: a callback that still ran could have asked for the instance.
    BTimer* self = this;
    s_pInstance.compare_exchange_strong(self, nullptr);
    TMutexLock lock(m_lock);
    for (BLLItem* item = m_subscriptions.First(); item; item = item->next)
        delete RecordOf(item);
    m_subscriptions.Clear();
    delete m_index;
}

void BTimer::Destroy() { delete this; }

BTimer* BTimer::GetInstance()
{
    if (BTimer* const timer = s_pInstance)
        return timer;
    TMutexLock lock(CreationLock());
    if (!s_pInstance)
        s_pInstance = new (std::nothrow) BTimer;
    return s_pInstance;
}

void BTimer::DestroyInstance()
{
    TMutexLock lock(CreationLock());
    if (BTimer* const timer = s_pInstance)
        timer->Destroy();
}

int BTimer::Subscribe(ITimeSubscriber* subscriber, int interval, int count)
{
    if (!subscriber)
        return 0;
    TMutexLock lock(m_lock);
    SRecord* const record = EnsureTicking() ? new (std::nothrow) SRecord : nullptr;
    if (!record)
        return 0;
    record->interval = interval > 0 ? interval : 0;
    // CONTRACT: a count of 0 wraps at its first callback and then never ends;
    // -1 is the same, said plainly.
    record->count = unsigned(count);
    record->subscriber = subscriber;
    record->remaining = record->interval;
    record->id = Subscription::s_idCounter++;
    if (record->id == 0)
        record->id = Subscription::s_idCounter++;
    if (Enter(record))
        return record->id;
    delete record;
    return 0;
}

bool BTimer::Unsubscribe(int id)
{
    TMutexLock lock(m_lock);
    SRecord* const record = m_index ? m_index->Find(id) : nullptr;
    if (!record)
        return false;
    End(record);
    return true;
}

void BTimer::Unsubscribe(ITimeSubscriber* subscriber)
{
    if (!subscriber)
        return;
    TMutexLock lock(m_lock);
    for (BLLItem* item = m_subscriptions.First(); item;) {
        BLLItem* const next = item->next;
        if (RecordOf(item)->subscriber == subscriber)
            End(RecordOf(item));
        item = next;
    }
}

void BTimer::Timeout(unsigned elapsed)
{
    TMutexLock lock(m_lock);
    BLLItem* const last = m_subscriptions.Last();
    if (!last)
        return;
    {
        STick tick(*this);
        // No record leaves the list while a tick runs, so that last stays.
        for (BLLItem* item = m_subscriptions.First();; item = item->next) {
            Advance(RecordOf(item), elapsed, tick);
            if (item == last)
                break;
        }
    }
    Sweep();
}

bool BTimer::EnsureTicking()
{
    if (m_thread)
        return true;
    m_thread = new (std::nothrow) TimerThread(this);
    if (m_thread && !m_thread->Start(0, 0)) {
        delete m_thread;
        m_thread = nullptr;
    }
    return m_thread != nullptr;
}

BTimer::SRecord* BTimer::RecordOf(BLLItem* item) { return static_cast<SRecord*>(item->data); }

bool BTimer::Enter(SRecord* record)
{
    if (!m_index)
        m_index = new (std::nothrow) Index;
    if (!m_index || !m_index->Insert(record))
        return false;
    if (!m_subscriptions.Insert(record)) {
        m_index->Remove(record);
        return false;
    }
    record->item = m_subscriptions.Last();
    return true;
}

bool BTimer::IsCalled(const SRecord* record) const
{
    for (const STick* tick = m_tick; tick; tick = tick->outer) {
        if (tick->called == record)
            return true;
    }
    return false;
}

void BTimer::Advance(SRecord* record, unsigned elapsed, STick& tick)
{
    if (IsDead(*record) || IsCalled(record))
        return;
    record->remaining = Minus(record->remaining, elapsed);
    if (record->remaining > 0)
        return;
    if (record->count != ~0u)
        --record->count;
    tick.called = record;
    CallBack(*record);
    tick.called = nullptr;
    if (record->count == 0 || IsDead(*record))
        MarkDead(record);
    else
        record->remaining = record->interval;
}

void BTimer::MarkDead(SRecord* record)
{
    m_index->Remove(record);
    record->subscriber = nullptr;
    m_hasDead = true;
}

void BTimer::End(SRecord* record)
{
    if (m_tick) {
        MarkDead(record);
        return;
    }
    m_index->Remove(record);
    m_subscriptions.Remove(record->item);
    delete record;
}

void BTimer::Sweep()
{
    if (m_tick || !m_hasDead)
        return;
    m_hasDead = false;
    for (BLLItem* item = m_subscriptions.First(); item;) {
        BLLItem* const next = item->next;
        if (IsDead(*RecordOf(item)))
            End(RecordOf(item));
        item = next;
    }
}

} // namespace VLK
