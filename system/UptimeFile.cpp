#include "system/UptimeFile.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace VLK {

std::atomic<const char*> g_uptimePath{"/proc/uptime"};

bool ReadHostUptime(unsigned& hundredths)
{
    std::FILE* file = std::fopen(g_uptimePath, "r");
    if (!file)
        return false;
    char text[64];
    const bool isRead = std::fgets(text, sizeof text, file) != nullptr;
    std::fclose(file);
    if (!isRead)
        return false;
    const char* const end = text + std::strlen(text);
    unsigned long seconds = 0;
    const auto point = std::from_chars(text, end, seconds);
    if (point.ec != std::errc() || *point.ptr != '.')
        return false;
    unsigned long fraction = 0;
    if (std::from_chars(point.ptr + 1, end, fraction).ec != std::errc())
        return false;
    // TimeTicks wraps modulo 2^32 (RFC 2578 section 7.1.8).
    hundredths = static_cast<unsigned>(seconds) * 100u + static_cast<unsigned>(fraction);
    return true;
}

} // namespace VLK
