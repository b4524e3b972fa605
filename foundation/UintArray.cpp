// Array of unsigned numbers.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

BUintArray::BUintArray(const BUintArray& other) : BUintArray() { *this = other; }

BUintArray& BUintArray::operator=(const BUintArray& other)
{
    if (this != &other)
        AssignItems(m_items, m_count, m_capacity, other.m_items, other.m_count);
    return *this;
}

BUintArray& BUintArray::operator=(BUintArray&& other) noexcept
{
    if (&other != this) {
        Clear();
        Swap(other);
    }
    return *this;
}

bool BUintArray::PushBack(int item)
{
    return AppendItem(m_items, m_count, m_capacity, static_cast<unsigned>(item),
                      m_capacity == 0 ? 8 : std::uint64_t(m_capacity) * 2);
}

int BUintArray::Find(int item) const
{
    for (unsigned i = 0; i < m_count; ++i) {
        if (m_items[i] == static_cast<unsigned>(item))
            return static_cast<int>(i);
    }
    return -1;
}

void BUintArray::RemoveElementAt(int index) { EraseItem(m_items, m_count, index); }

bool BUintArray::Remove(int item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BUintArray::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
