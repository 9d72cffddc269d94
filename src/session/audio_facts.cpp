#include "session/audio_facts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "mouth/loudness.h"
#include "session/audio_samples.h"

namespace tessarin {

namespace {

constexpr double kFullScale = 32768.0;
/// Speech is seldom quieter than this below its loud moments; pauses are.
constexpr float kActiveRangeDb = 25.0f;
/// A wave that is not cut off stays at its top for fewer samples than this, unless it is quiet.
constexpr size_t kShortestClip = 4;
constexpr int kQuietestClip = 3277; // -20 dB

float Decibels(double ratio) {
    return ratio > 0.0 ? std::max(static_cast<float>(10.0 * std::log10(ratio)), kSilenceDb)
                       : kSilenceDb;
}

/// The loudness that `share` of the steps do not exceed. `steps` are sorted, and some.
float Percentile(std::span<const float> steps, double share) {
    return steps[static_cast<size_t>(share * static_cast<double>(steps.size() - 1))];
}

/// The mean power of the steps that hold speech.
float LevelOf(std::span<const float> steps) {
    const float least = Percentile(steps, 0.95) - kActiveRangeDb;
    double power = 0.0;
    size_t count = 0;
    for (const float db : steps) {
        if (db >= least) {
            power += std::pow(10.0, static_cast<double>(db) / 10.0);
            ++count;
        }
    }
    return Decibels(power / static_cast<double>(count));
}

/// Counts how often the samples were cut off at `limit`, the largest or the smallest of them, and
/// how many samples that are.
void AddClips(std::span<const int16_t> samples, int16_t limit, uint32_t& times, uint64_t& clipped) {
    for (size_t i = 0; i < samples.size();) {
        size_t end = i;
        while (end < samples.size() && samples[end] == limit) {
            ++end;
        }
        if (end - i >= kShortestClip) {
            ++times;
            clipped += end - i;
        }
        i = std::max(end, i + 1);
    }
}

void FindClips(std::span<const int16_t> samples, tessarin_audio_facts& facts) {
    const auto [lowest, highest] = std::minmax_element(samples.begin(), samples.end());
    const int16_t least = *lowest;
    const int16_t most = *highest;
    if (least == most) {
        return; // no wave at all
    }
    uint64_t clipped = 0;
    for (const int16_t limit : {least, most}) {
        if (std::abs(int{limit}) >= kQuietestClip) {
            AddClips(samples, limit, facts.clip_count, clipped);
        }
    }
    facts.clipped_samples = static_cast<uint32_t>(clipped);
}

} // namespace

tessarin_audio_facts FindAudioFacts(const tessarin_audio& audio) {
    tessarin_audio_facts facts{};
    facts.rate_hz = audio.rateHz;
    facts.level_db = facts.noise_db = facts.peak_db = kSilenceDb;
    if (audio.samples.empty() || audio.rateHz == 0) {
        return facts;
    }
    facts.duration_ms = static_cast<int32_t>(audio.samples.size() * 1000 / audio.rateHz);
    const auto [least, most] = std::minmax_element(audio.samples.begin(), audio.samples.end());
    const double peak =
        std::max(-static_cast<double>(*least), static_cast<double>(*most)) / kFullScale;
    facts.peak_db = Decibels(peak * peak);
    FindClips(audio.samples, facts);
    std::vector<float> steps = MeasureLoudness(audio.samples, audio.rateHz);
    if (!steps.empty()) {
        std::ranges::sort(steps);
        facts.level_db = LevelOf(steps);
        facts.noise_db = Percentile(steps, 0.1);
    }
    return facts;
}

} // namespace tessarin
