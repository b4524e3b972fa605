#include "host/verbs/SetTrace.h"

#include <algorithm>
#include <cstring>

namespace VLK::host {

namespace {

ESetPhase PhaseOf(ESnmpSetOpCode op)
{
    switch (op) {
    case eSetTest:
        return ePhaseTest;
    case eSetCommit:
        return ePhaseCommit;
    case eSetUndo:
        return ePhaseUndo;
    default:
        return ePhaseCleanup;
    }
}

void Fill(SSetStep& step, const BString& module, int first, int count, int status, int index)
{
    step.first = first;
    step.count = count;
    step.status = status;
    step.index = index;
    const unsigned length = std::min(module.length(), SSetStep::kMostName);
    std::memcpy(step.module, module.c_str(), length);
    step.module[length] = 0;
}

} // namespace

void SSetPhase::CopyTo(SSetPhase& other) const
{
    other.calls = calls;
    other.hasFailed = hasFailed;
    if (hasFailed)
        other.failed = failed;
    std::copy_n(steps.begin(), Kept(), other.steps.begin());
}

thread_local BSetTrace* BSetTrace::t_trace = nullptr;

void BSetTrace::Note(const BString& module, ESnmpSetOpCode op, int first, int count, int status,
                     int index)
{
    if (first >= m_bindings) {
        if (op == eSetCommit)
            m_save = status == eSnmpNoError ? eSaveDone : eSaveFailed;
        return;
    }
    SSetPhase& phase = m_phases[PhaseOf(op)];
    if (phase.calls < SSetPhase::kMostSteps)
        Fill(phase.steps[phase.calls], module, first, count, status, index);
    ++phase.calls;
    if (status != eSnmpNoError && !phase.hasFailed) {
        phase.hasFailed = true;
        Fill(phase.failed, module, first, count, status, index);
    }
}

} // namespace VLK::host
