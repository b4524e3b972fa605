// The operators that FailingAlloc fails, in all forms.
#include "tests/support/FailingAlloc.h"

#include <cstdlib>
#include <new>

namespace VLK {

thread_local FailingAlloc::SState FailingAlloc::s_state{-1, eAllLater, false};
thread_local long FailingAlloc::s_live = 0;

FailingAlloc::FailingAlloc(int allowed, EThen then) : m_before(s_state)
{
    s_state = SState{allowed, then, false};
}

FailingAlloc::~FailingAlloc() { s_state = m_before; }

bool FailingAlloc::Failed() const { return s_state.failed; }

long FailingAlloc::Live() { return s_live; }

bool FailingAlloc::Refuses()
{
    if (s_state.allowed < 0)
        return false;
    if (s_state.allowed > 0) {
        --s_state.allowed;
        return false;
    }
    s_state.failed = true;
    if (s_state.then == eNextOnly)
        s_state.allowed = -1;
    return true;
}

void FailingAlloc::Took() { ++s_live; }

void FailingAlloc::GaveBack() { --s_live; }

} // namespace VLK

namespace {

void* Allocate(std::size_t size, std::size_t alignment) noexcept
{
    if (VLK::FailingAlloc::Refuses())
        return nullptr;
    if (size == 0)
        size = 1;
    void* memory =
        alignment == 0
            ? std::malloc(size)
            : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (memory)
        VLK::FailingAlloc::Took();
    return memory;
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment)
{
    void* memory = Allocate(size, alignment);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void Release(void* memory) noexcept
{
    if (memory)
        VLK::FailingAlloc::GaveBack();
    std::free(memory);
}

} // namespace

// Not inlined: the compiler would see free() meet operator new and warn.
#define VKMIBH_NOINLINE __attribute__((noinline))

VKMIBH_NOINLINE void* operator new(std::size_t size) { return AllocateOrThrow(size, 0); }
VKMIBH_NOINLINE void* operator new[](std::size_t size) { return AllocateOrThrow(size, 0); }
VKMIBH_NOINLINE void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size, 0);
}
VKMIBH_NOINLINE void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size, 0);
}
VKMIBH_NOINLINE void* operator new(std::size_t size, std::align_val_t alignment)
{
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void* operator new(std::size_t size, std::align_val_t alignment,
                                   const std::nothrow_t&) noexcept
{
    return Allocate(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void* operator new[](std::size_t size, std::align_val_t alignment,
                                     const std::nothrow_t&) noexcept
{
    return Allocate(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void operator delete(void* p) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, std::size_t) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p, std::size_t) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, std::align_val_t) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p, std::align_val_t) noexcept { Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, std::size_t, std::align_val_t) noexcept
{
    Release(p);
}
VKMIBH_NOINLINE void operator delete[](void* p, std::size_t, std::align_val_t) noexcept
{
    Release(p);
}
VKMIBH_NOINLINE void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    Release(p);
}
VKMIBH_NOINLINE void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    Release(p);
}
