// Names, identifiers and parameters of the objects that an implementation serves.
#include <vkmibh/mibinfo.h>

#include <utility>

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

int SyntaxOf(const SRqHndlrMapEntry& entry, const SConstraintMapEntry* constraint)
{
    switch (entry.kind) {
    case eKindDisplayString:
        return eMibSyntaxDisplayString;
    case eKindRowStatus:
    case eKindEntryStatus:
    case eKindEnumerated:
        return eMibSyntaxEnumerated;
    case eKindInteger: {
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

// False without memory: the string then keeps what it held.
bool AssignText(BString& string, const char* text)
{
    BString copy(text);
    if (copy.length() != BString::Strlen(text))
        return false;
    string = std::move(copy);
    return true;
}

// Names the object's syntax, if it has a name; false without memory.
bool UpdateSyntaxName(const SConstraintMapEntry* constraint, BMibObject& object)
{
    const char* name = constraint && constraint->name && *constraint->name
                           ? constraint->name
                           : SyntaxName(object.syntax, object.kind);
    return !name || AssignText(object.syntaxName, name);
}

// Empties the list and gives every object to `append`, which is false without memory.
template <class List, class Append>
int ListObjects(const BMibImpl* owner, List& list, Append append)
{
    list.Clear();
    const SRqHndlrMapEntry* entry = owner ? NextObject(*owner, nullptr) : nullptr;
    for (; entry; entry = NextObject(*owner, entry)) {
        if (!append(*entry))
            return kMibInfoNotFound;
    }
    return 0;
}

// The first item of the object's enumeration that the test accepts; null when none does.
template <class Test>
const SConstraintMapEntry* FindItem(const BMibImpl* owner, const BString& object, Test accepts)
{
    const SConstraintMapEntry* item =
        owner ? EnumerationItems(FindObject(*owner, object)) : nullptr;
    for (; item && item->kind == eConstraintItem; ++item) {
        if (accepts(*item))
            return item;
    }
    return nullptr;
}

} // namespace

IMIBInfo::~IMIBInfo() = default;

BMibInfo::~BMibInfo() = default;

int BMibInfo::Name2Oid(const BString& name, BObjectIdentifier& oid) const
{
    BString module, object, suffix;
    if (!m_owner || name.empty() || !SplitName(name, module, object, suffix))
        return kMibInfoNotFound;
    // Another module's object is one of ours only under its joined name.
    const bool isOurs = module.empty() || module == m_moduleName;
    const bool isOwner = isOurs && object == m_objectName;
    const SRqHndlrMapEntry* entry = isOurs && !isOwner ? FindObject(*m_owner, object) : nullptr;
    if (!isOwner && !entry && !module.empty())
        entry = FindJoinedObject(*m_owner, module, object);
    BObjectIdentifier found;
    if (isOwner ? !found.Set(m_owner->Oid()) : !entry || !ObjectOid(*m_owner, *entry, found))
        return kMibInfoNotFound;
    oid = std::move(found);
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
    BMibObject found;
    if (isOwner ? !found.oid.Set(oid) : !entry || !ObjectOid(*m_owner, *entry, found.oid))
        return kMibInfoNotFound;

    if (isOwner)
        found.kind = KindOfOwner(*m_owner);
    else
        found.kind = IsTableOrRowImpl(*m_owner) ? eMibObjectColumn : eMibObjectLeaf;
    // Read once: a registration may be resolving it.
    const SConstraintMapEntry* constraint = entry ? entry->Constraint() : nullptr;
    const bool hasOwnersName = isOwner || IsScalarImpl(*m_owner);
    found.syntax = isOwner ? eMibSyntaxNotLeaf : SyntaxOf(*entry, constraint);
    found.access = isOwner ? 0 : entry->access;
    found.info = this;
    if (!AssignText(found.name, hasOwnersName ? m_objectName.c_str() : entry->name) ||
        !AssignText(found.module, m_moduleName.c_str()) || !UpdateSyntaxName(constraint, found))
        return kMibInfoNotFound;
    // CONTRACT: a syntax without a name leaves the name that stood there.
    if (found.syntaxName.empty())
        found.syntaxName = std::move(object.syntaxName);
    object = std::move(found);
    return 0;
}

int BMibInfo::GetLeafList(BOidArray& leaves) const
{
    return ListObjects(m_owner, leaves, [&](const SRqHndlrMapEntry& entry) {
        BObjectIdentifier oid;
        return ObjectOid(*m_owner, entry, oid) && leaves.PushBack(oid);
    });
}

int BMibInfo::GetLeafList(BStringArray& leaves) const
{
    return ListObjects(m_owner, leaves, [&](const SRqHndlrMapEntry& entry) {
        BString name;
        return AssignText(name, entry.name) && leaves.PushBack(name);
    });
}

int BMibInfo::GetEnumValue(const BString& object, const BString& label, int& value) const
{
    const SConstraintMapEntry* item = FindItem(m_owner, object, [&](const auto& candidate) {
        const char* text = candidate.name;
        return label.compare(0, label.length(), text, BString::Strlen(text)) == 0;
    });
    if (item)
        value = item->low;
    return item != nullptr;
}

int BMibInfo::GetEnumLabel(const BString& object, int value, BString& label) const
{
    const SConstraintMapEntry* item =
        FindItem(m_owner, object, [&](const auto& candidate) { return candidate.low == value; });
    return item && AssignText(label, item->name);
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
