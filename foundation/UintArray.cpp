// Array of unsigned numbers.
#include <vkmibh/containers.h>

#include "foundation/Bytewise.h"

namespace VLK {

BUintArray::BUintArray(const BUintArray& other) : BUintArray() { *this = other; }

BUintArray& BUintArray::operator=(const BUintArray& other)
{
    if (&other == this)
        return *this;
    unsigned* items = nullptr;
    if (other.m_count != 0) {
        items = NewItems<unsigned>(other.m_count);
        if (!items)
            return *this;
        MoveItems(items, other.m_items, other.m_count);
    }
    delete[] m_items;
    m_items = items;
    m_count = m_capacity = other.m_count;
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
    if (m_count == m_capacity &&
        !Enlarge(m_items, m_count, m_capacity, m_capacity == 0 ? 8 : std::uint64_t(m_capacity) * 2))
        return false;
    m_items[m_count++] = static_cast<unsigned>(item);
    return true;
}

int BUintArray::Find(int item) const
{
    for (unsigned i = 0; i < m_count; ++i) {
        if (m_items[i] == static_cast<unsigned>(item))
            return static_cast<int>(i);
    }
    return -1;
}

void BUintArray::RemoveElementAt(int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= m_count)
        return;
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
}

bool BUintArray::Remove(int item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BUintArray::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
