// What benchmarks ask: ten scalars, and a table of one column.
#pragma once

#include "bench/Agent.h"

#include <algorithm>
#include <vector>

namespace VLK {

// Ten integer scalars, of which the first can be written.
class Scalars : public BMibScalarGroupImpl {
public:
    explicit Scalars(const BObjectIdentifier& oid)
        : BMibScalarGroupImpl(BString("bench.scalars"), oid)
    {
    }
    int OnGet(unsigned, int& value)
    {
        value = m_value;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit)
            m_value = value;
        return eSnmpNoError;
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    static SRqHndlrMapEntry s_map[];

private:
    int m_value = 1;
};

constexpr SRqHndlrMapEntry ReadScalar(unsigned column, const char* name)
{
    return ScalarRow<eKindInteger, &Scalars::OnGet>(column, name, eAsnInteger, eRqReadOnly);
}

inline SRqHndlrMapEntry Scalars::s_map[] = {
    ScalarRow<eKindInteger, &Scalars::OnGet, &Scalars::OnSet>(1, "one", eAsnInteger, eRqReadWrite),
    ReadScalar(2, "two"),
    ReadScalar(3, "three"),
    ReadScalar(4, "four"),
    ReadScalar(5, "five"),
    ReadScalar(6, "six"),
    ReadScalar(7, "seven"),
    ReadScalar(8, "eight"),
    ReadScalar(9, "nine"),
    ReadScalar(10, "ten"),
    kRqEnd};

// One column over rows with scattered indices (Row(0), Row(1) and so on), found by
// binary search. A SET tells the last value only; one row can refuse to be committed.
class Table : public BMibTableImpl {
public:
    Table(const BObjectIdentifier& oid, unsigned rows) : BMibTableImpl(BString("bench.table"), oid)
    {
        for (unsigned i = 0; i < rows; ++i)
            m_rows.push_back(Row(i));
    }
    static unsigned Row(unsigned i) { return 7 * i + 1; }
    int OnGet(const BObjectIdentifier& instance, unsigned, int& value)
    {
        value = static_cast<int>(instance[0]);
        return IsThere(instance) ? eSnmpNoError : eSnmpNoSuchName;
    }
    int OnSet(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetTest)
            return IsThere(instance) ? eSnmpNoError : eSnmpNoCreation;
        if (op == eSetCommit) {
            m_last = value;
            return instance[0] == refused ? eSnmpCommitFailed : eSnmpNoError;
        }
        return eSnmpNoError;
    }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const auto next = index.Length() == 0
                              ? m_rows.begin()
                              : std::upper_bound(m_rows.begin(), m_rows.end(), index[0]);
        return next != m_rows.end() && nextIndex.Set(*next);
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    static SRqHndlrMapEntry s_map[];

    unsigned refused = 0;

private:
    bool IsThere(const BObjectIdentifier& instance) const
    {
        return std::binary_search(m_rows.begin(), m_rows.end(), instance[0]);
    }

    std::vector<unsigned> m_rows;
    int m_last = 0;
};

inline SRqHndlrMapEntry Table::s_map[] = {
    ColumnRow<eKindInteger, &Table::OnGet, &Table::OnSet>(1, "value", eAsnInteger, eRqReadWrite),
    kRqEnd};

// The floor of a request is what no agent can leave out: the module's own code, called
// with typed values, and the values and names that it gives, put into the bindings.

inline int FloorGet(BMibImpl& module, SRqHndlrMapEntry& entry, BVarBind& binding,
                    const BObjectIdentifier* index)
{
    return module.Get(&entry, 1, binding.Value(), index);
}

// From one row to the next; `index` moves along.
inline bool FloorNext(Table& table, BVarBind& binding, BObjectIdentifier& index)
{
    BObjectIdentifier& name = binding.Name();
    return table.NextIndex(1, 1, index, index) && name.Set(table.Oid()) && name.Append(1u) &&
           name.Append(index, true) &&
           FloorGet(table, Table::s_map[0], binding, &index) == eSnmpNoError;
}

} // namespace VLK
