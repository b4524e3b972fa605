// The system group in the host's store.
#include "tests/support/FakeStore.h"
#include "tests/support/Oids.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

const char kContactName[] = "1.3.6.1.2.1.1.4.0";
const char kLocationName[] = "1.3.6.1.2.1.1.6.0";

using Calls = std::vector<std::string>;

TEST(SystemPersistence, WithoutAStoreNothingHappens)
{
    BMib2System system;
    EXPECT_EQ(0, system.InitFromNV());
    EXPECT_EQ(0, system.SaveToNV());
    EXPECT_STREQ("Mr. Qwin", system.Contact().c_str());
}

TEST(SystemPersistence, LoadsTheSixKeysInOrder)
{
    FakeStore store;
    BMib2System system;
    system.SetStore(&store);
    EXPECT_EQ(0, system.InitFromNV());
    EXPECT_EQ((Calls{"GetString mib-2.system sysDescr 0", "GetString mib-2.system sysObjectID 0",
                     "GetString mib-2.system sysLocation 0", "GetString mib-2.system sysContact 0",
                     "GetString mib-2.system sysName 0", "GetInt mib-2.system sysServices 0"}),
              store.calls);
    EXPECT_STREQ("Mr. Qwin", system.Contact().c_str()) << "a missing key changes nothing";
    EXPECT_EQ(7, system.Services());
}

TEST(SystemPersistence, AppliesWhatIsStored)
{
    FakeStore store;
    store.strings = {{"mib-2.system/sysDescr", "d"},
                     {"mib-2.system/sysObjectID", "1.3.6.1.4.1.7"},
                     {"mib-2.system/sysLocation", "l"},
                     {"mib-2.system/sysContact", "c"},
                     {"mib-2.system/sysName", ""}};
    store.numbers = {{"mib-2.system/sysServices", 255}};
    BMib2System system;
    system.SetStore(&store);
    system.InitFromNV();
    EXPECT_STREQ("d", system.Description().c_str());
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.7"), system.ObjectID());
    EXPECT_STREQ("l", system.Location().c_str());
    EXPECT_STREQ("c", system.Contact().c_str());
    EXPECT_STREQ("", system.Name().c_str());
    EXPECT_EQ(79, system.Services());
}

TEST(SystemPersistence, SavesTheSixKeysInOrder)
{
    FakeStore store;
    store.writeResult = 1; // not looked at
    BMib2System system;
    system.SetStore(&store);
    system.SetContact(BString("someone"));
    EXPECT_EQ(0, system.SaveToNV());
    EXPECT_EQ((Calls{"OpenSection mib-2.system", "SetString mib-2.system sysDescr 0",
                     "SetString mib-2.system sysObjectID 0", "SetString mib-2.system sysLocation 0",
                     "SetString mib-2.system sysContact 0", "SetString mib-2.system sysName 0",
                     "SetInt mib-2.system sysServices 0"}),
              store.calls);
    EXPECT_EQ(0, store.flagsUsed);
    EXPECT_EQ("1.3.6.1.4.1.32473", store.strings["mib-2.system/sysObjectID"]);
    EXPECT_EQ("someone", store.strings["mib-2.system/sysContact"]);
    EXPECT_EQ("MIB handler", store.strings["mib-2.system/sysName"]);
    EXPECT_EQ("Keswold", store.strings["mib-2.system/sysLocation"]);
    EXPECT_EQ("Velkoran agent", store.strings["mib-2.system/sysDescr"]);
    EXPECT_EQ(7, store.numbers["mib-2.system/sysServices"]);
}

TEST(SystemPersistence, WhatIsSavedLoads)
{
    FakeStore store;
    BMib2System first;
    first.SetStore(&store);
    first.SetName(BString("agent"));
    first.SetObjectID(MakeOid("1.3.6.1.4.1.1.2.3"));
    first.SetServices(72);
    first.SaveToNV();
    BMib2System second;
    second.SetStore(&store);
    second.InitFromNV();
    EXPECT_STREQ("agent", second.Name().c_str());
    EXPECT_EQ(MakeOid("1.3.6.1.4.1.1.2.3"), second.ObjectID());
    EXPECT_EQ(72, second.Services());
}

TEST(SystemPersistence, ATextWithANulSurvivesSaveAndLoad)
{
    FakeStore store;
    store.saveAtOnce = true;
    const BString text("left\0right", 10);
    BMibHandler first(nullptr);
    first.Init(nullptr, &store);
    BObjectSyntax value;
    value.SetOctets(text);
    BVarBindList list;
    for (const char* name : {kContactName, "1.3.6.1.2.1.1.5.0", kLocationName})
        list.Append(MakeOid(name), value);
    EXPECT_EQ(0, Client(first).Query(ePduSet, list));
    first.SystemGroup()->SetDescription(text);
    first.SystemGroup()->SaveToNV();

    BMib2System second;
    second.SetStore(&store);
    second.InitFromNV();
    EXPECT_EQ(text, second.Description());
    EXPECT_EQ(text, second.Contact());
    EXPECT_EQ(text, second.Name());
    EXPECT_EQ(text, second.Location());
}

TEST(SystemPersistence, TheCallbackSaves)
{
    FakeStore store;
    BMib2System system;
    system.SetStore(&store);
    CSystem::NVCallback callback(&system);
    EXPECT_EQ(0, callback.Update());
    EXPECT_EQ("OpenSection mib-2.system", store.calls.front());
}

TEST(SystemPersistence, ACommitAsksTheStoreToSave)
{
    FakeStore store;
    store.saveAtOnce = true;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    Client client(handler);
    EXPECT_EQ(0, client.Set(kContactName, "new contact"));
    EXPECT_EQ(1, store.updatesRequested);
    EXPECT_EQ("new contact", store.strings["mib-2.system/sysContact"]);
    EXPECT_EQ(0, client.Set("1.3.6.1.2.1.1.5.0", "new name"));
    EXPECT_EQ(0, client.Set(kLocationName, ""));
    EXPECT_EQ(3, store.updatesRequested);
    EXPECT_EQ("new name", store.strings["mib-2.system/sysName"]);
    EXPECT_EQ("", store.strings["mib-2.system/sysLocation"]);

    BMibHandler next(nullptr);
    next.Init(nullptr, &store);
    EXPECT_STREQ("new contact", next.SystemGroup()->Contact().c_str());
}

TEST(SystemPersistence, AStoreMaySaveLater)
{
    FakeStore store;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    Client client(handler);
    client.Set(kContactName, "first");
    client.Set(kContactName, "second");
    ASSERT_NE(nullptr, store.lastCallback);
    EXPECT_EQ(0, store.lastCallback->Update());
    EXPECT_EQ("second", store.strings["mib-2.system/sysContact"]);
}

// A module whose commit fails, and which takes no part otherwise.
class FailingCommit : public BMibSubtreeHandler {
public:
    FailingCommit() : BMibSubtreeHandler(BString("failing"), MakeOid("1.3.9")) {}
    using BMibSubtreeHandler::GetNext;
    int Get(unsigned, BVarBindList&, int&, int) override { return eSnmpGenErr; }
    int GetNext(unsigned, BVarBind&) override { return eSnmpNoSuchName; }
    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode op, void**, int&, int) override
    {
        return op == eSetCommit ? eSnmpCommitFailed : eSnmpNoError;
    }
};

TEST(SystemPersistence, AnUndoneSetIsSavedAgain)
{
    FakeStore store;
    store.saveAtOnce = true;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    FailingCommit failing;
    handler.RegisterSubtreeHandler(&failing);
    BObjectSyntax text;
    text.SetOctets(BString("elsewhere"));
    BVarBindList list;
    list.Append(MakeOid(kLocationName), text);
    list.Append(MakeOid("1.3.9.1"), text);
    Client client(handler);
    EXPECT_EQ(14, client.Query(ePduSet, list));
    EXPECT_EQ(2, client.errorIndex);
    EXPECT_STREQ("Keswold", handler.SystemGroup()->Location().c_str());
    EXPECT_EQ(2, store.updatesRequested);
    EXPECT_EQ("Keswold", store.strings["mib-2.system/sysLocation"]);
    handler.UnregisterSubtreeHandler(&failing);
}

TEST(SystemPersistence, ASetThatFailsItsTestSavesNothing)
{
    FakeStore store;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    Client client(handler);
    EXPECT_EQ(8, client.Set(kContactName, std::string(256, 'x').c_str())) << "wrongLength";
    EXPECT_EQ(0, store.updatesRequested);
    EXPECT_STREQ("Mr. Qwin", handler.SystemGroup()->Contact().c_str());
}

TEST(SystemPersistence, AThrowingStoreIsAGeneralErrorAndTheTextGoesBack)
{
    FakeStore store;
    BMibHandler handler(nullptr);
    handler.Init(nullptr, &store);
    store.throwOnUpdate = true;
    Client client(handler);
    EXPECT_EQ(5, client.Set(kContactName, "lost"));
    EXPECT_STREQ("Mr. Qwin", handler.SystemGroup()->Contact().c_str());
    store.throwOnUpdate = false;
    EXPECT_EQ(0, client.Set(kContactName, "kept"));
    EXPECT_STREQ("kept", handler.SystemGroup()->Contact().c_str());
}

} // namespace
} // namespace Test
} // namespace VLK
