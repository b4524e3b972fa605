// Rows that were left inactive, and when they are told.
#include "impl/RowStatusLocks.h"
#include "impl/RowStatusMany.h"

#include "foundation/HostCall.h"

#include <cstdint>

namespace VLK {

namespace {

// A map keeps pointers only; nobody follows these.
void* AsData(int handle) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(handle)); }
int AsHandle(const void* data) { return static_cast<int>(reinterpret_cast<std::intptr_t>(data)); }

// The same subscription once more, at the next tick: needs no memory.
void OnceMore(BTimeInterval& interval)
{
    interval.interval = 0;
    interval.count = 1;
}

} // namespace

// The subscription of a row, 0 for none.
int BMibTableImplEx::TimeoutOf(const BObjectIdentifier& instance) const
{
    if (const void* data = m_timeoutList.GetData(instance))
        return AsHandle(data);
    void** const kept = m_many ? m_many->timeouts.Find(instance) : nullptr;
    return kept ? AsHandle(*kept) : 0;
}

// Takes a row off the list; its subscription, 0 for none.
int BMibTableImplEx::DropTimeout(const BObjectIdentifier& instance)
{
    if (const void* data = m_timeoutList.Remove(instance))
        return AsHandle(data);
    const int handle = m_many ? AsHandle(m_many->timeouts.Remove(instance)) : 0;
    if (handle != 0)
        m_many->instances.Remove(handle);
    return handle;
}

// Puts a row on the list that is not there.
bool BMibTableImplEx::InsertTimeout(const BObjectIdentifier& instance, int handle)
{
    if (m_timeoutList.Count() < kRowsInMaps)
        return m_timeoutList.Insert(instance, AsData(handle));
    SManyRows* const many = Many();
    const BObjectIdentifier* const kept =
        many ? many->timeouts.Insert(instance, AsData(handle)) : nullptr;
    if (!kept)
        return false;
    if (many->instances.Insert(handle, const_cast<BObjectIdentifier*>(kept)))
        return true;
    many->timeouts.Remove(instance);
    return false;
}

// The row of a subscription, or null.
const BObjectIdentifier* BMibTableImplEx::FindTimeout(int handle) const
{
    for (int i = 0; i < static_cast<int>(m_timeoutList.Count()); ++i) {
        if (AsHandle(m_timeoutList.DataAt(i)) == handle)
            return &m_timeoutList.KeyAt(i);
    }
    void** const kept = m_many ? m_many->instances.Find(handle) : nullptr;
    return kept ? static_cast<const BObjectIdentifier*>(*kept) : nullptr;
}

// Gives a row of the list another subscription.
bool BMibTableImplEx::ReplaceTimeout(const BObjectIdentifier& instance, int handle, int next)
{
    const int at = m_timeoutList.Find(instance);
    if (at >= 0) {
        m_timeoutList.SetDataAt(at, AsData(next));
        return true;
    }
    if (!m_many->instances.Insert(next, *m_many->instances.Find(handle)))
        return false;
    m_many->instances.Remove(handle);
    *m_many->timeouts.Find(instance) = AsData(next);
    return true;
}

void BMibTableImplEx::AddToTimeoutList(const BObjectIdentifier& instance)
{
    const Locks locks(*this);
    BTimer* const timer = locks.Timer();
    EndTimeout(timer, instance);
    const int handle = timer ? timer->Subscribe(this, m_activationTimeout, 1) : 0;
    if (handle != 0 && !InsertTimeout(instance, handle))
        timer->Unsubscribe(handle);
}

void BMibTableImplEx::RemoveFromTimeoutList(const BObjectIdentifier& instance)
{
    const Locks locks(*this);
    EndTimeout(locks.Timer(), instance);
}

void BMibTableImplEx::UpdateTimeoutList(const BObjectIdentifier& instance)
{
    const Locks locks(*this);
    RemoveFromTimeoutList(instance);
    AddToTimeoutList(instance);
}

void BMibTableImplEx::EndTimeout(BTimer* timer, const BObjectIdentifier& instance)
{
    const int handle = DropTimeout(instance);
    if (handle != 0 && timer)
        timer->Unsubscribe(handle);
}

void BMibTableImplEx::OnTimeout(BTimeInterval& interval)
{
    const Locks locks(*this);
    const int handle = interval.id;
    const BObjectIdentifier* const found = FindTimeout(handle);
    if (!found)
        return;
    BObjectIdentifier instance;
    if (!instance.Set(*found)) {
        OnceMore(interval);
        return;
    }
    if (FindState(instance)) {
        // A SET is between its phases and may yet activate or destroy the row.
        BTimer* const timer = locks.Timer();
        const int next = timer ? timer->Subscribe(this, 1, 1) : 0;
        if (next == 0 || !ReplaceTimeout(instance, handle, next)) {
            if (next != 0)
                timer->Unsubscribe(next);
            OnceMore(interval);
        }
        return;
    }
    const auto tell = [&] {
        RowActivationTimeout(instance);
        return 0;
    };
    HostCall(tell, 0);
    // The hook may have timed the row anew.
    if (TimeoutOf(instance) == handle)
        DropTimeout(instance);
}

void BMibTableImplEx::CancelTimeouts()
{
    // Not GetInstance(): a table may outlive the timer.
    BTimer* const timer = BTimer::s_pInstance;
    if (timer)
        timer->Unsubscribe(this);
    TMutexLock lock(Mutex());
    m_timeoutList.Clear();
    if (m_many) {
        m_many->timeouts.Clear();
        m_many->instances.Clear();
    }
}

} // namespace VLK
