#include "tests/support/Threads.h"

#include <gtest/gtest.h>
#include <string>
#include <vkmibh/base.h>

namespace VLK {
namespace {

TEST(Trace, HookWritesNothing)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    VKDbgModuleTraceClass(eTraceMibHandler, "request %d of %s\n", 1, "somebody");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Trace, ClassesAreNumberedByComponent)
{
    EXPECT_EQ(eTraceCmdParser, 0x10000);
    EXPECT_EQ(eTraceFilterTable, 0x10004);
    EXPECT_EQ(eTraceSystemGroup, 0x10009);
    EXPECT_EQ(eTraceMibHandler, 0x1000a);
    EXPECT_EQ(eTraceMibTree, 0x10014);
    EXPECT_EQ(eTraceObjectSyntax, 0x10016);
}

TEST(TraceGuard, KeepsOtherThreadsOut)
{
    std::atomic<bool> trying{false};
    std::atomic<bool> inside{false};
    std::thread other;
    {
        TTraceGuard guard;
        other = std::thread([&] {
            trying = true;
            TTraceGuard mine;
            inside = true;
        });
        EXPECT_TRUE(Eventually([&] { return trying.load(); }));
        GiveOthersTime();
        EXPECT_FALSE(inside);
    }
    other.join();
    EXPECT_TRUE(inside);
}

TEST(TraceGuard, NestsInOneThread)
{
    TTraceGuard outer;
    TTraceGuard inner;
    SUCCEED();
}

} // namespace
} // namespace VLK
