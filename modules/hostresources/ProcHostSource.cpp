#include "modules/hostresources/ProcHostSource.h"

#include "modules/hostresources/ProcText.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>
#include <utmpx.h>

namespace VLK::modules {

namespace {

class CDescriptor {
public:
    explicit CDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~CDescriptor()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    operator int() const { return m_descriptor; }

private:
    const int m_descriptor;
};

// Files of /proc have no size: they are read to their end.
std::optional<std::string> ReadFile(const std::string& path)
{
    const CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file < 0)
        return std::nullopt;
    std::string bytes;
    char part[4096];
    for (;;) {
        const ssize_t count = read(file, part, sizeof part);
        if (count == 0)
            return bytes;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        bytes.append(part, static_cast<size_t>(count));
    }
}

bool IsNumber(const char* name) { return std::strspn(name, "0123456789") == std::strlen(name); }

// "cpu0 user nice system idle iowait irq softirq steal guest guest_nice". Times of
// guests are in user and nice already; old kernels tell the first four only.
bool ParseProcessor(std::string_view line, SProcessorTime& processor)
{
    enum { eIdle = 3, eIoWait = 4, eSteal = 7 };
    CProcText text(line);
    if (!text.Take("cpu") || text.Rest().substr(0, 1) == " " || !text.TakeNumber(processor.number))
        return false;
    uint64_t time = 0;
    int count = 0;
    for (; count <= eSteal && text.TakeNumber(time); ++count)
        (count == eIdle || count == eIoWait ? processor.idle : processor.busy) += time;
    return count > eIdle;
}

// In "name\t: value".
bool TakeColon(CProcText& text)
{
    text.SkipBlanks();
    const bool isThere = text.Take(':');
    text.SkipBlanks();
    return isThere;
}

EDiskKind KindOf(const SMount& mount)
{
    // Numbers that Linux assigns to kinds of devices for good.
    constexpr unsigned kFloppyMajor = 2;
    constexpr unsigned kCompactDiscMajor = 11;
    return mount.major == kFloppyMajor        ? eFloppyDisk
           : mount.major == kCompactDiscMajor ? eCompactDisc
                                              : eFixedDisk;
}

} // namespace

std::optional<SDiskSpace> MeasureDisk(const SMount& mount)
{
    const CDescriptor directory(open(mount.mountPoint.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (directory < 0)
        return std::nullopt;
#ifdef STATX_MNT_ID
    // Something may be mounted over it, or over a directory above it.
    struct statx found = {};
    if (statx(directory, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &found) == 0 &&
        (found.stx_mask & STATX_MNT_ID) && found.stx_mnt_id != mount.id)
        return std::nullopt;
#endif
    struct statvfs space = {};
    if (fstatvfs(directory, &space) != 0)
        return std::nullopt;
    return SDiskSpace{space.f_frsize ? space.f_frsize : space.f_bsize, space.f_blocks,
                      space.f_bfree};
}

CProcHostSource::CProcHostSource(std::string proc, std::string utmp, FMeasure measure)
    : m_proc(std::move(proc)), m_utmp(std::move(utmp)), m_measure(std::move(measure))
{
}

std::optional<std::string> CProcHostSource::Read(const char* name) const
{
    return ReadFile(m_proc + "/" + name);
}

int64_t CProcHostSource::Milliseconds()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// "350735.47 234388.90": the kernel writes two decimals.
std::optional<uint64_t> CProcHostSource::ReadUptime()
{
    const std::string file = Read("uptime").value_or("");
    CProcText text(file);
    uint64_t seconds = 0;
    if (!text.TakeNumber(seconds) || !text.Take('.'))
        return std::nullopt;
    const size_t digits = text.Rest().find_first_not_of("0123456789");
    unsigned hundredths = 0;
    if (digits != 2 || !text.TakeNumber(hundredths))
        return std::nullopt;
    return seconds * 100 + hundredths;
}

SHostDate CProcHostSource::ReadDate()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tzset(); // the zone may be set anew while the agent runs
    tm local = {};
    localtime_r(&now.tv_sec, &local);
    SHostDate date;
    date.year = local.tm_year + 1900;
    date.month = local.tm_mon + 1;
    date.day = local.tm_mday;
    date.hour = local.tm_hour;
    date.minute = local.tm_min;
    date.second = local.tm_sec;
    date.deciSecond = static_cast<int>(now.tv_nsec / 100000000);
    date.zoneMinutes = static_cast<int>(local.tm_gmtoff / 60);
    return date;
}

std::optional<std::string> CProcHostSource::ReadLoadParameters()
{
    std::optional<std::string> line = Read("cmdline");
    if (line)
        line->erase(line->find_last_not_of('\n') + 1);
    return line;
}

std::vector<SMount> CProcHostSource::ReadLocalDisks() const
{
    return LocalDisks(ParseMounts(Read("self/mountinfo").value_or("")));
}

// Of several mounts of a directory the last one is on top.
std::string CProcHostSource::ReadLoadDevice()
{
    const std::vector<SMount> disks = ReadLocalDisks();
    for (const char* directory : {"/boot", "/"}) {
        const auto disk = std::find_if(disks.rbegin(), disks.rend(), [&](const SMount& mount) {
            return mount.mountPoint == directory && CProcText(mount.source).Take("/dev/");
        });
        if (disk != disks.rend())
            return disk->source;
    }
    return std::string();
}

std::optional<unsigned> CProcHostSource::ReadLimit(const char* name) const
{
    const std::string file = Read(name).value_or("");
    uint64_t limit = 0;
    if (!CProcText(file).TakeNumber(limit))
        return std::nullopt;
    return static_cast<unsigned>(std::min<uint64_t>(limit, INT_MAX));
}

std::optional<unsigned> CProcHostSource::CountProcesses() const
{
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(m_proc.c_str()), closedir);
    if (!directory)
        return std::nullopt;
    unsigned count = 0;
    // No other thread has this directory open.
    // cppcheck-suppress readdirCalled
    while (const dirent* const entry = readdir(directory.get()))
        count += IsNumber(entry->d_name);
    return count;
}

bool CProcHostSource::IsAlive(int process) const
{
    return access((m_proc + "/" + std::to_string(process)).c_str(), F_OK) == 0;
}

// A session that was killed leaves its record behind.
std::optional<unsigned> CProcHostSource::CountSessions() const
{
    const std::optional<std::string> bytes = ReadFile(m_utmp);
    if (!bytes)
        return std::nullopt;
    unsigned count = 0;
    utmpx record;
    for (size_t at = 0; at + sizeof record <= bytes->size(); at += sizeof record) {
        std::memcpy(&record, bytes->data() + at, sizeof record);
        count += record.ut_type == USER_PROCESS && record.ut_user[0] && IsAlive(record.ut_pid);
    }
    return count;
}

// Every process takes a thread and a process id, so the lower limit counts.
SHostProcesses CProcHostSource::ReadProcesses()
{
    SHostProcesses processes;
    processes.users = CountSessions();
    processes.loaded = CountProcesses();
    const std::optional<unsigned> threads = ReadLimit("sys/kernel/threads-max");
    const std::optional<unsigned> ids = ReadLimit("sys/kernel/pid_max");
    processes.most = threads && ids ? std::min(threads, ids) : threads ? threads : ids;
    return processes;
}

SHostMemory CProcHostSource::ReadMemory()
{
    SHostMemory memory;
    const std::pair<const char*, std::optional<uint64_t>*> wanted[] = {
        {"MemTotal:", &memory.total},      {"MemFree:", &memory.free},
        {"Buffers:", &memory.buffers},     {"Cached:", &memory.cached},
        {"SwapTotal:", &memory.swapTotal}, {"SwapFree:", &memory.swapFree}};
    const std::string file = Read("meminfo").value_or("");
    CProcText text(file);
    for (std::string_view line; text.TakeLine(line);) {
        CProcText words(line);
        std::string_view name;
        uint64_t size = 0;
        if (!words.TakeWord(name) || !words.TakeNumber(size))
            continue;
        for (const auto& [label, value] : wanted) {
            if (name == label)
                *value = size;
        }
    }
    return memory;
}

std::vector<SHostDisk> CProcHostSource::ReadDisks()
{
    std::vector<SHostDisk> disks;
    std::set<std::pair<unsigned, unsigned>> seen;
    for (const SMount& mount : ReadLocalDisks()) {
        const std::pair<unsigned, unsigned> device(mount.major, mount.minor);
        if (seen.count(device))
            continue;
        const std::optional<SDiskSpace> space = m_measure(mount);
        if (!space || space->blocks == 0 || space->blockSize == 0)
            continue;
        seen.insert(device);
        disks.push_back(
            {mount.mountPoint, KindOf(mount), space->blockSize, space->blocks, space->freeBlocks});
    }
    return disks;
}

std::vector<SProcessorTime> CProcHostSource::ReadProcessorTimes()
{
    std::vector<SProcessorTime> processors;
    const std::string file = Read("stat").value_or("");
    CProcText text(file);
    for (std::string_view line; text.TakeLine(line);) {
        SProcessorTime processor;
        if (ParseProcessor(line, processor))
            processors.push_back(processor);
    }
    const auto before = [](const SProcessorTime& a, const SProcessorTime& b) {
        return a.number < b.number;
    };
    std::sort(processors.begin(), processors.end(), before);
    return processors;
}

std::map<unsigned, std::string> CProcHostSource::ReadProcessorNames()
{
    std::map<unsigned, std::string> names;
    const std::string file = Read("cpuinfo").value_or("");
    CProcText text(file);
    unsigned processor = 0;
    bool isKnown = false;
    for (std::string_view line; text.TakeLine(line);) {
        CProcText words(line);
        if (words.Take("processor"))
            isKnown = TakeColon(words) && words.TakeNumber(processor);
        else if (words.Take("model name") && isKnown && TakeColon(words))
            names[processor] = words.Rest();
    }
    return names;
}

} // namespace VLK::modules
