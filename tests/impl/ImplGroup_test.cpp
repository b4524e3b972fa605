#include <gtest/gtest.h>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

const SConstraintMapEntry kConventions[] = {{eConstraintRange, 0, "Percent", 0, 100},
                                            kConstraintEnd};
using Log = std::vector<std::string>;

class CMember : public CProbe {
public:
    CMember(Log& log, std::string name) : m_log(log), m_name(std::move(name))
    {
        BMibImpl::Cleanup();
    }
    // Neither calls the base.
    void Initialize() override
    {
        m_log.push_back("initialize " + m_name + (IsInitialized() ? " again" : "") +
                        (FindTCConstraintMapEntry("Percent") ? " with conventions" : ""));
    }
    void Cleanup() override
    {
        m_log.push_back("cleanup " + m_name + (IsInitialized() ? " started" : ""));
    }

private:
    Log& m_log;
    std::string m_name;
};

class CGroup : public BMibImplGroup {
public:
    explicit CGroup(Log& log) : BMibImplGroup("group"), m_log(log) {}
    int GetNumImpls() override
    {
        m_log.push_back("count");
        return m_count;
    }
    BMibImpl* GetImplAt(int index) override { return m_members[static_cast<size_t>(index)]; }
    const SConstraintMapEntry* GetTCConstraintMap() const override { return m_conventions; }
    void InitDefVals() override { m_log.push_back("defaults"); }

    Log& m_log;
    std::vector<BMibImpl*> m_members;
    int m_count = 0;
    const SConstraintMapEntry* m_conventions = kConventions;
};

TEST(ImplGroup, InitStartsEveryMemberAndSkipsNull)
{
    Log log;
    CMember a(log, "a"), b(log, "b");
    CGroup group(log);
    group.m_members = {&a, nullptr, &b};
    group.m_count = 3;
    EXPECT_EQ(3, group.Init());
    EXPECT_EQ((Log{"defaults", "count", "initialize a with conventions",
                   "initialize b with conventions"}),
              log);
    EXPECT_TRUE(a.IsInitialized() && b.IsInitialized()) << "set by the group, not the override";
    log.clear();
    group.Cleanup();
    EXPECT_EQ((Log{"count", "cleanup a started", "cleanup b started"}), log);
    EXPECT_FALSE(a.IsInitialized() || b.IsInitialized());
}

TEST(ImplGroup, NothingToStartReturnsTheCount)
{
    for (int count : {0, -1, -7}) {
        Log log;
        CGroup group(log);
        group.m_count = count;
        EXPECT_EQ(count, group.Init());
        EXPECT_EQ((Log{"defaults", "count"}), log);
        group.Cleanup();
    }
}

TEST(ImplGroup, GroupWithoutConventionsTakesEarlierOnesAway)
{
    Log log;
    CMember a(log, "a");
    a.SetExtrenalTCConstraints(kConventions);
    CGroup group(log);
    group.m_members = {&a};
    group.m_count = 1;
    group.m_conventions = nullptr;
    EXPECT_EQ(1, group.Init());
    EXPECT_EQ(nullptr, a.FindTCConstraintMapEntry("Percent"));
}

TEST(ImplGroup, Defaults)
{
    class CBare : public BMibImplGroup {
    public:
        int GetNumImpls() override { return 0; }
        BMibImpl* GetImplAt(int) override { return nullptr; }
    } bare;
    EXPECT_EQ(nullptr, bare.GetTCConstraintMap());
    bare.InitDefVals();
    EXPECT_TRUE(bare.Name().empty());
    Log log;
    EXPECT_STREQ("group", CGroup(log).Name().c_str());
}

TEST(Impl, DefaultsOfTheBase)
{
    CProbe probe;
    EXPECT_STREQ("BMibImpl", probe.ToString().c_str());
    EXPECT_NE(nullptr, probe.GetIMibInfo());
    EXPECT_FALSE(probe.HandlesInstance(OidOf("1.3.9.1")));
    EXPECT_EQ(unsigned(eImplBase), probe.ImplKind());
}

} // namespace
} // namespace VLK
