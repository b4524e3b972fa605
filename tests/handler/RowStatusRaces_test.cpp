// Row-status tables under several threads; RowStatusRaces_slow_test.cpp goes on for
// longer. Under ThreadSanitizer this finds what a plain run may not.
#include "tests/handler/RowStatusStorm.h"

namespace VLK {
namespace Test {
namespace {

constexpr std::chrono::milliseconds kDuration(500);

TEST(RowStatusRaces, SerialisedSetsAgainstTimeoutsWalksAndRegistration)
{
    Storm(true).Run(kDuration);
}

TEST(RowStatusRaces, UnserialisedSetsOfOneRowMayFailEachOtherButNoMore)
{
    Storm(false).Run(kDuration);
}

} // namespace
} // namespace Test
} // namespace VLK
