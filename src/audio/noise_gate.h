#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// What counts as a quiet stretch, and how it is silenced. Times are milliseconds.
struct noise_gate_settings {
    int32_t minQuietMs = 220; ///< of the quiet around a click that is silenced with it
    int32_t maxBlipMs = 150;  ///< of such a click
    int32_t rampMs = 0;       ///< how long a stretch fades out and in
};

/// The level of each 10 ms of `samples`, the last of which may be shorter: its highest peak in
/// decibels below full scale, minus infinity for digital silence.
std::vector<float> PeakLevels(std::span<const float> samples, float rateHz);

/// The level below which lies the share `percentile` of `levels`, or -40 when that is all of them.
float LevelAtPercentile(std::vector<float> levels, float percentile);

/// Silences the stretches of `samples` whose levels, as PeakLevels gives them, are below
/// `thresholdDb`. A gap of less than 125 ms between louder stretches stays.
void SilenceQuietStretches(std::span<float> samples, std::span<const float> levels, float rateHz,
                           float thresholdDb, const noise_gate_settings& settings);

} // namespace tessarin
