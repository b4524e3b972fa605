#include "bench/AllocCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<unsigned long long> g_count{0};

void* Count(std::size_t size) noexcept
{
    g_count.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size ? size : 1);
}

void* Count(std::size_t size, std::align_val_t alignment) noexcept
{
    g_count.fetch_add(1, std::memory_order_relaxed);
    const std::size_t step = static_cast<std::size_t>(alignment);
    return std::aligned_alloc(step, (size + step - 1) / step * step);
}

void* OrThrow(void* memory)
{
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

} // namespace

unsigned long long AllocCount() { return g_count.load(std::memory_order_relaxed); }

void* operator new(std::size_t size) { return OrThrow(Count(size)); }
void* operator new[](std::size_t size) { return OrThrow(Count(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Count(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Count(size); }
void* operator new(std::size_t size, std::align_val_t a) { return OrThrow(Count(size, a)); }
void* operator new[](std::size_t size, std::align_val_t a) { return OrThrow(Count(size, a)); }
void* operator new(std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept
{
    return Count(size, a);
}
void* operator new[](std::size_t size, std::align_val_t a, const std::nothrow_t&) noexcept
{
    return Count(size, a);
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
