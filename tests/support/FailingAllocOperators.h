// The operators that FailingAlloc fails. To be included by exactly one source
// file of a test program.
#pragma once

#include "tests/support/FailingAlloc.h"

#include <cstdlib>
#include <new>

// Not inlined: the compiler would see free() meet operator new and warn.
#define VKMIBH_NOINLINE __attribute__((noinline))

VKMIBH_NOINLINE void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return VLK::FailingAlloc::Refuses() ? nullptr : std::malloc(size ? size : 1);
}

VKMIBH_NOINLINE void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return VLK::FailingAlloc::Refuses() ? nullptr : std::malloc(size ? size : 1);
}

VKMIBH_NOINLINE void* operator new(std::size_t size)
{
    void* const memory = VLK::FailingAlloc::Refuses() ? nullptr : std::malloc(size ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

VKMIBH_NOINLINE void* operator new[](std::size_t size) { return operator new(size); }

VKMIBH_NOINLINE void operator delete(void* memory) noexcept { std::free(memory); }

VKMIBH_NOINLINE void operator delete[](void* memory) noexcept { std::free(memory); }

VKMIBH_NOINLINE void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

VKMIBH_NOINLINE void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

VKMIBH_NOINLINE void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

VKMIBH_NOINLINE void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

#undef VKMIBH_NOINLINE
