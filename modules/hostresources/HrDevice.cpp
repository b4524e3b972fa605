#include "modules/hostresources/HrDevice.h"

#include "modules/hostresources/HrValues.h"
#include "modules/hostresources/IndexedRows.h"

#include <climits>

namespace VLK::modules {

namespace {

constexpr unsigned kDescrMost = 64;

} // namespace

VKMIBH_CONSTINIT SRqHndlrMapEntry CHrDeviceTable::s_map[] = {
    ColumnRow<eKindInteger, &CHrDeviceTable::OnGet_Index>(eIndex, "hrDeviceIndex", eAsnInteger,
                                                          eRqReadOnly),
    ColumnRow<eKindObjectId, &CHrDeviceTable::OnGet_Type>(eType, "hrDeviceType", eAsnObjectId,
                                                          eRqReadOnly),
    ColumnRow<eKindDisplayString, &CHrDeviceTable::OnGet_Descr>(eDescr, "hrDeviceDescr",
                                                                eAsnOctetString, eRqReadOnly),
    ColumnRow<eKindObjectId, &CHrDeviceTable::OnGet_Id>(eId, "hrDeviceID", eAsnObjectId,
                                                        eRqReadOnly),
    ColumnRow<eKindEnumerated, &CHrDeviceTable::OnGet_Status>(eStatus, "hrDeviceStatus",
                                                              eAsnInteger, eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CHrDeviceTable::s_constraints[] = {
    {eConstraintRange, eIndex, nullptr, 1, INT_MAX},
    {eConstraintRange, eDescr, nullptr, 0, kDescrMost},
    {eConstraintEnumeration, eStatus, nullptr, 0, 0},
    {eConstraintItem, eStatus, "unknown", eDeviceUnknown, 0},
    {eConstraintItem, eStatus, "running", eDeviceRunning, 0},
    {eConstraintItem, eStatus, "warning", 3, 0},
    {eConstraintItem, eStatus, "testing", 4, 0},
    {eConstraintItem, eStatus, "down", 5, 0},
    kConstraintEnd};

CHrDeviceTable::CHrDeviceTable(CHostDevices& devices)
    : BMibTableImpl(BString("HOST-RESOURCES-MIB.hrDeviceEntry"),
                    BObjectIdentifier(BString("1.3.6.1.2.1.25.3.2.1"))),
      m_devices(devices)
{
}

int CHrDeviceTable::NextIndex(unsigned id, unsigned, const BObjectIdentifier& index,
                              BObjectIdentifier& nextIndex)
{
    const auto rows = m_devices.At(id);
    const SDeviceRow* const row = FindRowAfter(rows->devices, index);
    return row && nextIndex.Set(row->index);
}

int CHrDeviceTable::OnGet_Index(const BObjectIdentifier& index, unsigned id, int& value)
{
    const auto rows = m_devices.At(id);
    const SDeviceRow* const row = FindRow(rows->devices, index);
    if (!row)
        return eSnmpNoSuchName;
    value = static_cast<int>(row->index);
    return eSnmpNoError;
}

int CHrDeviceTable::OnGet_Type(const BObjectIdentifier& index, unsigned id,
                               BObjectIdentifier& value)
{
    const auto rows = m_devices.At(id);
    const SDeviceRow* const row = FindRow(rows->devices, index);
    return row ? GiveType(eHrDevice, row->type, value) : eSnmpNoSuchName;
}

int CHrDeviceTable::OnGet_Descr(const BObjectIdentifier& index, unsigned id, BString& value)
{
    const auto rows = m_devices.At(id);
    const SDeviceRow* const row = FindRow(rows->devices, index);
    return row ? GiveText(row->description, kDescrMost, value) : eSnmpNoSuchName;
}

int CHrDeviceTable::OnGet_Id(const BObjectIdentifier& index, unsigned id, BObjectIdentifier& value)
{
    const auto rows = m_devices.At(id);
    return FindRow(rows->devices, index) ? GiveUnknown(value) : eSnmpNoSuchName;
}

int CHrDeviceTable::OnGet_Status(const BObjectIdentifier& index, unsigned id, EDeviceStatus& value)
{
    const auto rows = m_devices.At(id);
    const SDeviceRow* const row = FindRow(rows->devices, index);
    if (!row)
        return eSnmpNoSuchName;
    value = row->status;
    return eSnmpNoError;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CHrProcessorTable::s_map[] = {
    ColumnRow<eKindObjectId, &CHrProcessorTable::OnGet_FrwId>(eFrwId, "hrProcessorFrwID",
                                                              eAsnObjectId, eRqReadOnly),
    ColumnRow<eKindInteger, &CHrProcessorTable::OnGet_Load>(eLoad, "hrProcessorLoad", eAsnInteger,
                                                            eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CHrProcessorTable::s_constraints[] = {
    {eConstraintRange, eLoad, nullptr, 0, 100}, kConstraintEnd};

CHrProcessorTable::CHrProcessorTable(CHostDevices& devices)
    : BMibTableImpl(BString("HOST-RESOURCES-MIB.hrProcessorEntry"),
                    BObjectIdentifier(BString("1.3.6.1.2.1.25.3.3.1"))),
      m_devices(devices)
{
}

int CHrProcessorTable::NextIndex(unsigned id, unsigned, const BObjectIdentifier& index,
                                 BObjectIdentifier& nextIndex)
{
    const auto rows = m_devices.At(id);
    const SProcessorRow* const row = FindRowAfter(rows->processors, index);
    return row && nextIndex.Set(row->index);
}

int CHrProcessorTable::OnGet_FrwId(const BObjectIdentifier& index, unsigned id,
                                   BObjectIdentifier& value)
{
    const auto rows = m_devices.At(id);
    return FindRow(rows->processors, index) ? GiveUnknown(value) : eSnmpNoSuchName;
}

int CHrProcessorTable::OnGet_Load(const BObjectIdentifier& index, unsigned id, int& value)
{
    const auto rows = m_devices.At(id);
    const SProcessorRow* const row = FindRow(rows->processors, index);
    if (!row || !row->load)
        return eSnmpNoSuchName;
    value = *row->load;
    return eSnmpNoError;
}

} // namespace VLK::modules
