#include "host/GetBulk.h"

#include "tests/support/Seed.h"

#include <gtest/gtest.h>
#include <random>
#include <vkmibh/subtree.h>

using namespace VLK;
using namespace VLK::host;

namespace {

constexpr unsigned kRows = 3;

// Columns 1.3.1 and 1.3.2 with rows 1 to kRows each; 1.3.9.x fails.
class Mib {
public:
    int calls = 0;
    unsigned asked = 0;

    FGetNextStep Step()
    {
        return [this](BVarBindList& list, int& errorIndex) {
            ++calls;
            for (int i = 0; i < static_cast<int>(list.Count()); ++i) {
                ++asked;
                EXPECT_EQ(list[i].Value().Syntax(), eAsnNull);
                if (list[i].Name().Length() > 2 && list[i].Name()[2] == 9) {
                    errorIndex = i + 1;
                    return static_cast<int>(eSnmpGenErr);
                }
                Advance(list[i]);
            }
            return static_cast<int>(eSnmpNoError);
        };
    }

private:
    static void Advance(BVarBind& binding)
    {
        for (unsigned column = 1; column <= 2; ++column) {
            for (unsigned row = 1; row <= kRows; ++row) {
                const unsigned arcs[] = {1, 3, column, row};
                BObjectIdentifier candidate(4, arcs);
                if (binding.Name() < candidate) {
                    binding.Name() = candidate;
                    binding.Value().SetInt(static_cast<int>(column * 10 + row));
                    return;
                }
            }
        }
        binding.Value().SetV2Exception(eEndOfMibView);
    }
};

BVarBindList Names(const std::vector<const char*>& names)
{
    BVarBindList list;
    for (const char* name : names)
        list.Append(BObjectIdentifier(BString(name)));
    return list;
}

struct Bulk {
    int status = 0;
    int index = 0;
    std::vector<std::string> answer;
};

Bulk Ask(Mib& mib, const std::vector<const char*>& names, int nonRepeaters, int maxRepetitions,
         unsigned maxMessage = 65507)
{
    Bulk bulk;
    std::vector<BVarBind> answer;
    BMessageBudget budget(maxMessage, 6, 1 << 24);
    bulk.status = AnswerGetBulk(mib.Step(), Names(names), nonRepeaters, maxRepetitions, budget,
                                answer, bulk.index);
    for (const BVarBind& binding : answer) {
        std::string text = binding.Name().ToString().c_str();
        bulk.answer.push_back(binding.Value().IsException() ? text + " end" : text);
    }
    return bulk;
}

using Texts = std::vector<std::string>;

// As RFC 3416 section 4.2.3 says it, one variable after the other, without a limit.
Texts AsTheStandardSays(const std::vector<const char*>& names, size_t nonRepeaters, int repetitions)
{
    Mib mib;
    const FGetNextStep step = mib.Step();
    Texts answer;
    BVarBindList last = Names(names);
    std::vector<bool> hasEnded(names.size());
    for (int repetition = 0; repetition <= repetitions; ++repetition) {
        const bool areRepeaters = repetition > 0;
        bool haveAllEnded = true;
        for (size_t i = areRepeaters ? nonRepeaters : 0;
             i < (areRepeaters ? names.size() : nonRepeaters); ++i) {
            BVarBindList one;
            one.Append(last[static_cast<int>(i)].Name());
            int index = 0;
            EXPECT_EQ(step(one, index), 0);
            hasEnded[i] = one[0].Value().IsException();
            haveAllEnded = haveAllEnded && hasEnded[i];
            last[static_cast<int>(i)].Name() = one[0].Name();
            answer.push_back(one[0].Name().ToString().c_str() +
                             std::string(hasEnded[i] ? " end" : ""));
        }
        if (areRepeaters && haveAllEnded)
            break;
    }
    return answer;
}

} // namespace

TEST(GetBulk, RepetitionsAreInterleaved)
{
    Mib mib;
    Bulk bulk = Ask(mib, {"1.3.1", "1.3.2"}, 0, 2);
    EXPECT_EQ(bulk.status, 0);
    EXPECT_EQ(bulk.answer, (Texts{"1.3.1.1", "1.3.2.1", "1.3.1.2", "1.3.2.2"}));
    EXPECT_EQ(mib.calls, 2);
}

TEST(GetBulk, NonRepeatersAreAnsweredOnceAndFirst)
{
    Mib mib;
    Bulk bulk = Ask(mib, {"1.3.1.2", "1.3.1", "1.3.2"}, 1, 2);
    EXPECT_EQ(bulk.answer, (Texts{"1.3.1.3", "1.3.1.1", "1.3.2.1", "1.3.1.2", "1.3.2.2"}));
}

TEST(GetBulk, NegativeCountsAreZero)
{
    Mib mib;
    EXPECT_EQ(Ask(mib, {"1.3.1"}, -1, 1).answer, (Texts{"1.3.1.1"}));
    EXPECT_EQ(Ask(mib, {"1.3.1"}, 0, -1).answer, Texts{});
    EXPECT_EQ(Ask(mib, {"1.3.1"}, -2147483647 - 1, -2147483647 - 1).answer, Texts{});
    EXPECT_EQ(Ask(mib, {"1.3.1"}, 0, 0).answer, Texts{});
    EXPECT_EQ(Ask(mib, {"1.3.1", "1.3.2"}, 1, -1).answer, (Texts{"1.3.1.1"}));
}

TEST(GetBulk, MoreNonRepeatersThanBindingsLeaveNoRepeaters)
{
    Mib mib;
    EXPECT_EQ(Ask(mib, {"1.3.1", "1.3.2"}, 2147483647, 5).answer, (Texts{"1.3.1.1", "1.3.2.1"}));
    EXPECT_EQ(mib.calls, 1);
}

TEST(GetBulk, AnEmptyListIsAnsweredEmpty)
{
    Mib mib;
    Bulk bulk = Ask(mib, {}, 3, 2147483647);
    EXPECT_EQ(bulk.status, 0);
    EXPECT_EQ(bulk.answer, Texts{});
    EXPECT_EQ(mib.calls, 0);
}

TEST(GetBulk, ARepetitionAtTheEndIsTheLast)
{
    Mib mib;
    EXPECT_EQ(Ask(mib, {"1.3.2.2"}, 0, 2147483647).answer, (Texts{"1.3.2.3", "1.3.2.3 end"}));
}

TEST(GetBulk, OneBindingAtTheEndStaysThereWhileTheOthersGoOn)
{
    Mib mib;
    Bulk bulk = Ask(mib, {"1.3.2.3", "1.3.2.1"}, 0, 10);
    EXPECT_EQ(bulk.answer, (Texts{"1.3.2.3 end", "1.3.2.2", "1.3.2.3 end", "1.3.2.3", "1.3.2.3 end",
                                  "1.3.2.3 end"}));
    EXPECT_EQ(mib.asked, 4u) << "what has ended is not asked again";
}

// Repeaters that end at any time, in any place, several at once.
TEST(GetBulk, AnyRequestIsAnsweredAsTheStandardSays)
{
    static const char* const kNames[] = {"1.3",     "1.3.1",   "1.3.1.2", "1.3.1.3",
                                         "1.3.2.1", "1.3.2.2", "1.3.2.3", "2.1"};
    const unsigned seed = VLK::Test::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int i = 0; i < 500 && !HasFailure(); ++i) {
        std::vector<const char*> names(random() % 9);
        for (const char*& name : names)
            name = kNames[random() % std::size(kNames)];
        const auto nonRepeaters = static_cast<int>(random() % (names.size() + 1));
        const auto repetitions = static_cast<int>(random() % 10);
        Mib mib;
        Texts wanted = AsTheStandardSays(names, static_cast<size_t>(nonRepeaters), repetitions);
        EXPECT_EQ(Ask(mib, names, nonRepeaters, repetitions).answer, wanted);
        const Texts cut = Ask(mib, names, nonRepeaters, repetitions, 60 + random() % 300).answer;
        ASSERT_LE(cut.size(), wanted.size());
        wanted.resize(cut.size());
        EXPECT_EQ(cut, wanted);
    }
}

TEST(GetBulk, AFullMessageEndsTheWorkToo)
{
    Mib mib;
    Bulk whole = Ask(mib, {"1.3", "1.3", "1.3"}, 0, 6);
    EXPECT_EQ(whole.answer.size(), 18u);
    Mib small;
    Bulk cut = Ask(small, {"1.3", "1.3", "1.3"}, 0, 6, 120);
    EXPECT_EQ(cut.status, 0);
    ASSERT_LT(cut.answer.size(), 18u);
    ASSERT_GT(cut.answer.size(), 0u);
    whole.answer.resize(cut.answer.size());
    EXPECT_EQ(cut.answer, whole.answer);
    EXPECT_LT(small.calls, mib.calls);
}

TEST(GetBulk, NonRepeatersAreCutToo)
{
    Mib mib;
    Bulk cut = Ask(mib, {"1.3", "1.3", "1.3", "1.3", "1.3", "1.3", "1.3", "1.3"}, 7, 1, 80);
    EXPECT_EQ(cut.status, 0);
    EXPECT_LT(cut.answer.size(), 7u);
    EXPECT_EQ(mib.calls, 1);
}

TEST(GetBulk, AFailureCarriesThePlaceInTheRequest)
{
    Mib mib;
    Bulk single = Ask(mib, {"1.3.1", "1.3.9"}, 2, 1);
    EXPECT_EQ(single.status, eSnmpGenErr);
    EXPECT_EQ(single.index, 2);
    // The second repeater has ended when the third fails.
    Bulk repeated = Ask(mib, {"1.3.1", "1.3.1", "1.3.2.3", "1.3.9"}, 1, 3);
    EXPECT_EQ(repeated.status, eSnmpGenErr);
    EXPECT_EQ(repeated.index, 4);
}

TEST(GetBulk, AFailureBehindAnEndedRepeaterIsNotShifted)
{
    int calls = 0;
    FGetNextStep step = [&](BVarBindList& list, int& errorIndex) {
        if (++calls == 1) {
            list[0].Value().SetV2Exception(eEndOfMibView);
            list[1].Value().SetInt(1);
            return static_cast<int>(eSnmpNoError);
        }
        errorIndex = 1;
        return static_cast<int>(eSnmpGenErr);
    };
    std::vector<BVarBind> answer;
    BMessageBudget budget(65507, 6, 1 << 24);
    int index = 0;
    EXPECT_EQ(AnswerGetBulk(step, Names({"1.3.1", "1.3.2"}), 0, 5, budget, answer, index),
              eSnmpGenErr);
    EXPECT_EQ(index, 2);
}
