// Makes allocations fail on demand. Included by one file of a test program.
#pragma once

#include <cstdlib>
#include <new>

namespace VLK {

// The next allocations that succeed before all fail; below 0: none fails.
inline long g_allocationsLeft = -1;

inline void* AllocateOrFail(std::size_t size)
{
    if (g_allocationsLeft == 0)
        return nullptr;
    if (g_allocationsLeft > 0)
        --g_allocationsLeft;
    return std::malloc(size ? size : 1);
}

} // namespace VLK

void* operator new(std::size_t size)
{
    if (void* memory = VLK::AllocateOrFail(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return VLK::AllocateOrFail(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return VLK::AllocateOrFail(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
