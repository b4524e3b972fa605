// The operators that FailingAlloc fails, in all forms. To be included by exactly
// one source file of a test program.
#pragma once

#include "tests/support/FailingAlloc.h"

#include <cstdlib>
#include <new>

namespace VLKTest {

inline void* Allocate(std::size_t size, std::size_t alignment) noexcept
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

inline void* AllocateOrThrow(std::size_t size, std::size_t alignment)
{
    void* memory = Allocate(size, alignment);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

inline void Release(void* memory) noexcept
{
    if (memory)
        VLK::FailingAlloc::GaveBack();
    std::free(memory);
}

} // namespace VLKTest

// Not inlined: the compiler would see free() meet operator new and warn.
#define VKMIBH_NOINLINE __attribute__((noinline))

VKMIBH_NOINLINE void* operator new(std::size_t size) { return VLKTest::AllocateOrThrow(size, 0); }
VKMIBH_NOINLINE void* operator new[](std::size_t size) { return VLKTest::AllocateOrThrow(size, 0); }
VKMIBH_NOINLINE void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, 0);
}
VKMIBH_NOINLINE void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, 0);
}
VKMIBH_NOINLINE void* operator new(std::size_t size, std::align_val_t alignment)
{
    return VLKTest::AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return VLKTest::AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void* operator new(std::size_t size, std::align_val_t alignment,
                                   const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void* operator new[](std::size_t size, std::align_val_t alignment,
                                     const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, static_cast<std::size_t>(alignment));
}
VKMIBH_NOINLINE void operator delete(void* p) noexcept { VLKTest::Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p) noexcept { VLKTest::Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, std::size_t) noexcept { VLKTest::Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p, std::size_t) noexcept { VLKTest::Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, const std::nothrow_t&) noexcept
{
    VLKTest::Release(p);
}
VKMIBH_NOINLINE void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    VLKTest::Release(p);
}
VKMIBH_NOINLINE void operator delete(void* p, std::align_val_t) noexcept { VLKTest::Release(p); }
VKMIBH_NOINLINE void operator delete[](void* p, std::align_val_t) noexcept { VLKTest::Release(p); }
VKMIBH_NOINLINE void operator delete(void* p, std::size_t, std::align_val_t) noexcept
{
    VLKTest::Release(p);
}
VKMIBH_NOINLINE void operator delete[](void* p, std::size_t, std::align_val_t) noexcept
{
    VLKTest::Release(p);
}
VKMIBH_NOINLINE void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    VLKTest::Release(p);
}
VKMIBH_NOINLINE void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    VLKTest::Release(p);
}

#undef VKMIBH_NOINLINE
