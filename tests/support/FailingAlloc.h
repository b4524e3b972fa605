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
// The test program has to link failing_alloc, the operators new and delete that
// refuse. tests/support/AllocationSweep.h has the loop ready made.
#pragma once

namespace VLK {

class FailingAlloc {
public:
    enum EThen { eAllLater, eNextOnly };

    explicit FailingAlloc(int allowed, EThen then = eAllLater);
    ~FailingAlloc();
    FailingAlloc(const FailingAlloc&) = delete;
    FailingAlloc& operator=(const FailingAlloc&) = delete;

    bool Failed() const;

    // How many blocks this thread has taken and not given back.
    static long Live();

    // The rest is for operator new and delete.
    static bool Refuses();
    static void Took();
    static void GaveBack();

private:
    struct SState {
        int allowed; // below 0: all
        EThen then;
        bool failed;
    };
    static thread_local SState s_state;
    static thread_local long s_live;
    const SState m_before;
};

} // namespace VLK
