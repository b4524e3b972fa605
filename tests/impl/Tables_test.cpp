#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

using Log = std::vector<std::string>;

// Rows by dotted index, in OID order; a column may be without some of them.
class CTable : public BMibTableImpl {
public:
    CTable(std::vector<SRqHndlrMapEntry> map, const std::vector<const char*>& rows)
        : BMibTableImpl("table", OidOf("1.3.9")), m_map(std::move(map))
    {
        m_map.push_back(kRqEnd);
        for (const char* row : rows)
            m_rows.insert(OidOf(row));
        Initialize();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map.data(); }
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        m_kept = index;
        m_kept.Append(99u);
        m_asked.push_back(std::to_string(column) + ":" + TextOf(index));
        m_id = id;
        for (auto row = m_rows.upper_bound(index); row != m_rows.end(); ++row) {
            if (m_holes.count({column, TextOf(*row)}) == 0) {
                nextIndex = *row;
                return 7;
            }
        }
        return 0;
    }

    int OnGet(const BObjectIdentifier& instance, unsigned, BString& value)
    {
        m_kept = instance;
        m_kept.Append(99u);
        value = BString(("row " + TextOf(instance)).c_str());
        if (m_rows.count(instance) == 0)
            return eSnmpNoSuchName;
        return m_status;
    }
    int OnSet(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned id,
              const BString& value, void**)
    {
        m_kept = instance;
        m_kept.Append(99u);
        m_log.push_back(std::to_string(op) + " " + std::to_string(id) + " " + TextOf(instance) +
                        " " + value.c_str());
        return m_status;
    }
    static SRqHndlrMapEntry Column(unsigned column, ERqAccess access = eRqReadOnly)
    {
        return ColumnRow<eKindDisplayString, &CTable::OnGet, &CTable::OnSet>(
            column, "x", eAsnOctetString, access);
    }

    std::string Read(const char* name)
    {
        BVarBind binding(OidOf(name), IntValue(1));
        const int status = Get(3, binding);
        EXPECT_EQ(name, TextOf(binding.Name()));
        return status ? "status " + std::to_string(status)
                      : std::to_string(binding.Value().Syntax());
    }
    int Write(const char* name, ESnmpSetOpCode op = eSetTest)
    {
        m_log.clear();
        return Set(3, op, nullptr, BVarBind(OidOf(name), TextValue("new")));
    }
    std::string Next(const char* name)
    {
        m_asked.clear();
        BVarBind binding(OidOf(name), IntValue(1));
        const int found = NextInstance(3, binding);
        EXPECT_EQ(found ? int(eAsnNull) : int(eEndOfMibView), int(binding.Value().Syntax()));
        return found ? TextOf(binding.Name()) : "end";
    }

    mutable std::vector<SRqHndlrMapEntry> m_map;
    std::set<BObjectIdentifier> m_rows;
    std::set<std::pair<unsigned, std::string>> m_holes;
    int m_status = 0;
    Log m_log;
    Log m_asked;
    BObjectIdentifier m_kept; // the last instance or index seen, and 99
    unsigned m_id = 0;
};

class Table : public ::testing::Test {
protected:
    CTable m_table{{CTable::Column(1, eRqNotAccessible), CTable::Column(2),
                    CTable::Column(3, eRqReadWrite), CTable::Column(6, eRqWriteOnly),
                    CTable::Column(8, eRqReadCreate)},
                   {"1", "2.5", "4294967295"}};
};

TEST_F(Table, TwoWalks)
{
    EXPECT_EQ(TwoWalks(m_table, "1.3.9",
                       {{"1.3.9.2.1", eAsnOctetString, "row 1"},
                        {"1.3.9.2.2.5", eAsnOctetString, "row 2.5"},
                        {"1.3.9.2.4294967295", eAsnOctetString, "row 4294967295"},
                        {"1.3.9.3.1", eAsnOctetString, "row 1"},
                        {"1.3.9.3.2.5", eAsnOctetString, "row 2.5"},
                        {"1.3.9.3.4294967295", eAsnOctetString, "row 4294967295"},
                        {"1.3.9.8.1", eAsnOctetString, "row 1"},
                        {"1.3.9.8.2.5", eAsnOctetString, "row 2.5"},
                        {"1.3.9.8.4294967295", eAsnOctetString, "row 4294967295"}})
                  .Run(),
              "");
    EXPECT_EQ(unsigned(eImplTable), m_table.ImplKind());
}

TEST_F(Table, Get)
{
    EXPECT_EQ("4", m_table.Read("1.3.9.2.1"));
    EXPECT_EQ("4", m_table.Read("1.3.9.8.2.5"));
    for (const char* name : {"1.3.9.2", "1.3.9.4", "1.3.9", "1.3", "1.3.9.4.1", "1.3.9.1.1",
                             "1.3.9.6.1", "1.3.9.2.2", "1.3.9.2.2.5.1"})
        EXPECT_EQ("129", m_table.Read(name)) << name;
}

TEST_F(Table, HandlersErrorsAreReturnedButNoSuchName)
{
    for (int status : {1, 5, 13}) {
        m_table.m_status = status;
        EXPECT_EQ("status " + std::to_string(status), m_table.Read("1.3.9.2.1"));
    }
    m_table.m_status = eSnmpNoSuchName;
    EXPECT_EQ("129", m_table.Read("1.3.9.2.1"));
}

TEST_F(Table, Set)
{
    EXPECT_EQ(0, m_table.Write("1.3.9.3.2.5", eSetCommit));
    EXPECT_EQ((Log{"163 3 2.5 new"}), m_table.m_log);
    EXPECT_EQ(0, m_table.Write("1.3.9.6.7"));
    EXPECT_EQ(0, m_table.Write("1.3.9.8.7"));
    for (const char* name : {"1.3.9.3", "1.3.9.2", "1.3.9.4", "1.3.9"})
        EXPECT_EQ(eSnmpNoSuchName, m_table.Write(name)) << name;
    EXPECT_EQ(eSnmpNotWritable, m_table.Write("1.3.9.4.1")) << "unknown column";
    EXPECT_EQ(eSnmpNotWritable, m_table.Write("1.3.9.2.1")) << "read-only";
    EXPECT_EQ(eSnmpNotWritable, m_table.Write("1.3.9.1.1")) << "not accessible";
    EXPECT_TRUE(m_table.m_log.empty());
    m_table.m_status = 12;
    EXPECT_EQ(12, m_table.Write("1.3.9.3.1"));
}

TEST_F(Table, HandlersMayKeepAndGrowCopiesOfTheInstance)
{
    {
        const BVarBind binding(OidOf("1.3.9.3.2.5"), TextValue("new"));
        EXPECT_EQ(0, m_table.Set(3, eSetTest, nullptr, binding));
        EXPECT_EQ("1.3.9.3.2.5", TextOf(binding.Name())) << "the binding's arcs are not touched";
    }
    EXPECT_EQ("2.5.99", TextOf(m_table.m_kept)) << "and the copy outlives the binding";
    EXPECT_EQ("4", m_table.Read("1.3.9.2.1"));
    EXPECT_EQ("1.99", TextOf(m_table.m_kept));
    EXPECT_EQ("1.3.9.2.2.5", m_table.Next("1.3.9.2.1"));
    EXPECT_EQ("1.99", TextOf(m_table.m_kept));
    static_assert(!std::is_assignable_v<const BObjectIdentifier&, BObjectIdentifier>);
    static_assert(!std::is_assignable_v<decltype(std::declval<const BObjectIdentifier&>()[0]), int>,
                  "the view cannot be written");
}

TEST_F(Table, NextInstanceFromBeforeTheTable)
{
    for (const char* name : {"1.3.9", "1.3", "1.3.8.99"}) {
        EXPECT_EQ("1.3.9.2.1", m_table.Next(name)) << name;
        EXPECT_EQ(3u, m_table.m_id);
        EXPECT_EQ((Log{"2:"}), m_table.m_asked) << "the first readable column, from its start";
    }
}

TEST_F(Table, NextInstanceOfTheEntryItselfDoesNotLookBehindItsArcs)
{
    BVarBind binding(OidOf("1.3.9.3.1"));
    binding.Name().Truncate(3);
    EXPECT_EQ(1, m_table.NextInstance(3, binding));
    EXPECT_EQ("1.3.9.2.1", TextOf(binding.Name()));
}

TEST_F(Table, NextInstanceInsideAColumnAndOnToTheNext)
{
    EXPECT_EQ("1.3.9.2.1", m_table.Next("1.3.9.2"));
    EXPECT_EQ("1.3.9.2.2.5", m_table.Next("1.3.9.2.1"));
    EXPECT_EQ("1.3.9.2.2.5", m_table.Next("1.3.9.2.1.7"));
    EXPECT_EQ("1.3.9.3.1", m_table.Next("1.3.9.2.4294967295"));
    EXPECT_EQ((Log{"2:4294967295", "3:"}), m_table.m_asked);
    EXPECT_EQ("1.3.9.8.1", m_table.Next("1.3.9.3.4294967295")) << "column 6 is skipped";
    EXPECT_EQ("end", m_table.Next("1.3.9.8.4294967295"));
}

TEST_F(Table, NextInstanceBetweenColumns)
{
    EXPECT_EQ("1.3.9.2.1", m_table.Next("1.3.9.0.5"));
    EXPECT_EQ("1.3.9.8.1", m_table.Next("1.3.9.4"));
    EXPECT_EQ("1.3.9.8.1", m_table.Next("1.3.9.4.4294967295")) << "from the column's start";
    EXPECT_EQ("end", m_table.Next("1.3.9.9"));
    EXPECT_TRUE(m_table.m_asked.empty());
}

TEST_F(Table, NextInstanceAfterTheTableIsTheEnd)
{
    for (const char* name : {"1.3.10", "2", "1.4.1"})
        EXPECT_EQ("end", m_table.Next(name)) << name;
}

TEST_F(Table, UnreadableColumnPassesItsIndexOnToTheNextReadableOne)
{
    EXPECT_EQ("1.3.9.2.2.5", m_table.Next("1.3.9.1.1"));
    EXPECT_EQ((Log{"2:1"}), m_table.m_asked);
    EXPECT_EQ("1.3.9.8.4294967295", m_table.Next("1.3.9.6.2.5"));
    EXPECT_EQ("1.3.9.3.1", m_table.Next("1.3.9.1.4294967295"));
    EXPECT_EQ((Log{"2:4294967295", "3:"}), m_table.m_asked) << "then from the start again";
}

TEST(TableWalk, UnreadableEntriesUpToTheEndOfTheMapAreTheEnd)
{
    CTable table(
        {CTable::Column(1), CTable::Column(2, eRqNotAccessible), CTable::Column(3, eRqWriteOnly)},
        {"1"});
    EXPECT_EQ("end", table.Next("1.3.9.1.1"));
    EXPECT_EQ("end", table.Next("1.3.9.2.0"));
    EXPECT_EQ("end", table.Next("1.3.9.3"));
    CTable hidden({CTable::Column(1, eRqNotAccessible)}, {"1"});
    EXPECT_EQ("end", hidden.Next("1.3.9"));
    EXPECT_EQ("end", hidden.Next("1.3.9.0"));
    CTable empty({}, {"1"});
    EXPECT_EQ("end", empty.Next("1.3.9"));
    EXPECT_EQ("end", empty.Next("1.3.9.1"));
    EXPECT_EQ("129", empty.Read("1.3.9.1.1"));
}

TEST(TableWalk, TableWithoutRowsIsAtItsEnd)
{
    CTable table({CTable::Column(1), CTable::Column(2)}, {});
    EXPECT_EQ("end", table.Next("1.3.9"));
    EXPECT_EQ((Log{"1:", "2:"}), table.m_asked);
    EXPECT_EQ("end", table.Next("1.3.9.1.1"));
    EXPECT_EQ(TwoWalks(table, "1.3.9", {}).Run(), "");
}

TEST(TableWalk, SparseColumns)
{
    CTable table({CTable::Column(1), CTable::Column(2), CTable::Column(3)}, {"1", "2"});
    table.m_holes = {{1, "1"}, {1, "2"}, {2, "2"}};
    EXPECT_EQ("1.3.9.2.1", table.Next("1.3.9"));
    EXPECT_EQ("1.3.9.3.1", table.Next("1.3.9.2.1"));
    EXPECT_EQ("1.3.9.2.1", table.Next("1.3.9.1.1"));
    EXPECT_EQ("1.3.9.3.2", table.Next("1.3.9.3.1"));
}

// Builds the next index in place, also when it then finds no row.
class CBuilding : public CTable {
public:
    using CTable::CTable;
    int NextIndex(unsigned, unsigned column, const BObjectIdentifier&,
                  BObjectIdentifier& nextIndex) override
    {
        nextIndex.Append(column);
        return column == 3;
    }
};

TEST(TableWalk, EveryColumnStartsWithAnEmptyNextIndex)
{
    CBuilding table({CTable::Column(1), CTable::Column(2), CTable::Column(3)}, {});
    EXPECT_EQ("1.3.9.3.3", table.Next("1.3.9"));
    EXPECT_EQ("1.3.9.3.3", table.Next("1.3.9.1.5"));
}

// A row that is listed by NextIndex but gone when it is read.
class CVanishing : public CTable {
public:
    using CTable::CTable;
    int NextIndex(unsigned id, unsigned column, const BObjectIdentifier& index,
                  BObjectIdentifier& nextIndex) override
    {
        const int found = CTable::NextIndex(id, column, index, nextIndex);
        if (found && TextOf(nextIndex) == "2")
            m_rows.erase(nextIndex);
        return found;
    }
};

TEST(TableWalk, RowsThatVanishedAreSteppedOver)
{
    CVanishing table({CTable::Column(1)}, {"1", "2", "3"});
    BVarBind binding(OidOf("1.3.9.1.1"));
    EXPECT_EQ(0, table.GetNext(3, binding));
    EXPECT_EQ("1.3.9.1.3", TextOf(binding.Name()));
}

// A module whose order is not the one of the OIDs must not keep the walk.
class CDisordered : public CTable {
public:
    using CTable::CTable;
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&,
                  BObjectIdentifier& nextIndex) override
    {
        nextIndex.Set(1u);
        return 1;
    }
};

TEST(TableWalk, TableInDisorderEnds)
{
    CDisordered table({CTable::Column(1)}, {});
    BVarBind binding(OidOf("1.3.9.1.1"));
    EXPECT_EQ(0, table.GetNext(3, binding));
    EXPECT_EQ(int(eEndOfMibView), int(binding.Value().Syntax()));
    EXPECT_EQ("1.3.9.1.1", TextOf(binding.Name()));
}

} // namespace
} // namespace VLK
