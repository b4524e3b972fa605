#include "modules/SnmpGroup.h"

#include <vkmibh/testing/module.h>

#include "tests/support/FakeStore.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

const std::string kEnable = "30.0";
const std::string kStored = FakeStore::Path("mib-2.snmp", "snmpEnableAuthenTraps");

class SnmpGroup : public testing::Test {
protected:
    SnmpGroup() { store.saveAtOnce = true; }

    FakeStore store;
    SSnmpCounters counters;
    CSnmpModule module{counters, &store};
    ModuleClient client{module, "1.3.6.1.2.1.11"};
};

} // namespace

TEST_F(SnmpGroup, EachObjectReadsItsOwnCounter)
{
    counters.inPkts = 1;
    counters.inBadVersions = 3;
    counters.inBadCommunityNames = 4;
    counters.inBadCommunityUses = 5;
    counters.inASNParseErrs = 6;
    counters.silentDrops = 4294967295u;
    const std::vector<std::string> walk{"1.0=1", "3.0=3",  "4.0=4",           "5.0=5",
                                        "6.0=6", "30.0=2", "31.0=4294967295", "32.0=0"};
    EXPECT_EQ(client.Walk(), walk);
    ++counters.silentDrops;
    EXPECT_EQ(client.Get("31.0"), "0") << "counters wrap";
}

TEST_F(SnmpGroup, CountersAreCounter32AndReadOnly)
{
    for (const char* name : {"1.0", "3.0", "4.0", "5.0", "6.0", "31.0", "32.0"}) {
        Client manager(client.handler);
        ASSERT_EQ(manager.Get({("1.3.6.1.2.1.11." + std::string(name)).c_str()}), 0);
        EXPECT_EQ(manager.SyntaxAt(0), eAsnCounter32) << name;
        EXPECT_EQ(client.Set({{name, Number(1)}}), eSnmpNotWritable) << name;
    }
}

TEST_F(SnmpGroup, AuthenticationTrapsAreDisabledUntilAManagerEnablesThem)
{
    EXPECT_FALSE(module.Group().AreTrapsEnabled());
    EXPECT_EQ(client.Get(kEnable), "2");
    EXPECT_EQ(client.Set({{kEnable, Number(eAuthenTrapsEnabled)}}), 0);
    EXPECT_TRUE(module.Group().AreTrapsEnabled());
    EXPECT_EQ(client.Get(kEnable), "1");
    EXPECT_EQ(client.Set({{kEnable, Number(eAuthenTrapsDisabled)}}), 0);
    EXPECT_FALSE(module.Group().AreTrapsEnabled());
}

TEST_F(SnmpGroup, OnlyEnabledAndDisabledAreTaken)
{
    for (int value : {0, 3, -1, 2147483647})
        EXPECT_EQ(client.Set({{kEnable, Number(value)}}), eSnmpWrongValue) << value;
    EXPECT_EQ(client.Set({{kEnable, Bytes("1")}}), eSnmpWrongType);
    EXPECT_EQ(client.Get(kEnable), "2");
    EXPECT_EQ(store.updatesRequested, 0);
}

TEST_F(SnmpGroup, ASetIsSavedWithItsLabel)
{
    client.Set({{kEnable, Number(eAuthenTrapsEnabled)}});
    EXPECT_EQ(store.updatesRequested, 1);
    EXPECT_EQ(store.numbers[kStored], 1);
    EXPECT_EQ(store.calls.back(), "SetInt with a label mib-2.snmp snmpEnableAuthenTraps 0");
}

TEST_F(SnmpGroup, AFailedSetRestoresAndSavesWhatWasThere)
{
    for (int before : {1, 2}) {
        for (int set : {1, 2}) {
            ASSERT_EQ(client.Set({{kEnable, Number(before)}}), 0);
            EXPECT_EQ(client.SetInVain({{kEnable, Number(set)}}), eSnmpCommitFailed);
            EXPECT_EQ(client.Get(kEnable), std::to_string(before)) << set;
            EXPECT_EQ(store.numbers[kStored], before) << set;
        }
    }
}

TEST_F(SnmpGroup, AllBindingsOfAFailedSetAreUndone)
{
    ASSERT_EQ(client.Set({{kEnable, Number(1)}}), 0);
    EXPECT_EQ(client.SetInVain({{kEnable, Number(2)}, {kEnable, Number(1)}}), eSnmpCommitFailed);
    EXPECT_EQ(client.Get(kEnable), "1");
}

TEST(SnmpGroupAtItsStart, TakesWhatTheStoreKeeps)
{
    SSnmpCounters counters;
    for (int stored : {0, 1, 2, 3}) {
        FakeStore store;
        store.numbers[kStored] = stored;
        CSnmpModule module(counters, &store);
        EXPECT_EQ(module.Group().AreTrapsEnabled(), stored == 1) << stored;
    }
    EXPECT_FALSE(CSnmpModule(counters, nullptr).Group().AreTrapsEnabled());
}

TEST(SnmpGroupAtItsStart, IsAsItIsToldUntilTheStoreKeepsOneOfBoth)
{
    SSnmpCounters counters;
    EXPECT_TRUE(CSnmpModule(counters, nullptr, eAuthenTrapsEnabled).Group().AreTrapsEnabled());
    FakeStore nothing;
    for (EAuthenTraps first : {eAuthenTrapsEnabled, eAuthenTrapsDisabled}) {
        EXPECT_EQ(CSnmpModule(counters, &nothing, first).Group().AreTrapsEnabled(),
                  first == eAuthenTrapsEnabled);
        for (int stored : {-1, 0, 1, 2, 3}) {
            FakeStore store;
            store.numbers[kStored] = stored;
            bool isKept = stored == eAuthenTrapsEnabled || stored == eAuthenTrapsDisabled;
            CSnmpModule module(counters, &store, first);
            EXPECT_EQ(module.Group().AreTrapsEnabled(), (isKept ? stored : first) == 1)
                << stored << " before " << first;
            EXPECT_EQ(ModuleClient(module, "1.3.6.1.2.1.11").Get(kEnable),
                      std::to_string(isKept ? stored : first));
        }
    }
    EXPECT_EQ(nothing.updatesRequested, 0) << "what it is told is not what a manager set";
}

TEST(SnmpGroupAtItsStart, WhatAManagerSetsIsKeptAlsoWhenItIsTheSame)
{
    SSnmpCounters counters;
    FakeStore store;
    store.saveAtOnce = true;
    CSnmpModule module(counters, &store, eAuthenTrapsEnabled);
    EXPECT_EQ(ModuleClient(module, "1.3.6.1.2.1.11").Set({{kEnable, Number(1)}}), 0);
    CSnmpModule next(counters, &store, eAuthenTrapsDisabled);
    EXPECT_TRUE(next.Group().AreTrapsEnabled());
}

TEST_F(SnmpGroup, IsToldAnotherFirstValueUntilAManagerSetsIt)
{
    module.Group().SetFirst(eAuthenTrapsEnabled);
    EXPECT_EQ(client.Get(kEnable), "1");
    module.Group().SetFirst(eAuthenTrapsDisabled);
    EXPECT_EQ(client.Get(kEnable), "2");
    EXPECT_EQ(client.Set({{kEnable, Number(eAuthenTrapsDisabled)}}), 0);
    module.Group().SetFirst(eAuthenTrapsEnabled);
    EXPECT_EQ(client.Get(kEnable), "2");
    CSnmpModule next(counters, &store, eAuthenTrapsEnabled);
    next.Group().SetFirst(eAuthenTrapsEnabled);
    EXPECT_FALSE(next.Group().AreTrapsEnabled()) << "the store says what it is";
}

TEST_F(SnmpGroup, AFailedSetIsNoManagersWord)
{
    EXPECT_EQ(client.SetInVain({{kEnable, Number(1)}, {kEnable, Number(2)}}), eSnmpCommitFailed);
    EXPECT_EQ(store.calls.back(), "OpenSection mib-2.snmp") << "with nothing in it";
    module.Group().SetFirst(eAuthenTrapsEnabled);
    EXPECT_EQ(client.Get(kEnable), "1");
}

TEST(SnmpGroupWithoutStore, IsSetAndNotKept)
{
    SSnmpCounters counters;
    CSnmpModule module(counters, nullptr);
    ModuleClient client(module, "1.3.6.1.2.1.11");
    EXPECT_EQ(client.Set({{kEnable, Number(1)}}), 0);
    EXPECT_TRUE(module.Group().AreTrapsEnabled());
}
