// The arithmetic of BTime, as functions of two instants.
#pragma once

#include <vkmibh/timer.h>

namespace VLK {

// The difference of the seconds, modulo 2^32.
inline unsigned SecondsBetween(const BTime::SInstant& start, const BTime::SInstant& now)
{
    return unsigned(now.seconds) - unsigned(start.seconds);
}

// Hundredths of a second from start to now.
inline unsigned SysUptimeBetween(const BTime::SInstant& start, const BTime::SInstant& now)
{
    const unsigned seconds = SecondsBetween(start, now);
    const unsigned milliseconds = (unsigned(now.milliseconds) - start.milliseconds) & 0xffff;
    if (milliseconds <= 1000)
        return seconds * 100 + milliseconds / 10;
    return (seconds - 1) * 100 + ((milliseconds + 1000) & 0xffff) / 10;
}

// Seconds from start to now.
inline int UptimeBetween(const BTime::SInstant& start, const BTime::SInstant& now)
{
    unsigned seconds = SecondsBetween(start, now);
    // CONTRACT: the second to add is looked for above 1000 ms, where it never
    // is: callers see whole seconds of the clock pass, not seconds elapsed.
    if (int(now.milliseconds) - int(start.milliseconds) > 1000)
        ++seconds;
    // CONTRACT: a clock set back wraps at 2^27 seconds, not at 2^32; an uptime
    // that a caller shows or compares stays positive for four years set back.
    if (int(seconds) < 0)
        seconds += 0x8000000u;
    return int(seconds);
}

} // namespace VLK
