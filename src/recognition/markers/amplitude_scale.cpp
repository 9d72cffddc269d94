#include "recognition/markers/amplitude_scale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessarin {

amplitude_scale::amplitude_scale(float lowest, float highest,
                                 std::span<const float> observationEnergies)
    : energies(observationEnergies), low(lowest) {
    float range = highest - lowest;
    if (!(range > 0.0f)) {
        low = 0.0f;
        range = 8000.0f;
    }
    scale = 100.0f / range;
}

float amplitude_scale::Amplitude(int32_t first, int32_t end) const {
    const double percent = (RootMeanSquare(first, end) - low) * scale;
    return percent > 0.0 ? static_cast<float>(std::min(percent, 100.0)) : 0.0f;
}

double amplitude_scale::RootMeanSquare(int32_t first, int32_t end) const {
    const size_t from = static_cast<size_t>(std::max(first, 0));
    const size_t to = std::min(static_cast<size_t>(std::max(end, 0)), energies.size());
    if (from >= to) {
        return 0.0;
    }
    double sum = 0.0;
    for (const float energy : energies.subspan(from, to - from)) {
        sum += static_cast<double>(energy) * energy;
    }
    return std::sqrt(sum / static_cast<double>(to - from));
}

} // namespace tessarin
