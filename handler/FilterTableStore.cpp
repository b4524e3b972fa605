// A view filter table's rows in the store.
#include <vkmibh/filter.h>

#include "foundation/HostCall.h"

#include <cstdio>

namespace VLK {

namespace {

// The numbers of a record's fields.
enum EField {
    eFieldViewName = 1,
    eFieldSubtree = 2,
    eFieldMask = 3,
    eFieldType = 4,
    eFieldStorageType = 5,
    eFieldRowStatus = 6
};

bool IsKept(const BFilterTable::Entry& row)
{
    return row.storageType == eStorageNonVolatile && row.rowStatus == eRowActive;
}

} // namespace

bool BFilterTable::SaveToNV()
{
    TMutexLock lock(m_lock);
    VKDbgModuleTraceClass(eTraceFilterTable, "SaveToNV [%s]", m_section ? m_section : "");
    if (!m_store || !m_section)
        return false;
    const auto open = [this] {
        m_store->OpenSection(m_section);
        return true;
    };
    // A store that could not drop the earlier records gets none beside them.
    if (!HostCall(open, false))
        return false;
    bool isSaved = true;
    int number = 0;
    for (int position = 0; position < End(); ++position) {
        const Entry& row = *RowOf(position);
        if (IsKept(row))
            isSaved = SaveRow(++number, row) && isSaved;
    }
    return isSaved;
}

// False when the store throws.
bool BFilterTable::SaveRow(int number, const Entry& row)
{
    char key[sizeof "-2147483648"];
    std::snprintf(key, sizeof key, "%d", number);
    const auto save = [&] {
        m_store->SetString(m_section, key, row.viewName, eFieldViewName, 0);
        m_store->SetOid(m_section, key, row.subtree, eFieldSubtree, 0);
        m_store->SetOctets(m_section, key, row.mask, eFieldMask, 0);
        m_store->SetInt(m_section, key, row.type, LabelFilterType(row.type), eFieldType, 0);
        m_store->SetInt(m_section, key, row.storageType, LabelStorageType(row.storageType),
                        eFieldStorageType, 0);
        m_store->SetInt(m_section, key, row.rowStatus, LabelRowStatus(row.rowStatus),
                        eFieldRowStatus, 0);
        return true;
    };
    return HostCall(save, false);
}

bool BFilterTable::InitFromNV(bool implied)
{
    TMutexLock lock(m_lock);
    VKDbgModuleTraceClass(eTraceFilterTable, "InitFromNV [%s]", m_section ? m_section : "");
    if (!m_store || !m_section)
        return false;
    Clear();
    const int count = HostCall([this] { return m_store->GetRecordCount(m_section); }, -1);
    bool isLoaded = count >= 0;
    for (int position = 0; position < count; ++position)
        isLoaded = LoadRow(position, implied) && isLoaded;
    return isLoaded;
}

// Reads all six fields of a record. A store that throws cannot be read.
bool BFilterTable::ReadRow(int position, Entry& row)
{
    int type = 0;
    int storageType = 0;
    int rowStatus = 0;
    const auto read = [&] {
        return m_store->GetStringAt(m_section, position, row.viewName, eFieldViewName) == 0 &&
               m_store->GetOidAt(m_section, position, row.subtree, eFieldSubtree) == 0 &&
               m_store->GetOctetsAt(m_section, position, row.mask, eFieldMask) == 0 &&
               m_store->GetIntAt(m_section, position, type, eFieldType) == 0 &&
               m_store->GetIntAt(m_section, position, storageType, eFieldStorageType) == 0 &&
               m_store->GetIntAt(m_section, position, rowStatus, eFieldRowStatus) == 0;
    };
    if (!HostCall(read, false))
        return false;
    row.type = static_cast<EFilterType>(type);
    row.storageType = static_cast<EStorageType>(storageType);
    row.rowStatus = static_cast<ERowStatus>(rowStatus);
    return true;
}

// False when there is no memory for a row that could be read. The first of two
// records of one index stays.
bool BFilterTable::LoadRow(int position, bool implied)
{
    Entry row;
    if (!ReadRow(position, row) || row.rowStatus != eRowActive)
        return true;
    BObjectIdentifier index;
    return Insert(row.viewName, row.subtree, row.mask, row.type, row.storageType, eRowActive,
                  implied) ||
           (MakeIndex(row.viewName, row.subtree, implied, index) && Find(index) >= 0);
}

} // namespace VLK
