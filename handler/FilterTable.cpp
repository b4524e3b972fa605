// The rows of a view filter table and their indexes.
#include <vkmibh/filter.h>

#include <new>
#include <utility>

namespace VLK {

BFilterTable::BFilterTable(INonVolatile* store) : BFilterTable(store, nullptr) {}

BFilterTable::BFilterTable(INonVolatile* store, const char* section)
    : m_store(store), m_section(section), m_lock(true), m_walked(-1)
{
}

BFilterTable::~BFilterTable() { Clear(); }

BFilterTable::Entry* BFilterTable::RowOf(int position) const
{
    return static_cast<Entry*>(DataAt(position));
}

int BFilterTable::End() const { return static_cast<int>(BMapOid2Ptr::Count()); }

bool BFilterTable::Insert(const BString& viewName, const BObjectIdentifier& subtree,
                          const BOctetString& mask, EFilterType type, EStorageType storageType,
                          ERowStatus rowStatus, bool implied)
{
    TMutexLock lock(m_lock);
    BObjectIdentifier index;
    if (!MakeIndex(viewName, subtree, implied, index))
        return false;
    Entry* const row = new (std::nothrow) Entry;
    if (!row)
        return false;
    row->viewName = viewName;
    row->subtree = subtree;
    row->mask = mask;
    row->type = type;
    row->storageType = storageType;
    row->rowStatus = rowStatus;
    const bool isWhole = row->viewName.length() == viewName.length() &&
                         row->subtree.Length() == subtree.Length() &&
                         row->mask.Length() == mask.Length();
    if (isWhole && Insert(index, row))
        return true;
    delete row;
    return false;
}

bool BFilterTable::Insert(const BObjectIdentifier& index, Entry* row)
{
    TMutexLock lock(m_lock);
    return row && BMapOid2Ptr::Insert(index, row);
}

BFilterTable::Entry* BFilterTable::Remove(const BObjectIdentifier& index)
{
    TMutexLock lock(m_lock);
    return static_cast<Entry*>(BMapOid2Ptr::Remove(index));
}

void BFilterTable::Clear()
{
    TMutexLock lock(m_lock);
    for (int position = 0; position < End(); ++position)
        delete RowOf(position);
    BMapOid2Ptr::Clear();
}

BFilterTable::Entry* BFilterTable::GetRow(const BString& viewName, const BObjectIdentifier& subtree,
                                          bool implied)
{
    TMutexLock lock(m_lock);
    BObjectIdentifier index;
    return MakeIndex(viewName, subtree, implied, index) ? GetRow(index) : nullptr;
}

BFilterTable::Entry* BFilterTable::GetRow(const BObjectIdentifier& index)
{
    TMutexLock lock(m_lock);
    return static_cast<Entry*>(GetData(index));
}

unsigned BFilterTable::Count()
{
    TMutexLock lock(m_lock);
    return BMapOid2Ptr::Count();
}

BFilterTable::Entry* BFilterTable::RowAt(int position)
{
    TMutexLock lock(m_lock);
    return position >= 0 && position < End() ? RowOf(position) : nullptr;
}

bool BFilterTable::NextIndex(const BObjectIdentifier& index, BObjectIdentifier& nextIndex)
{
    TMutexLock lock(m_lock);
    const int position = Next(index);
    BObjectIdentifier next;
    if (position < 0 || !next.Set(KeyAt(position)))
        return false;
    nextIndex = std::move(next);
    return true;
}

bool BFilterTable::MakeIndex(const BString& viewName, const BObjectIdentifier& subtree,
                             bool implied, BObjectIdentifier& index)
{
    BObjectIdentifier made;
    made.Append(viewName.c_str(), static_cast<int>(viewName.length()), false);
    // The arcs of a name are appended one by one, and one may find no memory.
    if (made.Length() != viewName.length() + 1 || !made.Append(subtree, implied))
        return false;
    index = std::move(made);
    return true;
}

bool BFilterTable::IsIndexValid(const BObjectIdentifier& index, bool implied)
{
    const int length = static_cast<int>(index.Length());
    int end = 0;
    if (length < (implied ? 3 : 4) || !index.IsCreatedFromAsciiStr(end, false))
        return false;
    if (implied)
        return end < length;
    return end + 2 <= length && index[unsigned(end)] == unsigned(length - end - 1);
}

bool BFilterTable::SplitIndex(const BObjectIdentifier& index, BString& viewName,
                              BObjectIdentifier& subtree, bool implied)
{
    if (!IsIndexValid(index, implied))
        return false;
    const unsigned nameLength = index[0];
    BString name;
    for (unsigned i = 1; i <= nameLength; ++i)
        name.Append(static_cast<char>(index[i]));
    BObjectIdentifier family;
    const unsigned from = nameLength + (implied ? 1 : 2);
    if (name.length() != nameLength || !family.Set(index, from, ~0u))
        return false;
    viewName = std::move(name);
    subtree = std::move(family);
    return true;
}

// The position of the last active row of a view below `before`, or -1. Rows may
// carry another name than their index says: names are compared.
int BFilterTable::FindActive(const BString& viewName, int before) const
{
    for (int position = before - 1; position >= 0; --position) {
        const Entry* const row = RowOf(position);
        if (row->rowStatus == eRowActive && row->viewName == viewName)
            return position;
    }
    return -1;
}

// By address alone: the row may be gone.
int BFilterTable::PositionOf(const Entry* row) const
{
    if (m_walked >= 0 && m_walked < End() && RowOf(m_walked) == row)
        return m_walked;
    int position = End() - 1;
    while (position >= 0 && RowOf(position) != row)
        --position;
    return position;
}

BFilterTable::Entry* BFilterTable::WalkTo(int position)
{
    m_walked = position;
    return position < 0 ? nullptr : RowOf(position);
}

BFilterTable::Entry* BFilterTable::GetLastRowWithViewName(const BString& viewName)
{
    TMutexLock lock(m_lock);
    return WalkTo(FindActive(viewName, End()));
}

BFilterTable::Entry* BFilterTable::GetPrevRowWithSameViewName(const Entry* row)
{
    TMutexLock lock(m_lock);
    const int position = PositionOf(row);
    return position < 0 ? nullptr : WalkTo(FindActive(row->viewName, position));
}

} // namespace VLK
