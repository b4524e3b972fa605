// The host that the tests run on, compared with what the C library says of it.
#include "modules/hostresources/HostResourcesModule.h"
#include "modules/hostresources/ProcHostSource.h"

#include <vkmibh/testing/module.h>

#include "tests/support/TempDir.h"

#include <chrono>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace VLK;
using namespace VLK::Test;
using namespace VLK::modules;

namespace {

constexpr auto kPatience = std::chrono::seconds(30);

// Not time(), which may lag behind the clock that is asked.
time_t Now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

class HostResourcesKernel : public testing::Test {
protected:
    // Asks until it says true; whether it did.
    template <class Condition>
    static bool Comes(Condition condition)
    {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return true;
    }
    long long Number(const std::string& name) { return std::stoll(client.Get(name)); }
    std::map<int, std::string> Column(const std::string& column)
    {
        std::map<int, std::string> rows;
        for (const std::string& row : client.Walk()) {
            if (row.compare(0, column.size() + 1, column + ".") == 0)
                rows[std::stoi(row.substr(column.size() + 1))] = row.substr(row.find('=') + 1);
        }
        return rows;
    }
    // Busy and all ticks, summed over the processors.
    std::pair<uint64_t, uint64_t> Ticks()
    {
        std::pair<uint64_t, uint64_t> sum;
        for (const SProcessorTime& processor : source.ReadProcessorTimes()) {
            sum.first += processor.busy;
            sum.second += processor.busy + processor.idle;
        }
        return sum;
    }

    CProcHostSource source;
    CHostResourcesModule module{source, 0};
    ModuleClient client{module, "1.3.6.1.2.1.25"};
};

} // namespace

TEST_F(HostResourcesKernel, UptimeIsThatOfTheSystem)
{
    struct sysinfo before = {}, after = {};
    sysinfo(&before);
    const long long uptime = Number("1.1.0");
    sysinfo(&after);
    EXPECT_GE(uptime / 100 + 1, before.uptime);
    EXPECT_LE(uptime / 100, after.uptime);
}

TEST_F(HostResourcesKernel, DateIsNow)
{
    const time_t before = Now();
    Client manager(client.handler);
    ASSERT_EQ(manager.Get({"1.3.6.1.2.1.25.1.2.0"}), 0);
    const time_t after = Now();
    const BOctetString& date = manager.answer[0].Value().Octets();
    ASSERT_EQ(date.Length(), 11u);
    tm told = {};
    told.tm_year = date[0] * 256 + date[1] - 1900;
    told.tm_mon = date[2] - 1;
    told.tm_mday = date[3];
    told.tm_hour = date[4];
    told.tm_min = date[5];
    told.tm_sec = date[6];
    const time_t minute = date[8] == '-' ? -60 : 60;
    const time_t utc = timegm(&told) - minute * (date[9] * 60 + date[10]);
    EXPECT_GE(utc, before);
    EXPECT_LE(utc, after);
}

TEST_F(HostResourcesKernel, ParametersAreItsCommandLine)
{
    EXPECT_EQ(client.Get("1.4.0"), ReadFile("/proc/cmdline").substr(0, 128));
}

TEST_F(HostResourcesKernel, ProcessesAreCountedAndLimited)
{
    const auto runs = [](long long process) {
        return std::filesystem::exists("/proc/" + std::to_string(process));
    };
    ASSERT_TRUE(runs(getpid()));
    EXPECT_GE(Number("1.6.0"), 1);
    // Others come and go, so one of many attempts has to agree.
    EXPECT_TRUE(Comes([&] {
        long long count = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc"))
            count += isdigit(static_cast<unsigned char>(entry.path().filename().c_str()[0])) != 0;
        return count == Number("1.6.0");
    }));
    const long long most = Number("1.7.0");
    EXPECT_EQ(most, std::min(std::stoll(ReadFile("/proc/sys/kernel/pid_max")),
                             std::stoll(ReadFile("/proc/sys/kernel/threads-max"))));
}

TEST_F(HostResourcesKernel, MemoryIsThatOfTheSystem)
{
    const long long kibibytes = sysconf(_SC_PHYS_PAGES) * (sysconf(_SC_PAGESIZE) / 1024);
    EXPECT_EQ(Number("2.2.0"), std::min(kibibytes, 2147483647LL));
    EXPECT_EQ(Number("2.3.1.5.1") * (Number("2.3.1.4.1") / 1024), kibibytes);
    struct sysinfo system = {};
    sysinfo(&system);
    EXPECT_EQ(Number("2.3.1.5.5") * Number("2.3.1.4.5"),
              static_cast<long long>(system.totalswap) * system.mem_unit);
    EXPECT_GT(Number("2.3.1.6.1"), 0);
    EXPECT_LT(Number("2.3.1.6.1"), Number("2.3.1.5.1"));
}

TEST_F(HostResourcesKernel, DisksHaveTheSizesOfStatvfs)
{
    for (const auto& [index, mountPoint] : Column("2.3.1.3")) {
        if (index < 101)
            continue;
        const std::string row = "." + std::to_string(index);
        // What is written meanwhile changes it, so one of many attempts has to agree.
        EXPECT_TRUE(Comes([&, path = mountPoint] {
            struct statvfs space = {};
            if (statvfs(path.c_str(), &space) != 0)
                return false;
            const long long unit = Number("2.3.1.4" + row);
            const auto scale = unit / static_cast<long long>(space.f_frsize);
            return unit % static_cast<long long>(space.f_frsize) == 0 &&
                   Number("2.3.1.5" + row) == static_cast<long long>(space.f_blocks) / scale &&
                   Number("2.3.1.6" + row) ==
                       static_cast<long long>(space.f_blocks - space.f_bfree) / scale;
        })) << mountPoint;
    }
}

TEST_F(HostResourcesKernel, ARootOnABlockDeviceIsThere)
{
    struct stat root = {};
    ASSERT_EQ(stat("/", &root), 0);
    const auto disks = Column("2.3.1.3");
    const auto isRoot = [](const auto& disk) { return disk.second == "/"; };
    const bool isThere = std::any_of(disks.begin(), disks.end(), isRoot);
    EXPECT_TRUE(isThere || major(root.st_dev) == 0);
    EXPECT_EQ(client.Get("1.3.0") == "100001", !source.ReadLoadDevice().empty());
}

TEST_F(HostResourcesKernel, ProcessorsAreThoseOnline)
{
    const auto processors = Column("3.3.1.1");
    EXPECT_EQ(static_cast<long>(processors.size()), sysconf(_SC_NPROCESSORS_ONLN));
    EXPECT_EQ(Column("3.2.1.5").size(), processors.size() + (client.Get("1.3.0") == "100001"));
    const std::string names = ReadFile("/proc/cpuinfo");
    for (const auto& [index, name] : Column("3.2.1.3")) {
        const bool isModel = index < 100001 && name.compare(0, 3, "cpu") != 0;
        EXPECT_TRUE(!isModel || names.find(": " + name) != std::string::npos) << name;
    }
}

// The samples lie between readings of the test's own, so whatever the machine does
// meanwhile the load lies between what these say.
TEST_F(HostResourcesKernel, LoadIsWhatTheProcessorsDid)
{
    CProcessorLoads loads(source);
    const auto outerStart = source.ReadProcessorTimes();
    loads.TakeSample();
    const auto innerStart = source.ReadProcessorTimes();
    std::vector<SProcessorTime> processors, innerEnd;
    std::vector<std::optional<int>> told;
    ASSERT_TRUE(Comes([&] {
        innerEnd = source.ReadProcessorTimes();
        processors = source.ReadProcessorTimes();
        told = loads.Compare(processors, source.Milliseconds());
        return told.size() == outerStart.size() &&
               std::all_of(told.begin(), told.end(), [](const auto& load) { return !!load; });
    }));
    const auto outerEnd = source.ReadProcessorTimes();
    for (size_t i = 0; i < told.size(); ++i) {
        const double busyLeast = double(innerEnd[i].busy) - double(innerStart[i].busy);
        const double busyMost = double(outerEnd[i].busy) - double(outerStart[i].busy);
        const double idleLeast = double(innerEnd[i].idle) - double(innerStart[i].idle);
        const double idleMost = double(outerEnd[i].idle) - double(outerStart[i].idle);
        EXPECT_GE(*told[i] + 1, 100 * busyLeast / (busyLeast + idleMost));
        EXPECT_LE(*told[i] - 1, 100 * busyMost / (busyMost + idleLeast));
    }
}

TEST_F(HostResourcesKernel, TheLoadOfARunningAgentComesByItself)
{
    EXPECT_TRUE(Comes([&] { return Column("3.3.1.2").size() == Column("3.3.1.1").size(); }));
    for (const auto& [index, load] : Column("3.3.1.2")) {
        EXPECT_GE(std::stoi(load), 0) << index;
        EXPECT_LE(std::stoi(load), 100) << index;
    }
}

TEST(MeasureDisk, IsOfTheMountItselfAndOfADirectory)
{
    const std::vector<SMount> mounts = ParseMounts(ReadFile("/proc/self/mountinfo"));
    // The last mount at the root is the one that is seen there.
    const auto root = std::find_if(mounts.rbegin(), mounts.rend(),
                                   [](const SMount& mount) { return mount.mountPoint == "/"; });
    ASSERT_NE(root, mounts.rend());
    const std::optional<SDiskSpace> space = MeasureDisk(*root);
    struct statvfs told = {};
    ASSERT_EQ(statvfs("/", &told), 0);
    ASSERT_TRUE(space);
    EXPECT_EQ(space->blocks, told.f_blocks);
    EXPECT_EQ(space->blockSize, told.f_frsize);

    SMount other = *root;
    other.id = root->id + 1000000;
    EXPECT_FALSE(MeasureDisk(other)) << "another mount";
    other = *root;
    other.mountPoint = "/nowhere/at/all";
    EXPECT_FALSE(MeasureDisk(other));

    const TempDir dir;
    WriteFile(dir.File("file"), "");
    const auto at = [&](const std::string& path) {
        const auto measured = [&](SMount mount) {
            mount.mountPoint = path;
            return MeasureDisk(mount).has_value();
        };
        return std::any_of(mounts.begin(), mounts.end(), measured);
    };
    EXPECT_TRUE(at(dir.Path()));
    EXPECT_FALSE(at(dir.File("file"))) << "no directory";
}
