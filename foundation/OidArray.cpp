// Array of object identifiers.
#include <vkmibh/containers.h>

#include <utility>

#include "foundation/Bytewise.h"

namespace VLK {

BOidArray::BOidArray(const BOidArray& other) : BOidArray() { *this = other; }

BOidArray& BOidArray::operator=(const BOidArray& other)
{
    if (&other == this)
        return *this;
    BObjectIdentifier* items = nullptr;
    if (other.m_count != 0) {
        items = NewItems<BObjectIdentifier>(other.m_count);
        if (!items)
            return *this;
        for (unsigned i = 0; i < other.m_count; ++i) {
            if (!items[i].Set(other.m_items[i])) {
                delete[] items;
                return *this;
            }
        }
    }
    delete[] m_items;
    m_items = items;
    m_count = m_capacity = other.m_count;
    return *this;
}

BOidArray& BOidArray::operator=(BOidArray&& other) noexcept
{
    if (&other != this) {
        Clear();
        Swap(other);
    }
    return *this;
}

bool BOidArray::PushBack(const BObjectIdentifier& item)
{
    // Copied before anything moves: the item may be one of the array's own.
    BObjectIdentifier copy;
    if (!copy.Set(item))
        return false;
    if (m_count == m_capacity &&
        !Enlarge(m_items, m_count, m_capacity, std::uint64_t(m_capacity) + s_growBy))
        return false;
    m_items[m_count++] = std::move(copy);
    return true;
}

int BOidArray::Find(const BObjectIdentifier& item) const
{
    for (unsigned i = 0; i < m_count; ++i) {
        if (m_items[i].Compare(item) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

void BOidArray::RemoveElementAt(int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= m_count)
        return;
    m_items[index].~BObjectIdentifier();
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
}

bool BOidArray::Remove(const BObjectIdentifier& item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BOidArray::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
