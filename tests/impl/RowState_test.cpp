// What a SET notes of a row, who may ask for it, and which bindings are status
// bindings.
#include "tests/impl/RowStatusTest.h"

namespace VLK {
namespace Test {
namespace {

using RowState = BMibTableImplEx::RowState;

TEST(RowState, CreationAndDeletionGoByTheRequestedValueOfItsKind)
{
    for (const int requested : kStatusValues) {
        const RowState row{BMibTableImplEx::eRowOfRowStatus, eSetTest, 6, 6, requested};
        EXPECT_EQ(requested == 4 || requested == 5, row.IsCreation()) << requested;
        EXPECT_EQ(requested == 6, row.IsDeletion()) << requested;
        const RowState entry{BMibTableImplEx::eRowOfEntryStatus, eSetTest, 4, 4, requested};
        EXPECT_EQ(requested == 2, entry.IsCreation()) << requested;
        EXPECT_EQ(requested == 4, entry.IsDeletion()) << requested;
    }
}

TEST(RowState, AnotherPhaseStartsAgainFromTheValueBeforeTheRequest)
{
    for (const ESnmpSetOpCode from : kPhases)
        for (const ESnmpSetOpCode to : kPhases)
            for (const auto kind :
                 {BMibTableImplEx::eRowOfRowStatus, BMibTableImplEx::eRowOfEntryStatus}) {
                RowState state{kind, from, 11, 22, 33};
                state.SetOpCode(to);
                EXPECT_EQ(kind, state.kind);
                EXPECT_EQ(to, state.opCode);
                EXPECT_EQ(11, state.undoValue);
                EXPECT_EQ(from == to ? 22 : 11, state.newValue) << from << " to " << to;
                EXPECT_EQ(from == to ? 33 : 0, state.requestedValue) << from << " to " << to;
            }
}

TEST(RowState, RowThatTheSetDoesNotTouchHasNone)
{
    CRowProbe table;
    table.Row("7").status = eRowActive;
    for (const char* row : {"7", "8", ""}) {
        const BObjectIdentifier instance = MakeOid(row);
        EXPECT_FALSE(table.IsRowCreation(instance));
        EXPECT_FALSE(table.IsRowDeletion(instance));
        EXPECT_EQ(0, table.GetRowState(instance));
        EXPECT_EQ(eRowNotReady, table.GetRowStatusUndoValue(instance));
        EXPECT_EQ(eEntryUnderCreation, table.GetEntryStatusUndoValue(instance));
    }
    EXPECT_TRUE(table.log.empty()) << "nobody is asked for the row's status";
}

// What is known of row 7 between the test of `requested` and its cleanup, when it
// had the status `before`, 0 for no row.
template <class Probe>
std::string KnownOf(int before, int requested)
{
    Probe table;
    if (before != 0)
        table.Row("7").status = before;
    RowSet set(table);
    set.Status("7", requested);
    const int status = set.Phase(eSetTest);
    const BObjectIdentifier row = MakeOid("7");
    std::string known = std::to_string(status) + (table.IsRowCreation(row) ? " made" : "") +
                        (table.IsRowDeletion(row) ? " destroyed" : "") + " from " +
                        std::to_string(table.GetRowStatusUndoValue(row)) + " to " +
                        std::to_string(table.GetRowState(row));
    EXPECT_EQ(int(table.GetRowStatusUndoValue(row)), int(table.GetEntryStatusUndoValue(row)))
        << "are one computation";
    EXPECT_FALSE(table.IsRowCreation(MakeOid("7.0"))) << "is another row";
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ(eRowNotReady, table.GetRowStatusUndoValue(row));
    return known;
}

TEST(RowState, TellsHandlersWhatBecomesOfARowStatusRow)
{
    EXPECT_EQ("0 made from 0 to 1", KnownOf<CRowProbe>(0, eRowCreateAndGo));
    EXPECT_EQ("0 made from 0 to 2", KnownOf<CRowProbe>(0, eRowCreateAndWait));
    EXPECT_EQ("0 destroyed from 0 to 0", KnownOf<CRowProbe>(0, eRowDestroy));
    EXPECT_EQ("0 destroyed from 1 to 0", KnownOf<CRowProbe>(1, eRowDestroy));
    EXPECT_EQ("0 from 2 to 1", KnownOf<CRowProbe>(2, eRowActive));
    EXPECT_EQ("0 from 1 to 2", KnownOf<CRowProbe>(1, eRowNotInService));
    EXPECT_EQ("12 made from 1 to 1", KnownOf<CRowProbe>(1, eRowCreateAndGo)) << "it stays";
    EXPECT_EQ("12 from 0 to 0", KnownOf<CRowProbe>(0, eRowActive));
    EXPECT_EQ("5 from 9 to 9", KnownOf<CRowProbe>(9, eRowActive)) << "a status that is none";
    EXPECT_EQ("5 destroyed from -4 to -4", KnownOf<CRowProbe>(-4, eRowDestroy));
}

TEST(RowState, TellsHandlersWhatBecomesOfAnEntryStatusRow)
{
    EXPECT_EQ("0 made from 0 to 3", KnownOf<CEntryProbe>(0, eEntryCreateRequest));
    EXPECT_EQ("10 destroyed from 0 to 0", KnownOf<CEntryProbe>(0, eEntryInvalid));
    EXPECT_EQ("0 destroyed from 1 to 0", KnownOf<CEntryProbe>(1, eEntryInvalid));
    EXPECT_EQ("0 from 3 to 1", KnownOf<CEntryProbe>(3, eEntryValid));
    EXPECT_EQ("3 made from 1 to 1", KnownOf<CEntryProbe>(1, eEntryCreateRequest));
    EXPECT_EQ("0 destroyed from 4 to 0", KnownOf<CEntryProbe>(4, eEntryInvalid));
    EXPECT_EQ("3 from 4 to 4", KnownOf<CEntryProbe>(4, eEntryValid));
    EXPECT_EQ("0 from 1 to 9", KnownOf<CEntryProbe>(1, 9)) << "the handler may refuse it";
}

class StatusBinding : public ::testing::Test {
protected:
    // "s" for a status binding, "c" for a creation, "d" for a deletion.
    std::string Judge(const char* name, const BObjectSyntax& value) const
    {
        const BVarBind binding(MakeOid(name), value);
        return std::string(m_table.IsRowStatus(binding) ? "s" : "") +
               (m_table.IsRowCreation(binding) ? "c" : "") +
               (m_table.IsRowDeletion(binding) ? "d" : "");
    }

    CRowProbe m_table;
};

TEST_F(StatusBinding, GoesByHandlerKindAndValue)
{
    for (unsigned kind = 0; kind <= kRqLastKind + 2; ++kind) {
        for (const int value : kStatusValues) {
            m_table.Column(eProbeStatus).kind = kind;
            const bool row = kind == eKindRowStatus;
            const bool entry = kind == eKindEntryStatus;
            std::string expected = row || entry ? "s" : "";
            if ((row && (value == 4 || value == 5)) || (entry && value == 2))
                expected += "c";
            if ((row && value == 6) || (entry && value == 4))
                expected += "d";
            EXPECT_EQ(expected, Judge("1.3.9.3.7", Number(value))) << kind << " value " << value;
        }
    }
}

TEST_F(StatusBinding, ValueIsAnInteger)
{
    BObjectSyntax gauge;
    gauge.SetGauge(4);
    BObjectSyntax absent;
    absent.SetV2Exception(eNoSuchInstance);
    for (const BObjectSyntax& value : {Text("4"), gauge, absent, BObjectSyntax()})
        EXPECT_EQ("", Judge("1.3.9.3.7", value)) << value.Syntax();
}

TEST_F(StatusBinding, HasAGetHandler)
{
    m_table.Column(eProbeStatus).setHandler = nullptr;
    EXPECT_EQ("sc", Judge("1.3.9.3.7", Number(4))) << "a set handler is not asked for";
    m_table.Column(eProbeStatus).getHandler = nullptr;
    for (const int value : kStatusValues)
        EXPECT_EQ("", Judge("1.3.9.3.7", Number(value)));
}

TEST_F(StatusBinding, AccessIsNotLookedAt)
{
    for (const int access : {0, 1, 2, 3, 4, 5}) {
        m_table.Column(eProbeStatus).access = access;
        EXPECT_EQ("sd", Judge("1.3.9.3.7", Number(6)));
    }
}

TEST_F(StatusBinding, NeedsAColumnButNoInstance)
{
    EXPECT_EQ("", Judge("", Number(4)));
    EXPECT_EQ("", Judge("1", Number(4)));
    EXPECT_EQ("", Judge("1.3.9", Number(4)));
    EXPECT_EQ("sc", Judge("1.3.9.3", Number(4)));
    EXPECT_EQ("sc", Judge("1.3.9.3.1.2.3.4", Number(4)));
    EXPECT_EQ("", Judge("1.3.9.4.7", Number(4))) << "unknown column";
    EXPECT_EQ("", Judge("1.3.9.2.7", Number(4))) << "no status column";
}

TEST_F(StatusBinding, ArcsBehindTheEndOfTheNameAreNotLookedAt)
{
    BVarBind binding(MakeOid("1.3.9.3.7"), Number(4));
    binding.Name().Truncate(3);
    EXPECT_FALSE(m_table.IsRowStatus(binding));
}

} // namespace
} // namespace Test
} // namespace VLK
