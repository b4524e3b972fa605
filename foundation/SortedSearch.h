// Look-up in an array sorted by strictly ascending keys.
#pragma once

#include <cstdint>

namespace VLK {

// The first index whose key is not below the one sought; `count` when there is
// none. `compare(i)` orders the key at i against the one sought: below zero,
// zero or above.
template <class Compare>
inline unsigned LowerBound(unsigned count, Compare compare)
{
    unsigned first = 0;
    while (count > 0) {
        const unsigned half = count / 2;
        if (compare(first + half) < 0) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

// The index of the key sought, or -1.
template <class Compare>
inline int FindSorted(unsigned count, Compare compare)
{
    if (count == 0 || compare(0) > 0 || compare(count - 1) < 0)
        return -1;
    const unsigned index = LowerBound(count, compare);
    return compare(index) == 0 ? static_cast<int>(index) : -1;
}

// The index of the first key above the one sought, or -1.
template <class Compare>
inline int NextSorted(unsigned count, Compare compare)
{
    if (count == 0)
        return -1;
    if (compare(0) > 0)
        return 0;
    if (compare(count - 1) <= 0)
        return -1;
    return static_cast<int>(
        LowerBound(count, [&](unsigned i) { return compare(i) <= 0 ? -1 : 1; }));
}

} // namespace VLK
