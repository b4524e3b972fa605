#include "modules/ViewTreeFamily.h"

#include <vkmibh/testing/module.h>

#include "tests/support/FakeStore.h"
#include "tests/support/ViewRows.h"

#include <algorithm>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

enum EColumn { eMask = 3, eType = 4, eStorage = 5, eStatus = 6 };
constexpr const char* kSection = "views";

const std::string kNew = FamilyIndex("few", "1.3.6.1.2.1.1");
const std::string kOld = FamilyIndex("old", "1.3.6");

std::string Name(unsigned column, const std::string& index)
{
    return std::to_string(column) + "." + index;
}

Binding Status(const std::string& index, int value)
{
    return {Name(eStatus, index), Number(value)};
}
Binding Mask(const std::string& index, const std::string& mask)
{
    return {Name(eMask, index), Bytes(mask)};
}
Binding Type(const std::string& index, int value) { return {Name(eType, index), Number(value)}; }
Binding Storage(const std::string& index, int value)
{
    return {Name(eStorage, index), Number(value)};
}

class ViewTreeFamily : public testing::Test {
protected:
    ViewTreeFamily() { store.saveAtOnce = true; }

    // Mask, type, storage and status of a row.
    std::string Row(const std::string& index)
    {
        std::string row;
        for (unsigned column : {eMask, eType, eStorage, eStatus})
            row += (column == eMask ? "" : " ") + client.Get(Name(column, index));
        return row;
    }
    bool IsThere(const std::string& index)
    {
        return views.GetRow(MakeOid(index.c_str())) != nullptr;
    }
    bool IsShown(const char* view, const char* object)
    {
        return views.Filter(BString(view), MakeOid(object));
    }
    // "view subtree" of the records the store holds.
    std::vector<std::string> Saved()
    {
        FakeStore copy;
        copy.records = store.records;
        BFilterTable read(&copy, kSection);
        EXPECT_TRUE(read.InitFromNV(false));
        std::vector<std::string> rows;
        for (unsigned i = 0; i < read.Count(); ++i)
            rows.push_back(Shown(read.RowAt(static_cast<int>(i))));
        return rows;
    }
    void AddOld(EStorageType storage = eStorageNonVolatile)
    {
        ASSERT_TRUE(Insert(views, {"old", "1.3.6", eFilterIncluded, {0xf0}, eRowActive, storage}));
    }

    FakeStore store;
    BFilterTable views{&store, kSection};
    CViewModule module{views, &store};
    ModuleClient client{module, "1.3.6.1.6.3.16.1.5.2.1"};
};

using Rows = std::vector<std::string>;

} // namespace

TEST_F(ViewTreeFamily, AWalkListsTheColumnsThatAreAccessible)
{
    AddOld();
    ASSERT_TRUE(Insert(views, {"all", "1"}));
    const std::string all = FamilyIndex("all", "1");
    EXPECT_EQ(client.Walk(),
              (Rows{"3." + all + "=", "3." + kOld + "=f0", "4." + all + "=1", "4." + kOld + "=1",
                    "5." + all + "=3", "5." + kOld + "=3", "6." + all + "=1", "6." + kOld + "=1"}));
    for (unsigned column : {1u, 2u}) {
        EXPECT_NE(client.Get(Name(column, kOld)).find("Null"), std::string::npos) << column;
        EXPECT_EQ(client.Set({{Name(column, kOld), Bytes("x")}}), eSnmpNotWritable) << column;
    }
}

TEST_F(ViewTreeFamily, EveryColumnOfAnActiveRowCanBeChanged)
{
    AddOld();
    EXPECT_EQ(client.Set({Mask(kOld, "\xff\x0f")}), 0);
    EXPECT_EQ(client.Set({Type(kOld, eFilterExcluded)}), 0);
    EXPECT_EQ(client.Set({Storage(kOld, eStorageVolatile)}), 0);
    EXPECT_EQ(Row(kOld), "ff:0f 2 2 1");
    EXPECT_EQ(client.Set({Status(kOld, eRowNotInService)}), 0);
    EXPECT_EQ(Row(kOld), "ff:0f 2 2 2");
    EXPECT_EQ(client.Set({Status(kOld, eRowActive), Mask(kOld, "")}), 0);
    EXPECT_EQ(Row(kOld), " 2 2 1");
}

TEST_F(ViewTreeFamily, CreateAndGoAloneMakesARowOfDefaults)
{
    EXPECT_EQ(client.Set({Status(kNew, eRowCreateAndGo)}), 0);
    EXPECT_EQ(Row(kNew), " 1 3 1");
    EXPECT_TRUE(IsShown("few", "1.3.6.1.2.1.1.5.0"));
    EXPECT_FALSE(IsShown("few", "1.3.6.1.2.1.2.1.0"));
}

TEST_F(ViewTreeFamily, ARowIsMadeWithItsColumnsInAnyOrder)
{
    std::vector<int> order{0, 1, 2, 3};
    do {
        for (int status : {eRowCreateAndGo, eRowCreateAndWait}) {
            const Bindings all{Status(kNew, status), Mask(kNew, "\xf0"), Type(kNew, 2),
                               Storage(kNew, 2)};
            Bindings bindings;
            for (int i : order)
                bindings.push_back(all[static_cast<size_t>(i)]);
            ASSERT_EQ(client.Set(bindings), 0) << testing::PrintToString(order);
            EXPECT_EQ(Row(kNew), status == eRowCreateAndGo ? "f0 2 2 1" : "f0 2 2 2");
            ASSERT_EQ(client.Set({Status(kNew, eRowDestroy)}), 0);
            EXPECT_FALSE(IsThere(kNew));
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(ViewTreeFamily, ItsColumnsMayStandAmongThoseOfOthers)
{
    AddOld();
    const std::string waiting = FamilyIndex("wait", "1.2");
    const Bindings all{Mask(kNew, "\xf0"),
                       Status(kOld, eRowDestroy),
                       Storage(kNew, 2),
                       {".1.3.6.1.4.1.32473.99.1.0", Number(1)}, // another table's
                       Status(kNew, eRowCreateAndGo),
                       Status(waiting, eRowCreateAndWait)};
    std::vector<size_t> order{0, 1, 2, 3, 4, 5};
    const Rows before = client.Walk();
    do {
        Bindings bindings;
        for (size_t i : order)
            bindings.push_back(all[i]);
        EXPECT_EQ(client.SetInVain(bindings), eSnmpCommitFailed);
        ASSERT_EQ(client.Walk(), before) << testing::PrintToString(order);
        client.neighbour.failAt.clear();
        ASSERT_EQ(client.Set(bindings), 0) << testing::PrintToString(order);
        ASSERT_EQ(Row(kNew), "f0 1 2 1") << testing::PrintToString(order);
        ASSERT_EQ(Row(waiting), " 1 3 2") << testing::PrintToString(order);
        ASSERT_FALSE(IsThere(kOld)) << testing::PrintToString(order);
        ASSERT_EQ(client.Set({Status(kNew, eRowDestroy), Status(waiting, eRowDestroy)}), 0);
        AddOld();
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(ViewTreeFamily, AnotherRowsCreationMakesNoneForAColumn)
{
    const std::string longer = FamilyIndex("few", "1.3.6.1.2.1.1.5");
    EXPECT_EQ(client.Set({Mask(kNew, "x"), Status(longer, eRowCreateAndGo)}),
              eSnmpInconsistentName);
    EXPECT_EQ(client.Set({Mask(kNew, "x"), Type(kNew, 1), Status(kNew, eRowDestroy)}),
              eSnmpInconsistentName);
    EXPECT_EQ(client.Set({Mask(kNew, "x"), Status(longer, eRowDestroy), Status(kNew, eRowActive)}),
              eSnmpInconsistentName);
    EXPECT_EQ(client.Set({Mask("0.1.1", "x"), Status(kNew, eRowDestroy),
                          Status("0.1.1", eRowCreateAndGo)}),
              eSnmpNoCreation);
    EXPECT_EQ(client.Set({Mask(kNew, "x")}), eSnmpInconsistentName) << "nothing is left of those";
    EXPECT_EQ(views.Count(), 0u);
}

TEST_F(ViewTreeFamily, CreateAndWaitCountsOnceItIsActive)
{
    EXPECT_EQ(client.Set({Status(kNew, eRowCreateAndWait)}), 0);
    EXPECT_EQ(Row(kNew), " 1 3 2") << "nothing is missing";
    EXPECT_FALSE(IsShown("few", "1.3.6.1.2.1.1.5.0"));
    EXPECT_EQ(client.Set({Status(kNew, eRowActive)}), 0);
    EXPECT_TRUE(IsShown("few", "1.3.6.1.2.1.1.5.0"));
    EXPECT_EQ(client.Set({Status(kNew, eRowNotInService)}), 0);
    EXPECT_FALSE(IsShown("few", "1.3.6.1.2.1.1.5.0"));
}

TEST_F(ViewTreeFamily, WhatThereIsNoRowForIsCreatedOrDestroyedOnly)
{
    for (int status : {eRowActive, eRowNotInService})
        EXPECT_EQ(client.Set({Status(kNew, status)}), eSnmpInconsistentValue) << status;
    EXPECT_EQ(client.Set({Status(kNew, eRowNotReady)}), eSnmpWrongValue);
    EXPECT_EQ(client.Set({Mask(kNew, "x")}), eSnmpInconsistentName);
    EXPECT_EQ(client.Set({Type(kNew, 1)}), eSnmpInconsistentName);
    EXPECT_EQ(client.Set({Storage(kNew, 2)}), eSnmpInconsistentName);
    EXPECT_EQ(client.Set({Status(kNew, eRowDestroy)}), 0);
    EXPECT_EQ(views.Count(), 0u);
}

TEST_F(ViewTreeFamily, ARowThatIsThereIsNotCreated)
{
    AddOld();
    for (int status : {eRowCreateAndGo, eRowCreateAndWait})
        EXPECT_EQ(client.Set({Status(kOld, status), Type(kOld, 2)}), eSnmpInconsistentValue);
    for (int status : {int(eRowNotReady), 0, 7, -1}) {
        EXPECT_EQ(client.Set({Status(kOld, status)}), eSnmpWrongValue) << status;
        EXPECT_EQ(client.Set({Status(kNew, status)}), eSnmpWrongValue) << status;
    }
    EXPECT_EQ(Row(kOld), "f0 1 3 1");
}

TEST_F(ViewTreeFamily, ASetAsksForOneStatusOfARowAtMost)
{
    AddOld();
    const std::pair<int, int> pairs[] = {{eRowCreateAndGo, eRowDestroy},
                                         {eRowCreateAndGo, eRowCreateAndGo},
                                         {eRowCreateAndWait, eRowActive},
                                         {eRowDestroy, eRowDestroy}};
    for (const auto& [first, second] : pairs) {
        EXPECT_NE(client.Set({Status(kNew, first), Status(kNew, second)}), 0) << first;
        EXPECT_EQ(client.errorIndex, 2);
        EXPECT_FALSE(IsThere(kNew));
    }
    EXPECT_EQ(client.Set({Status(kOld, eRowDestroy), Status(kOld, eRowDestroy)}),
              eSnmpInconsistentValue);
    EXPECT_TRUE(IsThere(kOld));
    EXPECT_EQ(client.Set({Status(kOld, eRowDestroy), Status(kNew, eRowCreateAndGo)}), 0)
        << "of two rows, and what was refused leaves no mark";
}

TEST_F(ViewTreeFamily, MasksHaveUpToSixteenOctets)
{
    AddOld();
    for (size_t length : {0u, 1u, 16u})
        EXPECT_EQ(client.Set({Mask(kOld, std::string(length, '\x55'))}), 0) << length;
    EXPECT_EQ(client.Set({Mask(kOld, std::string(17, '\x55'))}), eSnmpWrongLength);
    EXPECT_EQ(client.Set({{Name(eMask, kOld), Number(1)}}), eSnmpWrongType);
}

TEST_F(ViewTreeFamily, TypesAndStorageTypesAreThoseOfTheirEnumerations)
{
    AddOld();
    for (int type : {0, 3, -1})
        EXPECT_EQ(client.Set({Type(kOld, type)}), eSnmpWrongValue) << type;
    for (int storage : {0, 6, -1})
        EXPECT_EQ(client.Set({Storage(kOld, storage)}), eSnmpWrongValue) << storage;
    EXPECT_EQ(Row(kOld), "f0 1 3 1");
}

TEST_F(ViewTreeFamily, ManagersMakeRowsVolatileOrNonVolatileOnly)
{
    AddOld();
    for (int storage : {eStorageOther, eStoragePermanent, eStorageReadOnly}) {
        EXPECT_EQ(client.Set({Storage(kOld, storage)}), eSnmpInconsistentValue) << storage;
        EXPECT_EQ(client.Set({Status(kNew, eRowCreateAndGo), Storage(kNew, storage)}),
                  eSnmpInconsistentValue)
            << storage;
    }
    for (int storage : {eStorageVolatile, eStorageNonVolatile})
        EXPECT_EQ(client.Set({Storage(kOld, storage)}), 0) << storage;
    EXPECT_FALSE(IsThere(kNew));
}

TEST_F(ViewTreeFamily, APermanentRowIsChangedAndNotDestroyed)
{
    AddOld(eStoragePermanent);
    EXPECT_EQ(client.Set({Status(kOld, eRowDestroy)}), eSnmpInconsistentValue);
    EXPECT_EQ(client.Set({Storage(kOld, eStorageNonVolatile)}), eSnmpInconsistentValue);
    EXPECT_EQ(client.Set({Storage(kOld, eStoragePermanent)}), 0);
    EXPECT_EQ(client.Set({Type(kOld, 2), Mask(kOld, "")}), 0);
    EXPECT_EQ(client.Set({Status(kOld, eRowNotInService)}), 0);
    EXPECT_EQ(Row(kOld), " 2 4 2");
}

TEST_F(ViewTreeFamily, AReadOnlyRowIsNotChanged)
{
    AddOld(eStorageReadOnly);
    EXPECT_EQ(client.Set({Status(kOld, eRowDestroy)}), eSnmpInconsistentValue);
    EXPECT_EQ(client.Set({Status(kOld, eRowNotInService)}), eSnmpInconsistentValue);
    EXPECT_EQ(client.Set({Status(kOld, eRowActive)}), 0) << "as it is";
    EXPECT_EQ(client.Set({Type(kOld, 2)}), eSnmpNotWritable);
    EXPECT_EQ(client.Set({Mask(kOld, "")}), eSnmpNotWritable);
    EXPECT_EQ(client.Set({Storage(kOld, eStorageVolatile)}), eSnmpNotWritable);
    EXPECT_EQ(Row(kOld), "f0 1 5 1");
}

TEST_F(ViewTreeFamily, AViewWithAReadOnlyRowTakesNoOthers)
{
    AddOld(eStorageReadOnly);
    const std::string more = FamilyIndex("old", "1.3.6.1.6");
    for (int status : {eRowCreateAndGo, eRowCreateAndWait})
        EXPECT_EQ(client.Set({Type(more, 2), Status(more, status)}), eSnmpNoCreation) << status;
    EXPECT_EQ(client.Set({Status(more, eRowDestroy)}), 0) << "there is none";
    EXPECT_EQ(client.Set({Status(FamilyIndex("ol", "1.3.6"), eRowCreateAndGo)}), 0);
    EXPECT_EQ(client.Set({Status(FamilyIndex("olde", "1.3.6"), eRowCreateAndGo)}), 0);
    EXPECT_EQ(views.Count(), 3u);
}

TEST_F(ViewTreeFamily, ARowNeedsAnIndexOfThatForm)
{
    const std::pair<const char*, std::string> indexes[] = {
        {"an empty name", "0.1.1"},
        {"a name of 33 characters", FamilyIndex(std::string(33, 'n'), "1.3")},
        {"a name that is not printable", "1.7.1.1"},
        {"no subtree", "1.97"},
        {"a subtree without arcs", "1.97.0"},
        {"a subtree that is too short", "1.97.2.1"},
        {"a subtree that is too long", "1.97.1.1.3"},
        {"a name that is cut", "3.97.98"},
    };
    for (const auto& [what, index] : indexes)
        EXPECT_EQ(client.Set({Status(index, eRowCreateAndGo)}), eSnmpNoCreation) << what;
    EXPECT_EQ(views.Count(), 0u);
    EXPECT_EQ(client.Set({Status(FamilyIndex(std::string(32, 'n'), "1"), eRowCreateAndGo)}), 0);
}

TEST_F(ViewTreeFamily, ARowsInstancesHave128ArcsAtMost)
{
    // Twelve of the entry and the column, the name and its length, and the length.
    constexpr int kLongest = 128 - 12 - 2 - 1;
    std::string subtree = "1";
    for (int i = 1; i < kLongest; ++i)
        subtree += ".1";
    EXPECT_EQ(client.Set({Status(FamilyIndex("n", subtree + ".1"), eRowCreateAndGo)}),
              eSnmpNoCreation);
    EXPECT_EQ(client.Set({Status(FamilyIndex("n", subtree), eRowCreateAndGo)}), 0);
}

TEST_F(ViewTreeFamily, WhatAFailedSetChangedIsTakenBackInEveryOrder)
{
    AddOld();
    const std::string waiting = FamilyIndex("wait", "1.2");
    ASSERT_EQ(client.Set({Status(waiting, eRowCreateAndWait)}), 0);
    const Bindings sets[] = {
        {Status(kNew, eRowCreateAndGo), Mask(kNew, "\x01"), Type(kNew, 2), Storage(kNew, 2)},
        {Status(kNew, eRowCreateAndWait), Type(kNew, 2)},
        {Status(kOld, eRowDestroy)},
        {Status(kOld, eRowDestroy), Mask(kOld, "\x01"), Type(kOld, 2)},
        {Status(kOld, eRowNotInService), Mask(kOld, "\x01"), Storage(kOld, 2)},
        {Mask(kOld, "\x01"), Mask(kOld, "\x02"), Mask(kOld, "\x03")},
        {Type(kOld, 2), Type(kOld, 1), Mask(kOld, "\x01")},
        {Status(waiting, eRowActive), Mask(waiting, "\x01")},
        {Status(waiting, eRowDestroy), Status(kOld, eRowDestroy), Status(kNew, eRowCreateAndGo)},
    };
    const Rows before = client.Walk();
    const Rows savedBefore = Saved();
    for (Bindings bindings : sets) {
        std::vector<size_t> order(bindings.size());
        for (size_t i = 0; i < order.size(); ++i)
            order[i] = i;
        do {
            Bindings ordered;
            for (size_t i : order)
                ordered.push_back(bindings[i]);
            EXPECT_EQ(client.SetInVain(ordered), eSnmpCommitFailed);
            ASSERT_EQ(client.Walk(), before)
                << bindings[0].name << " " << testing::PrintToString(order);
            ASSERT_EQ(Saved(), savedBefore);
            EXPECT_EQ(client.neighbour.slotErrors, 0);
        } while (std::next_permutation(order.begin(), order.end()));
    }
    EXPECT_TRUE(IsShown("old", "1.3.6.1"));
}

TEST_F(ViewTreeFamily, ColumnsOfARowThatIsDestroyedGoWithIt)
{
    AddOld();
    EXPECT_EQ(client.Set({Status(kOld, eRowDestroy), Mask(kOld, "\x01")}), 0);
    EXPECT_FALSE(IsThere(kOld));
    AddOld();
    EXPECT_EQ(client.Set({Mask(kOld, "\x01"), Status(kOld, eRowDestroy)}), 0);
    EXPECT_FALSE(IsThere(kOld));
}

TEST_F(ViewTreeFamily, TheStoreKeepsRowsThatAreActiveAndNonVolatile)
{
    EXPECT_EQ(store.updatesRequested, 0);
    ASSERT_EQ(client.Set({Status(kNew, eRowCreateAndGo)}), 0);
    EXPECT_EQ(Saved(), Rows{"few 1.3.6.1.2.1.1"});
    ASSERT_EQ(client.Set({Status(FamilyIndex("two", "1"), eRowCreateAndGo),
                          Storage(FamilyIndex("two", "1"), eStorageVolatile)}),
              0);
    EXPECT_EQ(Saved(), Rows{"few 1.3.6.1.2.1.1"}) << "volatile";
    ASSERT_EQ(client.Set({Storage(FamilyIndex("two", "1"), eStorageNonVolatile)}), 0);
    EXPECT_EQ(Saved(), (Rows{"few 1.3.6.1.2.1.1", "two 1"}));
    ASSERT_EQ(client.Set({Status(kNew, eRowNotInService)}), 0);
    EXPECT_EQ(Saved(), Rows{"two 1"});
    ASSERT_EQ(client.Set({Status(FamilyIndex("two", "1"), eRowDestroy)}), 0);
    EXPECT_EQ(Saved(), Rows());
}

TEST_F(ViewTreeFamily, AChangeIsSavedWithItsValue)
{
    ASSERT_EQ(client.Set({Status(kNew, eRowCreateAndGo), Mask(kNew, "\xf0"), Type(kNew, 2)}), 0);
    FakeStore copy;
    copy.records = store.records;
    BFilterTable read(&copy, kSection);
    ASSERT_TRUE(read.InitFromNV(false));
    ASSERT_EQ(read.Count(), 1u);
    EXPECT_EQ(read.RowAt(0)->mask, MaskOf({0xf0}));
    EXPECT_EQ(read.RowAt(0)->type, eFilterExcluded);
}

TEST_F(ViewTreeFamily, WhatIsRefusedAsksForNoSave)
{
    EXPECT_NE(client.Set({Mask(kNew, "x")}), 0);
    EXPECT_NE(client.Set({Status("0.1.1", eRowCreateAndGo)}), 0);
    client.Get(Name(eStatus, kNew));
    client.Walk();
    EXPECT_EQ(store.updatesRequested, 0);
}

TEST(ViewTreeFamilyWithoutStore, IsChangedAndNotKept)
{
    BFilterTable views(nullptr);
    CViewModule module(views, nullptr);
    ModuleClient client(module, "1.3.6.1.6.3.16.1.5.2.1");
    EXPECT_EQ(client.Set({Status(kNew, eRowCreateAndGo)}), 0);
    EXPECT_EQ(views.Count(), 1u);
}

namespace {

// The lock alone, starting where a test wants it.
class LockModule : public BMibImplGroup {
public:
    explicit LockModule(int value) : BMibImplGroup(BString("lock")), m_lock(value) {}
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_lock; }

private:
    CViewSpinLock m_lock;
};

class ViewSpinLock : public testing::Test {
protected:
    int Set(int value) { return client.Set({{"1.0", Number(value)}}); }
    std::string Value() { return client.Get("1.0"); }

    LockModule module{0};
    ModuleClient client{module, "1.3.6.1.6.3.16.1.5"};
};

} // namespace

TEST_F(ViewSpinLock, TakesTheValueItHasAndCountsOn)
{
    EXPECT_EQ(Value(), "0");
    EXPECT_EQ(Set(0), 0);
    EXPECT_EQ(Value(), "1");
    EXPECT_EQ(Set(0), eSnmpInconsistentValue);
    EXPECT_EQ(Set(2), eSnmpInconsistentValue);
    EXPECT_EQ(Set(-1), eSnmpWrongValue);
    EXPECT_EQ(Value(), "1");
    EXPECT_EQ(Set(1), 0);
    EXPECT_EQ(Value(), "2");
}

TEST_F(ViewSpinLock, CountsBackWhenItsSetFails)
{
    EXPECT_EQ(client.SetInVain({{"1.0", Number(0)}}), eSnmpCommitFailed);
    EXPECT_EQ(Value(), "0");
    EXPECT_EQ(client.Set({{"1.0", Number(0)}, {"1.0", Number(0)}}), eSnmpCommitFailed)
        << "two managers in one request";
    EXPECT_EQ(Value(), "0");
}

TEST(ViewSpinLockAtItsEnd, CountsOnFromZero)
{
    LockModule module(2147483647);
    ModuleClient client(module, "1.3.6.1.6.3.16.1.5.1");
    EXPECT_EQ(client.SetInVain({{"0", Number(2147483647)}}), eSnmpCommitFailed);
    EXPECT_EQ(client.Get("0"), "2147483647");
    EXPECT_EQ(client.Set({{"0", Number(2147483647)}}), 0);
    EXPECT_EQ(client.Get("0"), "0");
}

namespace {

class ViewModule : public testing::Test {
protected:
    static int LockOf(ModuleClient& client) { return std::stoi(client.Get("1.0")); }

    BFilterTable views{nullptr};
    CViewModule module{views, nullptr};
    ModuleClient client{module, "1.3.6.1.6.3.16.1.5"};
};

} // namespace

TEST_F(ViewModule, ItsLockStartsAnywhere)
{
    CViewModule restarted(views, nullptr);
    ModuleClient later(restarted, "1.3.6.1.6.3.16.1.5");
    EXPECT_GE(LockOf(client), 0);
    EXPECT_NE(LockOf(client), LockOf(later)) << "or what was read before a restart would fit";
}

TEST_F(ViewModule, ItsLockGuardsTheRowsOfItsSet)
{
    const int lock = LockOf(client);
    const std::string status = "2.1.6." + kNew;
    EXPECT_EQ(client.Set({{"1.0", Number(lock ^ 1)}, {status, Number(eRowCreateAndGo)}}),
              eSnmpInconsistentValue);
    EXPECT_EQ(views.Count(), 0u);
    EXPECT_EQ(client.Set({{"1.0", Number(lock)}, {status, Number(eRowCreateAndGo)}}), 0);
    EXPECT_EQ(views.Count(), 1u);
}
