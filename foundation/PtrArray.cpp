// Array of pointers.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

bool BPtrArray::PushBack(void* item)
{
    return AppendItem(m_items, m_count, m_capacity, static_cast<void*>(item),
                      m_capacity == 0 ? 4 : std::uint64_t(m_capacity) * 2);
}

int BPtrArray::Find(const void* item) const
{
    for (unsigned i = 0; i < m_count; ++i) {
        if (m_items[i] == item)
            return static_cast<int>(i);
    }
    return -1;
}

void BPtrArray::RemoveElementAt(int index) { EraseItem(m_items, m_count, index); }

bool BPtrArray::Remove(const void* item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BPtrArray::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
