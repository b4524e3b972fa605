#include "system/UptimeFile.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace VLK {

namespace {

constexpr const char* kKernels = "/proc/uptime";

// The time since the start, on the clock of the kernel's file, in hundredths of a second.
unsigned Clock()
{
    timespec now = {}; // and stays so without such a clock
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<unsigned>(now.tv_sec) * 100u + static_cast<unsigned>(now.tv_nsec / 10000000);
}

// What was read last: the clock before in the upper half, the uptime in the lower one.
std::atomic<std::uint64_t> s_lastRead{0};

// Of two threads that read in one hundredth the one with less may come here last: not all
// kernels' files keep step with the clock, and nobody is told less than somebody before.
void Keep(unsigned clock, unsigned hundredths)
{
    const std::uint64_t read = std::uint64_t{clock} << 32 | hundredths;
    std::uint64_t last = s_lastRead;
    while ((last >> 32 != clock || last < read) && !s_lastRead.compare_exchange_weak(last, read)) {
    }
}

bool ReadFile(unsigned& hundredths)
{
    std::FILE* file = std::fopen(g_uptimePath, "re");
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

} // namespace

std::atomic<const char*> g_uptimePath{kKernels};

// The kernel's file changes a hundred times a second: it is not read again in between.
bool ReadHostUptime(unsigned& hundredths)
{
    if (g_uptimePath != kKernels)
        return ReadFile(hundredths);
    const unsigned clock = Clock();
    const std::uint64_t last = s_lastRead;
    if (clock != 0 && last >> 32 == clock) {
        hundredths = static_cast<unsigned>(last);
        return true;
    }
    if (!ReadFile(hundredths))
        return false;
    Keep(clock, hundredths);
    return true;
}

} // namespace VLK
