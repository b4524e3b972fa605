// One SET on its way through the phases.
#pragma once

#include <vkmibh/tree.h>

namespace VLK {

// Drives every run of the bindings through test and commit, through undo when
// a commit fails, and through cleanup in every case. The caller holds the
// registration lock as reader from Prepare() until this object is gone.
class SetRequest {
public:
    SetRequest(const BMibTree& tree, unsigned transactionId, const BVarBindList& list);
    // Runs the cleanup that a cancelled thread did not come to.
    ~SetRequest();
    SetRequest(const SetRequest&) = delete;
    SetRequest& operator=(const SetRequest&) = delete;

    // Makes the set slots; false when there is no memory.
    bool Prepare();
    // The SNMP error status; errorIndex is written on failure only.
    int Run(int& errorIndex);

private:
    static constexpr int kInlineSlots = 16;

    int Test(int& errorIndex);
    int Commit(int& failedAt);
    int Undo(int failedAt, int commitStatus, int& errorIndex);
    int Cleanup(int status, int& errorIndex);
    void ForgetRows(int first, int end);
    int RecordedRunLength(int first, int end) const;
    int Call(ESnmpSetOpCode op, int first, int length, int& index);

    const BMibTree& m_tree;
    const unsigned m_transactionId;
    const BVarBindList& m_list;
    const int m_count;
    int m_prepared; // bindings whose runs were tested, the failed run included
    SSetSlot m_inline[kInlineSlots];
    SSetSlot* m_slots;
};

} // namespace VLK
