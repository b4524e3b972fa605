// Requests, registration and time-outs of row-status tables, all at once.
#pragma once

#include "tests/support/RowStatusProbe.h"
#include "tests/support/Workers.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <random>
#include <set>

namespace VLK {
namespace Test {

// Rows below this one are everybody's; a setting thread has those from
// kFirstOwnRow times its number on to itself.
constexpr unsigned kFirstOwnRow = 100;
constexpr unsigned kRowsEach = 8;

// Ends a row that was left inactive, or times it anew. It counts the time-outs
// that came between the phases of a SET on their row.
class StormTable : public CRowProbe {
public:
    StormTable(const char* entry, int timeout, bool serialised)
        : CRowProbe(entry), m_serialised(serialised)
    {
        SetActivationTimeout(timeout);
    }
    ~StormTable() override { CancelTimeouts(); }

    void RowActivationTimeout(const BObjectIdentifier& instance) override
    {
        ++timeouts;
        const bool alone = m_serialised || instance[0] >= kFirstOwnRow;
        if (alone && m_between.count(instance))
            ++intrusions;
        if (timeouts % 5 == 0)
            UpdateTimeoutList(instance);
        else
            rows.erase(instance);
    }

    std::atomic<int> timeouts{0};
    std::atomic<int> intrusions{0};

protected:
    int Answer(const std::string& what, const std::string&) override
    {
        const BObjectIdentifier row = MakeOid(what.substr(what.find('.') + 1).c_str());
        if (what.find("test 3.") == 0)
            m_between.insert(row);
        else if (what.find("cleanup 3.") == 0)
            m_between.erase(row);
        else if (what.find("commit 2.") == 0)
            Touch(row);
        return 0;
    }

private:
    // Who writes to a pending row works on it still.
    void Touch(const BObjectIdentifier& instance)
    {
        const auto row = rows.find(instance);
        if (row != rows.end() && row->second.status != eRowActive)
            UpdateTimeoutList(instance);
    }

    const bool m_serialised;
    std::set<BObjectIdentifier> m_between; // rows with a SET between test and cleanup
};

class Storm {
public:
    explicit Storm(bool serialised)
        : m_before(g_bSerializeSet), m_serialised(serialised), m_atOnce("1.3.5.1", 0, serialised),
          m_aSecond("1.3.5.2", 1000, serialised), m_handler(nullptr)
    {
        g_bSerializeSet = serialised;
        m_group.impls = {&m_atOnce, &m_aSecond};
        EXPECT_TRUE(m_handler.RegisterGroup(&m_group));
    }
    ~Storm()
    {
        m_handler.UnregisterGroup(&m_group);
        g_bSerializeSet = m_before;
    }

    void Run(std::chrono::milliseconds duration)
    {
        Workers workers(duration, [this] { return HasSeenAll(); });
        for (unsigned number = 1; number <= 3; ++number)
            workers.Add("SET",
                        [setter = std::make_shared<Setter>(*this, number)] { setter->Step(); });
        workers.Add("walk", [client = std::make_shared<Client>(m_handler)] { Walk(*client); });
        workers.Add("registration", [this] { Reregister(); });
        workers.Add("tick", [] { Tick(); });
        workers.Join();
        Settle();
    }

private:
    struct SGroup : BMibImplGroup {
        int GetNumImpls() override { return int(impls.size()); }
        BMibImpl* GetImplAt(int index) override { return impls[size_t(index)]; }
        std::vector<BMibImpl*> impls;
    };

    // Sets what chance says.
    class Setter {
    public:
        Setter(Storm& storm, unsigned number)
            : m_storm(storm), m_client(storm.m_handler), m_number(number), m_random(number)
        {
        }
        void Step()
        {
            BVarBindList list;
            for (unsigned rows = 1 + m_random() % 3; rows > 0; --rows)
                AppendRow(list);
            m_storm.CheckAnswer(m_client.Query(ePduSet, list));
        }

    private:
        void AppendRow(BVarBindList& list)
        {
            const unsigned own = m_random() % 2 ? kFirstOwnRow * m_number : 0;
            const unsigned row = own + m_random() % kRowsEach;
            const unsigned table = 1 + m_random() % 2;
            const auto append = [&](unsigned column, int value) {
                list.Append(MakeOid(Arcs{1, 3, 5, table, column, row}), Number(value));
            };
            if (m_random() % 2)
                append(eProbeLevel, int(m_random() % 100));
            constexpr int kStatuses[] = {1, 2, 4, 5, 5, 5, 6};
            if (m_random() % 4)
                append(eProbeStatus, kStatuses[m_random() % std::size(kStatuses)]);
            if (m_random() % 4 == 0)
                append(eProbeStatus, m_random() % 2 ? eRowActive : eRowDestroy);
            if (m_random() % 4 == 0)
                append(eProbeLevel, int(m_random() % 100));
        }

        Storm& m_storm;
        Client m_client;
        const unsigned m_number;
        std::mt19937 m_random;
    };

    static BObjectSyntax Number(int value)
    {
        BObjectSyntax syntax;
        syntax.SetInt(value);
        return syntax;
    }

    // SETs of one row may fail each other when they are not serialised, but only so.
    void CheckAnswer(int status)
    {
        switch (status) {
        case eSnmpNoError:
            ++m_done;
            return;
        case eSnmpNoSuchName: // unregistered at that time
        case eSnmpInconsistentValue:
        case eSnmpInconsistentName:
            return;
        case eSnmpGenErr: // the status that another SET gave the row is none to go on from
        case eSnmpCommitFailed:
        case eSnmpUndoFailed:
            ++m_failedByOthers;
            return;
        default:
            ADD_FAILURE() << "SET answered with " << status;
        }
    }
    static void Walk(Client& client)
    {
        BVarBindList list;
        list.Append(MakeOid("1.3.5"));
        for (int step = 0; step < 200 && client.Query(ePduGetNext, list) == 0; ++step) {
            if (list[0].Value().IsException())
                break;
            BVarBindList got;
            got.Append(list[0].Name());
            EXPECT_EQ(0, client.Query(ePduGet, got));
        }
    }
    void Reregister()
    {
        EXPECT_TRUE(m_handler.UnregisterGroup(&m_group));
        EXPECT_TRUE(m_handler.RegisterGroup(&m_group));
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    // Beside the timer's own thread, which does so once a second.
    static void Tick()
    {
        BTimer::GetInstance()->Timeout(1000);
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }

    // What was meant to happen did, which on a slow machine may take longer.
    bool HasSeenAll() const
    {
        return m_done > 0 && m_atOnce.timeouts > 0 && m_aSecond.timeouts > 0;
    }

    // Nothing is left of it.
    void Settle()
    {
        EXPECT_EQ(0, m_atOnce.intrusions);
        EXPECT_EQ(0, m_aSecond.intrusions);
        EXPECT_TRUE(!m_serialised || m_failedByOthers == 0);
        Client client(m_handler);
        for (const unsigned table : {1u, 2u}) {
            for (unsigned row = 0; row < 4 * kFirstOwnRow; ++row) {
                BVarBindList list;
                list.Append(MakeOid(Arcs{1, 3, 5, table, eProbeStatus, row}), Number(eRowDestroy));
                EXPECT_EQ(0, client.Query(ePduSet, list));
            }
        }
        for (StormTable* table : {&m_atOnce, &m_aSecond}) {
            EXPECT_TRUE(table->rows.empty());
            const int before = table->timeouts;
            BTimer::GetInstance()->Timeout(1000);
            EXPECT_EQ(before, table->timeouts);
            for (unsigned row = 0; row < 4 * kFirstOwnRow; ++row)
                EXPECT_EQ(eRowNotReady, table->GetRowStatusUndoValue(BObjectIdentifier(1, &row)));
        }
    }

    const bool m_before;
    const bool m_serialised;
    StormTable m_atOnce;
    StormTable m_aSecond;
    SGroup m_group;
    BMibHandler m_handler;
    std::atomic<long> m_done{0};
    std::atomic<long> m_failedByOthers{0};
};

} // namespace Test
} // namespace VLK
