// The walk for GETNEXT over what a module says of its instances.
#include <gtest/gtest.h>

#include <functional>

#include "tests/impl/Probe.h"

namespace VLK {
namespace {

class CWalker : public CProbe {
public:
    using CProbe::Get;
    int Get(unsigned, BVarBind& binding) override { return m_get(binding); }
    int NextInstance(unsigned, BVarBind& binding) override
    {
        ++m_steps;
        return m_next(binding);
    }

    std::function<int(BVarBind&)> m_get = [](BVarBind& binding) {
        binding.Value().SetInt(1);
        return 0;
    };
    std::function<int(BVarBind&)> m_next;
    int m_steps = 0;
};

// Counts the last arc up to 9.
int CountUp(BVarBind& binding)
{
    unsigned& last = binding.Name()[binding.Name().Length() - 1];
    if (last >= 9)
        return 0;
    ++last;
    return 1;
}

class ImplGetNext : public ::testing::Test {
protected:
    // The answer to 1.3.9.1 as "name tag", or "status n".
    std::string Next(const char* asked = "1.3.9.1")
    {
        BVarBind binding(OidOf(asked));
        const int status = m_impl.GetNext(3, binding);
        return status ? "status " + std::to_string(status)
                      : TextOf(binding.Name()) + " " + std::to_string(binding.Value().Syntax());
    }
    CWalker m_impl;
};

TEST_F(ImplGetNext, FirstInstanceWithAValue)
{
    m_impl.m_next = CountUp;
    EXPECT_EQ("1.3.9.2 2", Next());
    EXPECT_EQ(1, m_impl.m_steps);
}

TEST_F(ImplGetNext, InstancesWithoutValueAreSteppedOver)
{
    m_impl.m_next = CountUp;
    m_impl.m_get = [](BVarBind& binding) {
        const unsigned last = binding.Name()[3];
        if (last == 4)
            binding.Value().SetInt(4);
        else
            binding.Value().SetV2Exception(last == 2 ? eNoSuchObject : eNoSuchInstance);
        return 0;
    };
    EXPECT_EQ("1.3.9.4 2", Next());
    EXPECT_EQ("1.3.9.9 130", Next("1.3.9.4"));
}

TEST_F(ImplGetNext, NoFurtherInstanceIsEndOfMibView)
{
    m_impl.m_next = CountUp;
    EXPECT_EQ("1.3.9.9 130", Next("1.3.9.9"));
}

TEST_F(ImplGetNext, NameOfAStepThatLedNowhereIsTakenBack)
{
    m_impl.m_next = [](BVarBind& binding) {
        binding.Name() = OidOf("1.3.9.7.7");
        return 0;
    };
    EXPECT_EQ("1.3.9.1 130", Next());
}

TEST_F(ImplGetNext, ErrorsEndTheWalk)
{
    m_impl.m_next = CountUp;
    for (int status : {2, 5, 13}) {
        m_impl.m_get = [=](BVarBind&) { return status; };
        EXPECT_EQ("status " + std::to_string(status), Next());
    }
}

TEST_F(ImplGetNext, EndOfMibViewFromAHandlerIsAnAnswer)
{
    m_impl.m_next = CountUp;
    m_impl.m_get = [](BVarBind& binding) {
        binding.Value().SetV2Exception(eEndOfMibView);
        return 0;
    };
    EXPECT_EQ("1.3.9.2 130", Next());
    EXPECT_EQ(1, m_impl.m_steps);
}

TEST_F(ImplGetNext, ModuleThatStandsStillIsExhausted)
{
    m_impl.m_next = [](BVarBind&) { return 1; };
    EXPECT_EQ("1.3.9.1 130", Next());
}

TEST_F(ImplGetNext, ModuleThatGoesBackIsExhaustedWhereItWasAsked)
{
    m_impl.m_next = [](BVarBind& binding) {
        binding.Name() = OidOf("1.3.9");
        return 1;
    };
    EXPECT_EQ("1.3.9.1 130", Next());
}

TEST_F(ImplGetNext, ModuleThatCirclesOverUnreadableInstancesIsExhausted)
{
    m_impl.m_get = [](BVarBind& binding) {
        binding.Value().SetV2Exception(eNoSuchInstance);
        return 0;
    };
    m_impl.m_next = [](BVarBind& binding) {
        unsigned& last = binding.Name()[3];
        last = (last + 1) % 5;
        return 1;
    };
    EXPECT_EQ("1.3.9.4 130", Next());
    EXPECT_EQ(4, m_impl.m_steps);
}

TEST_F(ImplGetNext, NamesLongerThanTheProtocolAllowsAreWalkedToo)
{
    m_impl.m_next = CountUp;
    for (unsigned length : {127u, 128u, 129u, 300u}) {
        BObjectIdentifier name;
        for (unsigned i = 0; i < length; ++i)
            name.Append(3u);
        BVarBind binding(name);
        ++name[length - 1];
        EXPECT_EQ(0, m_impl.GetNext(3, binding));
        EXPECT_EQ(TextOf(name), TextOf(binding.Name()));
    }
    m_impl.m_next = [](BVarBind&) { return 1; };
    BVarBind empty;
    EXPECT_EQ(0, m_impl.GetNext(3, empty));
    EXPECT_EQ(int(eEndOfMibView), int(empty.Value().Syntax()));
}

} // namespace
} // namespace VLK
