// Map from object identifier to pointer.
#include <vkmibh/containers.h>

#include <utility>

#include "foundation/Bytewise.h"
#include "foundation/SortedSearch.h"

namespace VLK {

namespace {

// Orders the key of item i against the one sought.
template <class Item>
auto KeyOrder(const Item* items, const BObjectIdentifier& key)
{
    return [items, &key](unsigned i) { return items[i].key.Compare(key); };
}

} // namespace

int BMapOid2Ptr::Find(const BObjectIdentifier& key) const
{
    return FindSorted(m_count, KeyOrder(m_items, key));
}

int BMapOid2Ptr::Next(const BObjectIdentifier& key) const
{
    return NextSorted(m_count, KeyOrder(m_items, key));
}

int BMapOid2Ptr::Next(const BObjectIdentifier& key, BObjectIdentifier& nextKey) const
{
    const int index = Next(key);
    // A successor whose key cannot be told would send a walk back to its start.
    if (index < 0 || !nextKey.Set(m_items[index].key))
        return -1;
    return index;
}

void* BMapOid2Ptr::GetData(const BObjectIdentifier& key) const
{
    const int index = Find(key);
    return index < 0 ? nullptr : m_items[index].data;
}

bool BMapOid2Ptr::Insert(const BObjectIdentifier& key, void* data)
{
    if (Find(key) >= 0)
        return false;
    BObjectIdentifier copy;
    if (!copy.Set(key))
        return false;
    if (m_count == m_capacity &&
        !Enlarge(m_items, m_count, m_capacity, std::uint64_t(m_capacity) + s_growBy))
        return false;
    const unsigned at = LowerBound(m_count, KeyOrder(m_items, key));
    MoveItems(m_items + at + 1, m_items + at, m_count - at);
    ZeroItems(m_items + at, 1);
    m_items[at].key = std::move(copy);
    m_items[at].data = data;
    ++m_count;
    return true;
}

void* BMapOid2Ptr::Remove(const BObjectIdentifier& key)
{
    const int index = Find(key);
    if (index < 0)
        return nullptr;
    void* data = m_items[index].data;
    RemoveAt(index);
    return data;
}

void BMapOid2Ptr::RemoveAt(int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= m_count)
        return;
    m_items[index].~SItem();
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
}

void BMapOid2Ptr::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
