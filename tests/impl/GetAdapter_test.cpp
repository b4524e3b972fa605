#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

class GetAdapter : public ::testing::Test {
protected:
    GetAdapter()
    {
        m_probe.Value<int>() = -7;
        m_probe.Value<unsigned>() = 4000000000u;
        m_probe.Value<BOctetString>() = BOctetString("ab", 2);
        m_probe.Value<BObjectIdentifier>() = OidOf("1.3.6.1");
        m_probe.Value<BString>() = BString("text");
        m_probe.Value<BIpAddress>() = BIpAddress(10, 0, 0, 1);
        m_probe.Value<BCounter64>() = BCounter64(1, 0);
        m_probe.Value<ERowStatus>() = eRowNotReady;
        m_probe.Value<EEntryStatus>() = eEntryUnderCreation;
        m_probe.Value<EColor>() = eBlue;
    }

    // The adapter's status; the result is in m_value.
    int Get(const SRqHndlrMapEntry& entry, const BObjectIdentifier* instance = nullptr)
    {
        m_value.SetInt(99);
        return m_probe.Get(&entry, 5, m_value, instance);
    }

    CProbe m_probe;
    BObjectSyntax m_value;
    const BObjectIdentifier m_instance = OidOf("4.2");
};

const char* const kTexts[] = {"",         "-7",         "ab", "1.3.6.1", "4000000000", "text",
                              "10.0.0.1", "4294967296", "3",  "3",       "2"};

TEST_F(GetAdapter, KindsByTags)
{
    for (unsigned kind = 1; kind <= kRqLastKind; ++kind) {
        for (int tag : kAllTags) {
            SRqHndlrMapEntry entry = CProbe::RowOf(kind);
            entry.syntax = tag;
            m_probe.m_calls.clear();
            const int status = Get(entry, &m_instance);
            if (!Suits(kind, tag)) {
                EXPECT_EQ(eSnmpGenErr, status) << kind << " as " << tag;
                EXPECT_TRUE(m_probe.m_calls.empty()) << kind << " as " << tag;
                EXPECT_EQ(99, m_value.Int());
                continue;
            }
            EXPECT_EQ(0, status) << kind << " as " << tag;
            EXPECT_EQ(tag, int(m_value.Syntax())) << "kind " << kind;
            EXPECT_STREQ(kTexts[kind], m_value.ValToStr().c_str()) << kind << " as " << tag;
            EXPECT_TRUE(m_probe.m_wasDefault) << "kind " << kind;
            EXPECT_EQ(1u, m_probe.m_calls.size());
        }
    }
}

TEST_F(GetAdapter, ColumnsGetTheirInstanceAndScalarsNone)
{
    for (unsigned kind = 1; kind <= kRqLastKind; ++kind) {
        m_probe.m_calls.clear();
        EXPECT_EQ(0, Get(CProbe::ColumnOf(kind), &m_instance)) << kind;
        ASSERT_EQ(1u, m_probe.m_calls.size());
        EXPECT_EQ("get id 5 at 4.2", m_probe.m_calls[0]);
    }
    m_probe.m_calls.clear();
    EXPECT_EQ(0, Get(CProbe::RowOf(eKindInteger)));
    EXPECT_EQ("get id 5", m_probe.m_calls.at(0));
}

TEST_F(GetAdapter, ColumnHandlerWithoutInstanceIsGenErr)
{
    for (unsigned kind = 1; kind <= kRqLastKind; ++kind)
        EXPECT_EQ(eSnmpGenErr, Get(CProbe::ColumnOf(kind))) << kind;
    EXPECT_TRUE(m_probe.m_calls.empty());
}

TEST_F(GetAdapter, StatusHandlersGetTheirFlag)
{
    for (unsigned kind : {eKindRowStatus, eKindEntryStatus}) {
        m_probe.m_flag = -1;
        EXPECT_EQ(0, Get(CProbe::RowOf(kind), &m_instance));
        EXPECT_EQ(kRqStatusFlag, m_probe.m_flag);
    }
}

TEST_F(GetAdapter, HandlersErrorIsReturnedAndTheValueUntouched)
{
    m_probe.m_status = eSnmpNoSuchName;
    for (unsigned kind = 1; kind <= kRqLastKind; ++kind) {
        EXPECT_EQ(eSnmpNoSuchName, Get(CProbe::RowOf(kind), &m_instance)) << kind;
        EXPECT_EQ(99, m_value.Int()) << kind;
    }
    m_probe.m_status = 99;
    EXPECT_EQ(99, Get(CProbe::RowOf(1)));
}

TEST_F(GetAdapter, NoHandlerIsGenErrBeforeAnythingElse)
{
    for (unsigned kind : {1u, 5u, 11u, 1000u}) {
        SRqHndlrMapEntry entry = CProbe::RowOf(1);
        entry.kind = kind;
        entry.getHandler = nullptr;
        EXPECT_EQ(eSnmpGenErr, Get(entry)) << kind;
    }
    EXPECT_EQ(eSnmpGenErr, m_probe.Get(nullptr, 1, m_value, nullptr));
}

TEST_F(GetAdapter, KindsAboveTheLastSucceedWithoutCalling)
{
    for (unsigned kind : {11u, 12u, 4294967295u}) {
        SRqHndlrMapEntry entry = CProbe::RowOf(1);
        entry.kind = kind;
        EXPECT_EQ(0, Get(entry)) << kind;
        EXPECT_EQ(99, m_value.Int());
    }
    EXPECT_TRUE(m_probe.m_calls.empty());
}

TEST_F(GetAdapter, TerminatingRowIsGenErr)
{
    SRqHndlrMapEntry entry = CProbe::RowOf(1);
    entry.kind = eKindEnd;
    EXPECT_EQ(eSnmpGenErr, Get(entry));
}

TEST_F(GetAdapter, EmptyStringsAreEmptyValues)
{
    m_probe.Value<BString>() = BString();
    m_probe.Value<BOctetString>() = BOctetString();
    for (unsigned kind : {eKindDisplayString, eKindOctetString}) {
        EXPECT_EQ(0, Get(CProbe::RowOf(kind)));
        EXPECT_EQ(int(eAsnOctetString), int(m_value.Syntax()));
        EXPECT_EQ(0u, m_value.Octets().Length());
    }
}

} // namespace
} // namespace VLK
