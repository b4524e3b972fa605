// Registration and unregistration of groups and subtree handlers.
#include "tests/support/ListHandler.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <thread>

namespace VLK {
namespace Test {
namespace {

// One scalar with a range that a group may name.
class RangedScalar : public BMibScalarImpl {
public:
    explicit RangedScalar(const char* oid) : BMibScalarImpl(BString("ranged"), MakeOid(oid))
    {
        for (size_t i = 0; i < 2; ++i)
            m_map[i] = s_map[i];
    }
    int OnGet(unsigned, int& value)
    {
        value = current;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit)
            current = value;
        return eSnmpNoError;
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return m_map; }
    const SConstraintMapEntry* GetConstraintMap() const override { return s_constraints; }
    void ForgetKind() { SetImplKind(0); }
    bool IsResolved() const { return m_map[0].Constraint() != nullptr; }

    int current = 0;

private:
    static const SRqHndlrMapEntry s_map[];
    static const SConstraintMapEntry s_constraints[];
    mutable SRqHndlrMapEntry m_map[2];
};

const SRqHndlrMapEntry RangedScalar::s_map[] = {
    ScalarRow<eKindInteger, &RangedScalar::OnGet, &RangedScalar::OnSet>(1, "ranged", eAsnInteger,
                                                                        eRqReadWrite),
    kRqEnd};
const SConstraintMapEntry RangedScalar::s_constraints[] = {
    {eConstraintConvention, 1, "SmallNumber", 0, 0}, kConstraintEnd};

const SConstraintMapEntry kGroupConventions[] = {{eConstraintRange, 0, "SmallNumber", 0, 9},
                                                 kConstraintEnd};

class TestGroup : public BMibImplGroup {
public:
    explicit TestGroup(std::vector<BMibImpl*> members)
        : BMibImplGroup(BString("test")), impls(std::move(members))
    {
    }
    int GetNumImpls() override
    {
        ++timesCounted;
        return static_cast<int>(impls.size());
    }
    BMibImpl* GetImplAt(int index) override
    {
        if (throwAt == index)
            throw std::runtime_error("group");
        return impls[static_cast<size_t>(index)];
    }
    const SConstraintMapEntry* GetTCConstraintMap() const override { return kGroupConventions; }

    std::vector<BMibImpl*> impls;
    int timesCounted = 0;
    int throwAt = -1;
};

TEST(Registration, AGroupGivesItsConventionsToItsImplementations)
{
    BMibHandler handler(nullptr);
    RangedScalar scalar("1.3.5.1");
    TestGroup group({&scalar});
    ASSERT_TRUE(handler.RegisterGroup(&group));
    group.Init();
    EXPECT_TRUE(scalar.IsResolved());
    Client client(handler);
    BVarBindList list;
    BObjectSyntax value;
    value.SetInt(10);
    list.Append(MakeOid("1.3.5.1.0"), value);
    EXPECT_EQ(10, client.Query(ePduSet, list)) << "wrongValue";
    list[0].Value().SetInt(9);
    EXPECT_EQ(0, client.Query(ePduSet, list));
    EXPECT_EQ(9, scalar.current);
    EXPECT_TRUE(handler.UnregisterGroup(&group));
    EXPECT_EQ(0, client.Get({"1.3.5.1.0"}));
    EXPECT_EQ(eNoSuchObject, client.SyntaxAt(0));
}

TEST(Registration, TheGroupIsCountedAnewBeforeEachIndex)
{
    BMibHandler handler(nullptr);
    RangedScalar one("1.3.5.1");
    RangedScalar two("1.3.5.2");
    TestGroup group({&one, &two});
    handler.RegisterGroup(&group);
    EXPECT_EQ(3, group.timesCounted);
    handler.UnregisterGroup(&group);
}

TEST(Registration, ANullImplementationEndsRegistrationButNotTheOnesBefore)
{
    BMibTree tree;
    BMibHandler handler(&tree, nullptr);
    RangedScalar one("1.3.5.1");
    RangedScalar three("1.3.5.3");
    TestGroup group({&one, nullptr, &three});
    EXPECT_FALSE(handler.RegisterGroup(&group));
    EXPECT_NE(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.5.1.0")));
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.5.3.0")));
    EXPECT_FALSE(handler.UnregisterGroup(&group)) << "it held a null";
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.5.1.0")));
}

TEST(Registration, AnOccupiedPlaceIsSkippedSilently)
{
    BMibTree tree;
    BMibHandler handler(&tree, nullptr);
    RangedScalar one("1.3.5.1");
    RangedScalar rival("1.3.5.1");
    RangedScalar two("1.3.5.2");
    TestGroup first({&one});
    TestGroup second({&rival, &two});
    EXPECT_TRUE(handler.RegisterGroup(&first));
    EXPECT_TRUE(handler.RegisterGroup(&second));
    EXPECT_FALSE(rival.IsResolved());
    EXPECT_TRUE(two.IsResolved());
    EXPECT_EQ(&one, tree.FindNode(MakeOid("1.3.5.1"))->SubtreeHandler());
    EXPECT_FALSE(handler.UnregisterGroup(&second)) << "the rival was never there";
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.5.2.0"))) << "it goes on";
    EXPECT_TRUE(handler.UnregisterGroup(&first));
}

TEST(Registration, OnlyKindsOneToTwentyAreResolved)
{
    BMibHandler handler(nullptr);
    RangedScalar scalar("1.3.5.1");
    scalar.ForgetKind();
    scalar.SetExtrenalTCConstraints(kGroupConventions);
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&scalar));
    EXPECT_FALSE(scalar.IsResolved());
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&scalar));
    RangedScalar known("1.3.5.1");
    known.SetExtrenalTCConstraints(kGroupConventions);
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&known));
    EXPECT_TRUE(known.IsResolved());
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&known));
    RangedScalar grouped("1.3.5.1");
    grouped.ForgetKind();
    TestGroup group({&grouped});
    EXPECT_TRUE(handler.RegisterGroup(&group));
    EXPECT_FALSE(grouped.IsResolved());
    EXPECT_TRUE(handler.UnregisterGroup(&group));
}

TEST(Registration, TheSecondHandlerOfAPlaceIsRefused)
{
    BMibHandler handler(nullptr);
    ListHandler one("1.3.5");
    ListHandler two("1.3.5");
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&one));
    EXPECT_FALSE(handler.RegisterSubtreeHandler(&two));
    EXPECT_EQ(0, handler.UnregisterSubtreeHandler(&two));
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&one));
    EXPECT_EQ(0, handler.UnregisterSubtreeHandler(&one));
}

TEST(Registration, NothingIsRefused)
{
    BMibHandler handler(nullptr);
    EXPECT_FALSE(handler.RegisterSubtreeHandler(nullptr));
    EXPECT_EQ(0, handler.UnregisterSubtreeHandler(nullptr));
    EXPECT_FALSE(handler.RegisterGroup(nullptr));
    EXPECT_FALSE(handler.UnregisterGroup(nullptr));
}

TEST(Registration, AThrowingGroupIsRefusedAndLeavesNoLock)
{
    BMibHandler handler(nullptr);
    RangedScalar one("1.3.5.1");
    TestGroup group({&one});
    group.throwAt = 0;
    EXPECT_FALSE(handler.RegisterGroup(&group));
    EXPECT_FALSE(handler.UnregisterGroup(&group));
    group.throwAt = -1;
    bool registered = false;
    std::thread([&] { registered = handler.RegisterGroup(&group); }).join();
    EXPECT_TRUE(registered);
    EXPECT_TRUE(handler.UnregisterGroup(&group));
}

TEST(Registration, AModuleThatThrowsIsRefusedAndNotLeftBehind)
{
    class Thrower : public RangedScalar {
    public:
        using RangedScalar::RangedScalar;
        const SConstraintMapEntry* GetConstraintMap() const override
        {
            throw std::runtime_error("constraints");
        }
    };
    BMibTree tree;
    BMibHandler handler(&tree, nullptr);
    Thrower thrower("1.3.5.1");
    EXPECT_FALSE(handler.RegisterSubtreeHandler(&thrower));
    EXPECT_EQ(nullptr, tree.FindSubtreeHandlerNode(MakeOid("1.3.5.1.0")));
    ListHandler other("1.3.5.1");
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&other));
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&other));
}

TEST(Registration, FromInsideARequestItIsRefused)
{
    BMibHandler handler(nullptr);
    ListHandler module("1.3.5");
    ListHandler other("1.3.7");
    RangedScalar scalar("1.3.8");
    TestGroup group({&scalar});
    bool registered = true;
    bool groupRegistered = true;
    int unregistered = 1;
    module.onGet = [&](BVarBind& binding) {
        registered = handler.RegisterSubtreeHandler(&other);
        groupRegistered = handler.RegisterGroup(&group);
        unregistered = handler.UnregisterSubtreeHandler(&module);
        binding.Value().SetInt(1);
        return 0;
    };
    handler.RegisterSubtreeHandler(&module);
    Client client(handler);
    EXPECT_EQ(0, client.Get({"1.3.5.1"}));
    EXPECT_FALSE(registered);
    EXPECT_FALSE(groupRegistered);
    EXPECT_EQ(0, unregistered);
    EXPECT_TRUE(handler.RegisterSubtreeHandler(&other));
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&other));
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&module));
}

TEST(Registration, ARequestMayAskTheHandlerAgain)
{
    BMibHandler handler(nullptr);
    ListHandler asking("1.3.5");
    ListHandler asked("1.3.7");
    asked.Add("1.3.7.1", 71);
    asking.onGet = [&](BVarBind& binding) {
        Client inner(handler);
        const int status = inner.Get({"1.3.7.1"});
        binding.Value() = inner.answer[0].Value();
        return status;
    };
    handler.RegisterSubtreeHandler(&asking);
    handler.RegisterSubtreeHandler(&asked);
    Client client(handler);
    ASSERT_EQ(0, client.Get({"1.3.5.1"}));
    EXPECT_EQ(71, client.answer[0].Value().Int());
}

TEST(Registration, UnregisteringCancelsTheTimersOfTheHandler)
{
    BMibHandler handler(nullptr);
    ListHandler module("1.3.5");
    handler.RegisterSubtreeHandler(&module);
    const int id = BTimer::GetInstance()->Subscribe(&module, 1000, 1);
    ASSERT_GT(id, 0);
    EXPECT_EQ(1, handler.UnregisterSubtreeHandler(&module));
    EXPECT_FALSE(BTimer::GetInstance()->Unsubscribe(id)) << "it is gone already";
}

// A request that is still running may subscribe its handler between the first
// cancelling and the writer lock.
TEST(Registration, ATimerOfTheLastRequestIsCancelledToo)
{
    BMibHandler handler(nullptr);
    ListHandler module("1.3.5");
    std::atomic<bool> inside{false};
    std::atomic<bool> goOn{false};
    std::atomic<int> id{0};
    module.onGet = [&](BVarBind& binding) {
        inside = true;
        while (!goOn)
            std::this_thread::yield();
        id = BTimer::GetInstance()->Subscribe(&module, 1000, 1);
        binding.Value().SetInt(1);
        return 0;
    };
    handler.RegisterSubtreeHandler(&module);
    std::thread request([&] {
        Client client(handler);
        client.Get({"1.3.5.1"});
    });
    while (!inside)
        std::this_thread::yield();
    std::thread unregister([&] { handler.UnregisterSubtreeHandler(&module); });
    // Whether it has cancelled already or not, its subscription must not stay.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    goOn = true;
    request.join();
    unregister.join();
    EXPECT_FALSE(BTimer::GetInstance()->Unsubscribe(id));
}

} // namespace
} // namespace Test
} // namespace VLK
