// The order in which the bindings of a run are worked on.
#include "tests/impl/RowStatusTest.h"
#include "tests/support/FailingAlloc.h"

#include <numeric>
#include <random>
#include <sstream>

namespace VLK {
namespace Test {
namespace {

// Bindings are written as words: what is set, and the row.
//
//   n7 l7   the name, the level of row 7
//   c7      makes row 7; w7 likewise, waiting
//   a7 d7   sets it active, destroys it
//   t7      a status that is no INTEGER
//   x7      a binding of somebody else, at the ends only
RowSet& Write(RowSet& set, const std::string& words)
{
    std::istringstream all(words);
    std::string word;
    while (all >> word) {
        const std::string row = word.substr(1);
        const std::string entry = "1.3.9.";
        switch (word[0]) {
        case 'n':
            set.Add((entry + "1." + row).c_str(), Text("name"));
            break;
        case 'l':
            set.Add((entry + "2." + row).c_str(), Number(1));
            break;
        case 'c':
            set.Add((entry + "3." + row).c_str(), Number(eRowCreateAndGo));
            break;
        case 'w':
            set.Add((entry + "3." + row).c_str(), Number(eRowCreateAndWait));
            break;
        case 'a':
            set.Add((entry + "3." + row).c_str(), Number(eRowActive));
            break;
        case 'd':
            set.Add((entry + "3." + row).c_str(), Number(eRowDestroy));
            break;
        case 't':
            set.Add((entry + "3." + row).c_str(), Text("4"));
            break;
        default:
            set.Foreign(("1.3.8.1." + row).c_str(), Number(eRowCreateAndGo));
        }
    }
    return set;
}

// A table that sets columns of rows that are not there, and makes rows that are:
// nothing but the order decides what is called when.
class CLenient : public CRowProbe {
public:
    CLenient() { needsRow = false; }

    // The words of the bindings that saw that phase, as far as they can be told.
    std::string Called(const char* phase)
    {
        std::string words;
        for (const std::string& line : TakeLog()) {
            std::istringstream parts(line);
            std::string what;
            std::string place;
            parts >> what >> place;
            if (what != phase)
                continue;
            const std::string::size_type value = place.find('=');
            const char* const letters = place[0] == '3' ? "?a??cwd" : "";
            const char letter = place[0] == '1'   ? 'n'
                                : place[0] == '2' ? 'l'
                                                  : letters[place[value + 1] - '0'];
            words += (words.empty() ? "" : " ") + (letter + place.substr(2, value - 2));
        }
        return words;
    }
};

struct SOrder {
    const char* words;
    const char* called;
};

TEST(RowStatusOrder, RowIsMadeBeforeItsColumnsAreSetInEveryPhase)
{
    const SOrder orders[] = {
        {"", ""},
        {"c7", "c7"},
        {"w7", "w7"},
        {"c7 n7 l7", "c7 n7 l7"},
        {"n7 c7", "c7 n7"},
        {"n7 w7", "w7 n7"},
        {"n7 l7 c7", "c7 n7 l7"},
        {"n7 c7 l7", "c7 n7 l7"},
        {"l7 l7 n7 c7 n7", "c7 l7 l7 n7 n7"},
        // Several rows, each with what stands right before it.
        {"n7 c7 n8 c8", "c7 n7 c8 n8"},
        {"n7 l7 c7 l7 n8 c8 n8", "c7 n7 l7 l7 c8 n8 n8"},
        {"n7 n8 c8 n7 w7", "n7 c8 n8 w7 n7"},
        {"c7 c8 n7 n8", "c7 c8 n7 n8"},
        // The columns of another row end it, wherever that row is made.
        {"n7 n8 c7", "n7 n8 c7"},
        {"n7 n8 n7 c7", "n7 n8 c7 n7"},
        {"n7 n8 c7 c8", "n7 n8 c7 c8"},
        {"n7 c8 c7", "n7 c8 c7"},
        // So does any status binding, also one of the same row.
        {"n7 d7 c7", "n7 d7 c7"},
        {"n7 d7 n7 c7", "n7 d7 c7 n7"},
        {"n7 c7 d7 n7 c7", "c7 n7 d7 c7 n7"},
        {"n7 d8 c7", "n7 d8 c7"},
        // Other status values move nothing.
        {"n7 d7", "n7 d7"},
        {"c7 n7 a7", "c7 n7 a7"},
        // Instances are compared whole.
        {"n7.1 c7", "n7.1 c7"},
        {"n7 c7.1", "n7 c7.1"},
        {"n7.1 c7.1", "c7.1 n7.1"},
        {"n0 c0.0", "n0 c0.0"},
        {"n4294967295 c4294967295", "c4294967295 n4294967295"},
        // Others' bindings around the run.
        {"x7 n7 l7 c7", "c7 n7 l7"},
        {"x7 x7 x7 n7 c7 l7 x7", "c7 n7 l7"},
    };
    for (const SOrder& order : orders) {
        HandTimer timer;
        CLenient table;
        RowSet set(table);
        Write(set, order.words);
        EXPECT_EQ(0, set.Phase(eSetTest)) << order.words;
        EXPECT_EQ(order.called, table.Called("test")) << order.words;
        EXPECT_EQ(0, set.Phase(eSetCommit));
        EXPECT_EQ(order.called, table.Called("commit")) << order.words;
        EXPECT_EQ(0, set.Phase(eSetUndo));
        EXPECT_EQ(order.called, table.Called("undo")) << order.words;
        EXPECT_EQ(0, set.Phase(eSetCleanup));
        EXPECT_EQ(order.called, table.Called("cleanup")) << order.words;
    }
}

TEST(RowStatusOrder, RanksCountFromTheStartOfTheListAndStayWithinTheRun)
{
    CLenient table;
    RowSet set(table);
    Write(set, "x1 x2 l6 n7 l7 c7 n8 x3 x4");
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ((std::vector<int>{2, 4, 5, 3, 6}), set.Ranks());
    EXPECT_EQ(0, set.slots[0].position) << "the slots of others are theirs";
    EXPECT_EQ(0, set.slots[7].position);
    EXPECT_EQ(2, set.index) << "a phase that goes through leaves the index";
}

TEST(RowStatusOrder, EntryStatusCreationsAreOrderedLikewise)
{
    HandTimer timer;
    CEntryProbe table;
    RowSet set(table);
    set.Name("7", "a").Level("7", 1).Status("7", eEntryCreateRequest).Level("8", 1);
    table.Row("8").status = eEntryValid;
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ((std::vector<int>{1, 2, 0, 3}), set.Ranks());
    set.Phase(eSetCleanup);
}

TEST(RowStatusOrder, RefusedCreationIsOrderedAllTheSame)
{
    CRowProbe table;
    table.Row("7").status = eRowActive;
    RowSet set(table);
    set.Level("7", 1).Status("7", eRowCreateAndGo);
    EXPECT_EQ(eSnmpInconsistentValue, set.Phase(eSetTest));
    EXPECT_EQ(1, set.index);
    EXPECT_EQ(Log{"get 3.7"}, table.log) << "the column is not tested";
}

TEST(RowStatusOrder, StatusThatIsNoIntegerCountsAsAColumn)
{
    CLenient table;
    RowSet set(table);
    Write(set, "n7 t7 c7");
    EXPECT_EQ(eSnmpWrongType, set.Phase(eSetTest));
    EXPECT_EQ((std::vector<int>{1, 2, 0}), set.Ranks());
    EXPECT_EQ("c7 n7", table.Called("test"));
    EXPECT_EQ(1, set.index);
}

TEST(RowStatusOrder, NamesTooShortForAnInstanceNeverMatch)
{
    for (const char* name : {"1.3.9.2", "1.3.9", "1.3"}) {
        CLenient table;
        RowSet set(table);
        set.Add(name, Number(1)).Level("7", 1).Status("7", eRowCreateAndGo);
        EXPECT_EQ(eSnmpNoSuchName, set.Phase(eSetTest)) << name;
        EXPECT_EQ((std::vector<int>{0, 2, 1}), set.Ranks()) << name;
        EXPECT_EQ(0, set.index);
    }
}

TEST(RowStatusOrder, WithoutSlotsTheBindingsAreInOrder)
{
    HandTimer timer;
    CLenient table;
    RowSet set(table);
    Write(set, "x1 n7 l7 c7").WithoutSlots();
    for (const ESnmpSetOpCode op : kPhases) {
        EXPECT_EQ(0, set.Phase(op));
        EXPECT_EQ("n7 l7 c7", table.Called(PhaseName(op).c_str())) << op;
    }
}

TEST(RowStatusOrder, WithoutWholeRanksTheBindingsAreInOrder)
{
    const std::vector<int> ranks[] = {
        {0, 0, 0},  {0, 1, 1}, {1, 1, 1},  {2, 2, 2}, {3, 2, 1}, {0, 1, 3}, {INT_MIN, INT_MAX, 0},
        {-1, 0, 1}, {1, 2, 1}, {0, -2, 2},
    };
    for (const std::vector<int>& given : ranks) {
        CLenient table;
        RowSet set(table);
        Write(set, "n7 l7 n8");
        set.slots.resize(3);
        for (std::size_t k = 0; k < given.size(); ++k)
            set.slots[k].position = given[k];
        EXPECT_EQ(0, set.Phase(eSetCommit));
        EXPECT_EQ("n7 l7 n8", table.Called("commit")) << testing::PrintToString(given);
    }
}

TEST(RowStatusOrder, RanksOfTheTestHoldInLaterPhases)
{
    CLenient table;
    RowSet set(table);
    Write(set, "x1 n7 l7 n8");
    set.slots.resize(4);
    set.slots[1].position = 2;
    set.slots[2].position = 3;
    set.slots[3].position = 1;
    EXPECT_EQ(0, set.Phase(eSetCommit));
    EXPECT_EQ("n8 n7 l7", table.Called("commit"));
    EXPECT_EQ(0, set.Phase(eSetTest)) << "which ranks anew";
    EXPECT_EQ("n7 l7 n8", table.Called("test"));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), set.Ranks());
}

// The ranks of a run by the rule's own words, and then the walk: for each rank
// the binding that holds it.
std::vector<int> OrderByTheRule(const std::vector<std::string>& words)
{
    const int count = static_cast<int>(words.size());
    std::vector<int> rank(count);
    std::iota(rank.begin(), rank.end(), 0);
    const auto isStatus = [&](int k) {
        return std::string("cwad").find(words[k][0]) != std::string::npos;
    };
    for (int k = 0; k < count; ++k) {
        if (words[k][0] != 'c' && words[k][0] != 'w')
            continue;
        int before = k - 1;
        while (before >= 0 && !isStatus(before) && words[before].substr(1) == words[k].substr(1)) {
            rank[k] = rank[before];
            ++rank[before];
            --before;
        }
    }
    std::vector<int> order;
    for (int wanted = 0; wanted < count; ++wanted)
        for (int k = 0; k < count; ++k)
            if (rank[k] == wanted)
                order.push_back(k);
    return order;
}

std::string Joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

TEST(RowStatusOrder, RandomListsOfAnyLengthGoByTheRule)
{
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::vector<std::string> words(random() % 90);
        for (std::string& word : words)
            word = std::string(1, "nnnlllcwd"[random() % 9]) + (random() % 4 == 0 ? "8" : "7");
        CLenient table;
        RowSet set(table);
        set.Foreign("1.3.8.1", Number(1));
        Write(set, Joined(words));
        // Rows that are made twice are refused: only the ranks are looked at.
        set.Phase(eSetTest);
        const std::vector<int> order = OrderByTheRule(words);
        const std::vector<int> ranks = set.Ranks();
        for (std::size_t wanted = 0; wanted < order.size(); ++wanted)
            ASSERT_EQ(int(wanted) + 1, ranks[order[wanted]]) << Joined(words);
    }
}

// More bindings than a request usually has: 40 columns, and then the row.
std::string ManyColumns(int columns)
{
    std::string words;
    for (int i = 0; i < columns; ++i)
        words += i % 2 ? "l7 " : "n7 ";
    return words;
}

TEST(RowStatusOrder, HoldsForMoreBindingsThanAreUsual)
{
    for (const int columns : {30, 31, 32, 33, 40, 200}) {
        HandTimer timer;
        CLenient table;
        RowSet set(table);
        Write(set, ManyColumns(columns) + "c7");
        for (const ESnmpSetOpCode op : kPhases) {
            EXPECT_EQ(0, set.Phase(op)) << columns;
            EXPECT_EQ("c7 " + ManyColumns(columns), table.Called(PhaseName(op).c_str()) + " ");
        }
    }
}

// One phase in which the first allocation, that of the inverse permutation, is
// refused.
int PhaseWithoutMemory(RowSet& set, ESnmpSetOpCode op)
{
    set.slots.resize(set.list.Count());
    FailingAlloc fail(0, FailingAlloc::eNextOnly);
    const int status = set.Phase(op);
    EXPECT_TRUE(fail.Failed());
    return status;
}

TEST(RowStatusOrder, HoldsForManyBindingsWithoutMemoryToo)
{
    for (const int columns : {32, 40, 100}) {
        HandTimer timer;
        CLenient table;
        RowSet set(table);
        Write(set, "x1 " + ManyColumns(columns) + "c7");
        for (const ESnmpSetOpCode op : kPhases) {
            EXPECT_EQ(0, PhaseWithoutMemory(set, op)) << columns;
            EXPECT_EQ("c7 " + ManyColumns(columns), table.Called(PhaseName(op).c_str()) + " ");
        }
    }
}

TEST(RowStatusOrder, WithoutWholeRanksAndMemoryTheBindingsAreInOrder)
{
    const HandTimer timer; // made before memory is refused
    for (const int first : {0, 1, 39}) {
        CLenient table;
        RowSet set(table);
        const std::string words = ManyColumns(38) + "n8 l9";
        Write(set, words);
        set.slots.resize(40);
        for (int k = 0; k < 40; ++k)
            set.slots[k].position = (k + 1) % 40;
        set.slots[first].position = set.slots[(first + 1) % 40].position;
        EXPECT_EQ(0, PhaseWithoutMemory(set, eSetCommit));
        EXPECT_EQ(words, table.Called("commit")) << first;
    }
}

} // namespace
} // namespace Test
} // namespace VLK
