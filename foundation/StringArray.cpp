// Array of strings.
#include <vkmibh/containers.h>

#include <utility>

#include "foundation/Bytewise.h"

namespace VLK {

namespace {

// Copies the text into an empty string; false when there was no memory for it.
bool CopyText(BString& to, const BString& from)
{
    to = from;
    return to.length() == from.length();
}

} // namespace

BStringArray::BStringArray(const BStringArray& other) : BStringArray() { *this = other; }

BStringArray::~BStringArray() { Clear(); }

BStringArray& BStringArray::operator=(const BStringArray& other)
{
    if (&other == this)
        return *this;
    BString* items = nullptr;
    if (other.m_count != 0) {
        items = NewItems<BString>(other.m_count);
        if (!items)
            return *this;
        for (unsigned i = 0; i < other.m_count; ++i) {
            if (!CopyText(items[i], other.m_items[i])) {
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
    if (!CopyText(copy, item))
        return false;
    if (m_count == m_capacity &&
        !Enlarge(m_items, m_count, m_capacity, std::uint64_t(m_capacity) + s_growBy))
        return false;
    m_items[m_count++] = std::move(copy);
    return true;
}

int BStringArray::Find(const BString& item) const
{
    for (unsigned i = 0; i < m_count; ++i) {
        if (m_items[i].compare(item) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

void BStringArray::RemoveElementAt(int index)
{
    if (index < 0 || static_cast<unsigned>(index) >= m_count)
        return;
    m_items[index].~BString();
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
}

bool BStringArray::Remove(const BString& item)
{
    const int index = Find(item);
    RemoveElementAt(index);
    return index >= 0;
}

void BStringArray::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
