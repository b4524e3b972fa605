// Arrays and sorted maps.
#pragma once

#include <vkmibh/objectid.h>

#include <utility>

namespace VLK {

// What the four arrays share: items in the order in which they were added, in
// one block that grows when it is full.
//
//   BOidArray seen;
//   seen.PushBack(name);
//   if (seen.Find(name) >= 0)
//       seen.Remove(name);
//
// Ownership: strings and object identifiers are copied deeply, pointers are
//            only stored. An item of the array may be added to it again.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = no memory or absent, and unchanged; an index or -1.
//            An assignment without memory leaves the array unchanged. A bad
//            index changes nothing on removal and is unchecked on reading.
// Contract:  field order is ABI. The first block has 4 items (pointers) or 8
//            (numbers) and doubles, or grows by s_growBy; copies have none to
//            spare. s_...Size is the item's size in the 32-bit layout.

// Pointers, compared by identity.
class VKMIBH_API BPtrArray {
public:
    static constexpr unsigned s_voidPtrSize = 4;

    BPtrArray() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BPtrArray() { Clear(); }
    BPtrArray(const BPtrArray&) = delete;
    BPtrArray& operator=(const BPtrArray&) = delete;
    bool PushBack(void* item);
    void RemoveElementAt(int index);
    bool Remove(const void* item);
    void Clear();

    int Find(const void* item) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    void* operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
    void** m_items;
    unsigned m_count;
    unsigned m_capacity;
};

// Unsigned numbers, handed in as int.
class VKMIBH_API BUintArray {
public:
    static constexpr unsigned s_intSize = 4;

    BUintArray() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    BUintArray(const BUintArray& other);
    BUintArray(BUintArray&& other) noexcept : BUintArray() { Swap(other); }
    ~BUintArray() { Clear(); }
    BUintArray& operator=(const BUintArray& other);
    BUintArray& operator=(BUintArray&& other) noexcept;
    bool PushBack(int item);
    void RemoveElementAt(int index);
    bool Remove(int item);
    void Clear();

    int Find(int item) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    unsigned operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
    void Swap(BUintArray& other) noexcept
    {
        std::swap(m_items, other.m_items);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
    }

    unsigned* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

class VKMIBH_API BStringArray {
public:
    static constexpr unsigned s_strSize = 12;
    static constexpr unsigned s_growBy = 2;

    BStringArray() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    BStringArray(const BStringArray& other);
    BStringArray(BStringArray&& other) noexcept : BStringArray() { Swap(other); }
    BStringArray& operator=(const BStringArray& other);
    BStringArray& operator=(BStringArray&& other) noexcept;
    bool PushBack(const BString& item);
    void RemoveElementAt(int index);
    bool Remove(const BString& item);
    void Clear();

    int Find(const BString& item) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    const BString& operator[](int index) const { return m_items[index]; }

    // Slots: the two destructors.
    virtual ~BStringArray();

private:
    friend struct SLayoutCheck;
    void Swap(BStringArray& other) noexcept
    {
        std::swap(m_items, other.m_items);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
    }

    BString* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

class VKMIBH_API BOidArray {
public:
    static constexpr unsigned s_oidSize = 12;
    static constexpr unsigned s_growBy = 2;

    BOidArray() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    BOidArray(const BOidArray& other);
    BOidArray(BOidArray&& other) noexcept : BOidArray() { Swap(other); }
    ~BOidArray() { Clear(); }
    BOidArray& operator=(const BOidArray& other);
    BOidArray& operator=(BOidArray&& other) noexcept;
    bool PushBack(const BObjectIdentifier& item);
    void RemoveElementAt(int index);
    bool Remove(const BObjectIdentifier& item);
    void Clear();

    int Find(const BObjectIdentifier& item) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    const BObjectIdentifier& operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
    void Swap(BOidArray& other) noexcept
    {
        std::swap(m_items, other.m_items);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
    }

    BObjectIdentifier* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

// What the three maps share: unique keys in ascending order, a pointer each.
//
//   BMapOid2Ptr rows;                    // rows of a table by their index
//   rows.Insert(index, row);             // false when the index is taken
//   int next = rows.Next(index);         // GETNEXT: -1 past the last row
//   if (next >= 0)
//       Show(rows.KeyAt(next), rows.DataAt(next));
//
// Ownership: keys are copied deeply, the pointers are only stored.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    1 = done, 0 = key present or no memory, and unchanged; an index
//            or -1; a stored pointer or null.
// Contract:  field order is ABI, of the items too; storage grows by s_growBy
//            items. Look-up halves the range, so it stays cheap in large maps;
//            inserting moves what follows. s_itemSize is the item's size in
//            the 32-bit layout.

// Keys in signed order.
class VKMIBH_API BMapInt2Ptr {
public:
    static constexpr unsigned s_itemSize = 8;
    static constexpr unsigned s_growBy = 2;

    BMapInt2Ptr() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BMapInt2Ptr() { Clear(); }
    BMapInt2Ptr(const BMapInt2Ptr&) = delete;
    BMapInt2Ptr& operator=(const BMapInt2Ptr&) = delete;
    bool Insert(int key, void* data);
    void* Remove(int key);
    void Clear();

    int Find(int key) const;
    // The first key above the one given.
    int Next(int key) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    int KeyAt(int index) const { return m_items[index].key; }
    void* DataAt(int index) const { return m_items[index].data; }

private:
    friend struct SLayoutCheck;
    struct SItem {
        int key;
        void* data;
    };
    SItem* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

// Keys in the order of their unsigned bytes, a prefix first.
class VKMIBH_API BMapStr2Ptr {
public:
    static constexpr unsigned s_itemSize = 16;
    static constexpr unsigned s_growBy = 2;

    BMapStr2Ptr() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BMapStr2Ptr() { Clear(); }
    BMapStr2Ptr(const BMapStr2Ptr&) = delete;
    BMapStr2Ptr& operator=(const BMapStr2Ptr&) = delete;
    bool Insert(const BString& key, void* data);
    void* Remove(const BString& key);
    void Clear();

    int Find(const BString& key) const;
    // The first key above the one given.
    int Next(const BString& key) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    const BString& KeyAt(int index) const { return m_items[index].key; }
    void* DataAt(int index) const { return m_items[index].data; }

private:
    friend struct SLayoutCheck;
    struct SItem {
        BString key;
        void* data = nullptr;
    };
    SItem* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

// Keys in the order of BObjectIdentifier::Compare.
class VKMIBH_API BMapOid2Ptr {
public:
    static constexpr unsigned s_itemSize = 16;
    static constexpr unsigned s_growBy = 2;

    BMapOid2Ptr() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BMapOid2Ptr() { Clear(); }
    BMapOid2Ptr(const BMapOid2Ptr&) = delete;
    BMapOid2Ptr& operator=(const BMapOid2Ptr&) = delete;
    bool Insert(const BObjectIdentifier& key, void* data);
    void* Remove(const BObjectIdentifier& key);
    void RemoveAt(int index);
    void SetDataAt(int index, void* data) { m_items[index].data = data; }
    void Clear();

    int Find(const BObjectIdentifier& key) const;
    // The first key above the one given.
    int Next(const BObjectIdentifier& key) const;
    // Gives that key as well; the two may be the same object. -1 also when there
    // is no memory for the key, for without it a walk would start over.
    int Next(const BObjectIdentifier& key, BObjectIdentifier& nextKey) const;
    // The pointer of that key, or null.
    void* GetData(const BObjectIdentifier& key) const;
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    const BObjectIdentifier& KeyAt(int index) const { return m_items[index].key; }
    void* DataAt(int index) const { return m_items[index].data; }

private:
    friend struct SLayoutCheck;
    struct SItem {
        BObjectIdentifier key;
        void* data = nullptr;
    };
    SItem* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

} // namespace VLK
