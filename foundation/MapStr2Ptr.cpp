// Map from string to pointer.
#include <vkmibh/containers.h>

#include <utility>

#include "foundation/Bytewise.h"
#include "foundation/SortedSearch.h"

namespace VLK {

namespace {

// Orders the key of item i against the one sought.
template <class Item>
auto KeyOrder(const Item* items, const BString& key)
{
    return [items, &key](unsigned i) { return items[i].key.compare(key); };
}

} // namespace

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
    if (Find(key) >= 0)
        return false;
    BString copy(key);
    if (copy.length() != key.length())
        return false;
    if (m_count == m_capacity &&
        !Enlarge(m_items, m_count, m_capacity, std::uint64_t(m_capacity) + s_growBy))
        return false;
    const unsigned at = LowerBound(m_count, KeyOrder(m_items, key));
    MoveItems(m_items + at + 1, m_items + at, m_count - at);
    ZeroItems(m_items + at, 1);
    m_items[at].key = std::move(copy);
    m_items[at].data = data;
    ++m_count;
    return true;
}

void* BMapStr2Ptr::Remove(const BString& key)
{
    const int index = Find(key);
    if (index < 0)
        return nullptr;
    void* data = m_items[index].data;
    m_items[index].~SItem();
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
    return data;
}

void BMapStr2Ptr::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
