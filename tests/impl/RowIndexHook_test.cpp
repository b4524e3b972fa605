// The hook before rows are made or destroyed.
#include "tests/impl/RowStatusTest.h"

#include <algorithm>

namespace VLK {
namespace Test {
namespace {

class CEntryIndexProbe : public TRowProbe<BMibTableImplEx2, EEntryStatus> {
public:
    int PreIxAllocOrDealloc(const BObjectIdentifier& instance, BVarBindList&) override
    {
        return Answer("index " + Test::TextOf(instance));
    }
};

class RowIndexHook : public ::testing::Test {
protected:
    HandTimer timer;
    CIndexProbe table;
};

TEST_F(RowIndexHook, BaseAllowsEverything)
{
    TRowProbe<BMibTableImplEx2> plain;
    BVarBindList list;
    EXPECT_EQ(0, plain.PreIxAllocOrDealloc(MakeOid("7"), list));
    EXPECT_EQ(0, RowSet(plain).Status("7", eRowCreateAndGo).Level("7", 1).Run());
    EXPECT_TRUE(plain.HasRow("7"));
    EXPECT_EQ(unsigned(eImplTableEx2), plain.ImplKind());
    EXPECT_EQ(unsigned(eImplTableEx), CRowProbe().ImplKind());
}

TEST_F(RowIndexHook, IsCalledOnceForEveryStatusThatMakesOrDestroysARow)
{
    table.Row("8").status = eRowActive;
    table.Row("9").status = eRowActive;
    RowSet set(table);
    set.Foreign("1.3.9.3.1", Number(eRowCreateAndGo));
    set.Level("7", 1).Status("7", eRowCreateAndGo).Name("7", "x");
    set.Status("8", eRowDestroy).Status("9", eRowNotInService).Status("9", eRowActive);
    set.Status("6", eRowCreateAndWait).Status("6", eRowDestroy).Status("5.4", eRowDestroy);
    set.Foreign("1.3.9.3.2", Number(eRowDestroy));
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ((Log{"index 7", "index 8", "index 6", "index 6", "index 5.4", "get 3.7"}),
              Log(table.log.begin(), table.log.begin() + 6))
        << "in binding order, before anything is tested";
    EXPECT_EQ(5, std::count_if(table.log.begin(), table.log.end(), [](const std::string& line) {
                  return line.compare(0, 5, "index") == 0;
              }));
}

TEST_F(RowIndexHook, IsCalledInTheTestPhaseOnly)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndGo);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ(Log{"index 7"}, Log(table.log.begin(), table.log.begin() + 1));
    table.TakeLog();
    for (const ESnmpSetOpCode op : {eSetCommit, eSetUndo, eSetCleanup}) {
        EXPECT_EQ(0, set.Phase(op));
        EXPECT_EQ(Log{PhaseName(op) + " 3.7=4"}, table.TakeLog());
    }
}

TEST_F(RowIndexHook, IsCalledForEntryStatusLikewise)
{
    CEntryIndexProbe entries;
    entries.Row("8").status = eEntryValid;
    RowSet set(entries);
    set.Status("7", eEntryCreateRequest)
        .Status("8", eEntryUnderCreation)
        .Status("8", eEntryInvalid);
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ((Log{"index 7", "index 8"}), Log(entries.log.begin(), entries.log.begin() + 2));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
}

TEST_F(RowIndexHook, IsCalledWithoutSlotsToo)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndGo).WithoutSlots();
    table.answers["index 7"] = 11;
    EXPECT_EQ(11, set.Phase(eSetTest));
}

TEST_F(RowIndexHook, StatusOtherThanZeroRefusesTheSetAtItsBinding)
{
    for (const int answer : {1, 12, 13, 99, kThrow}) {
        table.answers["index 8"] = answer;
        RowSet set(table);
        set.Foreign("1.3.8.1", Number(1));
        set.Level("7", 1).Status("7", eRowCreateAndGo).Status("8", eRowDestroy);
        set.Status("9", eRowDestroy);
        EXPECT_EQ(answer == kThrow ? int(eSnmpGenErr) : answer, set.Phase(eSetTest));
        EXPECT_EQ(3, set.index);
        EXPECT_EQ((Log{"index 7", "index 8"}), table.TakeLog()) << "nothing is tested";
        EXPECT_EQ("--------", set.Marks());
        EXPECT_EQ((std::vector<int>{0, 0, 0, 0}), set.Ranks()) << "nor ordered";
        EXPECT_EQ(0, set.Phase(eSetCleanup));
        EXPECT_TRUE(table.log.empty());
    }
}

TEST_F(RowIndexHook, CreationWithoutAnIndexComesFirst)
{
    RowSet set(table);
    set.Status("7", eRowCreateAndGo).Add("1.3.9.3", Number(eRowCreateAndGo));
    EXPECT_EQ(eSnmpInconsistentName, set.Phase(eSetTest));
    EXPECT_EQ(1, set.index);
    EXPECT_TRUE(table.log.empty());
}

TEST_F(RowIndexHook, DeletionWithoutAnIndexIsNotHooked)
{
    RowSet set(table);
    set.Add("1.3.9.3", Number(eRowDestroy));
    EXPECT_EQ(eSnmpNoSuchName, set.Phase(eSetTest));
    EXPECT_TRUE(table.log.empty());
}

TEST_F(RowIndexHook, IsNotCalledForATableThatIsNotInitialized)
{
    table.Cleanup();
    EXPECT_EQ(eSnmpNoSuchName, RowSet(table).Status("7", eRowCreateAndGo).Phase(eSetTest));
    EXPECT_EQ(eSnmpNoSuchName,
              RowSet(table).Add("1.3.9.3", Number(eRowCreateAndGo)).Phase(eSetTest));
    EXPECT_TRUE(table.log.empty());
}

TEST_F(RowIndexHook, SingleBindingsAreNotHooked)
{
    const BVarBind binding(MakeOid("1.3.9.3.7"), Number(eRowCreateAndGo));
    EXPECT_EQ(0, table.BMibTableImplEx::Set(5, eSetTest, nullptr, binding));
    EXPECT_EQ((Log{"get 3.7", "test 3.7=4"}), table.log);
}

// A table that looks at the list that it is given, and changes it.
class CReader : public TRowProbe<BMibTableImplEx2> {
public:
    int PreIxAllocOrDealloc(const BObjectIdentifier&, BVarBindList& list) override
    {
        given.emplace_back();
        for (unsigned i = 0; i < list.Count(); ++i)
            given.back() += (i ? " " : "") + Test::TextOf(list[int(i)].Name()) + "=" +
                            list[int(i)].Value().ValToStr().c_str();
        list.Remove(0);
        list[0].Value().SetInt(99);
        return 0;
    }
    std::vector<std::string> given;
};

TEST(RowIndexHookList, IsOneCopyOfTheRequestForAllCalls)
{
    HandTimer timer;
    CReader reader;
    RowSet set(reader);
    set.Foreign("1.3.8.1", Number(1));
    set.Name("7", "x").Status("7", eRowCreateAndGo).Status("6", eRowDestroy);
    set.Foreign("1.4", Text("end"));
    EXPECT_EQ(0, set.Phase(eSetTest));
    EXPECT_EQ((std::vector<std::string>{"1.3.8.1=1 1.3.9.1.7=x 1.3.9.3.7=4 1.3.9.3.6=6 1.4=end",
                                        "1.3.9.1.7=99 1.3.9.3.7=4 1.3.9.3.6=6 1.4=end"}),
              reader.given);
    EXPECT_EQ((Log{"get 3.7", "test 3.7=4", "test 1.7=x", "get 3.6", "test 3.6=6"}), reader.log)
        << "the SET does not see what is changed in the copy";
    EXPECT_EQ(0, set.Phase(eSetCleanup));
}

} // namespace
} // namespace Test
} // namespace VLK
