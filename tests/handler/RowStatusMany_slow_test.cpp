// A hundred thousand rows. What takes time for every other row that is there would
// take minutes here.
#include "tests/support/RowStatusProbe.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

namespace VLK {
namespace Test {
namespace {

constexpr unsigned kRows = 100000;
constexpr int kForEver = 3600000;
// Processor time. A debug build needs up to four seconds, a search among all rows
// for every row at least half a minute.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr double kSeconds = 100;
#else
constexpr double kSeconds = 15;
#endif

double Spent()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

class ManyRows : public CRowProbe {
public:
    ManyRows()
    {
        logs = false;
        SetActivationTimeout(kForEver);
    }
    ~ManyRows() override { CancelTimeouts(); }
    void RowActivationTimeout(const BObjectIdentifier& instance) override
    {
        told += rows.erase(instance);
    }
    size_t told = 0;
};

class RowStatusManySlow : public ::testing::Test {
protected:
    RowStatusManySlow() : handler(nullptr), client(handler), start(Spent())
    {
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&table));
    }
    ~RowStatusManySlow() override { handler.UnregisterSubtreeHandler(&table); }

    // The k-th of all rows, from the last to the first or scattered: whoever
    // searches in the order in which they were made finds them late.
    static unsigned Backwards(unsigned k) { return kRows - k; }
    static unsigned Scattered(unsigned k) { return 1 + (k * 7919u) % kRows; }

    static void Append(BVarBindList& list, unsigned row, ERowStatus status)
    {
        BObjectSyntax value;
        value.SetInt(status);
        list.Append(MakeOid(Arcs{1, 3, 9, eProbeStatus, row}), value);
    }
    void SetEach(unsigned (*rowAt)(unsigned), ERowStatus status)
    {
        for (unsigned k = 0; k < kRows; ++k) {
            BVarBindList list;
            Append(list, rowAt(k), status);
            ASSERT_EQ(0, client.Query(ePduSet, list)) << rowAt(k);
            ASSERT_TRUE(k % 1000 || Spent() - start < kSeconds) << "at the row number " << k;
        }
    }
    // Of so many SETs that make so many rows each, and as many that destroy them;
    // the best of three.
    double SecondsOfSets(unsigned rows, int sets)
    {
        BVarBindList create, destroy;
        for (unsigned k = 0; k < rows; ++k) {
            Append(create, Scattered(k), eRowCreateAndWait);
            Append(destroy, Scattered(k), eRowDestroy);
        }
        double best = kSeconds;
        for (int attempt = 0; attempt < 3; ++attempt) {
            const double before = Spent();
            for (int set = 0; set < sets; ++set) {
                EXPECT_EQ(0, client.Query(ePduSet, create));
                EXPECT_EQ(rows, table.rows.size());
                EXPECT_EQ(0, client.Query(ePduSet, destroy));
            }
            best = std::min(best, Spent() - before);
        }
        EXPECT_TRUE(table.rows.empty());
        return best;
    }
    size_t TimedOut()
    {
        const size_t before = table.told;
        BTimer::GetInstance()->Timeout(kForEver);
        EXPECT_LT(Spent() - start, kSeconds);
        return table.told - before;
    }

    ManyRows table;
    BMibHandler handler;
    Client client;
    const double start;
};

TEST_F(RowStatusManySlow, PendingRowsTimeOutInOneTick)
{
    SetEach(Scattered, eRowCreateAndWait);
    EXPECT_EQ(kRows, table.rows.size());
    EXPECT_EQ(kRows, TimedOut());
    EXPECT_EQ(0u, TimedOut());
    EXPECT_TRUE(table.rows.empty());
}

TEST_F(RowStatusManySlow, PendingRowsAreActivatedAndDestroyedOneByOne)
{
    SetEach(Scattered, eRowCreateAndWait);
    SetEach(Backwards, eRowActive);
    SetEach(Scattered, eRowNotInService);
    SetEach(Backwards, eRowDestroy);
    EXPECT_EQ(0u, TimedOut());
    EXPECT_TRUE(table.rows.empty());
}

TEST_F(RowStatusManySlow, UnregistrationEndsWhatIsPending)
{
    SetEach(Scattered, eRowCreateAndWait);
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&table));
    EXPECT_EQ(0u, TimedOut());
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&table));
    SetEach(Backwards, eRowNotInService);
    EXPECT_EQ(kRows, TimedOut());
}

// A list of bindings grows by four at a time, so that a hundred thousand take long
// to put together: here the time per row of a long list is compared to that of a
// short one.
TEST_F(RowStatusManySlow, ARowOfALongSetTakesNoLongerThanOneOfAShortSet)
{
    constexpr unsigned kShort = 1000;
    constexpr unsigned kLong = 10 * kShort;
    const double shortSet = SecondsOfSets(kShort, kLong / kShort) / kLong;
    const double longSet = SecondsOfSets(kLong, 1) / kLong;
    EXPECT_LT(longSet, 4 * shortSet);
}

} // namespace
} // namespace Test
} // namespace VLK
