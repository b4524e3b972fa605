// Fails allocations one after the other: an operation is run again and again on
// a fresh object, the first time with its first allocation refused, then with
// its second, and so on until it comes through; once with only that allocation
// refused, once with all later ones refused too. Nothing may leak in any run.
//
//   VLKTest::SweepAllocations(
//       [] { return BOidArray(); },
//       [](BOidArray& array) { return array.PushBack(oid); },
//       [](BOidArray& array, bool done) { EXPECT_EQ(array.Count(), done ? 1u : 0u); });
//
// The file replaces operator new and delete in all forms, so exactly one source
// file of a test program includes it.
#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace VLKTest {

// What this thread's allocations are told.
struct SAllocations {
    unsigned failAt = 0; // 1 is the next one, 0 is none
    bool failLater = false;
    bool failed = false;
    long live = 0;

    bool Refuses()
    {
        if (failAt == 0)
            return false;
        if (failAt == 1) {
            failed = true;
            failAt = failLater ? 1 : 0;
            return true;
        }
        --failAt;
        return false;
    }
};

inline thread_local SAllocations t_allocations;

inline void* Allocate(std::size_t size, std::size_t alignment) noexcept
{
    if (t_allocations.Refuses())
        return nullptr;
    if (size == 0)
        size = 1;
    void* memory =
        alignment == 0
            ? std::malloc(size)
            : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (memory)
        ++t_allocations.live;
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
        --t_allocations.live;
    std::free(memory);
}

// Runs one operation per object; see the top of the file. `check` is given what
// the operation returned. Returns how many allocations the operation makes.
template <class Make, class Operate, class Check>
unsigned SweepAllocations(Make make, Operate operate, Check check)
{
    unsigned allocations = 0;
    // The first trace makes a list that stays.
    {
        SCOPED_TRACE("");
    }
    for (const bool later : {false, true}) {
        for (unsigned n = 1;; ++n) {
            const long before = t_allocations.live;
            bool failed;
            {
                auto object = make();
                t_allocations.failAt = n;
                t_allocations.failLater = later;
                t_allocations.failed = false;
                const auto result = operate(object);
                t_allocations.failAt = 0;
                failed = t_allocations.failed;
                SCOPED_TRACE(testing::Message()
                             << "allocation " << n << (later ? " and later" : ""));
                check(object, result);
            }
            EXPECT_EQ(t_allocations.live, before) << "leaked with allocation " << n << " refused";
            if (!failed) {
                allocations = n - 1;
                break;
            }
        }
    }
    return allocations;
}

} // namespace VLKTest

void* operator new(std::size_t size) { return VLKTest::AllocateOrThrow(size, 0); }
void* operator new[](std::size_t size) { return VLKTest::AllocateOrThrow(size, 0); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, 0);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return VLKTest::AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return VLKTest::AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return VLKTest::Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* p) noexcept { VLKTest::Release(p); }
void operator delete[](void* p) noexcept { VLKTest::Release(p); }
void operator delete(void* p, std::size_t) noexcept { VLKTest::Release(p); }
void operator delete[](void* p, std::size_t) noexcept { VLKTest::Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { VLKTest::Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { VLKTest::Release(p); }
void operator delete(void* p, std::align_val_t) noexcept { VLKTest::Release(p); }
void operator delete[](void* p, std::align_val_t) noexcept { VLKTest::Release(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { VLKTest::Release(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { VLKTest::Release(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    VLKTest::Release(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    VLKTest::Release(p);
}
