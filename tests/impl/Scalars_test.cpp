#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

using Log = std::vector<std::string>;

// Handlers that both kinds of scalar implementation share.
template <class Base>
class CScalars : public Base {
public:
    CScalars(const char* oid, std::vector<SRqHndlrMapEntry> map)
        : Base("scalars", OidOf(oid)), m_map(std::move(map))
    {
        m_map.push_back(kRqEnd);
        this->Initialize();
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
    static SRqHndlrMapEntry Row(unsigned column, ERqAccess access)
    {
        return ScalarRow<eKindDisplayString, &CScalars::OnGet, &CScalars::OnSet>(
            column, "x", eAsnOctetString, access);
    }

    // "tag" or "status n".
    std::string Read(const char* name)
    {
        BVarBind binding(OidOf(name), IntValue(1));
        const int status = this->Get(3, binding);
        return status ? "status " + std::to_string(status)
                      : std::to_string(binding.Value().Syntax());
    }
    int Write(const char* name, ESnmpSetOpCode op = eSetTest, const char* text = "new")
    {
        m_log.clear();
        return this->Set(3, op, nullptr, BVarBind(OidOf(name), TextValue(text)));
    }
    // The OID it moved to, or "end"; the value must be what belongs to that.
    std::string Next(const char* name)
    {
        BVarBind binding(OidOf(name), IntValue(1));
        const int found = this->NextInstance(3, binding);
        EXPECT_EQ(found ? int(eAsnNull) : int(eEndOfMibView), int(binding.Value().Syntax()));
        return found ? TextOf(binding.Name()) : "end";
    }

    mutable std::vector<SRqHndlrMapEntry> m_map;
    int m_status = 0;
    Log m_log;
};

using CScalar = CScalars<BMibScalarImpl>;
using CGroupOfScalars = CScalars<BMibScalarGroupImpl>;

TEST(ScalarImpl, TwoWalks)
{
    CScalar scalar("1.3.9", {CScalar::Row(4, eRqReadWrite)});
    EXPECT_EQ(TwoWalks(scalar, "1.3.9", {{"1.3.9.0", eAsnOctetString, "text"}}).Run(), "");
    EXPECT_EQ(unsigned(eImplScalar), scalar.ImplKind());
}

TEST(ScalarImpl, GetOfAnythingButTheInstanceIsNoSuchObject)
{
    CScalar scalar("1.3.9", {CScalar::Row(4, eRqReadOnly)});
    EXPECT_EQ("4", scalar.Read("1.3.9.0"));
    for (const char* name : {"1.3.9", "1.3.9.1", "1.3.9.0.0", "1.3"})
        EXPECT_EQ("128", scalar.Read(name)) << name;
}

TEST(ScalarImpl, GetWithoutMapAndOfUnreadable)
{
    CScalar empty("1.3.9", {});
    EXPECT_EQ("128", empty.Read("1.3.9.0"));
    for (ERqAccess access : {eRqWriteOnly, eRqNotAccessible}) {
        CScalar hidden("1.3.9", {CScalar::Row(1, access)});
        EXPECT_EQ("129", hidden.Read("1.3.9.0"));
    }
    for (ERqAccess access : {eRqReadOnly, eRqReadWrite, eRqReadCreate}) {
        CScalar open("1.3.9", {CScalar::Row(1, access)});
        EXPECT_EQ("4", open.Read("1.3.9.0"));
    }
}

TEST(ScalarImpl, HandlersNoSuchNameIsReturned)
{
    CScalar scalar("1.3.9", {CScalar::Row(1, eRqReadOnly)});
    scalar.m_status = 2;
    EXPECT_EQ("status 2", scalar.Read("1.3.9.0"));
    scalar.m_status = 5;
    EXPECT_EQ("status 5", scalar.Read("1.3.9.0"));
}

TEST(ScalarImpl, Set)
{
    CScalar scalar("1.3.9", {CScalar::Row(1, eRqReadWrite)});
    EXPECT_EQ(0, scalar.Write("1.3.9.0", eSetCommit));
    EXPECT_EQ((Log{"163 3 new"}), scalar.m_log);
    for (const char* name : {"1.3.9", "1.3.9.1", "1.3.9.0.0"})
        EXPECT_EQ(eSnmpNoSuchName, scalar.Write(name)) << name;
    EXPECT_TRUE(scalar.m_log.empty());
    scalar.m_status = 10;
    EXPECT_EQ(10, scalar.Write("1.3.9.0"));
}

TEST(ScalarImpl, SetNeedsAnEntryThatIsWritable)
{
    CScalar empty("1.3.9", {});
    EXPECT_EQ(eSnmpNotWritable, empty.Write("1.3.9.0"));
    EXPECT_EQ(eSnmpNoSuchName, empty.Write("1.3.9.1")) << "the instance is looked at first";
    for (int access = 1; access <= 5; ++access) {
        CScalar scalar("1.3.9", {CScalar::Row(1, static_cast<ERqAccess>(access))});
        const bool writable = access == 1 || access == 4 || access == 5;
        EXPECT_EQ(writable ? 0 : eSnmpNotWritable, scalar.Write("1.3.9.0")) << access;
    }
}

TEST(ScalarImpl, NextInstance)
{
    CScalar scalar("1.3.9", {CScalar::Row(1, eRqReadOnly)});
    EXPECT_EQ("1.3.9.0", scalar.Next("1.3.9"));
    EXPECT_EQ("1.3.9.0", scalar.Next("1.3"));
    EXPECT_EQ("1.3.9.0", scalar.Next("1.3.8.77"));
    for (const char* name : {"1.3.9.0", "1.3.9.0.0", "1.3.10", "2"})
        EXPECT_EQ("end", scalar.Next(name)) << name;
    CScalar empty("1.3.9", {});
    EXPECT_EQ("end", empty.Next("1.3.9"));
}

class ScalarGroup : public ::testing::Test {
protected:
    CGroupOfScalars m_group{
        "1.3.9",
        {CGroupOfScalars::Row(1, eRqReadOnly), CGroupOfScalars::Row(2, eRqNotAccessible),
         CGroupOfScalars::Row(3, eRqReadWrite), CGroupOfScalars::Row(5, eRqWriteOnly),
         CGroupOfScalars::Row(4294967295u, eRqReadCreate)}};
};

TEST_F(ScalarGroup, TwoWalks)
{
    EXPECT_EQ(TwoWalks(m_group, "1.3.9",
                       {{"1.3.9.1.0", eAsnOctetString, "text"},
                        {"1.3.9.3.0", eAsnOctetString, "text"},
                        {"1.3.9.4294967295.0", eAsnOctetString, "text"}})
                  .Run(),
              "");
    EXPECT_EQ(unsigned(eImplScalarGroup), m_group.ImplKind());
}

TEST_F(ScalarGroup, Get)
{
    EXPECT_EQ("4", m_group.Read("1.3.9.1.0"));
    EXPECT_EQ("129", m_group.Read("1.3.9.1")) << "no instance";
    EXPECT_EQ("129", m_group.Read("1.3.9.2")) << "no instance, not readable either";
    EXPECT_EQ("128", m_group.Read("1.3.9.1.1")) << "not the instance 0";
    EXPECT_EQ("128", m_group.Read("1.3.9.2.1"));
    EXPECT_EQ("128", m_group.Read("1.3.9.4.0")) << "unknown arc";
    EXPECT_EQ("128", m_group.Read("1.3.9.4"));
    EXPECT_EQ("128", m_group.Read("1.3.9"));
    EXPECT_EQ("128", m_group.Read("1.3.9.1.0.0"));
    EXPECT_EQ("129", m_group.Read("1.3.9.2.0")) << "not accessible";
    EXPECT_EQ("129", m_group.Read("1.3.9.5.0")) << "write-only";
}

TEST_F(ScalarGroup, HandlersNoSuchNameBecomesNoSuchInstance)
{
    m_group.m_status = 2;
    EXPECT_EQ("129", m_group.Read("1.3.9.1.0"));
    m_group.m_status = 13;
    EXPECT_EQ("status 13", m_group.Read("1.3.9.1.0"));
}

TEST_F(ScalarGroup, Set)
{
    EXPECT_EQ(0, m_group.Write("1.3.9.3.0", eSetUndo));
    EXPECT_EQ((Log{"225 3 new"}), m_group.m_log);
    EXPECT_EQ(0, m_group.Write("1.3.9.5.0"));
    EXPECT_EQ(0, m_group.Write("1.3.9.4294967295.0"));
    EXPECT_EQ(eSnmpNotWritable, m_group.Write("1.3.9.1.0")) << "read-only";
    EXPECT_EQ(eSnmpNotWritable, m_group.Write("1.3.9.2.0")) << "not accessible";
    EXPECT_EQ(eSnmpNotWritable, m_group.Write("1.3.9.4.0")) << "unknown arc";
    for (const char* name : {"1.3.9", "1.3.9.3", "1.3.9.3.1", "1.3.9.3.0.0", "1.3.9.4.1"})
        EXPECT_EQ(eSnmpNoSuchName, m_group.Write(name)) << name;
    EXPECT_EQ(eSnmpWrongValue, m_group.Write("1.3.9.3.0", eSetTest, "\x80"));
}

TEST_F(ScalarGroup, NextInstance)
{
    EXPECT_EQ("1.3.9.1.0", m_group.Next("1.3.9"));
    EXPECT_EQ("1.3.9.1.0", m_group.Next("1.3"));
    EXPECT_EQ("1.3.9.1.0", m_group.Next("1.3.9.0"));
    EXPECT_EQ("1.3.9.1.0", m_group.Next("1.3.9.0.7"));
    EXPECT_EQ("1.3.9.1.0", m_group.Next("1.3.9.1"));
    EXPECT_EQ("1.3.9.2.0", m_group.Next("1.3.9.1.0")) << "readable or not: Get decides";
    EXPECT_EQ("1.3.9.5.0", m_group.Next("1.3.9.4"));
    EXPECT_EQ("1.3.9.4294967295.0", m_group.Next("1.3.9.4294967295"));
    for (const char* name : {"1.3.9.4294967295.0", "1.3.9.4294967295.1", "1.3.10", "2"})
        EXPECT_EQ("end", m_group.Next(name)) << name;
    CGroupOfScalars empty("1.3.9", {});
    EXPECT_EQ("end", empty.Next("1.3.9"));
    EXPECT_EQ("end", empty.Next("1.3.9.1"));
}

TEST_F(ScalarGroup, NextInstanceOfTheGroupItselfDoesNotLookBehindItsArcs)
{
    BVarBind binding(OidOf("1.3.9.3.0"));
    binding.Name().Truncate(3);
    EXPECT_EQ(1, m_group.NextInstance(3, binding));
    EXPECT_EQ("1.3.9.1.0", TextOf(binding.Name()));
}

TEST(ScalarGroupWalk, ColumnsThatAreNotReadableAreSkipped)
{
    CGroupOfScalars group(
        "1.3.9", {CGroupOfScalars::Row(3, eRqReadOnly), CGroupOfScalars::Row(4, eRqNotAccessible),
                  CGroupOfScalars::Row(5, eRqReadOnly), CGroupOfScalars::Row(6, eRqNotAccessible)});
    BVarBind binding(OidOf("1.3.9.3.0"));
    EXPECT_EQ(0, group.GetNext(3, binding));
    EXPECT_EQ("1.3.9.5.0", TextOf(binding.Name()));
    EXPECT_EQ(0, group.GetNext(3, binding));
    EXPECT_EQ(int(eEndOfMibView), int(binding.Value().Syntax()));
}

} // namespace
} // namespace VLK
