#include <vkmibh/implbase.h>

namespace VLK {

BMibImplGroup::~BMibImplGroup() = default;

const SConstraintMapEntry* BMibImplGroup::GetTCConstraintMap() const { return nullptr; }

void BMibImplGroup::InitDefVals() {}

int BMibImplGroup::Init()
{
    InitDefVals();
    const int count = GetNumImpls();
    for (int i = 0; i < count; ++i) {
        BMibImpl* impl = GetImplAt(i);
        if (!impl)
            continue;
        TMutexLock lock(impl->Mutex());
        impl->SetExtrenalTCConstraints(GetTCConstraintMap());
        impl->Initialize();
        // An override need not call the base.
        impl->SetInitialized(true);
    }
    return count;
}

void BMibImplGroup::Cleanup()
{
    const int count = GetNumImpls();
    for (int i = 0; i < count; ++i) {
        BMibImpl* impl = GetImplAt(i);
        if (!impl)
            continue;
        TMutexLock lock(impl->Mutex());
        impl->Cleanup();
        impl->SetInitialized(false);
    }
}

} // namespace VLK
