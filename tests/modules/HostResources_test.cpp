// The module between a host that a test makes up and a manager.
#include "FakeHost.h"
#include <vkmibh/testing/module.h>

#include <vkmibh/testing/walks.h>

#include <thread>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

using Rows = std::vector<std::string>;

constexpr const char* kHost = "1.3.6.1.2.1.25";
constexpr uint64_t kTebibyte = uint64_t(1) << 40;

// A host with something in every object. Its processors have been watched for ten
// seconds once the module is there and Watched() was called.
void Furnish(SFakeHost& host)
{
    host.milliseconds = 5000;
    host.uptime = 35073547;
    host.date = {2026, 11, 21, 19, 38, 37, 4, -210};
    host.loadParameters = "root=/dev/vda1 quiet";
    host.loadDevice = "/dev/vda1";
    host.processes.users = 3;
    host.processes.loaded = 170;
    host.processes.most = 32768;
    host.memory.total = 8000000;
    host.memory.free = 5000000;
    host.memory.buffers = 1000;
    host.memory.cached = 2000000;
    host.memory.swapTotal = 4000000;
    host.memory.swapFree = 3999000;
    host.disks = {{"/", eFixedDisk, 4096, 1000000, 400000}, {"/data", eFixedDisk, 512, 10, 0}};
    host.processors = {{0, 1000, 1000}, {1, 50, 8000}, {3, 0, 0}};
    host.names = {{0, "Model 0"}, {1, "Model 1"}};
}

class HostResources : public testing::Test {
protected:
    HostResources() { host.Set(Furnish); }

    CHostResourcesModule& Module(unsigned timeToLive = 0)
    {
        if (!module) {
            module = std::make_unique<CHostResourcesModule>(host, timeToLive);
            client = std::make_unique<ModuleClient>(*module, kHost);
        }
        return *module;
    }
    std::string Get(const std::string& name)
    {
        Module();
        return client->Get(name);
    }
    // Ten seconds on: a quarter, nothing and all of it busy.
    void Watched()
    {
        Module();
        host.Set([](SFakeHost& now) {
            now.milliseconds += 10000;
            now.processors = {{0, 1250, 1750}, {1, 50, 9000}, {3, 1000, 0}};
        });
    }
    Rows Column(const std::string& column)
    {
        Module();
        Rows rows;
        for (const std::string& row : client->Walk()) {
            if (row.compare(0, column.size() + 1, column + ".") == 0)
                rows.push_back(row.substr(column.size() + 1));
        }
        return rows;
    }
    void SetDisks(const std::vector<SHostDisk>& disks)
    {
        host.Set([&](SFakeHost& now) { now.disks = disks; });
    }

    FakeHost host;
    std::unique_ptr<CHostResourcesModule> module;
    std::unique_ptr<ModuleClient> client;
};

std::string StorageColumn(int column) { return "2.3.1." + std::to_string(column); }
SHostDisk Disk(const std::string& mountPoint) { return {mountPoint, eFixedDisk, 1024, 8, 2}; }

const char* const kUnknownProduct = "0.0";
const std::string kNone = "Null/noSuchInstance";

} // namespace

TEST_F(HostResources, SystemGroupIsServedWhichWayEverItIsAsked)
{
    Module();
    EXPECT_EQ(
        TwoWalks(*module->GetImplAt(0), "1.3.6.1.2.1.25.1",
                 {{"1.3.6.1.2.1.25.1.1.0", eAsnTimeTicks, "35073547"},
                  {"1.3.6.1.2.1.25.1.2.0", eAsnOctetString, "07:ea:0b:15:13:26:25:04:2d:03:1e"},
                  {"1.3.6.1.2.1.25.1.3.0", eAsnInteger, "100001"},
                  {"1.3.6.1.2.1.25.1.4.0", eAsnOctetString, "root=/dev/vda1 quiet"},
                  {"1.3.6.1.2.1.25.1.5.0", eAsnGauge32, "3"},
                  {"1.3.6.1.2.1.25.1.6.0", eAsnGauge32, "170"},
                  {"1.3.6.1.2.1.25.1.7.0", eAsnInteger, "32768"}})
            .Run(),
        "");
}

TEST_F(HostResources, MemorySizeIsServedWhichWayEverItIsAsked)
{
    Module();
    EXPECT_EQ(TwoWalks(*module->GetImplAt(1), "1.3.6.1.2.1.25.2.2",
                       {{"1.3.6.1.2.1.25.2.2.0", eAsnInteger, "8000000"}})
                  .Run(),
              "");
}

#define VK_STORAGE(rest) "1.3.6.1.2.1.25.2.3.1." rest
#define VK_STORAGE_TYPE(type) "1.3.6.1.2.1.25.2.1." type

TEST_F(HostResources, StorageTableIsServedWhichWayEverItIsAsked)
{
    Module();
    EXPECT_EQ(TwoWalks(*module->GetImplAt(2), "1.3.6.1.2.1.25.2.3.1",
                       {{VK_STORAGE("1.1"), eAsnInteger, "1"},
                        {VK_STORAGE("1.2"), eAsnInteger, "2"},
                        {VK_STORAGE("1.3"), eAsnInteger, "3"},
                        {VK_STORAGE("1.4"), eAsnInteger, "4"},
                        {VK_STORAGE("1.5"), eAsnInteger, "5"},
                        {VK_STORAGE("1.101"), eAsnInteger, "101"},
                        {VK_STORAGE("1.102"), eAsnInteger, "102"},
                        {VK_STORAGE("2.1"), eAsnObjectId, VK_STORAGE_TYPE("2")},
                        {VK_STORAGE("2.2"), eAsnObjectId, VK_STORAGE_TYPE("3")},
                        {VK_STORAGE("2.3"), eAsnObjectId, VK_STORAGE_TYPE("1")},
                        {VK_STORAGE("2.4"), eAsnObjectId, VK_STORAGE_TYPE("1")},
                        {VK_STORAGE("2.5"), eAsnObjectId, VK_STORAGE_TYPE("3")},
                        {VK_STORAGE("2.101"), eAsnObjectId, VK_STORAGE_TYPE("4")},
                        {VK_STORAGE("2.102"), eAsnObjectId, VK_STORAGE_TYPE("4")},
                        {VK_STORAGE("3.1"), eAsnOctetString, "Physical memory"},
                        {VK_STORAGE("3.2"), eAsnOctetString, "Virtual memory"},
                        {VK_STORAGE("3.3"), eAsnOctetString, "Memory buffers"},
                        {VK_STORAGE("3.4"), eAsnOctetString, "Cached memory"},
                        {VK_STORAGE("3.5"), eAsnOctetString, "Swap space"},
                        {VK_STORAGE("3.101"), eAsnOctetString, "/"},
                        {VK_STORAGE("3.102"), eAsnOctetString, "/data"},
                        {VK_STORAGE("4.1"), eAsnInteger, "1024"},
                        {VK_STORAGE("4.2"), eAsnInteger, "1024"},
                        {VK_STORAGE("4.3"), eAsnInteger, "1024"},
                        {VK_STORAGE("4.4"), eAsnInteger, "1024"},
                        {VK_STORAGE("4.5"), eAsnInteger, "1024"},
                        {VK_STORAGE("4.101"), eAsnInteger, "4096"},
                        {VK_STORAGE("4.102"), eAsnInteger, "512"},
                        {VK_STORAGE("5.1"), eAsnInteger, "8000000"},
                        {VK_STORAGE("5.2"), eAsnInteger, "12000000"},
                        {VK_STORAGE("5.3"), eAsnInteger, "8000000"},
                        {VK_STORAGE("5.4"), eAsnInteger, "8000000"},
                        {VK_STORAGE("5.5"), eAsnInteger, "4000000"},
                        {VK_STORAGE("5.101"), eAsnInteger, "1000000"},
                        {VK_STORAGE("5.102"), eAsnInteger, "10"},
                        {VK_STORAGE("6.1"), eAsnInteger, "3000000"},
                        {VK_STORAGE("6.2"), eAsnInteger, "3001000"},
                        {VK_STORAGE("6.3"), eAsnInteger, "1000"},
                        {VK_STORAGE("6.4"), eAsnInteger, "2000000"},
                        {VK_STORAGE("6.5"), eAsnInteger, "1000"},
                        {VK_STORAGE("6.101"), eAsnInteger, "600000"},
                        {VK_STORAGE("6.102"), eAsnInteger, "10"}})
                  .Run(),
              "");
}

#define VK_DEVICE(rest) "1.3.6.1.2.1.25.3.2.1." rest
#define VK_DEVICE_TYPE(type) "1.3.6.1.2.1.25.3.1." type

TEST_F(HostResources, DeviceTableIsServedWhichWayEverItIsAsked)
{
    Module();
    EXPECT_EQ(TwoWalks(*module->GetImplAt(3), "1.3.6.1.2.1.25.3.2.1",
                       {{VK_DEVICE("1.1"), eAsnInteger, "1"},
                        {VK_DEVICE("1.2"), eAsnInteger, "2"},
                        {VK_DEVICE("1.4"), eAsnInteger, "4"},
                        {VK_DEVICE("1.100001"), eAsnInteger, "100001"},
                        {VK_DEVICE("2.1"), eAsnObjectId, VK_DEVICE_TYPE("3")},
                        {VK_DEVICE("2.2"), eAsnObjectId, VK_DEVICE_TYPE("3")},
                        {VK_DEVICE("2.4"), eAsnObjectId, VK_DEVICE_TYPE("3")},
                        {VK_DEVICE("2.100001"), eAsnObjectId, VK_DEVICE_TYPE("6")},
                        {VK_DEVICE("3.1"), eAsnOctetString, "Model 0"},
                        {VK_DEVICE("3.2"), eAsnOctetString, "Model 1"},
                        {VK_DEVICE("3.4"), eAsnOctetString, "cpu3"},
                        {VK_DEVICE("3.100001"), eAsnOctetString, "/dev/vda1"},
                        {VK_DEVICE("4.1"), eAsnObjectId, kUnknownProduct},
                        {VK_DEVICE("4.2"), eAsnObjectId, kUnknownProduct},
                        {VK_DEVICE("4.4"), eAsnObjectId, kUnknownProduct},
                        {VK_DEVICE("4.100001"), eAsnObjectId, kUnknownProduct},
                        {VK_DEVICE("5.1"), eAsnInteger, "2"},
                        {VK_DEVICE("5.2"), eAsnInteger, "2"},
                        {VK_DEVICE("5.4"), eAsnInteger, "2"},
                        {VK_DEVICE("5.100001"), eAsnInteger, "1"}})
                  .Run(),
              "");
}

TEST_F(HostResources, ProcessorTableIsServedWhichWayEverItIsAsked)
{
    Watched();
    EXPECT_EQ(TwoWalks(*module->GetImplAt(4), "1.3.6.1.2.1.25.3.3.1",
                       {{"1.3.6.1.2.1.25.3.3.1.1.1", eAsnObjectId, kUnknownProduct},
                        {"1.3.6.1.2.1.25.3.3.1.1.2", eAsnObjectId, kUnknownProduct},
                        {"1.3.6.1.2.1.25.3.3.1.1.4", eAsnObjectId, kUnknownProduct},
                        {"1.3.6.1.2.1.25.3.3.1.2.1", eAsnInteger, "25"},
                        {"1.3.6.1.2.1.25.3.3.1.2.2", eAsnInteger, "0"},
                        {"1.3.6.1.2.1.25.3.3.1.2.4", eAsnInteger, "100"}})
                  .Run(),
              "");
}

TEST_F(HostResources, AWalkOfTheWholeModulePassesAllOfIt)
{
    Watched();
    const Rows all = client->Walk();
    EXPECT_EQ(all.size(), 7u + 1 + 6 * 7 + 5 * 4 + 2 * 3);
    EXPECT_EQ(all.front(), "1.1.0=35073547");
    EXPECT_EQ(all.back(), "3.3.1.2.4=100");
}

TEST_F(HostResources, WhatIsNotKnownHasNoInstance)
{
    host.Set([](SFakeHost& now) {
        now = SFakeHost();
        now.date.year = 2026;
    });
    EXPECT_EQ(Column("1").size(), 1u) << "the date";
    EXPECT_EQ(client->Walk().size(), 1u);
    for (const char* name :
         {"1.1.0", "1.3.0", "1.4.0", "1.5.0", "1.6.0", "1.7.0", "2.2.0", "2.3.1.1.1", "2.3.1.5.2",
          "2.3.1.3.101", "3.2.1.1.1", "3.3.1.1.1", "3.3.1.2.1", "3.2.1.3.100001"})
        EXPECT_EQ(Get(name), kNone) << name;
}

TEST_F(HostResources, NothingIsServedThatIsNotKept)
{
    Watched();
    for (const char* name : {"2.3.1.7.1", "2.3.1.7.101", "2.3.1.1", "2.3.1.1.6", "2.3.1.1.1.0",
                             "3.2.1.6.1", "3.2.1.1.3", "3.3.1.1.100001", "3.3.1.2.3", "3.3.1.3.1"})
        EXPECT_EQ(Get(name), kNone) << name;
}

TEST_F(HostResources, AllOfItIsReadOnly)
{
    Watched();
    for (const std::string& row : client->Walk()) {
        const std::string name = row.substr(0, row.find('='));
        EXPECT_EQ(client->Set({{name, Number(1)}}), eSnmpNotWritable) << name;
    }
    EXPECT_EQ(client->Set({{"1.2.0", Bytes("12345678")}}), eSnmpNotWritable);
}

TEST_F(HostResources, UptimeWrapsAsTimeTicksDo)
{
    host.Set([](SFakeHost& now) { now.uptime = (uint64_t(1) << 32) + 42; });
    EXPECT_EQ(Get("1.1.0"), "42");
}

TEST_F(HostResources, DatesCarryTheirZone)
{
    const auto dateOf = [&](const SHostDate& date) {
        host.Set([&](SFakeHost& now) { now.date = date; });
        return Get("1.2.0");
    };
    EXPECT_EQ(dateOf({2026, 1, 2, 3, 4, 5, 6, 0}), "07:ea:01:02:03:04:05:06:2b:00:00");
    EXPECT_EQ(dateOf({2016, 12, 31, 23, 59, 60, 9, 845}), "07:e0:0c:1f:17:3b:3c:09:2b:0e:05");
    EXPECT_EQ(dateOf({2026, 1, 2, 3, 4, 5, 6, -570}), "07:ea:01:02:03:04:05:06:2d:09:1e");
}

TEST_F(HostResources, LoadParametersHave128Octets)
{
    host.Set([](SFakeHost& now) { now.loadParameters = std::string(127, 'x') + "yz"; });
    EXPECT_EQ(Get("1.4.0"), std::string(127, 'x') + "y");
    host.Set([](SFakeHost& now) { now.loadParameters = ""; });
    EXPECT_EQ(Get("1.4.0"), "");
}

TEST_F(HostResources, MemoryBeyondAnInteger32IsCappedOrScaled)
{
    host.Set([](SFakeHost& now) {
        now.memory.total = 6 * kTebibyte / 1024;
        now.memory.free = 2 * kTebibyte / 1024;
        now.memory.swapTotal = now.memory.swapFree = 0;
    });
    EXPECT_EQ(Get("2.2.0"), "2147483647");
    EXPECT_EQ(Get("2.3.1.4.1"), "4096");
    EXPECT_EQ(Get("2.3.1.5.1"), std::to_string(6 * kTebibyte / 4096));
    EXPECT_EQ(Get("2.3.1.6.1"), std::to_string(4 * kTebibyte / 4096));
    EXPECT_EQ(Get("2.3.1.5.2"), std::to_string(6 * kTebibyte / 4096));
    EXPECT_EQ(Get("2.3.1.4.5"), "1024") << "a row by itself";
    EXPECT_EQ(Get("2.3.1.5.5") + Get("2.3.1.6.5"), "00");
}

TEST_F(HostResources, DisksOfAnySizeAreToldInUnitsThatFit)
{
    constexpr uint64_t kMost = 2147483647;
    SetDisks({{"/most", eFixedDisk, 4096, kMost, 0},
              {"/more", eFixedDisk, 4096, kMost + 1, 1},
              {"/16T", eFixedDisk, 512, 16 * kTebibyte / 512, 8 * kTebibyte / 512},
              {"/1E", eFixedDisk, 4096, uint64_t{1024} * 1024 * kTebibyte / 4096, 0},
              {"/end", eFixedDisk, 1, ~uint64_t(0), 0},
              {"/wide", eFixedDisk, uint64_t(1) << 33, 3, 1},
              {"/odd", eFixedDisk, 4096, 10, 11}});
    Module();
    EXPECT_EQ(Column(StorageColumn(4)), (Rows{"1=1024", "2=1024", "3=1024", "4=1024", "5=1024",
                                              "101=4096", "102=8192", "103=16384", "104=1073741824",
                                              "105=1073741824", "106=1073741824", "107=4096"}));
    const Rows sizes = Column(StorageColumn(5));
    EXPECT_EQ(Rows(sizes.begin() + 5, sizes.end()),
              (Rows{"101=2147483647", "102=1073741824", "103=1073741824", "104=1073741824",
                    "105=2147483647", "106=24", "107=10"}));
    const Rows used = Column(StorageColumn(6));
    EXPECT_EQ(Rows(used.begin() + 5, used.end()),
              (Rows{"101=2147483647", "102=1073741823", "103=536870912", "104=1073741824",
                    "105=2147483647", "106=16", "107=0"}));
}

TEST_F(HostResources, KindsOfDisksAreToldApart)
{
    SetDisks({{"/f", eFloppyDisk, 512, 2, 1}, {"/c", eCompactDisc, 2048, 2, 0}, Disk("/d")});
    EXPECT_EQ(Get("2.3.1.2.101"), VK_STORAGE_TYPE("6"));
    EXPECT_EQ(Get("2.3.1.2.102"), VK_STORAGE_TYPE("7"));
    EXPECT_EQ(Get("2.3.1.2.103"), VK_STORAGE_TYPE("4"));
}

TEST_F(HostResources, DescriptionsAreDisplayStrings)
{
    SetDisks({Disk("/a b\n\xc3\xa4\x7f~"), Disk("/" + std::string(300, 'x'))});
    EXPECT_EQ(Get("2.3.1.3.101"), "/a b????~");
    EXPECT_EQ(Get("2.3.1.3.102"), "/" + std::string(254, 'x'));
    host.Set([](SFakeHost& now) {
        now.names[0] = std::string(63, 'x') + "yz";
        now.loadDevice = std::string(100, 'd');
    });
    EXPECT_EQ(Get("3.2.1.3.1"), std::string(63, 'x') + "y");
    EXPECT_EQ(Get("3.2.1.3.100001"), std::string(64, 'd'));
}

TEST_F(HostResources, AMountPointKeepsItsIndexAndLeavesItToNobody)
{
    SetDisks({Disk("/a"), Disk("/b"), Disk("/c")});
    const std::string column = StorageColumn(3);
    const auto disks = [&] {
        const Rows all = Column(column);
        return Rows(all.begin() + 5, all.end());
    };
    EXPECT_EQ(disks(), (Rows{"101=/a", "102=/b", "103=/c"}));
    SetDisks({Disk("/c"), Disk("/new"), Disk("/a")});
    EXPECT_EQ(disks(), (Rows{"101=/a", "103=/c", "104=/new"}));
    SetDisks({});
    EXPECT_EQ(disks(), Rows());
    SetDisks({Disk("/last"), Disk("/b"), Disk("/new")});
    EXPECT_EQ(disks(), (Rows{"102=/b", "104=/new", "105=/last"}));
}

TEST_F(HostResources, MemoryThatIsPartlyKnownIsPartlyThere)
{
    const auto known = [&](auto change) {
        host.Set([&](SFakeHost& now) {
            Furnish(now);
            now.disks.clear();
            change(now.memory);
        });
        return Column(StorageColumn(1));
    };
    EXPECT_EQ(known([](SHostMemory& m) { m.swapFree.reset(); }), (Rows{"1=1", "3=3", "4=4"}));
    EXPECT_EQ(known([](SHostMemory& m) { m.swapTotal.reset(); }), (Rows{"1=1", "3=3", "4=4"}));
    EXPECT_EQ(known([](SHostMemory& m) { m.free.reset(); }), (Rows{"3=3", "4=4", "5=5"}));
    EXPECT_EQ(known([](SHostMemory& m) { m.total.reset(); }), Rows{"5=5"});
    EXPECT_EQ(known([](SHostMemory& m) { m.buffers.reset(); }), (Rows{"1=1", "2=2", "4=4", "5=5"}));
    EXPECT_EQ(known([](SHostMemory& m) { m.cached.reset(); }), (Rows{"1=1", "2=2", "3=3", "5=5"}));
    known([](SHostMemory& m) { m.free = *m.total + 1; });
    EXPECT_EQ(Get("2.3.1.6.1"), "0") << "never below";
}

TEST_F(HostResources, HundredsOfProcessorsHaveARowEach)
{
    host.Set([](SFakeHost& now) {
        now.processors.clear();
        for (unsigned i = 0; i < 512; ++i)
            now.processors.push_back({i, 0, 0});
    });
    Module();
    host.Set([](SFakeHost& now) {
        now.milliseconds += 60000;
        for (SProcessorTime& processor : now.processors)
            processor = {processor.number, processor.number % 101, 100 - processor.number % 101};
    });
    const Rows loads = Column("3.3.1.2");
    ASSERT_EQ(loads.size(), 512u);
    for (unsigned i = 0; i < 512; ++i)
        EXPECT_EQ(loads[i], std::to_string(i + 1) + "=" + std::to_string(i % 101));
}

TEST_F(HostResources, AProcessorComesWithARowAndGoesWithIt)
{
    Watched();
    EXPECT_EQ(Column("3.3.1.2"), (Rows{"1=25", "2=0", "4=100"}));
    host.Set([](SFakeHost& now) {
        now.processors = {{0, 1250, 1750}, {2, 7, 7}, {3, 1000, 0}};
        now.names[2] = "Model 2";
    });
    EXPECT_EQ(Column("3.3.1.1"), (Rows{"1=0.0", "3=0.0", "4=0.0"}));
    EXPECT_EQ(Column("3.3.1.2"), (Rows{"1=25", "4=100"})) << "nothing to compare it with";
    EXPECT_EQ(Column("3.2.1.3"), (Rows{"1=Model 0", "3=Model 2", "4=cpu3", "100001=/dev/vda1"}));
}

TEST_F(HostResources, NamesAreReadForNewProcessorsOnly)
{
    for (int i = 0; i < 5; ++i)
        Get("3.2.1.3.1");
    EXPECT_EQ(host.Readings().names, 1);
    host.Set([](SFakeHost& now) { now.processors.push_back({9, 0, 0}); });
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Get("3.2.1.3.10"), "cpu9");
    EXPECT_EQ(host.Readings().names, 2);
}

TEST_F(HostResources, WithoutTimeToLiveEachRequestReadsOnce)
{
    Module(0);
    for (int i = 1; i <= 3; ++i) {
        Client manager(client->handler);
        ASSERT_EQ(
            manager.Get({"1.3.6.1.2.1.25.1.5.0", "1.3.6.1.2.1.25.1.6.0", "1.3.6.1.2.1.25.1.7.0",
                         "1.3.6.1.2.1.25.2.3.1.5.1", "1.3.6.1.2.1.25.2.3.1.6.1",
                         "1.3.6.1.2.1.25.3.3.1.1.1", "1.3.6.1.2.1.25.3.2.1.3.1"}),
            0);
        EXPECT_EQ(host.Readings().processes, i);
        EXPECT_EQ(host.Readings().memory, i);
        EXPECT_EQ(host.Readings().disks, i);
        EXPECT_EQ(host.Readings().processors, i + 1) << "with the first sample";
    }
}

TEST_F(HostResources, ATimeToLiveServesRequestsUntilItIsOver)
{
    Module(1000);
    const auto changed = [&](int64_t later) {
        host.Set([&](SFakeHost& now) {
            now.milliseconds += later;
            ++*now.processes.users;
            ++now.disks[1].freeBlocks;
        });
        return Get("1.5.0") + " " + Get("2.3.1.6.102");
    };
    EXPECT_EQ(changed(0), "4 9");
    EXPECT_EQ(changed(999), "4 9");
    EXPECT_EQ(changed(1), "6 7");
    EXPECT_EQ(changed(1), "6 7");
    EXPECT_EQ(changed(5000), "8 5");
    EXPECT_EQ(host.Readings().processes, 3);
    EXPECT_EQ(host.Readings().disks, 3);
}

TEST_F(HostResources, AnotherTimeToLiveCountsForWhatIsThere)
{
    const auto read = [&] {
        Client manager(client->handler);
        EXPECT_EQ(manager.Get({"1.3.6.1.2.1.25.1.5.0", "1.3.6.1.2.1.25.2.3.1.6.102",
                               "1.3.6.1.2.1.25.3.2.1.3.1"}),
                  0);
        return std::vector<int>{host.Readings().processes, host.Readings().disks};
    };
    Module(1000);
    EXPECT_EQ(read(), (std::vector<int>{1, 1}));
    host.Set([](SFakeHost& now) { now.milliseconds += 2000; });
    module->SetTimeToLive(3000);
    const int processors = host.Readings().processors;
    EXPECT_EQ(read(), (std::vector<int>{1, 1}));
    EXPECT_EQ(host.Readings().processors, processors);
    module->SetTimeToLive(2000);
    EXPECT_EQ(read(), (std::vector<int>{2, 2}));
    EXPECT_EQ(host.Readings().processors, processors + 1);
}

TEST_F(HostResources, UptimeDateAndMemorySizeAreNeverOld)
{
    Module(1000000);
    Get("1.1.0");
    host.Set([](SFakeHost& now) {
        now.uptime = 7;
        now.date = {2000, 1, 1, 0, 0, 0, 0, 0};
        now.memory.total = 9;
    });
    EXPECT_EQ(Get("1.1.0"), "7");
    EXPECT_EQ(Get("1.2.0"), "07:d0:01:01:00:00:00:00:2b:00:00");
    EXPECT_EQ(Get("2.2.0"), "9");
}

TEST_F(HostResources, ManyManagersAndTheTimerAskAtOnce)
{
    Watched();
    std::vector<std::thread> managers;
    for (int i = 0; i < 4; ++i) {
        managers.emplace_back([this] {
            for (int round = 0; round < 20; ++round) {
                Client manager(client->handler);
                EXPECT_EQ(manager.Get({"1.3.6.1.2.1.25.2.3.1.5.101", "1.3.6.1.2.1.25.3.3.1.2.1",
                                       "1.3.6.1.2.1.25.3.2.1.3.1", "1.3.6.1.2.1.25.1.6.0"}),
                          0);
                EXPECT_EQ(manager.TextAt(0), "1000000");
                EXPECT_EQ(manager.TextAt(1), "25");
                EXPECT_EQ(manager.TextAt(2), "Model 0");
                EXPECT_EQ(manager.TextAt(3), "170");
            }
        });
    }
    for (int i = 0; i < 40; ++i)
        BTimer::GetInstance()->Timeout(CProcessorLoads::kInterval);
    for (std::thread& manager : managers)
        manager.join();
    EXPECT_GE(host.Readings().processors, 41);
}

TEST_F(HostResources, IsSampledFromItsInitToItsCleanup)
{
    auto samples = [&] {
        const int before = host.Readings().processors;
        BTimer::GetInstance()->Timeout(CProcessorLoads::kInterval);
        return host.Readings().processors > before;
    };
    CHostResourcesModule own(host, 0);
    EXPECT_FALSE(samples());
    EXPECT_EQ(own.Init(), own.GetNumImpls());
    EXPECT_TRUE(samples());
    own.Cleanup();
    EXPECT_FALSE(samples());
    EXPECT_EQ(own.Init(), own.GetNumImpls());
    EXPECT_TRUE(samples());
    EXPECT_EQ(own.GetImplAt(-1), nullptr);
    EXPECT_EQ(own.GetImplAt(own.GetNumImpls()), nullptr);
}

TEST_F(HostResources, MayEndAfterTheTimer)
{
    CHostResourcesModule own(host, 0);
    own.Init();
    BTimer::DestroyInstance();
    own.Cleanup();
    EXPECT_EQ(BTimer::s_pInstance.load(), nullptr) << "not made anew";
}
