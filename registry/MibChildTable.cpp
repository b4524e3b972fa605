#include "registry/MibChildTable.h"

#include <new>

namespace VLK {

namespace {
constexpr unsigned kFirstBits = 5;
constexpr unsigned kLastBits = 31;
} // namespace

BMibChildTable::~BMibChildTable() { delete[] m_slots; }

bool BMibChildTable::Insert(unsigned id, BMibNode* node)
{
    if ((!m_slots || m_count == (Mask() + 1) / 2) && !Grow())
        return false;
    Put(id, node);
    ++m_count;
    return true;
}

void BMibChildTable::Remove(unsigned id)
{
    if (!Find(id))
        return;
    unsigned hole = Home(id);
    while (m_slots[hole].id != id || !m_slots[hole].node)
        hole = (hole + 1) & Mask();
    // What follows moves up unless it would come before its home.
    for (unsigned at = (hole + 1) & Mask(); m_slots[at].node; at = (at + 1) & Mask()) {
        const unsigned distance = (at - Home(m_slots[at].id)) & Mask();
        if (distance >= ((at - hole) & Mask())) {
            m_slots[hole] = m_slots[at];
            hole = at;
        }
    }
    m_slots[hole].node = nullptr;
    --m_count;
}

bool BMibChildTable::Grow()
{
    const unsigned bits = m_slots ? m_bits + 1 : kFirstBits;
    if (bits > kLastBits)
        return false;
    SSlot* slots = new (std::nothrow) SSlot[std::size_t{1} << bits]();
    if (!slots)
        return false;
    SSlot* old = m_slots;
    const unsigned oldSize = old ? Mask() + 1 : 0;
    m_slots = slots;
    m_bits = bits;
    for (unsigned i = 0; i < oldSize; ++i) {
        if (old[i].node)
            Put(old[i].id, old[i].node);
    }
    delete[] old;
    return true;
}

void BMibChildTable::Put(unsigned id, BMibNode* node)
{
    unsigned at = Home(id);
    while (m_slots[at].node)
        at = (at + 1) & Mask();
    m_slots[at] = SSlot{id, node};
}

} // namespace VLK
