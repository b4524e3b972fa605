#include "modules/rmon/Thresholds.h"

#include <algorithm>
#include <climits>

namespace VLK::modules {

namespace {

int Saturated(long long value)
{
    return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

long long NumberOf(const SSample& sample)
{
    return sample.syntax == eAsnInteger ? static_cast<int>(sample.value)
                                        : static_cast<long long>(sample.value);
}

} // namespace

std::optional<SSample> SampleOf(const BObjectSyntax& value)
{
    switch (value.Syntax()) {
    case eAsnInteger:
        return SSample{value.Syntax(), static_cast<unsigned>(value.Int())};
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks:
        return SSample{value.Syntax(), value.Unsigned()};
    default:
        return std::nullopt;
    }
}

int AbsoluteValue(const SSample& sample) { return Saturated(NumberOf(sample)); }

std::optional<int> DeltaValue(const SSample& before, const SSample& after)
{
    if (before.syntax != after.syntax)
        return std::nullopt;
    if (after.syntax == eAsnCounter32 || after.syntax == eAsnTimeTicks)
        return static_cast<int>(after.value - before.value);
    return Saturated(NumberOf(after) - NumberOf(before));
}

unsigned CCrossings::Feed(const SThresholds& thresholds, int value)
{
    const bool isHigh = value >= thresholds.rising;
    const bool isLow = value <= thresholds.falling;
    m_mayRise = m_mayRise || isLow;
    m_mayFall = m_mayFall || isHigh;
    const bool rises =
        isHigh && (m_before ? *m_before < thresholds.rising : thresholds.startup & eStartRising);
    const bool falls =
        isLow && (m_before ? *m_before > thresholds.falling : thresholds.startup & eStartFalling);
    m_before = value;
    unsigned crossed = eCrossNone;
    if (rises && m_mayRise) {
        crossed |= eCrossRising;
        m_mayRise = false;
    }
    if (falls && m_mayFall) {
        crossed |= eCrossFalling;
        m_mayFall = false;
    }
    return crossed;
}

} // namespace VLK::modules
