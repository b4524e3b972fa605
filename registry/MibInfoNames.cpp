// Names of objects: their parts, and what they name.
#include <vkmibh/mibinfo.h>

#include <utility>

#include "registry/MibInfoObjects.h"

namespace VLK {

namespace {

// The arc under a table's identifier at which its entry stands (RFC 2578 section 7.1.12).
constexpr unsigned kEntryArc = 1;

} // namespace

void BMibInfo::SetOwner(BMibImpl* owner)
{
    m_owner = owner;
    m_moduleName.clear();
    if (!owner)
        return;
    BStringTokenizer tokens(owner->Name().c_str(), ".", false);
    m_objectName = tokens.NextToken();
    if (tokens.HasMoreTokens()) {
        m_moduleName = std::move(m_objectName);
        m_objectName = tokens.NextToken();
    }
}

bool BMibInfo::SplitName(const BString& name, BString& module, BString& object, BString& suffix)
{
    module.clear();
    object.clear();
    suffix.clear();
    BStringTokenizer tokens(name.c_str(), ".", false);
    BString token = tokens.NextToken();
    if (!token.empty() && BCharType::IsUpper(token[0])) {
        module = std::move(token);
        token = tokens.NextToken();
    }
    if (token.empty() || !BCharType::IsLower(token[0]))
        return false;
    object = std::move(token);
    const unsigned end = tokens.Offset();
    if (end >= name.length())
        return true;
    suffix = BString(name.c_str() + end, name.length() - end);
    BObjectIdentifier parsed;
    return parsed.AssignFromDottedDecimalStr(suffix);
}

// CONTRACT: with a module the joined text itself must be an entry's name; a map of plain names
// has no leaf by a name that carries its module.
bool BMibInfo::IsLeaf(const BString& name) const
{
    BString module, object, suffix;
    if (!m_owner || !SplitName(name, module, object, suffix))
        return false;
    return module.empty() ? FindObject(*m_owner, object) != nullptr
                          : FindJoinedObject(*m_owner, module, object) != nullptr;
}

bool BMibInfo::IsLeaf(const BObjectIdentifier& oid) const
{
    return m_owner && IsObjectOid(*m_owner, oid);
}

// CONTRACT: only the object part of a name is compared; a table is found under any module's name
// and with any instance after it.
bool BMibInfo::IsTable(const BString& name) const
{
    if (!m_owner || name.empty() || !IsTableOrRowImpl(*m_owner))
        return false;
    if (name == m_owner->Name())
        return true;
    BString module, object, suffix;
    return SplitName(name, module, object, suffix) && object == m_objectName;
}

bool BMibInfo::IsTable(const BObjectIdentifier& oid) const
{
    if (!m_owner || !IsTableOrRowImpl(*m_owner))
        return false;
    const BObjectIdentifier& entry = m_owner->Oid();
    if (oid == entry)
        return true;
    return entry.Length() == oid.Length() + 1 && entry[oid.Length()] == kEntryArc &&
           oid.IsStartingSubOidOf(entry);
}

} // namespace VLK
