// The host as its kernel describes it.
#pragma once

#include "modules/hostresources/HostSource.h"
#include "modules/hostresources/MountTable.h"

#include <functional>

namespace VLK::modules {

struct SDiskSpace {
    uint64_t blockSize = 0;
    uint64_t blocks = 0;
    uint64_t freeBlocks = 0;
};

// Of what is mounted there now; none when that is another mount, no directory, or
// out of reach.
std::optional<SDiskSpace> MeasureDisk(const SMount& mount);

// Reads /proc anew at every call, the sessions of utmp, and the sizes of disks.
// docs/modules.md says which files, and what counts.
//
// Ownership: copies its parameters.
// Threads:   no state: for any number of threads.
// Errors:    as IHostSource; a file that cannot be read leaves out what it says.
// Contract:  sizes are asked of local disks only.
class CProcHostSource : public IHostSource {
public:
    using FMeasure = std::function<std::optional<SDiskSpace>(const SMount&)>;

    explicit CProcHostSource(std::string proc = "/proc", std::string utmp = "/var/run/utmp",
                             FMeasure measure = MeasureDisk);

    int64_t Milliseconds() override;
    std::optional<uint64_t> ReadUptime() override;
    SHostDate ReadDate() override;
    std::optional<std::string> ReadLoadParameters() override;
    std::string ReadLoadDevice() override;
    SHostProcesses ReadProcesses() override;
    SHostMemory ReadMemory() override;
    // A file system that is mounted more than once counts where it was mounted
    // first; one without blocks has no storage to tell of.
    std::vector<SHostDisk> ReadDisks() override;
    std::vector<SProcessorTime> ReadProcessorTimes() override;
    std::map<unsigned, std::string> ReadProcessorNames() override;

private:
    std::optional<std::string> Read(const char* name) const;
    std::optional<unsigned> ReadLimit(const char* name) const;
    std::optional<unsigned> CountProcesses() const;
    std::optional<unsigned> CountSessions() const;
    bool IsAlive(int process) const;
    std::vector<SMount> ReadLocalDisks() const;

    const std::string m_proc;
    const std::string m_utmp;
    const FMeasure m_measure;
};

} // namespace VLK::modules
