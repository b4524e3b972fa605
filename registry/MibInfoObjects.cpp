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
    // The map's names end at a NUL, so one that holds a NUL is none of them.
    const bool isText = BString::Strlen(name.c_str()) == name.length();
    const SRqHndlrMapEntry* entry = isText ? owner.FindRqHndlrEntry(name.c_str()) : nullptr;
    return IsScalarImpl(owner) && entry != owner.GetFirstRqHndlrEntry() ? nullptr : entry;
}

const SRqHndlrMapEntry* FindJoinedObject(const BMibImpl& owner, const BString& module,
                                         const BString& object)
{
    BString joined;
    if (!joined.reserve(module.length() + 1 + object.length()))
        return nullptr;
    joined.Append(module).Append('.').Append(object);
    return FindObject(owner, joined);
}

const SRqHndlrMapEntry* NextObject(const BMibImpl& owner, const SRqHndlrMapEntry* entry)
{
    if (!entry)
        return owner.GetFirstRqHndlrEntry();
    return IsScalarImpl(owner) || entry[1].kind == eKindEnd ? nullptr : entry + 1;
}

bool ObjectOid(const BMibImpl& owner, const SRqHndlrMapEntry& entry, BObjectIdentifier& oid)
{
    if (!oid.Set(owner.Oid()))
        return false;
    return (IsScalarImpl(owner) && !UsesColumn(entry)) || oid.Append(entry.column);
}

bool IsObjectOid(const BMibImpl& owner, const BObjectIdentifier& oid)
{
    if (!owner.Oid().IsStartingSubOidOf(oid))
        return false;
    const unsigned length = owner.Oid().Length();
    const SRqHndlrMapEntry* first = owner.GetFirstRqHndlrEntry();
    if (IsScalarImpl(owner) && first && !UsesColumn(*first))
        return oid.Length() == length;
    if (oid.Length() != length + 1)
        return false;
    const SRqHndlrMapEntry* entry = FindObject(owner, oid[length]);
    return entry && entry->column == oid[length];
}

const SConstraintMapEntry* EnumerationItems(const SRqHndlrMapEntry* entry)
{
    const SConstraintMapEntry* header = entry ? entry->Constraint() : nullptr;
    return header && header->kind == eConstraintEnumeration ? header + 1 : nullptr;
}

} // namespace VLK
