// Each mistake in a map is told with what to do about it.
#include "Lamp.h"

#include <vkmibh/testing/maps.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class CMaps : public BMibScalarGroupImpl {
public:
    CMaps(SRqHndlrMapEntry* map, const SConstraintMapEntry* constraints)
        : BMibScalarGroupImpl("maps", MakeOid("1.3.9")), m_map(map), m_constraints(constraints)
    {
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return m_constraints; }

    int OnGet(unsigned, int& value)
    {
        value = 0;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode, unsigned, int, void**) { return eSnmpNoError; }

private:
    SRqHndlrMapEntry* m_map;
    const SConstraintMapEntry* m_constraints;
};

constexpr SRqHndlrMapEntry Row(unsigned column, const char* name)
{
    return ScalarRow<eKindInteger, &CMaps::OnGet>(column, name, eAsnInteger, eRqReadOnly);
}

TEST(CheckMap, RowsInOrderAreRight)
{
    EXPECT_EQ(CheckMap({Row(1, "a"), Row(2, "b"), Row(7, "c"), kRqEnd}), "");
    EXPECT_EQ(CheckMap({kRqEnd}), "");
}

TEST(CheckMap, MissingEnd)
{
    EXPECT_EQ(CheckMap({Row(1, "a"), Row(2, "b")}),
              "the map has no terminating row: end it with kRqEnd\n");
}

TEST(CheckMap, ColumnsOutOfOrderAndTwice)
{
    EXPECT_EQ(CheckMap({Row(2, "a"), Row(1, "b"), kRqEnd}),
              "row 2 'b': column 1 comes after column 2: write the rows in rising order, a walk "
              "follows them\n");
    EXPECT_THAT(CheckMap({Row(1, "a"), Row(1, "b"), kRqEnd}),
                HasSubstr("row 2 'b': column 1 is that of the row before too"));
}

TEST(CheckMap, Names)
{
    EXPECT_THAT(CheckMap({Row(1, "a"), Row(2, "a"), kRqEnd}),
                HasSubstr("row 2 'a': another row has that name"));
    EXPECT_THAT(CheckMap({Row(1, nullptr), kRqEnd}), HasSubstr("row 1: it has no name"));
    EXPECT_THAT(CheckMap({Row(1, ""), kRqEnd}), HasSubstr("it has no name"));
}

TEST(CheckMap, SyntaxThatDoesNotSuitTheKind)
{
    SRqHndlrMapEntry row = Row(1, "a");
    row.syntax = eAsnGauge32;
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("syntax 66 is none that kind 1 serves"));
    row.kind = kRqLastKind + 1;
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("no such kind, 11"));
}

TEST(CheckMap, AccessWithoutHandlerAndHandlerWithoutAccess)
{
    SRqHndlrMapEntry row = Row(1, "a");
    row.access = eRqReadWrite;
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("it has no set handler"));
    row.access = eRqNotAccessible;
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("it has a get handler"));
    row.getHandler = nullptr;
    EXPECT_EQ(CheckMap({row, kRqEnd}), "");
    row.access = eRqReadOnly;
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("it has no get handler"));
    row = ScalarRow<eKindInteger, &CMaps::OnGet, &CMaps::OnSet>(1, "a", eAsnInteger, eRqReadOnly);
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("it has a set handler"));
    row.access = 9;
    EXPECT_THAT(CheckMap({row, kRqEnd}), HasSubstr("no such access, 9"));
}

TEST(CheckConstraints, Rows)
{
    EXPECT_EQ(CheckConstraints({{eConstraintEnumeration, 1, nullptr, 0, 0},
                                {eConstraintItem, 1, "on", 1, 0},
                                {eConstraintRange, 2, nullptr, 1, 9},
                                kConstraintEnd}),
              "");
    EXPECT_EQ(CheckConstraints({{eConstraintRange, 2, nullptr, 1, 9}}),
              "the constraints have no terminating row: end them with kConstraintEnd\n");
    EXPECT_THAT(CheckConstraints({{eConstraintRange, 2, nullptr, 9, 1}, kConstraintEnd}),
                HasSubstr("constraint row 1: the range 9 to 1 holds nothing"));
    EXPECT_THAT(CheckConstraints({{eConstraintEnumeration, 1, nullptr, 0, 0}, kConstraintEnd}),
                HasSubstr("an enumeration without items"));
    EXPECT_THAT(CheckConstraints({{eConstraintItem, 1, "on", 1, 0}, kConstraintEnd}),
                HasSubstr("row 1 'on': an item without its enumeration"));
    EXPECT_THAT(CheckConstraints({{8, 1, nullptr, 1, 0}, kConstraintEnd}),
                HasSubstr("no such kind, 8"));
    EXPECT_THAT(CheckConstraints({{eConstraintRange, 2, nullptr, 1, 9},
                                  {eConstraintRange, 2, nullptr, 1, 8},
                                  kConstraintEnd}),
                HasSubstr("row 2: column 2 has a constraint before this one"));
}

class CheckMapsOf : public testing::Test {
protected:
    std::string Check(const SConstraintMapEntry& constraint)
    {
        const SConstraintMapEntry constraints[] = {constraint, kConstraintEnd};
        return CheckMaps(CMaps(m_map, constraints));
    }

    SRqHndlrMapEntry m_map[2] = {Row(4, "a"), kRqEnd};
};

TEST_F(CheckMapsOf, UnknownConvention)
{
    EXPECT_EQ(Check({eConstraintConvention, 4, cszTruthValue, 0, 0}), "");
    EXPECT_THAT(Check({eConstraintConvention, 4, "TruthValu", 0, 0}),
                AllOf(HasSubstr("maps: constraint row 1 'TruthValu': nobody knows that convention"),
                      HasSubstr("take a name of implbase.h")));
    EXPECT_THAT(Check({eConstraintRefined, 4, "TruthValu", 0, 0}), HasSubstr("nobody knows"));
    EXPECT_EQ(Check({eConstraintRefined, 4, "TruthValu", 1, 2}), "");
}

TEST_F(CheckMapsOf, ColumnThatIsNotThere)
{
    EXPECT_THAT(Check({eConstraintRange, 5, nullptr, 0, 1}),
                HasSubstr("the map has no column 5: take the column that the map's row has"));
}

TEST_F(CheckMapsOf, WrongRowsOfTheMap)
{
    m_map[0].name = "";
    EXPECT_THAT(Check(kConstraintEnd), HasSubstr("maps: row 1 '': it has no name"));
    EXPECT_THAT(CheckMaps(CMaps(nullptr, nullptr)), HasSubstr("override GetRqHndlrMap()"));
    EXPECT_THAT(CheckMaps(CMaps(m_map, nullptr)), HasSubstr("it has no name"));
}

TEST_F(CheckMapsOf, ConventionsOfTheGroup)
{
    static const SConstraintMapEntry shared[] = {{eConstraintRange, 0, "Percent", 0, 100},
                                                 kConstraintEnd};
    static const SConstraintMapEntry constraints[] = {{eConstraintConvention, 4, "Percent", 0, 0},
                                                      kConstraintEnd};
    class CGroup : public BMibImplGroup {
    public:
        explicit CGroup(BMibImpl& impl) : m_impl(impl) {}
        int GetNumImpls() override { return 1; }
        BMibImpl* GetImplAt(int) override { return &m_impl; }
        const SConstraintMapEntry* GetTCConstraintMap() const override
        {
            return hasConventions ? shared : nullptr;
        }
        bool hasConventions = true;

    private:
        BMibImpl& m_impl;
    };
    CMaps impl(m_map, constraints);
    CGroup group(impl);
    EXPECT_EQ(CheckMaps(group), "");
    group.hasConventions = false;
    EXPECT_THAT(CheckMaps(group), HasSubstr("nobody knows that convention"));
}

TEST(CheckMaps, TwoImplementationsInOnePlace)
{
    class CTwins : public BMibImplGroup {
    public:
        int GetNumImpls() override { return 2; }
        BMibImpl* GetImplAt(int index) override { return index == 0 ? &m_first : &m_second; }

    private:
        CLamp m_first, m_second;
    } twins;
    EXPECT_EQ(CheckMaps(twins), "lamp: lamp has its place already, so that it is not served: give "
                                "it one of its own\n");
}

} // namespace
} // namespace Test
} // namespace VLK
