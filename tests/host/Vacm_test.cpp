#include "host/access/Vacm.h"

#include "tests/support/Oids.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>

using namespace VLK;
using namespace VLK::host;
using VLK::Test::MakeOid;

namespace {

constexpr const char* kObject = "1.3.6.1.2.1.1.4.0";

BSecurityParams Security(int model, const char* name, int level = eNoAuthNoPriv)
{
    BSecurityParams security;
    security.securityModel = model;
    security.securityName = BString(name);
    security.securityLevel = level;
    return security;
}

SAccess Access(const char* context, bool isPrefix, ESecurityModel model, ESecurityLevel level,
               const std::string& view)
{
    return {context, isPrefix, model, level, {view, view, view}};
}

void AddRow(BFilterTable& views, const std::string& view, const char* subtree,
            EFilterType type = eFilterIncluded, ERowStatus status = eRowActive)
{
    EXPECT_TRUE(views.Insert(BString(view.c_str()), MakeOid(subtree), BOctetString(), type,
                             eStorageVolatile, status, false));
}

std::string ViewOf(const SVacmDecision& decision)
{
    return decision.view ? decision.view->c_str() : "none";
}

// One group with the members `bob` of SNMPv1, SNMPv2c and USM.
class Vacm : public testing::Test {
protected:
    SVacmDecision Decide(int model, const char* context = "", int level = eNoAuthNoPriv,
                         EViewType type = eViewRead, const char* object = kObject)
    {
        made = std::make_unique<BVacm>(groups, contexts, views);
        return made->Decide(Security(model, "bob", level), type, BString(context), MakeOid(object));
    }
    EVacmAnswer Answer(int model, const char* context = "", int level = eNoAuthNoPriv)
    {
        return Decide(model, context, level).answer;
    }

    BFilterTable views{nullptr};
    std::vector<std::string> contexts{"a", "ab", "abc"};
    std::vector<SGroup> groups{
        {"g", {{eModelV1, "bob"}, {eModelV2c, "bob"}, {eModelUsm, "bob"}}, {}}};
    std::vector<SAccess>& access = groups[0].access;
    std::unique_ptr<BVacm> made; // what decisions point into
};

} // namespace

TEST_F(Vacm, AnUnknownContextIsSaidBeforeAnythingElse)
{
    EXPECT_EQ(Answer(eModelV1, "elsewhere"), eVacmNoSuchContext);
    EXPECT_EQ(BVacm({}, {}, views)
                  .Decide(Security(eModelV1, "nobody"), eViewRead, BString("a"), MakeOid(kObject))
                  .answer,
              eVacmNoSuchContext);
    EXPECT_EQ(Answer(eModelV1, ""), eVacmNoAccessEntry) << "there is always the default context";
    EXPECT_EQ(Answer(eModelV1, "ab"), eVacmNoAccessEntry);
    EXPECT_EQ(Answer(eModelV1, "abcd"), eVacmNoSuchContext);
}

TEST_F(Vacm, GroupsHoldNamesTogetherWithTheirModel)
{
    groups = {{"first", {{eModelV1, "bob"}}, {}}, {"second", {{eModelV2c, "bob"}}, {}}};
    auto groupOf = [&](int model, const char* name) -> std::string {
        BVacm vacm(groups, {}, views);
        SVacmDecision decision = vacm.FindView(Security(model, name), eViewRead, BString());
        EXPECT_EQ(decision.answer == eVacmNoGroupName, decision.group == nullptr);
        return decision.group ? *decision.group : "none";
    };
    EXPECT_EQ(groupOf(eModelV1, "bob"), "first");
    EXPECT_EQ(groupOf(eModelV2c, "bob"), "second");
    EXPECT_EQ(groupOf(eModelUsm, "bob"), "none");
    EXPECT_EQ(groupOf(eModelV1, "alice"), "none");
    EXPECT_EQ(groupOf(eModelV1, "Bob"), "none");
    EXPECT_EQ(groupOf(eModelV1, "bo"), "none");
    EXPECT_EQ(groupOf(eModelV1, ""), "none");
    EXPECT_EQ(groupOf(eModelAny, "bob"), "none");
}

TEST_F(Vacm, OfManyGroupsWithTheSameMemberTheFirstCounts)
{
    groups.clear();
    for (int i = 0; i < 100; ++i)
        groups.push_back({"g" + std::to_string(i), {{eModelV2c, "bob"}, {eModelV1, "bob"}}, {}});
    for (int model : {eModelV1, eModelV2c}) {
        SVacmDecision decision = Decide(model);
        ASSERT_NE(decision.group, nullptr);
        EXPECT_EQ(*decision.group, "g0");
    }
}

TEST_F(Vacm, NamesAreComparedAsBytesInFullLength)
{
    groups[0].members = {{eModelV1, std::string("bob\0x", 5)}};
    access = {Access("", false, eModelAny, eNoAuthNoPriv, "v")};
    AddRow(views, "v", "1.3");
    EXPECT_EQ(Answer(eModelV1), eVacmNoGroupName);
}

TEST_F(Vacm, APrefixThatIsLongerThanTheContextDoesNotFit)
{
    access = {{std::string("a\0", 2), true, eModelAny, eNoAuthNoPriv, {"v", "", ""}}};
    AddRow(views, "v", "1.3");
    EXPECT_EQ(Answer(eModelV1, "a"), eVacmNoAccessEntry) << "not by what lies behind it";
    access[0].context = "a";
    EXPECT_EQ(Answer(eModelV1, "a"), eVacmAllowed);
}

TEST_F(Vacm, AnEntryFitsByContextModelAndLevel)
{
    struct SCase {
        SAccess entry;
        int model;
        const char* context;
        int level;
        bool fits;
    };
    const SCase cases[] = {
        {Access("", false, eModelAny, eNoAuthNoPriv, "v"), 1, "", 1, true},
        {Access("", false, eModelAny, eNoAuthNoPriv, "v"), 3, "", 3, true},
        {Access("", false, eModelAny, eNoAuthNoPriv, "v"), 1, "a", 1, false},
        {Access("", true, eModelAny, eNoAuthNoPriv, "v"), 1, "a", 1, true},
        {Access("a", false, eModelAny, eNoAuthNoPriv, "v"), 1, "a", 1, true},
        {Access("a", false, eModelAny, eNoAuthNoPriv, "v"), 1, "ab", 1, false},
        {Access("a", true, eModelAny, eNoAuthNoPriv, "v"), 1, "abc", 1, true},
        {Access("a", true, eModelAny, eNoAuthNoPriv, "v"), 1, "a", 1, true},
        {Access("a", true, eModelAny, eNoAuthNoPriv, "v"), 1, "", 1, false},
        {Access("ab", true, eModelAny, eNoAuthNoPriv, "v"), 1, "a", 1, false},
        {Access("", false, eModelV1, eNoAuthNoPriv, "v"), 1, "", 1, true},
        {Access("", false, eModelV1, eNoAuthNoPriv, "v"), 2, "", 1, false},
        {Access("", false, eModelUsm, eNoAuthNoPriv, "v"), 3, "", 1, true},
        {Access("", false, eModelAny, eAuthNoPriv, "v"), 1, "", 1, false},
        {Access("", false, eModelAny, eAuthNoPriv, "v"), 3, "", 2, true},
        {Access("", false, eModelAny, eAuthNoPriv, "v"), 3, "", 3, true},
        {Access("", false, eModelAny, eAuthPriv, "v"), 3, "", 2, false},
        {Access("", false, eModelAny, eAuthPriv, "v"), 3, "", 3, true},
        {Access("", false, eModelAny, eNoAuthNoPriv, "v"), 1, "", 0, false},
    };
    AddRow(views, "v", "1.3");
    for (const SCase& test : cases) {
        access = {test.entry};
        EXPECT_EQ(Answer(test.model, test.context, test.level),
                  test.fits ? eVacmAllowed : eVacmNoAccessEntry)
            << "entry " << test.entry.context << "/" << test.entry.isPrefix << "/"
            << test.entry.model << "/" << test.entry.level << " asked with " << test.model << "/"
            << test.context << "/" << test.level;
    }
}

// RFC 3415 section 4, vacmAccessTable, step 2: what decides between two entries
// that both fit a request of SNMPv2c, context "ab", authPriv.
TEST_F(Vacm, OfSeveralEntriesTheRulesAreAskedInTheirOrder)
{
    struct SCase {
        const char* rule;
        SAccess wins;
        SAccess loses;
    };
    const SCase cases[] = {
        {"a: the model goes before any model",
         Access("ab", false, eModelV2c, eNoAuthNoPriv, "wins"),
         Access("ab", false, eModelAny, eNoAuthNoPriv, "loses")},
        {"a: even with a shorter context", Access("", true, eModelV2c, eNoAuthNoPriv, "wins"),
         Access("ab", false, eModelAny, eNoAuthNoPriv, "loses")},
        {"a: even with a lower level", Access("ab", false, eModelV2c, eNoAuthNoPriv, "wins"),
         Access("ab", false, eModelAny, eAuthPriv, "loses")},
        {"b: the very context goes before its beginning",
         Access("ab", false, eModelAny, eNoAuthNoPriv, "wins"),
         Access("a", true, eModelAny, eNoAuthNoPriv, "loses")},
        {"b: also one that is a prefix", Access("ab", true, eModelAny, eNoAuthNoPriv, "wins"),
         Access("a", true, eModelAny, eNoAuthNoPriv, "loses")},
        {"b: even with a lower level", Access("ab", true, eModelAny, eNoAuthNoPriv, "wins"),
         Access("a", true, eModelAny, eAuthPriv, "loses")},
        {"c: the longer beginning goes first", Access("a", true, eModelAny, eNoAuthNoPriv, "wins"),
         Access("", true, eModelAny, eNoAuthNoPriv, "loses")},
        {"c: even with a lower level", Access("a", true, eModelAny, eNoAuthNoPriv, "wins"),
         Access("", true, eModelAny, eAuthPriv, "loses")},
        {"d: the higher level goes first", Access("", true, eModelAny, eAuthNoPriv, "wins"),
         Access("", true, eModelAny, eNoAuthNoPriv, "loses")},
        {"d: also the highest", Access("", true, eModelAny, eAuthPriv, "wins"),
         Access("", true, eModelAny, eAuthNoPriv, "loses")},
    };
    AddRow(views, "wins", "1.3");
    AddRow(views, "loses", "1.3");
    for (const SCase& test : cases) {
        access = {test.wins, test.loses};
        EXPECT_EQ(ViewOf(Decide(eModelV2c, "ab", eAuthPriv)), "wins") << test.rule;
        access = {test.loses, test.wins};
        EXPECT_EQ(ViewOf(Decide(eModelV2c, "ab", eAuthPriv)), "wins") << test.rule;
    }
}

TEST_F(Vacm, TheSelectedEntryCountsAlsoWhenAnotherWouldShowMore)
{
    access = {Access("", false, eModelV1, eNoAuthNoPriv, "less"),
              Access("", false, eModelAny, eNoAuthNoPriv, "more")};
    AddRow(views, "less", "1.3.6.1.2.1.2");
    AddRow(views, "more", "1.3");
    EXPECT_EQ(Answer(eModelV1), eVacmNotInView);
    EXPECT_EQ(Answer(eModelV2c), eVacmAllowed);
}

TEST_F(Vacm, EachTypeOfViewIsItsOwn)
{
    access = {{"", false, eModelAny, eNoAuthNoPriv, {"r", "w", "n"}}};
    AddRow(views, "r", "1.3.6.1.2.1.1.1");
    AddRow(views, "w", "1.3.6.1.2.1.1.2");
    AddRow(views, "n", "1.3.6.1.2.1.1.3");
    const char* objects[] = {"1.3.6.1.2.1.1.1.0", "1.3.6.1.2.1.1.2.0", "1.3.6.1.2.1.1.3.0"};
    for (EViewType type : {eViewRead, eViewWrite, eViewNotify}) {
        for (int object = 0; object < 3; ++object) {
            EXPECT_EQ(Decide(eModelV1, "", eNoAuthNoPriv, type, objects[object]).answer,
                      object == type ? eVacmAllowed : eVacmNotInView);
        }
    }
}

TEST_F(Vacm, AViewWithoutANameOrWithoutActiveRowsIsNone)
{
    access = {{"", false, eModelAny, eNoAuthNoPriv, {"", "missing", "passive"}}};
    AddRow(views, "passive", "1.3", eFilterIncluded, eRowNotInService);
    for (EViewType type : {eViewRead, eViewWrite, eViewNotify}) {
        SVacmDecision decision = Decide(eModelV1, "", eNoAuthNoPriv, type);
        EXPECT_EQ(decision.answer, eVacmNoSuchView) << type;
        EXPECT_EQ(ViewOf(decision), access[0].views[type]);
        EXPECT_EQ(*decision.group, "g");
    }
}

TEST_F(Vacm, AViewWithoutANameIsNoneWhateverRowsThereAre)
{
    access = {Access("", false, eModelAny, eNoAuthNoPriv, "")};
    AddRow(views, "", "1.3");
    EXPECT_EQ(Answer(eModelV1), eVacmNoSuchView);
    BVacm vacm(groups, contexts, views);
    EXPECT_EQ(vacm.FindView(Security(1, "bob"), eViewRead, BString()).answer, eVacmNoSuchView);
}

TEST(SecurityModels, HaveTheNamesOfTheConfiguration)
{
    EXPECT_STREQ(NameOfModel(eModelAny), "any");
    EXPECT_STREQ(NameOfModel(eModelV1), "SNMPv1");
    EXPECT_STREQ(NameOfModel(eModelV2c), "SNMPv2c");
    EXPECT_STREQ(NameOfModel(eModelUsm), "USM");
    for (int model : {-1, 4, 256})
        EXPECT_STREQ(NameOfModel(model), "another model") << model;
}

TEST_F(Vacm, AViewThatIsChangedCountsAtOnce)
{
    access = {Access("", false, eModelAny, eNoAuthNoPriv, "v")};
    BVacm vacm(groups, contexts, views);
    auto answer = [&] {
        return vacm.Decide(Security(1, "bob"), eViewRead, BString(), MakeOid(kObject)).answer;
    };
    EXPECT_EQ(answer(), eVacmNoSuchView);
    AddRow(views, "v", "1.3");
    EXPECT_EQ(answer(), eVacmAllowed);
    AddRow(views, "v", "1.3.6.1.2.1.1", eFilterExcluded);
    EXPECT_EQ(answer(), eVacmNotInView);
    AddRow(views, "v", "1.3.6.1.2.1.1.4");
    EXPECT_EQ(answer(), eVacmAllowed);
    views.Clear();
    EXPECT_EQ(answer(), eVacmNoSuchView);
}

TEST_F(Vacm, FindViewAsksForNoObject)
{
    access = {{"", false, eModelAny, eNoAuthNoPriv, {"v", "", ""}}};
    BVacm vacm(groups, contexts, views);
    auto answer = [&](const char* name, EViewType type, const char* context = "") {
        return vacm.FindView(Security(1, name), type, BString(context)).answer;
    };
    EXPECT_EQ(answer("bob", eViewRead), eVacmNoSuchView);
    AddRow(views, "v", "1.3.6.1.4", eFilterExcluded);
    EXPECT_EQ(answer("bob", eViewRead), eVacmAllowed);
    EXPECT_EQ(answer("bob", eViewWrite), eVacmNoSuchView);
    EXPECT_EQ(answer("bob", eViewRead, "a"), eVacmNoAccessEntry);
    EXPECT_EQ(answer("bob", eViewRead, "z"), eVacmNoSuchContext);
    EXPECT_EQ(answer("eve", eViewRead), eVacmNoGroupName);
}

TEST_F(Vacm, AsAnAccessControlItKnowsReadAndWriteOnly)
{
    access = {{"", false, eModelAny, eNoAuthNoPriv, {"v", "", "v"}}};
    AddRow(views, "v", "1.3");
    BVacm vacm(groups, contexts, views);
    BVarBind binding(MakeOid(kObject));
    BSecurityParams security = Security(1, "bob");
    EXPECT_EQ(vacm.CheckAccess(security, eAccessRead, BString(), binding), 0);
    EXPECT_EQ(vacm.CheckAccess(security, eAccessWrite, BString(), binding), eVacmNoSuchView);
    access = {Access("", false, eModelAny, eNoAuthNoPriv, "v")};
    BVacm open(groups, contexts, views);
    EXPECT_EQ(open.CheckAccess(security, eAccessWrite, BString(), binding), 0);
    for (unsigned char kind : {0, 3, 255})
        EXPECT_NE(open.CheckAccess(security, kind, BString(), binding), 0) << int(kind);
}

namespace {

// The steps of RFC 3415 section 4, vacmAccessTable, by discarding from a set.
const SAccess* SelectNaively(const std::vector<SAccess>& all, int model, const std::string& context,
                             int level)
{
    std::vector<const SAccess*> left;
    for (const SAccess& entry : all) {
        bool sameContext = entry.context == context;
        bool prefixFits =
            entry.isPrefix && context.substr(0, entry.context.size()) == entry.context;
        bool modelFits = entry.model == model || entry.model == eModelAny;
        if ((sameContext || prefixFits) && modelFits && entry.level <= level)
            left.push_back(&entry);
    }
    auto keep = [&](auto isBetter) {
        std::vector<const SAccess*> subset;
        std::copy_if(left.begin(), left.end(), std::back_inserter(subset), isBetter);
        if (!subset.empty())
            left = subset;
    };
    keep([&](const SAccess* entry) { return entry->model == model; });
    keep([&](const SAccess* entry) { return entry->context == context; });
    size_t longest = 0;
    int highest = 0;
    for (const SAccess* entry : left)
        longest = std::max(longest, entry->context.size());
    keep([&](const SAccess* entry) { return entry->context.size() == longest; });
    for (const SAccess* entry : left)
        highest = std::max<int>(highest, entry->level);
    keep([&](const SAccess* entry) { return entry->level == highest; });
    EXPECT_LE(left.size(), 1u) << "the index of the table leaves one";
    return left.empty() ? nullptr : left[0];
}

// Entries of different indexes, each with a view of its own.
std::vector<SAccess> RandomEntries(std::mt19937& random, const std::vector<std::string>& prefixes)
{
    std::vector<SAccess> entries;
    for (const std::string& prefix : prefixes) {
        for (int model = eModelAny; model <= eModelUsm; ++model) {
            for (int level = eNoAuthNoPriv; level <= eAuthPriv; ++level) {
                if (random() % 6)
                    continue;
                std::string view = "v" + std::to_string(entries.size());
                entries.push_back(Access(prefix.c_str(), random() % 2 == 0,
                                         static_cast<ESecurityModel>(model),
                                         static_cast<ESecurityLevel>(level), view));
            }
        }
    }
    std::shuffle(entries.begin(), entries.end(), random);
    return entries;
}

} // namespace

TEST_F(Vacm, SelectsAsTheStepsOfTheStandardDo)
{
    const unsigned seed = std::random_device{}();
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    const std::vector<std::string> prefixes{"", "a", "ab", "abc", "b"};
    contexts = {"a", "ab", "abc", "abcd", "b"};
    int selected = 0;
    int none = 0;
    for (int round = 0; round < 300; ++round) {
        access = RandomEntries(random, prefixes);
        BVacm vacm(groups, contexts, views);
        for (int model = eModelV1; model <= eModelUsm; ++model) {
            for (const char* context : {"", "a", "ab", "abc", "abcd", "b"}) {
                for (int level = eNoAuthNoPriv; level <= eAuthPriv; ++level) {
                    const SAccess* expected = SelectNaively(access, model, context, level);
                    SVacmDecision decision =
                        vacm.FindView(Security(model, "bob", level), eViewRead, BString(context));
                    ++(expected ? selected : none);
                    ASSERT_EQ(ViewOf(decision), expected ? expected->views[eViewRead] : "none")
                        << "seed " << seed;
                }
            }
        }
    }
    EXPECT_GT(selected, 1000);
    EXPECT_GT(none, 1000);
}
