// What an agent takes of its machine.
#pragma once

#include "tests/support/TempDir.h"

#include <sstream>
#include <sys/types.h>

struct SFootprint {
    long memory = 0; // KiB
    long threads = 0;
    long descriptors = 0;
    long store = 0; // octets, with the log
    long ticks = 0; // of the processor, from the start

    static SFootprint Of(pid_t pid, const std::string& store)
    {
        const std::string process = "/proc/" + std::to_string(pid);
        SFootprint footprint;
        const std::string status = ReadFile(process + "/status");
        footprint.memory = std::stol(status.substr(status.find("VmRSS:") + 6));
        footprint.threads = std::stol(status.substr(status.find("Threads:") + 8));
        for (const auto& entry : std::filesystem::directory_iterator(process + "/fd"))
            footprint.descriptors += !entry.path().empty();
        for (const char* file : {"", "-wal"})
            footprint.store += static_cast<long>(std::filesystem::file_size(store + file));
        // Behind the name: utime and stime are the fields 14 and 15.
        const std::string stat = ReadFile(process + "/stat");
        std::istringstream fields(stat.substr(stat.rfind(')') + 2));
        std::string skipped;
        for (int field = 3; field < 14; ++field)
            fields >> skipped;
        long user = 0;
        long system = 0;
        fields >> user >> system;
        footprint.ticks = user + system;
        return footprint;
    }
};
