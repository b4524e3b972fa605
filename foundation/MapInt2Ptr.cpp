// Map from int to pointer.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

int BMapInt2Ptr::Find(int key) const { return FindSorted(m_count, KeyOrder(m_items, key)); }

int BMapInt2Ptr::Next(int key) const { return NextSorted(m_count, KeyOrder(m_items, key)); }

bool BMapInt2Ptr::Insert(int key, void* data)
{
    return InsertSorted(m_items, m_count, m_capacity, key, data, s_growBy);
}

void* BMapInt2Ptr::Remove(int key) { return RemoveSorted(m_items, m_count, key); }

void BMapInt2Ptr::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
