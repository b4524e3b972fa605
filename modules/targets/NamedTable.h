// A table whose rows managers name and make, as one class for all of them.
#pragma once

#include "modules/WholeSetTable.h"
#include "modules/targets/TargetRows.h"

#include <exception>
#include <memory>

namespace VLK::modules {

// Rows of a table at most.
constexpr size_t kRowsMost = 1000;

// What the tables share, whatever their rows are.
class CNamedTable : public CWholeSetTable {
public:
    using CWholeSetTable::CWholeSetTable;
    using CWholeSetTable::Set;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;

protected:
    // False: no row can have that index.
    static bool ReadName(const BObjectIdentifier& row, std::string& name);
    static bool IsOwn(const std::string& name);
    static std::string TextOf(const BOctetString& octets);
    // A name that a walk has come to need not be one.
    static std::string StartOf(const BObjectIdentifier& index);
    static bool WriteName(const std::string& name, BObjectIdentifier& row);
};

// The handlers of such a table. Its columns may be set in any order, those without a
// default before the row is active; until then it is notReady. Columns that are kFixed
// can be set while the row is not active, or in the SET that stops it. Rows that are
// permanent cannot be destroyed, those that are readOnly not changed either; managers can
// make neither. A SET asks for one status of a row at most.
//
// Ownership: not of the rows, which outlive it.
// Threads:   as BMibTableImplEx.
// Errors:    as BMibTableImplEx.
// Contract:  a change is saved in the phase that makes it, commit or undo.
template <class TRow>
class TNamedTable : public CNamedTable {
public:
    using CRows = TNamedRows<TRow>;

    TNamedTable(const char* name, const char* oid, CRows& rows, unsigned storageColumn,
                unsigned statusColumn)
        : CNamedTable(BString(name), BObjectIdentifier(BString(oid))), m_rows(rows),
          m_storageColumn(storageColumn), m_statusColumn(statusColumn)
    {
    }
    int NextIndex(unsigned, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        std::string next = StartOf(index);
        bool isThere = false;
        while (!isThere && m_rows.After(next, next))
            m_rows.Look(next, [&](const TRow& row) { isThere = Has(row, column); });
        return isThere && WriteName(next, nextIndex);
    }

protected:
    using FCheckText = int (*)(const std::string&);
    using FCheckNumber = int (*)(int);

    static int AnyText(const std::string&) { return eSnmpNoError; }
    static int AnyNumber(int) { return eSnmpNoError; }

    template <class TLook>
    int Look(const BObjectIdentifier& row, TLook look) const
    {
        std::string name;
        return ReadName(row, name) && m_rows.Look(name, look) ? eSnmpNoError : eSnmpNoSuchName;
    }
    // Of a column that has a value.
    template <class TLook>
    int LookAt(const BObjectIdentifier& row, unsigned column, TLook look) const
    {
        int status = eSnmpNoSuchName;
        Look(row, [&](const TRow& found) {
            if (Has(found, column)) {
                look(found);
                status = eSnmpNoError;
            }
        });
        return status;
    }
    template <unsigned column, std::string TRow::*field>
    int OnGetText(const BObjectIdentifier& row, unsigned, BOctetString& value)
    {
        std::string text;
        const int status = LookAt(row, column, [&](const TRow& found) { text = found.*field; });
        if (status != eSnmpNoError)
            return status;
        const auto* const octets = reinterpret_cast<const unsigned char*>(text.data());
        value = BOctetString(octets, octets + text.size());
        return value.Length() == text.size() ? eSnmpNoError : eSnmpGenErr;
    }
    template <unsigned column, std::string TRow::*field, FCheckText check>
    int OnSetText(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned,
                  const BOctetString& value, void** slot)
    {
        if (op == eSetUndo || op == eSetCleanup) // which take no memory
            return Leave(op, slot);
        const std::string text = TextOf(value);
        if (op == eSetTest) {
            const int status = check(text);
            return status == eSnmpNoError ? Test(row, column, slot) : status;
        }
        return CommitOrLeave(row, op, column, slot, [&](TRow& made) { made.*field = text; });
    }
    template <unsigned column, auto field, class V>
    int OnGetNumber(const BObjectIdentifier& row, unsigned, V& value)
    {
        return LookAt(row, column, [&](const TRow& found) { value = found.*field; });
    }
    template <unsigned column, auto field, FCheckNumber check, class V>
    int OnSetNumber(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned, V value, void** slot)
    {
        if (op == eSetTest) {
            const int status = check(value);
            return status == eSnmpNoError ? Test(row, column, slot) : status;
        }
        return CommitOrLeave(row, op, column, slot, [&](TRow& made) { made.*field = value; });
    }
    int OnGet_Storage(const BObjectIdentifier& row, unsigned, EStorageType& value)
    {
        return Look(row, [&](const TRow& found) { value = found.storage; });
    }
    int OnSet_Storage(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned, EStorageType value,
                      void** slot)
    {
        if (op == eSetTest) {
            const int status = TestStorage(row, value);
            return status == eSnmpNoError ? Test(row, m_storageColumn, slot) : status;
        }
        return CommitOrLeave(row, op, m_storageColumn, slot,
                             [&](TRow& made) { made.storage = value; });
    }
    int OnGet_Status(const BObjectIdentifier& row, unsigned, ERowStatus& value, int)
    {
        return Look(row, [&](const TRow& found) { value = StatusOf(found); });
    }
    int OnSet_Status(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned, ERowStatus value,
                     void** slot)
    {
        if (op == eSetTest) {
            const int status = TestStatus(row, value);
            return status == eSnmpNoError ? Keep(row, slot) : status;
        }
        return op == eSetCommit ? CommitStatus(row, slot) : Leave(op, slot);
    }

    // Of a column that is to be set: keeps the row for undo.
    int Test(const BObjectIdentifier& row, unsigned column, void** slot)
    {
        const int status = TestColumn(row, column);
        return status == eSnmpNoError ? Keep(row, slot) : status;
    }
    template <class TChange>
    int CommitOrLeave(const BObjectIdentifier& row, ESnmpSetOpCode op, unsigned column, void** slot,
                      TChange change)
    {
        if (op != eSetCommit)
            return Leave(op, slot);
        std::string name;
        if (!ReadName(row, name) || (!m_rows.Look(name, [](const TRow&) {}) && !IsToBeMade(row)))
            return eSnmpCommitFailed;
        m_rows.Change(name, [&](TRow& made) {
            change(made);
            made.set |= TRow::Bit(column);
        });
        return Save(slot);
    }

private:
    static bool Has(const TRow& row, unsigned column)
    {
        const unsigned bit = TRow::Bit(column);
        return (TRow::kNeeded & bit) == 0 || (row.set & bit) != 0;
    }
    static ERowStatus StatusOf(const TRow& row)
    {
        if (row.isActive)
            return eRowActive;
        return (row.set & TRow::kNeeded) == TRow::kNeeded ? eRowNotInService : eRowNotReady;
    }
    // What the SET asks the row to be, 0 = nothing.
    int RequestedStatus(const BObjectIdentifier& row) const
    {
        const BObjectSyntax* const requested = Requested(m_statusColumn, row);
        return requested && requested->Syntax() == eAsnInteger ? requested->Int() : 0;
    }
    bool IsToBeMade(const BObjectIdentifier& row) const
    {
        const int status = RequestedStatus(row);
        return status == eRowCreateAndGo || status == eRowCreateAndWait;
    }
    int TestColumn(const BObjectIdentifier& row, unsigned column)
    {
        TRow found;
        const int requested = RequestedStatus(row);
        if (Look(row, [&](const TRow& is) { found = is; }) != eSnmpNoError)
            return IsToBeMade(row) ? eSnmpNoError : eSnmpInconsistentName;
        if (found.storage == eStorageReadOnly)
            return eSnmpNotWritable;
        const bool staysActive = found.isActive && requested != eRowNotInService;
        const bool isFixed = (TRow::kFixed & TRow::Bit(column)) != 0;
        return requested == eRowDestroy || (staysActive && isFixed) ? eSnmpInconsistentValue
                                                                    : eSnmpNoError;
    }
    // What is permanent or readOnly stays so, and nothing else becomes it (RFC 2579).
    int TestStorage(const BObjectIdentifier& row, EStorageType value)
    {
        EStorageType before = eStorageNonVolatile;
        const bool isThere =
            Look(row, [&](const TRow& found) { before = found.storage; }) == eSnmpNoError;
        if (isThere && before == eStorageReadOnly)
            return eSnmpNotWritable;
        if (isThere && before == value)
            return eSnmpNoError;
        const bool changes = value == eStorageVolatile || value == eStorageNonVolatile;
        return changes && !(isThere && IsKept(before)) ? eSnmpNoError : eSnmpInconsistentValue;
    }
    int TestStatus(const BObjectIdentifier& row, ERowStatus value)
    {
        // Two statuses for one row: what it becomes would hang on their order.
        if (RequestedStatus(row) != value)
            return eSnmpInconsistentValue;
        TRow found;
        if (Look(row, [&](const TRow& is) { found = is; }) != eSnmpNoError) {
            const int status = TestNew(row, value);
            if (status != eSnmpNoError)
                return status;
        } else if (value == eRowDestroy
                       ? IsKept(found.storage)
                       : found.storage == eStorageReadOnly && value != StatusOf(found)) {
            return eSnmpInconsistentValue;
        }
        const bool needsAll =
            value == eRowActive || value == eRowCreateAndGo || value == eRowNotInService;
        return !needsAll || WillHaveAll(row, found.set) ? eSnmpNoError : eSnmpInconsistentValue;
    }
    int TestNew(const BObjectIdentifier& row, ERowStatus value) const
    {
        std::string name;
        if (value == eRowDestroy)
            return eSnmpNoError;
        if (!ReadName(row, name) || IsOwn(name))
            return eSnmpNoCreation;
        return m_rows.Count() < kRowsMost ? eSnmpNoError : eSnmpResourceUnavailable;
    }
    // All columns without a default, be it by this SET.
    bool WillHaveAll(const BObjectIdentifier& row, unsigned set) const
    {
        for (unsigned column = 1; column < m_statusColumn; ++column) {
            const unsigned bit = TRow::Bit(column);
            if ((TRow::kNeeded & bit) != 0 && (set & bit) == 0 && !Requested(column, row))
                return false;
        }
        return true;
    }
    int CommitStatus(const BObjectIdentifier& row, void** slot)
    {
        SKept* const kept = KeptIn(slot);
        const int status = GetRowState(row);
        if (!kept || (status != 0 && kept->name.empty()))
            return eSnmpCommitFailed;
        if (status == 0)
            m_rows.Extract(kept->name, kept->rows);
        else
            m_rows.Change(kept->name, [&](TRow& made) { made.isActive = status == eRowActive; });
        return Save(slot);
    }

    // What the slot of a binding keeps: its row as it was before the SET. So undo need not
    // know what was changed, in which order, and takes no memory.
    struct SKept {
        std::string name; // empty: no row can have that index
        typename CRows::Rows rows;
    };
    static SKept* KeptIn(void** slot) { return slot ? static_cast<SKept*>(*slot) : nullptr; }

    int Keep(const BObjectIdentifier& row, void** slot) const
    {
        if (!slot)
            return eSnmpResourceUnavailable;
        auto kept = std::make_unique<SKept>();
        if (ReadName(row, kept->name))
            kept->rows = m_rows.Keep(kept->name);
        else
            kept->name.clear();
        *slot = kept.release();
        return eSnmpNoError;
    }
    // A binding whose commit fails is not undone.
    int Save(void** slot)
    {
        try {
            m_rows.RequestSave();
            return eSnmpNoError;
        } catch (const std::exception&) {
            if (SKept* const kept = KeptIn(slot))
                m_rows.Restore(kept->name, kept->rows);
            return eSnmpCommitFailed;
        }
    }
    // Undo and cleanup.
    int Leave(ESnmpSetOpCode op, void** slot)
    {
        SKept* const kept = KeptIn(slot);
        if (op == eSetCleanup) {
            delete kept;
            if (slot)
                *slot = nullptr;
            return eSnmpNoError;
        }
        if (kept && !kept->name.empty())
            m_rows.Restore(kept->name, kept->rows);
        m_rows.RequestSave();
        return eSnmpNoError;
    }

    CRows& m_rows;
    const unsigned m_storageColumn;
    const unsigned m_statusColumn;
};

} // namespace VLK::modules
