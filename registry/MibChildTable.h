// Children by id, hashed.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

class BMibNode;

// An open hash table with linear probing, never more than half full.
//
// Ownership: owns its slots, not the nodes.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    Insert() gives false when memory ran out and is unchanged then.
class VKMIBH_LOCAL BMibChildTable {
public:
    BMibChildTable() noexcept : m_slots(nullptr), m_bits(0), m_count(0) {}
    ~BMibChildTable();
    BMibChildTable(const BMibChildTable&) = delete;
    BMibChildTable& operator=(const BMibChildTable&) = delete;

    // The id must not be there yet.
    bool Insert(unsigned id, BMibNode* node);
    void Remove(unsigned id);

    BMibNode* Find(unsigned id) const
    {
        if (!m_slots)
            return nullptr;
        unsigned at = Home(id);
        while (m_slots[at].node && m_slots[at].id != id)
            at = (at + 1) & Mask();
        return m_slots[at].node;
    }

private:
    struct SSlot {
        unsigned id;
        BMibNode* node; // null: free
    };
    // 2^32 over the golden ratio: ids in a row spread over the table.
    unsigned Home(unsigned id) const { return (id * 2654435769u) >> (32 - m_bits); }
    unsigned Mask() const { return (1u << m_bits) - 1; }
    bool Grow();
    void Put(unsigned id, BMibNode* node);

    SSlot* m_slots;
    unsigned m_bits;
    unsigned m_count;
};

} // namespace VLK
