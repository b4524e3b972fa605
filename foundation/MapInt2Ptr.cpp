// Map from int to pointer.
#include <vkmibh/containers.h>

#include "foundation/Bytewise.h"
#include "foundation/SortedSearch.h"

namespace VLK {

namespace {

// Orders the key of item i against the one sought.
template <class Item>
auto KeyOrder(const Item* items, int key)
{
    return [items, key](unsigned i) {
        return items[i].key == key ? 0 : (items[i].key < key ? -1 : 1);
    };
}

} // namespace

int BMapInt2Ptr::Find(int key) const { return FindSorted(m_count, KeyOrder(m_items, key)); }

int BMapInt2Ptr::Next(int key) const { return NextSorted(m_count, KeyOrder(m_items, key)); }

bool BMapInt2Ptr::Insert(int key, void* data)
{
    if (Find(key) >= 0)
        return false;
    if (m_count == m_capacity) {
        if (!Enlarge(m_items, m_count, m_capacity, std::uint64_t(m_capacity) + s_growBy))
            return false;
        ZeroItems(m_items + m_count, s_growBy);
    }
    const unsigned at = LowerBound(m_count, KeyOrder(m_items, key));
    MoveItems(m_items + at + 1, m_items + at, m_count - at);
    m_items[at].key = key;
    m_items[at].data = data;
    ++m_count;
    return true;
}

void* BMapInt2Ptr::Remove(int key)
{
    const int index = Find(key);
    if (index < 0)
        return nullptr;
    void* data = m_items[index].data;
    CloseGap(m_items, m_count, static_cast<unsigned>(index));
    --m_count;
    return data;
}

void BMapInt2Ptr::Clear()
{
    delete[] m_items;
    m_items = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace VLK
