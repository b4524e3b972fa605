// Makes memory run out: within the scope the first `allowed` allocations of
// this thread are granted, and then all later ones are refused, or the next one
// only.
//
//   for (int n = 0;; ++n) {
//       FailingAlloc fail(n);
//       Do();
//       if (!fail.Failed())
//           break; // went through without an allocation refused
//   }
//
// Exactly one source file of a test program includes
// tests/support/FailingAllocOperators.h, without which nothing is refused.
// tests/support/AllocationSweep.h has the loop ready made.
#pragma once

namespace VLK {

class FailingAlloc {
public:
    enum EThen { eAllLater, eNextOnly };

    explicit FailingAlloc(int allowed, EThen then = eAllLater) : m_before(s_state)
    {
        s_state = SState{allowed, then, false};
    }
    ~FailingAlloc() { s_state = m_before; }
    FailingAlloc(const FailingAlloc&) = delete;
    FailingAlloc& operator=(const FailingAlloc&) = delete;

    bool Failed() const { return s_state.failed; }

    // How many blocks this thread has taken and not given back.
    static long Live() { return s_live; }

    // The rest is for operator new and delete.
    static bool Refuses()
    {
        if (s_state.allowed < 0)
            return false;
        if (s_state.allowed > 0) {
            --s_state.allowed;
            return false;
        }
        s_state.failed = true;
        if (s_state.then == eNextOnly)
            s_state.allowed = -1;
        return true;
    }
    static void Took() { ++s_live; }
    static void GaveBack() { --s_live; }

private:
    struct SState {
        int allowed; // below 0: all
        EThen then;
        bool failed;
    };
    static inline thread_local SState s_state{-1, eAllLater, false};
    static inline thread_local long s_live = 0;
    const SState m_before;
};

} // namespace VLK
