// Map from object identifier to pointer.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

int BMapOid2Ptr::Find(const BObjectIdentifier& key) const
{
    return FindSorted(m_count, KeyOrder(m_items, key));
}

int BMapOid2Ptr::Next(const BObjectIdentifier& key) const
{
    return NextSorted(m_count, KeyOrder(m_items, key));
}

bool BMapOid2Ptr::Insert(const BObjectIdentifier& key, void* data)
{
    return InsertSorted(m_items, m_count, m_capacity, key, data, s_growBy);
}

void* BMapOid2Ptr::Remove(const BObjectIdentifier& key)
{
    return RemoveSorted(m_items, m_count, key);
}

void BMapOid2Ptr::RemoveAt(int index) { EraseItem(m_items, m_count, index); }

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

void BMapOid2Ptr::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
