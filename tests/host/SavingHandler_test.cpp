#include "host/SavingHandler.h"

#include "tests/support/FakeStore.h"
#include "tests/support/Threads.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

using namespace VLK;
using namespace VLK::host;

namespace {

constexpr const char* kContact = "1.3.6.1.2.1.1.4.0";

// What is asked in the middle of a request.
class Inside : public IAccessControl {
public:
    std::function<int()> asked;

    int CheckAccess(const BSecurityParams&, unsigned char, const BString&, const BVarBind&) override
    {
        return asked ? asked() : 0;
    }
};

class FakeSaves : public ISetSaves {
public:
    bool works = true;
    bool throws = false;
    bool held = false;
    int saves = 0;
    std::function<void()> saving;

    void Hold() override
    {
        EXPECT_FALSE(held) << "another SET is not saved yet";
        if (throws)
            throw std::runtime_error("no hold");
        held = true;
    }
    bool SaveHeld() override
    {
        if (saving)
            saving();
        held = false;
        ++saves;
        return works;
    }
};

class SavingHandler : public testing::Test {
protected:
    void SetUp() override
    {
        time.RecordStartTime();
        handler.Init(&time, &store);
    }

    int Ask(int pduType, const char* name = kContact, const char* text = "me")
    {
        BTransaction transaction(1);
        BTransactions* transactions = BTransactions::GetInstance();
        unsigned id = transactions->StartTransaction(&transaction);
        BVarBindList list;
        list.Append(BObjectIdentifier(BString(name)));
        list[0].Value().SetOctets(BOctetString(BString(text)));
        index = -1;
        int status =
            handler.Query(pduType, static_cast<int>(id), BSecurityParams(), BString(), list, index);
        transactions->EndTransaction(id);
        return status;
    }

    std::string Contact()
    {
        BVarBindList list;
        list.Append(BObjectIdentifier(BString(kContact)));
        handler.Query(ePduGet, 0, BSecurityParams(), BString(), list, index);
        return list[0].Value().ValToStr().c_str();
    }

    BTime time;
    VLK::Test::FakeStore store;
    Inside inside;
    FakeSaves saves;
    BSavingHandler handler{&inside, saves};
    int index = -1;
};

} // namespace

TEST_F(SavingHandler, ASetIsHeldWhileItRunsAndSavedOnceAfterwards)
{
    inside.asked = [this] {
        EXPECT_TRUE(saves.held);
        EXPECT_EQ(saves.saves, 0);
        return 0;
    };
    EXPECT_EQ(Ask(ePduSet), eSnmpNoError);
    EXPECT_EQ(saves.saves, 1);
    EXPECT_FALSE(saves.held);
    EXPECT_EQ(store.updatesRequested, 1);
}

TEST_F(SavingHandler, ReadingIsNotHeld)
{
    inside.asked = [this] {
        EXPECT_FALSE(saves.held);
        return 0;
    };
    for (int type : {ePduGet, ePduGetNext, ePduGetBulk})
        EXPECT_EQ(Ask(type), eSnmpNoError) << type;
    EXPECT_EQ(saves.saves, 0);
}

TEST_F(SavingHandler, ASetThatIsNotKeptIsUndoneAndCommitFailed)
{
    EXPECT_EQ(Ask(ePduSet), eSnmpNoError);
    EXPECT_EQ(Contact(), "me");
    saves.works = false;
    EXPECT_EQ(Ask(ePduSet, kContact, "you"), eSnmpCommitFailed);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(Contact(), "me");
    EXPECT_FALSE(saves.held) << "the next SET would be saved with what is left of this one";
    saves.works = true;
    EXPECT_EQ(Ask(ePduSet, kContact, "you"), eSnmpNoError) << "a later one went well";
    EXPECT_EQ(Contact(), "you");
}

// The binding that saves is no part of the MIB, and no manager's.
TEST_F(SavingHandler, WhatSavesIsSeenByNobody)
{
    EXPECT_EQ(Ask(ePduSet), eSnmpNoError);
    int checked = 0;
    inside.asked = [&] {
        ++checked;
        return 0;
    };
    BVarBindList list;
    list.Append(BObjectIdentifier(BString(kContact)));
    list[0].Value().SetOctets(BOctetString(BString("you")));
    EXPECT_EQ(handler.Query(ePduSet, 0, BSecurityParams(), BString(), list, index), 0);
    EXPECT_EQ(list.Count(), 1u);
    EXPECT_EQ(checked, 1);
    list.Clear();
    list.Append(BObjectIdentifier(BString("4294967295")));
    EXPECT_EQ(handler.Query(ePduGet, 0, BSecurityParams(), BString(), list, index), 0);
    EXPECT_EQ(list[0].Value().Syntax(), eNoSuchObject);
    for (const char* name : {"3", "4294967295"}) {
        list.Clear();
        list.Append(BObjectIdentifier(BString(name)));
        EXPECT_EQ(handler.Query(ePduGetNext, 0, BSecurityParams(), BString(), list, index), 0);
        EXPECT_EQ(list[0].Value().Syntax(), eEndOfMibView) << name;
    }
    for (unsigned count : {1u, 2u}) {
        list.Clear();
        for (unsigned i = 0; i < count; ++i)
            list.Append(BObjectIdentifier(BString("4294967295")));
        saves.saves = 0;
        EXPECT_EQ(handler.Query(ePduSet, 0, BSecurityParams(), BString(), list, index),
                  eSnmpNoSuchName);
        EXPECT_EQ(index, 1);
        EXPECT_EQ(list.Count(), count);
        EXPECT_EQ(saves.saves, 1) << "that of any SET that has failed";
    }
}

// A module that takes its time must not be waited for, not by the first SET either.
TEST_F(SavingHandler, TheFirstSetWaitsForNoWalk)
{
    std::atomic<bool> isFirst{true};
    std::atomic<bool> isInside{false};
    std::atomic<bool> goesOn{false};
    inside.asked = [&] {
        if (isFirst.exchange(false)) {
            isInside = true;
            EXPECT_TRUE(Eventually([&] { return goesOn.load(); }));
        }
        return 0;
    };
    std::thread walk([&] {
        BVarBindList list;
        list.Append(BObjectIdentifier(BString("1.3")));
        int walkIndex = 0;
        EXPECT_EQ(handler.Query(ePduGetNext, 0, BSecurityParams(), BString(), list, walkIndex), 0);
    });
    ASSERT_TRUE(Eventually([&] { return isInside.load(); }));
    EXPECT_EQ(Ask(ePduSet), eSnmpNoError);
    goesOn = true;
    walk.join();
}

TEST_F(SavingHandler, AFailedSetIsSavedTooAndItsOwnReasonCounts)
{
    for (bool works : {true, false}) {
        saves.works = works;
        saves.saves = 0;
        EXPECT_EQ(Ask(ePduSet, "1.3.6.1.2.1.1.1.0"), eSnmpNotWritable);
        EXPECT_EQ(index, 1);
        EXPECT_EQ(saves.saves, 1);
    }
}

TEST_F(SavingHandler, WhatASaveThrowsIsAGeneralErrorAndTheNextSetIsServed)
{
    saves.throws = true;
    EXPECT_EQ(Ask(ePduSet), eSnmpGenErr);
    EXPECT_EQ(index, 0);
    saves.throws = false;
    EXPECT_EQ(Ask(ePduSet), eSnmpNoError);
}

// A save writes all values, so those of a SET that is half done would be in it.
TEST_F(SavingHandler, ASetWaitsUntilTheOneBeforeItIsSaved)
{
    std::atomic<int> running{0};
    saves.saving = [&] {
        GiveOthersTime();
        EXPECT_EQ(running, 1);
        running = 0;
    };
    inside.asked = [&] {
        ++running;
        return 0;
    };
    auto set = [this] {
        BVarBindList list;
        list.Append(BObjectIdentifier(BString("1.3.6.1.2.1.1.4.0")));
        list[0].Value().SetOctets(BOctetString(BString("me")));
        int errorIndex = 0;
        EXPECT_EQ(handler.Query(ePduSet, 0, BSecurityParams(), BString(), list, errorIndex), 0);
    };
    std::thread first(set);
    std::thread second(set);
    first.join();
    second.join();
    EXPECT_EQ(saves.saves, 2);
}

TEST_F(SavingHandler, WhatComesBetweenSetsMeetsNone)
{
    std::atomic<bool> isSaving{false};
    std::atomic<bool> isDone{false};
    saves.saving = [&] {
        isSaving = true;
        GiveOthersTime();
    };
    std::thread manager([&] {
        while (!isDone)
            EXPECT_EQ(Ask(ePduSet), eSnmpNoError);
    });
    EXPECT_TRUE(Eventually([&] { return isSaving.load(); }));
    handler.BetweenSets([&] {
        EXPECT_FALSE(saves.held);
        isDone = true;
    });
    manager.join();
}
