// The files of /proc, made up line by line.
#include "modules/hostresources/ProcHostSource.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TempDir.h"

#include <cstring>
#include <unistd.h>
#include <utmpx.h>

using namespace VLK::modules;

namespace {

using Texts = std::vector<std::string>;

// Not time(), which may lag behind the clock that is asked.
time_t Now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

class ProcHost : public testing::Test {
protected:
    // Beside others, so that what is read is told from what is not.
    void Write(const std::string& name, const std::string& text)
    {
        const std::string path = dir.File("proc/" + name);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        WriteFile(path, text);
    }
    void MakeDirectory(const std::string& name)
    {
        std::filesystem::create_directories(dir.File("proc/" + name));
    }
    void Remove(const std::string& name) { std::filesystem::remove_all(dir.File("proc/" + name)); }

    // As text: "mount point kind unit blocks free".
    Texts Disks()
    {
        Texts texts;
        for (const SHostDisk& disk : host.ReadDisks())
            texts.push_back(disk.mountPoint + " " + std::to_string(disk.kind) + " " +
                            std::to_string(disk.blockSize) + " " + std::to_string(disk.blocks) +
                            " " + std::to_string(disk.freeBlocks));
        return texts;
    }
    Texts Times(const std::string& stat)
    {
        Write("stat", stat);
        Texts texts;
        for (const SProcessorTime& time : host.ReadProcessorTimes())
            texts.push_back(std::to_string(time.number) + " " + std::to_string(time.busy) + " " +
                            std::to_string(time.idle));
        return texts;
    }
    std::optional<uint64_t> Uptime(const std::string& text)
    {
        Write("uptime", text);
        return host.ReadUptime();
    }
    // The bytes of such records, without the last ones.
    void WriteSessions(const std::vector<std::pair<short, int>>& typesAndProcesses,
                       size_t missing = 0)
    {
        std::string bytes;
        for (const auto& [type, process] : typesAndProcesses) {
            utmpx record = {};
            record.ut_type = type;
            record.ut_pid = process;
            std::memcpy(record.ut_user, "user", 4);
            bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
        }
        WriteFile(dir.File("utmp"), bytes.substr(0, bytes.size() - missing));
    }

    TempDir dir;
    std::vector<SMount> measured;
    std::map<std::string, SDiskSpace> spaces; // of mount points
    CProcHostSource host{dir.File("proc"), dir.File("utmp"),
                         [this](const SMount& mount) -> std::optional<SDiskSpace> {
                             measured.push_back(mount);
                             const auto space = spaces.find(mount.mountPoint);
                             if (space == spaces.end())
                                 return std::nullopt;
                             return space->second;
                         }};
};

} // namespace

TEST_F(ProcHost, UptimeIsThatOfTheHost)
{
    EXPECT_EQ(Uptime("350735.47 234388.90\n"), 35073547u);
    EXPECT_EQ(Uptime("0.05 0.00\n"), 5u);
    EXPECT_EQ(Uptime("42949673.00 1.00\n"), 4294967300u) << "wraps later";
    for (const char* text : {"", "\n", "x", "-1.00 1\n", "1 2\n", "1.5 2\n", "1.555 2\n", "1.",
                             ".50 1", "99999999999999999999.00 1\n"})
        EXPECT_FALSE(Uptime(text)) << text;
}

TEST_F(ProcHost, WhatCannotBeReadIsNotKnown)
{
    const auto expectNothing = [this] {
        EXPECT_FALSE(host.ReadUptime());
        EXPECT_FALSE(host.ReadLoadParameters());
        EXPECT_EQ(host.ReadLoadDevice(), "");
        EXPECT_FALSE(host.ReadProcesses().users);
        EXPECT_FALSE(host.ReadProcesses().most);
        EXPECT_FALSE(host.ReadMemory().total);
        EXPECT_FALSE(host.ReadMemory().swapFree);
        EXPECT_TRUE(host.ReadDisks().empty());
        EXPECT_TRUE(host.ReadProcessorTimes().empty());
        EXPECT_TRUE(host.ReadProcessorNames().empty());
    };
    expectNothing();
    EXPECT_FALSE(host.ReadProcesses().loaded);
    for (const char* name : {"uptime", "cmdline", "self/mountinfo", "meminfo", "stat", "cpuinfo",
                             "sys/kernel/pid_max", "sys/kernel/threads-max", "../utmp"})
        MakeDirectory(name);
    expectNothing();
    EXPECT_EQ(host.ReadProcesses().loaded, 0u);
}

TEST_F(ProcHost, DateHasTheZoneOfTheHost)
{
    const EnvironmentVariable own("TZ");
    for (const auto& [zone, minutes] : std::vector<std::pair<const char*, int>>{
             {"ABC-05:45", 345}, {"ABC+03:30", -210}, {"ABC0", 0}}) {
        own.Set(zone);
        const time_t first = Now();
        const SHostDate date = host.ReadDate();
        const time_t last = Now();
        tm local = {};
        local.tm_year = date.year - 1900;
        local.tm_mon = date.month - 1;
        local.tm_mday = date.day;
        local.tm_hour = date.hour;
        local.tm_min = date.minute;
        local.tm_sec = date.second;
        const time_t told = timegm(&local) - time_t{60} * minutes;
        EXPECT_LE(first, told) << zone;
        EXPECT_GE(last, told) << zone;
        EXPECT_EQ(date.zoneMinutes, minutes);
        EXPECT_GE(date.deciSecond, 0);
        EXPECT_LE(date.deciSecond, 9);
    }
}

TEST_F(ProcHost, LoadParametersAreTheKernelsCommandLine)
{
    Write("cmdline", "root=/dev/vda1 quiet\n");
    EXPECT_EQ(host.ReadLoadParameters(), "root=/dev/vda1 quiet");
    Write("cmdline", "");
    EXPECT_EQ(host.ReadLoadParameters(), "");
    Write("cmdline", std::string(10000, 'x'));
    EXPECT_EQ(host.ReadLoadParameters()->size(), 10000u);
}

TEST_F(ProcHost, ProcessesAreTheDirectoriesOfNumbers)
{
    for (const char* name : {"1", "42", "4194304", "self", "sys", "12x", "x12", "-3"})
        MakeDirectory(name);
    EXPECT_EQ(host.ReadProcesses().loaded, 3u);
}

TEST_F(ProcHost, TheLowerLimitIsTheMostProcessesThereCanBe)
{
    Write("sys/kernel/pid_max", "4194304\n");
    EXPECT_EQ(host.ReadProcesses().most, 4194304u);
    Write("sys/kernel/threads-max", "192735\n");
    EXPECT_EQ(host.ReadProcesses().most, 192735u);
    Write("sys/kernel/pid_max", "32768\n");
    EXPECT_EQ(host.ReadProcesses().most, 32768u);
    Remove("sys/kernel/pid_max");
    EXPECT_EQ(host.ReadProcesses().most, 192735u);
    Write("sys/kernel/threads-max", "99999999999\n");
    EXPECT_EQ(host.ReadProcesses().most, 2147483647u);
    Write("sys/kernel/threads-max", "many\n");
    EXPECT_FALSE(host.ReadProcesses().most);
}

TEST_F(ProcHost, UsersAreSessionsWhoseProcessLives)
{
    MakeDirectory("10");
    MakeDirectory("11");
    WriteSessions({{USER_PROCESS, 10},
                   {USER_PROCESS, 12},
                   {DEAD_PROCESS, 10},
                   {LOGIN_PROCESS, 11},
                   {BOOT_TIME, 11},
                   {USER_PROCESS, 0},
                   {USER_PROCESS, -1},
                   {USER_PROCESS, 11},
                   {USER_PROCESS, 11}});
    EXPECT_EQ(host.ReadProcesses().users, 3u);
    WriteSessions({});
    EXPECT_EQ(host.ReadProcesses().users, 0u);
    WriteSessions({{USER_PROCESS, 10}, {USER_PROCESS, 11}}, 1);
    EXPECT_EQ(host.ReadProcesses().users, 1u) << "a record that is being written";
}

TEST_F(ProcHost, MemoryIsFoundByItsNames)
{
    Write("meminfo", "MemTotal:       24731700 kB\nMemFree:        21025224 kB\n"
                     "MemAvailable:   23602476 kB\nBuffers:            7140 kB\n"
                     "Cached:          2730384 kB\nSwapCached:            9 kB\n"
                     "SwapTotal:       1000000 kB\nSwapFree:              0 kB\n");
    const SHostMemory memory = host.ReadMemory();
    EXPECT_EQ(memory.total, 24731700u);
    EXPECT_EQ(memory.free, 21025224u);
    EXPECT_EQ(memory.buffers, 7140u);
    EXPECT_EQ(memory.cached, 2730384u);
    EXPECT_EQ(memory.swapTotal, 1000000u);
    EXPECT_EQ(memory.swapFree, 0u);
}

TEST_F(ProcHost, MemoryThatIsNotToldIsNotKnown)
{
    Write("meminfo", "MemTotal: lots\n\nMemFree:\nBuffers: 7 kB\nnonsense\nCached: "
                     "18446744073709551616 kB\nSwapFree: 3");
    const SHostMemory memory = host.ReadMemory();
    EXPECT_FALSE(memory.total);
    EXPECT_FALSE(memory.free);
    EXPECT_EQ(memory.buffers, 7u);
    EXPECT_FALSE(memory.cached);
    EXPECT_FALSE(memory.swapTotal);
    EXPECT_EQ(memory.swapFree, 3u);
}

TEST_F(ProcHost, ProcessorsSplitTheirTimeIntoBusyAndIdle)
{
    EXPECT_EQ(Times("cpu  99 99 99 99 99 99 99 99 99 99\n"
                    "cpu0 1 20 300 4000 50000 600000 7000000 80000000 9 9\n"
                    "cpu1 5 0 0 7 0 0 0 0 0 0\n"
                    "intr 12345 0 0\nctxt 99\nprocesses 7\n"),
              (Texts{"0 87600321 54000", "1 5 7"}));
}

TEST_F(ProcHost, OldKernelsTellFourTimes)
{
    EXPECT_EQ(Times("cpu0 1 2 3 4\ncpu1 1 2 3 4 5\n"), (Texts{"0 6 4", "1 6 9"}));
}

TEST_F(ProcHost, LinesThatAreNoProcessorsArePassedOver)
{
    EXPECT_EQ(Times("cpu 1 2 3 4\ncpu5 1 2 3\ncpux 1 2 3 4\ncpu-1 1 2 3 4\n cpu6 1 2 3 4\n"
                    "cpu7\n\ncpu8 a b c d\ncpu99999999999 1 2 3 4\ncpu9 0 0 0 1"),
              Texts{"9 0 1"});
}

TEST_F(ProcHost, ProcessorsAreSortedByNumber)
{
    std::string stat;
    for (int i = 299; i >= 0; --i)
        stat += "cpu" + std::to_string(i) + " 1 0 0 1 0 0 0 0 0 0\n";
    stat += "intr" + std::string(40000, '0') + "\n";
    const Texts times = Times(stat);
    ASSERT_EQ(times.size(), 300u);
    for (size_t i = 0; i < 300; ++i)
        EXPECT_EQ(times[i], std::to_string(i) + " 1 1");
}

TEST_F(ProcHost, ProcessorsAreCalledByTheirModel)
{
    using Names = std::map<unsigned, std::string>;
    Write("cpuinfo", "processor\t: 0\nvendor_id\t: V\nmodel\t\t: 7\nmodel name\t: A B(R) @ 2\n\n"
                     "processor\t: 12\nmodel name\t: C\n\nprocessor\t: 13\nflags\t: x\n");
    EXPECT_EQ(host.ReadProcessorNames(), (Names{{0, "A B(R) @ 2"}, {12, "C"}}));
    Write("cpuinfo", "model name\t: nobody's\nprocessor\t: x\nmodel name\t: nobody's\n");
    EXPECT_EQ(host.ReadProcessorNames(), Names());
}

TEST_F(ProcHost, DisksHaveTheSizesOfTheirMounts)
{
    Write("self/mountinfo", "21 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                            "22 21 0:5 / /proc rw - proc proc rw\n"
                            "23 21 8:2 / /with\\040blank rw - xfs /dev/sda2 rw\n"
                            "24 21 11:0 / /cd ro - iso9660 /dev/sr0 ro\n"
                            "25 21 2:0 / /floppy rw - vfat /dev/fd0 rw\n");
    spaces = {{"/", {4096, 100, 50}},
              {"/with blank", {1024, 7, 7}},
              {"/cd", {2048, 9, 0}},
              {"/floppy", {512, 2880, 1}}};
    EXPECT_EQ(Disks(), (Texts{"/ 0 4096 100 50", "/with blank 0 1024 7 7", "/cd 2 2048 9 0",
                              "/floppy 1 512 2880 1"}));
    EXPECT_EQ(measured.size(), 4u) << "of disks only";
}

TEST_F(ProcHost, AFileSystemCountsOnceWhereItWasMountedFirst)
{
    Write("self/mountinfo", "21 1 8:1 / /unreachable rw - ext4 /dev/sda1 rw\n"
                            "22 21 8:1 /sub /first rw - ext4 /dev/sda1 rw\n"
                            "23 21 8:1 / /again rw - ext4 /dev/sda1 rw\n"
                            "24 21 8:2 / /other rw - ext4 /dev/sda2 rw\n"
                            "25 21 0:30 /@ /b rw - btrfs /dev/sdb rw\n"
                            "26 21 0:30 /@home /b/home rw - btrfs /dev/sdb rw\n");
    for (const char* name : {"/first", "/again", "/other", "/b", "/b/home"})
        spaces[name] = {1, 2, 1};
    EXPECT_EQ(Disks(), (Texts{"/first 0 1 2 1", "/other 0 1 2 1", "/b 0 1 2 1"}));
}

TEST_F(ProcHost, AFileSystemWithoutBlocksIsLeftOut)
{
    Write("self/mountinfo", "21 1 8:1 / /none rw - ext4 /dev/sda1 rw\n"
                            "22 1 8:2 / /unit rw - ext4 /dev/sda2 rw\n"
                            "23 1 8:3 / /some rw - ext4 /dev/sda3 rw\n");
    spaces = {{"/none", {4096, 0, 0}}, {"/unit", {0, 5, 0}}, {"/some", {1, 1, 0}}};
    EXPECT_EQ(Disks(), Texts{"/some 0 1 1 0"});
}

TEST_F(ProcHost, TheHostIsStartedFromTheDiskOfBoot)
{
    const std::string root = "21 1 8:1 / / rw - ext4 /dev/sda1 rw\n";
    Write("self/mountinfo", root + "22 21 8:2 / /data rw - ext4 /dev/sda2 rw\n");
    EXPECT_EQ(host.ReadLoadDevice(), "/dev/sda1");
    Write("self/mountinfo", root + "22 21 8:2 / /boot rw - ext4 /dev/sda2 rw\n");
    EXPECT_EQ(host.ReadLoadDevice(), "/dev/sda2");
    Write("self/mountinfo", root + "22 21 8:2 / / rw - ext4 /dev/sda2 rw\n");
    EXPECT_EQ(host.ReadLoadDevice(), "/dev/sda2") << "mounted over it";
    Write("self/mountinfo", "21 1 0:9 / / rw - btrfs /dev/sdb2 rw\n");
    EXPECT_EQ(host.ReadLoadDevice(), "/dev/sdb2");
    for (const char* line :
         {"21 1 0:9 / / rw - overlay overlay rw\n", "21 1 0:9 / / rw - nfs4 host:/root rw\n",
          "21 1 0:9 / / rw - zfs pool/root rw\n", "21 1 8:1 / /data rw - ext4 /dev/sda1 rw\n"}) {
        Write("self/mountinfo", line);
        EXPECT_EQ(host.ReadLoadDevice(), "") << line;
    }
}
