#include <stdexcept>
#include <vkmibh/testing/oids.h>
#include <vkmibh/testing/recorder.h>

namespace VLK {
namespace Test {

const char* PhaseText(ESnmpSetOpCode op)
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

std::string SetLogLine(char name, ESnmpSetOpCode op, int index, int count)
{
    return std::string(1, name) + " " + PhaseText(op) + " " + std::to_string(index) + "+" +
           std::to_string(count);
}

RecorderHandler::RecorderHandler(char name, const char* oid, SetLog& log)
    : BMibSubtreeHandler(BString(&name, 1), MakeOid(oid)), m_name(name), m_log(log)
{
}

int RecorderHandler::Get(unsigned, BVarBindList&, int&, int) { return eSnmpGenErr; }

int RecorderHandler::GetNext(unsigned, BVarBind&) { return eSnmpNoSuchName; }

int RecorderHandler::Set(unsigned, const BVarBindList& list, ESnmpSetOpCode op, void** slots,
                         int& index, int count)
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

bool RecorderHandler::HandlesInstance(const BObjectIdentifier& oid)
{
    return alsoHandles.count(TextOf(oid)) > 0;
}

// The first phase finds zeroed slots of its own; later ones find what it left.
void RecorderHandler::CheckSlots(const BVarBindList& list, ESnmpSetOpCode op, SSetSlot* slots,
                                 int index, int count)
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

} // namespace Test
} // namespace VLK
