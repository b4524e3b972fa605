// The list forms of Get and Set: order, index, marks, the initialised flag.
#include <gtest/gtest.h>

#include <pthread.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

// Fails where told: binding with arc `failAt` in phase `failIn`.
class CRecorder : public CProbe {
public:
    using CProbe::Get;
    using CProbe::Set;
    int Get(unsigned id, BVarBind& binding) override
    {
        const unsigned arc = binding.Name()[0];
        m_log.push_back("get " + std::to_string(id) + " " + std::to_string(arc));
        binding.Value().SetInt(static_cast<int>(arc));
        if (m_throws && arc == m_failAt)
            throw unsigned{arc};
        return arc == m_failAt ? eSnmpTooBig : 0;
    }
    int Set(unsigned id, ESnmpSetOpCode op, void** slot, const BVarBind& binding) override
    {
        const unsigned arc = binding.Name()[0];
        m_log.push_back(std::to_string(op) + " " + std::to_string(arc));
        m_slots.push_back(slot);
        if (m_throws && Fails(arc, op))
            throw unsigned{arc};
        if (m_adapter) {
            const SRqHndlrMapEntry entry = RowOf(eKindInteger);
            m_status = Fails(arc, op) ? static_cast<int>(20 + arc) : 0;
            return CProbe::Set(&entry, id, op, slot, binding.Value(), nullptr);
        }
        return Fails(arc, op) ? static_cast<int>(20 + arc) : 0;
    }
    bool Fails(unsigned arc, ESnmpSetOpCode op) const
    {
        return op == m_failIn && (arc == m_failAt || arc == m_failAlsoAt);
    }

    unsigned m_failAt = 0;
    unsigned m_failAlsoAt = 0;
    ESnmpSetOpCode m_failIn = eSetTest;
    bool m_adapter = true;
    bool m_throws = false;
    std::vector<std::string> m_log;
    std::vector<void**> m_slots;
};

using Log = std::vector<std::string>;

class ImplList : public ::testing::Test {
protected:
    ImplList()
    {
        for (unsigned arc = 1; arc <= 5; ++arc)
            m_list.Append(BObjectIdentifier(arc), IntValue(1));
    }
    // The run of bindings 2, 3, 4, whose slots begin with m_slots[1].
    int Set(ESnmpSetOpCode op, bool withSlots = true)
    {
        m_impl.m_log.clear();
        m_impl.m_slots.clear();
        m_index = 1;
        return m_impl.Set(9, m_list, op, withSlots ? &m_slots[1].scratch : nullptr, m_index, 3);
    }

    CRecorder m_impl;
    BVarBindList m_list;
    SSetSlot m_slots[5] = {};
    int m_index = 0;
};

TEST_F(ImplList, GetVisitsTheRunInOrder)
{
    m_index = 1;
    EXPECT_EQ(0, m_impl.Get(9, m_list, m_index, 3));
    EXPECT_EQ((Log{"get 9 2", "get 9 3", "get 9 4"}), m_impl.m_log);
    EXPECT_EQ(1, m_index) << "success leaves the index alone";
    EXPECT_EQ(4, m_list[3].Value().Int());
}

TEST_F(ImplList, GetStopsAtTheFirstFailureAtEveryPosition)
{
    for (unsigned failing : {2u, 3u, 4u}) {
        m_impl.m_log.clear();
        m_impl.m_failAt = failing;
        m_index = 1;
        EXPECT_EQ(eSnmpTooBig, m_impl.Get(9, m_list, m_index, 3));
        EXPECT_EQ(static_cast<int>(failing) - 1, m_index);
        EXPECT_EQ(failing - 1, m_impl.m_log.size());
    }
}

TEST_F(ImplList, EmptyRunSucceeds)
{
    m_index = 2;
    EXPECT_EQ(0, m_impl.Get(9, m_list, m_index, 0));
    EXPECT_EQ(0, m_impl.Set(9, m_list, eSetTest, nullptr, m_index, 0));
    EXPECT_EQ(2, m_index);
    EXPECT_TRUE(m_impl.m_log.empty());
}

TEST_F(ImplList, NothingIsAnsweredBeforeInitializeOrAfterCleanup)
{
    m_impl.Cleanup();
    EXPECT_FALSE(m_impl.IsInitialized());
    BVarBind binding(BObjectIdentifier(1u));
    EXPECT_EQ(eSnmpNoSuchName, m_impl.Get(9, m_list, m_index, 3));
    EXPECT_EQ(eSnmpNoSuchName, m_impl.GetNext(9, binding));
    EXPECT_EQ(eSnmpNoSuchName, Set(eSetTest));
    EXPECT_EQ(1, m_index);
    EXPECT_TRUE(m_impl.m_log.empty());
    m_impl.Initialize();
    EXPECT_TRUE(m_impl.IsInitialized());
    EXPECT_EQ(0, Set(eSetTest));
}

TEST_F(ImplList, TestAndCommitVisitAllWithTheirOwnSlots)
{
    for (ESnmpSetOpCode op : {eSetTest, eSetCommit}) {
        EXPECT_EQ(0, Set(op));
        const std::string phase = std::to_string(op);
        EXPECT_EQ((Log{phase + " 2", phase + " 3", phase + " 4"}), m_impl.m_log);
        EXPECT_EQ(
            (std::vector<void**>{&m_slots[1].scratch, &m_slots[2].scratch, &m_slots[3].scratch}),
            m_impl.m_slots);
    }
    for (int i : {1, 2, 3}) {
        EXPECT_EQ(i, m_slots[i].position);
        EXPECT_TRUE(m_slots[i].tested && m_slots[i].committed);
        EXPECT_EQ(nullptr, m_slots[i].owner) << "the handler's field";
    }
    EXPECT_FALSE(m_slots[0].tested || m_slots[4].tested) << "not of this run";
}

TEST_F(ImplList, TestAndCommitStopAtTheFirstFailureAtEveryPosition)
{
    for (ESnmpSetOpCode op : {eSetTest, eSetCommit})
        for (unsigned failing : {2u, 3u, 4u}) {
            m_impl.m_failAt = failing;
            m_impl.m_failIn = op;
            EXPECT_EQ(static_cast<int>(20 + failing), Set(op));
            EXPECT_EQ(static_cast<int>(failing) - 1, m_index);
            EXPECT_EQ(failing - 1, m_impl.m_log.size());
        }
}

TEST_F(ImplList, UndoVisitsCommittedBindingsOnly)
{
    m_slots[1].tested = m_slots[2].tested = m_slots[3].tested = 1;
    EXPECT_EQ(0, Set(eSetUndo));
    EXPECT_TRUE(m_impl.m_log.empty());
    m_slots[1].committed = m_slots[3].committed = 1;
    EXPECT_EQ(0, Set(eSetUndo));
    EXPECT_EQ((Log{"225 2", "225 4"}), m_impl.m_log);
}

TEST_F(ImplList, CleanupVisitsTestedBindingsOnly)
{
    m_slots[1].committed = m_slots[2].committed = m_slots[3].committed = 1;
    EXPECT_EQ(0, Set(eSetCleanup));
    EXPECT_TRUE(m_impl.m_log.empty());
    m_slots[2].tested = 1;
    EXPECT_EQ(0, Set(eSetCleanup));
    EXPECT_EQ((Log{"226 3"}), m_impl.m_log);
}

TEST_F(ImplList, BindingWhoseCommitFailedIsUndone)
{
    m_impl.m_failAt = 3;
    m_impl.m_failIn = eSetCommit;
    EXPECT_EQ(0, Set(eSetTest));
    EXPECT_EQ(23, Set(eSetCommit));
    EXPECT_EQ(0, Set(eSetUndo));
    EXPECT_EQ((Log{"225 2", "225 3"}), m_impl.m_log);
    EXPECT_EQ(0, Set(eSetCleanup));
    EXPECT_EQ((Log{"226 2", "226 3", "226 4"}), m_impl.m_log);
}

TEST_F(ImplList, BindingWhoseTestFailedInItsHandlerIsCleanedUp)
{
    m_impl.m_failAt = 3;
    EXPECT_EQ(23, Set(eSetTest));
    EXPECT_EQ(0, Set(eSetCleanup));
    EXPECT_EQ((Log{"226 2", "226 3"}), m_impl.m_log);
}

TEST_F(ImplList, UndoAndCleanupGoOnAfterAFailureAndReportTheFirst)
{
    for (SSetSlot& slot : m_slots)
        slot.tested = slot.committed = 1;
    for (ESnmpSetOpCode op : {eSetUndo, eSetCleanup}) {
        m_impl.m_failAt = 2;
        m_impl.m_failAlsoAt = 3;
        m_impl.m_failIn = op;
        EXPECT_EQ(22, Set(op));
        EXPECT_EQ(1, m_index);
        EXPECT_EQ(3u, m_impl.m_log.size());
        m_impl.m_failAt = 4;
        EXPECT_EQ(23, Set(op));
        EXPECT_EQ(2, m_index);
    }
}

TEST_F(ImplList, HandlerThatThrowsIsGenErrAtItsOwnPosition)
{
    m_impl.m_throws = true;
    m_impl.m_failAt = 3;
    m_index = 1;
    EXPECT_EQ(eSnmpGenErr, m_impl.Get(9, m_list, m_index, 3));
    EXPECT_EQ(2, m_index);
    for (SSetSlot& slot : m_slots)
        slot.tested = slot.committed = 1;
    for (ESnmpSetOpCode op : kAllPhases) {
        const bool goesOn = op == eSetUndo || op == eSetCleanup;
        m_impl.m_failIn = op;
        EXPECT_EQ(eSnmpGenErr, Set(op)) << op;
        EXPECT_EQ(2, m_index) << op;
        EXPECT_EQ(goesOn ? 3u : 2u, m_impl.m_log.size()) << op;
    }
}

TEST_F(ImplList, WithoutSlotsEveryPhaseVisitsAll)
{
    for (ESnmpSetOpCode op : kAllPhases) {
        EXPECT_EQ(0, Set(op, false));
        EXPECT_EQ(3u, m_impl.m_log.size());
        EXPECT_EQ((std::vector<void**>{nullptr, nullptr, nullptr}), m_impl.m_slots);
    }
}

TEST_F(ImplList, MarksAreTheAdaptersBusiness)
{
    m_impl.m_adapter = false;
    EXPECT_EQ(0, Set(eSetTest));
    EXPECT_FALSE(m_slots[1].tested);
}

// Whether another thread could enter while a handler runs.
class CLockProbe : public CProbe {
public:
    using CProbe::Get;
    using CProbe::Set;
    int Get(unsigned, BVarBind& binding) override
    {
        binding.Value().SetInt(1);
        return Look();
    }
    int Set(unsigned, ESnmpSetOpCode, void**, const BVarBind&) override { return Look(); }
    int NextInstance(unsigned, BVarBind& binding) override
    {
        binding.Name().Append(1u);
        Look();
        return 1;
    }
    void Initialize() override { Look(); }
    void Cleanup() override { Look(); }

    int m_free = 0;

private:
    static void* TryLock(void* self) VKMIBH_TSA(no_thread_safety_analysis)
    {
        CLockProbe* probe = static_cast<CLockProbe*>(self);
        if (probe->Mutex().Wait(0) == eWaitDone) {
            probe->m_free++;
            probe->Mutex().Done();
        }
        return nullptr;
    }
    int Look()
    {
        pthread_t thread;
        if (pthread_create(&thread, nullptr, TryLock, this) != 0)
            return eSnmpGenErr;
        pthread_join(thread, nullptr);
        return 0;
    }
};

class CLockGroup : public BMibImplGroup {
public:
    explicit CLockGroup(CLockProbe& probe) : m_probe(probe) {}
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_probe; }

private:
    CLockProbe& m_probe;
};

TEST(ImplLock, HandlersRunUnderTheMutex)
{
    CLockProbe probe;
    CLockGroup group(probe);
    EXPECT_EQ(1, group.Init());
    BVarBindList list;
    list.Append(BObjectIdentifier(1u), IntValue(1));
    int index = 0;
    EXPECT_EQ(0, probe.Get(1, list, index, 1));
    EXPECT_EQ(0, probe.GetNext(1, list[0]));
    EXPECT_EQ(0, probe.Set(1, list, eSetTest, nullptr, index, 1));
    group.Cleanup();
    EXPECT_EQ(0, probe.m_free);
    BVarBind binding;
    probe.Get(1, binding);
    EXPECT_EQ(1, probe.m_free) << "and is free again afterwards";
}

} // namespace
} // namespace VLK
