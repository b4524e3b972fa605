// Rows written with ScalarRow and ColumnRow; what must not compile is in
// tests/compile_fail.
#include <gtest/gtest.h>

#include <thread>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

// Handlers may be private, const and noexcept, and come from a base.
class CShared : public BMibScalarGroupImpl {
public:
    CShared() : BMibScalarGroupImpl("shared", OidOf("1.3.9")) { Initialize(); }

protected:
    int OnGet_Inherited(unsigned, int& value) const
    {
        value = m_number;
        return 0;
    }
    int m_number = 40;
};

class CForms : public CShared {
public:
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    static SRqHndlrMapEntry s_map[];

private:
    int OnGet_Const(unsigned, unsigned& value) const
    {
        value = 41;
        return 0;
    }
    int OnGet_Noexcept(unsigned, unsigned& value) noexcept
    {
        value = 42;
        return 0;
    }
    int OnGet_Both(unsigned, EColor& value) const noexcept
    {
        value = eBlue;
        return 0;
    }
    int OnSet_ByValue(ESnmpSetOpCode, unsigned, EColor value, void**) noexcept
    {
        m_number = value;
        return 0;
    }
    virtual int OnSet_ByReference(ESnmpSetOpCode, unsigned, const int& value, void**)
    {
        m_number = value;
        return 0;
    }
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CForms::s_map[] = {
    ScalarRow<eKindInteger, &CForms::OnGet_Inherited, &CForms::OnSet_ByReference>(
        1, "inherited", eAsnInteger, eRqReadWrite),
    ScalarRow<eKindUnsigned, &CForms::OnGet_Const>(2, "const", eAsnGauge32, eRqReadOnly),
    ScalarRow<eKindUnsigned, &CForms::OnGet_Noexcept>(3, "noexcept", eAsnGauge32, eRqReadOnly),
    ScalarRow<eKindEnumerated, &CForms::OnGet_Both, &CForms::OnSet_ByValue>(4, "both", eAsnInteger,
                                                                            eRqReadWrite),
    ScalarRow<eKindEnumerated, nullptr, &CForms::OnSet_ByValue>(5, "writeOnly", eAsnInteger,
                                                                eRqWriteOnly),
    ScalarRow<eKindIpAddress>(6, "bare", eAsnIpAddress, eRqNotAccessible),
    kRqEnd};

VKMIBH_CONSTINIT SRqHndlrMapEntry s_empty[] = {RqEnd()};

TEST(MapRows, FieldsAreWhatWasWritten)
{
    const SRqHndlrMapEntry& row = CForms::s_map[1];
    EXPECT_EQ(2u, row.column);
    EXPECT_STREQ("const", row.name);
    EXPECT_EQ(int(eAsnGauge32), row.syntax);
    EXPECT_EQ(int(eRqReadOnly), row.access);
    EXPECT_EQ(unsigned(eKindUnsigned), row.kind);
    EXPECT_EQ(nullptr, row.Constraint());
    EXPECT_TRUE(row.getHandler != nullptr);
    EXPECT_TRUE(row.setHandler == nullptr);
    EXPECT_TRUE(CForms::s_map[4].getHandler == nullptr);
    EXPECT_TRUE(CForms::s_map[4].setHandler != nullptr);
    EXPECT_TRUE(CForms::s_map[5].getHandler == nullptr);
    EXPECT_TRUE(CForms::s_map[5].setHandler == nullptr);
    EXPECT_EQ(unsigned(eKindEnd), CForms::s_map[6].kind);
    EXPECT_EQ(unsigned(eKindEnd), s_empty[0].kind);
}

TEST(MapRows, HandlersOfEveryFormAreCalled)
{
    CForms forms;
    EXPECT_EQ(TwoWalks(forms, "1.3.9",
                       {{"1.3.9.1.0", eAsnInteger, "40"},
                        {"1.3.9.2.0", eAsnGauge32, "41"},
                        {"1.3.9.3.0", eAsnGauge32, "42"},
                        {"1.3.9.4.0", eAsnInteger, "2"}})
                  .Run(),
              "");
    BVarBind inherited(OidOf("1.3.9.1.0"));
    EXPECT_EQ(0, forms.Set(1, eSetCommit, nullptr, BVarBind(OidOf("1.3.9.1.0"), IntValue(-9))));
    EXPECT_EQ(0, forms.Get(1, inherited));
    EXPECT_EQ(-9, inherited.Value().Int());
    EXPECT_EQ(0, forms.Set(1, eSetCommit, nullptr, BVarBind(OidOf("1.3.9.5.0"), IntValue(1))));
    EXPECT_EQ(0, forms.Get(1, inherited));
    EXPECT_EQ(1, inherited.Value().Int());
}

TEST(MapRows, AccessCodes)
{
    const bool readable[] = {false, false, false, true, true, true};
    const bool writable[] = {false, true, false, false, true, true};
    for (int access = 0; access <= 5; ++access) {
        EXPECT_EQ(readable[access], RqIsReadable(access)) << access;
        EXPECT_EQ(writable[access], RqIsWritable(access)) << access;
    }
}

// A module whose objects share the map, as they always do.
class CRanged : public CForms {
public:
    explicit CRanged(int high) : m_constraints{{eConstraintRange, 1, "", 0, high}, kConstraintEnd}
    {
    }
    const SConstraintMapEntry* GetConstraintMap() const override { return m_constraints; }

private:
    SConstraintMapEntry m_constraints[2];
};

TEST(MapRows, RequestsRunWhileARegistrationResolvesConstraints)
{
    CRanged narrow(10), wide(20);
    narrow.ResolveConstraints();
    std::thread registrations([&] {
        for (int i = 0; i < 2000; ++i)
            (i % 2 ? narrow : wide).ResolveConstraints();
    });
    const BVarBind inBoth(OidOf("1.3.9.1.0"), IntValue(5));
    const BVarBind inNone(OidOf("1.3.9.1.0"), IntValue(21));
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(eSnmpNoError, narrow.Set(1, eSetTest, nullptr, inBoth));
        EXPECT_EQ(eSnmpWrongValue, narrow.Set(1, eSetTest, nullptr, inNone));
    }
    registrations.join();
    CForms::s_map[0].constraint = nullptr;
}

} // namespace
} // namespace VLK
