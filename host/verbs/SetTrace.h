// What a SET does, phase by phase, noted while it runs.
#pragma once

#include <array>
#include <vkmibh/subtree.h>

namespace VLK::host {

// One call of a module with a run of bindings. Starts without values: what every SET
// has room for, few SETs use.
struct SSetStep {
    static constexpr int kThrew = -1; // the status of a call that ended so
    static constexpr unsigned kMostName = 63;

    int first; // position of the run's first binding
    int count;
    int status;
    int index; // of the binding at fault
    char module[kMostName + 1];
};

// The calls of one phase: the first ones, the number of all, and the one that failed,
// which ends the phase.
struct SSetPhase {
    static constexpr unsigned kMostSteps = 16;

    unsigned calls = 0;
    bool hasFailed = false;
    SSetStep failed; // if there is one
    std::array<SSetStep, kMostSteps> steps;

    unsigned Kept() const { return calls < kMostSteps ? calls : kMostSteps; }
    // What has values.
    void CopyTo(SSetPhase& other) const;
};

enum ESetPhase { ePhaseTest, ePhaseCommit, ePhaseUndo, ePhaseCleanup, ePhases };

// What became of the values that a SET has changed.
enum ESave { eSaveNotTried, eSaveDone, eSaveFailed };

// Of the bindings of the request alone: one that the agent adds to it is its save, which
// is part of the commit. Takes no memory beyond its own, which is on the stack.
//
// Threads: one each. A SET within a SET is not noted.
class BSetTrace {
public:
    explicit BSetTrace(unsigned bindings) : m_outer(t_trace), m_bindings(static_cast<int>(bindings))
    {
        if (!m_outer)
            t_trace = this;
    }
    ~BSetTrace()
    {
        if (!m_outer)
            t_trace = nullptr;
    }
    BSetTrace(const BSetTrace&) = delete;
    BSetTrace& operator=(const BSetTrace&) = delete;

    static BSetTrace* OfThisThread() { return t_trace; }
    bool IsNested() const { return m_outer != nullptr; }

    void Note(const BString& module, ESnmpSetOpCode op, int first, int count, int status,
              int index);
    ESave Save() const { return m_save; }
    const SSetPhase& Phase(ESetPhase phase) const { return m_phases[phase]; }

private:
    static thread_local BSetTrace* t_trace;

    BSetTrace* const m_outer;
    const int m_bindings;
    ESave m_save = eSaveNotTried;
    std::array<SSetPhase, ePhases> m_phases;
};

} // namespace VLK::host
