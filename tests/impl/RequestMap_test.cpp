#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

// The map is the object's own, so that every test starts from clean rows.
class CMapped : public CProbe {
public:
    CMapped(std::vector<SRqHndlrMapEntry> map, std::vector<SConstraintMapEntry> constraints)
        : m_map(std::move(map)), m_constraints(std::move(constraints))
    {
        m_map.push_back(kRqEnd);
        m_constraints.push_back(kConstraintEnd);
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map.data(); }
    const SConstraintMapEntry* GetConstraintMap() const override
    {
        return m_noConstraints ? nullptr : m_constraints.data();
    }

    mutable std::vector<SRqHndlrMapEntry> m_map;
    std::vector<SConstraintMapEntry> m_constraints;
    bool m_noConstraints = false;
};

SRqHndlrMapEntry Named(unsigned column, const char* name)
{
    return ScalarRow<eKindInteger>(column, name, eAsnInteger, eRqReadOnly);
}

class RequestMap : public ::testing::Test {
protected:
    CMapped m_mapped{{Named(2, "two"), Named(5, nullptr), Named(7, "seven")}, {}};
    const SRqHndlrMapEntry* m_rows = m_mapped.m_map.data();
};

TEST_F(RequestMap, FindByColumn)
{
    EXPECT_EQ(m_rows, m_mapped.FindRqHndlrEntry(2u));
    EXPECT_EQ(m_rows + 2, m_mapped.FindRqHndlrEntry(7u));
    EXPECT_EQ(nullptr, m_mapped.FindRqHndlrEntry(3u));
    EXPECT_EQ(nullptr, m_mapped.FindRqHndlrEntry(0u)) << "the terminating row is no entry";
}

TEST_F(RequestMap, FindByNameIsExact)
{
    EXPECT_EQ(m_rows + 2, m_mapped.FindRqHndlrEntry("seven"));
    EXPECT_EQ(nullptr, m_mapped.FindRqHndlrEntry("Seven"));
    EXPECT_EQ(nullptr, m_mapped.FindRqHndlrEntry("seve"));
    EXPECT_EQ(nullptr, m_mapped.FindRqHndlrEntry(static_cast<const char*>(nullptr)));
}

TEST_F(RequestMap, FirstAndNext)
{
    EXPECT_EQ(m_rows, m_mapped.GetFirstRqHndlrEntry());
    EXPECT_EQ(m_rows, m_mapped.NextRqHndlrEntry(0u));
    EXPECT_EQ(m_rows + 1, m_mapped.NextRqHndlrEntry(2u));
    EXPECT_EQ(m_rows + 1, m_mapped.NextRqHndlrEntry(4u));
    EXPECT_EQ(nullptr, m_mapped.NextRqHndlrEntry(7u));
    EXPECT_EQ(nullptr, m_mapped.NextRqHndlrEntry(~0u));
    EXPECT_EQ(m_rows + 1, m_mapped.NextRqHndlrEntry("two"));
    EXPECT_EQ(nullptr, m_mapped.NextRqHndlrEntry("seven")) << "the last";
    EXPECT_EQ(nullptr, m_mapped.NextRqHndlrEntry("none"));
    EXPECT_EQ(nullptr, m_mapped.NextRqHndlrEntry(static_cast<const char*>(nullptr)));
}

TEST(RequestMapAbsent, EveryLookUpIsNull)
{
    CProbe absent;
    CMapped empty({}, {});
    for (CProbe* probe : {&absent, static_cast<CProbe*>(&empty)}) {
        EXPECT_EQ(nullptr, probe->GetFirstRqHndlrEntry());
        EXPECT_EQ(nullptr, probe->FindRqHndlrEntry(1u));
        EXPECT_EQ(nullptr, probe->FindRqHndlrEntry("x"));
        EXPECT_EQ(nullptr, probe->NextRqHndlrEntry(0u));
        EXPECT_EQ(nullptr, probe->NextRqHndlrEntry("x"));
        probe->ResolveConstraints();
    }
    EXPECT_EQ(nullptr, absent.GetRqHndlrMap());
    EXPECT_EQ(nullptr, absent.GetConstraintMap());
}

const SConstraintMapEntry kExternal[] = {{eConstraintRange, 0, "Percent", 0, 100}, kConstraintEnd};

// What a row's constraint becomes when the constraint map has these rows.
const SConstraintMapEntry* Resolved(CMapped& mapped)
{
    mapped.SetExtrenalTCConstraints(kExternal);
    mapped.ResolveConstraints();
    return mapped.m_map[0].Constraint();
}

TEST(ResolveConstraints, RangeAndEnumerationAreTheConstraint)
{
    CMapped range({Named(2, "x")},
                  {{eConstraintRange, 1, "", 0, 3}, {eConstraintRange, 2, "", 0, 9}});
    EXPECT_EQ(&range.m_constraints[1], Resolved(range));
    CMapped enumeration({Named(2, "x")},
                        {{eConstraintItem, 2, "a", 1, 0}, {eConstraintEnumeration, 2, "", 0, 0}});
    EXPECT_EQ(&enumeration.m_constraints[1], Resolved(enumeration)) << "items are skipped";
}

TEST(ResolveConstraints, ConventionIsLookedUp)
{
    CMapped standard({Named(2, "x")}, {{eConstraintConvention, 2, "MacAddress", 1, 2}});
    EXPECT_EQ(&BMibImpl::s_tcConstraints[2], Resolved(standard));
    CMapped external({Named(2, "x")}, {{eConstraintConvention, 2, "Percent", 0, 0}});
    EXPECT_EQ(&kExternal[0], Resolved(external));
    CMapped unknown({Named(2, "x")}, {{eConstraintConvention, 2, "Nothing", 0, 0}});
    unknown.m_map[0].constraint = kExternal;
    EXPECT_EQ(nullptr, Resolved(unknown));
}

TEST(ResolveConstraints, RefinementIsTheRowUnlessBothBoundsAreZero)
{
    CMapped low({Named(2, "x")}, {{eConstraintRefined, 2, "DisplayString", -5, 0}});
    EXPECT_EQ(&low.m_constraints[0], Resolved(low));
    CMapped high({Named(2, "x")}, {{eConstraintRefined, 2, "DisplayString", 0, 31}});
    EXPECT_EQ(&high.m_constraints[0], Resolved(high));
    CMapped none({Named(2, "x")}, {{eConstraintRefined, 2, "DisplayString", 0, 0}});
    EXPECT_EQ(&BMibImpl::s_tcConstraints[1], Resolved(none));
}

TEST(ResolveConstraints, FirstRowForTheColumnDecides)
{
    CMapped convention({Named(2, "x")}, {{eConstraintConvention, 2, "MacAddress", 0, 0},
                                         {eConstraintRange, 2, "", 0, 9}});
    EXPECT_EQ(&BMibImpl::s_tcConstraints[2], Resolved(convention));
    CMapped range({Named(2, "x")}, {{eConstraintRange, 2, "", 0, 9},
                                    {eConstraintConvention, 2, "MacAddress", 0, 0}});
    EXPECT_EQ(&range.m_constraints[0], Resolved(range));
    CMapped odd({Named(2, "x")}, {{77, 2, "", 1, 2}, {eConstraintRange, 2, "", 0, 9}});
    EXPECT_EQ(&odd.m_constraints[1], Resolved(odd)) << "unknown kinds say nothing";
}

TEST(ResolveConstraints, RowWithoutAnyKeepsItsConstraint)
{
    CMapped mapped({Named(2, "x"), Named(3, "y")}, {{eConstraintRange, 3, "", 0, 9}});
    mapped.m_map[0].constraint = kExternal;
    EXPECT_EQ(kExternal, Resolved(mapped));
    EXPECT_EQ(&mapped.m_constraints[0], mapped.m_map[1].Constraint());
}

TEST(ResolveConstraints, NothingHappensWithoutConstraintMap)
{
    CMapped mapped({Named(2, "x")}, {{eConstraintRange, 2, "", 0, 9}});
    mapped.m_noConstraints = true;
    EXPECT_EQ(nullptr, Resolved(mapped));
}

} // namespace
} // namespace VLK
