// Array of pointers.
#include <vkmibh/containers.h>

#include "foundation/Bytewise.h"

namespace VLK {

bool BPtrArray::PushBack(void* item)
{
    if (m_count == m_capacity &&
        !Enlarge(m_items, m_count, m_capacity, m_capacity == 0 ? 4 : std::uint64_t(m_capacity) * 2))
        return false;
    m_items[m_count++] = item;
    return true;
}

int BPtrArray::Find(const void* item) const
{
    for (unsigned i = 0; i < m_count; ++i) {
        if (m_items[i] == item)
            return static_cast<int>(i);
    }
    return -1;
}

void BPtrArray::RemoveElementAt(int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= m_count)
        return;
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
}

bool BPtrArray::Remove(const void* item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BPtrArray::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
