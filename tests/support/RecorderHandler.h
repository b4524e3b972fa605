// A subtree handler that records the phases of SETs and fails where told.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/subtree.h>

#include <functional>
#include <set>
#include <stdexcept>

namespace VLK {
namespace Test {

// What all recorders of one test write to, in order.
using SetLog = std::vector<std::string>;

inline const char* PhaseText(ESnmpSetOpCode op)
{
    switch (op) {
    case eSetTest:
        return "test";
    case eSetCommit:
        return "commit";
    case eSetUndo:
        return "undo";
    case eSetCleanup:
        return "cleanup";
    }
    return "?";
}

// "A test 0+2": recorder A was asked to test two bindings from position 0 on.
inline std::string SetLogLine(char name, ESnmpSetOpCode op, int index, int count)
{
    return std::string(1, name) + " " + PhaseText(op) + " " + std::to_string(index) + "+" +
           std::to_string(count);
}

class RecorderHandler : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;

    RecorderHandler(char name, const char* oid, SetLog& log)
        : BMibSubtreeHandler(BString(&name, 1), MakeOid(oid)), m_name(name), m_log(log)
    {
    }

    int Get(unsigned, BVarBindList&, int&, int) override { return eSnmpGenErr; }
    int GetNext(unsigned, BVarBind&) override { return eSnmpNoSuchName; }
    int Set(unsigned, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override
    {
        m_log.push_back(SetLogLine(m_name, op, index, count));
        CheckSlots(list, op, reinterpret_cast<SSetSlot*>(slots), index, count);
        if (onSet)
            onSet(op);
        const int first = index;
        for (int i = first; i < first + count; ++i) {
            if (!failAt.count({op, i}))
                continue;
            index = i;
            if (throwInstead)
                throw std::runtime_error("SET");
            return failWith;
        }
        return eSnmpNoError;
    }
    bool HandlesInstance(const BObjectIdentifier& oid) override
    {
        return alsoHandles.count(TextOf(oid)) > 0;
    }

    std::set<std::pair<ESnmpSetOpCode, int>> failAt; // phase and position
    int failWith = eSnmpCommitFailed;
    bool throwInstead = false;
    std::function<void(ESnmpSetOpCode)> onSet;
    std::set<std::string> alsoHandles;
    int slotErrors = 0;

private:
    // The first phase finds zeroed slots of its own; later ones find what it left.
    void CheckSlots(const BVarBindList& list, ESnmpSetOpCode op, SSetSlot* slots, int index,
                    int count)
    {
        for (int k = 0; k < count; ++k) {
            SSetSlot& slot = slots[k];
            if (slot.owner != this || index + k >= static_cast<int>(list.Count()))
                ++slotErrors;
            void* const mark = this + k + 1;
            if (op == eSetTest) {
                if (slot.scratch || slot.position || slot.tested || slot.committed)
                    ++slotErrors;
                slot.scratch = mark;
            } else if (slot.scratch != mark) {
                ++slotErrors;
            }
        }
    }

    char m_name;
    SetLog& m_log;
};

} // namespace Test
} // namespace VLK
