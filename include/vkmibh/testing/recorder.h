// A subtree handler that records the phases of SETs and fails where told.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>
#include <vkmibh/subtree.h>

namespace VLK {
namespace Test {

// What all recorders of one test write to, in order.
using SetLog = std::vector<std::string>;

// "test", "commit", "undo" or "cleanup".
const char* PhaseText(ESnmpSetOpCode op);

// "A test 0+2": recorder A was asked to test two bindings from position 0 on.
std::string SetLogLine(char name, ESnmpSetOpCode op, int index, int count);

// Registered beside a module, it makes SETs that name both fail in any phase; by
// itself it shows what a handler of a host sees.
//
//   SetLog log;
//   RecorderHandler neighbour('N', "1.3.6.1.4.1.32473.99", log);
//   neighbour.failAt = {{eSetCommit, 1}}; // the binding at position 1
//
// Ownership: the log is the test's and outlives it.
// Threads:   one SET at a time.
// Errors:    answers SETs only; GET ends as genErr, a walk passes it by.
class RecorderHandler : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;

    RecorderHandler(char name, const char* oid, SetLog& log);

    int Get(unsigned id, BVarBindList& list, int& index, int count) override;
    int GetNext(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;
    bool HandlesInstance(const BObjectIdentifier& oid) override;

    std::set<std::pair<ESnmpSetOpCode, int>> failAt; // phase and position
    int failWith = eSnmpCommitFailed;
    bool throwInstead = false;
    std::function<void(ESnmpSetOpCode)> onSet;
    std::set<std::string> alsoHandles;
    // How often slots were not its own, not zeroed, or not what it had left there.
    int slotErrors = 0;

private:
    void CheckSlots(const BVarBindList& list, ESnmpSetOpCode op, SSetSlot* slots, int index,
                    int count);

    char m_name;
    SetLog& m_log;
};

} // namespace Test
} // namespace VLK
