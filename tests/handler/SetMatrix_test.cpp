// SETs over modules with data: every set of failing positions in all four phases,
// every pattern of runs, one SET at a time and several. What fails leaves the data
// as they were, unless the undo or the cleanup phase fails too.
#include "tests/support/Oids.h"
#include "tests/support/Seed.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <random>
#include <thread>

namespace VLK {
namespace Test {
namespace {

constexpr int kNowhere = -1;
constexpr int kLongest = 6;
constexpr char kNoModule = 'X';
constexpr int kTestStatus = eSnmpInconsistentValue, kCommitStatus = eSnmpCommitFailed,
              kUndoStatus = eSnmpUndoFailed, kCleanupStatus = eSnmpResourceUnavailable;

// One value per position of a SET, whichever module has it.
using Data = std::array<int, kLongest>;

// One SET: "AAB" has two bindings for module A and then one for B; those for X are
// nobody's. Each phase fails where it is told, or nowhere.
struct SPlan {
    std::string pattern;
    int testAt = kNowhere, commitAt = kNowhere, undoAt = kNowhere, cleanupAt = kNowhere;
    int value = 0;
    Data* data = nullptr;
    std::atomic<int>* underWay = nullptr; // SETs of the same data, between first and last call
    Data before{};
    int checked = 0;

    int Length() const { return static_cast<int>(pattern.size()); }
    int RunOf(int position) const
    {
        while (position > 0 && pattern[size_t(position) - 1] == pattern[size_t(position)])
            --position;
        return position;
    }
    int EndOfRun(int position) const
    {
        do
            ++position;
        while (position < Length() && RunOf(position) != position);
        return position;
    }
    // Where the test phase ends: a failing position, or one that is nobody's.
    int TestEnd() const
    {
        const size_t nobody = pattern.find(kNoModule);
        const int missing = nobody == std::string::npos ? Length() : static_cast<int>(nobody);
        return testAt != kNowhere && testAt < missing ? testAt : missing;
    }
    bool Tested() const { return TestEnd() == Length(); }
    // Behind the last binding that was prepared.
    int Prepared() const
    {
        const int end = TestEnd();
        return end < Length() && pattern[size_t(end)] != kNoModule ? EndOfRun(end) : end;
    }
    bool Undoes() const { return Tested() && commitAt != kNowhere; }
    // Only runs up to the failed one are undone.
    bool UndoFails() const
    {
        return Undoes() && undoAt != kNowhere && RunOf(undoAt) <= RunOf(commitAt);
    }
    bool CleanupFails() const { return cleanupAt != kNowhere && cleanupAt < Prepared(); }
    // The first position of the run that is called last of all.
    int LastCall() const { return RunOf(CleanupFails() ? cleanupAt : Prepared() - 1); }

    int Status() const
    {
        if (CleanupFails())
            return kCleanupStatus;
        if (!Tested())
            return pattern[size_t(TestEnd())] == kNoModule ? eSnmpNoSuchName : kTestStatus;
        if (!Undoes())
            return eSnmpNoError;
        return UndoFails() ? kUndoStatus : kCommitStatus;
    }
    int ErrorIndex() const
    {
        if (CleanupFails())
            return cleanupAt + 1;
        if (!Tested())
            return TestEnd() + 1;
        if (!Undoes())
            return kUntouched;
        return UndoFails() ? 0 : commitAt + 1;
    }
    int After(int position) const
    {
        const bool written = Tested() && (!Undoes() || position < commitAt);
        const bool takenBack = Undoes() && (!UndoFails() || position < undoAt);
        return position < Length() && written && !takenBack ? value : before[size_t(position)];
    }
    std::string Describe() const
    {
        return pattern + " test " + std::to_string(testAt) + " commit " + std::to_string(commitAt) +
               " undo " + std::to_string(undoAt) + " cleanup " + std::to_string(cleanupAt);
    }
};

// Writes to the data of whoever asks, keeps the old values in the slots, and fails
// where that one's plan says.
class DataModule : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;

    DataModule(char name, std::map<unsigned, SPlan*>& plans)
        : BMibSubtreeHandler(BString("data"), MakeOid(Arcs{1, 3, 5, unsigned(name)})),
          m_plans(plans)
    {
    }
    int Get(unsigned, BVarBindList&, int&, int) override { return eSnmpGenErr; }
    int GetNext(unsigned, BVarBind&) override { return eSnmpNoSuchName; }
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void** slots, int& index,
            int count) override
    {
        SPlan& plan = *m_plans.at(id);
        const int first = index;
        if (op == eSetTest && first == 0)
            Begin(plan);
        int status = eSnmpNoError;
        for (int i = first; i < first + count && status == eSnmpNoError; ++i) {
            index = i;
            status = SetOne(plan, list[i], op, reinterpret_cast<SSetSlot*>(slots)[i - first], i);
        }
        if (op == eSetCleanup && first == plan.LastCall())
            End(plan);
        return status;
    }

private:
    static int SetOne(SPlan& plan, const BVarBind& binding, ESnmpSetOpCode op, SSetSlot& slot,
                      int position)
    {
        int& place = (*plan.data)[size_t(position)];
        switch (op) {
        case eSetTest:
            return position == plan.testAt ? kTestStatus : eSnmpNoError;
        case eSetCommit:
            if (position == plan.commitAt)
                return kCommitStatus;
            slot.committed = 1;
            slot.position = place;
            place = binding.Value().Int();
            return eSnmpNoError;
        case eSetUndo:
            if (position == plan.undoAt)
                return kUndoStatus;
            if (slot.committed)
                place = slot.position;
            return eSnmpNoError;
        default:
            return position == plan.cleanupAt ? kCleanupStatus : eSnmpNoError;
        }
    }
    static void Begin(SPlan& plan)
    {
        EXPECT_EQ(0, (*plan.underWay)++) << "another SET of the same data is under way";
        plan.before = *plan.data;
    }
    static void End(SPlan& plan)
    {
        for (int i = 0; i < kLongest; ++i)
            EXPECT_EQ(plan.After(i), (*plan.data)[size_t(i)]) << "at " << i;
        ++plan.checked;
        --*plan.underWay;
    }

    std::map<unsigned, SPlan*>& m_plans;
};

// One who sets, with the data that it sets.
class Setter {
public:
    Setter(BMibHandler& handler, std::map<unsigned, SPlan*>& plans, Data& data,
           std::atomic<int>& underWay)
        : m_client(handler)
    {
        plans[m_client.Id()] = &plan;
        plan.data = &data;
        plan.underWay = &underWay;
    }
    void Set()
    {
        ++plan.value;
        plan.checked = 0;
        BVarBindList list;
        BObjectSyntax value;
        value.SetInt(plan.value);
        for (size_t i = 0; i < plan.pattern.size(); ++i)
            list.Append(MakeOid(Arcs{1, 3, 5, unsigned(plan.pattern[i]), unsigned(i)}), value);
        const int status = m_client.Query(ePduSet, list);
        // Query() sets the index to 0 first, for a request that succeeds too.
        const int index = plan.ErrorIndex() == kUntouched ? 0 : plan.ErrorIndex();
        ASSERT_EQ(plan.Status(), status) << plan.Describe();
        ASSERT_EQ(index, m_client.errorIndex) << plan.Describe();
        ASSERT_EQ(plan.Prepared() > 0 ? 1 : 0, plan.checked) << plan.Describe();
    }

    SPlan plan;

private:
    Client m_client;
};

class SetMatrix : public ::testing::TestWithParam<bool> {
protected:
    SetMatrix() : handler(nullptr)
    {
        g_bSerializeSet = GetParam();
        for (char name : {'A', 'B', 'C'}) {
            modules.push_back(std::make_unique<DataModule>(name, plans));
            handler.RegisterSubtreeHandler(modules.back().get());
        }
    }
    ~SetMatrix() override { g_bSerializeSet = true; }

    // All ways to fail of one pattern.
    static int FailEverywhere(Setter& setter)
    {
        SPlan& plan = setter.plan;
        const int length = plan.Length();
        int checked = 0;
        for (plan.testAt = kNowhere; plan.testAt < length; ++plan.testAt)
            for (plan.commitAt = kNowhere; plan.commitAt < length; ++plan.commitAt)
                for (plan.undoAt = kNowhere; plan.undoAt < length; ++plan.undoAt)
                    for (plan.cleanupAt = kNowhere; plan.cleanupAt < length; ++plan.cleanupAt) {
                        setter.Set();
                        ++checked;
                        if (HasFailure())
                            return checked;
                    }
        return checked;
    }

    static void SetAtRandom(Setter& setter, unsigned seed)
    {
        std::mt19937 random(seed);
        const auto below = [&random](int limit) { return int(random() % unsigned(limit)); };
        SPlan& plan = setter.plan;
        for (int round = 0; round < 1500 && !HasFailure(); ++round) {
            plan.pattern.clear();
            for (int length = 1 + below(kLongest); length > 0; --length)
                plan.pattern += "ABC"[below(3)];
            // Half of the SETs are not to fail in that phase.
            for (int* at : {&plan.testAt, &plan.commitAt, &plan.undoAt, &plan.cleanupAt})
                *at = below(2) ? kNowhere : below(plan.Length());
            if (below(2))
                plan.testAt = kNowhere;
            setter.Set();
        }
    }

    std::map<unsigned, SPlan*> plans; // by transaction
    BMibHandler handler;
    std::vector<std::unique_ptr<DataModule>> modules;
};

TEST_P(SetMatrix, EveryPatternOfUpToThreeBindingsFailsEverywhere)
{
    Data data{};
    std::atomic<int> underWay{0};
    Setter setter(handler, plans, data, underWay);
    int checked = 0;
    for (int code = 1; code < 5 * 5 * 5; ++code) {
        std::string& pattern = setter.plan.pattern;
        pattern.clear();
        for (int rest = code; rest > 0; rest /= 5)
            pattern += " ABCX"[rest % 5];
        if (pattern.find(' ') == std::string::npos)
            checked += FailEverywhere(setter);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_EQ(4 * 16 + 16 * 81 + 64 * 256, checked);
}

TEST_P(SetMatrix, LongerPatternsFailEverywhere)
{
    Data data{};
    std::atomic<int> underWay{0};
    Setter setter(handler, plans, data, underWay);
    for (const char* pattern : {"AABB", "ABAB", "ABBA", "ABCA", "AABBCC", "ABBBAC"}) {
        setter.plan.pattern = pattern;
        FailEverywhere(setter);
        ASSERT_FALSE(HasFailure());
    }
}

// While SETs are serialised they may all set the same data; else each sets its own.
TEST_P(SetMatrix, SeveralAtOnceFailWithoutATrace)
{
    constexpr unsigned kSetters = 4;
    std::array<Data, kSetters> data{};
    std::array<std::atomic<int>, kSetters> underWay{};
    std::vector<std::unique_ptr<Setter>> setters;
    for (unsigned i = 0; i < kSetters; ++i) {
        const unsigned own = GetParam() ? 0 : i;
        setters.push_back(std::make_unique<Setter>(handler, plans, data[own], underWay[own]));
    }
    const unsigned seed = Seed();
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kSetters; ++i)
        threads.emplace_back([&, i] { SetAtRandom(*setters[i], seed + i); });
    for (std::thread& thread : threads)
        thread.join();
}

INSTANTIATE_TEST_SUITE_P(Serialised, SetMatrix, ::testing::Bool(),
                         [](const auto& tested) { return tested.param ? "Yes" : "No"; });

} // namespace
} // namespace Test
} // namespace VLK
