// The rows of a view filter table and their indexes.
#include "handler/FilterFinder.h"

#include <cstdint>
#include <new>
#include <utility>

namespace VLK {

namespace {

// A row whose address nobody outside has stands in the map with the lowest bit set. So
// it takes no memory to tell, and rows from outside are right as they are.
static_assert(alignof(BFilterTable::Entry) > 1);
constexpr std::uintptr_t kUnlent = 1;

void* Tagged(BFilterTable::Entry* row)
{
    return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(row) | kUnlent);
}

BFilterTable::Entry* Untagged(void* data)
{
    return reinterpret_cast<BFilterTable::Entry*>(reinterpret_cast<std::uintptr_t>(data) &
                                                  ~kUnlent);
}

} // namespace

BFilterTable::BFilterTable(INonVolatile* store) : BFilterTable(store, nullptr) {}

BFilterTable::BFilterTable(INonVolatile* store, const char* section)
    : m_store(store), m_section(section), m_lock(true), m_walked(-1), m_finder(nullptr)
{
}

BFilterTable::~BFilterTable()
{
    Clear();
    TMutexLock lock(m_lock);
    delete m_finder;
}

BFilterTable::Entry* BFilterTable::RowOf(int position) const { return Untagged(DataAt(position)); }

bool BFilterTable::IsLent(int position) const
{
    return (reinterpret_cast<std::uintptr_t>(DataAt(position)) & kUnlent) == 0;
}

// Whoever gets the address may change the row, now and later.
BFilterTable::Entry* BFilterTable::Lend(int position)
{
    if (position < 0)
        return nullptr;
    Entry* const row = RowOf(position);
    if (!IsLent(position)) {
        SetDataAt(position, row);
        Forget();
    }
    return row;
}

void BFilterTable::Forget()
{
    if (m_finder)
        m_finder->Forget();
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
    if (isWhole && InsertTagged(index, Tagged(row)))
        return true;
    delete row;
    return false;
}

bool BFilterTable::Insert(const BObjectIdentifier& index, Entry* row)
{
    TMutexLock lock(m_lock);
    return row && InsertTagged(index, row);
}

bool BFilterTable::InsertTagged(const BObjectIdentifier& index, void* tagged)
{
    Forget();
    return BMapOid2Ptr::Insert(index, tagged);
}

BFilterTable::Entry* BFilterTable::Remove(const BObjectIdentifier& index)
{
    TMutexLock lock(m_lock);
    Forget();
    return Untagged(BMapOid2Ptr::Remove(index));
}

void BFilterTable::Clear()
{
    TMutexLock lock(m_lock);
    Forget();
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
    return Lend(Find(index));
}

const BFilterTable::Entry* BFilterTable::Peek(const BObjectIdentifier& index)
{
    TMutexLock lock(m_lock);
    const int position = Find(index);
    return position < 0 ? nullptr : RowOf(position);
}

BFilterTable::Entry* BFilterTable::RowToChange(const BObjectIdentifier& index)
{
    const int position = Find(index);
    if (position < 0)
        return nullptr;
    Forget();
    return RowOf(position);
}

unsigned BFilterTable::Count()
{
    TMutexLock lock(m_lock);
    return BMapOid2Ptr::Count();
}

BFilterTable::Entry* BFilterTable::RowAt(int position)
{
    TMutexLock lock(m_lock);
    return position < End() ? Lend(position) : nullptr;
}

const BFilterTable::Entry* BFilterTable::PeekAt(int position)
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
    return Lend(position);
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
