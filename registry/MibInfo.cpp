// Names, identifiers and parameters of the objects that an implementation serves.
#include <vkmibh/mibinfo.h>

#include "foundation/HostCall.h"
#include "registry/MibInfoObjects.h"

namespace VLK {

namespace {

EMibObjectKind KindOfOwner(const BMibImpl& owner)
{
    if (IsTableImpl(owner))
        return eMibObjectTable;
    switch (owner.ImplKind()) {
    case eImplRow:
        return eMibObjectRow;
    case eImplScalar:
        return eMibObjectLeaf;
    case eImplScalarGroup:
        return eMibObjectScalarGroup;
    default:
        return eMibObjectRegistrationPoint;
    }
}

int SyntaxOf(const SRqHndlrMapEntry& entry)
{
    switch (entry.kind) {
    case eKindDisplayString:
        return eMibSyntaxDisplayString;
    case eKindRowStatus:
    case eKindEntryStatus:
    case eKindEnumerated:
        return eMibSyntaxEnumerated;
    case eKindInteger: {
        const SConstraintMapEntry* constraint = entry.Constraint();
        const bool enumerated = constraint && constraint->kind == eConstraintEnumeration;
        return enumerated ? eMibSyntaxEnumerated : entry.syntax;
    }
    default:
        return entry.syntax;
    }
}

// The name of a syntax without a convention; null for one that has no name.
const char* SyntaxName(int syntax, int kind)
{
    switch (syntax) {
    case eAsnInteger:
        return "INTEGER";
    case eAsnOctetString:
        return "OCTET STRING";
    case eAsnObjectId:
        return "OBJECT IDENTIFIER";
    case eAsnIpAddress:
        return "IpAddress";
    case eAsnCounter32:
        return "Counter32";
    case eAsnGauge32:
        return "Gauge32";
    case eAsnTimeTicks:
        return "TimeTicks";
    case eAsnOpaque:
        return "Opaque";
    case eAsnCounter64:
        return "Counter64";
    case eMibSyntaxDisplayString:
        return "DispStr";
    case eMibSyntaxEnumerated:
        return "Enum";
    case eMibSyntaxNotLeaf:
        return kind == eMibObjectTable         ? "table"
               : kind == eMibObjectRow         ? "row"
               : kind == eMibObjectScalarGroup ? "scalarGroup"
                                               : "regPt";
    default:
        return nullptr;
    }
}

} // namespace

IMIBInfo::~IMIBInfo() = default;

BMibInfo::~BMibInfo() = default;

void BMibInfo::UpdateSyntaxName(const SRqHndlrMapEntry* entry, BMibObject& object)
{
    const SConstraintMapEntry* constraint = entry ? entry->Constraint() : nullptr;
    const char* name = constraint && constraint->name && *constraint->name
                           ? constraint->name
                           : SyntaxName(object.syntax, object.kind);
    // CONTRACT: a syntax without a name leaves the name that stood there.
    if (name)
        object.syntaxName.Assign(name, BString::Strlen(name));
}

int BMibInfo::Name2Oid(const BString& name, BObjectIdentifier& oid) const
{
    BString module, object, suffix;
    if (!m_owner || name.empty() || !SplitName(name, module, object, suffix))
        return kMibInfoNotFound;
    const SRqHndlrMapEntry* entry = nullptr;
    // Another module's object is one of ours only under its joined name.
    if (module.empty() || module == m_moduleName) {
        if (object == m_objectName)
            return oid.Set(m_owner->Oid()) ? 0 : kMibInfoNotFound;
        entry = FindObject(*m_owner, object);
    }
    if (!entry && !module.empty())
        entry = FindObject(*m_owner, JoinName(module, object));
    BObjectIdentifier found;
    if (!entry || !ObjectOid(*m_owner, *entry, found) || !oid.Set(found))
        return kMibInfoNotFound;
    return 0;
}

int BMibInfo::GetObjParams(const BString& name, BMibObject& object) const
{
    BObjectIdentifier oid;
    const int result = Name2Oid(name, oid);
    return result ? result : GetObjParams(oid, object);
}

int BMibInfo::GetObjParams(const BObjectIdentifier& oid, BMibObject& object) const
{
    if (!m_owner || !m_owner->Oid().IsStartingSubOidOf(oid))
        return kMibInfoNotFound;
    const unsigned length = m_owner->Oid().Length();
    const bool isOwner = oid.Length() == length;
    const SRqHndlrMapEntry* entry = isOwner ? nullptr : FindObject(*m_owner, oid[length]);
    BObjectIdentifier found;
    if (isOwner ? !found.Set(oid) : !entry || !ObjectOid(*m_owner, *entry, found))
        return kMibInfoNotFound;

    if (isOwner)
        object.kind = KindOfOwner(*m_owner);
    else
        object.kind = IsTableOrRowImpl(*m_owner) ? eMibObjectColumn : eMibObjectLeaf;
    object.oid = static_cast<BObjectIdentifier&&>(found);
    object.name = isOwner || IsScalarImpl(*m_owner) ? m_objectName : BString(entry->name);
    object.module = m_moduleName;
    object.syntax = isOwner ? eMibSyntaxNotLeaf : SyntaxOf(*entry);
    object.access = isOwner ? 0 : entry->access;
    object.info = this;
    UpdateSyntaxName(entry, object);
    return 0;
}

int BMibInfo::GetLeafList(BOidArray& leaves) const
{
    leaves.Clear();
    const SRqHndlrMapEntry* entry = m_owner ? NextObject(*m_owner, nullptr) : nullptr;
    for (; entry; entry = NextObject(*m_owner, entry)) {
        BObjectIdentifier oid;
        if (!ObjectOid(*m_owner, *entry, oid) || !leaves.PushBack(oid))
            return kMibInfoNotFound;
    }
    return 0;
}

int BMibInfo::GetLeafList(BStringArray& leaves) const
{
    leaves.Clear();
    const SRqHndlrMapEntry* entry = m_owner ? NextObject(*m_owner, nullptr) : nullptr;
    for (; entry; entry = NextObject(*m_owner, entry)) {
        if (!leaves.PushBack(BString(entry->name)))
            return kMibInfoNotFound;
    }
    return 0;
}

int BMibInfo::GetEnumValue(const BString& object, const BString& label, int& value) const
{
    const SConstraintMapEntry* item =
        m_owner ? EnumerationItems(FindObject(*m_owner, object)) : nullptr;
    for (; item && item->kind == eConstraintItem; ++item) {
        if (VKStrcmp(item->name, label.c_str()) == 0) {
            value = item->low;
            return 1;
        }
    }
    return 0;
}

int BMibInfo::GetEnumLabel(const BString& object, int value, BString& label) const
{
    const SConstraintMapEntry* item =
        m_owner ? EnumerationItems(FindObject(*m_owner, object)) : nullptr;
    for (; item && item->kind == eConstraintItem; ++item) {
        if (item->low == value) {
            label.Assign(item->name, BString::Strlen(item->name));
            return 1;
        }
    }
    return 0;
}

int BMibInfo::NextInstanceInColumn(unsigned id, const BString& tableName, unsigned column,
                                   const BObjectIdentifier& index,
                                   BObjectIdentifier& nextIndex) const
{
    if (!m_owner || tableName.empty() || !IsTableImpl(*m_owner))
        return 0;
    if (tableName != m_owner->Name() && tableName != m_objectName)
        return 0;
    BMibTableImpl* table = dynamic_cast<BMibTableImpl*>(m_owner);
    if (!table)
        return 0;
    TMutexLock guard(m_owner->Mutex());
    return HostCall([&] { return table->NextIndex(id, column, index, nextIndex); }, 0);
}

} // namespace VLK
