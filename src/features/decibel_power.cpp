#include "features/decibel_power.h"

#include <cmath>

namespace tessarin {

float DecibelPower(std::span<const float> samples, float& previous) {
    if (samples.empty()) {
        return 0.0f;
    }
    float sum = 0.0f;
    for (const float sample : samples) {
        const float difference = sample - previous;
        sum += difference * difference;
        previous = sample;
    }
    const float count = static_cast<float>(samples.size());
    const float energy = sum > count ? sum : count; // so that not-a-number counts as silence
    const float decibels = 10.0f * (std::log10(energy) - std::log10(count)) + 0.5f;
    return decibels < 0.0f ? 0.0f : decibels;
}

} // namespace tessarin
