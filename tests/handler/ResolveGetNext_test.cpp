// The successor search, step by step.
#include "tests/support/FakeAccess.h"
#include "tests/support/ListHandler.h"
#include "tests/support/Requests.h"

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

// Opens the steps of the search.
class Opened : public BMibHandler {
public:
    using BMibHandler::BMibHandler;
    using BMibHandler::FindNextSubtreeHandlerNode;
    using BMibHandler::IsEndOfMib;
    using BMibHandler::ResolveGetNext;
    using BMibHandler::ResolveGetNextStartingFromRegion;
};

class ResolveGetNext : public ::testing::Test {
protected:
    ResolveGetNext() : handler(&tree, &access) {}

    void Register(ListHandler& module) { ASSERT_TRUE(handler.RegisterSubtreeHandler(&module)); }
    BMibNode* NodeOf(const char* oid) { return tree.FindNode(MakeOid(oid)); }
    int Ask(const char* name, bool isV1 = false)
    {
        binding = BVarBind(MakeOid(name));
        return handler.ResolveGetNext(1, isV1, security, context, binding);
    }
    std::string Answer() const
    {
        return binding.Value().Syntax() == eEndOfMibView ? "end after " + TextOf(binding.Name())
                                                         : TextOf(binding.Name());
    }
    // A module that fails on its way, with the name moved to `at`.
    static std::function<int(BVarBind&)> FailAt(const char* at, int status)
    {
        return [at, status](BVarBind& asked) {
            asked.Set(MakeOid(at));
            return status;
        };
    }

    BMibTree tree;
    FakeAccess access;
    Opened handler;
    BVarBind binding;
    BSecurityParams security;
    BString context;
};

TEST_F(ResolveGetNext, FindNextGoesUpToTheNearestHandler)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1.1.7");
    Register(outer);
    Register(inner);
    EXPECT_EQ(NodeOf("1.3.5"), handler.FindNextSubtreeHandlerNode(NodeOf("1.3.5.1.1.7"), true));
    EXPECT_EQ(NodeOf("1.3.5"), handler.FindNextSubtreeHandlerNode(NodeOf("1.3.5.1"), true));
    EXPECT_EQ(nullptr, handler.FindNextSubtreeHandlerNode(NodeOf("1.3.5"), true));
    EXPECT_EQ(nullptr, handler.FindNextSubtreeHandlerNode(nullptr, true));
}

TEST_F(ResolveGetNext, FindNextGoesOnInPreOrder)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1.1.7");
    ListHandler after("1.3.7");
    Register(outer);
    Register(inner);
    Register(after);
    EXPECT_EQ(NodeOf("1.3.5.1.1.7"), handler.FindNextSubtreeHandlerNode(NodeOf("1.3.5"), false));
    EXPECT_EQ(NodeOf("1.3.7"), handler.FindNextSubtreeHandlerNode(NodeOf("1.3.5.1.1.7"), false));
    EXPECT_EQ(nullptr, handler.FindNextSubtreeHandlerNode(NodeOf("1.3.7"), false));
    EXPECT_EQ(nullptr, handler.FindNextSubtreeHandlerNode(nullptr, false));
}

TEST_F(ResolveGetNext, IsEndOfMibLooksAtTheLastArcAtEqualLengthOnly)
{
    BVarBind answer(MakeOid("1.3.5"));
    EXPECT_FALSE(handler.IsEndOfMib(answer, MakeOid("1.3.5")));
    EXPECT_TRUE(handler.IsEndOfMib(answer, MakeOid("1.3.4")));
    EXPECT_FALSE(handler.IsEndOfMib(answer, MakeOid("1.3.6")));
    EXPECT_FALSE(handler.IsEndOfMib(answer, MakeOid("1.3")));
    EXPECT_FALSE(handler.IsEndOfMib(answer, MakeOid("1.3.4.1")));
    // CONTRACT: the arcs before the last one are not compared.
    EXPECT_FALSE(handler.IsEndOfMib(BVarBind(MakeOid("1.9.5")), MakeOid("1.3.5")));
    EXPECT_TRUE(handler.IsEndOfMib(BVarBind(MakeOid("0.0.6")), MakeOid("1.3.5")));
    answer.Value().SetV2Exception(eEndOfMibView);
    EXPECT_TRUE(handler.IsEndOfMib(answer, MakeOid("1.3.9.9")));
    EXPECT_FALSE(handler.IsEndOfMib(BVarBind(), BObjectIdentifier()));
}

TEST_F(ResolveGetNext, IsEndOfMibDoesNotWrap)
{
    EXPECT_FALSE(handler.IsEndOfMib(BVarBind(MakeOid("1.3.0")), MakeOid("1.3.4294967295")));
    EXPECT_FALSE(
        handler.IsEndOfMib(BVarBind(MakeOid("1.3.4294967295")), MakeOid("1.3.4294967295")));
    EXPECT_TRUE(handler.IsEndOfMib(BVarBind(MakeOid("1.3.4294967295")), MakeOid("1.3.0")));
}

TEST_F(ResolveGetNext, FromNoRegionIsTheEnd)
{
    BMibNode* node = nullptr;
    binding = BVarBind(MakeOid("1.3"));
    EXPECT_EQ(0, handler.ResolveGetNextStartingFromRegion(1, false, security, context, node,
                                                          binding, false));
    EXPECT_EQ(eEndOfMibView, binding.Value().Syntax());
}

TEST_F(ResolveGetNext, FromARegionTheCursorStopsWhereTheAnswerIs)
{
    ListHandler empty("1.3.5");
    ListHandler full("1.3.7");
    full.Add("1.3.7.1", 7);
    Register(empty);
    Register(full);
    BMibNode* node = NodeOf("1.3.5");
    binding = BVarBind(MakeOid("1.3.5.2"));
    EXPECT_EQ(0, handler.ResolveGetNextStartingFromRegion(1, false, security, context, node,
                                                          binding, false));
    EXPECT_EQ(NodeOf("1.3.7"), node);
    EXPECT_EQ("1.3.7.1", Answer());
    EXPECT_EQ((std::vector<std::string>{"1.3.5.2"}), full.asked);
}

TEST_F(ResolveGetNext, FromARegionUpwardAsksOnlyTheRegionsAround)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    ListHandler after("1.3.7");
    after.Add("1.3.7.1", 1);
    Register(outer);
    Register(inner);
    Register(after);
    BMibNode* node = NodeOf("1.3.5.1");
    binding = BVarBind(MakeOid("1.3.5.1"));
    EXPECT_EQ(0, handler.ResolveGetNextStartingFromRegion(1, false, security, context, node,
                                                          binding, true));
    EXPECT_EQ(nullptr, node);
    EXPECT_EQ(eEndOfMibView, binding.Value().Syntax());
    EXPECT_TRUE(after.asked.empty());
}

TEST_F(ResolveGetNext, ErrorsOtherThanNoSuchNameComeBackAtOnce)
{
    ListHandler failing("1.3.5");
    ListHandler after("1.3.7");
    after.Add("1.3.7.1", 1);
    failing.onGetNext = [](BVarBind&) { return 13; };
    Register(failing);
    Register(after);
    EXPECT_EQ(13, Ask("1.3.5"));
    EXPECT_EQ("1.3.5", TextOf(binding.Name()));
    EXPECT_EQ(eAsnNull, binding.Value().Syntax());
    EXPECT_TRUE(after.asked.empty());
}

TEST_F(ResolveGetNext, EverySignOfAnEmptyRegionLeadsToTheNext)
{
    ListHandler first("1.3.5");
    ListHandler second("1.3.7");
    second.Add("1.3.7.1", 1);
    Register(first);
    Register(second);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.7.1", Answer()) << "status 2";
    for (ESnmpException sign : {eNoSuchObject, eNoSuchInstance, eEndOfMibView}) {
        first.onGetNext = [sign](BVarBind& asked) {
            asked.Value().SetV2Exception(sign);
            return 0;
        };
        EXPECT_EQ(0, Ask("1.3.5"));
        EXPECT_EQ("1.3.7.1", Answer()) << sign;
    }
    first.onGetNext = [](BVarBind& asked) {
        asked.Set(MakeOid("1.3.6"));
        asked.Value().SetInt(6);
        return 0;
    };
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.7.1", Answer()) << "an answer behind the region";
    EXPECT_EQ("1.3.6", second.asked.back());
}

TEST_F(ResolveGetNext, ALongerAnswerBehindTheRegionCounts)
{
    ListHandler wide("1.3.5");
    wide.Add("1.3.6.1", 61);
    Register(wide);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.6.1", Answer());
}

TEST_F(ResolveGetNext, BeforeTheFirstRegionAnswersItsFirstInstance)
{
    ListHandler module("1.3.5");
    module.Add("1.3.5.1", 1);
    Register(module);
    EXPECT_EQ(0, Ask("0"));
    EXPECT_EQ("1.3.5.1", Answer());
    EXPECT_EQ(0, Ask("1"));
    EXPECT_EQ("1.3.5.1", Answer());
}

TEST_F(ResolveGetNext, WithoutAStartIsTheEnd)
{
    ListHandler module("1.3.5");
    Register(module);
    EXPECT_EQ(0, Ask("2"));
    EXPECT_EQ("end after 2", Answer());
    EXPECT_EQ(2, Ask("2", true));
    EXPECT_EQ(eAsnNull, binding.Value().Syntax());
    EXPECT_EQ(0, Ask(""));
    EXPECT_EQ("end after ", Answer());
}

TEST_F(ResolveGetNext, BehindTheLastRegionTheEnclosingOneIsAsked)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.2.0", 52);
    inner.Add("1.3.5.1.1", 511);
    Register(outer);
    Register(inner);
    EXPECT_EQ(0, Ask("1.3.5.1.1"));
    EXPECT_EQ("1.3.5.2.0", Answer());
    EXPECT_EQ(0, Ask("1.3.5.2.0"));
    EXPECT_EQ("end after 1.3.5.2.0", Answer());
}

TEST_F(ResolveGetNext, BehindTheLastRegionAnErrorOfTheEnclosingOneIsTheResult)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.onGetNext = FailAt("1.3.5.4", 13);
    Register(outer);
    Register(inner);
    EXPECT_EQ(13, Ask("1.3.5.1.1"));
    EXPECT_EQ("1.3.5.1.1", TextOf(binding.Name()));
}

TEST_F(ResolveGetNext, TheEnclosingRegionMayHoldTheSmallerInstance)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    ListHandler after("1.3.7");
    outer.Add("1.3.5.3", 53);
    after.Add("1.3.7.1", 71);
    Register(outer);
    Register(inner);
    Register(after);
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.5.3", Answer());
}

TEST_F(ResolveGetNext, TheNextRegionMayHoldTheSmallerInstance)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.3", 53);
    inner.Add("1.3.5.1.1", 511);
    Register(outer);
    Register(inner);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.1.1", Answer());
    EXPECT_EQ(511, binding.Value().Int());
    EXPECT_EQ(0, Ask("1.3.5.1.1"));
    EXPECT_EQ("1.3.5.3", Answer());
}

TEST_F(ResolveGetNext, ANextRegionBehindTheCandidateIsNotAsked)
{
    ListHandler first("1.3.5");
    ListHandler second("1.3.7");
    first.Add("1.3.5.1", 51);
    second.Add("1.3.7.1", 71);
    Register(first);
    Register(second);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_TRUE(second.asked.empty());
}

TEST_F(ResolveGetNext, ANextRegionThatFindsNothingIsNoCandidate)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.3", 53);
    Register(outer);
    Register(inner);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.3", Answer());
    EXPECT_EQ(53, binding.Value().Int());
}

TEST_F(ResolveGetNext, OfTwoClaimsToOneInstanceTheDeeperRegionWins)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.1.1", 1);
    inner.Add("1.3.5.1.1", 2);
    Register(outer);
    Register(inner);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ(2, binding.Value().Int());
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ(2, binding.Value().Int());
}

TEST_F(ResolveGetNext, ANextRegionThatBeginsAtTheCandidateIsAsked)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.1", 1);
    inner.Add("1.3.5.1", 2);
    Register(outer);
    Register(inner);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.1", Answer());
    EXPECT_EQ(2, binding.Value().Int());
}

TEST_F(ResolveGetNext, AfterTheEnclosingRegionTheSearchGoesOnFromTheStart)
{
    ListHandler outer("1.3.5");
    ListHandler start("1.3.5.1");
    ListHandler empty("1.3.5.2");
    ListHandler after("1.3.7");
    outer.Add("1.3.5.3", 53);
    after.Add("1.3.7.1", 71);
    Register(outer);
    Register(start);
    Register(empty);
    Register(after);
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.5.3", Answer());
    EXPECT_EQ((std::vector<std::string>{"1.3.5.1", "1.3.5.1"}), empty.asked);
}

TEST_F(ResolveGetNext, OfTwoClaimsAtEqualDepthTheLaterRegionWins)
{
    ListHandler first("1.3.5");
    ListHandler second("1.3.7");
    first.Add("1.3.7.1", 1);
    second.Add("1.3.7.1", 2);
    Register(first);
    Register(second);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ(2, binding.Value().Int());
}

TEST_F(ResolveGetNext, AClaimOfAShorterLaterRegionLoses)
{
    ListHandler first("1.3.5.1");
    ListHandler second("1.3.7");
    first.Add("1.3.7.1", 1);
    second.Add("1.3.7.1", 2);
    Register(first);
    Register(second);
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ(1, binding.Value().Int());
}

TEST_F(ResolveGetNext, AnErrorOfTheEnclosingRegionBeforeTheCandidateIsTheResult)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    ListHandler after("1.3.7");
    after.Add("1.3.7.1", 71);
    outer.onGetNext = FailAt("1.3.5.4", 13);
    Register(outer);
    Register(inner);
    Register(after);
    EXPECT_EQ(13, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.5.1", TextOf(binding.Name()));
    outer.onGetNext = FailAt("1.3.8.4", 13);
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.7.1", Answer()) << "an error behind the candidate does not matter";
    outer.onGetNext = [](BVarBind&) { return 13; };
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.7.1", Answer()) << "nor one that leaves the name alone";
}

TEST_F(ResolveGetNext, AnErrorOfTheNextRegionBeforeTheCandidateIsTheResult)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.3", 53);
    inner.onGetNext = FailAt("1.3.5.1.2", 13);
    Register(outer);
    Register(inner);
    EXPECT_EQ(13, Ask("1.3.5"));
    EXPECT_EQ("1.3.5", TextOf(binding.Name()));
    inner.onGetNext = FailAt("1.3.5.4", 13);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.3", Answer());
}

TEST_F(ResolveGetNext, AnErrorOfTheStartGivesWayToASmallerInstanceOfTheNext)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.onGetNext = FailAt("1.3.5.3", 13);
    inner.Add("1.3.5.1.1", 511);
    Register(outer);
    Register(inner);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.1.1", Answer());
    inner.instances.clear();
    EXPECT_EQ(13, Ask("1.3.5"));
    outer.onGetNext = FailAt("1.3.5.0", 13);
    inner.Add("1.3.5.1.1", 511);
    EXPECT_EQ(13, Ask("1.3.5")) << "the error comes before the next region";
}

// CONTRACT: the enclosing region's instance replaces a candidate, not its error.
TEST_F(ResolveGetNext, AnErrorOfTheStartStaysWhenTheEnclosingRegionComesFirst)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.1.3", 5);
    inner.onGetNext = FailAt("1.3.5.1.7", 13);
    Register(outer);
    Register(inner);
    EXPECT_EQ(13, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.5.1", TextOf(binding.Name()));
}

// CONTRACT: of three regions inside one another, the search that finds the
// middle one does not look into the innermost.
TEST_F(ResolveGetNext, ThirdNestedRegionIsPassedOverFromTheOutermost)
{
    ListHandler outer("1.3.5");
    ListHandler middle("1.3.5.1");
    ListHandler innermost("1.3.5.1.1");
    outer.Add("1.3.5.3", 1);
    middle.Add("1.3.5.1.2", 2);
    innermost.Add("1.3.5.1.1.1", 3);
    Register(outer);
    Register(middle);
    Register(innermost);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.1.2", Answer());
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ("1.3.5.1.1.1", Answer()) << "asked from the middle it is found";
}

// CONTRACT: when a region ends, the next one is asked from the name that the
// search has come to, which is that of the last instance stepped over.
TEST_F(ResolveGetNext, ARegionEndingAfterARefusedInstanceHidesNestedOnesBeforeIt)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.3", 53);
    inner.Add("1.3.5.1.1", 511);
    Register(outer);
    Register(inner);
    access.refused = {"1.3.5.3"};
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("end after 1.3.5", Answer());
    EXPECT_EQ("1.3.5.3", inner.asked.back());
}

TEST_F(ResolveGetNext, RefusedInstancesAreSteppedOver)
{
    ListHandler module("1.3.5");
    for (unsigned i = 1; i <= 4; ++i)
        module.Add(Arcs{1, 3, 5, i}, int(i));
    Register(module);
    access.refused = {"1.3.5.1", "1.3.5.2"};
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.3", Answer());
    EXPECT_EQ((std::vector<std::string>{"1.3.5", "1.3.5.1", "1.3.5.2"}), module.asked);
    EXPECT_EQ(std::set<int>{eAccessRead}, access.kinds);
}

TEST_F(ResolveGetNext, TheNameOfARefusedInstanceIsNeverReported)
{
    ListHandler outer("1.3.5");
    ListHandler inner("1.3.5.1");
    outer.Add("1.3.5.3", 53);
    inner.Add("1.3.5.1.1", 511);
    Register(outer);
    Register(inner);
    access.refused = {"1.3.5.3", "1.3.5.1.1"};
    EXPECT_EQ(0, Ask("1.3.5.1"));
    EXPECT_EQ("end after 1.3.5.1", Answer());
    EXPECT_EQ(0, Ask("1.3.5.2"));
    EXPECT_EQ("end after 1.3.5.2", Answer());
}

TEST_F(ResolveGetNext, V1StepsOverCounter64)
{
    ListHandler module("1.3.5");
    module.AddCounter64("1.3.5.1");
    module.Add("1.3.5.2", 2);
    Register(module);
    EXPECT_EQ(0, Ask("1.3.5", true));
    EXPECT_EQ("1.3.5.2", Answer());
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.5.1", Answer());
}

TEST_F(ResolveGetNext, CandidatesStartWithoutAValue)
{
    ListHandler module("1.3.5");
    std::vector<unsigned> seen;
    module.Add("1.3.5.1", 1);
    module.Add("1.3.5.2", 2);
    module.onGetNext = [&seen](BVarBind& asked) {
        seen.push_back(asked.Value().Syntax());
        return ListHandler::kGoOn;
    };
    Register(module);
    access.refused = {"1.3.5.1"};
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ((std::vector<unsigned>{eAsnNull, eAsnNull}), seen);
}

// A module that does not get ahead would keep the agent here for ever.
TEST_F(ResolveGetNext, ARegionThatAnswersItsQuestionIsExhausted)
{
    ListHandler stuck("1.3.5");
    ListHandler after("1.3.7");
    after.Add("1.3.7.1", 71);
    stuck.onGetNext = [](BVarBind& asked) {
        asked.Value().SetInt(1);
        return 0;
    };
    Register(stuck);
    Register(after);
    EXPECT_EQ(0, Ask("1.3.5.4"));
    EXPECT_EQ("1.3.7.1", Answer());
    EXPECT_EQ(1u, stuck.asked.size());
}

TEST_F(ResolveGetNext, ARegionThatGoesBackIsExhausted)
{
    ListHandler outer("1.3.5");
    ListHandler back("1.3.5.2");
    outer.Add("1.3.5.1", 1);
    outer.Add("1.3.5.3", 3);
    back.onGetNext = [](BVarBind& asked) {
        asked.Set(MakeOid("1.3.5"));
        asked.Value().SetInt(1);
        return 0;
    };
    Register(outer);
    Register(back);
    EXPECT_EQ(0, Ask("1.3.5.2.1"));
    EXPECT_EQ("1.3.5.3", Answer()) << "the search goes on from where it was";
}

TEST_F(ResolveGetNext, ARegionThatSwingsBetweenRefusedInstancesIsLeft)
{
    ListHandler swinging("1.3.5");
    ListHandler after("1.3.7");
    after.Add("1.3.7.1", 71);
    swinging.onGetNext = [](BVarBind& asked) {
        asked.Set(MakeOid(TextOf(asked.Name()) == "1.3.5.2" ? "1.3.5.1" : "1.3.5.2"));
        asked.Value().SetInt(1);
        return 0;
    };
    Register(swinging);
    Register(after);
    access.refused = {"1.3.5.1", "1.3.5.2"};
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.7.1", Answer());
    EXPECT_EQ(2u, swinging.asked.size());
}

TEST_F(ResolveGetNext, ARangeIsWalkedThroughAllItsInstances)
{
    ListHandler range("1.3.8.1.5", 4, 3);
    for (unsigned i = 1; i <= 3; ++i)
        range.Add(Arcs{1, 3, 8, i, 5, 0}, int(i));
    Register(range);
    std::vector<std::string> walk;
    for (std::string at = "1.3.8"; Ask(at.c_str()) == 0 && !binding.Value().IsException();) {
        at = Answer();
        walk.push_back(at);
    }
    EXPECT_EQ((std::vector<std::string>{"1.3.8.1.5.0", "1.3.8.2.5.0", "1.3.8.3.5.0"}), walk);
}

TEST_F(ResolveGetNext, QueryReportsThePositionOfTheFirstFailure)
{
    ListHandler module("1.3.5");
    module.Add("1.3.5.1", 1);
    Register(module);
    Client v1(handler, kV1);
    EXPECT_EQ(2, v1.GetNext({"1.3.5", "1.3.5.1", "1.3.5"}));
    EXPECT_EQ(2, v1.errorIndex);
    EXPECT_EQ("1.3.5.1", v1.NameAt(0));
    EXPECT_EQ("1.3.5.1", v1.NameAt(1));
    Client v2(handler);
    EXPECT_EQ(0, v2.GetNext({"1.3.5", "1.3.5.1", "1.3.5"}));
    EXPECT_EQ(eEndOfMibView, v2.SyntaxAt(1));
    EXPECT_EQ("1.3.5.1", v2.NameAt(2));
    module.onGetNext = [](BVarBind& asked) { return asked.Name().Length() == 3 ? -1 : 13; };
    EXPECT_EQ(13, v2.GetNext({"1.3.5", "1.3.5.1", "1.3.5"}));
    EXPECT_EQ(2, v2.errorIndex);
}

} // namespace
} // namespace Test
} // namespace VLK
