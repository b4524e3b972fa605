#include "registry/MibInfoObjects.h"

namespace VLK {

namespace {

constexpr unsigned kNoColumn = ~0u;

// Columns that a scalar implementation's row carries when it has none of its own.
bool UsesColumn(const SRqHndlrMapEntry& entry)
{
    return entry.column != 0 && entry.column != kNoColumn;
}

} // namespace

const SRqHndlrMapEntry* FindObject(const BMibImpl& owner, unsigned column)
{
    return IsScalarImpl(owner) ? owner.GetFirstRqHndlrEntry() : owner.FindRqHndlrEntry(column);
}

const SRqHndlrMapEntry* FindObject(const BMibImpl& owner, const BString& name)
{
    const SRqHndlrMapEntry* entry = owner.FindRqHndlrEntry(name.c_str());
    return IsScalarImpl(owner) && entry != owner.GetFirstRqHndlrEntry() ? nullptr : entry;
}

const SRqHndlrMapEntry* NextObject(const BMibImpl& owner, const SRqHndlrMapEntry* entry)
{
    if (!entry)
        return owner.GetFirstRqHndlrEntry();
    return IsScalarImpl(owner) ? nullptr : owner.NextRqHndlrEntry(entry->column);
}

bool ObjectOid(const BMibImpl& owner, const SRqHndlrMapEntry& entry, BObjectIdentifier& oid)
{
    if (!oid.Set(owner.Oid()))
        return false;
    return (IsScalarImpl(owner) && !UsesColumn(entry)) || oid.Append(entry.column);
}

const SConstraintMapEntry* EnumerationItems(const SRqHndlrMapEntry* entry)
{
    const SConstraintMapEntry* header = entry ? entry->Constraint() : nullptr;
    if (!header || header->kind != eConstraintEnumeration)
        return nullptr;
    return header[1].kind == eConstraintItem ? header + 1 : nullptr;
}

} // namespace VLK
