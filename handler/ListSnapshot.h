// What a GET puts back when it fails half-way.
#pragma once

#include <vkmibh/values.h>

namespace VLK {

// Names and values of a binding list at one moment. The bindings of a GET
// mostly carry no value, so their names alone are packed into one array,
// which needs no allocation for a short list.
class ListSnapshot {
public:
    explicit ListSnapshot(const BVarBindList& list);
    ~ListSnapshot();
    ListSnapshot(const ListSnapshot&) = delete;
    ListSnapshot& operator=(const ListSnapshot&) = delete;

    // False: there was no memory to keep the list.
    bool IsValid() const { return m_valid; }
    // Once only: the copy goes into the list, without memory for another.
    void Restore(BVarBindList& list);

private:
    static constexpr unsigned kInlineArcs = 128;

    void Pack(const BVarBindList& list, unsigned words);

    bool m_valid;
    bool m_packed;
    unsigned m_count;
    // For each binding the count of its arcs, then the arcs.
    unsigned m_inline[kInlineArcs];
    unsigned* m_words;
    BVarBindList m_full; // used when a binding came with a value
};

} // namespace VLK
