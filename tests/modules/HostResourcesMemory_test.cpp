// Memory that runs out during a request or a sample.
#include "FakeHost.h"
#include <vkmibh/testing/module.h>

#include "modules/hostresources/ProcHostSource.h"
#include "tests/support/AllocationSweep.h"

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

// A module with values in all its objects, which has just been started.
struct SFurnished {
    SFurnished()
    {
        host.Set([](SFakeHost& now) {
            now.uptime = 1;
            now.date = {2026, 11, 21, 1, 2, 3, 4, 60};
            now.loadParameters = std::string(100, 'p');
            now.loadDevice = std::string(100, 'd');
            now.processes.users = 1;
            now.memory.total = now.memory.free = 100;
            now.disks = {{std::string(100, '/'), eFixedDisk, 1024, 9, 1}};
            now.processors = {{0, 0, 0}, {1, 0, 0}};
            now.names = {{0, std::string(50, 'n')}};
        });
        module.Init();
        host.Set([](SFakeHost& now) {
            now.milliseconds = 10000;
            now.processors = {{0, 1, 3}, {1, 2, 2}};
        });
    }

    FakeHost host;
    CHostResourcesModule module{host, 0};
    unsigned requests = 0;
};

// A GET of that instance; `granted` allocations are made, then none.
int Ask(SFurnished& asked, int implementation, const char* name, int granted, BVarBindList& list)
{
    list.Clear();
    list.Append(MakeOid(name));
    int index = 0;
    FailingAlloc fail(granted);
    return asked.module.GetImplAt(implementation)->Get(++asked.requests, list, index, 1);
}

} // namespace

TEST(HostResourcesMemory, ARequestIsAnsweredOrAnError)
{
    const std::pair<int, const char*> objects[] = {
        {0, "1.3.6.1.2.1.25.1.2.0"},       {0, "1.3.6.1.2.1.25.1.4.0"},
        {0, "1.3.6.1.2.1.25.1.5.0"},       {1, "1.3.6.1.2.1.25.2.2.0"},
        {2, "1.3.6.1.2.1.25.2.3.1.2.101"}, {2, "1.3.6.1.2.1.25.2.3.1.3.101"},
        {2, "1.3.6.1.2.1.25.2.3.1.5.101"}, {3, "1.3.6.1.2.1.25.3.2.1.3.1"},
        {3, "1.3.6.1.2.1.25.3.2.1.4.1"},   {4, "1.3.6.1.2.1.25.3.3.1.1.1"},
        {4, "1.3.6.1.2.1.25.3.3.1.2.2"}};
    for (const auto& [implementation, name] : objects) {
        SCOPED_TRACE(name);
        SFurnished reference;
        BVarBindList whole;
        whole.Append(MakeOid(name));
        int index = 0;
        ASSERT_EQ(reference.module.GetImplAt(implementation)->Get(1, whole, index, 1), 0);
        const std::string value = whole[0].Value().ValToStr().c_str();
        const unsigned tag = whole[0].Value().Syntax();
        ASSERT_FALSE(whole[0].Value().IsException());
        ASSERT_NE(value, "") << "or it would not be missed";
        struct SAsked {
            std::unique_ptr<SFurnished> furnished = std::make_unique<SFurnished>();
            BVarBindList list;
        };
        VLKTest::SweepAllocations(
            [&, asked = name] {
                SAsked made;
                made.list.Append(MakeOid(asked));
                return made;
            },
            [&, at = implementation](SAsked& asked) {
                int i = 0;
                return asked.furnished->module.GetImplAt(at)->Get(1, asked.list, i, 1);
            },
            [&](SAsked& asked, int status) {
                if (status == 0) {
                    EXPECT_EQ(asked.list[0].Value().Syntax(), tag);
                    EXPECT_EQ(asked.list[0].Value().ValToStr().c_str(), value);
                } else {
                    EXPECT_EQ(status, eSnmpGenErr);
                }
            });
    }
}

TEST(HostResourcesMemory, ARequestAfterwardsFindsEverything)
{
    SFurnished furnished;
    BVarBindList list;
    const std::pair<int, const char*> objects[] = {{2, "1.3.6.1.2.1.25.2.3.1.3.101"},
                                                   {3, "1.3.6.1.2.1.25.3.2.1.3.1"}};
    for (const auto& [implementation, name] : objects) {
        for (int granted = 0; granted < 10; ++granted)
            Ask(furnished, implementation, name, granted, list);
        EXPECT_EQ(Ask(furnished, implementation, name, 1000, list), 0);
        const char first = implementation == 2 ? '/' : 'n';
        EXPECT_EQ(list[0].Value().ValToStr().c_str()[0], first);
    }
}

TEST(HostResourcesMemory, AStepOfAWalkGoesOnOrEndsIt)
{
    const std::pair<int, const char*> steps[] = {{0, "1.3.6.1.2.1.25.1.3.0"},
                                                 {2, "1.3.6.1.2.1.25.2.3.1.3.5"},
                                                 {3, "1.3.6.1.2.1.25.3.2.1.3.2"},
                                                 {4, "1.3.6.1.2.1.25.3.3.1.1.2"}};
    SFurnished furnished;
    for (const auto& [implementation, name] : steps) {
        BMibImpl& impl = *furnished.module.GetImplAt(implementation);
        BVarBind whole(MakeOid(name));
        ASSERT_EQ(impl.GetNext(++furnished.requests, whole), 0);
        for (int granted = 0;; ++granted) {
            BVarBind binding(MakeOid(name));
            FailingAlloc fail(granted);
            const auto step = [&, id = ++furnished.requests] {
                try {
                    return impl.GetNext(id, binding);
                } catch (const std::bad_alloc&) {
                    return int(eSnmpGenErr);
                }
            };
            const int status = step();
            if (!fail.Failed()) {
                EXPECT_EQ(binding.Name(), whole.Name());
                break;
            }
            EXPECT_TRUE(status == eSnmpGenErr || binding.Value().Syntax() == eEndOfMibView ||
                        binding.Name() == whole.Name())
                << name << " " << granted << " " << TextOf(binding.Name());
        }
    }
}

TEST(HostResourcesMemory, ASampleThatFindsNoneIsLeftOut)
{
    FakeHost host;
    host.Set([](SFakeHost& now) { now.processors = {{0, 0, 0}}; });
    CProcessorLoads loads(host);
    loads.TakeSample();
    host.Set([](SFakeHost& now) {
        now.milliseconds = 5000;
        now.processors = {{0, 1, 0}};
    });
    for (int granted = 0;; ++granted) {
        FailingAlloc fail(granted);
        try {
            loads.TakeSample();
        } catch (const std::bad_alloc&) {
        }
        if (!fail.Failed())
            break;
    }
    host.Set([](SFakeHost& now) {
        now.milliseconds = 10000;
        now.processors = {{0, 1, 1}};
    });
    EXPECT_EQ(loads.Compare(host.ReadProcessorTimes(), 10000)[0], 50);
}

// Whatever is refused, a file is either known or the reading ends.
TEST(HostResourcesMemory, ReadingTheHostEndsOrIsWhole)
{
    CProcHostSource source;
    const size_t processors = source.ReadProcessorTimes().size();
    const size_t disks = source.ReadDisks().size();
    const std::optional<uint64_t> memory = source.ReadMemory().total;
    for (int granted = 0;; ++granted) {
        FailingAlloc fail(granted);
        try {
            EXPECT_EQ(source.ReadProcessorTimes().size(), processors);
            EXPECT_EQ(source.ReadMemory().total, memory);
            EXPECT_EQ(source.ReadDisks().size(), disks);
            source.ReadProcesses();
            source.ReadProcessorNames();
            source.ReadLoadDevice();
            source.ReadLoadParameters();
            source.ReadUptime();
        } catch (const std::bad_alloc&) {
        }
        if (!fail.Failed())
            break;
    }
}
