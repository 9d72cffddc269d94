#include "mouth/loudness.h"

#include <algorithm>
#include <cmath>

namespace tessarin {

namespace {

constexpr double kFullScale = 32768.0;
/// Half of what At() averages: two periods of a low voice, so that they do not show.
constexpr int64_t kMomentMs = 20;

/// Where a step begins, in samples.
size_t StepBegin(size_t step, uint32_t rateHz) {
    return step * rateHz * kLoudnessStepMs / 1000;
}

float Decibels(double power) {
    const auto db = static_cast<float>(10.0 * std::log10(power));
    return db > kSilenceDb ? std::min(db, 0.0f) : kSilenceDb; // also for the logarithm of 0
}

double Power(std::span<const int16_t> samples) {
    double sum = 0.0;
    double squares = 0.0;
    for (const int16_t sample : samples) {
        const double value = sample / kFullScale;
        sum += value;
        squares += value * value;
    }
    const auto count = static_cast<double>(samples.size());
    return std::max(squares / count - sum / count * (sum / count), 0.0);
}

} // namespace

size_t CountLoudnessSteps(size_t count, uint32_t rateHz) {
    if (rateHz < 1000 / kLoudnessStepMs) {
        return 0;
    }
    size_t steps = count * 1000 / (size_t{rateHz} * kLoudnessStepMs);
    while (StepBegin(steps, rateHz) < count) {
        ++steps;
    }
    return steps;
}

float MeasureLoudnessOf(std::span<const int16_t> samples) {
    return std::round(Decibels(Power(samples)) * 10.0f) / 10.0f;
}

std::vector<float> MeasureLoudness(std::span<const int16_t> samples, uint32_t rateHz) {
    std::vector<float> steps(CountLoudnessSteps(samples.size(), rateHz));
    for (size_t i = 0; i < steps.size(); ++i) {
        const size_t begin = StepBegin(i, rateHz);
        const size_t end = std::min(StepBegin(i + 1, rateHz), samples.size());
        steps[i] = MeasureLoudnessOf(samples.subspan(begin, end - begin));
    }
    return steps;
}

LoudnessCurve::LoudnessCurve(std::span<const float> stepsDb, int64_t begin) : beginMs(begin) {
    powerBefore.reserve(stepsDb.size() + 1);
    powerBefore.push_back(0.0);
    for (const float db : stepsDb) {
        const double power = std::pow(10.0, static_cast<double>(db) / 10.0);
        powerBefore.push_back(powerBefore.back() + power);
    }
}

float LoudnessCurve::Mean(int64_t startMs, int64_t endMs) const {
    const auto size = static_cast<int64_t>(powerBefore.size()) - 1;
    const int64_t first = std::clamp<int64_t>((startMs - beginMs) / kLoudnessStepMs, 0, size);
    const int64_t reached = (endMs - beginMs + kLoudnessStepMs - 1) / kLoudnessStepMs;
    const int64_t last = std::clamp<int64_t>(std::max(reached, first + 1), 0, size);
    if (last <= first) {
        return kSilenceDb;
    }
    const double power =
        powerBefore[static_cast<size_t>(last)] - powerBefore[static_cast<size_t>(first)];
    return Decibels(power / static_cast<double>(last - first));
}

float LoudnessCurve::At(int64_t ms) const {
    return Mean(ms - kMomentMs, ms + kMomentMs);
}

} // namespace tessarin
