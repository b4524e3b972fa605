// A network namespace of a test's own, in which it may make interfaces.
//
//   TEST(Kernel, Tells)
//   {
//       InOwnNetwork([] { Ip("link add a type veth peer name b"); ... });
//   }
//
// The test runs once more in the namespace, in a process of its own. Where it may
// not, or the kernel has not what it needs, it is skipped and says why.
#pragma once

#include "tests/support/Process.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>

namespace VLK {
namespace Test {

inline Arguments WordsOf(const std::string& line)
{
    std::istringstream words(line);
    Arguments all;
    for (std::string word; words >> word;)
        all.push_back(word);
    return all;
}

// The tool of that name; what it says when it fails, empty when it does not.
inline std::string Ip(const std::string& arguments)
{
    const Outcome outcome = RunToEnd(WordsOf("ip " + arguments));
    if (outcome.status == 0)
        return {};
    return outcome.output.empty() ? "failed: ip " + arguments : outcome.output;
}

inline std::string ThisProgram()
{
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return std::string(path, length > 0 ? static_cast<size_t>(length) : 0);
}

// What a test program says of the test that it skipped; empty when it ran.
inline std::string SkipReasonIn(const std::string& output)
{
    constexpr const char* kSkipped = ": Skipped\n";
    const std::size_t at = output.find(kSkipped);
    if (at == output.npos)
        return {};
    const std::string reason = output.substr(at + std::string(kSkipped).size());
    return reason.substr(0, reason.find('\n'));
}

template <class Body>
void InOwnNetwork(Body body)
{
    constexpr const char* kInside = "VKMIBH_TEST_OWN_NETWORK";
    if (std::getenv(kInside)) {
        body();
        return;
    }
    const Outcome allowed = RunToEnd({"unshare", "-rn", "true"});
    if (allowed.status != 0)
        GTEST_SKIP() << "no network namespace is permitted: " << allowed.output;
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const Outcome outcome =
        RunToEnd({"unshare", "-rn", "env", std::string(kInside) + "=1", ThisProgram(),
                  std::string("--gtest_filter=") + test.test_suite_name() + "." + test.name()});
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    const std::string reason = SkipReasonIn(outcome.output);
    if (!reason.empty())
        GTEST_SKIP() << reason;
    EXPECT_NE(outcome.output.find("[  PASSED  ] 1 test."), std::string::npos) << outcome.output;
}

} // namespace Test
} // namespace VLK
