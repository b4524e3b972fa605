// Time-outs of row-status tables against SETs, walks and registration.
#include "tests/handler/RowStatusStorm.h"

namespace VLK {
namespace Test {
namespace {

TEST(RowStatusRacesSlow, SerialisedSetsAgainstTimeoutsWalksAndRegistration)
{
    Storm(true).Run(RaceTime());
}

TEST(RowStatusRacesSlow, UnserialisedSetsOfOneRowMayFailEachOtherButNoMore)
{
    Storm(false).Run(RaceTime());
}

} // namespace
} // namespace Test
} // namespace VLK
