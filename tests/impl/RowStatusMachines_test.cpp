// Both state machines, every status by every request, written down cell by cell.
#include "tests/impl/RowStatusTest.h"

#include <sstream>

namespace VLK {
namespace Test {
namespace {

// What becomes of a row whose status is that of the line when that of the column
// is asked for: an error status, or "=" and the row's new status. 0 = no row.
constexpr const char kRowStatus[] = R"(
       min  -2  -1   0   1   2   3   4   5   6   7   8   9 max
  min    5   5   5   5   5   5   5   5   5   5   5   5   5   5
   -2    5   5   5   5   5   5   5   5   5   5   5   5   5   5
   -1    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    0   12  12  12  12  12  12  10  =1  =2  =0  12  12  12  12
    1    5   5   5   5  =1  =2  10  12  12  =0   5   5   5   5
    2    5   5   5   5  =1  =2  10  12  12  =0   5   5   5   5
    3    5   5   5   5  =1  =2  10  12  12  =0   5   5   5   5
    4    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    5    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    6    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    7    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    8    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    9    5   5   5   5   5   5   5   5   5   5   5   5   5   5
  max    5   5   5   5   5   5   5   5   5   5   5   5   5   5
)";

constexpr const char kEntryStatus[] = R"(
       min  -2  -1   0   1   2   3   4   5   6   7   8   9 max
  min    5   5   5   5   5   5   5   5   5   5   5   5   5   5
   -2    5   5   5   5   5   5   5   5   5   5   5   5   5   5
   -1    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    0   10  10  10  10  10  =3  10  10  10  10  10  10  10  10
    1 =min =-2 =-1  =0  =1   3  =3  =0  =5  =6  =7  =8  =9 =max
    2    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    3 =min =-2 =-1  =0  =1   3  =3  =0  =5  =6  =7  =8  =9 =max
    4    3   3   3   3   3   3   3  =0   3   3   3   3   3   3
    5    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    6    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    7    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    8    5   5   5   5   5   5   5   5   5   5   5   5   5   5
    9    5   5   5   5   5   5   5   5   5   5   5   5   5   5
  max    5   5   5   5   5   5   5   5   5   5   5   5   5   5
)";

std::string Label(int value)
{
    if (value == INT_MIN || value == INT_MAX)
        return value < 0 ? "min" : "max";
    return std::to_string(value);
}

// One cell: the machine, `ask(current, requested, state)`, asked with a state
// whose fields are all told apart.
template <class Ask>
std::string Cell(Ask ask, int current, int requested)
{
    using RowState = BMibTableImplEx::RowState;
    constexpr int kUnset = 77;
    RowState state{BMibTableImplEx::eRowOfRowStatus, eSetUndo, 55, kUnset, 66};
    const int status = ask(current, requested, &state);
    EXPECT_EQ(requested, state.requestedValue) << "is noted, refused or not";
    if (status != 0) {
        EXPECT_EQ(kUnset, state.newValue) << "a refusal changes nothing";
    }
    EXPECT_EQ(BMibTableImplEx::eRowOfRowStatus, state.kind);
    EXPECT_EQ(eSetUndo, state.opCode);
    EXPECT_EQ(55, state.undoValue);
    EXPECT_EQ(status, ask(current, requested, nullptr)) << "without a state";
    return status != 0 ? std::to_string(status) : "=" + Label(state.newValue);
}

template <class Ask>
void ExpectMatrix(const char* matrix, Ask ask)
{
    std::istringstream cells(matrix);
    std::string cell;
    for (const int requested : kStatusValues) {
        cells >> cell;
        ASSERT_EQ(Label(requested), cell) << "the matrix has a column for every value";
    }
    for (const int current : kStatusValues) {
        cells >> cell;
        ASSERT_EQ(Label(current), cell) << "the matrix has a line for every value";
        for (const int requested : kStatusValues) {
            SCOPED_TRACE(testing::Message() << current << " asked for " << requested);
            cells >> cell;
            EXPECT_EQ(cell, Cell(ask, current, requested));
        }
    }
    EXPECT_TRUE(cells);
    EXPECT_FALSE(cells >> cell) << "all of it is used";
}

TEST(RowStatusMachines, RowStatusOfEveryStatusByEveryRequest)
{
    CRowProbe table;
    ExpectMatrix(kRowStatus, [&](int current, int requested, BMibTableImplEx::RowState* state) {
        return table.RowStatusTestSet(static_cast<ERowStatus>(current),
                                      static_cast<ERowStatus>(requested), state);
    });
    EXPECT_EQ(0, table.LastRowStatus()) << "is what a get handler answered";
    EXPECT_EQ(0, table.LastEntryStatus());
    EXPECT_TRUE(table.log.empty());
}

TEST(RowStatusMachines, EntryStatusOfEveryStatusByEveryRequest)
{
    CEntryProbe table;
    ExpectMatrix(kEntryStatus, [&](int current, int requested, BMibTableImplEx::RowState* state) {
        const int status = table.EntryStatusTestSet(static_cast<EEntryStatus>(current),
                                                    static_cast<EEntryStatus>(requested), state);
        EXPECT_EQ(current, table.LastEntryStatus()) << "notes the status it was asked about";
        return status;
    });
    EXPECT_EQ(0, table.LastRowStatus());
    EXPECT_TRUE(table.log.empty());
}

TEST(RowStatusMachines, NoRowStatusAtAllIsInconsistentValueWithoutARowAndGenErrWithOne)
{
    CRowProbe table;
    for (const int requested : {INT_MIN, -1, 0, 7, INT_MAX}) {
        const auto value = static_cast<ERowStatus>(requested);
        EXPECT_EQ(eSnmpInconsistentValue,
                  table.RowStatusTestSet(static_cast<ERowStatus>(0), value, nullptr));
        for (const ERowStatus current : {eRowActive, eRowNotInService, eRowNotReady})
            EXPECT_EQ(eSnmpGenErr, table.RowStatusTestSet(current, value, nullptr));
    }
}

TEST(RowStatusMachines, RowThatIsNotReadyMayBeSetActive)
{
    CRowProbe table;
    EXPECT_EQ(0, table.RowStatusTestSet(eRowNotReady, eRowActive, nullptr));
}

} // namespace
} // namespace Test
} // namespace VLK
