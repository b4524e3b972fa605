#include "foundation/Immortal.h"

#include <cstdlib>
#include <unistd.h>
#include <vkmibh/base.h>

namespace VLK {

namespace {

// Two lists, each in the order of registration.
struct Registry {
    TMutex lock{true};
    BLinkList first VKMIBH_TSA(guarded_by(lock));
    BLinkList inTurn VKMIBH_TSA(guarded_by(lock));
    bool hooked VKMIBH_TSA(guarded_by(lock)) = false;
    std::atomic<pid_t> owner{0};
};

Registry& TheRegistry()
{
    static Immortal<Registry> s_registry;
    return s_registry.Get();
}

BLLItem* FindItem(const BLinkList& list, const BSingleton* singleton)
{
    for (BLLItem* item = list.First(); item; item = item->next) {
        if (item->data == singleton)
            return item;
    }
    return nullptr;
}

// The newest of a list, taken out of it; null when there is none.
BSingleton* TakeLast(BLinkList& list)
{
    BLLItem* const item = list.Last();
    if (!item)
        return nullptr;
    BSingleton* const singleton = static_cast<BSingleton*>(item->data);
    list.Remove(item);
    return singleton;
}

BSingleton* TakeNext()
{
    Registry& registry = TheRegistry();
    TMutexLock lock(registry.lock);
    BSingleton* const singleton = TakeLast(registry.first);
    return singleton ? singleton : TakeLast(registry.inTurn);
}

// A forked child has the objects but not the threads behind them; it may not
// even take the lock, which another thread could have held.
void DestroyAtExit()
{
    if (TheRegistry().owner == getpid())
        BSingletons::DestroyAll();
}

} // namespace

BSingleton::BSingleton(EShutdownOrder order) { BSingletons::Register(this, order); }

BSingleton::~BSingleton() { BSingletons::Unregister(this); }

void BSingletons::Register(BSingleton* singleton, EShutdownOrder order)
{
    if (!singleton)
        return;
    Registry& registry = TheRegistry();
    TMutexLock lock(registry.lock);
    if (FindItem(registry.first, singleton) || FindItem(registry.inTurn, singleton))
        return;
    if (!registry.hooked) {
        registry.owner = getpid();
        registry.hooked = std::atexit(DestroyAtExit) == 0;
    }
    (order == eShutdownFirst ? registry.first : registry.inTurn).Insert(singleton);
}

void BSingletons::Unregister(BSingleton* singleton)
{
    Registry& registry = TheRegistry();
    TMutexLock lock(registry.lock);
    registry.first.Remove(FindItem(registry.first, singleton));
    registry.inTurn.Remove(FindItem(registry.inTurn, singleton));
}

void BSingletons::DestroyAll()
{
    while (BSingleton* const singleton = TakeNext())
        singleton->Destroy();
}

} // namespace VLK
