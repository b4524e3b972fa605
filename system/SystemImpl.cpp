// The system group as SNMP sees it.
#include <vkmibh/system.h>

#include "system/UptimeFile.h"

#include <new>

namespace VLK {

namespace {

BObjectIdentifier SystemOid() { return BObjectIdentifier(lenOidSystem, oidSystem); }

// The rows that both versions of the group have.
constexpr SRqHndlrMapEntry kSysDescr = ScalarRow<eKindDisplayString, &CSystem::OnGet_SysDescr>(
    1, "sysDescr", eAsnOctetString, eRqReadOnly);
constexpr SRqHndlrMapEntry kSysObjectID = ScalarRow<eKindObjectId, &CSystem::OnGet_SysObjectID>(
    2, "sysObjectID", eAsnObjectId, eRqReadOnly);
constexpr SRqHndlrMapEntry kSysUpTime =
    ScalarRow<eKindUnsigned, &CSystem::OnGet_SysUpTime>(3, "sysUpTime", eAsnTimeTicks, eRqReadOnly);
constexpr SRqHndlrMapEntry kSysContact =
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysContact, &CSystem::OnSet_SysContact>(
        4, "sysContact", eAsnOctetString, eRqReadWrite);
constexpr SRqHndlrMapEntry kSysName =
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysName, &CSystem::OnSet_SysName>(
        5, "sysName", eAsnOctetString, eRqReadWrite);
constexpr SRqHndlrMapEntry kSysLocation =
    ScalarRow<eKindDisplayString, &CSystem::OnGet_SysLocation, &CSystem::OnSet_SysLocation>(
        6, "sysLocation", eAsnOctetString, eRqReadWrite);
constexpr SRqHndlrMapEntry kSysServices = ScalarRow<eKindInteger, &CSystem::OnGet_SysServices>(
    7, "sysServices", eAsnInteger, eRqReadOnly);

} // namespace

VKMIBH_CONSTINIT SRqHndlrMapEntry CSystem::s_rqhndlrEntries[] = {
    kSysDescr, kSysObjectID, kSysUpTime, kSysContact, kSysName, kSysLocation, kSysServices, kRqEnd};

// CONTRACT: the member's name is spelled so.
const SConstraintMapEntry CSystem::s_sonstraintEntries[] = {
    {eConstraintRefined, 1, cszDisplayString, 0, 0},
    {eConstraintRefined, 4, cszDisplayString, 0, 0},
    {eConstraintRefined, 5, cszDisplayString, 0, 0},
    {eConstraintRefined, 6, cszDisplayString, 0, 0},
    {eConstraintRange, 7, nullptr, 0, 127},
    kConstraintEnd};

VKMIBH_CONSTINIT SRqHndlrMapEntry CSystemV2::s_rqhndlrEntries[] = {
    kSysDescr,
    kSysObjectID,
    kSysUpTime,
    kSysContact,
    kSysName,
    kSysLocation,
    kSysServices,
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
    return GetText(&BMib2System::m_description, value);
}

int CSystem::OnGet_SysObjectID(unsigned, BObjectIdentifier& value)
{
    return m_system.CopyObjectID(value) ? eSnmpNoError : eSnmpGenErr;
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
    return GetText(&BMib2System::m_contact, value);
}

int CSystem::OnGet_SysName(unsigned, BString& value)
{
    return GetText(&BMib2System::m_name, value);
}

int CSystem::OnGet_SysLocation(unsigned, BString& value)
{
    return GetText(&BMib2System::m_location, value);
}

int CSystem::OnGet_SysServices(unsigned, int& value)
{
    value = m_system.Services();
    return eSnmpNoError;
}

int CSystem::OnSet_SysContact(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
{
    return SetText(&BMib2System::m_contact, op, value, slot);
}

int CSystem::OnSet_SysName(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
{
    return SetText(&BMib2System::m_name, op, value, slot);
}

int CSystem::OnSet_SysLocation(ESnmpSetOpCode op, unsigned, const BString& value, void** slot)
{
    return SetText(&BMib2System::m_location, op, value, slot);
}

int CSystem::GetText(FTextField field, BString& value) const
{
    return m_system.CopyText(field, value) ? eSnmpNoError : eSnmpGenErr;
}

// The slot keeps the text as it was before the SET.
int CSystem::SetText(FTextField field, ESnmpSetOpCode op, const BString& value, void** slot)
{
    BString* const before = slot ? static_cast<BString*>(*slot) : nullptr;
    switch (op) {
    case eSetTest:
        return slot ? KeepText(field, slot) : int(eSnmpResourceUnavailable);
    case eSetCommit:
        return ChangeText(field, value) ? eSnmpNoError : eSnmpCommitFailed;
    case eSetUndo:
        return !before || ChangeText(field, *before) ? eSnmpNoError : eSnmpUndoFailed;
    case eSetCleanup:
        delete before;
        if (slot)
            *slot = nullptr;
        return eSnmpNoError;
    default:
        return eSnmpGenErr;
    }
}

int CSystem::KeepText(FTextField field, void** slot) const
{
    BString* const copy = new (std::nothrow) BString;
    if (!copy || !m_system.CopyText(field, *copy)) {
        delete copy;
        return eSnmpResourceUnavailable;
    }
    *slot = copy;
    return eSnmpNoError;
}

// Puts the text into the record and asks the store to save it.
bool CSystem::ChangeText(FTextField field, const BString& text)
{
    if (!m_system.SetText(field, text))
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
