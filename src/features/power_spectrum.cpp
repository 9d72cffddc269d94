#include "features/power_spectrum.h"

#include <cmath>
#include <cstddef>

namespace tessarin {

float PowerSpectrum(std::span<float> spectrum, int32_t windowSize) {
    const size_t half = static_cast<size_t>(windowSize) / 2;
    const float perRoot = 1.0f / std::sqrt(static_cast<float>(windowSize));
    const float perHalf = 1.0f / static_cast<float>(half);
    const float meanScale = perRoot * perRoot;
    const float amplitudeScale = perHalf * perHalf;

    float sum = 0.0f;
    const auto store = [&](size_t bin, float power) {
        spectrum[bin] = power * meanScale;
        sum += power * amplitudeScale;
    };
    store(0, spectrum[0] * spectrum[0]);
    for (size_t bin = 1; bin < half; ++bin) {
        const float re = spectrum[2 * bin];
        const float im = spectrum[2 * bin + 1];
        store(bin, re * re + im * im);
    }
    store(half, 0.0f);
    return sum;
}

} // namespace tessarin
