#include "handler/SetRequest.h"

#include <vkmibh/rowstatus.h>

#include "foundation/HostCall.h"
#include "handler/BindingRun.h"

#include <new>

namespace VLK {

SetRequest::SetRequest(const BMibTree& tree, unsigned transactionId, const BVarBindList& list)
    : m_tree(tree), m_transactionId(transactionId), m_list(list),
      m_count(static_cast<int>(list.Count())), m_prepared(0), m_inline(), m_slots(nullptr)
{
}

SetRequest::~SetRequest()
{
    int ignored = 0;
    Cleanup(eSnmpNoError, ignored);
    if (m_slots != m_inline)
        delete[] m_slots;
}

bool SetRequest::Prepare()
{
    m_slots = m_count <= kInlineSlots ? m_inline : new (std::nothrow) SSetSlot[m_count]();
    return m_slots != nullptr;
}

int SetRequest::Run(int& errorIndex)
{
    int status = Test(errorIndex);
    if (status == eSnmpNoError) {
        int failedAt = 0;
        status = Commit(failedAt);
        if (status != eSnmpNoError)
            status = Undo(failedAt, status, errorIndex);
    }
    return Cleanup(status, errorIndex);
}

int SetRequest::Test(int& errorIndex)
{
    while (m_prepared < m_count) {
        const int first = m_prepared;
        SBindingRun run;
        if (!FormRun(m_tree, m_list, first, run)) {
            errorIndex = first + run.length + 1;
            return eSnmpGenErr;
        }
        if (!run.handler) {
            errorIndex = first + 1;
            return eSnmpNoSuchName;
        }
        for (int i = first; i < first + run.length; ++i)
            m_slots[i].owner = run.handler;
        m_prepared += run.length;
        int index = first;
        const int status = Call(eSetTest, first, run.length, index);
        if (status != eSnmpNoError) {
            errorIndex = index + 1;
            return status;
        }
    }
    return eSnmpNoError;
}

int SetRequest::Commit(int& failedAt)
{
    int length = 0;
    for (int first = 0; first < m_count; first += length) {
        length = RecordedRunLength(first, m_count);
        const int status = Call(eSetCommit, first, length, failedAt);
        if (status != eSnmpNoError)
            return status;
    }
    return eSnmpNoError;
}

int SetRequest::Undo(int failedAt, int commitStatus, int& errorIndex)
{
    errorIndex = failedAt + 1;
    int length = 0;
    for (int first = 0; first <= failedAt; first += length) {
        length = RecordedRunLength(first, m_count);
        int index = first;
        const int status = Call(eSetUndo, first, length, index);
        if (status != eSnmpNoError) {
            // CONTRACT: a failed undo points at no binding and ends the phase.
            errorIndex = 0;
            return status;
        }
    }
    return commitStatus;
}

int SetRequest::Cleanup(int status, int& errorIndex)
{
    const int prepared = m_prepared;
    m_prepared = 0;
    int length = 0;
    for (int first = 0; first < prepared; first += length) {
        length = RecordedRunLength(first, prepared);
        int index = first;
        const int cleanupStatus = Call(eSetCleanup, first, length, index);
        if (cleanupStatus != eSnmpNoError) {
            // CONTRACT: a failed cleanup ends the phase and replaces the
            // result, also that of a SET that was committed.
            errorIndex = index + 1;
            ForgetRows(first + length, prepared);
            return cleanupStatus;
        }
    }
    return status;
}

// What row-status tables noted of the SET goes also where their cleanup does not come.
void SetRequest::ForgetRows(int first, int end)
{
    int length = 0;
    for (; first < end; first += length) {
        length = RecordedRunLength(first, end);
        BMibSubtreeHandler* const owner = m_slots[first].owner;
        if (owner->ImplKind() != eImplTableEx && owner->ImplKind() != eImplTableEx2)
            continue;
        if (auto* const table = dynamic_cast<BMibTableImplEx*>(owner))
            table->ForgetRows(m_list, first, length);
    }
}

int SetRequest::RecordedRunLength(int first, int end) const
{
    int last = first + 1;
    while (last < end && m_slots[last].owner == m_slots[first].owner)
        ++last;
    return last - first;
}

int SetRequest::Call(ESnmpSetOpCode op, int first, int length, int& index)
{
    index = first;
    SSetSlot& slot = m_slots[first];
    const int status = HostCall(
        [&] { return slot.owner->Set(m_transactionId, m_list, op, &slot.scratch, index, length); },
        int(eSnmpGenErr));
    index = ClampToRun(index, first, length);
    return status;
}

} // namespace VLK
