// A map to pointers for many keys in no order.
#pragma once

#include "foundation/ArrayItems.h"

#include <cstdint>
#include <new>

namespace VLK {

inline std::uint32_t HashOf(int key) { return std::uint32_t(key) * 2654435769u; }

// FNV-1a over whole arcs. It carries the upper bits of an arc to few others: folded
// and multiplied once more, arcs that differ in these alone spread as well.
inline std::uint32_t HashOf(const BObjectIdentifier& key)
{
    std::uint64_t hash = 14695981039346656037u;
    for (unsigned i = 0; i < key.Length(); ++i)
        hash = (hash ^ key[i]) * 1099511628211u;
    hash = (hash ^ (hash >> 32)) * 11400714819323198485u;
    return std::uint32_t(hash >> 32);
}

// Insert(), Find() and Remove() take the same time however many keys there are;
// the sorted maps move, at each insertion and removal, all items that come after.
// A key stays where it is until it is removed.
template <class Key>
class HashMap {
public:
    HashMap() = default;
    ~HashMap() { Clear(); }
    HashMap(const HashMap&) = delete;
    HashMap& operator=(const HashMap&) = delete;

    // The key as it is kept; null without memory, or when it is there already.
    const Key* Insert(const Key& key, void* data)
    {
        if (*PlaceOf(key) || !MakeRoom())
            return nullptr;
        SNode* const node = new (std::nothrow) SNode;
        if (!node || !CopyInto(node->key, key)) {
            delete node;
            return nullptr;
        }
        node->data = data;
        SNode** const place = PlaceOf(key);
        node->next = *place;
        *place = node;
        ++m_count;
        return &node->key;
    }

    // Where the data of that key is kept, or null.
    void** Find(const Key& key) const
    {
        SNode* const node = *PlaceOf(key);
        return node ? &node->data : nullptr;
    }

    // The data of that key, which goes, or null.
    void* Remove(const Key& key)
    {
        SNode** const place = PlaceOf(key);
        SNode* const node = *place;
        if (!node)
            return nullptr;
        void* const data = node->data;
        *place = node->next;
        delete node;
        --m_count;
        return data;
    }

    void Clear()
    {
        ForEach([](SNode* node) { delete node; });
        delete[] m_buckets;
        m_buckets = nullptr;
        m_bucketCount = 0;
        m_count = 0;
    }

    unsigned Count() const { return m_count; }

    // Calls visit(data) for every key, in no order.
    template <class Visit>
    void ForEachData(Visit visit) const
    {
        ForEach([&visit](SNode* node) { visit(node->data); });
    }

private:
    struct SNode {
        SNode* next = nullptr;
        Key key{};
        void* data = nullptr;
    };

    static constexpr unsigned kFirstBuckets = 64;

    // The link that leads to the key's node, or the one that would.
    SNode** PlaceOf(const Key& key) const
    {
        if (m_bucketCount == 0)
            return &s_none;
        SNode** place = &m_buckets[HashOf(key) & (m_bucketCount - 1)];
        while (*place && Order((*place)->key, key) != 0)
            place = &(*place)->next;
        return place;
    }

    // Without memory for more buckets the chains get longer.
    bool MakeRoom()
    {
        if (m_count < m_bucketCount || m_bucketCount > 0x40000000u)
            return true;
        const unsigned wanted = m_bucketCount ? m_bucketCount * 2 : kFirstBuckets;
        SNode** const buckets = new (std::nothrow) SNode* [wanted] {};
        if (!buckets)
            return m_bucketCount != 0;
        ForEach([&](SNode* node) {
            SNode*& first = buckets[HashOf(node->key) & (wanted - 1)];
            node->next = first;
            first = node;
        });
        delete[] m_buckets;
        m_buckets = buckets;
        m_bucketCount = wanted;
        return true;
    }

    // The node may go, or go elsewhere, while it is visited.
    template <class Visit>
    void ForEach(Visit visit) const
    {
        for (unsigned i = 0; i < m_bucketCount; ++i) {
            for (SNode* node = m_buckets[i]; node;) {
                SNode* const next = node->next;
                visit(node);
                node = next;
            }
        }
    }

    static inline SNode* s_none = nullptr;

    SNode** m_buckets = nullptr;
    unsigned m_bucketCount = 0;
    unsigned m_count = 0;
};

} // namespace VLK
