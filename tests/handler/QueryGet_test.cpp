// GET: access, runs of bindings, statuses and what becomes of the list.
#include "tests/support/FakeAccess.h"
#include "tests/support/ListHandler.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

using Runs = std::vector<std::pair<int, int>>;

// Two modules side by side, each with instances 1 to 3.
class QueryGet : public ::testing::Test {
protected:
    QueryGet() : handler(&access), a("1.3.5"), b("1.3.7")
    {
        for (unsigned i = 1; i <= 3; ++i) {
            a.Add(Arcs{1, 3, 5, i}, int(i));
            b.Add(Arcs{1, 3, 7, i}, int(10 * i));
        }
        handler.RegisterSubtreeHandler(&a);
        handler.RegisterSubtreeHandler(&b);
    }

    FakeAccess access;
    BMibHandler handler;
    ListHandler a;
    ListHandler b;
};

TEST_F(QueryGet, AnswersInPlace)
{
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.5.2", "1.3.7.3"}));
    EXPECT_EQ(0, client.errorIndex);
    EXPECT_EQ(2, client.answer[0].Value().Int());
    EXPECT_EQ(30, client.answer[1].Value().Int());
    EXPECT_EQ("1.3.7.3", client.NameAt(1));
}

TEST_F(QueryGet, NeighboursOfOneHandlerMakeOneRun)
{
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.5.1", "1.3.5.2", "1.3.7.1", "1.3.5.3"}));
    EXPECT_EQ((Runs{{0, 2}, {3, 1}}), a.runs);
    EXPECT_EQ((Runs{{2, 1}}), b.runs);
}

TEST_F(QueryGet, AHandlerJoinsAForeignInstanceItClaims)
{
    a.alsoHandles = {"1.3.7.1", "1.9.9"};
    Client client(handler);
    client.Get({"1.3.5.1", "1.3.7.1", "1.9.9", "1.3.7.2"});
    EXPECT_EQ((Runs{{0, 3}}), a.runs);
    EXPECT_EQ((Runs{{3, 1}}), b.runs);
}

TEST_F(QueryGet, TheFirstBindingOfARunIsItsTreeOwners)
{
    a.alsoHandles = {"1.3.7.1"};
    Client client(handler);
    client.Get({"1.3.7.1", "1.3.5.1"});
    EXPECT_EQ((Runs{{0, 1}}), b.runs);
    EXPECT_EQ((Runs{{1, 1}}), a.runs);
}

TEST_F(QueryGet, ANestedRegionEndsTheOuterRun)
{
    ListHandler inner("1.3.5.2");
    inner.Add("1.3.5.2.1", 77);
    handler.RegisterSubtreeHandler(&inner);
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.5.1", "1.3.5.2.1", "1.3.5.3"}));
    EXPECT_EQ((Runs{{0, 1}, {2, 1}}), a.runs);
    EXPECT_EQ((Runs{{1, 1}}), inner.runs);
    EXPECT_EQ(77, client.answer[1].Value().Int());
    handler.UnregisterSubtreeHandler(&inner);
}

TEST_F(QueryGet, InstancesOfARangeMakeOneRun)
{
    ListHandler range("1.3.8.1.5", 4, 3);
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&range));
    Client client(handler);
    client.Get({"1.3.8.1.5.0", "1.3.8.2.5.0", "1.3.8.3.5", "1.3.8.3.6"});
    EXPECT_EQ((Runs{{0, 3}}), range.runs);
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(3));
}

TEST_F(QueryGet, OutsideEveryRegionIsNoSuchObject)
{
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.6", "1.3.5.1", "", "1.3.4.1"}));
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(0));
    EXPECT_EQ(1, client.answer[1].Value().Int());
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(2));
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(3));
    EXPECT_EQ(0, client.errorIndex);
}

TEST_F(QueryGet, V1TurnsEveryExceptionIntoNoSuchName)
{
    Client client(handler, kV1);
    EXPECT_EQ(2, client.Get({"1.3.5.1", "1.3.5.9", "1.3.5.2"}));
    EXPECT_EQ(2, client.errorIndex);
    EXPECT_EQ(2, client.Get({"1.3.5.1", "1.3.7.1", "1.3.6"}));
    EXPECT_EQ(3, client.errorIndex);
    EXPECT_EQ(0, client.Get({"1.3.5.1", "1.3.7.1"}));
}

TEST_F(QueryGet, V1RefusesCounter64)
{
    a.AddCounter64("1.3.5.2");
    Client v1(handler, kV1);
    EXPECT_EQ(2, v1.Get({"1.3.5.1", "1.3.5.2"}));
    EXPECT_EQ(2, v1.errorIndex);
    Client v2(handler);
    EXPECT_EQ(0, v2.Get({"1.3.5.1", "1.3.5.2"}));
    EXPECT_EQ(eAsnCounter64, v2.SyntaxAt(1));
}

TEST_F(QueryGet, EveryBindingIsCheckedBeforeAnyIsFetched)
{
    access.refused = {"1.3.7.1"};
    Client client(handler);
    EXPECT_EQ(16, client.Get({"1.3.5.1", "1.3.7.1", "1.3.5.2"}));
    EXPECT_EQ(2, client.errorIndex);
    EXPECT_TRUE(a.runs.empty());
    EXPECT_EQ((std::vector<std::string>{"1.3.5.1", "1.3.7.1"}), access.asked);
    EXPECT_EQ(std::set<int>{eAccessRead}, access.kinds);
    EXPECT_EQ(eAsnNull, client.SyntaxAt(0));
}

TEST_F(QueryGet, AccessControlSeesSecurityAndContext)
{
    BSecurityParams security;
    security.securityModel = 2;
    security.securityName = BString("public");
    security.securityLevel = 1;
    BVarBindList list;
    list.Append(MakeOid("1.3.5.1"));
    int errorIndex = 0;
    EXPECT_EQ(0, handler.QueryGet(1, security, BString("ctx"), list, errorIndex, false));
    EXPECT_EQ(2, access.lastSecurity.securityModel);
    EXPECT_STREQ("public", access.lastSecurity.securityName.c_str());
    EXPECT_EQ(1, access.lastSecurity.securityLevel);
    EXPECT_STREQ("ctx", access.lastContext.c_str());
}

TEST_F(QueryGet, AFailureEndsTheRequestAtTheHandlersIndex)
{
    a.onGet = [](BVarBind& binding) {
        binding.Value().SetInt(99);
        return TextOf(binding.Name()) == "1.3.5.2" ? 13 : 0;
    };
    Client client(handler);
    EXPECT_EQ(13, client.Get({"1.3.7.1", "1.3.5.1", "1.3.5.2", "1.3.7.2"}));
    EXPECT_EQ(3, client.errorIndex);
    EXPECT_EQ((Runs{{0, 1}}), b.runs);
    EXPECT_EQ(10, client.answer[0].Value().Int()) << "what was fetched stays";
    EXPECT_EQ(99, client.answer[1].Value().Int());
}

TEST_F(QueryGet, AnIndexOutsideTheRunIsNotTrusted)
{
    class Wild : public ListHandler {
    public:
        using ListHandler::ListHandler;
        int Get(unsigned, BVarBindList&, int& index, int) override
        {
            index = claimed;
            return 13;
        }
        int claimed = 0;
    };
    Wild wild("1.3.9");
    handler.RegisterSubtreeHandler(&wild);
    Client client(handler);
    for (int claimed : {-1, 0, 3, 1000}) {
        wild.claimed = claimed;
        EXPECT_EQ(13, client.Get({"1.3.5.1", "1.3.9.1", "1.3.9.2", "1.3.7.1"}));
        EXPECT_EQ(2, client.errorIndex) << claimed;
    }
    wild.claimed = 2;
    client.Get({"1.3.5.1", "1.3.9.1", "1.3.9.2", "1.3.7.1"});
    EXPECT_EQ(3, client.errorIndex);
    handler.UnregisterSubtreeHandler(&wild);
}

// A list as it is sent, with a value in one binding, and long names.
BVarBindList RestorableList(bool withValue)
{
    BVarBindList list;
    list.Append(MakeOid("1.3.5.1"));
    BObjectSyntax value;
    value.SetOctets(BString("came along"));
    if (withValue)
        list.Append(MakeOid("1.3.5.2"), value);
    else
        list.Append(MakeOid("1.3.5.2"));
    Arcs longName = {1, 3, 7};
    longName.resize(100, 4);
    list.Append(MakeOid(longName));
    return list;
}

TEST_F(QueryGet, AGeneralErrorGivesTheListBackAsItCame)
{
    for (bool withValue : {false, true}) {
        a.onGet = [](BVarBind& binding) {
            binding.Value().SetInt(99);
            binding.Name().Append(5u);
            return 0;
        };
        b.onGet = [](BVarBind& binding) {
            binding.Set(MakeOid("1.2"));
            return 5;
        };
        const BVarBindList sent = RestorableList(withValue);
        BVarBindList list = sent;
        Client client(handler);
        EXPECT_EQ(5, client.Query(ePduGet, list));
        EXPECT_EQ(3, client.errorIndex);
        ASSERT_EQ(sent.Count(), list.Count());
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(sent[i].Name(), list[i].Name());
            EXPECT_EQ(sent[i].Value().Syntax(), list[i].Value().Syntax());
            EXPECT_STREQ(sent[i].Value().ValToStr().c_str(), list[i].Value().ValToStr().c_str());
        }
    }
}

TEST_F(QueryGet, AListThatAHandlerCutShortComesBackWhole)
{
    class Cutter : public ListHandler {
    public:
        using ListHandler::ListHandler;
        int Get(unsigned, BVarBindList& list, int&, int) override
        {
            list.Clear();
            return 5;
        }
    };
    Cutter cutter("1.3.9");
    handler.RegisterSubtreeHandler(&cutter);
    Client client(handler);
    EXPECT_EQ(5, client.Get({"1.3.5.1", "1.3.9.1"}));
    ASSERT_EQ(2u, client.answer.Count());
    EXPECT_EQ("1.3.5.1", client.NameAt(0));
    EXPECT_EQ("1.3.9.1", client.NameAt(1));
    handler.UnregisterSubtreeHandler(&cutter);
}

TEST_F(QueryGet, V1LooksOnlyAtWhatAHandlerLeftOfTheList)
{
    class Shortener : public ListHandler {
    public:
        using ListHandler::ListHandler;
        int Get(unsigned, BVarBindList& list, int&, int) override
        {
            list.Clear();
            return eSnmpNoError;
        }
    };
    Shortener shortener("1.3.9");
    handler.RegisterSubtreeHandler(&shortener);
    Client client(handler, kV1);
    EXPECT_EQ(0, client.Get({"1.3.9.1", "1.3.9.2"}));
    EXPECT_EQ(0u, client.answer.Count());
    handler.UnregisterSubtreeHandler(&shortener);
}

TEST_F(QueryGet, AListThatAHandlerLengthenedComesBackAsItWas)
{
    class Lengthener : public ListHandler {
    public:
        using ListHandler::ListHandler;
        int Get(unsigned, BVarBindList& list, int&, int) override
        {
            for (unsigned i = 0; i < 2 * BVarBindList::s_growBy; ++i)
                list.Append(MakeOid("1.3.7.1"));
            return 5;
        }
    };
    Lengthener lengthener("1.3.9");
    handler.RegisterSubtreeHandler(&lengthener);
    for (bool withValue : {false, true}) {
        BVarBindList sent = RestorableList(withValue);
        sent.Append(MakeOid("1.3.9.1"));
        BVarBindList list = sent;
        Client client(handler);
        EXPECT_EQ(5, client.Query(ePduGet, list));
        EXPECT_EQ(4, client.errorIndex);
        ASSERT_EQ(4u, list.Count());
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(sent[i].Name(), list[i].Name());
            EXPECT_EQ(sent[i].Value().Syntax(), list[i].Value().Syntax());
        }
    }
    handler.UnregisterSubtreeHandler(&lengthener);
}

TEST_F(QueryGet, OtherFailuresLeaveTheListPartlyFilled)
{
    b.onGet = [](BVarBind& binding) {
        binding.Value().SetInt(4);
        return 13;
    };
    Client client(handler);
    EXPECT_EQ(13, client.Get({"1.3.5.1", "1.3.7.1"}));
    EXPECT_EQ(1, client.answer[0].Value().Int());
    EXPECT_EQ(4, client.answer[1].Value().Int());
}

} // namespace
} // namespace Test
} // namespace VLK
