// Which module serves which region, and that watching them changes nothing.
#include "VerbsTest.h"

#include "tests/support/ListHandler.h"
#include "tests/support/RowStatusProbe.h"
#include <vkmibh/testing/recorder.h>
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::Client;
using VLK::Test::ListHandler;
using VLK::Test::MakeOid;
using VLK::Test::RecorderHandler;

namespace {

class Owners : public VerbsTest {};

} // namespace

TEST_F(Owners, AreListedInOrderWithThoseWithinOthersBehindThem)
{
    EXPECT_EQ(Type("owners"), "no region is registered\n");
    VLK::Test::SetLog log;
    RecorderHandler outer('A', "1.3.6.1.4.1.32473.1", log);
    RecorderHandler inner('B', "1.3.6.1.4.1.32473.1.5.7", log);
    RecorderHandler innermost('C', "1.3.6.1.4.1.32473.1.5.7.2", log);
    RecorderHandler sibling('D', "1.3.6.1.4.1.32473.10", log);
    for (RecorderHandler* one : {&sibling, &inner, &outer, &innermost})
        ASSERT_TRUE(handler.RegisterSubtreeHandler(one));
    EXPECT_EQ(Type("owners"), "1.3.6.1.4.1.32473.1            A\n"
                              "  1.3.6.1.4.1.32473.1.5.7      B\n"
                              "    1.3.6.1.4.1.32473.1.5.7.2  C\n"
                              "1.3.6.1.4.1.32473.10           D\n");
    EXPECT_EQ(Type("owners 1.3.6.1.4.1.32473.10"), "1.3.6.1.4.1.32473.10  D\n");
    EXPECT_EQ(Type("owners 1.3.6.1.4.1.32473.1.5"), "  1.3.6.1.4.1.32473.1.5.7      B\n"
                                                    "    1.3.6.1.4.1.32473.1.5.7.2  C\n");
    EXPECT_EQ(Type("owners 1.3.6.1.4.1.32473.1.6"), "no region at or below 1.3.6.1.4.1.32473.1.6; "
                                                    "it lies in 1.3.6.1.4.1.32473.1 of A\n");
    EXPECT_EQ(Type("owners 1.4"), "no region at or below 1.4\n");
    EXPECT_TRUE(handler.UnregisterSubtreeHandler(&inner));
    EXPECT_EQ(Type("owners 1.3.6.1.4.1.32473.1"), "1.3.6.1.4.1.32473.1          A\n"
                                                  "  1.3.6.1.4.1.32473.1.5.7.2  C\n");
}

TEST_F(Owners, MistakesOfTheOperator)
{
    EXPECT_EQ(Type("owners 1.3 1.4"), "owners: invalid argument(s)\nUsage owners [<oid>]\n");
    EXPECT_EQ(Type("owners x"), "owners: invalid oid 'x'\n");
}

TEST_F(Owners, OfTheSystemGroupAreItsModules)
{
    handler.Init(nullptr, nullptr);
    EXPECT_EQ(Type("owners"), "1.3.6.1.2.1.1      SNMPv2-MIB.system\n"
                              "  1.3.6.1.2.1.1.9  SNMPv2-MIB.sysORTable\n");
}

// What saves SETs is in the tree from the first one on, and nobody's object.
TEST_F(Owners, AreThoseOfModulesOnly)
{
    handler.Init(nullptr, nullptr);
    BVarBindList list;
    list.Append(MakeOid("1.3.6.1.2.1.1.4.0"));
    list[0].Value().SetOctets(BOctetString(BString("me")));
    int index = 0;
    EXPECT_EQ(handler.Query(ePduSet, 0, console, BString(), list, index), eSnmpNoError);
    ASSERT_EQ(regions.Below(BObjectIdentifier()).size(), 3u);
    EXPECT_EQ(Type("owners"), "1.3.6.1.2.1.1      SNMPv2-MIB.system\n"
                              "  1.3.6.1.2.1.1.9  SNMPv2-MIB.sysORTable\n");
    EXPECT_EQ(Type("owners 4294967295"), "no region at or below 4294967295\n");
    EXPECT_EQ(Line("explain 4294967295", "region"), "none: no module has registered there");
}

TEST_F(Owners, ComeAndGoAsOften)
{
    for (int round = 0; round < 3; ++round) {
        ListHandler module("1.3.6.1.4.1.32473.1");
        ListHandler other("1.3.6.1.4.1.32473.1");
        EXPECT_TRUE(handler.RegisterSubtreeHandler(&module));
        EXPECT_FALSE(handler.RegisterSubtreeHandler(&module));
        EXPECT_FALSE(handler.RegisterSubtreeHandler(&other)) << "its place is taken";
        EXPECT_FALSE(handler.UnregisterSubtreeHandler(&other));
        EXPECT_TRUE(handler.UnregisterSubtreeHandler(&module));
        EXPECT_FALSE(handler.UnregisterSubtreeHandler(&module));
    }
    EXPECT_EQ(Type("owners"), "no region is registered\n");
}

// As the tree has it: one place only is cleared.
TEST_F(Owners, OfARangeGoOnServingTheRestOfIt)
{
    ListHandler range("1.3.6.1.4.1.32473.1", 8, 3);
    range.Add("1.3.6.1.4.1.32473.2.0", 7);
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&range));
    EXPECT_EQ(Type("owners 1.3.6.1.4.1.32473"), "1.3.6.1.4.1.32473.1  range\n"
                                                "1.3.6.1.4.1.32473.2  range\n"
                                                "1.3.6.1.4.1.32473.3  range\n");
    EXPECT_TRUE(handler.UnregisterSubtreeHandler(&range));
    EXPECT_EQ(Type("owners 1.3.6.1.4.1.32473"), "1.3.6.1.4.1.32473.2  range\n"
                                                "1.3.6.1.4.1.32473.3  range\n");
    BMibHandler plain(&regions, nullptr);
    Client client(plain);
    EXPECT_EQ(client.Get({"1.3.6.1.4.1.32473.2.0"}), eSnmpNoError);
    EXPECT_EQ(client.TextAt(0), "7");
}

TEST_F(Owners, GoByTheirPlaceInTheTreeToo)
{
    ListHandler module("1.3.6.1.4.1.32473.1");
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&module));
    BObjectIdentifier place = module.Oid();
    EXPECT_TRUE(regions.Unregister(place));
    EXPECT_EQ(Type("owners"), "no region is registered\n");
    EXPECT_FALSE(handler.UnregisterSubtreeHandler(&module));
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&module));
    EXPECT_TRUE(handler.UnregisterSubtreeHandler(&module));
}

// One that ended without a word, and another at its address elsewhere.
TEST_F(Owners, AreNotMistakenForOthersThatWereThereBefore)
{
    std::optional<ListHandler> module;
    module.emplace("1.3.6.1.4.1.32473.1");
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&*module));
    BObjectIdentifier place = module->Oid();
    ASSERT_TRUE(regions.Unregister(place));
    module.emplace("1.3.6.1.4.1.32473.2");
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&*module));
    EXPECT_EQ(Type("owners"), "1.3.6.1.4.1.32473.2  list\n");
    EXPECT_TRUE(handler.UnregisterSubtreeHandler(&*module));
}

// The library looks for row-status tables among what it knows to serve.
TEST_F(Owners, OfRowsForgetThemWhereACleanupFailsBeforeTheirs)
{
    for (bool isWatched : {true, false}) {
        BMibTree tree;
        BMibHandler plain(isWatched ? &regions : &tree, nullptr);
        VLK::Test::SetLog log;
        RecorderHandler first('A', "1.3.8", log);
        first.failAt = {{eSetCleanup, 0}};
        first.failWith = eSnmpGenErr;
        VLK::Test::TRowProbe<> table;
        ASSERT_TRUE(plain.RegisterSubtreeHandler(&first));
        ASSERT_TRUE(plain.RegisterSubtreeHandler(&table));
        BVarBindList list;
        BObjectSyntax value;
        value.SetInt(eRowCreateAndWait);
        list.Append(MakeOid("1.3.8.1"), value);
        list.Append(MakeOid("1.3.9.3.7"), value);
        int duringCommit = 0;
        table.during = [&](const std::string& what) {
            if (what == "commit 3.7")
                duringCommit = table.GetRowState(MakeOid("7"));
        };
        Client client(plain);
        EXPECT_EQ(client.Query(ePduSet, list), eSnmpGenErr) << isWatched;
        EXPECT_NE(duringCommit, 0) << isWatched;
        EXPECT_EQ(table.GetRowState(MakeOid("7")), 0) << isWatched;
        plain.UnregisterSubtreeHandler(&first);
        plain.UnregisterSubtreeHandler(&table);
    }
}
