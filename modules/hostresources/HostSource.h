// What a host tells about itself, for the host resources module.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace VLK::modules {

// A local time of day and how far it is ahead of UTC.
struct SHostDate {
    int year = 0;
    int month = 0; // from 1
    int day = 0;   // from 1
    int hour = 0;
    int minute = 0;
    int second = 0; // 60 in a leap second
    int deciSecond = 0;
    int zoneMinutes = 0;
};

struct SHostProcesses {
    std::optional<unsigned> users;  // sessions
    std::optional<unsigned> loaded; // processes there are
    std::optional<unsigned> most;   // processes there can be
};

// In kibibytes.
struct SHostMemory {
    std::optional<uint64_t> total;
    std::optional<uint64_t> free;
    std::optional<uint64_t> buffers;
    std::optional<uint64_t> cached;
    std::optional<uint64_t> swapTotal;
    std::optional<uint64_t> swapFree;
};

enum EDiskKind { eFixedDisk, eFloppyDisk, eCompactDisc };

// A mounted file system.
struct SHostDisk {
    std::string mountPoint;
    EDiskKind kind = eFixedDisk;
    uint64_t blockSize = 0; // bytes
    uint64_t blocks = 0;
    uint64_t freeBlocks = 0;
};

// What a processor has spent its time on since the host's start, in ticks of any
// length.
struct SProcessorTime {
    unsigned number = 0;
    uint64_t busy = 0;
    uint64_t idle = 0;
};

// Where the host resources module takes its values from. What is not known is
// empty or left out.
//
// Ownership: answers belong to the caller.
// Threads:   asked by requests and by the timer, by several at once.
// Errors:    none but std::bad_alloc.
// Contract:  no call may wait for anybody: a request waits for it.
class IHostSource {
public:
    virtual ~IHostSource() = default;

    // A clock that is never set.
    virtual int64_t Milliseconds() = 0;
    // Since the host's start, in hundredths of a second.
    virtual std::optional<uint64_t> ReadUptime() = 0;
    virtual SHostDate ReadDate() = 0;
    // What the host was started with.
    virtual std::optional<std::string> ReadLoadParameters() = 0;
    // The disk that the host is started from; empty where that is not known.
    virtual std::string ReadLoadDevice() = 0;
    virtual SHostProcesses ReadProcesses() = 0;
    virtual SHostMemory ReadMemory() = 0;
    virtual std::vector<SHostDisk> ReadDisks() = 0;
    // Those that are running, by rising number.
    virtual std::vector<SProcessorTime> ReadProcessorTimes() = 0;
    // What processors are called, by number. May be slow.
    virtual std::map<unsigned, std::string> ReadProcessorNames() = 0;
};

} // namespace VLK::modules
