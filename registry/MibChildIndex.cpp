#include "registry/MibChildIndex.h"

#include <algorithm>
#include <new>

namespace VLK {

namespace {

constexpr unsigned kChunkSize = 256;

// How many of the sorted ids are below `id`.
unsigned CountBelow(const unsigned* ids, unsigned count, unsigned id)
{
    const unsigned* base = ids;
    while (count > 1) {
        const unsigned half = count / 2;
        base = base[half - 1] < id ? base + half : base;
        count -= half;
    }
    return static_cast<unsigned>(base - ids) + (count == 1 && *base < id ? 1 : 0);
}

template <class T>
void OpenGap(T* items, unsigned count, unsigned at)
{
    std::copy_backward(items + at, items + count, items + count + 1);
}

template <class T>
void CloseGap(T* items, unsigned count, unsigned at)
{
    std::copy(items + at + 1, items + count, items + at);
}

} // namespace

struct BMibChildIndex::SChunk {
    unsigned count;
    unsigned ids[kChunkSize];
    BMibNode* nodes[kChunkSize];

    // Where `id` is or would go.
    unsigned Place(unsigned id) const { return CountBelow(ids, count, id); }
};

BMibChildIndex::~BMibChildIndex()
{
    for (unsigned i = 0; i < m_count; ++i)
        delete m_chunks[i];
    delete[] m_chunks;
    delete[] m_firstIds;
}

// The chunk whose span holds `id`: the last one that starts at or before it, else the first.
unsigned BMibChildIndex::ChunkOf(unsigned id) const
{
    const unsigned below = CountBelow(m_firstIds, m_count, id);
    if (below < m_count && m_firstIds[below] == id)
        return below;
    return below ? below - 1 : 0;
}

BMibNode* BMibChildIndex::Before(unsigned id) const
{
    if (m_count == 0)
        return nullptr;
    const unsigned at = ChunkOf(id);
    const unsigned place = m_chunks[at]->Place(id);
    if (place > 0)
        return m_chunks[at]->nodes[place - 1];
    return at > 0 ? m_chunks[at - 1]->nodes[m_chunks[at - 1]->count - 1] : nullptr;
}

BMibNode* BMibChildIndex::AtOrAfter(unsigned id) const
{
    if (m_count == 0)
        return nullptr;
    const unsigned at = ChunkOf(id);
    const unsigned place = m_chunks[at]->Place(id);
    if (place < m_chunks[at]->count)
        return m_chunks[at]->nodes[place];
    return at + 1 < m_count ? m_chunks[at + 1]->nodes[0] : nullptr;
}

bool BMibChildIndex::Insert(unsigned id, BMibNode* node)
{
    if (!m_byId.Insert(id, node))
        return false;
    if (InsertInOrder(id, node))
        return true;
    m_byId.Remove(id);
    return false;
}

bool BMibChildIndex::InsertInOrder(unsigned id, BMibNode* node)
{
    if (m_count == 0 && !InsertChunk(0))
        return false;
    unsigned at = ChunkOf(id);
    if (m_chunks[at]->count == kChunkSize) {
        // Past the end of everything a new chunk begins, so that ascending ids fill theirs.
        const bool append = at + 1 == m_count && id > m_chunks[at]->ids[kChunkSize - 1];
        if (!(append ? InsertChunk(at + 1) : Split(at)))
            return false;
        if (append || id > m_firstIds[at + 1])
            ++at;
    }
    SChunk* chunk = m_chunks[at];
    const unsigned place = chunk->Place(id);
    OpenGap(chunk->ids, chunk->count, place);
    OpenGap(chunk->nodes, chunk->count, place);
    chunk->ids[place] = id;
    chunk->nodes[place] = node;
    ++chunk->count;
    m_firstIds[at] = chunk->ids[0];
    return true;
}

void BMibChildIndex::Remove(unsigned id)
{
    m_byId.Remove(id);
    if (m_count == 0)
        return;
    const unsigned at = ChunkOf(id);
    SChunk* chunk = m_chunks[at];
    const unsigned place = chunk->Place(id);
    if (place == chunk->count || chunk->ids[place] != id)
        return;
    CloseGap(chunk->ids, chunk->count, place);
    CloseGap(chunk->nodes, chunk->count, place);
    if (--chunk->count > 0) {
        m_firstIds[at] = chunk->ids[0];
        return;
    }
    delete chunk;
    CloseGap(m_chunks, m_count, at);
    CloseGap(m_firstIds, m_count, at);
    --m_count;
}

// Makes room for an empty chunk at `at`; its first id is the caller's to set.
bool BMibChildIndex::InsertChunk(unsigned at)
{
    SChunk* chunk = new (std::nothrow) SChunk;
    if (!chunk)
        return false;
    chunk->count = 0;
    if (m_count == m_capacity) {
        const unsigned capacity = m_capacity ? m_capacity * 2 : 4;
        unsigned* firstIds = new (std::nothrow) unsigned[capacity];
        SChunk** chunks = new (std::nothrow) SChunk*[capacity];
        if (!firstIds || !chunks) {
            delete[] firstIds;
            delete[] chunks;
            delete chunk;
            return false;
        }
        if (m_count) {
            std::copy_n(m_firstIds, m_count, firstIds);
            std::copy_n(m_chunks, m_count, chunks);
        }
        delete[] m_firstIds;
        delete[] m_chunks;
        m_firstIds = firstIds;
        m_chunks = chunks;
        m_capacity = capacity;
    }
    OpenGap(m_firstIds, m_count, at);
    OpenGap(m_chunks, m_count, at);
    m_firstIds[at] = 0;
    m_chunks[at] = chunk;
    ++m_count;
    return true;
}

bool BMibChildIndex::Split(unsigned at)
{
    if (!InsertChunk(at + 1))
        return false;
    SChunk* left = m_chunks[at];
    SChunk* right = m_chunks[at + 1];
    const unsigned half = left->count / 2;
    right->count = left->count - half;
    std::copy_n(left->ids + half, right->count, right->ids);
    std::copy_n(left->nodes + half, right->count, right->nodes);
    left->count = half;
    m_firstIds[at + 1] = right->ids[0];
    return true;
}

} // namespace VLK
