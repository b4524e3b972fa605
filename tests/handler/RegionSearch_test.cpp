// The search through regions: where one ends, what is stepped over, and modules
// that do not get ahead.
#include "tests/support/SearchTest.h"

namespace VLK {
namespace Test {
namespace {

class RegionSearch : public SearchTest {};

TEST_F(RegionSearch, FindNextGoesUpToTheNearestHandler)
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

TEST_F(RegionSearch, FindNextGoesOnInPreOrder)
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

TEST_F(RegionSearch, IsEndOfMibLooksAtTheLastArcAtEqualLengthOnly)
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

TEST_F(RegionSearch, IsEndOfMibDoesNotWrap)
{
    EXPECT_FALSE(handler.IsEndOfMib(BVarBind(MakeOid("1.3.0")), MakeOid("1.3.4294967295")));
    EXPECT_FALSE(
        handler.IsEndOfMib(BVarBind(MakeOid("1.3.4294967295")), MakeOid("1.3.4294967295")));
    EXPECT_TRUE(handler.IsEndOfMib(BVarBind(MakeOid("1.3.4294967295")), MakeOid("1.3.0")));
}

TEST_F(RegionSearch, FromNoRegionIsTheEnd)
{
    BMibNode* node = nullptr;
    binding = BVarBind(MakeOid("1.3"));
    EXPECT_EQ(0, handler.ResolveGetNextStartingFromRegion(1, false, security, context, node,
                                                          binding, false));
    EXPECT_EQ(eEndOfMibView, binding.Value().Syntax());
}

TEST_F(RegionSearch, FromARegionTheCursorStopsWhereTheAnswerIs)
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

TEST_F(RegionSearch, FromARegionUpwardAsksOnlyTheRegionsAround)
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

TEST_F(RegionSearch, ErrorsOtherThanNoSuchNameComeBackAtOnce)
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

TEST_F(RegionSearch, EverySignOfAnEmptyRegionLeadsToTheNext)
{
    ListHandler first("1.3.5");
    ListHandler second("1.3.7");
    second.Add("1.3.7.1", 1);
    Register(first);
    Register(second);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.7.1", Answer()) << "status 2";
    for (ESnmpException sign : {eNoSuchObject, eNoSuchInstance, eEndOfMibView})
        for (const char* movedTo : {"1.3.5", "1.3.5.9"}) {
            first.onGetNext = [=](BVarBind& asked) {
                asked.Set(MakeOid(movedTo));
                asked.Value().SetV2Exception(sign);
                return 0;
            };
            EXPECT_EQ(0, Ask("1.3.5"));
            EXPECT_EQ("1.3.7.1", Answer()) << sign << ", at " << movedTo;
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

TEST_F(RegionSearch, ALongerAnswerBehindTheRegionCounts)
{
    ListHandler wide("1.3.5");
    wide.Add("1.3.6.1", 61);
    Register(wide);
    EXPECT_EQ(0, Ask("1.3.5"));
    EXPECT_EQ("1.3.6.1", Answer());
}

// CONTRACT: when a region ends, the next one is asked from the name that the
// search has come to, which is that of the last instance stepped over.
TEST_F(RegionSearch, ARegionEndingAfterARefusedInstanceHidesNestedOnesBeforeIt)
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

TEST_F(RegionSearch, RefusedInstancesAreSteppedOver)
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

TEST_F(RegionSearch, TheNameOfARefusedInstanceIsNeverReported)
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

TEST_F(RegionSearch, V1StepsOverCounter64)
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

TEST_F(RegionSearch, CandidatesStartWithoutAValue)
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
TEST_F(RegionSearch, ARegionThatAnswersItsQuestionIsExhausted)
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

TEST_F(RegionSearch, ARegionThatGoesBackIsExhausted)
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

TEST_F(RegionSearch, ARegionThatSwingsBetweenRefusedInstancesIsLeft)
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

TEST_F(RegionSearch, ARangeIsWalkedThroughAllItsInstances)
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

} // namespace
} // namespace Test
} // namespace VLK
