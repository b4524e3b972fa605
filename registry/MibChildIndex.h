// Finds one child among many.
#pragma once

#include <vkmibh/base.h>

#include "registry/MibChildTable.h"

namespace VLK {

class BMibNode;

// The children of a node by id, twice: hashed for exact look-ups, and in a
// sorted sequence of chunks, where a search looks at the chunks' first ids, then
// inside one chunk. It stands beside the sibling list and answers as that does.
//
// Ownership: owns its chunks, not the nodes.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    Insert() gives false when memory ran out and is unchanged then.
class VKMIBH_LOCAL BMibChildIndex {
public:
    BMibChildIndex() noexcept : m_firstIds(nullptr), m_chunks(nullptr), m_count(0), m_capacity(0) {}
    ~BMibChildIndex();
    BMibChildIndex(const BMibChildIndex&) = delete;
    BMibChildIndex& operator=(const BMibChildIndex&) = delete;

    // The id must not be there yet.
    bool Insert(unsigned id, BMibNode* node);
    void Remove(unsigned id);

    BMibNode* Find(unsigned id) const { return m_byId.Find(id); }
    // The child with the greatest id below `id`.
    BMibNode* Before(unsigned id) const;
    // The child with the smallest id not below `id`.
    BMibNode* AtOrAfter(unsigned id) const;

private:
    struct SChunk;
    unsigned ChunkOf(unsigned id) const;
    bool InsertChunk(unsigned at);
    bool Split(unsigned at);
    bool InsertInOrder(unsigned id, BMibNode* node);

    BMibChildTable m_byId;
    unsigned* m_firstIds;
    SChunk** m_chunks;
    unsigned m_count;
    unsigned m_capacity;
};

} // namespace VLK
