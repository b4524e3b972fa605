#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

class SetAdapter : public ::testing::Test {
protected:
    int Set(const SRqHndlrMapEntry& entry, ESnmpSetOpCode op, const BObjectSyntax& value,
            const BObjectIdentifier* instance = nullptr)
    {
        m_slot = SSetSlot{};
        m_probe.m_calls.clear();
        return m_probe.Set(&entry, 5, op, &m_slot.scratch, value, instance);
    }
    // The same with a constraint, in the test phase.
    int Test(unsigned kind, const SConstraintMapEntry* constraint, const BObjectSyntax& value)
    {
        SRqHndlrMapEntry entry = CProbe::RowOf(kind);
        entry.syntax = value.Syntax();
        entry.constraint = constraint;
        return Set(entry, eSetTest, value, &m_instance);
    }
    bool Called() const { return !m_probe.m_calls.empty(); }

    CProbe m_probe;
    SSetSlot m_slot{};
    const BObjectIdentifier m_instance = OidOf("4.2");
};

TEST_F(SetAdapter, KindsByTagsInEveryPhase)
{
    for (unsigned kind = 1; kind <= kRqLastKind; ++kind)
        for (int syntax : kAllTags)
            for (int tag : kAllTags)
                for (ESnmpSetOpCode op : kAllPhases) {
                    SRqHndlrMapEntry entry = CProbe::RowOf(kind);
                    entry.syntax = syntax;
                    BObjectSyntax value = ValueOf(tag);
                    if (tag >= eNoSuchObject)
                        value.SetV2Exception(static_cast<ESnmpException>(tag));
                    const bool good = syntax == tag && Suits(kind, tag);
                    const int status = Set(entry, op, value, &m_instance);
                    EXPECT_EQ(good ? eSnmpNoError : eSnmpWrongType, status)
                        << "kind " << kind << " syntax " << syntax << " tag " << tag;
                    EXPECT_EQ(good, Called());
                }
}

TEST_F(SetAdapter, HandlersGetTheTypedValue)
{
    Set(CProbe::RowOf(1), eSetCommit, IntValue(-3));
    EXPECT_EQ(-3, m_probe.Value<int>());
    Set(CProbe::RowOf(2), eSetCommit, ValueOf(4));
    EXPECT_TRUE(m_probe.Value<BOctetString>() == BString("text"));
    SRqHndlrMapEntry opaque = CProbe::RowOf(2);
    opaque.syntax = eAsnOpaque;
    Set(opaque, eSetCommit, ValueOf(68));
    EXPECT_TRUE(m_probe.Value<BOctetString>() == BString("blob"));
    Set(CProbe::RowOf(3), eSetCommit, ValueOf(6));
    EXPECT_EQ("1.3.6", TextOf(m_probe.Value<BObjectIdentifier>()));
    Set(CProbe::RowOf(4), eSetCommit, ValueOf(66));
    EXPECT_EQ(4000000000u, m_probe.Value<unsigned>());
    Set(CProbe::RowOf(5), eSetCommit, ValueOf(4));
    EXPECT_STREQ("text", m_probe.Value<BString>().c_str());
    Set(CProbe::RowOf(6), eSetCommit, ValueOf(64));
    EXPECT_STREQ("10.0.0.1", m_probe.Value<BIpAddress>().ToString().c_str());
    Set(CProbe::RowOf(7), eSetCommit, ValueOf(70));
    EXPECT_TRUE(BCounter64(1, 2) == m_probe.Value<BCounter64>());
    Set(CProbe::RowOf(8), eSetCommit, IntValue(5), &m_instance);
    EXPECT_EQ(eRowCreateAndWait, m_probe.Value<ERowStatus>());
    Set(CProbe::RowOf(9), eSetCommit, IntValue(4), &m_instance);
    EXPECT_EQ(eEntryInvalid, m_probe.Value<EEntryStatus>());
    Set(CProbe::RowOf(10), eSetCommit, IntValue(2));
    EXPECT_EQ(eBlue, m_probe.Value<EColor>());
}

TEST_F(SetAdapter, EnumerationsCarryEveryInteger)
{
    for (int number : {99, 257, -1, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(0, Set(CProbe::RowOf(10), eSetCommit, IntValue(number)));
        EXPECT_EQ(number, static_cast<int>(m_probe.Value<EColor>()));
    }
}

TEST_F(SetAdapter, ColumnHandlersOfEveryKindGetInstancePhaseAndId)
{
    for (unsigned kind = 1; kind <= kRqLastKind; ++kind) {
        const SRqHndlrMapEntry entry = CProbe::ColumnOf(kind);
        EXPECT_EQ(0, Set(entry, eSetUndo, ValueOf(entry.syntax), &m_instance)) << kind;
        EXPECT_EQ("225 id 5 at 4.2", m_probe.m_calls.at(0)) << kind;
    }
}

TEST_F(SetAdapter, ColumnHandlerWithoutInstanceIsGenErr)
{
    for (unsigned kind : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 10u}) {
        const SRqHndlrMapEntry entry = CProbe::ColumnOf(kind);
        EXPECT_EQ(eSnmpGenErr, Set(entry, eSetTest, ValueOf(entry.syntax))) << kind;
        EXPECT_FALSE(Called());
    }
}

TEST_F(SetAdapter, StatusKindsWithoutInstanceAreWrongType)
{
    for (unsigned kind : {eKindRowStatus, eKindEntryStatus}) {
        EXPECT_EQ(eSnmpWrongType, Set(CProbe::RowOf(kind), eSetTest, IntValue(1)));
        EXPECT_FALSE(Called());
        EXPECT_EQ(0, m_slot.tested);
    }
}

TEST_F(SetAdapter, StatusKindsTakeAnyIntegerUnchecked)
{
    EXPECT_EQ(0, Test(eKindRowStatus, &BMibImpl::s_tcConstraints[6], IntValue(99)));
    EXPECT_EQ(99, static_cast<int>(m_probe.Value<ERowStatus>()));
}

TEST_F(SetAdapter, NoHandlerIsNotWritableBeforeAnythingElse)
{
    for (unsigned kind : {1u, 5u, 11u}) {
        SRqHndlrMapEntry entry = CProbe::RowOf(1);
        entry.kind = kind;
        entry.setHandler = nullptr;
        EXPECT_EQ(eSnmpNotWritable, Set(entry, eSetTest, ValueOf(eAsnNull))) << kind;
    }
    EXPECT_EQ(eSnmpNotWritable, m_probe.Set(nullptr, 1, eSetTest, nullptr, IntValue(1), nullptr));
}

TEST_F(SetAdapter, KindsAboveTheLastSucceedWithoutCalling)
{
    SRqHndlrMapEntry entry = CProbe::RowOf(1);
    entry.kind = 11;
    EXPECT_EQ(0, Set(entry, eSetTest, ValueOf(eAsnOpaque)));
    EXPECT_FALSE(Called());
    EXPECT_EQ(0, m_slot.tested) << "no handler saw the binding";
}

const SConstraintMapEntry kRange[] = {{eConstraintRange, 1, "", 0, 10}, kConstraintEnd};
const SConstraintMapEntry kRefined[] = {{eConstraintRefined, 1, "", 0, 10}, kConstraintEnd};
const SConstraintMapEntry kSigned[] = {{eConstraintRange, 1, "", -5, 5}, kConstraintEnd};
const SConstraintMapEntry kHuge[] = {{eConstraintRange, 1, "", 5, -1}, kConstraintEnd};
const SConstraintMapEntry kColors[] = {
    {eConstraintEnumeration, 1, "", 0, 0}, {eConstraintItem, 1, "red", 1, 0},
    {eConstraintItem, 1, "none", -1, 0},   {eConstraintRange, 1, "", 50, 60},
    {eConstraintItem, 1, "blue", 2, 0},    kConstraintEnd};
const SConstraintMapEntry kNoItems[] = {{eConstraintEnumeration, 1, "", 0, 0}, kConstraintEnd};

TEST_F(SetAdapter, RangeOfIntegers)
{
    for (unsigned kind : {eKindInteger, eKindEnumerated})
        for (const SConstraintMapEntry* range : {kRange, kRefined}) {
            EXPECT_EQ(eSnmpWrongValue, Test(kind, range, IntValue(-1)));
            EXPECT_FALSE(Called());
            EXPECT_EQ(eSnmpNoError, Test(kind, range, IntValue(0)));
            EXPECT_EQ(eSnmpNoError, Test(kind, range, IntValue(10)));
            EXPECT_EQ(eSnmpWrongValue, Test(kind, range, IntValue(11)));
        }
    EXPECT_EQ(eSnmpNoError, Test(eKindInteger, kSigned, IntValue(-5)));
    EXPECT_EQ(eSnmpWrongValue, Test(eKindInteger, kSigned, IntValue(-6)));
}

TEST_F(SetAdapter, EnumerationTakesItsItemsOnly)
{
    for (unsigned kind : {eKindInteger, eKindEnumerated}) {
        EXPECT_EQ(eSnmpNoError, Test(kind, kColors, IntValue(1)));
        EXPECT_EQ(eSnmpNoError, Test(kind, kColors, IntValue(-1)));
        EXPECT_EQ(eSnmpWrongValue, Test(kind, kColors, IntValue(0)));
        EXPECT_EQ(eSnmpWrongValue, Test(kind, kColors, IntValue(2)))
            << "items end at the first row that is none";
        EXPECT_EQ(eSnmpWrongValue, Test(kind, kColors, IntValue(55)));
    }
}

TEST_F(SetAdapter, EnumerationWithoutItemsRejectsEveryValue)
{
    for (int value : {-1, 0, 1, 2})
        EXPECT_EQ(eSnmpWrongValue, Test(eKindInteger, kNoItems, IntValue(value)));
}

TEST_F(SetAdapter, LengthOfStrings)
{
    const SConstraintMapEntry* dateAndTime = &BMibImpl::s_tcConstraints[0];
    for (unsigned kind : {eKindOctetString, eKindDisplayString}) {
        EXPECT_EQ(eSnmpWrongLength, Test(kind, dateAndTime, TextValue(std::string(7, 'x'))));
        EXPECT_EQ(eSnmpNoError, Test(kind, dateAndTime, TextValue(std::string(8, 'x'))));
        EXPECT_EQ(eSnmpNoError, Test(kind, dateAndTime, TextValue(std::string(11, 'x'))));
        EXPECT_EQ(eSnmpWrongLength, Test(kind, dateAndTime, TextValue(std::string(12, 'x'))));
        EXPECT_FALSE(Called());
        EXPECT_EQ(eSnmpWrongLength, Test(kind, kRefined, TextValue(std::string(11, 'x'))));
        EXPECT_EQ(eSnmpNoError, Test(kind, kSigned, TextValue("")));
        EXPECT_EQ(eSnmpNoError, Test(kind, kColors, TextValue(std::string(300, 'x'))))
            << "an enumeration says nothing of lengths";
    }
    EXPECT_EQ(eSnmpNoError, Test(eKindOctetString, kRange, ValueOf(eAsnOpaque)));
}

TEST_F(SetAdapter, RangeOfGaugesIsUnsigned)
{
    BObjectSyntax value;
    value.SetGauge(10);
    EXPECT_EQ(eSnmpNoError, Test(eKindUnsigned, kRange, value));
    value.SetGauge(11);
    EXPECT_EQ(eSnmpWrongValue, Test(eKindUnsigned, kRange, value));
    EXPECT_EQ(eSnmpWrongValue, Test(eKindUnsigned, kRefined, value));
    value.SetGauge(4000000000u);
    EXPECT_EQ(eSnmpNoError, Test(eKindUnsigned, kHuge, value));
    value.SetGauge(5);
    EXPECT_EQ(eSnmpNoError, Test(eKindUnsigned, kHuge, value)) << "-1 is 4294967295 here";
    value.SetGauge(4);
    EXPECT_EQ(eSnmpWrongValue, Test(eKindUnsigned, kHuge, value));
    EXPECT_EQ(eSnmpNoError, Test(eKindUnsigned, kColors, value));
}

TEST_F(SetAdapter, CountersAndTimeTicksAreNotRangeChecked)
{
    EXPECT_EQ(eSnmpNoError, Test(eKindUnsigned, kRange, ValueOf(eAsnCounter32)));
    EXPECT_EQ(eSnmpNoError, Test(eKindUnsigned, kRange, ValueOf(eAsnTimeTicks)));
}

TEST_F(SetAdapter, OtherKindsAreNotConstrained)
{
    for (const SConstraintMapEntry* constraint : {kRange, kColors, kNoItems}) {
        EXPECT_EQ(eSnmpNoError, Test(eKindObjectId, constraint, ValueOf(eAsnObjectId)));
        EXPECT_EQ(eSnmpNoError, Test(eKindIpAddress, constraint, ValueOf(eAsnIpAddress)));
        EXPECT_EQ(eSnmpNoError, Test(eKindCounter64, constraint, ValueOf(eAsnCounter64)));
    }
}

TEST_F(SetAdapter, ConstraintsHoldInTheTestPhaseOnly)
{
    SRqHndlrMapEntry services = CProbe::RowOf(eKindInteger);
    const SConstraintMapEntry bits[] = {{eConstraintRange, 7, "", 0, 127}, kConstraintEnd};
    services.constraint = bits;
    EXPECT_EQ(eSnmpWrongValue, Set(services, eSetTest, IntValue(128)));
    for (ESnmpSetOpCode op : {eSetCommit, eSetUndo, eSetCleanup}) {
        EXPECT_EQ(eSnmpNoError, Set(services, op, IntValue(128)));
        EXPECT_TRUE(Called());
    }
}

TEST_F(SetAdapter, DisplayStringBytesInEveryPhase)
{
    const std::pair<std::string, int> cases[] = {
        {"plain text", 0},
        {"", 0},
        {"a\rb", eSnmpWrongValue},
        {"a\r\nb", 0},
        {std::string("a\r\0b", 4), 0},
        {"a\r", 0},
        {"\r\r", eSnmpWrongValue},
        {"\r\n\r", 0},
        {"a\nb", 0},
        {std::string("a\0b", 3), 0},
        {"a\x7f", 0},
        {"a\x80", eSnmpWrongValue},
        {"\xff", eSnmpWrongValue},
    };
    for (ESnmpSetOpCode op : kAllPhases)
        for (const auto& [text, status] : cases) {
            EXPECT_EQ(status, Set(CProbe::RowOf(5), op, TextValue(text))) << text;
            EXPECT_EQ(status == 0, Called()) << text;
        }
    EXPECT_EQ(0, Set(CProbe::RowOf(2), eSetTest, TextValue("a\x80"))) << "octets may be anything";
}

TEST_F(SetAdapter, CarriageReturnMayBeTheLastByteWhateverLiesBehindTheValue)
{
    BObjectSyntax value = TextValue("a\rb");
    // Shortened in place: the letter stays where it was, but is no longer the value's.
    BOctetString& octets = const_cast<BOctetString&>(value.Octets());
    ASSERT_TRUE(octets.Assign(2, octets.Data()));
    ASSERT_EQ(2u, octets.Length());
    ASSERT_TRUE(octets.Capacity() > 2 && octets.Data()[2] == 'b');
    for (ESnmpSetOpCode op : kAllPhases) {
        EXPECT_EQ(0, Set(CProbe::RowOf(5), op, value));
        EXPECT_STREQ("a\r", m_probe.Value<BString>().c_str());
    }
}

TEST_F(SetAdapter, DisplayStringKeepsBytesAfterNul)
{
    Set(CProbe::RowOf(5), eSetTest, TextValue(std::string("a\0b", 3)));
    EXPECT_EQ(3u, m_probe.Value<BString>().length());
    Set(CProbe::RowOf(5), eSetTest, TextValue(""));
    EXPECT_EQ(0u, m_probe.Value<BString>().length());
}

TEST_F(SetAdapter, LengthIsCheckedBeforeTheBytes)
{
    EXPECT_EQ(eSnmpWrongLength, Test(5, kRange, TextValue("\x80 and too long")));
}

TEST_F(SetAdapter, MarksAfterTheHandlerWhateverItReturned)
{
    for (int status : {0, 5}) {
        m_probe.m_status = status;
        EXPECT_EQ(status, Set(CProbe::RowOf(1), eSetTest, IntValue(1)));
        EXPECT_TRUE(m_slot.tested == 1 && m_slot.committed == 0);
        EXPECT_EQ(status, Set(CProbe::RowOf(1), eSetCommit, IntValue(1)));
        EXPECT_TRUE(m_slot.tested == 0 && m_slot.committed == 1);
        for (ESnmpSetOpCode op : {eSetUndo, eSetCleanup}) {
            EXPECT_EQ(status, Set(CProbe::RowOf(1), op, IntValue(1)));
            EXPECT_TRUE(m_slot.tested == 0 && m_slot.committed == 0);
        }
    }
}

TEST_F(SetAdapter, HandlerThatThrowsIsMarkedAsHavingRun)
{
    class CThrows : public CProbe {
    public:
        int OnSet(ESnmpSetOpCode, unsigned, int, void**) { throw 1; }
    } throws;
    const SRqHndlrMapEntry entry =
        ScalarRow<eKindInteger, nullptr, &CThrows::OnSet>(1, "x", eAsnInteger, eRqWriteOnly);
    SSetSlot slot{};
    EXPECT_THROW(throws.Set(&entry, 5, eSetTest, &slot.scratch, IntValue(1), nullptr), int);
    EXPECT_TRUE(slot.tested == 1 && slot.committed == 0);
    EXPECT_THROW(throws.Set(&entry, 5, eSetCommit, &slot.scratch, IntValue(1), nullptr), int);
    EXPECT_EQ(1, slot.committed);
}

TEST_F(SetAdapter, NoMarkWhenACheckFailed)
{
    for (ESnmpSetOpCode op : kAllPhases) {
        Set(CProbe::RowOf(1), op, TextValue("wrong type"));
        EXPECT_TRUE(m_slot.tested == 0 && m_slot.committed == 0);
        Set(CProbe::RowOf(5), op, TextValue("\x80"));
        EXPECT_TRUE(m_slot.tested == 0 && m_slot.committed == 0);
    }
    Test(1, kRange, IntValue(11));
    EXPECT_EQ(0, m_slot.tested);
}

TEST_F(SetAdapter, SlotIsTheHandlersOwn)
{
    int undo = 0;
    m_probe.m_scratch = &undo;
    Set(CProbe::RowOf(1), eSetTest, IntValue(1));
    EXPECT_EQ(&undo, m_slot.scratch);
    const SRqHndlrMapEntry entry = CProbe::RowOf(1);
    EXPECT_EQ(0, m_probe.Set(&entry, 5, eSetTest, nullptr, IntValue(1), nullptr));
}

} // namespace
} // namespace VLK
