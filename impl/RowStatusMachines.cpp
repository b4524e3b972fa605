// The state machines of status columns, and what a SET notes of a row.
#include <vkmibh/rowstatus.h>

namespace VLK {

namespace {

// What becomes of a row, or why nothing does.
struct SVerdict {
    int status;
    int newValue;
};

SVerdict Becomes(int value) { return {eSnmpNoError, value}; }
SVerdict Refuse(int status) { return {status, 0}; }

SVerdict MakeRow(ERowStatus requested)
{
    switch (requested) {
    case eRowCreateAndGo:
        return Becomes(eRowActive);
    case eRowCreateAndWait:
        return Becomes(eRowNotInService);
    case eRowDestroy:
        return Becomes(0);
    case eRowNotReady:
        return Refuse(eSnmpWrongValue);
    default:
        // CONTRACT: what is no RowStatus at all is inconsistentValue for a row
        // that does not exist and genErr for one that does; callers tell the two
        // apart by it.
        return Refuse(eSnmpInconsistentValue);
    }
}

SVerdict ChangeRow(ERowStatus requested)
{
    switch (requested) {
    case eRowCreateAndGo:
    case eRowCreateAndWait:
        return Refuse(eSnmpInconsistentValue);
    case eRowActive:
    case eRowNotInService:
        return Becomes(requested);
    case eRowDestroy:
        return Becomes(0);
    case eRowNotReady:
        return Refuse(eSnmpWrongValue);
    default:
        return Refuse(eSnmpGenErr);
    }
}

SVerdict JudgeEntry(EEntryStatus current, EEntryStatus requested)
{
    switch (static_cast<int>(current)) {
    case 0:
        return requested == eEntryCreateRequest ? Becomes(eEntryUnderCreation)
                                                : Refuse(eSnmpWrongValue);
    case eEntryValid:
    case eEntryUnderCreation:
        if (requested == eEntryCreateRequest)
            return Refuse(eSnmpBadValue);
        return Becomes(requested == eEntryInvalid ? 0 : static_cast<int>(requested));
    case eEntryInvalid:
        return requested == eEntryInvalid ? Becomes(0) : Refuse(eSnmpBadValue);
    default:
        return Refuse(eSnmpGenErr);
    }
}

int Note(SVerdict verdict, int requested, BMibTableImplEx::RowState* state)
{
    if (state) {
        state->requestedValue = requested;
        if (verdict.status == eSnmpNoError)
            state->newValue = verdict.newValue;
    }
    return verdict.status;
}

} // namespace

bool BMibTableImplEx::RowState::IsCreation() const
{
    if (kind == eRowOfEntryStatus)
        return requestedValue == eEntryCreateRequest;
    return requestedValue == eRowCreateAndGo || requestedValue == eRowCreateAndWait;
}

bool BMibTableImplEx::RowState::IsDeletion() const
{
    return requestedValue == (kind == eRowOfEntryStatus ? int(eEntryInvalid) : int(eRowDestroy));
}

void BMibTableImplEx::RowState::SetOpCode(ESnmpSetOpCode op)
{
    if (op == opCode)
        return;
    requestedValue = 0;
    opCode = op;
    newValue = undoValue;
}

int BMibTableImplEx::RowStatusTestSet(ERowStatus current, ERowStatus requested, RowState* state)
{
    SVerdict verdict = Refuse(eSnmpGenErr);
    if (current == 0)
        verdict = MakeRow(requested);
    else if (current >= eRowActive && current <= eRowNotReady)
        verdict = ChangeRow(requested);
    return Note(verdict, requested, state);
}

int BMibTableImplEx::EntryStatusTestSet(EEntryStatus current, EEntryStatus requested,
                                        RowState* state)
{
    m_lastEntryStatus = current;
    return Note(JudgeEntry(current, requested), requested, state);
}

} // namespace VLK
