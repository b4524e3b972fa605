// Array of object identifiers.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

BOidArray::BOidArray(const BOidArray& other) : BOidArray() { *this = other; }

BOidArray& BOidArray::operator=(const BOidArray& other)
{
    if (this != &other)
        AssignItems(m_items, m_count, m_capacity, other.m_items, other.m_count);
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
    return CopyInto(copy, item) && AppendItem(m_items, m_count, m_capacity, std::move(copy),
                                              std::uint64_t(m_capacity) + s_growBy);
}

int BOidArray::Find(const BObjectIdentifier& item) const
{
    return FindItem(m_items, m_count, item);
}

void BOidArray::RemoveElementAt(int index) { EraseItem(m_items, m_count, index); }

bool BOidArray::Remove(const BObjectIdentifier& item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BOidArray::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
