// Notifications given in one form and asked for in the other.
#include <vkmibh/traps.h>

#include <utility>

#include "values/WholeCopy.h"

namespace VLK {

namespace {

// Unlike an assignment this leaves `to` as it was when there is no memory.
bool CopyTo(BObjectIdentifier& to, const BObjectIdentifier& from)
{
    BObjectIdentifier copy;
    if (!copy.Set(from))
        return false;
    to = std::move(copy);
    return true;
}

} // namespace

BTrap::BTrap(const BVarBindList& bindings) : m_isWhole(CopyWhole(m_bindings, bindings)) {}

BTrap::~BTrap() = default;

void BTrap::NoteCopy(const BObjectIdentifier& copy, const BObjectIdentifier& original)
{
    m_isWhole = m_isWhole && copy.Length() == original.Length();
}

BTrapV1::BTrapV1(const BObjectIdentifier& enterprise, ESNMPv1TrapType generic, int specific,
                 const BVarBindList& bindings)
    : BTrap(bindings), m_enterprise(enterprise), m_generic(generic), m_specific(specific)
{
    NoteCopy(m_enterprise, enterprise);
}

BTrapV1::~BTrapV1() = default;

bool BTrapV1::GetV2TrapOid(BObjectIdentifier& trapOid) const
{
    const BTrapOIDs* const oids = BTrapOIDs::GetInstance();
    return IsWhole() && oids && oids->V1ToV2(m_enterprise, m_generic, m_specific, trapOid);
}

bool BTrapV1::GetV1TrapParams(BObjectIdentifier& enterprise, ESNMPv1TrapType& generic,
                              int& specific) const
{
    if (!IsWhole() || !CopyTo(enterprise, m_enterprise))
        return false;
    generic = m_generic;
    specific = m_specific;
    return true;
}

BTrapV2::BTrapV2(const BObjectIdentifier& trapOid, const BVarBindList& bindings)
    : BTrap(bindings), m_trapOid(trapOid)
{
    NoteCopy(m_trapOid, trapOid);
}

BTrapV2::~BTrapV2() = default;

bool BTrapV2::GetV2TrapOid(BObjectIdentifier& trapOid) const
{
    return IsWhole() && CopyTo(trapOid, m_trapOid);
}

bool BTrapV2::GetV1TrapParams(BObjectIdentifier& enterprise, ESNMPv1TrapType& generic,
                              int& specific) const
{
    const BTrapOIDs* const oids = BTrapOIDs::GetInstance();
    return IsWhole() && oids && oids->V2ToV1(m_trapOid, Bindings(), enterprise, generic, specific);
}

} // namespace VLK
