// Array of strings.
#include <vkmibh/containers.h>

#include "foundation/ArrayItems.h"

namespace VLK {

BStringArray::BStringArray(const BStringArray& other) : BStringArray() { *this = other; }

BStringArray::~BStringArray() { Clear(); }

BStringArray& BStringArray::operator=(const BStringArray& other)
{
    if (this != &other)
        AssignItems(m_items, m_count, m_capacity, other.m_items, other.m_count);
    return *this;
}

BStringArray& BStringArray::operator=(BStringArray&& other) noexcept
{
    if (&other != this) {
        Clear();
        Swap(other);
    }
    return *this;
}

bool BStringArray::PushBack(const BString& item)
{
    // Copied before anything moves: the item may be one of the array's own.
    BString copy;
    return CopyInto(copy, item) && AppendItem(m_items, m_count, m_capacity, std::move(copy),
                                              std::uint64_t(m_capacity) + s_growBy);
}

int BStringArray::Find(const BString& item) const { return FindItem(m_items, m_count, item); }

void BStringArray::RemoveElementAt(int index) { EraseItem(m_items, m_count, index); }

bool BStringArray::Remove(const BString& item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BStringArray::Clear() { ReleaseItems(m_items, m_count, m_capacity); }

} // namespace VLK
