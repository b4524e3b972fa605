#include <vkmibh/mibinfo.h>
#include <vkmibh/rqmap.h>

#include <gtest/gtest.h>
#include <initializer_list>

using namespace VLK;

namespace {

// Labels of `first` and the values after it; the values around them are unknown.
template <class E>
void ExpectLabels(const char* (*label)(E), int first, std::initializer_list<const char*> labels)
{
    int value = first;
    EXPECT_STREQ("unknown", label(static_cast<E>(first - 1)));
    for (const char* expected : labels)
        EXPECT_STREQ(expected, label(static_cast<E>(value++)));
    for (int beyond : {value, 2147483647, -1, -2147483647 - 1})
        EXPECT_STREQ("unknown", label(static_cast<E>(beyond))) << beyond;
}

} // namespace

TEST(MibInfoLabels, RowStatus)
{
    ExpectLabels(LabelRowStatus, 1,
                 {"active", "notInService", "notReady", "createAndGo", "createAndWait", "destroy"});
}

TEST(MibInfoLabels, StorageType)
{
    ExpectLabels(LabelStorageType, 1,
                 {"other", "volatile", "nonVolatile", "permanent", "readOnly"});
}

TEST(MibInfoLabels, MaxAccess)
{
    ExpectLabels(LabelMaxAccess, 0, {"none", "notify", "readOnly", "readWrite", "readCreate"});
}

TEST(MibInfoLabels, SecurityLevel)
{
    ExpectLabels(LabelSecurityLevel, 1, {"noAuthNoPriv", "authNoPriv", "authPriv"});
}

TEST(MibInfoLabels, FilterType) { ExpectLabels(LabelFilterType, 1, {"included", "excluded"}); }

TEST(MibInfoLabels, SecurityModelsAboveTheStandardOnesAreTheUsers)
{
    EXPECT_STREQ("secANY", LabelSecurityModel(0));
    EXPECT_STREQ("secSNMPv1", LabelSecurityModel(1));
    EXPECT_STREQ("secSNMPv2c", LabelSecurityModel(2));
    EXPECT_STREQ("secUSM", LabelSecurityModel(3));
    for (int model : {4, 7, -1, -2, -2147483647 - 1, 2147483647})
        EXPECT_STREQ("secUserDefined", LabelSecurityModel(model));
}

TEST(MibInfoLabels, MaxAccessOfTheMapsCodes)
{
    EXPECT_EQ(eMaxAccessReadOnly, MaxAccessOf(eRqReadOnly));
    EXPECT_EQ(eMaxAccessReadWrite, MaxAccessOf(eRqReadWrite));
    EXPECT_EQ(eMaxAccessReadCreate, MaxAccessOf(eRqReadCreate));
    for (int code : {-1, 0, 1, 2, 6})
        EXPECT_EQ(eMaxAccessNone, MaxAccessOf(code)) << code;
}
