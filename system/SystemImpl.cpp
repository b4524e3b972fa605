// The system group as SNMP sees it.
#include <vkmibh/system.h>

#include "system/UptimeFile.h"

#include <new>

namespace VLK {

namespace {

BObjectIdentifier SystemOid() { return BObjectIdentifier(lenOidSystem, oidSystem); }

} // namespace

VKMIBH_CONSTINIT SRqHndlrMapEntry CSystem::s_rqhndlrEntries[] = {
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysDescr>(1, "sysDescr", eAsnOctetString,
                                                            eRqReadOnly),
    ScalarRow<eKindObjectId, &CSystem::OnGet_SysObjectID>(2, "sysObjectID", eAsnObjectId,
                                                          eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSystem::OnGet_SysUpTime>(3, "sysUpTime", eAsnTimeTicks, eRqReadOnly),
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysContact, &CSystem::OnSet_SysContact>(
        4, "sysContact", eAsnOctetString, eRqReadWrite),
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysName, &CSystem::OnSet_SysName>(
        5, "sysName", eAsnOctetString, eRqReadWrite),
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysLocation, &CSystem::OnSet_SysLocation>(
        6, "sysLocation", eAsnOctetString, eRqReadWrite),
    ScalarRow<eKindInteger, &CSystem::OnGet_SysServices>(7, "sysServices", eAsnInteger,
                                                         eRqReadOnly),
    kRqEnd};

// CONTRACT: the member's name is spelled so.
const SConstraintMapEntry CSystem::s_sonstraintEntries[] = {
    {eConstraintRefined, 1, cszDisplayString, 0, 0},
    {eConstraintRefined, 4, cszDisplayString, 0, 0},
    {eConstraintRefined, 5, cszDisplayString, 0, 0},
    {eConstraintRefined, 6, cszDisplayString, 0, 0},
    {eConstraintRange, 7, nullptr, 0, 127},
    kConstraintEnd};

VKMIBH_CONSTINIT SRqHndlrMapEntry CSystemV2::s_rqhndlrEntries[] = {
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysDescr>(1, "sysDescr", eAsnOctetString,
                                                            eRqReadOnly),
    ScalarRow<eKindObjectId, &CSystem::OnGet_SysObjectID>(2, "sysObjectID", eAsnObjectId,
                                                          eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSystem::OnGet_SysUpTime>(3, "sysUpTime", eAsnTimeTicks, eRqReadOnly),
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysContact, &CSystem::OnSet_SysContact>(
        4, "sysContact", eAsnOctetString, eRqReadWrite),
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysName, &CSystem::OnSet_SysName>(
        5, "sysName", eAsnOctetString, eRqReadWrite),
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysLocation, &CSystem::OnSet_SysLocation>(
        6, "sysLocation", eAsnOctetString, eRqReadWrite),
    ScalarRow<eKindInteger, &CSystem::OnGet_SysServices>(7, "sysServices", eAsnInteger,
                                                         eRqReadOnly),
    ScalarRow<eKindUnsigned, &CSystemV2::OnGet_SysORLastChange>(8, "sysORLastChange", eAsnTimeTicks,
                                                                eRqReadOnly),
    kRqEnd};

CSystem::NVCallback::~NVCallback() = default;

int CSystem::NVCallback::Update() { return m_system->SaveToNV(); }

CSystem::CSystem(BMib2System& system) : CSystem(BString("RFC1213-MIB.system"), system) {}

CSystem::CSystem(const BString& name, BMib2System& system)
    : BMibScalarGroupImpl(name, SystemOid()), m_system(system), m_callback(&system)
{
}

CSystem::~CSystem() = default;

SRqHndlrMapEntry* CSystem::GetRqHndlrMap() const { return s_rqhndlrEntries; }

const SConstraintMapEntry* CSystem::GetConstraintMap() const { return s_sonstraintEntries; }

int CSystem::OnGet_SysDescr(unsigned, BString& value)
{
    value = m_system.Description();
    return eSnmpNoError;
}

int CSystem::OnGet_SysObjectID(unsigned, BObjectIdentifier& value)
{
    value = m_system.ObjectID();
    return eSnmpNoError;
}

// CONTRACT: the uptime of the host, where sysORLastChange and sysORUpTime are
// readings of the agent's own clock.
int CSystem::OnGet_SysUpTime(unsigned, unsigned& value)
{
    ReadHostUptime(value);
    return eSnmpNoError;
}

int CSystem::OnGet_SysContact(unsigned, BString& value)
{
    value = m_system.Contact();
    return eSnmpNoError;
}

int CSystem::OnGet_SysName(unsigned, BString& value)
{
    value = m_system.Name();
    return eSnmpNoError;
}

int CSystem::OnGet_SysLocation(unsigned, BString& value)
{
    value = m_system.Location();
    return eSnmpNoError;
}

int CSystem::OnGet_SysServices(unsigned, int& value)
{
    value = m_system.Services();
    return eSnmpNoError;
}

int CSystem::OnSet_SysContact(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
{
    return SetText(&BMib2System::Contact, &BMib2System::SetContact, op, value, slot);
}

int CSystem::OnSet_SysName(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
{
    return SetText(&BMib2System::Name, &BMib2System::SetName, op, value, slot);
}

int CSystem::OnSet_SysLocation(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
{
    return SetText(&BMib2System::Location, &BMib2System::SetLocation, op, value, slot);
}

// The slot keeps the text as it was before the SET.
int CSystem::SetText(FGetText get, FSetText set, ESnmpSetOpCode op, const BString& value,
                     void** slot)
{
    BString* const before = slot ? static_cast<BString*>(*slot) : nullptr;
    switch (op) {
    case eSetTest:
        return slot ? KeepText((m_system.*get)(), slot) : int(eSnmpResourceUnavailable);
    case eSetCommit:
        return ChangeText(set, value) ? eSnmpNoError : eSnmpCommitFailed;
    case eSetUndo:
        return !before || ChangeText(set, *before) ? eSnmpNoError : eSnmpUndoFailed;
    case eSetCleanup:
        delete before;
        if (slot)
            *slot = nullptr;
        return eSnmpNoError;
    default:
        return eSnmpGenErr;
    }
}

int CSystem::KeepText(const BString& text, void** slot)
{
    BString* const copy = new (std::nothrow) BString(text);
    if (!copy || *copy != text) {
        delete copy;
        return eSnmpResourceUnavailable;
    }
    *slot = copy;
    return eSnmpNoError;
}

// Puts the text into the record and asks the store to save it.
bool CSystem::ChangeText(FSetText set, const BString& text)
{
    if (!(m_system.*set)(text))
        return false;
    if (INonVolatile* store = m_system.Store())
        store->RequestUpdate(&m_callback);
    return true;
}

CSystemV2::CSystemV2(BMib2System& system) : CSystem(BString("SNMPv2-MIB.system"), system) {}

CSystemV2::~CSystemV2() = default;

SRqHndlrMapEntry* CSystemV2::GetRqHndlrMap() const { return s_rqhndlrEntries; }

int CSystemV2::OnGet_SysORLastChange(unsigned, unsigned& value)
{
    value = System().ORLastChange();
    return eSnmpNoError;
}

} // namespace VLK
