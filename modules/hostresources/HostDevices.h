// The devices of a host, as rows of hrDeviceTable and hrProcessorTable.
#pragma once

#include "modules/hostresources/ProcessorLoads.h"
#include "modules/hostresources/Snapshot.h"

namespace VLK::modules {

// The last arcs of the types below hrDeviceTypes.
enum EDeviceKind : unsigned { eDeviceKindProcessor = 3, eDeviceKindDiskStorage = 6 };
enum EDeviceStatus : int { eDeviceUnknown = 1, eDeviceRunning = 2 };

struct SDeviceRow {
    unsigned index = 0;
    unsigned type = 0;
    std::string description;
    EDeviceStatus status = eDeviceUnknown;
};

struct SProcessorRow {
    unsigned index = 0;
    std::optional<int> load;
};

struct SDeviceRows {
    std::vector<SDeviceRow> devices;
    std::vector<SProcessorRow> processors; // which are devices too
};

// The processors of a host, and the disk that it is started from.
//
// Ownership, Threads, Errors: as CHostStorage. Loads need samples: Loads().Start().
// Contract:  rows are sorted by their indexes.
class CHostDevices {
public:
    // Of the processor with the kernel's number 0. Linux has 8192 at most.
    static constexpr unsigned kFirstProcessorIndex = 1;
    static constexpr unsigned kLoadDeviceIndex = 100001; // after them all

    CHostDevices(IHostSource& source, unsigned timeToLive);
    void SetTimeToLive(unsigned timeToLive) { m_rows.SetTimeToLive(timeToLive); }
    std::shared_ptr<const SDeviceRows> At(unsigned request) { return m_rows.At(request); }
    CProcessorLoads& Loads() { return m_loads; }

private:
    SDeviceRows Read();
    void LearnNames(const std::vector<SProcessorTime>& processors);

    IHostSource& m_source;
    CProcessorLoads m_loads;
    std::map<unsigned, std::string> m_names; // under the lock of m_rows
    TSnapshot<SDeviceRows> m_rows;
};

} // namespace VLK::modules
