#include "timer/TimeArithmetic.h"

#include <ctime>

namespace VLK {

namespace {

BTime::SInstant Now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    BTime::SInstant instant = {};
    instant.seconds = int(now.tv_sec);
    instant.milliseconds = static_cast<unsigned short>(now.tv_nsec / 1000000);
    return instant;
}

} // namespace

BTime::BTime() : m_start() { RecordStartTime(); }

void BTime::RecordStartTime() { m_start = Now(); }

int BTime::StartTime() const { return m_start.seconds; }

int BTime::Uptime() const { return UptimeBetween(m_start, Now()); }

unsigned BTime::SysUptime() const { return SysUptimeBetween(m_start, Now()); }

} // namespace VLK
