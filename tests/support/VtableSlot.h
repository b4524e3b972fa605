// Where a virtual function stands in its class's table: 0, 1, ... The two
// entries of a destructor count.
//
//   EXPECT_EQ(VtableSlot(&TThread::Start), 2);
#pragma once

#include <cstddef>
#include <cstring>

namespace VLK {

// Reads a pointer to a member function as the platform's C++ ABI lays it out:
// one more than the byte offset in the table. -1 when it is not virtual.
template <class Member>
int VtableSlot(Member member)
{
    std::ptrdiff_t word;
    static_assert(sizeof member == 2 * sizeof word, "not a pointer to a member function");
    std::memcpy(&word, &member, sizeof word);
    return word & 1 ? int((word - 1) / std::ptrdiff_t(sizeof(void*))) : -1;
}

} // namespace VLK
