#include "session/noise_gating.h"

#include <algorithm>
#include <cmath>

#include "audio/noise_gate.h"

namespace tessarin {

namespace {

constexpr float kUsualPercentile = 0.28f;

bool IsInRange(const tessarin_gate_options& options) {
    return std::isfinite(options.threshold_db) && options.threshold_db <= 0.0f &&
           options.percentile >= 0.0f && options.percentile <= 1.0f && // false for NaN
           options.ramp_ms >= 0 && options.max_blip_ms >= 0 && options.min_quiet_ms >= 0;
}

noise_gate_settings SettingsOf(const tessarin_gate_options& options) {
    noise_gate_settings settings;
    settings.rampMs = options.ramp_ms;
    settings.maxBlipMs = options.max_blip_ms > 0 ? options.max_blip_ms : settings.maxBlipMs;
    settings.minQuietMs = options.min_quiet_ms > 0 ? options.min_quiet_ms : settings.minQuietMs;
    return settings;
}

} // namespace

error_code GateAudio(const tessarin_audio& audio, const tessarin_gate_options* given,
                     float& levelDb, std::unique_ptr<tessarin_audio>& out) {
    tessarin_gate_options options{};
    if (given != nullptr) {
        if (given->size != sizeof options) {
            return kInvalidArgument;
        }
        options = *given;
    }
    if (!IsInRange(options)) {
        return kOutOfRange;
    }
    const auto rate = static_cast<float>(audio.rateHz);
    std::vector<float> samples(audio.samples.begin(), audio.samples.end());
    const std::vector<float> levels = PeakLevels(samples, rate);
    levelDb = options.threshold_db;
    if (options.threshold_db == 0.0f) {
        levelDb = LevelAtPercentile(levels, options.percentile > 0.0f ? options.percentile
                                                                      : kUsualPercentile);
    }
    SilenceQuietStretches(samples, levels, rate, levelDb, SettingsOf(options));
    out = std::make_unique<tessarin_audio>();
    out->rateHz = audio.rateHz;
    out->samples.resize(samples.size());
    std::ranges::transform(samples, out->samples.begin(),
                           [](float sample) { return static_cast<int16_t>(sample); });
    return kNoError;
}

} // namespace tessarin
