// When a series of samples crosses thresholds (RFC 2819 section 5, alarm group).
#pragma once

#include <optional>
#include <vkmibh/syntax.h>

namespace VLK::modules {

// alarmSampleType.
enum ESampleType : int { eAbsoluteValue = 1, eDeltaValue = 2 };

// alarmStartupAlarm; the values are bits.
enum EStartupAlarm : int { eStartRising = 1, eStartFalling = 2, eStartRisingOrFalling = 3 };

// What one value crosses: bits, for with a falling threshold that is not below the
// rising one it may be both.
enum ECrossing : unsigned { eCrossNone = 0, eCrossRising = 1, eCrossFalling = 2 };

struct SThresholds {
    EStartupAlarm startup = eStartRisingOrFalling;
    int rising = 0;
    int falling = 0;
};

// An integer as it was sampled; an INTEGER in two's complement.
struct SSample {
    unsigned char syntax = eAsnNull;
    unsigned value = 0;
};

// None: the value is no INTEGER, Counter32, Gauge32 or TimeTicks.
std::optional<SSample> SampleOf(const BObjectSyntax& value);

// alarmValue is an Integer32: what is greater is told as its greatest.
int AbsoluteValue(const SSample& sample);

// How much the second sample is above the first. Counter32 and TimeTicks wrap modulo
// 2^32, and are taken to move by less than 2^31 in one period; other differences stop
// at the ends of Integer32. None: the samples are of different types.
std::optional<int> DeltaValue(const SSample& before, const SSample& after);

// The hysteresis of one alarm.
//
// Ownership: a plain value.
// Threads:   no lock inside.
// Errors:    none.
class CCrossings {
public:
    // Takes the next value and tells what it crosses.
    unsigned Feed(const SThresholds& thresholds, int value);

private:
    std::optional<int> m_before;
    bool m_mayRise = true; // none was raised since the other threshold was reached
    bool m_mayFall = true;
};

} // namespace VLK::modules
