#include "features/display_spectrum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace tessarin {

namespace {

constexpr float kHighestLevel = 255.0f;
constexpr float kStepsPerDecibel = 2.0f;

float Decibels(float amplitude) {
    return 20.0f * std::log10(amplitude);
}

} // namespace

void DisplayWindow(std::span<float> window) {
    constexpr float kTwoPi = 2.0f * std::numbers::pi_v<float>;
    const float last = static_cast<float>(window.size() - 1);
    for (size_t i = 0; i < window.size(); ++i) {
        window[i] = 0.54f - 0.46f * std::cos(static_cast<float>(i) * kTwoPi / last);
    }
}

float DisplaySpectrum(std::span<float> transform) {
    const size_t half = transform.size() / 2;
    const float scale = static_cast<float>(half);
    float power = 0.0f;
    const auto store = [&](size_t bin, float re, float im) {
        const float binPower = re * re + im * im;
        power += binPower;
        // Asked this way round, not-a-number shows as silence.
        const bool shows = binPower / (scale * scale) >= 1.0f;
        const float level = shows ? Decibels(std::sqrt(binPower) / scale) : 0.0f;
        transform[bin] = std::trunc(std::min(kStepsPerDecibel * level, kHighestLevel));
    };
    const float nyquist = transform[1]; // where bin 1 is going to stand
    store(0, transform[0], 0.0f);
    for (size_t bin = 1; bin < half; ++bin) {
        store(bin, transform[2 * bin], transform[2 * bin + 1]);
    }
    store(half, nyquist, 0.0f);
    const float root = std::sqrt(power);
    return root > 1.0f ? Decibels(root) : 0.0f;
}

} // namespace tessarin
