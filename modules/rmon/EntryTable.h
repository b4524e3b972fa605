// A table of RMON-MIB whose rows managers make, as one class for all of them.
#pragma once

#include "modules/WholeSetTable.h"
#include "modules/rmon/AlarmRows.h"
#include "modules/rmon/EntryRows.h"

#include <vkmibh/impl.h>

namespace VLK::modules {

// When a column may be changed in a row that is, and stays, valid.
enum EChangeable { eWhileValid, eNotWhileValid };

// The handlers of such a table. Its rows are made with createRequest, changed while
// they are underCreation, and work while they are valid; invalid removes them. All
// columns have defaults. A SET asks for one status of a row at most.
//
// Ownership: not of the rows, which outlive it.
// Threads:   as BMibTableImplEx. The rows may change by themselves between the phases
//            of a SET; one that went in between is not made again.
// Errors:    as BMibTableImplEx.
template <class TRows>
class TEntryTable : public CWholeSetTable {
public:
    using Entry = typename TRows::SEntry;
    using Entries = typename TRows::Entries;

    TEntryTable(const BString& name, const BObjectIdentifier& oid, TRows& rows,
                unsigned statusColumn, int activationTimeout)
        : CWholeSetTable(name, oid), m_rows(rows), m_statusColumn(statusColumn)
    {
        SetActivationTimeout(activationTimeout);
    }
    ~TEntryTable() override { CancelTimeouts(); }

    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const unsigned next = m_rows.After(index.Length() > 0 ? index[0] : 0);
        return next != 0 && nextIndex.Set(next);
    }
    void RowActivationTimeout(const BObjectIdentifier& row) override
    {
        m_rows.EraseIf(IndexOf(row),
                       [](const Entry& entry) { return entry.status != eEntryValid; });
    }

protected:
    template <class TField>
    struct TFieldOf;
    template <class C, class V>
    struct TFieldOf<V C::*> {
        using Type = V;
    };
    template <auto field>
    using Value = typename TFieldOf<decltype(field)>::Type;

    // Further conditions for a row that is to become valid.
    virtual int TestValid(const BObjectIdentifier&) { return eSnmpNoError; }
    // A row became, or became again, valid. False: it cannot work.
    virtual bool BeginValid() { return true; }

    TRows& Rows() const { return m_rows; }
    template <class TLook>
    int Look(const BObjectIdentifier& row, TLook look) const
    {
        return m_rows.Look(IndexOf(row), look) ? eSnmpNoError : eSnmpNoSuchName;
    }

    int OnGet_Index(const BObjectIdentifier& row, unsigned, int& value)
    {
        return Look(row, [&](const Entry&) { value = static_cast<int>(row[0]); });
    }
    template <auto field>
    int OnGet(const BObjectIdentifier& row, unsigned, Value<field>& value)
    {
        return Look(row, [&](const Entry& entry) { value = CopyOf(entry.settings.*field); });
    }
    template <auto field, EChangeable changeable>
    int OnSet(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned, const Value<field>& value,
              void** slot)
    {
        if (op == eSetTest) {
            const int status = TestColumn(row, changeable);
            return status == eSnmpNoError ? Keep(row, slot) : status;
        }
        if (op != eSetCommit)
            return Leave(row, op, slot);
        const int before = m_rows.StatusOf(IndexOf(row));
        if (before == 0 && !IsRowCreation(row))
            return eSnmpCommitFailed;
        Value<field> copy = CopyOf(value);
        m_rows.Change(IndexOf(row), [&](Entry& entry) { std::swap(entry.settings.*field, copy); });
        if (before == eEntryValid) // others are not kept
            m_rows.RequestSave();
        return eSnmpNoError;
    }
    int OnGet_Status(const BObjectIdentifier& row, unsigned, EEntryStatus& value, int)
    {
        return Look(row, [&](const Entry& entry) { value = entry.status; });
    }
    int OnSet_Status(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned, EEntryStatus value,
                     void** slot)
    {
        if (op == eSetTest) {
            const int status = TestStatus(row, value);
            return status == eSnmpNoError ? Keep(row, slot) : status;
        }
        return op == eSetCommit ? CommitStatus(row, slot) : Leave(row, op, slot);
    }

private:
    // 0: no row can have that index.
    static unsigned IndexOf(const BObjectIdentifier& row)
    {
        return row.Length() == 1 && row[0] <= kIndexMost ? row[0] : 0;
    }
    // The status that the row will have, 0 = none, whichever binding says so.
    int StatusAfterSet(const BObjectIdentifier& row, int before)
    {
        RowState state{eRowOfEntryStatus, eSetTest, 0, before, 0};
        if (const BObjectSyntax* requested = Requested(m_statusColumn, row))
            EntryStatusTestSet(EEntryStatus(before), EEntryStatus(requested->Int()), &state);
        return state.newValue;
    }
    int TestColumn(const BObjectIdentifier& row, EChangeable changeable)
    {
        const int before = m_rows.StatusOf(IndexOf(row));
        const int after = StatusAfterSet(row, before);
        if (after == 0)
            return before != 0 ? eSnmpInconsistentValue : eSnmpInconsistentName;
        const bool staysValid = before == eEntryValid && after == eEntryValid;
        return staysValid && changeable == eNotWhileValid ? eSnmpInconsistentValue : eSnmpNoError;
    }
    int TestStatus(const BObjectIdentifier& row, EEntryStatus value)
    {
        if (IndexOf(row) == 0)
            return eSnmpNoCreation;
        if (value < eEntryValid || value > eEntryInvalid)
            return eSnmpWrongValue;
        // Two statuses for one row: what it becomes would hang on their order.
        const BObjectSyntax* const first = Requested(m_statusColumn, row);
        if (!first || first->Int() != value)
            return eSnmpInconsistentValue;
        return value == eEntryValid ? TestValid(row) : int(eSnmpNoError);
    }
    int CommitStatus(const BObjectIdentifier& row, void** slot)
    {
        const unsigned index = IndexOf(row);
        const int before = m_rows.StatusOf(index);
        const int status = GetRowState(row);
        if (status == 0)
            m_rows.Extract(index, *static_cast<Entries*>(*slot));
        else if (before == 0 && !IsRowCreation(row))
            return eSnmpCommitFailed;
        else
            m_rows.SetStatus(index, EEntryStatus(status));
        if (before == eEntryValid || status == eEntryValid)
            m_rows.RequestSave();
        return status != eEntryValid || BeginValid() ? eSnmpNoError : eSnmpCommitFailed;
    }

    // The slot of a binding keeps its row as it was before the SET. So undo need not
    // know what was changed, in which order, and takes no memory.
    int Keep(const BObjectIdentifier& row, void** slot) const
    {
        if (!slot)
            return eSnmpResourceUnavailable;
        *slot = new Entries(m_rows.Keep(IndexOf(row)));
        return eSnmpNoError;
    }
    int Leave(const BObjectIdentifier& row, ESnmpSetOpCode op, void** slot)
    {
        Entries* const before = slot ? static_cast<Entries*>(*slot) : nullptr;
        if (op == eSetCleanup) {
            delete before;
            return eSnmpNoError;
        }
        if (!before)
            return eSnmpUndoFailed;
        m_rows.Restore(IndexOf(row), *before, IsRowDeletion(row));
        m_rows.RequestSave();
        const bool isValid = m_rows.StatusOf(IndexOf(row)) == eEntryValid;
        return !isValid || BeginValid() ? eSnmpNoError : eSnmpUndoFailed;
    }

    TRows& m_rows;
    const unsigned m_statusColumn;
};

} // namespace VLK::modules
