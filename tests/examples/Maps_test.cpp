// The maps of the examples are as the testing kit wants those of any module.
#include "Modules.h"

#include <vkmibh/testing/maps.h>

#include <gtest/gtest.h>

namespace VLK::Test {

TEST(Modules, NothingIsWrongWithTheirMaps)
{
    Modules modules;
    for (BMibImplGroup* group : modules.Groups())
        EXPECT_EQ(CheckMaps(*group), "");
}

} // namespace VLK::Test
