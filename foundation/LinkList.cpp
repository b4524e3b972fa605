#include <new>
#include <vkmibh/base.h>

namespace VLK {

int BLinkList::Insert(void* data)
{
    BLLItem* item = new (std::nothrow) BLLItem{data, m_last, nullptr};
    if (!item)
        return 0;
    (m_last ? m_last->next : m_first) = item;
    m_last = item;
    return 1;
}

void BLinkList::Remove(BLLItem* item)
{
    if (!item)
        return;
    (item->link ? item->link->next : m_first) = item->next;
    (item->next ? item->next->link : m_last) = item->link;
    delete item;
}

void BLinkList::Clear()
{
    for (BLLItem* item = m_first; item;) {
        BLLItem* const next = item->next;
        delete item;
        item = next;
    }
    m_first = nullptr;
    m_last = nullptr;
}

} // namespace VLK
