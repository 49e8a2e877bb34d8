#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <span>

// The peak of 16-bit samples in decibels full scale, never below -160 (silence).
inline float peakPowerDecibels(std::span<const std::int16_t> samples)
{
    int peak = 0;
    for (const std::int16_t sample : samples)
        peak = std::max(peak, std::abs(int(sample)));
    if (peak == 0)
        return -160.0f;
    return std::max(-160.0f, float(20.0 * std::log10(peak / 32768.0)));
}
