// What both agents serve and the generator asks for, so that all three agree.
//
//   1.3.6.1.4.1.32473.9.1.K.1.1.I  a table of 10^K rows; its rows have the index
//                                  7, 14, 21 ..., which is their value too
//   1.3.6.1.4.1.32473.9.2.N.0      N = 1 ... 10000, each registered by itself; value N
//   1.3.6.1.4.1.32473.9.3.0        a number in memory that may be set
#pragma once

#include <cstdlib>
#include <cstring>

namespace wire {

constexpr unsigned kBase[] = {1, 3, 6, 1, 4, 1, 32473, 9};
constexpr unsigned kSmallestTable = 2; // K
constexpr unsigned kLargestTable = 6;
constexpr unsigned kIndexStep = 7;
constexpr unsigned kRegistrations = 10000;

constexpr unsigned RowsOf(unsigned table)
{
    unsigned rows = 1;
    for (; table; --table)
        rows *= 10;
    return rows;
}

// Which of it a server has, so that one part does not slow another down.
inline bool Serves(const char* part)
{
    const char* wanted = std::getenv("VKWIRE_CONTENT");
    return wanted && std::strcmp(wanted, part) == 0;
}

} // namespace wire
