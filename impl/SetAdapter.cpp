// From a value on the wire to a typed set handler, through all checks.
#include <vkmibh/maprows.h>

#include "impl/KindSyntax.h"
#include "impl/SetSlots.h"

namespace VLK {

namespace {

bool IsRange(const SConstraintMapEntry& row)
{
    return row.kind == eConstraintRange || row.kind == eConstraintRefined;
}

int CheckInteger(const SConstraintMapEntry& constraint, int value)
{
    if (constraint.kind == eConstraintEnumeration) {
        for (const SConstraintMapEntry* item = &constraint + 1; item->kind == eConstraintItem;
             ++item) {
            if (item->low == value)
                return eSnmpNoError;
        }
        return eSnmpWrongValue;
    }
    if (IsRange(constraint) && (value < constraint.low || value > constraint.high))
        return eSnmpWrongValue;
    return eSnmpNoError;
}

int CheckLength(const SConstraintMapEntry& constraint, unsigned length)
{
    const long long size = length;
    if (IsRange(constraint) && (size < constraint.low || size > constraint.high))
        return eSnmpWrongLength;
    return eSnmpNoError;
}

// CONTRACT: Counter32 and TimeTicks take any value whatever range a column
// gives; modules rely on it to write counters back.
int CheckUnsigned(const SConstraintMapEntry& constraint, const BObjectSyntax& value)
{
    if (value.Syntax() != eAsnGauge32 || !IsRange(constraint))
        return eSnmpNoError;
    const unsigned number = value.Unsigned();
    const bool inside = number >= static_cast<unsigned>(constraint.low) &&
                        number <= static_cast<unsigned>(constraint.high);
    return inside ? eSnmpNoError : eSnmpWrongValue;
}

int CheckConstraint(const SRqHndlrMapEntry& entry, const BObjectSyntax& value)
{
    const SConstraintMapEntry* constraint = entry.Constraint();
    if (!constraint)
        return eSnmpNoError;
    switch (entry.kind) {
    case eKindInteger:
    case eKindEnumerated:
        return CheckInteger(*constraint, value.Int());
    case eKindOctetString:
    case eKindDisplayString:
        return CheckLength(*constraint, value.Octets().Length());
    case eKindUnsigned:
        return CheckUnsigned(*constraint, value);
    default:
        return eSnmpNoError;
    }
}

// NVT ASCII as RFC 2579 wants it of a DisplayString; a carriage return may also
// be the last byte.
bool IsDisplayString(const BOctetString& octets)
{
    const unsigned char* byte = octets.Data();
    const unsigned char* const end = byte + octets.Length();
    for (; byte != end; ++byte) {
        if (*byte >= 0x80)
            return false;
        if (*byte == '\r' && byte + 1 != end && byte[1] != '\n' && byte[1] != '\0')
            return false;
    }
    return true;
}

// One call of a row's set handler.
struct SSetCall {
    BMibImpl& impl;
    const SRqHndlrMapEntry& entry;
    const BObjectIdentifier* instance;
    ESnmpSetOpCode op;
    unsigned id;
    void** slot;

    template <class V>
    int operator()(const V& value) const
    {
        const PhaseMark mark(slot, op);
        return (impl.*entry.setHandler)(instance, op, id, &value, slot);
    }
};

int SetText(const SSetCall& call, const BOctetString& octets)
{
    if (!IsDisplayString(octets))
        return eSnmpWrongValue;
    const unsigned length = octets.Length();
    if (length == 0)
        return call(BString());
    const BString text(reinterpret_cast<const char*>(octets.Data()), length);
    const bool whole = text.length() == length;
    if (!whole && call.op == eSetTest)
        return eSnmpResourceUnavailable;
    if (!whole && call.op == eSetCommit)
        return eSnmpCommitFailed;
    // Undo and cleanup go by what the slot keeps: they run, if with an empty text.
    return call(text);
}

} // namespace

int BMibImpl::Set(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op, void** slot,
                  const BObjectSyntax& value, const BObjectIdentifier* instance)
{
    if (!entry || !entry->setHandler)
        return eSnmpNotWritable;
    if (entry->kind > kRqLastKind)
        return eSnmpNoError;
    if (value.Syntax() != entry->syntax || !KindHasSyntax(entry->kind, entry->syntax))
        return eSnmpWrongType;
    if (RqIsStatusKind(entry->kind) && !instance)
        return eSnmpWrongType;
    if (op == eSetTest) {
        const int status = CheckConstraint(*entry, value);
        if (status != eSnmpNoError)
            return status;
    }

    const SSetCall call{*this, *entry, instance, op, id, slot};
    switch (entry->kind) {
    case eKindInteger:
    case eKindEnumerated:
        return call(value.Int());
    case eKindOctetString:
        return call(value.Octets());
    case eKindObjectId:
        return call(value.ObjectId());
    case eKindUnsigned:
        return call(value.Unsigned());
    case eKindDisplayString:
        return SetText(call, value.Octets());
    case eKindIpAddress:
        return call(value.IpAddress());
    case eKindCounter64:
        return call(BCounter64(value.Ctr64()));
    case eKindRowStatus:
        return call(static_cast<ERowStatus>(value.Int()));
    default:
        return call(static_cast<EEntryStatus>(value.Int()));
    }
}

} // namespace VLK
