// Moving and zeroing arrays of items byte by byte.
//
// The items of the library's arrays hold their storage by pointer and are
// valid and empty when all their bytes are zero, so an item changes its place
// by a byte copy as long as the place it left is zeroed (or overwritten)
// before a destructor can see it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace VLK {

template <class Item>
inline void MoveItems(Item* to, const Item* from, std::size_t count)
{
    if (count != 0)
        std::memmove(static_cast<void*>(to), static_cast<const void*>(from), count * sizeof(Item));
}

template <class Item>
inline void ZeroItems(Item* items, std::size_t count)
{
    if (count != 0)
        std::memset(static_cast<void*>(items), 0, count * sizeof(Item));
}

// An array of `count` default-constructed items; null when the count does not
// fit the counters of the containers or memory, or nothing can be allocated.
template <class Item>
inline Item* NewItems(std::uint64_t count)
{
    if (count > UINT32_MAX || count > PTRDIFF_MAX / sizeof(Item))
        return nullptr;
    return new (std::nothrow) Item[static_cast<std::size_t>(count)];
}

// Moves the `count` items in use into a new block of `wanted`, all others in it
// new; false, and nothing changed, without memory.
template <class Item>
inline bool Enlarge(Item*& items, unsigned count, unsigned& capacity, std::uint64_t wanted)
{
    Item* larger = NewItems<Item>(wanted);
    if (!larger)
        return false;
    MoveItems(larger, items, count);
    ZeroItems(items, capacity);
    delete[] items;
    items = larger;
    capacity = static_cast<unsigned>(wanted);
    return true;
}

// Closes the gap that the (already destroyed) item at `index` leaves.
template <class Item>
inline void CloseGap(Item* items, unsigned count, unsigned index)
{
    MoveItems(items + index, items + index + 1, count - index - 1);
    ZeroItems(items + count - 1, 1);
}

} // namespace VLK
