// The objects of an implementation, as MIB information tells of them.
#pragma once

#include <vkmibh/impl.h>

namespace VLK {

inline bool IsTableImpl(const BMibImpl& impl)
{
    return impl.ImplKind() >= eImplTable && impl.ImplKind() <= eImplTableEx2;
}

inline bool IsTableOrRowImpl(const BMibImpl& impl)
{
    return IsTableImpl(impl) || impl.ImplKind() == eImplRow;
}

inline bool IsScalarImpl(const BMibImpl& impl) { return impl.ImplKind() == eImplScalar; }

// The object's row in the map: by the arc after the owner's identifier, or by name. A scalar
// implementation has one object, its first row, whatever the row's column.
const SRqHndlrMapEntry* FindObject(const BMibImpl& owner, unsigned column);
const SRqHndlrMapEntry* FindObject(const BMibImpl& owner, const BString& name);
const SRqHndlrMapEntry* NextObject(const BMibImpl& owner, const SRqHndlrMapEntry* entry);
// By the name "module.object", as a whole.
const SRqHndlrMapEntry* FindJoinedObject(const BMibImpl& owner, const BString& module,
                                         const BString& object);

// The object's identifier; false without memory.
bool ObjectOid(const BMibImpl& owner, const SRqHndlrMapEntry& entry, BObjectIdentifier& oid);
// Whether it is the identifier of an object.
bool IsObjectOid(const BMibImpl& owner, const BObjectIdentifier& oid);

// What follows the header of an object's enumeration: its items, and then another row. Null when
// the object has no enumeration.
const SConstraintMapEntry* EnumerationItems(const SRqHndlrMapEntry* entry);

} // namespace VLK
