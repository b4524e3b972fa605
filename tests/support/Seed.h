// The seed of a test that generates its input: always the same, so that what fails
// once fails again, unless VKMIBH_SEED sets another one. It is printed.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace VLK {
namespace Test {

inline unsigned Seed()
{
    const char* const given = std::getenv("VKMIBH_SEED");
    const unsigned seed = given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : 20101u;
    std::printf("VKMIBH_SEED=%u\n", seed);
    return seed;
}

} // namespace Test
} // namespace VLK
