#include "foundation/Immortal.h"

#include <vkmibh/base.h>

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

void VKDbgModuleTraceClass(int, const char*, ...) {}

} // namespace VLK
