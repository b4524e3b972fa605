// The shared library as a host sees it: public headers and the .so alone, a
// call or two of every family.
#include <vkmibh/vkmibh.h>

#include <gtest/gtest.h>

using namespace VLK;

namespace {

const unsigned kDoorOid[] = {1, 3, 6, 1, 4, 1, 32473, 77, 1};

// A host's own module: one readable and writable scalar.
class CDoor : public BMibScalarImpl {
public:
    CDoor() : BMibScalarImpl("HOST-MIB.door", BObjectIdentifier(9, kDoorOid)) {}

    int OnGet(unsigned, int& value)
    {
        value = m_position;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit)
            m_position = value;
        return eSnmpNoError;
    }
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    static SRqHndlrMapEntry s_map[];
    int m_position = 3;
};

SRqHndlrMapEntry CDoor::s_map[] = {
    ScalarRow<eKindInteger, &CDoor::OnGet, &CDoor::OnSet>(1, "door", eAsnInteger, eRqReadWrite),
    kRqEnd};

class CHostTransaction : public BTransaction {
public:
    CHostTransaction() : BTransaction(1) {}
    bool GetParams(BTransactionParameters& params) override
    {
        params.contextName = BString("attic");
        return true;
    }
};

class CRecorder : public ITimeSubscriber {
public:
    void OnTimeout(BTimeInterval& interval) override { m_lastId = interval.id; }
    int m_lastId = 0;
};

class CConsole : public BCmdHandler {
public:
    int CmdExecute(ICmdStream&, const BString&, const BStringArray&, const BSecurityParams&,
                   const BString&) override
    {
        return 0;
    }
};

class CAgent : public BAgent {
public:
    int SendTrap(const BTrap& trap, int) override
    {
        return trap.GetV1TrapParams(m_enterprise, m_generic, m_specific) ? 0 : 1;
    }
    int Init(int) override { return 0; }
    int Suspend(int) override { return 5; }
    int Resume(int) override { return 0; }
    int Start(int) override { return 0; }
    int Stop(int) override { return 0; }
    BString GetParams() override { return BString(); }

    BObjectIdentifier m_enterprise;
    ESNMPv1TrapType m_generic = eTrapEnterpriseSpecific;
    int m_specific = 0;
};

BVarBindList ListOf(const BObjectIdentifier& name)
{
    BVarBindList list;
    list.Append(name);
    return list;
}

// Runs one request inside a transaction of its own.
int Ask(BMibHandler& handler, int pduType, BVarBindList& list, int& errorIndex)
{
    BTransaction transaction(1);
    const unsigned id = BTransactions::GetInstance()->StartTransaction(&transaction);
    const int status = handler.Query(pduType, static_cast<int>(id), BSecurityParams(), BString(),
                                     list, errorIndex);
    BTransactions::GetInstance()->EndTransaction(id);
    return status;
}

} // namespace

TEST(Library, Strings)
{
    BStringTokenizer tokens("get  sysName.0", " ", false);
    EXPECT_EQ(tokens.NextToken(), BString("get"));
    EXPECT_EQ(tokens.NextToken(), BString("sysName.0"));
    EXPECT_FALSE(tokens.HasMoreTokens());
    EXPECT_EQ(VKStrToInt32("-12x"), -12);
}

TEST(Library, Locks)
{
    TMutex mutex(true);
    EXPECT_EQ(mutex.Wait(0), eWaitDone);
    mutex.Done();
    TSWMRSynch lock;
    EXPECT_EQ(lock.WaitToRead(0), eWaitDone);
    lock.DoneReading();
    TEvent event;
    EXPECT_EQ(event.Wait(0), eWaitTimeout);
    event.Set();
    EXPECT_EQ(event.Wait(0), eWaitDone);
}

TEST(Library, Values)
{
    BVarBind binding(BObjectIdentifier(BString("1.3.6.1.2.1.1.5.0")));
    binding.Value().SetOctets(BString("hall"));
    const BVarBind copy(binding);
    EXPECT_EQ(copy.Name().ToString(), BString("1.3.6.1.2.1.1.5.0"));
    EXPECT_EQ(copy.Value().Octets().ToDispStr(), BString("hall"));
    EXPECT_EQ(BIpAddress(127, 0, 0, 1).ToString(), BString("127.0.0.1"));
    BCounter64 counter(1, 0);
    EXPECT_EQ(counter.ToString(), BString("4294967296"));
}

TEST(Library, Containers)
{
    BMapOid2Ptr map;
    int row = 0;
    EXPECT_TRUE(map.Insert(BObjectIdentifier(2u), &row));
    EXPECT_TRUE(map.Insert(BObjectIdentifier(10u), nullptr));
    BObjectIdentifier next;
    EXPECT_EQ(map.Next(BObjectIdentifier(2u), next), 1);
    EXPECT_EQ(next, BObjectIdentifier(10u));
    EXPECT_EQ(map.GetData(BObjectIdentifier(2u)), &row);
    BUintArray numbers;
    EXPECT_TRUE(numbers.PushBack(7));
    EXPECT_EQ(numbers.Find(7), 0);
}

TEST(Library, Timer)
{
    CRecorder recorder;
    BTimer* timer = BTimer::GetInstance();
    ASSERT_NE(timer, nullptr);
    const int id = timer->Subscribe(&recorder, 1000 * 3600, 1);
    timer->Timeout(1000 * 3600);
    EXPECT_EQ(recorder.m_lastId, id);
    timer->Unsubscribe(&recorder);
    BTimer::DestroyInstance();
}

TEST(Library, Tree)
{
    BMibTree tree;
    CDoor door;
    EXPECT_NE(tree.Register(&door), 0);
    EXPECT_EQ(tree.FindSubtreeHandlerNode(door.Oid())->SubtreeHandler(), &door);
    EXPECT_NE(tree.Unregister(&door), 0);
}

TEST(Library, Transactions)
{
    CHostTransaction transaction;
    BTransactions* registry = BTransactions::GetInstance();
    const unsigned id = registry->StartTransaction(&transaction);
    BTransactionParameters params;
    EXPECT_TRUE(registry->GetParameters(id, params));
    EXPECT_EQ(params.contextName, BString("attic"));
    registry->EndTransaction(id);
    EXPECT_FALSE(registry->GetParameters(id, params));
}

TEST(Library, CommandHandlers)
{
    CConsole console;
    EXPECT_EQ(console.CmdCount(), 0);
    EXPECT_STREQ(console.CmdHndlrName(), "\"BCmdHandler\"");
}

TEST(Library, Views)
{
    BFilterTable views(nullptr);
    EXPECT_TRUE(views.Insert("all", BObjectIdentifier(BString("1.3")), BOctetString(),
                             eFilterIncluded, eStorageVolatile, eRowActive, false));
    EXPECT_TRUE(views.Filter("all", BObjectIdentifier(BString("1.3.6"))));
    EXPECT_FALSE(views.Filter("none", BObjectIdentifier(BString("1.3.6"))));
    EXPECT_FALSE(views.SaveToNV());
}

TEST(Library, AgentsAndTraps)
{
    BTime time;
    BAgents agents(time);
    CAgent agent;
    EXPECT_EQ(agents.Register("udp", &agent), 0);
    EXPECT_EQ(agents.Register("udp", &agent), kAgentNameTaken);
    EXPECT_EQ(agents.Start(), 0);
    EXPECT_EQ(agents.Suspend("udp"), 5);
    ITrapSender& sender = agents;
    sender.SendTrap(BTrapV2(BObjectIdentifier(BString("1.3.6.1.6.3.1.1.5.4"))), "udp");
    EXPECT_EQ(agent.m_generic, eTrapLinkUp);
    EXPECT_EQ(agent.m_enterprise, BTrapOIDs::GetInstance()->SnmpTraps());
    BTrapOIDs::DestroyInstance();
}

TEST(Library, ConventionsOfTheFramework)
{
    CDoor door;
    const SConstraintMapEntry* row = door.FindTCConstraintMapEntry(cszSnmpEngineID);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->low, 5);
    EXPECT_EQ(row->high, 32);
}

TEST(Library, QueryAnswersTheSystemGroup)
{
    BMibHandler handler(nullptr);
    BTime time;
    handler.Init(&time, nullptr);
    int errorIndex = 0;

    BVarBindList list = ListOf(BObjectIdentifier(BString("1.3.6.1.2.1.1.1.0")));
    EXPECT_EQ(Ask(handler, ePduGet, list, errorIndex), eSnmpNoError);
    EXPECT_EQ(list[0].Value().Octets().ToDispStr(), BString("Velkoran agent"));

    list = ListOf(BObjectIdentifier(BString("1.3.6.1.2.1.1")));
    EXPECT_EQ(Ask(handler, ePduGetNext, list, errorIndex), eSnmpNoError);
    EXPECT_EQ(list[0].Name().ToString(), BString("1.3.6.1.2.1.1.1.0"));
}

TEST(Library, QueryReachesAHostsOwnModule)
{
    BMibHandler handler(nullptr);
    BTime time;
    handler.Init(&time, nullptr);
    CDoor door;
    door.Initialize();
    ASSERT_TRUE(handler.RegisterSubtreeHandler(&door));
    BObjectIdentifier instance(door.Oid());
    instance.Append(0u);
    int errorIndex = 0;

    BVarBindList list = ListOf(instance);
    list[0].Value().SetInt(8);
    EXPECT_EQ(Ask(handler, ePduSet, list, errorIndex), eSnmpNoError);
    list = ListOf(instance);
    EXPECT_EQ(Ask(handler, ePduGet, list, errorIndex), eSnmpNoError);
    EXPECT_EQ(list[0].Value().Int(), 8);

    list = ListOf(instance);
    list[0].Value().SetOctets(BString("8"));
    EXPECT_EQ(Ask(handler, ePduSet, list, errorIndex), eSnmpWrongType);
    EXPECT_EQ(errorIndex, 1);
    EXPECT_TRUE(handler.UnregisterSubtreeHandler(&door));
}
