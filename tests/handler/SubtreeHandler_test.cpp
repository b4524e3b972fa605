#include <vkmibh/subtree.h>

#include "tests/support/PlainHandler.h"

#include <gtest/gtest.h>

using namespace VLK;

namespace {

class CCountingHandler : public CPlainHandler {
public:
    using CPlainHandler::CPlainHandler;
    void OnTimeout(BTimeInterval& interval) override { m_ticks += interval.id; }
    int m_ticks = 0;
};

bool CanBeTakenTwice(TMutex& mutex) VKMIBH_TSA(no_thread_safety_analysis)
{
    if (mutex.Wait(0) != eWaitDone)
        return false;
    const bool twice = mutex.Wait(0) == eWaitDone;
    if (twice)
        mutex.Done();
    mutex.Done();
    return twice;
}

} // namespace

TEST(SubtreeHandler, KeepsWhatItWasMadeWith)
{
    const BObjectIdentifier oid = OidOf("1.3.6.1.2.1.1");
    CPlainHandler handler(oid, 7, 9);
    EXPECT_EQ(BString("plain"), handler.Name());
    EXPECT_EQ(oid, handler.Oid());
    EXPECT_EQ(7u, handler.RangePosition());
    EXPECT_EQ(9u, handler.RangeUpperBound());
    EXPECT_EQ(static_cast<unsigned>(eImplPlainHandler), handler.ImplKind());
}

TEST(SubtreeHandler, HasNoRangeUnlessItAsksForOne)
{
    CPlainHandler handler("1.3");
    EXPECT_EQ(0u, handler.RangePosition());
    EXPECT_EQ(0u, handler.RangeUpperBound());
}

TEST(SubtreeHandler, ListFormOfGetNextIsAnError)
{
    CPlainHandler handler("1.3");
    BVarBindList list;
    int index = 3;
    EXPECT_EQ(5, handler.GetNext(1, list, index, 1));
    EXPECT_EQ(3, index);
}

TEST(SubtreeHandler, HandlesNoInstanceOfAnotherNode)
{
    CPlainHandler handler("1.3");
    EXPECT_FALSE(handler.HandlesInstance(OidOf("1.3.1")));
    EXPECT_FALSE(handler.HandlesInstance(OidOf("1.4")));
}

TEST(SubtreeHandler, HasNoMibInformation)
{
    CPlainHandler handler("1.3");
    EXPECT_EQ(nullptr, handler.GetIMibInfo());
}

TEST(SubtreeHandler, CallsItselfByItsClass)
{
    CPlainHandler handler("1.3");
    EXPECT_EQ(BString("BMibSubtreeHandler"), handler.ToString());
}

TEST(SubtreeHandler, IsASubscriberWhoseTimeoutDoesNothing)
{
    CPlainHandler plain("1.3");
    BTimeInterval interval{1000, 3, 42, &plain, 700};
    static_cast<ITimeSubscriber&>(plain).OnTimeout(interval);
    EXPECT_EQ(1000, interval.interval);
    EXPECT_EQ(3u, interval.count);
    EXPECT_EQ(700, interval.remaining);

    CCountingHandler counting("1.3");
    static_cast<ITimeSubscriber&>(counting).OnTimeout(interval);
    EXPECT_EQ(42, counting.m_ticks);
    BMibSubtreeHandler::null();
}

TEST(SubtreeHandler, MutexIsFreeAndCanBeTakenAgainByItsOwner)
{
    CPlainHandler handler("1.3");
    EXPECT_TRUE(CanBeTakenTwice(handler.Mutex()));
}

TEST(SubtreeHandler, PhasesAndStatusesHaveTheirNumbers)
{
    EXPECT_EQ(224, eSetTest);
    EXPECT_EQ(163, eSetCommit);
    EXPECT_EQ(225, eSetUndo);
    EXPECT_EQ(226, eSetCleanup);
    EXPECT_EQ(18, eSnmpInconsistentName);
}
