// Modules that are destroyed while time-outs of theirs are pending, or running.
#include "tests/handler/RowStatusStorm.h"

namespace VLK {
namespace Test {
namespace {

// Counts what reaches it, and what does so after it was unregistered.
class SubscribedHandler : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;

    SubscribedHandler(unsigned arc, std::atomic<long>& called, std::atomic<long>& late)
        : BMibSubtreeHandler(BString("subscribed"), MakeOid(Arcs{1, 3, 6, arc})), m_called(called),
          m_late(late)
    {
    }
    void OnTimeout(BTimeInterval&) override { ++(m_gone ? m_late : m_called); }
    int Get(unsigned, BVarBindList&, int&, int) override { return eSnmpGenErr; }
    int GetNext(unsigned, BVarBind&) override { return eSnmpNoSuchName; }
    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int) override
    {
        return eSnmpNotWritable;
    }
    void Leave() { m_gone = true; }

private:
    std::atomic<long>& m_called;
    std::atomic<long>& m_late;
    std::atomic<bool> m_gone{false};
};

class DestructionRacesSlow : public ::testing::Test {
protected:
    DestructionRacesSlow() : handler(nullptr) {}

    static int CreateRow(Client& client, unsigned table, unsigned row)
    {
        BVarBindList list;
        BObjectSyntax createAndWait;
        createAndWait.SetInt(eRowCreateAndWait);
        list.Append(MakeOid(Arcs{1, 3, 5, table, eProbeStatus, row}), createAndWait);
        return client.Query(ePduSet, list);
    }
    // Rows of other tables, which may be there, and go in that moment.
    static void CreateElsewhere(Client& client, unsigned step)
    {
        const int status = CreateRow(client, 1 + step % 2, 10 + step % 7);
        EXPECT_TRUE(status == eSnmpNoError || status == eSnmpNoSuchName ||
                    status == eSnmpInconsistentValue)
            << status;
    }

    // A table whose rows are all left inactive. It goes while they are timed, to
    // end at the very next tick or at a later one.
    void TableComesAndGoes(Client& client, unsigned arc, int timeout)
    {
        const std::string entry = "1.3.5." + std::to_string(arc);
        StormTable table(entry.c_str(), timeout, true);
        table.logs = false;
        ASSERT_TRUE(handler.RegisterSubtreeHandler(&table));
        for (unsigned row = 0; row < 6; ++row)
            ASSERT_EQ(0, CreateRow(client, arc, row));
        ASSERT_EQ(1, handler.UnregisterSubtreeHandler(&table));
        const int before = table.timeouts;
        ended += before;
        TakesNoTimeOut(table, before);
    }
    static void TakesNoTimeOut(const StormTable& table, int before)
    {
        BTimer::GetInstance()->Timeout(1000);
        EXPECT_EQ(before, table.timeouts) << "unregistered and called";
    }

    // Its destructor alone ends what is pending.
    static void TableGoesByItself()
    {
        StormTable table("1.3.7", 0, true);
        for (unsigned row = 0; row < 6; ++row) {
            table.AddToTimeoutList(MakeOid(Arcs{row}));
            table.UpdateTimeoutList(MakeOid(Arcs{row / 2}));
        }
    }

    void SubscriberComesAndGoes(unsigned arc)
    {
        SubscribedHandler module(arc, called, late);
        ASSERT_TRUE(handler.RegisterSubtreeHandler(&module));
        for (int interval : {0, 1000, 3000})
            ASSERT_NE(0, BTimer::GetInstance()->Subscribe(&module, interval, -1));
        if (arc % 2)
            std::this_thread::yield();
        else
            BTimer::GetInstance()->Timeout(1000);
        ASSERT_EQ(1, handler.UnregisterSubtreeHandler(&module));
        module.Leave();
    }

    static void Walk(Client& client)
    {
        BVarBindList list;
        list.Append(MakeOid("1.3.5"));
        for (int step = 0; step < 50 && client.Query(ePduGetNext, list) == 0; ++step)
            if (list[0].Value().IsException())
                return;
    }

    BMibHandler handler;
    std::atomic<long> ended{0}; // rows, by a time-out before their table went
    std::atomic<long> called{0};
    std::atomic<long> late{0};
};

TEST_F(DestructionRacesSlow, ModulesGoWithTimeoutsPendingAndNoneComesAfterwards)
{
    Client one(handler), two(handler), third(handler), walker(handler);
    Workers workers(RaceTime(), [&] { return ended > 0 && called > 0; });
    workers.Add("table at once", [&] { TableComesAndGoes(one, 1, 0); });
    workers.Add("table later", [&] { TableComesAndGoes(two, 2, 3000); });
    workers.Add("SET", [&, step = 0u]() mutable { CreateElsewhere(third, step++); });
    workers.Add("table by itself", [] { TableGoesByItself(); });
    workers.Add("subscriber 1", [&] { SubscriberComesAndGoes(1); });
    workers.Add("subscriber 2", [&] { SubscriberComesAndGoes(2); });
    workers.Add("tick", [] { BTimer::GetInstance()->Timeout(1000); });
    workers.Add("walk", [&] { Walk(walker); });
    workers.Join();
    std::printf("rows ended: %ld, subscribers called: %ld\n", ended.load(), called.load());
    EXPECT_EQ(0, late);
}

} // namespace
} // namespace Test
} // namespace VLK
