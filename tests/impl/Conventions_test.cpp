#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

struct SExpected {
    const char* convention;
    const char* constant;
    int kind;
    int low;
    int high;
    std::vector<const char*> labels; // of the values 1, 2 ...
};

const SExpected kExpected[] = {
    {"DateAndTime", cszDateAndTime, 4, 8, 11, {}},
    {"DisplayString", cszDisplayString, 4, 0, 255, {}},
    {"MacAddress", cszMacAddress, 4, 6, 6, {}},
    {"TAddress", cszTAddress, 4, 1, 255, {}},
    {"TestAndIncr", cszTestAndIncr, 4, 0, 2147483647, {}},
    {"TimeInterval", cszTimeInterval, 4, 0, 2147483647, {}},
    {"RowStatus",
     cszRowStatus,
     1,
     0,
     0,
     {"active", "notInService", "notReady", "createAndGo", "createAndWait", "destroy"}},
    {"StorageType",
     cszStorageType,
     1,
     0,
     0,
     {"other", "volatile", "nonVolatile", "permanent", "readOnly"}},
    {"TruthValue", cszTruthValue, 1, 0, 0, {"true", "false"}},
    {"OwnerString", cszOwnerString, 4, 0, 255, {}},
    {"EntryStatus",
     cszEntryStatus,
     1,
     0,
     0,
     {"valid", "createRequest", "underCreation", "invalid"}},
    {"SnmpAdminString", cszSnmpAdminString, 4, 0, 255, {}},
    {"SnmpEngineID", cszSnmpEngineID, 4, 5, 32, {}},
    {"SnmpSecurityModel", cszSnmpSecurityModel, 4, 0, 2147483647, {}},
    {"SnmpMessageProcessingModel", cszSnmpMessageProcessingModel, 4, 0, 2147483647, {}},
    {"SnmpSecurityLevel",
     cszSnmpSecurityLevel,
     1,
     0,
     0,
     {"noAuthNoPriv", "authNoPriv", "authPriv"}},
    {"SnmpTagValue", cszSnmpTagValue, 4, 0, 255, {}},
    {"SnmpTagList", cszSnmpTagList, 4, 0, 255, {}},
};

TEST(Conventions, StandardTableRowByRow)
{
    const SConstraintMapEntry* row = BMibImpl::GetTCConstraintMap();
    for (const SExpected& expected : kExpected) {
        EXPECT_STREQ(expected.convention, row->name);
        EXPECT_EQ(expected.constant, row->name) << "the row carries the public constant";
        EXPECT_EQ(expected.kind, row->kind) << row->name;
        EXPECT_EQ(0u, row->column) << row->name;
        if (expected.kind == eConstraintRange) {
            EXPECT_EQ(expected.low, row->low) << row->name;
            EXPECT_EQ(expected.high, row->high) << row->name;
        }
        ++row;
        int value = 1;
        for (const char* label : expected.labels) {
            EXPECT_EQ(eConstraintItem, row->kind) << label;
            EXPECT_STREQ(label, row->name);
            EXPECT_EQ(value++, row->low) << label;
            EXPECT_EQ(0u, row->column) << label;
            ++row;
        }
    }
    EXPECT_EQ(eConstraintEnd, row->kind);
}

TEST(Conventions, FoundByTheNameOfTheirHeader)
{
    CProbe probe;
    for (const SExpected& expected : kExpected) {
        const std::string copy = expected.convention;
        const SConstraintMapEntry* row = probe.FindTCConstraintMapEntry(copy.c_str());
        ASSERT_NE(nullptr, row) << copy;
        EXPECT_STREQ(expected.convention, row->name);
        EXPECT_EQ(expected.kind, row->kind);
    }
}

TEST(Conventions, ItemsNullAndOtherSpellingsAreNotFound)
{
    CProbe probe;
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry(nullptr));
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry("active"));
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry("displayString"));
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry("DisplayStrin"));
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry(""));
}

const SConstraintMapEntry kExternal[] = {
    {eConstraintConvention, 0, "Percent", 0, 0}, {eConstraintRange, 0, nullptr, 0, 0},
    {eConstraintRange, 0, "Percent", 0, 100},    {eConstraintRange, 0, "DisplayString", 0, 10},
    {eConstraintRange, 0, "Percent", 0, 50},     kConstraintEnd};

TEST(Conventions, ExternalOnesComeAfterTheStandardOnes)
{
    CProbe probe;
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry("Percent"));
    probe.SetExtrenalTCConstraints(kExternal);
    EXPECT_EQ(&kExternal[2], probe.FindTCConstraintMapEntry("Percent"));
    EXPECT_EQ(&BMibImpl::s_tcConstraints[1], probe.FindTCConstraintMapEntry("DisplayString"));
    probe.SetExtrenalTCConstraints(nullptr);
    EXPECT_EQ(nullptr, probe.FindTCConstraintMapEntry("Percent"));
}

} // namespace
} // namespace VLK
