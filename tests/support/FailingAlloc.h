// Makes memory run out: within the scope, the Nth allocation of this thread
// and all later ones fail.
//
//   for (int n = 0; n < 1000; ++n) {
//       FailingAlloc fail(n);
//       Do();
//       if (!fail.Failed())
//           break; // went through without an allocation refused
//   }
//
// One source file of a test program includes tests/support/FailingAllocOperators.h.
#pragma once

namespace VLK {

class FailingAlloc {
public:
    explicit FailingAlloc(int allowed) : m_before(s_allowed)
    {
        s_allowed = allowed;
        s_failed = false;
    }
    ~FailingAlloc() { s_allowed = m_before; }
    FailingAlloc(const FailingAlloc&) = delete;
    FailingAlloc& operator=(const FailingAlloc&) = delete;

    bool Failed() const { return s_failed; }

    // Asked by operator new.
    static bool Refuses()
    {
        if (s_allowed < 0)
            return false;
        if (s_allowed == 0) {
            s_failed = true;
            return true;
        }
        --s_allowed;
        return false;
    }

private:
    static inline thread_local int s_allowed = -1; // below 0: all
    static inline thread_local bool s_failed = false;
    const int m_before;
};

} // namespace VLK
