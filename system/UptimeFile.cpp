#include "system/UptimeFile.h"

#include <cstdio>

namespace VLK {

std::atomic<const char*> g_uptimePath{"/proc/uptime"};

bool ReadHostUptime(unsigned& hundredths)
{
    std::FILE* file = std::fopen(g_uptimePath, "r");
    if (!file)
        return false;
    long seconds = 0;
    long fraction = 0;
    const int numbers = std::fscanf(file, "%ld.%ld", &seconds, &fraction);
    std::fclose(file);
    if (numbers != 2)
        return false;
    // TimeTicks wraps modulo 2^32 (RFC 2578 section 7.1.8).
    hundredths = static_cast<unsigned>(seconds) * 100u + static_cast<unsigned>(fraction);
    return true;
}

} // namespace VLK
