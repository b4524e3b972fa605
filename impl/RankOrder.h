// The order in which the bindings of a run are worked on.
#pragma once

#include "impl/SetSlots.h"

#include <new>

namespace VLK {

// The ranks stand in the slots' positions, from `first` on; At(k) is the binding,
// counted from the run's first, that holds the k-th. Without ranks, or where they
// are no permutation of the run, the order is that of the bindings.
class RankOrder {
public:
    // The inline ranks are room, written before they are read.
    // cppcheck-suppress uninitMemberVar
    RankOrder(void** slots, int first, int count) : m_slots(slots), m_first(first), m_count(count)
    {
        m_ranked = slots && Invert();
    }
    ~RankOrder()
    {
        if (m_order != m_inline)
            delete[] m_order;
    }
    RankOrder(const RankOrder&) = delete;
    RankOrder& operator=(const RankOrder&) = delete;

    int At(int k) const
    {
        if (!m_ranked)
            return k;
        return m_order ? m_order[k] : Search(k);
    }

private:
    static constexpr int kInline = 32;

    int RankOf(int k) const { return SlotAt(m_slots, k)->position - m_first; }

    bool Invert()
    {
        if (m_count > kInline)
            m_order = new (std::nothrow) int[m_count];
        if (!m_order)
            return HasEveryRank();
        for (int k = 0; k < m_count; ++k)
            m_order[k] = -1;
        for (int k = 0; k < m_count; ++k) {
            const int rank = RankOf(k);
            if (rank < 0 || rank >= m_count || m_order[rank] >= 0)
                return false;
            m_order[rank] = k;
        }
        return true;
    }

    // What follows is slower, but needs no memory.
    bool HasEveryRank() const
    {
        for (int rank = 0; rank < m_count; ++rank) {
            if (Search(rank) < 0)
                return false;
        }
        return true;
    }
    int Search(int rank) const
    {
        for (int k = 0; k < m_count; ++k) {
            if (RankOf(k) == rank)
                return k;
        }
        return -1;
    }

    void** const m_slots;
    const int m_first;
    const int m_count;
    bool m_ranked;
    int m_inline[kInline];
    int* m_order = m_inline;
};

} // namespace VLK
