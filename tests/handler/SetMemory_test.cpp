// Whole SETs through the handler without memory, over the system group and a
// row-status table: done altogether, or nothing is changed, left behind or timed.
#include "tests/support/AllocationSweep.h"
#include "tests/support/CallbackHandler.h"
#include <vkmibh/testing/requests.h>

#include <vkmibh/maprows.h>
#include <vkmibh/rowstatus.h>
#include <vkmibh/system.h>
#include <vkmibh/timer.h>

#include <memory>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

constexpr unsigned kRows = 4;

// A table of four rows of a status and a level each, which themselves take no memory.
class CRows : public BMibTableImplEx {
public:
    CRows() : BMibTableImplEx("rows", MakeOid("1.3.5")) { Initialize(); }
    ~CRows() override { CancelTimeouts(); }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    int NextIndex(unsigned, unsigned, const BObjectIdentifier&, BObjectIdentifier&) override
    {
        return 0;
    }
    int OnSet_Level(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, int value,
                    void**)
    {
        SRow& row = rows[instance[0]];
        if (op == eSetCommit) {
            row.before = row.level;
            row.level = value;
        } else if (op == eSetUndo) {
            row.level = row.before;
        }
        return eSnmpNoError;
    }
    int OnGet_Status(const BObjectIdentifier& instance, unsigned, ERowStatus& value, int)
    {
        value = static_cast<ERowStatus>(rows[instance[0]].status);
        return value == 0 ? eSnmpNoSuchName : eSnmpNoError;
    }
    int OnSet_Status(const BObjectIdentifier& instance, ESnmpSetOpCode op, unsigned, ERowStatus,
                     void**)
    {
        int& status = rows[instance[0]].status;
        if (op == eSetCommit)
            status = GetRowState(instance);
        else if (op == eSetUndo)
            status = GetRowStatusUndoValue(instance) == eRowNotReady
                         ? 0
                         : GetRowStatusUndoValue(instance);
        return eSnmpNoError;
    }
    void RowActivationTimeout(const BObjectIdentifier& instance) override
    {
        ++rows[instance[0]].told;
    }

    struct SRow {
        int status, level, before, told;
    };
    static SRqHndlrMapEntry s_map[];
    SRow rows[kRows] = {};
};

SRqHndlrMapEntry CRows::s_map[] = {
    ColumnRow<eKindInteger, nullptr, &CRows::OnSet_Level>(1, "level", eAsnInteger, eRqReadCreate),
    ColumnRow<eKindRowStatus, &CRows::OnGet_Status, &CRows::OnSet_Status>(2, "status", eAsnInteger,
                                                                          eRqReadCreate),
    kRqEnd};

// An agent with a table, and a module behind it whose commit phase may fail.
struct SAgent {
    SAgent() : handler(nullptr), last("1.3.9")
    {
        handler.Init(nullptr, nullptr);
        handler.RegisterSubtreeHandler(&table);
        handler.RegisterSubtreeHandler(&last);
        client = std::make_unique<Client>(handler);
        table.rows[3].status = eRowActive;
    }
    ~SAgent()
    {
        client.reset();
        handler.UnregisterSubtreeHandler(&last);
        handler.UnregisterSubtreeHandler(&table);
    }

    CRows table;
    BMibHandler handler;
    CallbackHandler last;
    std::unique_ptr<Client> client;
};

// Texts of the system group, three rows that come, and one that goes, in runs that
// take turns; more than fit in the slots that need no memory.
BVarBindList Request()
{
    BVarBindList list;
    const auto number = [&list](const Arcs& name, int value) {
        BObjectSyntax syntax;
        syntax.SetInt(value);
        list.Append(MakeOid(name), syntax);
    };
    const auto text = [&list](unsigned object) {
        BObjectSyntax syntax;
        syntax.SetOctets(BString(std::string(200, 'x').c_str()));
        list.Append(MakeOid(Arcs{1, 3, 6, 1, 2, 1, 1, object, 0}), syntax);
    };
    text(4);
    for (unsigned row = 0; row < 3; ++row) {
        number({1, 3, 5, 2, row}, row % 2 ? eRowCreateAndGo : eRowCreateAndWait);
        number({1, 3, 5, 1, row}, 7);
    }
    text(5);
    number({1, 3, 5, 2, 3}, eRowDestroy);
    text(6);
    for (unsigned i = 0; i < 20; ++i)
        number({1, 3, 9, i}, 1);
    return list;
}

void ExpectNew(SAgent& agent)
{
    BMib2System& system = *agent.handler.SystemGroup();
    for (const BString& text : {system.Contact(), system.Name(), system.Location()})
        EXPECT_EQ(200u, text.length());
    for (unsigned row = 0; row < 3; ++row) {
        EXPECT_EQ(row % 2 ? eRowActive : eRowNotInService, agent.table.rows[row].status) << row;
        EXPECT_EQ(7, agent.table.rows[row].level);
    }
    EXPECT_EQ(0, agent.table.rows[3].status);
}

void ExpectOld(SAgent& agent)
{
    BMib2System& system = *agent.handler.SystemGroup();
    EXPECT_STREQ("Mr. Qwin", system.Contact().c_str());
    EXPECT_STREQ("MIB handler", system.Name().c_str());
    EXPECT_STREQ("Keswold", system.Location().c_str());
    for (unsigned row = 0; row < 3; ++row) {
        EXPECT_EQ(0, agent.table.rows[row].status) << row;
        EXPECT_EQ(0, agent.table.rows[row].level);
    }
    EXPECT_EQ(eRowActive, agent.table.rows[3].status);
}

// Nothing is left of the SET but rows that it left inactive, which end when timed.
void ExpectNoRest(SAgent& agent)
{
    BTimer::GetInstance()->Timeout(1000);
    for (const CRows::SRow& row : agent.table.rows)
        EXPECT_LE(row.told, row.status == eRowNotInService ? 1 : 0);
    const int wanted = agent.table.rows[0].status ? eSnmpInconsistentValue : eSnmpNoError;
    BVarBindList again = Request();
    EXPECT_EQ(wanted, agent.client->Query(ePduSet, again));
}

class SetMemory : public ::testing::Test {
protected:
    // The timer and the registry stay, and have room.
    SetMemory() : m_timer(BTimer::GetInstance()->Mutex())
    {
        SAgent grown;
        for (int i = 0; i < 100; ++i)
            BTimer::GetInstance()->Subscribe(&grown.table, 1000, 1);
        BTimer::GetInstance()->Unsubscribe(&grown.table);
        BVarBindList list = sent;
        EXPECT_EQ(0, grown.client->Query(ePduSet, list));
    }

    const BVarBindList sent = Request();

private:
    const TMutexLock m_timer; // its own thread must not tick in between
};

TEST_F(SetMemory, ASetIsDoneAltogetherOrChangesNothing)
{
    const unsigned allocations = VLKTest::SweepAllocations(
        [] { return std::make_unique<SAgent>(); },
        [&](auto& agent) {
            return agent->handler.QuerySet(agent->client->Id(), agent->client->Security(),
                                           agent->client->Context(), sent,
                                           agent->client->errorIndex);
        },
        [](auto& agent, int status) {
            status == eSnmpNoError ? ExpectNew(*agent) : ExpectOld(*agent);
            EXPECT_TRUE(status == eSnmpNoError || status == eSnmpResourceUnavailable ||
                        status == eSnmpCommitFailed)
                << status;
            ExpectNoRest(*agent);
        });
    EXPECT_GT(allocations, 10u);
}

TEST_F(SetMemory, ASetThatFailsInTheEndIsUndoneWithoutMemory)
{
    VLKTest::SweepAllocations(
        [] {
            auto agent = std::make_unique<SAgent>();
            agent->last.onSet = [](unsigned, const BVarBindList&, ESnmpSetOpCode op, int&) {
                return op == eSetCommit ? eSnmpCommitFailed : eSnmpNoError;
            };
            return agent;
        },
        [&](auto& agent) {
            return agent->handler.QuerySet(agent->client->Id(), agent->client->Security(),
                                           agent->client->Context(), sent,
                                           agent->client->errorIndex);
        },
        [](auto& agent, int status) {
            EXPECT_TRUE(status == eSnmpResourceUnavailable || status == eSnmpCommitFailed)
                << status;
            ExpectOld(*agent);
            agent->last.onSet = nullptr;
            ExpectNoRest(*agent);
        });
}

} // namespace
} // namespace Test
} // namespace VLK
