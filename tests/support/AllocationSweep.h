// Fails allocations one after the other: an operation is run again and again on
// a fresh object, the first time with its first allocation refused, then with
// its second, and so on until it comes through; once with only that allocation
// refused, once with all later ones refused too. Nothing may leak in any run.
//
//   VLKTest::SweepAllocations(
//       [] { return BOidArray(); },
//       [](BOidArray& array) { return array.PushBack(oid); },
//       [](BOidArray& array, bool done) { EXPECT_EQ(array.Count(), done ? 1u : 0u); });
//
// The program has to link failing_alloc.
#pragma once

#include "tests/support/FailingAlloc.h"

#include <gtest/gtest.h>

namespace VLKTest {

// Runs one operation per object; see the top of the file. `check` is given what
// the operation returned. Returns how many allocations the operation makes.
template <class Make, class Operate, class Check>
unsigned SweepAllocations(Make make, Operate operate, Check check)
{
    using VLK::FailingAlloc;
    int allocations = 0;
    // The first trace makes a list that stays.
    {
        SCOPED_TRACE("");
    }
    for (const auto then : {FailingAlloc::eNextOnly, FailingAlloc::eAllLater}) {
        for (int granted = 0;; ++granted) {
            const long before = FailingAlloc::Live();
            bool failed = false;
            {
                auto object = make();
                const auto result = [&] {
                    FailingAlloc fail(granted, then);
                    auto answer = operate(object);
                    failed = fail.Failed();
                    return answer;
                }();
                SCOPED_TRACE(testing::Message()
                             << "granted " << granted << ", then none"
                             << (then == FailingAlloc::eNextOnly ? " once" : " any more"));
                check(object, result);
            }
            EXPECT_EQ(FailingAlloc::Live(), before) << "leaked with " << granted << " granted";
            if (!failed) {
                allocations = granted;
                break;
            }
        }
    }
    return static_cast<unsigned>(allocations);
}

} // namespace VLKTest
