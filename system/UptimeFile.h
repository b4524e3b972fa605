// The host's uptime, as the kernel tells it.
#pragma once

#include <atomic>

namespace VLK {

// The file that sysUpTime is read from; tests put another in its place.
extern std::atomic<const char*> g_uptimePath;

// Reads the uptime in hundredths of a second; false, and nothing written, when
// the file is missing or does not begin with two numbers joined by a point.
bool ReadHostUptime(unsigned& hundredths);

} // namespace VLK
