#include <vkmibh/transactions.h>

#include "tests/support/FailingAlloc.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace VLK;

namespace {

// Opens the registry's inner steps to the one thread that uses it.
class CRegistry : public BTransactions {
public:
    int Capacity() const VKMIBH_TSA(no_thread_safety_analysis) { return BTransactions::Capacity(); }
    bool Enlarge() VKMIBH_TSA(no_thread_safety_analysis) { return BTransactions::Enlarge(); }
    bool Remove(int id) VKMIBH_TSA(no_thread_safety_analysis) { return BTransactions::Remove(id); }
    void Clear() VKMIBH_TSA(no_thread_safety_analysis) { BTransactions::Clear(); }
    bool Insert(int id, BTransaction* transaction) VKMIBH_TSA(no_thread_safety_analysis)
    {
        return BTransactions::Insert(id, transaction);
    }
};

class CToldTransaction : public BTransaction {
public:
    explicit CToldTransaction(int protocolId) : BTransaction(protocolId) {}
    bool GetParams(BTransactionParameters& params) override
    {
        params.protocolId = ProtocolId();
        params.pduType = 160;
        params.contextName = BString("ctx");
        return true;
    }
    bool GetLocalIpAddress(BIpAddress& address) override
    {
        address = BIpAddress(127, 0, 0, 1);
        return true;
    }
    bool GetRemoteIpAddress(BIpAddress& address) override
    {
        address = BIpAddress(10, 0, 0, 9);
        return true;
    }
    bool GetLocalUdpPort(unsigned int& port) override
    {
        port = 161;
        return true;
    }
    bool GetRemoteUdpPort(unsigned int& port) override
    {
        port = 40000;
        return true;
    }
};

class CThrowingTransaction : public BTransaction {
public:
    CThrowingTransaction() : BTransaction(1) {}
    bool GetParams(BTransactionParameters&) override { throw std::runtime_error("no"); }
};

// Calls the registry from a getter, and lets another thread try to end the transaction meanwhile.
class CCallingTransaction : public BTransaction {
public:
    explicit CCallingTransaction(BTransactions& registry) : BTransaction(5), m_registry(registry) {}
    ~CCallingTransaction() override
    {
        if (m_other.joinable())
            m_other.join();
    }
    bool GetParams(BTransactionParameters& params) override
    {
        params.protocolId = m_registry.GetProtocolId(m_id);
        m_other = std::thread([this] {
            m_registry.EndTransaction(m_id);
            m_ended = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        m_endedDuringGetter = m_ended;
        return true;
    }

    unsigned m_id = 0;
    bool m_endedDuringGetter = false;

private:
    BTransactions& m_registry;
    std::atomic<bool> m_ended{false};
    std::thread m_other;
};

class Transactions : public testing::Test {
protected:
    Transactions() { BTransactionIdGenerator::DestroyInstance(); }
    ~Transactions() override
    {
        BTransactions::DestroyInstance();
        BTransactionIdGenerator::DestroyInstance();
    }
};

} // namespace

TEST_F(Transactions, BaseTransactionAnswersFalseAndFillsNothing)
{
    BTransaction transaction(3);
    BTransactionParameters params;
    params.request = 7;
    BIpAddress address(1, 2, 3, 4);
    unsigned port = 5;
    EXPECT_FALSE(transaction.GetParams(params));
    EXPECT_FALSE(transaction.GetLocalIpAddress(address));
    EXPECT_FALSE(transaction.GetRemoteIpAddress(address));
    EXPECT_FALSE(transaction.GetLocalUdpPort(port));
    EXPECT_FALSE(transaction.GetRemoteUdpPort(port));
    EXPECT_EQ(3, transaction.ProtocolId());
    EXPECT_EQ(7, params.request);
    EXPECT_EQ(1, address[0]);
    EXPECT_EQ(5u, port);
}

TEST_F(Transactions, FirstIdIsOneAndTheNextTwo)
{
    CRegistry registry;
    BTransaction transaction(1);
    EXPECT_EQ(nullptr, BTransactionIdGenerator::s_pInstance.load());
    EXPECT_EQ(1u, registry.StartTransaction(&transaction));
    EXPECT_NE(nullptr, BTransactionIdGenerator::s_pInstance.load());
    EXPECT_EQ(2u, registry.StartTransaction(&transaction));
    registry.EndTransaction(1);
    EXPECT_EQ(3u, registry.StartTransaction(&transaction)) << "an ended id is not given again";
}

TEST_F(Transactions, QueriesReachTheTransactionOfTheirId)
{
    CRegistry registry;
    CToldTransaction told(6);
    BTransaction silent(0);
    const unsigned id = registry.StartTransaction(&told);
    const unsigned other = registry.StartTransaction(&silent);
    BTransactionParameters params;
    BIpAddress address;
    unsigned port = 0;
    EXPECT_TRUE(registry.GetParameters(id, params));
    EXPECT_EQ(6, params.protocolId);
    EXPECT_EQ(BString("ctx"), params.contextName);
    EXPECT_TRUE(registry.GetLocalIpAddress(id, address));
    EXPECT_EQ(127, address[0]);
    EXPECT_TRUE(registry.GetRemoteIpAddress(id, address));
    EXPECT_EQ(10, address[0]);
    EXPECT_TRUE(registry.GetLocalUdpPort(id, port));
    EXPECT_EQ(161u, port);
    EXPECT_TRUE(registry.GetRemoteUdpPort(id, port));
    EXPECT_EQ(40000u, port);
    EXPECT_EQ(6, registry.GetProtocolId(id));
    EXPECT_EQ(0, registry.GetProtocolId(other));
    EXPECT_FALSE(registry.GetParameters(other, params)) << "the getter's own answer";
}

TEST_F(Transactions, UnknownIdsGiveFalseAndMinusOne)
{
    CRegistry registry;
    CToldTransaction told(6);
    const unsigned id = registry.StartTransaction(&told);
    registry.EndTransaction(id);
    for (unsigned unknown : {0u, id, 99u, 4294967295u}) {
        BTransactionParameters params;
        BIpAddress address;
        unsigned port = 0;
        EXPECT_FALSE(registry.GetParameters(unknown, params));
        EXPECT_FALSE(registry.GetLocalIpAddress(unknown, address));
        EXPECT_FALSE(registry.GetRemoteIpAddress(unknown, address));
        EXPECT_FALSE(registry.GetLocalUdpPort(unknown, port));
        EXPECT_FALSE(registry.GetRemoteUdpPort(unknown, port));
        EXPECT_EQ(-1, registry.GetProtocolId(unknown));
        registry.EndTransaction(unknown);
    }
}

TEST_F(Transactions, IdZeroIsNeverStoredAndNeverFound)
{
    CRegistry registry;
    CToldTransaction told(6);
    EXPECT_FALSE(registry.StartTransaction(0u, &told));
    EXPECT_EQ(-1, registry.GetProtocolId(0));
    EXPECT_FALSE(registry.Remove(0));
    for (unsigned id = 1; id <= 8; ++id)
        EXPECT_TRUE(registry.StartTransaction(id, &told));
    EXPECT_EQ(8, registry.Capacity()) << "nothing was taken for id 0";
}

TEST_F(Transactions, ChosenIdsMayBeAny)
{
    CRegistry registry;
    BTransaction a(10), b(20);
    EXPECT_TRUE(registry.StartTransaction(4294967295u, &a));
    EXPECT_TRUE(registry.StartTransaction(2147483648u, &b));
    EXPECT_EQ(10, registry.GetProtocolId(4294967295u));
    EXPECT_EQ(20, registry.GetProtocolId(2147483648u));
    EXPECT_FALSE(registry.StartTransaction(5u, nullptr));
    EXPECT_EQ(-1, registry.GetProtocolId(5));
}

TEST_F(Transactions, IdOpenedTwiceIsEndedFromTheLowestSlot)
{
    CRegistry registry;
    BTransaction first(10), second(20);
    EXPECT_TRUE(registry.StartTransaction(7u, &first));
    EXPECT_TRUE(registry.StartTransaction(7u, &second));
    EXPECT_EQ(10, registry.GetProtocolId(7));
    registry.EndTransaction(7);
    EXPECT_EQ(20, registry.GetProtocolId(7));
    registry.EndTransaction(7);
    EXPECT_EQ(-1, registry.GetProtocolId(7));
}

TEST_F(Transactions, LowestFreeSlotIsUsedAgain)
{
    CRegistry registry;
    std::vector<std::unique_ptr<BTransaction>> open;
    for (int i = 0; i < 8; ++i) {
        open.push_back(std::make_unique<BTransaction>(i));
        ASSERT_TRUE(registry.StartTransaction(100u + static_cast<unsigned>(i), open.back().get()));
    }
    registry.EndTransaction(105);
    registry.EndTransaction(102);
    // The same id in both freed slots: the one that is found is in the lower slot.
    BTransaction first(21), second(22);
    ASSERT_TRUE(registry.StartTransaction(7u, &first));
    ASSERT_TRUE(registry.StartTransaction(7u, &second));
    EXPECT_EQ(21, registry.GetProtocolId(7));
    EXPECT_EQ(8, registry.Capacity());
}

TEST_F(Transactions, RegistryDoublesFrom8To1024AndThenIsFull)
{
    CRegistry registry;
    CToldTransaction told(6);
    EXPECT_EQ(8, registry.Capacity());
    for (unsigned open = 1; open <= 1024; ++open) {
        EXPECT_EQ(open, registry.StartTransaction(&told));
        int expected = 8;
        while (expected < static_cast<int>(open))
            expected *= 2;
        ASSERT_EQ(expected, registry.Capacity()) << open;
    }
    EXPECT_EQ(6, registry.GetProtocolId(1));
    EXPECT_EQ(6, registry.GetProtocolId(1024));

    // The id is handed out all the same.
    EXPECT_EQ(1025u, registry.StartTransaction(&told));
    EXPECT_EQ(-1, registry.GetProtocolId(1025));
    EXPECT_FALSE(registry.StartTransaction(5000u, &told));
    EXPECT_EQ(1024, registry.Capacity());
    EXPECT_FALSE(registry.Enlarge());

    registry.EndTransaction(300);
    EXPECT_EQ(1026u, registry.StartTransaction(&told));
    EXPECT_EQ(6, registry.GetProtocolId(1026));
    EXPECT_EQ(6, registry.GetProtocolId(1024)) << "growing kept the old entries";
}

TEST_F(Transactions, InnerStepsInsertRemoveAndClear)
{
    CRegistry registry;
    BTransaction transaction(9);
    EXPECT_TRUE(registry.Insert(3, &transaction));
    EXPECT_TRUE(registry.Remove(3));
    EXPECT_FALSE(registry.Remove(3));
    EXPECT_TRUE(registry.Enlarge());
    EXPECT_EQ(16, registry.Capacity());
    registry.Clear();
    EXPECT_EQ(0, registry.Capacity());
    EXPECT_EQ(-1, registry.GetProtocolId(3));
    EXPECT_TRUE(registry.Insert(4, &transaction)) << "a cleared registry starts over";
    EXPECT_EQ(8, registry.Capacity());
}

TEST_F(Transactions, LockIsReleasedWhenAGetterThrows)
{
    CRegistry registry;
    CThrowingTransaction throwing;
    const unsigned id = registry.StartTransaction(&throwing);
    BTransactionParameters params;
    EXPECT_THROW(registry.GetParameters(id, params), std::runtime_error);
    int found = 0;
    std::thread([&] { found = registry.GetProtocolId(id); }).join();
    EXPECT_EQ(1, found);
}

TEST_F(Transactions, GetterMayCallTheRegistryAndNobodyEndsItsTransactionMeanwhile)
{
    CRegistry registry;
    BTransactionParameters params;
    unsigned id = 0;
    {
        CCallingTransaction calling(registry);
        id = calling.m_id = registry.StartTransaction(&calling);
        ASSERT_TRUE(registry.GetParameters(id, params));
        EXPECT_EQ(5, params.protocolId);
        EXPECT_FALSE(calling.m_endedDuringGetter);
    }
    EXPECT_EQ(-1, registry.GetProtocolId(id));
}

TEST_F(Transactions, WithoutMemoryTheyStayUnknownAndTheRegistryRecovers)
{
    BTransaction transaction(4);
    for (int allowed = 0;; ++allowed) {
        ASSERT_LT(allowed, 20);
        SCOPED_TRACE(allowed);
        BTransactions::DestroyInstance();
        BTransactionIdGenerator::DestroyInstance();
        BTransactions* registry = nullptr;
        unsigned id = 0;
        bool failed = false;
        {
            FailingAlloc fail(allowed);
            registry = BTransactions::GetInstance();
            id = registry ? registry->StartTransaction(&transaction) : 0;
            failed = fail.Failed();
        }
        if (registry && id) {
            EXPECT_TRUE(registry->GetProtocolId(id) == 4 || failed);
        }
        registry = BTransactions::GetInstance();
        ASSERT_NE(nullptr, registry);
        id = registry->StartTransaction(&transaction);
        ASSERT_NE(0u, id);
        EXPECT_EQ(4, registry->GetProtocolId(id));
        if (!failed)
            break;
    }
}

TEST_F(Transactions, RegistryThatCannotGrowKeepsWhatItHas)
{
    CRegistry registry;
    BTransaction transaction(4);
    for (unsigned id = 1; id <= 8; ++id)
        ASSERT_TRUE(registry.StartTransaction(id, &transaction));
    {
        FailingAlloc fail(0);
        EXPECT_FALSE(registry.StartTransaction(9u, &transaction));
        EXPECT_TRUE(fail.Failed());
    }
    EXPECT_EQ(8, registry.Capacity());
    EXPECT_EQ(-1, registry.GetProtocolId(9));
    for (unsigned id = 1; id <= 8; ++id)
        EXPECT_EQ(4, registry.GetProtocolId(id));
    EXPECT_TRUE(registry.StartTransaction(9u, &transaction));
    EXPECT_EQ(16, registry.Capacity());
}

TEST_F(Transactions, InstanceIsMadeOnFirstUseAndDestroyedByHand)
{
    EXPECT_EQ(nullptr, BTransactions::s_pInstance.load());
    BTransactions* instance = BTransactions::GetInstance();
    ASSERT_NE(nullptr, instance);
    EXPECT_EQ(instance, BTransactions::GetInstance());
    EXPECT_EQ(instance, BTransactions::s_pInstance.load());
    instance->Destroy();
    EXPECT_EQ(nullptr, BTransactions::s_pInstance.load());
    BTransactions::DestroyInstance();
    EXPECT_EQ(nullptr, BTransactions::s_pInstance.load());
}

TEST_F(Transactions, SingletonsAreDestroyedWithAllOthers)
{
    BTransaction transaction(1);
    BTransactions::GetInstance()->StartTransaction(&transaction);
    EXPECT_NE(nullptr, BTransactionIdGenerator::s_pInstance.load());
    BSingletons::DestroyAll();
    EXPECT_EQ(nullptr, BTransactions::s_pInstance.load());
    EXPECT_EQ(nullptr, BTransactionIdGenerator::s_pInstance.load());
    EXPECT_EQ(1u, BTransactions::GetInstance()->StartTransaction(&transaction))
        << "a new generator counts from the start";
}

TEST_F(Transactions, GeneratorCountsUntilItIsDestroyed)
{
    BTransactionIdGenerator* generator = BTransactionIdGenerator::GetInstance();
    ASSERT_NE(nullptr, generator);
    EXPECT_EQ(1u, generator->NextId());
    EXPECT_EQ(2u, generator->NextId());
    EXPECT_EQ(generator, BTransactionIdGenerator::GetInstance());
    generator->Destroy();
    EXPECT_EQ(nullptr, BTransactionIdGenerator::s_pInstance.load());
    EXPECT_EQ(1u, BTransactionIdGenerator::GetInstance()->NextId());
}

TEST_F(Transactions, GeneratorStepsOverZeroWhenItWraps)
{
    BTransactionIdGenerator generator(4294967294u);
    EXPECT_EQ(4294967295u, generator.NextId());
    EXPECT_EQ(1u, generator.NextId());
}

TEST_F(Transactions, IdsOfManyThreadsAreAllDifferent)
{
    constexpr unsigned kThreads = 4, kEach = 500;
    std::vector<std::vector<unsigned>> ids(kThreads);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            BTransaction transaction(static_cast<int>(t) + 100);
            for (unsigned i = 0; i < kEach; ++i) {
                BTransactions* registry = BTransactions::GetInstance();
                const unsigned id = registry->StartTransaction(&transaction);
                ids[t].push_back(id);
                if (registry->GetProtocolId(id) != static_cast<int>(t) + 100)
                    ++wrong;
                registry->EndTransaction(id);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong.load());
    std::vector<bool> seen(kThreads * kEach + 1);
    for (const std::vector<unsigned>& each : ids) {
        for (unsigned id : each) {
            ASSERT_LT(id, seen.size());
            ASSERT_FALSE(seen[id]) << id;
            seen[id] = true;
        }
    }
}
