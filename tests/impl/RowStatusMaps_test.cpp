// Thousands of rows, side by side with the plainest table that there could be.
#include "tests/impl/RowStatusTest.h"

#include <random>

namespace VLK {
namespace Test {
namespace {

// Rows are numbers; their instances have one arc or three.
BObjectIdentifier InstanceOf(unsigned row)
{
    return row % 4 ? MakeOid(Arcs{row}) : MakeOid(Arcs{row % 3, ~row, row});
}
unsigned RowOf(const BObjectIdentifier& instance) { return instance[instance.Length() - 1]; }

// What the hook does with a row, decided by its number.
bool IsTimedAnew(unsigned row) { return row % 5 == 0; }
bool TakesOffTheNext(unsigned row) { return row % 7 == 0; }

class CNumbered : public BMibTableImplEx {
public:
    CNumbered() : BMibTableImplEx("numbered", MakeOid("1.3.9")) { Initialize(); }
    ~CNumbered() override { CancelTimeouts(); }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
    int OnGet_Status(const BObjectIdentifier& instance, unsigned, ERowStatus& value, int)
    {
        value = static_cast<ERowStatus>(RowOf(instance) % 4);
        return value == 0 ? int(eSnmpNoSuchName) : 0;
    }
    int OnSet_Status(const BObjectIdentifier&, ESnmpSetOpCode, unsigned, ERowStatus, void**)
    {
        return 0;
    }
    void RowActivationTimeout(const BObjectIdentifier& instance) override
    {
        const unsigned row = RowOf(instance);
        told.push_back(row);
        if (IsTimedAnew(row))
            AddToTimeoutList(instance);
        if (TakesOffTheNext(row))
            RemoveFromTimeoutList(InstanceOf(row + 1));
    }

    static SRqHndlrMapEntry s_map[];
    std::vector<unsigned> told;
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CNumbered::s_map[] = {
    ColumnRow<eKindRowStatus, &CNumbered::OnGet_Status, &CNumbered::OnSet_Status>(
        eProbeStatus, "status", eAsnInteger, eRqReadCreate),
    kRqEnd};

// The same rules over sorted maps and nothing else.
class Model {
public:
    void Add(unsigned row)
    {
        Remove(row);
        Subscribe(row, timeout);
    }
    void Remove(unsigned row)
    {
        const auto found = m_subscriptions.find(row);
        if (found == m_subscriptions.end())
            return;
        m_order.erase(found->second);
        m_subscriptions.erase(found);
    }
    void Begin(unsigned row, int requested)
    {
        const auto known = states.try_emplace(row, int(row % 4)).first;
        if (requested == eRowDestroy)
            known->second = 0;
        else if (known->second == 0)
            known->second = eRowNotInService; // createAndWait
    }
    // The rows told by a tick of a second.
    std::vector<unsigned> Tick()
    {
        std::vector<unsigned> told;
        std::vector<long> visited;
        for (const auto& item : m_order)
            visited.push_back(item.first);
        for (const long turn : visited) {
            const auto item = m_order.find(turn);
            if (item == m_order.end() || (item->second.left -= 1000) > 0)
                continue;
            const unsigned row = item->second.row;
            Remove(row);
            if (states.count(row) != 0) {
                Subscribe(row, 1);
                continue;
            }
            told.push_back(row);
            if (IsTimedAnew(row))
                Add(row);
            if (TakesOffTheNext(row))
                Remove(row + 1);
        }
        return told;
    }
    std::size_t Pending() const { return m_order.size(); }

    int timeout = 0;
    std::map<unsigned, int> states; // the new values

private:
    struct SSubscription {
        unsigned row;
        int left;
    };
    void Subscribe(unsigned row, int milliseconds)
    {
        m_subscriptions[row] = m_next;
        m_order[m_next++] = {row, milliseconds};
    }

    long m_next = 0;
    std::map<long, SSubscription> m_order; // the timer's
    std::map<unsigned, long> m_subscriptions;
};

class Comparison {
public:
    Comparison(unsigned rows, unsigned seed) : m_rows(rows), m_random(seed) {}

    void Step()
    {
        const unsigned row = m_random() % m_rows;
        const BObjectIdentifier instance = InstanceOf(row);
        switch (m_random() % 10) {
        case 0:
        case 1:
        case 2:
            m_table.AddToTimeoutList(instance);
            m_model.Add(row);
            break;
        case 3:
            m_table.RemoveFromTimeoutList(instance);
            m_model.Remove(row);
            break;
        case 4:
            m_table.UpdateTimeoutList(instance);
            m_model.Add(row);
            break;
        case 5:
        case 6:
        case 7:
            Begin(row, m_random() % 2 ? eRowCreateAndWait : eRowDestroy);
            break;
        case 8:
            Handle(row, eSetCleanup, eRowDestroy);
            m_model.states.erase(row);
            break;
        default:
            m_model.timeout = int(m_random() % 200) * 1000;
            m_table.SetActivationTimeout(m_model.timeout);
        }
        ASSERT_NO_FATAL_FAILURE(Compare(m_random() % m_rows));
    }
    void Tick()
    {
        m_table.told.clear();
        m_timer.Tick();
        const std::vector<unsigned> told = m_model.Tick();
        m_told += told.size();
        ASSERT_EQ(told, m_table.told) << "the same rows in the same order";
    }
    void CompareAll()
    {
        for (unsigned row = 0; row < m_rows; ++row)
            ASSERT_NO_FATAL_FAILURE(Compare(row));
    }
    // Ends every SET, and waits until all are told.
    void Finish()
    {
        for (unsigned row = 0; row < m_rows; ++row)
            Handle(row, eSetCleanup, eRowDestroy);
        m_model.states.clear();
        CompareAll();
        for (int tick = 0; tick < 250; ++tick)
            ASSERT_NO_FATAL_FAILURE(Tick());
    }
    std::size_t Told() const { return m_told; }
    std::size_t Pending() const { return m_model.Pending(); }
    std::size_t InSet() const { return m_model.states.size(); }

private:
    int Handle(unsigned row, ESnmpSetOpCode op, ERowStatus requested)
    {
        SSetSlot slot{};
        return m_table.HandleRowStatusSet(m_table.s_map, 5, op, &slot.scratch, requested,
                                          InstanceOf(row));
    }
    void Begin(unsigned row, ERowStatus requested)
    {
        const auto known = m_model.states.find(row);
        const unsigned before = known != m_model.states.end() ? unsigned(known->second) : row % 4;
        const bool refused = requested == eRowCreateAndWait && before != 0;
        ASSERT_EQ(refused ? int(eSnmpInconsistentValue) : 0, Handle(row, eSetTest, requested));
        m_model.Begin(row, requested);
    }
    void Compare(unsigned row)
    {
        const auto known = m_model.states.find(row);
        const bool has = known != m_model.states.end();
        const BObjectIdentifier instance = InstanceOf(row);
        ASSERT_EQ(has ? known->second : 0, m_table.GetRowState(instance)) << row;
        ASSERT_EQ(has ? int(row % 4) : int(eRowNotReady), m_table.GetRowStatusUndoValue(instance))
            << row;
    }

    HandTimer m_timer;
    CNumbered m_table;
    Model m_model;
    const unsigned m_rows;
    std::mt19937 m_random;
    std::size_t m_told = 0;
};

TEST(RowStatusMaps, RandomOperationsGiveTheAnswersOfSortedMaps)
{
    // From a handful of rows, which have maps of their own, to thousands.
    for (const unsigned rows : {8u, 32u, 33u, 40u, 100u, 4000u})
        for (const unsigned seed : {1u, 2u, 3u}) {
            SCOPED_TRACE(testing::Message() << rows << " rows, seed " << seed);
            Comparison both(rows, seed);
            const unsigned steps = rows < 200 ? 2000 : 12000;
            std::size_t most = 0;
            for (unsigned step = 0; step < steps; ++step) {
                ASSERT_NO_FATAL_FAILURE(both.Step());
                if (step % 100 == 99) {
                    ASSERT_NO_FATAL_FAILURE(both.Tick());
                }
                most = std::max(most, std::min(both.Pending(), both.InSet()));
            }
            ASSERT_NO_FATAL_FAILURE(both.CompareAll());
            ASSERT_NO_FATAL_FAILURE(both.Finish());
            EXPECT_GT(both.Told(), rows / 4) << "the comparison compares something";
            EXPECT_GT(most, rows / 4);
        }
}

TEST(RowStatusMaps, OneSetMayMakeThousandsOfRows)
{
    constexpr int kRows = 3000;
    HandTimer timer;
    CRowProbe table;
    table.logs = false;
    RowSet set(table);
    for (int row = 0; row < kRows; ++row)
        set.Level(std::to_string(row).c_str(), row)
            .Status(std::to_string(row).c_str(), eRowCreateAndWait);
    EXPECT_EQ(0, set.Phase(eSetTest));
    for (int row = 0; row < kRows; ++row) {
        ASSERT_EQ(eRowNotInService, table.GetRowState(MakeOid(Arcs{unsigned(row)})));
        ASSERT_EQ(2 * row + 1, set.slots[size_t{2} * row].position);
    }
    EXPECT_EQ(0, set.Phase(eSetCommit));
    EXPECT_EQ(0, set.Phase(eSetCleanup));
    EXPECT_EQ(std::size_t(kRows), table.rows.size());
    EXPECT_EQ(77, table.rows[MakeOid("77")].level);
    EXPECT_EQ(eRowNotReady, table.GetRowStatusUndoValue(MakeOid("77")));
    table.logs = true;
    timer.Tick(2);
    ASSERT_EQ(std::size_t(kRows), table.log.size());
    for (int row = 0; row < kRows; ++row)
        ASSERT_EQ("timeout " + std::to_string(row), table.log[row]);
}

} // namespace
} // namespace Test
} // namespace VLK
