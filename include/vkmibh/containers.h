// Arrays and sorted maps.
#pragma once

#include <vkmibh/values.h>

namespace VLK {

class VKMIBH_API BPtrArray {
public:
    static constexpr unsigned s_voidPtrSize = 4;

    BPtrArray() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BPtrArray() { Clear(); }
    BPtrArray(const BPtrArray&) = delete;
    BPtrArray& operator=(const BPtrArray&) = delete;
    bool PushBack(void* item);
    int Find(const void* item) const;
    void RemoveElementAt(int index);
    bool Remove(const void* item);
    void Clear();
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    void* operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
    void** m_items;
    unsigned m_count;
    unsigned m_capacity;
};

class VKMIBH_API BUintArray {
public:
    static constexpr unsigned s_intSize = 4;

    BUintArray() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    BUintArray(const BUintArray& other);
    BUintArray(BUintArray&& other) noexcept;
    ~BUintArray() { Clear(); }
    BUintArray& operator=(const BUintArray& other);
    BUintArray& operator=(BUintArray&& other) noexcept;
    bool PushBack(int item);
    int Find(int item) const;
    void RemoveElementAt(int index);
    bool Remove(int item);
    void Clear();
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    unsigned operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
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
    BStringArray(BStringArray&& other) noexcept;
    virtual ~BStringArray();
    BStringArray& operator=(const BStringArray& other);
    BStringArray& operator=(BStringArray&& other) noexcept;
    bool PushBack(const BString& item);
    int Find(const BString& item) const;
    void RemoveElementAt(int index);
    bool Remove(const BString& item);
    void Clear();
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    const BString& operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
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
    BOidArray(BOidArray&& other) noexcept;
    ~BOidArray() { Clear(); }
    BOidArray& operator=(const BOidArray& other);
    BOidArray& operator=(BOidArray&& other) noexcept;
    bool PushBack(const BObjectIdentifier& item);
    int Find(const BObjectIdentifier& item) const;
    void RemoveElementAt(int index);
    bool Remove(const BObjectIdentifier& item);
    void Clear();
    unsigned Count() const { return m_count; }
    unsigned Capacity() const { return m_capacity; }
    const BObjectIdentifier& operator[](int index) const { return m_items[index]; }

private:
    friend struct SLayoutCheck;
    BObjectIdentifier* m_items;
    unsigned m_count;
    unsigned m_capacity;
};

class VKMIBH_API BMapInt2Ptr {
public:
    static constexpr unsigned s_itemSize = 8;
    static constexpr unsigned s_growBy = 2;

    BMapInt2Ptr() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BMapInt2Ptr() { Clear(); }
    BMapInt2Ptr(const BMapInt2Ptr&) = delete;
    BMapInt2Ptr& operator=(const BMapInt2Ptr&) = delete;
    int Find(int key) const;
    bool Insert(int key, void* data);
    void* Remove(int key);
    int Next(int key) const;
    void Clear();
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

class VKMIBH_API BMapStr2Ptr {
public:
    static constexpr unsigned s_itemSize = 16;
    static constexpr unsigned s_growBy = 2;

    BMapStr2Ptr() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BMapStr2Ptr() { Clear(); }
    BMapStr2Ptr(const BMapStr2Ptr&) = delete;
    BMapStr2Ptr& operator=(const BMapStr2Ptr&) = delete;
    int Find(const BString& key) const;
    bool Insert(const BString& key, void* data);
    void* Remove(const BString& key);
    int Next(const BString& key) const;
    void Clear();
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

class VKMIBH_API BMapOid2Ptr {
public:
    static constexpr unsigned s_itemSize = 16;
    static constexpr unsigned s_growBy = 2;

    BMapOid2Ptr() noexcept : m_items(nullptr), m_count(0), m_capacity(0) {}
    ~BMapOid2Ptr() { Clear(); }
    BMapOid2Ptr(const BMapOid2Ptr&) = delete;
    BMapOid2Ptr& operator=(const BMapOid2Ptr&) = delete;
    int Find(const BObjectIdentifier& key) const;
    bool Insert(const BObjectIdentifier& key, void* data);
    void* Remove(const BObjectIdentifier& key);
    void RemoveAt(int index);
    int Next(const BObjectIdentifier& key) const;
    int Next(const BObjectIdentifier& key, BObjectIdentifier& nextKey) const;
    void* GetData(const BObjectIdentifier& key) const;
    void Clear();
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
