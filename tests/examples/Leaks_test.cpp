// A leak that comes and goes is told to the receiver, with its state.
#include "RunningExample.h"

#include "tests/host/TrapDaemon.h"

#include <gtest/gtest.h>

namespace {

bool Has(const std::string& notification, const std::string& state)
{
    return notification.find(".1.3.6.1.6.3.1.1.4.1.0 = OID: .1.3.6.1.4.1.32473.2.9.0.1") !=
               notification.npos &&
           notification.find(".1.3.6.1.4.1.32473.2.9.1.0 = INTEGER: " + state) != notification.npos;
}

} // namespace

TEST(Leaks, AreToldWhenTheyComeAndGo)
{
    TrapDaemon receiver("authCommunity log public\n");
    ASSERT_TRUE(receiver.IsReady());
    TempDir files;
    RunningExample example("notification", {receiver.Address().substr(std::string("udp:").size()),
                                            files.File("leak")});
    ASSERT_TRUE(example.Server().IsReady()) << example.Server().FirstLine();
    std::string told = receiver.Next();
    EXPECT_NE(told.find(".1.3.6.1.6.3.1.1.5.1"), told.npos) << "coldStart comes first: " << told;
    WriteFile(files.File("leak"), "");
    told = receiver.Next();
    EXPECT_TRUE(Has(told, "1")) << told;
    std::filesystem::remove(files.File("leak"));
    told = receiver.Next();
    EXPECT_TRUE(Has(told, "2")) << told;
}

TEST(Leaks, ThatAreThereAtTheStartAreNoChange)
{
    TrapDaemon receiver("authCommunity log public\n");
    ASSERT_TRUE(receiver.IsReady());
    TempDir files;
    WriteFile(files.File("leak"), "");
    RunningExample example("notification", {receiver.Address().substr(std::string("udp:").size()),
                                            files.File("leak")});
    ASSERT_TRUE(example.Server().IsReady()) << example.Server().FirstLine();
    receiver.Next(); // coldStart
    std::filesystem::remove(files.File("leak"));
    const std::string told = receiver.Next();
    EXPECT_TRUE(Has(told, "2")) << told;
}
