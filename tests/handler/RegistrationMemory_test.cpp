// Registration through the handler without memory: what is said to be registered is
// served, what is not can be registered later, and no lock stays behind.
#include "tests/support/AllocationSweep.h"
#include "tests/support/ListHandler.h"
#include "tests/support/RowStatusProbe.h"

#include <vkmibh/testing/requests.h>
#include <vkmibh/timer.h>

#include <memory>

namespace VLK {
namespace Test {
namespace {

struct SRegistration {
    SRegistration() : handler(nullptr), module("1.3.5.1.2.3"), client(handler)
    {
        module.Add("1.3.5.1.2.3.4", 4);
        for (CRowProbe* table : {&first, &second}) {
            table->logs = false;
            table->Row("7").status = eRowActive;
        }
    }

    bool Serves(const char* name)
    {
        EXPECT_EQ(0, client.Get({name}));
        return client.SyntaxAt(0) == eAsnInteger;
    }
    bool ServesModule() { return Serves("1.3.5.1.2.3.4"); }
    bool ServesFirst() { return Serves("1.3.6.9.1.3.7"); }
    bool ServesSecond() { return Serves("1.3.6.9.2.3.7"); }

    struct SGroup : BMibImplGroup {
        explicit SGroup(SRegistration& owner) : BMibImplGroup(BString("tables")), m_owner(owner) {}
        int GetNumImpls() override { return 2; }
        BMibImpl* GetImplAt(int index) override
        {
            return index == 0 ? &m_owner.first : &m_owner.second;
        }
        SRegistration& m_owner;
    };

    BMibHandler handler;
    ListHandler module;
    CRowProbe first{"1.3.6.9.1"}, second{"1.3.6.9.2"};
    SGroup group{*this};
    Client client;
};

std::unique_ptr<SRegistration> Make() { return std::make_unique<SRegistration>(); }

class RegistrationMemory : public ::testing::Test {
protected:
    // The timer and the registry of transactions stay for the rest of the process.
    RegistrationMemory()
    {
        BTimer::GetInstance();
        Make();
    }
};

TEST_F(RegistrationMemory, AHandlerIsServedExactlyWhenItWasAccepted)
{
    const unsigned allocations = VLKTest::SweepAllocations(
        Make, [](auto& all) { return all->handler.RegisterSubtreeHandler(&all->module); },
        [](auto& all, bool accepted) {
            EXPECT_EQ(accepted, all->ServesModule());
            EXPECT_EQ(!accepted, all->handler.RegisterSubtreeHandler(&all->module));
            EXPECT_TRUE(all->ServesModule());
        });
    EXPECT_GT(allocations, 3u);
}

TEST_F(RegistrationMemory, AGroupSkipsWhatItHasNoMemoryFor)
{
    VLKTest::SweepAllocations(
        Make, [](auto& all) { return all->handler.RegisterGroup(&all->group); },
        [](auto& all, bool done) {
            EXPECT_TRUE(done);
            const bool first = all->ServesFirst(), second = all->ServesSecond();
            EXPECT_EQ(first && second, all->handler.UnregisterGroup(&all->group));
            EXPECT_TRUE(all->handler.RegisterGroup(&all->group));
            EXPECT_TRUE(all->ServesFirst() && all->ServesSecond());
        });
}

TEST_F(RegistrationMemory, WhatIsUnregisteredIsGoneAtOnce)
{
    VLKTest::SweepAllocations(
        [] {
            auto all = Make();
            EXPECT_TRUE(all->handler.RegisterSubtreeHandler(&all->module));
            EXPECT_TRUE(all->handler.RegisterGroup(&all->group));
            return all;
        },
        [](auto& all) {
            return all->handler.UnregisterSubtreeHandler(&all->module) == 1 &&
                   all->handler.UnregisterGroup(&all->group);
        },
        [](auto& all, bool done) {
            EXPECT_TRUE(done);
            EXPECT_FALSE(all->ServesModule() || all->ServesFirst() || all->ServesSecond());
        });
}

} // namespace
} // namespace Test
} // namespace VLK
