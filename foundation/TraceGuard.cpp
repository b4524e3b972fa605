#include "foundation/Immortal.h"

#include <vkmibh/sync.h>

namespace VLK {

namespace {

TMutex& OutputLock()
{
    static Immortal<TMutex> s_lock(true);
    return s_lock.Get();
}

} // namespace

TTraceGuard::TTraceGuard() { OutputLock().Wait(kWaitForever); }

TTraceGuard::~TTraceGuard() { OutputLock().Done(); }

} // namespace VLK
