// SET of one binding of a row-status table, step by step.
#include "tests/impl/RowStatusTest.h"

namespace VLK {
namespace Test {
namespace {

template <class Probe>
class RowStatusBinding : public ::testing::Test {
protected:
    RowStatusBinding() { table.Row("7").status = 1; }

    int Set(const char* name, const BObjectSyntax& value, ESnmpSetOpCode op = eSetTest)
    {
        table.log.clear();
        slot = SSetSlot{};
        return table.BMibTableImplEx::Set(5, op, &slot.scratch, BVarBind(MakeOid(name), value));
    }
    SRqHndlrMapEntry& StatusColumn() { return table.Column(eProbeStatus); }
    // Nobody was asked, nothing is marked, no row is noted.
    void ExpectUntouched(const char* why)
    {
        EXPECT_TRUE(table.log.empty()) << why;
        EXPECT_TRUE(slot.tested == 0 && slot.committed == 0) << why;
        EXPECT_EQ(eRowNotReady, table.GetRowStatusUndoValue(MakeOid("7"))) << why;
    }

    HandTimer timer;
    Probe table;
    SSetSlot slot{};
};

// With the requests that are good for a new and for an existing row.
struct SRowKind : CRowProbe {
    static constexpr int kMake = eRowCreateAndGo;
    static constexpr int kKeep = eRowActive;
    static constexpr int kOfMinusSeven = eSnmpGenErr;
    static constexpr bool IsWritable(int access) { return access == 4 || access == 5; }
};
struct SEntryKind : CEntryProbe {
    static constexpr int kMake = eEntryCreateRequest;
    static constexpr int kKeep = eEntryValid;
    static constexpr int kOfMinusSeven = eSnmpNoError;
    static constexpr bool IsWritable(int access)
    {
        return access == 1 || access == 4 || access == 5;
    }
};
using Kinds = ::testing::Types<SRowKind, SEntryKind>;
TYPED_TEST_SUITE(RowStatusBinding, Kinds, );

TYPED_TEST(RowStatusBinding, WithoutIndexIsNoSuchNameBeforeAnythingElse)
{
    for (const ESnmpSetOpCode op : kPhases)
        for (const char* name : {"", "1", "1.3.9", "1.3.9.1", "1.3.9.2", "1.3.9.3", "1.3.9.4"})
            for (const BObjectSyntax& value :
                 {Number(TypeParam::kMake), Number(TypeParam::kKeep), Text("text")}) {
                EXPECT_EQ(eSnmpNoSuchName, this->Set(name, value, op)) << name;
                this->ExpectUntouched(name);
            }
}

TYPED_TEST(RowStatusBinding, UnknownColumnIsNotWritable)
{
    for (const ESnmpSetOpCode op : kPhases)
        for (const char* name : {"1.3.9.0.7", "1.3.9.4.7", "1.3.9.4294967295.7"}) {
            EXPECT_EQ(eSnmpNotWritable, this->Set(name, Number(TypeParam::kKeep), op)) << name;
            this->ExpectUntouched(name);
        }
}

TYPED_TEST(RowStatusBinding, StatusThatIsNoIntegerIsWrongType)
{
    BObjectSyntax gauge;
    gauge.SetGauge(1);
    for (const ESnmpSetOpCode op : kPhases)
        for (const BObjectSyntax& value : {Text("1"), gauge, BObjectSyntax()}) {
            EXPECT_EQ(eSnmpWrongType, this->Set("1.3.9.3.7", value, op));
            this->ExpectUntouched("wrong type");
        }
    this->StatusColumn().access = eRqReadOnly;
    this->StatusColumn().getHandler = nullptr;
    EXPECT_EQ(eSnmpWrongType, this->Set("1.3.9.3.7", Text("1"))) << "neither is looked at";
    this->StatusColumn().setHandler = nullptr;
    EXPECT_EQ(eSnmpNotWritable, this->Set("1.3.9.3.7", Text("1"))) << "the adapter's first step";
}

TYPED_TEST(RowStatusBinding, StatusColumnWithoutGetHandlerIsGenErrBeforeItsAccess)
{
    this->StatusColumn().getHandler = nullptr;
    for (const ESnmpSetOpCode op : kPhases)
        for (const int access : {0, 1, 2, 3, 4, 5}) {
            this->StatusColumn().access = access;
            EXPECT_EQ(eSnmpGenErr, this->Set("1.3.9.3.7", Number(TypeParam::kKeep), op));
            this->ExpectUntouched("no get handler");
        }
}

TYPED_TEST(RowStatusBinding, AccessOfAStatusColumn)
{
    for (const int access : {0, 1, 2, 3, 4, 5, 6}) {
        this->StatusColumn().access = access;
        const int status = this->Set("1.3.9.3.7", Number(TypeParam::kKeep));
        if (TypeParam::IsWritable(access)) {
            EXPECT_EQ(0, status) << access;
            EXPECT_EQ((Log{"get 3.7", "test 3.7=1"}), this->table.log) << access;
            EXPECT_EQ(1, this->slot.tested) << access;
            EXPECT_EQ(0, this->Set("1.3.9.3.7", Number(TypeParam::kKeep), eSetCleanup));
        } else {
            EXPECT_EQ(eSnmpNotWritable, status) << access;
            this->ExpectUntouched("no access");
        }
    }
}

TYPED_TEST(RowStatusBinding, StatusColumnWithoutSetHandlerIsNotWritable)
{
    this->StatusColumn().setHandler = nullptr;
    for (const ESnmpSetOpCode op : kPhases) {
        EXPECT_EQ(eSnmpNotWritable, this->Set("1.3.9.3.7", Number(TypeParam::kKeep), op));
        this->ExpectUntouched("no set handler");
    }
}

TYPED_TEST(RowStatusBinding, StatusGoesThroughItsPhases)
{
    const BObjectSyntax make = Number(TypeParam::kMake);
    const std::string value = "=" + std::to_string(TypeParam::kMake);
    EXPECT_EQ(0, this->Set("1.3.9.3.4.2", make));
    EXPECT_EQ((Log{"get 3.4.2", "test 3.4.2" + value}), this->table.log);
    EXPECT_TRUE(this->slot.tested == 1 && this->slot.committed == 0);
    EXPECT_EQ(0, this->Set("1.3.9.3.4.2", make, eSetCommit));
    EXPECT_EQ((Log{"commit 3.4.2" + value}), this->table.log);
    EXPECT_TRUE(this->slot.tested == 0 && this->slot.committed == 1);
    EXPECT_TRUE(this->table.HasRow("4.2"));
    EXPECT_EQ(0, this->Set("1.3.9.3.4.2", make, eSetUndo));
    EXPECT_EQ((Log{"undo 3.4.2" + value}), this->table.log);
    EXPECT_FALSE(this->table.HasRow("4.2"));
    EXPECT_EQ(0, this->Set("1.3.9.3.4.2", make, eSetCleanup));
    EXPECT_EQ((Log{"cleanup 3.4.2" + value}), this->table.log);
    EXPECT_TRUE(this->slot.tested == 0 && this->slot.committed == 0);
    EXPECT_EQ(5u, this->table.id);
}

TYPED_TEST(RowStatusBinding, AnyIntegerReachesTheStateMachine)
{
    EXPECT_EQ(TypeParam::kOfMinusSeven, this->Set("1.3.9.3.7", Number(-7)));
}

TYPED_TEST(RowStatusBinding, OtherColumnsGoThroughTheAdapter)
{
    EXPECT_EQ(0, this->Set("1.3.9.2.7", Number(-3), eSetCommit));
    EXPECT_EQ((Log{"commit 2.7=-3"}), this->table.log);
    EXPECT_EQ(1, this->slot.committed);
    EXPECT_EQ(-3, this->table.Row("7").level);
    EXPECT_EQ(eSnmpWrongType, this->Set("1.3.9.2.7", Text("3")));
    EXPECT_EQ(eSnmpWrongValue, this->Set("1.3.9.1.7", Text("\r!")));
    this->ExpectUntouched("the adapter's refusals");

    const SConstraintMapEntry range{eConstraintRange, eProbeLevel, "", 0, 9};
    this->table.Column(eProbeLevel).constraint = &range;
    EXPECT_EQ(eSnmpWrongValue, this->Set("1.3.9.2.7", Number(10)));
    EXPECT_EQ(0, this->Set("1.3.9.2.7", Number(10), eSetCommit)) << "checked in the test only";

    this->table.answers["test 2.7"] = 11;
    EXPECT_EQ(11, this->Set("1.3.9.2.7", Number(9)));
    EXPECT_EQ(1, this->slot.tested);
}

TYPED_TEST(RowStatusBinding, AccessOfOtherColumnsIsNotLookedAtButAMissingHandlerIs)
{
    for (const int access : {0, 1, 2, 3, 4, 5}) {
        this->table.Column(eProbeLevel).access = access;
        EXPECT_EQ(0, this->Set("1.3.9.2.7", Number(3))) << access;
    }
    this->table.Column(eProbeLevel).getHandler = nullptr;
    EXPECT_EQ(0, this->Set("1.3.9.2.7", Number(3))) << "is not needed";
    this->table.Column(eProbeLevel).setHandler = nullptr;
    EXPECT_EQ(eSnmpNotWritable, this->Set("1.3.9.2.7", Number(3)));
    this->ExpectUntouched("no set handler");
}

TYPED_TEST(RowStatusBinding, WorksWithoutASlot)
{
    for (const char* name : {"1.3.9.2.7", "1.3.9.3.7"})
        for (const ESnmpSetOpCode op : kPhases) {
            const BVarBind binding(MakeOid(name), Number(TypeParam::kKeep));
            EXPECT_EQ(0, this->table.BMibTableImplEx::Set(5, op, nullptr, binding)) << name;
        }
    EXPECT_EQ(9u, this->table.log.size()) << "four phases each, and one get";
}

} // namespace
} // namespace Test
} // namespace VLK
