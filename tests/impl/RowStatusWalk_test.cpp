// GET and GETNEXT of row-status tables: those of any table.
#include "tests/impl/RowStatusTest.h"
#include <vkmibh/testing/walks.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

template <class Probe>
class RowStatusWalk : public ::testing::Test {
protected:
    HandTimer timer;
    Probe table;
};
using Probes = ::testing::Types<CRowProbe, CEntryProbe, CIndexProbe>;
TYPED_TEST_SUITE(RowStatusWalk, Probes, );

TYPED_TEST(RowStatusWalk, TwoWalks)
{
    this->table.rows[MakeOid("1")] = {1, "one", 10};
    this->table.rows[MakeOid("2.5")] = {2, "", -7};
    this->table.rows[MakeOid("4294967295")] = {3, "last", 30};
    EXPECT_EQ(TwoWalks(this->table, "1.3.9",
                       {{"1.3.9.1.1", eAsnOctetString, "one"},
                        {"1.3.9.1.2.5", eAsnOctetString, ""},
                        {"1.3.9.1.4294967295", eAsnOctetString, "last"},
                        {"1.3.9.2.1", eAsnInteger, "10"},
                        {"1.3.9.2.2.5", eAsnInteger, "-7"},
                        {"1.3.9.2.4294967295", eAsnInteger, "30"},
                        {"1.3.9.3.1", eAsnInteger, "1"},
                        {"1.3.9.3.2.5", eAsnInteger, "2"},
                        {"1.3.9.3.4294967295", eAsnInteger, "3"}})
                  .Run(),
              "");
    EXPECT_EQ(kRqStatusFlag, this->table.flag);
}

TYPED_TEST(RowStatusWalk, TableWithoutRowsIsAtItsEnd)
{
    EXPECT_EQ(TwoWalks(this->table, "1.3.9", {}).Run(), "");
}

TYPED_TEST(RowStatusWalk, FollowsWhatSetsDo)
{
    const bool isEntry = this->table.Column(eProbeStatus).kind == eKindEntryStatus;
    RowSet create(this->table);
    create.Level("7", 3).Status("7", isEntry ? int(eEntryCreateRequest) : int(eRowCreateAndWait));
    EXPECT_EQ(0, create.Run());
    EXPECT_EQ(TwoWalks(this->table, "1.3.9",
                       {{"1.3.9.1.7", eAsnOctetString, ""},
                        {"1.3.9.2.7", eAsnInteger, "3"},
                        {"1.3.9.3.7", eAsnInteger, isEntry ? "3" : "2"}})
                  .Run(),
              "");
    RowSet destroy(this->table);
    destroy.Status("7", isEntry ? int(eEntryInvalid) : int(eRowDestroy));
    EXPECT_EQ(0, destroy.Run());
    EXPECT_EQ(TwoWalks(this->table, "1.3.9", {}).Run(), "");
}

TYPED_TEST(RowStatusWalk, RowOfASetUnderWayIsSeenWhenItIsCommitted)
{
    const bool isEntry = this->table.Column(eProbeStatus).kind == eKindEntryStatus;
    RowSet create(this->table);
    create.Status("7", isEntry ? int(eEntryCreateRequest) : int(eRowCreateAndGo));
    EXPECT_EQ(0, create.Phase(eSetTest));
    EXPECT_EQ(TwoWalks(this->table, "1.3.9", {}).Run(), "");
    EXPECT_EQ(0, create.Phase(eSetCommit));
    EXPECT_EQ(TwoWalks(this->table, "1.3.9",
                       {{"1.3.9.1.7", eAsnOctetString, ""},
                        {"1.3.9.2.7", eAsnInteger, "0"},
                        {"1.3.9.3.7", eAsnInteger, isEntry ? "3" : "1"}})
                  .Run(),
              "");
    EXPECT_EQ(0, create.Phase(eSetUndo));
    EXPECT_EQ(TwoWalks(this->table, "1.3.9", {}).Run(), "");
    EXPECT_EQ(0, create.Phase(eSetCleanup));
}

} // namespace
} // namespace Test
} // namespace VLK
