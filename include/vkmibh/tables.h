// Implementations of tables and of single rows.
#pragma once

#include <vkmibh/implbase.h>

namespace VLK {

// A conceptual table, registered at its entry OID. An instance is entry.column
// .index; handlers get the index as their instance. The module says which rows
// there are by one operation, NextIndex().
//
// Ownership: as BMibImpl. The instance a handler or NextIndex() is given is a
//            view that lives for the call; copy what is kept or changed.
// Threads:   as BMibImpl.
// Errors:    as BMibImpl. A get handler's noSuchName becomes the value
//            noSuchInstance.
// Contract:  columns are walked in map order, rows in the order of NextIndex(),
//            which must be that of BObjectIdentifier::Compare(). A walk that goes
//            on from a column that is not readable keeps its index for the next
//            readable one. No fields of its own.
class VKMIBH_API BMibTableImpl : public BMibImpl {
public:
    BMibTableImpl(const BString& name, const BObjectIdentifier& oid);

    using BMibImpl::Get;
    using BMibImpl::Set;
    // Virtual operations in slot order.
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;
    // Sets nextIndex to the first row index after `index` and returns non-zero, or
    // returns 0 when there is none. `index` need not be a row; empty stands before
    // the first one. `column` is for tables whose columns do not have all rows.
    virtual int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                          BObjectIdentifier& nextIndex) = 0;

protected:
    BMibTableImpl(const BString& name, const BObjectIdentifier& oid, EImplKind kind);

private:
    VKMIBH_LOCAL const SRqHndlrMapEntry* FirstRow(unsigned id, const SRqHndlrMapEntry* entry,
                                                  BObjectIdentifier& nextIndex);
    VKMIBH_LOCAL const SRqHndlrMapEntry* NextRow(unsigned id, const BObjectIdentifier& name,
                                                 BObjectIdentifier& nextIndex);
};

// One conceptual row with a fixed index, registered over a range of columns: it
// serves prefix.low.suffix to prefix.high.suffix. Its handlers have the form of
// scalar ones, for the row knows its index.
//
// Ownership, Threads, Errors: as BMibImpl. What a handler returns is returned;
//            access codes are not looked at, a missing handler is.
// Contract:  nothing compares the range's upper bound of the registration with
//            m_high; a class that changes one changes the other. With an empty
//            suffix prefix.column is the instance, and walks visit every column.
class VKMIBH_API BMibRowImpl : public BMibImpl {
public:
    BMibRowImpl(const BString& name, const BObjectIdentifier& prefix, unsigned low, unsigned high,
                const BObjectIdentifier& suffix);

    using BMibImpl::Get;
    using BMibImpl::Set;
    int Get(unsigned id, BVarBind& binding) override;
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override;
    int NextInstance(unsigned id, BVarBind& binding) override;

protected:
    BObjectIdentifier m_rangePrefix;
    unsigned m_low;
    unsigned m_high;
    BObjectIdentifier m_indexSuffix;

private:
    friend struct SLayoutCheck;
    VKMIBH_LOCAL const SRqHndlrMapEntry* FindServed(const BObjectIdentifier& name) const;
    VKMIBH_LOCAL bool NextColumn(const BObjectIdentifier& name, unsigned& column) const;
};

} // namespace VLK
