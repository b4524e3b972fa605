// Implementations of tables whose rows managers create and destroy.
#pragma once

#include <vkmibh/tables.h>

namespace VLK {

// A conceptual table with a status column: RowStatus (RFC 2579) or EntryStatus
// (RFC 1757 section 4). Its map names the status column like any other; this
// class runs the column's state machine, sees to it that a row is created before
// its other columns are set, and tells when a row was left inactive too long:
//
//   class CDoorTable : public BMibTableImplEx { ... };
//   VKMIBH_CONSTINIT SRqHndlrMapEntry CDoorTable::s_map[] = {
//       ColumnRow<eKindDisplayString, &CDoorTable::OnGet_Name, &CDoorTable::OnSet_Name>(
//           2, "doorName", eAsnOctetString, eRqReadCreate),
//       ColumnRow<eKindRowStatus, &CDoorTable::OnGet_Status, &CDoorTable::OnSet_Status>(
//           3, "doorStatus", eAsnInteger, eRqReadCreate),
//       kRqEnd};
//
// What the handlers of the status column do:
//   get      gives the row's status, or noSuchName when there is no such row.
//   set      test    may refuse what the state machine allows, for instance
//                    active while a mandatory column is missing
//            commit  makes, changes or destroys the row: GetRowState() is what
//                    its status becomes, 0 = none; notInService after
//                    createAndWait
//            undo    takes that back: GetRowStatusUndoValue() is what its status
//                    was, 0 = there was no row
//            cleanup releases what the slot keeps
// Handlers of other columns ask IsRowCreation() and IsRowDeletion() what becomes
// of their row in the same SET.
//
// A row that a SET leaves notInService or notReady (underCreation) is reported to
// RowActivationTimeout() after ActivationTimeout(), unless it became active
// (valid) or was destroyed before. Unregistering ends what is pending; a row is
// timed again when its status is next set.
//
// Ownership: as BMibImpl; row states live from a request's test to its cleanup.
// Threads:   as BMibImpl. A SET holds the timer's lock and, inside it, Mutex(),
//            in every phase; the time-out list's operations take both in this
//            order, so call them from a set handler, from RowActivationTimeout()
//            or without holding Mutex(). A class whose RowActivationTimeout()
//            uses its own members calls CancelTimeouts() in its destructor,
//            unless it is unregistered first.
// Errors:    as BMibImpl.
// Contract:  slot order and field order are ABI. In every phase the first error
//            ends the walk over the bindings. The access code of a column that
//            is no status column is not looked at, a missing handler is. A row
//            that is notReady may be set active. What one SET notes of a row is
//            seen by another on the same row, if a host does not serialise SETs:
//            they may fail each other.
class VKMIBH_API BMibTableImplEx : public BMibTableImpl {
public:
    enum ERowKind : int { eRowOfEntryStatus = 0, eRowOfRowStatus = 1 };

    // What the status bindings of one SET make of a row. Status values of the
    // row's kind; 0 = no row.
    struct VKMIBH_API RowState {
        ERowKind kind;
        ESnmpSetOpCode opCode; // the phase in which it was last used
        int undoValue;         // before the request
        int newValue;          // after the request
        int requestedValue;    // what the binding carries

        bool IsCreation() const;
        bool IsDeletion() const;
        // A new phase starts again from the value before the request.
        void SetOpCode(ESnmpSetOpCode op);
    };

    BMibTableImplEx(const BString& name, const BObjectIdentifier& oid);

    // Milliseconds, counted by the timer's ticks of a second; 0 = at the next tick.
    void SetActivationTimeout(int milliseconds);
    int ActivationTimeout() const;

    // Puts a row on the time-out list, anew if it is there; takes it off. Without
    // memory a row that was to be put there is off it.
    void AddToTimeoutList(const BObjectIdentifier& instance);
    void RemoveFromTimeoutList(const BObjectIdentifier& instance);
    void UpdateTimeoutList(const BObjectIdentifier& instance);

    // The state machines: what becomes of a row whose status is `current` (0 = no
    // row) when `requested` is asked for. Both write to `state`, which may be null:
    // the requested value and, on success, the new one.
    int RowStatusTestSet(ERowStatus current, ERowStatus requested, RowState* state);
    int EntryStatusTestSet(EEntryStatus current, EEntryStatus requested, RowState* state);

    // One phase of a status binding.
    int HandleRowStatusSet(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op,
                           void** slot, ERowStatus value, const BObjectIdentifier& instance);
    int HandleEntryStatusSet(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op,
                             void** slot, EEntryStatus value, const BObjectIdentifier& instance);

    // Whether the binding is an INTEGER for a status column; and whether it asks for
    // a new row, or for a row's end.
    int IsRowStatus(const BVarBind& binding) const;
    int IsRowCreation(const BVarBind& binding) const;
    int IsRowDeletion(const BVarBind& binding) const;
    // Of the SET under way; all are false, or as said, for a row whose status it
    // does not touch.
    bool IsRowCreation(const BObjectIdentifier& instance) const;
    bool IsRowDeletion(const BObjectIdentifier& instance) const;
    // The status after the SET; 0 = none.
    int GetRowState(const BObjectIdentifier& instance) const;
    // The status before the SET, 0 = there was no row; notReady and underCreation
    // for a row that the SET does not touch.
    ERowStatus GetRowStatusUndoValue(const BObjectIdentifier& instance) const;
    EEntryStatus GetEntryStatusUndoValue(const BObjectIdentifier& instance) const;
    // What the get handler answered when a row was last touched: notReady or
    // invalid when there was no row. EntryStatusTestSet() writes the second, too.
    ERowStatus LastRowStatus() const;
    EEntryStatus LastEntryStatus() const;

    // Forgets what a SET noted of the rows of these bindings. The cleanup phase does
    // it; so does whoever drives the phases and leaves that one out.
    void ForgetRows(const BVarBindList& list, int index, int count);

    // Virtual operations in slot order.
    ~BMibTableImplEx() override;
    void OnTimeout(BTimeInterval& interval) override;
    using BMibTableImpl::Get;
    using BMibTableImpl::Set;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    // The row was inactive for too long; called on the timer's thread under its
    // lock and Mutex(), never between the phases of a SET that touches the row's
    // status. Does nothing here.
    virtual void RowActivationTimeout(const BObjectIdentifier& instance);

protected:
    BMibTableImplEx(const BString& name, const BObjectIdentifier& oid, EImplKind kind);

    // Ends all that is pending. After it returns no RowActivationTimeout() runs.
    void CancelTimeouts();

private:
    friend struct SLayoutCheck;
    friend class BMibTableImplEx2;
    struct SManyRows;
    class Locks;
    struct SRowStatusColumn;
    struct SEntryStatusColumn;

    template <class Column>
    VKMIBH_LOCAL int HandleStatusSet(const SRqHndlrMapEntry* entry, unsigned id, ESnmpSetOpCode op,
                                     void** slot, typename Column::Status value,
                                     const BObjectIdentifier& instance);
    template <class Column>
    VKMIBH_LOCAL int TestStatus(const SRqHndlrMapEntry* entry, unsigned id,
                                typename Column::Status value, const BObjectIdentifier& instance);
    template <class Column>
    VKMIBH_LOCAL int BeginRow(const SRqHndlrMapEntry* entry, unsigned id,
                              const BObjectIdentifier& instance);
    template <class Column>
    VKMIBH_LOCAL int CommitStatus(typename Column::Status value, const BObjectIdentifier& instance);
    template <class Column>
    VKMIBH_LOCAL int UndoStatus(typename Column::Status value, const BObjectIdentifier& instance);
    VKMIBH_LOCAL const SRqHndlrMapEntry* FindStatusColumn(const BVarBind& binding) const;
    VKMIBH_LOCAL RowState* FindState(const BObjectIdentifier& instance) const;
    VKMIBH_LOCAL void DropState(const BObjectIdentifier& instance);
    VKMIBH_LOCAL int RefuseNameless(const BVarBindList& list, int& index, int count) const;
    VKMIBH_LOCAL void OrderCreations(const BVarBindList& list, void** slots, int first,
                                     int count) const;
    VKMIBH_LOCAL bool IsSameRow(const BVarBind& a, const BVarBind& creating) const;
    VKMIBH_LOCAL SManyRows* Many();
    VKMIBH_LOCAL bool InsertState(const BObjectIdentifier& instance, RowState* state);
    VKMIBH_LOCAL int TimeoutOf(const BObjectIdentifier& instance) const;
    VKMIBH_LOCAL const BObjectIdentifier* FindTimeout(int handle) const;
    VKMIBH_LOCAL bool InsertTimeout(const BObjectIdentifier& instance, int handle);
    VKMIBH_LOCAL bool ReplaceTimeout(const BObjectIdentifier& instance, int handle, int next);
    VKMIBH_LOCAL int DropTimeout(const BObjectIdentifier& instance);
    VKMIBH_LOCAL void EndTimeout(BTimer* timer, const BObjectIdentifier& instance);

    int m_activationTimeout;
    BMapOid2Ptr m_rowStates;
    BMapOid2Ptr m_timeoutList;
    int m_lastRowStatus;
    int m_lastEntryStatus;
    SManyRows* m_many; // what is beyond a handful of rows, null until then
};

// A row-status table whose rows need something to be allocated before they are
// created and released when they are destroyed, such as an index of another
// table.
//
// Ownership, Threads, Errors: as BMibTableImplEx.
// Contract:  slot order is ABI.
class VKMIBH_API BMibTableImplEx2 : public BMibTableImplEx {
public:
    BMibTableImplEx2(const BString& name, const BObjectIdentifier& oid);

    // Virtual operations in slot order.
    using BMibTableImplEx::Set;
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override;
    // Called in the test phase, before any binding is tested, once for every
    // status binding that creates or destroys a row; a status other than 0 refuses
    // the SET. `list` is a copy of the request's bindings, one for all calls: what a
    // call changes in it the next one sees, the SET does not.
    virtual int PreIxAllocOrDealloc(const BObjectIdentifier& instance, BVarBindList& list);

private:
    VKMIBH_LOCAL int PrepareIndexes(const BVarBindList& list, int& index, int count);
};

} // namespace VLK
