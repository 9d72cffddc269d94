#include "audio/noise_gate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/trunc_sat.h"

namespace tessarin {

namespace {

constexpr float kFrameMs = 10.0f;
constexpr float kShortestGapMs = 125.0f;     ///< the closure of a plosive is shorter
constexpr float kFullScale = 3.0517578e-05f; // 1 / 32768

/// Neighbouring frames of one kind.
struct level_run {
    int64_t start;
    int64_t length;
    bool isLoud;
};

int64_t SamplesIn(float ms, float rateHz) {
    return TruncSat<int64_t>(rateHz * ms / 1000.0f);
}

int64_t FrameLength(float rateHz) {
    return std::max<int64_t>(SamplesIn(kFrameMs, rateHz), 1);
}

std::vector<level_run> FindRuns(std::span<const float> levels, float thresholdDb) {
    std::vector<level_run> runs;
    for (size_t i = 0; i < levels.size(); ++i) {
        const bool isLoud = levels[i] >= thresholdDb;
        if (runs.empty() || runs.back().isLoud != isLoud) {
            runs.push_back({static_cast<int64_t>(i), 0, isLoud});
        }
        ++runs.back().length;
    }
    return runs;
}

void MergeRuns(std::vector<level_run>& runs) {
    std::vector<level_run> merged;
    for (const level_run& run : runs) {
        if (!merged.empty() && merged.back().isLoud == run.isLoud) {
            merged.back().length += run.length;
        } else {
            merged.push_back(run);
        }
    }
    runs = std::move(merged);
}

// Kept: gaps go before clicks, so that two clicks with a short gap between them count as one.
void KeepShortGaps(std::vector<level_run>& runs, int64_t shortest) {
    for (level_run& run : runs) {
        run.isLoud = run.isLoud || run.length < shortest;
    }
    MergeRuns(runs);
}

// The quiet before is not asked for at the second run: there may be little audio before it.
void DropClicks(std::vector<level_run>& runs, int64_t longest, int64_t shortestQuiet) {
    const auto isLongQuiet = [&](const level_run& run) {
        return !run.isLoud && run.length >= shortestQuiet;
    };
    for (size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].isLoud && runs[i].length < longest &&
            (i + 1 == runs.size() || isLongQuiet(runs[i + 1])) &&
            (i < 2 || isLongQuiet(runs[i - 1]))) {
            runs[i].isLoud = false;
        }
    }
    MergeRuns(runs);
}

/// Silences samples `begin` to `end`. The last `ramp` of them fade in, the first fade out; those of
/// a short stretch do both.
void Silence(std::span<float> samples, int64_t begin, int64_t end, int64_t ramp) {
    const auto sampleAt = [&](int64_t i) -> float& { return samples[static_cast<size_t>(i)]; };
    const auto steps = static_cast<float>(ramp);
    for (int64_t i = begin; i < std::min(begin + ramp, end); ++i) {
        sampleAt(i) *= static_cast<float>(ramp - (i - begin)) / steps;
    }
    for (int64_t i = begin + ramp; i < end - ramp; ++i) {
        sampleAt(i) = 0.0f;
    }
    for (int64_t i = std::max(end - ramp, begin); i < end; ++i) {
        sampleAt(i) *= static_cast<float>(i - (end - ramp)) / steps;
    }
}

} // namespace

std::vector<float> PeakLevels(std::span<const float> samples, float rateHz) {
    const auto frameLength = static_cast<size_t>(FrameLength(rateHz));
    std::vector<float> levels;
    levels.reserve(samples.size() / frameLength + 1);
    for (size_t begin = 0; begin < samples.size(); begin += frameLength) {
        float peak = 0.0f;
        for (const float sample :
             samples.subspan(begin, std::min(frameLength, samples.size() - begin))) {
            peak = std::max(peak, std::abs(sample));
        }
        levels.push_back(20.0f * std::log10(peak * kFullScale));
    }
    return levels;
}

float LevelAtPercentile(std::vector<float> levels, float percentile) {
    constexpr float kNoLevelDb = -40.0f;
    const int64_t index =
        std::max<int64_t>(TruncSat<int64_t>(static_cast<float>(levels.size()) * percentile), 0);
    if (index >= static_cast<int64_t>(levels.size())) {
        return kNoLevelDb;
    }
    std::nth_element(levels.begin(), levels.begin() + static_cast<ptrdiff_t>(index), levels.end());
    return levels[static_cast<size_t>(index)];
}

void SilenceQuietStretches(std::span<float> samples, std::span<const float> levels, float rateHz,
                           float thresholdDb, const noise_gate_settings& settings) {
    const int64_t frameLength = FrameLength(rateHz);
    const auto framesIn = [&](float ms) { return SamplesIn(ms, rateHz) / frameLength; };
    std::vector<level_run> runs = FindRuns(levels, thresholdDb);
    KeepShortGaps(runs, framesIn(kShortestGapMs));
    DropClicks(runs, framesIn(static_cast<float>(settings.maxBlipMs)),
               framesIn(static_cast<float>(settings.minQuietMs)));
    const auto numSamples = static_cast<int64_t>(samples.size());
    const int64_t ramp =
        std::max<int64_t>(SamplesIn(static_cast<float>(settings.rampMs), rateHz), 0);
    for (const level_run& run : runs) {
        if (!run.isLoud) {
            Silence(samples, run.start * frameLength,
                    std::min((run.start + run.length) * frameLength, numSamples), ramp);
        }
    }
}

} // namespace tessarin
