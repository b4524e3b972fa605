// The mounts of a process, as /proc/PID/mountinfo lists them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace VLK::modules {

struct SMount {
    uint64_t id = 0;
    unsigned major = 0; // 0: no block device
    unsigned minor = 0;
    std::string mountPoint;
    std::string type;
    std::string source;
};

// The mounts of such a file, in its order, which is about that of mounting. Lines
// that are none are passed over.
std::vector<SMount> ParseMounts(std::string_view mountInfo);

// Those that hold data on a disk of this host, and that are reached without asking
// anybody who may not answer: no network or FUSE file system is one, nor lies one
// on the way to them.
std::vector<SMount> LocalDisks(const std::vector<SMount>& mounts);

} // namespace VLK::modules
