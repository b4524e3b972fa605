// The rows of a view filter table by what they cover.
#pragma once

#include <vkmibh/filter.h>

#include <cstdint>

namespace VLK {

// Hash chains over items that are only added: each has a `hash` and a `next`.
template <class Item>
class HashChains {
public:
    HashChains() = default;
    ~HashChains() { Clear(); }
    HashChains(const HashChains&) = delete;
    HashChains& operator=(const HashChains&) = delete;

    // Forgets all; false when there is no memory for that many.
    bool Reset(unsigned most);
    void Clear();
    // The items are numbered from 0 as they come.
    int Add(const Item& item);
    int First(std::uint64_t hash) const
    {
        return m_count ? m_heads[std::size_t(hash) & m_mask] : -1;
    }
    Item& operator[](int i) const { return m_items[i]; }

private:
    Item* m_items = nullptr;
    int* m_heads = nullptr;
    std::size_t m_mask = 0;
    int m_count = 0;
};

// Tells which rows of a table cover an identifier, by hashes in place of a walk along
// all of them. The active rows of a view fall into shapes, each the length of a subtree
// and a mask; one row of a shape is found by the arcs that its mask does not leave open.
//
// It is a picture of the table at one moment. What changes the table through its own
// operations calls Forget(). Rows whose address somebody outside has (the table "lent"
// them) may change at any time: the picture says only where they are, and they are asked
// one by one. A new picture costs as much as some walks, and so is taken after some.
//
// Ownership: of the picture alone.
// Threads:   the table's lock is held.
// Errors:    without memory there is no picture; the rows are walked as if it were old.
class VKMIBH_LOCAL BFilterTable::Finder {
public:
    // The positions of rows that cover the identifier, the last in index order first.
    struct SFound {
        static constexpr unsigned kMost = 32;

        // Keeps the greatest ones.
        void Add(int position);

        int positions[kMost];
        unsigned count = 0;
    };

    ~Finder();

    void Forget() { m_isFresh = false; }
    // Whether the picture is that of the table now: a look-up asks, and may have a new
    // one taken.
    bool IsReady(const BFilterTable& table) VKMIBH_TSA(requires_capability(table.m_lock));
    // Whether a row that is not lent is active in the view.
    bool HasRows(const BString& viewName) const { return ViewOf(viewName) >= 0; }
    void Find(const BFilterTable& table, const BString& viewName, const BObjectIdentifier& oid,
              SFound& found) const VKMIBH_TSA(requires_capability(table.m_lock));

private:
    struct SView {
        std::uint64_t hash;
        int next;
        const Entry* sample;
        int firstShape;
    };
    struct SShape {
        std::uint64_t hash;
        int next;
        const Entry* sample;
        int view;
        int nextShape; // of the same view
    };
    struct SRow {
        std::uint64_t hash;
        int next;
        int position;
    };

    bool TakePicture(const BFilterTable& table) VKMIBH_TSA(requires_capability(table.m_lock));
    int ViewOf(const BString& name) const;
    int ShapeOf(int view, const Entry& row) const;
    void AddRow(const Entry& row, int position);

    HashChains<SView> m_views;
    HashChains<SShape> m_shapes;
    HashChains<SRow> m_rows;
    int* m_lent = nullptr; // positions
    unsigned m_lentCount = 0;
    bool m_isFresh = false;
    unsigned m_walks = 0; // since the picture is old
};

} // namespace VLK
