// The choice of a successor among the regions' candidates.
#include "tests/support/SearchTest.h"

namespace VLK {
namespace Test {
namespace {

class ResolveGetNext : public SearchTest {};

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
