// Row-status tables under several threads, five seconds for each test, or as many
// as VKMIBH_RACE_SECONDS says.
#include "tests/handler/RowStatusStorm.h"

namespace VLK {
namespace Test {
namespace {

std::chrono::seconds Duration()
{
    const char* const text = std::getenv("VKMIBH_RACE_SECONDS");
    const int seconds = text ? std::atoi(text) : 5;
    return std::chrono::seconds(seconds > 0 ? seconds : 5);
}

TEST(RowStatusRacesSlow, SerialisedSetsAgainstTimeoutsWalksAndRegistration)
{
    Storm(true).Run(Duration());
}

TEST(RowStatusRacesSlow, UnserialisedSetsOfOneRowMayFailEachOtherButNoMore)
{
    Storm(false).Run(Duration());
}

} // namespace
} // namespace Test
} // namespace VLK
