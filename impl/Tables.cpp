#include <vkmibh/tables.h>

#include "impl/Answers.h"
#include "impl/InstanceView.h"

namespace VLK {

namespace {

// The row itself or the first after it that is readable; null at the map's end.
const SRqHndlrMapEntry* FirstReadable(const SRqHndlrMapEntry* entry)
{
    for (; entry && entry->kind != eKindEnd; ++entry) {
        if (RqIsReadable(entry->access))
            return entry;
    }
    return nullptr;
}

} // namespace

BMibTableImpl::BMibTableImpl(const BString& name, const BObjectIdentifier& oid)
    : BMibTableImpl(name, oid, eImplTable)
{
}

BMibTableImpl::BMibTableImpl(const BString& name, const BObjectIdentifier& oid, EImplKind kind)
    : BMibImpl(name, oid, kind)
{
}

int BMibTableImpl::Get(unsigned id, BVarBind& binding)
{
    const BObjectIdentifier& name = binding.Name();
    const unsigned length = Oid().Length();
    if (name.Length() <= length + 1)
        return AnswerException(binding, eNoSuchInstance);
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(name[length]);
    if (!entry || !RqIsReadable(entry->access))
        return AnswerException(binding, eNoSuchInstance);
    const InstanceView index(name, length + 1);
    const int status = Get(entry, id, binding.Value(), &index.Oid());
    return status == eSnmpNoSuchName ? AnswerException(binding, eNoSuchInstance) : status;
}

int BMibTableImpl::Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding)
{
    const BObjectIdentifier& name = binding.Name();
    const unsigned length = Oid().Length();
    if (name.Length() <= length + 1)
        return eSnmpNoSuchName;
    const SRqHndlrMapEntry* entry = FindRqHndlrEntry(name[length]);
    if (!entry || !RqIsWritable(entry->access))
        return eSnmpNotWritable;
    const InstanceView index(name, length + 1);
    return Set(entry, id, op, slot, binding.Value(), &index.Oid());
}

// The first row of the first readable column, from `entry` on, that has one.
const SRqHndlrMapEntry* BMibTableImpl::FirstRow(unsigned id, const SRqHndlrMapEntry* entry,
                                                BObjectIdentifier& nextIndex)
{
    const BObjectIdentifier beforeAll;
    for (entry = FirstReadable(entry); entry; entry = FirstReadable(entry + 1)) {
        nextIndex.Clear();
        if (NextIndex(id, entry->column, beforeAll, nextIndex))
            return entry;
    }
    return nullptr;
}

// The row after `name`, which lies inside the table.
const SRqHndlrMapEntry* BMibTableImpl::NextRow(unsigned id, const BObjectIdentifier& name,
                                               BObjectIdentifier& nextIndex)
{
    const unsigned length = Oid().Length();
    const unsigned column = name[length];
    const SRqHndlrMapEntry* asked = FindRqHndlrEntry(column);
    if (!asked)
        return FirstRow(id, NextRqHndlrEntry(column), nextIndex);
    // CONTRACT: when the column asked for is not readable, the next readable one
    // goes on from the same index, not from its first row; walks keep their place.
    const SRqHndlrMapEntry* entry = FirstReadable(asked);
    if (!entry)
        return nullptr;
    const InstanceView index(name, length + 1);
    if (NextIndex(id, entry->column, index.Oid(), nextIndex))
        return entry;
    return FirstRow(id, entry + 1, nextIndex);
}

int BMibTableImpl::NextInstance(unsigned id, BVarBind& binding)
{
    BObjectIdentifier& name = binding.Name();
    BObjectIdentifier nextIndex;
    const SRqHndlrMapEntry* entry = nullptr;
    if (name.Compare(Oid()) <= 0)
        entry = FirstRow(id, GetFirstRqHndlrEntry(), nextIndex);
    else if (Oid().IsStartingSubOidOf(name))
        entry = NextRow(id, name, nextIndex);
    if (!entry || !name.Set(Oid()) || !name.Append(entry->column) || !name.Append(nextIndex, true))
        return AnswerEnd(binding);
    return AnswerMoved(binding);
}

} // namespace VLK
