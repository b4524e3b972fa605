#include "modules/SysORTable.h"

#include <climits>
#include <new>

namespace VLK::modules {

using Table = CSysORTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CSysORTable::s_map[] = {
    ColumnRow<eKindInteger>(eIndex, "sysORIndex", eAsnInteger, eRqNotAccessible),
    ColumnRow<eKindObjectId, &Table::OnGet_Id>(eId, "sysORID", eAsnObjectId, eRqReadOnly),
    ColumnRow<eKindDisplayString, &Table::OnGet_Descr>(eDescr, "sysORDescr", eAsnOctetString,
                                                       eRqReadOnly),
    ColumnRow<eKindUnsigned, &Table::OnGet_UpTime>(eUpTime, "sysORUpTime", eAsnTimeTicks,
                                                   eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CSysORTable::s_constraints[] = {
    {eConstraintRange, eIndex, nullptr, 1, INT_MAX},
    {eConstraintRefined, eDescr, cszDisplayString, 0, 0},
    kConstraintEnd};

CSysORTable::CSysORTable(BMib2System& system, unsigned zero)
    : BMibTableImpl(BString("SNMPv2-MIB.sysOREntry"),
                    BObjectIdentifier(BString("1.3.6.1.2.1.1.9.1"))),
      m_rows(system), m_zero(zero)
{
}

int CSysORTable::NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                           BObjectIdentifier& nextIndex)
{
    return m_rows.NextIndex(id, column, index, nextIndex);
}

int CSysORTable::OnGet_Id(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value)
{
    return m_rows.OnGet_SysORID(index, id, value);
}

int CSysORTable::OnGet_Descr(const BObjectIdentifier& index, unsigned id, BString& value)
{
    return m_rows.OnGet_SysORDescr(index, id, value);
}

int CSysORTable::OnGet_UpTime(const BObjectIdentifier& index, unsigned id, unsigned& value)
{
    const int status = m_rows.OnGet_SysORUpTime(index, id, value);
    value += m_zero;
    return status;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CSysORLastChange::s_map[] = {
    ScalarRow<eKindUnsigned, &CSysORLastChange::OnGet>(8, "sysORLastChange", eAsnTimeTicks,
                                                       eRqReadOnly),
    kRqEnd};

CSysORLastChange::CSysORLastChange(const BMib2System& system, unsigned zero)
    : BMibScalarImpl(BString("SNMPv2-MIB.sysORLastChange"),
                     BObjectIdentifier(BString("1.3.6.1.2.1.1.8"))),
      m_system(system), m_zero(zero)
{
}

int CSysORLastChange::OnGet(unsigned, unsigned& value)
{
    value = m_zero + m_system.ORLastChange();
    return eSnmpNoError;
}

CSysORModule::CSysORModule(BMib2System& system, const FUpTime& sysUpTime)
    : CSysORModule(system, sysUpTime() - system.GetUpTime())
{
}

CSysORModule::CSysORModule(BMib2System& system, unsigned zero)
    : BMibImplGroup(BString("SNMPv2-MIB.sysOR")), m_lastChange(system, zero), m_table(system, zero)
{
}

BMibImpl* CSysORModule::GetImplAt(int index)
{
    if (index == 0)
        return &m_lastChange;
    return index == 1 ? &m_table : nullptr;
}

void SetResources(BMib2System& system, const std::vector<SResource>& resources)
{
    for (int index = 0; system.FirstORIndex(index);)
        system.RemoveORRow(index);
    for (const SResource& resource : resources) {
        if (!system.InsertORRow(BObjectIdentifier(BString(resource.id)),
                                BString(resource.description)))
            throw std::bad_alloc();
    }
}

} // namespace VLK::modules
