// The sysORTable as SNMP sees it.
#include <vkmibh/system.h>

#include <new>
#include <utility>

namespace VLK {

namespace {

// CONTRACT: the row declares no access at all (0); it is not accessible.
constexpr ERqAccess kNoAccess = static_cast<ERqAccess>(0);

} // namespace

VKMIBH_CONSTINIT SRqHndlrMapEntry CSysORTableV2::s_rqhndlrEntries[] = {
    ColumnRow<eKindInteger>(1, "sysORIndex", eAsnInteger, kNoAccess),
    ColumnRow<eKindObjectId, &CSysORTableV2::OnGet_SysORID>(2, "sysORID", eAsnObjectId,
                                                            eRqReadOnly),
    ColumnRow<eKindDisplayString, &CSysORTableV2::OnGet_SysORDescr>(3, "sysORDescr",
                                                                    eAsnOctetString, eRqReadOnly),
    ColumnRow<eKindUnsigned, &CSysORTableV2::OnGet_SysORUpTime>(4, "sysORUpTime", eAsnTimeTicks,
                                                                eRqReadOnly),
    kRqEnd};

// CONTRACT: the member's name is spelled so.
const SConstraintMapEntry CSysORTableV2::s_sonstraintEntries[] = {
    {eConstraintRange, 1, nullptr, 1, 2147483647},
    {eConstraintRefined, 3, cszDisplayString, 0, 0},
    kConstraintEnd};

CSysORTableV2::CSysORTableV2(BMib2System& system)
    : BMibTableImpl(BString("SNMPv2-MIB.sysORTable"),
                    BObjectIdentifier(lenOidSysORTable, oidSysORTable)),
      m_system(system)
{
}

CSysORTableV2::~CSysORTableV2() = default;

SRqHndlrMapEntry* CSysORTableV2::GetRqHndlrMap() const { return s_rqhndlrEntries; }

const SConstraintMapEntry* CSysORTableV2::GetConstraintMap() const { return s_sonstraintEntries; }

int CSysORTableV2::FindRow(const BObjectIdentifier& instance, BMib2System::SysOREntry& row) const
{
    if (instance.Length() != 1)
        return eSnmpNoSuchName;
    const int index = static_cast<int>(instance[0]);
    if (m_system.CopyORRow(index, row))
        return eSnmpNoError;
    return m_system.GetORRow(index) ? eSnmpGenErr : eSnmpNoSuchName;
}

int CSysORTableV2::OnGet_SysORID(const BObjectIdentifier& instance, unsigned,
                                 BObjectIdentifier& value)
{
    BMib2System::SysOREntry row;
    const int status = FindRow(instance, row);
    if (status == eSnmpNoError)
        value = std::move(row.id);
    return status;
}

int CSysORTableV2::OnGet_SysORDescr(const BObjectIdentifier& instance, unsigned, BString& value)
{
    BMib2System::SysOREntry row;
    const int status = FindRow(instance, row);
    if (status == eSnmpNoError)
        value = std::move(row.descr);
    return status;
}

int CSysORTableV2::OnGet_SysORUpTime(const BObjectIdentifier& instance, unsigned, unsigned& value)
{
    BMib2System::SysOREntry row;
    const int status = FindRow(instance, row);
    if (status == eSnmpNoError)
        value = row.upTime;
    return status;
}

// Every column has an instance for every row.
bool CSysORTableV2::NextInstanceInColumn(unsigned, unsigned, const BObjectIdentifier& instance,
                                         BObjectIdentifier& next)
{
    int index = 0;
    const bool found = instance.Length() == 0
                           ? m_system.FirstORIndex(index)
                           : m_system.NextORIndex(static_cast<int>(instance[0]), index);
    return found && next.Set(static_cast<unsigned>(index));
}

int CSysORTableV2::NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                             BObjectIdentifier& nextIndex)
{
    return NextInstanceInColumn(column, id, index, nextIndex);
}

void CSysORTableV2::CreateDemoRow()
{
    static constexpr unsigned kInternet[] = {1, 3, 6, 1};
    constexpr unsigned kUpTime = 123;
    auto* row = new (std::nothrow) BMib2System::SysOREntry(1, BObjectIdentifier(4, kInternet),
                                                           BString("demo description"), kUpTime);
    if (row && !m_system.InsertORRow(1, row))
        delete row;
}

} // namespace VLK
