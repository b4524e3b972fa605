#include "modules/hostresources/HrStorage.h"

#include "modules/hostresources/HrValues.h"
#include "modules/hostresources/IndexedRows.h"

#include <climits>

namespace VLK::modules {

namespace {

constexpr unsigned kDescrMost = 255;

} // namespace

using Table = CHrStorageTable;

VKMIBH_CONSTINIT SRqHndlrMapEntry CHrMemorySize::s_map[] = {
    ScalarRow<eKindInteger, &CHrMemorySize::OnGet>(2, "hrMemorySize", eAsnInteger, eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CHrMemorySize::s_constraints[] = {
    {eConstraintRange, 2, nullptr, 0, INT_MAX}, kConstraintEnd};

CHrMemorySize::CHrMemorySize(IHostSource& source)
    : BMibScalarImpl(BString("HOST-RESOURCES-MIB.hrMemorySize"),
                     BObjectIdentifier(BString("1.3.6.1.2.1.25.2.2"))),
      m_source(source)
{
}

// Of a scalar alone, noSuchName would be the error of the whole request.
int CHrMemorySize::Get(unsigned id, BVarBind& binding)
{
    const int status = BMibScalarImpl::Get(id, binding);
    if (status != eSnmpNoSuchName)
        return status;
    binding.Value().SetV2Exception(eNoSuchInstance);
    return eSnmpNoError;
}

int CHrMemorySize::OnGet(unsigned, int& value)
{
    const std::optional<uint64_t> total = m_source.ReadMemory().total;
    value = static_cast<int>(std::min<uint64_t>(total.value_or(0), INT_MAX));
    return total ? eSnmpNoError : eSnmpNoSuchName;
}

VKMIBH_CONSTINIT SRqHndlrMapEntry CHrStorageTable::s_map[] = {
    ColumnRow<eKindInteger, &Table::OnGet_Index>(eIndex, "hrStorageIndex", eAsnInteger,
                                                 eRqReadOnly),
    ColumnRow<eKindObjectId, &Table::OnGet_Type>(eType, "hrStorageType", eAsnObjectId, eRqReadOnly),
    ColumnRow<eKindDisplayString, &Table::OnGet_Descr>(eDescr, "hrStorageDescr", eAsnOctetString,
                                                       eRqReadOnly),
    ColumnRow<eKindInteger, &Table::OnGet<&SStorageRow::unit>>(
        eAllocationUnits, "hrStorageAllocationUnits", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindInteger, &Table::OnGet<&SStorageRow::size>>(eSize, "hrStorageSize", eAsnInteger,
                                                               eRqReadOnly),
    ColumnRow<eKindInteger, &Table::OnGet<&SStorageRow::used>>(eUsed, "hrStorageUsed", eAsnInteger,
                                                               eRqReadOnly),
    kRqEnd};

const SConstraintMapEntry CHrStorageTable::s_constraints[] = {
    {eConstraintRange, eIndex, nullptr, 1, INT_MAX},
    {eConstraintConvention, eDescr, cszDisplayString, 0, 0},
    {eConstraintRange, eAllocationUnits, nullptr, 1, INT_MAX},
    {eConstraintRange, eSize, nullptr, 0, INT_MAX},
    {eConstraintRange, eUsed, nullptr, 0, INT_MAX},
    kConstraintEnd};

CHrStorageTable::CHrStorageTable(IHostSource& source, unsigned timeToLive)
    : BMibTableImpl(BString("HOST-RESOURCES-MIB.hrStorageEntry"),
                    BObjectIdentifier(BString("1.3.6.1.2.1.25.2.3.1"))),
      m_storage(source, timeToLive)
{
}

int CHrStorageTable::NextIndex(unsigned id, unsigned, const BObjectIdentifier& index,
                               BObjectIdentifier& nextIndex)
{
    const auto rows = m_storage.At(id);
    const SStorageRow* const row = FindRowAfter(*rows, index);
    return row && nextIndex.Set(row->index);
}

int CHrStorageTable::OnGet_Index(const BObjectIdentifier& index, unsigned id, int& value)
{
    const auto rows = m_storage.At(id);
    const SStorageRow* const row = FindRow(*rows, index);
    if (!row)
        return eSnmpNoSuchName;
    value = static_cast<int>(row->index);
    return eSnmpNoError;
}

int CHrStorageTable::OnGet_Type(const BObjectIdentifier& index, unsigned id,
                                BObjectIdentifier& value)
{
    const auto rows = m_storage.At(id);
    const SStorageRow* const row = FindRow(*rows, index);
    return row ? GiveType(eHrStorage, row->type, value) : eSnmpNoSuchName;
}

int CHrStorageTable::OnGet_Descr(const BObjectIdentifier& index, unsigned id, BString& value)
{
    const auto rows = m_storage.At(id);
    const SStorageRow* const row = FindRow(*rows, index);
    return row ? GiveText(row->description, kDescrMost, value) : eSnmpNoSuchName;
}

template <int SStorageRow::*field>
int CHrStorageTable::OnGet(const BObjectIdentifier& index, unsigned id, int& value)
{
    const auto rows = m_storage.At(id);
    const SStorageRow* const row = FindRow(*rows, index);
    if (!row)
        return eSnmpNoSuchName;
    value = row->*field;
    return eSnmpNoError;
}

} // namespace VLK::modules
