#include "session/live_loudness.h"

#include <algorithm>
#include <cstddef>

#include "mouth/loudness.h"

namespace tessarin {

namespace {

constexpr size_t kStepsPerSecond = 1000 / kLoudnessStepMs;

} // namespace

// Steps are placed by the second that they are in, as with recordings of any rate.
void LiveLoudness::Push(std::span<const int16_t> samples) {
    const std::lock_guard guard(lock);
    while (!samples.empty()) {
        const size_t count = std::min<size_t>(samples.size(), rateHz - begun.size());
        begun.insert(begun.end(), samples.begin(),
                     samples.begin() + static_cast<std::ptrdiff_t>(count));
        samples = samples.subspan(count);
        const size_t complete = begun.size() * kStepsPerSecond / rateHz;
        for (size_t step = measured; step < complete; ++step) {
            const size_t begin = step * rateHz / kStepsPerSecond;
            const size_t end = (step + 1) * rateHz / kStepsPerSecond;
            kept.push_back(MeasureLoudnessOf(std::span(begun).subspan(begin, end - begin)));
        }
        measured = complete;
        if (begun.size() == rateHz) {
            begun.clear();
            measured = 0;
        }
    }
}

void LiveLoudness::CopyFrom(int64_t fromMs, std::vector<float>& steps) {
    const std::lock_guard guard(lock);
    const int64_t passed = std::clamp<int64_t>(fromMs / kLoudnessStepMs - firstStep, 0,
                                               static_cast<int64_t>(kept.size()));
    kept.erase(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(passed));
    firstStep += passed;
    steps = kept;
}

} // namespace tessarin
