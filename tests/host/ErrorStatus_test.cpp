#include "host/ErrorStatus.h"

#include <gtest/gtest.h>
#include <vkmibh/subtree.h>

using namespace VLK;
using namespace VLK::host;

// RFC 3584 section 4.4, row by row; the index is the SNMPv2 status.
TEST(ErrorStatus, V1FormsFollowTheTable)
{
    const int expected[] = {0, 1, 2, 3, 4, 5, 2, 3, 3, 3, 3, 2, 3, 5, 5, 5, 2, 2, 2};
    for (int status = 0; status <= eSnmpInconsistentName; ++status)
        EXPECT_EQ(StatusForV1(status), expected[status]) << status;
}

TEST(ErrorStatus, WhatIsNoStatusIsAGeneralError)
{
    for (int status : {-1, 19, 255}) {
        EXPECT_EQ(StatusForV1(status), eSnmpGenErr);
        EXPECT_EQ(StatusForV2(status, true), eSnmpGenErr);
        EXPECT_EQ(StatusForV2(status, false), eSnmpGenErr);
    }
}

TEST(ErrorStatus, V2NeverSendsStatusesOfV1)
{
    EXPECT_EQ(StatusForV2(eSnmpNoSuchName, true), eSnmpNoCreation);
    EXPECT_EQ(StatusForV2(eSnmpBadValue, true), eSnmpWrongValue);
    EXPECT_EQ(StatusForV2(eSnmpReadOnly, true), eSnmpNotWritable);
    for (int status : {eSnmpNoSuchName, eSnmpBadValue, eSnmpReadOnly})
        EXPECT_EQ(StatusForV2(status, false), eSnmpGenErr);
}

TEST(ErrorStatus, ARefusedWriteIsNoAccessInV2)
{
    EXPECT_EQ(StatusForV2(eSnmpAuthorizationError, true), eSnmpNoAccess);
    EXPECT_EQ(StatusForV2(eSnmpAuthorizationError, false), eSnmpAuthorizationError);
}

TEST(ErrorStatus, V2KeepsItsOwnStatuses)
{
    for (int status : {0, 1, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17, 18}) {
        EXPECT_EQ(StatusForV2(status, true), status);
        EXPECT_EQ(StatusForV2(status, false), status);
    }
}
