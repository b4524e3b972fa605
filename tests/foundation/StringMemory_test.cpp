// Strings without memory: each operation happens whole or not at all, and nothing
// leaks.
#include "tests/support/AllocationSweep.h"

#include <string>
#include <vkmibh/base.h>

namespace VLK {
namespace {

const std::string kLong(300, 'x');

// Changes "abc" in one way. It stays, or becomes what it should.
template <class Change>
void ExpectWholeOrUnchanged(const std::string& wanted, Change change)
{
    SCOPED_TRACE(wanted.substr(0, 12));
    const unsigned allocations =
        VLKTest::SweepAllocations([] { return BString("abc"); },
                                  [&](BString& string) {
                                      change(string);
                                      return 0;
                                  },
                                  [&](BString& string, int) {
                                      const std::string text(string.c_str(), string.length());
                                      EXPECT_TRUE(text == "abc" || text == wanted) << text;
                                  });
    EXPECT_EQ(1u, allocations);
}

TEST(StringMemory, AChangeHappensWholeOrNotAtAll)
{
    const BString other(kLong.c_str());
    ExpectWholeOrUnchanged(kLong, [&](BString& s) { s.Assign(kLong.data(), 300); });
    ExpectWholeOrUnchanged(kLong, [&](BString& s) { s.Assign(other); });
    ExpectWholeOrUnchanged(kLong, [&](BString& s) { s = other; });
    ExpectWholeOrUnchanged("abc" + kLong, [&](BString& s) { s.Append(kLong.data(), 300); });
    ExpectWholeOrUnchanged("abc" + kLong, [&](BString& s) { s.Append(other); });
    ExpectWholeOrUnchanged("abc", [&](BString& s) { s.reserve(300); });
}

TEST(StringMemory, ACopyIsWholeOrEmpty)
{
    const BString original(kLong.c_str());
    const auto copies = {+[](const BString& from) { return BString(from); },
                         +[](const BString& from) { return BString(from.c_str()); },
                         +[](const BString& from) { return BString(from.c_str(), 300); }};
    for (const auto copy : copies)
        VLKTest::SweepAllocations([] { return 0; }, [&](int) { return copy(original); },
                                  [&](int, const BString& made) {
                                      EXPECT_TRUE(made.empty() || made == original);
                                      EXPECT_STREQ(made.empty() ? "" : kLong.c_str(), made.c_str());
                                  });
}

TEST(StringMemory, MovesTakeNone)
{
    BString from(kLong.c_str());
    FailingAlloc fail(0);
    BString to(std::move(from));
    from = std::move(to);
    to = std::move(from);
    EXPECT_EQ(300u, to.length());
    to.clear();
    EXPECT_EQ(0u, to.length());
    EXPECT_FALSE(fail.Failed());
}

} // namespace
} // namespace VLK
