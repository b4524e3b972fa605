// Families of view subtrees: which objects a view shows.
#pragma once

#include <vkmibh/containers.h>
#include <vkmibh/labels.h>
#include <vkmibh/nonvolatile.h>

namespace VLK {

// The vacmViewTreeFamilyTable's rows (RFC 3415 section 4) and the question they
// answer: does an identifier lie in a view?
//
//   BFilterTable views(&store, "vacmViewTreeFamilyTable");
//   views.InitFromNV(false);
//   views.Insert("all", BObjectIdentifier(BString("1.3")), BOctetString(), eFilterIncluded,
//                eStorageVolatile, eRowActive, false);
//   if (views.Filter("all", binding.Name()))
//       Show(binding);
//
// A row's index is the view name, its length first, and the subtree, its length
// first unless it is implied. The family with the most arcs decides; of several
// equally long ones the one that sorts last.
//
// Ownership: owns its rows, also one given to Insert(index, row) with success,
//            which was made by new and stands under one index only. Remove() hands
//            its row back. Neither the store nor the section's text is copied:
//            both outlive the table.
//            Look at rows by Peek() and PeekAt(), and change them by Change(): a
//            row whose address was handed out otherwise, or came from outside, is
//            compared one by one at each Filter(), for it may change at any time.
// Threads:   a lock inside, recursive, for every operation. The store is called
//            with it held, and must not change the table then; a store that has a
//            lock of its own is loaded from before others ask, and saved to from
//            its RequestUpdate(), which takes that lock first. A row pointer holds
//            until the row goes: keep Mutex() while one is used, if others may
//            remove rows.
// Errors:    1/0; pointer or null. What is refused, or finds no memory, changes
//            nothing, but for the loading. What a store throws counts as failed.
// Contract:  field order is ABI. Filter() looks at no more than 32 families, and
//            may write to the rows it looks at: where several equally long
//            families of a view match, the first of them in the walk from the
//            end takes over the subtree that sorts last. Their indexes stay.
class VKMIBH_API BFilterTable : private BMapOid2Ptr {
public:
    // A row, by its columns.
    struct VKMIBH_API Entry {
        BString viewName;
        BObjectIdentifier subtree;
        BOctetString mask; // empty: all ones
        EFilterType type = eFilterIncluded;
        EStorageType storageType = eStorageNonVolatile;
        ERowStatus rowStatus = eRowNotInService; // only active rows count
    };

    // Without a store and a section nothing is loaded or saved.
    explicit BFilterTable(INonVolatile* store);
    BFilterTable(INonVolatile* store, const char* section);
    ~BFilterTable();
    BFilterTable(const BFilterTable&) = delete;
    BFilterTable& operator=(const BFilterTable&) = delete;

    bool Insert(const BString& viewName, const BObjectIdentifier& subtree, const BOctetString& mask,
                EFilterType type, EStorageType storageType, ERowStatus rowStatus, bool implied);
    // The index is not compared with the row. A row that is refused stays the
    // caller's.
    bool Insert(const BObjectIdentifier& index, Entry* row);
    // The row, now the caller's, or null.
    Entry* Remove(const BObjectIdentifier& index);
    void Clear();
    // Replaces all rows by the active ones of the store; a record that cannot be
    // read is left out. False without store or section, when nothing is changed;
    // also when the store does not tell how many records it has, or there is no
    // memory for one of them: the others are then there.
    bool InitFromNV(bool implied);
    // Writes the active nonVolatile rows, as records 1, 2 and so on, and does not
    // look at how the store takes them. False without store or section, or when
    // the store throws: the rows after the one at which it did are written.
    bool SaveToNV();

    // Whether the identifier lies in the view, and how many families decided it.
    bool Filter(const BString& viewName, const BObjectIdentifier& oid);
    bool Filter(const BString& viewName, const BObjectIdentifier& oid, unsigned* matches);
    // Whether the view has an active row.
    bool HasRows(const BString& viewName);
    Entry* GetRow(const BString& viewName, const BObjectIdentifier& subtree, bool implied);
    // Active rows of one view, from the last in index order backwards; null at
    // the end, and before a row that is not in the table.
    Entry* GetLastRowWithViewName(const BString& viewName);
    Entry* GetPrevRowWithSameViewName(const Entry* row);
    // By index and by position in index order.
    Entry* GetRow(const BObjectIdentifier& index);
    unsigned Count();
    Entry* RowAt(int position);
    // The same rows, only to be looked at.
    const Entry* Peek(const BObjectIdentifier& index);
    const Entry* PeekAt(int position);
    // Has edit(Entry&) change the row of that index, with the lock held; it does not
    // ask the table meanwhile. False when there is no such row.
    template <class Edit>
    bool Change(const BObjectIdentifier& index, Edit edit)
    {
        TMutexLock lock(m_lock);
        Entry* const row = RowToChange(index);
        if (row)
            edit(*row);
        return row != nullptr;
    }
    // The first index after that one; false when there is none.
    bool NextIndex(const BObjectIdentifier& index, BObjectIdentifier& nextIndex);

    // Any name and subtree make an index. Those of SNMP are valid: a printable
    // name, and a subtree of one arc or more.
    static bool MakeIndex(const BString& viewName, const BObjectIdentifier& subtree, bool implied,
                          BObjectIdentifier& index);
    static bool SplitIndex(const BObjectIdentifier& index, BString& viewName,
                           BObjectIdentifier& subtree, bool implied);
    static bool IsIndexValid(const BObjectIdentifier& index, bool implied);

    TMutex& Mutex() VKMIBH_TSA(lock_returned(m_lock)) { return m_lock; }

private:
    friend struct SLayoutCheck;
    class Finder;
    Entry* RowToChange(const BObjectIdentifier& index) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool InsertTagged(const BObjectIdentifier& index, void* tagged)
        VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL Entry* Lend(int position) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool IsLent(int position) const VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool Covers(int position, const BString& viewName,
                             const BObjectIdentifier& oid) const
        VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL unsigned FindCovering(const BString& viewName, const BObjectIdentifier& oid,
                                       Entry** rows) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool IsFinderReady() VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL void Forget() VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL Entry* RowOf(int position) const VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL int End() const VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL int FindActive(const BString& viewName, int before) const
        VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL int PositionOf(const Entry* row) const VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL Entry* WalkTo(int position) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool LoadRow(int position, bool implied) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool ReadRow(int position, Entry& row) VKMIBH_TSA(requires_capability(m_lock));
    VKMIBH_LOCAL bool SaveRow(int number, const Entry& row) VKMIBH_TSA(requires_capability(m_lock));

    INonVolatile* const m_store;
    const char* const m_section;
    TMutex m_lock;
    // Where the last walk stands: its next step need not search for its row.
    int m_walked VKMIBH_TSA(guarded_by(m_lock));
    Finder* m_finder VKMIBH_TSA(guarded_by(m_lock)); // null while the rows are few
};

} // namespace VLK
