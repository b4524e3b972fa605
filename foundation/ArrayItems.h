// What the arrays and the sorted maps have in common. Each container gives its
// three fields: the items, how many are in use and how many there is room for.
#pragma once

#include "foundation/Bytewise.h"
#include "foundation/SortedSearch.h"

#include <vkmibh/objectid.h>

#include <utility>

namespace VLK {

inline int Order(int a, int b) { return a == b ? 0 : (a < b ? -1 : 1); }
inline int Order(const BString& a, const BString& b) { return a.compare(b); }
inline int Order(const BObjectIdentifier& a, const BObjectIdentifier& b) { return a.Compare(b); }

// Copies into a new, empty item; false when there is no memory for it.
inline bool CopyInto(int& to, int from)
{
    to = from;
    return true;
}
inline bool CopyInto(unsigned& to, unsigned from)
{
    to = from;
    return true;
}
inline bool CopyInto(BString& to, const BString& from)
{
    to = from;
    return to.length() == from.length();
}
inline bool CopyInto(BObjectIdentifier& to, const BObjectIdentifier& from) { return to.Set(from); }

template <class Item>
void ReleaseItems(Item*& items, unsigned& count, unsigned& capacity)
{
    delete[] items;
    items = nullptr;
    count = 0;
    capacity = 0;
}

// Replaces the items by copies of others; without memory nothing changes.
template <class Item>
void AssignItems(Item*& items, unsigned& count, unsigned& capacity, const Item* others,
                 unsigned otherCount)
{
    Item* copies = otherCount != 0 ? NewItems<Item>(otherCount) : nullptr;
    if (!copies && otherCount != 0)
        return;
    for (unsigned i = 0; i < otherCount; ++i) {
        if (!CopyInto(copies[i], others[i])) {
            delete[] copies;
            return;
        }
    }
    delete[] items;
    items = copies;
    count = capacity = otherCount;
}

// Appends; a full array first grows to `wanted`. The item is the caller's to
// copy before, since it may be one of the array's own.
template <class Item>
bool AppendItem(Item*& items, unsigned& count, unsigned& capacity, Item&& item,
                std::uint64_t wanted)
{
    if (count == capacity && !Enlarge(items, count, capacity, wanted))
        return false;
    items[count++] = std::forward<Item>(item);
    return true;
}

template <class Item>
int FindItem(const Item* items, unsigned count, const Item& item)
{
    for (unsigned i = 0; i < count; ++i) {
        if (Order(items[i], item) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

// Destroys the item at `index` and closes the gap; a bad index does nothing.
template <class Item>
void EraseItem(Item* items, unsigned& count, int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= count)
        return;
    items[index].~Item();
    CloseGap(items, count, static_cast<unsigned>(index));
    --count;
}

// Orders the key of item i against the one sought.
template <class Item, class Key>
auto KeyOrder(const Item* items, const Key& key)
{
    return [items, &key](unsigned i) { return Order(items[i].key, key); };
}

// Inserts a key that is not there yet in its place.
template <class Item, class Key>
bool InsertSorted(Item*& items, unsigned& count, unsigned& capacity, const Key& key, void* data,
                  unsigned growBy)
{
    if (FindSorted(count, KeyOrder(items, key)) >= 0)
        return false;
    Key copy{};
    if (!CopyInto(copy, key))
        return false;
    if (count == capacity && !Enlarge(items, count, capacity, std::uint64_t(capacity) + growBy))
        return false;
    const unsigned at = LowerBound(count, KeyOrder(items, copy));
    MoveItems(items + at + 1, items + at, count - at);
    ZeroItems(items + at, 1);
    items[at].key = std::move(copy);
    items[at].data = data;
    ++count;
    return true;
}

// Removes a key and gives its data, null when it is not there.
template <class Item, class Key>
void* RemoveSorted(Item* items, unsigned& count, const Key& key)
{
    const int index = FindSorted(count, KeyOrder(items, key));
    if (index < 0)
        return nullptr;
    void* data = items[index].data;
    EraseItem(items, count, index);
    return data;
}

} // namespace VLK
