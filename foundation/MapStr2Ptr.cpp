// Map from string to pointer.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

int BMapStr2Ptr::Find(const BString& key) const
{
    return FindSorted(m_count, KeyOrder(m_items, key));
}

int BMapStr2Ptr::Next(const BString& key) const
{
    return NextSorted(m_count, KeyOrder(m_items, key));
}

bool BMapStr2Ptr::Insert(const BString& key, void* data)
{
    return InsertSorted(m_items, m_count, m_capacity, key, data, s_growBy);
}

void* BMapStr2Ptr::Remove(const BString& key) { return RemoveSorted(m_items, m_count, key); }

void BMapStr2Ptr::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
