#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

using Log = std::vector<std::string>;

class CRow : public BMibRowImpl {
public:
    CRow(unsigned low, unsigned high, const std::vector<unsigned>& columns,
         const char* suffix = "7.8")
        : BMibRowImpl("row", OidOf("1.3.9"), low, high, OidOf(suffix))
    {
        for (unsigned column : columns)
            m_map.push_back(ScalarRow<eKindDisplayString, &CRow::OnGet, &CRow::OnSet>(
                column, "x", eAsnOctetString, m_access));
        m_map.push_back(kRqEnd);
        Initialize();
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map.data(); }
    int OnGet(unsigned, BString& value)
    {
        value = BString("text");
        return m_status;
    }
    int OnSet(ESnmpSetOpCode op, unsigned id, const BString& value, void**)
    {
        m_log.push_back(std::to_string(op) + " " + std::to_string(id) + " " + value.c_str());
        return m_status;
    }

    std::string Read(const char* name)
    {
        BVarBind binding(OidOf(name), IntValue(1));
        const int status = Get(3, binding);
        return status ? "status " + std::to_string(status)
                      : std::to_string(binding.Value().Syntax());
    }
    int Write(const char* name)
    {
        m_log.clear();
        return Set(3, eSetTest, nullptr, BVarBind(OidOf(name), TextValue("new")));
    }
    std::string Next(const char* name)
    {
        BVarBind binding(OidOf(name), IntValue(1));
        const int found = NextInstance(3, binding);
        EXPECT_EQ(found ? int(eAsnNull) : int(eEndOfMibView), int(binding.Value().Syntax()));
        return found ? TextOf(binding.Name()) : "end";
    }

    ERqAccess m_access = eRqReadOnly;
    mutable std::vector<SRqHndlrMapEntry> m_map;
    int m_status = 0;
    Log m_log;
};

class Row : public ::testing::Test {
protected:
    CRow m_row{2, 5, {1, 2, 3, 5, 6}};
};

TEST_F(Row, Registration)
{
    EXPECT_EQ("1.3.9.2.7.8", TextOf(m_row.Oid()));
    EXPECT_EQ(4u, m_row.RangePosition());
    EXPECT_EQ(5u, m_row.RangeUpperBound());
    EXPECT_EQ(unsigned(eImplRow), m_row.ImplKind());
}

TEST_F(Row, TwoWalks)
{
    EXPECT_EQ(TwoWalks(m_row, "1.3.9",
                       {{"1.3.9.2.7.8", eAsnOctetString, "text"},
                        {"1.3.9.3.7.8", eAsnOctetString, "text"},
                        {"1.3.9.5.7.8", eAsnOctetString, "text"}})
                  .Run(),
              "");
}

TEST_F(Row, GetNeedsEveryCondition)
{
    EXPECT_EQ("4", m_row.Read("1.3.9.2.7.8"));
    EXPECT_EQ("4", m_row.Read("1.3.9.5.7.8"));
    EXPECT_EQ("129", m_row.Read("1.3.9.2.7")) << "too short";
    EXPECT_EQ("129", m_row.Read("1.3.9.2.7.8.9")) << "too long";
    EXPECT_EQ("129", m_row.Read("1.3.9.1.7.8")) << "below the range, though in the map";
    EXPECT_EQ("129", m_row.Read("1.3.9.6.7.8")) << "above the range, though in the map";
    EXPECT_EQ("129", m_row.Read("1.3.9.2.7.9")) << "another index";
    EXPECT_EQ("129", m_row.Read("1.3.9.4.7.8")) << "not in the map";
}

TEST_F(Row, HandlersResultIsReturnedAsItIs)
{
    m_row.m_status = 2;
    EXPECT_EQ("status 2", m_row.Read("1.3.9.2.7.8"));
    m_row.m_status = 13;
    EXPECT_EQ("status 13", m_row.Read("1.3.9.2.7.8"));
    EXPECT_EQ(13, m_row.Write("1.3.9.2.7.8"));
}

TEST_F(Row, AccessCodesAreNotLookedAt)
{
    for (SRqHndlrMapEntry& entry : m_row.m_map)
        entry.access = eRqNotAccessible;
    EXPECT_EQ("4", m_row.Read("1.3.9.2.7.8"));
    EXPECT_EQ(0, m_row.Write("1.3.9.2.7.8")) << "the handler decides what is writable";
    m_row.m_map[1].getHandler = nullptr;
    m_row.m_map[1].setHandler = nullptr;
    EXPECT_EQ("status 5", m_row.Read("1.3.9.2.7.8"));
    EXPECT_EQ(eSnmpNotWritable, m_row.Write("1.3.9.2.7.8"));
}

TEST_F(Row, SetNeedsEveryCondition)
{
    EXPECT_EQ(0, m_row.Write("1.3.9.3.7.8"));
    EXPECT_EQ((Log{"224 3 new"}), m_row.m_log);
    for (const char* name : {"1.3.9.2.7", "1.3.9.2.7.8.9", "1.3.9.1.7.8", "1.3.9.6.7.8",
                             "1.3.9.2.7.9", "1.3.9.4.7.8"}) {
        EXPECT_EQ(eSnmpNoSuchName, m_row.Write(name)) << name;
        EXPECT_TRUE(m_row.m_log.empty());
    }
}

TEST_F(Row, NextInstanceStepByStep)
{
    EXPECT_EQ("1.3.9.2.7.8", m_row.Next("1.3")) << "before the prefix";
    EXPECT_EQ("1.3.9.2.7.8", m_row.Next("1.3.9")) << "the prefix itself";
    EXPECT_EQ("end", m_row.Next("1.3.10")) << "after the prefix";
    EXPECT_EQ("1.3.9.2.7.8", m_row.Next("1.3.9.1.99")) << "below the range";
    EXPECT_EQ("end", m_row.Next("1.3.9.6")) << "above the range";
    EXPECT_EQ("1.3.9.4.7.8", m_row.Next("1.3.9.4")) << "ends at the column";
    EXPECT_EQ("1.3.9.3.7.8", m_row.Next("1.3.9.3.7")) << "before the index";
    EXPECT_EQ("1.3.9.3.7.8", m_row.Next("1.3.9.3.6.9"));
    EXPECT_EQ("1.3.9.4.7.8", m_row.Next("1.3.9.3.7.8")) << "the index: next column";
    EXPECT_EQ("1.3.9.4.7.8", m_row.Next("1.3.9.3.7.8.0")) << "after the index";
    EXPECT_EQ("end", m_row.Next("1.3.9.5.7.8"));
    EXPECT_EQ("1.3.9.5.7.8", m_row.Next("1.3.9.5.7"));
}

TEST(RowRange, LastColumnDoesNotWrap)
{
    CRow row(4294967294u, 4294967295u, {4294967294u, 4294967295u});
    EXPECT_EQ("1.3.9.4294967295.7.8", row.Next("1.3.9.4294967294.7.8"));
    EXPECT_EQ("end", row.Next("1.3.9.4294967295.7.8"));
    EXPECT_EQ("end", row.Next("1.3.9.4294967295.9"));
    EXPECT_EQ(TwoWalks(row, "1.3.9",
                       {{"1.3.9.4294967294.7.8", eAsnOctetString, "text"},
                        {"1.3.9.4294967295.7.8", eAsnOctetString, "text"}})
                  .Run(),
              "");
}

// Sets the members itself, and not as they were registered.
class CMovedRow : public CRow {
public:
    CMovedRow() : CRow(2, 5, {2, 3, 4})
    {
        m_low = 3;
        m_high = 4;
        m_indexSuffix = OidOf("7.8.9");
    }
};

TEST(RowRange, AnswersAreTheRegistrationWithAnotherColumn)
{
    CMovedRow row;
    EXPECT_EQ("1.3.9.2.7.8", row.Next("1.3.9")) << "as registered";
    EXPECT_EQ("1.3.9.3.7.8", row.Next("1.3.9.2.7.8")) << "below the range";
    EXPECT_EQ("1.3.9.4.7.8", row.Next("1.3.9.3.7.8.9"));
    EXPECT_EQ("end", row.Next("1.3.9.4.7.8.9"));
    EXPECT_EQ("129", row.Read("1.3.9.3.7.8")) << "another index than the row's";
    EXPECT_EQ("129", row.Read("1.3.9.3.7.8.9")) << "longer than the registration";
    EXPECT_EQ(eSnmpNoSuchName, row.Write("1.3.9.3.7.8.9"));
}

TEST(RowRange, WithoutIndexSuffixTheColumnsAreTheInstances)
{
    CRow row(2, 5, {2, 3, 5}, "");
    EXPECT_EQ("1.3.9.2", TextOf(row.Oid()));
    EXPECT_EQ("1.3.9.3", row.Next("1.3.9.2"));
    EXPECT_EQ("1.3.9.3", row.Next("1.3.9.2.0"));
    EXPECT_EQ("end", row.Next("1.3.9.5"));
    EXPECT_EQ("129", row.Read("1.3.9.2.0"));
    EXPECT_EQ(TwoWalks(row, "1.3.9",
                       {{"1.3.9.2", eAsnOctetString, "text"},
                        {"1.3.9.3", eAsnOctetString, "text"},
                        {"1.3.9.5", eAsnOctetString, "text"}})
                  .Run(),
              "");
}

TEST(RowRange, MapWithoutTheRangeServesNothing)
{
    CRow row(2, 5, {});
    EXPECT_EQ(TwoWalks(row, "1.3.9", {}).Run(), "");
}

} // namespace
} // namespace VLK
